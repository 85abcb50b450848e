// SPDX-License-Identifier: Apache-2.0
// Shows the configurations of the runs by subject, and what differs between them and from the defaults.
import { element } from './dom';
import { letterOf, type Model } from './model';
import { csvButton } from './save';

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
  readonly usual: string;
  /** Whether the runs differ in it. */
  readonly differs: boolean;
  /** Whether a run has not used the default. */
  readonly isChanged: boolean;
}

export interface Subject {
  readonly title: string;
  readonly settings: readonly Setting[];
}

/** What stands for a setting that a file does not have. */
const absent = '–';

/** The sections of a configuration. */
const subjects: Readonly<Record<string, string>> = {
  veskarModule: 'Fusion: gating, association, confirmation',
  veskarRules: 'Rules beyond the basic fusion',
  veskarInputs: 'Accuracy of the inputs',
  veskarHost: 'From reports to tracks',
  veskarDetectionPriority: 'Detection priority',
};

/** All settings: those in which the runs differ, those that are not as by default, then the others by subject. */
export function subjectsOf(configurations: readonly unknown[], defaults: unknown): Subject[] {
  const all = configurations.map((configuration) => leavesOf(configuration));
  const usual = leavesOf(defaults);
  const paths = [...new Set([...all, usual].flatMap((leaves) => [...leaves.keys()]))];
  const settings = paths.map((path): Setting => {
    const values = all.map((leaves) => leaves.get(path) ?? absent);
    const common = usual.get(path) ?? absent;
    return { path, values, usual: common, differs: values.some((value) => value !== values[0]), isChanged: values.some((value) => value !== common) };
  });
  const sectionOf = ({ path }: Setting) => path.split('.')[0];
  const others = settings.filter(({ differs, isChanged }) => !differs && !isChanged);
  const sections = [...new Set([...Object.keys(subjects), ...others.map(sectionOf)])];
  return [
    { title: 'Differs between A and B', settings: settings.filter(({ differs }) => differs) },
    { title: 'Not as by default', settings: settings.filter(({ differs, isChanged }) => !differs && isChanged) },
    ...sections.map((section) => ({ title: subjects[section] ?? section, settings: others.filter((setting) => sectionOf(setting) === section) })),
  ].filter((subject) => subject.settings.length > 0);
}

function summaryOf(model: Model, all: readonly Setting[]): string {
  const differing = all.filter((setting) => setting.differs).length;
  const changed = all.filter((setting) => setting.isChanged).length;
  const count = (n: number, word: string) => `${n} ${n === 1 ? `setting ${word}s` : `settings ${word}`}`;
  const runs = !model.isPair ? [] : differing === 0 ? ['Both runs used the same configuration.'] : [`${count(differing, 'differ')} between the runs.`];
  return [...runs, changed === 0 ? 'Everything is as by default.' : `${count(changed, 'differ')} from the defaults.`].join(' ');
}

export function showConfiguration(root: HTMLElement, model: Model): void {
  const shown = subjectsOf(model.runs.map((run) => run.configuration), model.data.defaults ?? model.runs[0].configuration);
  const columns = [...model.runs.map((_, i) => (model.isPair ? letterOf(i) : 'Used')), 'Default'];
  const rowOf = ({ path, values, usual, differs, isChanged }: Setting) =>
    element('tr', { class: [differs ? 'differs' : '', isChanged ? 'changed' : ''].join(' ').trim() }, element('th', { scope: 'row' }, path),
      ...values.map((value) => element('td', { class: value === usual ? '' : 'unusual' }, value)), element('td', {}, usual));
  root.replaceChildren(
    element('div', { class: 'panel-tools' }, element('p', { class: 'hint' }, summaryOf(model, shown.flatMap(({ settings }) => settings))), csvButton(root, 'configuration')),
    element('div', { class: 'scroll', tabindex: '0', role: 'region', 'aria-label': 'Configuration' }, element('table', { class: 'settings' },
      element('thead', {}, element('tr', {}, element('th', { scope: 'col' }, 'Setting'), ...columns.map((name) => element('th', { scope: 'col' }, name)))),
      ...shown.map(({ title, settings }) => element('tbody', {},
        element('tr', { class: 'subject' }, element('th', { scope: 'rowgroup', colspan: String(columns.length + 1) }, title)), ...settings.map(rowOf))))));
}
