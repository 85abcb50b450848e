// SPDX-License-Identifier: Apache-2.0
// Checks what a page shows against WCAG 2.1 AA with axe-core.
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import type { Page } from 'playwright-core';

const source = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8');

interface Violation {
  readonly id: string;
  readonly nodes: readonly { readonly html: string; readonly failureSummary: string }[];
}

/** The violations, one line each; empty when there is none. */
export async function violationsOf(page: Page): Promise<string[]> {
  const { violations } = (await page.evaluate(`${source};
    axe.run(document, { runOnly: ['wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa', 'best-practice'] })`)) as { violations: Violation[] };
  return violations.flatMap(({ id, nodes }) => nodes.map(({ html, failureSummary }) => `${id}: ${html.slice(0, 120)}: ${failureSummary.replace(/\s+/g, ' ')}`));
}
