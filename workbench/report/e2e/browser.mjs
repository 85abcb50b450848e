// SPDX-License-Identifier: Apache-2.0
// Opens a report, or the live view, in headless Chromium.
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';
import { chromium } from 'playwright-core';

/**
 * @typedef {object} Wishes
 * @property {number} [width]
 * @property {number} [height]
 * @property {boolean} [dark]
 * @property {boolean} [phone]
 *
 * @typedef {object} Opened
 * @property {import('playwright-core').Page} page
 * @property {string[]} complaints errors and warnings of the page
 * @property {string[]} requests addresses that it requested, except its own
 * @property {() => Promise<void>} close
 */

/**
 * Opens a report in a new browser without stored data.
 *
 * @param {string} path of a file, or an address of the live view
 * @param {Wishes} wishes
 * @returns {Promise<Opened>}
 */
export async function open(path, { width = 1280, height = 720, dark = false, phone = false } = {}) {
  const profile = mkdtempSync(join(tmpdir(), 'veskar-report-'));
  const context = await chromium.launchPersistentContext(profile, {
    executablePath: process.env['VESKAR_CHROMIUM'] ?? '/usr/bin/chromium',
    headless: true,
    viewport: { width, height },
    colorScheme: dark ? 'dark' : 'light',
    hasTouch: phone,
    isMobile: phone,
    // Disables the browser's own network access; and the sandbox, which does not work for root.
    args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-sync',
      '--disable-background-networking', '--disable-component-update', '--force-color-profile=srgb'],
  });
  const page = await context.newPage();
  const address = path.startsWith('http:') ? path : pathToFileURL(path).href;
  /** @type {string[]} */
  const complaints = [];
  /** @type {string[]} */
  const requests = [];
  page.on('console', (message) => {
    if (message.type() === 'error' || message.type() === 'warning') {
      complaints.push(message.text());
    }
  });
  page.on('pageerror', (error) => complaints.push(String(error)));
  page.on('dialog', (dialog) => {
    complaints.push(`dialog: ${dialog.message()}`);
    void dialog.dismiss();
  });
  page.on('request', (request) => {
    if (request.url().replace(/#.*/, '') !== address && !request.url().startsWith('data:')) {
      requests.push(request.url());
    }
  });
  await page.goto(address);
  const close = async () => {
    await context.close();
    rmSync(profile, { recursive: true, force: true });
  };
  return { page, complaints, requests, close };
}
