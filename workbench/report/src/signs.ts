// SPDX-License-Identifier: Apache-2.0
// The signs of objects in texts, as drawn on the canvases.
import type { Mark } from './canvas';
import { element } from './dom';

export type SignKind = Mark['kind'] | 'doubtful';

/** The confirmed tracks of the second run have a sign of their own. */
export function signClass(kind: SignKind, run: number): string {
  const isOther = run === 1 && (kind === 'system' || kind === 'doubtful');
  return `sign ${kind}${isOther ? ' other' : ''}`;
}

export function signOf(kind: SignKind, run: number): HTMLElement {
  return element('i', { class: signClass(kind, run) });
}
