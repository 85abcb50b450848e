// SPDX-License-Identifier: Apache-2.0
import { describe, expect, it } from 'vitest';
import { frameIn, toPixel } from '../src/imageview';
import { Model } from '../src/model';
import { extentOf, toScreen } from '../src/plan';
import { probabilityOf, thin } from '../src/plots';
import { isSelected, shownAt } from '../src/scene';
import { initialState, isSame } from '../src/state';
import { lanesOf, mainClass, tickSpacing, within, zoomed } from '../src/timeline';
import { smallReport, smallRun } from './pack';

const model = new Model(smallReport());

describe('the plan', () => {
  it('draws forward upward and left on the left', () => {
    const transform = { scale: 2, left: 100, top: 50 };
    expect(toScreen(transform, 0, 0)).toEqual([100, 50]);
    expect(toScreen(transform, 10, 0)).toEqual([100, 30]);
    expect(toScreen(transform, 0, 5)).toEqual([90, 50]);
  });

  it('includes the origin and the positions of confirmed tracks', () => {
    expect(extentOf(model)).toEqual({ back: 0, front: 15, right: -5, left: 5 });
  });
});

describe('the image', () => {
  it('keeps the aspect ratio of the camera at any size', () => {
    expect(frameIn(320, 400, 16 / 9)).toEqual({ left: 0, top: 110, width: 320, height: 180 });
    expect(frameIn(500, 90, 16 / 9)).toEqual({ left: 170, top: 0, width: 160, height: 90 });
  });

  it('draws right on the right and up at the top', () => {
    const frame = { left: 10, top: 20, width: 100, height: 50 };
    expect(toPixel(frame, -1, 1)).toEqual([10, 20]);
    expect(toPixel(frame, 1, -1)).toEqual([110, 70]);
    expect(toPixel(frame, 0, 0)).toEqual([60, 45]);
  });
});

describe('the shown tracks', () => {
  const state = initialState();
  it('are those of the newest frames', () => {
    const shown = shownAt(model, model.runs[0], state, 2);
    expect([shown.system.length, shown.video.length, shown.radar.length, shown.truth.length]).toEqual([2, 1, 0, 0]);
  });

  it('follow the enabled layers', () => {
    const layers = { ...state.layers, tentative: false, video: false };
    const shown = shownAt(model, model.runs[0], { ...state, layers }, 2);
    expect([shown.system.length, shown.video.length]).toEqual([1, 0]);
  });

  it('are selected by kind and id, system tracks also by run', () => {
    const selection = { kind: 'system', run: 1, id: 4 } as const;
    expect(isSelected(selection, { kind: 'tentative', id: 4 }, 1)).toBe(true);
    expect(isSelected(selection, { kind: 'system', id: 4 }, 0)).toBe(false);
    expect(isSelected(selection, { kind: 'radar', id: 4 }, 1)).toBe(false);
    expect(isSame({ kind: 'radar', run: 0, id: 4 }, { kind: 'radar', run: 1, id: 4 })).toBe(true);
    expect(isSame(selection, { ...selection, run: 0 })).toBe(false);
    expect(isSame(null, selection)).toBe(false);
  });
});

describe('the timeline', () => {
  it('has a lane per system track, tentative ones on request', () => {
    expect(lanesOf(model, true).map((lane) => lane.label)).toEqual(['1 human', '2 unknown']);
    expect(lanesOf(model, false).map((lane) => lane.life.id)).toEqual([1]);
  });

  it('names the runs when there are two', () => {
    const pair = new Model(smallReport({ runs: [smallRun('a'), smallRun('b')] }));
    expect(lanesOf(pair, false).map((lane) => lane.label)).toEqual(['A 1 human', 'B 1 human']);
  });

  it('labels a track with the class that it had for the longest time', () => {
    expect(mainClass([{ from: 0, to: 1, value: 'car' }, { from: 1, to: 3, value: 'human' }, { from: 3, to: 4.5, value: 'car' }])).toBe('car');
    expect(mainClass([])).toBe('unknown');
  });

  it('zooms around a time and stays within the report', () => {
    expect(zoomed({ from: 0, to: 60 }, 20, 2, 60)).toEqual({ from: 10, to: 40 });
    expect(zoomed({ from: 10, to: 40 }, 20, 0.1, 60)).toEqual({ from: 0, to: 60 });
    expect(zoomed({ from: 0, to: 60 }, 60, 1000, 60)).toEqual({ from: 59, to: 60 });
    expect(within({ from: 50, to: 70 }, 60)).toEqual({ from: 40, to: 60 });
    expect(within({ from: -5, to: 15 }, 60)).toEqual({ from: 0, to: 20 });
  });

  it('keeps a distance between its ticks', () => {
    expect(tickSpacing(60, 800)).toBe(10);
    expect(tickSpacing(600, 800)).toBe(60);
    expect(tickSpacing(1e6, 800)).toBe(7200);
  });
});

describe('a plot', () => {
  it('keeps short series as they are', () => {
    const times = Float64Array.of(0, 1);
    expect(thin(times, Float64Array.of(3, 4), 4)).toEqual([times, Float64Array.of(3, 4)]);
  });

  it('keeps the extremes of long ones, in their order', () => {
    const times = Float64Array.from({ length: 1000 }, (_, i) => i);
    const values = Float64Array.from(times, (i) => (i === 501 ? 9 : i === 502 ? -9 : 0));
    const [kept, ys] = thin(times, values, 100);
    expect(kept.length).toBeLessThanOrEqual(100);
    expect([...kept].every((time, i) => i === 0 || time > kept[i - 1])).toBe(true);
    expect(ys[kept.indexOf(501)]).toBe(9);
    expect(ys[kept.indexOf(502)]).toBe(-9);
  });

  it('shows the probability over the lifetime of a track', () => {
    const { times, values } = probabilityOf(model.runs[0], 2);
    expect([...times]).toEqual([2, 3]);
    expect(values[1]).toBeCloseTo(0.2);
    expect(probabilityOf(model.runs[0], 99).times.length).toBe(0);
  });
});
