// SPDX-License-Identifier: Apache-2.0
// Three sentences about a report: is the fusion worth it, what went wrong most, and where.
import { timeText } from './clock';
import { timelineText } from './describe';
import { element } from './dom';
import { letterOf, lookupTime, type Judgement, type Model, type Run } from './model';
import { firstMoment } from './moment';
import type { Selection } from './state';

export interface Verdict {
  readonly tone: 'good' | 'bad' | 'plain';
  readonly result: string;
  readonly fault: string;
  /** Where to look, and what is to be seen there. */
  readonly where: { readonly text: string; readonly time: number; readonly selection: Selection | null } | null;
}

/** Differences below this share are none worth a word. */
const leastShare = 0.02;

/** After the first confirmation the others follow; errors in the meantime say little, s. */
const startTime = 1;

/** The metrics to compare by: the first that the recording allows. */
const measures: readonly { readonly key: string; readonly name: string; readonly unit: string; readonly isMoreBetter: boolean }[] = [
  { key: 'GOSPA', name: 'mean error (GOSPA)', unit: ' m', isMoreBetter: false },
  { key: 'position_rmse', name: 'position error', unit: ' m', isMoreBetter: false },
  { key: 'completeness', name: 'completeness', unit: '', isMoreBetter: true },
];

/** The parts of GOSPA, which add up as squares. */
const faults: readonly (readonly [key: string, name: string])[] = [
  ['GOSPA_localisation', 'inaccurate positions'],
  ['GOSPA_missed', 'missed objects'],
  ['GOSPA_false', 'false tracks'],
];

export function verdictOf(model: Model): Verdict {
  const judgements = model.runs.map((run) => run.judgement);
  const [first, second] = judgements;
  if (!first || (model.isPair && !second)) {
    const time = firstMoment(model.runs);
    return {
      tone: 'plain',
      result: 'Nobody can say how good this is: the recording states no truth.',
      fault: `${timelineText(model)}.`,
      where: time > 0 ? { text: `Most happens around ${timeText(time)}.`, time, selection: null } : null,
    };
  }
  const comparison = second
    ? compare(figuresOf(first, 0), figuresOf(second, 0), 'Run A', 'run B')
    : compare(...besideBestSensor(first));
  // Of two runs, the worse one is worth looking at.
  const run = second && comparison.tone === 'good' ? 1 : 0;
  const judged = model.runs[run].judgement as Judgement;
  return { ...comparison, fault: faultOf(judged, second ? ` of run ${letterOf(run)}` : ''), where: worstOf(model, model.runs[run], run) };
}

type Figures = ReadonlyMap<string, number | null>;

/** The figures of one of the trackers: 0 is the fusion, the others are sensors. */
function figuresOf({ parts }: Judgement, tracker: number): Figures {
  return new Map(parts[0]?.figures.map(({ key, values }) => [key, values[tracker]]));
}

function besideBestSensor(judgement: Judgement): [Figures, Figures, string, string] {
  const fusion = figuresOf(judgement, 0);
  const measure = measures.find(({ key }) => typeof fusion.get(key) === 'number');
  const sensors = (judgement.parts[0]?.trackers ?? []).slice(1).map((name, i) => ({ name, figures: figuresOf(judgement, i + 1) }));
  const rank = ({ figures }: { figures: Figures }) => {
    const value = measure && figures.get(measure.key);
    return typeof value === 'number' ? (measure?.isMoreBetter ? -value : value) : Infinity;
  };
  const best = sensors.sort((a, b) => rank(a) - rank(b))[0];
  return [fusion, best?.figures ?? new Map(), 'The fusion', best ? `the best single sensor (${best.name})` : 'a sensor'];
}

function compare(mine: Figures, others: Figures, name: string, other: string): Pick<Verdict, 'tone' | 'result'> {
  for (const { key, name: measure, unit, isMoreBetter } of measures) {
    const [a, b] = [mine.get(key), others.get(key)];
    if (typeof a !== 'number' || typeof b !== 'number') {
      continue;
    }
    const share = b === 0 ? (a === 0 ? 0 : Infinity) : (a - b) / b;
    const size = Number.isFinite(share) ? `, ${Math.round(100 * Math.abs(share))} % ${share < 0 ? 'less' : 'more'}` : '';
    const figures = `its ${measure} is ${a.toFixed(2)}${unit} instead of ${b.toFixed(2)}${unit}`;
    if (Math.abs(share) < leastShare) {
      return { tone: 'plain', result: `${name} is about as good as ${other}: ${figures}.` };
    }
    const isBetter = isMoreBetter ? share > 0 : share < 0;
    return { tone: isBetter ? 'good' : 'bad', result: `${name} is ${isBetter ? 'better' : 'worse'} than ${other}: ${figures}${size}.` };
  }
  return { tone: 'plain', result: `${name} cannot be compared with ${other}: no metric is defined for both.` };
}

function faultOf(judgement: Judgement, owner: string): string {
  const figures = figuresOf(judgement, 0);
  const squares = faults.map(([key, text]) => ({ text, square: (figures.get(key) ?? 0) ** 2 })).sort((a, b) => b.square - a.square);
  const sum = squares.reduce((total, { square }) => total + square, 0);
  const switches = judgement.switches.length;
  const identity = switches === 0 ? 'no object changed its track' : `${switches === 1 ? 'once an object' : `${switches} times an object`} changed its track`;
  return sum > 0
    ? `Most of the error${owner}, ${Math.round((100 * squares[0].square) / sum)} %, are ${squares[0].text}; ${identity}.`
    : `${identity[0].toUpperCase()}${identity.slice(1)}${owner && ` in run${owner.slice(-2)}`}.`;
}

/** The moment with the largest GOSPA in the second with the largest mean, after `from`; -1 without any. */
export function worstMoment(judgement: Judgement, from: number): number {
  const { times, gospa } = judgement;
  let [worst, most, sum, begin] = [-1, 0, 0, 0];
  for (let i = 0; i < times.length; ++i) {
    if (times[i] < from || Number.isNaN(gospa[i])) {
      begin = i + 1;
      sum = 0;
      continue;
    }
    sum += gospa[i];
    while (times[i] - times[begin] > 1) {
      sum -= gospa[begin++];
    }
    const mean = sum / (i - begin + 1);
    if (mean > most && times[i] - times[begin] > 0.5) {
      [worst, most] = [gospa.subarray(begin, i + 1).reduce((best, value, k, part) => (value > part[best] ? k : best), 0) + begin, mean];
    }
  }
  return worst;
}

function worstOf(model: Model, run: Run, index: number): Verdict['where'] {
  const judgement = run.judgement as Judgement;
  const confirmed = run.lives.reduce((least, life) => (life.confirmed < least ? life.confirmed : least), Infinity);
  const moment = worstMoment(judgement, confirmed + startTime);
  if (moment < 0) {
    return null;
  }
  const time = judgement.times[moment];
  const selection = missedAt(model, judgement, time, index);
  const missed = selection ? `, object ${selection.id} is missed` : '';
  return { text: `It went worst around ${timeText(time)}: the error is ${judgement.gospa[moment].toFixed(1)} m${missed}.`, time, selection };
}

/** The first true object in a sensor's view that no track is matched with. */
function missedAt(model: Model, judgement: Judgement, time: number, run: number): Selection | null {
  const { truth } = model;
  if (!truth) {
    return null;
  }
  const matched = new Set(judgement.matchesAt(lookupTime(time)).map(({ object }) => object));
  const [video, radar, ids] = [truth.table.column('video'), truth.table.column('radar'), truth.table.key('id')];
  const row = truth.table.rowsOf(truth.frameAt(lookupTime(time))).find((at) => (video[at] === 1 || radar[at] === 1) && !matched.has(ids[truth.table.track[at]]));
  return row === undefined ? null : { kind: 'truth', run, id: ids[truth.table.track[row]] };
}

/** The verdict as a line of the page; `go` is called for the moment that it names. */
export function verdictLine(model: Model, go: (time: number, selection: Selection | null) => void): HTMLElement {
  const { tone, result, fault, where } = verdictOf(model);
  return element('section', { class: `verdict ${tone}`, 'aria-label': 'Verdict' }, element('p', {},
    element('b', {}, result), ` ${fault} `,
    where && element('button', { type: 'button', class: 'go', click: () => go(where.time, where.selection) }, where.text)));
}
