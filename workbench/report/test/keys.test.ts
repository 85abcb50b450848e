// SPDX-License-Identifier: Apache-2.0
import { describe, expect, it } from 'vitest';
import { Clock } from '../src/clock';
import type { Commands } from '../src/commands';
import { actionOf, shortcutsOf } from '../src/keys';
import { neighbourTab } from '../src/tabs';

/** Commands that write down how they were called. */
function recorder(): { commands: Commands; calls: string[] } {
  const calls: string[] = [];
  const commands = new Proxy({}, { get: (_, name) => (...words: unknown[]) => calls.push([name, ...words].join(' ')) }) as Commands;
  return { commands, calls };
}

describe('a key', () => {
  const { commands, calls } = recorder();
  const clock = new Clock(60, Float64Array.of(0, 60));
  clock.seek(10);
  const shortcuts = shortcutsOf(commands, clock);

  it.each([
    [' ', false, 'togglePlaying'],
    ['ArrowLeft', false, 'step -1'],
    ['ArrowRight', false, 'step 1'],
    ['ArrowLeft', true, 'seek 9'],
    ['ArrowRight', true, 'seek 11'],
    ['Home', true, 'seek 0'],
    ['End', false, 'seek 60'],
    ['+', true, 'changeSpeed 1'],
    ['=', false, 'changeSpeed 1'],
    ['-', false, 'changeSpeed -1'],
    ['[', false, 'selectNeighbour -1'],
    [']', false, 'selectNeighbour 1'],
    ['1', false, 'showTab timeline'],
    ['4', false, 'showTab configuration'],
    ['f', false, 'fitPlans'],
    ['T', true, 'nextTheme'],
    ['Escape', false, 'select '],
  ])('%j with Shift: %s calls %s', (key, shift, call) => {
    calls.length = 0;
    actionOf(shortcuts, key, shift)!();
    expect(calls).toEqual([call]);
  });

  it('that is no shortcut does nothing', () => {
    expect(actionOf(shortcuts, 'q', false)).toBeUndefined();
    expect(actionOf(shortcuts, 'Tab', true)).toBeUndefined();
  });
});

describe('a key on a focused tab', () => {
  it('leads to its neighbours, around the ends', () => {
    expect(neighbourTab('timeline', 'ArrowRight')).toBe('plots');
    expect(neighbourTab('timeline', 'ArrowLeft')).toBe('configuration');
    expect(neighbourTab('metrics', 'Home')).toBe('timeline');
    expect(neighbourTab('plots', 'End')).toBe('configuration');
    expect(neighbourTab('plots', ' ')).toBeUndefined();
  });
});
