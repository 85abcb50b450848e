// SPDX-License-Identifier: Apache-2.0
// Tiles of a map on the ground.
import { describe, expect, it } from 'vitest';
import { depthOf, placeOf, tileAt, tileCorner, tilesIn } from '../src/maptiles';
import { devicePoint, earthPoint } from '../src/places';
import { toScreen } from '../src/plan';

const earth = { latitude: 55.7, longitude: 13.2, heading: 30, latitudePerNorth: 8.98e-6, longitudePerEast: 1.591e-5 };
const transform = { scale: 8, left: 300, top: 500 };

describe('tiles', () => {
  it('have the corners of Web Mercator', () => {
    expect(tileCorner(0, 0, 0)[0]).toBeCloseTo(85.0511, 4);
    expect(tileCorner(1, 1, 1)).toEqual([0, 0]);
    expect(tileAt(1, 0, 0)).toEqual([1, 1]);
    // As map servers document it: 51.51202° N, 0.02435° E at depth 17.
    expect(tileAt(17, 51.51202, 0.02435).map(Math.floor)).toEqual([65544, 43582]);
    const [x, y] = tileAt(18, ...tileCorner(18, 1234.25, 777.5));
    expect([x, y]).toEqual([expect.closeTo(1234.25, 6), expect.closeTo(777.5, 6)]);
  });

  it('have about the pixels of the screen', () => {
    for (const scale of [0.5, 3, 8, 20]) {
      const depth = depthOf(earth, scale);
      const metres = (156543.034 * Math.cos((earth.latitude * Math.PI) / 180)) / 2 ** depth;
      expect(metres * scale).toBeGreaterThan(depth === 19 ? 0 : 0.7);
      expect(metres * scale).toBeLessThan(depth === 19 ? 100 : 1.42);
    }
    expect(depthOf(earth, 1e-9)).toBe(0);
  });

  it('lie where their places on Earth are, turned with the device', () => {
    const [x, y] = [40, -12];
    const [latitude, longitude] = earthPoint(earth, x, y);
    expect(devicePoint(earth, latitude, longitude)).toEqual([expect.closeTo(x, 6), expect.closeTo(y, 6)]);
    const z = 18;
    const [tx, ty] = tileAt(z, latitude, longitude);
    const tile = { z, x: Math.floor(tx), y: Math.floor(ty) };
    const [origin, right, down] = placeOf(earth, transform, tile);
    const [u, v] = [tx - tile.x, ty - tile.y];
    const at = (axis: 0 | 1) => origin[axis] + u * (right[axis] - origin[axis]) + v * (down[axis] - origin[axis]);
    const [px, py] = toScreen(transform, x, y);
    expect(Math.hypot(at(0) - px, at(1) - py)).toBeLessThan(0.1);
    // North is 30° to the left of ahead, which is up.
    expect((Math.atan2(right[1] - origin[1], right[0] - origin[0]) * 180) / Math.PI).toBeCloseTo(-30, 0);
  });

  it('cover the view, and are few', () => {
    const tiles = tilesIn(earth, transform, 600, 600, 1);
    expect(tiles.length).toBeGreaterThan(3);
    expect(tiles.length).toBeLessThanOrEqual(64);
    for (const [px, py] of [[0, 0], [600, 0], [0, 600], [600, 600], [300, 300]]) {
      const [latitude, longitude] = earthPoint(earth, (transform.top - py) / transform.scale, (transform.left - px) / transform.scale);
      const [x, y] = tileAt(tiles[0].z, latitude, longitude).map(Math.floor);
      expect(tiles).toContainEqual({ z: tiles[0].z, x, y });
    }
    expect(tilesIn(earth, { ...transform, scale: 8e-9 }, 600, 600, 1).length).toBeLessThanOrEqual(64);
  });
});
