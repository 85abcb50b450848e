// SPDX-License-Identifier: Apache-2.0
// What pointers do to a plan: drag to move, wheel or two fingers to zoom, click to select.
import type { Mark } from './canvas';
import type { Commands } from './commands';
import type { Plan } from './plan';

interface Place {
  readonly x: number;
  readonly y: number;
}

export function listenToPlan(plan: Plan, pick: (mark: Mark | null) => void, commands: Pick<Commands, 'panPlans' | 'zoomPlans' | 'fitPlans'>): void {
  const { canvas } = plan.surface;
  const pointers = new Map<number, Place>();
  let moved = 0;
  canvas.addEventListener('pointerdown', (event) => {
    canvas.setPointerCapture(event.pointerId);
    pointers.set(event.pointerId, placeOf(event));
    moved = 0;
  });
  canvas.addEventListener('pointermove', (event) => {
    const before = pointers.get(event.pointerId);
    if (!before) {
      return;
    }
    const now = placeOf(event);
    const other = [...pointers].find(([id]) => id !== event.pointerId)?.[1];
    if (other) {
      const spread = (place: Place) => Math.max(1, distance(place, other));
      commands.zoomPlans(other.x, other.y, spread(now) / spread(before));
    } else {
      commands.panPlans(now.x - before.x, now.y - before.y);
    }
    moved += distance(now, before);
    pointers.set(event.pointerId, now);
  });
  const release = (event: PointerEvent) => pointers.delete(event.pointerId);
  canvas.addEventListener('pointercancel', release);
  canvas.addEventListener('pointerup', (event) => {
    release(event);
    if (moved < 5) {
      pick(plan.surface.hit(event.offsetX, event.offsetY, 16));
    }
  });
  canvas.addEventListener('wheel', (event) => {
    event.preventDefault();
    commands.zoomPlans(event.offsetX, event.offsetY, Math.exp(-event.deltaY * 0.0015));
  }, { passive: false });
  canvas.addEventListener('dblclick', () => commands.fitPlans());
}

function placeOf(event: PointerEvent): Place {
  return { x: event.offsetX, y: event.offsetY };
}

function distance(a: Place, b: Place): number {
  return Math.hypot(a.x - b.x, a.y - b.y);
}
