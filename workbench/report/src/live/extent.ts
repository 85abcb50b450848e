// SPDX-License-Identifier: Apache-2.0
// The part of the ground that the plan shows: grows with the objects.
import type { SceneData } from '../data';
import type { Extent } from '../plan';
import type { FrameData } from './protocol';

/** The shown part grows by so much more than an object needs, m, so that it rests for a while. */
const margin = 5;

export class GrowingExtent implements Extent {
  back = 0;
  front = 20;
  right = -10;
  left = 10;

  constructor(private readonly scene: SceneData) {}

  /** Shows the confirmed objects of a frame within the radar's range. */
  include(frame: FrameData): void {
    for (const { confirmed, position } of frame.tracks) {
      const [x, y] = position ?? [null, null];
      if (confirmed && x !== null && y !== null && Math.hypot(x, y) < this.scene.radar.range) {
        this.back = x < this.back ? x - margin : this.back;
        this.front = x > this.front ? x + margin : this.front;
        this.right = y < this.right ? y - margin : this.right;
        this.left = y > this.left ? y + margin : this.left;
      }
    }
  }
}
