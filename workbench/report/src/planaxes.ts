// SPDX-License-Identifier: Apache-2.0
// The edges of a plan: distances ahead and aside, and where north is.
import type { Transform } from './plan';
import type { Palette } from './palette';

/** Distance of labels, a round number of metres of at least `least` pixels. */
export function labelSpacing(scale: number, least: number): number {
  return [0.5, 1, 2, 5, 10, 20, 50, 100, 200, 500].find((metres) => metres * scale >= least) ?? 1000;
}

/** The multiples of `spacing` from `from` to `to`. */
export function multiplesIn(from: number, to: number, spacing: number): number[] {
  const first = Math.ceil(from / spacing);
  return Array.from({ length: Math.max(0, Math.floor(to / spacing) - first + 1) }, (_, i) => (first + i) * spacing);
}

export function drawAxes(context: CanvasRenderingContext2D, { scale, left, top }: Transform, width: number, height: number, palette: Palette): void {
  const spacing = labelSpacing(scale, 60);
  const right = width - 16;
  context.save();
  context.fillStyle = palette.muted;
  context.strokeStyle = palette.muted;
  context.beginPath();
  context.textAlign = 'right';
  context.textBaseline = 'middle';
  for (const ahead of multiplesIn((top - height + 26) / scale, (top - 60) / scale, spacing)) {
    const y = Math.round(top - ahead * scale) + 0.5;
    context.moveTo(width, y);
    context.lineTo(width - 5, y);
    context.fillText(`${ahead}`, width - 8, y);
  }
  context.textAlign = 'center';
  context.textBaseline = 'alphabetic';
  for (const aside of multiplesIn((16 - left) / scale, (right - 76 - left) / scale, spacing)) {
    const x = Math.round(left + aside * scale) + 0.5;
    context.moveTo(x, height);
    context.lineTo(x, height - 5);
    context.fillText(`${aside}`, x, height - 8);
  }
  context.stroke();
  context.textAlign = 'right';
  context.fillText('m ahead', width - 8, 44);
  context.fillText('m right', width - 8, height - 8);
  context.restore();
}

/** An arrow to the north; `heading` is that of the device, degrees clockwise from north. */
export function drawNorth(context: CanvasRenderingContext2D, heading: number, x: number, y: number, palette: Palette): void {
  context.save();
  context.translate(x, y);
  context.rotate((-heading * Math.PI) / 180);
  context.fillStyle = palette.text;
  context.strokeStyle = palette.text;
  context.lineWidth = 1.5;
  context.beginPath();
  context.moveTo(0, 13);
  context.lineTo(0, -4);
  context.stroke();
  context.beginPath();
  context.moveTo(0, -13);
  context.lineTo(4.5, -2);
  context.lineTo(-4.5, -2);
  context.closePath();
  context.fill();
  context.translate(0, -21);
  context.rotate((heading * Math.PI) / 180);
  context.textAlign = 'center';
  context.textBaseline = 'middle';
  context.font = '600 11px system-ui, sans-serif';
  context.fillText('N', 0, 0);
  context.restore();
}
