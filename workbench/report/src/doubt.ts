// SPDX-License-Identifier: Apache-2.0
// Confirmed tracks that are doubtful: they would not be confirmed now.
import type { Run } from './model';

/** Where a configuration states no limit. */
const usualLimit = 0.5;

/** The lowest probability that confirms a track, that of an object which radar and video see. */
export function doubtLimit(configuration: unknown): number {
  const module = (configuration as { veskarModule?: { systemTrackConfirmationLimitLower?: unknown } } | null)?.veskarModule;
  const limit = module?.systemTrackConfirmationLimitLower;
  return typeof limit === 'number' ? limit : usualLimit;
}

/** Whether a row of a run's tracks is a confirmed track whose probability has fallen below that limit. */
export function isDoubtful(run: Run, row: number): boolean {
  return run.tracks.column('confirmed')[row] === 1 && run.tracks.column('probability')[row] < doubtLimit(run.configuration);
}
