// SPDX-License-Identifier: Apache-2.0
// Points over two axes, as a drawing (SVG) that screen readers find by its title.
import { valueTicks } from '../svg';

export interface Series {
  readonly name: string;
  /** Class of the points in the style sheet. */
  readonly style: string;
  readonly x: readonly (number | null)[];
  readonly y: readonly (number | null)[];
}

export interface Scatter {
  readonly title: string;
  readonly xLabel: string;
  readonly yLabel: string;
  readonly series: readonly Series[];
  /** Fixed axes; otherwise all points are shown. */
  readonly xSpan?: readonly [number, number];
  readonly ySpan?: readonly [number, number];
  /** Height over width of the area. */
  readonly shape?: number;
}

const width = 480;
const left = 52;
const right = 12;
const top = 10;
const bottom = 40;

const known = (values: readonly (number | null)[]): number[] => values.filter((value): value is number => value !== null);

/** The least span around all values, and zero when `withZero`. */
export function spanOf(values: readonly number[], withZero: boolean): readonly [number, number] {
  const least = values.reduce((a, b) => Math.min(a, b), withZero ? 0 : Infinity);
  const most = values.reduce((a, b) => Math.max(a, b), withZero ? 0 : -Infinity);
  if (!(most > least)) {
    const middle = Number.isFinite(least) ? least : 0;
    return [middle - 1, middle + 1];
  }
  const margin = 0.04 * (most - least);
  return [least - margin, most + margin];
}

function shape<Name extends keyof SVGElementTagNameMap>(name: Name, attributes: Record<string, string | number>, text = ''): SVGElementTagNameMap[Name] {
  const made = document.createElementNS('http://www.w3.org/2000/svg', name);
  for (const [key, value] of Object.entries(attributes)) {
    made.setAttribute(key, typeof value === 'number' ? value.toFixed(1) : value);
  }
  made.textContent = text;
  return made;
}

export function scatter({ title, xLabel, yLabel, series, xSpan, ySpan, shape: ratio = 0.55 }: Scatter): SVGSVGElement {
  const height = top + bottom + ratio * (width - left - right);
  const [x0, x1] = xSpan ?? spanOf(series.flatMap(({ x }) => known(x)), false);
  const [y0, y1] = ySpan ?? spanOf(series.flatMap(({ y }) => known(y)), true);
  const px = (x: number) => left + ((x - x0) / (x1 - x0)) * (width - left - right);
  const py = (y: number) => height - bottom - ((y - y0) / (y1 - y0)) * (height - top - bottom);
  const drawing = shape('svg', { viewBox: `0 0 ${width} ${height}`, class: 'scatter', role: 'img', 'aria-label': `${title}: ${yLabel} over ${xLabel}` });
  const axis = (from: readonly [number, number], to: readonly [number, number], style: string) =>
    drawing.append(shape('line', { x1: from[0], y1: from[1], x2: to[0], y2: to[1], class: style }));
  for (const x of valueTicks(x0, x1, false)) {
    axis([px(x), top], [px(x), height - bottom], 'grid');
    drawing.append(shape('text', { x: px(x), y: height - bottom + 15, 'text-anchor': 'middle' }, `${x}`));
  }
  for (const y of valueTicks(y0, y1, false)) {
    axis([left, py(y)], [width - right, py(y)], y === 0 ? 'zero' : 'grid');
    drawing.append(shape('text', { x: left - 6, y: py(y) + 4, 'text-anchor': 'end' }, `${y}`));
  }
  drawing.append(
    shape('text', { x: (left + width - right) / 2, y: height - 6, 'text-anchor': 'middle' }, xLabel),
    shape('text', { x: 0, y: 0, 'text-anchor': 'middle', transform: `translate(13 ${((top + height - bottom) / 2).toFixed(1)}) rotate(-90)` }, yLabel),
  );
  for (const { x, y, style } of series) {
    const group = shape('g', { class: style });
    x.forEach((value, i) => {
      const other = y[i];
      if (value !== null && other !== null && other !== undefined && value >= x0 && value <= x1 && other >= y0 && other <= y1) {
        group.append(shape('circle', { cx: px(value), cy: py(other), r: 2 }));
      }
    });
    drawing.append(group);
  }
  return drawing;
}
