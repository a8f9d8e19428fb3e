// bench/wasm.mjs [PACKAGE] [BUILD]: the WebAssembly module under Node beside the native library held to sse2.
//
//   cmake --preset wasm && cmake --build --preset wasm          PACKAGE: build/wasm/package
//   cmake --preset release && cmake --build --preset release    BUILD: build/release, with bench_frames
//
// Both take the sample, with the settings that all frames of docs/speed.md have, in turns; the least time of each counts.
// Writes the table `wasm` of docs/speed.md.
import { execFileSync } from 'node:child_process';
import { readFileSync, writeFileSync } from 'node:fs';
import { dirname, resolve } from 'node:path';
import { fileURLToPath, pathToFileURL } from 'node:url';

const root = dirname(dirname(fileURLToPath(import.meta.url)));
const folder = resolve(process.argv[2] ?? `${root}/build/wasm/package`);
const build = resolve(process.argv[3] ?? `${root}/build/release`);
const { load } = await import(pathToFileURL(`${folder}/ppl.mjs`));
const W = 640, H = 480, ROUNDS = 6, CALLS = 150;
const raw = readFileSync(`${root}/samples/coffee_640x480_bggr8.raw`);
const ppl = await load(`${folder}/ppl.wasm`);
const source = ppl.buffer(W * H), destination = ppl.buffer(4 * W * H);

function wasm(quality, format) {
  const context = ppl.context();
  context.set('quality', quality).set('optical_black_b_gb_gr_r', 12, 12, 12, 12).set('rgb_gain', 397, 256, 346)
    .enable('GbGr_correction').lensCorrection({ width: W, height: H, f1: 48, f1Shift: 24, f2: 0, f2Shift: 44 });
  let least = Infinity;
  for (let i = 0; i < CALLS; ++i) {
    source.bytes.set(raw);
    const start = performance.now();
    context.bayer({ source, destination, width: W, height: H, format });
    least = Math.min(least, performance.now() - start);
  }
  context.close();
  return (least * 1e6) / (W * H);
}

function native(quality, format) {
  const out = execFileSync(`${build}/bench/bench_frames`, [
    `--benchmark_filter=^frame/${quality}/${format.toLowerCase()}/same/${W}x${H}/photograph/sse2`,
    '--benchmark_format=json', '--benchmark_min_time=0.15'], { encoding: 'utf8', stdio: ['ignore', 'pipe', 'ignore'] });
  const found = JSON.parse(out).benchmarks;
  if (found.length !== 1) throw new Error(`bench_frames has ${found.length} benchmarks of this name`);
  return found[0].ns_px;
}

const lines = ['| job, ns per input pixel, 640 × 480 | WebAssembly | sse2 | ratio |', '|---|---|---|---|'];
for (const [quality, format] of [[15, 'I420'], [15, 'RGB24'], [0, 'I420'], [1, 'I420'], [2, 'I420'], [3, 'I420'], [13, 'I420']]) {
  let [ours, theirs] = [Infinity, Infinity];
  for (let round = 0; round < ROUNDS; ++round) {
    ours = Math.min(ours, wasm(quality, format));
    theirs = Math.min(theirs, native(quality, format));
  }
  lines.push(`| quality ${quality} to ${format} | ${ours.toFixed(3)} | ${theirs.toFixed(3)} | ${(ours / theirs).toFixed(2)} |`);
  console.log(lines.at(-1));
}
const file = `${root}/docs/speed.md`, text = readFileSync(file, 'utf8');
const marks = /(<!-- begin wasm -->\n)[^]*(<!-- end wasm -->)/;
if (marks.test(text)) writeFileSync(file, text.replace(marks, (_, begin, end) => `${begin}${lines.join('\n')}\n${end}`));
