// SPDX-License-Identifier: Apache-2.0
// The live view: shows what happens in the program that served the page, and the past minutes of it.
import { Clock } from '../clock';
import type { Mark } from '../canvas';
import { button, element, icon, setText } from '../dom';
import { DrawingLoop } from '../drawing';
import { layerToggles, viewSwitch } from '../header';
import { ImageView } from '../imageview';
import { Inspector } from '../inspector';
import { helpOf, listenToKeys, type Shortcut } from '../keys';
import { readPalette, type Palette } from '../palette';
import { Plan } from '../plan';
import { listenToPlan } from '../planpointer';
import { selectionOf } from '../scene';
import { initialState, isSame, type Layers, type Selection, type State, type Views } from '../state';
import { applyTheme, onSystemTheme, otherTheme } from '../theme';
import { lanesOf, Timeline } from '../timeline';
import { CameraPicture } from './camerapicture';
import { GrowingExtent } from './extent';
import { Feed, type Listener } from './feed';
import { Health } from './health';
import { Lifetimes } from './lifetimes';
import { LiveModel } from './livemodel';
import { ObjectList } from './objectlist';
import type { DecisionData, HelloData, PictureData, StateData, StatusData } from './protocol';

/** What the timeline shows, s. */
const remembered = 120;
/** Without a new state for longer, the view says so, ms. */
const staleAfter = 2000;
const keyPan = 40;
const keyZoom = 1.25;

/** The parts that show one start of the program: another one may have another installation. */
interface Shown {
  readonly start: string;
  readonly model: LiveModel;
  readonly extent: GrowingExtent;
  readonly plan: Plan;
  readonly image: ImageView;
  readonly inspector: Inspector;
  readonly lifetimes: Lifetimes;
}

/** What tests look at. */
export interface LiveProbe {
  readonly isConnected: boolean;
  readonly isHeld: boolean;
  readonly states: number;
  readonly time: number;
  readonly start: string;
  readonly selection: Selection | null;
  readonly plan: readonly Mark[];
  readonly image: readonly Mark[];
  readonly lanes: readonly number[];
  readonly hasPicture: boolean;
  readonly transform: { readonly scale: number; readonly left: number; readonly top: number };
  readonly drawMilliseconds: readonly number[];
}

export class LiveApp implements Listener {
  readonly probe: LiveProbe;
  private readonly choices: State = initialState();
  private readonly feed = new Feed(this);
  private readonly loop = new DrawingLoop(new Clock(0, new Float64Array(0)), () => this.draw());
  private readonly timeline = new Timeline({ duration: remembered }, 'the system tracks of the last minutes', (seconds) => (seconds >= remembered ? 'now' : `−${Math.round(remembered - seconds)} s`));
  private readonly health = new Health();
  private readonly objects = new ObjectList((selection) => this.select(selection));
  private readonly camera = new CameraPicture(() => this.loop.request());
  private readonly pictureText = element('output', { class: 'picture', 'aria-live': 'off' });
  private readonly connection = element('output', { class: 'connection' }, 'Connecting');
  private readonly holdButton = button('Hold', 'Hold the picture (Space)', () => this.toggleHold(), { class: 'chip hold', 'aria-pressed': 'false' });
  private readonly help: HTMLDialogElement;
  private shown: Shown | null = null;
  private newestPicture: PictureData | null = null;
  private palette!: Palette;
  private isConnected = false;
  private isHeld = false;
  private states = 0;
  private lastState = -Infinity;

  constructor(private readonly root: HTMLElement) {
    root.classList.add('live');
    root.dataset['views'] = this.choices.views;
    root.replaceChildren(element('p', { class: 'empty failure' }, 'Waiting for the program …'));
    const shortcuts = this.shortcuts();
    this.help = helpOf(shortcuts);
    listenToKeys(shortcuts, this.help);
    this.listenToTimeline();
    onSystemTheme(() => this.showTheme());
    addEventListener('resize', () => this.loop.request());
    this.showTheme();
    this.probe = this.makeProbe();
    this.loop.start();
    this.feed.open(null);
    setInterval(() => this.showConnection(), 500);
  }

  // --- What the program tells --------------------------------------------------------------------

  hello(data: HelloData): void {
    if (this.shown?.start === data.start) {
      return;
    }
    const model = new LiveModel(data);
    const extent = new GrowingExtent(data.scene);
    const plan = new Plan(model, model.runs[0], 0, extent);
    const image = new ImageView(model, model.runs[0], 0);
    const inspector = new Inspector(model, (selection) => this.select(selection));
    this.shown = { start: data.start, model, extent, plan, image, inspector, lifetimes: new Lifetimes(remembered) };
    this.newestPicture = null;
    this.camera.reset();
    this.health.reset(data);
    this.showLanes();
    this.listenToViews(plan, image);
    this.build(data, this.shown);
    this.select(null);  // numbers mean other tracks now
    this.loop.request();
  }

  state(data: StateData): void {
    const { shown } = this;
    this.lastState = performance.now();
    ++this.states;
    if (!shown || this.isHeld) {
      return;
    }
    shown.model.show(data);
    shown.lifetimes.add(data.fused);
    if (shown.plan.isFitted) {
      shown.extent.include(data.fused);
    }
    this.showLanes();
    this.loop.request();
  }

  status(data: StatusData): void {
    this.health.take(data);
    this.loop.request();
  }

  decision(data: DecisionData): void {
    if (!this.isHeld) {
      this.shown?.model.decide(data);
    }
  }

  picture(data: PictureData): void {
    this.newestPicture = data;
    if (!this.isHeld) {
      this.camera.take(data);
    }
  }

  connected(isConnected: boolean): void {
    this.isConnected = isConnected;
    this.showConnection();
  }

  // --- The page ----------------------------------------------------------------------------------

  private build({ program }: HelloData, { model, plan, image, inspector }: Shown): void {
    this.root.style.setProperty('--aspect', `${model.scene.aspect}`);
    const fit = button('Fit', 'Fit the plan (F)', () => this.fit(), { class: 'fit' });
    this.root.replaceChildren(
      element('header', { class: 'top' },
        element('div', { class: 'brand' }, 'veskar'), element('h1', {}, 'Live'), this.connection,
        element('div', { class: 'tools' },
          this.holdButton,
          layerToggles(model, this.choices, { toggleLayer: (layer) => this.toggleLayer(layer) }),
          viewSwitch(this.choices, { showViews: (views) => this.showViews(views) }),
          button(icon('theme'), 'Light or dark (T)', () => this.nextTheme(), { class: 'icon' }),
          button(icon('help'), 'Keys (?)', () => this.help.showModal(), { class: 'icon' }))),
      element('main', { class: 'stage' }, element('section', { class: 'run' }, element('div', { class: 'views' },
        element('div', { class: 'view plan-view' }, plan.surface.canvas, element('span', { class: 'caption' }, 'Plan'), fit),
        element('div', { class: 'view image-view' }, image.surface.canvas, element('span', { class: 'caption' }, 'Camera ', this.pictureText))))),
      element('section', { class: 'lower' }, element('div', { class: 'panel timeline' }, this.timeline.surface.canvas)),
      element('div', { class: 'side' }, this.health.root, this.objects.root, inspector.root),
      element('footer', {}, `veskar ${program}`),
      this.help);
    new ResizeObserver(() => this.loop.request()).observe(plan.surface.canvas);
  }

  private draw(): void {
    const { shown } = this;
    if (!shown) {
      return;
    }
    const { model, plan, image, inspector } = shown;
    const { selection, layers } = this.choices;
    plan.draw(this.choices, model.now, this.palette);
    image.backdrop = this.camera.image;
    image.draw(this.choices, model.now, this.palette);
    setText(this.pictureText, this.camera.text(model.newest?.time ?? NaN));
    this.timeline.draw(this.choices, remembered, this.palette);
    this.health.draw(model);
    this.objects.draw(model.newest, layers.tentative, selection);
    inspector.root.hidden = selection === null;
    if (selection && !inspector.draw(selection, model.now)) {
      this.loop.request();
    }
  }

  private showLanes(): void {
    const lives = this.shown?.lifetimes.lives() ?? [];
    this.timeline.lanes = lanesOf({ isPair: false, runs: [{ lives, judgement: null }] }, this.choices.layers.tentative);
  }

  private showConnection(): void {
    const isStale = performance.now() - this.lastState > staleAfter;
    const text = !this.isConnected ? 'Connecting' : isStale ? 'No frames' : this.isHeld ? 'Held' : 'Live';
    setText(this.connection, text);
    this.connection.dataset['state'] = text.toLowerCase();
  }

  private showTheme(): void {
    applyTheme(this.choices.theme);
    this.palette = readPalette();
    this.loop.request();
  }

  // --- What viewers do ---------------------------------------------------------------------------

  private select(selection: Selection | null): void {
    if (isSame(selection, this.choices.selection)) {
      return;
    }
    this.choices.selection = selection;
    this.shown?.model.forgetDecisions();
    if (selection?.kind === 'system') {
      this.timeline.reveal(0, selection.id);
    }
    this.feed.open(selection);
    this.loop.request();
  }

  private selectNeighbour(by: number): void {
    const lane = this.timeline.neighbourOf(this.choices.selection, by);
    if (lane) {
      this.select({ kind: 'system', run: 0, id: lane.life.id });
    }
  }

  private toggleHold(): void {
    this.isHeld = !this.isHeld;
    this.holdButton.setAttribute('aria-pressed', String(this.isHeld));
    if (!this.isHeld && this.newestPicture) {
      this.camera.take(this.newestPicture);
    }
    this.showConnection();
  }

  private toggleLayer(layer: keyof Layers): void {
    this.choices.layers[layer] = !this.choices.layers[layer];
    this.showLanes();
    this.loop.request();
  }

  private showViews(views: Views): void {
    this.choices.views = views;
    this.root.dataset['views'] = views;
    this.loop.request();
  }

  private nextTheme(): void {
    this.choices.theme = otherTheme();
    this.showTheme();
  }

  private fit(): void {
    this.shown?.plan.fit();
    this.loop.request();
  }

  private pan(dx: number, dy: number): void {
    this.shown?.plan.pan(dx, dy);
    this.loop.request();
  }

  private zoom(x: number, y: number, factor: number): void {
    this.shown?.plan.zoomAt(x, y, factor);
    this.loop.request();
  }

  private zoomMiddle(factor: number): void {
    const surface = this.shown?.plan.surface;
    if (surface) {
      this.zoom(surface.width / 2, surface.height / 2, factor);
    }
  }

  private shortcuts(): Shortcut[] {
    return [
      { label: 'Space', purpose: 'hold the picture, go on', actions: { ' ': () => this.toggleHold() } },
      { label: '[ ]', purpose: 'system track before, after', actions: { '[': () => this.selectNeighbour(-1), ']': () => this.selectNeighbour(1) } },
      {
        label: '← ↑ → ↓', purpose: 'move the plan',
        actions: { ArrowLeft: () => this.pan(keyPan, 0), ArrowRight: () => this.pan(-keyPan, 0), ArrowUp: () => this.pan(0, keyPan), ArrowDown: () => this.pan(0, -keyPan) },
      },
      { label: '− +', purpose: 'zoom the plan', actions: { '-': () => this.zoomMiddle(1 / keyZoom), '+': () => this.zoomMiddle(keyZoom), '=': () => this.zoomMiddle(keyZoom) } },
      { label: 'F', purpose: 'fit the plan', actions: { f: () => this.fit() } },
      { label: 'T', purpose: 'light, dark', actions: { t: () => this.nextTheme() } },
      { label: 'Esc', purpose: 'select nothing', actions: { Escape: () => this.select(null) } },
    ];
  }

  private listenToViews(plan: Plan, image: ImageView): void {
    const pick = (mark: Mark | null) => this.select(mark && selectionOf(mark, 0));
    listenToPlan(plan, pick, { panPlans: (dx, dy) => this.pan(dx, dy), zoomPlans: (x, y, factor) => this.zoom(x, y, factor), fitPlans: () => this.fit() });
    image.surface.canvas.addEventListener('click', (event) => pick(image.surface.hit(event.offsetX, event.offsetY, 14)));
  }

  private listenToTimeline(): void {
    const { canvas } = this.timeline.surface;
    canvas.addEventListener('click', (event) => {
      const lane = this.timeline.laneAt(event.offsetY);
      if (lane) {
        this.select({ kind: 'system', run: 0, id: lane.life.id });
      }
    });
    canvas.addEventListener('wheel', (event) => {
      event.preventDefault();
      this.timeline.scrollBy(event.deltaY);
      this.loop.request();
    }, { passive: false });
  }

  private makeProbe(): LiveProbe {
    const app = this;
    return {
      get isConnected() { return app.isConnected; },
      get isHeld() { return app.isHeld; },
      get states() { return app.states; },
      get time() { return app.shown?.model.newest?.time ?? NaN; },
      get start() { return app.shown?.start ?? ''; },
      get selection() { return app.choices.selection; },
      get plan() { return app.shown?.plan.surface.marks ?? []; },
      get image() { return app.shown?.image.surface.marks ?? []; },
      get hasPicture() { return app.camera.image !== null; },
      get lanes() { return app.timeline.lanes.map((lane) => lane.life.id); },
      get transform() { return app.shown?.plan.transform() ?? { scale: NaN, left: NaN, top: NaN }; },
      get drawMilliseconds() { return app.loop.milliseconds; },
    };
  }
}
