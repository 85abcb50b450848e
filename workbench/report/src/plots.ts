// SPDX-License-Identifier: Apache-2.0
// Plots values over time.
import uPlot from 'uplot';
import { tickText, timeText } from './clock';
import { button, element } from './dom';
import { countsOf, letterOf, type Model, type Run } from './model';
import { runColour, type Palette } from './palette';
import { savePng, saveSvg } from './save';
import type { Selection } from './state';
import { svgOf, type Line } from './svg';
import { lastNotAfter } from './table';
import type { Span } from './timeline';

/** The axis of a plot's values. */
export interface ValueScale {
  readonly least: number;
  /** Null: as the values need. */
  readonly most: number | null;
  /** Whether only whole numbers make sense. */
  readonly isWhole: boolean;
  /** As written behind a value. */
  readonly unit: string;
}

/** Distances of the labels of whole numbers. */
const wholeSteps = [1, 2, 5, 10, 20, 50, 100, 200, 500, 1000, 2000, 5000];

/** Largest number of drawn points per series, about that of a wide screen's pixels. */
const mostPoints = 4000;

/** Thins out a series, keeping minimum and maximum of every group of points. */
export function thin(times: Float64Array, values: Float64Array, most: number): [Float64Array, Float64Array] {
  if (times.length <= most) {
    return [times, values];
  }
  const kept: number[] = [];
  const group = Math.ceil((2 * times.length) / most);
  for (let begin = 0; begin < times.length; begin += group) {
    const end = Math.min(times.length, begin + group);
    let [low, high] = [begin, begin];
    for (let i = begin; i < end; ++i) {
      low = values[i] < values[low] ? i : low;
      high = values[i] > values[high] ? i : high;
    }
    kept.push(...(low === high ? [low] : low < high ? [low, high] : [high, low]));
  }
  return [Float64Array.from(kept, (i) => times[i]), Float64Array.from(kept, (i) => values[i])];
}

/** The probability of a system track over its lifetime, with NaN at both ends. */
export function probabilityOf(run: Run, id: number): { times: Float64Array; values: Float64Array } {
  const life = run.life(id);
  if (!life) {
    return { times: new Float64Array(0), values: new Float64Array(0) };
  }
  const { tracks } = run;
  const [begin, end] = [tracks.first[life.track], tracks.first[life.track + 1]];
  const probability = tracks.column('probability');
  return {
    times: Float64Array.from({ length: end - begin }, (_, i) => run.times[tracks.frame[begin + i]]),
    values: Float64Array.from(probability.subarray(begin, end)),
  };
}

export function gospaSeries(model: Model, palette: Palette): Line[] {
  return model.runs.flatMap((run, index) =>
    run.judgement
      ? [{ label: nameOf(model, index), colour: runColour(palette, index), times: run.judgement.times, values: run.judgement.gospa }]
      : [],
  );
}

export function countSeries(model: Model, palette: Palette): Line[] {
  const series: Line[] = [];
  if (model.truth) {
    const counts = new Float64Array(model.truth.table.frames);
    model.truth.table.frame.forEach((frame) => ++counts[frame]);
    series.push({ label: 'objects', colour: palette.truth, times: model.truth.times, values: counts });
  }
  model.runs.forEach((run, index) => {
    const { confirmed, tentative } = countsOf(run);
    const name = model.isPair ? ` ${letterOf(index)}` : '';
    series.push(
      { label: `confirmed${name}`, colour: runColour(palette, index), times: run.times, values: confirmed },
      { label: `tentative${name}`, colour: runColour(palette, index), dash: [2, 4], times: run.times, values: tentative },
    );
  });
  return series;
}

export function probabilitySeries(model: Model, selection: Selection | null, palette: Palette): Line[] {
  if (selection?.kind !== 'system') {
    return [];
  }
  const { times, values } = probabilityOf(model.runs[selection.run], selection.id);
  return [{ label: `track ${selection.id}`, colour: runColour(palette, selection.run), times, values }];
}

function nameOf(model: Model, run: number): string {
  return model.isPair ? letterOf(run) : 'fusion';
}

/** What a plot shows, in words. */
export function rangeText(series: readonly Line[]): string {
  return series.map(({ label, values }) => {
    const known = values.filter((value) => !Number.isNaN(value));
    const least = known.reduce((a, b) => Math.min(a, b), Infinity);
    const most = known.reduce((a, b) => Math.max(a, b), -Infinity);
    return known.length === 0 ? `${label}: no values` : `${label}: ${least.toFixed(2)} to ${most.toFixed(2)}`;
  }).join('; ') || 'no data';
}

/** A plot with its title, or a hint how to get data when it has no series. */
export class Plot {
  readonly root: HTMLElement;
  private readonly holder = element('div', { class: 'plot-area', role: 'img' });
  private readonly keys = element('div', { class: 'plot-keys' });
  private readonly saveButtons = element('span', { class: 'saves' },
    button('SVG', 'Save the plot as SVG', () => saveSvg(this.title, this.drawing()), { class: 'save' }),
    button('PNG', 'Save the plot as PNG', () => void savePng(this.title, this.drawing()), { class: 'save' }));
  private plot: uPlot | null = null;
  private series: readonly Line[] = [];
  private palette: Palette | null = null;
  private currentTime = 0;
  private span: Span;
  private labelled: readonly string[] = [];

  constructor(
    private readonly title: string,
    duration: number,
    private readonly empty: string,
    private readonly scale: ValueScale,
    private readonly seek: (time: number) => void,
  ) {
    this.span = { from: 0, to: duration };
    this.root = element('section', { class: 'plot', 'aria-label': title }, element('header', {}, element('h2', {}, title), this.keys, this.saveButtons), this.holder);
  }

  /** Number of drawn points, for tests. */
  get points(): number {
    return this.plot ? this.series.reduce((sum, { times }) => sum + times.length, 0) : 0;
  }

  show(series: readonly Line[], palette: Palette): void {
    this.series = series;
    this.palette = palette;
    this.rebuild();
  }

  /** The values of the axis that are labelled, for tests. */
  get labels(): readonly string[] {
    return this.labelled;
  }

  /** The time and the values at a place in the area of the lines, with units; none elsewhere. */
  linesAt(x: number, part: EventTarget | null): readonly string[] {
    if (!this.plot || part !== this.plot.over) {
      return [];
    }
    const time = this.plot.posToVal(x, 'x');
    const { isWhole, unit } = this.scale;
    return [timeText(time), ...this.series.map(({ label, times, values }) => {
      const value = values[lastNotAfter(times, time)] ?? NaN;
      return `${label}: ${Number.isNaN(value) ? '–' : `${value.toFixed(isWhole ? 0 : 2)}${unit}`}`;
    })];
  }

  /** Draws the time, and everything when its container has changed size. */
  draw(time: number, span: Span): void {
    this.currentTime = time;
    if (span !== this.span) {
      this.span = span;
      this.plot?.setScale('x', { min: span.from, max: span.to });
    }
    const { clientWidth, clientHeight } = this.holder;
    if (this.plot && clientWidth > 0 && (this.plot.width !== clientWidth || this.plot.height !== clientHeight)) {
      // Draws, too; redraw() in the same turn would keep the axes of the old size.
      this.plot.setSize({ width: clientWidth, height: clientHeight });
    } else if (!this.plot && clientWidth > 0 && this.series.length > 0) {
      this.rebuild();
    } else {
      this.plot?.redraw(false);
    }
  }

  private rebuild(): void {
    this.plot?.destroy();
    this.plot = null;
    this.holder.replaceChildren();
    this.holder.setAttribute('aria-label', rangeText(this.series));
    this.saveButtons.hidden = this.series.length === 0;
    this.keys.replaceChildren(
      ...this.series.map(({ label, colour, dash }) => {
        const swatch = element('i', { class: dash ? 'swatch dashed' : 'swatch' });
        swatch.style.color = colour;
        return element('span', {}, swatch, label);
      }),
    );
    if (this.series.length === 0) {
      this.holder.append(element('p', { class: 'empty' }, this.empty));
      return;
    }
    const { clientWidth, clientHeight } = this.holder;
    if (clientWidth > 0 && this.palette) {
      this.plot = new uPlot(this.options(clientWidth, clientHeight, this.palette), this.join(), this.holder);
    }
  }

  /** The shown part of the time, for documents. */
  private drawing(): string {
    const { least, most, isWhole } = this.scale;
    const highest = this.series.reduce((top, { values }) => values.reduce((a, b) => (b > a ? b : a), top), 0);
    return svgOf({ title: this.title, lines: this.series, span: this.span, least, most: most ?? Math.max(1, highest * 1.08), isWhole });
  }

  /** Joins series with individual times on one axis. */
  private join(): uPlot.AlignedData {
    const tables = this.series.map(({ times, values }) => {
      const [x, y] = thin(times, values, mostPoints);
      return [Array.from(x), Array.from(y, (value) => (Number.isNaN(value) ? null : value))] as uPlot.AlignedData;
    });
    return uPlot.join(tables, tables.map(() => [2, 2])) as uPlot.AlignedData;
  }

  private options(width: number, height: number, palette: Palette): uPlot.Options {
    const axis = { stroke: palette.muted, grid: { stroke: palette.line, width: 1 }, ticks: { stroke: palette.line, width: 1, size: 4 }, font: '11px system-ui, sans-serif' };
    const { least, most, isWhole } = this.scale;
    return {
      width,
      height,
      legend: { show: false },
      cursor: { y: false, drag: { x: false, y: false } },
      scales: {
        x: { time: false, range: () => [this.span.from, this.span.to] },
        y: { range: (_, __, highest) => [least, most ?? Math.max(1, highest * 1.08)] },
      },
      axes: [
        { ...axis, size: 22, values: (_, ticks) => ticks.map((tick) => tickText(tick, this.span.to >= 180)) },
        {
          ...axis,
          size: 36,
          // Close enough that a low plot has more than its lowest value labelled.
          space: 16,
          values: (_, ticks) => (this.labelled = ticks.map((tick) => tick.toLocaleString('en'))),
          ...(isWhole && { incrs: wholeSteps }),
        },
      ],
      series: [
        {},
        ...this.series.map(({ label, colour, dash }) => ({ label, stroke: colour, width: 1.5, spanGaps: true, points: { show: false }, ...(dash && { dash }) })),
      ],
      hooks: {
        draw: [
          (plot) => {
            const x = plot.valToPos(this.currentTime, 'x', true);
            plot.ctx.save();
            // The last series may have been dashed.
            plot.ctx.setLineDash([]);
            plot.ctx.strokeStyle = palette.select;
            plot.ctx.lineWidth = 1.5 * devicePixelRatio;
            plot.ctx.beginPath();
            plot.ctx.moveTo(x, plot.bbox.top);
            plot.ctx.lineTo(x, plot.bbox.top + plot.bbox.height);
            plot.ctx.stroke();
            plot.ctx.restore();
          },
        ],
        ready: [
          (plot) => plot.over.addEventListener('click', (event) => this.seek(plot.posToVal(event.offsetX, 'x'))),
        ],
      },
    };
  }
}
