// SPDX-License-Identifier: Apache-2.0
// The lines of tooltips.
import type { Mark } from './canvas';
import { timeText } from './clock';
import { factsAt, quantity, titleOf } from './facts';
import { hasCoasted, lookupTime, type Model } from './model';
import { selectionOf } from './scene';
import type { Lane } from './timeline';

/** What a tooltip has room for. */
const short = ['Standing', 'Probability', 'Class', 'Coasting', 'Position', 'Speed'];

export function markLines(model: Model, mark: Mark | null, run: number, time: number): string[] {
  if (!mark) {
    return [];
  }
  const selection = selectionOf(mark, run);
  const facts = (factsAt(model, selection, time) ?? []).filter(([name, value]) => short.includes(name) && value !== '–');
  return [titleOf(model, selection), ...facts.map(([name, value]) => `${name}: ${value}`)];
}

export function laneLines(model: Model, lane: Lane | undefined, time: number): string[] {
  if (!lane || time < 0 || time > model.duration) {
    return lane ? [lane.label] : [];
  }
  const run = model.runs[lane.run];
  const row = run.rowAt(lane.life.id, lookupTime(time));
  if (row < 0) {
    return [`${lane.label} at ${timeText(time)}`, `Lives from ${timeText(lane.life.from)} to ${timeText(lane.life.to)}.`];
  }
  const { sensors, tracks } = run;
  const standing = tracks.column('confirmed')[row] === 1 ? 'confirmed' : 'tentative';
  const feeds = lane.life.feeds.filter(({ from, to }) => from <= time && time < to);
  const coasting = sensors.column('coasting');
  const coastingOf = (source: string, id: number) => {
    const at = sensors.rowsOf(tracks.frame[row]).find((sensorRow) => {
      const pair = sensors.track[sensorRow];
      return sensors.key('track')[pair] === lane.life.id && sensors.key('id')[pair] === id && (sensors.key('source')[pair] === 1) === (source === 'radar');
    });
    return at !== undefined && hasCoasted(coasting[at]) ? `coasting ${coasting[at].toFixed(1)} s` : 'seen';
  };
  return [
    `${lane.label} at ${timeText(time)}`,
    `${standing}, probability ${quantity(tracks.column('probability')[row], 2)}`,
    ...feeds.map(({ value }) => `${value.source} ${value.id}: ${coastingOf(value.source, value.id)}`),
  ];
}
