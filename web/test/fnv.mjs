// FNV-1a, 64 bits, over the bytes of all pieces; in four parts of 16 bits, the prime being 2^40 + 0x1b3.
export function digest(...pieces) {
  let [d0, d1, d2, d3] = [0x2325, 0x8422, 0x9ce4, 0xcbf2];
  for (const piece of pieces) {
    for (let i = 0; i < piece.length; ++i) {
      d0 ^= piece[i];
      const t0 = d0 * 0x1b3;
      const t1 = d1 * 0x1b3 + (t0 >>> 16);
      const t2 = d2 * 0x1b3 + (d0 << 8) + (t1 >>> 16);
      const t3 = d3 * 0x1b3 + (d1 << 8) + (t2 >>> 16);
      d0 = t0 & 0xffff;
      d1 = t1 & 0xffff;
      d2 = t2 & 0xffff;
      d3 = t3 & 0xffff;
    }
  }
  return [d3, d2, d1, d0].map((part) => part.toString(16).padStart(4, '0')).join('');
}
