// SPDX-License-Identifier: Apache-2.0
// Reads what `veskar export --to mcap` writes with the format's own reader, and compares it with the
// published schemas and with the recording.
import { createRequire } from 'node:module';
import { readFileSync } from 'node:fs';
import { beforeAll, describe, expect, it } from 'vitest';
import Ajv, { type ValidateFunction } from 'ajv';
import { McapIndexedReader, McapStreamReader, type McapTypes } from '@mcap/core';
import { decompress } from 'fzstd';
import { at, fuse, veskar } from './reports';

interface Frame {
  source: string;
  time: number;
  received?: number;
  tracks?: unknown[];
  objects?: unknown[];
}

type Schema = Record<string, unknown> & { properties?: Record<string, Schema>; items?: Schema; type?: string };

const published = createRequire(import.meta.url)('@foxglove/schemas/jsonschema') as Record<string, Schema>;
const ajv = new Ajv({ strict: false });
const decompressHandlers = {
  zstd: (bytes: Uint8Array, size: bigint): Uint8Array => {
    const plain = decompress(bytes);
    expect(plain.length).toBe(Number(size));
    return plain;
  },
};

const linesOf = (path: string): Frame[] =>
  readFileSync(path, 'utf8').split('\n').filter((line) => line.includes('"time":')).map((line) => JSON.parse(line) as Frame);

const nanos = (seconds: number): bigint => BigInt(Math.round(seconds * 1e6)) * 1000n;

let bytes: Uint8Array;
let reader: McapIndexedReader;
/** The frames of every layer, in their order. */
const layers = new Map<string, Frame[]>();

beforeAll(async () => {
  const { recording, fused } = fuse('gate');
  veskar('export', recording, fused, '--to', 'mcap', '--site', '55.7', '13.2', '140', '-o', at('gate.mcap'));
  for (const frame of linesOf(recording)) {
    layers.set(frame.source, [...(layers.get(frame.source) ?? []), frame]);
  }
  layers.set('fused', linesOf(fused));
  bytes = new Uint8Array(readFileSync(at('gate.mcap')));
  reader = await McapIndexedReader.Initialize({
    readable: {
      size: () => Promise.resolve(BigInt(bytes.length)),
      read: (offset: bigint, size: bigint) => Promise.resolve(bytes.slice(Number(offset), Number(offset + size))),
    },
    decompressHandlers,
  });
});

const topicOf = (message: McapTypes.TypedMcapRecords['Message']): string => reader.channelsById.get(message.channelId)!.topic;

async function messagesOf(topic: string): Promise<McapTypes.TypedMcapRecords['Message'][]> {
  const found = [];
  for await (const message of reader.readMessages({ topics: [topic] })) {
    found.push(message);
  }
  return found;
}

describe('an export of the gate scene', () => {
  it('has a topic of every kind for every layer', () => {
    const topics = ['truth', 'video', 'radar', 'fused'].flatMap((layer) => ['scene', 'locations', 'image'].map((kind) => `/${layer}/${kind}`));
    const written = [...reader.channelsById.values()].map(({ topic }) => topic);
    expect(written.sort()).toEqual(['/tf', '/map', ...topics].sort());
    for (const { messageEncoding } of reader.channelsById.values()) {
      expect(messageEncoding).toBe('json');
    }
  });

  it('uses published schemas, and says what it writes of them', () => {
    const expectPart = (part: Schema, whole: Schema): void => {
      expect(part.type).toBe(whole.type ?? 'integer'); // enumerations have no type
      for (const [name, member] of Object.entries(part.properties ?? {})) {
        expect(whole.properties).toHaveProperty(name);
        expectPart(member, whole.properties![name]!);
      }
      if (part.items) {
        expectPart(part.items, whole.items!);
      }
    };
    const names = [...reader.schemasById.values()].map(({ name }) => name);
    expect(names.sort()).toEqual(['FrameTransforms', 'GeoJSON', 'ImageAnnotations', 'LocationFixes', 'SceneUpdate'].map((name) => `foxglove.${name}`).sort());
    for (const { name, encoding, data } of reader.schemasById.values()) {
      expect(encoding).toBe('jsonschema');
      expectPart(JSON.parse(new TextDecoder().decode(data)) as Schema, published[name.replace('foxglove.', '')]!);
    }
  });

  it('has messages that are valid by the published schemas', async () => {
    const checks = new Map<number, ValidateFunction>();
    for (const [id, channel] of reader.channelsById) {
      const name = reader.schemasById.get(channel.schemaId)!.name.replace('foxglove.', '');
      checks.set(id, ajv.compile(published[name]!));
    }
    let count = 0n;
    for await (const message of reader.readMessages({ validateCrcs: true })) {
      const check = checks.get(message.channelId)!;
      const isValid = check(JSON.parse(new TextDecoder().decode(message.data)));
      expect(isValid, `${topicOf(message)}: ${JSON.stringify(check.errors)}`).toBe(true);
      ++count;
    }
    expect(count).toBe(reader.statistics!.messageCount);
    expect(count).toBeGreaterThan(1000n);
  });

  it('has a message of every kind for every frame, at its times', async () => {
    for (const [layer, frames] of layers) {
      expect(frames.length).toBeGreaterThan(50);
      for (const kind of ['scene', 'locations', 'image']) {
        const messages = await messagesOf(`/${layer}/${kind}`);
        expect(messages.map(({ logTime }) => logTime)).toEqual(frames.map(({ time, received }) => nanos(received ?? time)));
        expect(messages.map(({ publishTime }) => publishTime)).toEqual(frames.map(({ time }) => nanos(time)));
        expect(messages.map(({ sequence }) => sequence)).toEqual(frames.map((_, i) => i));
      }
    }
  });

  it('shows every true object', async () => {
    const scenes = await messagesOf('/truth/scene');
    const shown = scenes.map(({ data }) => (JSON.parse(new TextDecoder().decode(data)) as { entities: unknown[] }).entities.length);
    expect(shown).toEqual(layers.get('truth')!.map(({ objects }) => objects!.length));
    expect(Math.max(...shown)).toBeGreaterThan(1);
  });

  it('has statistics and indexes of everything', () => {
    const { messageCount, channelMessageCounts, chunkCount, messageStartTime, messageEndTime } = reader.statistics!;
    const frames = [...layers.values()].flat();
    expect(messageCount).toBe(BigInt(3 * frames.length + 2));
    expect([...channelMessageCounts.values()].reduce((sum, count) => sum + count)).toBe(messageCount);
    expect(reader.chunkIndexes.length).toBe(chunkCount);
    expect(chunkCount).toBeGreaterThan(1);
    const times = frames.map(({ time, received }) => nanos(received ?? time)).sort((a, b) => Number(a - b));
    expect([messageStartTime, messageEndTime]).toEqual([times[0], times[times.length - 1]]);
    for (const { compression, compressedSize, uncompressedSize } of reader.chunkIndexes) {
      expect(compression).toBe('zstd');
      expect(compressedSize).toBeLessThan(uncompressedSize / 4n);
    }
  });

  it('can be read from the beginning to the end', () => {
    const stream = new McapStreamReader({ decompressHandlers, validateCrcs: true });
    stream.append(bytes);
    let messages = 0n;
    let last = '';
    for (let record = stream.nextRecord(); record; record = stream.nextRecord()) {
      last = record.type;
      messages += record.type === 'Message' ? 1n : 0n;
    }
    expect(last).toBe('Footer');
    expect(stream.done()).toBe(true);
    expect(messages).toBe(reader.statistics!.messageCount);
  });
});
