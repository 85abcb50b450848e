// SPDX-License-Identifier: Apache-2.0
// The last seconds of the program as the model of a report, which is renewed with every state.
import type { ReportData } from '../data';
import { Model } from '../model';
import type { PackedTable } from '../table';
import { explanationOf } from './decisions';
import { feedTable, sensorTable, systemTable } from './frames';
import type { DecisionData, FrameData, HelloData, StateData } from './protocol';
import { tableOf, Words } from './rows';

/** Time that plan and image can show, s: the length of trails, and a little more. */
const span = 5;
/** Decisions are kept longer, s: so that the last ones of a silent sensor can be read. */
const decisionSpan = 10;

const none: PackedTable = tableOf(['id'], [], []);

/** Frames of the last seconds. */
class Recent {
  frames: FrameData[] = [];

  /** Adds a frame that is not there yet, and forgets those before a time. */
  add(frame: FrameData | null, oldest: number): void {
    const last = this.frames[this.frames.length - 1];
    if (frame && (!last || frame.time > last.time)) {
      this.frames.push(frame);
    }
    this.frames = this.frames.filter(({ time }) => time >= oldest);
  }
}

export class LiveModel extends Model {
  private readonly fused = new Recent();
  private readonly seenBy = { video: new Recent(), radar: new Recent() };
  private decisions: DecisionData[] = [];
  private readonly liveWords = new Words();
  private begin: number | null = null;

  constructor(private readonly hello: HelloData) {
    super(emptyReport(hello));
  }

  /** Time of the newest frame, s; 0 before the first one. */
  get now(): number {
    const last = this.newest;
    return last ? last.time - (this.begin ?? last.time) : 0;
  }

  /** The newest fused frame. */
  get newest(): FrameData | undefined {
    return this.fused.frames[this.fused.frames.length - 1];
  }

  /** The newest frame of a sensor. */
  newestOf(source: 'video' | 'radar'): FrameData | undefined {
    const { frames } = this.seenBy[source];
    return frames[frames.length - 1];
  }

  decide(decision: DecisionData): void {
    this.decisions.push(decision);
  }

  /** Forgets the decisions about the track that was selected before. */
  forgetDecisions(): void {
    this.decisions = [];
  }

  show(state: StateData): void {
    const { time } = state.fused;
    this.begin ??= time;
    this.fused.add(state.fused, time - span);
    this.seenBy.video.add(state.video, time - span);
    this.seenBy.radar.add(state.radar, time - span);
    this.decisions = this.decisions.filter((decision) => decision.time >= time - decisionSpan);
    // The views hold this model and its run: their contents are replaced.
    const { runs: [run], ...rest } = new Model(this.report());
    Object.assign(this.runs[0], run);
    Object.assign(this, { ...rest, runs: this.runs });
  }

  private report(): ReportData {
    const begin = this.begin ?? 0;
    const words = this.liveWords;
    const timesOf = (frames: readonly FrameData[]) => Float64Array.from(frames, (frame) => frame.time - begin);
    const seenBy = (source: 'video' | 'radar') => {
      const { frames } = this.seenBy[source];
      return { time: timesOf(frames), table: sensorTable(frames, words) };
    };
    const { frames } = this.fused;
    const run = {
      label: 'live',
      time: timesOf(frames),
      received: Float64Array.from(frames, (frame) => frame.received - begin),
      source: Float64Array.from(frames, (frame) => (frame.source === 'video' ? 0 : 1)),
      tracks: systemTable(frames, words),
      sensors: feedTable(frames),
      configuration: null,
      explanation: explanationOf(this.decisions, frames, begin, words),
    };
    return {
      ...emptyReport(this.hello), start: begin, duration: this.now, words: words.list,
      video: seenBy('video'), radar: seenBy('radar'), runs: [run],
    };
  }
}

function emptyReport({ program, scene }: HelloData): ReportData {
  const times = new Float64Array(0);
  const words = new Words();
  return {
    version: 1, program, recording: {}, start: 0, duration: 0, scene, words: [], truth: null, defaults: null,
    video: { time: times, table: sensorTable([], words) },
    radar: { time: times, table: sensorTable([], words) },
    runs: [{
      label: 'live', time: times, received: times, source: times, tracks: systemTable([], words), sensors: feedTable([]),
      configuration: null, explanation: { time: times, source: times, pairs: none, events: none },
    }],
  };
}
