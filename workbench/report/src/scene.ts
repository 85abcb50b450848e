// SPDX-License-Identifier: Apache-2.0
// Selects the tracks that plan and image view show at a time.
import type { Label, Mark } from './canvas';
import { lookupTime, type Model, type Run } from './model';
import type { Selection, State } from './state';

/**
 * Ellipses hold the object with 95 %: this many standard deviations, the root of the 0.95 quantile of
 * chi-square with 2 degrees of freedom.
 */
export const ellipseScale = Math.sqrt(5.991);

/** The rows to draw at a time. */
export interface Shown {
  readonly video: Int32Array;
  readonly radar: Int32Array;
  readonly truth: Int32Array;
  readonly system: Int32Array;
}

const none = new Int32Array(0);

export function shownAt(model: Model, run: Run, state: State, time: number): Shown {
  const now = lookupTime(time);
  const rowsOf = (isShown: boolean, seen: Model['video'] | null) =>
    isShown && seen ? seen.table.rowsOf(seen.frameAt(now)) : none;
  const system = run.tracks.rowsOf(run.frameAt(now));
  const confirmed = run.tracks.column('confirmed');
  return {
    video: rowsOf(state.layers.video, model.video),
    radar: rowsOf(state.layers.radar, model.radar),
    truth: rowsOf(state.layers.truth, model.truth),
    system: state.layers.tentative ? system : system.filter((row) => confirmed[row] === 1),
  };
}

/** What is written beside a system track. */
export function labelOf(id: number, className: string): string {
  return className === 'unknown' ? `${id}` : `${id} ${className}`;
}

/** The same as a label: the selected track's is always written, then those of doubtful tracks. */
export function trackLabel(id: number, className: string, ink: string, places: Label['places'], isSelected: boolean, isDoubted: boolean): Label {
  const doubt = isDoubted ? ' ?' : '';
  return { texts: [labelOf(id, className) + doubt, `${id}${doubt}`], ink, places, rank: isSelected ? 0 : isDoubted ? 1 : 2 };
}

export function isSelected(selection: Selection | null, mark: Pick<Mark, 'kind' | 'id'>, run: number): boolean {
  if (!selection || selection.id !== mark.id) {
    return false;
  }
  const isSystem = mark.kind === 'system' || mark.kind === 'tentative';
  return isSystem ? selection.kind === 'system' && selection.run === run : selection.kind === mark.kind;
}

export function selectionOf(mark: Mark, run: number): Selection {
  const kind = mark.kind === 'tentative' ? 'system' : mark.kind;
  return { kind, run, id: mark.id };
}
