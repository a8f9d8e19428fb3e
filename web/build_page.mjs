// build_page.mjs OUTPUT TUNE.wasm SAMPLE VERSION: the tuning page as one file. The modules of src/ are bundled by esbuild,
// the module and the sample are packed and written into the page.
import { mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { gzipSync } from 'node:zlib';

const [output, wasm, sample, version] = process.argv.slice(2);
const here = dirname(fileURLToPath(import.meta.url));
const { build, transform } = createRequire(join(process.env.PPL_NPM ?? here, 'package.json'))('esbuild');
const packed = (file) => gzipSync(readFileSync(file), { level: 9 }).toString('base64');
const embedded = { 'tune.wasm': () => packed(wasm), sample: () => packed(sample), version: () => version };

const script = await build({
  entryPoints: [join(here, 'src/main.mjs')], bundle: true, write: false, format: 'esm', minify: true, target: 'es2022', charset: 'utf8',
  legalComments: 'none',
  // In a page there is no Node: what ppl.mjs would read files with is never asked for.
  external: ['node:fs/promises'], define: { 'import.meta.url': '"about:blank"' },
  plugins: [{ name: 'embedded', setup(b) {
    b.onResolve({ filter: /^embedded:/ }, ({ path }) => ({ path: path.slice(9), namespace: 'embedded' }));
    b.onLoad({ filter: /.*/, namespace: 'embedded' }, ({ path }) => ({ contents: embedded[path](), loader: 'text' }));
  } }],
});
const style = await transform(readFileSync(join(here, 'src/page.css'), 'utf8'), { loader: 'css', minify: true, charset: 'utf8' });
const text = script.outputFiles[0].text;
if (/<\/script/i.test(text)) throw new Error('the script would end the element that it stands in');
const page = readFileSync(join(here, 'src/page.html'), 'utf8').replace('/*STYLE*/', () => style.code.trim()).replace('/*SCRIPT*/', () => text.trim());
mkdirSync(dirname(output), { recursive: true });
writeFileSync(output, page);
console.log(`${output}: ${Math.round(page.length / 1024)} KB`);
