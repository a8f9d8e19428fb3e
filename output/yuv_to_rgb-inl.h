// Finished luma and chroma to R, G, B. Chroma is signed here. All sums are 16-bit and saturate, in this order:
//   R = 128 Y, + 128 V, + 64, >> 7     G = -65 V, + 128 Y, - 25 U, + 64, >> 7     B = 128 Y, + 128 U, + 64, >> 7
// each clamped to 0..255. All come to a sum of bytes, clamped:
//   R = Y + V     G = Y + (-65 V - 25 U + 64 >> 7), at most 32767 - 25 U + 64 >> 7     B = Y + U
// The order shows in green: with Y = 255, V = -128 the first sum saturates before U's term is taken off, hence its
// limit.
#pragma once

#include "output/output_kernels.h"
#include "simd/simd-inl.h"

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

// Green less Y, with 128 added, and its limit, neither clamped yet. The constants undo the 128 in U and in V.
template <class V>
PPL_INLINE V green_change(V words) {
  return srl16<7>(add16(weigh_bytes<-25, -65>(words), set16<V>(128 * 128 + 64 + 128 * (25 + 65))));
}
template <class V>
PPL_INLINE V green_limit(V words) {
  return srl16<7>(add16(weigh_bytes<-25, 0>(words), set16<V>(32767 + 64 + 128 * 25)));
}

// R, G, B bytes of the V::size pixels at x.
template <enum rgb_source::kind kKind, class V>
PPL_INLINE rgb<V> rgb_at(const rgb_source& s, int x) {
  const V first = loadu<V>(s.plane[0] + x), second = loadu<V>(s.plane[1] + x);
  if constexpr (kKind == rgb_source::planes) {
    return {first, second, loadu<V>(s.plane[2] + x)};
  } else if constexpr (kKind == rgb_source::yuv_words) {
    const V both = narrow(green_change(second), green_limit(second));
    V change, limit;
    widen_pairs(both, both, change, limit);
    return {add_signed(first, twice_odd(second)), min_u8(add_signed(first, change), limit),
            add_signed(first, twice_even(second))};
  } else {
    const V third = loadu<V>(s.plane[2] + x);
    V lo, hi;
    widen_pairs(second, third, lo, hi);
    const V change = narrow(green_change(lo), green_change(hi));
    const V limit = narrow(green_limit(lo), green_limit(hi));
    return {add_signed(first, third), min_u8(add_signed(first, change), limit), add_signed(first, second)};
  }
}

}  // namespace ppl::PPL_LEVEL
