// The known digests of tests/digests, through the functions of the module as they are. Each case takes a module that was
// never used before.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { test } from 'node:test';
import { digest } from './fnv.mjs';

const { PPL_PACKAGE: folder, PPL_ROOT: root } = process.env;
const module = new WebAssembly.Module(readFileSync(`${folder}/ppl.wasm`));

function rows(name) {
  const [head, ...lines] = readFileSync(`${root}/tests/digests/${name}.csv`, 'utf8').split('\n').filter(Boolean);
  const names = head.split(',');
  return lines.map((line) => Object.fromEntries(line.split(',').map((value, i) => [names[i], value])));
}

// A fresh module, with memory handed out from the end of what it begins with.
function fresh() {
  const { exports } = new WebAssembly.Instance(module, {});
  let next = exports.memory.buffer.byteLength;
  const take = (bytes) => {
    const at = next;
    next = Math.ceil((next + bytes) / 64) * 64;
    const missing = next - exports.memory.buffer.byteLength;
    if (missing > 0) exports.memory.grow(Math.ceil(missing / 65536));
    return at;
  };
  const view = (at, bytes) => new Uint8Array(exports.memory.buffer, at, bytes);
  return { ppl: exports, take, view };
}

function random(seed) {
  let x = seed;
  return () => {
    x ^= x << 13;
    x ^= x >>> 17;
    x ^= x << 5;
    return x >>> 0;
  };
}
function fill(bytes, seed) {
  const next = random(seed);
  for (let i = 0; i < bytes.length; ++i) bytes[i] = next() >>> 24;
}

function scene(kind, seed, width, height) {
  const next = random(seed), samples = new Uint8Array(width * height);
  for (let r = 0; r < height; ++r)
    for (let c = 0; c < width; ++c) {
      const n = next() >>> 8;
      let v;
      if (kind === 0) v = n & 255;
      else if (kind === 1) {
        v = 30 + (2 * c + 3 * r) % 170 + n % 9 + (c % 2 === r % 2 ? 12 : 0);
        if (n % 97 === 0) v = 255;
        if (n % 101 === 0) v = 0;
      } else v = 100 + n % 5 + 30 * (Math.floor(c / 24) % 2);
      samples[r * width + c] = v;
    }
  return samples;
}

const pixelBytes = (format, n) => ({ I420: n + 2 * Math.floor(n / 4), YUYV: 2 * n, UYVY: 2 * n, RGB24: 3 * n,
  RGB32: 4 * n })[format];

function controlsA(ppl, c, width, height, take) {
  ppl.ppl_set_optical_black_b_gb_gr_r(c, 9, 11, 10, 8);
  ppl.ppl_set_rgb_gain(c, 397, 256, 346);
  ppl.ppl_set_rgb_delta(c, 3, 2, 5);
  ppl.ppl_enable_GbGr_correction(c);
  ppl.ppl_set_GbGr_correction_diff_threshold(c, 14);
  ppl.ppl_set_contrast_c(c, 20, 0, 0);
  ppl.ppl_set_sat_hue(c, 300, 20);
  ppl.ppl_set_edge_threshold(c, 30);
  ppl.ppl_set_edge_threshold2(c, 700);
  ppl.ppl_set_nf88_edge_enhance_factor(c, 64);
  ppl.ppl_set_CFA_T0_threshold(c, 18);
  ppl.ppl_set_CFA_T1_threshold(c, 20);
  ppl.ppl_set_medium_filter_diff_threshold(c, 40);
  ppl.ppl_set_medium_filter_hot_pixel_threshold(c, 200);
  ppl.ppl_set_medium_filter_dead_pixel_threshold(c, 24);
  ppl.ppl_set_qual_BmGb_min_max(c, -60, 70);
  ppl.ppl_set_qual_GrmR_min_max(c, -80, 50);
  ppl.ppl_set_qual_BmGb_p_GrmR_min_max(c, -90, 100);
  ppl.ppl_set_qual_BmGb_m_GrmR_min_max(c, -110, 90);
  ppl.ppl_set_qual_RGB_min_max(c, 10, 240, 12, 230, 14, 220);
  ppl.ppl_set_qAE_RGB_min_max(c, 20, 200);
  const size = 2 * width * (height / 2 + 1);
  ppl.ppl_set_lens_correction(c, width, height, width / 2, height / 2, take(size), size, 48, 24, 16, 44);
  ppl.ppl_enable_lens_correction(c);
}

function statistics(ppl, c, view) {
  const words = (name, count) => view(ppl[name](c), 4 * count);
  const one = (name) => new Uint8Array(Int32Array.of(ppl[name](c)).buffer);
  return [
    words('ppl_rgb_means_sub_windows', 144), words('ppl_rgb_means_outside_all_sub_windows', 3),
    words('ppl_rgb_means_all_sub_windows', 3), words('ppl_rgb_means_whole_frame', 3),
    words('ppl_qAE_rgb_means_whole_frame', 3), one('ppl_n_qAE_2x2_whole_frame'),
    words('ppl_qual_rgb_means_whole_frame', 3), one('ppl_n_qual_2x2_whole_frame'),
    words('ppl_r_histogram', 256), words('ppl_g_histogram', 256), words('ppl_b_histogram', 256),
    words('ppl_rgb_means_whole_frame_central8', 3),
  ];
}

test('Bayer frames', () => {
  const cases = rows('bayer');
  assert.ok(cases.length > 1500);
  for (const [line, row] of cases.entries()) {
    const { ppl, take, view } = fresh();
    const width = +row.width, height = +row.height, decimation = +row.decimation;
    const n = decimation === 1 ? (width / 2) * (height / 2) : decimation === -1 ? 4 * width * height : width * height;
    const c = ppl.ppl_init(), source = take(width * height), room = take(4 * 4 * width * height);
    if (row.controls === 'A') controlsA(ppl, c, width, height, take);
    ppl.ppl_set_h_mirror(c, +row.h_mirror);
    ppl.ppl_set_v_mirror(c, +row.v_mirror);
    ppl.ppl_set_decimation(c, decimation, 0, 0);
    if (+row.before !== -1) {
      ppl.ppl_set_quality(c, +row.before);
      view(source, width * height).set(scene(2, 77, width, height));
      ppl.ppl_process_blrtoi420(c, source, room, width, height, width);
    }
    ppl.ppl_set_quality(c, +row.quality);
    if (+row.medium) ppl.ppl_enable_medium_filter(c);
    view(source, width * height).set(scene(+row.scene, 12345, width, height));
    const bytes = pixelBytes(row.format, n);
    fill(view(room, bytes), 99);
    const result = ppl[`ppl_process_blrto${row.format.toLowerCase()}`](c, source, room, width, height, width);
    const found = `${result},${digest(view(room, bytes))},${digest(view(source, width * height))},` +
      digest(...statistics(ppl, c, view));
    assert.equal(found, `${row.result},${row.output},${row.source},${row.statistics}`, `bayer.csv, case ${line + 1}`);
  }
});

test('Conversions', () => {
  const cases = rows('conversions');
  assert.ok(cases.length > 250);
  for (const [line, row] of cases.entries()) {
    const { ppl, take, view } = fresh();
    const size = 2 * row.in_width * row.in_height, n = row.out_width * row.out_height;
    const [earlier, kept, later] = [take(size), take(size), take(size)];
    const format = row.call.match(/To(I420|YUYV|UYVY|RGB24|RGB32)/)?.[1] ??
      row.call.match(/to(i420|yuyv|uyvy|rgb24|rgb32)/)[1].toUpperCase();
    const output = take(pixelBytes(format, n)), c = ppl.ppl_init();
    fill(view(earlier, size), 1);
    fill(view(kept, size), 2);
    view(later, size).set(view(earlier, size));
    const next = random(3), changed = view(later, size);
    for (let i = 0; i < size; ++i) {
      const x = next() >>> 24;
      if (Math.floor(i / 64) % 3 === 0) changed[i] += x % 23;
    }
    fill(view(output, pixelBytes(format, n)), 99);
    ppl.ppl_set_intl_3T_threshold(c, +row.threshold);
    ppl.ppl_set_h_mirror(c, +row.h_mirror);
    ppl.ppl_set_v_mirror(c, +row.v_mirror);
    const rest = [output, +row.in_width, +row.in_height, +row.out_width, +row.out_height];
    const result = /intl/i.test(row.call) ? ppl[row.call](c, earlier, kept, later, ...rest) : ppl[row.call](c, earlier, ...rest);
    assert.equal(`${result},${digest(view(output, pixelBytes(format, n)))}`, `${row.result},${row.output}`,
      `conversions.csv, case ${line + 1}: ${row.call}`);
  }
});

test('Tables', () => {
  const cases = rows('tables');
  assert.ok(cases.length > 90);
  const { ppl, take, view } = fresh();
  const c = ppl.ppl_init();
  for (const row of cases) {
    const values = row.arguments.split(' ').map(Number);
    let result, bytes;
    if (row.call === 'ppl_set_contrast_c') {
      result = ppl.ppl_set_contrast_c(c, ...values, 0, 0);
      bytes = view(ppl.ppl_contrast_table(c), 256);
    } else if (row.call === 'ppl_set_contrast_xy') {
      result = ppl.ppl_set_contrast_xy(c, ...values);
      bytes = view(ppl.ppl_rgb_contrast_gamma_table(c), 256);
    } else {
      const [width, height, x, y, ...coefficients] = values;
      const size = 2 * width * (Math.max(y, height - y) + 1), table = take(size);
      result = ppl.ppl_set_lens_correction(c, width, height, x, y, table, size, ...coefficients);
      bytes = view(table, size);
    }
    assert.equal(`${result},${digest(bytes)}`, `${row.result},${row.digest}`, `${row.call} ${row.arguments}`);
  }
});
