// SPDX-License-Identifier: Apache-2.0
// What the live program tells its viewers, see live/view/StateText.h and docs/live-view.md.
import type { SceneData } from '../data';
import type { SourceName } from '../vocabulary';

export interface Box {
  readonly left: number | null;
  readonly bottom: number | null;
  readonly right: number | null;
  readonly top: number | null;
}

/** A track of a frame as in files of fused tracks. */
export interface TrackData {
  readonly id: number;
  readonly confirmed: boolean;
  readonly probability: number | null;
  readonly image: readonly [number | null, number | null];
  readonly range: number | null;
  readonly position?: readonly [number | null, number | null];
  /** xx, xy, yy, m². */
  readonly positionCovariance?: readonly [number | null, number | null, number | null];
  readonly speed?: number | null;
  readonly direction?: number | null;
  readonly class?: string;
  readonly classProbability?: number;
  readonly color?: string;
  readonly upperClothingColor?: string;
  readonly lowerClothingColor?: string;
  readonly box: Box;
  readonly sensors: readonly { readonly source: SourceName; readonly id: number; readonly coasting: number }[];
  readonly tags?: readonly string[];
}

export interface FrameData {
  readonly source: SourceName;
  /** s, by the clock of the program. */
  readonly time: number;
  readonly received: number;
  readonly tracks: readonly TrackData[];
}

export interface StateData {
  readonly fused: FrameData;
  readonly video: FrameData | null;
  readonly radar: FrameData | null;
}

export interface SensorData {
  readonly name: string;
  readonly source: SourceName;
}

export interface HelloData {
  readonly program: string;
  /** Tells one start of the program from another. */
  readonly start: string;
  readonly scene: SceneData;
  readonly sensors: readonly SensorData[];
}

/** The program's status document, see docs/live-service.md. */
export interface StatusData {
  readonly uptime: number;
  readonly latencyMedian: number;
  readonly latencyP99: number;
  readonly sensor?: Readonly<Record<string, Readonly<Record<string, number | null>>>>;
}

/** What the camera shows: a picture to be had at /picture, or why there is none. */
export interface PictureData {
  readonly number: number;
  /** When it was taken, s, by the clock of the program. */
  readonly time?: number;
  readonly fault?: string;
}

interface Pair {
  readonly track: number;
  readonly sensor?: SourceName;
  readonly id?: number;
  readonly other?: number;
  readonly distance?: number | null;
  readonly limit?: number | null;
  readonly velocitySimilarity?: number | null;
  readonly similarityLimit?: number | null;
  readonly gate?: string;
  readonly class?: string;
  readonly outcome?: string;
}

interface Event {
  readonly track?: number;
  readonly sensor?: SourceName;
  readonly id?: number;
  readonly probability?: number | null;
  readonly rangeStd?: number | null;
  readonly coasting?: number | null;
  readonly reason?: string;
}

/** What was decided in a frame, a line of `veskar replay --explain`. */
export interface DecisionData {
  readonly source: SourceName;
  readonly time: number;
  readonly continuations?: readonly Pair[];
  readonly candidates?: readonly Pair[];
  readonly mergeCandidates?: readonly Pair[];
  readonly starts?: readonly Event[];
  readonly withheldStarts?: readonly Event[];
  readonly confirmations?: readonly Event[];
  readonly withheldConfirmations?: readonly Event[];
  readonly prunings?: readonly Event[];
  readonly deletions?: readonly Event[];
}
