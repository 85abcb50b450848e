// SPDX-License-Identifier: Apache-2.0
// Light or dark: as the reader chose, or as the system is set.
import type { Theme } from './state';

const systemIsDark = '(prefers-color-scheme: dark)';

/** Selects the colours of the style sheet. */
export function applyTheme(theme: Theme): void {
  const isDark = theme === 'dark' || (theme === 'auto' && matchMedia(systemIsDark).matches);
  document.documentElement.dataset['theme'] = isDark ? 'dark' : 'light';
}

/** The opposite of the theme that is shown. */
export function otherTheme(): Theme {
  return document.documentElement.dataset['theme'] === 'dark' ? 'light' : 'dark';
}

/** Calls `change` when the system's setting changes. */
export function onSystemTheme(change: () => void): void {
  matchMedia(systemIsDark).addEventListener('change', change);
}
