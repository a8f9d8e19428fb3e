// A packed row to RGB24: bytes B, G, R.
//
// With u = U - 128, v = V - 128 and y = 74 * max(Y - 16, 0), in 16 bits that wrap:
//   B = 129 u + y,  G = -25 u - 52 v + y,  R = 102 v + y,  each >> 6 and clamped to 0..255.
// Only blue can leave 16 bits: very bright saturated blues wrap and fall to 0, and that is the required picture.
#pragma once

#include "convert/convert_kernels.h"
#include "convert/packed_ops-inl.h"
#include "simd/store_rgb-inl.h"

namespace ppl::PPL_LEVEL {

#ifdef __SSSE3__
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
template <byte_order L>
static void rgb24_row(uint8_t* out, const uint8_t* in, int pixels) {
  walk_exact(pixels, [&]<class V>(int x) {
    V first, second;
    load_for_bgr(in + 2 * x, first, second);
    store_bgr(out + 3 * x, colours<L>(first), colours<L>(second));
  });
}
#else
// Two pixels that share their chroma in the same lane of two vectors.
template <byte_order L>
static void rgb24_row(uint8_t* out, const uint8_t* in, int pixels) {
  using V = vec16;
  const V times_74 = factor16<V>(74), times_129 = factor16<V>(129), times_25 = factor16<V>(25),
          times_52 = factor16<V>(52), times_102 = factor16<V>(102);
  const auto words = [](V even_bytes, V odd_bytes) {
    V first, second;
    interleave16(sra16<6>(even_bytes), sra16<6>(odd_bytes), first, second);
    return pack_u8(first, second);
  };
  for (int x = 0; x < pixels; x += 16) {
    const V a = loadu<V>(in + 2 * x), b = loadu<V>(in + 2 * x + 16);
    const V luma = subs_u8(luma_bytes<L>(a, b), set8<V>(16));
    const V chroma = pack_u8(chroma16<L>(a), chroma16<L>(b));
    const V y0 = mullo16(even(luma), times_74), y1 = mullo16(odd(luma), times_74);
    const V u = sub16(even(chroma), set16<V>(128)), v = sub16(odd(chroma), set16<V>(128));
    const V blue = mullo16(u, times_129), green = add16(mullo16(u, times_25), mullo16(v, times_52)),
            red = mullo16(v, times_102);
    store_bgr_words(out + 3 * x, words(add16(y0, blue), sub16(y0, green)),
                    words(add16(y0, red), add16(y1, blue)), words(sub16(y1, green), add16(y1, red)));
  }
}
#endif

}  // namespace ppl::PPL_LEVEL
