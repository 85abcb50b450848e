// SPDX-License-Identifier: Apache-2.0
// The signs of objects in texts, as drawn on the canvases.
import type { Mark } from './canvas';
import { element } from './dom';

/** The confirmed tracks of the second run have a sign of their own. */
export function signOf(kind: Mark['kind'] | 'doubtful', run: number): HTMLElement {
  const isOther = run === 1 && (kind === 'system' || kind === 'doubtful');
  return element('i', { class: `sign ${kind}${isOther ? ' other' : ''}` });
}
