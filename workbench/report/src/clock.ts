// SPDX-License-Identifier: Apache-2.0
// The displayed time and its playback.

export const speeds = [0.1, 0.25, 0.5, 1, 2, 4, 8, 16] as const;

/** Moves through the time of a report, independently of the display. */
export class Clock {
  time = 0;
  playing = false;
  speed = 1;

  constructor(
    readonly duration: number,
    private readonly moments: Float64Array,
  ) {}

  seek(time: number): void {
    this.time = Math.min(this.duration, Math.max(0, Number.isFinite(time) ? time : 0));
  }

  /** Moves to a neighbouring time at which new data begin. */
  step(count: number): void {
    this.playing = false;
    const tolerance = 1e-6;
    const at = this.moments.findIndex((moment) => moment > this.time + tolerance);
    const after = at < 0 ? this.moments.length : at;
    const isOnMoment = after > 0 && Math.abs(this.moments[after - 1] - this.time) <= tolerance;
    const index = count > 0 ? after + count - 1 : after + count - (isOnMoment ? 1 : 0);
    const last = this.moments.length - 1;
    if (last >= 0) {
      this.seek(this.moments[Math.min(last, Math.max(0, index))]);
    }
  }

  /** Starts or stops; at the end it starts again from the beginning. */
  toggle(): void {
    if (!this.playing && this.time >= this.duration) {
      this.time = 0;
    }
    this.playing = !this.playing;
  }

  /** Advances by elapsed wall time, s. */
  advance(elapsed: number): void {
    if (this.playing) {
      this.seek(this.time + elapsed * this.speed);
      this.playing = this.time < this.duration;
    }
  }

  /** Chooses a neighbouring speed. */
  changeSpeed(by: number): void {
    const at = speeds.findIndex((speed) => speed === this.speed);
    this.speed = speeds[Math.min(speeds.length - 1, Math.max(0, at + by))];
  }
}

/** The text of a tick of a time axis: 1:05, or 65 s. */
export function tickText(seconds: number, inMinutes: boolean): string {
  return inMinutes ? `${Math.floor(seconds / 60)}:${String(Math.round(seconds % 60)).padStart(2, '0')}` : `${seconds} s`;
}

/** A time as minutes, seconds and hundredths: 1:02.35. */
export function timeText(seconds: number): string {
  const hundredths = Math.round(Math.abs(seconds) * 100);
  const minutes = Math.floor(hundredths / 6000);
  const rest = ((hundredths % 6000) / 100).toFixed(2).padStart(5, '0');
  return `${seconds < 0 && hundredths > 0 ? '-' : ''}${minutes}:${rest}`;
}
