// Fewer and more columns: packed rows shrunk by 2 and by 4, and widened by 2.
//
// A macropixel is four bytes, two lumas Ya, Yb and their U, V. All means round up.
#pragma once

#include "convert/convert_kernels.h"
#include "simd/packed-inl.h"

namespace ppl::PPL_LEVEL {

// One macropixel from each pair: its lumas are the means within the two, its chroma the mean between them.
template <byte_order L, class V>
PPL_INLINE V join_macropixels(V even_ones, V odd_ones) {
  const V first = avg8(even_ones, srl32<16>(even_ones)), second = avg8(odd_ones, sll32<16>(odd_ones));
  const V luma = (first & set32<V>(is_even(L) ? 0x000000ff : 0x0000ff00)) |
                 (second & set32<V>(static_cast<int>(is_even(L) ? 0x00ff0000 : 0xff000000)));
  return luma | (avg8(even_ones, odd_ones) & set16<V>(is_even(L) ? 0xff00 : 0x00ff));
}

template <byte_order L>
static void shrink_row_2(uint8_t* out, const uint8_t* in, int in_pixels) {
  walk_exact(in_pixels, [&]<class V>(int x) {
    const V a = loadu<V>(in + 2 * x), b = loadu<V>(in + 2 * x + V::size);
    storeu(out + x, join_macropixels<L>(even32(a, b), odd32(a, b)));
  });
}

// The same on the even macropixels alone.
template <byte_order L>
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

// Ya U Yb V and the next macropixel, Ya' U' Yb' V', give
//   Ya, U, mean(Ya, Yb), V   and   Yb, mean(U, U'), mean(Yb, Ya'), mean(V, V').
template <class V>
struct widened {
  V first, second;
};
template <class V>
PPL_INLINE widened<V> widen_macropixels(V here, V next) {
  const V luma_1 = set32<V>(0x00ff0000), luma_0 = set32<V>(0x000000ff);
  const V even_ones = andnot(luma_1, here) | (luma_1 & avg8(here, sll32<16>(here)));
  const V chroma = even_odd(srl32<16>(here) & luma_0, avg8(here, next));
  const V odd_ones = chroma | (luma_1 & avg8(here, sll32<16>(next)));
  widened<V> w;
  interleave32(even_ones, odd_ones, w.first, w.second);
  return w;
}

// Calls step(position, widened vectors of each row) along rows of the same length. The last macropixel is followed by
// itself.
template <int Rows, class Step>
PPL_INLINE void walk_widened(const uint8_t* const (&in)[Rows], int in_pixels, Step&& step) {
  const int last = 2 * in_pixels - 16;
  if (last < 0) return;
  walk_exact(last, [&]<class V>(int x) {
    widened<V> w[Rows];
    for (int i = 0; i < Rows; i++) w[i] = widen_macropixels(loadu<V>(in[i] + x), loadu<V>(in[i] + x + 4));
    step(2 * x, w);
  });
  widened<vec16> w[Rows];
  for (int i = 0; i < Rows; i++) {
    const vec16 here = loadu<vec16>(in[i] + last);
    w[i] = widen_macropixels(here, pick32<1, 2, 3, 3>(here, here));
  }
  step(2 * last, w);
}

template <class V>
PPL_INLINE void store_widened(uint8_t* out, widened<V> w) {
  storeu(out, w.first);
  storeu(out + V::size, w.second);
}
template <class V>
PPL_INLINE widened<V> mean(widened<V> a, widened<V> b) {
  return {avg8(a.first, b.first), avg8(a.second, b.second)};
}

static void widen_row(uint8_t* out, const uint8_t* in, int in_pixels) {
  const uint8_t* const rows[1] = {in};
  walk_widened(rows, in_pixels,
               [=]<class V>(int x, const widened<V>(&w)[1]) { store_widened(out + x, w[0]); });
}

static void double_row_pair(uint8_t* const out[4], const uint8_t* kept, const uint8_t* later, uint8_t* before,
                            int in_pixels) {
  const uint8_t* const rows[2] = {kept, later};
  uint8_t *const out_0 = out[0], *const out_1 = out[1], *const out_2 = out[2], *const out_3 = out[3];
  walk_widened(rows, in_pixels, [=]<class V>(int x, const widened<V>(&w)[2]) {
    const widened<V> above = {loadu<V>(before + x), loadu<V>(before + x + V::size)};
    store_widened(out_0 + x, mean(w[0], above));
    store_widened(out_1 + x, w[0]);
    store_widened(out_2 + x, mean(w[0], w[1]));
    store_widened(out_3 + x, w[1]);
    store_widened(before + x, w[1]);
  });
}

}  // namespace ppl::PPL_LEVEL
