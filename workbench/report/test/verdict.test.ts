// SPDX-License-Identifier: Apache-2.0
import { describe, expect, it } from 'vitest';
import type { JudgementData } from '../src/data';
import { Model } from '../src/model';
import { verdictOf, worstMoment } from '../src/verdict';
import { pack, packTable, smallReport, smallRun } from './pack';

/** Figures of the fusion and of a radar; GOSPA is worst at 3 s, apart from the beginning. */
function judgementWith(values: Readonly<Record<string, readonly (number | null)[]>>, trackers = ['fusion', 'radar 3', 'video 3']): JudgementData {
  const times = Array.from({ length: 11 }, (_, i) => i / 2);
  return {
    cutoff: 5,
    moments: times.length,
    time: pack(times, 0.001),
    gospa: pack(times.map((time) => (time < 1 ? 5 : time === 3 ? 3 : 1)), 0.01),
    matches: packTable(times.length, [], ['track']),
    parts: [{ part: 'all', trackers, figures: Object.entries(values).map(([key, list]) => ({ key, label: key, decimals: 2, values: list })) }],
  };
}

const modelOf = (...judgements: JudgementData[]) => new Model(smallReport({ runs: judgements.map((judgement) => smallRun('a', { judgement })) }));
const parts = { GOSPA_localisation: [0.3], GOSPA_missed: [0.4], GOSPA_false: [0] };

describe('the verdict', () => {
  it('compares the fusion with the best sensor, and names the largest part of the error', () => {
    const verdict = verdictOf(modelOf(judgementWith({ GOSPA: [0.5, 2, 1], ...parts })));
    expect(verdict.tone).toBe('good');
    expect(verdict.result).toBe('The fusion is better than the best single sensor (video 3): its mean error (GOSPA) is 0.50 m instead of 1.00 m, 50 % less.');
    // 0.16 of 0.25: the parts add up as squares.
    expect(verdict.fault).toBe('Most of the error, 64 %, are missed objects; no object changed its track.');
    expect(verdict.where).toEqual({ text: 'It went worst around 0:03.00: the error is 3.0 m.', time: 3, selection: null });
  });

  it('says when the fusion is worse, or as good', () => {
    expect(verdictOf(modelOf(judgementWith({ GOSPA: [1.2, 2, 1] })))).toMatchObject({ tone: 'bad', result: expect.stringMatching(/worse than .* 20 % more/) as string });
    expect(verdictOf(modelOf(judgementWith({ GOSPA: [1.01, 2, 1] }))).result).toContain('about as good as the best single sensor (video 3)');
  });

  it('compares by another metric where GOSPA is not defined', () => {
    const { tone, result } = verdictOf(modelOf(judgementWith({ GOSPA: [null, null, null], completeness: [0.9, 0.5, 0.6] })));
    expect([tone, result]).toEqual(['good', 'The fusion is better than the best single sensor (video 3): its completeness is 0.90 instead of 0.60, 50 % more.']);
  });

  it('compares two runs, and tells the fault of the worse', () => {
    const verdict = verdictOf(modelOf(judgementWith({ GOSPA: [1, 9, 9], ...parts }), judgementWith({ GOSPA: [2, 9, 9], ...parts })));
    expect(verdict.result).toBe('Run A is better than run B: its mean error (GOSPA) is 1.00 m instead of 2.00 m, 50 % less.');
    expect(verdict.fault).toContain('Most of the error of run B, 64 %');
  });

  it('does not judge without a truth', () => {
    const verdict = verdictOf(new Model(smallReport()));
    expect(verdict).toEqual({
      tone: 'plain',
      result: 'Nobody can say how good this is: the recording states no truth.',
      fault: '1 of 2 system tracks were confirmed, at most 1 at a time.',
      where: { text: 'Most happens around 0:01.00.', time: 1, selection: null },
    });
  });

  it('finds the worst second only after the first confirmation', () => {
    const judgement = modelOf(judgementWith({})).runs[0].judgement!;
    expect(worstMoment(judgement, 1)).toBe(6);
    expect(worstMoment(judgement, 0)).toBe(0);
    expect(worstMoment(judgement, 99)).toBe(-1);
  });
});
