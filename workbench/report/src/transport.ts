// SPDX-License-Identifier: Apache-2.0
// The controls of the playback: play and pause, the time, the speed.
import { timeText, type Clock } from './clock';
import type { Commands } from './commands';
import { button, element, icon, setText } from './dom';

export class Transport {
  readonly root: HTMLElement;
  private readonly slider = element('input', { type: 'range', class: 'scrubber', 'aria-label': 'Time' });
  private readonly clockText = element('output', { class: 'clock' });
  private readonly speedText = element('span', { class: 'speed' });
  private readonly playButton: HTMLButtonElement;

  constructor(
    private readonly clock: Clock,
    commands: Commands,
    private readonly describe: (time: number) => string,
  ) {
    this.slider.min = '0';
    this.slider.max = String(clock.duration);
    this.slider.step = '0.001';
    this.slider.addEventListener('input', () => commands.seek(Number(this.slider.value)));
    this.playButton = button('', 'Play (Space)', () => commands.togglePlaying(), { class: 'play' });
    this.root = element('section', { class: 'transport', 'aria-label': 'Playback' },
      button(icon('back'), 'One frame back (←)', () => commands.step(-1), { class: 'icon' }),
      this.playButton,
      button(icon('on'), 'One frame on (→)', () => commands.step(1), { class: 'icon' }),
      this.clockText, this.slider,
      element('span', { class: 'clock total' }, timeText(clock.duration)),
      element('div', { class: 'pace' },
        button('−', 'Slower (−)', () => commands.changeSpeed(-1), { class: 'icon' }), this.speedText,
        button('+', 'Faster (+)', () => commands.changeSpeed(1), { class: 'icon' })));
  }

  /** Shows what the clock says. */
  draw(): void {
    const { time, duration, playing, speed } = this.clock;
    this.slider.value = String(time);
    if (!playing) {
      this.slider.setAttribute('aria-valuetext', `${timeText(time)} of ${timeText(duration)}, ${this.describe(time)}`);
    }
    this.slider.style.setProperty('--done', `${(100 * time) / Math.max(1e-9, duration)}%`);
    setText(this.clockText, timeText(time));
    setText(this.speedText, `${speed}×`);
    if (this.playButton.getAttribute('aria-pressed') !== String(playing)) {
      this.playButton.setAttribute('aria-pressed', String(playing));
      this.playButton.replaceChildren(icon(playing ? 'pause' : 'play'));
    }
  }
}
