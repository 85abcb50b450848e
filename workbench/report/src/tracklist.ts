// SPDX-License-Identifier: Apache-2.0
// The system tracks at a time: to be searched, sorted and filtered.
import { button, element, setText } from './dom';
import { isDoubtful } from './doubt';
import { quantity } from './facts';
import { letterOf, lookupTime, type Model } from './model';
import { saveCsv } from './save';
import { signClass } from './signs';
import type { Selection } from './state';
import { TrackEntries, TrackEntry } from './trackentries';
import { sourceNames } from './vocabulary';

export interface Entry {
  readonly run: number;
  readonly id: number;
  readonly className: string;
  readonly standing: 'confirmed' | 'doubtful' | 'tentative';
  /** Which sensors feed it: "radar", "video", "radar and video" or "no sensor". */
  readonly sensors: string;
  readonly probability: number;
  /** From the device, m; NaN when not known. */
  readonly distance: number;
}

export const orders = ['number', 'probability', 'distance', 'class'] as const;

/** What the reader wants to see; '' accepts everything. */
export interface Wish {
  readonly text: string;
  readonly order: (typeof orders)[number];
  readonly className: string;
  readonly standing: string;
  readonly sensors: string;
  readonly least: number;
}

export const everything: Wish = { text: '', order: 'number', className: '', standing: '', sensors: '', least: 0 };

export function entriesAt(model: Model, time: number): Entry[] {
  return model.runs.flatMap((run, index) => {
    const { tracks, sensors } = run;
    const frame = run.frameAt(lookupTime(time));
    const feeds = new Map<number, Set<string>>();
    for (const row of sensors.rowsOf(frame)) {
      const pair = sensors.track[row];
      const track = sensors.key('track')[pair];
      feeds.set(track, (feeds.get(track) ?? new Set()).add(sourceNames[sensors.key('source')[pair]]));
    }
    const at = (name: string, row: number) => tracks.column(name)[row];
    return Array.from(tracks.rowsOf(frame), (row): Entry => {
      const id = tracks.key('id')[tracks.track[row]];
      return {
        run: index,
        id,
        className: model.word(at('class', row)),
        standing: isDoubtful(run, row) ? 'doubtful' : at('confirmed', row) === 1 ? 'confirmed' : 'tentative',
        sensors: [...(feeds.get(id) ?? [])].sort().join(' and ') || 'no sensor',
        probability: at('probability', row),
        distance: Math.hypot(at('x', row), at('y', row)),
      };
    });
  });
}

/** The entries that a reader wants, in the wanted order. Doubtful tracks are confirmed, too. */
export function chosen(entries: readonly Entry[], { text, order, className, standing, sensors, least }: Wish): Entry[] {
  const words = text.toLowerCase().split(/\s+/).filter((word) => word !== '');
  const isWanted = (entry: Entry) =>
    words.every((word) => (/^\d+$/.test(word) ? String(entry.id) === word : `${letterOf(entry.run)} ${entry.className} ${entry.standing} ${entry.sensors}`.toLowerCase().includes(word)))
    && (className === '' || entry.className === className)
    && (standing === '' || entry.standing === standing || (standing === 'confirmed' && entry.standing === 'doubtful'))
    && (sensors === '' || entry.sensors === sensors)
    && !(entry.probability < least);
  const ranks: Readonly<Record<Wish['order'], (a: Entry, b: Entry) => number>> = {
    number: () => 0,
    probability: (a, b) => a.probability - b.probability,
    distance: (a, b) => (Number.isNaN(a.distance) ? Infinity : a.distance) - (Number.isNaN(b.distance) ? Infinity : b.distance) || 0,
    class: (a, b) => a.className.localeCompare(b.className),
  };
  return entries.filter(isWanted).sort((a, b) => ranks[order](a, b) || a.run - b.run || a.id - b.id);
}

/** The entries as a table, for spreadsheets. */
export function cellsOf(entries: readonly Entry[]): string[][] {
  return [
    ['run', 'track', 'class', 'standing', 'sensors', 'probability', 'distance, m'],
    ...entries.map(({ run, id, className, standing, sensors, probability, distance }) =>
      [letterOf(run), `${id}`, className, standing, sensors, probability.toFixed(3), Number.isNaN(distance) ? '' : distance.toFixed(2)]),
  ];
}

export class TrackList {
  readonly root: HTMLElement;
  private readonly list: TrackEntries<Entry, TrackEntry>;
  private readonly summary = element('p', { class: 'hint' });
  private readonly saveButton = button('CSV', 'Save the list of tracks as CSV', () => this.save(), { class: 'save' });
  private wish = everything;
  private time = 0;

  constructor(
    private readonly model: Model,
    select: (selection: Selection) => void,
  ) {
    this.list = new TrackEntries(
      ({ run, id }) => `${run}-${id}`,
      ({ run, id }) => new TrackEntry(id, `${model.isPair ? `${letterOf(run)} ` : ''}${id}`, () => select({ kind: 'system', run, id })),
      (shown, entry) => this.fill(shown, entry));
    const classes = [...new Set(model.runs.flatMap((run) => run.lives.flatMap((life) => life.classes.map(({ value }) => value))))].sort();
    const search = element('input', { type: 'search', 'aria-label': 'Search tracks', placeholder: 'Number, class, sensor' });
    search.addEventListener('input', () => this.want({ text: search.value }));
    const least = element('input', { type: 'number', 'aria-label': 'Probability from', title: 'Probability from', value: '0' });
    Object.assign(least, { min: '0', max: '1', step: '0.05' });
    least.addEventListener('input', () => this.want({ least: Number(least.value) || 0 }));
    this.root = element('section', { class: 'block' }, element('h2', {}, 'Now'), search,
      element('div', { class: 'wishes' },
        choice('Order by', orders.map((order) => [order, order]), (order) => this.want({ order: order as Wish['order'] })),
        choice('Class', [['', 'all'], ...classes.map((name) => [name, name] as const)], (className) => this.want({ className })),
        choice('Standing', [['', 'all'], ['confirmed', 'confirmed'], ['doubtful', 'doubtful'], ['tentative', 'tentative']], (standing) => this.want({ standing })),
        choice('Sensors', [['', 'all'], ['radar and video', 'both'], ['radar', 'radar only'], ['video', 'video only'], ['no sensor', 'none']], (sensors) => this.want({ sensors })),
        element('label', {}, element('span', {}, 'From'), least)),
      element('div', { class: 'panel-tools' }, this.summary, this.saveButton), this.list.root);
  }

  draw(time: number): void {
    this.time = time;
    const all = entriesAt(this.model, time);
    const wanted = chosen(all, this.wish);
    this.list.draw(wanted);
    this.saveButton.hidden = wanted.length === 0;
    setText(this.summary, all.length === 0 ? 'No system track.' : wanted.length === all.length ? `${all.length} system tracks` : `${wanted.length} of ${all.length} system tracks`);
  }

  private want(change: Partial<Wish>): void {
    this.wish = { ...this.wish, ...change };
    this.draw(this.time);
  }

  private fill({ sign, name, value }: TrackEntry, { run, className, standing, probability, distance }: Entry): void {
    sign.className = signClass(standing === 'confirmed' ? 'system' : standing, run);
    setText(name, standing === 'doubtful' ? `${className}, doubtful` : className);
    setText(value, this.wish.order === 'distance' ? quantity(distance, 1, 'm') : probability.toFixed(2));
  }

  private save(): void {
    saveCsv(`tracks at ${this.time.toFixed(2)} s`, cellsOf(chosen(entriesAt(this.model, this.time), this.wish)));
  }
}

function choice(label: string, options: readonly (readonly [value: string, text: string])[], choose: (value: string) => void): HTMLElement {
  const made = element('select', {}, ...options.map(([value, text]) => element('option', { value }, text)));
  made.addEventListener('change', () => choose(made.value));
  return element('label', {}, element('span', {}, label), made);
}
