// SPDX-License-Identifier: Apache-2.0
// Collects rows frame by frame into the tables that the parts of the report read.
import type { PackedTable } from '../table';

/** One row of a track; `key` tells the tracks apart. */
export interface Row {
  readonly key: readonly number[];
  readonly values: readonly number[];
}

/** A table of the rows of each frame. Values that are missing are NaN. */
export function tableOf(keys: readonly string[], columns: readonly string[], frames: readonly (readonly Row[])[]): PackedTable {
  const tracks = new Map<string, { key: readonly number[]; rows: [frame: number, values: readonly number[]][] }>();
  let rows = 0;
  frames.forEach((frame, index) => {
    for (const { key, values } of frame) {
      const name = key.join();
      let track = tracks.get(name);
      if (!track) {
        tracks.set(name, (track = { key, rows: [] }));
      }
      // A producer may repeat an id within a frame; a table has one row of it.
      if (track.rows[track.rows.length - 1]?.[0] !== index) {
        track.rows.push([index, values]);
        ++rows;
      }
    }
  });
  const counts = new Float64Array(tracks.size);
  const skipped = new Float64Array(rows);
  const keyColumns = keys.map(() => new Float64Array(tracks.size));
  const valueColumns = columns.map(() => new Float64Array(rows));
  let row = 0;
  [...tracks.values()].forEach((track, at) => {
    counts[at] = track.rows.length;
    keyColumns.forEach((column, i) => (column[at] = track.key[i]));
    let next = 0;
    for (const [frame, values] of track.rows) {
      skipped[row] = frame - next;
      next = frame + 1;
      valueColumns.forEach((column, i) => (column[row] = values[i]));
      ++row;
    }
  });
  const named = (names: readonly string[], of: readonly Float64Array[]) => Object.fromEntries(names.map((name, i) => [name, of[i]]));
  return { frames: frames.length, tracks: tracks.size, rows, keys: named(keys, keyColumns), counts, skipped, columns: named(columns, valueColumns) };
}

/** Numbers words, as a report does. */
export class Words {
  readonly list: string[] = [];
  private readonly numbers = new Map<string, number>();

  /** NaN for an unknown word. */
  numberOf(word: string | undefined): number {
    if (word === undefined || word === '' || word === 'unknown') {
      return NaN;
    }
    let number = this.numbers.get(word);
    if (number === undefined) {
      number = this.list.push(word) - 1;
      this.numbers.set(word, number);
    }
    return number;
  }
}
