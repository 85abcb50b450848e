// SPDX-License-Identifier: Apache-2.0
import { describe, expect, it } from 'vitest';
import { lastNotAfter, Table } from '../src/table';
import { packTable } from './pack';

const table = new Table(packTable(6, [
  { key: { id: 4 }, rows: [{ frame: 1, x: 1 }, { frame: 2, x: 2 }, { frame: 5, x: 5 }] },
  { key: { id: -9 }, rows: [{ frame: 0, x: 10 }, { frame: 2, x: 12 }] },
], ['x']));

describe('a table', () => {
  it('knows the frame and the track of every row', () => {
    expect([...table.frame]).toEqual([1, 2, 5, 0, 2]);
    expect([...table.track]).toEqual([0, 0, 0, 1, 1]);
    expect([...table.key('id')]).toEqual([4, -9]);
  });

  it('lists the rows of a frame', () => {
    expect([...table.rowsOf(0)]).toEqual([3]);
    expect([...table.rowsOf(2)]).toEqual([1, 4]);
    expect([...table.rowsOf(3)]).toEqual([]);
    expect([...table.rowsOf(-1)]).toEqual([]);
    expect([...table.rowsOf(6)]).toEqual([]);
  });

  it('finds the row of a track in a frame, and the one before', () => {
    expect(table.rowAt(0, 2)).toBe(1);
    expect(table.rowAt(0, 3)).toBe(-1);
    expect(table.rowBefore(0, 4)).toBe(1);
    expect(table.rowBefore(0, 0)).toBe(-1);
    expect(table.rowBefore(1, 99)).toBe(4);
  });

  it('rejects an unknown column', () => {
    expect(() => table.column('y')).toThrow('no column y');
  });
});

describe('the last time that is not after another', () => {
  const times = Float64Array.of(0, 1, 1, 3);
  it.each([[-1, -1], [0, 0], [0.5, 0], [1, 2], [2.9, 2], [3, 3], [9, 3]])('of %d is number %d', (time, index) => {
    expect(lastNotAfter(times, time)).toBe(index);
  });
});
