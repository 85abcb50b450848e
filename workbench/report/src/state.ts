// SPDX-License-Identifier: Apache-2.0
// What the reader of the report has chosen.
import type { SourceName } from './vocabulary';

export type Selection =
  | { readonly kind: 'system'; readonly run: number; readonly id: number }
  | { readonly kind: SourceName; readonly run: number; readonly id: number }
  | { readonly kind: 'truth'; readonly run: number; readonly id: number };

export interface Layers {
  video: boolean;
  radar: boolean;
  tentative: boolean;
  truth: boolean;
  trails: boolean;
  ellipses: boolean;
  map: boolean;
}

export type Views = 'both' | 'plan' | 'image';
export type Theme = 'auto' | 'light' | 'dark';

export interface State {
  selection: Selection | null;
  layers: Layers;
  views: Views;
  theme: Theme;
}

export function initialState(): State {
  return {
    selection: null,
    layers: { video: true, radar: true, tentative: true, truth: true, trails: true, ellipses: true, map: true },
    views: 'both',
    theme: 'auto',
  };
}

export function isSame(a: Selection | null, b: Selection | null): boolean {
  return a === b || (!!a && !!b && a.kind === b.kind && a.id === b.id && (a.kind !== 'system' || a.run === b.run));
}
