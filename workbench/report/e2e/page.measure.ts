// SPDX-License-Identifier: Apache-2.0
// How quickly the pages load and draw; prints figures, judges nothing.
import { afterAll, beforeAll, describe, it } from 'vitest';
import { statSync } from 'node:fs';
import { join } from 'node:path';
import type { Page } from 'playwright-core';
import { open } from './browser.mjs';
import { LiveSite } from './livesite';
import { at, config, veskar } from './reports';

const seconds = 20;

async function until(page: Page, condition: string): Promise<void> {
  while (!(await page.evaluate(condition))) {
    await page.waitForTimeout(20);
  }
}

/** Draws of the screen in some seconds, and how long the page's own part of them took, ms. */
async function drawsOf(page: Page, probe: string): Promise<string> {
  const intervals = await page.evaluate(`new Promise((done) => {
    const times = [];
    const tick = (now) => (times.push(now), now - times[0] < ${1000 * seconds} ? requestAnimationFrame(tick) : done(times.slice(1).map((time, i) => time - times[i])));
    requestAnimationFrame(tick);
  })`) as number[];
  const durations = await page.evaluate(`[...${probe}.drawMilliseconds]`) as number[];
  const at = (values: readonly number[], part: number) => [...values].sort((a, b) => a - b)[Math.floor(part * (values.length - 1))].toFixed(1);
  return `${(intervals.length / seconds).toFixed(1)} frames/s; interval median ${at(intervals, 0.5)} ms, 99 % within ${at(intervals, 0.99)} ms; `
    + `draw median ${at(durations, 0.5)} ms, 99 % within ${at(durations, 0.99)} ms (${durations.length} draws)`;
}

it('a report of thirty minutes', async () => {
  const names = { recording: at('long.jsonl'), fused: at('long.fused.jsonl'), report: at('long.html') };
  veskar('simulate', join(config, 'scenarios', 'perimeter.json'), '--duration', '1800', '-o', names.recording);
  veskar('replay', names.recording, '-o', names.fused);
  veskar('report', names.recording, names.fused, '-o', names.report);
  const loads: number[] = [];
  for (let i = 0; i < 5; ++i) {
    const begin = performance.now();
    const { page, close } = await open(names.report);
    await until(page, 'window.veskarReport && veskarReport.drawMilliseconds.length > 0');
    loads.push(await page.evaluate('performance.now()'));
    if (i === 4) {
      console.log(`report: opened with the browser in ${((performance.now() - begin) / 1000).toFixed(2)} s`);
      await page.keyboard.press('Space');
      console.log(`report, playing: ${await drawsOf(page, 'veskarReport')}`);
    }
    await close();
  }
  console.log(`report: ${(statSync(names.report).size / 1e6).toFixed(2)} MB, first drawn within ${loads.map((load) => `${(load / 1000).toFixed(2)} s`).join(', ')}`);
});

describe('the live view of a crowd', () => {
  let site: LiveSite;
  beforeAll(async () => {
    site = await LiveSite.start('crowd');
  });
  afterAll(() => site.stop());

  it('is drawn', async () => {
    const { page, close } = await open(site.address, { width: 1400, height: 900 });
    await until(page, 'window.veskarLive && veskarLive.plan.filter((mark) => mark.kind === "system").length > 40');
    const objects = await page.evaluate('veskarLive.plan.filter((mark) => mark.kind === "system" || mark.kind === "tentative").length') as number;
    console.log(`live view, ${objects} system tracks: ${await drawsOf(page, 'veskarLive')}`);
    await close();
  });
});
