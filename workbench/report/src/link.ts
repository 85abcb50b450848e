// SPDX-License-Identifier: Apache-2.0
// The address of a moment: what is shown, as the fragment of the page's address.
import { letterOf } from './model';
import type { Selection } from './state';
import { tabNames, type Tab } from './tabs';
import { sourceNames } from './vocabulary';

/** What a link tells; what it lacks, or what nothing is known of, stays as it is. */
export interface Place {
  readonly time?: number;
  readonly selection?: Selection | null;
  readonly tab?: Tab;
}

const kinds: readonly Selection['kind'][] = ['system', ...sourceNames, 'truth'];

/** For example #t=15.3&select=system-4-A&tab=plots. */
export function linkOf({ time, selection, tab }: Required<Place>): string {
  const chosen = selection ? `&select=${selection.kind}-${selection.id}-${letterOf(selection.run)}` : '';
  return `#t=${Number(time.toFixed(3))}${chosen}&tab=${tab}`;
}

/** @param runs the number of runs of the report */
export function placeOf(fragment: string, runs: number): Place {
  const words = new URLSearchParams(fragment.replace(/^#/, ''));
  const time = Number.parseFloat(words.get('t') ?? '');
  const tab = tabNames.find((name) => name === words.get('tab'));
  const [, kindName, id, letter] = /^([a-z]+)-(\d+)-([AB])$/.exec(words.get('select') ?? '') ?? [];
  const kind = kinds.find((name) => name === kindName);
  const run = letter === 'B' ? 1 : 0;
  return {
    ...(Number.isFinite(time) && { time }),
    ...(kind && run < runs && { selection: { kind, run, id: Number(id) } }),
    ...(tab && { tab }),
  };
}
