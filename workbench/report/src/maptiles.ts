// SPDX-License-Identifier: Apache-2.0
// The map under the plan: tiles in Web Mercator, laid on the ground as the plan shows it, turned and scaled.
import type { EarthData, MapData, Point } from './data';
import { devicePoint, earthPoint } from './places';
import { toScreen, type Transform } from './plan';

const tileSize = 256;
const deepest = 19;
/** Of the whole Earth at depth 0, in a pixel of a tile at the equator, m. */
const widestPixel = 156543.034;
/** More are not shown at once: the plan of a device shows some hundred metres. */
const mostTiles = 64;
const mostKept = 256;

export interface Tile {
  readonly z: number;
  readonly x: number;
  readonly y: number;
}

/** Corner of tiles as latitude and longitude, degrees; x and y may be fractions. */
export function tileCorner(z: number, x: number, y: number): readonly [latitude: number, longitude: number] {
  const turn = Math.PI * (1 - (2 * y) / 2 ** z);
  return [(Math.atan(Math.sinh(turn)) * 180) / Math.PI, (x / 2 ** z) * 360 - 180];
}

/** The inverse of tileCorner. */
export function tileAt(z: number, latitude: number, longitude: number): Point {
  const turn = Math.asinh(Math.tan((latitude * Math.PI) / 180));
  return [((longitude + 180) / 360) * 2 ** z, ((1 - turn / Math.PI) / 2) * 2 ** z];
}

/** The depth whose pixels are nearest to those of the screen. */
export function depthOf(earth: EarthData, pixelsPerMetre: number): number {
  const depth = Math.round(Math.log2(widestPixel * Math.cos((earth.latitude * Math.PI) / 180) * pixelsPerMetre));
  return Math.min(deepest, Math.max(0, depth));
}

/** The tiles in a view, those in its middle first. */
export function tilesIn(earth: EarthData, transform: Transform, width: number, height: number, ratio: number): Tile[] {
  const z = depthOf(earth, transform.scale * ratio);
  const corners = [[0, 0], [width, 0], [0, height], [width, height]].map(([px, py]) =>
    tileAt(z, ...earthPoint(earth, (transform.top - py) / transform.scale, (transform.left - px) / transform.scale)));
  const range = (axis: 0 | 1): Point => {
    const all = corners.map((corner) => corner[axis]);
    return [Math.max(0, Math.floor(Math.min(...all))), Math.min(2 ** z - 1, Math.floor(Math.max(...all)))];
  };
  const [[left, right], [top, bottom]] = [range(0), range(1)];
  if ((right - left + 1) * (bottom - top + 1) > 4 * mostTiles) {
    return [];  // zoomed out beyond every use
  }
  const tiles: Tile[] = [];
  for (let y = top; y <= bottom; ++y) {
    for (let x = left; x <= right; ++x) {
      tiles.push({ z, x, y });
    }
  }
  const distance = ({ x, y }: Tile) => Math.hypot(x - (left + right) / 2, y - (top + bottom) / 2);
  return tiles.sort((a, b) => distance(a) - distance(b)).slice(0, mostTiles);
}

/** Where the corners of a tile are on the screen: top left, top right, bottom left. */
export function placeOf(earth: EarthData, transform: Transform, { z, x, y }: Tile): readonly [Point, Point, Point] {
  const at = (dx: number, dy: number) => toScreen(transform, ...devicePoint(earth, ...tileCorner(z, x + dx, y + dy)));
  return [at(0, 0), at(1, 0), at(0, 1)];
}

export class MapTiles {
  private readonly images = new Map<string, HTMLImageElement>();
  private failed = 0;

  /** @param changed called when a tile has come */
  constructor(private readonly map: MapData, private readonly earth: EarthData, private readonly changed: () => void) {}

  /** Whether no tile has come of those that were asked for. */
  get isMissing(): boolean {
    return this.failed > 0 && [...this.images.values()].every((image) => image.naturalWidth === 0);
  }

  draw(context: CanvasRenderingContext2D, transform: Transform, width: number, height: number): void {
    const ratio = window.devicePixelRatio || 1;
    for (const tile of tilesIn(this.earth, transform, width, height, ratio)) {
      const image = this.imageOf(tile);
      if (!image.complete || image.naturalWidth === 0) {
        continue;
      }
      const [[x, y], [rightX, rightY], [downX, downY]] = placeOf(this.earth, transform, tile);
      context.save();
      context.globalAlpha = 0.6;  // for the contrast of what lies on it
      context.transform((rightX - x) / tileSize, (rightY - y) / tileSize, (downX - x) / tileSize, (downY - y) / tileSize, x, y);
      // Half a pixel more, so that no seams are seen.
      context.drawImage(image, 0, 0, tileSize + 0.5, tileSize + 0.5);
      context.restore();
    }
  }

  /** Asks for a tile once; the oldest ones are forgotten. */
  private imageOf({ z, x, y }: Tile): HTMLImageElement {
    const address = this.map.tiles.replace('{z}', String(z)).replace('{x}', String(x)).replace('{y}', String(y));
    let image = this.images.get(address);
    if (!image) {
      image = new Image();
      image.addEventListener('load', this.changed);
      image.addEventListener('error', () => {
        ++this.failed;
        this.changed();
      });
      image.src = address;
      this.images.set(address, image);
      if (this.images.size > mostKept) {
        this.images.delete(this.images.keys().next().value as string);
      }
    }
    return image;
  }
}
