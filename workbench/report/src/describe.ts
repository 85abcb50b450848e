// SPDX-License-Identifier: Apache-2.0
// What plan, image, timeline and slider show, in words for those who do not see them.
import { timeText } from './clock';
import { countsOf, letterOf, lookupTime, type Model, type Run } from './model';
import { placeText } from './places';
import { labelOf } from './scene';

/** At most so many tracks are named one by one. */
const mostNamed = 20;

/** "3 confirmed, 1 tentative", of each run. */
export function countText(model: Model, time: number): string {
  return model.runs.map((run, index) => {
    const rows = run.tracks.rowsOf(run.frameAt(lookupTime(time)));
    const confirmed = run.tracks.column('confirmed');
    const count = rows.filter((row) => confirmed[row] === 1).length;
    return `${model.isPair ? `${letterOf(index)}: ` : ''}${count} confirmed, ${rows.length - count} tentative`;
  }).join('; ');
}

/** The confirmed tracks at a time and where they are. */
export function sceneText(model: Model, run: Run, time: number): string {
  const { tracks } = run;
  const [confirmed, x, y, classes] = [tracks.column('confirmed'), tracks.column('x'), tracks.column('y'), tracks.column('class')];
  const rows = tracks.rowsOf(run.frameAt(lookupTime(time))).filter((row) => confirmed[row] === 1);
  const named = Array.from(rows.slice(0, mostNamed), (row) => `${labelOf(tracks.key('id')[tracks.track[row]], model.word(classes[row]))} ${placeText(x[row], y[row])}`);
  const rest = rows.length > mostNamed ? ` and ${rows.length - mostNamed} more` : '';
  return `at ${timeText(time)}: ${rows.length === 0 ? 'no confirmed track' : `${rows.length} confirmed: ${named.join('; ')}${rest}`}`;
}

/** The largest number of confirmed tracks, and what the timeline has of them. */
export function timelineText(model: Model): string {
  return model.runs.map((run, index) => {
    const lives = run.lives.filter((life) => !Number.isNaN(life.confirmed)).length;
    const most = countsOf(run).confirmed.reduce((sum, count) => Math.max(sum, count), 0);
    return `${model.isPair ? `${letterOf(index)}: ` : ''}${lives} of ${run.lives.length} system tracks were confirmed, at most ${most} at a time`;
  }).join('; ');
}
