// SPDX-License-Identifier: Apache-2.0
import { describe, expect, it } from 'vitest';
import { Clock, speeds, timeText } from '../src/clock';

const clockAt = (time: number) => {
  const clock = new Clock(10, Float64Array.of(0, 1, 2.5, 10));
  clock.seek(time);
  return clock;
};

describe('the clock', () => {
  it('stays within the recording', () => {
    expect(clockAt(-3).time).toBe(0);
    expect(clockAt(11).time).toBe(10);
    expect(clockAt(NaN).time).toBe(0);
  });

  it.each([[0, 1, 1], [0.5, 1, 1], [0.5, -1, 0], [1, -1, 0], [1, 1, 2.5], [2, -1, 1], [10, 1, 10], [10, -1, 2.5], [0, -1, 0], [0, 2, 2.5]])(
    'steps from %d by %d to %d', (from, by, to) => {
      const clock = clockAt(from);
      clock.step(by);
      expect(clock.time).toBe(to);
    });

  it('stops playing when it is stepped', () => {
    const clock = clockAt(1);
    clock.toggle();
    clock.step(1);
    expect(clock.playing).toBe(false);
  });

  it('advances with wall time and speed, and stops at the end', () => {
    const clock = clockAt(1);
    clock.advance(1);
    expect(clock.time).toBe(1);
    clock.toggle();
    clock.changeSpeed(1);
    clock.advance(1.5);
    expect(clock.time).toBe(4);
    clock.advance(60);
    expect([clock.time, clock.playing]).toEqual([10, false]);
    clock.toggle();
    expect([clock.time, clock.playing]).toEqual([0, true]);
  });

  it('limits the speed at both ends', () => {
    const clock = clockAt(0);
    clock.changeSpeed(99);
    expect(clock.speed).toBe(speeds[speeds.length - 1]);
    clock.changeSpeed(-99);
    expect(clock.speed).toBe(speeds[0]);
  });
});

describe('the text of a time', () => {
  it.each([[0, '0:00.00'], [62.349, '1:02.35'], [59.999, '1:00.00'], [3600, '60:00.00'], [-1.5, '-0:01.50'], [-0.001, '0:00.00']])(
    '%d is %s', (seconds, text) => expect(timeText(seconds)).toBe(text));
});
