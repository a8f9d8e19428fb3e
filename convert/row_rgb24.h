// A packed row to RGB24: bytes B, G, R.
//
// With u = U - 128, v = V - 128 and y = 74 * max(Y - 16, 0), in 16 bits that wrap:
//   B = 129 u + y,  G = -25 u - 52 v + y,  R = 102 v + y,  each >> 6 and clamped to 0..255.
// Only blue can leave 16 bits: very bright saturated blues wrap and fall to 0, and that is the required picture.
#pragma once

#include "convert/convert_kernels.h"
#include "convert/packed_ops.h"

namespace ppl::PPL_LEVEL {

#ifdef __SSSE3__
template <layout L, class V>
PPL_INLINE bgr16<V> colours(V packed) {
  constexpr bool yuyv = L == layout::yuyv;
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
#else
template <layout L, class V>
PPL_INLINE bgr16<V> colours(V packed) {
  const V y = mullo16(subs_u16(luma16<L>(packed), set16<V>(16)), set16<V>(74));
  const V uv = sub16(chroma16<L>(packed), set16<V>(128));
  const V blue_red = mullo16(uv, set32<V>(129 | 102 << 16)), green = madd16(uv, set32<V>(25 | 52 << 16));
  return {sra16<6>(add16(y, repeat_low16(blue_red))), sra16<6>(sub16(y, repeat_low16(green))),
          sra16<6>(add16(y, repeat_high16(blue_red)))};
}
#endif

template <layout L>
static void rgb24_row(uint8_t* out, const uint8_t* in, int pixels) {
  walk_exact(pixels, [&]<class V>(int x) {
    V first, second;
    load_for_bgr(in + 2 * x, first, second);
    store_bgr(out + 3 * x, colours<L>(first), colours<L>(second));
  });
}

}  // namespace ppl::PPL_LEVEL
