// SPDX-License-Identifier: Apache-2.0
// What the reader of the report can do. Buttons, keys and pointers call it, the App carries it out.
import type { Layers, Selection, Views } from './state';
import type { Tab } from './tabs';

export interface Commands {
  seek(time: number): void;
  /** Goes to a neighbouring frame. */
  step(count: number): void;
  togglePlaying(): void;
  changeSpeed(by: number): void;

  select(selection: Selection | null): void;
  /** Selects the system track of a neighbouring lane. */
  selectNeighbour(by: number): void;

  /** Moves all plans, pixels. */
  panPlans(dx: number, dy: number): void;
  /** Zooms all plans around a pixel. */
  zoomPlans(x: number, y: number, factor: number): void;
  fitPlans(): void;
  scrollTimeline(amount: number): void;
  /** Zooms the timeline and the plots around a pixel of the timeline; factor 0 shows all of the time. */
  zoomTimeline(x: number, factor: number): void;
  /** Moves timeline and plots in time, pixels. */
  panTimeline(pixels: number): void;

  toggleLayer(layer: keyof Layers): void;
  showViews(views: Views): void;
  showTab(tab: Tab): void;
  nextTheme(): void;
}
