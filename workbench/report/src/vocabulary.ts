// SPDX-License-Identifier: Apache-2.0
// Words and numbers that the program and the page share. PageVocabularyTest.cpp writes and checks
// this file; do not change it by hand. Where a column of the report holds a kind or a source, its
// number is a place in one of these lists.

export const sourceNames = [
  'video',
  'radar',
] as const;
export type SourceName = (typeof sourceNames)[number];

export const pairKinds = [
  'continuations',
  'candidates',
  'mergeCandidates',
] as const;
export type PairKind = (typeof pairKinds)[number];

export const eventKinds = [
  'starts',
  'confirmations',
  'prunings',
  'deletions',
] as const;
export type EventKind = (typeof eventKinds)[number];

export const pairOutcomes = [
  'fused',
  'fused, then refused',
  'assigned',
  'merged',
  'outside the gate',
  'other pairs cost less',
  'a candidate of the right class is there',
  'a report was refused in this frame',
] as const;
export type PairOutcome = (typeof pairOutcomes)[number];

export const gateVerdicts = [
  'passed',
  'too far',
  'velocity differs',
  'stands still in video',
  'class not supported',
] as const;
export type GateVerdict = (typeof gateVerdicts)[number];

export const classVerdicts = [
  'not compared',
  'match',
  'mismatch',
] as const;
export type ClassVerdict = (typeof classVerdicts)[number];
