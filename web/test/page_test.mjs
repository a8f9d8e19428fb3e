// The tuning page in a real browser, beside the native library: what a person does, and the bytes that come of it.
//
// Needs chromium and the command line tool of a native build (PPL_TOOL). Screenshots for the docs are written into the
// folder PPL_SCREENSHOTS names, if any.
import assert from 'node:assert/strict';
import { execFileSync, spawnSync } from 'node:child_process';
import { existsSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { pathToFileURL } from 'node:url';
import { qualities } from '../src/words.mjs';

const { PPL_PAGE: html, PPL_ROOT: root, PPL_TOOL: tool, PPL_NPM: npm, PPL_SCREENSHOTS: pictures } = process.env;
const browser = process.env.PPL_CHROMIUM ?? '/usr/bin/chromium';
if (!existsSync(browser)) {
  console.log(`${browser} is missing (Debian: chromium)`);
  process.exit(77);
}
if (!existsSync(html)) { // wasm.page_is_built tells why
  console.log(`${html} is not built`);
  process.exit(77);
}
const { chromium } = createRequire(join(npm, 'package.json'))('playwright-core');
const work = mkdtempSync(join(tmpdir(), 'ppl-page-'));
const sample = `${root}/samples/coffee_640x480_bggr8.raw`, raw = readFileSync(sample);
const W = 640, H = 480;
const PATIENCE = 240000; // ms, for a machine that has much else to do: what takes longer hangs
let context, page;
const requests = [], errors = [];

before(async () => {
  assert.ok(existsSync(tool), `the native tool is missing: ${tool}`);
  context = await chromium.launchPersistentContext(join(work, 'profile'), {
    executablePath: browser, viewport: { width: 1440, height: 900 }, acceptDownloads: true, timeout: PATIENCE,
    args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
      '--disable-component-update', '--disable-sync'],
  });
  context.setDefaultTimeout(PATIENCE);
  page = await context.newPage();
  page.on('request', (request) => { if (!/^(blob|data):/.test(request.url())) requests.push(request.url()); });
  page.on('pageerror', (error) => errors.push(error.message));
  page.on('console', (message) => { if (message.type() === 'error') errors.push(message.text()); });
  page.on('dialog', (dialog) => { errors.push(`dialog ${dialog.message()}`); dialog.dismiss(); });
  await page.goto(pathToFileURL(html).href);
  await page.waitForFunction(() => window.pplPage?.renders > 0);
});
after(async () => {
  await context?.close();
  rmSync(work, { recursive: true, force: true });
});

const frame = async () => {
  const text = await page.evaluate(() => {
    pplPage.render();
    const bytes = pplPage.frame();
    if (!bytes) return null;
    let out = '';
    for (let i = 0; i < bytes.length; i += 32768) out += String.fromCharCode(...bytes.subarray(i, i + 32768));
    return btoa(out);
  });
  return text === null ? null : Buffer.from(text, 'base64');
};
// For the docs: few colours, small files.
const shoot = async (name) => {
  const file = join(pictures, name);
  await page.screenshot({ path: file });
  execFileSync('convert', [file, '-colors', '255', '-strip', `png8:${file}`]);
};
/** Red, green, blue of what the canvas shows. */
const pixels = async () => Buffer.from(await page.evaluate(() => {
  pplPage.render();
  const c = document.getElementById('picture'), d = c.getContext('2d').getImageData(0, 0, c.width, c.height).data;
  const rgb = new Uint8Array(d.length / 4 * 3);
  for (let i = 0; i < rgb.length; ++i) rgb[i] = d[Math.floor(i / 3) * 4 + i % 3];
  let out = '';
  for (let i = 0; i < rgb.length; i += 32766) out += String.fromCharCode(...rgb.subarray(i, i + 32766));
  return btoa(out);
}), 'base64');
// What was asked for is done (files are read, packed bytes unpacked, as soon as the machine gets round to it) and shown.
const settle = async () => {
  await page.waitForFunction(() => window.pplPage?.busy === 0);
  await page.evaluate(() => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done))));
};
// And the words that go with it, which follow up to a tenth of a second later.
const told = async () => {
  await settle();
  await page.waitForFunction(() => pplPage.told);
};
const press = async (button) => {
  await page.click(button);
  await settle();
};
const settings = () => page.evaluate(() => pplPage.settings);
const problem = () => page.evaluate(() => pplPage.problem);
const type = async (locator, value) => {
  await locator.evaluate((input, v) => {
    input.focus();
    input.value = v;
    input.dispatchEvent(new Event('input', { bubbles: true }));
    input.dispatchEvent(new Event('change', { bubbles: true }));
    input.blur();
  }, String(value));
  await settle();
};
const open = async (name, bytes) => {
  await page.setInputFiles('#open', { name, mimeType: 'application/octet-stream', buffer: Buffer.from(bytes) });
  await settle();
};
const load = async (text) => {
  await page.setInputFiles('#load', { name: 'camera.json', mimeType: 'application/json', buffer: Buffer.from(text) });
  await settle();
};
const fresh = async () => {
  await page.reload();
  await page.waitForFunction(() => window.pplPage?.renders > 0);
  for (const details of await page.locator('details.group').all()) await details.evaluate((d) => { d.open = true; });
};
/** What the native tool makes of a frame with the settings that the page shows. */
function native(json, { file = sample, width = W, height = H, format = 'rgb24', size = 'same' } = {}) {
  const from = join(work, 'native.json'), to = join(work, `native.${format}`);
  writeFileSync(from, json);
  rmSync(to, { force: true });
  const decimation = { same: 0, half: 1, double: -1 }[size];
  const done = spawnSync(tool, ['convert', file, '-W', width, '-H', height, '--decimation', decimation, '--settings', from,
    '--format', format, '-o', to].map(String), { encoding: 'utf8' });
  assert.equal(done.status, 0, done.stderr);
  return readFileSync(to);
}
function same(a, b, what) {
  assert.ok(a, `${what}: there is no picture`);
  assert.equal(a.length, b.length, what);
  const at = a.equals(b) ? -1 : a.findIndex((v, i) => v !== b[i]);
  assert.equal(at, -1, `${what}: byte ${at} is ${a[at]}, the native library makes it ${b[at]}`);
}

test('it starts with the sample, as the native library makes it', async () => {
  same(await frame(), native(await settings()), 'sample');
  assert.equal(await problem(), '');
  assert.match(await page.textContent('#shape-text'), /^640 × 480, BGGR, 8 bits$/);
});

test('the canvas shows what the tool puts into a picture file', async () => {
  for (const [format, via] of [['RGB24', 'rgb24'], ['I420', 'i420']]) {
    await page.selectOption('#format', format);
    await settle();
    const shown = await pixels();
    writeFileSync(join(work, 's.json'), await settings());
    execFileSync(tool, ['convert', sample, '-W', '640', '-H', '480', '--settings', join(work, 's.json'), '--via', via, '-o', join(work, 'p.ppm')],
      { stdio: 'ignore' });
    same(shown, readFileSync(join(work, 'p.ppm')).subarray(-3 * W * H), `pixels of ${format}`);
  }
  await page.selectOption('#format', 'RGB24');
});

// Every control: a value, and a quality in which it acts.
const MOVES = {
  h_mirror: [[1], 15], v_mirror: [[1], 15], gamma: [[-12], 15], contrast_c: [[35], 15], sat: [[410], 15], hue: [[-40], 15],
  optical_black_b_gb_gr_r: [[5, 9, 20, 30], 15], rgb_gain: [[500, 300, 600], 15], rgb_delta: [[14, -9, 20], 15],
  sensor_matrix: [[300, 10, -20, -60, 400, -70, 5, -100, 380], 15], GbGr_correction: [[0], 15], GbGr_correction_diff_threshold: [[3], 15],
  medium_filter: [[1], 0], medium_filter_diff_threshold: [[70], 15], medium_filter_hot_pixel_threshold: [[100], 0, 1],
  medium_filter_dead_pixel_threshold: [[60], 0, 1], nf88_medium_filter_hot_pixel_threshold_percentage: [[68], 1, 1],
  nf88_medium_filter_dead_pixel_threshold_percentage: [[60], 2, 1], edge_threshold: [[30], 15], edge_threshold2: [[300], 0],
  nf88_edge_enhance_factor: [[120], 15], CFA_T0_threshold: [[40], 11], CFA_T1_threshold: [[2], 1],
  noise_filter_G_12T_threshold: [[9], 15, 0, true], noise_filter_R_8T_threshold: [[9], 15, 0, true], noise_filter_B_8T_threshold: [[9], 15, 0, true],
};
const RANGES = {
  qual_BmGb_min_max: [-8, 11], qual_GrmR_min_max: [-14, 3], qual_BmGb_p_GrmR_min_max: [-9, 20], qual_BmGb_m_GrmR_min_max: [-21, 6],
  qual_R_min_max: [10, 90], qual_G_min_max: [14, 70], qual_B_min_max: [6, 60], qAE_RGB_min_max: [40, 120],
};
const setControl = async (key, values) => {
  const box = page.locator(`.control[data-key="${key}"]`);
  if (await box.locator('input[type=checkbox]').count()) {
    const input = box.locator('input[type=checkbox]');
    if (await input.isChecked() !== (values[0] === 1)) await input.click();
  } else {
    const numbers = box.locator(values.length === 9 ? '.matrix input' : '[data-part]:not([data-part="all"]) input[type=number]');
    for (const [i, v] of values.entries()) await type(numbers.nth(i), v);
  }
  await settle();
};

test('every control of the table stands in the page, with range, default, sentence and a name for screen readers', async () => {
  const table = execFileSync(tool, ['settings', '--full'], { encoding: 'utf8' });
  const keys = Object.keys(JSON.parse(table)).filter((k) => !['ppl_settings', 'quality', 'lens_correction'].includes(k));
  assert.deepEqual([...Object.keys(MOVES), ...Object.keys(RANGES)].sort(), [...keys].sort());
  for (const key of keys) {
    const box = page.locator(`.control[data-key="${key}"]`);
    assert.equal(await box.count(), 1, key);
    assert.match(await box.locator('.text').textContent(), /\w{3,}.*(default|Off by default)/, key);
  }
  const nameless = await page.evaluate(() => [...document.querySelectorAll('input, select, button, [role=slider], table')].filter((e) => {
    const label = e.getAttribute('aria-label') || e.getAttribute('aria-labelledby') || e.labels?.[0]?.textContent || e.textContent || e.title;
    return !label?.trim() && e.id !== 'means';
  }).map((e) => e.outerHTML.slice(0, 90)));
  assert.deepEqual(nameless, []);
});

for (const [key, [values, quality, medium, idle]] of Object.entries(MOVES))
  test(`${key} moves the picture as the native library does`, async () => {
    if (key === 'h_mirror' || key === 'medium_filter') await fresh();
    await press('#sample');
    await page.selectOption('#quality', String(quality));
    if (medium) await setControl('medium_filter', [1]);
    await settle();
    const was = await frame();
    await setControl(key, values);
    const is = await frame(), json = await settings();
    assert.deepEqual(JSON.parse(json)[key] ?? (key === 'GbGr_correction' ? false : undefined),
      key === 'GbGr_correction' ? false : values.length > 1 ? values : ['h_mirror', 'v_mirror', 'medium_filter'].includes(key) ? true : values[0]);
    assert.equal(is.equals(was), !!idle, idle ? 'no picture depends on it' : 'the picture changes');
    same(is, native(json), key);
  });

for (const [key, values] of Object.entries(RANGES))
  test(`${key} moves the statistics as the native library does`, async () => {
    await press('#sample');
    const was = await page.evaluate(() => (pplPage.render(), pplPage.statistics));
    await setControl(key, values);
    const is = await page.evaluate(() => (pplPage.render(), pplPage.statistics));
    assert.deepEqual(JSON.parse(await settings())[key], values);
    writeFileSync(join(work, 's.json'), await settings());
    const known = JSON.parse(execFileSync(tool,
      ['stats', sample, '-W', '640', '-H', '480', '--settings', join(work, 's.json'), '--json'], { encoding: 'utf8' }));
    assert.deepEqual(is.means.map((v) => v * 256), known.whole_frame);
    // The first group of a frame holds what the frame before left there: counts and qualified means may differ a little.
    const near = (a, b, what) => assert.ok(Math.abs(a - b) <= Math.max(40, 0.01 * b), `${what}: ${a}, natively ${b}`);
    near(is.qualifiedCount, known.qualified.cells, 'qualified cells');
    near(is.exposureCount, known.exposure.cells, 'exposure cells');
    known.qualified.means.forEach((v, i) => near(is.qualifiedMeans[i] * 256, v, 'qualified mean'));
    known.exposure.means.forEach((v, i) => near(is.exposureMeans[i] * 256, v, 'exposure mean'));
    const moved = key.startsWith('qAE') ? is.exposureCount !== was.exposureCount : is.qualifiedCount !== was.qualifiedCount;
    assert.ok(moved, 'the count changes');
  });

test('lens correction: coefficients and centre', async () => {
  await press('#sample');
  await type(page.locator('[data-key="lens.f1"] input[type=number]'), 90);
  await type(page.locator('[data-key="lens.f1_rshift_count"] input[type=number]'), 25);
  await type(page.locator('[data-key="lens.f2"] input[type=number]'), 7);
  await type(page.locator('[data-key="lens.origin"] input[type=number]').nth(0), 300);
  await type(page.locator('[data-key="lens.origin"] input[type=number]').nth(1), 200);
  await settle();
  const json = await settings();
  assert.deepEqual(JSON.parse(json).lens_correction, { f1: 90, f1_rshift_count: 25, f2: 7, f2_rshift_count: 44, origin: [300, 200] });
  same(await frame(), native(json), 'lens');
});

test('every quality, format and size that the page offers', async () => {
  await press('#sample');
  let made = 0, refused = 0;
  for (const quality of qualities)
    for (const [format, size] of [['RGB24', 'same'], ['I420', 'same'], ['YUYV', 'half'], ['UYVY', 'same'], ['RGB32', 'same'], ['I420', 'double']]) {
      await page.selectOption('#quality', String(quality));
      await page.selectOption('#format', format);
      await page.selectOption('#size', size);
      await settle();
      const is = await frame();
      if (is) {
        // The raw I420 carries a mark that moves from frame to frame.
        if (!(quality === 4 && format === 'I420'))
          same(is, native(await settings(), { format: format.toLowerCase(), size }), `quality ${quality} to ${format}, ${size} size`);
        ++made;
      } else {
        assert.match(await problem(), /^[A-Z].*\.$/);
        ++refused;
      }
    }
  assert.ok(made >= 45 && refused >= 5, `${made} pictures, ${refused} refusals`);
  await page.selectOption('#quality', '15');
  await page.selectOption('#format', 'RGB24');
  await page.selectOption('#size', 'same');
  await settle();
  assert.equal(await problem(), '');
});

test('settings: saved, loaded, and written as the tool writes them', async () => {
  await press('#sample');
  await setControl('hue', [12]);
  await setControl('sensor_matrix', MOVES.sensor_matrix[0]);
  await setControl('medium_filter', [1]);
  await setControl('qual_R_min_max', [10, 200]);
  const [download] = await Promise.all([page.waitForEvent('download'), page.click('#save')]);
  const file = join(work, 'saved.json');
  await download.saveAs(file);
  assert.equal(download.suggestedFilename(), 'camera.json');
  const forms = await page.evaluate(() => pplPage.forms());
  for (const as of ['json', 'options', 'c', 'element'])
    assert.equal(forms[as], execFileSync(tool, ['settings', '--settings', file, '--as', as], { encoding: 'utf8' }), as);
  const was = await frame();
  await page.click('#reset-all');
  await settle();
  assert.equal(await settings(), '{\n  "ppl_settings": 1,\n  "quality": 15\n}\n');
  await load(readFileSync(file, 'utf8'));
  same(await frame(), was, 'loaded again');
  for (const [tab, text] of [['tab-c', /ppl_set_hue\(context, 12\);/], ['tab-json', /"hue": 12/],
    ['tab-element', /hue=12/], ['tab-options', /^ppl convert .*--hue 12/]]) {
    await page.click(`#${tab}`);
    await told();
    assert.match(await page.textContent('#export-text'), text);
  }
});

test('settings that are none: one sentence, nothing taken, nothing executed', async () => {
  const was = await settings();
  const cases = [
    ['not json at all', /it is not JSON/], ['[1, 2]', /"ppl_settings": 1 is missing/], ['null', /is missing/],
    ['{"ppl_settings": 2}', /version 2; this page reads version 1/],
    ['{"ppl_settings": 1, "gamut": 3}', /There is no control "gamut"\./],
    ['{"ppl_settings": 1, "gamma": 99}', /gamma takes a whole number from -32 to 32, not 99\./],
    ['{"ppl_settings": 1, "gamma": "1"}', /gamma takes a whole number/],
    ['{"ppl_settings": 1, "rgb_gain": [1, 2]}', /rgb_gain takes 3 whole numbers in brackets, not \[1,2\]\./],
    ['{"ppl_settings": 1, "h_mirror": 1}', /h_mirror is true or false, not 1\./],
    ['{"ppl_settings": 1, "qual_R_min_max": [9, 3]}', /must not be above/],
    ['{"ppl_settings": 1, "lens_correction": {"f1": 1e9}}', /f1 takes a whole number/],
    ['{"ppl_settings": 1, "lens_correction": 7}', /lens_correction is an object/],
    ['{"ppl_settings": 1, "__proto__": {"quality": 3}}', /There is no control "__proto__"/],
    ['{"ppl_settings": 1, "constructor": 1}', /There is no control "constructor"/],
    ['{"ppl_settings": 1, "<img src=x onerror=alert(1)>": 1}', /There is no control "<img src=x onerror=alert\(1\)>"\./],
    ['{"ppl_settings": 1, "gamma": 1e999}', /gamma takes a whole number from -32 to 32, not Infinity\./],
    [`{"ppl_settings": 1, "gamma": ${'['.repeat(300000)}${']'.repeat(300000)}}`, /gamma takes .*, not (\[{40}…|brackets within brackets)\./],
    [`{"ppl_settings": ${'['.repeat(300000)}${']'.repeat(300000)}}`, /version (\[{40}…|brackets within brackets); this page reads/],
    [`{"ppl_settings": 1, "${'x'.repeat(900000)}": 1}`, /There is no control "x{39}…\./],
    ['['.repeat(500000), /it is not JSON/],
    [`{"ppl_settings": 1, "x": "${'y'.repeat(2 << 20)}"}`, /more than a megabyte/],
  ];
  for (const [text, message] of cases) {
    await load(text);
    await page.waitForFunction((re) => new RegExp(re).test(pplPage.problem), message.source);
    assert.equal(await settings(), was, text.slice(0, 60));
  }
  assert.equal(await page.locator('#notice img').count(), 0);
});

test('files that are no frames: one sentence, the frame at hand stays', async () => {
  await press('#sample');
  const was = await frame();
  for (const [name, bytes, message] of [
    ['tiny.raw', Buffer.alloc(10), /tiny\.raw has 10 bytes: that is no raw frame\./],
    ['empty.raw', Buffer.alloc(0), /has 0 bytes/],
    ['photo.png', readFileSync(`${root}/samples/coffee_640x480.png`), /photo\.png is a PNG file; this page takes headerless raw frames\./],
    ['odd.bin', Buffer.alloc(12345), /No frame size that this page knows fits odd\.bin/],
    ['<b>bold</b>.raw', Buffer.alloc(300), /<b>bold<\/b>\.raw/],
  ]) {
    await open(name, bytes);
    await page.waitForFunction((re) => new RegExp(re).test(pplPage.problem), message.source);
    same(await frame(), was, `after ${name}`);
  }
  assert.equal(await page.locator('#notice b').count(), 0);
  // A shape that can't be is refused, and the shape at hand stays.
  await page.locator('#shape').evaluate((d) => { d.open = true; });
  for (const [id, value, message] of [['height', 481, /has 307840 bytes; the file has 307200/],
    ['width', 3, /at least 64 columns/], ['stride', 12, /the stride is at least/]]) {
    await type(page.locator(`#${id}`), value);
    await page.waitForFunction((re) => new RegExp(re).test(pplPage.problem), message.source);
    same(await frame(), was, `after ${id} ${value}`);
    await press('#sample');
  }
});

// The sample as other sensors would deliver it.
const words = (bits, big) => {
  const out = Buffer.alloc(2 * raw.length);
  raw.forEach((v, i) => (big ? out.writeUInt16BE(v << (bits - 8), 2 * i) : out.writeUInt16LE(v << (bits - 8), 2 * i)));
  return out;
};
test('depths: words of 10, 12 and 16 bits, packed 10 and 12, are guessed and come out alike', async () => {
  await press('#sample');
  await setControl('gamma', [1]); // settings that are no longer the sample's stay
  const was = await frame();
  const packed10 = Buffer.alloc(raw.length / 4 * 5), packed12 = Buffer.alloc(raw.length / 2 * 3);
  for (let i = 0; i < raw.length; ++i) {
    packed10[Math.floor(i / 4) * 5 + i % 4] = raw[i];
    packed12[Math.floor(i / 2) * 3 + i % 2] = raw[i];
  }
  for (const [name, bytes, layout, bits] of [['a.raw', words(12), 1, 12], ['b.raw', words(10), 1, 10], ['c.raw', words(16), 1, 16],
    ['d_640x480.raw', words(12, true), 2, 12], ['e.raw', packed10, 3], ['f.raw', packed12, 4], ['g.raw', raw, 0]]) {
    await open(name, bytes);
    await page.waitForFunction((n) => document.getElementById('file-name').textContent === n, name);
    const shape = await page.evaluate(() => pplPage.shape);
    assert.deepEqual([shape.width, shape.height, shape.layout, shape.pattern], [W, H, layout, 0], name);
    if (bits) assert.equal(shape.bits, bits, name);
    same(await frame(), was, name);
  }
});

test('phases: RGGB is the frame one row and one column further on; red and blue are swapped by a button', async () => {
  // The library sees the frame from its first blue site on; what is then missing is the last column and row but one again.
  const seen = Buffer.alloc(W * H);
  for (let y = 0; y < H; ++y)
    for (let x = 0; x < W; ++x) seen[y * W + x] = raw[(y + 1 < H ? y + 1 : H - 2) * W + (x + 1 < W ? x + 1 : W - 2)];
  writeFileSync(join(work, 'seen.raw'), seen);
  await press('#sample');
  await page.locator('#shape').evaluate((d) => { d.open = true; });
  await press('#swap');
  assert.equal((await page.evaluate(() => pplPage.shape)).pattern, 3);
  same(await frame(), native(await settings(), { file: join(work, 'seen.raw') }), 'RGGB');
  await press('#swap');
  same(await frame(), native(await settings()), 'BGGR again');
});

test('a frame of another camera: the sample\'s settings make way, the white balance is guessed and follows the phase', async () => {
  await press('#sample');
  await open('capture_640x480.raw', raw);
  await page.waitForFunction(() => /made way for the defaults and a guessed white balance.*red from blue/.test(pplPage.problem));
  const one = JSON.parse(await settings());
  assert.deepEqual(Object.keys(one), ['ppl_settings', 'quality', 'rgb_gain']);
  await press('#swap');
  const other = JSON.parse(await settings());
  assert.notDeepEqual(other.rgb_gain, one.rgb_gain);
  await setControl('rgb_gain', [300, 256, 310]);
  await press('#swap');
  assert.deepEqual(JSON.parse(await settings()).rgb_gain, [300, 256, 310]); // what a person has set stays
  same(await frame(), native(await settings()), 'as the native library makes it');
});

test('a recording: frames by number, playing, skip and stride', async () => {
  const frames = [0, 1, 2].map((n) => Buffer.from(raw.map((v) => Math.min(255, v + 20 * n))));
  await open('recording_640x480.raw', Buffer.concat(frames));
  await page.waitForFunction(() => pplPage.shape.frames === 3);
  assert.equal(await page.isVisible('#recording'), true);
  const json = await settings(), wanted = frames.map((bytes, i) => {
    writeFileSync(join(work, `frame${i}.raw`), bytes);
    return native(json, { file: join(work, `frame${i}.raw`) });
  });
  for (const i of [2, 0, 1]) {
    await type(page.locator('#frame'), i);
    await page.waitForFunction((n) => pplPage.shape.index === n, i);
    same(await frame(), wanted[i], `frame ${i}`);
  }
  await page.click('#play');
  // Each frame comes round while it plays.
  for (const i of [0, 1, 2]) await page.waitForFunction((n) => pplPage.shape.index === n, i);
  await press('#play');
  // A header of 100 bytes and rows 704 bytes apart.
  const wide = Buffer.alloc(100 + 704 * H, 7);
  for (let y = 0; y < H; ++y) raw.copy(wide, 100 + 704 * y, W * y, W * (y + 1));
  await open('wide_704x480.raw', wide);
  await page.waitForFunction(() => pplPage.shape.width === 704);
  await type(page.locator('#width'), 640);
  await type(page.locator('#stride'), 704);
  await type(page.locator('#skip'), 100);
  await page.selectOption('#pattern', '0');
  await page.waitForFunction(() => pplPage.shape.skip === 100 && pplPage.shape.stride === 704 && pplPage.shape.pattern === 0);
  same(await frame(), native(json), 'skip and stride');
});

test('widths that a format does not make whole are cut to what it does', async () => {
  const w = 752, h = 482, odd = Buffer.alloc(w * h);
  for (let y = 0; y < h; ++y) for (let x = 0; x < w; ++x) odd[y * w + x] = raw[(y % H) * W + x % W];
  await press('#sample');
  await open(`odd_${w}x${h}_bggr.raw`, odd);
  await page.waitForFunction((n) => pplPage.shape.width === n, w);
  writeFileSync(join(work, 'odd.raw'), odd);
  for (const [format, size, width, height] of [['RGB24', 'same', 752, 482], ['I420', 'same', 736, 482], ['I420', 'half', 704, 480]]) {
    await page.selectOption('#format', format);
    await page.selectOption('#size', size);
    await settle();
    const cut = Buffer.alloc(width * height);
    for (let y = 0; y < height; ++y) odd.copy(cut, y * width, y * w, y * w + width);
    writeFileSync(join(work, 'cut.raw'), cut);
    same(await frame(), native(await settings(), { file: join(work, 'cut.raw'), width, height, format: format.toLowerCase(), size }), `${format} ${size}`);
    await page.waitForFunction(([text, cut]) => document.getElementById('cut').textContent.includes(text) === cut, [`${width} × ${height}`, width !== w]);
  }
  await page.selectOption('#format', 'RGB24');
  await page.selectOption('#size', 'same');
});

test('a shape beyond all bounds is refused in a sentence', async () => {
  await press('#sample');
  await page.locator('#shape').evaluate((d) => { d.open = true; });
  await type(page.locator('#width'), 16000);
  await page.waitForFunction(() => /the file has 307200/.test(pplPage.problem));
  await type(page.locator('#height'), 16000);
  await page.waitForFunction(() => /at most 48 million samples/.test(pplPage.problem));
  same(await frame(), native(await settings()), 'the sample');
  await press('#sample');
});

test('grey point, automatic white balance, lens shading', async () => {
  // A grey card under a light in which red is half and blue a quarter of green: gains of 2, 1 and 4, times 256.
  const card = Buffer.alloc(W * H);
  for (let y = 0; y < H; ++y) for (let x = 0; x < W; ++x) card[y * W + x] = (x ^ y) & 1 ? 160 : y & 1 ? 80 : 40;
  await page.click('#reset-all');
  await open('card_640x480_bggr.raw', card);
  await page.waitForFunction(() => document.getElementById('file-name').textContent.startsWith('card'));
  await page.click('#grey');
  assert.equal(await page.getAttribute('#grey', 'aria-pressed'), 'true');
  await page.locator('#picture').click({ position: { x: 200, y: 150 } });
  await settle();
  assert.deepEqual(JSON.parse(await settings()).rgb_gain, [512, 256, 1024]);
  assert.equal(await page.getAttribute('#grey', 'aria-pressed'), 'false');

  await press('#sample');
  await page.click('#auto');
  await settle();
  const gains = JSON.parse(await settings()).rgb_gain;
  assert.ok(Math.abs(gains[0] / gains[1] / (397 / 256) - 1) < 0.15 && Math.abs(gains[2] / gains[1] / (346 / 256) - 1) < 0.2, gains.join());

  // Light that falls to three quarters at the corners; behind the fit the frame is flat.
  const flat = Buffer.alloc(W * H), r2 = (x, y) => ((x - 320) ** 2 + (y - 240) ** 2) / (320 ** 2 + 240 ** 2);
  for (let y = 0; y < H; ++y) for (let x = 0; x < W; ++x) flat[y * W + x] = Math.round(200 * (1 - 0.25 * r2(x, y)));
  await page.setInputFiles('#lens-file', { name: 'flat.raw', mimeType: 'application/octet-stream', buffer: flat });
  await page.waitForFunction(() => /corners become/.test(pplPage.problem));
  assert.match(await problem(), /corners become 1\.3\d times/);
  const { lens_correction: lens } = JSON.parse(await settings());
  assert.ok(Math.abs(lens.origin[0] - 320) < 6 && Math.abs(lens.origin[1] - 240) < 6, lens.origin.join());
  const corner = 320 ** 2 + 240 ** 2, factor = 1 + lens.f1 * corner / 2 ** lens.f1_rshift_count - lens.f2 * corner ** 2 / 2 ** lens.f2_rshift_count;
  assert.ok(Math.abs(factor - 1 / 0.75) < 0.02, `factor ${factor}`);
  same(await frame(), native(await settings()), 'the sample, with the shading fitted');
  // A frame that is not flat says so.
  await page.click('#lens-this');
  await page.waitForFunction(() => /This is no flat frame/.test(pplPage.problem));
});

test('keyboard: sliders, divider, loupe, tabs', async () => {
  await press('#sample');
  const slider = page.locator('[data-key="gamma"] input[type=range]');
  await slider.focus();
  await page.keyboard.press('ArrowRight');
  await settle();
  assert.equal(JSON.parse(await settings()).gamma, 1);
  same(await frame(), native(await settings()), 'gamma by the keyboard');
  await page.selectOption('#before', 'mosaic');
  await settle();
  await page.focus('#divider');
  await page.keyboard.press('End');
  await settle();
  assert.equal(await page.getAttribute('#divider', 'aria-valuenow'), '100');
  const [r, g, b] = await page.evaluate(() => [...document.getElementById('picture').getContext('2d').getImageData(321, 240, 1, 1).data]);
  assert.deepEqual([r, g, b], [0, raw[240 * W + 321], 0]); // Gb in the mosaic's own colour
  await page.keyboard.press('Home');
  await page.locator('#picture').hover({ position: { x: 60, y: 80 } });
  await settle();
  const place = async () => (await page.textContent('#loupe-text')).match(/place(\d+), (\d+)/).slice(1).map(Number);
  const [x, y] = await place();
  await page.focus('#stage');
  await page.keyboard.press('ArrowLeft');
  await page.keyboard.press('Shift+ArrowDown');
  assert.deepEqual(await place(), [x - 2, y + 32]);
  const site = [['B', 'Gb'], ['Gr', 'R']][y & 1][x & 1];
  assert.match(await page.textContent('#loupe-text'), new RegExp(`sample${raw[(y + 32) * W + x - 2]} \\(${site}\\)`));
  await page.focus('#tab-options');
  await page.keyboard.press('ArrowRight');
  assert.equal(await page.getAttribute('#tab-c', 'aria-selected'), 'true');
  await page.keyboard.press('ArrowLeft');
  await page.selectOption('#before', 'none');
});

test('the command line that the page shows makes the page\'s picture', async () => {
  const ten = (x) => { // words of 10 bits, RGGB: the sample from its first row and column but one on
    const out = Buffer.alloc(2 * W * H);
    for (let y = 0; y < H; ++y) for (let i = 0; i < W; ++i) {
      const from = Math.min(y + 1, H - 1) * W + Math.min(i + 1, W - 1);
      out.writeUInt16LE(raw[from] * 4 + x, 2 * (y * W + i));
    }
    return out;
  };
  const packed = Buffer.alloc(raw.length / 2 * 3);
  for (let i = 0; i < raw.length; ++i) packed[Math.floor(i / 2) * 3 + i % 2] = raw[i];
  const odd = Buffer.alloc(1002 * 300);
  for (let y = 0; y < 300; ++y) for (let x = 0; x < 1002; ++x) odd[y * 1002 + x] = raw[y * W + x % W];
  const room = Buffer.alloc(3 * 704 * H, 9); // rows of 640 samples, 704 bytes apart; three frames
  for (let n = 0; n < 3; ++n) for (let y = 0; y < H; ++y) for (let x = 0; x < W; ++x) room[(n * H + y) * 704 + x] = Math.min(255, raw[y * W + x] + 20 * n);
  for (const [name, bytes, quality, format, size, index, wanted] of [
    ['ten_640x480_rggb.raw', ten(3), 15, 'RGB24', 'same', 0, / --pattern rggb --bits 10 -o /],
    ['it\'s $(touch here) packed_640x480_bggr.raw', packed, 1, 'I420', 'half', 0,
      /^ppl convert 'it'\\''s \$\(touch here\) .* --packed --bits 12 --decimation 1 --via i420 /],
    ['odd_1002x300_bggr.raw', odd, 0, 'RGB24', 'same', 0, / -W 992 -H 300 --stride 1002 --via rgb24 /],
    ['room_640x480_bggr.raw', room, 10, 'I420', 'same', 2, / --stride 704 --frame 2 -o /],
  ]) {
    await press('#sample');
    await open(name, bytes);
    await page.waitForFunction((n) => document.getElementById('file-name').textContent === n, name);
    await page.selectOption('#quality', String(quality));
    await page.selectOption('#format', format);
    await page.selectOption('#size', size);
    if (index) {
      assert.deepEqual(await page.evaluate(() => [pplPage.shape.stride, pplPage.shape.frames]), [704, 3]);
      await type(page.locator('#frame'), index);
      await page.waitForFunction((n) => pplPage.shape.index === n, index);
    }
    await told();
    const line = await page.textContent('#export-text');
    assert.match(line, wanted);
    const shown = await pixels();
    const folder = mkdtempSync(join(work, 'paste-'));
    writeFileSync(join(folder, name), bytes);
    const done = spawnSync('sh', ['-c', `ppl() { "${tool}" "$@"; }\n${line.replace('picture.png', 'picture.ppm')}`], { cwd: folder, encoding: 'utf8' });
    assert.equal(done.status, 0, `${line}${done.stderr}`);
    same(shown, readFileSync(join(folder, 'picture.ppm')).subarray(-shown.length), line);
    assert.equal(existsSync(join(folder, 'here')), false);
  }
  // A name that could hide something at a prompt is not shown there; words that the tool does not take are no command.
  await open('a\u001b[2Jb_640x480.raw', raw);
  await told();
  assert.match(await page.textContent('#export-text'), /^ppl convert frame\.raw -W 640 /);
  await open('ten_640x480_rggb.raw', ten(3));
  await page.waitForFunction(() => pplPage.shape.bits === 10);
  await page.selectOption('#bits', '11');
  await told();
  assert.match(await page.textContent('#export-text'), /^# .* not of 11\..*\n# -q /);
  await page.selectOption('#format', 'RGB24');
  await page.selectOption('#size', 'same');
  await press('#sample');
});

test('a control goes back to its default by a double click and by its button; Escape ends what was begun', async () => {
  await press('#sample');
  await setControl('hue', [77]);
  await page.locator('[data-key="hue"] input[type=range]').dblclick();
  await settle();
  assert.equal(JSON.parse(await settings()).hue, undefined);
  await type(page.locator('[data-key="lens.f1"] input[type=number]'), 90);
  await type(page.locator('[data-key="lens.origin"] input[type=number]').nth(0), 300);
  await settle();
  for (const key of ['lens.f1', 'lens.origin', 'rgb_gain']) {
    await page.locator(`[data-key="${key}"] .reset`).focus();
    await page.keyboard.press('Enter');
    await settle();
  }
  const { lens_correction: lens, rgb_gain: gain } = JSON.parse(await settings());
  assert.deepEqual([lens.f1, lens.origin, gain], [16, undefined, undefined]);
  await page.click('#grey');
  await page.keyboard.press('Escape');
  assert.equal(await page.getAttribute('#grey', 'aria-pressed'), 'false');
  await page.evaluate(() => scrollTo(0, document.body.scrollHeight));
  await open('tiny.raw', Buffer.alloc(10));
  await page.waitForFunction(() => /no raw frame/.test(pplPage.problem));
  const box = await page.locator('#notice').boundingBox(); // in sight, wherever the page stands
  assert.ok(box.y >= 0 && box.y + box.height <= 900, JSON.stringify(box));
  await page.keyboard.press('Escape');
  assert.equal(await problem(), '');
  await page.evaluate(() => scrollTo(0, 0));
});

test('a page without encryption copies all the same; the loupe is told as it moves', async () => {
  await press('#sample');
  await page.evaluate(() => Object.defineProperty(navigator, 'clipboard', { value: undefined, configurable: true }));
  await told();
  await page.click('#copy');
  await page.waitForFunction(() => document.getElementById('status').textContent === 'Copied');
  assert.equal((await page.evaluate(() => getSelection().toString())).trim(), (await page.textContent('#export-text')).trim());
  await page.evaluate(() => { delete navigator.clipboard; getSelection().removeAllRanges(); });
  await page.locator('#picture').click({ position: { x: 60, y: 80 } });
  for (let i = 0; i < 3; ++i) await page.click('#zoom-in');
  await page.focus('#stage');
  await page.keyboard.press('Shift+ArrowRight');
  const [x, y] = (await page.textContent('#loupe-text')).match(/place(\d+), (\d+)/).slice(1).map(Number);
  assert.match(await page.textContent('#status'), new RegExp(`^${x}, ${y}; \\d+, \\d+, \\d+; ${raw[y * W + x]} \\(`));
  const [cross, stage] = [await page.locator('#cross').boundingBox(), await page.locator('#stage').boundingBox()];
  assert.ok(cross.x >= stage.x && cross.x + cross.width <= stage.x + stage.width && cross.y >= stage.y, 'the place is in sight');
  await page.click('#zoom-fit');
});

// What a program can find of what people with other eyes and hands would meet.
test('names, roles, values and contrast, in light and dark, wide and narrow', async () => {
  const axe = readFileSync(join(npm, 'node_modules/axe-core/axe.min.js'), 'utf8');
  for (const colorScheme of ['light', 'dark'])
    for (const width of [1440, 390]) {
      await page.emulateMedia({ colorScheme, reducedMotion: 'reduce' });
      await page.setViewportSize({ width, height: 900 });
      await fresh();
      await page.locator('#shape').evaluate((d) => { d.open = true; });
      await page.selectOption('#before', 'mosaic');
      await page.selectOption('#quality', '0'); // some controls are asleep
      await page.click('#all');
      await open('tiny.raw', Buffer.alloc(10));
      await page.waitForFunction(() => /no raw frame/.test(pplPage.problem));
      await page.evaluate(axe);
      const found = await page.evaluate(async () => {
        const { violations, incomplete } = await axe.run(document, { runOnly: ['wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa', 'wcag22aa', 'best-practice'] });
        const open = incomplete.filter((v) => !['color-contrast', 'label-content-name-mismatch'].includes(v.id)); // symbols, things over pictures
        return [...violations, ...open].map((v) => `${v.id}: ${v.help}: ${v.nodes.slice(0, 5).map((n) => n.target.join(' ')).join('; ')}`);
      });
      assert.deepEqual(found, [], `${colorScheme}, ${width} pixels wide`);
    }
  await page.emulateMedia({ colorScheme: 'light', reducedMotion: null });
  await page.setViewportSize({ width: 1440, height: 900 });
  await fresh();
});

test('a page of 320 pixels: nothing sticks out, the picture stays in sight', async () => {
  await page.setViewportSize({ width: 320, height: 640 });
  await press('#sample');
  assert.equal(await page.evaluate(() => document.documentElement.scrollWidth), 320);
  await page.locator('[data-key="hue"] input[type=range]').scrollIntoViewIfNeeded();
  await settle();
  const stage = await page.locator('#stage').boundingBox();
  assert.ok(stage.y >= 0 && stage.y < 5 && stage.width <= 320, JSON.stringify(stage));
  if (pictures) {
    await page.evaluate(() => scrollTo(0, 0));
    await settle();
    await shoot('tune-phone.png');
    await page.emulateMedia({ colorScheme: 'dark' });
    await settle();
    await page.screenshot({ path: join(pictures, 'tune-phone-dark.png') });
    await page.emulateMedia({ colorScheme: 'light' });
  }
  await page.setViewportSize({ width: 1440, height: 900 });
});

test('updates a second while a slider is dragged', async () => {
  const drag = (seconds) => page.evaluate(async (s) => {
    const slider = document.querySelector('[data-key="gamma"] input[type=range]'), start = performance.now(), before = pplPage.renders;
    let n = 0, spent = [], library = [];
    while (performance.now() - start < 1000 * s) {
      slider.value = ++n % 32;
      slider.dispatchEvent(new Event('input', { bubbles: true }));
      await new Promise((done) => requestAnimationFrame(done));
      spent.push(pplPage.spent);
      library.push(pplPage.library);
    }
    for (const list of [spent, library]) list.sort((a, b) => a - b);
    return { moves: n, renders: pplPage.renders - before, library: library[library.length >> 1],
      rate: (pplPage.renders - before) / ((performance.now() - start) / 1000), median: spent[spent.length >> 1] };
  }, seconds);
  await press('#sample');
  const idle = await page.evaluate(async () => {
    const start = performance.now();
    let n = 0;
    while (performance.now() - start < 2000) {
      await new Promise((done) => requestAnimationFrame(done));
      ++n;
    }
    return n / ((performance.now() - start) / 1000);
  });
  await drag(1.5); // the browser compiles what is used often once more
  const small = await drag(3);
  const large = Buffer.alloc(1920 * 1080);
  for (let y = 0; y < 1080; ++y) for (let x = 0; x < 1920; ++x) large[y * 1920 + x] = raw[(y % H) * W + x % W];
  await open('large_1920x1080_bggr.raw', large);
  await page.waitForFunction(() => pplPage.shape.width === 1920);
  await settle();
  const big = await drag(3);
  console.log(`the browser's own: ${idle.toFixed(1)}; 640 x 480: ${small.rate.toFixed(1)} updates a second, ` +
    `${small.median.toFixed(1)} ms each, ${small.library.toFixed(1)} of them the library's; ` +
    `1920 x 1080: ${big.rate.toFixed(1)}, ${big.median.toFixed(1)} ms, ${big.library.toFixed(1)}`);
  // Every movement is shown before the next one. How long that takes is the machine's load as well: it is only told.
  for (const { moves, renders } of [small, big]) assert.ok(moves > 0 && renders >= moves, `${renders} pictures of ${moves} movements`);
});

test('a frame larger than the library takes is joined of parts, shading corrected across them', async () => {
  const w = 2624, h = 1952, large = Buffer.alloc(w * h);
  for (let y = 0; y < h; ++y) for (let x = 0; x < w; ++x) large[y * w + x] = raw[(y % H) * W + x % W];
  await open(`large_${w}x${h}_bggr.raw`, large);
  await page.waitForFunction((n) => pplPage.shape.width === n, w);
  await load('{"ppl_settings": 1, "rgb_gain": [397, 256, 346], "lens_correction": {"f1": 48, "f1_rshift_count": 26, "f2": 0, "origin": [1000, 900]}}');
  assert.equal(await problem(), '');
  writeFileSync(join(work, 'large.raw'), large);
  for (const size of ['same', 'half']) {
    await page.selectOption('#size', size);
    await settle();
    same(await frame(), native(await settings(), { file: join(work, 'large.raw'), width: w, height: h, size }), size);
  }
  await page.selectOption('#size', 'double');
  await page.waitForFunction(() => /are not doubled here/.test(pplPage.problem));
  await page.selectOption('#size', 'same');
  await settle();
});

test('what is measured of a frame in parts is of the whole frame', async () => {
  // Dark on the left, bright on the right: two parts with different measurements, neither of them the frame's.
  const w = 2688, h = 1952, halves = Buffer.alloc(w * h, 180);
  for (let y = 0; y < h; ++y) halves.fill(60, y * w, y * w + w / 2);
  await open(`halves_${w}x${h}_bggr.raw`, halves);
  await page.waitForFunction((n) => pplPage.shape.width === n, w);
  await load('{"ppl_settings": 1}');
  const s = await page.evaluate(() => { pplPage.render(); return pplPage.statistics; });
  for (const c of [0, 1, 2]) assert.ok(Math.abs(s.qualifiedMeans[c] - 120) < 3, `qualified ${s.qualifiedMeans}`);
  const all = w * h / 4;
  assert.ok(Math.abs(s.qualifiedCount / all - 1) < 0.05, `${s.qualifiedCount} of ${all} cells`);
  const [dark, bright] = [60, 180].map((v) => [v - 1, v, v + 1].reduce((sum, i) => sum + s.histogramG[i], 0));
  assert.ok(dark > 0 && Math.abs(dark / bright - 1) < 0.1, `${dark} dark, ${bright} bright`);
  for (let row = 0; row < 6; ++row)
    assert.ok(s.cells[8 * row + 1][1] < s.cells[8 * row + 6][1], `row ${row}: ${s.cells.slice(8 * row, 8 * row + 8)}`);
  await told();
  assert.match(await page.textContent('#cut'), /in parts; measurements are put together of theirs/);
});

test('screenshots for the docs', { skip: !pictures }, async () => {
  await fresh();
  await page.evaluate(() => document.querySelectorAll('details.group').forEach((d, i) => { d.open = i < 2; }));
  await page.setViewportSize({ width: 1280, height: 960 });
  await page.selectOption('#before', 'mosaic');
  await page.locator('#picture').hover({ position: { x: 620, y: 240 } });
  await page.waitForTimeout(200);
  await page.evaluate(() => scrollTo(0, 0));
  await shoot('tune.png');
  await page.emulateMedia({ colorScheme: 'dark' });
  await page.click('#all');
  await page.waitForTimeout(1500);
  await shoot('tune-dark.png');
});

test('nothing was fetched, and nothing went wrong on the way', () => {
  assert.deepEqual([...new Set(requests)], [pathToFileURL(html).href]);
  assert.deepEqual(errors, []);
});
