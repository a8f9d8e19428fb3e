// The package's types, as a strict compiler sees them.
import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { cpSync, existsSync, mkdirSync, mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';

const { PPL_PACKAGE: folder, PPL_ROOT: root, PPL_NPM: npm } = process.env;

const tsc = join(npm, 'node_modules/typescript/bin/tsc');

test('the types hold', { skip: existsSync(tsc) ? false : `${tsc} is not installed` }, () => {
  const work = mkdtempSync(join(tmpdir(), 'ppl-types-'));
  try {
    mkdirSync(join(work, 'node_modules'));
    cpSync(folder, join(work, 'node_modules/ppl-wasm'), { recursive: true });
    cpSync(join(root, 'web/test/types.ts'), join(work, 'types.mts'));
    const done = spawnSync(process.execPath, [tsc, '--noEmit', '--strict', '--target', 'es2022',
      '--module', 'nodenext', '--moduleResolution', 'nodenext', '--lib', 'es2022,dom', 'types.mts'], { cwd: work, encoding: 'utf8' });
    assert.equal(done.status, 0, done.stdout + done.stderr);
  } finally {
    rmSync(work, { recursive: true });
  }
});
