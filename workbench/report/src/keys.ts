// SPDX-License-Identifier: Apache-2.0
// Keyboard shortcuts, and the help that lists them.
import type { Clock } from './clock';
import type { Commands } from './commands';
import { button, element } from './dom';
import { tabNames } from './tabs';

/** A row of the help, and what its keys do: by `KeyboardEvent.key`, letters in lower case. */
export interface Shortcut {
  readonly label: string;
  readonly purpose: string;
  readonly actions: Readonly<Record<string, () => void>>;
}

export function shortcutsOf(commands: Commands, clock: Clock): Shortcut[] {
  const second = (by: number) => commands.seek(clock.time + by);
  return [
    { label: 'Space', purpose: 'play, pause', actions: { ' ': () => commands.togglePlaying() } },
    { label: '← →', purpose: 'one frame back, on', actions: { ArrowLeft: () => commands.step(-1), ArrowRight: () => commands.step(1) } },
    { label: 'Shift ← →', purpose: 'one second back, on', actions: { 'Shift ArrowLeft': () => second(-1), 'Shift ArrowRight': () => second(1) } },
    { label: 'Home End', purpose: 'beginning, end', actions: { Home: () => commands.seek(0), End: () => commands.seek(clock.duration) } },
    { label: '− +', purpose: 'slower, faster', actions: { '-': () => commands.changeSpeed(-1), '+': () => commands.changeSpeed(1), '=': () => commands.changeSpeed(1) } },
    { label: '[ ]', purpose: 'system track before, after', actions: { '[': () => commands.selectNeighbour(-1), ']': () => commands.selectNeighbour(1) } },
    {
      label: tabNames.map((_, i) => i + 1).join(' '),
      purpose: tabNames.join(', '),
      actions: Object.fromEntries(tabNames.map((tab, i) => [String(i + 1), () => commands.showTab(tab)])),
    },
    { label: 'F', purpose: 'fit the plan', actions: { f: () => commands.fitPlans() } },
    { label: 'T', purpose: 'light, dark', actions: { t: () => commands.nextTheme() } },
    { label: 'Esc', purpose: 'select nothing', actions: { Escape: () => commands.select(null) } },
  ];
}

/** What a key does. Shift counts only for keys that have an action of their own with it. */
export function actionOf(shortcuts: readonly Shortcut[], key: string, shift: boolean): (() => void) | undefined {
  const actions = new Map(shortcuts.flatMap((shortcut) => Object.entries(shortcut.actions)));
  const name = key.length === 1 ? key.toLowerCase() : key;
  return (shift ? actions.get(`Shift ${name}`) : undefined) ?? actions.get(name);
}

export function helpOf(shortcuts: readonly Shortcut[]): HTMLDialogElement {
  const dialog = element('dialog', { class: 'help' }, element('h2', {}, 'Keys'),
    element('dl', { class: 'facts' }, ...shortcuts.flatMap(({ label, purpose }) => [element('dt', {}, label), element('dd', {}, purpose)])),
    element('p', { class: 'hint' }, 'Drag the plan to move it, turn the wheel to zoom, click what you want to know about.'),
    button('Close', 'Close', () => dialog.close()));
  return dialog;
}

/** Whether a control needs a key itself: fields any, what the keyboard has focused those that press it. */
function isOwn(target: EventTarget | null, key: string): boolean {
  if (!(target instanceof HTMLElement)) {
    return false;
  }
  if (target.matches('select, textarea, input:not([type="range"], [type="checkbox"])')) {
    return key !== 'Escape';
  }
  return (key === ' ' || key === 'Enter') && target.matches('button:focus-visible, a:focus-visible, summary, input[type="checkbox"]');
}

export function listenToKeys(shortcuts: readonly Shortcut[], help: HTMLDialogElement): void {
  addEventListener('keydown', (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey || help.open || isOwn(event.target, event.key)) {
      return;
    }
    const action = event.key === '?' ? () => help.showModal() : actionOf(shortcuts, event.key, event.shiftKey);
    if (action) {
      event.preventDefault();
      action();
    }
  });
}
