// SPDX-License-Identifier: Apache-2.0
// Measures the colours of the style sheet: contrast by WCAG 2, and distances as a deuteranope sees them (Machado,
// Oliveira and Fernandes 2009, severity 1).
import { readFileSync } from 'node:fs';
import { describe, expect, it } from 'vitest';

const style = readFileSync(new URL('../src/style.css', import.meta.url), 'utf8');

function coloursOf(selector: string): Record<string, string> {
  const begin = style.indexOf(`${selector} {`);
  const block = style.slice(begin, style.indexOf('}', begin));
  return Object.fromEntries([...block.matchAll(/--(\w+): (#[0-9a-f]{6});/g)].map(([, name, colour]) => [name, colour]));
}

/** Linear red, green and blue, 0 to 1. */
function linear(colour: string): number[] {
  return [1, 3, 5].map((at) => {
    const share = parseInt(colour.slice(at, at + 2), 16) / 255;
    return share <= 0.04045 ? share / 12.92 : ((share + 0.055) / 1.055) ** 2.4;
  });
}

function luminance(colour: string): number {
  const [r, g, b] = linear(colour);
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
}

function contrast(one: string, other: string): number {
  const [low, high] = [luminance(one), luminance(other)].sort((a, b) => a - b);
  return (high + 0.05) / (low + 0.05);
}

function seenByDeuteranopes(colour: string): number[] {
  const rows = [[0.367322, 0.860646, -0.227968], [0.280085, 0.672501, 0.047413], [-0.01182, 0.04294, 0.968881]];
  const rgb = linear(colour);
  return rows.map((row) => Math.min(1, Math.max(0, row.reduce((sum, factor, i) => sum + factor * rgb[i], 0))));
}

/** CIE L*a*b* of linear RGB. */
function lab([r, g, b]: number[]): number[] {
  const f = (t: number) => (t > 0.008856 ? Math.cbrt(t) : 7.787 * t + 16 / 116);
  const [x, y, z] = [f((0.4124 * r + 0.3576 * g + 0.1805 * b) / 0.9505), f(0.2126 * r + 0.7152 * g + 0.0722 * b), f((0.0193 * r + 0.1192 * g + 0.9505 * b) / 1.089)];
  return [116 * y - 16, 500 * (x - y), 200 * (y - z)];
}

/** CIE76 difference; 2 is just noticeable. */
function distance(one: string, other: string): number {
  const [a, b] = [one, other].map((colour) => lab(seenByDeuteranopes(colour)));
  return Math.hypot(...a.map((part, i) => part - b[i]));
}

const grounds = ['surface', 'ground', 'raised'];

describe.each([['light', ':root'], ['dark', ":root[data-theme='dark']"]])('the %s colours', (_, selector) => {
  const colours = coloursOf(selector);

  it.each(['text', 'muted', 'faint', 'accent', 'system', 'other', 'tentative', 'alarm', 'good'])('make text in %s readable', (name) => {
    for (const ground of grounds) {
      expect(contrast(colours[name], colours[ground])).toBeGreaterThanOrEqual(4.5);
    }
  });

  it.each(['ring', 'video', 'radar', 'truth', 'select', 'system', 'other', 'tentative'])('make lines in %s visible', (name) => {
    for (const ground of ['surface', 'ground']) {
      expect(contrast(colours[name], colours[ground])).toBeGreaterThanOrEqual(3);
    }
  });

  it.each([['system', 'other'], ['system', 'select'], ['other', 'select'], ['system', 'video'], ['system', 'radar'], ['video', 'radar'], ['other', 'radar']])('keep %s and %s apart for deuteranopes', (one, other) => {
    expect(distance(colours[one], colours[other])).toBeGreaterThan(30);
  });
});
