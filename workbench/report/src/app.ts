// SPDX-License-Identifier: Apache-2.0
// The page: puts its parts together and carries out the commands of its controls.
import { Clock } from './clock';
import type { Commands } from './commands';
import { showConfiguration } from './configuration';
import type { ReportData } from './data';
import { countText, timelineText } from './describe';
import { element } from './dom';
import { DrawingLoop } from './drawing';
import { headerOf } from './header';
import { Inspector } from './inspector';
import { helpOf, listenToKeys, shortcutsOf } from './keys';
import { linkOf, placeOf } from './link';
import { showMetrics } from './metrics';
import { Model } from './model';
import { firstMoment } from './moment';
import { readPalette, type Palette } from './palette';
import { PlotPanel } from './plotpanel';
import { probeOf, type Probe } from './probe';
import { Rest } from './rest';
import { RunView } from './runview';
import { splitterOf } from './splitter';
import { initialState, isSame, type Layers, type Selection, type State, type Views } from './state';
import { panelOf, Tabs, type Tab } from './tabs';
import { applyTheme, onSystemTheme, otherTheme } from './theme';
import { gutter, lanesOf, Timeline } from './timeline';
import { listenToTimeline, timelineTools } from './timelinepointer';
import { laneLines, markLines } from './tips';
import { Tooltip } from './tooltip';
import { Transport } from './transport';
import { verdictLine } from './verdict';

export class App implements Commands {
  readonly probe: Probe;
  private readonly model: Model;
  private readonly state: State = initialState();
  private readonly clock: Clock;
  private readonly loop: DrawingLoop;
  private readonly views: readonly RunView[];
  private readonly timeline: Timeline;
  private readonly plots: PlotPanel;
  private readonly tabs: Tabs;
  private readonly transport: Transport;
  private readonly inspector: Inspector;
  private readonly tooltip = new Tooltip();
  private readonly rest = new Rest(() => this.settle());
  private palette!: Palette;

  constructor(
    private readonly root: HTMLElement,
    data: ReportData,
  ) {
    const begin = performance.now();
    this.model = new Model(data);
    this.clock = new Clock(this.model.duration, this.model.moments);
    this.loop = new DrawingLoop(this.clock, () => this.draw());
    this.views = this.model.runs.map((run, i) => new RunView(this.model, run, i, this, () => this.loop.request()));
    this.timeline = new Timeline(this.model, timelineText(this.model));
    this.plots = new PlotPanel(this.model, (time) => this.seek(time));
    this.tabs = new Tabs({
      timeline: panelOf('timeline', this.timeline.surface.canvas, timelineTools(this.timeline, this.clock, this)),
      plots: panelOf('plots', ...this.plots.all.map((plot) => plot.root)),
      metrics: panelOf('metrics'),
      configuration: panelOf('configuration'),
    }, (tab) => this.showTab(tab));
    this.transport = new Transport(this.clock, this, (time) => countText(this.model, time));
    this.inspector = new Inspector(this.model, (selection) => this.select(selection));
    this.build();
    showMetrics(this.tabs.panels.metrics, this.model);
    showConfiguration(this.tabs.panels.configuration, this.model);
    this.listen();
    this.showLanes();
    this.showTheme();
    this.showTab(this.tabs.current);
    this.clock.seek(firstMoment(this.model.runs));
    this.followLink();
    this.probe = probeOf({
      state: this.state,
      clock: this.clock,
      views: this.views,
      timeline: this.timeline,
      plots: this.plots,
      loop: this.loop,
      loadMilliseconds: performance.now() - begin,
    });
    this.loop.start();
  }

  private build(): void {
    const { recording, program } = this.model.data;
    document.title = `${recording.name || 'recording'} – veskar report`;
    document.documentElement.classList.toggle('pair', this.model.isPair);
    const shortcuts = shortcutsOf(this, this.clock);
    const help = helpOf(shortcuts);
    listenToKeys(shortcuts, help);
    this.root.dataset['views'] = this.state.views;
    document.documentElement.style.setProperty('--aspect', String(this.model.scene.aspect));
    const changed = () => this.loop.request();
    const sideBorder = splitterOf({ name: 'side', label: 'Width of the side panel', panelIs: 'right', panel: this.inspector.root, least: 220, most: () => innerWidth * 0.45, changed });
    const lowerBorder = splitterOf({ name: 'lower', label: 'Height of the details', panelIs: 'below', panel: this.tabs.root, least: 120, most: () => innerHeight * 0.6, changed });
    this.inspector.root.append(sideBorder);
    this.tabs.root.append(lowerBorder);
    this.root.replaceChildren(
      headerOf(this.model, this.state, this, help),
      verdictLine(this.model, (time, selection) => {
        this.seek(time);
        this.select(selection);
      }),
      element('main', { class: 'stage' }, ...this.views.map((view) => view.root)),
      this.transport.root,
      this.tabs.root,
      this.inspector.root,
      element('footer', {}, `veskar ${program}`, recording.licence ? ` · ${recording.licence}` : ''),
      help,
      this.tooltip.root);
  }

  private listen(): void {
    listenToTimeline(this.timeline, this.clock, this);
    const { surface } = this.timeline;
    this.tooltip.watch(surface.canvas, (x, y) => laneLines(this.model, this.timeline.laneAt(y), x < gutter ? this.clock.time : this.timeline.timeAt(x)));
    this.views.forEach((view, run) => [view.plan.surface, view.image.surface].forEach((drawn) =>
      this.tooltip.watch(drawn.canvas, (x, y) => markLines(this.model, drawn.hit(x, y, 12), run, this.clock.time))));
    this.plots.all.forEach((plot) => this.tooltip.watch(plot.root, (x, _, part) => plot.linesAt(x, part)));
    addEventListener('resize', () => this.loop.request());
    new ResizeObserver(() => this.loop.request()).observe(this.root);
    addEventListener('beforeprint', () => this.print(true));
    addEventListener('afterprint', () => this.print(false));
    addEventListener('hashchange', () => this.followLink());
    onSystemTheme(() => this.showTheme());
  }

  private draw(): void {
    const { time, playing } = this.clock;
    if (playing) {
      this.timeline.include(time);
    }
    this.views.forEach((view) => view.draw(this.state, time, this.palette));
    if (this.tabs.current === 'timeline') {
      this.timeline.draw(this.state, time, this.palette);
    }
    if (this.tabs.current === 'plots') {
      this.plots.draw(time, this.timeline.span);
    }
    this.transport.draw();
    if (!playing) {
      this.rest.disturb();
    }
    if (!this.inspector.draw(this.state.selection, time)) {
      this.loop.request();
    }
  }

  /** Lets the page's address and the words for screen readers follow what is shown. */
  private settle(): void {
    const { time } = this.clock;
    history.replaceState(null, '', linkOf({ time, selection: this.state.selection, tab: this.tabs.current }));
    this.views.forEach((view) => view.describe(time));
  }

  /** Shows what the fragment of the page's address names. */
  private followLink(): void {
    const { time, selection, tab } = placeOf(location.hash, this.model.runs.length);
    if (tab) {
      this.showTab(tab);
    }
    if (selection) {
      this.select(selection);
    }
    if (time !== undefined) {
      this.seek(time);
    }
  }

  /** Lays out everything below each other, in light colours, while the page is printed. */
  private print(isPrinting: boolean): void {
    document.documentElement.classList.toggle('printing', isPrinting);
    if (isPrinting) {
      applyTheme('light');
      this.tabs.showAll();
      this.tabs.panels.timeline.style.setProperty('height', `${Math.min(900, this.timeline.contentHeight + 8)}px`);
    } else {
      this.tabs.panels.timeline.style.removeProperty('height');
      this.tabs.show(this.tabs.current);
      applyTheme(this.state.theme);
    }
    this.palette = readPalette();
    this.plots.show(this.state.selection, this.palette);
    this.views.forEach((view) => view.draw(this.state, this.clock.time, this.palette));
    this.timeline.draw(this.state, this.clock.time, this.palette);
    this.plots.draw(this.clock.time, this.timeline.span);
  }

  // --- Playback ----------------------------------------------------------------------------------

  seek(time: number): void {
    this.clock.seek(time);
    this.timeline.include(this.clock.time);
    this.loop.request();
  }

  step(count: number): void {
    this.clock.step(count);
    this.timeline.include(this.clock.time);
    this.loop.request();
  }

  togglePlaying(): void {
    this.clock.toggle();
    this.loop.restart();
    this.loop.request();
  }

  changeSpeed(by: number): void {
    this.clock.changeSpeed(by);
    this.loop.request();
  }

  // --- Selection ---------------------------------------------------------------------------------

  select(selection: Selection | null): void {
    if (isSame(selection, this.state.selection)) {
      return;
    }
    this.state.selection = selection;
    if (selection?.kind === 'system') {
      this.timeline.reveal(selection.run, selection.id);
    }
    this.plots.select(selection, this.palette);
    this.loop.request();
  }

  selectNeighbour(by: number): void {
    const lane = this.timeline.neighbourOf(this.state.selection, by);
    if (lane) {
      this.select({ kind: 'system', run: lane.run, id: lane.life.id });
      if (this.clock.time < lane.life.from || this.clock.time >= lane.life.to) {
        this.seek(lane.life.from);
      }
    }
  }

  // --- Views -------------------------------------------------------------------------------------

  panPlans(dx: number, dy: number): void {
    this.views.forEach((view) => view.plan.pan(dx, dy));
    this.loop.request();
  }

  zoomPlans(x: number, y: number, factor: number): void {
    this.views.forEach((view) => view.plan.zoomAt(x, y, factor));
    this.loop.request();
  }

  fitPlans(): void {
    this.views.forEach((view) => view.plan.fit());
    this.loop.request();
  }

  scrollTimeline(amount: number): void {
    this.timeline.scrollBy(amount);
    this.loop.request();
  }

  zoomTimeline(x: number, factor: number): void {
    if (factor > 0) {
      this.timeline.zoomAt(x, factor);
    } else {
      this.timeline.showAll();
    }
    this.loop.request();
  }

  panTimeline(pixels: number): void {
    this.timeline.panBy(pixels);
    this.loop.request();
  }

  toggleLayer(layer: keyof Layers): void {
    this.state.layers[layer] = !this.state.layers[layer];
    this.showLanes();
    this.loop.request();
  }

  showViews(views: Views): void {
    this.state.views = views;
    this.root.dataset['views'] = views;
    this.loop.request();
  }

  showTab(tab: Tab): void {
    this.tabs.show(tab);
    this.loop.request();
  }

  nextTheme(): void {
    this.state.theme = otherTheme();
    this.showTheme();
  }

  private showTheme(): void {
    applyTheme(this.state.theme);
    this.palette = readPalette();
    this.plots.show(this.state.selection, this.palette);
    this.loop.request();
  }

  private showLanes(): void {
    this.timeline.lanes = lanesOf(this.model, this.state.layers.tentative);
  }
}
