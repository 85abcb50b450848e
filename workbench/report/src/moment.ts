// SPDX-License-Identifier: Apache-2.0
// The moment that a report shows first.
import type { Run } from './model';

/** Length of the time in which events are counted, s. */
const windowLength = 1;

/** When a confirmed track begins, ends, changes its class, or takes an object over; ascending, s. */
export function eventsOf(run: Run): number[] {
  const times = (run.judgement?.switches ?? []).map((change) => change.time);
  for (const { confirmed, to, classes } of run.lives) {
    if (!Number.isNaN(confirmed)) {
      times.push(confirmed, to, ...classes.slice(1).map((change) => change.from).filter((time) => time >= confirmed));
    }
  }
  return times.sort((a, b) => a - b);
}

/**
 * The most eventful second's last event at which a track is confirmed, the earliest of equals; without one the first
 * confirmation; 0 when nothing was confirmed.
 */
export function firstMoment(runs: readonly Run[]): number {
  const times = runs.flatMap(eventsOf).sort((a, b) => a - b);
  let [best, most, begin] = [NaN, 0, 0];
  times.forEach((time, i) => {
    while (time - times[begin] > windowLength) {
      ++begin;
    }
    const count = i - begin + 1;
    if (count > most && runs.some((run) => run.lives.some((life) => life.standing.some(({ from, to, value }) => value && from <= time && time < to)))) {
      [best, most] = [time, count];
    }
  });
  return Number.isNaN(best) ? 0 : best;
}
