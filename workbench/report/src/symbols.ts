// SPDX-License-Identifier: Apache-2.0
// Shapes that stand for objects, as paths to fill or to stroke. The size is that from the centre to
// a corner, pixels.

export function traceDiamond(context: CanvasRenderingContext2D, x: number, y: number, size: number): void {
  context.beginPath();
  context.moveTo(x, y - size);
  context.lineTo(x + size, y);
  context.lineTo(x, y + size);
  context.lineTo(x - size, y);
  context.closePath();
}

/** The size is that along each axis. */
export function traceCross(context: CanvasRenderingContext2D, x: number, y: number, size: number): void {
  context.beginPath();
  context.moveTo(x - size, y - size);
  context.lineTo(x + size, y + size);
  context.moveTo(x - size, y + size);
  context.lineTo(x + size, y - size);
}
