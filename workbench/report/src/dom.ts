// SPDX-License-Identifier: Apache-2.0
// Elements from code. Text is always text: nothing here reads markup.

type Child = Node | string | null | undefined | false;

interface Properties {
  class?: string;
  id?: string;
  type?: string;
  title?: string;
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

export function button(label: string, title: string, click: () => void, properties: Properties = {}): HTMLButtonElement {
  return element('button', { type: 'button', title, 'aria-label': title, click, ...properties }, label);
}
