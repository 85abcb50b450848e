// SPDX-License-Identifier: Apache-2.0
import { describe, expect, it } from 'vitest';
import { countsOf, extend, leastSilence, Model, Seen, switchesOf, type Stretch } from '../src/model';
import { Table } from '../src/table';
import { pack, packTable, smallReport, smallRun } from './pack';

const model = new Model(smallReport());
const run = model.runs[0];

describe('the lifetime of a system track', () => {
  it('begins and ends, and is confirmed in between', () => {
    const life = run.life(1)!;
    expect([life.from, life.to, life.confirmed]).toEqual([0, 5, 1]);
    expect(life.standing).toEqual([{ from: 0, to: 1, value: false }, { from: 1, to: 5, value: true }]);
    expect(run.life(2)!.confirmed).toBeNaN();
    expect([run.life(2)!.from, run.life(2)!.to]).toEqual([2, 4]);
    expect(run.life(3)).toBeUndefined();
  });

  it('lists its sensor tracks over time, with their coasting', () => {
    const feeds = run.life(1)!.feeds.map(({ from, to, value }) => [value.source, value.id, value.coasting, from, to]);
    expect(feeds).toEqual([
      ['video', 7, false, 0, 3],
      ['video', 7, true, 3, 5],
      ['video', 7, false, 5, 5],
      ['radar', 9, false, 1, 3],
    ]);
  });

  it('lists the changes of its class', () => {
    expect(run.life(1)!.classes).toEqual([{ from: 0, to: 3, value: 'human' }, { from: 3, to: 5, value: 'car' }]);
    expect(run.life(2)!.classes[0].value).toBe('unknown');
  });

  it('is found by id and time', () => {
    expect(run.tracks.column('x')[run.rowAt(1, 2.4)]).toBe(12);
    expect(run.rowAt(2, 4.5)).toBe(-1);
    expect(run.rowAt(77, 1)).toBe(-1);
  });
});

describe('intervals', () => {
  it('continue while the value is the same without gaps', () => {
    const stretches: Stretch<string>[] = [];
    extend(stretches, 0, 1, 'a');
    extend(stretches, 1, 2, 'a');
    extend(stretches, 3, 4, 'a');
    extend(stretches, 4, 5, 'b');
    expect(stretches).toEqual([{ from: 0, to: 2, value: 'a' }, { from: 3, to: 4, value: 'a' }, { from: 4, to: 5, value: 'b' }]);
  });
});

describe('a sensor', () => {
  const seen = new Seen({ time: pack([1, 2], 0.001), table: packTable(2, [{ key: { id: 3 }, rows: [{ frame: 0 }] }], []) });
  it('shows its last frame until a timeout', () => {
    expect(seen.frameAt(0.9)).toBe(-1);
    expect(seen.frameAt(1.5)).toBe(0);
    expect(seen.frameAt(2)).toBe(1);
    expect(seen.frameAt(1.999 + seen.silence)).toBe(1);
    expect(seen.frameAt(2.001 + seen.silence)).toBe(-1);
  });
  it('times out when it misses two frames', () => {
    expect(seen.silence).toBe(2);
    const quick = new Seen({ time: pack([0, 0.1, 0.2, 0.9, 1], 0.001), table: packTable(5, [], []) });
    expect(quick.silence).toBe(leastSilence);
  });
  it('finds its tracks by id', () => {
    expect(seen.trackOf(3)).toBe(0);
    expect(seen.trackOf(4)).toBe(-1);
  });
});

describe('an id switch', () => {
  it('occurs where an object continues with another track, also after a gap', () => {
    const matches = new Table(packTable(6, [
      { key: { object: 1 }, rows: [{ frame: 0, track: 5 }, { frame: 1, track: 5 }, { frame: 4, track: 8 }, { frame: 5, track: 5 }] },
      { key: { object: 2 }, rows: [{ frame: 2, track: 6 }, { frame: 3, track: 6 }] },
    ], ['track']));
    expect(switchesOf(matches, Float64Array.of(0, 1, 2, 3, 4, 5))).toEqual([
      { time: 4, object: 1, from: 5, to: 8 },
      { time: 5, object: 1, from: 8, to: 5 },
    ]);
  });
});

describe('a report', () => {
  it('counts confirmed and tentative tracks', () => {
    expect([...countsOf(run).confirmed]).toEqual([0, 1, 1, 1, 1, 1]);
    expect([...countsOf(run).tentative]).toEqual([1, 0, 1, 1, 0, 0]);
  });

  it('has the times of both runs without repetition', () => {
    const other = smallRun('b.jsonl', { time: pack([0, 1, 2, 3, 4, 4.5], 0.001) });
    expect([...new Model(smallReport({ runs: [smallRun(), other] })).moments]).toEqual([0, 1, 2, 3, 4, 4.5, 5]);
  });
});
