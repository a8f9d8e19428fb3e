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

PPL_INLINE uint8_t blend_one(uint32_t a, uint32_t b, uint32_t f) {
  return static_cast<uint8_t>((a * (256 - f) + b * f + 128) >> 8);
}

// ---- lines of one plane

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

void prepare(scaler_columns& c) {
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
PPL_INLINE void tabled_line(const scaler_columns& c, const uint8_t* row, uint8_t* line, uint32_t first,
                            uint32_t count) {
  const octet_tables t = tables_of(c);
  for (uint32_t o = first / 8; o < (first + count) / 8; o += 2, line += 16) {
    const vec16 lo = tabled_octet(t.octets[o], row + t.base[o]);
    const vec16 hi = tabled_octet(t.octets[o + 1], row + t.base[o + 1]);
    storeu(line, pack_u8(lo, hi));
  }
}
#else
PPL_INLINE void tabled_line(const scaler_columns&, const uint8_t*, uint8_t*, uint32_t, uint32_t) {}
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

void line(const scaler_columns& c, const uint8_t* row, uint8_t* out, uint32_t first, uint32_t count) {
  if (c.tabled) return tabled_line(c, row, out, first, count);
  const uint32_t end = first + count, plain = c.plain < end ? c.plain : end;
  uint32_t p = first * c.step, i = first;
  for (; i + 16 <= plain; i += 16, out += 16) {
    const vec16 lo = gathered_octet(row, p, c.step);
    const vec16 hi = gathered_octet(row, p, c.step);
    storeu(out, pack_u8(lo, hi));
  }
  for (; i < end; ++i, p += c.step) {
    const uint32_t x = p >> 20;
    *out++ = blend_one(row[x], row[x < c.limit ? x + 1 : x], p >> 12 & 255);
  }
}

// ---- packed lines

void split(const uint8_t* row, uint8_t* y, uint8_t* u, uint8_t* v, uint32_t pixels) {
  for (uint32_t i = 0; i < pixels; i += 32, row += 64) {
    vec16 words[4];
    for (int k = 0; k < 4; ++k) words[k] = loadu<vec16>(row + 16 * k);
    storeu(y + i, even_bytes(words[0], words[1]));
    storeu(y + i + 16, even_bytes(words[2], words[3]));
    const vec16 lo = odd_bytes(words[0], words[1]), hi = odd_bytes(words[2], words[3]);
    storeu(u + i / 2, even_bytes(lo, hi));
    storeu(v + i / 2, odd_bytes(lo, hi));
  }
}

void join(uint8_t* line, const uint8_t* y, const uint8_t* u, const uint8_t* v, uint32_t pixels) {
  for (uint32_t i = 0; i < pixels; i += 32, line += 64) {
    vec16 chroma[2], first, second;
    interleave8(loadu<vec16>(u + i / 2), loadu<vec16>(v + i / 2), chroma[0], chroma[1]);
    for (uint32_t k = 0; k < 2; ++k) {
      interleave8(loadu<vec16>(y + i + 16 * k), chroma[k], first, second);
      storeu(line + 32 * k, first);
      storeu(line + 32 * k + 16, second);
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

void blend(const uint8_t* top, const uint8_t* bottom, uint32_t weight, uint8_t* out, uint32_t bytes) {
  const int whole = static_cast<int>(bytes & ~15u);
  if (weight == 0) {
    walk_exact(whole, [&]<class V>(int x) { storeu(out + x, loadu<V>(top + x)); });
  } else {
    walk_exact(whole, [&]<class V>(int x) {
      storeu(out + x,
             blend_rows(loadu<V>(top + x), loadu<V>(bottom + x), set16<V>(static_cast<int>(weight))));
    });
  }
  for (uint32_t x = static_cast<uint32_t>(whole); x < bytes; ++x)
    out[x] = blend_one(top[x], bottom[x], weight);
}

}  // namespace

extern const scaler_kernels scaler_table;
const scaler_kernels scaler_table = {prepare, line, split, join, blend};

}  // namespace ppl::PPL_LEVEL
