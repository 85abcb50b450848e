// SPDX-License-Identifier: Apache-2.0
// Plan and image of one run, under its name.
import type { Mark } from './canvas';
import type { Commands } from './commands';
import { sceneText } from './describe';
import { button, element, setText } from './dom';
import { ImageView } from './imageview';
import { countsOf, letterOf, lookupTime, type Model, type Run } from './model';
import { NowCard } from './nowcard';
import type { Palette } from './palette';
import { Plan } from './plan';
import { listenToPlan } from './planpointer';
import { selectionOf } from './scene';
import { splitterOf } from './splitter';
import type { State } from './state';

export class RunView {
  readonly root: HTMLElement;
  readonly plan: Plan;
  readonly image: ImageView;
  private readonly counts: ReturnType<typeof countsOf>;
  /** Beside the camera image, where two runs are compared. */
  private readonly now: NowCard | null;
  private readonly mapText = element('small', { class: 'attribution' });
  private readonly countText = element('span', { class: 'counts' });

  constructor(
    private readonly model: Model,
    private readonly run: Run,
    index: number,
    commands: Commands,
    changed: () => void,
  ) {
    this.counts = countsOf(run);
    this.now = model.isPair ? new NowCard(model, run, this.counts) : null;
    this.plan = new Plan(model, run, index, undefined, changed);
    this.image = new ImageView(model, run, index);
    const title = element('div', { class: 'run-title' },
      model.isPair && element('b', { class: `badge run-${index}` }, letterOf(index)),
      element('span', { class: 'file', title: run.label }, run.label), !model.isPair && this.countText);
    const fit = button('Fit', 'Fit the plan (F)', () => commands.fitPlans(), { class: 'fit' });
    const imageView = element('div', { class: 'view image-view' }, this.image.surface.canvas, element('span', { class: 'caption' }, 'Camera'));
    const views = element('div', { class: 'views' });
    views.append(
      element('div', { class: 'view plan-view' }, this.plan.surface.canvas, element('span', { class: 'caption' }, 'Plan'), fit, model.data.map && this.mapText),
      ...(model.isPair ? [] : [splitterOf({ name: 'camera', label: 'Width of the camera image', panelIs: 'right', panel: imageView, least: 160, most: () => views.offsetWidth - 200, changed })]),
      imageView,
      ...(this.now ? [this.now.root] : []));
    this.root = element('section', { class: 'run' }, title, views);

    const pick = (mark: Mark | null) => commands.select(mark && selectionOf(mark, index));
    const { surface } = this.image;
    listenToPlan(this.plan, pick, commands);
    surface.canvas.addEventListener('click', (event) => pick(surface.hit(event.offsetX, event.offsetY, 14)));
  }

  draw(state: State, time: number, palette: Palette): void {
    this.plan.draw(state, time, palette);
    this.image.draw(state, time, palette);
    this.now?.draw(time);
    this.showCounts(time);
    this.showMap(state);
  }

  /** Tells in words what is drawn. */
  describe(time: number): void {
    const text = sceneText(this.model, this.run, time);
    this.plan.surface.describe(`Plan of ${this.run.label} ${text}`);
    this.image.surface.describe(`Camera image of ${this.run.label} ${text}`);
  }

  /** Whose map it is, or that there is none. */
  private showMap(state: State): void {
    const { map } = this.model.data;
    if (map) {
      this.mapText.hidden = !state.layers.map;
      setText(this.mapText, this.plan.map?.isMissing ? 'The map cannot be fetched.' : map.attribution);
    }
  }

  private showCounts(time: number): void {
    const frame = this.run.frameAt(lookupTime(time));
    const { confirmed, tentative } = this.counts;
    setText(this.countText, `${confirmed[frame] ?? 0} confirmed, ${tentative[frame] ?? 0} tentative`);
  }
}
