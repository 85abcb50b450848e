// SPDX-License-Identifier: Apache-2.0
// Tests reports of the shipped scenarios in a browser, with the actions of a user.
import { readFileSync } from 'node:fs';
import { afterEach, beforeAll, describe, expect, it } from 'vitest';
import type { Page } from 'playwright-core';
import type { Mark } from '../src/canvas';
import type { Probe } from '../src/probe';
import { violationsOf } from './accessibility';
import { open as openBrowser, type Opened, type Wishes } from './browser.mjs';
import { at, comparisonOf, hostileReport, markup, reportOf } from './reports';

let current: Opened | null = null;

/** Waits until something holds. The page's own policy keeps a browser from evaluating it by itself. */
async function until(page: Page, condition: string): Promise<void> {
  while (!(await page.evaluate(condition))) {
    await settle(page);
  }
}

async function open(path: string, wishes: Wishes = {}): Promise<Page> {
  current = await openBrowser(path, wishes);
  await until(current.page, 'window.veskarReport && veskarReport.drawMilliseconds.length > 0');
  return current.page;
}

// No action in a report may cause an error or a network request.
afterEach(async () => {
  const { complaints, requests, close } = current ?? { complaints: [], requests: [], close: async () => {} };
  current = null;
  await close();
  expect(complaints).toEqual([]);
  expect(requests).toEqual([]);
});

const probe = <Key extends keyof Probe>(page: Page, key: Key): Promise<Probe[Key]> => page.evaluate(`window.veskarReport.${key}`);
const marksOf = (marks: readonly Mark[], kind: Mark['kind']) => marks.filter((mark) => mark.kind === kind);

/** Waits until the page has drawn. */
const settle = (page: Page) => page.evaluate('new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done)))');

async function seek(page: Page, time: number): Promise<void> {
  await page.locator('.scrubber').fill(String(time));
  await settle(page);
}

/** The colour of a canvas at a position, as displayed. */
function colourAt(page: Page, selector: string, x: number, y: number): Promise<string> {
  return page.locator(selector).evaluate((canvas: HTMLCanvasElement, [px, py]) => {
    const ratio = canvas.width / canvas.clientWidth;
    const sample = document.createElement('canvas').getContext('2d')!;
    sample.drawImage(canvas, -Math.round(px * ratio), -Math.round(py * ratio));
    const [r, g, b] = sample.getImageData(0, 0, 1, 1).data;
    return `rgb(${r}, ${g}, ${b})`;
  }, [x, y] as const);
}

const channels = (colour: string) => colour.match(/\d+/g)!.slice(0, 3).map(Number);
const light = (colour: string) => channels(colour).reduce((sum, part) => sum + part, 0) / 3;
/** Largest difference of two colours' channels, 0 to 255; drawn edges are antialiased. */
const apart = (one: string, other: string) => Math.max(...channels(one).map((part, i) => Math.abs(part - channels(other)[i])));

/** A colour of the style sheet, as rgb(...). */
const named = (page: Page, name: string): Promise<string> =>
  page.evaluate((variable) => {
    const sample = document.createElement('i');
    sample.style.color = `var(${variable})`;
    document.body.append(sample);
    const { color } = getComputedStyle(sample);
    sample.remove();
    return color;
  }, name);

async function clickMark(page: Page, canvas: string, mark: Mark): Promise<void> {
  await page.locator(canvas).click({ position: { x: mark.x, y: mark.y } });
  await settle(page);
}

const shoot = (page: Page, name: string) => page.screenshot({ path: at(`${name}.png`) });

describe('the report of the perimeter', () => {
  let path = '';
  beforeAll(() => {
    path = reportOf('perimeter');
  });

  it('draws the tracks of each frame in plan and image', async () => {
    const page = await open(path);
    await seek(page, 30);
    const [plan] = await probe(page, 'plan');
    const [image] = await probe(page, 'image');
    const confirmed = marksOf(plan, 'system');
    expect(confirmed.map((mark) => mark.id).sort()).toEqual(marksOf(image, 'system').map((mark) => mark.id).sort());
    expect(confirmed.length).toBeGreaterThanOrEqual(2);
    expect(marksOf(plan, 'truth').length).toBe(3);
    expect(marksOf(plan, 'video').length).toBeGreaterThan(0);
    expect(await page.locator('.counts').textContent()).toContain(`${confirmed.length} confirmed`);
    // Larger distances are higher up in both views, and right is right in both.
    const [a, b] = [...confirmed].sort((one, other) => one.y - other.y);
    const inImage = (id: number) => marksOf(image, 'system').find((mark) => mark.id === id)!;
    expect(inImage(a.id).box!.top + inImage(a.id).box!.height).toBeLessThan(inImage(b.id).box!.top + inImage(b.id).box!.height);
    await shoot(page, 'perimeter');
  });

  it('begins where something is confirmed', async () => {
    const page = await open(path);
    expect(await probe(page, 'time')).toBeGreaterThan(0);
    expect(marksOf((await probe(page, 'plan'))[0], 'system').length).toBeGreaterThan(0);
  });

  it('says at the top how good the fusion was, and leads to where it was worst', async () => {
    const page = await open(path);
    const verdict = page.locator('.verdict');
    expect(await verdict.textContent()).toMatch(/^The fusion is better than the best single sensor \((radar|video) \d+\): its mean error \(GOSPA\) is 0\.\d\d m instead of 1\.\d\d m, \d+ % less\. Most of the error, \d+ %, are (inaccurate positions|missed objects|false tracks); no object changed its track\. It went worst around 0:0\d\.\d\d: the error is \d\.\d m/);
    await verdict.locator('button').click();
    const time = await probe(page, 'time');
    expect(await verdict.textContent()).toContain(`0:0${time.toFixed(2)}`);
    expect((await probe(page, 'selection'))?.kind).toBe('truth');
  });

  it('has an address for what it shows', async () => {
    const page = await open(path);
    await seek(page, 30);
    await page.locator('.tracks button').nth(1).click();
    await page.keyboard.press('2');
    const selection = (await probe(page, 'selection'))!;
    await until(page, 'location.hash.includes("select=system") && location.hash.includes("tab=plots")');
    const address = page.url();
    // Another fragment, as a reader enters it, then the first one in a new page.
    await page.evaluate('location.hash = "#t=12.5&tab=metrics"');
    await until(page, 'veskarReport.time === 12.5');
    expect(await page.locator('.figures').isVisible()).toBe(true);
    await page.goto('about:blank');
    await page.goto(address);
    await until(page, 'window.veskarReport && veskarReport.drawMilliseconds.length > 0');
    expect(await probe(page, 'time')).toBe(30);
    expect(await probe(page, 'selection')).toEqual(selection);
    expect(await page.locator('.panel.plots').isVisible()).toBe(true);
  });

  it('draws confirmed tracks in their colour at the positions of their marks', async () => {
    const page = await open(path);
    await seek(page, 12);
    // Hides the other layers, so that nothing covers the marks.
    for (const layer of ['video', 'radar', 'truth', 'trails', 'ellipses']) {
      await page.locator(`[data-layer="${layer}"]`).click();
    }
    await settle(page);
    const [plan] = await probe(page, 'plan');
    expect(marksOf(plan, 'system').length).toBeGreaterThan(0);
    expect(plan.every((mark) => mark.kind === 'system' || mark.kind === 'tentative')).toBe(true);
    for (const mark of marksOf(plan, 'system')) {
      expect(await colourAt(page, '.plan-view canvas', mark.x, mark.y)).toBe(await named(page, '--system'));
    }
    await page.locator('[data-layer="tentative"]').click();
    await settle(page);
    expect((await probe(page, 'plan'))[0].every((mark) => mark.kind === 'system')).toBe(true);
  });

  it('scrubs by slider, keys and playing', async () => {
    const page = await open(path);
    await seek(page, 20);
    expect(await page.locator('output.clock').textContent()).toBe('0:20.00');
    const before = (await probe(page, 'plan'))[0];
    await seek(page, 40);
    expect((await probe(page, 'plan'))[0]).not.toEqual(before);
    await page.locator('.stage').click({ position: { x: 5, y: 5 } });
    await page.keyboard.press('Home');
    await page.keyboard.press('ArrowRight');
    expect(await probe(page, 'time')).toBeCloseTo(0.03, 6);
    await page.keyboard.press('ArrowRight');
    expect(await probe(page, 'time')).toBeCloseTo(0.1, 6);
    await page.keyboard.press('ArrowLeft');
    await page.keyboard.press('Shift+ArrowRight');
    expect(await probe(page, 'time')).toBeCloseTo(1.03, 6);
    await page.keyboard.press('+');
    await page.keyboard.press('Space');
    expect(await probe(page, 'playing')).toBe(true);
    await until(page, 'veskarReport.time > 1.5');
    await page.keyboard.press('Space');
    expect(await probe(page, 'playing')).toBe(false);
    await page.keyboard.press('End');
    expect(await probe(page, 'time')).toBeCloseTo(60, 0);
  });

  it('shows details and explanations of a clicked track', async () => {
    const page = await open(path);
    await seek(page, 15);
    const mark = marksOf((await probe(page, 'plan'))[0], 'system')[0];
    await clickMark(page, '.plan-view canvas', mark);
    expect(await probe(page, 'selection')).toEqual({ kind: 'system', run: 0, id: mark.id });
    const inspector = page.locator('.inspector');
    expect(await inspector.locator('h2').first().textContent()).toBe(`System track ${mark.id}`);
    expect(await inspector.textContent()).toContain('human');
    expect(await inspector.textContent()).toMatch(/\d+\.\d m ahead, \d+\.\d m (left|right)/);
    expect(await inspector.textContent()).toMatch(/55\.71\d+° N, 13\.22\d+° E/);
    expect(await inspector.textContent()).toMatch(/(north|east|south|west), \d+° from north/);
    expect(await inspector.textContent()).toContain('Matched with');
    expect(await inspector.locator('.reasons li').first().textContent()).toMatch(/(video|radar) \d+: fused/);
    await page.keyboard.press('2');
    await settle(page);
    expect((await probe(page, 'plotPoints')).every((points) => points > 100)).toBe(true);
    await shoot(page, 'perimeter-plots');
    // From the system track to one of its sensor tracks, then to an empty selection.
    await inspector.locator('.tracks button', { hasText: 'radar' }).click();
    await settle(page);
    expect((await probe(page, 'selection'))?.kind).toBe('radar');
    await page.keyboard.press('Escape');
    await settle(page);
    expect(await probe(page, 'selection')).toBeNull();
    expect(await inspector.textContent()).toContain('Legend');
  });

  it('selects an object clicked in the image', async () => {
    const page = await open(path);
    await seek(page, 15);
    const mark = marksOf((await probe(page, 'image'))[0], 'system')[0];
    await clickMark(page, '.image-view canvas', mark);
    expect((await probe(page, 'selection'))?.id).toBe(mark.id);
  });

  it('selects a track by its lane', async () => {
    const page = await open(path);
    const lanes = await probe(page, 'lanes');
    expect(lanes.length).toBeGreaterThan(3);
    // A lane is 22 pixels high, under an axis of 20.
    await page.locator('.timeline canvas').click({ position: { x: 400, y: 20 + 22 * 1 + 11 } });
    await settle(page);
    expect((await probe(page, 'selection'))?.id).toBe(lanes[1].id);
    const time = await probe(page, 'time');
    expect(time).toBeGreaterThan(15);
    expect(time).toBeLessThan(25);
    const width = await page.locator('.timeline canvas').evaluate((canvas) => canvas.clientWidth);
    const cursor = await colourAt(page, '.timeline canvas', 118 + (time / 60) * (width - 128), 5);
    expect(apart(cursor, await named(page, '--select'))).toBeLessThan(60);
    await page.keyboard.press(']');
    expect((await probe(page, 'selection'))?.id).toBe(lanes[2].id);
  });

  it('moves and zooms the plan, and fits it again', async () => {
    const page = await open(path);
    await seek(page, 15);
    const place = async () => marksOf((await probe(page, 'plan'))[0], 'system')[0];
    const before = await place();
    const box = (await page.locator('.plan-view canvas').boundingBox())!;
    await page.mouse.move(box.x + 60, box.y + 200);
    await page.mouse.down();
    await page.mouse.move(box.x + 110, box.y + 180, { steps: 3 });
    await page.mouse.up();
    await settle(page);
    expect((await place()).x).toBeCloseTo(before.x + 50, 3);
    expect((await place()).y).toBeCloseTo(before.y - 20, 3);
    await page.mouse.wheel(0, -400);
    await settle(page);
    expect((await place()).x).not.toBeCloseTo(before.x + 50, 0);
    await page.keyboard.press('f');
    await settle(page);
    expect(await place()).toEqual(before);
  });

  it('labels the axis of the number of tracks with whole numbers', async () => {
    const page = await open(path, { width: 1400, height: 900 });
    await page.keyboard.press('2');
    await settle(page);
    expect((await probe(page, 'plotLabels'))[1]).toEqual(['0', '1', '2', '3']);
  });

  it('draws the shown time as an unbroken line, in plots with dashed series, too', async () => {
    const page = await open(path);
    await page.keyboard.press('2');
    await seek(page, 30);
    await settle(page);
    const column = await page.evaluate(() => {
      const canvas = document.querySelectorAll<HTMLCanvasElement>('.plot canvas')[1];
      const over = canvas.parentElement!.querySelector<HTMLElement>('.u-over')!;
      const ratio = canvas.width / canvas.clientWidth;
      const x = Math.round((over.offsetLeft + over.offsetWidth / 2) * ratio);
      const { data } = canvas.getContext('2d')!.getImageData(x, Math.ceil(over.offsetTop * ratio) + 1, 1, Math.floor(over.offsetHeight * ratio) - 2);
      return Array.from({ length: data.length / 4 }, (_, i) => data[4 * i + 3]);
    });
    expect(column.length).toBeGreaterThan(50);
    expect(column.every((alpha) => alpha > 60)).toBe(true);
  });

  it('lets the keys of the tabs choose a tab, not a time', async () => {
    const page = await open(path);
    await seek(page, 20);
    await page.getByRole('tab', { name: 'Timeline' }).focus();
    await page.keyboard.press('ArrowRight');
    const chosen = page.locator('[role="tab"][aria-selected="true"]');
    expect(await chosen.textContent()).toBe('Plots');
    expect(await chosen.evaluate((tab) => tab === document.activeElement)).toBe(true);
    await page.keyboard.press('End');
    expect(await chosen.textContent()).toBe('Configuration');
    await page.keyboard.press('ArrowRight');
    expect(await chosen.textContent()).toBe('Timeline');
    expect(await probe(page, 'time')).toBe(20);
    expect(await page.locator('[role="tab"][tabindex="0"]').count()).toBe(1);
  });

  it('lets Space press a button that the keyboard has focused', async () => {
    const page = await open(path);
    await page.locator('.scrubber').focus();
    await page.keyboard.press('Tab');
    await page.keyboard.press('Tab');
    await page.keyboard.press('Space');
    await settle(page);
    expect(await probe(page, 'playing')).toBe(false);
    expect(await page.locator('.speed').textContent()).toBe('2×');
  });

  it('zooms timeline and plots in time', async () => {
    const page = await open(path);
    await seek(page, 20);
    await page.getByRole('button', { name: 'Show less time' }).click();
    await page.getByRole('button', { name: 'Show less time' }).click();
    const { from, to } = await probe(page, 'span');
    expect(to - from).toBeCloseTo(15, 6);
    expect(from < 20 && 20 < to).toBe(true);
    // A click in the middle of the lanes goes to the middle of what is shown.
    const { width } = (await page.locator('.timeline canvas').boundingBox())!;
    await page.locator('.timeline canvas').click({ position: { x: 118 + (width - 128) / 2, y: 60 } });
    expect(await probe(page, 'time')).toBeCloseTo((from + to) / 2, 1);
    await seek(page, 50);
    const moved = await probe(page, 'span');
    expect(moved.from < 50 && 50 < moved.to).toBe(true);
    await page.getByRole('button', { name: 'Show all of the time' }).click();
    expect(await probe(page, 'span')).toEqual({ from: 0, to: expect.closeTo(60, 0) });
  });

  it('tells values with units where the pointer rests', async () => {
    const page = await open(path, { width: 1400, height: 900 });
    await seek(page, 30);
    const tip = page.locator('.tooltip');
    const mark = marksOf((await probe(page, 'plan'))[0], 'system')[0];
    await page.locator('.plan-view canvas').hover({ position: { x: mark.x, y: mark.y } });
    expect(await tip.textContent()).toMatch(new RegExp(`^System track ${mark.id}Standing: confirmedProbability: 1\\.000Class: human \\d+ %Position: .* m ahead, .*Speed: \\d\\.\\d\\d m/s$`));
    await page.locator('.timeline canvas').hover({ position: { x: 500, y: 31 } });
    expect(await tip.textContent()).toMatch(/^\d human at 0:\d\d\.\d\dconfirmed, probability \d\.\d\dvideo \d+: (seen|coasting)/);
    await page.keyboard.press('2');
    await page.locator('.plot .u-over').first().hover({ position: { x: 100, y: 40 } });
    await page.mouse.move(0, 0);
    expect(await tip.isVisible()).toBe(false);
    await page.locator('.plot .u-over').first().hover({ position: { x: 104, y: 40 } });
    expect(await tip.textContent()).toMatch(/^0:\d\d\.\d\dfusion: \d\.\d\d m$/);
  });

  it('saves plots as SVG and PNG, and tables as CSV', async () => {
    const page = await open(path);
    const saved = async (button: string) => {
      const [download] = await Promise.all([page.waitForEvent('download'), page.getByRole('button', { name: button }).first().click()]);
      const bytes = readFileSync(await download.path());
      return { name: download.suggestedFilename(), bytes, text: bytes.toString('utf8') };
    };
    await seek(page, 30);
    const list = await saved('Save the list of tracks as CSV');
    expect(list.name).toBe('tracks at 30.00 s.csv');
    expect(list.text).toMatch(/^\ufeffrun,track,class,standing,sensors,probability,"distance, m"\r\nA,1,human,confirmed,radar and video,1\.000,\d+\.\d\d\r\n/);
    await page.keyboard.press('2');
    await settle(page);
    const plot = await saved('Save the plot as SVG');
    expect(plot.name).toBe('GOSPA, m.svg');
    expect(plot.text).toMatch(/^<svg .*<path d="M48\.0 \d+\.\d(L[0-9. ]+){100,}" stroke="#/s);
    const picture = await saved('Save the plot as PNG');
    expect(picture.name).toBe('GOSPA, m.png');
    // Signature, and width and height of the header: twice those of the drawing.
    expect(picture.bytes.subarray(1, 4).toString()).toBe('PNG');
    expect([picture.bytes.readUInt32BE(16), picture.bytes.readUInt32BE(20)]).toEqual([1600, 640]);
    // A drawing, not an empty sheet.
    expect(picture.bytes.length).toBeGreaterThan(10_000);
    await page.keyboard.press('3');
    const metrics = await saved('Save the metrics as CSV');
    expect(metrics.name).toBe('metrics.csv');
    expect(metrics.text).toMatch(/^\ufeffFigure,fusion,radar 3,.*\r\nGOSPA \[m\],0\.\d{3},/);
    await page.keyboard.press('4');
    expect((await saved('Save the configuration as CSV')).text).toContain('veskarModule.trackKillTime,0.5,0.5\r\n');
  });

  it('shows the metrics, part by part', async () => {
    const page = await open(path);
    await page.getByRole('tab', { name: 'Metrics' }).click();
    const row = page.locator('.figures tr', { hasText: 'GOSPA [m]' });
    expect(await row.locator('td').first().textContent()).toMatch(/^\d+\.\d{3}$/);
    expect(await page.locator('.figures thead th').allTextContents()).toContain('radar 8');
    const whole = await row.textContent();
    await page.locator('.metrics .segments button', { hasText: '0 to 20 m' }).click();
    expect(await row.textContent()).not.toBe(whole);
    await shoot(page, 'perimeter-metrics');
  });
});

describe('two runs of the crossing', () => {
  let path = '';
  beforeAll(() => {
    path = comparisonOf('crossing');
  });

  it('are shown side by side at the same time', async () => {
    const page = await open(path);
    await seek(page, 25);
    const plans = await probe(page, 'plan');
    expect(plans.length).toBe(2);
    expect(marksOf(plans[0], 'truth')).toEqual(marksOf(plans[1], 'truth'));
    expect(plans[0]).not.toEqual(plans[1]);
    const lanes = await probe(page, 'lanes');
    expect(new Set(lanes.map((lane) => lane.run))).toEqual(new Set([0, 1]));
    expect(lanes.filter((lane) => lane.run === 1).length).toBeGreaterThan(lanes.filter((lane) => lane.run === 0).length);
    const mark = marksOf(plans[1], 'system')[0];
    await page.locator('.plan-view canvas').nth(1).click({ position: { x: mark.x, y: mark.y } });
    await settle(page);
    expect(await probe(page, 'selection')).toMatchObject({ run: 1, id: mark.id });
    expect(await page.locator('.inspector h2').first().textContent()).toBe(`System track ${mark.id} of B`);
    expect(await page.locator('.reasons li').count()).toBeGreaterThan(0);
    await shoot(page, 'crossing-pair');
  });

  it('leave no place empty beside the camera images', async () => {
    for (const [width, height] of [[1400, 900], [1920, 1080]]) {
      const page = await open(path, { width, height });
      await seek(page, 25);
      for (const run of [0, 1]) {
        const box = async (name: string) => (await page.locator(name).nth(run).boundingBox())!;
        const [plan, image, now] = [await box('.plan-view'), await box('.image-view'), await box('.now')];
        expect(image.width / image.height).toBeCloseTo(16 / 9, 1);
        expect(image.width + now.width).toBeGreaterThan(plan.width - 12);
        expect(now.width).toBeGreaterThan(100);
        expect(now.height).toBeLessThan(image.height + 1);
        expect(plan.height).toBeGreaterThan(image.height);
      }
    }
  });

  it('tell how each does at the time', async () => {
    const page = await open(path);
    await seek(page, 25);
    const cards = await page.locator('.now').allTextContents();
    expect(cards[0]).toMatch(/^Confirmed2Tentative\dFound2 of 2GOSPA0\.\d\d m$/);
    expect(cards[1]).toMatch(/^Confirmed\dTentative\dFound\d of 2GOSPA\d\.\d\d m$/);
    expect(cards[1]).not.toBe(cards[0]);
    await seek(page, 0);
    expect((await page.locator('.now').allTextContents())[0]).not.toBe(cards[0]);
  });

  it('are compared by metrics and settings', async () => {
    const page = await open(path);
    await page.keyboard.press('3');
    await settle(page);
    expect((await page.locator('.figures thead th').allTextContents()).slice(0, 4)).toEqual(['Figure', 'A', 'B', 'B − A']);
    expect((await page.locator('.figures tr', { hasText: 'IDSW' }).locator('td').allTextContents())[2]).toMatch(/^\+\d+ A better$/);
    await page.keyboard.press('4');
    await settle(page);
    expect(await page.locator('.differs').allTextContents()).toEqual(['veskarModule.positionGatingDistance30.43']);
    expect(await page.locator('.configuration .hint').textContent()).toBe('1 setting differs between the runs. 1 setting differs from the defaults.');
    const subjects = await page.locator('.subject').allTextContents();
    expect(subjects[0]).toBe('Differs between A and B');
    expect(subjects).toContain('From reports to tracks');
  });

  it('are judged against each other at the top', async () => {
    const page = await open(path);
    expect(await page.locator('.verdict').textContent()).toMatch(/^Run A is better than run B: .* % less\. Most of the error of run B, /);
  });

  it('mark identity switches', async () => {
    const page = await open(path);
    const lanes = await probe(page, 'lanes');
    const told = await page.evaluate(() => {
      const data = JSON.parse(document.getElementById('report-data')!.textContent!) as { runs: { judgement: { parts: { figures: { key: string; values: number[] }[] }[] } }[] };
      return data.runs.map((run) => run.judgement.parts[0].figures.find((figure) => figure.key === 'IDSW')!.values[0]);
    });
    for (const run of [0, 1]) {
      // Every identity switch appears in two lanes: of the track that lost the object, and of the one that took it
      // over.
      const marked = lanes.filter((lane) => lane.run === run).reduce((sum, lane) => sum + lane.switches, 0);
      expect(marked).toBe(2 * told[run]);
    }
    expect(told[1]).toBeGreaterThan(0);
  });
});

describe('the report of a crowd', () => {
  let path = '';
  beforeAll(() => {
    path = reportOf('crowd');
  });

  it('lets labels yield instead of covering each other', async () => {
    const page = await open(path, { width: 1400, height: 900 });
    await seek(page, 30);
    const mark = marksOf((await probe(page, 'plan'))[0], 'system')[20];
    await page.keyboard.press('2');
    await page.locator(`[data-track="${mark.id}"]`).click();
    await settle(page);
    const [labels] = await probe(page, 'planLabels');
    expect(labels.length).toBeGreaterThan(25);
    expect(labels[0].text).toMatch(new RegExp(`^${mark.id}\\b`));
    for (const [i, a] of labels.entries()) {
      expect(labels.slice(i + 1).filter((b) => a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom)).toEqual([]);
    }
  });

  it('finds tracks by search, filter and order', async () => {
    const page = await open(path);
    await seek(page, 30);
    const entries = page.locator('.tracks li');
    const all = await entries.count();
    expect(all).toBeGreaterThan(50);
    await page.getByLabel('Standing').selectOption('doubtful');
    const doubtful = await entries.count();
    expect(doubtful).toBeGreaterThan(0);
    expect(doubtful).toBeLessThan(all / 2);
    expect(await entries.first().textContent()).toMatch(/doubtful0\.[0-4]\d$/);
    await page.getByLabel('Standing').selectOption('');
    await page.getByLabel('Order by').selectOption('distance');
    const distances = (await entries.locator('.number').allTextContents()).slice(0, 20).map(parseFloat);
    expect(distances).toEqual([...distances].sort((a, b) => a - b));
    const search = page.getByLabel('Search tracks');
    await search.fill('');
    // Keys of the page are letters of the search here; the time runs on meanwhile.
    await search.pressSequentially('radar 4');
    expect(await probe(page, 'time')).toBe(30);
    expect(await search.evaluate((field) => field === document.activeElement)).toBe(true);
    expect(await page.locator('.inspector .hint').textContent()).toMatch(/^[01] of \d+ system tracks$/);
  });
});

describe('any report', () => {
  it.each([
    ['on a desktop', {}],
    ['in the dark', { dark: true }],
    ['on a phone', { width: 390, height: 844, phone: true }],
  ])('is accessible %s', async (_, wishes: Wishes) => {
    const page = await open(at('crossing.pair.html'), wishes);
    await page.emulateMedia({ reducedMotion: 'reduce' });
    await seek(page, 25);
    for (const tab of ['Timeline', 'Plots', 'Metrics', 'Configuration']) {
      await page.getByRole('tab', { name: tab }).click();
      await settle(page);
      expect(await violationsOf(page)).toEqual([]);
    }
    await page.keyboard.press(']');
    await settle(page);
    expect(await violationsOf(page)).toEqual([]);
    await page.getByRole('button', { name: 'Keys' }).click();
    expect(await violationsOf(page)).toEqual([]);
  });

  it('tells screen readers what its drawings show', async () => {
    const page = await open(at('perimeter.html'));
    await seek(page, 30);
    expect(await page.locator('.scrubber').getAttribute('aria-valuetext')).toMatch(/^0:30\.00 of 1:00\.00, 3 confirmed, \d tentative$/);
    const plan = page.locator('.plan-view canvas');
    await until(page, `document.querySelector('.plan-view canvas').getAttribute('aria-label').includes('0:30.00')`);
    expect(await plan.getAttribute('aria-label')).toMatch(/3 confirmed: 1 human \d+\.\d m ahead/);
    expect(await page.locator('.timeline canvas').getAttribute('aria-label')).toMatch(/at most 3 at a time/);
    await page.keyboard.press('2');
    expect(await page.locator('.plot-area').nth(1).getAttribute('aria-label')).toContain('confirmed: 0.00 to 3.00');
  });

  it('does not interpret text of a recording as markup', async () => {
    const page = await open(hostileReport());
    await seek(page, 15);
    expect(await page.locator('h1').textContent()).toBe(markup);
    const mark = marksOf((await probe(page, 'plan'))[0], 'system')[0];
    await clickMark(page, '.plan-view canvas', mark);
    expect(await page.locator('.inspector').textContent()).toContain(markup);
    for (const key of ['1', '2', '3', '4']) {
      await page.keyboard.press(key);
      await settle(page);
    }
    expect(await page.evaluate('window.ran')).toBeUndefined();
    expect(await page.locator('img').count()).toBe(0);
    expect(await page.locator('script').count()).toBe(2);
  });

  it('runs only its own script, even if another one is injected', async () => {
    const page = await open(reportOf('perimeter'));
    const outcome = await page.evaluate(() => {
      try {
        const script = document.createElement('script');
        script.textContent = 'window.ran = 1';
        document.body.append(script);
      } catch (error) {
        return String(error);
      }
      return 'appended';
    });
    expect(await page.evaluate('window.ran')).toBeUndefined();
    // The test expects Chromium's message about the policy on the console.
    expect(current?.complaints.length).toBeGreaterThan(0);
    expect([...(current?.complaints ?? []), outcome].join(' ')).toMatch(/TrustedScript|Content Security Policy/);
    current?.complaints.splice(0);
  });

  it('is readable in dark mode', async () => {
    const page = await open(at('perimeter.html'), { dark: true });
    await seek(page, 30);
    expect(light(await named(page, '--page'))).toBeLessThan(40);
    expect(light(await named(page, '--text'))).toBeGreaterThan(200);
    expect(light(await colourAt(page, '.image-view canvas', 200, 300))).toBeLessThan(60);
    await shoot(page, 'dark');
    await page.keyboard.press('t');
    await settle(page);
    expect(light(await named(page, '--page'))).toBeGreaterThan(200);
  });

  it('prints everything below each other, in light colours', async () => {
    const page = await open(at('perimeter.html'), { dark: true });
    await seek(page, 30);
    const isShown = () => page.locator('.panel.timeline, .panel.plots, .panel.metrics, .panel.configuration').evaluateAll((panels) => panels.map((panel) => (panel as HTMLElement).offsetHeight > 60));
    await page.evaluate('dispatchEvent(new Event("beforeprint"))');
    expect(await isShown()).toEqual([true, true, true, true]);
    expect(await page.locator('.transport').isVisible()).toBe(false);
    expect(light(await named(page, '--page'))).toBeGreaterThan(200);
    expect(light(await colourAt(page, '.image-view canvas', 200, 300))).toBeGreaterThan(200);
    // Nothing is cut off: every part ends before the next one begins.
    const edges = await page.locator('.verdict, .run, .panel, .inspector').evaluateAll((parts) => parts.map((part) => part.getBoundingClientRect()).map(({ top, bottom }) => [top, bottom]));
    edges.slice(1).forEach(([top], i) => expect(top).toBeGreaterThanOrEqual(edges[i][1] - 1));
    await page.evaluate('dispatchEvent(new Event("afterprint"))');
    expect(await isShown()).toEqual([true, false, false, false]);
    expect(light(await named(page, '--page'))).toBeLessThan(40);
    const pages = (await page.pdf({ path: at('perimeter.pdf'), width: '210mm', height: '297mm', scale: 0.7 })).toString('latin1').match(/\/Type \/Page\b/g)!.length;
    expect(pages).toBeGreaterThan(1);
    expect(pages).toBeLessThan(9);
  });

  it('fits on a phone', async () => {
    const page = await open(at('perimeter.html'), { width: 390, height: 844, phone: true });
    await seek(page, 30);
    expect(await page.evaluate('document.documentElement.scrollWidth')).toBeLessThanOrEqual(390);
    const transport = (await page.locator('.transport').boundingBox())!;
    expect(transport.y + transport.height).toBeCloseTo(844, 0);
    const mark = marksOf((await probe(page, 'plan'))[0], 'system')[0];
    await page.locator('.plan-view canvas').tap({ position: { x: mark.x, y: mark.y } });
    expect((await probe(page, 'selection'))?.id).toBe(mark.id);
    await settle(page);
    // What is known of it stands in view, above the playback.
    const facts = (await page.locator('.inspector .facts').boundingBox())!;
    expect(facts.y).toBeLessThan(transport.y - 200);
    await page.locator('.handle').tap();
    expect(await page.locator('.inspector .facts').isVisible()).toBe(false);
    expect((await page.locator('.handle').boundingBox())!.y).toBeLessThan(transport.y);
    await shoot(page, 'phone');
  });

  it.each([[1400, 900], [1920, 1080]])('leaves little empty beside the camera image at %i x %i', async (width, height) => {
    const page = await open(at('perimeter.html'), { width, height });
    const box = (await page.locator('.image-view').boundingBox())!;
    const used = Math.min(box.width, (box.height * 16) / 9);
    expect((used * used * 9) / 16 / (box.width * box.height)).toBeGreaterThan(0.8);
    expect((await page.locator('.plan-view').boundingBox())!.width).toBeGreaterThan(300);
  });

  it('has borders that move by pointer and keys, and are remembered', async () => {
    const page = await open(at('perimeter.html'), { width: 1400, height: 900 });
    const widthOf = async (part: string) => (await page.locator(part).boundingBox())!.width;
    const before = await widthOf('.inspector');
    const time = await probe(page, 'time');
    await page.getByRole('separator', { name: 'Width of the side panel' }).focus();
    await page.keyboard.press('ArrowLeft');
    expect(await widthOf('.inspector')).toBe(before + 24);
    expect(await probe(page, 'time')).toBe(time);
    const camera = await widthOf('.image-view');
    const border = (await page.locator('.splitter-camera').boundingBox())!;
    await page.mouse.move(border.x + 4, border.y + 50);
    await page.mouse.down();
    await page.mouse.move(border.x + 104, border.y + 50, { steps: 3 });
    await page.mouse.up();
    expect(await widthOf('.image-view')).toBeCloseTo(camera - 100, -1);
    await page.reload();
    await until(page, 'window.veskarReport && veskarReport.drawMilliseconds.length > 0');
    expect(await widthOf('.inspector')).toBe(before + 24);
    await page.locator('.splitter-side').dblclick();
    expect(await widthOf('.inspector')).toBe(before);
  });

  it('fits on a small laptop without scrolling', async () => {
    const page = await open(at('perimeter.html'), { width: 1280, height: 720 });
    expect(await page.evaluate('document.documentElement.scrollHeight')).toBeLessThanOrEqual(720);
    const cut = await page.locator('.top, .run-title, .transport, .tabs').evaluateAll((parts) => parts.filter((part) => part.scrollWidth > part.clientWidth + 1).map((part) => part.className));
    expect(cut).toEqual([]);
  });
});
