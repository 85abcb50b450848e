// SPDX-License-Identifier: Apache-2.0
import { describe, expect, it } from 'vitest';
import { csvOf } from '../src/csv';
import { svgOf, valueTicks } from '../src/svg';

describe('a table as CSV', () => {
  it('quotes what needs it', () => {
    expect(csvOf([['a', 'b, c'], ['say "x"', '-0.5 A better']])).toBe('a,"b, c"\r\n"say ""x""",-0.5 A better\r\n');
  });

  it('has no formulas', () => {
    expect(csvOf([['=1+1', '@x', '-cmd', '+3', '-1.5']])).toBe("'=1+1,'@x,'-cmd,+3,-1.5\r\n");
  });
});

describe('a plot as SVG', () => {
  const line = { label: 'a < b', colour: '#123456', dash: [2, 4], times: Float64Array.of(0, 1, 2, 3, 4), values: Float64Array.of(1, 2, NaN, 1, 0) };
  const figure = { title: 'T & U', lines: [line], span: { from: 1, to: 4 }, least: 0, most: 2, isWhole: true };

  it('draws the shown time, with gaps where there is no value', () => {
    const drawing = svgOf(figure);
    // From 48 to 788 and from 292 up to 46 pixels.
    expect(drawing).toContain('<path d="M48.0 46.0M541.3 169.0L788.0 292.0" stroke="#123456" stroke-width="1.5" fill="none" stroke-dasharray="2 4"/>');
  });

  it('never takes text for markup', () => {
    expect(svgOf(figure)).toContain('>T &amp; U</text>');
    expect(svgOf(figure)).toContain('>a &lt; b</text>');
  });

  it('labels round values', () => {
    expect(valueTicks(0, 3.24, true)).toEqual([0, 1, 2, 3]);
    expect(valueTicks(0, 1.02, false)).toEqual([0, 0.2, 0.4, 0.6, 0.8, 1]);
    expect(valueTicks(0, 17, false)).toEqual([0, 5, 10, 15]);
  });
});
