// SPDX-License-Identifier: Apache-2.0
// Plan and image of one run, under its name.
import type { Mark } from './canvas';
import type { Commands } from './commands';
import { button, element, setText } from './dom';
import { ImageView } from './imageview';
import type { Model, Run } from './model';
import type { Palette } from './palette';
import { Plan } from './plan';
import { listenToPlan } from './planpointer';
import { selectionOf } from './scene';
import type { State } from './state';

export class RunView {
  readonly root: HTMLElement;
  readonly plan: Plan;
  readonly image: ImageView;
  private readonly counts = element('span', { class: 'counts' });

  constructor(
    model: Model,
    private readonly run: Run,
    index: number,
    commands: Commands,
  ) {
    this.plan = new Plan(model, run, index);
    this.image = new ImageView(model, run, index);
    const title = element('div', { class: 'run-title' },
      model.runs.length > 1 && element('b', { class: `badge run-${index}` }, 'AB'[index]),
      element('span', { class: 'file', title: run.label }, run.label), this.counts);
    const fit = button('Fit', 'Fit the plan (F)', () => commands.fitPlans(), { class: 'fit' });
    this.root = element('section', { class: 'run' }, title, element('div', { class: 'views' },
      element('div', { class: 'view plan-view' }, this.plan.surface.canvas, element('span', { class: 'caption' }, 'Plan'), fit),
      element('div', { class: 'view image-view' }, this.image.surface.canvas, element('span', { class: 'caption' }, 'Camera'))));

    const pick = (mark: Mark | null) => commands.select(mark && selectionOf(mark, index));
    const { surface } = this.image;
    listenToPlan(this.plan, pick, commands);
    surface.canvas.addEventListener('click', (event) => pick(surface.hit(event.offsetX, event.offsetY, 14)));
  }

  draw(state: State, time: number, palette: Palette): void {
    this.plan.draw(state, time, palette);
    this.image.draw(state, time, palette);
    this.showCounts(time);
  }

  private showCounts(time: number): void {
    const { tracks } = this.run;
    const rows = tracks.rowsOf(this.run.frameAt(time + 0.0005));
    const confirmed = tracks.column('confirmed');
    const count = rows.reduce((sum, row) => sum + (confirmed[row] === 1 ? 1 : 0), 0);
    setText(this.counts, `${count} confirmed, ${rows.length - count} tentative`);
  }
}
