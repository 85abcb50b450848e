// SPDX-License-Identifier: Apache-2.0
// Tests the map under the plan, with tiles from a server of our own.
import { createServer, type Server } from 'node:http';
import type { AddressInfo } from 'node:net';
import { deflateSync } from 'node:zlib';
import { afterAll, afterEach, beforeAll, describe, expect, it } from 'vitest';
import { tileAt } from '../src/maptiles';
import { open, type Opened } from './browser.mjs';
import { mappedReport, site } from './reports';

/** A PNG of one colour, 256 pixels wide. */
function tileOf(red: number, green: number, blue: number): Buffer {
  const crcs = Array.from({ length: 256 }, (_, n) => {
    let crc = n;
    for (let bit = 0; bit < 8; ++bit) {
      crc = crc & 1 ? 0xedb88320 ^ (crc >>> 1) : crc >>> 1;
    }
    return crc >>> 0;
  });
  const chunk = (name: string, data: Buffer) => {
    const body = Buffer.concat([Buffer.from(name), data]);
    const ends = Buffer.alloc(8);
    ends.writeUInt32BE(data.length, 0);
    ends.writeUInt32BE((body.reduce((crc, byte) => crcs[(crc ^ byte) & 255] ^ (crc >>> 8), 0xffffffff) ^ 0xffffffff) >>> 0, 4);
    return Buffer.concat([ends.subarray(0, 4), body, ends.subarray(4)]);
  };
  const head = Buffer.from([0, 0, 1, 0, 0, 0, 1, 0, 8, 2, 0, 0, 0]);
  const row = Buffer.concat([Buffer.from([0]), Buffer.from(Array.from({ length: 256 }, () => [red, green, blue]).flat())]);
  const pixels = deflateSync(Buffer.concat(Array.from({ length: 256 }, () => row)));
  return Buffer.concat([Buffer.from([0x89, 0x50, 0x4e, 0x47, 13, 10, 26, 10]), chunk('IHDR', head), chunk('IDAT', pixels), chunk('IEND', Buffer.alloc(0))]);
}

let server: Server;
let asked: string[] = [];
let isServing = true;
let path = '';
let opened: Opened | null = null;

const until = async (holds: () => Promise<boolean> | boolean) => {
  while (!(await holds())) {
    await new Promise((done) => setTimeout(done, 50));
  }
};

/** How much redder than green the plan is in the mean. */
const redness = ({ page }: Opened) => page.evaluate(`(() => {
  const canvas = document.createElement('canvas');
  canvas.width = canvas.height = 16;
  const context = canvas.getContext('2d', { willReadFrequently: true });
  context.drawImage(document.querySelector('.plan-view canvas'), 0, 0, 16, 16);
  try {
    const { data } = context.getImageData(0, 0, 16, 16);
    return data.reduce((sum, value, i) => sum + (i % 4 === 0 ? value : i % 4 === 1 ? -value : 0), 0) / 256;
  } catch {
    return 'tainted';
  }
})()`);

async function openMap(): Promise<Opened> {
  opened = await open(path);
  await until(() => opened!.page.evaluate('Boolean(window.veskarReport && veskarReport.drawMilliseconds.length > 0)'));
  return opened;
}

describe('the map under the plan', () => {
  beforeAll(async () => {
    server = createServer((request, response) => {
      asked.push(request.url ?? '');
      response.writeHead(isServing ? 200 : 503, { 'Content-Type': 'image/png' });
      response.end(isServing ? tileOf(220, 40, 40) : '');
    });
    await new Promise<void>((done) => server.listen(0, '127.0.0.1', done));
    path = mappedReport('perimeter', `http://127.0.0.1:${(server.address() as AddressInfo).port}/{z}/{x}/{y}.png`);
  });
  afterAll(() => server.close());
  afterEach(async () => {
    await opened?.close();
    opened = null;
    asked = [];
    isServing = true;
  });

  it('is fetched for the place of the device, and can be hidden', async () => {
    const { page, complaints } = await openMap();
    await until(() => asked.length > 0);
    await page.waitForLoadState('networkidle');
    // Tiles of other origins cannot be read back, which shows that some were drawn.
    await until(async () => (await redness(opened!)) === 'tainted');
    expect(await page.locator('.attribution').textContent()).toBe('© <i>somebody</i>');
    const z = Number(asked[0].split('/')[1]);
    expect(z).toBeGreaterThan(15);
    const [x, y] = tileAt(z, site.latitude, site.longitude).map(Math.floor);
    expect(asked).toContain(`/${z}/${x}/${y}.png`);
    const before = asked.length;
    await page.locator('[data-layer="map"]').click();
    await until(async () => !(await page.locator('.attribution').isVisible()));
    await page.locator('.plan-view canvas').hover();
    await page.mouse.wheel(0, 600);
    await new Promise((done) => setTimeout(done, 300));
    expect(asked.length).toBe(before);
    await page.locator('[data-layer="map"]').click();
    await until(() => asked.length > before);
    await page.screenshot({ path: path.replace('.html', '.png') });
    expect(complaints).toEqual([]);
  });

  it('says so when it cannot be fetched, and the rest works', async () => {
    isServing = false;
    const { page } = await openMap();
    await until(async () => (await page.locator('.attribution').textContent()) === 'The map cannot be fetched.');
    expect(await redness(opened!)).toBeTypeOf('number');
    expect(await page.evaluate('veskarReport.plan[0].length')).toBeGreaterThan(0);
  });
});
