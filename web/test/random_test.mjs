// The module against the plain reference over random calls: the reference runs natively and writes digests of cases drawn
// from a seed (digests_make), the program `digests` runs the same cases here. PPL_SEED draws others.
import assert from 'node:assert/strict';
import { execFileSync, spawnSync } from 'node:child_process';
import { existsSync, mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';

const { PPL_ROOT: root, PPL_DIGESTS: program, PPL_DIGESTS_MAKE: make, PPL_SEED: given } = process.env;

test('random calls', { skip: existsSync(make) ? false : `${make} is not built` }, () => {
  const work = mkdtempSync(join(tmpdir(), 'ppl-random-'));
  try {
    const seed = given ?? '20', file = join(work, 'cases.txt');
    execFileSync(make, [file, '--seed', seed, '--share', '0.3']);
    const done = spawnSync(process.execPath, [`${root}/web/test/run_program.mjs`, program, file], { encoding: 'utf8' });
    console.log(`seed ${seed}: ${done.stdout.trim()}`);
    assert.equal(done.status, 0, `PPL_SEED=${seed} repeats this\n${done.stdout}${done.stderr}`);
    assert.ok(Number(done.stdout.match(/(\d+) passed, 0 failed/)[1]) > 500);
  } finally {
    rmSync(work, { recursive: true });
  }
});
