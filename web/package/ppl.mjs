// ppl for JavaScript: the library as a WebAssembly module, its memory, and one call per conversion.
//
//     import { load } from 'ppl-wasm';
//     const ppl = await load();
//     const context = ppl.context();
//     context.set('optical_black_b_gb_gr_r', 12, 12, 12, 12).set('rgb_gain', 397, 256, 346);
//     const frame = context.bayer({ source: mosaic, width: 640, height: 480, format: 'RGB24' });
//     frame.bytes;                     // the picture, in the module's memory until the next call
//     context.statistics.means;        // [R, G, B] in sample steps
//     context.close();
//
// Runs in browsers, in workers and in Node. What is asked wrongly throws an Error whose message says what would be
// right; nothing is converted then.

export const formats = Object.freeze(['I420', 'YUYV', 'UYVY', 'RGB24', 'RGB32']);
export const sizes = Object.freeze({ double: -1, same: 0, half: 1 });

const ALIGNMENT = 64;
const PAGE = 65536;
const MOST_PAGES = 65536;

// ---- What the library makes whole -----------------------------------------------------------------------------------
// By quality and format: D double, S same and H half size.
const WALK = { I420: 'DSH', YUYV: 'DSH', UYVY: 'DSH', RGB24: 'DSH', RGB32: 'SH' };
const NO_GAPS = { I420: 'SH', YUYV: 'SH', UYVY: 'SH', RGB24: 'DSH', RGB32: 'SH' };
const RAW = { I420: 'SH', YUYV: 'SH', UYVY: 'SH', RGB24: 'S', RGB32: 'SH' };
const BACK_TO_BACK = [4, 9, 10, 11]; // rows without a byte between them
const QUALITIES = Object.freeze({
  0: WALK, 1: WALK, 2: WALK, 3: WALK, 4: RAW, 9: RAW, 10: NO_GAPS, 11: NO_GAPS, 12: NO_GAPS,
  13: { I420: 'SH', RGB24: 'SH' },
  15: { I420: 'DSH', YUYV: 'SH', UYVY: 'DSH', RGB24: 'SH' },
});
const LETTER = { double: 'D', same: 'S', half: 'H' };

/** Whether a quality makes a whole picture of this format and size. */
export function isWhole(quality, format, size = 'same', mediumFilter = false, oneMirror = false) {
  const made = QUALITIES[quality]?.[format] ?? '';
  if (size === 'double' && quality === 2 && format === 'YUYV' && mediumFilter) return false;
  if (size === 'double' && format === 'RGB24' && oneMirror && quality !== 3) return false;
  return made.includes(LETTER[size] ?? '?');
}

/** Bytes of a frame. */
export function frameBytes(format, width, height) {
  const pixels = width * height;
  switch (format) {
    case 'I420': return pixels + 2 * Math.floor(pixels / 4);
    case 'YUYV': case 'UYVY': return 2 * pixels;
    case 'RGB24': return 3 * pixels;
    case 'RGB32': return 4 * pixels;
    default: throw new Error(`The format is one of ${formats.join(', ')}, not ${format}.`);
  }
}

// What setters accept, for the sentence that follows a refusal.
const RANGES = {
  quality: 'it is 0 to 15',
  decimation: 'it is -1 (double), 0, 1 (half) or 2 (quarter)',
  optical_black_b_gb_gr_r: 'four values of 0 to 255',
  rgb_gain: 'three values of 0 to 2047, 256 for 1.0',
  r_gain: 'it is 0 to 2047, 256 for 1.0',
  g_gain: 'it is 0 to 2047, 256 for 1.0',
  b_gain: 'it is 0 to 2047, 256 for 1.0',
  rgb_delta: 'three values of -32768 to 32767',
  r_delta: 'it is -32768 to 32767',
  g_delta: 'it is -32768 to 32767',
  b_delta: 'it is -32768 to 32767',
  medium_filter_diff_threshold: 'it is -32768 to 32767',
  medium_filter_hot_pixel_threshold: 'it is -32768 to 32767',
  medium_filter_dead_pixel_threshold: 'it is -32768 to 32767',
  nf88_medium_filter_hot_pixel_threshold_percentage: 'it is -65536 to 65535',
  nf88_medium_filter_dead_pixel_threshold_percentage: 'it is -65536 to 65535',
  GbGr_correction_diff_threshold: 'it is -32768 to 32767',
  edge_threshold: 'it is 0 to 1530',
  edge_threshold2: 'it is 0 to 1530',
  nf88_edge_enhance_factor: 'it is 0 to 256, 256 for 1.0',
  noise_filter_G_12T_threshold: 'it is 0 to 3060',
  noise_filter_R_8T_threshold: 'it is 0 to 2040',
  noise_filter_B_8T_threshold: 'it is 0 to 2040',
  CFA_T0_threshold: 'it is 0 to 255',
  CFA_T1_threshold: 'it is 0 to 63',
  intl_3T_threshold: 'it is 0 to 765',
  sat: 'it is 0 to 512, 256 for 1.0',
  sat_hue: 'saturation is 0 to 512, 256 for 1.0',
  gamma: 'it is -32 to 32',
  contrast_c: 'it is -127 to 127',
  contrast_xy: 'x is 0 to 127',
  qual_R_min_max: 'a minimum and a maximum of 0 to 255, the minimum not above the maximum',
  sensor_type: 'no such sensor code',
  new_frame_size: 'the width is at most 2036, height and stride at most 2048',
};
for (const name of ['qual_G', 'qual_B', 'qAE_RGB', 'qual_RGB']) RANGES[`${name}_min_max`] = RANGES.qual_R_min_max;
for (const name of ['BmGb', 'GrmR', 'BmGb_p_GrmR', 'BmGb_m_GrmR'])
  RANGES[`qual_${name}_min_max`] = 'a minimum and a maximum of -32767 to 32766, the minimum not above the maximum';

// These store what they are given and answer false.
const ANSWERS_FALSE = new Set(['quals_rgb_gain', 'quals_r_gain', 'quals_g_gain', 'quals_b_gain']);
// Output pointers that follow the values of a setter; null skips them.
const NULL_POINTERS = { contrast_c: 2 };

// ---- Loading ----------------------------------------------------------------------------------------------------------

async function moduleOf(source) {
  if (source instanceof WebAssembly.Module) return source;
  if (ArrayBuffer.isView(source) || source instanceof ArrayBuffer) return WebAssembly.compile(source);
  const url = source instanceof URL ? source : null;
  const inNode = typeof process === 'object' && !!process.versions?.node;
  if (inNode && (!url || url.protocol === 'file:') && !/^https?:/.test(String(source))) {
    const { readFile } = await import('node:fs/promises');
    return WebAssembly.compile(await readFile(url ?? String(source)));
  }
  const answer = await fetch(source);
  if (!answer.ok) throw new Error(`The module can't be loaded: ${source} answered ${answer.status}.`);
  return WebAssembly.compile(await answer.arrayBuffer());
}

/** Loads the library: from the file beside this one, or from a path, a URL, bytes, or a compiled module. */
export async function load(source = new URL('ppl.wasm', import.meta.url)) {
  const module = await moduleOf(source);
  return new Library(module, await WebAssembly.instantiate(module, {}));
}

/** One copy of the library: eight contexts and a memory of its own. */
export class Library {
  #free = []; // [start, end) of memory that nobody uses, by address
  #sizes = new Map();
  #view = null;

  constructor(module, instance) {
    /** The functions of ppl.h as they are, and the memory. Pointers are addresses in the memory. */
    this.exports = instance.exports;
    this.module = module;
    // All of the module's own data lies below the memory that it begins with.
    const end = this.exports.memory.buffer.byteLength;
    this.#free.push([end, end]);
  }

  /** All bytes of the memory. The view is a new one after the memory has grown. */
  get memory() {
    const { buffer } = this.exports.memory;
    if (this.#view?.buffer !== buffer) this.#view = new Uint8Array(buffer);
    return this.#view;
  }

  /** Bytes in the module's memory, at a multiple of 64. The memory grows as needed. */
  buffer(bytes) {
    if (!Number.isInteger(bytes) || bytes < 0) throw new Error(`A buffer has a whole number of bytes, not ${bytes}.`);
    return new Buffer(this, this.#take(bytes), bytes);
  }

  /** A context with all controls at their defaults. There are eight. */
  context() {
    const address = this.exports.ppl_init();
    if (!address) throw new Error('All eight contexts of this library are in use: close one first.');
    return new Context(this, address);
  }

  #take(bytes) {
    const size = Math.max(ALIGNMENT, Math.ceil(bytes / ALIGNMENT) * ALIGNMENT);
    let place = this.#free.findIndex(([start, end]) => end - start >= size);
    if (place < 0) {
      place = this.#free.length - 1;
      const last = this.#free[place];
      const atEnd = last && last[1] === this.exports.memory.buffer.byteLength;
      const pages = Math.ceil((size - (atEnd ? last[1] - last[0] : 0)) / PAGE);
      const before = this.exports.memory.buffer.byteLength;
      try {
        if (before / PAGE + pages > MOST_PAGES) throw new RangeError();
        this.exports.memory.grow(pages);
      } catch {
        throw new Error(`There is no memory for ${bytes} bytes more.`);
      }
      if (atEnd) {
        last[1] += pages * PAGE;
      } else {
        this.#free.push([before, before + pages * PAGE]);
        place = this.#free.length - 1;
      }
    }
    const [start, end] = this.#free[place];
    if (end - start === size) this.#free.splice(place, 1);
    else this.#free[place][0] += size;
    this.#sizes.set(start, size);
    return start;
  }

  /** @internal */
  _release(address) {
    const size = this.#sizes.get(address);
    if (size === undefined) return;
    this.#sizes.delete(address);
    this.#free.push([address, address + size]);
    this.#free.sort((a, b) => a[0] - b[0]);
    this.#free = this.#free.reduce((joined, next) => {
      const last = joined[joined.length - 1];
      if (last && last[1] === next[0]) last[1] = next[1];
      else joined.push(next);
      return joined;
    }, []);
  }
}

/** A piece of the module's memory. */
export class Buffer {
  constructor(library, address, length) {
    this.library = library;
    this.address = address;
    this.length = length;
  }
  /** The bytes, as a view that is good until the memory grows: take it anew after each call. */
  get bytes() {
    if (this.address === null) throw new Error('This buffer has been freed.');
    return this.library.memory.subarray(this.address, this.address + this.length);
  }
  free() {
    if (this.address === null) return;
    this.library._release(this.address);
    this.address = null;
  }
}

function whole(name, value, low, high) {
  if (!Number.isInteger(value) || value < low || value > high)
    throw new Error(`${name} is a whole number from ${low} to ${high}, not ${value}.`);
  return value;
}
function oneOf(name, value, list) {
  if (!list.includes(value)) throw new Error(`${name} is one of ${list.join(', ')}, not ${value}.`);
  return value;
}
function sized(name, bytes, needed) {
  if (bytes.length < needed)
    throw new Error(`${name} has ${bytes.length} bytes; a frame of this size needs ${needed}.`);
}

/** One instance of the pipeline: controls, conversions, statistics. */
export class Context {
  #work = new Map();
  #lens = null;

  constructor(library, address) {
    this.library = library;
    this.address = address;
  }

  #call(name, ...values) {
    if (this.address === null) throw new Error('This context has been closed.');
    const f = this.library.exports[name];
    if (!f) throw new Error(`There is no ${name} in ppl.h.`);
    return f(this.address, ...values);
  }

  /** Gives the context and its memory back. */
  close() {
    if (this.address === null) return;
    this.library.exports.ppl_free(this.address);
    this.address = null;
    for (const buffer of this.#work.values()) buffer.free();
    this.#work.clear();
    this.#lens?.free();
  }

  // ---- Controls --------------------------------------------------------------------------------------------------

  /** Sets a control by its name behind ppl_set_: set('rgb_gain', 397, 256, 346). A value that is refused throws. */
  set(control, ...values) {
    for (const value of values)
      if (!Number.isInteger(value)) throw new Error(`ppl_set_${control} takes whole numbers, not ${value}.`);
    const name = `ppl_set_${control}`;
    const wanted = (this.library.exports[name]?.length ?? 1) - 1 - (NULL_POINTERS[control] ?? 0);
    if (this.library.exports[name] && wanted !== values.length)
      throw new Error(`${name} takes ${wanted} value${wanted === 1 ? '' : 's'}, not ${values.length}.`);
    if (control === 'lens_correction') throw new Error('Call lensCorrection for this control.');
    const done = this.#call(name, ...values, ...Array(NULL_POINTERS[control] ?? 0).fill(0));
    if (!done && !ANSWERS_FALSE.has(control))
      throw new Error(`${name} refuses ${values.join(', ')}: ${RANGES[control] ?? 'see ppl.h for its range'}.`);
    return this;
  }
  /** A control by its name behind ppl_: get('quality'). */
  get(control) {
    return this.#call(`ppl_${control}`);
  }
  /** enable('GbGr_correction'), enable('medium_filter'), enable('lens_correction') */
  enable(control, on = true) {
    this.#call(`ppl_${on ? 'enable' : 'disable'}_${control}`);
    return this;
  }
  disable(control) {
    return this.enable(control, false);
  }
  /** One control, or all of them, to the default. */
  reset(control = 'all_controls') {
    this.#call(`ppl_reset_${control}`);
    return this;
  }
  /** Copies values to a table or matrix of the library: copy('rgb_gamma_table', bytes), copy('sensor_matrix', words). */
  copy(control, values) {
    const counts = { sensor_matrix: 9, gamma_tables65x256: 16640, gamma_tables65x256_16_235: 16640 };
    const count = counts[control] ?? 256;
    if (values.length !== count) throw new Error(`ppl_copy_${control} takes ${count} values, not ${values.length}.`);
    const bytes = control === 'sensor_matrix' ? new Uint8Array(Int32Array.from(values).buffer) : Uint8Array.from(values);
    this.#call(`ppl_copy_${control}`, this.#place('table', bytes.length, bytes).address);
    return this;
  }
  /** A table of 256 bytes by its getter's name behind ppl_: table('rgb_gamma_table'). A copy. */
  table(name) {
    if (!name.endsWith('_table') || name.startsWith('lens'))
      throw new Error(`A table's name is like rgb_gamma_table, not ${name}.`);
    const at = this.#call(`ppl_${name}`);
    return this.library.memory.slice(at, at + 256);
  }

  /** Lens shading for frames of this size: 1 + f1 r^2 / 2^f1Shift - f2 r^4 / 2^f2Shift. The table is made here. */
  lensCorrection({ width, height, originX = width >> 1, originY = height >> 1, f1 = 16, f1Shift = 24, f2 = 16,
    f2Shift = 44 }) {
    whole('The width', width, 1, 2036);
    whole('The height', height, 1, 2048);
    whole('originX', originX, 0, 2047);
    whole('originY', originY, 0, 2047);
    whole('f1Shift', f1Shift, 13, 63);
    whole('f2Shift', f2Shift, 13, 63);
    const bytes = 2 * width * (Math.max(originY, height - originY) + 1);
    const table = this.library.buffer(bytes);
    const done = this.#call('ppl_set_lens_correction', width, height, originX, originY, table.address, bytes, f1, f1Shift,
      f2, f2Shift);
    this.#lens?.free();
    this.#lens = table;
    if (!done) throw new Error('The library refuses these coefficients of the lens correction.');
    return this.enable('lens_correction');
  }

  // ---- Conversions -----------------------------------------------------------------------------------------------

  // Memory of the context's own, kept from call to call.
  #place(name, bytes, content) {
    let buffer = this.#work.get(name);
    if (!buffer || buffer.length < bytes) {
      buffer?.free();
      this.#work.delete(name);
      buffer = this.library.buffer(bytes);
      this.#work.set(name, buffer);
    }
    if (content) buffer.bytes.set(content);
    return buffer;
  }
  // Where a source stands: the caller's Buffer itself, or a copy of his bytes.
  #source(name, source, needed, label = 'The source') {
    if (source instanceof Buffer) {
      sized(label, source, needed);
      if (source.library !== this.library || source.address === null)
        throw new Error(`${label} is a buffer of another library, or has been freed.`);
      return source.address;
    }
    if (!ArrayBuffer.isView(source)) throw new Error(`${label} is a Uint8Array or a buffer of this library.`);
    const bytes = new Uint8Array(source.buffer, source.byteOffset, source.byteLength);
    sized(label, bytes, needed);
    return this.#place(name, needed, bytes.subarray(0, needed)).address;
  }
  #destination(name, given, needed) {
    if (!given) return this.#place(name, needed);
    if (!(given instanceof Buffer)) throw new Error('The destination is a buffer of this library.');
    sized('The destination', given, needed);
    return given;
  }
  #frame(buffer, format, width, height) {
    return new Frame(this.library, buffer.address, format, width, height);
  }
  // Whether a Bayer frame of this size comes out whole; throws the sentence that says why not.
  #checkBayer(format, size, width, height, stride) {
    const quality = this.get('quality');
    oneOf('The format', format, formats);
    oneOf('The size', size, Object.keys(sizes));
    const medium = this.get('medium_filter_enabled') !== 0;
    const oneMirror = !this.get('h_mirror') !== !this.get('v_mirror');
    if (!isWhole(quality, format, size, medium, oneMirror)) {
      const others = formats.filter((f) => isWhole(quality, f, size, medium, oneMirror));
      const able = Object.keys(QUALITIES).filter((q) => isWhole(q, 'I420', size, medium, oneMirror));
      throw new Error(`Quality ${quality} makes no whole ${format} picture at ${size} size; ` +
        (others.length ? `it makes ${others.join(', ')}.` : `choose quality ${able.join(', ')} in I420.`));
    }
    const [across, down] = size === 'half' ? [64, 4] : [32, 2];
    if (!Number.isInteger(width) || width < across || width > 2036 || width % across)
      throw new Error(`The width is a multiple of ${across} up to ${size === 'half' ? 1984 : 2016}, not ${width}.`);
    if (!Number.isInteger(height) || height < down || height > 2048 || height % down)
      throw new Error(`The height is a multiple of ${down} up to 2048, not ${height}.`);
    whole('The stride', stride, width, 2048);
    if (stride !== width && BACK_TO_BACK.includes(quality))
      throw new Error(`Quality ${quality} takes rows back to back: a stride of ${width}, not ${stride}.`);
  }

  /**
   * A raw Bayer frame to a picture. `source` is a Uint8Array, which is copied, or a buffer of the library, which is
   * overwritten with the corrected mosaic. `destination` is a buffer of the library, or left out.
   */
  bayer({ source, width, height, stride = width, format = 'I420', size = 'same', destination }) {
    this.#checkBayer(format, size, width, height, stride);
    const [w, h] = size === 'half' ? [width / 2, height / 2] : size === 'double' ? [2 * width, 2 * height] : [width, height];
    const from = this.#source('source', source, stride * height);
    const to = this.#destination('destination', destination, frameBytes(format, w, h));
    this.#call('ppl_set_decimation', sizes[size], 0, 0);
    this.#call(`ppl_process_blrto${format.toLowerCase()}`, from, to.address, width, height, stride);
    return this.#frame(to, format, w, h);
  }

  /** A raw Bayer frame to a larger picture of any size, I420 or YUYV, by bilinear resampling. */
  scaled({ source, width, height, stride = width, format = 'I420', outWidth, outHeight, destination }) {
    oneOf('The format of a scaled picture', format, ['I420', 'YUYV']);
    this.#checkBayer(format, 'same', width, height, stride);
    if (!Number.isInteger(outWidth) || outWidth % 32 || outWidth < width || outWidth > 8192)
      throw new Error(`outWidth is a multiple of 32 from ${width} to 8192, not ${outWidth}.`);
    if (!Number.isInteger(outHeight) || outHeight % 2 || outHeight < height || outHeight > 8192)
      throw new Error(`outHeight is an even number from ${height} to 8192, not ${outHeight}.`);
    const from = this.#source('source', source, stride * height);
    const scratch = this.#place('scratch', frameBytes(format, width, height) + 4);
    const to = this.#destination('destination', destination, frameBytes(format, outWidth, outHeight));
    this.#call(`BaylorTo${format}MMX_scaling_stride`, from, width, height, stride, to.address, outWidth, outHeight,
      scratch.address);
    return this.#frame(to, format, outWidth, outHeight);
  }

  /** A packed 4:2:2 frame of a video decoder, YUYV or UYVY, to I420 or RGB24. */
  packed({ source, width, height, from, format = 'I420', destination }) {
    oneOf('from', from, ['YUYV', 'UYVY']);
    oneOf('The format', format, ['I420', 'RGB24']);
    this.#checkVideo(width, height);
    const input = this.#source('source', source, 2 * width * height);
    const to = this.#destination('destination', destination, frameBytes(format, width, height));
    this.#call('ppl_new_frame_sizes', width, height, width, height, 0);
    this.#call(`ppl_process_${from.toLowerCase()}to${format.toLowerCase()}`, input, to.address, width, height, width,
      height);
    return this.#frame(to, format, width, height);
  }

  /**
   * Two fields of interlaced 4:2:2 video to a whole frame. `kept` gives the even rows, `later` the odd ones; `earlier`,
   * the `later` of the frame before, lets the motion test see what has moved. Left out, the fields are woven.
   */
  interlaced({ kept, later, earlier = later, width, height, from, format = 'I420', size = 'same', motion = true,
    destination }) {
    oneOf('from', from, ['YUYV', 'UYVY']);
    oneOf('The format', format, ['YUYV', 'UYVY', 'I420', 'RGB24']);
    oneOf('The size', size, ['same', 'half', 'quarter']);
    this.#checkVideo(width, height);
    const layoutChanges = (format === 'YUYV' || format === 'UYVY') && format !== from;
    if (!motion && layoutChanges) throw new Error(`Without the motion test ${from} is not woven to ${format}.`);
    const shift = { same: 0, half: 1, quarter: 2 }[size];
    if (width % (16 << shift) || height % (2 << shift))
      throw new Error(`At ${size} size the width is a multiple of ${16 << shift}, the height of ${2 << shift}.`);
    const field = width * height;
    const fields = [
      this.#source('earlier', earlier, field, 'The earlier field'),
      this.#source('kept', kept, field, 'The kept field'),
      this.#source('later', later, field, 'The later field'),
    ];
    const [w, h] = [width >> shift, height >> shift];
    const to = this.#destination('destination', destination, frameBytes(format, w, h));
    this.#call('ppl_new_frame_sizes', width, height, width, height, 0);
    this.#call('ppl_set_decimation', shift, 0, 0);
    this.#call(`Intl${from}To${format}MMX${motion ? '' : '_no_motion'}`, ...fields, to.address, width, height, w, h);
    return this.#frame(to, format, w, h);
  }
  #checkVideo(width, height) {
    if (!Number.isInteger(width) || width < 16 || width > 2036 || width % 16)
      throw new Error(`The width is a multiple of 16 up to 2032, not ${width}.`);
    if (!Number.isInteger(height) || height < 2 || height > 2048 || height % 2)
      throw new Error(`The height is an even number up to 2048, not ${height}.`);
  }

  /** Of the last Bayer frame; see Statistics. */
  get statistics() {
    return new Statistics(this);
  }
  /** @internal */
  _words(name, count) {
    const at = this.#call(name);
    return new Uint32Array(this.library.exports.memory.buffer.slice(at, at + 4 * count));
  }
}

/** A converted frame in the module's memory. It stays until the next conversion into the same memory. */
export class Frame {
  constructor(library, address, format, width, height) {
    this.library = library;
    this.address = address;
    this.format = format;
    this.width = width;
    this.height = height;
    this.length = frameBytes(format, width, height);
  }
  /** A view of the bytes, good until the memory grows. */
  get bytes() {
    return this.library.memory.subarray(this.address, this.address + this.length);
  }
  /** A copy that stays. */
  copy() {
    return this.bytes.slice();
  }
}

/** What the last Bayer frame of a context measured. Means are [R, G, B] in sample steps, 0 to 255 with fractions. */
export class Statistics {
  #context;
  constructor(context) {
    this.#context = context;
  }
  #mean(name) {
    return Array.from(this.#context._words(name, 3), (w) => w / 256);
  }
  /** Of the whole frame. */
  get means() { return this.#mean('ppl_rgb_means_whole_frame'); }
  /** Of the 8 x 6 cells, row by row: 48 means. */
  get cells() {
    const words = this.#context._words('ppl_rgb_means_sub_windows', 144);
    return Array.from({ length: 48 }, (_, i) => [words[3 * i] / 256, words[3 * i + 1] / 256, words[3 * i + 2] / 256]);
  }
  get outsideCells() { return this.#mean('ppl_rgb_means_outside_all_sub_windows'); }
  get allCells() { return this.#mean('ppl_rgb_means_all_sub_windows'); }
  /** Centre-weighted: the four central cells alone, or counted 4, 8 or 16 times. */
  get centre() { return this.#mean('ppl_rgb_means_whole_frame_4pts'); }
  get centre4() { return this.#mean('ppl_rgb_means_whole_frame_central4'); }
  get centre8() { return this.#mean('ppl_rgb_means_whole_frame_central8'); }
  get centre16() { return this.#mean('ppl_rgb_means_whole_frame_central16'); }
  /** Of the cells within the exposure range, and how many they are. */
  get exposureMeans() { return this.#mean('ppl_qAE_rgb_means_whole_frame'); }
  get exposureCount() { return this.#context.get('n_qAE_2x2_whole_frame') >>> 0; }
  /** Of the cells within the quality ranges, and how many they are. */
  get qualifiedMeans() { return this.#mean('ppl_qual_rgb_means_whole_frame'); }
  get qualifiedCount() { return this.#context.get('n_qual_2x2_whole_frame') >>> 0; }
  /** 256 counts each. */
  get histogramR() { return this.#context._words('ppl_r_histogram', 256); }
  get histogramG() { return this.#context._words('ppl_g_histogram', 256); }
  get histogramB() { return this.#context._words('ppl_b_histogram', 256); }
  /** Frames converted or counted in this slot of the library. */
  get frames() { return this.#context.get('n_frame') >>> 0; }
}
