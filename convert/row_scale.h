// Fewer and more columns: packed rows shrunk by 2 and by 4, and widened by 2.
//
// A macropixel is four bytes, two lumas Ya, Yb and their U, V. All means round up.
#pragma once

#include "convert/convert_kernels.h"
#include "convert/packed_ops.h"

namespace ppl::PPL_LEVEL {

// One macropixel from each pair: its lumas are the means within the two, its chroma the mean between them.
template <layout L, class V>
PPL_INLINE V join_macropixels(V even_ones, V odd_ones) {
  const V low = avg8(even_ones, srl32<16>(even_ones)), high = avg8(odd_ones, sll32<16>(odd_ones));
  const V low_half = set32<V>(0x0000ffff);
  return with_chroma<L>((low & low_half) | andnot(low_half, high), avg8(even_ones, odd_ones));
}

template <layout L>
static void shrink_row_2(uint8_t* out, const uint8_t* in, int in_pixels) {
  walk_exact(in_pixels, [&]<class V>(int x) {
    const V a = loadu<V>(in + 2 * x), b = loadu<V>(in + 2 * x + V::size);
    storeu(out + x, join_macropixels<L>(even32(a, b), odd32(a, b)));
  });
}

// The same on the even macropixels alone.
template <layout L>
static void shrink_row_4(uint8_t* out, const uint8_t* in, int in_pixels) {
  const int bytes = in_pixels / 2;
  walk_exact(bytes & ~15, [&]<class V>(int x) {
    const uint8_t* const at = in + 4 * x;
    const V a = even32(loadu<V>(at), loadu<V>(at + V::size));
    const V b = even32(loadu<V>(at + 2 * V::size), loadu<V>(at + 3 * V::size));
    storeu(out + x, join_macropixels<L>(even32(a, b), odd32(a, b)));
  });
  if (bytes & 8) {
    const int x = bytes & ~15;
    const vec16 a = even32(loadu<vec16>(in + 4 * x), loadu<vec16>(in + 4 * x + 16));
    storeu(out + x, join_macropixels<L>(even32(a, a), odd32(a, a)));
  }
}

// Ya U Yb V and the macropixel behind it, Ya' U' Yb' V', give
//   Ya, U, mean(Ya, Yb), V   and   Yb, mean(U, U'), mean(Yb, Ya'), mean(V, V').
template <class V>
PPL_INLINE void widen_step(uint8_t* out, V here, V next) {
  const V luma_1 = set32<V>(0x00ff0000), luma_0 = set32<V>(0x000000ff);
  const V even_ones = andnot(luma_1, here) | (luma_1 & avg8(here, sll32<16>(here)));
  const V chroma = even_odd(srl32<16>(here) & luma_0, avg8(here, next));
  const V odd_ones = chroma | (luma_1 & avg8(here, sll32<16>(next)));
  V first, second;
  interleave32(even_ones, odd_ones, first, second);
  storeu(out, first);
  storeu(out + V::size, second);
}

// Behind the last macropixel stands an identical one.
static void widen_row(uint8_t* out, const uint8_t* in, int in_pixels) {
  const int last = 2 * in_pixels - 16;
  if (last < 0) return;
  walk_exact(last, [&]<class V>(int x) { widen_step(out + 2 * x, loadu<V>(in + x), loadu<V>(in + x + 4)); });
  const vec16 here = loadu<vec16>(in + last);
  widen_step(out + 2 * last, here, next_macropixels(here));
}

}  // namespace ppl::PPL_LEVEL
