// Packed 4:2:2: words of a luma and a chroma byte, U and V in turn. L says which byte of a word is luma: 0 the even
// one, 1 the odd one. For *_kernels.cpp only.
#pragma once

#include "simd/simd-inl.h"

namespace ppl::PPL_LEVEL {

constexpr bool is_even(auto place) {
  return static_cast<int>(place) == 0;
}

// Luma (chroma) of each word as an unsigned 16-bit lane.
template <auto L, class V>
PPL_INLINE V luma16(V a) {
  return is_even(L) ? even(a) : odd(a);
}
template <auto L, class V>
PPL_INLINE V chroma16(V a) {
  return is_even(L) ? odd(a) : even(a);
}
// The luma bytes of one and the chroma bytes of the other.
template <auto L, class V>
PPL_INLINE V with_chroma(V luma, V chroma) {
  return is_even(L) ? even_odd(luma, chroma) : even_odd(chroma, luma);
}

// A vector of luma and one of chroma in turn: 2 * V::size bytes.
template <auto L, class V>
PPL_INLINE void store_packed(uint8_t* to, V luma, V chroma) {
  V first, second;
  is_even(L) ? interleave8(luma, chroma, first, second) : interleave8(chroma, luma, first, second);
  storeu(to, first);
  storeu(to + V::size, second);
}

// ---- words that take other chroma

// Masks of those words: all ones in their chroma bytes, 0 in luma. Made from one decision for each word or, for two
// vectors of words, from one decision for each byte.
template <class M>
struct two_masks {
  M first, second;
};
template <auto L, int N>
PPL_INLINE mask8<N> chroma_mask(mask16<N> m) {
  return {keep(m, set16<vec<N>>(is_even(L) ? 0xff00 : 0x00ff))};
}
template <auto L, int N>
PPL_INLINE two_masks<mask8<N>> chroma_masks(mask8<N> m) {
  const vec<N> none = zero<vec<N>>(), chroma = in_order(m.v);
  return is_even(L) ? two_masks<mask8<N>>{{lower8(none, chroma)}, {upper8(none, chroma)}}
                    : two_masks<mask8<N>>{{lower8(chroma, none)}, {upper8(chroma, none)}};
}
// The words of b, with chroma from a where the mask holds.
template <auto L, int N>
PPL_INLINE vec<N> select_chroma(mask8<N> chroma, vec<N> a, vec<N> b) {
  return select(chroma, a, b);
}
#if defined(PPL_LEVEL_avx512)
// At this width a mask is a bit a word.
template <auto L>
PPL_INLINE mask16<64> chroma_mask(mask16<64> m) {
  return m;
}
template <auto L>
PPL_INLINE two_masks<mask16<64>> chroma_masks(mask8<64> m) {
  return {{static_cast<__mmask32>(m.m)}, {static_cast<__mmask32>(m.m >> 32)}};
}
template <auto L>
PPL_INLINE vec<64> select_chroma(mask16<64> m, vec<64> a, vec<64> b) {
  return select(m, with_chroma<L>(b, a), b);
}
#endif

// ---- two rows to planes
//
// V::size pixels of a row are two vectors. luma_bytes() gives their luma. mean_chroma() gives the means of their
// chroma with that of another row, b0 and b1, in an order of its own; split_chroma() puts two such results in order.

#if defined(PPL_X86) && defined(__SSE4_1__)
// One byte shuffle takes a vector apart: the first of two to luma, U, V, the second to U, V, luma. A half of each then
// makes a vector of luma, the other halves one of chroma. "Halves" are those of each 16 bytes; in the widest vectors,
// whose bytes go anywhere, those of all 64.
template <int N>
struct byte_table {
  alignas(N) uint8_t at[N];
};
template <int N>
constexpr byte_table<N> apart(int luma, bool luma_first) {
  byte_table<N> t = {};
  const int chroma = 1 - luma;
  const int luma_at = luma_first ? 0 : N / 2, u_at = luma_first ? N / 2 : 0, v_at = u_at + N / 4;
  for (int i = 0; i < N / 2; i++) t.at[luma_at + i] = static_cast<uint8_t>(2 * i + luma);
  for (int i = 0; i < N / 4; i++) t.at[u_at + i] = static_cast<uint8_t>(4 * i + chroma);
  for (int i = 0; i < N / 4; i++) t.at[v_at + i] = static_cast<uint8_t>(4 * i + 2 + chroma);
  return t;
}
// The lower halves of a, the upper ones of b.
PPL_INLINE vec<16> lower_upper(vec<16> a, vec<16> b) {
  return {_mm_blend_epi16(a.v, b.v, 0xf0)};
}
template <auto L, bool kLumaFirst, int N>
PPL_INLINE vec<N> take_apart(vec<N> a) {
  static constexpr byte_table<16> order = apart<16>(is_even(L) ? 0 : 1, kLumaFirst);
  return shuffle8(a, repeat16<vec<N>>(order.at));
}
PPL_INLINE vec<16> luma_in_order(vec<16> a) {
  return a;
}
PPL_INLINE void split_chroma(vec<16> a, vec<16> b, vec<16>& u, vec<16>& v) {  // both of them U1 V1 U0 V0
  u = pick32(a, b, [](int i) { return i / 2 * 4 + (i % 2 == 0 ? 2 : 0); });
  v = pick32(a, b, [](int i) { return i / 2 * 4 + (i % 2 == 0 ? 3 : 1); });
}
#if defined(PPL_LEVEL_avx2) || defined(PPL_LEVEL_avx512)
PPL_INLINE vec<32> lower_upper(vec<32> a, vec<32> b) {
  return {_mm256_blend_epi32(a.v, b.v, 0xcc)};
}
PPL_INLINE vec<32> luma_in_order(vec<32> a) {
  return in_order(a);
}
PPL_INLINE void split_chroma(vec<32> a, vec<32> b, vec<32>& u, vec<32>& v) {
  const __m256i order = _mm256_set_epi32(7, 3, 6, 2, 5, 1, 4, 0);
  u.v = _mm256_permutevar8x32_epi32(two_of_each<_MM_SHUFFLE(0, 2, 0, 2)>(a, b).v, order);
  v.v = _mm256_permutevar8x32_epi32(two_of_each<_MM_SHUFFLE(1, 3, 1, 3)>(a, b).v, order);
}
#endif
#if defined(PPL_LEVEL_avx512)
PPL_INLINE vec<64> lower_upper(vec<64> a, vec<64> b) {
  return {_mm512_mask_blend_epi64(0xf0, a.v, b.v)};
}
template <auto L, bool kLumaFirst>
PPL_INLINE vec<64> take_apart(vec<64> a) {
  static constexpr byte_table<64> order = apart<64>(is_even(L) ? 0 : 1, kLumaFirst);
  return {_mm512_permutexvar_epi8(load<vec<64>>(order.at).v, a.v)};
}
PPL_INLINE vec<64> luma_in_order(vec<64> a) {
  return a;
}
PPL_INLINE void split_chroma(vec<64> a, vec<64> b, vec<64>& u, vec<64>& v) {
  u.v = _mm512_shuffle_i64x2(a.v, b.v, _MM_SHUFFLE(0, 2, 0, 2));
  v.v = _mm512_shuffle_i64x2(a.v, b.v, _MM_SHUFFLE(1, 3, 1, 3));
}
#endif
template <auto L, class V>
PPL_INLINE V luma_bytes(V first, V second) {
  return luma_in_order(lower_upper(take_apart<L, true>(first), take_apart<L, false>(second)));
}
template <auto L, class V>
PPL_INLINE V mean_chroma(V a0, V a1, V b0, V b1) {
  return avg8(lower_upper(take_apart<L, false>(a1), take_apart<L, true>(a0)),
              lower_upper(take_apart<L, false>(b1), take_apart<L, true>(b0)));
}
#else
template <auto L, class V>
PPL_INLINE V luma_bytes(V first, V second) {
  return is_even(L) ? even_bytes(first, second) : odd_bytes(first, second);
}
template <auto L, class V>
PPL_INLINE V mean_chroma(V a0, V a1, V b0, V b1) {
  return luma_bytes < is_even(L) ? 1 : 0 > (avg8(a0, b0), avg8(a1, b1));
}
template <class V>
PPL_INLINE void split_chroma(V a, V b, V& u, V& v) {
  u = even_bytes(a, b);
  v = odd_bytes(a, b);
}
#endif

}  // namespace ppl::PPL_LEVEL
