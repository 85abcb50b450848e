// SPDX-License-Identifier: Apache-2.0
// Bundles a page into one HTML file: node build.mjs OUTPUT [FOLDER]
// The folder below src has the page's main.ts and index.html: "." is the report, "live" the live view,
// "calibration" the answer of a calibration.
// The page's content security policy permits only what is in the bundle.
import { createHash } from 'node:crypto';
import { readFileSync, writeFileSync } from 'node:fs';
import { build } from 'esbuild';

const [output = 'page.html', folder = '.'] = process.argv.slice(2);
const result = await build({
  entryPoints: [`src/${folder}/main.ts`],
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
  // Report and calibration are files without any source of their own.
  ...(folder !== 'live' ? ['img-src data:'] : ["img-src 'self' data:", "connect-src 'self'"]),
  "base-uri 'none'",
  "form-action 'none'",
  "require-trusted-types-for 'script'",
].join('; ');

// Functions as replacement, so that $ in the bundle is not interpreted.
const page = readFileSync(`src/${folder}/index.html`, 'utf8')
  .replace('@policy@', () => policy)
  .replace('@style@', () => style)
  .replace('@script@', () => script);
writeFileSync(output, page);
