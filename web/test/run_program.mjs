// run_program.mjs PROGRAM.wasm [FILE | ARGUMENT]...: runs a test program that was built for WebAssembly with a C library.
//
// Of the system that the C library asks for there is what the programs use: arguments, standard output, reading the
// first argument that names a file as standard input, and the exit status.
import { readFileSync, writeSync } from 'node:fs';

const [path, ...given] = process.argv.slice(2);
let input = null;
const args = ['program', ...given.map((text) => {
  if (input) return text;
  try {
    input = readFileSync(text);
    return '-';
  } catch {
    return text;
  }
})];
input ??= new Uint8Array();

class Exit extends Error {
  constructor(status) {
    super(`exit ${status}`);
    this.status = status;
  }
}

let memory, at = 0;
const view = () => new DataView(memory.buffer);
const bytes = (address, count) => new Uint8Array(memory.buffer, address, count);
const BAD = 8, UNKNOWN = 52; // errno of a bad descriptor, and of what is not there
const encoded = args.map((text) => new TextEncoder().encode(`${text}\0`));

const system = {
  args_sizes_get(count, size) {
    view().setUint32(count, encoded.length, true);
    view().setUint32(size, encoded.reduce((sum, one) => sum + one.length, 0), true);
    return 0;
  },
  args_get(pointers, texts) {
    for (const one of encoded) {
      view().setUint32(pointers, texts, true);
      bytes(texts, one.length).set(one);
      pointers += 4;
      texts += one.length;
    }
    return 0;
  },
  environ_sizes_get(count, size) {
    view().setUint32(count, 0, true);
    view().setUint32(size, 0, true);
    return 0;
  },
  environ_get: () => 0,
  fd_read(descriptor, list, count, read) {
    if (descriptor !== 0) return BAD;
    let total = 0;
    for (let i = 0; i < count; ++i) {
      const to = view().getUint32(list + 8 * i, true), room = view().getUint32(list + 8 * i + 4, true);
      const part = input.subarray(at, at + room);
      bytes(to, part.length).set(part);
      at += part.length;
      total += part.length;
    }
    view().setUint32(read, total, true);
    return 0;
  },
  fd_write(descriptor, list, count, written) {
    if (descriptor !== 1 && descriptor !== 2) return BAD;
    let total = 0;
    for (let i = 0; i < count; ++i) {
      const from = view().getUint32(list + 8 * i, true), size = view().getUint32(list + 8 * i + 4, true);
      if (size) writeSync(descriptor, bytes(from, size));
      total += size;
    }
    view().setUint32(written, total, true);
    return 0;
  },
  fd_fdstat_get(descriptor, result) {
    if (descriptor > 2) return BAD;
    bytes(result, 24).fill(0);
    bytes(result, 1)[0] = 2; // a terminal: no seeking
    return 0;
  },
  fd_close: () => 0,
  fd_seek: () => 70,
  fd_prestat_get: () => BAD,
  proc_exit(status) {
    throw new Exit(status);
  },
};
const anything = new Proxy(system, { get: (known, name) => known[name] ?? (() => UNKNOWN), has: () => true });

const module = await WebAssembly.compile(readFileSync(path));
const instance = await WebAssembly.instantiate(module, { wasi_snapshot_preview1: anything });
memory = instance.exports.memory;
try {
  instance.exports._start();
} catch (problem) {
  if (!(problem instanceof Exit)) throw problem;
  process.exitCode = problem.status;
}
