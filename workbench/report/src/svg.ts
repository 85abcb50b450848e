// SPDX-License-Identifier: Apache-2.0
// A plot as a drawing (SVG), for documents.
import { tickText } from './clock';
import { lastNotAfter } from './table';
import { tickSpacing, type Span } from './timeline';

export interface Line {
  readonly label: string;
  readonly colour: string;
  readonly dash?: number[];
  readonly times: Float64Array;
  readonly values: Float64Array;
}

export interface Figure {
  readonly title: string;
  readonly lines: readonly Line[];
  readonly span: Span;
  readonly least: number;
  readonly most: number;
  readonly isWhole: boolean;
}

const [width, height] = [800, 320];
const area = { left: 48, right: width - 12, top: 46, bottom: height - 28 };

function escaped(text: string): string {
  return text.replaceAll('&', '&amp;').replaceAll('<', '&lt;').replaceAll('>', '&gt;').replaceAll('"', '&quot;');
}

/** Round numbers from `least` to `most`, about six. */
export function valueTicks(least: number, most: number, isWhole: boolean): number[] {
  const rough = Math.max((most - least) / 6, isWhole ? 1 : 1e-9);
  const power = 10 ** Math.floor(Math.log10(rough));
  const step = [1, 2, 5, 10].map((factor) => factor * power).find((size) => size >= rough - 1e-12) ?? 10 * power;
  const first = Math.ceil(least / step - 1e-9);
  return Array.from({ length: Math.floor(most / step + 1e-9) - first + 1 }, (_, i) => Number(((first + i) * step).toPrecision(12)));
}

/** The lines of a figure over its time, with axes, title and key. */
export function svgOf({ title, lines, span, least, most, isWhole }: Figure): string {
  const x = (time: number) => area.left + ((time - span.from) / Math.max(1e-9, span.to - span.from)) * (area.right - area.left);
  const y = (value: number) => area.bottom - ((value - least) / Math.max(1e-9, most - least)) * (area.bottom - area.top);
  const text = (px: number, py: number, anchor: string, words: string, more = '') =>
    `<text x="${px.toFixed(1)}" y="${py.toFixed(1)}" text-anchor="${anchor}"${more}>${escaped(words)}</text>`;
  const rule = (x1: number, y1: number, x2: number, y2: number) => `<path d="M${x1.toFixed(1)} ${y1.toFixed(1)}L${x2.toFixed(1)} ${y2.toFixed(1)}" stroke="#ccc"/>`;
  const parts = [`<rect width="${width}" height="${height}" fill="#fff"/>`, text(12, 20, 'start', title, ' font-weight="600"')];
  for (const value of valueTicks(least, most, isWhole)) {
    parts.push(rule(area.left, y(value), area.right, y(value)), text(area.left - 6, y(value) + 4, 'end', `${value}`));
  }
  const spacing = tickSpacing(span.to - span.from, area.right - area.left);
  for (let time = Math.ceil(span.from / spacing - 1e-9) * spacing; time <= span.to + 1e-9; time += spacing) {
    parts.push(rule(x(time), area.top, x(time), area.bottom), text(x(time), area.bottom + 16, 'middle', tickText(time, span.to >= 180)));
  }
  let keyAt = 12;
  for (const { label, colour, dash, times, values } of lines) {
    const style = `stroke="${escaped(colour)}" stroke-width="1.5" fill="none"${dash ? ` stroke-dasharray="${dash.join(' ')}"` : ''}`;
    parts.push(`<path d="M${keyAt} 34h18" ${style}/>`, text(keyAt + 22, 38, 'start', label));
    keyAt += 40 + 7 * label.length;
    let path = '';
    let isPenDown = false;
    for (let i = Math.max(0, lastNotAfter(times, span.from)); i < times.length && times[i] <= span.to; ++i) {
      if (!Number.isNaN(values[i])) {
        path += `${isPenDown ? 'L' : 'M'}${x(Math.max(span.from, times[i])).toFixed(1)} ${y(Math.min(most, values[i])).toFixed(1)}`;
      }
      isPenDown = !Number.isNaN(values[i]);
    }
    parts.push(`<path d="${path}" ${style}/>`);
  }
  return `<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 ${width} ${height}" width="${width}" height="${height}" font-family="sans-serif" font-size="12" fill="#222">${parts.join('')}</svg>\n`;
}
