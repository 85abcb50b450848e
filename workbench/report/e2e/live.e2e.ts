// SPDX-License-Identifier: Apache-2.0
// Tests the live view in a browser, with the program and simulated sensors.
import { afterAll, afterEach, beforeAll, describe, expect, it } from 'vitest';
import { mkdirSync, renameSync, rmSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import type { Page } from 'playwright-core';
import type { LiveProbe } from '../src/live/liveapp';
import { open as openBrowser, type Opened } from './browser.mjs';
import { LiveSite, truthOf } from './livesite';
import { at } from './reports';

let site: LiveSite;
let opened: Opened[] = [];

const probe = <Key extends keyof LiveProbe>(page: Page, key: Key): Promise<LiveProbe[Key]> => page.evaluate(`window.veskarLive.${key}`);
const pause = (milliseconds: number) => new Promise((done) => setTimeout(done, milliseconds));

/** Waits until something holds; the limit of the test ends it otherwise. */
async function until(holds: () => Promise<boolean>): Promise<void> {
  while (!(await holds())) {
    await pause(50);
  }
}
const untilIn = (page: Page, condition: string) => until(() => page.evaluate(condition));

async function open(wishes = {}): Promise<Page> {
  const made = await openBrowser(site.address, wishes);
  opened.push(made);
  await untilIn(made.page, 'window.veskarLive && veskarLive.plan.some((mark) => mark.kind === "system")');
  return made.page;
}

/** Errors that a browser reports when the server is away, as some tests want it. */
const isExpected = (complaint: string) => /ERR_CONNECTION_REFUSED|ERR_INCOMPLETE_CHUNKED_ENCODING|ERR_CONNECTION_RESET|ERR_EMPTY_RESPONSE/.test(complaint);

afterEach(async () => {
  const all = opened;
  opened = [];
  for (const { close } of all) {
    await close();
  }
  for (const { complaints, requests } of all) {
    expect(complaints.filter((complaint) => !isExpected(complaint))).toEqual([]);
    expect(requests.filter((address) => !address.startsWith(site.address))).toEqual([]);
  }
});

/** Selects a track, lets the timeline fill, and takes the picture for the documentation. */
async function takePicture(page: Page, name: string): Promise<void> {
  await pause(15_000);
  await page.locator('.objects button').nth(1).click();
  await untilIn(page, 'document.querySelector(".inspector .reasons li") !== null');
  await page.screenshot({ path: at(name) });
}

describe('the live view of people on a perimeter', () => {
  beforeAll(async () => {
    site = await LiveSite.start('perimeter');
  });
  afterAll(() => site.stop());

  it('shows them where they are', async () => {
    const page = await open();
    await pause(4000);  // the first estimates are rough
    const samples: { time: number; places: [number, number][] }[] = [];
    for (let i = 0; i < 30; ++i) {
      // Marks and transform of one draw.
      const { time, marks, transform } = await page.evaluate(
        '(() => { const { time, plan, transform } = veskarLive; return { time, marks: plan.filter((mark) => mark.kind === "system"), transform }; })()',
      ) as { time: number; marks: { x: number; y: number }[]; transform: LiveProbe['transform'] };
      samples.push({ time, places: marks.map(({ x, y }) => [(transform.top - y) / transform.scale, (transform.left - x) / transform.scale]) });
      await pause(100);
    }
    expect(samples.filter(({ places }) => places.length >= 2).length).toBeGreaterThan(20);
    // The clocks of the program and of the scenario differ by one constant.
    const truth = truthOf('perimeter');
    const errorsAt = (offset: number) => samples.flatMap(({ time, places }) => {
      const index = Math.round((time - offset) / 0.1);
      const known = truth[index]?.places ?? [];
      return places.map(([x, y]) => Math.min(...known.map(([tx, ty]) => Math.hypot(x - tx, y - ty)), 1000));
    });
    const mean = (values: number[]) => values.reduce((sum, value) => sum + value, 0) / values.length;
    let best = Infinity;
    for (let i = -600; i < 100; ++i) {
      best = Math.min(best, mean(errorsAt(samples[0].time + i * 0.1)));
    }
    // The plot resolves some centimetres; the estimates are within half a metre.
    expect(best).toBeLessThan(0.5);
    await takePicture(page, 'live-perimeter.png');
  });

  it('shows plan and camera beside each other, filled', async () => {
    for (const width of [1280, 1920]) {
      const page = await open({ width });
      const [plan, camera] = await Promise.all(['.plan-view', '.image-view'].map(async (name) => (await page.locator(name).boundingBox())!));
      expect(plan.width).toBeGreaterThan(0.3 * width);
      expect(camera.width).toBeGreaterThan(0.2 * width);
      expect(plan.x + plan.width).toBeLessThan(camera.x + 1);
      const { marks, ground } = await page.evaluate('({ marks: veskarLive.plan.length, ground: document.querySelector(".plan-view canvas").clientHeight })') as { marks: number; ground: number };
      expect(marks).toBeGreaterThan(0);
      expect(ground).toBeGreaterThan(200);
    }
  });

  it('fits a phone', async () => {
    const page = await open({ width: 390, height: 844, phone: true });
    expect(await page.evaluate('document.documentElement.scrollWidth')).toBe(390);
    for (const name of ['.plan-view', '.image-view', '.objects', '.lower', '.health']) {
      const part = page.locator(name);
      await part.scrollIntoViewIfNeeded();
      const box = (await part.boundingBox())!;
      expect(box.x).toBeGreaterThanOrEqual(0);
      expect(box.x + box.width).toBeLessThanOrEqual(390);
      expect(box.height).toBeGreaterThan(80);
    }
    await page.locator('.objects button').first().tap();
    expect(await probe(page, 'selection')).toMatchObject({ kind: 'system' });
    await untilIn(page, 'document.querySelector(".inspector .reasons li") !== null');
    await page.evaluate('scrollTo(0, 0)');
    // The panel of the selected track lies over the rest, which does not shine through, at the lower edge.
    const panel = (await page.locator('.inspector').boundingBox())!;
    expect(panel.y + panel.height).toBeCloseTo(844, 0);
    expect(panel.height).toBeLessThan(0.6 * 844);
    expect(await page.evaluate('getComputedStyle(document.querySelector(".inspector")).backgroundColor')).toBe('rgb(255, 255, 255)');
    await page.screenshot({ path: at('live-phone.png') });
  });

  it('shows the health of both sensors and the objects', async () => {
    const page = await open();
    await untilIn(page, '[...document.querySelectorAll(".health .card")].every((card) => parseFloat(card.querySelectorAll("dd")[0].textContent) > 5)');
    const cards = await page.locator('.health .card').allTextContents();
    expect(cards.length).toBe(2);
    expect(cards[0]).toMatch(/^cameraseenFrames.*\/sDelay.*msClock.*±.*msLosses/);
    expect(cards[1]).toMatch(/^radarseen/);
    expect(await page.locator('.latency').textContent()).toMatch(/^Fusion: [0-9.]+ ms, 99 % within/);
    expect(await page.locator('.objects button').count()).toBeGreaterThan(0);
    expect(await page.locator('.connection').textContent()).toBe('Live');
    expect(await probe(page, 'lanes')).not.toEqual([]);
  });

  it('explains the selected track, by keyboard only', async () => {
    const page = await open();
    await page.keyboard.press(']');
    const selection = await probe(page, 'selection');
    expect(selection).toMatchObject({ kind: 'system' });
    await untilIn(page, 'document.querySelector(".inspector .reasons li") !== null');
    expect(await page.locator('.inspector .reasons').first().textContent()).toMatch(/(radar|video) \d+: fused/);
    await page.keyboard.press('Space');
    expect(await probe(page, 'isHeld')).toBe(true);
    const time = await probe(page, 'time');
    await pause(500);
    expect(await probe(page, 'time')).toBe(time);
    await page.keyboard.press('Space');
    await until(async () => (await probe(page, 'time')) > time);
    const { scale } = await probe(page, 'transform');
    await page.keyboard.press('+');
    expect((await probe(page, 'transform')).scale).toBeGreaterThan(scale);
    await page.keyboard.press('f');
    await page.keyboard.press('Escape');
    expect(await probe(page, 'selection')).toBeNull();
    // Every control can be reached, and the list keeps the focus while it changes.
    await page.locator('.objects button').first().focus();
    await pause(500);
    expect(await page.evaluate('document.activeElement.closest(".objects") !== null')).toBe(true);
    await page.keyboard.press('Enter');
    expect(await probe(page, 'selection')).toMatchObject({ kind: 'system' });
  });

  it('serves a second viewer', async () => {
    const [first, second] = [await open(), await open({ dark: true })];
    await first.keyboard.press(']');
    const [before, also] = [await probe(first, 'states'), await probe(second, 'states')];
    await pause(2000);
    expect(await probe(first, 'states')).toBeGreaterThan(before + 10);
    expect(await probe(second, 'states')).toBeGreaterThan(also + 10);
    expect(await probe(second, 'selection')).toBeNull();
  });

  it('survives a restart of the program', async () => {
    const page = await open();
    const start = await probe(page, 'start');
    await page.keyboard.press(']');
    await site.stopProgram();
    await untilIn(page, 'document.querySelector(".connection").textContent === "Connecting"');
    await site.startProgram();
    await until(async () => (await probe(page, 'start')) !== start);
    await untilIn(page, 'veskarLive.plan.some((mark) => mark.kind === "system")');
    await untilIn(page, 'document.querySelector(".connection").textContent === "Live"');
    expect(await probe(page, 'selection')).toBeNull();
  });

  it('says when the sensors fall silent', async () => {
    const page = await open();
    await site.stopSensors();
    await untilIn(page, 'document.querySelector(".connection").textContent === "No frames" || document.querySelectorAll(".health .silent").length > 0');
    site.publish();
    await untilIn(page, 'document.querySelector(".connection").textContent === "Live" && document.querySelectorAll(".health .silent").length === 0');
  });
});

describe('the live view with pictures of the camera', () => {
  const folder = at('pictures');
  /** As cameras' programs should: complete, then in place. */
  const put = (name: string, bytes: Uint8Array | string) => {
    writeFileSync(join(folder, '.part'), bytes);
    renameSync(join(folder, '.part'), join(folder, name));
  };

  beforeAll(async () => {
    rmSync(folder, { recursive: true, force: true });
    mkdirSync(folder, { recursive: true });
    site = await LiveSite.start('perimeter', { pictures: { directory: folder, interval: 0.2 } });
  });
  afterAll(() => site.stop());

  it('lays the newest one behind the boxes, and does without a broken one', async () => {
    const page = await open();
    const caption = 'document.querySelector(".picture").textContent';
    /** Red, green and blue of the image plane in the mean, of a copy: reading the canvas itself would slow it down. */
    const colour = () => page.evaluate(`(() => {
      const canvas = document.createElement('canvas');
      canvas.width = canvas.height = 1;
      const context = canvas.getContext('2d', { willReadFrequently: true });
      context.imageSmoothingQuality = 'high';
      context.drawImage(document.querySelector('.image-view canvas'), 0, 0, 1, 1);
      return [...context.getImageData(0, 0, 1, 1).data];
    })()`) as Promise<number[]>;
    const redness = async () => {
      const [red, green] = await colour();
      return red - green;
    };
    await untilIn(page, `${caption} === 'no picture yet'`);
    const plain = await redness();
    // A picture as a browser makes it, all red.
    const red = await page.evaluate(`(() => {
      const canvas = document.createElement('canvas');
      [canvas.width, canvas.height] = [64, 36];
      const context = canvas.getContext('2d');
      context.fillStyle = '#f00';
      context.fillRect(0, 0, 64, 36);
      return canvas.toDataURL('image/jpeg').split(',')[1];
    })()`) as string;
    put('1.jpg', Buffer.from(red, 'base64'));
    await untilIn(page, 'veskarLive.hasPicture');
    await untilIn(page, `/^picture \\d\\.\\d s old$/.test(${caption})`);
    expect(await redness()).toBeGreaterThan(plain + 60);
    expect(await page.evaluate('veskarLive.image.length')).toBeGreaterThan(0);
    await page.screenshot({ path: at('live-picture.png') });
    put('2.jpg', Buffer.from([0xff, 0xd8, 0xff, 0, 1, 2]));
    await untilIn(page, `${caption} === 'the picture cannot be read'`);
    expect(await probe(page, 'hasPicture')).toBe(false);
    put('3.jpg', 'text');
    await untilIn(page, `${caption} === 'the newest picture is neither JPEG nor PNG'`);
    put('4.jpg', Buffer.from(red, 'base64'));
    await untilIn(page, 'veskarLive.hasPicture');
    rmSync(folder, { recursive: true });
    await untilIn(page, `${caption}.startsWith('the directory of pictures cannot be read')`);
    expect(await probe(page, 'hasPicture')).toBe(false);
    // What it drew is the plain image plane again.
    expect(await redness()).toBeLessThan(plain + 30);
  });
});

describe('the live view of a crowd', () => {
  beforeAll(async () => {
    site = await LiveSite.start('crowd');
  });
  afterAll(() => site.stop());

  it('shows and lists every object', async () => {
    const page = await open();
    await untilIn(page, 'veskarLive.plan.filter((mark) => mark.kind === "system").length > 40');
    await page.keyboard.press('Space');
    await pause(300);
    const ids = await page.evaluate('veskarLive.plan.filter((mark) => mark.kind === "system" || mark.kind === "tentative").map((mark) => String(mark.id)).sort()');
    const listed = await page.locator('.objects button').evaluateAll((all) => all.map((one) => one.getAttribute('data-track')!).sort());
    for (const id of ids as string[]) {
      expect(listed).toContain(id);
    }
    expect(await page.locator('.objects h2').textContent()).toMatch(/^Objects: \d\d confirmed, \d+ tentative$/);
    await page.keyboard.press('Space');
    await takePicture(page, 'live-crowd.png');
  });
});
