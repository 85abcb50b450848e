// SPDX-License-Identifier: Apache-2.0
// The system tracks of the last minutes, for the timeline.
import { coastingShown, extend, type Feed, type Life, type Stretch } from '../model';
import type { FrameData } from './protocol';

/** A longer pause between frames is a gap in every lane, s. */
const longestPause = 2;

interface Record {
  readonly id: number;
  readonly standing: Stretch<boolean>[];
  readonly feeds: Map<string, Stretch<Feed>[]>;
  readonly classes: Stretch<string>[];
  confirmed: number;
  last: number;
}

const sameFeed = (a: Feed, b: Feed) => a.coasting === b.coasting;

export class Lifetimes {
  private readonly records = new Map<number, Record>();
  private last = NaN;

  /** @param duration how long tracks are remembered, s */
  constructor(readonly duration: number) {}

  add(frame: FrameData): void {
    const { time } = frame;
    const before = time - this.last <= longestPause ? this.last : time;
    for (const track of frame.tracks) {
      let record = this.records.get(track.id);
      if (!record) {
        record = { id: track.id, standing: [], feeds: new Map(), classes: [], confirmed: NaN, last: time };
        this.records.set(track.id, record);
      }
      const from = Math.max(before, record.last);
      extend(record.standing, from, time, track.confirmed);
      extend(record.classes, from, time, track.class ?? 'unknown');
      for (const { source, id, coasting } of track.sensors) {
        const key = `${source}${id}`;
        const feeds = record.feeds.get(key) ?? [];
        record.feeds.set(key, feeds);
        extend(feeds, from, time, { source, id, coasting: coasting > coastingShown }, sameFeed);
      }
      if (track.confirmed && Number.isNaN(record.confirmed)) {
        record.confirmed = time;
      }
      record.last = time;
    }
    this.last = time;
    this.forget(time - this.duration);
  }

  private forget(oldest: number): void {
    for (const record of this.records.values()) {
      if (record.last < oldest) {
        this.records.delete(record.id);
      }
      const isOld = ({ to }: { to: number }) => to < oldest;
      for (const stretches of [record.standing, record.classes, ...record.feeds.values()]) {
        while (stretches.length > 0 && isOld(stretches[0])) {
          stretches.shift();
        }
      }
      record.feeds.forEach((feeds, key) => feeds.length === 0 && record.feeds.delete(key));
    }
  }

  /** The tracks, with times from the begin of what is remembered until now. */
  lives(): Life[] {
    const begin = this.last - this.duration;
    const shift = <Value>(stretches: readonly Stretch<Value>[]): Stretch<Value>[] =>
      stretches.map(({ from, to, value }) => ({ from: Math.max(0, from - begin), to: to - begin, value }));
    return [...this.records.values()]
      .filter((record) => record.standing.length > 0)
      .map((record, track) => {
        const standing = shift(record.standing);
        // What was confirmed stays so when that is no longer shown: nothing is drawn at -Infinity.
        const confirmed = record.confirmed < begin ? -Infinity : record.confirmed - begin;
        return {
          track, id: record.id, from: standing[0].from, to: record.last - begin,
          confirmed, standing, feeds: [...record.feeds.values()].flatMap(shift), classes: shift(record.classes),
        };
      })
      .sort((a, b) => a.id - b.id);
  }
}
