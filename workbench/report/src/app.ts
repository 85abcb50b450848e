// SPDX-License-Identifier: Apache-2.0
// The page: its parts, and what pointer and keys do to them.
import type { Mark } from './canvas';
import { Clock, timeText } from './clock';
import { showConfiguration } from './configuration';
import type { ReportData } from './data';
import { button, element, icon } from './dom';
import { ImageView } from './imageview';
import { showInspector } from './inspector';
import { showMetrics } from './metrics';
import { Model } from './model';
import { readPalette, type Palette } from './palette';
import { Plan } from './plan';
import { countSeries, gospaSeries, Plot, probabilitySeries } from './plots';
import { selectionOf } from './scene';
import { initialState, isSame, type Layers, type Selection, type State, type Theme, type Views } from './state';
import { gutter, lanesOf, Timeline } from './timeline';

type Tab = 'timeline' | 'plots' | 'metrics' | 'configuration';

interface RunView {
  readonly plan: Plan;
  readonly image: ImageView;
  readonly counts: HTMLElement;
}

/** For tests and the curious: what is shown, and how long drawing takes. */
export interface Probe {
  readonly time: number;
  readonly playing: boolean;
  readonly selection: Selection | null;
  readonly plan: readonly (readonly Mark[])[];
  readonly image: readonly (readonly Mark[])[];
  readonly lanes: readonly { readonly run: number; readonly id: number; readonly switches: number }[];
  readonly plotPoints: readonly number[];
  readonly drawMilliseconds: readonly number[];
  readonly loadMilliseconds: number;
  /** Shows a time and draws it at once; how long that took, ms. */
  draw(time: number): number;
}

const keysHelp: readonly [string, string][] = [
  ['Space', 'play, pause'],
  ['← →', 'one frame back, on'],
  ['Shift ← →', 'one second back, on'],
  ['Home End', 'beginning, end'],
  ['− +', 'slower, faster'],
  ['[ ]', 'system track before, after'],
  ['1 2 3 4', 'timeline, plots, metrics, configuration'],
  ['F', 'fit the plan'],
  ['T', 'light, dark'],
  ['Esc', 'select nothing'],
];

export class App {
  private readonly model: Model;
  private readonly state: State = initialState();
  private readonly clock: Clock;
  private readonly views: RunView[];
  private readonly timeline: Timeline;
  private readonly plots: Plot[];
  private palette!: Palette;
  private tab: Tab = 'timeline';
  private part = 'all';
  private isDirty = true;
  private lastTick = 0;
  private inspected = { time: NaN, selection: '', when: -Infinity };
  private readonly drawTimes: number[] = [];
  private readonly loadTime: number;

  private readonly inspector = element('aside', { class: 'inspector', 'aria-label': 'Selected object' });
  private readonly slider = element('input', { type: 'range', class: 'scrubber', 'aria-label': 'Time' });
  private readonly clockText = element('output', { class: 'clock' });
  private readonly playButton = button('', 'Play (Space)', () => this.toggle(), { class: 'play' });
  private readonly speedText = element('span', { class: 'speed' });
  private readonly stage: HTMLElement;
  private readonly panels: Record<Tab, HTMLElement>;
  private readonly tabButtons = new Map<Tab, HTMLButtonElement>();
  private readonly help: HTMLDialogElement;

  constructor(
    private readonly root: HTMLElement,
    data: ReportData,
  ) {
    const begin = performance.now();
    this.model = new Model(data);
    this.clock = new Clock(this.model.duration, this.model.moments);
    this.views = this.model.runs.map((run, i) => ({
      plan: new Plan(this.model, run, i),
      image: new ImageView(this.model, run, i),
      counts: element('span', { class: 'counts' }),
    }));
    this.timeline = new Timeline(this.model);
    this.timeline.lanes = lanesOf(this.model, this.state.layers.tentative);
    const seek = (time: number) => this.seek(time);
    const duration = this.model.duration;
    this.plots = [
      new Plot('GOSPA, m', duration, 'The recording has no truth to judge by.', [0, null], seek),
      new Plot('Number of tracks', duration, '', [0, null], seek),
      new Plot('Probability of the selected track', duration, 'Select a system track.', [0, 1.02], seek),
    ];
    this.stage = element('main', { class: 'stage' });
    this.panels = {
      timeline: element('div', { class: 'panel timeline', role: 'tabpanel' }, this.timeline.surface.canvas),
      plots: element('div', { class: 'panel plots', role: 'tabpanel' }, ...this.plots.map((plot) => plot.root)),
      metrics: element('div', { class: 'panel metrics', role: 'tabpanel' }),
      configuration: element('div', { class: 'panel configuration', role: 'tabpanel' }),
    };
    this.help = this.makeHelp();
    this.build();
    this.listen();
    this.applyTheme();
    showMetrics(this.panels.metrics, this.model, this.part, (part) => this.choosePart(part));
    showConfiguration(this.panels.configuration, this.model);
    this.showTab('timeline');
    this.loadTime = performance.now() - begin;
    requestAnimationFrame((now) => this.tick(now));
  }

  // --- Layout ------------------------------------------------------------------------------------

  private build(): void {
    const { recording, program } = this.model.data;
    document.title = `${recording.name || 'recording'} – veskar report`;
    document.documentElement.classList.toggle('pair', this.model.runs.length > 1);
    const header = element('header', { class: 'top' },
      element('div', { class: 'brand' }, 'veskar'),
      element('h1', {}, recording.name || 'recording'),
      element('p', { class: 'origin', title: recording.origin ?? '' }, recording.origin ?? ''),
      element('div', { class: 'tools' },
        this.layerToggles(),
        this.viewSwitch(),
        button(icon('theme'), 'Light or dark (T)', () => this.nextTheme(), { class: 'icon' }),
        button(icon('help'), 'Keys (?)', () => this.help.showModal(), { class: 'icon' })));
    this.model.runs.forEach((run, i) => {
      const view = this.views[i];
      const title = element('div', { class: 'run-title' },
        this.model.runs.length > 1 && element('b', { class: `badge run-${i}` }, 'AB'[i]),
        element('span', { class: 'file', title: run.label }, run.label), view.counts);
      const fit = button('Fit', 'Fit the plan (F)', () => this.fit(), { class: 'fit' });
      this.stage.append(element('section', { class: 'run' }, title, element('div', { class: 'views' },
        element('div', { class: 'view plan-view' }, view.plan.surface.canvas, element('span', { class: 'caption' }, 'Plan'), fit),
        element('div', { class: 'view image-view' }, view.image.surface.canvas, element('span', { class: 'caption' }, 'Camera')))));
    });
    this.slider.min = '0';
    this.slider.max = String(this.model.duration);
    this.slider.step = '0.001';
    const transport = element('div', { class: 'transport', role: 'group', 'aria-label': 'Playback' },
      button(icon('back'), 'One frame back (←)', () => this.step(-1), { class: 'icon' }),
      this.playButton,
      button(icon('on'), 'One frame on (→)', () => this.step(1), { class: 'icon' }),
      this.clockText, this.slider,
      element('span', { class: 'clock total' }, timeText(this.model.duration)),
      element('div', { class: 'pace' }, button('−', 'Slower (−)', () => this.changeSpeed(-1), { class: 'icon' }), this.speedText,
        button('+', 'Faster (+)', () => this.changeSpeed(1), { class: 'icon' })));
    const names: [Tab, string][] = [['timeline', 'Timeline'], ['plots', 'Plots'], ['metrics', 'Metrics'], ['configuration', 'Configuration']];
    const tabs = element('nav', { class: 'tabs', role: 'tablist' }, ...names.map(([tab, label]) => {
      const made = button(label, label, () => this.showTab(tab), { role: 'tab' });
      this.tabButtons.set(tab, made);
      return made;
    }));
    const lower = element('section', { class: 'lower' }, tabs, ...Object.values(this.panels));
    const foot = element('footer', {}, `veskar ${program}`, recording.licence ? ` · ${recording.licence}` : '');
    this.root.replaceChildren(header, this.stage, transport, lower, this.inspector, foot, this.help);
  }

  private layerToggles(): HTMLElement {
    const names: [keyof Layers, string, string][] = [
      ['video', 'Video', 'video'], ['radar', 'Radar', 'radar'], ['tentative', 'Tentative', 'tentative'],
      ['truth', 'Truth', 'truth'], ['trails', 'Trails', ''], ['ellipses', 'Ellipses', ''],
    ];
    return element('div', { class: 'layers', role: 'group', 'aria-label': 'Layers' }, ...names
      .filter(([layer]) => layer !== 'truth' || this.model.truth)
      .map(([layer, label, sign]) => {
        const made = element('button', { type: 'button', class: 'chip', 'aria-pressed': 'true', 'data-layer': layer }, sign !== '' && element('i', { class: `sign ${sign}` }), label);
        made.addEventListener('click', () => {
          this.state.layers[layer] = !this.state.layers[layer];
          made.setAttribute('aria-pressed', String(this.state.layers[layer]));
          this.timeline.lanes = lanesOf(this.model, this.state.layers.tentative);
          this.isDirty = true;
        });
        return made;
      }));
  }

  private viewSwitch(): HTMLElement {
    const names: [Views, string][] = [['plan', 'Plan'], ['both', 'Both'], ['image', 'Camera']];
    const group = element('div', { class: 'segments', role: 'group', 'aria-label': 'Views' });
    for (const [views, label] of names) {
      const made = button(label, `Show ${label.toLowerCase()}`, () => {
        this.state.views = views;
        this.root.dataset['views'] = views;
        group.querySelectorAll('button').forEach((other) => other.setAttribute('aria-pressed', String(other === made)));
        this.isDirty = true;
      }, { 'aria-pressed': String(views === this.state.views) });
      group.append(made);
    }
    this.root.dataset['views'] = this.state.views;
    return group;
  }

  private makeHelp(): HTMLDialogElement {
    const made = element('dialog', { class: 'help' }, element('h2', {}, 'Keys'),
      element('dl', { class: 'facts' }, ...keysHelp.flatMap(([key, what]) => [element('dt', {}, key), element('dd', {}, what)])),
      element('p', { class: 'hint' }, 'Drag the plan to move it, turn the wheel to zoom, click what you want to know about.'),
      button('Close', 'Close', () => made.close()));
    return made;
  }

  // --- What the reader does ----------------------------------------------------------------------

  private listen(): void {
    this.slider.addEventListener('input', () => this.seek(Number(this.slider.value)));
    addEventListener('keydown', (event) => this.onKey(event));
    addEventListener('resize', () => (this.isDirty = true));
    new ResizeObserver(() => (this.isDirty = true)).observe(this.root);
    matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => this.applyTheme());
    this.views.forEach((view, run) => {
      this.listenToPlan(view.plan, run);
      view.image.surface.canvas.addEventListener('click', (event) => this.pick(view.image.surface.hit(event.offsetX, event.offsetY, 14), run));
    });
    this.listenToTimeline();
  }

  private listenToPlan(plan: Plan, run: number): void {
    const { canvas } = plan.surface;
    const pointers = new Map<number, { x: number; y: number }>();
    let moved = 0;
    canvas.addEventListener('pointerdown', (event) => {
      canvas.setPointerCapture(event.pointerId);
      pointers.set(event.pointerId, { x: event.offsetX, y: event.offsetY });
      moved = 0;
    });
    canvas.addEventListener('pointermove', (event) => {
      const before = pointers.get(event.pointerId);
      if (!before) {
        return;
      }
      const now = { x: event.offsetX, y: event.offsetY };
      const other = [...pointers].find(([id]) => id !== event.pointerId)?.[1];
      if (other) {
        const spread = (point: { x: number; y: number }) => Math.max(1, Math.hypot(point.x - other.x, point.y - other.y));
        this.views.forEach((view) => view.plan.zoomAt(other.x, other.y, spread(now) / spread(before)));
      } else {
        this.views.forEach((view) => view.plan.pan(now.x - before.x, now.y - before.y));
      }
      moved += Math.hypot(now.x - before.x, now.y - before.y);
      pointers.set(event.pointerId, now);
      this.isDirty = true;
    });
    const release = (event: PointerEvent) => pointers.delete(event.pointerId);
    canvas.addEventListener('pointercancel', release);
    canvas.addEventListener('pointerup', (event) => {
      release(event);
      if (moved < 5) {
        this.pick(plan.surface.hit(event.offsetX, event.offsetY, 16), run);
      }
    });
    canvas.addEventListener('wheel', (event) => {
      event.preventDefault();
      this.views.forEach((view) => view.plan.zoomAt(event.offsetX, event.offsetY, Math.exp(-event.deltaY * 0.0015)));
      this.isDirty = true;
    }, { passive: false });
    canvas.addEventListener('dblclick', () => this.fit());
  }

  private listenToTimeline(): void {
    const { canvas } = this.timeline.surface;
    canvas.addEventListener('click', (event) => {
      const lane = this.timeline.laneAt(event.offsetY);
      if (lane) {
        this.select({ kind: 'system', run: lane.run, id: lane.life.id });
      }
      if (event.offsetX >= gutter) {
        this.seek(this.timeline.timeAt(event.offsetX));
      } else if (lane && (this.clock.time < lane.life.from || this.clock.time > lane.life.to)) {
        this.seek(lane.life.from);
      }
    });
    canvas.addEventListener('wheel', (event) => {
      const before = this.timeline.scroll;
      this.timeline.scrollBy(event.deltaY);
      if (this.timeline.scroll !== before) {
        event.preventDefault();
        this.isDirty = true;
      }
    }, { passive: false });
    let touched: number | null = null;
    canvas.addEventListener('touchstart', (event) => (touched = event.touches[0].clientY), { passive: true });
    canvas.addEventListener('touchmove', (event) => {
      const y = event.touches[0].clientY;
      if (touched !== null) {
        this.timeline.scrollBy(touched - y);
        this.isDirty = true;
      }
      touched = y;
    }, { passive: true });
  }

  private onKey(event: KeyboardEvent): void {
    if (event.ctrlKey || event.metaKey || event.altKey || this.help.open) {
      return;
    }
    const second = (by: number) => this.seek(this.clock.time + by);
    const tabs: readonly Tab[] = ['timeline', 'plots', 'metrics', 'configuration'];
    const actions: Record<string, () => void> = {
      ' ': () => this.toggle(),
      ArrowLeft: () => (event.shiftKey ? second(-1) : this.step(-1)),
      ArrowRight: () => (event.shiftKey ? second(1) : this.step(1)),
      Home: () => this.seek(0),
      End: () => this.seek(this.model.duration),
      '-': () => this.changeSpeed(-1),
      '+': () => this.changeSpeed(1),
      '=': () => this.changeSpeed(1),
      '[': () => this.selectNeighbour(-1),
      ']': () => this.selectNeighbour(1),
      f: () => this.fit(),
      t: () => this.nextTheme(),
      '?': () => this.help.showModal(),
      Escape: () => this.select(null),
      ...Object.fromEntries(tabs.map((tab, i) => [String(i + 1), () => this.showTab(tab)])),
    };
    const action = actions[event.key.length === 1 ? event.key.toLowerCase() : event.key];
    if (action) {
      event.preventDefault();
      action();
    }
  }

  private pick(mark: Mark | null, run: number): void {
    this.select(mark ? selectionOf(mark, run) : null);
  }

  private select(selection: Selection | null): void {
    if (isSame(selection, this.state.selection)) {
      return;
    }
    this.state.selection = selection;
    if (selection?.kind === 'system') {
      this.timeline.reveal(selection.run, selection.id);
    }
    this.plots[2].show(probabilitySeries(this.model, selection, this.palette), this.palette);
    this.isDirty = true;
  }

  private selectNeighbour(by: number): void {
    const { lanes } = this.timeline;
    const { selection } = this.state;
    const at = lanes.findIndex((lane) => selection?.kind === 'system' && lane.run === selection.run && lane.life.id === selection.id);
    const lane = lanes[at < 0 ? (by > 0 ? 0 : lanes.length - 1) : at + by];
    if (lane) {
      this.select({ kind: 'system', run: lane.run, id: lane.life.id });
      if (this.clock.time < lane.life.from || this.clock.time >= lane.life.to) {
        this.seek(lane.life.from);
      }
    }
  }

  private seek(time: number): void {
    this.clock.seek(time);
    this.isDirty = true;
  }

  private step(by: number): void {
    this.clock.step(by);
    this.isDirty = true;
  }

  private toggle(): void {
    this.clock.toggle();
    this.lastTick = performance.now();
    this.isDirty = true;
  }

  private changeSpeed(by: number): void {
    this.clock.changeSpeed(by);
    this.isDirty = true;
  }

  private fit(): void {
    this.views.forEach((view) => view.plan.fit());
    this.isDirty = true;
  }

  private choosePart(part: string): void {
    this.part = part;
    showMetrics(this.panels.metrics, this.model, part, (other) => this.choosePart(other));
  }

  private showTab(tab: Tab): void {
    this.tab = tab;
    for (const [name, panel] of Object.entries(this.panels)) {
      panel.hidden = name !== tab;
      this.tabButtons.get(name as Tab)?.setAttribute('aria-selected', String(name === tab));
    }
    this.isDirty = true;
  }

  private nextTheme(): void {
    const isDark = document.documentElement.dataset['theme'] === 'dark';
    this.state.theme = isDark ? 'light' : 'dark';
    this.applyTheme();
  }

  private applyTheme(): void {
    const chosen: Theme = this.state.theme;
    const isDark = chosen === 'dark' || (chosen === 'auto' && matchMedia('(prefers-color-scheme: dark)').matches);
    document.documentElement.dataset['theme'] = isDark ? 'dark' : 'light';
    this.palette = readPalette();
    this.plots[0].show(gospaSeries(this.model, this.palette), this.palette);
    this.plots[1].show(countSeries(this.model, this.palette), this.palette);
    this.plots[2].show(probabilitySeries(this.model, this.state.selection, this.palette), this.palette);
    this.isDirty = true;
  }

  // --- Drawing -----------------------------------------------------------------------------------

  private tick(now: number): void {
    if (this.clock.playing) {
      this.clock.advance(Math.min(0.25, (now - this.lastTick) / 1000));
      this.isDirty = true;
    }
    this.lastTick = now;
    if (this.isDirty) {
      this.draw();
    }
    requestAnimationFrame((next) => this.tick(next));
  }

  private draw(): number {
    const begin = performance.now();
    this.isDirty = false;
    const { time } = this.clock;
    this.views.forEach((view, i) => {
      view.plan.draw(this.state, time, this.palette);
      view.image.draw(this.state, time, this.palette);
      this.showCounts(view, i);
    });
    if (this.tab === 'timeline') {
      this.timeline.draw(this.state, time, this.palette);
    }
    if (this.tab === 'plots') {
      for (const plot of this.plots) {
        plot.currentTime = time;
        plot.resize();
        plot.redraw();
      }
    }
    this.showTransport();
    this.inspect();
    const elapsed = performance.now() - begin;
    this.drawTimes.push(elapsed);
    if (this.drawTimes.length > 600) {
      this.drawTimes.shift();
    }
    return elapsed;
  }

  private showCounts(view: RunView, index: number): void {
    const run = this.model.runs[index];
    const rows = run.tracks.rowsOf(run.frameAt(this.clock.time + 0.0005));
    const confirmed = run.tracks.column('confirmed');
    const count = rows.reduce((sum, row) => sum + (confirmed[row] === 1 ? 1 : 0), 0);
    setText(view.counts, `${count} confirmed, ${rows.length - count} tentative`);
  }

  private showTransport(): void {
    this.slider.value = String(this.clock.time);
    this.slider.setAttribute('aria-valuetext', timeText(this.clock.time));
    this.slider.style.setProperty('--done', `${(100 * this.clock.time) / Math.max(1e-9, this.model.duration)}%`);
    setText(this.clockText, timeText(this.clock.time));
    setText(this.speedText, `${this.clock.speed}×`);
    if (this.playButton.getAttribute('aria-pressed') !== String(this.clock.playing)) {
      this.playButton.setAttribute('aria-pressed', String(this.clock.playing));
      this.playButton.replaceChildren(icon(this.clock.playing ? 'pause' : 'play'));
    }
  }

  /**
   * The side panel changes only when there is something new to say: at once when something else is
   * selected, and with the time at most ten times a second, for nobody reads quicker.
   */
  private inspect(): void {
    const { time } = this.clock;
    const selection = JSON.stringify(this.state.selection);
    const now = performance.now();
    if (time === this.inspected.time && selection === this.inspected.selection) {
      return;
    }
    if (selection === this.inspected.selection && now - this.inspected.when < 100) {
      this.isDirty = true;
      return;
    }
    this.inspected = { time, selection, when: now };
    showInspector(this.inspector, this.model, this.state.selection, time, (chosen) => this.select(chosen));
  }

  get probe(): Probe {
    const app = this;
    return {
      get time() { return app.clock.time; },
      get playing() { return app.clock.playing; },
      get selection() { return app.state.selection; },
      get plan() { return app.views.map((view) => view.plan.surface.marks); },
      get image() { return app.views.map((view) => view.image.surface.marks); },
      get lanes() { return app.timeline.lanes.map((lane) => ({ run: lane.run, id: lane.life.id, switches: lane.switches.length })); },
      get plotPoints() { return app.plots.map((plot) => plot.points); },
      get drawMilliseconds() { return app.drawTimes; },
      get loadMilliseconds() { return app.loadTime; },
      draw(time: number) {
        app.clock.seek(time);
        return app.draw();
      },
    };
  }
}

function setText(target: HTMLElement, text: string): void {
  if (target.textContent !== text) {
    target.textContent = text;
  }
}
