// ppl.mjs: what a caller sees. Run on the package as it is packed and installed.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, test } from 'node:test';
import { pathToFileURL } from 'node:url';

const { PPL_PACKAGE: folder, PPL_ROOT: root } = process.env;
const work = mkdtempSync(join(tmpdir(), 'ppl-package-'));
after(() => rmSync(work, { recursive: true }));

const [packed] = JSON.parse(execFileSync('npm', ['pack', '--json', '--pack-destination', work, folder],
  { encoding: 'utf8', stdio: ['ignore', 'pipe', 'ignore'] }));
writeFileSync(join(work, 'package.json'), '{"private": true}');
execFileSync('npm', ['install', '--offline', '--no-audit', '--no-fund', join(work, packed.filename)],
  { cwd: work, stdio: 'ignore' });
const installed = join(work, 'node_modules/ppl-wasm');
const { load, frameBytes, isWhole } = await import(pathToFileURL(join(installed, 'ppl.mjs')));
const raw = readFileSync(`${root}/samples/coffee_640x480_bggr8.raw`);
const W = 640, H = 480;

test('the package holds what it needs and no more', () => {
  assert.deepEqual(packed.files.map((f) => f.path).sort(),
    ['README.md', 'exports.d.ts', 'package.json', 'ppl.d.ts', 'ppl.mjs', 'ppl.wasm']);
  const about = JSON.parse(readFileSync(join(installed, 'package.json'), 'utf8'));
  assert.equal(about.license, 'BSD-2-Clause');
  const version = readFileSync(`${root}/include/ppl.h`, 'utf8');
  const part = (name) => version.match(new RegExp(`PPL_VERSION_${name} (\\d+)`))[1];
  assert.equal(about.version, [part('MAJOR'), part('MINOR'), part('PATCH')].join('.'));
});

test('it loads from beside itself, from bytes, a path, a URL and a module', async () => {
  const file = join(installed, 'ppl.wasm'), bytes = readFileSync(file);
  for (const source of [undefined, bytes, bytes.buffer.slice(bytes.byteOffset, bytes.byteOffset + bytes.length), file,
    pathToFileURL(file), new WebAssembly.Module(bytes)]) {
    const ppl = await load(source);
    assert.equal(ppl.context().get('quality'), 15);
  }
  await assert.rejects(load(join(work, 'nothing.wasm')), /ENOENT/);
});

test('eight contexts, and a sentence for the ninth', async () => {
  const ppl = await load();
  const all = Array.from({ length: 8 }, () => ppl.context());
  assert.throws(() => ppl.context(), { message: 'All eight contexts of this library are in use: close one first.' });
  all[3].close();
  all[3].close();
  ppl.context();
  assert.throws(() => all[3].get('quality'), { message: 'This context has been closed.' });
});

test('controls are set, read, refused and reset', async () => {
  const c = (await load()).context();
  c.set('quality', 2).set('rgb_gain', 397, 256, 346).set('contrast_c', 10).enable('medium_filter');
  assert.equal(c.get('nf88_r_gain'), 397);
  assert.equal(c.get('medium_filter_enabled'), 1);
  assert.throws(() => c.set('quality', 16), { message: 'ppl_set_quality refuses 16: it is 0 to 15.' });
  assert.throws(() => c.set('gamma', 33), /it is -32 to 32/);
  assert.throws(() => c.set('gamma', 1.5), /whole numbers, not 1.5/);
  assert.throws(() => c.set('gamma'), /takes 1 value, not 0/);
  assert.throws(() => c.set('gamut', 1), { message: 'There is no ppl_set_gamut in ppl.h.' });
  c.set('quals_rgb_gain', 300, 300, 300);
  assert.equal(c.reset().get('quality'), 15);
  const curve = Uint8Array.from({ length: 256 }, (_, i) => 255 - i);
  assert.deepEqual(c.copy('rgb_gamma_table', curve).table('rgb_gamma_table'), curve);
  assert.throws(() => c.copy('rgb_gamma_table', [1, 2]), /takes 256 values, not 2/);
  c.copy('sensor_matrix', [256, 0, 0, 0, 256, 0, 0, 0, 256]);
});

test('a setter that refuses has a sentence with its range', async () => {
  const c = (await load()).context(), huge = 2 ** 31 - 1;
  const never = /deknee|quals|mirror|mean_collection|P3|index_upper|hue$|lens_correction|frame_sizes/;
  for (const [name, f] of Object.entries(c.library.exports)) {
    const control = name.match(/^ppl_set_(.*)/)?.[1];
    if (!control || never.test(control)) continue;
    const count = f.length - 1 - (control === 'contrast_c' ? 2 : 0);
    const values = control.includes('min_max') ? Array(count).fill(0).map((_, i) => (i % 2 ? -huge : huge)) : Array(count).fill(huge);
    assert.throws(() => c.set(control, ...values), (error) => {
      assert.match(error.message, /^ppl_set_\w+ refuses /, name);
      assert.doesNotMatch(error.message, /see ppl.h/, name);
      return true;
    }, name);
  }
});

test('a picture is the same from a copy, a buffer, and into a buffer', async () => {
  const ppl = await load(), c = ppl.context();
  const first = c.bayer({ source: raw, width: W, height: H }).copy();
  assert.equal(first.length, frameBytes('I420', W, H));
  const source = ppl.buffer(W * H), destination = ppl.buffer(first.length);
  assert.equal(source.address % 64, 0);
  source.bytes.set(raw);
  const frame = c.bayer({ source, destination, width: W, height: H });
  assert.equal(frame.address, destination.address);
  assert.deepEqual(frame.copy(), first);
  assert.notDeepEqual(source.bytes.slice(), new Uint8Array(raw)); // the corrected mosaic
  destination.free();
  assert.throws(() => destination.bytes, /has been freed/);
});

test('views end when the memory grows, frames do not', async () => {
  const ppl = await load(), c = ppl.context();
  const frame = c.bayer({ source: raw, width: W, height: H }), before = frame.copy(), old = frame.bytes;
  const large = ppl.buffer(64 << 20);
  assert.equal(old.length, 0);
  assert.deepEqual(frame.copy(), before);
  large.free();
  const size = ppl.memory.length;
  for (let i = 0; i < 50; ++i) ppl.buffer(60 << 20).free();
  assert.equal(ppl.memory.length, size); // what is given back is used again
  assert.throws(() => ppl.buffer(2 ** 33), /There is no memory for 8589934592 bytes more\./);
  assert.throws(() => ppl.buffer(-1), /whole number of bytes, not -1/);
});

test('sizes, strides and formats: a sentence for what makes no picture', async () => {
  const ppl = await load(), c = ppl.context();
  const call = (more) => () => c.bayer({ source: raw, width: W, height: H, ...more });
  assert.throws(call({ format: 'RGB32' }), { message: 'Quality 15 makes no whole RGB32 picture at same size; it makes I420, YUYV, UYVY, RGB24.' });
  assert.throws(call({ format: 'NV12' }), /The format is one of I420, YUYV, UYVY, RGB24, RGB32, not NV12\./);
  assert.throws(call({ size: 'huge' }), /The size is one of double, same, half, not huge\./);
  assert.throws(call({ width: 650 }), { message: 'The width is a multiple of 32 up to 2016, not 650.' });
  assert.throws(call({ width: 2048 }), /up to 2016, not 2048/);
  assert.throws(call({ height: 479 }), { message: 'The height is a multiple of 2 up to 2048, not 479.' });
  assert.throws(call({ stride: 600 }), /The stride is a whole number from 640 to 2048, not 600\./);
  assert.throws(call({ height: 482 }), { message: 'The source has 307200 bytes; a frame of this size needs 308480.' });
  assert.throws(call({ source: 'raw' }), /a Uint8Array or a buffer/);
  assert.throws(call({ destination: ppl.buffer(100) }), { message: 'The destination has 128 bytes; a frame of this size needs 460800.'.replace('128', '100') });
  assert.throws(call({ source: (c.set('quality', 10), raw), stride: 648, height: 470 }), /Quality 10 takes rows back to back/);
  assert.throws(call({ source: (c.set('quality', 14), raw) }), /Quality 14 makes no whole I420 picture/);
  assert.equal(c.statistics.frames, 0);
});

test('half, double, scaled; stride; every quality that has a picture', async () => {
  const ppl = await load(), c = ppl.context();
  const half = c.bayer({ source: raw, width: W, height: H, size: 'half', format: 'YUYV' });
  assert.deepEqual([half.width, half.height, half.length], [320, 240, 153600]);
  const double = c.bayer({ source: raw, width: W, height: H, size: 'double' });
  assert.deepEqual([double.width, double.height], [1280, 960]);
  const plain = c.bayer({ source: raw, width: W, height: H }).copy();
  const wide = new Uint8Array(704 * H);
  for (let y = 0; y < H; ++y) wide.set(raw.subarray(y * W, (y + 1) * W), y * 704);
  assert.deepEqual(c.bayer({ source: wide, width: W, height: H, stride: 704 }).copy(), plain);
  const scaled = c.scaled({ source: raw, width: W, height: H, outWidth: 800, outHeight: 600 });
  assert.equal(scaled.length, 720000);
  const luma = scaled.bytes.subarray(0, 480000), mean = (list) => list.reduce((sum, v) => sum + v, 0) / list.length;
  assert.ok(Math.abs(mean(luma) - mean(plain.subarray(0, W * H))) < 1);
  assert.throws(() => c.scaled({ source: raw, width: W, height: H, outWidth: 320, outHeight: 240 }), /from 640 to 8192, not 320/);
});

test('lens correction keeps its table', async () => {
  const ppl = await load(), c = ppl.context();
  const plain = c.bayer({ source: raw, width: W, height: H }).copy();
  c.lensCorrection({ width: W, height: H, f1: 48, f2: 0 });
  const corrected = c.bayer({ source: raw, width: W, height: H }).copy();
  assert.ok(corrected[0] > plain[0]);
  c.disable('lens_correction');
  assert.deepEqual(c.bayer({ source: raw, width: W, height: H }).copy(), plain);
  assert.throws(() => c.lensCorrection({ width: W, height: H, f1Shift: 12 }), /f1Shift is a whole number from 13 to 63/);
});

test('statistics', async () => {
  const c = (await load()).context();
  const even = new Uint8Array(W * H).fill(100);
  c.copy('rgb_gamma_table', Array.from({ length: 256 }, (_, i) => i)).set('quality', 3);
  c.bayer({ source: even, width: W, height: H });
  const s = c.statistics;
  assert.deepEqual(s.means, [100, 100, 100]);
  assert.equal(s.cells.length, 48);
  assert.equal(s.histogramG.indexOf(Math.max(...s.histogramG)), 100);
  assert.equal(s.frames, 1);
  assert.deepEqual(s.qualifiedMeans, [100, 100, 100]);
  assert.ok(s.qualifiedCount > 0.9 * W * H / 4);
});

test('packed video: luma is copied to I420', async () => {
  const c = (await load()).context(), w = 64, h = 4;
  const yuyv = Uint8Array.from({ length: 2 * w * h }, (_, i) => (i % 2 ? 128 : i / 2 % 251));
  const i420 = c.packed({ source: yuyv, width: w, height: h, from: 'YUYV' }).copy();
  assert.deepEqual(i420.subarray(0, w * h), yuyv.filter((_, i) => i % 2 === 0));
  assert.ok(i420.subarray(w * h).every((v) => v === 128));
  const grey = c.packed({ source: new Uint8Array(2 * w * h).fill(128), width: w, height: h, from: 'UYVY', format: 'RGB24' });
  assert.ok(grey.bytes.every((v) => v === 74 * 112 >> 6));
  assert.throws(() => c.packed({ source: yuyv, width: 65, height: h, from: 'YUYV' }), /multiple of 16 up to 2032, not 65/);
});

test('interlaced video: rows are woven', async () => {
  const c = (await load()).context(), w = 64, h = 8;
  const field = (first) => Uint8Array.from({ length: w * h }, (_, i) => (first + Math.floor(i / (2 * w))) * 10);
  const woven = c.interlaced({ kept: field(1), later: field(11), width: w, height: h, from: 'YUYV', format: 'YUYV', motion: false });
  const rows = Array.from({ length: h }, (_, y) => woven.bytes[2 * w * y]);
  assert.deepEqual(rows, [10, 110, 20, 120, 30, 130, 40, 140]);
  for (const format of ['YUYV', 'UYVY', 'I420', 'RGB24'])
    for (const from of ['YUYV', 'UYVY'])
      for (const size of ['same', 'half', 'quarter']) {
        const still = new Uint8Array(w * h).fill(128);
        const frame = c.interlaced({ kept: still, later: still, width: w, height: h, from, format, size });
        const value = format === 'RGB24' ? 74 * 112 >> 6 : 128;
        assert.ok(frame.bytes.every((v) => v === value), `${from} to ${format}, ${size}`);
      }
  assert.throws(() => c.interlaced({ kept: field(1), later: field(1), width: w, height: h, from: 'YUYV', format: 'UYVY', motion: false }),
    /Without the motion test YUYV is not woven to UYVY\./);
});
