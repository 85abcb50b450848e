// SPDX-License-Identifier: Apache-2.0
// Chromium without a window, and a report in it.
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';
import { chromium, type BrowserContext, type Page } from 'playwright-core';

export interface Opened {
  readonly page: Page;
  /** What the page complained about. */
  readonly complaints: string[];
  /** Addresses that the page asked for, its own left out. */
  readonly requests: string[];
}

export interface Wishes {
  readonly width?: number;
  readonly height?: number;
  readonly dark?: boolean;
  readonly touch?: boolean;
}

/** A browser of its own, with nothing kept from earlier ones. */
export class Browser {
  private constructor(
    private readonly context: BrowserContext,
    private readonly profile: string,
  ) {}

  static async start({ width = 1280, height = 720, dark = false, touch = false }: Wishes = {}): Promise<Browser> {
    const profile = mkdtempSync(join(tmpdir(), 'veskar-report-'));
    const context = await chromium.launchPersistentContext(profile, {
      executablePath: process.env['VESKAR_CHROMIUM'] ?? '/usr/bin/chromium',
      headless: true,
      viewport: { width, height },
      colorScheme: dark ? 'dark' : 'light',
      hasTouch: touch,
      isMobile: touch,
      args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking', '--disable-component-update', '--disable-sync'],
    });
    return new Browser(context, profile);
  }

  async open(path: string): Promise<Opened> {
    const page = await this.context.newPage();
    const complaints: string[] = [];
    const requests: string[] = [];
    const address = pathToFileURL(path).href;
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
      if (request.url() !== address && !request.url().startsWith('data:')) {
        requests.push(request.url());
      }
    });
    await page.goto(address);
    return { page, complaints, requests };
  }

  async stop(): Promise<void> {
    await this.context.close();
    rmSync(this.profile, { recursive: true, force: true });
  }
}
