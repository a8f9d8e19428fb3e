// Tables that JavaScript keeps for itself, held to the library's own by the page's module: what ppl.mjs says of the
// qualities, and what the page says of qualities and controls.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { pathToFileURL } from 'node:url';

const { PPL_PACKAGE: folder, PPL_ROOT: root, PPL_MODULE: file } = process.env;
const { Library, formats, isWhole, sizes } = await import(pathToFileURL(join(folder, 'ppl.mjs')));
const { lensWords, qualities, words } = await import(pathToFileURL(join(root, 'web/src/words.mjs')));
const { module, instance } = await WebAssembly.instantiate(readFileSync(file), {});
const library = new Library(module, instance), page = instance.exports;
const QUALITIES = 16, W = 64, H = 32;

const text = (at) => {
  const bytes = new Uint8Array(page.memory.buffer);
  let end = at;
  while (bytes[end]) ++end;
  return Buffer.from(bytes.subarray(at, end)).toString('utf8');
};
const controls = Array.from({ length: page.page_control_count() }, (_, i) => {
  const number = (which) => page.page_control_number(i, which);
  const count = number(1);
  return { i, key: text(page.page_control_text(i, 0)), flag: number(0) === 0, count, low: number(2), high: number(3),
    standard: Array.from({ length: count }, (_, n) => number(4 + n)) };
});

test('ppl.mjs: whole pictures are those of ppl_check.h', () => {
  for (let quality = 0; quality < QUALITIES; ++quality)
    for (const [format, name] of formats.entries())
      for (const [size, number] of Object.entries(sizes))
        for (const medium of [0, 1])
          for (const h of [0, 1])
            for (const v of [0, 1])
              assert.equal(isWhole(quality, name, size, medium === 1, h !== v),
                page.page_check(quality, medium, format, number, h, v, W, H) === 0, `${quality} ${name} ${size} ${medium} ${h}${v}`);
});

// A frame with flat parts, edges, noise and defects.
const mosaic = new Uint8Array(W * H);
let x = 1;
for (let i = 0; i < mosaic.length; ++i) {
  x = Math.imul(x, 1664525) + 1013904223 >>> 0;
  const column = i % W, noise = x >>> 28;
  mosaic[i] = x >>> 20 & 127 ? (column < 16 ? 90 : column < 32 ? 60 + 4 * (column & 7) : column < 48 ? x >>> 24 : 40) + noise : x & 1 ? 255 : 0;
}
const source = library.buffer(W * H), picture = library.buffer(4 * W * H);

// The picture in both kinds of colour, everything on that can be, but for `key` with these values.
function made(quality, key, values) {
  const context = page.ppl_init(), heap = new Uint8Array(page.memory.buffer), result = [];
  page.ppl_reset_all_controls(context);
  const put = library.buffer(36);
  const set = (control, numbers) => {
    new Int32Array(page.memory.buffer, put.address, numbers.length).set(numbers);
    assert.equal(page.page_set_control(context, control.i, put.address), 1, `${control.key} ${numbers}`);
  };
  for (const control of controls)
    if (control.key === key) set(control, values);
    else if (control.flag && !control.key.endsWith('mirror')) set(control, [1]);
  page.ppl_set_quality(context, quality);
  for (const call of [page.ppl_process_blrtoi420, page.ppl_process_blrtorgb24]) {
    heap.set(mosaic, source.address);
    heap.fill(0, picture.address, picture.address + 4 * W * H);
    call(context, source.address, picture.address, W, H, W);
    result.push(Buffer.from(heap.slice(picture.address, picture.address + 3 * W * H)).toString('latin1'));
  }
  page.ppl_reset_all_controls(context);
  page.ppl_free(context);
  put.free();
  return result.join('');
}

test('the page: every control has its words, and they name the qualities that heed it', () => {
  assert.deepEqual(Object.keys(words).sort(), controls.map((c) => c.key).sort());
  assert.deepEqual(Object.keys(lensWords), [0, 1, 2, 3].map((i) => text(page.page_lens_text(i, 0))));
  for (const control of controls) {
    const { range, statistics, in: named } = words[control.key], [low, high] = range ?? [control.low, control.high];
    const values = [low, high, Math.round((low + high) / 2)].map((v) => control.standard.map((_, n) => (n === 0 ? v : high)));
    const heed = qualities.filter((q) => {
      const before = made(q, control.key, control.standard);
      return values.some((v) => made(q, control.key, v) !== before);
    });
    assert.deepEqual(heed.sort((a, b) => a - b), statistics ? [] : named, control.key);
  }
});

test('the page: offers every quality that makes a picture', () => {
  // 9 is 4 again.
  const all = Array.from({ length: QUALITIES }, (_, q) => q).filter((q) => page.page_check(q, 0, 0, 0, 0, 0, W, H) === 0);
  assert.deepEqual([...qualities, 9].sort((a, b) => a - b), all);
});
