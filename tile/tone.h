// Black level, gain, offset and tone curve of the front end as one look-up for each of the four sites.
//
//   x = max(x - black, 0);  v = (x * gain >> 5) + delta: 16-bit product, logical shift, wrapping sum; clamped to
//   0..255;  tone[v]
//
// Made once per frame into the record's site tables. With 64-byte registers a table stands in four of them, and both
// tables of a row are looked up and blended. Elsewhere a look-up is scalar: each entry is held already shifted to its
// sample's place among four, so that four samples are four loads and three ors.
#pragma once

#include "tile/kernels.h"
#include "tile/simd.h"

namespace ppl::PPL_LEVEL {

// What sample x of a row (0 even, 1 odd) at a column parity becomes.
PPL_INLINE uint8_t toned(const ppl_context& c, const uint8_t* tone, int row, int column, int x) {
  const vec_u8& black = row == 0 ? c.black_b_gb : c.black_gr_r;
  const vec_i16& gain = row == 0 ? c.gain_b_g : c.gain_g_r;
  const vec_i16& delta = row == 0 ? c.delta_b_g : c.delta_g_r;
  const int above = x > black.lane[column] ? x - black.lane[column] : 0;
  const unsigned product = static_cast<unsigned>(above) * static_cast<uint16_t>(gain.lane[column]) & 0xffff;
  const int v = static_cast<int16_t>(static_cast<int>(product >> 5) + delta.lane[column]);
  return tone[v < 0 ? 0 : v > 255 ? 255 : v];
}

#if defined(PPL_LEVEL_avx512)
constexpr bool kToneInRegisters = true;

static void prepare_tone(ppl_context& c, const uint8_t* tone) {
  uint8_t* const out = reinterpret_cast<uint8_t*>(c.site_tables);
  for (int row = 0; row < 2; ++row)
    for (int column = 0; column < 2; ++column)
      for (int x = 0; x < 256; ++x) out[(2 * row + column) * 256 + x] = toned(c, tone, row, column, x);
}

// The two tables of a row. Each look-up is two by the low seven bits, chosen by the top bit.
struct site_curves {
  __m512i table[2][4];
  site_curves(const ppl_context& c, int row) {
    const uint8_t* const from = reinterpret_cast<const uint8_t*>(c.site_tables) + 512 * row;
    for (int i = 0; i < 8; ++i) table[i / 4][i % 4] = _mm512_load_si512(from + 64 * i);
  }
  PPL_INLINE_MEMBER vec<64> operator()(vec<64> x) const {
    const __mmask64 high = _mm512_movepi8_mask(x.v);
    __m512i out[2];
    for (int i = 0; i < 2; ++i)
      out[i] = _mm512_mask_blend_epi8(high, _mm512_permutex2var_epi8(table[i][0], x.v, table[i][1]),
                                      _mm512_permutex2var_epi8(table[i][2], x.v, table[i][3]));
    return even_odd(vec<64>{out[0]}, vec<64>{out[1]});
  }
  PPL_INLINE_MEMBER vec<16> operator()(vec<16> x) const {
    return {_mm512_castsi512_si128((*this)(vec<64>{_mm512_castsi128_si512(x.v)}).v)};
  }
};
#else
constexpr bool kToneInRegisters = false;

static void prepare_tone(ppl_context& c, const uint8_t* tone) {
  for (int row = 0; row < 2; ++row)
    for (int column = 0; column < 2; ++column)
      for (int x = 0; x < 256; ++x) {
        const uint32_t value = toned(c, tone, row, column, x);
        c.site_tables[row][column][x] = value << (8 * column);
        c.site_tables[row][column + 2][x] = value << (8 * column + 16);
      }
}

struct site_curves {
  site_curves(const ppl_context&, int) {}
  template <class V>
  PPL_INLINE_MEMBER V operator()(V x) const {
    return x;
  }
};
#endif

// A row through its tables; `width` is a multiple of 8. The result goes to two places, the second may be null.
PPL_INLINE void look_up_row(const uint32_t (&table)[4][256], const uint8_t* from, uint8_t* row,
                            uint8_t* frame, int width) {
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

}  // namespace ppl::PPL_LEVEL
