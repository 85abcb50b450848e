// SPDX-License-Identifier: Apache-2.0
import { describe, expect, it } from 'vitest';
import type { AnswerData, ValueData } from '../src/calibration/data';
import { spanOf } from '../src/calibration/scatter';
import { digitsFor, signed, verdictOf } from '../src/calibration/words';

const value = (verdict: ValueData['verdict'], correction = 0): ValueData => ({ unit: 'deg', std: 0.04, verdict, correction });

function answer(values: AnswerData['values'], more: Partial<AnswerData> = {}): AnswerData {
  const none = { bearingDegrees: null, depressionDegrees: null, standardDeviations: null };
  const errors = { before: none, after: none };
  return { samples: 100, clusters: 20, values, correlations: {}, errors, heldOut: errors, refusal: '', ...more };
}

describe('the verdict of a calibration', () => {
  it('names what is corrected', () => {
    expect(verdictOf(answer({ 'camera.yaw': value('corrected', 2.9954), 'camera.roll': value('corrected', -1.03), lag: value('as stated') }))).toBe(
      'The installation is corrected: camera.yaw by +2.995\u00b0 and camera.roll by \u22121.030\u00b0.');
  });

  it('names what cannot be told', () => {
    expect(verdictOf(answer({ 'camera.yaw': value('as stated'), 'camera.pitch': value('cannot tell'), 'camera.height': value('cannot tell') }))).toBe(
      'The installation is as stated. The data cannot tell camera.pitch and camera.height.');
  });

  it('says when nothing can be told, or holds', () => {
    expect(verdictOf(answer({ lag: value('cannot tell') }))).toBe('The data cannot tell any of the values.');
    expect(verdictOf(answer({ lag: value('cannot tell') }, { samples: 0 }))).toContain('no object was seen by both sensors');
    expect(verdictOf(answer({ lag: value('corrected', 1) }, { refusal: 'it does not hold' }))).toBe('Nothing is corrected: it does not hold.');
  });
});

describe('numbers', () => {
  it('have the digits that their deviation justifies', () => {
    expect([0.04, 0.4, 4, 40, 0.0004, 0].map(digitsFor)).toEqual([3, 2, 1, 0, 5, 3]);
    expect([signed(1.25, 1), signed(-1, 0)]).toEqual(['+1.3', '\u22121']);
  });
});

describe('the span of an axis', () => {
  it('holds all values with a margin, and zero where it is asked for', () => {
    expect(spanOf([1, 2], false)).toEqual([0.96, 2.04]);
    expect(spanOf([1, 2], true)).toEqual([-0.08, 2.08]);
  });

  it('has a width even without any', () => {
    expect(spanOf([], false)).toEqual([-1, 1]);
    expect(spanOf([3, 3], false)).toEqual([2, 4]);
  });
});
