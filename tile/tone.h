// Gain, offset and tone curve of the front end, in the form that suits the level.
//
// With 64-byte registers the 256-byte curve stands in four of them and a look-up is three instructions, so gain and
// offset are computed. Elsewhere a look-up is scalar whatever stands in the table: black level, gain, offset and curve
// go into one table per site, each entry shifted to its sample's place among four, so that four samples are four
// loads and three ors.
#pragma once

#include "tile/kernels.h"
#include "tile/simd.h"

namespace ppl::PPL_LEVEL {

// v = (x * gain >> 5) + delta: 16-bit product, logical shift, wrapping sum; then clamped to 0..255.
template <class V>
struct white_balance {
  V gain_even, gain_odd, delta_even, delta_odd;
  PPL_INLINE_MEMBER white_balance(const vec_i16& gain, const vec_i16& delta)
      : gain_even(set16<V>(gain.lane[0])),
        gain_odd(set16<V>(gain.lane[1])),
        delta_even(set16<V>(delta.lane[0])),
        delta_odd(set16<V>(delta.lane[1])) {}
  PPL_INLINE_MEMBER V operator()(V x) const {
    return join_clamp8(add16(srl16<5>(mullo16(even(x), gain_even)), delta_even),
                       add16(srl16<5>(mullo16(odd(x), gain_odd)), delta_odd));
  }
};

#if defined(PPL_LEVEL_avx512)
constexpr bool kToneInRegisters = true;

// Two look-ups by the low seven bits, chosen by the top bit.
struct tone_curve {
  __m512i t0, t1, t2, t3;
  explicit tone_curve(const uint8_t* t)
      : t0(_mm512_loadu_si512(t)),
        t1(_mm512_loadu_si512(t + 64)),
        t2(_mm512_loadu_si512(t + 128)),
        t3(_mm512_loadu_si512(t + 192)) {}
  PPL_INLINE_MEMBER vec<64> operator()(vec<64> x) const {
    const __m512i low = _mm512_permutex2var_epi8(t0, x.v, t1);
    const __m512i high = _mm512_permutex2var_epi8(t2, x.v, t3);
    return {_mm512_mask_blend_epi8(_mm512_movepi8_mask(x.v), low, high)};
  }
  PPL_INLINE_MEMBER vec<16> operator()(vec<16> x) const {
    return {_mm512_castsi512_si128((*this)(vec<64>{_mm512_castsi128_si512(x.v)}).v)};
  }
};
#else
constexpr bool kToneInRegisters = false;

struct tone_curve {
  explicit tone_curve(const uint8_t*) {}
  template <class V>
  PPL_INLINE_MEMBER V operator()(V x) const {
    return x;
  }
};
#endif

static void prepare_tone(ppl_context& c, const uint8_t* tone) {
  if constexpr (kToneInRegisters) return;
  const uint8_t black[2][2] = {{c.black_b_gb.lane[0], c.black_b_gb.lane[1]},
                               {c.black_gr_r.lane[0], c.black_gr_r.lane[1]}};
  const vec_i16* const gain[2] = {&c.gain_b_g, &c.gain_g_r};
  const vec_i16* const delta[2] = {&c.delta_b_g, &c.delta_g_r};
  for (int row = 0; row < 2; ++row)
    for (int column = 0; column < 2; ++column) {
      const unsigned g = static_cast<uint16_t>(gain[row]->lane[column]);
      const int d = delta[row]->lane[column], b = black[row][column];
      for (int x = 0; x < 256; ++x) {
        const unsigned product = static_cast<unsigned>(x > b ? x - b : 0) * g & 0xffff;
        int v = static_cast<int16_t>(static_cast<int>(product >> 5) + d);
        v = v < 0 ? 0 : v > 255 ? 255 : v;
        c.site_tables[row][column][x] = static_cast<uint32_t>(tone[v]) << (8 * column);
        c.site_tables[row][column + 2][x] = static_cast<uint32_t>(tone[v]) << (8 * column + 16);
      }
    }
}

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
