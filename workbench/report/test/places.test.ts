// SPDX-License-Identifier: Apache-2.0
import { describe, expect, it } from 'vitest';
import { labelSpacing, multiplesIn } from '../src/planaxes';
import { directionText, earthPoint, earthText, placeText } from '../src/places';

const earth = { latitude: 55, longitude: -13, heading: 90, latitudePerNorth: 9e-6, longitudePerEast: 1.6e-5 };

describe('a place', () => {
  it('is told as seen from the device', () => {
    expect(placeText(27.12, -10.84)).toBe('27.1 m ahead, 10.8 m right');
    expect(placeText(-3, 2)).toBe('3.0 m behind, 2.0 m left');
    expect(placeText(NaN, 2)).toBe('–');
  });

  it('on Earth follows the heading of the device', () => {
    // Facing east: ahead is east, left is north.
    const [latitude, longitude] = earthPoint(earth, 100, 10);
    expect(latitude).toBeCloseTo(55 + 10 * 9e-6, 9);
    expect(longitude).toBeCloseTo(-13 + 100 * 1.6e-5, 9);
    expect(earthText(earth, 100, 10)).toBe('55.000090° N, 12.998400° W');
  });
});

describe('a direction', () => {
  it('is told from north when the heading is known', () => {
    expect(directionText(313.4, earth)).toBe('north-east, 43° from north');
    expect(directionText(-90.2, earth)).toBe('north, 0° from north');
  });

  it('is told from ahead otherwise', () => {
    expect(directionText(43, null)).toBe('43° right of ahead');
    expect(directionText(-43, null)).toBe('43° left of ahead');
    expect(directionText(359.8, null)).toBe('ahead');
    expect(directionText(180, null)).toBe('back');
    expect(directionText(NaN, null)).toBe('–');
  });
});

describe('the axes of the plan', () => {
  it('have labels at round distances', () => {
    expect(labelSpacing(10, 60)).toBe(10);
    expect(labelSpacing(0.01, 60)).toBe(1000);
    expect(multiplesIn(-12, 21, 10)).toEqual([-10, 0, 10, 20]);
    expect(multiplesIn(11, 19, 10)).toEqual([]);
  });
});
