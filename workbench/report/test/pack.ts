// SPDX-License-Identifier: Apache-2.0
// Encodes data for the page's decoder, see workbench/report/Column.h.
import { missing, type PackedColumn } from '../src/column';
import type { ReportData, RunData, SeenData } from '../src/data';
import type { PackedTable } from '../src/table';

export function pack(values: readonly number[], step = 1): PackedColumn {
  const bytes: number[] = [];
  const append = (value: number) => {
    for (; value >= 128; value = Math.floor(value / 128)) {
      bytes.push((value % 128) + 128);
    }
    bytes.push(value);
  };
  let last = 0;
  let zeros = 0;
  const flush = () => {
    if (zeros > 0) {
      append(0);
      append(zeros - 1);
    }
    zeros = 0;
  };
  for (const value of values) {
    const steps = Number.isNaN(value) ? missing : Math.round(value / step);
    const difference = steps - last;
    last = steps;
    if (difference === 0) {
      ++zeros;
    } else {
      flush();
      append(difference < 0 ? -2 * difference - 1 : 2 * difference);
    }
  }
  flush();
  return { step, data: Buffer.from(bytes).toString('base64') };
}

export type Row = Readonly<Record<string, number>>;

/** A table from rows {frame, ...values}, ordered by track. */
export function packTable(
  frames: number,
  tracks: readonly { readonly key: Row; readonly rows: readonly (Row & { frame: number })[] }[],
  columns: readonly string[],
): PackedTable {
  const rows = tracks.flatMap((track) => track.rows);
  const skipped = tracks.flatMap((track) => track.rows.map((row, i) => row.frame - (i === 0 ? 0 : track.rows[i - 1].frame + 1)));
  return {
    frames,
    tracks: tracks.length,
    rows: rows.length,
    keys: Object.fromEntries(Object.keys(tracks[0]?.key ?? {}).map((name) => [name, pack(tracks.map((track) => track.key[name]))])),
    counts: pack(tracks.map((track) => track.rows.length)),
    skipped: pack(skipped),
    columns: Object.fromEntries(columns.map((name) => [name, pack(rows.map((row) => row[name] ?? NaN), 0.001)])),
  };
}

const systemColumns = ['confirmed', 'probability', 'x', 'y', 'major', 'minor', 'angle', 'range', 'speed', 'direction', 'left', 'bottom', 'right', 'top', 'class', 'classProbability', 'color', 'upperClothingColor', 'lowerClothingColor', 'tags'];
const sensorColumns = ['x', 'y', 'speed', 'direction', 'u', 'v', 'range', 'left', 'bottom', 'right', 'top', 'coasting', 'confirmed', 'class', 'classProbability'];
export const words = ['human', 'car'];
const times = [0, 1, 2, 3, 4, 5];

/** Track 1 walks and is confirmed from 1 s, a car from 3 s; track 2 is tentative from 2 to 3 s. */
export function smallRun(label = 'a.jsonl', changes: Partial<RunData> = {}): RunData {
  return {
    label,
    time: pack(times, 0.001),
    received: pack(times.map((time) => time + 0.1), 0.001),
    source: pack(times.map((_, i) => i % 2)),
    tracks: packTable(6, [
      { key: { id: 1 }, rows: times.map((time) => ({ frame: time, confirmed: time >= 1 ? 1 : 0, probability: 0.4 + time / 10, x: 10 + time, y: -2, major: 1, minor: 0.5, angle: 30, left: 0, bottom: 0, right: 0.1, top: 0.2, class: time >= 3 ? 1 : 0, classProbability: 0.8 })) },
      { key: { id: 2 }, rows: [{ frame: 2, confirmed: 0, probability: 0.3 }, { frame: 3, confirmed: 0, probability: 0.2 }] },
    ], systemColumns),
    sensors: packTable(6, [
      { key: { track: 1, source: 0, id: 7 }, rows: times.map((time) => ({ frame: time, coasting: time === 3 || time === 4 ? 0.5 : 0 })) },
      { key: { track: 1, source: 1, id: 9 }, rows: [{ frame: 1, coasting: 0 }, { frame: 2, coasting: 0 }] },
      { key: { track: 2, source: 1, id: 5 }, rows: [{ frame: 2, coasting: 0 }, { frame: 3, coasting: 0 }] },
    ], ['coasting']),
    configuration: { veskarModule: { gate: 3, list: [1, 2] } },
    explanation: null,
    judgement: null,
    ...changes,
  };
}

function seen(tracks: Parameters<typeof packTable>[1]): SeenData {
  return { time: pack(times, 0.001), table: packTable(6, tracks, sensorColumns) };
}

export function smallReport(changes: Partial<ReportData> = {}): ReportData {
  return {
    version: 1,
    program: '1.0.0',
    recording: { name: 'small', truth: 'none' },
    start: 100,
    duration: 5,
    scene: {
      aspect: 16 / 9,
      camera: { position: [0, 0], footprint: [] },
      radar: { position: [0, 0], yaw: 0, fieldOfView: 120, range: 50 },
      rings: [{ distance: 10, image: [] }],
      earth: null,
    },
    words,
    video: seen([{ key: { id: 7 }, rows: times.map((time) => ({ frame: time, x: 10 + time, y: -2, u: 0.1, v: 0, left: 0, bottom: 0, right: 0.1, top: 0.2, coasting: 0 })) }]),
    radar: seen([{ key: { id: 9 }, rows: [{ frame: 1, x: 11, y: -2, u: 0.1, v: 0, coasting: 0 }] }]),
    truth: null,
    defaults: { veskarModule: { gate: 3, list: [1, 2] } },
    runs: [smallRun()],
    ...changes,
  };
}
