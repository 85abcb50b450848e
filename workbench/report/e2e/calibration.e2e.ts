// SPDX-License-Identifier: Apache-2.0
// The page of a calibration in a browser.
import { readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { afterEach, beforeAll, expect, it } from 'vitest';
import type { Page } from 'playwright-core';
import { violationsOf } from './accessibility';
import { open as openBrowser, type Opened, type Wishes } from './browser.mjs';
import { at, config, markup, veskar } from './reports';

let current: Opened | null = null;

async function open(path: string, wishes: Wishes = {}): Promise<Page> {
  current = await openBrowser(path, wishes);
  return current.page;
}

beforeAll(() => {
  const scenario = JSON.parse(readFileSync(join(config, 'scenarios', 'perimeter.json'), 'utf8'));
  scenario.name = markup;
  scenario.videoSensor.mountingError = { yaw: 3 };
  writeFileSync(at('turned.json'), JSON.stringify(scenario));
  veskar('simulate', at('turned.json'), '--duration', '150', '-o', at('turned.jsonl'));
  veskar('calibrate', at('turned.jsonl'), '--page', at('calibration.html'));
});

afterEach(async () => {
  const { complaints, requests, close } = current ?? { complaints: [], requests: [], close: async () => {} };
  current = null;
  await close();
  expect(complaints).toEqual([]);
  expect(requests).toEqual([]);
});

it('says what is wrong, by how much, and how well that is known', async () => {
  const page = await open(at('calibration.html'));
  expect(await page.locator('.verdict').textContent()).toMatch(/^The installation is corrected: camera\.yaw by \+[23]\.\d+\u00b0\.$/);
  const cells = await page.locator('section[aria-label="Values"] tbody tr').first().locator('th, td').allTextContents();
  expect(cells.slice(0, 3)).toEqual(['camera.yaw', 'deg', '0']);
  expect(Number(cells[3])).toBeCloseTo(3, 0);
  expect(cells[4]).toMatch(/^\u00b10\.\d+$/);
  expect(cells[6]).toBe('corrected');
  expect(await page.locator('h1').textContent()).toBe(`Calibration of ${markup}`);
});

it('draws the errors of all pairs before and after', async () => {
  const page = await open(at('calibration.html'));
  expect(await page.locator('figure').count()).toBe(5);
  const first = page.locator('svg.scatter').first();
  const heights = (series: string) => first.locator(`g.${series} circle`).evaluateAll((circles) => circles.map((circle) => Number(circle.getAttribute('cy'))));
  const [before, after] = [await heights('before'), await heights('after')];
  expect(before.length).toBeGreaterThan(100);
  expect(after.length).toBe(before.length);
  const zero = Number(await first.locator('line.zero').getAttribute('y1'));
  const mean = (values: number[]) => values.reduce((a, b) => a + b, 0) / values.length;
  // What is seen too far to the right has a negative error; it is drawn below the zero line.
  expect(mean(before)).toBeGreaterThan(zero + 40);
  expect(Math.abs(mean(after) - zero)).toBeLessThan(8);
});

it('saves its tables and the errors', async () => {
  const page = await open(at('calibration.html'));
  const saved = async (button: string) => {
    const download = page.waitForEvent('download');
    await page.getByRole('button', { name: button }).click();
    return readFileSync(await (await download).path(), 'utf8');
  };
  expect(await saved('Save the values as CSV')).toMatch(/^\ufeffValue,Unit,Stated,/);
  const lines = (await saved('Save the errors of the pairs as CSV')).trimEnd().split('\r\n');
  expect(lines[0]).toBe('\ufefftime,range,u,v,bearingBefore,bearingAfter,depressionBefore,depressionAfter');
  expect(lines.length).toBeGreaterThan(100);
});

it.each([false, true])('can be read by everybody (dark: %s)', async (dark) => {
  const page = await open(at('calibration.html'), { dark });
  expect(await violationsOf(page)).toEqual([]);
});

it('fits a phone', async () => {
  const page = await open(at('calibration.html'), { width: 390, height: 844, phone: true });
  expect(await page.evaluate('document.documentElement.scrollWidth')).toBe(390);
});
