// SPDX-License-Identifier: Apache-2.0
import { describe, expect, it } from 'vitest';
import { linkOf, placeOf } from '../src/link';
import { Model } from '../src/model';
import { eventsOf, firstMoment } from '../src/moment';
import { pack, packTable, smallReport, smallRun } from './pack';

const [run] = new Model(smallReport()).runs;

describe('the first moment', () => {
  it('is one of an event of a confirmed track', () => {
    // Confirmed at 1 s, a car from 3 s, until the end at 5 s; the tentative track does not count.
    expect(eventsOf(run)).toEqual([1, 3, 5]);
    expect(firstMoment([run])).toBe(1);
  });

  it('is in the most eventful second', () => {
    // Object 3 changes from track 1 to 2 at 2.5 s and back at 3.5 s.
    const judgement = {
      cutoff: 5,
      moments: 3,
      time: pack([2, 2.5, 3.5], 0.001),
      gospa: pack([0, 0, 0], 0.01),
      parts: [],
      matches: packTable(3, [{ key: { object: 3 }, rows: [{ frame: 0, track: 1 }, { frame: 1, track: 2 }, { frame: 2, track: 1 }] }], ['track']),
    };
    const [busy] = new Model(smallReport({ runs: [smallRun('a', { judgement })] })).runs;
    expect(eventsOf(busy)).toEqual([1, 2.5, 3, 3.5, 5]);
    expect(firstMoment([busy])).toBe(3.5);
  });

  it('is the beginning when nothing was confirmed', () => {
    const none = { times: run.times, judgement: null, lives: run.lives.filter((life) => Number.isNaN(life.confirmed)) };
    expect(none.lives.length).toBe(1);
    expect(firstMoment([none as unknown as typeof run])).toBe(0);
  });
});

describe('the link of a moment', () => {
  const place = { time: 15.3, selection: { kind: 'system', run: 1, id: 4 }, tab: 'plots' } as const;

  it('tells time, selection and tab', () => {
    expect(linkOf(place)).toBe('#t=15.3&select=system-4-B&tab=plots');
    expect(linkOf({ ...place, selection: null, time: 1 / 3 })).toBe('#t=0.333&tab=plots');
    expect(placeOf(linkOf(place), 2)).toEqual(place);
  });

  it('keeps what is wrong or missing out', () => {
    expect(placeOf('', 1)).toEqual({});
    expect(placeOf('#t=x&select=system-4-B&tab=none', 1)).toEqual({});
    expect(placeOf('#select=spaceship-4-A', 1)).toEqual({});
    expect(placeOf('#select=radar-9-A&t=2', 1)).toEqual({ time: 2, selection: { kind: 'radar', run: 0, id: 9 } });
  });
});
