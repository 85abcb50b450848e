// SPDX-License-Identifier: Apache-2.0
// The system tracks as a list. Its entries stay while their tracks live, so that the focus stays, too.
import { element, setText } from '../dom';
import { quantity } from '../facts';
import type { Selection } from '../state';
import type { FrameData, TrackData } from './protocol';

class Entry {
  readonly root: HTMLLIElement;
  private readonly sign = element('i');
  private readonly name = element('span');
  private readonly sensors = element('span', { class: 'feeds' });
  private fedBy = '';
  private readonly place = element('span', { class: 'number' });
  private readonly button: HTMLButtonElement;

  constructor(id: number, select: () => void) {
    this.button = element('button', { type: 'button', 'data-track': `${id}`, click: select },
      this.sign, element('b', {}, `${id}`), this.name, this.sensors, this.place);
    this.root = element('li', {}, this.button);
  }

  show(track: TrackData, isSelected: boolean): void {
    this.sign.className = `sign ${track.confirmed ? 'system' : 'tentative'}`;
    setText(this.name, track.class ?? 'unknown');
    this.showSensors([...new Set(track.sensors.map(({ source }) => source))].sort());
    const [x, y] = track.position ?? [];
    setText(this.place, `${quantity(Math.hypot(x ?? NaN, y ?? NaN), 1, 'm')} · ${quantity(track.speed ?? NaN, 1, 'm/s')}`);
    this.button.setAttribute('aria-pressed', String(isSelected));
  }

  private showSensors(sources: readonly string[]): void {
    const fedBy = sources.join(' and ');
    if (fedBy !== this.fedBy) {
      this.fedBy = fedBy;
      this.sensors.title = fedBy;
      this.sensors.setAttribute('aria-label', fedBy);
      this.sensors.replaceChildren(...sources.map((source) => element('i', { class: `sign ${source}` })));
    }
  }
}

export class ObjectList {
  readonly root = element('section', { class: 'block objects', 'aria-label': 'Objects' });
  private readonly title = element('h2', {}, 'Objects');
  private readonly list = element('ul', { class: 'tracks' });
  private readonly entries = new Map<number, Entry>();

  constructor(private readonly select: (selection: Selection) => void) {
    this.root.append(this.title, this.list);
  }

  draw(frame: FrameData | undefined, withTentative: boolean, selection: Selection | null): void {
    const shown = (frame?.tracks ?? []).filter((track) => withTentative || track.confirmed);
    const ids = new Set(shown.map(({ id }) => id));
    for (const [id, entry] of this.entries) {
      if (!ids.has(id)) {
        entry.root.remove();
        this.entries.delete(id);
      }
    }
    for (const track of shown) {
      let entry = this.entries.get(track.id);
      if (!entry) {
        entry = new Entry(track.id, () => this.select({ kind: 'system', run: 0, id: track.id }));
        this.entries.set(track.id, entry);
        this.list.append(entry.root);
      }
      entry.show(track, selection?.kind === 'system' && selection.id === track.id);
    }
    const confirmed = shown.filter((track) => track.confirmed).length;
    setText(this.title, `Objects: ${confirmed} confirmed${withTentative ? `, ${shown.length - confirmed} tentative` : ''}`);
  }
}
