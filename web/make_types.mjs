// make_types.mjs ppl.h exports.d.ts: the exported functions, with their comments' place, as TypeScript sees them.
import { readFileSync, writeFileSync } from 'node:fs';

/** name, result and parameters of every function that the header declares. */
export function declarations(header) {
  return [...header.matchAll(/^PPL_API ([^;]*?)(\w+)\(([^)]*)\);/gm)].map(([, result, name, list]) => ({
    name,
    result: result.trim(),
    parameters: list.trim() === 'void' || list.trim() === '' ? [] : list.split(',').map((p) => {
      const text = p.trim();
      const id = text.match(/(\w+)$/)[1];
      return { id, type: text.slice(0, -id.length).trim() };
    }),
  }));
}

function main([header, output]) {
  const functions = declarations(readFileSync(header, 'utf8'));
  const lines = functions.map(({ name, result, parameters }) => {
    const list = parameters.map(({ id }) => `${id}: number`).join(', ');
    return `  ${name}(${list}): ${result === 'void' ? 'void' : 'number'};`;
  });
  writeFileSync(output, [
    '// The functions of ppl.h. Made from the header: pointers are addresses in the memory, a uint8_t result is 1 or 0,',
    '// and results of 32 bits come signed (`>>> 0` makes them unsigned).',
    'export interface Exports {',
    '  readonly memory: WebAssembly.Memory;',
    ...lines,
    '}', ''].join('\n'));
}

if (process.argv[1]?.endsWith('make_types.mjs')) main(process.argv.slice(2));
