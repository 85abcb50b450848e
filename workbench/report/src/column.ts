// SPDX-License-Identifier: Apache-2.0
// Decodes columns as encoded by workbench/report/Column.h.

export interface PackedColumn {
  readonly step: number;
  readonly data: string;
}

/** A column of the report, or numbers that need no decoding, as the live view collects them. */
export type Column = PackedColumn | Float64Array;

/** Represents a missing number. */
export const missing = -(2 ** 28) - 1;

/** Decodes a column of `count` integers (steps). */
export function unpack(column: Column, count: number): Int32Array {
  if (column instanceof Float64Array) {
    return Int32Array.from(column);
  }
  const bytes = atob(column.data);
  const steps = new Int32Array(count);
  let at = 0;
  const next = (): number => {
    let value = 0;
    let place = 1;
    for (;;) {
      if (at >= bytes.length) {
        throw new Error('a column of the report is cut off');
      }
      const byte = bytes.charCodeAt(at++);
      value += (byte & 0x7f) * place;
      if (byte < 0x80) {
        return value;
      }
      place *= 0x80;
    }
  };
  let last = 0;
  for (let i = 0; i < count; ) {
    const folded = next();
    if (folded === 0) {
      const end = i + next() + 1;
      steps.fill(last, i, end);
      i = end;
    } else {
      last += folded % 2 === 0 ? folded / 2 : -(folded + 1) / 2;
      steps[i++] = last;
    }
  }
  return steps;
}

/** Decodes the numbers of a column; NaN where missing. */
export function numbersOf(column: Column, count: number): Float64Array {
  if (column instanceof Float64Array) {
    return column;
  }
  const numbers = new Float64Array(count);
  const steps = unpack(column, count);
  for (let i = 0; i < count; ++i) {
    numbers[i] = steps[i] === missing ? NaN : steps[i] * column.step;
  }
  return numbers;
}
