// SPDX-License-Identifier: Apache-2.0
// The page of a calibration: what it says of each value, and the errors of all pairs that it is based on.
import { button, element, icon } from '../dom';
import { csvButton, saveCsv } from '../save';
import { applyTheme, onSystemTheme, otherTheme } from '../theme';
import type { AnswerData, CalibrationData, ErrorsData, PairsData, ValueData } from './data';
import { scatter, spanOf, type Scatter, type Series } from './scatter';
import { digitsFor, signed, verdictOf } from './words';

const unknown = '\u2013';

function row(cells: readonly string[], kind: 'th' | 'td' = 'td'): HTMLTableRowElement {
  return element('tr', {}, ...cells.map((text, i) => (kind === 'th' ? element('th', { scope: 'col' }, text) : i === 0 ? element('th', { scope: 'row' }, text) : element('td', {}, text))));
}

function table(head: readonly string[], body: readonly (readonly string[])[]): HTMLTableElement {
  return element('table', {}, element('thead', {}, row(head, 'th')), element('tbody', {}, ...body.map((cells) => row(cells))));
}

function section(title: string, name: string, ...content: readonly (Node | string)[]): HTMLElement {
  const made = element('section', { 'aria-label': title });
  made.append(element('header', {}, element('h2', {}, title), csvButton(made, name)), ...content);
  return made;
}

function cellsOf(name: string, value: ValueData): string[] {
  const digits = digitsFor(value.std);
  const number = (x: number | undefined) => (x === undefined ? unknown : signed(x, digits));
  const interval = value.interval95 === undefined ? unknown : `\u00b1${value.interval95.toFixed(digits)}`;
  const stated = value.stated === undefined ? unknown : `${value.stated}`;
  const corrected = value.stated !== undefined && value.verdict === 'corrected' ? (value.stated + value.correction).toFixed(digits) : unknown;
  return [name, value.unit, stated, number(value.error), interval, corrected, value.verdict, value.remedy ?? ''];
}

function values({ values: all }: AnswerData): HTMLElement {
  const head = ['Value', 'Unit', 'Stated', 'Error', '95 %', 'Corrected', 'Verdict', 'To tell it'];
  return section('Values', 'values', table(head, Object.entries(all).map(([name, value]) => cellsOf(name, value))));
}

function typical({ errors, heldOut }: AnswerData): HTMLElement {
  const number = (value: number | null, digits: number) => (value === null ? unknown : value.toFixed(digits));
  const cells = (name: string, one: ErrorsData) => [name, number(one.bearingDegrees, 3), number(one.depressionDegrees, 3), number(one.standardDeviations, 2)];
  const rows = [cells('all pairs, as stated', errors.before), cells('all pairs, corrected', errors.after)];
  if (heldOut.before.standardDeviations) {
    rows.push(cells('held-out time, as stated', heldOut.before), cells('held-out time, corrected without it', heldOut.after));
  }
  return section('Typical errors', 'typical-errors', table(['Of', 'Bearing [\u00b0]', 'Depression [\u00b0]', 'In standard deviations'], rows));
}

function correlations({ correlations: all, values: named }: AnswerData): HTMLElement {
  const names = Object.keys(named);
  const between = (a: string, b: string) => (a === b ? 1 : all[a]?.[b] ?? all[b]?.[a]);
  const body = names.map((a) => [a, ...names.map((b) => between(a, b)?.toFixed(2) ?? unknown)]);
  return section('Correlations', 'correlations', table(['With', ...names], body));
}

const columns = ['time', 'range', 'u', 'v', 'bearingBefore', 'bearingAfter', 'depressionBefore', 'depressionAfter'] as const;

function rowsOf(pairs: PairsData): string[][] {
  return [[...columns], ...pairs.time.map((_, i) => columns.map((name) => `${pairs[name][i] ?? ''}`))];
}

function figure(drawn: Scatter): HTMLElement {
  return element('figure', {}, element('figcaption', {}, drawn.title), scatter(drawn));
}

/** Errors before and after the correction, over `x`. */
function errorFigure(pairs: PairsData, title: string, xLabel: string, x: readonly number[], which: 'bearing' | 'depression'): HTMLElement {
  const series: Series[] = [
    { name: 'as stated', style: 'before', x, y: pairs[`${which}Before`] },
    { name: 'corrected', style: 'after', x, y: pairs[`${which}After`] },
  ];
  return figure({ title, xLabel, yLabel: `error of ${which} [\u00b0]`, series });
}

function plots({ pairs, aspect }: CalibrationData): HTMLElement {
  const made = element('section', { 'aria-label': 'Errors of the pairs' });
  const key = element('p', { class: 'key' }, element('span', { class: 'dot before' }), ' as stated ', element('span', { class: 'dot after' }), ' corrected');
  const allPairs = button('CSV', 'Save the errors of the pairs as CSV', () => saveCsv('pairs', rowsOf(pairs)), { class: 'save' });
  made.append(element('header', {}, element('h2', {}, 'Errors of the pairs'), key, allPairs));
  const hasBearings = pairs.bearingBefore.some((value) => value !== null);
  const grid = element('div', { class: 'figures' });
  if (hasBearings) {
    grid.append(
      errorFigure(pairs, 'A slope is a wrong scale or focal length', 'column in the image', pairs.u, 'bearing'),
      errorFigure(pairs, 'A slope is a drift of the clocks', 'time from the middle [s]', pairs.time, 'bearing'),
    );
  }
  grid.append(
    errorFigure(pairs, 'A bend towards small ranges is a wrong height', 'range [m]', pairs.range, 'depression'),
    errorFigure(pairs, 'A slope is a roll', 'column in the image', pairs.u, 'depression'),
    figure({
      title: 'Where in the image the pairs were', xLabel: 'column', yLabel: 'row', shape: 1 / aspect,
      xSpan: [-1, 1], ySpan: spanOf([-1, 1], false), series: [{ name: 'pairs', style: 'after', x: pairs.u, y: pairs.v }],
    }),
  );
  made.append(grid);
  return made;
}

export function showCalibration(root: HTMLElement, data: CalibrationData): void {
  const { answer, name, program } = data;
  applyTheme('auto');
  onSystemTheme(() => applyTheme('auto'));
  const theme = button(icon('theme'), 'Light or dark', () => applyTheme(otherTheme()), { class: 'theme' });
  root.classList.add('calibration');
  root.replaceChildren(
    element('header', { class: 'top' }, element('h1', {}, `Calibration of ${name}`), element('span', { class: 'program' }, `veskar ${program}`), theme),
    element('main', {},
      element('p', { class: 'verdict' }, verdictOf(answer)),
      element('p', { class: 'basis' }, `${answer.samples} samples of objects that both sensors saw, in ${answer.clusters} clusters with independent errors. Errors are true minus stated.`),
      values(answer), typical(answer), plots(data), correlations(answer)),
  );
}
