// SPDX-License-Identifier: Apache-2.0
// Creates elements. Text is always inserted as text, never parsed as markup.

type Child = Node | string | null | undefined | false;

export interface Properties {
  class?: string;
  id?: string;
  type?: string;
  title?: string;
  placeholder?: string;
  for?: string;
  value?: string;
  tabindex?: string;
  role?: string;
  colspan?: string;
  scope?: string;
  [aria: `aria-${string}`]: string;
  [data: `data-${string}`]: string;
  click?: (event: MouseEvent) => void;
}

export function element<Name extends keyof HTMLElementTagNameMap>(
  name: Name,
  properties: Properties = {},
  ...children: Child[]
): HTMLElementTagNameMap[Name] {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(properties)) {
    if (typeof value === 'function') {
      made.addEventListener(key, value as EventListener);
    } else if (value !== undefined) {
      made.setAttribute(key, value as string);
    }
  }
  made.append(...children.filter((child): child is Node | string => child !== null && child !== undefined && child !== false));
  return made;
}

const drawings = {
  back: 'M7 6v12M18 6l-8 6 8 6z',
  on: 'M17 6v12M6 6l8 6-8 6z',
  play: 'M8 5l11 7-11 7z',
  pause: 'M8 5v14M16 5v14',
  theme: 'M12 4a8 8 0 1 0 0 16zM12 4a8 8 0 0 1 0 16',
  help: 'M9 9.5a3 3 0 1 1 4.2 2.7c-.9.5-1.2 1-1.2 1.9M12 17.4v.1',
} as const;

/** An icon for a button. */
export function icon(name: keyof typeof drawings): SVGSVGElement {
  const space = 'http://www.w3.org/2000/svg';
  const made = document.createElementNS(space, 'svg');
  made.setAttribute('viewBox', '0 0 24 24');
  made.setAttribute('class', `drawing drawing-${name}`);
  made.setAttribute('aria-hidden', 'true');
  const path = document.createElementNS(space, 'path');
  path.setAttribute('d', drawings[name]);
  made.append(path);
  return made;
}

/** Changes a text only where it differs, which costs the browser less. */
export function setText(target: HTMLElement, text: string): void {
  if (target.textContent !== text) {
    target.textContent = text;
  }
}

export function button(label: Child, title: string, click: () => void, properties: Properties = {}): HTMLButtonElement {
  return element('button', { type: 'button', title, 'aria-label': title, click, ...properties }, label);
}
