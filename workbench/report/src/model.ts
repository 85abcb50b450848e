// SPDX-License-Identifier: Apache-2.0
// The decoded data of the report, and values derived from them.
import { numbersOf, unpack } from './column';
import type { ExplanationData, JudgementData, ReportData, RunData, SceneData, SeenData } from './data';
import { lastNotAfter, Table } from './table';
import { sourceNames, type SourceName } from './vocabulary';

/** Sensor frames are shown for at least this long, s. */
export const leastSilence = 0.6;
/** A sensor track that has coasted for longer is drawn as coasting, s. */
export const coastingShown = 0.25;

/** Whether a sensor track has coasted at all, by its coasting time, which is kept in tenths, s. */
export function hasCoasted(coasting: number): boolean {
  return coasting > 0.05;
}

/** Times are kept to a millisecond: half of one more finds a frame by its own time, s. */
export function lookupTime(time: number): number {
  return time + 0.0005;
}

/** What tells two runs apart. */
export function letterOf(run: number): string {
  return 'AB'[run];
}

/** Tracks of a sensor or of the truth over time. */
export class Seen {
  readonly times: Float64Array;
  readonly table: Table;
  /** A sensor's last frame is shown for this long, s: two of its usual intervals. */
  readonly silence: number;

  constructor(data: SeenData) {
    this.table = new Table(data.table);
    this.times = numbersOf(data.time, this.table.frames);
    const intervals = this.times.slice(1).map((time, i) => time - this.times[i]).sort();
    this.silence = Math.max(leastSilence, 2 * (intervals[intervals.length >> 1] ?? 0));
  }

  /** Index of the frame to show at a time; -1 when there is none or it is too old. */
  frameAt(time: number): number {
    const frame = lastNotAfter(this.times, time);
    return frame >= 0 && time - this.times[frame] <= this.silence ? frame : -1;
  }

  /** Index of a track by its id; -1 when there is none. */
  trackOf(id: number): number {
    return this.table.key('id').indexOf(id);
  }
}

/** A time interval with a constant value, s. */
export interface Stretch<Value> {
  from: number;
  to: number;
  value: Value;
}

/** A sensor track's part in a system track. */
export interface Feed {
  readonly source: SourceName;
  readonly id: number;
  readonly coasting: boolean;
}

/** Summary of one system track. */
export interface Life {
  readonly track: number;
  readonly id: number;
  readonly from: number;
  readonly to: number;
  /** When it was first confirmed; NaN: never. */
  readonly confirmed: number;
  /** Intervals with and without confirmation. */
  readonly standing: readonly Stretch<boolean>[];
  readonly feeds: readonly Stretch<Feed>[];
  readonly classes: readonly Stretch<string>[];
}

/** A true object whose match changed to another system track. */
export interface Switch {
  readonly time: number;
  readonly object: number;
  readonly from: number;
  readonly to: number;
}

export interface Match {
  readonly object: number;
  readonly track: number;
}

/** The evaluation of a run against the truth. */
export class Judgement {
  readonly times: Float64Array;
  readonly gospa: Float64Array;
  readonly parts: JudgementData['parts'];
  readonly cutoff: number;
  readonly switches: readonly Switch[];
  private readonly matches: Table;

  constructor(data: JudgementData) {
    this.times = numbersOf(data.time, data.moments);
    this.gospa = numbersOf(data.gospa, data.moments);
    this.parts = data.parts;
    this.cutoff = data.cutoff;
    this.matches = new Table(data.matches);
    this.switches = switchesOf(this.matches, this.times);
  }

  /** The matches of objects and tracks at a time. */
  matchesAt(time: number): Match[] {
    const frame = lastNotAfter(this.times, time);
    const tracks = this.matches.column('track');
    const objects = this.matches.key('object');
    return Array.from(this.matches.rowsOf(frame), (row) => ({
      object: objects[this.matches.track[row]],
      track: tracks[row],
    }));
  }
}

export function switchesOf(matches: Table, times: Float64Array): Switch[] {
  const switches: Switch[] = [];
  const tracks = matches.column('track');
  const objects = matches.key('object');
  for (let object = 0; object < matches.tracks; ++object) {
    for (let row = matches.first[object] + 1; row < matches.first[object + 1]; ++row) {
      if (tracks[row] !== tracks[row - 1]) {
        switches.push({
          time: times[matches.frame[row]],
          object: objects[object],
          from: tracks[row - 1],
          to: tracks[row],
        });
      }
    }
  }
  return switches.sort((a, b) => a.time - b.time);
}

/** The explanations of a run by replay --explain. */
export class Explanation {
  readonly times: Float64Array;
  readonly sources: Int32Array;
  readonly pairs: Table;
  readonly events: Table;

  constructor(data: ExplanationData) {
    this.pairs = new Table(data.pairs);
    this.events = new Table(data.events);
    this.times = numbersOf(data.time, this.pairs.frames);
    this.sources = unpack(data.source, this.pairs.frames);
  }

  /** The frame of a source and time; -1 when there is no explanation of it. */
  frameOf(time: number, source: number): number {
    for (let frame = lastNotAfter(this.times, time + 0.0015); frame >= 0; --frame) {
      if (time - this.times[frame] > 0.0015) {
        return -1;
      }
      if (this.sources[frame] === source) {
        return frame;
      }
    }
    return -1;
  }
}

/** A fusion run. */
export class Run {
  readonly label: string;
  readonly times: Float64Array;
  readonly received: Float64Array;
  readonly sources: Int32Array;
  readonly tracks: Table;
  readonly sensors: Table;
  readonly lives: readonly Life[];
  readonly explanation: Explanation | null;
  readonly judgement: Judgement | null;
  readonly configuration: unknown;

  constructor(data: RunData, words: readonly string[]) {
    this.label = data.label;
    this.tracks = new Table(data.tracks);
    this.sensors = new Table(data.sensors);
    const frames = this.tracks.frames;
    this.times = numbersOf(data.time, frames);
    this.received = numbersOf(data.received, frames);
    this.sources = unpack(data.source, frames);
    this.lives = livesOf(this, words);
    this.explanation = data.explanation ? new Explanation(data.explanation) : null;
    this.judgement = data.judgement ? new Judgement(data.judgement) : null;
    this.configuration = data.configuration;
  }

  frameAt(time: number): number {
    return lastNotAfter(this.times, time);
  }

  life(id: number): Life | undefined {
    return this.lives.find((life) => life.id === id);
  }

  /** The row of a system track at a time; -1 when it does not exist then. */
  rowAt(id: number, time: number): number {
    const life = this.life(id);
    return life ? this.tracks.rowAt(life.track, this.frameAt(time)) : -1;
  }
}

/** Appends a value to intervals: extends the last one when the value is the same. */
export function extend<Value>(
  stretches: Stretch<Value>[],
  from: number,
  to: number,
  value: Value,
  same: (a: Value, b: Value) => boolean = Object.is,
): void {
  const last = stretches[stretches.length - 1];
  if (last && same(last.value, value) && from <= last.to + 1e-9) {
    last.to = to;
  } else {
    stretches.push({ from, to, value });
  }
}

function livesOf(run: Run, words: readonly string[]): Life[] {
  const { tracks, sensors, times } = run;
  const endOf = (frame: number) => times[Math.min(frame + 1, times.length - 1)];
  const feeds = new Map<number, Stretch<Feed>[]>();
  const coasting = sensors.column('coasting');
  for (let pair = 0; pair < sensors.tracks; ++pair) {
    const own: Stretch<Feed>[] = [];
    const source = sourceNames[sensors.key('source')[pair]];
    const id = sensors.key('id')[pair];
    for (let row = sensors.first[pair]; row < sensors.first[pair + 1]; ++row) {
      const frame = sensors.frame[row];
      extend(own, times[frame], endOf(frame), { source, id, coasting: coasting[row] > coastingShown },
        (a, b) => a.coasting === b.coasting);
    }
    const track = sensors.key('track')[pair];
    feeds.set(track, [...(feeds.get(track) ?? []), ...own]);
  }

  const confirmed = tracks.column('confirmed');
  const classes = tracks.column('class');
  const lives: Life[] = [];
  for (let track = 0; track < tracks.tracks; ++track) {
    const standing: Stretch<boolean>[] = [];
    const classStretches: Stretch<string>[] = [];
    for (let row = tracks.first[track]; row < tracks.first[track + 1]; ++row) {
      const frame = tracks.frame[row];
      extend(standing, times[frame], endOf(frame), confirmed[row] === 1);
      extend(classStretches, times[frame], endOf(frame), wordOf(words, classes[row]));
    }
    const id = tracks.key('id')[track];
    lives.push({
      track,
      id,
      from: standing[0].from,
      to: standing[standing.length - 1].to,
      confirmed: standing.find((stretch) => stretch.value)?.from ?? NaN,
      standing,
      feeds: feeds.get(id) ?? [],
      classes: classStretches,
    });
  }
  return lives.sort((a, b) => a.from - b.from || a.id - b.id);
}

export function wordOf(words: readonly string[], index: number): string {
  return Number.isNaN(index) ? 'unknown' : (words[index] ?? 'unknown');
}

/** Everything that the page shows. */
export class Model {
  readonly data: ReportData;
  readonly scene: SceneData;
  readonly video: Seen;
  readonly radar: Seen;
  readonly truth: Seen | null;
  readonly runs: readonly Run[];
  readonly duration: number;
  readonly start: number;
  /** All times at which new data begin, ascending, without repetition. */
  readonly moments: Float64Array;

  constructor(data: ReportData) {
    this.data = data;
    this.scene = data.scene;
    this.video = new Seen(data.video);
    this.radar = new Seen(data.radar);
    this.truth = data.truth ? new Seen(data.truth) : null;
    this.runs = data.runs.map((run) => new Run(run, data.words));
    this.duration = data.duration;
    this.start = data.start;
    const all = new Set<number>();
    for (const run of this.runs) {
      run.times.forEach((time) => all.add(time));
    }
    this.moments = Float64Array.from(all).sort();
  }

  /** Whether two runs are compared. */
  get isPair(): boolean {
    return this.runs.length > 1;
  }

  seen(source: SourceName): Seen {
    return source === 'video' ? this.video : this.radar;
  }

  word(index: number): string {
    return wordOf(this.data.words, index);
  }
}

/** The number of tracks of a run, frame by frame. */
export function countsOf(run: Run): { confirmed: Float64Array; tentative: Float64Array } {
  const confirmed = new Float64Array(run.times.length);
  const tentative = new Float64Array(run.times.length);
  const isConfirmed = run.tracks.column('confirmed');
  for (let row = 0; row < run.tracks.rows; ++row) {
    ++(isConfirmed[row] === 1 ? confirmed : tentative)[run.tracks.frame[row]];
  }
  return { confirmed, tentative };
}
