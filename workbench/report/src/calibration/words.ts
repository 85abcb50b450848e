// SPDX-License-Identifier: Apache-2.0
// The answer of a calibration in a sentence.
import type { AnswerData, ValueData } from './data';

const unitText = (unit: string): string => (unit === 'deg' ? '\u00b0' : unit === '' ? '' : ` ${unit}`);

export const signed = (value: number, digits: number): string => `${value < 0 ? '\u2212' : '+'}${Math.abs(value).toFixed(digits)}`;

/** Digits that a standard deviation justifies. */
export function digitsFor(std: number): number {
  return std > 0 && Number.isFinite(std) ? Math.max(0, Math.min(5, 1 - Math.floor(Math.log10(std)))) : 3;
}

/** "camera.yaw by +3.02°" */
function correctionText([name, { correction, unit, std }]: readonly [string, ValueData]): string {
  return `${name} by ${signed(correction, digitsFor(std))}${unitText(unit)}`;
}

function listed(items: readonly string[]): string {
  return items.length < 2 ? items.join('') : `${items.slice(0, -1).join(', ')} and ${items[items.length - 1]}`;
}

/** What a reader has to know first. */
export function verdictOf({ values, refusal, samples }: AnswerData): string {
  const all = Object.entries(values);
  const corrected = all.filter(([, { verdict }]) => verdict === 'corrected');
  const unknown = all.filter(([, { verdict }]) => verdict === 'cannot tell').map(([name]) => name);
  if (refusal !== '') {
    return `Nothing is corrected: ${refusal}.`;
  }
  if (all.length > 0 && unknown.length === all.length) {
    return samples === 0 ? 'Nothing can be told: no object was seen by both sensors long enough.' : 'The data cannot tell any of the values.';
  }
  const first = corrected.length > 0 ? `The installation is corrected: ${listed(corrected.map(correctionText))}.` : 'The installation is as stated.';
  return unknown.length > 0 ? `${first} The data cannot tell ${listed(unknown)}.` : first;
}
