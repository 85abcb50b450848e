// SPDX-License-Identifier: Apache-2.0
// From the program's decisions to the explanation of a run.
import type { ExplanationData } from '../data';
import { eventKinds, pairKinds, sourceNames, type EventKind } from '../vocabulary';
import type { DecisionData, FrameData } from './protocol';
import { tableOf, type Row, type Words } from './rows';

type Event = NonNullable<DecisionData[EventKind]>[number];

const number = (value: number | null | undefined): number => value ?? NaN;

const pairColumns = ['distance', 'limit', 'similarity', 'similarityLimit', 'gate', 'class', 'outcome'];

function pairsOf(decision: DecisionData, words: Words): Row[] {
  return pairKinds.flatMap((kind, at) => (decision[kind] ?? []).map((pair): Row => ({
    key: [at, pair.track, pair.sensor ? sourceNames.indexOf(pair.sensor) : 0, pair.id ?? pair.other ?? 0],
    values: [
      number(pair.distance), number(pair.limit), number(pair.velocitySimilarity), number(pair.similarityLimit),
      words.numberOf(pair.gate), words.numberOf(pair.class), words.numberOf(pair.outcome),
    ],
  })));
}

/** The number that tells more about an event. */
const valueOf: Readonly<Record<EventKind, (event: Event) => number>> = {
  starts: () => NaN,
  withheldStarts: (event) => number(event.coasting),
  confirmations: (event) => number(event.probability),
  withheldConfirmations: (event) => number(event.rangeStd),
  prunings: (event) => number(event.coasting),
  deletions: () => NaN,
};

function eventsOf(decision: DecisionData, words: Words): Row[] {
  return eventKinds.flatMap((kind, at) => (decision[kind] ?? []).map((event): Row => ({
    key: [at, event.track ?? 0, event.sensor ? sourceNames.indexOf(event.sensor) : 0, event.id ?? 0],
    values: [valueOf[kind](event), words.numberOf(event.reason)],
  })));
}

/**
 * The decisions, with an empty one for each frame that is shown without any: explanations are looked
 * up by the time and the source of a frame.
 *
 * @param start time 0 of the run, s
 */
export function explanationOf(decisions: readonly DecisionData[], frames: readonly FrameData[], start: number, words: Words): ExplanationData {
  const keyOf = ({ time, source }: { time: number; source: string }) => `${source}${time}`;
  const decided = new Set(decisions.map(keyOf));
  const all: DecisionData[] = [...decisions, ...frames.filter((frame) => !decided.has(keyOf(frame))).map(({ time, source }) => ({ time, source }))];
  all.sort((a, b) => a.time - b.time);
  return {
    time: Float64Array.from(all, ({ time }) => time - start),
    source: Float64Array.from(all, ({ source }) => sourceNames.indexOf(source)),
    pairs: tableOf(['kind', 'track', 'source', 'other'], pairColumns, all.map((one) => pairsOf(one, words))),
    events: tableOf(['kind', 'track', 'source', 'other'], ['value', 'reason'], all.map((one) => eventsOf(one, words))),
  };
}
