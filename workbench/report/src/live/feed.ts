// SPDX-License-Identifier: Apache-2.0
// The stream of what happens, from the program that served the page.
import type { Selection } from '../state';
import type { DecisionData, HelloData, PictureData, StateData, StatusData } from './protocol';

export interface Listener {
  hello(data: HelloData): void;
  state(data: StateData): void;
  status(data: StatusData): void;
  decision(data: DecisionData): void;
  picture(data: PictureData): void;
  /** Whether the program can be reached. */
  connected(isConnected: boolean): void;
}

/** Browsers connect again by themselves, except after an answer that is no stream: then after this time, ms. */
const patience = 2000;

export class Feed {
  private source: EventSource | null = null;
  private selection: Selection | null = null;
  private retry = 0;

  constructor(private readonly listener: Listener) {}

  /** Connects anew, with the decisions about a track. */
  open(selection: Selection | null): void {
    clearTimeout(this.retry);
    this.source?.close();
    this.selection = selection;
    const source = new EventSource(selection ? `/events?select=${selection.kind}:${selection.id}` : '/events');
    this.source = source;
    const on = <Name extends 'hello' | 'state' | 'status' | 'decision' | 'picture'>(name: Name) =>
      source.addEventListener(name, (event) => {
        const tell = this.listener[name] as (data: unknown) => void;
        tell.call(this.listener, JSON.parse((event as MessageEvent<string>).data));
      });
    on('hello');
    on('state');
    on('status');
    on('decision');
    on('picture');
    source.addEventListener('open', () => this.listener.connected(true));
    source.addEventListener('error', () => {
      this.listener.connected(false);
      if (source.readyState === EventSource.CLOSED && source === this.source) {
        this.retry = window.setTimeout(() => this.open(this.selection), patience);
      }
    });
  }
}
