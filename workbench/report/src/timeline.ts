// SPDX-License-Identifier: Apache-2.0
// Lanes of the system tracks: lifetime, sensor tracks, confirmation, class, and identity switches.
import { Surface } from './canvas';
import { tickText } from './clock';
import { letterOf, type Life, type Model, type Run, type Stretch, type Switch } from './model';
import { trackColour, type Palette } from './palette';
import type { Selection, State } from './state';
import { traceDiamond } from './symbols';

export const laneHeight = 22;
const axisHeight = 20;
/** Width of the lanes' labels, pixels. */
export const gutter = 118;

export interface Lane {
  readonly run: number;
  readonly life: Life;
  readonly label: string;
  readonly switches: readonly Switch[];
}

/** What lanes are made of. */
export interface Lived {
  readonly isPair: boolean;
  readonly runs: readonly Pick<Run, 'lives' | 'judgement'>[];
}

export function lanesOf(model: Lived, withTentative: boolean): Lane[] {
  const lanes = model.runs.flatMap((run, index) =>
    run.lives
      .filter((life) => withTentative || !Number.isNaN(life.confirmed))
      .map((life) => ({
        run: index,
        life,
        label: `${model.isPair ? `${letterOf(index)} ` : ''}${life.id} ${mainClass(life.classes)}`,
        switches: (run.judgement?.switches ?? []).filter((change) => change.to === life.id || change.from === life.id),
      })),
  );
  // Tracks that were never confirmed come last.
  const rank = (lane: Lane) => (Number.isNaN(lane.life.confirmed) ? 1 : 0);
  return lanes.sort((a, b) => rank(a) - rank(b) || a.run - b.run);
}

/** The class that a track had for the longest total time. */
export function mainClass(classes: readonly Stretch<string>[]): string {
  const sums = new Map<string, number>();
  for (const { from, to, value } of classes) {
    sums.set(value, (sums.get(value) ?? 0) + to - from);
  }
  return [...sums].sort((a, b) => b[1] - a[1])[0]?.[0] ?? 'unknown';
}

/** Spacing of the ticks of an axis, a round number, s. */
export function tickSpacing(duration: number, width: number): number {
  const least = (duration / Math.max(1, width)) * 70;
  return [0.5, 1, 2, 5, 10, 20, 30, 60, 120, 300, 600, 1800, 3600].find((step) => step >= least) ?? 7200;
}

/** A part of the time, s. */
export interface Span {
  readonly from: number;
  readonly to: number;
}

/** The shortest part of the time that is shown, s. */
const leastSpan = 1;

/** A part of the time moved into that of the report. */
export function within({ from, to }: Span, duration: number): Span {
  const by = from < 0 ? -from : Math.min(0, duration - to);
  return { from: Math.max(0, from + by), to: Math.min(duration, to + by) };
}

/** A part of the time that is shorter by a factor, around a time. */
export function zoomed({ from, to }: Span, around: number, factor: number, duration: number): Span {
  const length = Math.min(duration, Math.max(Math.min(leastSpan, duration), (to - from) / factor));
  const share = (around - from) / Math.max(1e-9, to - from);
  const begin = around - share * length;
  return within({ from: begin, to: begin + length }, duration);
}

export class Timeline {
  readonly surface: Surface;
  lanes: readonly Lane[] = [];
  scroll = 0;
  /** The shown time, s. */
  span: Span;
  private readonly picture = document.createElement('canvas');
  private pictured: readonly unknown[] = [];

  /** @param summary what it shows, for those who do not see it */
  constructor(
    private readonly model: Pick<Model, 'duration'>,
    summary: string,
    private readonly textOfTick: (seconds: number, inMinutes: boolean) => string = tickText,
  ) {
    this.span = { from: 0, to: model.duration };
    this.surface = new Surface(`Timeline: ${summary}`);
  }

  get contentHeight(): number {
    return axisHeight + this.lanes.length * laneHeight;
  }

  scrollBy(amount: number): void {
    this.scroll = Math.min(Math.max(0, this.contentHeight - this.surface.height), Math.max(0, this.scroll + amount));
  }

  /** Scrolls a track's lane into view. */
  reveal(run: number, id: number): void {
    const index = this.indexOf(run, id);
    if (index >= 0) {
      const top = index * laneHeight;
      const room = this.surface.height - axisHeight - laneHeight;
      if (top < this.scroll || top > this.scroll + room) {
        this.scroll = 0;
        this.scrollBy(top - room / 2);
      }
    }
  }

  /** The lane before or after that of a selected system track; without one, the last or the first. */
  neighbourOf(selection: Selection | null, by: number): Lane | undefined {
    const at = selection?.kind === 'system' ? this.indexOf(selection.run, selection.id) : -1;
    return this.lanes[at < 0 ? (by > 0 ? 0 : this.lanes.length - 1) : at + by];
  }

  private indexOf(run: number, id: number): number {
    return this.lanes.findIndex((lane) => lane.run === run && lane.life.id === id);
  }

  laneAt(y: number): Lane | undefined {
    return y < axisHeight ? undefined : this.lanes[Math.floor((y - axisHeight + this.scroll) / laneHeight)];
  }

  timeAt(x: number): number {
    return this.span.from + ((x - gutter) / this.plotWidth) * (this.span.to - this.span.from);
  }

  private get plotWidth(): number {
    return Math.max(1, this.surface.width - gutter - 10);
  }

  /** The pixel of a time, at the nearest edge when it is not shown. */
  placeOf(time: number): number {
    return Math.min(gutter + this.plotWidth, Math.max(gutter, this.x(time)));
  }

  private x(time: number): number {
    return gutter + ((time - this.span.from) / Math.max(1e-9, this.span.to - this.span.from)) * this.plotWidth;
  }

  /** Shows another part of the time, with the time under a pixel at the same place. */
  zoomAt(x: number, factor: number): void {
    this.span = zoomed(this.span, this.timeAt(Math.max(gutter, x)), factor, this.model.duration);
  }

  /** Moves the shown part of the time, pixels. */
  panBy(pixels: number): void {
    const { from, to } = this.span;
    const by = (pixels / this.plotWidth) * (to - from);
    this.span = within({ from: from + by, to: to + by }, this.model.duration);
  }

  showAll(): void {
    this.span = { from: 0, to: this.model.duration };
  }

  /** Moves the shown part so that it has a time. */
  include(time: number): void {
    const { from, to } = this.span;
    if (time < from || time > to) {
      const half = (to - from) / 2;
      this.span = within({ from: time - half, to: time + half }, this.model.duration);
    }
  }

  draw(state: State, time: number, palette: Palette): void {
    if (!this.surface.begin()) {
      return;
    }
    this.scrollBy(0);
    const { context, height } = this.surface;
    // While scrubbing only the time line moves; the lanes are kept as a cached image.
    const shown = [this.lanes, this.scroll, this.surface.canvas.width, this.surface.canvas.height, state.selection, palette, this.span];
    if (shown.every((part, i) => part === this.pictured[i])) {
      context.drawImage(this.picture, 0, 0, this.surface.width, height);
    } else {
      this.drawLanes(state, palette);
      this.pictured = shown;
      this.picture.width = this.surface.canvas.width;
      this.picture.height = this.surface.canvas.height;
      this.picture.getContext('2d')?.drawImage(this.surface.canvas, 0, 0);
    }
    if (time < this.span.from || time > this.span.to) {
      return;
    }
    context.strokeStyle = palette.select;
    context.lineWidth = 1.5;
    context.beginPath();
    context.moveTo(this.x(time), 0);
    context.lineTo(this.x(time), height);
    context.stroke();
  }

  private drawLanes(state: State, palette: Palette): void {
    const { context, width, height } = this.surface;
    context.font = '11px system-ui, sans-serif';
    this.drawAxis(context, palette);
    context.save();
    context.beginPath();
    context.rect(0, axisHeight, width, height - axisHeight);
    context.clip();
    const from = Math.max(0, Math.floor(this.scroll / laneHeight));
    const to = Math.min(this.lanes.length, from + Math.ceil(height / laneHeight) + 1);
    for (let i = from; i < to; ++i) {
      this.drawLane(context, this.lanes[i], axisHeight + i * laneHeight - this.scroll, state, palette);
    }
    context.restore();
  }

  private drawAxis(context: CanvasRenderingContext2D, palette: Palette): void {
    context.fillStyle = palette.muted;
    context.strokeStyle = palette.line;
    const { from, to } = this.span;
    const spacing = tickSpacing(to - from, this.plotWidth);
    for (let time = Math.ceil(from / spacing - 1e-9) * spacing; time <= to + 1e-9; time += spacing) {
      const x = Math.round(this.x(time)) + 0.5;
      context.beginPath();
      context.moveTo(x, axisHeight - 5);
      context.lineTo(x, this.surface.height);
      context.globalAlpha = 0.6;
      context.stroke();
      context.globalAlpha = 1;
      const text = this.textOfTick(time, spacing >= 60 || this.model.duration >= 120);
      const isLast = x + 4 + context.measureText(text).width > this.surface.width;
      context.textAlign = isLast ? 'right' : 'left';
      context.fillText(text, isLast ? x - 3 : x + 3, 11);
      context.textAlign = 'left';
    }
  }

  private drawLane(context: CanvasRenderingContext2D, lane: Lane, top: number, state: State, palette: Palette): void {
    const { selection } = state;
    const isSelected = selection?.kind === 'system' && selection.run === lane.run && selection.id === lane.life.id;
    if (isSelected) {
      context.globalAlpha = 0.14;
      context.fillStyle = palette.select;
      context.fillRect(0, top, this.surface.width, laneHeight);
      context.globalAlpha = 1;
    }
    context.fillStyle = Number.isNaN(lane.life.confirmed) ? palette.muted : palette.text;
    context.fillText(lane.label, 10, top + 15, gutter - 18);

    context.save();
    context.beginPath();
    context.rect(gutter - 6, top, this.surface.width, laneHeight);
    context.clip();
    const bar = (stretch: { from: number; to: number }, y: number, height: number) =>
      context.fillRect(this.x(stretch.from), y, Math.max(1, this.x(stretch.to) - this.x(stretch.from)), height);
    for (const stretch of lane.life.standing) {
      context.fillStyle = trackColour(palette, lane.run, stretch.value);
      context.globalAlpha = stretch.value ? 0.85 : 0.35;
      bar(stretch, top + 4, 6);
    }
    for (const feed of lane.life.feeds) {
      context.fillStyle = palette[feed.value.source];
      context.globalAlpha = feed.value.coasting ? 0.25 : 0.95;
      bar(feed, top + (feed.value.source === 'video' ? 11 : 15), 3);
    }
    context.globalAlpha = 1;

    context.fillStyle = palette.text;
    if (!Number.isNaN(lane.life.confirmed)) {
      const x = this.x(lane.life.confirmed);
      context.beginPath();
      context.moveTo(x - 4, top + 1);
      context.lineTo(x + 4, top + 1);
      context.lineTo(x, top + 7);
      context.closePath();
      context.fill();
    }
    for (const change of lane.life.classes.slice(1)) {
      context.fillRect(this.x(change.from) - 0.5, top + 2, 1.5, laneHeight - 4);
    }
    context.fillStyle = palette.alarm;
    for (const change of lane.switches) {
      const x = this.x(change.time);
      const y = top + laneHeight / 2;
      traceDiamond(context, x, y, 6);
      if (change.to === lane.life.id) {
        context.fill();
      } else {
        context.strokeStyle = palette.alarm;
        context.lineWidth = 1.5;
        context.stroke();
        context.lineWidth = 1;
      }
    }
    context.restore();
  }
}
