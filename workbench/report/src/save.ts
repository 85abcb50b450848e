// SPDX-License-Identifier: Apache-2.0
// Saves what the page shows as files of the reader.
import { csvOf, rowsOf } from './csv';
import { button, element } from './dom';

export function save(name: string, type: string, text: string): void {
  const address = URL.createObjectURL(new Blob([text], { type }));
  const link = element('a');
  link.href = address;
  link.download = name;
  link.click();
  // The browser reads it after this turn.
  setTimeout(() => URL.revokeObjectURL(address), 1000);
}

/** A button that saves the table in `panel`. The mark at the beginning tells spreadsheets that it is UTF-8. */
export function csvButton(panel: HTMLElement, name: string): HTMLElement {
  return button('CSV', `Save the ${name} as CSV`, () => {
    const table = panel.querySelector('table');
    if (table) {
      save(`${name}.csv`, 'text/csv', `\ufeff${csvOf(rowsOf(table))}`);
    }
  }, { class: 'save' });
}
