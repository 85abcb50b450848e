// SPDX-License-Identifier: Apache-2.0
// Bundles the page into one HTML file: node build.mjs OUTPUT
// The page's content security policy permits only what is in the bundle.
import { createHash } from 'node:crypto';
import { readFileSync, writeFileSync } from 'node:fs';
import { build } from 'esbuild';

const output = process.argv[2] ?? 'page.html';
const result = await build({
  entryPoints: ['src/main.ts'],
  bundle: true,
  minify: true,
  target: ['es2021'],
  charset: 'ascii',
  legalComments: 'eof',
  write: false,
  outdir: 'out',
});

/** @param {string} suffix */
const textOf = (suffix) => (result.outputFiles.find((file) => file.path.endsWith(suffix))?.text ?? '').trim();
/** @param {string} text */
const hashOf = (text) => `'sha256-${createHash('sha256').update(text, 'utf8').digest('base64')}'`;
const script = textOf('.js');
const style = textOf('.css');
if (script === '' || style === '') {
  throw new Error('the bundle lacks its script or its style');
}
if (/<\/script|<!--/i.test(script) || /<\/style/i.test(style)) {
  throw new Error('the bundle would end its own element');
}

const policy = [
  "default-src 'none'",
  `script-src ${hashOf(script)}`,
  `style-src ${hashOf(style)}`,
  "img-src data:",
  "base-uri 'none'",
  "form-action 'none'",
  "require-trusted-types-for 'script'",
].join('; ');

// Functions as replacement, so that $ in the bundle is not interpreted.
const page = readFileSync('src/index.html', 'utf8')
  .replace('@policy@', () => policy)
  .replace('@style@', () => style)
  .replace('@script@', () => script);
writeFileSync(output, page);
