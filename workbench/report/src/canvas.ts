// SPDX-License-Identifier: Apache-2.0
// A canvas at the screen's resolution, with a list of the marks drawn on it.

import type { SourceName } from './vocabulary';

/** Something that stands for an object of the report. */
export interface Mark {
  readonly kind: 'system' | 'tentative' | SourceName | 'truth';
  readonly id: number;
  /** Centre, CSS pixels. */
  readonly x: number;
  readonly y: number;
  /** Box, CSS pixels, if it has one. */
  readonly box?: { readonly left: number; readonly top: number; readonly width: number; readonly height: number };
}

export class Surface {
  readonly canvas: HTMLCanvasElement;
  readonly context: CanvasRenderingContext2D;
  width = 0;
  height = 0;
  marks: Mark[] = [];
  labels: Plate[] = [];
  private ratio = 1;

  constructor(label: string) {
    this.canvas = document.createElement('canvas');
    this.canvas.setAttribute('role', 'img');
    this.canvas.setAttribute('aria-label', label);
    const context = this.canvas.getContext('2d');
    if (!context) {
      throw new Error('this browser has no canvas');
    }
    this.context = context;
  }

  /** Tells those who do not see it what is drawn. */
  describe(text: string): void {
    if (this.canvas.getAttribute('aria-label') !== text) {
      this.canvas.setAttribute('aria-label', text);
    }
  }

  /** Adopts the size given by the style sheet; false when it is empty. */
  begin(): boolean {
    const { clientWidth, clientHeight } = this.canvas;
    this.width = clientWidth;
    this.height = clientHeight;
    this.marks = [];
    this.labels = [];
    if (clientWidth === 0 || clientHeight === 0) {
      return false;
    }
    this.ratio = window.devicePixelRatio || 1;
    const width = Math.round(clientWidth * this.ratio);
    const height = Math.round(clientHeight * this.ratio);
    if (this.canvas.width !== width || this.canvas.height !== height) {
      this.canvas.width = width;
      this.canvas.height = height;
    }
    this.context.setTransform(this.ratio, 0, 0, this.ratio, 0, 0);
    this.context.clearRect(0, 0, clientWidth, clientHeight);
    this.context.lineWidth = 1;
    this.context.setLineDash([]);
    this.context.globalAlpha = 1;
    return true;
  }

  /** Notes what was drawn; with a highlight colour, draws a frame around its box, or a circle. */
  record(mark: Mark, highlight: string | null, radius: number): void {
    this.marks.push(mark);
    if (highlight === null) {
      return;
    }
    const { context } = this;
    context.save();
    context.strokeStyle = highlight;
    context.lineWidth = 2;
    if (mark.box) {
      context.strokeRect(mark.box.left - 5, mark.box.top - 5, mark.box.width + 10, mark.box.height + 10);
    } else {
      context.beginPath();
      context.arc(mark.x, mark.y, radius, 0, 2 * Math.PI);
      context.stroke();
    }
    context.restore();
  }

  /** The mark nearest to a point; boxes count by their inside, and small ones come first. */
  hit(x: number, y: number, reach: number): Mark | null {
    const rank = { system: 0, tentative: 0.2, video: 0.4, radar: 0.4, truth: 0.6 };
    let best: Mark | null = null;
    let least = Infinity;
    for (const mark of this.marks) {
      let distance = Math.hypot(mark.x - x, mark.y - y);
      const box = mark.box;
      if (box && x >= box.left && x <= box.left + box.width && y >= box.top && y <= box.top + box.height) {
        distance = Math.min(distance, 1 + Math.sqrt(box.width * box.height) / 100);
      }
      if (distance > reach) {
        continue;
      }
      const cost = distance + 6 * rank[mark.kind];
      if (cost < least) {
        least = cost;
        best = mark;
      }
    }
    return best;
  }
}

/** A written label and its place, CSS pixels. */
export interface Plate {
  readonly text: string;
  readonly left: number;
  readonly top: number;
  readonly right: number;
  readonly bottom: number;
}

type Offset = readonly [x: number, y: number, align: 'left' | 'right'];

/** The name of an object beside it. */
export interface Label {
  /** From the best to the shortest. */
  readonly texts: readonly string[];
  readonly ink: string;
  /** Where it may stand, the best first. */
  readonly places: readonly Offset[];
  /** Labels of lower rank come first; those of rank 0 are written even where there is no room. */
  readonly rank: number;
}

/**
 * Writes labels on opaque plates that do not overlap: where there is no room for one, a shorter text is tried, then it
 * yields.
 */
export class Plates {
  constructor(
    private readonly surface: Surface,
    private readonly ground: string,
  ) {}

  write(labels: readonly Label[]): void {
    for (const label of [...labels].sort((a, b) => a.rank - b.rank)) {
      const plate = this.plateOf(label);
      if (plate) {
        this.surface.labels.push(plate);
        this.draw(plate, label.ink);
      }
    }
  }

  private plateOf({ texts, places, rank }: Label): Plate | undefined {
    const plates = texts.flatMap((text) => {
      const width = this.surface.context.measureText(text).width + 6;
      return places.map(([x, y, align]) => {
        const left = align === 'left' ? x - 3 : x + 3 - width;
        return { text, left, top: y - 11, right: left + width, bottom: y + 4 };
      });
    });
    const { width, height, labels } = this.surface;
    const isFree = (plate: Plate) =>
      plate.left >= 0 && plate.top >= 0 && plate.right <= width && plate.bottom <= height && !labels.some((other) => overlap(plate, other));
    return plates.find(isFree) ?? (rank === 0 ? plates[0] : undefined);
  }

  private draw({ text, left, top, right, bottom }: Plate, ink: string): void {
    const { context } = this.surface;
    context.globalAlpha = 0.82;
    context.fillStyle = this.ground;
    context.fillRect(left, top, right - left, bottom - top);
    context.globalAlpha = 1;
    context.fillStyle = ink;
    context.fillText(text, left + 3, top + 11.5);
  }
}

function overlap(a: Plate, b: Plate): boolean {
  return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}
