// SPDX-License-Identifier: Apache-2.0
// The scene in the image plane: boxes on the normalised image plane, over the camera's picture where there is one.
import { Plates, Surface, type Label, type Mark } from './canvas';
import type { Point } from './data';
import { isDoubtful } from './doubt';
import { hasCoasted, type Model, type Run } from './model';
import { trackColour, type Palette } from './palette';
import { isSelected, shownAt, trackLabel } from './scene';
import type { State } from './state';
import { traceCross, traceDiamond } from './symbols';

/** Maps the image plane (-1..1, right and up) to pixels, with the aspect ratio of the camera. */
export interface Frame {
  readonly left: number;
  readonly top: number;
  readonly width: number;
  readonly height: number;
}

export function frameIn(width: number, height: number, aspect: number): Frame {
  const used = Math.min(width, height * aspect);
  return { left: (width - used) / 2, top: (height - used / aspect) / 2, width: used, height: used / aspect };
}

export function toPixel(frame: Frame, u: number, v: number): Point {
  return [frame.left + ((u + 1) / 2) * frame.width, frame.top + ((1 - v) / 2) * frame.height];
}

interface BoxColumns {
  readonly left: Float32Array;
  readonly bottom: Float32Array;
  readonly right: Float32Array;
  readonly top: Float32Array;
}

export class ImageView {
  readonly surface: Surface;
  /** The camera's picture. */
  backdrop: CanvasImageSource | null = null;

  constructor(
    private readonly model: Model,
    private readonly run: Run,
    private readonly index: number,
  ) {
    this.surface = new Surface(`Image view of ${run.label}`);
  }

  draw(state: State, time: number, palette: Palette): void {
    if (!this.surface.begin()) {
      return;
    }
    const { context, width, height } = this.surface;
    const frame = frameIn(width, height, this.model.scene.aspect);
    context.font = '11px system-ui, sans-serif';
    context.save();
    context.beginPath();
    context.rect(frame.left, frame.top, frame.width, frame.height);
    context.fillStyle = palette.ground;
    context.fill();
    context.clip();
    if (this.backdrop) {
      this.drawBackdrop(this.backdrop, context, frame);
    }
    this.drawRings(context, frame, palette);
    const shown = shownAt(this.model, this.run, state, time);
    this.drawVideo(context, frame, shown.video, state, palette);
    this.drawSystem(context, frame, shown.system, state, palette);
    this.drawRadar(context, frame, shown.radar, state, palette);
    this.drawTruth(context, frame, shown.truth, state, palette);
    context.restore();
    context.strokeStyle = palette.ring;
    context.strokeRect(frame.left + 0.5, frame.top + 0.5, frame.width - 1, frame.height - 1);
  }

  /** Paler than it is, so that lines and texts keep their contrast. */
  private drawBackdrop(picture: CanvasImageSource, context: CanvasRenderingContext2D, frame: Frame): void {
    context.globalAlpha = 0.7;
    context.drawImage(picture, frame.left, frame.top, frame.width, frame.height);
    context.globalAlpha = 1;
  }

  /** Draws lines of equal ground distance, which give depth to the empty image. */
  private drawRings(context: CanvasRenderingContext2D, frame: Frame, palette: Palette): void {
    context.strokeStyle = palette.ring;
    context.fillStyle = palette.muted;
    let lowest = Infinity;
    for (const { distance, image } of this.model.scene.rings) {
      if (image.length < 2) {
        continue;
      }
      context.beginPath();
      image.forEach(([u, v]) => context.lineTo(...toPixel(frame, u, v)));
      context.stroke();
      const [x, y] = toPixel(frame, ...image[Math.floor(image.length / 2)]);
      // Towards the horizon the lines are dense; labels those with enough room.
      if (y < lowest - 13) {
        context.fillText(`${distance} m`, x + 3, y - 3);
        lowest = y;
      }
    }
  }

  private drawVideo(context: CanvasRenderingContext2D, frame: Frame, rows: Int32Array, state: State, palette: Palette): void {
    const { table } = this.model.video;
    const columns = boxColumns(table);
    const [u, v, coasting, ids] = [table.column('u'), table.column('v'), table.column('coasting'), table.key('id')];
    context.strokeStyle = palette.video;
    for (const row of rows) {
      const box = boxOf(frame, columns, row);
      context.globalAlpha = hasCoasted(coasting[row]) ? 0.45 : 0.95;
      const [x, y] = box ? [box.left + box.width / 2, box.top + box.height / 2] : toPixel(frame, u[row], v[row]);
      if (box) {
        context.strokeRect(box.left - 2, box.top - 2, box.width + 4, box.height + 4);
      } else {
        context.strokeRect(x - 4, y - 4, 8, 8);
      }
      context.globalAlpha = 1;
      this.record({ kind: 'video', id: ids[table.track[row]], x, y, ...(box && { box }) }, state, palette);
    }
  }

  private drawSystem(context: CanvasRenderingContext2D, frame: Frame, rows: Int32Array, state: State, palette: Palette): void {
    const { tracks } = this.run;
    const columns = boxColumns(tracks);
    const [confirmed, classes, ids] = [tracks.column('confirmed'), tracks.column('class'), tracks.key('id')];
    const labels: Label[] = [];
    for (const row of rows) {
      const box = boxOf(frame, columns, row);
      if (!box) {
        continue;
      }
      const isConfirmed = confirmed[row] === 1;
      const isDoubted = isDoubtful(this.run, row);
      const id = ids[tracks.track[row]];
      const ink = trackColour(palette, this.index, isConfirmed);
      context.strokeStyle = ink;
      context.fillStyle = ink;
      context.setLineDash(isDoubted ? [8, 4] : isConfirmed ? [] : [3, 3]);
      context.lineWidth = isConfirmed ? 2 : 1;
      context.globalAlpha = isConfirmed ? 0.1 : 0.04;
      context.fillRect(box.left, box.top, box.width, box.height);
      context.globalAlpha = 1;
      context.strokeRect(box.left, box.top, box.width, box.height);
      context.setLineDash([]);
      context.lineWidth = 1;
      const mark: Mark = {
        kind: isConfirmed ? 'system' : 'tentative',
        id,
        x: box.left + box.width / 2,
        y: box.top + box.height / 2,
        box,
      };
      const selected = isSelected(state.selection, mark, this.index);
      if (isConfirmed || selected) {
        const { left, top, width, height } = box;
        labels.push(trackLabel(id, this.model.word(classes[row]), ink, [
          [left, top - 6, 'left'], [left + width, top - 6, 'right'], [left, top + height + 15, 'left'], [left, top - 21, 'left'],
        ], selected, isDoubted));
      }
      this.record(mark, state, palette);
    }
    new Plates(this.surface, palette.ground).write(labels);
  }

  private drawRadar(context: CanvasRenderingContext2D, frame: Frame, rows: Int32Array, state: State, palette: Palette): void {
    const { table } = this.model.radar;
    const [u, v, coasting, ids] = [table.column('u'), table.column('v'), table.column('coasting'), table.key('id')];
    context.strokeStyle = palette.radar;
    for (const row of rows) {
      const [x, y] = toPixel(frame, u[row], v[row]);
      context.globalAlpha = hasCoasted(coasting[row]) ? 0.45 : 0.95;
      context.lineWidth = 1.5;
      traceDiamond(context, x, y, 5);
      context.stroke();
      context.lineWidth = 1;
      context.globalAlpha = 1;
      this.record({ kind: 'radar', id: ids[table.track[row]], x, y }, state, palette);
    }
  }

  private drawTruth(context: CanvasRenderingContext2D, frame: Frame, rows: Int32Array, state: State, palette: Palette): void {
    const table = this.model.truth?.table;
    if (!table) {
      return;
    }
    const [u, v, ids] = [table.column('u'), table.column('v'), table.key('id')];
    context.strokeStyle = palette.truth;
    context.lineWidth = 1.5;
    for (const row of rows) {
      if (Number.isNaN(u[row])) {
        continue;
      }
      const [x, y] = toPixel(frame, u[row], v[row]);
      traceCross(context, x, y, 4);
      context.stroke();
      this.record({ kind: 'truth', id: ids[table.track[row]], x, y }, state, palette);
    }
    context.lineWidth = 1;
  }

  private record(mark: Mark, state: State, palette: Palette): void {
    this.surface.record(mark, isSelected(state.selection, mark, this.index) ? palette.select : null, 10);
  }
}

function boxColumns(table: { column(name: string): Float32Array }): BoxColumns {
  return {
    left: table.column('left'),
    bottom: table.column('bottom'),
    right: table.column('right'),
    top: table.column('top'),
  };
}

function boxOf(frame: Frame, columns: BoxColumns, row: number): NonNullable<Mark['box']> | null {
  if (Number.isNaN(columns.left[row])) {
    return null;
  }
  const [left, top] = toPixel(frame, columns.left[row], columns.top[row]);
  const [right, bottom] = toPixel(frame, columns.right[row], columns.bottom[row]);
  return { left, top, width: right - left, height: bottom - top };
}
