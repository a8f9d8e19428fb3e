// x86-64: XMM registers from SSE2 on, YMM registers with AVX2, ZMM registers with AVX-512 and VBMI. A part of
// simd/simd-inl.h, which tells the conventions; the operations are explained in simd/plain-inl.h.
#pragma once

namespace ppl::PPL_LEVEL {

// ---- what one instruction does at every width

#define PPL_WIDTH_16(name, intrinsic)             \
  PPL_INLINE vec<16> name(vec<16> a, vec<16> b) { \
    return {_mm_##intrinsic(a.v, b.v)};           \
  }
#if defined(PPL_LEVEL_avx2) || defined(PPL_LEVEL_avx512)
#define PPL_WIDTH_32(name, intrinsic)             \
  PPL_INLINE vec<32> name(vec<32> a, vec<32> b) { \
    return {_mm256_##intrinsic(a.v, b.v)};        \
  }
#else
#define PPL_WIDTH_32(name, intrinsic)
#endif
#if defined(PPL_LEVEL_avx512)
#define PPL_WIDTH_64(name, intrinsic)             \
  PPL_INLINE vec<64> name(vec<64> a, vec<64> b) { \
    return {_mm512_##intrinsic(a.v, b.v)};        \
  }
#else
#define PPL_WIDTH_64(name, intrinsic)
#endif
#define PPL_WIDER(name, intrinsic) PPL_WIDTH_32(name, intrinsic) PPL_WIDTH_64(name, intrinsic)
#define PPL_ALL_WIDTHS(name, intrinsic) PPL_WIDTH_16(name, intrinsic) PPL_WIDER(name, intrinsic)

PPL_ALL_WIDTHS(adds_u8, adds_epu8)
PPL_ALL_WIDTHS(subs_u8, subs_epu8)
PPL_ALL_WIDTHS(adds_s8, adds_epi8)
PPL_ALL_WIDTHS(subs_s8, subs_epi8)
PPL_ALL_WIDTHS(adds_s16, adds_epi16)
PPL_ALL_WIDTHS(subs_s16, subs_epi16)
PPL_ALL_WIDTHS(subs_u16, subs_epu16)
PPL_ALL_WIDTHS(avg8, avg_epu8)
PPL_ALL_WIDTHS(min_u8, min_epu8)
PPL_ALL_WIDTHS(max_u8, max_epu8)
PPL_ALL_WIDTHS(min_s16, min_epi16)
PPL_ALL_WIDTHS(max_s16, max_epi16)
PPL_ALL_WIDTHS(mulhi_s16, mulhi_epi16)
PPL_ALL_WIDTHS(narrow, packus_epi16)
PPL_ALL_WIDTHS(narrow_s8, packs_epi16)
PPL_ALL_WIDTHS(narrow_s32, packs_epi32)
PPL_ALL_WIDTHS(sad_u8, sad_epu8)
PPL_WIDER(lower8, unpacklo_epi8)
PPL_WIDER(upper8, unpackhi_epi8)
PPL_WIDER(lower16, unpacklo_epi16)
PPL_WIDER(upper16, unpackhi_epi16)
PPL_WIDER(lower32, unpacklo_epi32)
PPL_WIDER(upper32, unpackhi_epi32)
PPL_WIDER(upper64, unpackhi_epi64)
#if defined(__SSSE3__)
PPL_ALL_WIDTHS(shuffle8, shuffle_epi8)
PPL_ALL_WIDTHS(madd8, maddubs_epi16)
#endif
#if defined(__SSE4_1__)
PPL_ALL_WIDTHS(min_s8, min_epi8)
PPL_ALL_WIDTHS(max_s8, max_epi8)
#endif

// Shifts, by a number of bits known at compile time.
#define PPL_SHIFT_16(name, intrinsic)  \
  template <int S>                     \
  PPL_INLINE vec<16> name(vec<16> a) { \
    return {_mm_##intrinsic(a.v, S)};  \
  }
#if defined(PPL_LEVEL_avx2) || defined(PPL_LEVEL_avx512)
#define PPL_SHIFT_32(name, intrinsic)    \
  template <int S>                       \
  PPL_INLINE vec<32> name(vec<32> a) {   \
    return {_mm256_##intrinsic(a.v, S)}; \
  }
#else
#define PPL_SHIFT_32(name, intrinsic)
#endif
#if defined(PPL_LEVEL_avx512)
#define PPL_SHIFT_64(name, intrinsic)    \
  template <int S>                       \
  PPL_INLINE vec<64> name(vec<64> a) {   \
    return {_mm512_##intrinsic(a.v, S)}; \
  }
#else
#define PPL_SHIFT_64(name, intrinsic)
#endif
#define PPL_SHIFT(name, intrinsic) \
  PPL_SHIFT_16(name, intrinsic) PPL_SHIFT_32(name, intrinsic) PPL_SHIFT_64(name, intrinsic)
PPL_SHIFT(sra16, srai_epi16)
PPL_SHIFT(srl16, srli_epi16)
PPL_SHIFT(sll16, slli_epi16)
PPL_SHIFT(srl32, srli_epi32)
PPL_SHIFT(sll32, slli_epi32)
PPL_SHIFT(sra32, srai_epi32)
#undef PPL_SHIFT_16
#undef PPL_SHIFT_32
#undef PPL_SHIFT_64
#undef PPL_SHIFT
// gcc makes a constant of its own of a known ~a. With two operands to an instruction that saves a copy; with three it
// only costs the constant.
PPL_WIDTH_32(andnot, andnot_si256)
PPL_WIDTH_64(andnot, andnot_si512)
#undef PPL_WIDTH_16
#undef PPL_WIDTH_32
#undef PPL_WIDTH_64
#undef PPL_WIDER
#undef PPL_ALL_WIDTHS

// ---- what takes the same few steps at every width

template <int N>
concept own = N <= kWidth;  // the processor's widths: overloads bound by it are preferred to the plain ones

// gcc finds another way, one instruction longer.
template <int N>
requires own<N> PPL_INLINE mask8<N> le_u8(vec<N> a, vec<N> b) {
  return eq8(subs_u8(a, b), zero<vec<N>>());
}
template <int N>
requires own<N> PPL_INLINE vec<N> lower_words(vec<N> a, vec<N> b) {
  return upper_words(sll32<16>(a), sll32<16>(b));
}
template <int N>
requires own<N> PPL_INLINE vec<N> upper_words(vec<N> a, vec<N> b) {
  return narrow_s32(sra32<16>(a), sra32<16>(b));
}
template <int N>
requires own<N> PPL_INLINE vec<N> sum_eights(vec<N> a, vec<N> b) {
  return even32_in_16s(sad_u8(a, zero<vec<N>>()), sad_u8(b, zero<vec<N>>()));
}
template <int N>
requires own<N> PPL_INLINE vec<N> unseen(vec<N> a) {
  asm("" : "+x"(a.v));
  return a;
}
#if defined(__SSSE3__)
PPL_INLINE vec<16> abs16(vec<16> a) {
  return {_mm_abs_epi16(a.v)};
}
template <int N>
requires own<N> PPL_INLINE vec<N> even_minus_odd(vec<N> a) {
  return madd8(a, set16<vec<N>>(0xff01));
}
template <int N>
requires own<N> PPL_INLINE vec<N> twice_even(vec<N> a) {
  return pick8_in_16s(a, a, [](int i) { return i & ~1; });
}
template <int N>
requires own<N> PPL_INLINE vec<N> twice_odd(vec<N> a) {
  return pick8_in_16s(a, a, [](int i) { return i | 1; });
}
template <int N>
requires own<N> PPL_INLINE vec<N> join_clamp8(vec<N> e, vec<N> o) {
  const vec<N> x = narrow(e, o);
  return pick8_in_16s(x, x, [](int i) { return i / 2 + i % 2 * 8; });
}
template <int kTimes, int N>
requires own<N> PPL_INLINE void widen_sum(vec<N> a, vec<N> b, vec<N>& lo, vec<N>& hi) {
  lo = madd8(lower8(a, b), set8<vec<N>>(kTimes));
  hi = madd8(upper8(a, b), set8<vec<N>>(kTimes));
}
template <int kEven, int kOdd, int N>
requires own<N> PPL_INLINE vec<N> weigh_bytes(vec<N> a) {
  return madd8(a, set16<vec<N>>((kEven & 255) | kOdd * 256));
}
// One instruction makes both products, of a - 128 and b - 128. The sum, at least -32768, gets the 128 * 256 back
// together with the rounding.
template <int N>
requires own<N> PPL_INLINE vec<N> blend_pairs(vec<N> pairs, vec<N> weights) {
  return srl16<8>(add16(madd8(weights, pairs ^ set8<vec<N>>(0x80)), set16<vec<N>>(0x8080)));
}
template <int N>
requires own<N> PPL_INLINE vec<N> blend8(vec<N> a, vec<N> b, int f) {
  const vec<N> sign = set8<vec<N>>(0x80), weights = set16<vec<N>>((256 - f) | f << 8),
               back = set16<vec<N>>(0x8080);
  vec<N> lo, hi;
  widen_pairs(a ^ sign, b ^ sign, lo, hi);
  return narrow(srl16<8>(add16(madd8(weights, lo), back)), srl16<8>(add16(madd8(weights, hi), back)));
}
#else
template <int N>
requires own<N> PPL_INLINE vec<N> join_clamp8(vec<N> e, vec<N> o) {
  const vec<N> x = narrow(e, o);
  return of(_mm_unpacklo_epi8(x.v, _mm_srli_si128(x.v, 8)));
}
template <int N>
requires own<N> PPL_INLINE vec<N> even_then_odd(vec<N> a) {
  return narrow(even(a), odd(a));
}
#endif

}  // namespace ppl::PPL_LEVEL

#include "simd/sse-inl.h"
#if defined(PPL_LEVEL_avx2) || defined(PPL_LEVEL_avx512)
#include "simd/avx2-inl.h"
#endif
#if defined(PPL_LEVEL_avx512)
#include "simd/avx512-inl.h"
#endif
