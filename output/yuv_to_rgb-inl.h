// Finished luma and chroma to R, G, B. Chroma is signed here. All sums are 16-bit and saturate, in this order:
//   R = 128 Y, + 128 V, + 64, >> 7     G = -65 V, + 128 Y, - 25 U, + 64, >> 7     B = 128 Y, + 128 U, + 64, >> 7
// each clamped to 0..255. All come to a sum of bytes, clamped:
//   R = Y + V     G = Y + (-65 V - 25 U + 64 >> 7), at most 32767 - 25 U + 64 >> 7     B = Y + U
// In green the order shows: with Y = 255, V = -128 the first sum sticks at the top before U's term, hence its limit.
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

// kU U + kV V of words, bytes U and V with 128 added.
template <int kU, int kV, class V>
PPL_INLINE V weighted(V words) {
#ifdef __SSSE3__
  return madd8(words, set16<V>((kU & 255) | kV * 256));
#else
  const V from_u = mullo16(even(words), factor16<V>(kU));
  return kV == 0 ? from_u : add16(from_u, mullo16(odd(words), factor16<V>(kV)));
#endif
}

// What green adds to Y, with 128 added, and its limit, not yet clamped. The constants undo the 128 of U and of V.
template <class V>
PPL_INLINE V green_change(V words) {
  return srl16<7>(add16(weighted<-25, -65>(words), set16<V>(128 * 128 + 64 + 128 * (25 + 65))));
}
template <class V>
PPL_INLINE V green_limit(V words) {
  return srl16<7>(add16(weighted<-25, 0>(words), set16<V>(32767 + 64 + 128 * 25)));
}

// The low or the high byte of each lane, twice.
template <class V>
PPL_INLINE V low_twice(V words) {
#ifdef __SSSE3__
  alignas(16) static constexpr uint8_t kAt[16] = {0, 0, 2, 2, 4, 4, 6, 6, 8, 8, 10, 10, 12, 12, 14, 14};
  return shuffle8(words, repeat16<V>(kAt));
#else
  return join8(even(words), words);
#endif
}
template <class V>
PPL_INLINE V high_twice(V words) {
#ifdef __SSSE3__
  alignas(16) static constexpr uint8_t kAt[16] = {1, 1, 3, 3, 5, 5, 7, 7, 9, 9, 11, 11, 13, 13, 15, 15};
  return shuffle8(words, repeat16<V>(kAt));
#else
  return even_odd(odd(words), words);
#endif
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
    return {add_signed(first, high_twice(second)), min_u8(add_signed(first, change), limit),
            add_signed(first, low_twice(second))};
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
