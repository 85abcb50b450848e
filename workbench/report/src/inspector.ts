// SPDX-License-Identifier: Apache-2.0
// What is known of the selected object at the shown time.
import { timeText } from './clock';
import { countText } from './describe';
import { element, setText, type Properties } from './dom';
import { frameWithReasons, reasonsOf } from './explain';
import { factsAt, titleOf } from './facts';
import { coastingShown, lookupTime, type Model, type Run } from './model';
import { signOf } from './signs';
import type { Selection } from './state';
import { TrackList } from './tracklist';
import { sourceNames } from './vocabulary';

/** While the time runs, the text changes at most once in this time, ms, so that it can be read. */
const readingTime = 100;

/**
 * The side panel; on a phone a sheet above the playback, of which only the heading shows until something is selected
 * or the heading is tapped. `select` is called for what is named there.
 */
export class Inspector {
  readonly root: HTMLElement;
  private readonly heading = element('span', {});
  private readonly handle = element('button', { type: 'button', class: 'handle', 'aria-expanded': 'false', click: () => this.open(!this.isOpen) }, this.heading);
  private readonly body = element('div', { class: 'inspector-body' });
  private readonly list: TrackList;
  private readonly legend: HTMLElement;
  private shown = { time: NaN, selection: '', when: -Infinity };

  constructor(
    private readonly model: Model,
    private readonly select: (selection: Selection) => void,
  ) {
    this.list = new TrackList(model, select);
    this.legend = legendOf(model);
    this.root = element('aside', { class: 'inspector', 'aria-label': 'Objects' }, this.handle, this.body);
  }

  private get isOpen(): boolean {
    return this.root.classList.contains('open');
  }

  private open(isOpen: boolean): void {
    this.root.classList.toggle('open', isOpen);
    this.handle.setAttribute('aria-expanded', String(isOpen));
  }

  /**
   * Shows the selected object: a new selection at once, a new time when the last text could be read.
   *
   * @returns false when the text is still that of an earlier time, so that it must be drawn again
   */
  draw(selection: Selection | null, time: number): boolean {
    const key = JSON.stringify(selection);
    const isSame = key === this.shown.selection;
    if (isSame && time === this.shown.time) {
      return true;
    }
    const when = performance.now();
    if (isSame && when - this.shown.when < readingTime) {
      return false;
    }
    if (key !== this.shown.selection) {
      this.open(selection !== null);
    }
    this.shown = { time, selection: key, when };
    setText(this.heading, selection ? titleOf(this.model, selection) : countText(this.model, time));
    if (selection) {
      this.body.replaceChildren(...ofSelection(this.model, selection, time, this.select));
    } else {
      this.list.draw(time);
      if (!this.list.root.isConnected) {
        this.body.replaceChildren(this.list.root, this.legend);
      }
    }
    return true;
  }
}

const legend: readonly [string, string][] = [
  ['system', 'Confirmed system track'],
  ['doubtful', 'Confirmed, but doubtful by now'],
  ['tentative', 'Tentative system track'],
  ['radar', 'Radar track'],
  ['video', 'Video track'],
  ['truth', 'True object'],
];

function legendOf(model: Model): HTMLElement {
  return element('section', { class: 'block' }, element('h2', {}, 'Legend'), element('ul', { class: 'legend' },
    ...legend.filter(([kind]) => kind !== 'truth' || model.truth).map(([kind, text]) => element('li', {}, element('i', { class: `sign ${kind}` }), text))));
}

/** An object in a list, to be selected. */
function entryOf(sign: HTMLElement, name: string, properties: Properties, ...details: HTMLElement[]): HTMLElement {
  return element('li', {}, element('button', { type: 'button', ...properties }, sign, element('b', {}, name), ...details));
}

function ofSelection(model: Model, selection: Selection, time: number, select: (selection: Selection) => void): HTMLElement[] {
  const run = model.runs[selection.run];
  const title = element('div', { class: 'selected' },
    signOf(selection.kind, selection.run),
    element('h2', {}, titleOf(model, selection)));
  const facts = factsAt(model, selection, time);
  const blocks: (HTMLElement | null)[] = [
    element('section', { class: 'block' }, title,
      facts ? element('dl', { class: 'facts' }, ...facts.flatMap(([name, value]) => [element('dt', {}, name), element('dd', {}, value)]))
            : element('p', { class: 'empty' }, absence(model, selection))),
    selection.kind === 'system' ? feedsNow(run, selection, time, select) : null,
    matchNow(model, selection, time, select),
    why(model, run, selection, time),
  ];
  return blocks.filter((block): block is HTMLElement => block !== null);
}

function absence(model: Model, selection: Selection): string {
  const life = selection.kind === 'system' ? model.runs[selection.run].life(selection.id) : undefined;
  return life ? `Lives from ${timeText(life.from)} to ${timeText(life.to)}.` : 'Not there at this time.';
}

function feedsNow(run: Run, selection: Selection, time: number, select: (selection: Selection) => void): HTMLElement | null {
  const { sensors } = run;
  const frame = run.frameAt(lookupTime(time));
  const items: HTMLElement[] = [];
  for (const row of sensors.rowsOf(frame)) {
    const pair = sensors.track[row];
    if (sensors.key('track')[pair] !== selection.id) {
      continue;
    }
    const source = sourceNames[sensors.key('source')[pair]];
    const id = sensors.key('id')[pair];
    const coasting = sensors.column('coasting')[row];
    items.push(entryOf(signOf(source, selection.run), `${source} ${id}`, { click: () => select({ kind: source, run: selection.run, id }) },
      element('span', { class: 'number' }, coasting > coastingShown ? `coasting ${coasting.toFixed(1)} s` : 'seen')));
  }
  return items.length === 0 ? null : element('section', { class: 'block' }, element('h2', {}, 'Fed by'), element('ul', { class: 'tracks' }, ...items));
}

function matchNow(model: Model, selection: Selection, time: number, select: (selection: Selection) => void): HTMLElement | null {
  if (selection.kind !== 'system' && selection.kind !== 'truth') {
    return null;
  }
  const items: HTMLElement[] = [];
  model.runs.forEach((run, index) => {
    if (selection.kind === 'system' && index !== selection.run) {
      return;
    }
    for (const match of run.judgement?.matchesAt(lookupTime(time)) ?? []) {
      const isMine = selection.kind === 'system' ? match.track === selection.id : match.object === selection.id;
      if (isMine) {
        const other: Selection = selection.kind === 'system' ? { kind: 'truth', run: index, id: match.object } : { kind: 'system', run: index, id: match.track };
        items.push(entryOf(signOf(other.kind, index), titleOf(model, other), { click: () => select(other) }));
      }
    }
  });
  return items.length === 0 ? null : element('section', { class: 'block' }, element('h2', {}, 'Matched with'), element('ul', { class: 'tracks' }, ...items));
}

function why(model: Model, run: Run, selection: Selection, time: number): HTMLElement | null {
  if (selection.kind === 'truth') {
    return null;
  }
  const heading = element('h2', {}, 'Why');
  if (!run.explanation) {
    return element('section', { class: 'block' }, heading, element('p', { class: 'empty' }, 'Made without --explain: the report does not know the reasons.'));
  }
  const shown = run.frameAt(lookupTime(time));
  const last = shown < 0 ? -1 : run.explanation.frameOf(run.times[shown], run.sources[shown]);
  const frame = last < 0 ? -1 : frameWithReasons(model, run.explanation, last, selection);
  if (frame < 0) {
    return element('section', { class: 'block' }, heading, element('p', { class: 'empty' }, 'Nothing was decided about it lately.'));
  }
  const source = sourceNames[run.explanation.sources[frame]];
  return element('section', { class: 'block' }, heading,
    element('p', { class: 'hint' }, `${source} frame at ${timeText(run.explanation.times[frame])}`),
    element('ul', { class: 'reasons' }, ...reasonsOf(model, run.explanation, frame, selection).slice(0, 12).map(({ tone, title, detail }) =>
      element('li', { class: tone }, element('b', {}, title), element('span', {}, detail)))));
}
