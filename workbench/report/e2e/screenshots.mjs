// SPDX-License-Identifier: Apache-2.0
// Takes screenshots of reports: node screenshots.mjs REPORT TIME TRACK PICTURE ...
// (the report, the time to show in seconds, the system track to select, the file to write)
import { open } from './browser.mjs';

const wishes = process.argv.slice(2);
for (let i = 0; i + 3 < wishes.length; i += 4) {
  const [report, time, track, picture] = wishes.slice(i, i + 4);
  const { page, close } = await open(report);
  await page.locator('.scrubber').fill(time);
  await page.locator(`[data-track="${track}"]`).first().click();
  await page.waitForTimeout(200);
  await page.screenshot({ path: picture });
  await close();
}
