// ppl.wasm as a module: its exports, that it imports nothing, its vectors, the sample's picture.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { test } from 'node:test';
import { pathToFileURL } from 'node:url';
import { digest } from './fnv.mjs';
import { declarations } from '../make_types.mjs';

const { PPL_PACKAGE: folder, PPL_ROOT: root } = process.env;
const bytes = readFileSync(`${folder}/ppl.wasm`);
const module = new WebAssembly.Module(bytes);

test('exports are the functions of exports.txt and the memory', () => {
  const wanted = readFileSync(`${root}/cmake/exports.txt`, 'utf8').split('\n').filter(Boolean);
  const found = WebAssembly.Module.exports(module);
  assert.deepEqual(found.filter((e) => e.kind === 'function').map((e) => e.name).sort(), [...wanted].sort());
  assert.deepEqual(found.filter((e) => e.kind !== 'function'), [{ name: 'memory', kind: 'memory' }]);
});

test('nothing is imported', () => {
  assert.deepEqual(WebAssembly.Module.imports(module), []);
});

test('the typed functions are the exported ones', () => {
  const wanted = readFileSync(`${root}/cmake/exports.txt`, 'utf8').split('\n').filter(Boolean).sort();
  const functions = declarations(readFileSync(`${root}/include/ppl.h`, 'utf8'));
  assert.deepEqual(functions.map((f) => f.name).sort(), wanted);
  const typed = readFileSync(`${folder}/exports.d.ts`, 'utf8');
  for (const { name, parameters } of functions)
    assert.match(typed, new RegExp(`^  ${name}\\((\\w+: number(, )?){${parameters.length}}\\): (number|void);$`, 'm'));
  const { exports } = new WebAssembly.Instance(module, {});
  for (const { name, parameters } of functions) assert.equal(exports[name].length, parameters.length, name);
});

// A vector instruction begins with the byte 0xfd; a module without any would be refused by nobody, so count them roughly:
// i16x8.add is fd 8e 01, v128.load is fd 00.
test('the code holds vector instructions', () => {
  let adds = 0;
  for (let i = 0; i + 2 < bytes.length; ++i) if (bytes[i] === 0xfd && bytes[i + 1] === 0x8e && bytes[i + 2] === 1) ++adds;
  assert.ok(adds > 500, `${adds} vector additions`);
});

test('the sample comes out in every quality, format and size as the plain reference says', async () => {
  const { load } = await import(pathToFileURL(`${folder}/ppl.mjs`));
  const raw = readFileSync(`${root}/samples/coffee_640x480_bggr8.raw`);
  const cases = readFileSync(`${root}/web/test/sample_digests.csv`, 'utf8').split('\n').slice(1).filter(Boolean);
  assert.ok(cases.length > 90);
  for (const line of cases) {
    const [quality, format, size, wanted] = line.split(',');
    const context = (await load(module)).context(); // a module that was never used: pictures leave things behind
    context.set('optical_black_b_gb_gr_r', 12, 12, 12, 12).set('rgb_gain', 397, 256, 346).set('quality', +quality);
    const frame = context.bayer({ source: raw, width: 640, height: 480, format, size });
    assert.equal(digest(frame.bytes), wanted, line);
  }
});
