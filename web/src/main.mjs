// The tuning page: settings and a frame in, a picture out, as often as something changes.
import { formats, sizes } from '../package/ppl.mjs';
import { buildControls, element } from './controls.mjs';
import { Engine, snapshot } from './engine.mjs';
import { buildGrid, countPixels, drawHistogram } from './scopes.mjs';
import { asC, asElement, asJson, asOptions, parseSettings, Settings } from './settings.mjs';
import { guessShape, layouts, patterns } from './shape.mjs';
import { View } from './view.mjs';
import { qualities } from './words.mjs';
import wasmPacked from 'embedded:tune.wasm';
import samplePacked from 'embedded:sample';
import version from 'embedded:version';

const $ = (id) => document.getElementById(id);
const HEAD = 4 << 20; // of a file, for guessing its shape
const SAMPLE = 'Sample photograph';
const SAMPLE_SHAPE = { width: 640, height: 480, stride: 0, skip: 0, layout: 0, bits: 8, pattern: 0 };
const SAMPLE_SETTINGS = `{"ppl_settings": 1, "quality": 15, "optical_black_b_gb_gr_r": [12, 12, 12, 12], "rgb_gain": [397, 256, 346],
  "GbGr_correction": true, "lens_correction": {"f1": 48, "f1_rshift_count": 24, "f2": 0, "f2_rshift_count": 44}}`;

async function unpack(base64) {
  const bytes = Uint8Array.from(atob(base64), (c) => c.charCodeAt(0));
  return new Uint8Array(await new Response(new Blob([bytes]).stream().pipeThrough(new DecompressionStream('gzip'))).arrayBuffer());
}

// ---- State -------------------------------------------------------------------------------------------------------------

let engine, view, refreshControls, showGrid;
const state = {
  settings: null,
  kept: null,
  lastLens: null,
  get frame() { return engine.frame; },
  /** Edits a copy of the settings, shows it, and asks for a picture. */
  change(edit) {
    const next = state.settings.copy();
    edit(next);
    state.take(next);
  },
  take(next) {
    if (next.lens) state.lastLens = next.lens;
    state.settings = next;
    dirty.controls = true;
    schedule();
  },
};
let source = null; // { name, file (a Blob), shape, frames, index }; what was asked for last
let taken = null; // the source that the engine's frame is of
let mode = 'look'; // or 'grey': the next click picks a grey point
const dirty = { controls: true, before: null };
let scheduled = false, renders = 0, spent = 0, library = 0, lastScopes = 0, scopesLater = 0;

function schedule() {
  if (scheduled) return;
  scheduled = true;
  requestAnimationFrame(() => {
    scheduled = false;
    render();
  });
}

function notice(message, kind = 'warn') {
  const box = $('notice');
  box.replaceChildren();
  box.className = kind === 'note' ? 'note' : '';
  if (!message) return;
  box.append(element('span', { text: message }), element('button', { type: 'button', text: 'Close', on: { click: () => notice('') } }));
}
function say(message) {
  $('status').textContent = message;
}
/** Runs what a person asked for; what goes wrong becomes one sentence, and everything else stays as it was. */
async function attempt(action) {
  ++working;
  try {
    await action();
  } catch (problem) {
    notice(problem instanceof Error ? problem.message : String(problem));
  } finally {
    --working;
  }
}
let working = 0; // how much of it is under way: files are read meanwhile

// ---- The picture -------------------------------------------------------------------------------------------------------

function pixelsOf(settings, what, size, name) {
  if (what === 'mosaic') {
    const { width, height } = engine.used;
    return { pixels: engine.mosaicPixels(), width, height };
  }
  const picture = engine.convert(settings, $('format').value, size, name);
  return { pixels: engine.pixels(picture, `${name} pixels`), width: picture.width, height: picture.height, picture };
}

// The picture left of the divider; made anew only when what it depends on changes.
function beforeImage(width, height) {
  const what = $('before').value;
  if (what === 'none') return null;
  const settings = what === 'kept' ? state.kept : new Settings(engine.controls, engine.lensNumbers);
  if (what === 'defaults') settings.quality = state.settings.quality;
  for (const mirror of ['h_mirror', 'v_mirror']) if (what === 'defaults') settings.set(mirror, state.settings.get(mirror));
  const key = [what, what === 'mosaic' ? '' : asJson(settings), $('format').value, $('size').value, frameNumber, engine.used.width,
    engine.used.height].join();
  if (dirty.before?.key !== key) {
    const made = pixelsOf(settings, what, $('size').value, 'before');
    const image = new ImageData(new Uint8ClampedArray(made.pixels), made.width, made.height);
    dirty.before = { key, image };
  }
  const { image } = dirty.before;
  if (image.width === width && image.height === height) return image;
  // The mosaic beside a halved or doubled picture.
  const scaled = Object.assign(document.createElement('canvas'), { width, height }), from = document.createElement('canvas');
  Object.assign(from, { width: image.width, height: image.height });
  from.getContext('2d').putImageData(image, 0, 0);
  const to = scaled.getContext('2d');
  to.imageSmoothingEnabled = width < image.width;
  to.drawImage(from, 0, 0, width, height);
  return (dirty.before.image = to.getImageData(0, 0, width, height));
}

let frameNumber = 0; // counts frames taken, so that a new one is known
let shown = null;

function render() {
  if (!engine.frame) return;
  const start = performance.now();
  if (dirty.controls) {
    refreshControls();
    const { quality } = state.settings, list = $('quality');
    if (list.value !== String(quality)) {
      // A settings file may name one that the page does not offer.
      if (![...list.options].some((o) => o.value === String(quality)))
        list.append(element('option', { value: quality, text: `${quality}: ${engine.qualityName(quality)}` }));
      list.value = quality;
    }
    dirty.controls = false;
  }
  try {
    if ($('show').value === 'mosaic') engine.used = { width: engine.frame.width, height: engine.frame.height };
    const made = pixelsOf(state.settings, $('show').value, $('size').value, 'picture');
    const after = engine.last, used = engine.used, { buffer } = made.pixels;
    library = engine.librarySpent;
    // Before the other picture is made, by the same contexts.
    const measured = scopesAreDue() ? snapshot(engine.statistics) : null;
    const before = $('before').value === 'none' ? null : beforeImage(made.width, made.height);
    engine.last = after;
    engine.used = used;
    // Making the other picture may have moved the memory from under this one.
    if (made.pixels.buffer !== buffer || !buffer.byteLength)
      made.pixels = made.picture ? engine.pixels(made.picture, 'picture pixels') : engine.mosaicPixels();
    view.show(made.pixels, made.width, made.height, before);
    shown = made.picture ?? null;
    if (problemShown) notice('');
    problemShown = false;
    scopes(made, measured);
  } catch (problem) {
    notice(problem.message);
    problemShown = true;
    shown = null;
  }
  if (!$('qualities').hidden) queueSheet();
  ++renders;
  spent = performance.now() - start;
  readings();
}
let problemShown = false;

// What is read by people, not looked at: ten times a second is enough, and once more when all is still.
let lastReadings = 0, readingsLater = 0;
function readings() {
  const now = performance.now();
  clearTimeout(readingsLater);
  readingsLater = 0;
  if (now - lastReadings < 95) {
    readingsLater = setTimeout(readings, 100);
    return;
  }
  lastReadings = now;
  $('speed').textContent = shown ? `${spent.toFixed(1)} ms a picture` : '';
  showExport();
  if (source) showCut();
}
const scopesAreDue = () => performance.now() - lastScopes >= 95;
function scopes(made, s) {
  clearTimeout(scopesLater);
  if (!s) {
    scopesLater = setTimeout(schedule, 100);
    return;
  }
  lastScopes = performance.now();
  drawHistogram($('histogram-picture'), countPixels(made.pixels, made.width, made.height));
  drawHistogram($('histogram-sensor'), [s.histogramR, s.histogramG, s.histogramB]);
  showGrid(s.cells);
  const means = [s.means, s.centre8, s.qualifiedMeans, s.exposureMeans];
  means.forEach((rgb, row) => rgb.forEach((m, c) => { meansCells[row][c].textContent = m.toFixed(1); }));
}
const meansCells = ['whole frame', 'centre-weighted', 'qualified cells', 'exposure cells'].map((name) => {
  const cells = [0, 1, 2].map(() => element('td'));
  $('means').append(element('tr', {}, element('th', { scope: 'row', text: name }), ...cells));
  return cells;
});

// Where a pixel of the picture lies in the mosaic.
function mosaicPlace(x, y) {
  const { width, height } = engine.used, scale = view.canvas.width / width;
  const mirrored = $('show').value === 'picture' && state.settings.quality !== 4;
  let mx = Math.min(width - 1, Math.floor(x / scale)), my = Math.min(height - 1, Math.floor(y / scale));
  if (mirrored && state.settings.get('h_mirror')[0]) mx = width - 1 - mx;
  if (mirrored && state.settings.get('v_mirror')[0]) my = height - 1 - my;
  return [mx, my];
}
function look(x, y, [r, g, b]) {
  const [mx, my] = mosaicPlace(x, y), site = [['B', 'Gb'], ['Gr', 'R']][my & 1][mx & 1];
  const cx = mx & ~1, cy = my & ~1;
  const cell = [[0, 0], [1, 0], [0, 1], [1, 1]].map(([dx, dy]) => engine.sampleAt(cx + dx, cy + dy));
  const items = [['place', `${x}, ${y}`], ['picture', `${r}, ${g}, ${b}`], ['sample', `${engine.sampleAt(mx, my)} (${site})`],
    ['B, Gb', `${cell[0]}, ${cell[1]}`], ['Gr, R', `${cell[2]}, ${cell[3]}`]];
  $('loupe-text').replaceChildren(...items.flatMap(([name, value]) => [element('dt', { text: name }), element('dd', { text: value })]));
}
function pick(x, y) {
  if (mode !== 'grey') return;
  attempt(() => {
    const gains = engine.greyPoint(state.settings, ...mosaicPlace(x, y));
    state.change((s) => s.set('rgb_gain', gains));
    setMode('look');
    notice('');
    say(`White balance ${gains.join(', ')}`);
  });
}
function setMode(next) {
  mode = next;
  $('grey').setAttribute('aria-pressed', String(mode === 'grey'));
  $('stage').classList.toggle('picking', mode === 'grey');
  if (mode === 'grey') say('Choose a place in the picture that is grey in nature.');
}

// ---- All qualities -----------------------------------------------------------------------------------------------------

let sheetQueue = [], sheetTimer = 0;
function buildSheet() {
  const sheet = document.querySelector('#qualities .sheet');
  for (const quality of qualities) {
    const canvas = element('canvas', { width: 192, height: 144, 'aria-hidden': 'true' });
    sheet.append(element('button', { type: 'button', 'data-quality': quality, 'aria-pressed': 'false',
      on: { click: () => state.change((s) => { s.quality = quality; }) } }, canvas,
    element('strong', { text: `${quality}: ${engine.qualityName(quality)}` }), element('small', { text: engine.qualitySummary(quality) })));
  }
}
function queueSheet() {
  for (const button of document.querySelectorAll('.sheet button'))
    button.setAttribute('aria-pressed', String(Number(button.dataset.quality) === state.settings.quality));
  clearTimeout(sheetTimer);
  sheetTimer = setTimeout(() => {
    sheetQueue = [...document.querySelectorAll('.sheet button')];
    nextOfSheet();
  }, 60);
}
function nextOfSheet() {
  const button = sheetQueue.shift();
  if (!button) return;
  const settings = state.settings.copy();
  settings.quality = Number(button.dataset.quality);
  const to = button.querySelector('canvas').getContext('2d'), w = 96, h = 72;
  const kept = engine.last;
  try {
    // As the command line tool makes its pictures.
    const format = engine.page.page_is_pale_in_rgb(settings.quality) ? 'I420' : 'RGB24';
    const picture = engine.convert(settings, format, 'same', 'sheet'), pixels = engine.pixels(picture, 'sheet pixels');
    const [x, y] = view.at ? mosaicPlace(...view.at) : [picture.width >> 1, picture.height >> 1];
    const left = Math.max(0, Math.min(picture.width - w, x - w / 2)), top = Math.max(0, Math.min(picture.height - h, y - h / 2));
    const part = new OffscreenCanvas(w, h);
    part.getContext('2d').putImageData(new ImageData(pixels, picture.width, picture.height), -left, -top, left, top, w, h);
    to.imageSmoothingEnabled = false;
    to.drawImage(part, 0, 0, 192, 144);
    button.title = '';
  } catch (problem) {
    to.clearRect(0, 0, 192, 144);
    button.title = problem.message;
  }
  engine.last = kept;
  requestAnimationFrame(nextOfSheet);
}

// ---- Frames ------------------------------------------------------------------------------------------------------------

async function readFrame(index) {
  const bytes = engine.shapeBytes(source.shape), at = source.shape.skip + index * engine.framePeriod(source.shape);
  return new Uint8Array(await source.file.slice(at, at + bytes).arrayBuffer());
}
function countFrames(file, shape) {
  const held = Math.max(0, file.size - shape.skip), period = engine.framePeriod(shape);
  return period ? Math.floor(held / period) + (held % period >= engine.shapeBytes(shape) ? 1 : 0) : 0; // the last row's room may be missing
}
/**
 * Takes a shape for the file at hand. Throws, with nothing changed, if it can't be; false if another was asked for
 * meanwhile.
 */
async function takeShape(next, file, shape, index = 0) {
  const problem = engine.shapeProblem(shape);
  if (problem) throw new Error(`This shape can't be: ${problem}.`);
  const frames = countFrames(file, shape);
  if (frames < 1)
    throw new Error(`A frame of this shape has ${engine.shapeBytes(shape)} bytes; the file has ${Math.max(0, file.size - shape.skip)}.`);
  const old = source, kept = { ...next, file, shape, frames, index: Math.min(index, frames - 1) };
  source = kept;
  try {
    const bytes = await readFrame(kept.index);
    if (source !== kept) return false;
    engine.takeFrame(bytes, shape);
  } catch (problem) {
    if (source === kept) source = old;
    throw problem;
  }
  taken = kept;
  ++frameNumber;
  dirty.controls = true;
  showShape();
  schedule();
  return true;
}
let frameAsked = 0;
async function showFrame(index) {
  const at = source, asked = ++frameAsked;
  if (at !== taken) return; // another shape is on its way
  const next = ((index % at.frames) + at.frames) % at.frames;
  const bytes = await readFrame(next);
  if (at !== source || asked !== frameAsked) return;
  source.index = next;
  engine.takeFrame(bytes, source.shape);
  ++frameNumber;
  $('frame').value = $('frame-slider').value = next;
  schedule();
}

function showShape() {
  const { shape, frames, index, name, file } = source;
  for (const key of ['width', 'height', 'stride', 'skip', 'layout', 'bits', 'pattern'])
    if (document.activeElement !== $(key)) $(key).value = key === 'bits' ? [8, shape.bits, shape.bits, 10, 12][shape.layout] : shape[key];
  $('bits').disabled = shape.layout !== 1 && shape.layout !== 2;
  $('file-name').textContent = name;
  $('file-name').title = name;
  const bits = shape.layout === 0 ? '8 bits' : shape.layout === 3 ? '10 bits packed' : shape.layout === 4 ? '12 bits packed' : `${shape.bits} bits`;
  $('shape-text').textContent = `${shape.width} × ${shape.height}, ${patterns[shape.pattern]}, ${bits}${frames > 1 ? `, ${frames} frames` : ''}`;
  $('recording').hidden = frames < 2;
  $('frame').max = $('frame-slider').max = frames - 1;
  $('frame').value = $('frame-slider').value = index;
  $('frame-count').textContent = `of ${frames}, from 0`;
  showCut();
}
function showCut() {
  const { shape, frames, file } = source, { width, height } = engine.used;
  const rest = file.size - shape.skip - frames * engine.framePeriod(shape);
  const text = [shape.width > width || shape.height > height ? `Of this frame ${width} × ${height} make a whole picture in this format and size.` : '',
    rest > 0 && frames > 0 ? `${rest} bytes are left over at the end of the file.` : '',
    engine.frame.width > 2016 || engine.frame.height > 2048 ? 'Worked on in parts; measurements are put together of theirs.' : ''].filter(Boolean).join(' ');
  if ($('cut').textContent !== text) $('cut').textContent = text;
}
function shapeFromFields() {
  const read = (id) => ($(id).value.trim() === '' ? NaN : Number($(id).value));
  return { width: read('width'), height: read('height'), stride: read('stride'), skip: read('skip'), layout: Number($('layout').value),
    bits: Number($('bits').value), pattern: Number($('pattern').value) };
}

const sampleSettings = () => parseSettings(SAMPLE_SETTINGS, new Settings(engine.controls, engine.lensNumbers));
let guessedGains = ''; // as long as nobody sets others, they follow the frame's phase
function guessWhite() {
  try {
    const { gains } = engine.autoWhite(state.settings, daylight());
    guessedGains = gains.join();
    state.change((s) => s.set('rgb_gain', gains));
  } catch {
    guessedGains = '';
  }
}
const daylight = () => ['day-r', 'day-g', 'day-b'].map((id) => Math.min(2047, Math.max(1, Math.round(Number($(id).value)) || 256)));

async function openFile(file) {
  stop();
  if (/\.json$/i.test(file.name)) return loadSettings(file);
  if (file.size < 256) throw new Error(`${file.name} has ${file.size} bytes: that is no raw frame.`);
  const head = new Uint8Array(await file.slice(0, HEAD).arrayBuffer());
  const known = [['PNG', [0x89, 0x50, 0x4e, 0x47]], ['JPEG', [0xff, 0xd8, 0xff]], ['GIF', [0x47, 0x49, 0x46, 0x38]],
    ['TIFF or DNG', [0x49, 0x49, 0x2a, 0]], ['TIFF or DNG', [0x4d, 0x4d, 0, 0x2a]], ['PDF', [0x25, 0x50, 0x44, 0x46]], ['ZIP', [0x50, 0x4b, 3, 4]]]
    .find(([, magic]) => magic.every((byte, i) => head[i] === byte));
  if (known) throw new Error(`${file.name} is a ${known[0]} file; this page takes headerless raw frames.`);
  const shape = guessShape(file.name, file.size, head);
  if (!shape) throw new Error(`No frame size that this page knows fits ${file.name} (${file.size} bytes): name it like frame_640x480.raw.`);
  const stood = asJson(state.settings);
  if (!await takeShape({ name: file.name }, file, shape)) return;
  $('shape').open = true;
  const notes = [];
  if (stood === asJson(sampleSettings())) {
    // They were the sample's, and say nothing of another camera.
    state.take(new Settings(engine.controls, engine.lensNumbers));
    guessedGains = '';
    guessWhite();
    notes.push(guessedGains ? 'The sample’s settings have made way for the defaults and a guessed white balance.'
      : 'The sample’s settings have made way for the defaults.');
  }
  if (!patterns.some((p) => file.name.toLowerCase().includes(p.toLowerCase())))
    notes.push('The content does not tell red from blue: if the colours are wrong, swap them under Frame.');
  notice(notes.join(' '), 'note');
  say(`${file.name}: ${$('shape-text').textContent}`);
}
async function loadSettings(file) {
  if (file.size > 1 << 20) throw new Error('This is no settings file: it has more than a megabyte.');
  state.take(parseSettings(await file.text(), new Settings(engine.controls, engine.lensNumbers)));
  notice('');
  say(`Settings of ${file.name} taken`);
}

let playing = 0;
function stop() {
  playing = 0;
  $('play').setAttribute('aria-pressed', 'false');
  $('play').textContent = 'Play';
}
function play() {
  const turn = ++playing;
  $('play').setAttribute('aria-pressed', 'true');
  $('play').textContent = 'Pause';
  let last = performance.now();
  const step = async (now) => {
    if (playing !== turn) return;
    if (now - last >= 1000 / 30 - 2) {
      last = now;
      await attempt(() => showFrame(source.index + 1));
    }
    requestAnimationFrame(step);
  };
  requestAnimationFrame(step);
}

async function takeSample() {
  stop();
  const file = new Blob([await unpack(samplePacked)]);
  state.take(sampleSettings());
  await takeShape({ name: SAMPLE }, file, { ...SAMPLE_SHAPE });
  notice('');
}

// ---- Elsewhere -----------------------------------------------------------------------------------------------------------

const writers = { options: asOptions, c: asC, element: asElement, json: asJson };
let form = 'options';

// A name as a word for a shell. One that could hide something at a prompt is left to the person.
function shellWord(name) {
  if (/\p{C}/u.test(name)) return 'frame.raw';
  if (/^[\w@%+=:,.][\w@%+=:,./-]*$/.test(name)) return name;
  return `'${name.startsWith('-') ? './' : ''}${name.replaceAll("'", "'\\''")}'`;
}
/** The command that makes a file of the picture that is shown, of the frame where it lies. */
function asCommand() {
  const { shape, frames, index, name } = source, { width, height } = engine.used;
  const words = ['ppl convert', name === SAMPLE ? 'frame.raw' : shellWord(name), `-W ${width} -H ${height}`];
  const row = engine.rowBytes(shape), period = engine.framePeriod(shape);
  let { skip } = shape;
  if (shape.pattern) words.push(`--pattern ${patterns[shape.pattern].toLowerCase()}`);
  if (shape.layout === 1 || shape.layout === 2) {
    if (![10, 12, 14, 16].includes(shape.bits)) {
      return `# ppl convert takes words of 10, 12, 14 and 16 bits, not of ${shape.bits}. The settings as options:\n` +
        `# ${asOptions(state.settings)}`;
    }
    words.push(`--bits ${shape.bits}`);
    if (shape.layout === 2) words.push('--byte-order big');
  } else if (shape.layout > 2) {
    words.push(`--packed --bits ${shape.layout === 3 ? 10 : 12}`);
  }
  if (shape.stride || width !== shape.width || height !== shape.height) words.push(`--stride ${shape.stride || row}`);
  if (height !== shape.height) skip += index * period;
  else if (frames > 1) words.push(`--frame ${index}`);
  if (skip) words.push(`--skip ${skip}`);
  const decimation = sizes[$('size').value];
  if (decimation) words.push(`--decimation ${decimation}`);
  // The tool goes by way of I420 where the RGB is paler, and by RGB elsewhere.
  const rgb = $('format').value.startsWith('RGB'), pale = engine.page.page_is_pale_in_rgb(state.settings.quality) !== 0;
  if (rgb === pale) words.push(`--via ${rgb ? 'rgb24' : 'i420'}`);
  words.push('-o picture.png', asOptions(state.settings));
  return words.join(' ');
}
function showExport() {
  const text = form === 'options' ? asCommand() : form === 'element' ? `pplbayer ${asElement(state.settings)}` : writers[form](state.settings);
  if ($('export-text').textContent !== text) $('export-text').textContent = text;
}
function chooseForm(next, focus) {
  form = next;
  for (const name of Object.keys(writers)) {
    const tab = $(`tab-${name}`);
    tab.setAttribute('aria-selected', String(name === form));
    tab.tabIndex = name === form ? 0 : -1;
    if (name === form && focus) tab.focus();
  }
  $('export-text').setAttribute('aria-labelledby', `tab-${form}`);
  showExport();
}

// ---- Wiring --------------------------------------------------------------------------------------------------------------

function wire() {
  const fill = (id, list, values = list.map((_, i) => i)) => $(id).append(...list.map((text, i) => element('option', { value: values[i], text })));
  fill('quality', qualities.map((q) => `${q}: ${engine.qualityName(q)}`), qualities);
  fill('format', [...formats], [...formats]);
  $('format').value = 'RGB24';
  fill('layout', layouts);
  fill('bits', ['8', '9', '10', '11', '12', '13', '14', '15', '16'], [8, 9, 10, 11, 12, 13, 14, 15, 16]);
  fill('pattern', patterns);
  $('version').textContent = `ppl ${version}.`;

  $('quality').addEventListener('change', () => state.change((s) => { s.quality = Number($('quality').value); }));
  for (const id of ['format', 'size', 'show']) $(id).addEventListener('change', schedule);
  $('before').addEventListener('change', () => {
    if ($('before').value === 'kept' && !state.kept) state.kept = state.settings.copy();
    schedule();
  });
  $('keep').addEventListener('click', () => {
    state.kept = state.settings.copy();
    $('before').value = 'kept';
    say('Kept: what is set now stands left of the divider.');
    schedule();
  });
  $('zoom-in').addEventListener('click', () => view.zoomBy(1));
  $('zoom-out').addEventListener('click', () => view.zoomBy(-1));
  $('zoom-fit').addEventListener('click', () => { view.zoom = 0; });

  $('grey').addEventListener('click', () => setMode(mode === 'grey' ? 'look' : 'grey'));
  document.addEventListener('keydown', (event) => {
    if (event.key !== 'Escape') return;
    if (mode === 'look') notice('');
    setMode('look');
  });
  $('auto').addEventListener('click', () => attempt(() => {
    const { gains, unsure } = engine.autoWhite(state.settings, daylight());
    state.change((s) => s.set('rgb_gain', gains));
    notice(unsure ? 'This frame says little of its light: the white balance is a guess.' : '', 'note');
    say(`White balance ${gains.join(', ')}`);
  }));
  $('day-now').addEventListener('click', () => state.settings.get('rgb_gain').forEach((v, i) => { $(['day-r', 'day-g', 'day-b'][i]).value = v; }));
  const fit = (from) => {
    const { lens, corner } = from.fitLens();
    state.change((s) => { s.lens = lens; });
    notice(`The corners become ${corner.toFixed(2)} times as bright, about column ${lens.origin[0]}, row ${lens.origin[1]}.`, 'note');
  };
  $('lens-this').addEventListener('click', () => attempt(() => fit(engine)));
  $('lens-file').addEventListener('change', () => attempt(async () => {
    const [file] = $('lens-file').files;
    $('lens-file').value = '';
    if (!file) return;
    const { shape } = source, bytes = engine.shapeBytes(shape);
    if (file.size - shape.skip < bytes) throw new Error(`${file.name} has ${file.size} bytes; a flat frame of the shape at hand has ${bytes}.`);
    const flat = new Uint8Array(await file.slice(shape.skip, shape.skip + bytes).arrayBuffer());
    const now = await readFrame(source.index);
    engine.takeFrame(flat, shape);
    try {
      fit(engine);
    } finally {
      engine.takeFrame(now, shape);
    }
  }));
  $('all').addEventListener('click', () => {
    const open = $('qualities').hidden;
    $('qualities').hidden = !open;
    $('all').setAttribute('aria-expanded', String(open));
    if (open) {
      queueSheet();
      $('qualities').scrollIntoView({ block: 'nearest' });
    }
  });

  $('open').addEventListener('change', () => attempt(async () => {
    const [file] = $('open').files;
    $('open').value = '';
    if (file) await openFile(file);
  }));
  $('load').addEventListener('change', () => attempt(async () => {
    const [file] = $('load').files;
    $('load').value = '';
    if (file) await loadSettings(file);
  }));
  $('sample').addEventListener('click', () => attempt(takeSample));
  $('save').addEventListener('click', () => {
    const url = URL.createObjectURL(new Blob([asJson(state.settings)], { type: 'application/json' }));
    element('a', { href: url, download: 'camera.json' }).click();
    setTimeout(() => URL.revokeObjectURL(url), 10000);
  });
  $('reset-all').addEventListener('click', () => state.take(new Settings(engine.controls, engine.lensNumbers)));

  for (const id of ['width', 'height', 'stride', 'skip', 'layout', 'bits', 'pattern'])
    $(id).addEventListener('change', () => attempt(async () => {
      await takeShape({ name: source.name }, source.file, shapeFromFields(), source.index);
      notice('');
    }));
  // Blue and red change places when the frame begins one row and one column further on.
  $('swap').addEventListener('click', () => attempt(async () => {
    await takeShape({ name: source.name }, source.file, { ...source.shape, pattern: 3 - source.shape.pattern }, source.index);
    if (guessedGains && state.settings.get('rgb_gain').join() === guessedGains) guessWhite();
    notice('');
  }));
  $('guess').addEventListener('click', () => attempt(async () => {
    const shape = guessShape(source.name, source.file.size, new Uint8Array(await source.file.slice(0, HEAD).arrayBuffer()));
    if (!shape) throw new Error('No frame size that this page knows fits this file.');
    await takeShape({ name: source.name }, source.file, shape);
  }));
  for (const id of ['frame', 'frame-slider'])
    $(id).addEventListener('input', () => attempt(async () => {
      const n = Number($(id).value);
      if (Number.isInteger(n) && n >= 0 && n < source.frames && $(id).value !== '') await showFrame(n);
    }));
  $('frame').addEventListener('change', () => { $('frame').value = source.index; });
  $('play').addEventListener('click', () => (playing ? stop() : play()));

  let depth = 0;
  const over = (on) => document.body.classList.toggle('dropping', on);
  addEventListener('dragenter', (event) => { event.preventDefault(); ++depth; over(true); });
  addEventListener('dragleave', () => { if (--depth <= 0) over((depth = 0) > 0); });
  addEventListener('dragover', (event) => event.preventDefault());
  addEventListener('drop', (event) => {
    event.preventDefault();
    over((depth = 0) > 0);
    const [file] = event.dataTransfer?.files ?? [];
    if (file) attempt(() => openFile(file));
  });

  const tabs = Object.keys(writers);
  for (const name of tabs) {
    $(`tab-${name}`).addEventListener('click', () => chooseForm(name));
    $(`tab-${name}`).addEventListener('keydown', (event) => {
      const by = { ArrowRight: 1, ArrowLeft: -1 }[event.key];
      if (by) chooseForm(tabs[(tabs.indexOf(form) + by + tabs.length) % tabs.length], true);
    });
  }
  $('copy').addEventListener('click', () => attempt(async () => {
    // Browsers keep the clipboard from pages that came without encryption; what is selected they copy all the same.
    if (navigator.clipboard) {
      await navigator.clipboard.writeText($('export-text').textContent);
    } else {
      getSelection().selectAllChildren($('export-text'));
      if (!document.execCommand('copy')) throw new Error('This browser does not let the page copy: the text is selected for you to copy.');
    }
    say('Copied');
  }));
  matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => { lastScopes = 0; schedule(); });
}

async function start() {
  engine = await Engine.start(await unpack(wasmPacked));
  state.settings = new Settings(engine.controls, engine.lensNumbers);
  showGrid = buildGrid($('cells'));
  view = new View({ stage: $('stage'), paper: $('paper'), canvas: $('picture'), divider: $('divider'), cross: $('cross'), loupe: $('loupe') },
    { look, pick, moved: (what) => {
      if (what === 'size') $('zoom-text').textContent = `${Math.round(view?.scale * 100 || 100)} %`;
      else if (what === 'loupe') say([...$('loupe-text').querySelectorAll('dd')].slice(0, 3).map((e) => e.textContent).join('; '));
      else schedule();
    } });
  refreshControls = buildControls($('groups'), engine, state);
  wire();
  buildSheet();
  await takeSample();
  // For scripts and for the tests of this page.
  window.pplPage = {
    get settings() { return asJson(state.settings); },
    get statistics() {
      return snapshot(engine.statistics);
    },
    get problem() { return $('notice').firstChild?.textContent ?? ''; },
    get shape() { return { ...taken.shape, frames: taken.frames, index: taken.index }; },
    /** How much of what was asked for is still under way. */
    get busy() { return working; },
    /** Whether the words on the page, which follow a little later, are of the picture shown. */
    get told() { return !scheduled && readingsLater === 0; },
    get renders() { return renders; },
    get spent() { return spent; },
    /** Of it, in the library's own calls for the picture. */
    get library() { return library; },
    forms: () => Object.fromEntries(Object.entries(writers).map(([name, write]) => [name, write(state.settings)])),
    /** The picture's bytes, as the library wrote them. */
    frame: () => shown && engine.bytesOf(shown),
    open: (file) => attempt(() => openFile(file)),
    render,
  };
}

start().catch((problem) => notice(`The page can't start: ${problem.message}`));
