// The library as the page uses it: a sensor frame in, pixels of a canvas out. No element of the page is touched here.
import { frameBytes, formats, Library, sizes } from '../package/ppl.mjs';

const decoder = new TextDecoder();
const LARGEST = 48e6; // samples; a frame and its pictures take some twenty bytes each

/** The controls as the command line tool has them, from the module's table. */
function readControls(page, text) {
  const list = [];
  for (let i = 0; i < page.page_control_count(); ++i) {
    const [key, option, property, group, what, values] = [0, 1, 2, 3, 4, 5].map((n) => text(page.page_control_text(i, n)));
    const kind = ['flag', 'number', 'numbers'][page.page_control_number(i, 0)];
    const count = page.page_control_number(i, 1);
    list.push({
      index: i, key, option, property, group, what, names: values.split(','), kind, count,
      low: page.page_control_number(i, 2), high: page.page_control_number(i, 3),
      standard: Array.from({ length: count }, (_, n) => page.page_control_number(i, 4 + n)),
    });
  }
  return list;
}

const MEASURED = ['means', 'centre8', 'qualifiedMeans', 'exposureMeans', 'cells', 'histogramR', 'histogramG', 'histogramB',
  'qualifiedCount', 'exposureCount'];
/** What a context measured, free of what it measures next. */
export const snapshot = (statistics) => Object.fromEntries(MEASURED.map((name) => [name, statistics[name]]));

/** Measurements of a frame from those of its parts: means weigh as much as the cells that they are of, histograms and
 * counts add up to the size of the frame, since overlaps were seen twice, and each cell of the grid is the cell of the
 * part that lies under its middle. */
function joinStatistics(parts, width, height) {
  const mean = (name, weight) => [0, 1, 2].map((c) => {
    const total = parts.reduce((sum, p) => sum + weight(p), 0);
    return total ? parts.reduce((sum, p) => sum + p[name][c] * weight(p), 0) / total : 0;
  });
  const area = (p) => p.width * p.height, once = width * height / parts.reduce((sum, p) => sum + area(p), 0);
  const histogram = (name) => Uint32Array.from({ length: 256 }, (_, i) => once * parts.reduce((sum, p) => sum + p[name][i], 0));
  const count = (name) => Math.floor(once * parts.reduce((sum, p) => sum + p[name], 0));
  const cells = Array.from({ length: 48 }, (_, i) => {
    const x = ((i % 8) + 0.5) * width / 8, y = (Math.floor(i / 8) + 0.5) * height / 6;
    // Of parts that overlap there, the one whose middle is nearest.
    const far = (p) => Math.max(Math.abs(x - p.x - p.width / 2) / p.width, Math.abs(y - p.y - p.height / 2) / p.height);
    const p = parts.reduce((best, next) => (far(next) < far(best) ? next : best));
    const at = (from, size, n) => Math.min(n - 1, Math.max(0, Math.floor(from / size * n)));
    return p.cells[8 * at(y - p.y, p.height, 6) + at(x - p.x, p.width, 8)];
  });
  return {
    means: mean('means', area), centre8: mean('centre8', area), cells, qualifiedMeans: mean('qualifiedMeans', (p) => p.qualifiedCount),
    exposureMeans: mean('exposureMeans', (p) => p.exposureCount), qualifiedCount: count('qualifiedCount'),
    exposureCount: count('exposureCount'), histogramR: histogram('histogramR'), histogramG: histogram('histogramG'),
    histogramB: histogram('histogramB'),
  };
}

export class Engine {
  /** @param bytes the module: the library with the page's functions */
  static async start(bytes) {
    const { module, instance } = await WebAssembly.instantiate(bytes, {});
    return new Engine(new Library(module, instance));
  }

  #sets = [new Map(), new Map()]; // what each context holds, by key
  #lens = [null, null];
  #buffers = new Map();

  constructor(library) {
    this.library = library;
    this.page = library.exports;
    this.controls = readControls(this.page, (at) => this.text(at));
    this.lensNumbers = [0, 1, 2, 3].map((i) => ({
      key: this.text(this.page.page_lens_text(i, 0)), option: this.text(this.page.page_lens_text(i, 1)),
      low: this.page.page_lens_number(i, 0), high: this.page.page_lens_number(i, 1),
      standard: this.page.page_lens_number(i, 2),
    }));
    // Qualities 10 and 11 leave flat colours behind that 0 and 1 would show: they have a context of their own.
    this.contexts = [library.context(), library.context()];
    this.last = this.contexts[0];
  }

  text(at) {
    const bytes = this.library.memory;
    return decoder.decode(bytes.subarray(at, bytes.indexOf(0, at)));
  }
  buffer(name, bytes) {
    let buffer = this.#buffers.get(name);
    if (!buffer || buffer.length < bytes) {
      buffer?.free();
      this.#buffers.delete(name);
      buffer = this.library.buffer(bytes);
      this.#buffers.set(name, buffer);
    }
    return buffer;
  }

  // ---- The frame -------------------------------------------------------------------------------------------------------

  /** Why a shape is none, or null. */
  shapeProblem(shape) {
    for (const name of ['width', 'height', 'stride', 'skip'])
      if (!Number.isInteger(shape[name]) || shape[name] < 0) return `${name} takes a whole number, 0 or more`;
    if (shape.width > 16384 || shape.height > 16384 || shape.width * shape.height > LARGEST)
      return 'width and height are at most 16384 here, and a frame has at most 48 million samples';
    const reason = this.page.page_sensor_reason(shape.width, shape.height, shape.stride, shape.pattern, shape.layout, shape.bits);
    return reason ? this.text(this.page.page_sensor_sentence(reason)) : null;
  }
  /** Bytes of one frame in the file. */
  shapeBytes(shape) {
    const stride = shape.stride || this.rowBytes(shape);
    return shape.height ? stride * (shape.height - 1) + this.rowBytes(shape) : 0;
  }
  /** Bytes from one frame of a recording to the next: rows behind which there is room have it behind the last row, too. */
  framePeriod(shape) {
    return (shape.stride || this.rowBytes(shape)) * shape.height;
  }
  rowBytes({ width, layout }) {
    return this.page.page_sensor_row_bytes(width, layout);
  }

  /** Takes a frame of this shape, cut to whole tiles and row pairs. */
  takeFrame(bytes, shape) {
    const problem = this.shapeProblem(shape);
    if (problem) throw new Error(`This shape can't be: ${problem}.`);
    if (shape.width < 64 || shape.height < 4) throw new Error('A frame has at least 64 columns and 4 rows here.');
    const needed = this.shapeBytes(shape);
    if (bytes.length < needed)
      throw new Error(`The frame is cut short: it has ${bytes.length} bytes, a frame of this shape ${needed}.`);
    const width = Math.floor(shape.width / 16) * 16, height = Math.floor(shape.height / 2) * 2;
    const raw = this.buffer('sensor', needed);
    raw.bytes.set(bytes.subarray(0, needed));
    const mosaic = this.buffer('mosaic', width * height);
    const reason = this.page.page_prepare(raw.address, shape.width, shape.height, shape.stride, shape.pattern, shape.layout,
      shape.bits, mosaic.address, width, height);
    if (reason) throw new Error(`This shape can't be: ${this.text(this.page.page_sensor_sentence(reason))}.`);
    this.frame = { width, height, shape: { ...shape } };
    this.used = { width, height };
  }
  /** The number that the file has for the sample at a place of the mosaic. */
  sampleAt(x, y) {
    const { shape } = this.frame;
    const sx = Math.min(x + (shape.pattern === 1 || shape.pattern === 3 ? 1 : 0), shape.width - 1);
    const sy = Math.min(y + (shape.pattern === 2 || shape.pattern === 3 ? 1 : 0), shape.height - 1);
    const row = this.buffer('sensor', 0).address + sy * (shape.stride || this.rowBytes(shape));
    return this.page.page_sample(shape.layout, row, sx);
  }

  // ---- Pictures --------------------------------------------------------------------------------------------------------

  /** Why these settings make no picture of this format and size, or null. */
  problem(settings, format, size) {
    return this.#fit(settings, format, size).problem ?? null;
  }
  // The part of the frame, from its first column and row, of which a whole picture comes.
  #fit(settings, format, size) {
    const { width, height } = this.frame;
    if (this.#tooLarge()) {
      const problem = this.#check(settings, format, size, 64, 64), [across, down] = size === 'half' ? [64, 4] : [32, 2];
      if (size === 'double') return { problem: 'frames of more than 2016 x 2048 samples are not doubled here: take the same size, or half of it' };
      return { problem, width: Math.floor(width / across) * across, height: Math.floor(height / down) * down };
    }
    let problem = null;
    for (let w = width; w >= 64 && w > width - 64; w -= 16)
      for (const h of new Set([height, Math.floor(height / 4) * 4])) {
        problem = this.#check(settings, format, size, w, h);
        if (!problem) return { width: w, height: h };
      }
    return { problem };
  }
  #check(settings, format, size, width, height) {
    const reason = this.page.page_check(settings.quality, settings.get('medium_filter')[0], formats.indexOf(format), sizes[size],
      settings.get('h_mirror')[0], settings.get('v_mirror')[0], width, height);
    return reason ? this.text(this.page.page_reason(reason)) : null;
  }
  #tooLarge() {
    return this.frame.width > 2016 || this.frame.height > 2048;
  }

  #apply(which, settings, width, height, originX, originY) {
    const context = this.contexts[which], held = this.#sets[which];
    const values = this.buffer('values', 64);
    for (const control of this.controls) {
      const wanted = settings.get(control.key), text = wanted.join();
      if ((held.get(control.key) ?? control.standard.join()) === text) continue;
      new Int32Array(this.library.exports.memory.buffer, values.address, 9).set(wanted);
      if (!this.page.page_set_control(context.address, control.index, values.address))
        throw new Error(`The library refuses ${text} for ${control.key}.`);
      held.set(control.key, text);
    }
    if (held.get('quality') !== settings.quality) {
      context.set('quality', settings.quality);
      held.set('quality', settings.quality);
    }
    const lens = settings.lens;
    const key = lens && [width, height, originX, originY, lens.f1, lens.f1_rshift_count, lens.f2, lens.f2_rshift_count].join();
    if (key !== this.#lens[which]) {
      if (lens) this.#setLens(context, which, lens, width, height, originX, originY);
      else context.disable('lens_correction');
      this.#lens[which] = key;
    }
  }
  #setLens(context, which, lens, width, height, originX, originY) {
    const bytes = 2 * width * (Math.max(originY, height - originY) + 1);
    const table = this.buffer(`lens ${which}`, bytes);
    const done = this.page.ppl_set_lens_correction(context.address, width, height, originX, originY, table.address, bytes, lens.f1,
      lens.f1_rshift_count, lens.f2, lens.f2_rshift_count);
    if (!done) throw new Error('The library refuses these coefficients of the lens correction.');
    context.enable('lens_correction');
  }

  /** Converts the frame. The picture stands in the buffer `name` until its next use. */
  convert(settings, format, size, name = 'picture') {
    const { problem, width, height } = this.#fit(settings, format, size);
    if (problem) throw new Error(`${problem[0].toUpperCase()}${problem.slice(1)}.`);
    const which = this.page.page_leaves_colours(settings.quality);
    const context = this.contexts[which];
    const [w, h] = size === 'half' ? [width / 2, height / 2] : size === 'double' ? [2 * width, 2 * height] : [width, height];
    const picture = this.buffer(name, frameBytes(format, w, h) + 16);
    const [x, y] = settings.lens?.origin ?? [width >> 1, height >> 1];
    const call = `ppl_process_blrto${format.toLowerCase()}`;
    this.last = context;
    this.used = { width, height };
    this.librarySpent = 0;
    if (!this.#tooLarge()) {
      const source = this.buffer('source', width * height);
      this.page.page_copy(this.buffer('mosaic', 0).address, this.frame.width, width, height, source.address);
      this.#apply(which, settings, width, height, x, y);
      this.page.ppl_set_decimation(context.address, sizes[size], 0, 0);
      this.#timed(call, context.address, source.address, picture.address, width, height, width);
    } else {
      const parts = this.page.page_plan_parts(width, height, sizes[size]);
      if (!parts) throw new Error('This frame is too large to be worked on in parts.');
      const measured = [];
      for (let i = 0; i < parts; ++i) {
        const [px, py, pw, ph] = [0, 1, 2, 3].map((n) => this.page.page_part(i, n));
        const source = this.buffer('source', pw * ph), out = this.buffer('part', frameBytes(format, pw, ph));
        this.page.page_part_source(i, this.buffer('mosaic', 0).address, this.frame.width, source.address);
        this.#apply(which, settings, pw, ph, x - px, y - py);
        this.page.ppl_set_decimation(context.address, sizes[size], 0, 0);
        this.#timed(call, context.address, source.address, out.address, pw, ph, pw);
        measured.push({ x: px, y: py, width: pw, height: ph, ...snapshot(context.statistics) });
        this.page.page_part_join(i, width, height, formats.indexOf(format), sizes[size], settings.get('h_mirror')[0],
          settings.get('v_mirror')[0], out.address, picture.address);
      }
      this.last = { statistics: joinStatistics(measured, width, height) };
    }
    return { format, width: w, height: h, address: picture.address, bytes: frameBytes(format, w, h) };
  }
  #timed(call, ...values) {
    const start = performance.now();
    this.page[call](...values);
    this.librarySpent += performance.now() - start;
  }
  /** A converted frame's bytes: a copy. */
  bytesOf(picture) {
    return this.library.memory.slice(picture.address, picture.address + picture.bytes);
  }
  /** As pixels for a canvas; the view is good until the memory grows. */
  pixels(picture, name = 'pixels') {
    const out = this.buffer(name, 4 * picture.width * picture.height);
    this.page.page_pixels(formats.indexOf(picture.format), picture.address, picture.width, picture.height, out.address);
    return new Uint8ClampedArray(this.library.exports.memory.buffer, out.address, 4 * picture.width * picture.height);
  }
  /** The mosaic, as much of it as the last picture was made of. */
  mosaicPixels() {
    const { width, height } = this.used, out = this.buffer('mosaic pixels', 4 * width * height);
    this.page.page_mosaic_pixels(this.buffer('mosaic', 0).address, this.frame.width, width, height, out.address);
    return new Uint8ClampedArray(this.library.exports.memory.buffer, out.address, 4 * width * height);
  }
  get statistics() {
    return this.last.statistics;
  }
  qualityName(quality) {
    return this.text(this.page.page_quality_name(quality));
  }
  qualitySummary(quality) {
    return this.text(this.page.page_quality_summary(quality));
  }

  // ---- Settings found ---------------------------------------------------------------------------------------------------

  #words(name, values) {
    const buffer = this.buffer(name, 64);
    new Int32Array(this.library.exports.memory.buffer, buffer.address, values.length).set(values);
    return buffer.address;
  }
  #read(address, count) {
    return Array.from(new Int32Array(this.library.exports.memory.buffer, address, count));
  }
  /** Gains of R, G, B that the frame asks for, from the sensor's gains in daylight. */
  autoWhite(settings, daylight) {
    const { width, height } = this.frame, gains = this.#words('gains', [0, 0, 0]);
    const found = this.page.page_white(this.buffer('mosaic', 0).address, width, height,
      this.#words('black', settings.get('optical_black_b_gb_gr_r')), this.#words('daylight', daylight), gains);
    if (!found) throw new Error('The frame does not say what light it was taken in: it is too dark, too bright or too even.');
    return { gains: this.#read(gains, 3), unsure: found - 1 > 1000 };
  }
  /** Gains that turn the surroundings of a place of the mosaic grey. */
  greyPoint(settings, x, y, size = 32) {
    const { width, height } = this.frame, gains = this.#words('gains', [0, 0, 0]);
    const found = this.page.page_grey(this.buffer('mosaic', 0).address, width, height, x, y, size,
      this.#words('black', settings.get('optical_black_b_gb_gr_r')), gains);
    if (!found) throw new Error('This place is too dark or too bright to tell a grey: choose another.');
    return this.#read(gains, 3);
  }
  /** The correction that makes this frame flat. */
  fitLens() {
    const { width, height } = this.frame, at = this.#words('found', [0, 0, 0, 0, 0, 0, 0]);
    if (width > 2048 || height > 2048) throw new Error('The shading is fitted to frames of up to 2048 x 2048 samples.');
    if (!this.page.page_fit_lens(this.buffer('mosaic', 0).address, width, height, at))
      throw new Error('This is no flat frame: take an evenly lit white surface, neither dark nor cut, at least 128 x 96.');
    const [x, y, f1, f1_rshift_count, f2, f2_rshift_count, corner] = this.#read(at, 7);
    return { lens: { f1, f1_rshift_count, f2, f2_rshift_count, origin: [x, y] }, corner: corner / 8192 };
  }
}
