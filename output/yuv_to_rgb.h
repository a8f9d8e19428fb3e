// Finished luma and chroma to R, G, B. Chroma is signed here. All sums are 16-bit and saturate, in this order:
//   R = 128 Y, + 128 V, + 64, >> 7     G = -65 V, + 128 Y, - 25 U, + 64, >> 7     B = 128 Y, + 128 U, + 64, >> 7
// each clamped to 0..255. The order shows: with Y = 255, V = -128 green's first sum sticks at the top before U's term.
#pragma once

#include "output/output_kernels.h"
#include "tile/simd.h"

namespace ppl::PPL_LEVEL {

template <class V>
struct rgb {
  V r, g, b;
};

template <class V>
PPL_INLINE rgb<V> yuv_to_rgb16(V y, V u, V v) {
  const V y128 = sll16<7>(y), round = set16<V>(64);
  const V r = adds_s16(adds_s16(y128, sll16<7>(v)), round);
  const V b = adds_s16(adds_s16(y128, sll16<7>(u)), round);
  const V g = adds_s16(adds_s16(adds_s16(mullo16(v, set16<V>(-65)), y128), mullo16(u, set16<V>(-25))), round);
  return {sra16<7>(r), sra16<7>(g), sra16<7>(b)};
}

// R, G, B bytes of the V::size pixels at x.
template <enum rgb_source::kind kKind, class V>
PPL_INLINE rgb<V> rgb_at(const rgb_source& s, int x) {
  const V first = loadu<V>(s.plane[0] + x);
  if constexpr (kKind == rgb_source::planes) {
    return {first, loadu<V>(s.plane[1] + x), loadu<V>(s.plane[2] + x)};
  } else {
    const V zero_chroma = set16<V>(128);
    const V second = loadu<V>(s.plane[1] + x);
    const V u_even = sub16(even(second), zero_chroma), odd_of_second = sub16(odd(second), zero_chroma);
    rgb<V> e, o;
    if constexpr (kKind == rgb_source::yuv_words) {
      e = yuv_to_rgb16(even(first), u_even, odd_of_second);
      o = yuv_to_rgb16(odd(first), u_even, odd_of_second);
    } else {
      const V third = loadu<V>(s.plane[2] + x);
      e = yuv_to_rgb16(even(first), u_even, sub16(even(third), zero_chroma));
      o = yuv_to_rgb16(odd(first), odd_of_second, sub16(odd(third), zero_chroma));
    }
    return {join_clamp8(e.r, o.r), join_clamp8(e.g, o.g), join_clamp8(e.b, o.b)};
  }
}

}  // namespace ppl::PPL_LEVEL
