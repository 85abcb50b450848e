// SPDX-License-Identifier: Apache-2.0
// The panels below the views, one of which is shown.
import { button, element } from './dom';

export const tabNames = ['timeline', 'plots', 'metrics', 'configuration'] as const;
export type Tab = (typeof tabNames)[number];

/** Shows all panels until one is chosen, so that each can be filled at the size that it will have. */
export class Tabs {
  readonly root: HTMLElement;
  current: Tab = 'timeline';
  private readonly buttons: Readonly<Record<Tab, HTMLButtonElement>>;

  constructor(
    readonly panels: Readonly<Record<Tab, HTMLElement>>,
    choose: (tab: Tab) => void,
  ) {
    const buttonOf = (tab: Tab, label: string) => button(label, label, () => choose(tab), { role: 'tab', id: `tab-${tab}`, 'aria-controls': `panel-${tab}` });
    this.buttons = {
      timeline: buttonOf('timeline', 'Timeline'),
      plots: buttonOf('plots', 'Plots'),
      metrics: buttonOf('metrics', 'Metrics'),
      configuration: buttonOf('configuration', 'Configuration'),
    };
    const list = element('div', { class: 'tabs', role: 'tablist', 'aria-label': 'Panels' }, ...tabNames.map((tab) => this.buttons[tab]));
    list.addEventListener('keydown', (event) => {
      const next = neighbourTab(this.current, event.key);
      if (next) {
        event.preventDefault();
        // The page's own keys would move the time.
        event.stopPropagation();
        choose(next);
        this.buttons[next].focus();
      }
    });
    this.root = element('section', { class: 'lower', 'aria-label': 'Details' }, list, ...tabNames.map((tab) => panels[tab]));
  }

  showAll(): void {
    tabNames.forEach((tab) => (this.panels[tab].hidden = false));
  }

  show(shown: Tab): void {
    this.current = shown;
    for (const tab of tabNames) {
      this.panels[tab].hidden = tab !== shown;
      this.buttons[tab].setAttribute('aria-selected', String(tab === shown));
      this.buttons[tab].tabIndex = tab === shown ? 0 : -1;
    }
  }
}

/** Where a key leads from a focused tab; undefined for a key that tabs do not know. */
export function neighbourTab(current: Tab, key: string): Tab | undefined {
  const at = tabNames.indexOf(current);
  const count = tabNames.length;
  const places: Readonly<Record<string, number>> = { ArrowLeft: (at + count - 1) % count, ArrowRight: (at + 1) % count, Home: 0, End: count - 1 };
  return tabNames[places[key] ?? -1];
}

/** The place of a tab's contents. */
export function panelOf(tab: Tab, ...children: HTMLElement[]): HTMLElement {
  return element('div', { class: `panel ${tab}`, role: 'tabpanel', id: `panel-${tab}`, 'aria-labelledby': `tab-${tab}` }, ...children);
}
