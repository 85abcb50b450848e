// SPDX-License-Identifier: Apache-2.0
// What pointers do to the timeline: click to select a track and to go to a time, wheel or finger to
// scroll, wheel with Ctrl to zoom, with Shift to move in time.
import type { Clock } from './clock';
import type { Commands } from './commands';
import { button, element } from './dom';
import { gutter, type Timeline } from './timeline';

export function listenToTimeline(timeline: Timeline, clock: Clock, commands: Commands): void {
  const { canvas } = timeline.surface;
  canvas.addEventListener('click', (event) => {
    const lane = timeline.laneAt(event.offsetY);
    if (lane) {
      commands.select({ kind: 'system', run: lane.run, id: lane.life.id });
    }
    if (event.offsetX >= gutter) {
      commands.seek(timeline.timeAt(event.offsetX));
    } else if (lane && (clock.time < lane.life.from || clock.time > lane.life.to)) {
      commands.seek(lane.life.from);
    }
  });
  canvas.addEventListener('wheel', (event) => {
    if (event.ctrlKey) {
      event.preventDefault();
      commands.zoomTimeline(event.offsetX, Math.exp(-event.deltaY * 0.003));
      return;
    }
    const aside = event.shiftKey ? event.deltaY : event.deltaX;
    if (aside !== 0) {
      event.preventDefault();
      commands.panTimeline(aside);
      return;
    }
    // At its end the page itself scrolls on.
    const before = timeline.scroll;
    commands.scrollTimeline(event.deltaY);
    if (timeline.scroll !== before) {
      event.preventDefault();
    }
  }, { passive: false });
  let touched: number | null = null;
  canvas.addEventListener('touchstart', (event) => (touched = event.touches[0].clientY), { passive: true });
  canvas.addEventListener('touchmove', (event) => {
    const y = event.touches[0].clientY;
    if (touched !== null) {
      commands.scrollTimeline(touched - y);
    }
    touched = y;
  }, { passive: true });
}

/** Buttons that zoom the timeline around the shown time. */
export function timelineTools(timeline: Timeline, clock: Clock, commands: Commands): HTMLElement {
  const zoom = (factor: number) => commands.zoomTimeline(timeline.placeOf(clock.time), factor);
  return element('div', { class: 'timeline-tools', role: 'group', 'aria-label': 'Zoom of the timeline' },
    button('−', 'Show more time', () => zoom(0.5), { class: 'icon' }),
    button('+', 'Show less time (Ctrl and wheel)', () => zoom(2), { class: 'icon' }),
    button('All', 'Show all of the time', () => commands.zoomTimeline(0, 0), { class: 'icon' }));
}
