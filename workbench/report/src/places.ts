// SPDX-License-Identifier: Apache-2.0
// Places and directions in words, as a person at the device would tell them.
import type { EarthData } from './data';

const winds = ['north', 'north-east', 'east', 'south-east', 'south', 'south-west', 'west', 'north-west'] as const;

/** A ground point in the device's frame, x forward and y left: "27.1 m ahead, 10.8 m right". */
export function placeText(x: number, y: number): string {
  if (Number.isNaN(x) || Number.isNaN(y)) {
    return '–';
  }
  const metres = (value: number, forward: string, backward: string) => `${Math.abs(value).toFixed(1)} m ${value < 0 ? backward : forward}`;
  return `${metres(x, 'ahead', 'behind')}, ${metres(y, 'left', 'right')}`;
}

/** A direction, degrees clockwise from ahead; from north when the device's heading is known. */
export function directionText(direction: number, earth: EarthData | null): string {
  if (Number.isNaN(direction)) {
    return '–';
  }
  if (earth) {
    const azimuth = Math.round((((direction + earth.heading) % 360) + 360) % 360) % 360;
    return `${winds[Math.round(azimuth / 45) % 8]}, ${azimuth}° from north`;
  }
  const turn = Math.round(((((direction + 180) % 360) + 360) % 360) - 180);
  return Math.abs(turn) === 180 ? 'back' : turn === 0 ? 'ahead' : `${Math.abs(turn)}° ${turn < 0 ? 'left' : 'right'} of ahead`;
}

/** Latitude and longitude of a ground point, degrees. */
export function earthPoint(earth: EarthData, x: number, y: number): readonly [latitude: number, longitude: number] {
  const heading = (earth.heading * Math.PI) / 180;
  const north = x * Math.cos(heading) + y * Math.sin(heading);
  const east = x * Math.sin(heading) - y * Math.cos(heading);
  return [earth.latitude + north * earth.latitudePerNorth, earth.longitude + east * earth.longitudePerEast];
}

/** The ground point at a latitude and longitude, degrees: the inverse of earthPoint. */
export function devicePoint(earth: EarthData, latitude: number, longitude: number): readonly [x: number, y: number] {
  const heading = (earth.heading * Math.PI) / 180;
  const north = (latitude - earth.latitude) / earth.latitudePerNorth;
  const east = (longitude - earth.longitude) / earth.longitudePerEast;
  return [north * Math.cos(heading) + east * Math.sin(heading), north * Math.sin(heading) - east * Math.cos(heading)];
}

/** "55.718912° N, 13.225401° E"; the last digit is about a decimetre. */
export function earthText(earth: EarthData, x: number, y: number): string {
  if (Number.isNaN(x) || Number.isNaN(y)) {
    return '–';
  }
  const [latitude, longitude] = earthPoint(earth, x, y);
  return `${Math.abs(latitude).toFixed(6)}° ${latitude < 0 ? 'S' : 'N'}, ${Math.abs(longitude).toFixed(6)}° ${longitude < 0 ? 'W' : 'E'}`;
}
