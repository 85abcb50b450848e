// SPDX-License-Identifier: Apache-2.0
// Runs the live program and a broker, through which simulated sensors publish meanwhile.
import { spawn, type ChildProcess } from 'node:child_process';
import { readFileSync, writeFileSync } from 'node:fs';
import { createServer } from 'node:net';
import { join } from 'node:path';
import { at, config, program, veskar } from './reports';

/** A port of 127.0.0.1 that was free a moment ago. */
export function freePort(): Promise<number> {
  return new Promise((found) => {
    const server = createServer();
    server.listen(0, '127.0.0.1', () => {
      const { port } = server.address() as { port: number };
      server.close(() => found(port));
    });
  });
}

const ended = (child: ChildProcess) => new Promise<void>((done) => (child.exitCode === null && child.signalCode === null ? child.once('exit', () => done()) : done()));

export class LiveSite {
  private runs: ChildProcess | null = null;
  private sensors: ChildProcess | null = null;

  private constructor(
    private readonly scenario: string,
    readonly port: number,
    private readonly run: string,
    private readonly broker: ChildProcess,
  ) {}

  get address(): string {
    return `http://127.0.0.1:${this.port}/`;
  }

  /** Starts the program and its sensors; `view` adds to the key of the configuration. */
  static async start(scenario: string, view: object = {}): Promise<LiveSite> {
    const [port, brokerPort] = [await freePort(), await freePort()];
    const demo = JSON.parse(readFileSync(join(config, 'run-demo.json'), 'utf8')) as { brokers: object[] };
    const run = {
      ...demo, brokers: demo.brokers.map((broker) => ({ ...broker, port: brokerPort })), outputs: [],
      view: { address: `127.0.0.1:${port}`, ...view },
    };
    writeFileSync(at(`${scenario}.run.json`), JSON.stringify(run));
    const broker = spawn('mosquitto', ['-p', String(brokerPort)], { stdio: 'ignore' });
    const site = new LiveSite(scenario, port, at(`${scenario}.run.json`), broker);
    await site.startProgram();
    site.publish();
    return site;
  }

  /** Starts the program, and waits until it serves its view. */
  async startProgram(): Promise<void> {
    const child = spawn(program, ['run', this.run], { stdio: ['ignore', 'ignore', 'pipe'] });
    this.runs = child;
    let told = '';
    await new Promise<void>((done, fail) => {
      child.stderr.on('data', (text: Buffer) => {
        told += text.toString();
        if (told.includes('Live view: ')) {
          done();
        }
      });
      child.once('exit', () => fail(new Error(told)));
    });
  }

  async stopProgram(): Promise<void> {
    if (this.runs) {
      this.runs.kill('SIGTERM');
      await ended(this.runs);
    }
  }

  /** Lets the sensors publish the scenario in real time, again and again. */
  publish(): void {
    const child = spawn(program, ['simulate', join(config, 'scenarios', `${this.scenario}.json`), '--publish', this.run], { stdio: 'ignore' });
    this.sensors = child;
    child.once('exit', () => {
      if (this.sensors === child) {
        this.publish();
      }
    });
  }

  async stopSensors(): Promise<void> {
    const child = this.sensors;
    this.sensors = null;
    if (child) {
      child.kill('SIGTERM');
      await ended(child);
    }
  }

  async stop(): Promise<void> {
    await this.stopSensors();
    await this.stopProgram();
    this.broker.kill('SIGTERM');
    await ended(this.broker);
  }
}

/** True places of a scenario: at each time, s, those of its objects, m. */
export type Truth = readonly { readonly time: number; readonly places: readonly (readonly [number, number])[] }[];

export function truthOf(scenario: string): Truth {
  const file = at(`${scenario}.truth.jsonl`);
  veskar('simulate', join(config, 'scenarios', `${scenario}.json`), '-o', file);
  return readFileSync(file, 'utf8').trim().split('\n').map((line) => JSON.parse(line) as { source?: string; time: number; objects: { position: [number, number] }[] })
    .filter(({ source }) => source === 'truth')
    .map(({ time, objects }) => ({ time, places: objects.map(({ position }) => position) }));
}
