// What the types promise and what they forbid; compiled by types_test.mjs, never run.
import { load, formats, isWhole, type Context, type Frame } from 'ppl-wasm';

const ppl = await load(new Uint8Array(8));
const context: Context = ppl.context();
const frame: Frame = context.set('rgb_gain', 397, 256, 346).enable('GbGr_correction')
  .bayer({ source: new Uint8Array(64), width: 8, height: 8, format: 'RGB24', size: 'half' });
const means: [number, number, number] = context.statistics.means;
const raw: number = ppl.exports.ppl_set_rgb_gain(context.address!, 1, 2, 3);
const buffer = ppl.buffer(100);
context.interlaced({ kept: buffer, later: buffer, width: 16, height: 2, from: 'UYVY', motion: false });
console.log(frame.bytes.length, means, raw, formats.length, isWhole(15, 'I420'));

// @ts-expect-error no such format
context.bayer({ source: buffer, width: 8, height: 8, format: 'NV12' });
// @ts-expect-error a width is missing
context.bayer({ source: buffer, height: 8 });
// @ts-expect-error no such function
ppl.exports.ppl_set_gamut(1);
// @ts-expect-error an argument is missing
ppl.exports.ppl_set_quality(1);
// @ts-expect-error UYVY is not scaled
context.scaled({ source: buffer, width: 32, height: 2, format: 'UYVY', outWidth: 64, outHeight: 4 });
