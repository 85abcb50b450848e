// SPDX-License-Identifier: Apache-2.0
// Shows the configurations of the runs and their differences.
import { element } from './dom';
import { letterOf, type Model } from './model';

/** The leaves of a JSON document by path. */
export function leavesOf(value: unknown, path = ''): Map<string, string> {
  if (value === null || typeof value !== 'object') {
    return new Map([[path, JSON.stringify(value) ?? '']]);
  }
  const leaves = new Map<string, string>();
  for (const [key, child] of Object.entries(value)) {
    const place = Array.isArray(value) ? `${path}[${key}]` : path ? `${path}.${key}` : key;
    leavesOf(child, place).forEach((leaf, at) => leaves.set(at, leaf));
  }
  return leaves;
}

export interface Setting {
  readonly path: string;
  readonly values: readonly string[];
  readonly differs: boolean;
}

export function settingsOf(configurations: readonly unknown[]): Setting[] {
  const all = configurations.map((configuration) => leavesOf(configuration));
  const paths = [...new Set(all.flatMap((leaves) => [...leaves.keys()]))];
  const settings = paths.map((path) => {
    const values = all.map((leaves) => leaves.get(path) ?? '–');
    return { path, values, differs: values.some((value) => value !== values[0]) };
  });
  return settings.sort((a, b) => Number(b.differs) - Number(a.differs));
}

export function showConfiguration(root: HTMLElement, model: Model): void {
  const settings = settingsOf(model.runs.map((run) => run.configuration));
  const count = settings.filter((setting) => setting.differs).length;
  const summary = count === 0 ? 'Both runs used the same configuration.' : `${count} ${count === 1 ? 'setting differs' : 'settings differ'}; they stand on top.`;
  root.replaceChildren(
    ...(model.isPair ? [element('p', { class: 'hint' }, summary)] : []),
    element('div', { class: 'scroll', tabindex: '0', role: 'region', 'aria-label': 'Configuration' }, element('table', { class: 'settings' },
      element('thead', {}, element('tr', {}, element('th', { scope: 'col' }, 'Setting'), ...model.runs.map((_, i) => element('th', { scope: 'col' }, model.isPair ? letterOf(i) : 'Value')))),
      element('tbody', {}, ...settings.map(({ path, values, differs }) => element('tr', { class: differs ? 'differs' : '' }, element('th', { scope: 'row' }, path), ...values.map((value) => element('td', {}, value))))))));
}
