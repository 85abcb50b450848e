// SPDX-License-Identifier: Apache-2.0
// Makes reports by running the program.
import { execFileSync } from 'node:child_process';
import { mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';

function fromEnvironment(name: string): string {
  const value = process.env[name];
  if (!value) {
    throw new Error(`${name} is not set; scripts/test-report sets it`);
  }
  return value;
}

export const program = fromEnvironment('VESKAR_PROGRAM');
export const config = fromEnvironment('VESKAR_CONFIG');
/** Directory of recordings, reports and pictures. */
export const output = fromEnvironment('VESKAR_E2E_OUTPUT');
mkdirSync(output, { recursive: true });

export function veskar(...words: string[]): void {
  execFileSync(program, words, { stdio: ['ignore', 'ignore', 'inherit'] });
}

export const at = (name: string): string => join(output, name);

/** Simulates a shipped scenario and fuses it; returns the file names. */
export function fuse(scenario: string): { recording: string; fused: string; explained: string } {
  const files = { recording: at(`${scenario}.jsonl`), fused: at(`${scenario}.fused.jsonl`), explained: at(`${scenario}.why.jsonl`) };
  veskar('simulate', join(config, 'scenarios', `${scenario}.json`), '-o', files.recording);
  veskar('replay', files.recording, '-o', files.fused, '--explain', files.explained);
  return files;
}

/** The report of a shipped scenario. */
export function reportOf(scenario: string): string {
  const { recording, fused, explained } = fuse(scenario);
  veskar('report', recording, fused, '--explain', explained, '-o', at(`${scenario}.html`));
  return at(`${scenario}.html`);
}

/** Where the device of mappedReport() is. */
export const site = { latitude: 55.7189, longitude: 13.2254, heading: 140 };

/** The report of a scenario at a place on Earth, over a map. */
export function mappedReport(scenario: string, tiles: string): string {
  const files = { scenario: at(`${scenario}.site.json`), recording: at(`${scenario}.site.jsonl`), fused: at(`${scenario}.site.fused.jsonl`) };
  // The comment in its first lines is no JSON.
  const text = readFileSync(join(config, 'scenarios', `${scenario}.json`), 'utf8').replace(/^\s*\/\/.*$/gm, '');
  writeFileSync(files.scenario, JSON.stringify({ ...(JSON.parse(text) as object), site }));
  veskar('simulate', files.scenario, '-o', files.recording);
  veskar('replay', files.recording, '-o', files.fused);
  veskar('report', files.recording, files.fused, '--map-tiles', tiles, '--map-attribution', '© <i>somebody</i>', '-o', at(`${scenario}.map.html`));
  return at(`${scenario}.map.html`);
}

/** The report of a scenario with the shipped configuration and one with a changed gate. */
export function comparisonOf(scenario: string): string {
  const { recording, fused, explained } = fuse(scenario);
  const shipped = readFileSync(join(config, 'fusion.json'), 'utf8');
  writeFileSync(at('narrow.json'), shipped.replace(/("positionGatingDistance":\s*)[0-9.]+/, '$10.4'));
  veskar('replay', recording, '--config', at('narrow.json'), '-o', at(`${scenario}.narrow.jsonl`), '--explain', at(`${scenario}.narrow.why.jsonl`));
  veskar('report', recording, fused, at(`${scenario}.narrow.jsonl`), '--explain', explained, '--explain2', at(`${scenario}.narrow.why.jsonl`), '-o', at(`${scenario}.pair.html`));
  return at(`${scenario}.pair.html`);
}

export const markup = '</script><img src=x onerror="window.ran=1"><script>window.ran=1</script>';

/** A report in which every text that a recording may contain is markup. */
export function hostileReport(): string {
  const { recording, fused } = fuse('perimeter');
  const change = (path: string) => {
    // Edited as text: reparsing would write 5.0 in the configuration as 5.
    const text = readFileSync(path, 'utf8')
      .replace(/"name":"[^"]*"/, () => `"name":${JSON.stringify(markup)}`)
      .replace(/"origin":"[^"]*"/, () => `"origin":${JSON.stringify(markup)}`)
      .replace(/"licence":"[^"]*"/, () => `"licence":${JSON.stringify(`${markup}\u2028`)}`)
      .replaceAll('"class":"human"', () => `"class":${JSON.stringify(markup)}`)
      .replaceAll('"red"', () => JSON.stringify(markup));
    writeFileSync(path.replace('perimeter', 'hostile'), text);
  };
  change(recording);
  change(fused);
  // The tracks no longer match the recording, therefore --force.
  veskar('report', '--force', at('hostile.jsonl'), at('hostile.fused.jsonl'), '-o', at('hostile.html'));
  return at('hostile.html');
}
