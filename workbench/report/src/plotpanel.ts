// SPDX-License-Identifier: Apache-2.0
// The plots of the report: GOSPA, numbers of tracks, probability of the selected track.
import type { Model } from './model';
import type { Palette } from './palette';
import { countSeries, gospaSeries, Plot, probabilitySeries } from './plots';
import type { Selection } from './state';
import type { Span } from './timeline';

export class PlotPanel {
  readonly all: readonly Plot[];
  private readonly gospa: Plot;
  private readonly counts: Plot;
  private readonly probability: Plot;

  constructor(
    private readonly model: Model,
    seek: (time: number) => void,
  ) {
    const { duration } = model;
    this.gospa = new Plot('GOSPA, m', duration, 'The recording has no truth to judge by.', { least: 0, most: null, isWhole: false, unit: ' m' }, seek);
    this.counts = new Plot('Number of tracks', duration, '', { least: 0, most: null, isWhole: true, unit: '' }, seek);
    this.probability = new Plot('Probability of the selected track', duration, 'Select a system track.', { least: 0, most: 1.02, isWhole: false, unit: '' }, seek);
    this.all = [this.gospa, this.counts, this.probability];
  }

  /** Fills all plots anew, for another palette. */
  show(selection: Selection | null, palette: Palette): void {
    this.gospa.show(gospaSeries(this.model, palette), palette);
    this.counts.show(countSeries(this.model, palette), palette);
    this.select(selection, palette);
  }

  select(selection: Selection | null, palette: Palette): void {
    this.probability.show(probabilitySeries(this.model, selection, palette), palette);
  }

  /** Draws the part of the time that the timeline shows. */
  draw(time: number, span: Span): void {
    for (const plot of this.all) {
      plot.draw(time, span);
    }
  }
}
