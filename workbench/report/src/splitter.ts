// SPDX-License-Identifier: Apache-2.0
// Borders of panels that can be moved, by pointer and by keys, and are remembered.
import { element } from './dom';

export interface Border {
  /** Of the variable of the style sheet that takes the size in pixels; also the name under which it is remembered. */
  readonly name: string;
  readonly label: string;
  /** Where the panel lies: beside the border, or below it. */
  readonly panelIs: 'right' | 'below';
  readonly panel: HTMLElement;
  readonly least: number;
  /** The largest size of the panel, pixels. */
  most(): number;
  changed(): void;
}

/** The movement of the border by one key, pixels. */
const step = 24;

const placeOf = (name: string) => `veskar-report.${name}`;

/** A browser may forbid to remember. */
function remembered(name: string): number {
  try {
    return Number(localStorage.getItem(placeOf(name)) ?? NaN);
  } catch {
    return NaN;
  }
}

function remember(name: string, size: number | null): void {
  try {
    if (size === null) {
      localStorage.removeItem(placeOf(name));
    } else {
      localStorage.setItem(placeOf(name), String(size));
    }
  } catch {
    // Then only this page keeps the size.
  }
}

export function splitterOf(border: Border): HTMLElement {
  const { name, label, panelIs, panel, least } = border;
  const isBeside = panelIs === 'right';
  const made = element('div', {
    class: `splitter splitter-${name}`, role: 'separator', tabindex: '0', 'aria-label': label, title: 'Drag to resize, double-click to reset',
    'aria-orientation': isBeside ? 'vertical' : 'horizontal', 'aria-valuemin': `${least}`, 'aria-valuenow': `${least}`,
  });
  const { style } = document.documentElement;
  const sizeNow = () => (isBeside ? panel.offsetWidth : panel.offsetHeight);
  const tell = () => {
    made.setAttribute('aria-valuemax', `${Math.round(border.most())}`);
    made.setAttribute('aria-valuenow', `${Math.round(sizeNow())}`);
  };
  const resize = (size: number) => {
    const limited = Math.round(Math.max(least, Math.min(border.most(), size)));
    style.setProperty(`--${name}`, `${limited}px`);
    remember(name, limited);
    tell();
    border.changed();
  };
  const reset = () => {
    style.removeProperty(`--${name}`);
    remember(name, null);
    tell();
    border.changed();
  };

  made.addEventListener('pointerdown', (event) => {
    made.setPointerCapture(event.pointerId);
    const from = isBeside ? event.clientX : event.clientY;
    const size = sizeNow();
    const move = (moved: PointerEvent) => resize(size + from - (isBeside ? moved.clientX : moved.clientY));
    made.addEventListener('pointermove', move);
    made.addEventListener('lostpointercapture', () => made.removeEventListener('pointermove', move), { once: true });
  });
  made.addEventListener('dblclick', reset);
  made.addEventListener('keydown', (event) => {
    const by = { [isBeside ? 'ArrowLeft' : 'ArrowUp']: step, [isBeside ? 'ArrowRight' : 'ArrowDown']: -step }[event.key];
    if (by !== undefined) {
      event.preventDefault();
      // The page's own keys would move the time.
      event.stopPropagation();
      resize(sizeNow() + by);
    }
  });
  new ResizeObserver(tell).observe(panel);
  const before = remembered(name);
  if (before > 0) {
    style.setProperty(`--${name}`, `${before}px`);
  }
  return made;
}
