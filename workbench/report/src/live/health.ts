// SPDX-License-Identifier: Apache-2.0
// How the sensors and the program fare.
import { element, setText } from '../dom';
import { quantity } from '../facts';
import type { LiveModel } from './livemodel';
import type { HelloData, SensorData, StatusData } from './protocol';

/** A sensor that has sent nothing for longer is marked as silent, s. */
const silence = 1.5;

type Counters = Readonly<Record<string, number | null>>;

/** What is lost on the way to the fusion. */
const losses: readonly [key: string, name: string][] = [
  ['dropped', 'dropped'], ['refused', 'unreadable'], ['framesLate', 'late'], ['framesRepeated', 'repeated'],
  ['framesReordered', 'out of order'], ['framesStray', 'stray'], ['framesUnplaced', 'without time'],
];

export function lossText(counters: Counters): string {
  const texts = losses.filter(([key]) => (counters[key] ?? 0) > 0).map(([key, name]) => `${counters[key]} ${name}`);
  return texts.join(', ') || 'none';
}

/** Frames per second between two documents; NaN without a time between them. */
export function rateOf(before: StatusData | null, now: StatusData, sensor: string): number {
  const [first, second] = [before?.sensor?.[sensor], now.sensor?.[sensor]];
  const elapsed = now.uptime - (before?.uptime ?? NaN);
  return elapsed > 0 ? ((second?.['framesTaken'] ?? NaN) - (first?.['framesTaken'] ?? NaN)) / elapsed : NaN;
}

const milliseconds = (seconds: number | null | undefined) => quantity(1000 * (seconds ?? NaN), Math.abs(seconds ?? 0) < 0.1 ? 1 : 0, 'ms');

/** How far the sensor's clock is from the host's, and how much that varies. */
function offsetText(counters: Counters): string {
  const [offset, jitter] = [counters['clockOffset'], counters['clockJitter']].map((seconds) => 1000 * (seconds ?? NaN));
  return `${quantity(offset, Math.abs(offset) < 100 ? 1 : 0)} ± ${quantity(jitter, 1, 'ms')}`;
}

/** The facts of one sensor, which are renewed in place. */
class Card {
  readonly root: HTMLElement;
  private readonly state = element('span', { class: 'number' });
  private readonly values: Readonly<Record<'rate' | 'delay' | 'offset' | 'losses', HTMLElement>> = {
    rate: element('dd'), delay: element('dd'), offset: element('dd'), losses: element('dd'),
  };

  constructor(readonly sensor: SensorData) {
    const { rate, delay, offset, losses: lost } = this.values;
    this.root = element('div', { class: 'card', 'data-sensor': sensor.name },
      element('h3', {}, element('i', { class: `sign ${sensor.source}` }), sensor.name, this.state),
      element('dl', { class: 'facts' },
        element('dt', {}, 'Frames'), rate, element('dt', {}, 'Delay'), delay, element('dt', {}, 'Clock'), offset, element('dt', {}, 'Losses'), lost));
  }

  show(model: LiveModel, before: StatusData | null, status: StatusData | null): void {
    const counters = status?.sensor?.[this.sensor.name] ?? {};
    const newest = model.newestOf(this.sensor.source);
    const fused = model.newest;
    const isSilent = !newest || !fused || fused.time - newest.time > silence;
    setText(this.state, isSilent ? 'silent' : 'seen');
    this.root.classList.toggle('silent', isSilent);
    setText(this.values.rate, status ? quantity(rateOf(before, status, this.sensor.name), 1, '/s') : '–');
    setText(this.values.delay, newest ? milliseconds(newest.received - newest.time) : '–');
    setText(this.values.offset, offsetText(counters));
    setText(this.values.losses, lossText(counters));
  }
}

export class Health {
  readonly root = element('section', { class: 'block health', 'aria-label': 'Health' });
  private readonly latency = element('p', { class: 'hint latency' });
  private cards: readonly Card[] = [];
  private before: StatusData | null = null;
  private status: StatusData | null = null;

  reset({ sensors }: HelloData): void {
    this.cards = sensors.map((sensor) => new Card(sensor));
    this.before = this.status = null;
    this.root.replaceChildren(element('h2', {}, 'Health'), ...this.cards.map((card) => card.root), this.latency);
  }

  take(status: StatusData): void {
    this.before = this.status;
    this.status = status;
  }

  draw(model: LiveModel): void {
    this.cards.forEach((card) => card.show(model, this.before, this.status));
    const { status } = this;
    setText(this.latency, status ? `Fusion: ${milliseconds(status.latencyMedian)}, 99 % within ${milliseconds(status.latencyP99)}` : '');
  }
}
