// SPDX-License-Identifier: Apache-2.0
// What is known of an object at a time, in words and numbers with units.
import { isDoubtful } from './doubt';
import { hasCoasted, letterOf, lookupTime, type Model, type Run, type Seen } from './model';
import { directionText, earthText, placeText } from './places';
import { ellipseScale } from './scene';
import type { Selection } from './state';

export type Facts = [name: string, value: string][];

/** A number with its unit; a dash where there is none. */
export function quantity(value: number | undefined, decimals: number, unit = ''): string {
  return value === undefined || Number.isNaN(value) ? '–' : `${value.toFixed(decimals)}${unit && ` ${unit}`}`;
}

/** The name of a selected object. */
export function titleOf(model: Model, selection: Selection): string {
  switch (selection.kind) {
    case 'system':
      return `System track ${selection.id}${model.isPair ? ` of ${letterOf(selection.run)}` : ''}`;
    case 'truth':
      return `Object ${selection.id}`;
    default:
      return `${selection.kind === 'video' ? 'Video' : 'Radar'} track ${selection.id}`;
  }
}

/** What is known of a selected object at a time; null when it is not there. */
export function factsAt(model: Model, selection: Selection, time: number): Facts | null {
  const now = lookupTime(time);
  if (selection.kind === 'system') {
    const run = model.runs[selection.run];
    const row = run.rowAt(selection.id, now);
    return row < 0 ? null : factsOfSystem(model, run, row);
  }
  const seen = selection.kind === 'truth' ? model.truth : model.seen(selection.kind);
  const track = seen?.trackOf(selection.id) ?? -1;
  const frame = seen?.frameAt(now) ?? -1;
  const row = seen && track >= 0 && frame >= 0 ? seen.table.rowAt(track, frame) : -1;
  if (row < 0) {
    return null;
  }
  return selection.kind === 'truth' ? factsOfTruth(model, row) : factsOfSensor(model, seen as Seen, row);
}

export function factsOfSystem(model: Model, run: Run, row: number): Facts {
  const at = (name: string) => run.tracks.column(name)[row];
  const labelled = (name: string) => model.word(at(name));
  const facts: Facts = [
    ['Standing', isDoubtful(run, row) ? 'confirmed, but doubtful by now' : at('confirmed') === 1 ? 'confirmed' : 'tentative'],
    ['Probability', quantity(at('probability'), 3)],
    ['Class', withShare(labelled('class'), at('classProbability'))],
    ...placeFacts(model, at('x'), at('y')),
    ['95 % ellipse', Number.isNaN(at('major')) ? '–' : `${(ellipseScale * at('major')).toFixed(2)} × ${(ellipseScale * at('minor')).toFixed(2)} m`],
    ['Distance', quantity(distance(at), 1, 'm')],
    ['Speed', quantity(at('speed'), 2, 'm/s')],
    ['Heads', directionText(at('direction'), model.scene.earth)],
    ['Image', pairText((at('left') + at('right')) / 2, at('bottom'))],
  ];
  const optional: [string, string][] = [
    ['Colour', labelled('color')],
    ['Upper clothing', labelled('upperClothingColor')],
    ['Lower clothing', labelled('lowerClothingColor')],
    ['Tags', labelled('tags')],
  ];
  facts.push(...optional.filter(([, word]) => word !== 'unknown'));
  const frame = run.tracks.frame[row];
  facts.push(['Age', quantity(run.times[frame] - run.times[run.tracks.frame[run.tracks.first[run.tracks.track[row]]]], 2, 's')]);
  facts.push(['Latency', quantity(1000 * (run.received[frame] - run.times[frame]), 0, 'ms')]);
  return facts;
}

export function factsOfSensor(model: Model, seen: Seen, row: number): Facts {
  const at = (name: string) => seen.table.column(name)[row];
  return [
    ['Standing', at('confirmed') === 1 ? 'confirmed by the sensor' : 'not confirmed'],
    ['Coasting', hasCoasted(at('coasting')) ? quantity(at('coasting'), 1, 's') : 'no'],
    ['Class', withShare(model.word(at('class')), at('classProbability'))],
    ...placeFacts(model, at('x'), at('y')),
    ['Distance', quantity(distance(at), 1, 'm')],
    ['Speed', quantity(at('speed'), 2, 'm/s')],
    ['Image', Number.isNaN(at('u')) ? pairText((at('left') + at('right')) / 2, at('bottom')) : pairText(at('u'), at('v'))],
  ];
}

/** Where a point of the ground is, seen from the device and, when its site is known, on Earth. */
function placeFacts(model: Model, x: number, y: number): Facts {
  const { earth } = model.scene;
  return [['Position', placeText(x, y)], ...(earth ? [['On Earth', earthText(earth, x, y)] as [string, string]] : [])];
}

/** Over ground from the device; the slant range of what has no place on the ground. */
function distance(at: (name: string) => number): number {
  return Number.isNaN(at('x')) ? at('range') : Math.hypot(at('x'), at('y'));
}

export function factsOfTruth(model: Model, row: number): Facts {
  const at = (name: string) => model.truth?.table.column(name)[row] ?? NaN;
  const views = [at('video') === 1 ? 'camera' : '', at('radar') === 1 ? 'radar' : ''].filter((name) => name !== '');
  return [
    ['Class', model.word(at('class'))],
    ...placeFacts(model, at('x'), at('y')),
    ['Distance', quantity(Math.hypot(at('x'), at('y')), 1, 'm')],
    ['Speed', quantity(Math.hypot(at('vx'), at('vy')), 2, 'm/s')],
    ['Heads', directionText((Math.atan2(-at('vy'), at('vx')) * 180) / Math.PI, model.scene.earth)],
    ['In view of', views.join(' and ') || 'no sensor'],
  ];
}

function withShare(word: string, share: number): string {
  return word === 'unknown' ? '–' : `${word}${share > 0 ? ` ${Math.round(100 * share)} %` : ''}`;
}

function pairText(x: number, y: number): string {
  return Number.isNaN(x) ? '–' : `${x.toFixed(3)}, ${y.toFixed(3)}`;
}
