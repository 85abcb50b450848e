// SPDX-License-Identifier: Apache-2.0
// The system tracks of the newest frame as a list.
import { element, setText } from '../dom';
import { quantity } from '../facts';
import { signClass } from '../signs';
import type { Selection } from '../state';
import { TrackEntries, TrackEntry } from '../trackentries';
import type { FrameData, TrackData } from './protocol';

/** With the sensors that feed the track. */
class ObjectEntry extends TrackEntry {
  private readonly sensors = element('span', { class: 'feeds' });
  private fedBy = '';

  constructor(id: number, select: () => void) {
    super(id, `${id}`, select);
    this.value.before(this.sensors);
  }

  show(track: TrackData, isSelected: boolean): void {
    this.sign.className = signClass(track.confirmed ? 'system' : 'tentative', 0);
    setText(this.name, track.class ?? 'unknown');
    this.showSensors([...new Set(track.sensors.map(({ source }) => source))].sort());
    const [x, y] = track.position ?? [];
    setText(this.value, `${quantity(Math.hypot(x ?? NaN, y ?? NaN), 1, 'm')} · ${quantity(track.speed ?? NaN, 1, 'm/s')}`);
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
  private readonly list: TrackEntries<TrackData, ObjectEntry>;
  private selection: Selection | null = null;

  constructor(select: (selection: Selection) => void) {
    this.list = new TrackEntries(
      ({ id }) => `${id}`,
      ({ id }) => new ObjectEntry(id, () => select({ kind: 'system', run: 0, id })),
      (entry, track) => entry.show(track, this.selection?.kind === 'system' && this.selection.id === track.id));
    this.root.append(this.title, this.list.root);
  }

  draw(frame: FrameData | undefined, withTentative: boolean, selection: Selection | null): void {
    this.selection = selection;
    const shown = (frame?.tracks ?? []).filter((track) => withTentative || track.confirmed);
    this.list.draw(shown);
    const confirmed = shown.filter((track) => track.confirmed).length;
    setText(this.title, `Objects: ${confirmed} confirmed${withTentative ? `, ${shown.length - confirmed} tentative` : ''}`);
  }
}
