// SPDX-License-Identifier: Apache-2.0
// Takes screenshots of reports: node screenshots.mjs REPORT PLACE LOOK PICTURE ...
// (the report, the fragment of the address that names what to show, desktop or phone with -dark for the dark theme, the
// file to write)
import { open } from './browser.mjs';

const desktop = { width: 1400, height: 900 };
const phone = { width: 390, height: 844, phone: true };
/** @type {Record<string, import('./browser.mjs').Wishes>} */
const looks = { desktop, 'desktop-dark': { ...desktop, dark: true }, phone, 'phone-dark': { ...phone, dark: true } };

const wishes = process.argv.slice(2);
for (let i = 0; i + 3 < wishes.length; i += 4) {
  const [report, place, look, picture] = wishes.slice(i, i + 4);
  const { page, close } = await open(report, looks[look]);
  await page.evaluate((fragment) => { location.hash = fragment; }, place);
  await page.waitForTimeout(500);
  await page.screenshot({ path: picture });
  await close();
}
