// SPDX-License-Identifier: Apache-2.0
import { describe, expect, it } from 'vitest';
import { leavesOf, subjectsOf } from '../src/configuration';
import { factsOfSensor, factsOfSystem, quantity } from '../src/facts';
import { better, tableOf } from '../src/metrics';
import { Model } from '../src/model';
import { pack, packTable, smallReport, smallRun } from './pack';

const judgement = (gospa: number, mota: number | null) => ({
  cutoff: 5, moments: 1, time: pack([0], 0.001), gospa: pack([gospa], 0.01),
  matches: packTable(1, [], ['track']),
  parts: [{ part: 'all', trackers: ['fusion', 'radar 3'], figures: [
    { key: 'GOSPA', label: 'GOSPA [m]', decimals: 2, values: [gospa, 4] },
    { key: 'MOTA', label: 'MOTA', decimals: 1, values: [mota, null] },
  ] }],
});

describe('the metrics', () => {
  const one = new Model(smallReport({ runs: [smallRun('a', { judgement: judgement(1.234, 0.5) })] }));
  const two = new Model(smallReport({ runs: [smallRun('a', { judgement: judgement(1.5, 0.5) }), smallRun('b', { judgement: judgement(1, null) })] }));

  it('are listed beside those of the sensors', () => {
    expect(tableOf(one, 'all')).toEqual({
      columns: ['fusion', 'radar 3'],
      rows: [
        { label: 'GOSPA [m]', cells: ['1.23', '4.00'], better: 0 },
        { label: 'MOTA', cells: ['0.5', '–'], better: 0 },
      ],
    });
  });

  it('of two runs have their difference, and the better one is marked', () => {
    const table = tableOf(two, 'all')!;
    expect(table.columns).toEqual(['A', 'B', 'B − A', 'radar 3']);
    expect(table.rows[0]).toEqual({ label: 'GOSPA [m]', cells: ['1.50', '1.00', '-0.50 B better', '4.00'], better: 1 });
    expect(table.rows[1].cells).toEqual(['0.5', '–', '–', '–']);
  });

  it('are missing without truth', () => {
    expect(tableOf(new Model(smallReport()), 'all')).toBeNull();
    expect(tableOf(one, 'bus')).toBeNull();
  });

  it.each([['GOSPA', 2, 1, 1], ['IDSW', 1, 2, -1], ['HOTA', 0.5, 0.6, 1], ['MOTP_distance', 1, 2, -1], ['MOTP', 1, 2, 1], ['radial_bias', 1, 2, 0], ['NEES', 2, 3, 0], ['MOTA', null, 1, 0], ['MT', 3, 3, 0]] as const)(
    '%s from %s to %s is %d', (key, first, second, verdict) => expect(better(key, first, second)).toBe(verdict));
});

describe('the configuration', () => {
  it('is listed leaf by leaf', () => {
    expect([...leavesOf({ a: { b: 1, c: [true, 'x'] }, d: null })]).toEqual([['a.b', '1'], ['a.c[0]', 'true'], ['a.c[1]', '"x"'], ['d', 'null']]);
  });

  it('shows what differs first, then the rest by subject', () => {
    const used = { other: { a: 1 }, veskarRules: { r: 5 }, veskarModule: { b: 2, c: 4 } };
    const subjects = subjectsOf([used, { ...used, veskarModule: { b: 3, c: 4 } }], { ...used, veskarModule: { b: 2, c: 0, d: 7 } });
    expect(subjects.map(({ title, settings }) => [title, ...settings.map(({ path }) => path)])).toEqual([
      ['Differs between A and B', 'veskarModule.b'],
      ['Not as by default', 'veskarModule.c', 'veskarModule.d'],
      ['Rules beyond the basic fusion', 'veskarRules.r'],
      ['other', 'other.a'],
    ]);
    expect(subjects[0].settings[0]).toEqual({ path: 'veskarModule.b', values: ['2', '3'], usual: '2', differs: true, isChanged: true });
    expect(subjects[1].settings[1]).toMatchObject({ values: ['–', '–'], usual: '7' });
  });
});

describe('the facts', () => {
  const model = new Model(smallReport());
  const run = model.runs[0];
  it('of a system track', () => {
    const facts = new Map(factsOfSystem(model, run, run.rowAt(1, 3)));
    expect(facts.get('Standing')).toBe('confirmed');
    expect(facts.get('Class')).toBe('car 80 %');
    expect(facts.get('Position')).toBe('13.0 m ahead, 2.0 m right');
    expect(facts.get('95 % ellipse')).toBe('2.45 × 1.22 m');
    expect(facts.get('Speed')).toBe('–');
    expect(facts.get('Distance')).toBe('13.2 m');
    expect(facts.get('Image')).toBe('0.050, 0.000');
    expect(facts.get('Age')).toBe('3.00 s');
    expect(facts.get('Latency')).toBe('100 ms');
    expect(facts.has('Tags')).toBe(false);
  });
  it('of a sensor track', () => {
    expect(new Map(factsOfSensor(model, model.radar, 0)).get('Position')).toBe('11.0 m ahead, 2.0 m right');
    expect(new Map(factsOfSensor(model, model.radar, 0)).get('Image')).toBe('0.100, 0.000');
  });
  it('have units', () => {
    expect([quantity(1.25, 1, 'm'), quantity(NaN, 1, 'm'), quantity(undefined, 1), quantity(2, 0)]).toEqual(['1.3 m', '–', '–', '2']);
  });
});
