// SPDX-License-Identifier: Apache-2.0
// What a browser test can ask the page, as `veskarReport`.
import type { Mark, Plate } from './canvas';
import type { Clock } from './clock';
import type { DrawingLoop } from './drawing';
import type { PlotPanel } from './plotpanel';
import type { RunView } from './runview';
import type { Selection, State } from './state';
import type { Span, Timeline } from './timeline';

/** What is shown, and how long drawing takes. */
export interface Probe {
  readonly time: number;
  readonly playing: boolean;
  readonly selection: Selection | null;
  readonly plan: readonly (readonly Mark[])[];
  readonly image: readonly (readonly Mark[])[];
  /** The labels in the plans. */
  readonly planLabels: readonly (readonly Plate[])[];
  readonly lanes: readonly { readonly run: number; readonly id: number; readonly switches: number }[];
  /** The part of the time that timeline and plots show, s. */
  readonly span: Span;
  readonly plotPoints: readonly number[];
  /** The labels of the plots' axes of values. */
  readonly plotLabels: readonly (readonly string[])[];
  readonly drawMilliseconds: readonly number[];
  readonly loadMilliseconds: number;
  /** Shows a time and draws it at once; how long that took, ms. */
  draw(time: number): number;
}

/** The parts of the page that a probe looks at. */
export interface Probed {
  readonly state: State;
  readonly clock: Clock;
  readonly views: readonly RunView[];
  readonly timeline: Timeline;
  readonly plots: PlotPanel;
  readonly loop: DrawingLoop;
  readonly loadMilliseconds: number;
}

export function probeOf({ state, clock, views, timeline, plots, loop, loadMilliseconds }: Probed): Probe {
  return {
    get time() { return clock.time; },
    get playing() { return clock.playing; },
    get selection() { return state.selection; },
    get plan() { return views.map((view) => view.plan.surface.marks); },
    get image() { return views.map((view) => view.image.surface.marks); },
    get planLabels() { return views.map((view) => view.plan.surface.labels); },
    get lanes() { return timeline.lanes.map((lane) => ({ run: lane.run, id: lane.life.id, switches: lane.switches.length })); },
    get span() { return timeline.span; },
    get plotPoints() { return plots.all.map((plot) => plot.points); },
    get plotLabels() { return plots.all.map((plot) => plot.labels); },
    get drawMilliseconds() { return loop.milliseconds; },
    loadMilliseconds,
    draw(time: number) {
      clock.seek(time);
      return loop.draw();
    },
  };
}
