// SPDX-License-Identifier: Apache-2.0
// The colours of the style sheet, for canvases.

export interface Palette {
  readonly text: string;
  readonly muted: string;
  readonly faint: string;
  readonly line: string;
  readonly ring: string;
  readonly surface: string;
  readonly ground: string;
  readonly system: string;
  readonly other: string;
  readonly tentative: string;
  readonly video: string;
  readonly radar: string;
  readonly truth: string;
  readonly alarm: string;
  readonly select: string;
}

const names: Record<keyof Palette, string> = {
  text: '--text',
  muted: '--muted',
  faint: '--faint',
  line: '--line',
  ring: '--ring',
  surface: '--surface',
  ground: '--ground',
  system: '--system',
  other: '--other',
  tentative: '--tentative',
  video: '--video',
  radar: '--radar',
  truth: '--truth',
  alarm: '--alarm',
  select: '--select',
};

export function readPalette(): Palette {
  const style = getComputedStyle(document.documentElement);
  return Object.fromEntries(
    Object.entries(names).map(([key, name]) => [key, style.getPropertyValue(name).trim()]),
  ) as unknown as Palette;
}

/** The colour of a system track. */
export function trackColour(palette: Palette, run: number, isConfirmed: boolean): string {
  return isConfirmed ? runColour(palette, run) : palette.tentative;
}

/** The colour of a run's confirmed tracks. */
export function runColour(palette: Palette, run: number): string {
  return run === 0 ? palette.system : palette.other;
}
