// SPDX-License-Identifier: Apache-2.0
// How a run does at a time, to be compared with the other run.
import { element, setText } from './dom';
import { quantity } from './facts';
import { lookupTime, type countsOf, type Model, type Run } from './model';
import { lastNotAfter } from './table';

type Counts = ReturnType<typeof countsOf>;

export class NowCard {
  readonly root: HTMLElement;
  private readonly values = new Map<string, HTMLElement>();

  constructor(
    private readonly model: Model,
    private readonly run: Run,
    private readonly counts: Counts,
  ) {
    const names = Object.keys(standingAt(model, run, counts, 0));
    names.forEach((name) => this.values.set(name, element('dd')));
    this.root = element('dl', { class: 'facts now' }, ...names.flatMap((name) => [element('dt', {}, name), this.values.get(name)]));
  }

  draw(time: number): void {
    for (const [name, text] of Object.entries(standingAt(this.model, this.run, this.counts, time))) {
      setText(this.values.get(name) as HTMLElement, text);
    }
  }
}

/** What is told of a run at a time; where there is truth, how it agrees with that. */
export function standingAt(model: Model, run: Run, { confirmed, tentative }: Counts, time: number): Record<string, string> {
  const now = lookupTime(time);
  const frame = run.frameAt(now);
  const standing = { Confirmed: `${confirmed[frame] ?? 0}`, Tentative: `${tentative[frame] ?? 0}` };
  const { judgement } = run;
  if (!judgement || !model.truth) {
    return standing;
  }
  const truthFrame = model.truth.frameAt(now);
  const objects = truthFrame < 0 ? 0 : model.truth.table.rowsOf(truthFrame).length;
  return {
    ...standing,
    Found: `${judgement.matchesAt(now).length} of ${objects}`,
    GOSPA: quantity(judgement.gospa[lastNotAfter(judgement.times, now)], 2, 'm'),
  };
}
