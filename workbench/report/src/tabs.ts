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
    const buttonOf = (tab: Tab, label: string) => button(label, label, () => choose(tab), { role: 'tab' });
    this.buttons = {
      timeline: buttonOf('timeline', 'Timeline'),
      plots: buttonOf('plots', 'Plots'),
      metrics: buttonOf('metrics', 'Metrics'),
      configuration: buttonOf('configuration', 'Configuration'),
    };
    this.root = element('section', { class: 'lower' },
      element('nav', { class: 'tabs', role: 'tablist' }, ...tabNames.map((tab) => this.buttons[tab])),
      ...tabNames.map((tab) => panels[tab]));
  }

  show(shown: Tab): void {
    this.current = shown;
    for (const tab of tabNames) {
      this.panels[tab].hidden = tab !== shown;
      this.buttons[tab].setAttribute('aria-selected', String(tab === shown));
    }
  }
}

/** The place of a tab's contents. */
export function panelOf(tab: Tab, ...children: HTMLElement[]): HTMLElement {
  return element('div', { class: `panel ${tab}`, role: 'tabpanel' }, ...children);
}
