// SPDX-License-Identifier: Apache-2.0
// Shows the metrics of the evaluation as a table.
import { element } from './dom';
import { letterOf, type Model } from './model';
import { csvButton } from './save';

export interface Table {
  readonly columns: readonly string[];
  readonly rows: readonly { readonly label: string; readonly cells: readonly string[]; readonly better: number }[];
}

/** Metrics of which smaller is better; for those in `more`, larger. */
const less = /^(GOSPA|OSPA|IDSW|Frag|ML|missed|false|duplicates|spuriousness|position_|velocity_|radial_rmse|cross_range_rmse|confirmation_delay|never_found|tracks_per_object|MOTP_distance)/;
const more = /^(MOTA|MOTP$|IDF1|IDP|IDR|HOTA|DetA|AssA|LocA|MT|completeness|class_agreement)/;

/** -1 when the first run is better, 1 when the second is, 0 when undecided. */
export function better(key: string, first: number | null, second: number | null): number {
  if (first === null || second === null || first === second) {
    return 0;
  }
  if (less.test(key)) {
    return second < first ? 1 : -1;
  }
  return more.test(key) ? (second > first ? 1 : -1) : 0;
}

/** The metrics of one part of the scene: the runs first, then the single sensors. */
export function tableOf(model: Model, part: string): Table | null {
  const judged = model.runs.map((run) => run.judgement?.parts.find((one) => one.part === part));
  const first = judged[0];
  if (!first) {
    return null;
  }
  const second = judged[1];
  const runs = second ? ['A', 'B', 'B − A'] : ['fusion'];
  const rows = first.figures.map((figure, i) => {
    const text = (value: number | null | undefined) => (value === null || value === undefined ? '–' : value.toFixed(figure.decimals));
    const [a, ...sensors] = figure.values;
    const b = second?.figures[i]?.values[0] ?? null;
    const cells = [text(a)];
    if (second) {
      const difference = a === null || b === null ? null : b - a;
      const which = better(figure.key, a, b);
      const word = which === 0 ? '' : ` ${letterOf(which > 0 ? 1 : 0)} better`;
      cells.push(text(b), difference === null ? '–' : `${difference > 0 ? '+' : ''}${text(difference)}${word}`);
    }
    return { label: figure.label, cells: [...cells, ...sensors.map(text)], better: second ? better(figure.key, a, b) : 0 };
  });
  return { columns: [...runs, ...first.trackers.slice(1)], rows };
}

/** Fills the panel with the figures of a part of the scene, and with what chooses another part. */
export function showMetrics(root: HTMLElement, model: Model, part = 'all'): void {
  const table = tableOf(model, part);
  if (!table) {
    root.replaceChildren(element('p', { class: 'empty' }, 'The recording has no truth to judge by.'));
    return;
  }
  const parts = model.runs[0].judgement?.parts.map((one) => one.part) ?? [];
  const chips = element('div', { class: 'segments', role: 'group', 'aria-label': 'Part of the scene' },
    ...parts.map((name) => element('button', { type: 'button', 'aria-pressed': `${name === part}`, click: () => showMetrics(root, model, name) }, name)));
  const split = model.isPair ? 3 : 1;
  root.replaceChildren(element('div', { class: 'panel-tools' }, chips, csvButton(root, 'metrics')), element('div', { class: 'scroll', tabindex: '0', role: 'region', 'aria-label': 'Metrics' }, element('table', { class: 'figures' },
    element('thead', {}, element('tr', {}, element('th', { scope: 'col' }, 'Figure'),
      ...table.columns.map((name, i) => element('th', { scope: 'col', class: i < split ? 'own' : '' }, name)))),
    element('tbody', {}, ...table.rows.map(({ label, cells, better: which }) => element('tr', {},
      element('th', { scope: 'row', class: label.startsWith('  ') ? 'sub' : '' }, label.trim()),
      ...cells.map((cell, i) => element('td', { class: [i < split ? 'own' : '', i === 2 && split === 3 && which !== 0 ? (which > 0 ? 'good' : 'bad') : ''].join(' ').trim() }, cell))))))));
}
