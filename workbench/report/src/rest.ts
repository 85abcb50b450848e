// SPDX-License-Identifier: Apache-2.0
// What follows the display only when it rests: the page's address, which browsers let a page change only so often, and
// the words for screen readers.

/** The display rests when nothing has changed for so long, ms. */
const restTime = 300;

export class Rest {
  private waiting = 0;

  constructor(private readonly act: () => void) {}

  /** Notes a change of the display. */
  disturb(): void {
    clearTimeout(this.waiting);
    this.waiting = window.setTimeout(this.act, restTime);
  }
}
