// SPDX-License-Identifier: Apache-2.0
// What a pointer rests on, with values and units.
import { element } from './dom';

/** Distance from the pointer, pixels. */
const margin = 14;

export class Tooltip {
  readonly root = element('div', { class: 'tooltip', role: 'tooltip', 'aria-hidden': 'true' });

  constructor() {
    this.hide();
  }

  /** Shows lines beside a place of the window; none hides it. */
  show(x: number, y: number, lines: readonly string[]): void {
    this.root.hidden = lines.length === 0;
    this.root.replaceChildren(...lines.map((line) => element('div', {}, line)));
    const { offsetWidth, offsetHeight } = this.root;
    const left = x + margin + offsetWidth > innerWidth ? x - margin - offsetWidth : x + margin;
    const top = Math.min(y + margin, innerHeight - offsetHeight - 4);
    this.root.style.setProperty('left', `${Math.max(4, left)}px`);
    this.root.style.setProperty('top', `${Math.max(4, top)}px`);
  }

  hide(): void {
    this.root.hidden = true;
  }

  /**
   * Shows what `linesAt` knows of a place in an element, or in a part of it, while a mouse is over it and no button is
   * held.
   */
  watch(target: HTMLElement, linesAt: (x: number, y: number, part: EventTarget | null) => readonly string[]): void {
    target.addEventListener('pointermove', (event) => {
      if (event.pointerType === 'mouse' && event.buttons === 0) {
        this.show(event.clientX, event.clientY, linesAt(event.offsetX, event.offsetY, event.target));
      } else {
        this.hide();
      }
    });
    target.addEventListener('pointerleave', () => this.hide());
  }
}
