// SPDX-License-Identifier: Apache-2.0
// The ground in plan view: metres, device at the origin, forward is up.
import { Plates, Surface, type Label, type Mark } from './canvas';
import type { Point } from './data';
import { isDoubtful } from './doubt';
import { MapTiles } from './maptiles';
import { hasCoasted, type Model, type Run } from './model';
import { trackColour, type Palette } from './palette';
import { drawAxes, drawNorth } from './planaxes';
import { ellipseScale, isSelected, shownAt, trackLabel } from './scene';
import type { State } from './state';
import { traceCross, traceDiamond } from './symbols';
import type { SourceName } from './vocabulary';

/** Length of trails, s. */
const trail = 4;

/** Maps metres to pixels. Device frame: x forward is up, y left is left. */
export interface Transform {
  scale: number;
  left: number;
  top: number;
}

export function toScreen(transform: Transform, x: number, y: number): Point {
  return [transform.left - y * transform.scale, transform.top - x * transform.scale];
}

/** The shown part of the ground. */
export interface Extent {
  readonly back: number;
  readonly front: number;
  readonly right: number;
  readonly left: number;
}

export function extentOf(model: Model): Extent {
  let [back, front, right, left] = [0, 10, -5, 5];
  const include = (x: number, y: number) => {
    if (Number.isFinite(x) && Number.isFinite(y)) {
      back = Math.min(back, x);
      front = Math.max(front, x);
      right = Math.min(right, y);
      left = Math.max(left, y);
    }
  };
  const limit = model.scene.radar.range;
  for (const run of model.runs) {
    const [x, y, confirmed] = [run.tracks.column('x'), run.tracks.column('y'), run.tracks.column('confirmed')];
    for (let row = 0; row < run.tracks.rows; ++row) {
      if (confirmed[row] === 1 && Math.hypot(x[row], y[row]) < limit) {
        include(x[row], y[row]);
      }
    }
  }
  if (model.truth) {
    const { table } = model.truth;
    const [x, y] = [table.column('x'), table.column('y')];
    for (let row = 0; row < table.rows; ++row) {
      include(x[row], y[row]);
    }
  }
  return { back, front, right, left };
}

export class Plan {
  readonly surface: Surface;
  readonly map: MapTiles | null;
  private zoom = 1;
  private offset: Point = [0, 0];

  constructor(
    private readonly model: Model,
    private readonly run: Run,
    private readonly index: number,
    private readonly extent: Extent = extentOf(model),
    changed: () => void = () => undefined,
  ) {
    this.surface = new Surface(`Plan view of ${run.label}`);
    const { map, scene } = model.data;
    this.map = map && scene.earth ? new MapTiles(map, scene.earth, changed) : null;
  }

  get isFitted(): boolean {
    return this.zoom === 1 && this.offset[0] === 0 && this.offset[1] === 0;
  }

  fit(): void {
    this.zoom = 1;
    this.offset = [0, 0];
  }

  pan(dx: number, dy: number): void {
    this.offset = [this.offset[0] + dx, this.offset[1] + dy];
  }

  /** Zooms about the ground point under a pixel. */
  zoomAt(x: number, y: number, factor: number): void {
    const zoom = Math.min(40, Math.max(0.2, this.zoom * factor));
    const applied = zoom / this.zoom;
    const base = this.fitted();
    const [left, top] = [base.left + this.offset[0], base.top + this.offset[1]];
    this.zoom = zoom;
    this.offset = [x - (x - left) * applied - base.left, y - (y - top) * applied - base.top];
  }

  transform(): Transform {
    const base = this.fitted();
    return {
      scale: base.scale * this.zoom,
      left: base.left + this.offset[0],
      top: base.top + this.offset[1],
    };
  }

  private fitted(): Transform {
    const { back, front, right, left } = this.extent;
    const margin = 30;
    const width = Math.max(40, this.surface.width - 2 * margin);
    const height = Math.max(40, this.surface.height - 2 * margin);
    const scale = Math.min(width / (left - right), height / (front - back));
    return {
      scale,
      left: this.surface.width / 2 + (scale * (left + right)) / 2,
      top: this.surface.height / 2 + (scale * (front + back)) / 2,
    };
  }

  draw(state: State, time: number, palette: Palette): void {
    if (!this.surface.begin()) {
      return;
    }
    const { context } = this.surface;
    context.font = '11px system-ui, sans-serif';
    const transform = this.transform();
    const { width, height } = this.surface;
    if (state.layers.map) {
      this.map?.draw(context, transform, width, height);
    }
    this.drawGround(context, transform, palette);
    drawAxes(context, transform, width, height, palette);
    const { earth } = this.model.scene;
    if (earth) {
      drawNorth(context, earth.heading, 24, 62, palette);
    }
    const shown = shownAt(this.model, this.run, state, time);
    if (state.layers.trails) {
      this.drawTrails(context, transform, shown.system, palette);
    }
    this.drawTruth(context, transform, shown.truth, state, palette);
    this.drawSensor('video', context, transform, shown.video, state, palette);
    this.drawSensor('radar', context, transform, shown.radar, state, palette);
    this.drawSystem(context, transform, shown.system, state, palette);
  }

  private drawGround(context: CanvasRenderingContext2D, transform: Transform, palette: Palette): void {
    const { camera, radar, rings } = this.model.scene;
    const polygon = (points: readonly Point[]) => {
      context.beginPath();
      points.forEach(([x, y]) => context.lineTo(...toScreen(transform, x, y)));
      context.closePath();
    };
    const [rx, ry] = toScreen(transform, ...radar.position);
    const forward = -Math.PI / 2 - (radar.yaw * Math.PI) / 180;
    const half = (Math.min(360, radar.fieldOfView) * Math.PI) / 360;
    context.beginPath();
    context.moveTo(rx, ry);
    context.arc(rx, ry, radar.range * transform.scale, forward - half, forward + half);
    context.closePath();
    fillAndStroke(context, palette.radar, 0.05, 0.4);
    if (camera.footprint.length > 2) {
      polygon(camera.footprint);
      fillAndStroke(context, palette.video, 0.06, 0.45);
    }

    const [ox, oy] = toScreen(transform, ...camera.position);
    context.strokeStyle = palette.ring;
    context.fillStyle = palette.muted;
    for (const { distance } of rings) {
      context.beginPath();
      context.arc(ox, oy, distance * transform.scale, 0, 2 * Math.PI);
      context.stroke();
      context.fillText(`${distance} m`, ox + 4, oy - distance * transform.scale - 4);
    }
    context.fillStyle = palette.text;
    context.beginPath();
    context.moveTo(ox, oy - 8);
    context.lineTo(ox + 6, oy + 6);
    context.lineTo(ox, oy + 3);
    context.lineTo(ox - 6, oy + 6);
    context.closePath();
    context.fill();
  }

  private drawTrails(context: CanvasRenderingContext2D, transform: Transform, rows: Int32Array, palette: Palette): void {
    const { tracks, times } = this.run;
    const [x, y, confirmed] = [tracks.column('x'), tracks.column('y'), tracks.column('confirmed')];
    for (const now of rows) {
      context.beginPath();
      const begin = tracks.first[tracks.track[now]];
      const oldest = times[tracks.frame[now]] - trail;
      for (let row = now; row >= begin && times[tracks.frame[row]] >= oldest; --row) {
        if (!Number.isNaN(x[row])) {
          context.lineTo(...toScreen(transform, x[row], y[row]));
        }
      }
      context.strokeStyle = trackColour(palette, this.index, confirmed[now] === 1);
      context.globalAlpha = 0.45;
      context.lineWidth = 1.5;
      context.stroke();
    }
    context.globalAlpha = 1;
    context.lineWidth = 1;
  }

  private drawTruth(context: CanvasRenderingContext2D, transform: Transform, rows: Int32Array, state: State, palette: Palette): void {
    const table = this.model.truth?.table;
    if (!table) {
      return;
    }
    const [x, y, ids] = [table.column('x'), table.column('y'), table.key('id')];
    context.strokeStyle = palette.truth;
    context.lineWidth = 1.5;
    for (const row of rows) {
      const [px, py] = toScreen(transform, x[row], y[row]);
      const mark: Mark = { kind: 'truth', id: ids[table.track[row]], x: px, y: py };
      traceCross(context, px, py, 5);
      context.stroke();
      this.record(mark, state, palette);
    }
    context.lineWidth = 1;
  }

  private drawSensor(
    kind: SourceName,
    context: CanvasRenderingContext2D,
    transform: Transform,
    rows: Int32Array,
    state: State,
    palette: Palette,
  ): void {
    const table = this.model.seen(kind).table;
    const [x, y, ids, coasting] = [table.column('x'), table.column('y'), table.key('id'), table.column('coasting')];
    context.strokeStyle = palette[kind];
    context.fillStyle = palette[kind];
    for (const row of rows) {
      if (Number.isNaN(x[row])) {
        continue;
      }
      const [px, py] = toScreen(transform, x[row], y[row]);
      context.globalAlpha = hasCoasted(coasting[row]) ? 0.45 : 0.9;
      if (kind === 'radar') {
        traceDiamond(context, px, py, 5);
      } else {
        context.beginPath();
        context.rect(px - 4, py - 4, 8, 8);
      }
      context.lineWidth = 1.5;
      context.stroke();
      context.globalAlpha = 1;
      context.lineWidth = 1;
      this.record({ kind, id: ids[table.track[row]], x: px, y: py }, state, palette);
    }
  }

  private drawSystem(context: CanvasRenderingContext2D, transform: Transform, rows: Int32Array, state: State, palette: Palette): void {
    const { tracks } = this.run;
    const column = (name: string) => tracks.column(name);
    const [x, y, speed, direction, confirmed, classes] = [column('x'), column('y'), column('speed'), column('direction'), column('confirmed'), column('class')];
    const [major, minor, angle] = [column('major'), column('minor'), column('angle')];
    const ids = tracks.key('id');
    const labels: Label[] = [];
    for (const row of rows) {
      if (Number.isNaN(x[row])) {
        continue;
      }
      const isConfirmed = confirmed[row] === 1;
      const isDoubted = isDoubtful(this.run, row);
      const id = ids[tracks.track[row]];
      const [px, py] = toScreen(transform, x[row], y[row]);
      const ink = trackColour(palette, this.index, isConfirmed);
      context.strokeStyle = ink;
      context.fillStyle = ink;
      if (state.layers.ellipses && major[row] > 0) {
        const size = ellipseScale * transform.scale;
        context.setLineDash(isDoubted ? [8, 4] : isConfirmed ? [] : [3, 3]);
        context.beginPath();
        // The ground's y axis points left on the screen, so positive angles turn counter-clockwise.
        context.ellipse(px, py, major[row] * size, minor[row] * size, -Math.PI / 2 - (angle[row] * Math.PI) / 180, 0, 2 * Math.PI);
        fillAndStroke(context, ink, isConfirmed ? 0.12 : 0.04, 0.7);
        context.setLineDash([]);
      }
      if (!Number.isNaN(direction[row])) {
        // Clockwise from forward, which is up; the length is the displacement in a second.
        const turn = (direction[row] * Math.PI) / 180;
        const reach = speed[row] * transform.scale;
        context.beginPath();
        context.moveTo(px, py);
        context.lineTo(px + reach * Math.sin(turn), py - reach * Math.cos(turn));
        context.lineWidth = isConfirmed ? 2 : 1;
        context.stroke();
      }
      context.beginPath();
      context.arc(px, py, isConfirmed ? 4.5 : 3.5, 0, 2 * Math.PI);
      if (isConfirmed && !isDoubted) {
        context.fill();
      } else {
        context.fillStyle = palette.ground;
        context.fill();
        context.lineWidth = isDoubted ? 2.5 : context.lineWidth;
        context.stroke();
      }
      context.lineWidth = 1;
      const mark: Mark = { kind: isConfirmed ? 'system' : 'tentative', id, x: px, y: py };
      const selected = isSelected(state.selection, mark, this.index);
      if (isConfirmed || selected) {
        labels.push(trackLabel(id, this.model.word(classes[row]), ink, [
          [px + 9, py - 6, 'left'], [px - 9, py - 6, 'right'], [px + 9, py + 16, 'left'], [px - 9, py + 16, 'right'],
          [px + 9, py - 21, 'left'], [px + 9, py + 31, 'left'],
        ], selected, isDoubted));
      }
      this.record(mark, state, palette);
    }
    new Plates(this.surface, palette.ground).write(labels);
  }

  private record(mark: Mark, state: State, palette: Palette): void {
    this.surface.record(mark, isSelected(state.selection, mark, this.index) ? palette.select : null, 11);
  }
}

function fillAndStroke(context: CanvasRenderingContext2D, colour: string, fill: number, stroke: number): void {
  context.fillStyle = colour;
  context.strokeStyle = colour;
  context.globalAlpha = fill;
  context.fill();
  context.globalAlpha = stroke;
  context.stroke();
  context.globalAlpha = 1;
}
