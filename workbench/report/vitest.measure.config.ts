// SPDX-License-Identifier: Apache-2.0
// Measurements, which judge nothing: scripts/test-report --measure.
import { defineConfig } from 'vitest/config';

export default defineConfig({
  test: { include: ['e2e/**/*.measure.ts'], environment: 'node', fileParallelism: false, testTimeout: 600_000, hookTimeout: 120_000 },
});
