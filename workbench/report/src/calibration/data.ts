// SPDX-License-Identifier: Apache-2.0
// What `veskar calibrate --page` writes into the page.

export type Verdict = 'corrected' | 'as stated' | 'cannot tell';

export interface ValueData {
  readonly unit: string;
  readonly std: number;
  readonly verdict: Verdict;
  readonly correction: number;
  readonly stated?: number;
  readonly remedy?: string;
  readonly error?: number;
  readonly interval95?: number;
}

/** Medians of absolute errors; null: not known. */
export interface ErrorsData {
  readonly bearingDegrees: number | null;
  readonly depressionDegrees: number | null;
  readonly standardDeviations: number | null;
}

export interface AnswerData {
  readonly samples: number;
  readonly clusters: number;
  readonly values: Readonly<Record<string, ValueData>>;
  readonly correlations: Readonly<Record<string, Readonly<Record<string, number>>>>;
  readonly errors: { readonly before: ErrorsData; readonly after: ErrorsData };
  readonly heldOut: { readonly before: ErrorsData; readonly after: ErrorsData };
  readonly refusal: string;
}

type Numbers = readonly (number | null)[];

/** One entry per pair of tracks and moment: s, m, image units, degrees. */
export interface PairsData {
  readonly time: readonly number[];
  readonly range: readonly number[];
  readonly u: readonly number[];
  readonly v: readonly number[];
  readonly bearingBefore: Numbers;
  readonly bearingAfter: Numbers;
  readonly depressionBefore: Numbers;
  readonly depressionAfter: Numbers;
}

export interface CalibrationData {
  readonly version: number;
  readonly program: string;
  readonly name: string;
  readonly aspect: number;
  readonly answer: AnswerData;
  readonly pairs: PairsData;
}
