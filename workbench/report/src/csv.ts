// SPDX-License-Identifier: Apache-2.0
// Tables as comma-separated values (RFC 4180).

/** A cell; what a spreadsheet would take for a formula is quoted with an apostrophe. */
function cellOf(text: string): string {
  const safe = /^[=@\t]/.test(text) || (/^[+-]/.test(text) && Number.isNaN(Number.parseFloat(text))) ? `'${text}` : text;
  return /[",\r\n]/.test(safe) ? `"${safe.replaceAll('"', '""')}"` : safe;
}

export function csvOf(rows: readonly (readonly string[])[]): string {
  return rows.map((row) => `${row.map(cellOf).join(',')}\r\n`).join('');
}

/** The texts of a table of the page. */
export function rowsOf(table: HTMLTableElement): string[][] {
  return Array.from(table.rows, (row) => Array.from(row.cells, (cell) => (cell.textContent ?? '').trim()));
}
