// SPDX-License-Identifier: Apache-2.0
import { describe, expect, it } from 'vitest';
import { doubtLimit, isDoubtful } from '../src/doubt';
import { Model } from '../src/model';
import { trackLabel } from '../src/scene';
import { cellsOf, chosen, entriesAt, everything, type Entry } from '../src/tracklist';
import { smallReport, smallRun } from './pack';

const model = new Model(smallReport());

describe('the list of tracks', () => {
  const entry = (id: number, changes: Partial<Entry> = {}): Entry => ({ run: 0, id, className: 'human', standing: 'confirmed', sensors: 'radar and video', probability: 0.9, distance: 10 + id, ...changes });
  const all = [entry(3), entry(12, { className: 'car', sensors: 'radar', distance: 5 }), entry(1, { standing: 'doubtful', probability: 0.2, distance: NaN }), entry(2, { standing: 'tentative', probability: 0.4, sensors: 'video' })];
  const ids = (wish: Partial<typeof everything>) => chosen(all, { ...everything, ...wish }).map(({ id }) => id);

  it('has what is known of every track at a time', () => {
    expect(entriesAt(model, 2)).toEqual([
      { run: 0, id: 1, className: 'human', standing: 'confirmed', sensors: 'radar and video', probability: expect.closeTo(0.6) as number, distance: expect.closeTo(Math.hypot(12, -2)) as number },
      { run: 0, id: 2, className: 'unknown', standing: 'tentative', sensors: 'radar', probability: expect.closeTo(0.3) as number, distance: NaN },
    ]);
  });

  it('is a table for spreadsheets, too', () => {
    expect(cellsOf([entry(3, { run: 1 }), all[2]])).toEqual([
      ['run', 'track', 'class', 'standing', 'sensors', 'probability', 'distance, m'],
      ['B', '3', 'human', 'confirmed', 'radar and video', '0.900', '13.00'],
      ['A', '1', 'human', 'doubtful', 'radar and video', '0.200', ''],
    ]);
  });

  it('is ordered as the reader wants', () => {
    expect(ids({})).toEqual([1, 2, 3, 12]);
    expect(ids({ order: 'probability' })).toEqual([1, 2, 3, 12]);
    expect(ids({ order: 'distance' })).toEqual([12, 2, 3, 1]);
    expect(ids({ order: 'class' })).toEqual([12, 1, 2, 3]);
  });

  it('is filtered by class, standing, sensors and probability', () => {
    expect(ids({ className: 'car' })).toEqual([12]);
    expect(ids({ standing: 'confirmed' })).toEqual([1, 3, 12]);
    expect(ids({ standing: 'doubtful' })).toEqual([1]);
    expect(ids({ sensors: 'radar' })).toEqual([12]);
    expect(ids({ least: 0.4 })).toEqual([2, 3, 12]);
  });

  it('is searched by whole numbers and by words', () => {
    expect(ids({ text: '1' })).toEqual([1]);
    expect(ids({ text: 'Human video' })).toEqual([1, 2, 3]);
    expect(ids({ text: 'b' })).toEqual([1]);
    expect(ids({ text: 'bicycle' })).toEqual([]);
  });
});

describe('a confirmed track', () => {
  it('is doubtful below the limit that confirms tracks', () => {
    expect(doubtLimit({ veskarModule: { systemTrackConfirmationLimitLower: 0.65 } })).toBe(0.65);
    expect(doubtLimit({})).toBe(0.5);
    const [run] = new Model(smallReport({ runs: [smallRun('a', { configuration: { veskarModule: { systemTrackConfirmationLimitLower: 0.65 } } })] })).runs;
    // Tentative at 0 s; 0.5 at 1 s, 0.7 at 3 s.
    expect([0, 1, 3].map((time) => isDoubtful(run, run.rowAt(1, time)))).toEqual([false, true, false]);
  });

  it('has its label shortened to its number, and doubt kept', () => {
    expect(trackLabel(12, 'human', '', [], false, false)).toMatchObject({ texts: ['12 human', '12'], rank: 2 });
    expect(trackLabel(12, 'human', '', [], false, true)).toMatchObject({ texts: ['12 human ?', '12 ?'], rank: 1 });
    expect(trackLabel(12, 'unknown', '', [], true, true)).toMatchObject({ texts: ['12 ?', '12 ?'], rank: 0 });
  });
});
