// SPDX-License-Identifier: Apache-2.0
// Why a track was or was not fused, in sentences.
import { sourceNames, type Explanation, type Model } from './model';
import type { Selection } from './state';

export type Tone = 'good' | 'bad' | 'plain';

export interface Reason {
  readonly tone: Tone;
  readonly title: string;
  readonly detail: string;
}

const enum PairKind {
  Continuation,
  Candidate,
  Merge,
}
const enum EventKind {
  Start,
  Confirmation,
  Pruning,
  Deletion,
}

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

function concerns(selection: Selection, kind: number, track: number, source: number, other: number): boolean {
  if (selection.kind === 'system') {
    return track === selection.id || (kind === PairKind.Merge && other === selection.id);
  }
  return kind !== PairKind.Merge && sourceNames[source] === selection.kind && other === selection.id;
}

function pairReasons(model: Model, explanation: Explanation, frame: number, selection: Selection): Reason[] {
  const { pairs } = explanation;
  const key = (name: string) => pairs.key(name);
  const column = (name: string) => pairs.column(name);
  const found: { reason: Reason; distance: number }[] = [];
  for (const row of pairs.rowsOf(frame)) {
    const pair = pairs.track[row];
    const [kind, track, source, other] = [key('kind')[pair], key('track')[pair], key('source')[pair], key('other')[pair]];
    if (!concerns(selection, kind, track, source, other)) {
      continue;
    }
    const [distance, limit] = [column('distance')[row], column('limit')[row]];
    const outcome = model.word(column('outcome')[row]);
    const gate = model.word(column('gate')[row]);
    const verdict = model.word(column('class')[row]);
    const partner = kind === PairKind.Merge ? `track ${other}` : `${sourceNames[source]} ${other}`;
    const similarity = column('similarity')[row];
    const details = [
      Number.isNaN(distance) ? 'distance undefined' : `distance ${distance.toFixed(2)} of ${limit.toFixed(2)}`,
      gate === 'passed' || gate === 'unknown' ? '' : gate,
      Number.isNaN(similarity) ? '' : `velocity similarity ${similarity.toFixed(2)}`,
      verdict === 'match' ? 'same class' : verdict === 'mismatch' ? 'other class' : '',
    ];
    found.push({
      distance: Number.isNaN(distance) ? Infinity : distance,
      reason: {
        tone: toneOf(outcome),
        title: `${selection.kind === 'system' ? partner : `track ${track}`}: ${outcome}`,
        detail: details.filter((text) => text !== '').join(', '),
      },
    });
  }
  return found.sort((a, b) => a.distance - b.distance).map(({ reason }) => reason);
}

function toneOf(outcome: string): Tone {
  if (outcome === 'fused' || outcome === 'assigned' || outcome === 'merged') {
    return 'good';
  }
  return outcome === 'fused, then refused' ? 'bad' : 'plain';
}

function eventReasons(model: Model, explanation: Explanation, frame: number, selection: Selection): Reason[] {
  const { events } = explanation;
  const reasons: Reason[] = [];
  for (const row of events.rowsOf(frame)) {
    const event = events.track[row];
    const [kind, track] = [events.key('kind')[event], events.key('track')[event]];
    const [source, other] = [events.key('source')[event], events.key('other')[event]];
    const isOfSensor = kind === EventKind.Start || kind === EventKind.Pruning;
    const isMine =
      selection.kind === 'system' ? track === selection.id : isOfSensor && sourceNames[source] === selection.kind && other === selection.id;
    if (!isMine) {
      continue;
    }
    const value = events.column('value')[row];
    const sensor = `${sourceNames[source]} ${other}`;
    switch (kind) {
      case EventKind.Start:
        reasons.push({ tone: 'good', title: `Track ${track} started`, detail: `from ${sensor}, which no track took` });
        break;
      case EventKind.Confirmation:
        reasons.push({ tone: 'good', title: 'Confirmed', detail: `probability ${value.toFixed(2)}` });
        break;
      case EventKind.Pruning:
        reasons.push({ tone: 'bad', title: `${sensor} left track ${track}`, detail: value > 0 ? `after ${value.toFixed(2)} s without a report` : 'its report was refused' });
        break;
      default:
        reasons.push({ tone: 'bad', title: 'Ended', detail: model.word(events.column('reason')[row]) });
    }
  }
  return reasons;
}
