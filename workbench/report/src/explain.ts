// SPDX-License-Identifier: Apache-2.0
// Why a track was or was not fused, in sentences.
import type { Explanation, Model } from './model';
import type { Selection } from './state';
import {
  classVerdicts, eventKinds, pairKinds, pairOutcomes, sourceNames,
  type ClassVerdict, type EventKind, type GateVerdict, type PairKind, type PairOutcome, type SourceName,
} from './vocabulary';

export type Tone = 'good' | 'bad' | 'plain';

export interface Reason {
  readonly tone: Tone;
  readonly title: string;
  readonly detail: string;
}

const outcomeTones: Readonly<Record<PairOutcome, Tone>> = {
  'fused': 'good',
  'fused, then refused': 'bad',
  'fused, then refused: too far from its partner': 'bad',
  'fused, then refused: disagrees with its partner': 'bad',
  'assigned': 'good',
  'merged': 'good',
  'outside the gate': 'plain',
  'other pairs cost less': 'plain',
  'a candidate of the right class is there': 'plain',
  'a report was refused in this frame': 'plain',
  'the report coasts': 'plain',
  'its sensor sees it beside the held track': 'plain',
  'both started at the same time': 'plain',
  'nothing is remembered of the pair': 'plain',
  'the pair disagrees': 'plain',
};

const classDetails: Readonly<Record<ClassVerdict, string>> = {
  'not compared': '',
  'match': 'same class',
  'mismatch': 'other class',
};

/** The verdict of the gate that goes without saying. */
const passed: GateVerdict = 'passed';

/** What happened to a system track. */
interface FusionEvent {
  readonly track: number;
  /** The sensor track that it is about, where it is about one. */
  readonly sensor: string;
  readonly value: number;
  readonly reason: string;
}

/** How an event is told, and whether it is about a sensor track, too. */
interface EventText {
  readonly isOfSensor: boolean;
  reasonOf(event: FusionEvent): Reason;
}

const eventTexts: Readonly<Record<EventKind, EventText>> = {
  starts: {
    isOfSensor: true,
    reasonOf: ({ track, sensor }) => ({ tone: 'good', title: `Track ${track} started`, detail: `from ${sensor}, which no track took` }),
  },
  withheldStarts: {
    isOfSensor: true,
    reasonOf: ({ sensor, value }) => ({ tone: 'plain', title: `${sensor} starts no track`, detail: `it has coasted for ${value.toFixed(2)} s` }),
  },
  confirmations: {
    isOfSensor: false,
    reasonOf: ({ value }) => ({ tone: 'good', title: 'Confirmed', detail: `probability ${value.toFixed(2)}` }),
  },
  withheldConfirmations: {
    isOfSensor: false,
    reasonOf: ({ value }) => ({ tone: 'plain', title: 'Waits for radar', detail: `standard deviation of the range ${value.toFixed(2)} m` }),
  },
  prunings: {
    isOfSensor: true,
    reasonOf: ({ track, sensor, value, reason }) => ({ tone: 'bad', title: `${sensor} left track ${track}`, detail: value > 0 ? `${reason || 'coasted'}, after ${value.toFixed(2)} s without a report` : reason || 'its report was refused' }),
  },
  deletions: {
    isOfSensor: false,
    reasonOf: ({ reason }) => ({ tone: 'bad', title: 'Ended', detail: reason }),
  },
};

/** What was decided about the selected track in one fused frame. */
export function reasonsOf(model: Model, explanation: Explanation, frame: number, selection: Selection): Reason[] {
  return [...eventReasons(model, explanation, frame, selection), ...pairReasons(model, explanation, frame, selection)];
}

/** The latest frame up to `frame` in which anything was decided about the track; -1 for none. */
export function frameWithReasons(model: Model, explanation: Explanation, frame: number, selection: Selection): number {
  for (let at = frame; at >= 0 && at > frame - 40; --at) {
    if (reasonsOf(model, explanation, at, selection).length > 0) {
      return at;
    }
  }
  return -1;
}

/** Whether a word is one of a list: a file of explanations may hold any. */
function isOneOf<Word extends string>(words: readonly Word[], word: string): word is Word {
  return (words as readonly string[]).includes(word);
}

function concerns(selection: Selection, kind: PairKind, track: number, source: SourceName, other: number): boolean {
  const isMerge = kind === 'mergeCandidates';
  if (selection.kind === 'system') {
    return track === selection.id || (isMerge && other === selection.id);
  }
  return !isMerge && source === selection.kind && other === selection.id;
}

function pairReasons(model: Model, explanation: Explanation, frame: number, selection: Selection): Reason[] {
  const { pairs } = explanation;
  const found: { reason: Reason; distance: number }[] = [];
  for (const row of pairs.rowsOf(frame)) {
    const pair = pairs.track[row];
    const key = (name: string) => pairs.key(name)[pair];
    const at = (name: string) => pairs.column(name)[row];
    const [kind, source] = [pairKinds[key('kind')], sourceNames[key('source')]];
    const [track, other] = [key('track'), key('other')];
    if (!concerns(selection, kind, track, source, other)) {
      continue;
    }
    const [distance, limit, similarity] = [at('distance'), at('limit'), at('similarity')];
    const [outcome, gate, verdict] = [model.word(at('outcome')), model.word(at('gate')), model.word(at('class'))];
    const partner = kind === 'mergeCandidates' ? `track ${other}` : `${source} ${other}`;
    const details = [
      Number.isNaN(distance) ? 'distance undefined' : `distance ${distance.toFixed(2)} of ${limit.toFixed(2)}`,
      gate === passed || gate === 'unknown' ? '' : gate,
      Number.isNaN(similarity) ? '' : `velocity similarity ${similarity.toFixed(2)}`,
      isOneOf(classVerdicts, verdict) ? classDetails[verdict] : '',
    ];
    found.push({
      distance: Number.isNaN(distance) ? Infinity : distance,
      reason: {
        tone: isOneOf(pairOutcomes, outcome) ? outcomeTones[outcome] : 'plain',
        title: `${selection.kind === 'system' ? partner : `track ${track}`}: ${outcome}`,
        detail: details.filter((text) => text !== '').join(', '),
      },
    });
  }
  return found.sort((a, b) => a.distance - b.distance).map(({ reason }) => reason);
}

function eventReasons(model: Model, explanation: Explanation, frame: number, selection: Selection): Reason[] {
  const { events } = explanation;
  const reasons: Reason[] = [];
  for (const row of events.rowsOf(frame)) {
    const event = events.track[row];
    const key = (name: string) => events.key(name)[event];
    const at = (name: string) => events.column(name)[row];
    const [source, track, other] = [sourceNames[key('source')], key('track'), key('other')];
    const text = eventTexts[eventKinds[key('kind')]];
    const isMine =
      selection.kind === 'system' ? track === selection.id : text.isOfSensor && source === selection.kind && other === selection.id;
    if (isMine) {
      reasons.push(text.reasonOf({ track, sensor: `${source} ${other}`, value: at('value'), reason: model.word(at('reason')) }));
    }
  }
  return reasons;
}
