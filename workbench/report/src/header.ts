// SPDX-License-Identifier: Apache-2.0
// The top of the page: what the report is about, which layers and views are shown.
import type { Commands } from './commands';
import { button, element, icon } from './dom';
import type { Model } from './model';
import type { Layers, State, Views } from './state';

export function headerOf(model: Model, state: State, commands: Commands, help: HTMLDialogElement): HTMLElement {
  const { recording } = model.data;
  return element('header', { class: 'top' },
    element('div', { class: 'brand' }, 'veskar'),
    element('h1', {}, recording.name || 'recording'),
    element('p', { class: 'origin', title: recording.origin ?? '' }, recording.origin ?? ''),
    element('div', { class: 'tools' },
      layerToggles(model, state, commands),
      viewSwitch(state, commands),
      button(icon('theme'), 'Light or dark (T)', () => commands.nextTheme(), { class: 'icon' }),
      button(icon('help'), 'Keys (?)', () => help.showModal(), { class: 'icon' })));
}

export function layerToggles(model: Pick<Model, 'truth' | 'data'>, state: State, commands: Pick<Commands, 'toggleLayer'>): HTMLElement {
  const names: [layer: keyof Layers, label: string, sign: string][] = [
    ['video', 'Video', 'video'], ['radar', 'Radar', 'radar'], ['tentative', 'Tentative', 'tentative'],
    ['truth', 'Truth', 'truth'], ['trails', 'Trails', ''], ['ellipses', 'Ellipses', ''], ['map', 'Map', ''],
  ];
  return element('div', { class: 'layers', role: 'group', 'aria-label': 'Layers' }, ...names
    .filter(([layer]) => (layer !== 'truth' || model.truth) && (layer !== 'map' || model.data.map))
    .map(([layer, label, sign]) => {
      const isShown = () => String(state.layers[layer]);
      const made = element('button', { type: 'button', class: 'chip', 'aria-pressed': isShown(), 'data-layer': layer }, sign !== '' && element('i', { class: `sign ${sign}` }), label);
      made.addEventListener('click', () => {
        commands.toggleLayer(layer);
        made.setAttribute('aria-pressed', isShown());
      });
      return made;
    }));
}

export function viewSwitch(state: State, commands: Pick<Commands, 'showViews'>): HTMLElement {
  const names: [Views, string][] = [['plan', 'Plan'], ['both', 'Both'], ['image', 'Camera']];
  const group = element('div', { class: 'segments', role: 'group', 'aria-label': 'Views' });
  for (const [views, label] of names) {
    const made = button(label, `Show ${label.toLowerCase()}`, () => {
      commands.showViews(views);
      group.querySelectorAll('button').forEach((other) => other.setAttribute('aria-pressed', String(other === made)));
    }, { 'aria-pressed': String(views === state.views) });
    group.append(made);
  }
  return group;
}
