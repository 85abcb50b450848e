// SPDX-License-Identifier: Apache-2.0
import { describe, expect, it } from 'vitest';
import { countsOf, Model } from '../src/model';
import { standingAt } from '../src/nowcard';
import { pack, packTable, smallReport, smallRun } from './pack';

const judgement = {
  cutoff: 5,
  moments: 3,
  time: pack([0, 1, 2], 0.001),
  gospa: pack([3.5, 3.5, 1.25], 0.01),
  matches: packTable(3, [{ key: { object: 4 }, rows: [{ frame: 2, track: 1 }] }], ['track']),
  parts: [],
};
const truth = { time: pack([0, 1, 2], 0.001), table: packTable(3, [4, 5].map((id) => ({ key: { id }, rows: [1, 2].map((frame) => ({ frame, x: 1, y: 1 })) })), ['x', 'y']) };

function tell(model: Model, time: number): Record<string, string> {
  const [run] = model.runs;
  return standingAt(model, run, countsOf(run), time);
}

describe('how a run does at a time', () => {
  it('counts its tracks, the objects it has found, and tells its error', () => {
    const model = new Model(smallReport({ truth, runs: [smallRun('a', { judgement })] }));
    expect(tell(model, 0)).toEqual({ Confirmed: '0', Tentative: '1', Found: '0 of 0', GOSPA: '3.50 m' });
    expect(tell(model, 1.5)).toEqual({ Confirmed: '1', Tentative: '0', Found: '0 of 2', GOSPA: '3.50 m' });
    expect(tell(model, 2)).toEqual({ Confirmed: '1', Tentative: '1', Found: '1 of 2', GOSPA: '1.25 m' });
  });

  it('has no judgement without a truth', () => {
    expect(tell(new Model(smallReport()), 2)).toEqual({ Confirmed: '1', Tentative: '1' });
  });
});
