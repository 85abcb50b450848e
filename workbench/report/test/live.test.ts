// SPDX-License-Identifier: Apache-2.0
// The live view's data: from what the program tells to what the parts of the report show.
import { describe, expect, it } from 'vitest';
import { reasonsOf } from '../src/explain';
import { factsOfSystem } from '../src/facts';
import { ellipseOf } from '../src/live/frames';
import { GrowingExtent } from '../src/live/extent';
import { lossText, rateOf } from '../src/live/health';
import { Lifetimes } from '../src/live/lifetimes';
import { CameraPicture } from '../src/live/camerapicture';
import { LiveModel } from '../src/live/livemodel';
import type { FrameData, HelloData, TrackData } from '../src/live/protocol';
import { tableOf, Words } from '../src/live/rows';
import { shownAt } from '../src/scene';
import { initialState } from '../src/state';
import { Table } from '../src/table';
import { mainClass } from '../src/timeline';

const hello: HelloData = {
  program: '1', start: 'a', sensors: [{ name: 'camera', source: 'video' }],
  scene: { aspect: 1.5, camera: { position: [0, 0], footprint: [] }, radar: { position: [0, 0], yaw: 0, fieldOfView: 90, range: 50 }, rings: [], earth: null },
};

function track(id: number, more: Partial<TrackData> = {}): TrackData {
  return {
    id, confirmed: true, probability: 0.9, image: [0, 0], range: 10, position: [10, id], positionCovariance: [4, 0, 1], class: 'human',
    box: { left: -0.1, bottom: -0.2, right: 0.1, top: 0.2 }, sensors: [{ source: 'radar', id: 3, coasting: 0 }], ...more,
  };
}
const frame = (time: number, tracks: TrackData[], source: 'video' | 'radar' = 'radar'): FrameData => ({ source, time, received: time + 0.02, tracks });
const noBox = { left: null, bottom: null, right: null, top: null };

describe('the picture of the camera', () => {
  const bitmap = () => ({ width: 1, height: 1, close: () => undefined }) as ImageBitmap;
  const settled = () => new Promise((done) => setTimeout(done));

  it('is loaded once for each that is announced, and one at a time', async () => {
    const waiting: ((image: ImageBitmap | null) => void)[] = [];
    const camera = new CameraPicture(() => undefined, () => new Promise((done) => waiting.push(done)));
    expect(camera.text(1)).toBe('');
    camera.take({ number: 1, time: 10 });
    camera.take({ number: 1, time: 10 });
    camera.take({ number: 2, time: 11 });
    camera.take({ number: 3, time: 12 });
    expect(waiting.length).toBe(1);
    waiting[0](bitmap());
    await settled();
    expect(waiting.length).toBe(2);  // the second one was left out
    expect(camera.text(12.5)).toBe('picture 2.5 s old');
    waiting[1](bitmap());
    await settled();
    expect([waiting.length, camera.text(12.5)]).toEqual([2, 'picture 0.5 s old']);
    expect(camera.text(612)).toBe('picture 10 min old');
  });

  it('gives way to what is wrong with it', async () => {
    const images = [bitmap(), null, bitmap()];
    const camera = new CameraPicture(() => undefined, () => Promise.resolve(images.shift()!));
    camera.take({ number: 1, time: 10 });
    await settled();
    expect(camera.image).not.toBeNull();
    camera.take({ number: 2, time: 11 });
    await settled();
    expect([camera.image, camera.text(12)]).toEqual([null, 'the picture cannot be read']);
    camera.take({ number: 3, time: 12 });
    camera.take({ number: 4, fault: 'the camera answers 404' });
    await settled();
    expect([camera.image, camera.text(12)]).toEqual([null, 'the camera answers 404']);
    camera.reset();
    expect(camera.text(12)).toBe('');
  });
});

describe('tables', () => {
  it('hold the rows of each frame, by track', () => {
    const table = new Table(tableOf(['id'], ['x'], [[{ key: [7], values: [1.5] }], [], [{ key: [7], values: [2] }, { key: [8], values: [NaN] }]]));
    expect([table.frames, table.tracks, table.rows]).toEqual([3, 2, 3]);
    expect([...table.key('id')]).toEqual([7, 8]);
    expect(Array.from(table.rowsOf(2), (row) => table.column('x')[row])).toEqual([2, NaN]);
    expect(table.rowAt(0, 1)).toBe(-1);
    expect(table.column('x')[table.rowAt(0, 0)]).toBe(1.5);
  });

  it('hold one row of an id that a frame repeats', () => {
    expect(new Table(tableOf(['id'], ['x'], [[{ key: [7], values: [1] }, { key: [7], values: [2] }]])).rows).toBe(1);
  });

  it('number words once', () => {
    const words = new Words();
    expect([words.numberOf('car'), words.numberOf('human'), words.numberOf('car'), words.numberOf('unknown'), words.numberOf(undefined)])
      .toEqual([0, 1, 0, NaN, NaN]);
  });
});

describe('the ellipse of a covariance', () => {
  it('has the deviations along its axes', () => {
    expect(ellipseOf([4, 0, 1])).toEqual([2, 1, 0]);
    expect(ellipseOf([1, 0, 4])).toEqual([2, 1, 90]);
    const [major, minor, angle] = ellipseOf([2.5, 1.5, 2.5]);
    expect([major, minor, angle].map((value) => Math.round(value * 1e6) / 1e6)).toEqual([2, 1, 45]);
    expect(ellipseOf(undefined)).toEqual([NaN, NaN, NaN]);
    expect(ellipseOf([null, 0, 1])).toEqual([NaN, NaN, NaN]);
  });
});

describe('the live model', () => {
  it('shows the newest state, and keeps its identity', () => {
    const model = new LiveModel(hello);
    const run = model.runs[0];
    expect(model.now).toBe(0);
    model.show({ fused: frame(100, [track(1)]), video: null, radar: null });
    model.show({
      fused: frame(100.1, [track(1), track(2, { confirmed: false })]),
      video: frame(100.05, [track(9, { box: noBox, image: [0.5, 0.25] })], 'video'), radar: frame(100.1, [track(4, { box: noBox })]),
    });
    expect(model.runs[0]).toBe(run);
    expect(model.now).toBeCloseTo(0.1);
    const shown = shownAt(model, run, initialState(), model.now);
    expect([shown.system.length, shown.video.length, shown.radar.length, shown.truth.length]).toEqual([2, 1, 1, 0]);
    const row = shown.system[0];
    expect(run.tracks.column('y')[row]).toBe(1);
    expect(model.word(run.tracks.column('class')[row])).toBe('human');
    expect(factsOfSystem(model, run, row)).toContainEqual(['Age', '0.10 s']);
    expect(model.video.table.column('u')[shown.video[0]]).toBe(0.5);
    expect(model.video.table.column('left')[shown.video[0]]).toBeNaN();
  });

  it('forgets what is older than it shows', () => {
    const model = new LiveModel(hello);
    for (let i = 0; i <= 600; ++i) {
      model.show({ fused: frame(i / 10, [track(1)]), video: null, radar: null });
    }
    expect(model.runs[0].times.length).toBeLessThan(60);
    expect(model.now).toBeCloseTo(60);
  });

  it('explains the selected track', () => {
    const model = new LiveModel(hello);
    model.decide({
      source: 'radar', time: 99.95, prunings: [{ track: 1, sensor: 'video', id: 5, coasting: 1, reason: 'coasted' }],
      continuations: [{ track: 1, sensor: 'radar', id: 3, distance: 0.5, limit: 3, gate: 'passed', class: 'match', outcome: 'fused' }],
    });
    model.show({ fused: frame(100, [track(1)]), video: null, radar: null });
    const { explanation, times, sources } = model.runs[0];
    if (!explanation) {
      throw new Error('no explanation');
    }
    expect(explanation.frameOf(times[0], sources[0])).toBe(1);
    expect(reasonsOf(model, explanation, 0, { kind: 'system', run: 0, id: 1 })).toEqual([
      { tone: 'bad', title: 'video 5 left track 1', detail: 'coasted, after 1.00 s without a report' },
      { tone: 'good', title: 'radar 3: fused', detail: 'distance 0.50 of 3.00, same class' },
    ]);
    model.forgetDecisions();
    model.show({ fused: frame(100.1, [track(1)]), video: null, radar: null });
    expect(model.runs[0].explanation?.pairs.rows).toBe(0);
  });
});

describe('lifetimes', () => {
  it('end now, and begin with what is remembered', () => {
    const lifetimes = new Lifetimes(10);
    for (let time = 100; time <= 115; ++time) {
      lifetimes.add(frame(time, time < 103 ? [track(1), track(2)] : [track(1, { confirmed: time > 112 })]));
    }
    const [life, ...others] = lifetimes.lives();
    expect(others).toEqual([]);
    expect([life.id, life.from, life.to]).toEqual([1, 0, 10]);
    expect(life.standing.map(({ from, to, value }) => [from, to, value])).toEqual([[0, 7, false], [7, 10, true]]);
    expect(life.confirmed).toBe(-Infinity);
    expect(mainClass(life.classes)).toBe('human');
    expect(life.feeds.map(({ from, to, value }) => [from, to, value.source])).toEqual([[0, 10, 'radar']]);
  });

  it('have a gap where the program was away', () => {
    const lifetimes = new Lifetimes(100);
    [0, 1, 50, 51].forEach((time) => lifetimes.add(frame(time, [track(1)])));
    expect(lifetimes.lives()[0].standing.map(({ from, to }) => to - from)).toEqual([1, 1]);
  });
});

describe('health', () => {
  const status = (uptime: number, framesTaken: number) => ({ uptime, latencyMedian: 0, latencyP99: 0, sensor: { camera: { framesTaken } } });
  it('tells the rate between two documents', () => {
    expect(rateOf(status(10, 100), status(12, 125), 'camera')).toBe(12.5);
    expect(rateOf(null, status(12, 125), 'camera')).toBeNaN();
    expect(rateOf(status(10, 100), status(12, 125), 'radar')).toBeNaN();
  });
  it('tells what was lost', () => {
    expect(lossText({ dropped: 0, framesLate: 3, refused: 1 })).toBe('1 unreadable, 3 late');
    expect(lossText({})).toBe('none');
  });
});

describe('the shown ground', () => {
  it('grows with confirmed objects within range', () => {
    const extent = new GrowingExtent(hello.scene);
    extent.include(frame(0, [track(1, { position: [30, 0] }), track(2, { position: [0, 40], confirmed: false }), track(3, { position: [60, 0] })]));
    expect([extent.front, extent.left]).toEqual([35, 10]);
    extent.include(frame(1, [track(1, { position: [33, -12] })]));
    expect([extent.front, extent.right]).toEqual([35, -17]);
  });
});
