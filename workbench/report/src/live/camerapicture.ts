// SPDX-License-Identifier: Apache-2.0
// The newest picture of the camera, as the program serves it.
import { quantity } from '../facts';
import type { PictureData } from './protocol';

/** Gives the picture that the program announced last; null: it cannot be read. */
export type Load = () => Promise<ImageBitmap | null>;

export async function loadPicture(): Promise<ImageBitmap | null> {
  try {
    const answer = await fetch('/picture');
    return answer.ok ? await createImageBitmap(await answer.blob()) : null;
  } catch {
    return null;
  }
}

export class CameraPicture {
  image: ImageBitmap | null = null;
  private announced: PictureData | null = null;
  private shown: PictureData | null = null;
  private isLoading = false;
  private isBroken = false;

  /** @param changed called when there is another picture, or none */
  constructor(private readonly changed: () => void, private readonly load: Load = loadPicture) {}

  /** Of another start of the program, or none: nothing is known. */
  reset(): void {
    this.announced = null;
    this.show(null, null);
  }

  take(data: PictureData): void {
    if (data.number === this.announced?.number) {
      return;  // told again after a reconnection
    }
    this.announced = data;
    if (data.fault !== undefined) {
      this.show(null, data);
    } else if (!this.isLoading) {
      void this.loadNewest();
    }
  }

  /** How old the picture is beside what is drawn over it, or why there is none. */
  text(now: number): string {
    const { shown } = this;
    if (!shown) {
      return '';
    }
    if (shown.fault !== undefined || this.isBroken) {
      return shown.fault ?? 'the picture cannot be read';
    }
    const age = now - (shown.time ?? NaN);
    return `picture ${age < 100 ? quantity(Math.max(age, 0), 1, 's') : quantity(age / 60, 0, 'min')} old`;
  }

  /** One at a time: over a slow network pictures are left out, and none queues. */
  private async loadNewest(): Promise<void> {
    this.isLoading = true;
    for (let data = this.announced; data && data.fault === undefined && data !== this.shown; data = this.announced) {
      const image = await this.load();
      if (this.announced?.fault !== undefined || !this.announced) {
        image?.close();
        break;
      }
      this.show(image, data);
    }
    this.isLoading = false;
  }

  private show(image: ImageBitmap | null, data: PictureData | null): void {
    this.image?.close();
    this.image = image;
    this.shown = data;
    this.isBroken = image === null;
    this.changed();
  }
}
