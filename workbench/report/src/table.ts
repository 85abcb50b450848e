// SPDX-License-Identifier: Apache-2.0
// Decodes tables of tracks over time, as encoded by workbench/report/TrackTable.h.
import { missing, unpack, type Column } from './column';

export interface PackedTable {
  readonly frames: number;
  readonly tracks: number;
  readonly rows: number;
  readonly keys: Readonly<Record<string, Column>>;
  readonly counts: Column;
  readonly skipped: Column;
  readonly columns: Readonly<Record<string, Column>>;
}

/** Rows of numbers, ordered by track, then by frame. */
export class Table {
  readonly frames: number;
  readonly tracks: number;
  readonly rows: number;
  /** First row of each track, and the end of the last one. */
  readonly first: Int32Array;
  /** Frame and track of each row. */
  readonly frame: Int32Array;
  readonly track: Int32Array;
  private readonly frameStart: Int32Array;
  private readonly frameRows: Int32Array;
  private readonly packed: PackedTable;
  private readonly unpacked = new Map<string, Float32Array>();
  private readonly unpackedKeys = new Map<string, Int32Array>();

  constructor(packed: PackedTable) {
    this.packed = packed;
    this.frames = packed.frames;
    this.tracks = packed.tracks;
    this.rows = packed.rows;
    this.first = new Int32Array(this.tracks + 1);
    this.frame = new Int32Array(this.rows);
    this.track = new Int32Array(this.rows);
    const counts = unpack(packed.counts, this.tracks);
    const skipped = unpack(packed.skipped, this.rows);
    for (let track = 0, row = 0; track < this.tracks; ++track) {
      let next = 0;
      for (let i = 0; i < counts[track]; ++i, ++row) {
        this.track[row] = track;
        this.frame[row] = next + skipped[row];
        next = this.frame[row] + 1;
      }
      this.first[track + 1] = row;
    }
    [this.frameStart, this.frameRows] = groupByFrame(this.frame, this.frames);
  }

  /** Decodes the numbers of a column; NaN where missing. */
  column(name: string): Float32Array {
    let numbers = this.unpacked.get(name);
    if (!numbers) {
      const packed = this.packed.columns[name];
      if (!packed) {
        throw new Error(`the report has no column ${name}`);
      }
      numbers = packed instanceof Float64Array
        ? Float32Array.from(packed)
        : Float32Array.from(unpack(packed, this.rows), (value) => (value === missing ? NaN : value * packed.step));
      this.unpacked.set(name, numbers);
    }
    return numbers;
  }

  /** The numbers of a key, one per track. */
  key(name: string): Int32Array {
    let keys = this.unpackedKeys.get(name);
    if (!keys) {
      const packed = this.packed.keys[name];
      keys = packed ? unpack(packed, this.tracks) : new Int32Array(this.tracks);
      this.unpackedKeys.set(name, keys);
    }
    return keys;
  }

  /** The rows of a frame. */
  rowsOf(frame: number): Int32Array {
    return this.frameRows.subarray(this.frameStart[frame] ?? 0, this.frameStart[frame + 1] ?? 0);
  }

  /** The last row of a track up to a frame; -1 when it begins later. */
  rowBefore(track: number, frame: number): number {
    const first = this.first[track];
    const row = lastAtMost(this.frame, frame, first, this.first[track + 1]);
    return row >= first ? row : -1;
  }

  /** The row of a track in a frame; -1 when there is none. */
  rowAt(track: number, frame: number): number {
    const row = this.rowBefore(track, frame);
    return row >= 0 && this.frame[row] === frame ? row : -1;
  }
}

/** Groups rows by frame: the start of each frame in the list, and the list of rows. */
function groupByFrame(frame: Int32Array, frames: number): [Int32Array, Int32Array] {
  const start = new Int32Array(frames + 1);
  for (const value of frame) {
    ++start[value + 1];
  }
  for (let i = 0; i < frames; ++i) {
    start[i + 1] += start[i];
  }
  const next = start.slice();
  const rows = new Int32Array(frame.length);
  for (let row = 0; row < frame.length; ++row) {
    rows[next[frame[row]]++] = row;
  }
  return [start, rows];
}

/** Index of the last time up to `time`; -1 when all are later. */
export function lastNotAfter(times: Float64Array, time: number): number {
  return lastAtMost(times, time, 0, times.length);
}

/** Index of the last of ascending numbers in [from, to) that is not above `most`; from - 1 for none. */
function lastAtMost(numbers: Float64Array | Int32Array, most: number, from: number, to: number): number {
  let [low, high] = [from, to];
  while (low < high) {
    const middle = (low + high) >> 1;
    if (numbers[middle] <= most) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low - 1;
}
