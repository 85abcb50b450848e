// SPDX-License-Identifier: Apache-2.0
// The data that the program writes into the page, see workbench/report/Report.cpp.
import type { Column } from './column';
import type { PackedTable } from './table';

export type Point = readonly [number, number];

/** Where on Earth the device is; positions are linear in the plane of the ground. */
export interface EarthData {
  readonly latitude: number;
  readonly longitude: number;
  /** Of the device, degrees clockwise from north. */
  readonly heading: number;
  /** Degrees per metre. */
  readonly latitudePerNorth: number;
  readonly longitudePerEast: number;
}

export interface SceneData {
  readonly aspect: number;
  readonly camera: { readonly position: Point; readonly footprint: readonly Point[] };
  readonly radar: {
    readonly position: Point;
    readonly yaw: number;
    readonly fieldOfView: number;
    readonly range: number;
  };
  readonly rings: readonly { readonly distance: number; readonly image: readonly Point[] }[];
  /** Null: not known. */
  readonly earth: EarthData | null;
}

/** The map under the plan. */
export interface MapData {
  /** Address of a tile in Web Mercator, with {z}, {x} and {y}. */
  readonly tiles: string;
  readonly attribution: string;
}

export interface SeenData {
  readonly time: Column;
  readonly table: PackedTable;
}

export interface FigureData {
  readonly key: string;
  readonly label: string;
  readonly decimals: number;
  /** One per tracker; null: not defined for this recording. */
  readonly values: readonly (number | null)[];
}

export interface JudgementData {
  readonly cutoff: number;
  readonly time: Column;
  readonly moments: number;
  readonly gospa: Column;
  /** The system track matched with each true object; columns: track. */
  readonly matches: PackedTable;
  readonly parts: readonly {
    readonly part: string;
    readonly trackers: readonly string[];
    readonly figures: readonly FigureData[];
  }[];
}

export interface ExplanationData {
  readonly time: Column;
  readonly source: Column;
  readonly pairs: PackedTable;
  readonly events: PackedTable;
}

export interface RunData {
  readonly label: string;
  readonly time: Column;
  readonly received: Column;
  readonly source: Column;
  readonly tracks: PackedTable;
  readonly sensors: PackedTable;
  readonly configuration: unknown;
  readonly explanation: ExplanationData | null;
  readonly judgement?: JudgementData | null;
}

export interface ReportData {
  readonly version: number;
  readonly program: string;
  readonly recording: {
    readonly name?: string;
    readonly origin?: string;
    readonly licence?: string;
    readonly seed?: number;
    readonly truth?: string;
  };
  readonly start: number;
  readonly duration: number;
  readonly scene: SceneData;
  /** Only where it is wanted, and where the device is known. */
  readonly map?: MapData;
  readonly words: readonly string[];
  readonly video: SeenData;
  readonly radar: SeenData;
  readonly truth: SeenData | null;
  /** What a run uses when no configuration is named; null: what the first run used. */
  readonly defaults: unknown;
  readonly runs: readonly RunData[];
}
