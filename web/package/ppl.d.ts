// Types of ppl.mjs. The functions of ppl.h as they are exported stand in exports.d.ts, which is made from the header.
import type { Exports } from './exports.js';
export type { Exports } from './exports.js';

export type Format = 'I420' | 'YUYV' | 'UYVY' | 'RGB24' | 'RGB32';
export type Size = 'double' | 'same' | 'half';
export type Means = [number, number, number];
export type Bytes = Uint8Array | Uint8ClampedArray | Buffer;

export const formats: readonly Format[];
export const sizes: Readonly<Record<Size, number>>;
/** Whether a quality makes a whole picture of this format and size. */
export function isWhole(quality: number, format: Format, size?: Size, mediumFilter?: boolean,
  oneMirror?: boolean): boolean;
/** Bytes of a frame. */
export function frameBytes(format: Format, width: number, height: number): number;

/** Loads the library: from the file beside this one, or from a path, a URL, bytes, or a compiled module. */
export function load(source?: string | URL | BufferSource | WebAssembly.Module): Promise<Library>;

/** One copy of the library: eight contexts and a memory of its own. */
export class Library {
  constructor(module: WebAssembly.Module, instance: WebAssembly.Instance);
  /** The functions of ppl.h as they are, and the memory. Pointers are addresses in the memory. */
  readonly exports: Exports;
  readonly module: WebAssembly.Module;
  /** All bytes of the memory. The view is a new one after the memory has grown. */
  readonly memory: Uint8Array;
  /** Bytes in the module's memory, at a multiple of 64. The memory grows as needed. */
  buffer(bytes: number): Buffer;
  /** A context with all controls at their defaults. There are eight. */
  context(): Context;
}

/** A piece of the module's memory. */
export class Buffer {
  readonly library: Library;
  readonly address: number | null;
  readonly length: number;
  /** The bytes, as a view that is good until the memory grows: take it anew after each call. */
  readonly bytes: Uint8Array;
  free(): void;
}

/** A converted frame in the module's memory. It stays until the next conversion into the same memory. */
export class Frame {
  readonly library: Library;
  readonly address: number;
  readonly format: Format;
  readonly width: number;
  readonly height: number;
  readonly length: number;
  /** A view of the bytes, good until the memory grows. */
  readonly bytes: Uint8Array;
  /** A copy that stays. */
  copy(): Uint8Array;
}

export interface Lens {
  width: number;
  height: number;
  originX?: number;
  originY?: number;
  f1?: number;
  f1Shift?: number;
  f2?: number;
  f2Shift?: number;
}
export interface BayerCall {
  /** A Uint8Array is copied; a buffer of the library is overwritten with the corrected mosaic. */
  source: Bytes;
  width: number;
  height: number;
  stride?: number;
  format?: Format;
  size?: Size;
  destination?: Buffer;
}
export interface ScaledCall {
  source: Bytes;
  width: number;
  height: number;
  stride?: number;
  format?: 'I420' | 'YUYV';
  outWidth: number;
  outHeight: number;
  destination?: Buffer;
}
export interface PackedCall {
  source: Bytes;
  width: number;
  height: number;
  from: 'YUYV' | 'UYVY';
  format?: 'I420' | 'RGB24';
  destination?: Buffer;
}
export interface InterlacedCall {
  kept: Bytes;
  later: Bytes;
  earlier?: Bytes;
  width: number;
  height: number;
  from: 'YUYV' | 'UYVY';
  format?: 'YUYV' | 'UYVY' | 'I420' | 'RGB24';
  size?: 'same' | 'half' | 'quarter';
  motion?: boolean;
  destination?: Buffer;
}

/** One instance of the pipeline: controls, conversions, statistics. */
export class Context {
  readonly library: Library;
  readonly address: number | null;
  /** Gives the context and its memory back. */
  close(): void;
  /** Sets a control by its name behind ppl_set_: set('rgb_gain', 397, 256, 346). A value that is refused throws. */
  set(control: string, ...values: number[]): this;
  /** A control by its name behind ppl_: get('quality'). */
  get(control: string): number;
  /** enable('GbGr_correction'), enable('medium_filter'), enable('lens_correction') */
  enable(control: string, on?: boolean): this;
  disable(control: string): this;
  /** One control, or all of them, to the default. */
  reset(control?: string): this;
  /** Copies values to a table or matrix of the library. */
  copy(control: string, values: ArrayLike<number>): this;
  /** A table of 256 bytes by its getter's name behind ppl_. A copy. */
  table(name: string): Uint8Array;
  /** Lens shading for frames of this size: 1 + f1 r^2 / 2^f1Shift - f2 r^4 / 2^f2Shift. */
  lensCorrection(lens: Lens): this;
  /** A raw Bayer frame to a picture. */
  bayer(call: BayerCall): Frame;
  /** A raw Bayer frame to a larger picture of any size, by bilinear resampling. */
  scaled(call: ScaledCall): Frame;
  /** A packed 4:2:2 frame of a video decoder to I420 or RGB24. */
  packed(call: PackedCall): Frame;
  /** Two fields of interlaced 4:2:2 video to a whole frame. */
  interlaced(call: InterlacedCall): Frame;
  readonly statistics: Statistics;
}

/** What the last Bayer frame of a context measured. Means are [R, G, B] in sample steps, 0 to 255 with fractions. */
export class Statistics {
  readonly means: Means;
  readonly cells: Means[];
  readonly outsideCells: Means;
  readonly allCells: Means;
  readonly centre: Means;
  readonly centre4: Means;
  readonly centre8: Means;
  readonly centre16: Means;
  readonly exposureMeans: Means;
  readonly exposureCount: number;
  readonly qualifiedMeans: Means;
  readonly qualifiedCount: number;
  readonly histogramR: Uint32Array;
  readonly histogramG: Uint32Array;
  readonly histogramB: Uint32Array;
  readonly frames: number;
}
