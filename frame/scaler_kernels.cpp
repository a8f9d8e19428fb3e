// Horizontal and vertical passes of the frame scaler.
//
// A blend works on 16-bit lanes: a * 256 + (b - a) * f + 128 is at most 65408, so wrapping products are exact.
#include "frame/scaler_kernels.h"

#include "platform/levels.h"
#include "tile/simd.h"

namespace ppl::PPL_LEVEL {
namespace {

#ifdef __SSSE3__
constexpr bool kShuffles = true;
#else
constexpr bool kShuffles = false;
#endif

PPL_INLINE uint8_t blend(uint32_t a, uint32_t b, uint32_t f) {
  return static_cast<uint8_t>((a * (256 - f) + b * f + 128) >> 8);
}

// ---- planar lines

// Tables of eight outputs: where their samples begin, which bytes from there make the pairs, and the weights.
struct octet {
  uint8_t shuffle[16];
  uint16_t weight[8];
};
struct octet_tables {
  octet* octets;
  uint16_t* base;
};
PPL_INLINE octet_tables tables_of(const scaler_columns& c) {
  octet* const octets = reinterpret_cast<octet*>(c.memory);
  return {octets, reinterpret_cast<uint16_t*>(octets + c.count / 8)};
}

void planar_prepare(scaler_columns& c) {
  if (!kShuffles || c.count / 8 * (sizeof(octet) + 2) > c.memory_bytes) return;
  const octet_tables t = tables_of(c);
  uint32_t p = 0;
  for (uint32_t o = 0; o < c.count / 8; ++o) {
    const uint32_t base = p >> 20;
    for (uint32_t i = 0; i < 8; ++i, p += c.step) {
      const uint32_t x = (p >> 20) - base, right = (p >> 20) < c.limit ? x + 1 : x;
      if (x > 14) return;  // too far apart, or wrapped
      t.octets[o].shuffle[2 * i] = static_cast<uint8_t>(x);
      t.octets[o].shuffle[2 * i + 1] = static_cast<uint8_t>(right);
      t.octets[o].weight[i] = p >> 12 & 255;
    }
    t.base[o] = static_cast<uint16_t>(base);
  }
  c.tabled = true;
}

// Pairs (a, b) of bytes, one weight for each pair.
PPL_INLINE vec16 blend_pairs(vec16 pairs, vec16 f) {
  const vec16 sum = add16(sll16<8>(pairs), mullo16(sub16(odd(pairs), even(pairs)), f));
  return srl16<8>(add16(sum, set16<vec16>(128)));
}

#ifdef __SSSE3__
PPL_INLINE vec16 tabled_octet(const octet& o, const uint8_t* at) {
  const vec16 pairs = {_mm_shuffle_epi8(loadu<vec16>(at).v, load<vec16>(o.shuffle).v)};
  return blend_pairs(pairs, load<vec16>(o.weight));
}
PPL_INLINE void tabled_line(const scaler_columns& c, const uint8_t* row, uint8_t* line) {
  const octet_tables t = tables_of(c);
  for (uint32_t o = 0; o < c.count / 8; o += 2) {
    const vec16 lo = tabled_octet(t.octets[o], row + t.base[o]);
    const vec16 hi = tabled_octet(t.octets[o + 1], row + t.base[o + 1]);
    storeu(line + 8 * o, pack_u8(lo, hi));
  }
}
#else
PPL_INLINE void tabled_line(const scaler_columns&, const uint8_t*, uint8_t*) {}
#endif

PPL_INLINE int load_pair(const uint8_t* p) {
  uint16_t pair;
  __builtin_memcpy(&pair, p, 2);
  return pair;
}

// Eight outputs gathered pair by pair; moves the position on.
PPL_INLINE vec16 gathered_octet(const uint8_t* row, uint32_t& p, uint32_t step) {
  const __m128i steps = _mm_set1_epi32(static_cast<int>(4 * step));
  const __m128i first = _mm_set_epi32(static_cast<int>(p + 3 * step), static_cast<int>(p + 2 * step),
                                      static_cast<int>(p + step), static_cast<int>(p));
  const __m128i byte = _mm_set1_epi32(255);
  const __m128i f = _mm_packs_epi32(_mm_and_si128(_mm_srli_epi32(first, 12), byte),
                                    _mm_and_si128(_mm_srli_epi32(_mm_add_epi32(first, steps), 12), byte));
  __m128i pairs = _mm_cvtsi32_si128(load_pair(row + (p >> 20)));
  pairs = _mm_insert_epi16(pairs, load_pair(row + ((p += step) >> 20)), 1);
  pairs = _mm_insert_epi16(pairs, load_pair(row + ((p += step) >> 20)), 2);
  pairs = _mm_insert_epi16(pairs, load_pair(row + ((p += step) >> 20)), 3);
  pairs = _mm_insert_epi16(pairs, load_pair(row + ((p += step) >> 20)), 4);
  pairs = _mm_insert_epi16(pairs, load_pair(row + ((p += step) >> 20)), 5);
  pairs = _mm_insert_epi16(pairs, load_pair(row + ((p += step) >> 20)), 6);
  pairs = _mm_insert_epi16(pairs, load_pair(row + ((p += step) >> 20)), 7);
  p += step;
  return blend_pairs({pairs}, {f});
}

void planar_line(const scaler_columns& c, const uint8_t* row, uint8_t* line) {
  if (c.tabled) return tabled_line(c, row, line);
  uint32_t p = 0, i = 0;
  for (; i + 16 <= c.plain; i += 16) {
    const vec16 lo = gathered_octet(row, p, c.step);
    const vec16 hi = gathered_octet(row, p, c.step);
    storeu(line + i, pack_u8(lo, hi));
  }
  for (; i < c.count; ++i, p += c.step) {
    const uint32_t x = p >> 20;
    line[i] = blend(row[x], row[x < c.limit ? x + 1 : x], p >> 12 & 255);
  }
}

// ---- packed lines

PPL_INLINE __m128i load_4(const uint8_t* p) {
  int v;
  __builtin_memcpy(&v, p, 4);
  return _mm_cvtsi32_si128(v);
}

// Four positions and their weights as words (256 - f, f).
struct quad {
  uint32_t x[4];
  __m128i weights;
};
PPL_INLINE quad next_quad(uint32_t& p, uint32_t step) {
  const uint32_t p1 = p + step, p2 = p1 + step, p3 = p2 + step;
  const __m128i at =
      _mm_set_epi32(static_cast<int>(p3), static_cast<int>(p2), static_cast<int>(p1), static_cast<int>(p));
  const __m128i f = _mm_and_si128(_mm_srli_epi32(at, 12), _mm_set1_epi32(255));
  const __m128i w = _mm_add_epi32(_mm_sub_epi32(_mm_set1_epi32(256), f), _mm_slli_epi32(f, 16));
  const quad q = {{p >> 20, p1 >> 20, p2 >> 20, p3 >> 20}, w};
  p = p3 + step;
  return q;
}
PPL_INLINE __m128i blend_words(__m128i words, __m128i weights) {
  return _mm_srli_epi32(_mm_add_epi32(_mm_madd_epi16(words, weights), _mm_set1_epi32(128)), 8);
}

// Y of four pixels, in 32-bit lanes: bytes 0 and 2 from each position.
PPL_INLINE __m128i luma_quad(const uint8_t* row, uint32_t& p, uint32_t step) {
  const quad q = next_quad(p, step);
  const __m128i a = _mm_unpacklo_epi32(load_4(row + 2 * q.x[0]), load_4(row + 2 * q.x[1]));
  const __m128i b = _mm_unpacklo_epi32(load_4(row + 2 * q.x[2]), load_4(row + 2 * q.x[3]));
  return blend_words(_mm_and_si128(_mm_unpacklo_epi64(a, b), _mm_set1_epi16(0x00ff)), q.weights);
}

// U, V of two pairs, in 32-bit lanes: bytes 1 and 5, 3 and 7 from each position.
PPL_INLINE __m128i chroma_couple(const uint8_t* first, const uint8_t* second, __m128i weights) {
  const __m128i both = _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(first)),
                                          _mm_loadl_epi64(reinterpret_cast<const __m128i*>(second)));
  const __m128i words = _mm_srli_epi16(both, 8);  // U V U' V'
  return blend_words(_mm_shufflehi_epi16(_mm_shufflelo_epi16(words, 0xd8), 0xd8), weights);
}
// Eight pairs as 16 bytes U, V, ...
PPL_INLINE vec16 chroma_octet(const uint8_t* row, uint32_t& p, uint32_t step) {
  __m128i words[2];
  for (__m128i& w : words) {
    const quad q = next_quad(p, step);
    const __m128i lo =
        chroma_couple(row + 4 * q.x[0], row + 4 * q.x[1], _mm_unpacklo_epi32(q.weights, q.weights));
    const __m128i hi =
        chroma_couple(row + 4 * q.x[2], row + 4 * q.x[3], _mm_unpackhi_epi32(q.weights, q.weights));
    w = _mm_packs_epi32(lo, hi);
  }
  return {_mm_packus_epi16(words[0], words[1])};
}
PPL_INLINE vec16 luma_16(const uint8_t* row, uint32_t& p, uint32_t step) {
  const __m128i a = luma_quad(row, p, step), b = luma_quad(row, p, step);
  const __m128i c = luma_quad(row, p, step), d = luma_quad(row, p, step);
  return {_mm_packus_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d))};
}

void packed_line(const scaler_columns& c, const uint8_t* row, uint8_t* line) {
  uint32_t p = 0, pc = 0, i = 0;  // of pixels, of pairs; pixels done
  for (; i + 32 <= c.plain; i += 32, line += 64) {
    for (int half = 0; half < 64; half += 32) {
      const vec16 y = luma_16(row, p, c.step), uv = chroma_octet(row, pc, c.step);
      vec16 first, second;
      interleave8(y, uv, first, second);
      storeu(line + half, first);
      storeu(line + half + 16, second);
    }
  }
  for (; i < c.count; i += 2, line += 4, pc += c.step) {
    const uint32_t xc = pc >> 20, xc1 = xc < c.limit ? xc + 1 : xc, fc = pc >> 12 & 255;
    line[1] = blend(row[4 * xc + 1], row[4 * xc1 + 1], fc);
    line[3] = blend(row[4 * xc + 3], row[4 * xc1 + 3], fc);
    for (int k = 0; k < 4; k += 2, p += c.step) {
      const uint32_t x = p >> 20, x1 = x < c.limit ? x + 1 : x;
      line[k] = blend(row[2 * x], row[2 * x1], p >> 12 & 255);
    }
  }
}

// ---- vertical pass

template <class V>
PPL_INLINE V blend_rows(V a, V b, V f) {
  const V half = set16<V>(128);
  const V e = add16(add16(sll16<8>(a), half), mullo16(sub16(even(b), even(a)), f));
  const V o = add16(add16(andnot(set16<V>(0x00ff), a), half), mullo16(sub16(odd(b), odd(a)), f));
  return even_odd(srl16<8>(e), o);
}

void blend_lines(const uint8_t* top, const uint8_t* bottom, uint32_t weight, uint8_t* out, uint32_t bytes) {
  const int whole = static_cast<int>(bytes & ~15u);
  if (weight == 0) {
    walk_exact(whole, [&]<class V>(int x) { storeu(out + x, loadu<V>(top + x)); });
  } else {
    walk_exact(whole, [&]<class V>(int x) {
      storeu(out + x,
             blend_rows(loadu<V>(top + x), loadu<V>(bottom + x), set16<V>(static_cast<int>(weight))));
    });
  }
  for (uint32_t x = static_cast<uint32_t>(whole); x < bytes; ++x) out[x] = blend(top[x], bottom[x], weight);
}

}  // namespace

extern const scaler_kernels scaler_table;
const scaler_kernels scaler_table = {planar_prepare, planar_line, packed_line, blend_lines};

}  // namespace ppl::PPL_LEVEL
