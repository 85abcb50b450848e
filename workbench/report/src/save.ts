// SPDX-License-Identifier: Apache-2.0
// Saves what the page shows as files of the reader.
import { csvOf, rowsOf } from './csv';
import { button, element } from './dom';

export function save(name: string, contents: Blob): void {
  const address = URL.createObjectURL(contents);
  const link = element('a');
  link.href = address;
  link.download = name;
  link.click();
  // The browser reads it after this turn.
  setTimeout(() => URL.revokeObjectURL(address), 1000);
}

/** Saves rows as CSV. The mark at the beginning tells spreadsheets that it is UTF-8. */
export function saveCsv(name: string, rows: readonly (readonly string[])[]): void {
  save(`${name}.csv`, new Blob([`\ufeff${csvOf(rows)}`], { type: 'text/csv' }));
}

/** A button that saves the table in `panel`. */
export function csvButton(panel: HTMLElement, name: string): HTMLElement {
  return button('CSV', `Save the ${name} as CSV`, () => {
    const table = panel.querySelector('table');
    if (table) {
      saveCsv(name, rowsOf(table));
    }
  }, { class: 'save' });
}

export function saveSvg(name: string, drawing: string): void {
  save(`${name}.svg`, new Blob([drawing], { type: 'image/svg+xml' }));
}

/** Saves a drawing (SVG) as a picture, in twice its size for screens and prints that resolve more. */
export async function savePng(name: string, drawing: string): Promise<void> {
  const image = new Image();
  image.src = `data:image/svg+xml,${encodeURIComponent(drawing)}`;
  await image.decode();
  const canvas = element('canvas');
  [canvas.width, canvas.height] = [2 * image.width, 2 * image.height];
  canvas.getContext('2d')?.drawImage(image, 0, 0, canvas.width, canvas.height);
  canvas.toBlob((picture) => picture && save(`${name}.png`, picture), 'image/png');
}
