// SPDX-License-Identifier: Apache-2.0
// A canvas as sharp as the screen, and a record of what was drawn on it.

/** Something that stands for an object of the report. */
export interface Mark {
  readonly kind: 'system' | 'tentative' | 'video' | 'radar' | 'truth';
  readonly id: number;
  /** Centre, CSS pixels. */
  readonly x: number;
  readonly y: number;
  /** Box, CSS pixels, when it is one. */
  readonly box?: { readonly left: number; readonly top: number; readonly width: number; readonly height: number };
}

export class Surface {
  readonly canvas: HTMLCanvasElement;
  readonly context: CanvasRenderingContext2D;
  width = 0;
  height = 0;
  marks: Mark[] = [];
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

  /** Takes the size that the style sheet gives; false when there is no room. */
  begin(): boolean {
    const { clientWidth, clientHeight } = this.canvas;
    this.width = clientWidth;
    this.height = clientHeight;
    this.marks = [];
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

/** A label on a small plate, so that it stays readable over lines. */
export function plate(context: CanvasRenderingContext2D, text: string, x: number, y: number, ink: string, ground: string): void {
  const width = context.measureText(text).width;
  context.globalAlpha = 0.82;
  context.fillStyle = ground;
  context.fillRect(x - 3, y - 10, width + 6, 14);
  context.globalAlpha = 1;
  context.fillStyle = ink;
  context.fillText(text, x, y + 1);
}
