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
  'withheldStarts',
  'confirmations',
  'withheldConfirmations',
  'prunings',
  'deletions',
] as const;
export type EventKind = (typeof eventKinds)[number];

export const pairOutcomes = [
  'fused',
  'fused, then refused',
  'fused, then refused: too far from its partner',
  'fused, then refused: disagrees with its partner',
  'assigned',
  'merged',
  'outside the gate',
  'other pairs cost less',
  'a candidate of the right class is there',
  'a report was refused in this frame',
  'the report coasts',
  'its sensor sees it beside the held track',
  'both started at the same time',
  'nothing is remembered of the pair',
  'the pair disagrees',
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
