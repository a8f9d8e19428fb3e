// A packed row to RGB24: bytes B, G, R.
//
// With u = U - 128, v = V - 128 and y = 74 * max(Y - 16, 0), in 16 bits that wrap:
//   B = 129 u + y,  G = -25 u - 52 v + y,  R = 102 v + y,  each >> 6 and clamped to 0..255.
// Only blue can leave 16 bits: very bright saturated blues wrap and fall to 0. That is kept, not clamped.
#pragma once

#include "convert/convert_kernels.h"
#include "simd/packed-inl.h"
#include "simd/store_rgb-inl.h"

namespace ppl::PPL_LEVEL {

template <byte_order L, class V>
PPL_INLINE bgr16<V> colours(V packed) {
  constexpr bool yuyv = L == byte_order::yuyv;
  // Pairs of bytes times pairs of coefficients: luma with nothing, U with V. No sum leaves 16 bits.
  const V above_black = subs_u8(packed, set16<V>(yuyv ? 16 : 16 << 8));
  const V y = madd8(above_black, set16<V>(yuyv ? 74 : 74 << 8));
  alignas(16) static constexpr uint8_t chroma[2][16] = {
      {1, 3, 1, 3, 5, 7, 5, 7, 9, 11, 9, 11, 13, 15, 13, 15},
      {0, 2, 0, 2, 4, 6, 4, 6, 8, 10, 8, 10, 12, 14, 12, 14}};
  const V uv = shuffle8(packed, repeat16<V>(chroma[static_cast<int>(L)])) ^ set8<V>(0x80);
  const V b = madd8(set16<V>(129), uv), g = madd8(set16<V>(25 | 52 << 8), uv),
          r = madd8(set16<V>(102 << 8), uv);
  return {sra16<6>(add16(y, b)), sra16<6>(sub16(y, g)), sra16<6>(add16(y, r))};
}

// Two pixels that share their chroma in the same lane of two vectors.
template <class V>
struct rgb24_factors {
  V y = factor16<V>(74), u_in_blue = factor16<V>(129), u_in_green = factor16<V>(25),
    v_in_green = factor16<V>(52), v_in_red = factor16<V>(102);
};
template <byte_order L, class V>
PPL_INLINE void put_column_pairs(uint8_t* out, const rgb24_factors<V>& times, V first, V second) {
  const V luma = subs_u8(luma_bytes<L>(first, second), set8<V>(16));
  const V chroma = pack_u8(chroma16<L>(first), chroma16<L>(second));
  const V y0 = mullo16(even(luma), times.y), y1 = mullo16(odd(luma), times.y);
  const V u = sub16(even(chroma), set16<V>(128)), v = sub16(odd(chroma), set16<V>(128));
  const V blue = mullo16(u, times.u_in_blue), red = mullo16(v, times.v_in_red),
          green = add16(mullo16(u, times.u_in_green), mullo16(v, times.v_in_green));
  store_bgr<6>(out, bgr_columns<V>{add16(y0, blue), sub16(y0, green), add16(y0, red)},
               bgr_columns<V>{add16(y1, blue), sub16(y1, green), add16(y1, red)});
}

template <byte_order L>
static void rgb24_row(uint8_t* out, const uint8_t* in, int pixels) {
  const rgb24_factors<wide> factors;  // at levels that multiply 16-bit lanes: of 16 bytes
  walk_exact(pixels, [&]<class V>(int x) {
    if constexpr (kMultipliesBytes) {
      V first, second;
      load_for_bgr(in + 2 * x, first, second);
      store_bgr(out + 3 * x, colours<L>(first), colours<L>(second));
    } else {
      put_column_pairs<L>(out + 3 * x, factors, loadu<V>(in + 2 * x), loadu<V>(in + 2 * x + V::size));
    }
  });
}

}  // namespace ppl::PPL_LEVEL
