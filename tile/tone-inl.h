// Black level, gain, offset and tone curve of the front end as one look-up for each of the four sites.
//
//   x = max(x - black, 0);  v = (x * gain >> 5) + delta: 16-bit product, logical shift, wrapping sum; clamped to
//   0..255;  tone[v]
//
// Made once per frame into the record's site tables. With 64-byte registers a table stands in four of them, and both
// tables of a row are looked up and blended. With 32 a look-up is a chain of shuffles. With 16 it is scalar, for a
// chain would take longer: each entry is held already shifted to its sample's place among four, so that four samples
// are four loads and three ors.
#pragma once

#include "simd/simd-inl.h"
#include "tile/kernels.h"

namespace ppl::PPL_LEVEL {

struct identity_table {
  alignas(64) uint8_t at[256];
};
constexpr identity_table make_identity() {
  identity_table t = {};
  for (int x = 0; x < 256; ++x) t.at[x] = static_cast<uint8_t>(x);
  return t;
}

// Samples first .. first + V::size - 1 of a site (row 0 even, 1 odd; column parity) on their way to the curve.
template <class V>
PPL_INLINE V before_curve(const ppl_context& c, int row, int column, int first) {
  static constexpr identity_table samples = make_identity();
  const V black = set8<V>((row == 0 ? c.black_b_gb : c.black_gr_r).lane[column]);
  const V gain = set16<V>((row == 0 ? c.gain_b_g : c.gain_g_r).lane[column]);
  const V delta = set16<V>((row == 0 ? c.delta_b_g : c.delta_g_r).lane[column]);
  const V x = subs_u8(load<V>(samples.at + first), black);
  return join_clamp8(add16(srl16<5>(mullo16(even(x), gain)), delta),
                     add16(srl16<5>(mullo16(odd(x), gain)), delta));
}

// Whether samples are looked up in the front end's own loop, or row by row behind it; and whether a row's look-up may
// take them from the caller's memory.
constexpr bool kToneInRegisters = kWidth == 64, kToneReadsFrame = kWidth == 16;

#if defined(PPL_LEVEL_avx512)
// A table of 256 bytes in four registers. A look-up is two by the low seven bits, chosen by the top bit.
PPL_INLINE __m512i look_up(const __m512i (&table)[4], __m512i x) {
  return _mm512_mask_blend_epi8(_mm512_movepi8_mask(x), _mm512_permutex2var_epi8(table[0], x, table[1]),
                                _mm512_permutex2var_epi8(table[2], x, table[3]));
}

static void prepare_tone(ppl_context& c, const uint8_t* tone) {
  const __m512i curve[4] = {_mm512_loadu_si512(tone), _mm512_loadu_si512(tone + 64),
                            _mm512_loadu_si512(tone + 128), _mm512_loadu_si512(tone + 192)};
  uint8_t* const out = reinterpret_cast<uint8_t*>(c.site_tables);
  for (int site = 0; site < 4; ++site)
    for (int x = 0; x < 256; x += 64)
      _mm512_store_si512(out + 256 * site + x,
                         look_up(curve, before_curve<vec<64>>(c, site >> 1, site & 1, x).v));
}

// The two tables of a row.
struct site_curves {
  __m512i table[2][4];
  site_curves(const ppl_context& c, int row) {
    const uint8_t* const from = reinterpret_cast<const uint8_t*>(c.site_tables) + 512 * row;
    for (int i = 0; i < 8; ++i) table[i / 4][i % 4] = _mm512_load_si512(from + 64 * i);
  }
  PPL_INLINE_MEMBER vec<64> operator()(vec<64> x) const {
    return even_odd(vec<64>{look_up(table[0], x.v)}, vec<64>{look_up(table[1], x.v)});
  }
  PPL_INLINE_MEMBER vec<16> operator()(vec<16> x) const {
    return {_mm512_castsi512_si128((*this)(vec<64>{_mm512_castsi128_si512(x.v)}).v)};
  }
};

PPL_INLINE void look_up_row(const ppl_context&, int, const uint8_t*, uint8_t*, uint8_t*, int) {}

#else
struct site_curves {
  site_curves(const ppl_context&, int) {}
  template <class V>
  PPL_INLINE_MEMBER V operator()(V x) const {
    return x;
  }
};

PPL_INLINE void make_site_table(const ppl_context& c, const uint8_t* tone, int row, int column,
                                uint8_t (&table)[256]) {
  for (int x = 0; x < 256; x += kWidth) store(table + x, before_curve<wide>(c, row, column, x));
  for (int x = 0; x < 256; ++x) table[x] = tone[table[x]];
}
#endif

#if !defined(PPL_LEVEL_avx2) && !defined(PPL_LEVEL_avx512)
static void prepare_tone(ppl_context& c, const uint8_t* tone) {
  alignas(64) uint8_t table[256];
  for (int row = 0; row < 2; ++row)
    for (int column = 0; column < 2; ++column) {
      make_site_table(c, tone, row, column, table);
      uint32_t* const here = c.site_tables[row][column];
      uint32_t* const two_on = c.site_tables[row][column + 2];
      for (int x = 0; x < 256; ++x) {
        here[x] = static_cast<uint32_t>(table[x]) << (8 * column);
        two_on[x] = static_cast<uint32_t>(table[x]) << (8 * column + 16);
      }
    }
}

// A row through its tables; `width` is a multiple of 8. The result goes to two places, the second may be null.
PPL_INLINE void look_up_row(const ppl_context& c, int row_parity, const uint8_t* from, uint8_t* row,
                            uint8_t* frame, int width) {
  const uint32_t(&table)[4][256] = c.site_tables[row_parity];
  const auto four = [&](uint32_t in) {
    return table[0][in & 255] | table[1][in >> 8 & 255] | table[2][in >> 16 & 255] | table[3][in >> 24];
  };
  for (int x = 0; x < width; x += 8) {
    uint64_t in;
    __builtin_memcpy(&in, from + x, 8);
    const uint64_t out =
        four(static_cast<uint32_t>(in)) | static_cast<uint64_t>(four(static_cast<uint32_t>(in >> 32))) << 32;
    __builtin_memcpy(row + x, &out, 8);
    if (frame != nullptr) __builtin_memcpy(frame + x, &out, 8);
  }
}
#endif

}  // namespace ppl::PPL_LEVEL

#if defined(PPL_LEVEL_avx2)
#include "tile/tone_shuffles-inl.h"
#endif
