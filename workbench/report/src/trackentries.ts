// SPDX-License-Identifier: Apache-2.0
// A list of tracks, each a button. Entries stay while their tracks are listed, so that the focus stays, too.
import { element } from './dom';

/** One track: its mark, its label, its name and a value at the end of the line. */
export class TrackEntry {
  readonly root: HTMLLIElement;
  readonly button: HTMLButtonElement;
  readonly sign = element('i');
  readonly name = element('span');
  readonly value = element('span', { class: 'number' });

  constructor(id: number, label: string, select: () => void) {
    this.button = element('button', { type: 'button', 'data-track': `${id}`, click: select }, this.sign, element('b', {}, label), this.name, this.value);
    this.root = element('li', {}, this.button);
  }
}

export class TrackEntries<Shown, Entry extends TrackEntry> {
  readonly root = element('ul', { class: 'tracks' });
  private readonly entries = new Map<string, Entry>();
  private order = '';

  constructor(
    private readonly keyOf: (shown: Shown) => string,
    private readonly make: (shown: Shown) => Entry,
    private readonly fill: (entry: Entry, shown: Shown) => void,
  ) {}

  /** Changes what differs. */
  draw(wanted: readonly Shown[]): void {
    const keys = wanted.map(this.keyOf);
    const order = keys.join(' ');
    if (order !== this.order) {
      this.order = order;
      this.arrange(keys, wanted);
    }
    wanted.forEach((shown, i) => this.fill(this.entries.get(keys[i]) as Entry, shown));
  }

  private arrange(keys: readonly string[], wanted: readonly Shown[]): void {
    const focused = document.activeElement;
    const listed = new Set(keys);
    for (const key of this.entries.keys()) {
      if (!listed.has(key)) {
        this.entries.delete(key);
      }
    }
    this.root.replaceChildren(...wanted.map((shown, i) => {
      let entry = this.entries.get(keys[i]);
      if (!entry) {
        entry = this.make(shown);
        this.entries.set(keys[i], entry);
      }
      return entry.root;
    }));
    if (focused instanceof HTMLElement && this.root.contains(focused)) {
      focused.focus();
    }
  }
}
