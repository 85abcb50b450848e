// SPDX-License-Identifier: Apache-2.0
// From the program's frames to rows of tables.
import type { PackedTable } from '../table';
import { sourceNames } from '../vocabulary';
import type { FrameData, TrackData } from './protocol';
import { tableOf, type Row, type Words } from './rows';

const degrees = 180 / Math.PI;

/** The covariance ellipse of one standard deviation: half-axes, m, and the angle of the larger one, degrees. */
export function ellipseOf(covariance: TrackData['positionCovariance']): [major: number, minor: number, angle: number] {
  if (!covariance || covariance.includes(null)) {
    return [NaN, NaN, NaN];
  }
  const [xx, xy, yy] = covariance as readonly [number, number, number];
  const middle = (xx + yy) / 2;
  const reach = Math.hypot((xx - yy) / 2, xy);
  const root = (variance: number) => Math.sqrt(Math.max(0, variance));
  return [root(middle + reach), root(middle - reach), (Math.atan2(2 * xy, xx - yy) / 2) * degrees];
}

const number = (value: number | null | undefined): number => value ?? NaN;
const boxOf = ({ box }: TrackData) => [number(box.left), number(box.bottom), number(box.right), number(box.top)];
const placeOf = ({ position }: TrackData) => [number(position?.[0]), number(position?.[1])];

const systemColumns = [
  'x', 'y', 'left', 'bottom', 'right', 'top', 'major', 'minor', 'angle', 'confirmed', 'probability', 'range', 'speed', 'direction', 'class',
  'classProbability', 'color', 'upperClothingColor', 'lowerClothingColor', 'tags',
];

/** The system tracks of some frames. */
export function systemTable(frames: readonly FrameData[], words: Words): PackedTable {
  return tableOf(['id'], systemColumns, frames.map((frame) => frame.tracks.map((track): Row => ({
    key: [track.id],
    values: [
      ...placeOf(track), ...boxOf(track), ...ellipseOf(track.positionCovariance), track.confirmed ? 1 : 0, number(track.probability),
      number(track.range), number(track.speed), number(track.direction), words.numberOf(track.class), number(track.classProbability),
      words.numberOf(track.color), words.numberOf(track.upperClothingColor), words.numberOf(track.lowerClothingColor),
      words.numberOf(track.tags?.join(', ')),
    ],
  }))));
}

/** The sensor tracks that feed the system tracks of some frames. */
export function feedTable(frames: readonly FrameData[]): PackedTable {
  return tableOf(['track', 'source', 'id'], ['coasting'], frames.map((frame) => frame.tracks.flatMap((track) =>
    track.sensors.map(({ source, id, coasting }): Row => ({ key: [track.id, sourceNames.indexOf(source), id], values: [coasting] })))));
}

const sensorColumns = ['x', 'y', 'left', 'bottom', 'right', 'top', 'u', 'v', 'range', 'speed', 'direction', 'coasting', 'confirmed', 'class', 'classProbability'];

/** What a sensor sees in some frames. The ground velocity from a camera is too inaccurate to be shown. */
export function sensorTable(frames: readonly FrameData[], words: Words): PackedTable {
  return tableOf(['id'], sensorColumns, frames.map((frame) => frame.tracks.map((track): Row => ({
    key: [track.id],
    values: [
      ...placeOf(track), ...boxOf(track), number(track.image[0]), number(track.image[1]), number(track.range),
      frame.source === 'radar' ? number(track.speed) : NaN, frame.source === 'radar' ? number(track.direction) : NaN,
      number(track.sensors[0]?.coasting), track.confirmed ? 1 : 0, words.numberOf(track.class), number(track.classProbability),
    ],
  }))));
}
