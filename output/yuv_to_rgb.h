// Finished luma and chroma to R, G, B. Chroma is signed here. All sums are 16-bit and saturate, in this order:
//   R = 128 Y, + 128 V, + 64, >> 7     G = -65 V, + 128 Y, - 25 U, + 64, >> 7     B = 128 Y, + 128 U, + 64, >> 7
// each clamped to 0..255. Red and blue come to clamp(Y + V) and clamp(Y + U), done on bytes; in green the order
// shows: with Y = 255, V = -128 the first sum sticks at the top before U's term.
#pragma once

#include "output/output_kernels.h"
#include "tile/simd.h"

namespace ppl::PPL_LEVEL {

template <class V>
struct rgb {
  V r, g, b;
};

// clamp(y + c) of bytes, c being held with 128 added.
template <class V>
PPL_INLINE V add_signed(V y, V chroma) {
  const V zero_chroma = set8<V>(0x80);
  return subs_u8(adds_u8(y, subs_u8(chroma, zero_chroma)), subs_u8(zero_chroma, chroma));
}

// 16-bit lanes; -65 V and -25 U are given.
template <class V>
PPL_INLINE V green(V y, V red_part, V blue_part) {
  return sra16<7>(adds_s16(adds_s16(adds_s16(red_part, sll16<7>(y)), blue_part), set16<V>(64)));
}
template <class V>
PPL_INLINE V red_part(V v) {
  return mullo16(sub16(v, set16<V>(128)), factor16<V>(-65));
}
template <class V>
PPL_INLINE V blue_part(V u) {
  return mullo16(sub16(u, set16<V>(128)), factor16<V>(-25));
}

// R, G, B bytes of the V::size pixels at x.
template <enum rgb_source::kind kKind, class V>
PPL_INLINE rgb<V> rgb_at(const rgb_source& s, int x) {
  const V first = loadu<V>(s.plane[0] + x), second = loadu<V>(s.plane[1] + x);
  if constexpr (kKind == rgb_source::planes) {
    return {first, second, loadu<V>(s.plane[2] + x)};
  } else if constexpr (kKind == rgb_source::yuv_words) {
    const V u = even(second), v = odd(second);
    const V from_v = red_part(v), from_u = blue_part(u);
    return {add_signed(first, join8(v, v)),
            join_clamp8(green(even(first), from_v, from_u), green(odd(first), from_v, from_u)),
            add_signed(first, join8(u, u))};
  } else {
    const V third = loadu<V>(s.plane[2] + x);
    return {add_signed(first, third),
            join_clamp8(green(even(first), red_part(even(third)), blue_part(even(second))),
                        green(odd(first), red_part(odd(third)), blue_part(odd(second)))),
            add_signed(first, second)};
  }
}

}  // namespace ppl::PPL_LEVEL
