// What a headerless file may be: sizes, layouts and phases that fit its length, its name and its content.

export const layouts = ['8 bits', '16-bit words, little-endian', '16-bit words, big-endian', 'MIPI packed, 10 bits', 'MIPI packed, 12 bits'];
export const patterns = ['BGGR', 'GBRG', 'GRBG', 'RGGB'];

const SIZES = [[160, 120], [176, 144], [320, 240], [352, 288], [480, 480], [640, 400], [640, 480], [704, 576], [720, 480], [720, 576],
  [752, 480], [768, 576], [800, 600], [1024, 768], [1280, 720], [1280, 800], [1280, 960], [1280, 1024], [1296, 972], [1440, 1080],
  [1600, 1200], [1624, 1240], [1640, 1232], [1920, 1080], [1920, 1088], [1920, 1200], [1928, 1208], [1936, 1096], [2048, 1088],
  [2048, 1536], [2048, 2048], [2304, 1296], [2448, 2048], [2592, 1944], [3264, 2448], [3280, 2464], [3840, 2160], [4056, 3040],
  [4096, 3072], [4608, 2592]];

const rowBytes = (width, layout) => [width, 2 * width, 2 * width, Math.ceil(width / 4) * 5, Math.ceil(width / 2) * 3][layout];

// How much neighbours of one colour differ, in rows and columns, beside samples that are far apart: little where width
// and layout are right, about 1 where they are not.
function roughness(at, width, rows) {
  let near = 0, far = 0;
  for (let y = 0; y + 2 < rows; y += 3)
    for (let x = 0; x + 2 < width; x += 5) {
      const v = at(x, y);
      near += (Math.abs(v - at(x, y + 2)) + Math.abs(v - at(x + 2, y))) / 2;
      far += Math.abs(v - at((x + 2 * (width >> 2)) % width, (y + 2 * (rows >> 2)) % rows));
    }
  return far ? near / far : 0;
}

function reader(bytes, layout, stride) {
  switch (layout) {
    case 1: return (x, y) => bytes[y * stride + 2 * x] | bytes[y * stride + 2 * x + 1] << 8;
    case 2: return (x, y) => bytes[y * stride + 2 * x] << 8 | bytes[y * stride + 2 * x + 1];
    case 3: return (x, y) => bytes[y * stride + Math.floor(x / 4) * 5 + x % 4];
    case 4: return (x, y) => bytes[y * stride + Math.floor(x / 2) * 3 + x % 2];
    default: return (x, y) => bytes[y * stride + x];
  }
}

/** Which diagonal of the 2 x 2 cells is green: that whose two samples agree better. Which of the other two is blue can't be told. */
function guessPattern(at, width, height) {
  let main = 0, other = 0;
  for (let y = 0; y + 1 < height; y += 2)
    for (let x = (y % 8); x + 1 < width; x += 4) {
      main += Math.abs(at(x, y) - at(x + 1, y + 1));
      other += Math.abs(at(x + 1, y) - at(x, y + 1));
    }
  return main < other ? 1 : 0; // GBRG has its greens on the main diagonal, BGGR on the other
}

/** Bits of words: the least that hold every sample. */
function guessBits(at, width, height) {
  let most = 0;
  for (let y = 0; y < height; y += 3) for (let x = 0; x < width; x += 3) most = Math.max(most, at(x, y));
  return Math.min(16, Math.max(8, [8, 10, 12, 14, 16].find((bits) => most < 2 ** bits) ?? 16));
}

/**
 * The likeliest shape of a file, from its name, its length and its first bytes; null if nothing fits.
 * @param head the first bytes of the file, as many as there are up to some megabytes
 */
export function guessShape(name, length, head) {
  const found = [];
  const named = name.match(/(\d{2,5})\s*[x×_]\s*(\d{2,5})/i);
  const phase = patterns.findIndex((p) => name.toLowerCase().includes(p.toLowerCase()));
  // Rows with room behind them: the strides at which the file holds a whole number of frames of the size in its name.
  const padded = (width, height, layout) => {
    const row = rowBytes(width, layout), strides = new Set();
    for (let n = 1; n * row * height <= length && n <= 4096; ++n)
      for (const stride of [length / (n * height), (length - row) / (n * height - 1)]) // the last row with its room, or without
        if (Number.isInteger(stride) && stride > row && stride <= 1.5 * row) strides.add(stride);
    return strides;
  };
  const consider = (width, height, bonus) => {
    if (width < 64 || height < 4 || width > 16384 || height > 16384) return;
    for (let layout = 0; layout < 5; ++layout) {
      const row = rowBytes(width, layout), strides = [0, ...(bonus ? padded(width, height, layout) : [])];
      for (const stride of strides) {
        const step = stride || row, bytes = step * height;
        if (bytes - (step - row) > length) continue;
        const frames = stride ? Math.ceil(length / bytes) : length / bytes;
        const rows = Math.min(height, Math.floor(head.length / step));
        if (rows < 4 || (frames > 1 && !Number.isInteger(frames) && !bonus)) continue;
        const at = reader(head, layout, step);
        const bits = layout === 1 || layout === 2 ? guessBits(at, width, rows) : 8;
        // Whole numbers of frames, one frame, and names count for a shape; rough rows against it.
        const score = roughness(at, width, rows) + (Number.isInteger(frames) ? 0 : 0.6) + Math.log2(Math.max(1, frames)) * 0.02
          - bonus + (layout === 2 ? 0.05 : layout ? 0.01 : 0) + (stride ? 0.02 : 0);
        found.push({ score, width, height, stride, skip: 0, layout, bits,
          pattern: phase >= 0 ? phase : guessPattern(at, Math.min(width, 512), rows) });
      }
    }
  };
  if (named) consider(+named[1], +named[2], 1);
  for (const [w, h] of SIZES) consider(w, h, 0);
  found.sort((a, b) => a.score - b.score);
  if (!found.length) return null;
  const { score, ...shape } = found[0];
  return shape;
}
