// SPDX-License-Identifier: Apache-2.0
// When the page is drawn: once per frame of the screen, and only when something has changed.
import type { Clock } from './clock';

/** Number of draws whose duration is kept. */
const keptDurations = 600;

export class DrawingLoop {
  /** Durations of the last draws, ms. */
  readonly milliseconds: number[] = [];
  private isDirty = true;
  private lastTick = 0;

  constructor(
    private readonly clock: Clock,
    private readonly drawAll: () => void,
  ) {}

  start(): void {
    requestAnimationFrame((now) => this.tick(now));
  }

  /** Asks for a draw in the next frame of the screen. */
  request(): void {
    this.isDirty = true;
  }

  /** Lets the playback go on from now: time that has passed before does not count. */
  restart(): void {
    this.lastTick = performance.now();
  }

  /** Draws at once and returns how long that took, ms. */
  draw(): number {
    const begin = performance.now();
    this.isDirty = false;
    this.drawAll();
    const elapsed = performance.now() - begin;
    this.milliseconds.push(elapsed);
    if (this.milliseconds.length > keptDurations) {
      this.milliseconds.shift();
    }
    return elapsed;
  }

  private tick(now: number): void {
    if (this.clock.playing) {
      this.clock.advance(Math.min(0.25, (now - this.lastTick) / 1000));
      this.isDirty = true;
    }
    this.lastTick = now;
    if (this.isDirty) {
      this.draw();
    }
    requestAnimationFrame((next) => this.tick(next));
  }
}
