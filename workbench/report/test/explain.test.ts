// SPDX-License-Identifier: Apache-2.0
import { describe, expect, it } from 'vitest';
import { frameWithReasons, reasonsOf } from '../src/explain';
import { Model } from '../src/model';
import { type EventKind, eventKinds } from '../src/vocabulary';
import { pack, packTable, smallReport, smallRun } from './pack';

const told = ['human', 'car', 'passed', 'too far', 'match', 'fused', 'outside the gate', 'assigned', 'no sensor tracks left', 'merged', 'fused, then refused', 'mismatch', 'another track of its sensor took its place', ''];
const word = (text: string) => told.indexOf(text);
const event = (kind: EventKind) => eventKinds.indexOf(kind);

const explanation = {
  time: pack([0, 1, 2, 3], 0.001),
  source: pack([0, 1, 0, 1]),
  pairs: packTable(4, [
    { key: { kind: 0, track: 1, source: 0, other: 7 }, rows: [{ frame: 0, distance: 0.5, limit: 3, gate: word('passed'), class: word('match'), outcome: word('fused') }, { frame: 2, distance: 4, limit: 3, gate: word('too far'), class: word('mismatch'), outcome: word('fused, then refused') }] },
    { key: { kind: 1, track: 1, source: 1, other: 9 }, rows: [{ frame: 1, distance: 1, limit: 3, gate: word('passed'), class: word('match'), outcome: word('assigned') }] },
    { key: { kind: 1, track: 1, source: 1, other: 5 }, rows: [{ frame: 1, distance: 12, limit: 3, gate: word('too far'), outcome: word('outside the gate') }] },
    { key: { kind: 2, track: 1, source: 0, other: 2 }, rows: [{ frame: 3, distance: 0.2, limit: 3, gate: word('passed'), outcome: word('merged') }] },
  ], ['distance', 'limit', 'similarity', 'similarityLimit', 'gate', 'class', 'outcome']),
  events: packTable(4, [
    { key: { kind: event('starts'), track: 2, source: 1, other: 5 }, rows: [{ frame: 1 }] },
    { key: { kind: event('withheldStarts'), track: 0, source: 1, other: 6 }, rows: [{ frame: 3, value: 0.2 }] },
    { key: { kind: event('confirmations'), track: 1, source: 0, other: 0 }, rows: [{ frame: 1, value: 0.51 }] },
    { key: { kind: event('withheldConfirmations'), track: 4, source: 0, other: 0 }, rows: [{ frame: 3, value: 4.5 }] },
    { key: { kind: event('prunings'), track: 1, source: 0, other: 7 }, rows: [{ frame: 2, value: 0, reason: word('') }] },
    { key: { kind: event('prunings'), track: 5, source: 0, other: 8 }, rows: [{ frame: 3, value: 0.25, reason: word('another track of its sensor took its place') }] },
    { key: { kind: event('deletions'), track: 2, source: 0, other: 0 }, rows: [{ frame: 3, reason: word('merged') }] },
  ], ['value', 'reason']),
};
const model = new Model(smallReport({ words: told, runs: [smallRun('a', { explanation })] }));
const reasons = model.runs[0].explanation!;
const system = (id: number) => ({ kind: 'system', run: 0, id }) as const;
const titles = (frame: number, selection: Parameters<typeof reasonsOf>[3]) => reasonsOf(model, reasons, frame, selection).map((reason) => reason.title);

describe('the reasons', () => {
  it('tell of a system track what was compared with it, nearest first, after what happened', () => {
    expect(titles(1, system(1))).toEqual(['Confirmed', 'radar 9: assigned', 'radar 5: outside the gate']);
    expect(reasonsOf(model, reasons, 1, system(1))[2].detail).toBe('distance 12.00 of 3.00, too far');
  });

  it('tell of a sensor track who took it or not', () => {
    expect(titles(1, { kind: 'radar', run: 0, id: 5 })).toEqual(['Track 2 started', 'track 1: outside the gate']);
    expect(titles(1, { kind: 'video', run: 0, id: 5 })).toEqual([]);
    expect(titles(2, { kind: 'video', run: 0, id: 7 })).toEqual(['video 7 left track 1', 'track 1: fused, then refused']);
  });

  it('tell both sides of a merger', () => {
    expect(titles(3, system(1))).toEqual(['track 2: merged']);
    expect(titles(3, system(2))).toEqual(['Ended', 'track 2: merged']);
  });

  it('say why something did not happen, or did', () => {
    const reasonOf = (selection: Parameters<typeof reasonsOf>[3]) => reasonsOf(model, reasons, 3, selection)[0];
    expect(reasonOf({ kind: 'radar', run: 0, id: 6 })).toMatchObject({ title: 'radar 6 starts no track', detail: 'it has coasted for 0.20 s' });
    expect(reasonOf(system(4))).toMatchObject({ title: 'Waits for radar', detail: 'standard deviation of the range 4.50 m' });
    expect(reasonOf(system(5)).detail).toBe('another track of its sensor took its place, after 0.25 s without a report');
    expect(reasonsOf(model, reasons, 2, system(1))[0].detail).toBe('its report was refused');
  });

  it('have a tone', () => {
    expect(reasonsOf(model, reasons, 2, system(1)).map((reason) => reason.tone)).toEqual(['bad', 'bad']);
    expect(reasonsOf(model, reasons, 0, system(1)).map((reason) => reason.tone)).toEqual(['good']);
  });

  it('are those of the last frame that has any', () => {
    expect(frameWithReasons(model, reasons, 3, { kind: 'radar', run: 0, id: 9 })).toBe(1);
    expect(frameWithReasons(model, reasons, 3, system(44))).toBe(-1);
  });

  it('belong to a frame by time and source', () => {
    expect(reasons.frameOf(1, 1)).toBe(1);
    expect(reasons.frameOf(1, 0)).toBe(-1);
    expect(reasons.frameOf(1.5, 1)).toBe(-1);
  });
});
