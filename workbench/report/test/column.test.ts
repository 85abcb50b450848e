// SPDX-License-Identifier: Apache-2.0
import { describe, expect, it } from 'vitest';
import { missing, numbersOf, unpack } from '../src/column';
import { pack } from './pack';

describe('a column', () => {
  it('is read from the bytes that the program writes', () => {
    // Three zeros; +5; one zero; -1; +200 in two bytes: the same bytes as in the test of the encoder.
    const data = Buffer.from([0, 2, 10, 0, 0, 1, 0x90, 3]).toString('base64');
    expect([...unpack({ step: 1, data }, 7)]).toEqual([0, 0, 0, 5, 5, 4, 204]);
  });

  it('keeps large numbers, and represents gaps as NaN', () => {
    const values = [2 ** 28, -(2 ** 28), NaN, 3, NaN, NaN, -1];
    expect([...numbersOf(pack(values), values.length)]).toEqual(values);
    expect(unpack(pack([NaN]), 1)[0]).toBe(missing);
  });

  it('returns numbers in their unit', () => {
    expect(numbersOf(pack([0.25, -1.5], 0.25), 2)).toEqual(Float64Array.of(0.25, -1.5));
  });

  it('throws when it is truncated', () => {
    expect(() => unpack({ step: 1, data: Buffer.from([2]).toString('base64') }, 2)).toThrow('cut off');
    expect(() => unpack({ step: 1, data: Buffer.from([0x82]).toString('base64') }, 1)).toThrow('cut off');
  });
});
