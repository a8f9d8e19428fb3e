// Vectors of 16, 32 and 64 bytes: thin values with named operations, one name for every width.
//
// A kernel is a template over the vector type V and is written once. This header is included by *_kernels.cpp
// only: those are compiled once per level, and everything here lives in the level's own namespace, so that code
// compiled for a wide processor can never be picked by the linker for a narrow one.
//
// Conventions. Memory order is lane order: lane 0 is the lowest address, whatever the width. u8 and 16-bit lanes
// share one type; the name of the operation tells the lanes. "even" and "odd" mean the bytes at even and odd
// addresses: a 16-bit lane holds an even byte low and the odd byte behind it high. Masks come from comparisons
// and go to select() and keep(); they are never stored.
#pragma once

#include <immintrin.h>
#include <stddef.h>
#include <stdint.h>

#ifndef PPL_LEVEL
#error "vector code is compiled once per level, with PPL_LEVEL set"
#endif
#define PPL_INLINE static inline __attribute__((always_inline))
#define PPL_INLINE_MEMBER inline __attribute__((always_inline))

namespace ppl::PPL_LEVEL {

template <int N>
struct vec;
template <int N>
struct mask8;  // one decision per byte
template <int N>
struct mask16;  // one decision per 16-bit lane

// ---- 16 bytes

template <>
struct vec<16> {
  static constexpr int size = 16;
  __m128i v;
};
template <>
struct mask8<16> {
  __m128i m;
};
template <>
struct mask16<16> {
  __m128i m;
};
PPL_INLINE void load_to(vec<16>& d, const void* p) {
  d.v = _mm_load_si128(static_cast<const __m128i*>(p));
}
PPL_INLINE void loadu_to(vec<16>& d, const void* p) {
  d.v = _mm_loadu_si128(static_cast<const __m128i*>(p));
}
// Half a vector of bytes as unsigned 16-bit lanes.
PPL_INLINE void load_widened_to(vec<16>& d, const void* p) {
  const __m128i bytes = _mm_loadl_epi64(static_cast<const __m128i*>(p));
#ifdef __SSE4_1__
  d.v = _mm_cvtepu8_epi16(bytes);
#else
  d.v = _mm_unpacklo_epi8(bytes, _mm_setzero_si128());
#endif
}
PPL_INLINE void store(void* p, vec<16> a) {
  _mm_store_si128(static_cast<__m128i*>(p), a.v);
}
PPL_INLINE void storeu(void* p, vec<16> a) {
  _mm_storeu_si128(static_cast<__m128i*>(p), a.v);
}
// The first half of a vector to one place, the second to another.
PPL_INLINE void store_halves(void* first, void* second, vec<16> a) {
  _mm_storel_epi64(static_cast<__m128i*>(first), a.v);
  _mm_storeh_pi(static_cast<__m64*>(second), _mm_castsi128_ps(a.v));
}
PPL_INLINE void zero_to(vec<16>& d) {
  d.v = _mm_setzero_si128();
}
PPL_INLINE void set8_to(vec<16>& d, int x) {
  d.v = _mm_set1_epi8(static_cast<char>(x));
}
PPL_INLINE void set16_to(vec<16>& d, int x) {
  d.v = _mm_set1_epi16(static_cast<short>(x));
}
PPL_INLINE void set32_to(vec<16>& d, int x) {
  d.v = _mm_set1_epi32(x);
}
PPL_INLINE void repeat16_to(vec<16>& d, const void* p) {
  d.v = _mm_loadu_si128(static_cast<const __m128i*>(p));
}
PPL_INLINE vec<16> operator&(vec<16> a, vec<16> b) {
  return {_mm_and_si128(a.v, b.v)};
}
PPL_INLINE vec<16> operator|(vec<16> a, vec<16> b) {
  return {_mm_or_si128(a.v, b.v)};
}
PPL_INLINE vec<16> operator^(vec<16> a, vec<16> b) {
  return {_mm_xor_si128(a.v, b.v)};
}
// ~a & b
PPL_INLINE vec<16> andnot(vec<16> a, vec<16> b) {
  return {_mm_andnot_si128(a.v, b.v)};
}
PPL_INLINE vec<16> add8(vec<16> a, vec<16> b) {
  return {_mm_add_epi8(a.v, b.v)};
}
PPL_INLINE vec<16> sub8(vec<16> a, vec<16> b) {
  return {_mm_sub_epi8(a.v, b.v)};
}
PPL_INLINE vec<16> adds_u8(vec<16> a, vec<16> b) {
  return {_mm_adds_epu8(a.v, b.v)};
}
PPL_INLINE vec<16> subs_u8(vec<16> a, vec<16> b) {
  return {_mm_subs_epu8(a.v, b.v)};
}
PPL_INLINE vec<16> avg8(vec<16> a, vec<16> b) {
  return {_mm_avg_epu8(a.v, b.v)};
}
PPL_INLINE vec<16> min_u8(vec<16> a, vec<16> b) {
  return {_mm_min_epu8(a.v, b.v)};
}
PPL_INLINE vec<16> max_u8(vec<16> a, vec<16> b) {
  return {_mm_max_epu8(a.v, b.v)};
}
PPL_INLINE vec<16> add16(vec<16> a, vec<16> b) {
  return {_mm_add_epi16(a.v, b.v)};
}
PPL_INLINE vec<16> sub16(vec<16> a, vec<16> b) {
  return {_mm_sub_epi16(a.v, b.v)};
}
PPL_INLINE vec<16> adds_s16(vec<16> a, vec<16> b) {
  return {_mm_adds_epi16(a.v, b.v)};
}
PPL_INLINE vec<16> subs_s16(vec<16> a, vec<16> b) {
  return {_mm_subs_epi16(a.v, b.v)};
}
PPL_INLINE vec<16> subs_u16(vec<16> a, vec<16> b) {
  return {_mm_subs_epu16(a.v, b.v)};
}
PPL_INLINE vec<16> mullo16(vec<16> a, vec<16> b) {
  return {_mm_mullo_epi16(a.v, b.v)};
}
PPL_INLINE vec<16> mulhi_s16(vec<16> a, vec<16> b) {
  return {_mm_mulhi_epi16(a.v, b.v)};
}
PPL_INLINE vec<16> mulhi_u16(vec<16> a, vec<16> b) {
  return {_mm_mulhi_epu16(a.v, b.v)};
}
PPL_INLINE vec<16> min_s16(vec<16> a, vec<16> b) {
  return {_mm_min_epi16(a.v, b.v)};
}
PPL_INLINE vec<16> max_s16(vec<16> a, vec<16> b) {
  return {_mm_max_epi16(a.v, b.v)};
}
PPL_INLINE vec<16> madd16(vec<16> a, vec<16> b) {
  return {_mm_madd_epi16(a.v, b.v)};
}
PPL_INLINE vec<16> add32(vec<16> a, vec<16> b) {
  return {_mm_add_epi32(a.v, b.v)};
}
PPL_INLINE vec<16> add64(vec<16> a, vec<16> b) {
  return {_mm_add_epi64(a.v, b.v)};
}
PPL_INLINE vec<16> sub32(vec<16> a, vec<16> b) {
  return {_mm_sub_epi32(a.v, b.v)};
}
// Sums of eight absolute byte differences, one per 64-bit lane.
PPL_INLINE vec<16> sad_u8(vec<16> a, vec<16> b) {
  return {_mm_sad_epu8(a.v, b.v)};
}
template <int S>
PPL_INLINE vec<16> sra16(vec<16> a) {
  return {_mm_srai_epi16(a.v, S)};
}
template <int S>
PPL_INLINE vec<16> srl16(vec<16> a) {
  return {_mm_srli_epi16(a.v, S)};
}
template <int S>
PPL_INLINE vec<16> sll16(vec<16> a) {
  return {_mm_slli_epi16(a.v, S)};
}
template <int S>
PPL_INLINE vec<16> srl32(vec<16> a) {
  return {_mm_srli_epi32(a.v, S)};
}
template <int S>
PPL_INLINE vec<16> sll32(vec<16> a) {
  return {_mm_slli_epi32(a.v, S)};
}
template <int S>
PPL_INLINE vec<16> sra32(vec<16> a) {
  return {_mm_srai_epi32(a.v, S)};
}
PPL_INLINE vec<16> absdiff_u8(vec<16> a, vec<16> b) {
  return subs_u8(a, b) | subs_u8(b, a);
}
PPL_INLINE vec<16> abs16(vec<16> a) {
#ifdef __SSSE3__
  return {_mm_abs_epi16(a.v)};
#else
  return {_mm_max_epi16(a.v, _mm_sub_epi16(_mm_setzero_si128(), a.v))};
#endif
}
PPL_INLINE mask8<16> le_u8(vec<16> a, vec<16> b) {
  return {_mm_cmpeq_epi8(_mm_subs_epu8(a.v, b.v), _mm_setzero_si128())};
}
PPL_INLINE mask8<16> eq8(vec<16> a, vec<16> b) {
  return {_mm_cmpeq_epi8(a.v, b.v)};
}
PPL_INLINE mask16<16> gt_s16(vec<16> a, vec<16> b) {
  return {_mm_cmpgt_epi16(a.v, b.v)};
}
PPL_INLINE mask16<16> eq16(vec<16> a, vec<16> b) {
  return {_mm_cmpeq_epi16(a.v, b.v)};
}
PPL_INLINE mask8<16> operator&(mask8<16> a, mask8<16> b) {
  return {_mm_and_si128(a.m, b.m)};
}
PPL_INLINE mask8<16> operator|(mask8<16> a, mask8<16> b) {
  return {_mm_or_si128(a.m, b.m)};
}
// a and not b
PPL_INLINE mask8<16> without(mask8<16> a, mask8<16> b) {
  return {_mm_andnot_si128(b.m, a.m)};
}
PPL_INLINE vec<16> select(mask8<16> m, vec<16> a, vec<16> b) {
#ifdef __SSE4_1__
  return {_mm_blendv_epi8(b.v, a.v, m.m)};
#else
  return {_mm_or_si128(_mm_and_si128(m.m, a.v), _mm_andnot_si128(m.m, b.v))};
#endif
}
// a where the mask holds, 0 elsewhere
PPL_INLINE vec<16> keep(mask8<16> m, vec<16> a) {
  return {_mm_and_si128(m.m, a.v)};
}
PPL_INLINE bool any(mask8<16> m) {
  return _mm_movemask_epi8(m.m) != 0;
}
// The mask as a vector: all ones where it holds.
PPL_INLINE vec<16> to_vec(mask8<16> m) {
  return {m.m};
}
PPL_INLINE mask16<16> operator&(mask16<16> a, mask16<16> b) {
  return {_mm_and_si128(a.m, b.m)};
}
PPL_INLINE mask16<16> operator|(mask16<16> a, mask16<16> b) {
  return {_mm_or_si128(a.m, b.m)};
}
// a and not b
PPL_INLINE mask16<16> without(mask16<16> a, mask16<16> b) {
  return {_mm_andnot_si128(b.m, a.m)};
}
PPL_INLINE vec<16> select(mask16<16> m, vec<16> a, vec<16> b) {
#ifdef __SSE4_1__
  return {_mm_blendv_epi8(b.v, a.v, m.m)};
#else
  return {_mm_or_si128(_mm_and_si128(m.m, a.v), _mm_andnot_si128(m.m, b.v))};
#endif
}
// a where the mask holds, 0 elsewhere
PPL_INLINE vec<16> keep(mask16<16> m, vec<16> a) {
  return {_mm_and_si128(m.m, a.v)};
}
PPL_INLINE bool any(mask16<16> m) {
  return _mm_movemask_epi8(m.m) != 0;
}
// The mask as a vector: all ones where it holds.
PPL_INLINE vec<16> to_vec(mask16<16> m) {
  return {m.m};
}
// A vector whose lanes are all ones or all zeros, as a mask.
PPL_INLINE mask8<16> to_mask8(vec<16> a) {
  return {a.v};
}
PPL_INLINE mask16<16> to_mask16(vec<16> a) {
  return {a.v};
}
// The decision of the even byte of each pair, for both bytes.
PPL_INLINE mask16<16> even_decides(mask8<16> m) {
  return {_mm_srai_epi16(_mm_slli_epi16(m.m, 8), 8)};
}
// Even bytes from a, odd bytes from b.
PPL_INLINE vec<16> even_odd(vec<16> a, vec<16> b) {
  const __m128i m = _mm_set1_epi16(0x00ff);
  return {_mm_or_si128(_mm_and_si128(m, a.v), _mm_andnot_si128(m, b.v))};
}
// Even and odd bytes as unsigned 16-bit lanes.
PPL_INLINE vec<16> even(vec<16> a) {
  return {_mm_and_si128(a.v, _mm_set1_epi16(0x00ff))};
}
PPL_INLINE vec<16> odd(vec<16> a) {
  return srl16<8>(a);
}
// Even and odd bytes as signed 16-bit lanes.
PPL_INLINE vec<16> even_s8(vec<16> a) {
  return sra16<8>(sll16<8>(a));
}
PPL_INLINE vec<16> odd_s8(vec<16> a) {
  return sra16<8>(a);
}
// Signed 16-bit lanes clamped to 0..255.
PPL_INLINE vec<16> clamp_u8_16(vec<16> a) {
  return {_mm_min_epi16(_mm_max_epi16(a.v, _mm_setzero_si128()), _mm_set1_epi16(255))};
}
// Lanes already within 0..255, joined to bytes: e at even places, o at odd ones.
PPL_INLINE vec<16> join8(vec<16> e, vec<16> o) {
  return e | sll16<8>(o);
}
// The same with a clamp of signed lanes to 0..255.
PPL_INLINE vec<16> join_clamp8(vec<16> e, vec<16> o) {
  const __m128i x = _mm_packus_epi16(e.v, o.v);
#ifdef __SSSE3__
  return {_mm_shuffle_epi8(x, _mm_set_epi8(15, 7, 14, 6, 13, 5, 12, 4, 11, 3, 10, 2, 9, 1, 8, 0))};
#else
  return {_mm_unpacklo_epi8(x, _mm_srli_si128(x, 8))};
#endif
}
// Signed 16-bit lanes of lo, then of hi, clamped to 0..255, in memory order.
PPL_INLINE vec<16> pack_u8(vec<16> lo, vec<16> hi) {
  return {_mm_packus_epi16(lo.v, hi.v)};
}
// a0 b0 a1 b1 ... by bytes and by 16-bit lanes: the first and the second half of the interleaved run.
PPL_INLINE void interleave8(vec<16> a, vec<16> b, vec<16>& first, vec<16>& second) {
  first.v = _mm_unpacklo_epi8(a.v, b.v);
  second.v = _mm_unpackhi_epi8(a.v, b.v);
}
PPL_INLINE void interleave16(vec<16> a, vec<16> b, vec<16>& first, vec<16>& second) {
  first.v = _mm_unpacklo_epi16(a.v, b.v);
  second.v = _mm_unpackhi_epi16(a.v, b.v);
}
PPL_INLINE vec<16> reverse16(vec<16> a) {
  const __m128i x = _mm_shufflehi_epi16(_mm_shufflelo_epi16(a.v, 0x1b), 0x1b);
  return {_mm_shuffle_epi32(x, 0x4e)};
}
PPL_INLINE vec<16> reverse8(vec<16> a) {
#ifdef __SSSE3__
  return {_mm_shuffle_epi8(a.v, _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15))};
#else
  return reverse16({_mm_or_si128(_mm_slli_epi16(a.v, 8), _mm_srli_epi16(a.v, 8))});
#endif
}
// 16-bit lanes of a, each one place up; the first is the last of `before`.
PPL_INLINE vec<16> move_up16(vec<16> before, vec<16> a) {
#ifdef __SSSE3__
  return {_mm_alignr_epi8(a.v, before.v, 14)};
#else
  return {_mm_or_si128(_mm_slli_si128(a.v, 2), _mm_srli_si128(before.v, 14))};
#endif
}
// Bytes as 16-bit lanes in two vectors, in an order of this width's own that narrow() undoes.
PPL_INLINE void widen(vec<16> a, vec<16>& lo, vec<16>& hi) {
  lo.v = _mm_unpacklo_epi8(a.v, _mm_setzero_si128());
  hi.v = _mm_unpackhi_epi8(a.v, _mm_setzero_si128());
}
// Signed lanes clamped to 0..255.
PPL_INLINE vec<16> narrow(vec<16> lo, vec<16> hi) {
  return {_mm_packus_epi16(lo.v, hi.v)};
}
// 16-bit lanes from memory, in the order of widen().
PPL_INLINE void loadu_words(const void* p, vec<16>& lo, vec<16>& hi) {
  loadu_to(lo, p);
  loadu_to(hi, static_cast<const char*>(p) + 16);
}
// Byte pairs a0 b0 a1 b1 ... as 16-bit lanes, in the order of widen().
PPL_INLINE void widen_pairs(vec<16> a, vec<16> b, vec<16>& lo, vec<16>& hi) {
  lo.v = _mm_unpacklo_epi8(a.v, b.v);
  hi.v = _mm_unpackhi_epi8(a.v, b.v);
}
#ifdef __SSSE3__
// Bytes picked within each 16; where the top bit of `at` is set, 0.
PPL_INLINE vec<16> shuffle8(vec<16> a, vec<16> at) {
  return {_mm_shuffle_epi8(a.v, at.v)};
}
// Sums of two products, bytes of u unsigned and of s signed, to saturated 16-bit lanes.
PPL_INLINE vec<16> madd8(vec<16> u, vec<16> s) {
  return {_mm_maddubs_epi16(u.v, s.v)};
}
#endif
// Within each 16 bytes: signed 32-bit lanes of a, then of b, clamped to 16 bits; the upper halves of a and b; 32-bit
// lanes of a and b in turn, from their lower (upper) halves; the even 32-bit lanes of a, then of b; lanes by number.
PPL_INLINE vec<16> narrow_s32(vec<16> a, vec<16> b) {
  return {_mm_packs_epi32(a.v, b.v)};
}
PPL_INLINE vec<16> upper64(vec<16> a, vec<16> b) {
  return {_mm_unpackhi_epi64(a.v, b.v)};
}
PPL_INLINE vec<16> lower32(vec<16> a, vec<16> b) {
  return {_mm_unpacklo_epi32(a.v, b.v)};
}
PPL_INLINE vec<16> upper32(vec<16> a, vec<16> b) {
  return {_mm_unpackhi_epi32(a.v, b.v)};
}
PPL_INLINE vec<16> even_lanes32(vec<16> a, vec<16> b) {
  return {_mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a.v), _mm_castsi128_ps(b.v), 0x88))};
}
template <int I0, int I1, int I2, int I3>
PPL_INLINE vec<16> shuffle32(vec<16> a) {
  return {_mm_shuffle_epi32(a.v, I0 | I1 << 2 | I2 << 4 | I3 << 6)};
}
// The even byte of each 16-bit lane less the odd one.
PPL_INLINE vec<16> even_minus_odd(vec<16> a) {
#ifdef __SSSE3__
  return {_mm_maddubs_epi16(a.v, _mm_set1_epi16(static_cast<short>(0xff01)))};
#else
  return sub16(even(a), odd(a));
#endif
}
// Within each 16 bytes: the even bytes, then the odd ones.
PPL_INLINE vec<16> even_then_odd(vec<16> a) {
#ifdef __SSSE3__
  return {_mm_shuffle_epi8(a.v, _mm_set_epi8(15, 13, 11, 9, 7, 5, 3, 1, 14, 12, 10, 8, 6, 4, 2, 0))};
#else
  return narrow(even(a), odd(a));
#endif
}
// kTimes (1, 2, 4) the sums of the bytes of a and b, widened likewise.
template <int kTimes>
PPL_INLINE void widen_sum(vec<16> a, vec<16> b, vec<16>& lo, vec<16>& hi) {
#ifdef __SSSE3__
  lo.v = _mm_maddubs_epi16(_mm_unpacklo_epi8(a.v, b.v), _mm_set1_epi8(kTimes));
  hi.v = _mm_maddubs_epi16(_mm_unpackhi_epi8(a.v, b.v), _mm_set1_epi8(kTimes));
#else
  vec<16> a_lo, a_hi, b_lo, b_hi;
  widen(a, a_lo, a_hi);
  widen(b, b_lo, b_hi);
  lo = sll16<kTimes / 2>(add16(a_lo, b_lo));
  hi = sll16<kTimes / 2>(add16(a_hi, b_hi));
#endif
}
// The even (odd) bytes of a, then those of b, in memory order.
PPL_INLINE vec<16> even_bytes(vec<16> a, vec<16> b) {
  return pack_u8(even(a), even(b));
}
PPL_INLINE vec<16> odd_bytes(vec<16> a, vec<16> b) {
  return pack_u8(odd(a), odd(b));
}
#if defined(PPL_LEVEL_avx2) || defined(PPL_LEVEL_avx512)
// ---- 32 bytes

template <>
struct vec<32> {
  static constexpr int size = 32;
  __m256i v;
};
template <>
struct mask8<32> {
  __m256i m;
};
template <>
struct mask16<32> {
  __m256i m;
};
PPL_INLINE void load_to(vec<32>& d, const void* p) {
  d.v = _mm256_load_si256(static_cast<const __m256i*>(p));
}
PPL_INLINE void loadu_to(vec<32>& d, const void* p) {
  d.v = _mm256_loadu_si256(static_cast<const __m256i*>(p));
}
PPL_INLINE void load_widened_to(vec<32>& d, const void* p) {
  d.v = _mm256_cvtepu8_epi16(_mm_loadu_si128(static_cast<const __m128i*>(p)));
}
PPL_INLINE void store(void* p, vec<32> a) {
  _mm256_store_si256(static_cast<__m256i*>(p), a.v);
}
PPL_INLINE void storeu(void* p, vec<32> a) {
  _mm256_storeu_si256(static_cast<__m256i*>(p), a.v);
}
PPL_INLINE void store_halves(void* first, void* second, vec<32> a) {
  _mm_storeu_si128(static_cast<__m128i*>(first), _mm256_castsi256_si128(a.v));
  _mm_storeu_si128(static_cast<__m128i*>(second), _mm256_extracti128_si256(a.v, 1));
}
PPL_INLINE void zero_to(vec<32>& d) {
  d.v = _mm256_setzero_si256();
}
PPL_INLINE void set8_to(vec<32>& d, int x) {
  d.v = _mm256_set1_epi8(static_cast<char>(x));
}
PPL_INLINE void set16_to(vec<32>& d, int x) {
  d.v = _mm256_set1_epi16(static_cast<short>(x));
}
PPL_INLINE void set32_to(vec<32>& d, int x) {
  d.v = _mm256_set1_epi32(x);
}
PPL_INLINE void repeat16_to(vec<32>& d, const void* p) {
  d.v = _mm256_broadcastsi128_si256(_mm_loadu_si128(static_cast<const __m128i*>(p)));
}
PPL_INLINE vec<32> operator&(vec<32> a, vec<32> b) {
  return {_mm256_and_si256(a.v, b.v)};
}
PPL_INLINE vec<32> operator|(vec<32> a, vec<32> b) {
  return {_mm256_or_si256(a.v, b.v)};
}
PPL_INLINE vec<32> operator^(vec<32> a, vec<32> b) {
  return {_mm256_xor_si256(a.v, b.v)};
}
// ~a & b
PPL_INLINE vec<32> andnot(vec<32> a, vec<32> b) {
  return {_mm256_andnot_si256(a.v, b.v)};
}
PPL_INLINE vec<32> add8(vec<32> a, vec<32> b) {
  return {_mm256_add_epi8(a.v, b.v)};
}
PPL_INLINE vec<32> sub8(vec<32> a, vec<32> b) {
  return {_mm256_sub_epi8(a.v, b.v)};
}
PPL_INLINE vec<32> adds_u8(vec<32> a, vec<32> b) {
  return {_mm256_adds_epu8(a.v, b.v)};
}
PPL_INLINE vec<32> subs_u8(vec<32> a, vec<32> b) {
  return {_mm256_subs_epu8(a.v, b.v)};
}
PPL_INLINE vec<32> avg8(vec<32> a, vec<32> b) {
  return {_mm256_avg_epu8(a.v, b.v)};
}
PPL_INLINE vec<32> min_u8(vec<32> a, vec<32> b) {
  return {_mm256_min_epu8(a.v, b.v)};
}
PPL_INLINE vec<32> max_u8(vec<32> a, vec<32> b) {
  return {_mm256_max_epu8(a.v, b.v)};
}
PPL_INLINE vec<32> add16(vec<32> a, vec<32> b) {
  return {_mm256_add_epi16(a.v, b.v)};
}
PPL_INLINE vec<32> sub16(vec<32> a, vec<32> b) {
  return {_mm256_sub_epi16(a.v, b.v)};
}
PPL_INLINE vec<32> adds_s16(vec<32> a, vec<32> b) {
  return {_mm256_adds_epi16(a.v, b.v)};
}
PPL_INLINE vec<32> subs_s16(vec<32> a, vec<32> b) {
  return {_mm256_subs_epi16(a.v, b.v)};
}
PPL_INLINE vec<32> subs_u16(vec<32> a, vec<32> b) {
  return {_mm256_subs_epu16(a.v, b.v)};
}
PPL_INLINE vec<32> mullo16(vec<32> a, vec<32> b) {
  return {_mm256_mullo_epi16(a.v, b.v)};
}
PPL_INLINE vec<32> mulhi_s16(vec<32> a, vec<32> b) {
  return {_mm256_mulhi_epi16(a.v, b.v)};
}
PPL_INLINE vec<32> mulhi_u16(vec<32> a, vec<32> b) {
  return {_mm256_mulhi_epu16(a.v, b.v)};
}
PPL_INLINE vec<32> min_s16(vec<32> a, vec<32> b) {
  return {_mm256_min_epi16(a.v, b.v)};
}
PPL_INLINE vec<32> max_s16(vec<32> a, vec<32> b) {
  return {_mm256_max_epi16(a.v, b.v)};
}
PPL_INLINE vec<32> madd16(vec<32> a, vec<32> b) {
  return {_mm256_madd_epi16(a.v, b.v)};
}
PPL_INLINE vec<32> add32(vec<32> a, vec<32> b) {
  return {_mm256_add_epi32(a.v, b.v)};
}
PPL_INLINE vec<32> add64(vec<32> a, vec<32> b) {
  return {_mm256_add_epi64(a.v, b.v)};
}
PPL_INLINE vec<32> sub32(vec<32> a, vec<32> b) {
  return {_mm256_sub_epi32(a.v, b.v)};
}
// Sums of eight absolute byte differences, one per 64-bit lane.
PPL_INLINE vec<32> sad_u8(vec<32> a, vec<32> b) {
  return {_mm256_sad_epu8(a.v, b.v)};
}
template <int S>
PPL_INLINE vec<32> sra16(vec<32> a) {
  return {_mm256_srai_epi16(a.v, S)};
}
template <int S>
PPL_INLINE vec<32> srl16(vec<32> a) {
  return {_mm256_srli_epi16(a.v, S)};
}
template <int S>
PPL_INLINE vec<32> sll16(vec<32> a) {
  return {_mm256_slli_epi16(a.v, S)};
}
template <int S>
PPL_INLINE vec<32> srl32(vec<32> a) {
  return {_mm256_srli_epi32(a.v, S)};
}
template <int S>
PPL_INLINE vec<32> sll32(vec<32> a) {
  return {_mm256_slli_epi32(a.v, S)};
}
template <int S>
PPL_INLINE vec<32> sra32(vec<32> a) {
  return {_mm256_srai_epi32(a.v, S)};
}
PPL_INLINE vec<32> absdiff_u8(vec<32> a, vec<32> b) {
  return subs_u8(a, b) | subs_u8(b, a);
}
PPL_INLINE vec<32> abs16(vec<32> a) {
  return {_mm256_abs_epi16(a.v)};
}
PPL_INLINE mask8<32> le_u8(vec<32> a, vec<32> b) {
  return {_mm256_cmpeq_epi8(_mm256_subs_epu8(a.v, b.v), _mm256_setzero_si256())};
}
PPL_INLINE mask8<32> eq8(vec<32> a, vec<32> b) {
  return {_mm256_cmpeq_epi8(a.v, b.v)};
}
PPL_INLINE mask16<32> gt_s16(vec<32> a, vec<32> b) {
  return {_mm256_cmpgt_epi16(a.v, b.v)};
}
PPL_INLINE mask16<32> eq16(vec<32> a, vec<32> b) {
  return {_mm256_cmpeq_epi16(a.v, b.v)};
}
PPL_INLINE mask8<32> operator&(mask8<32> a, mask8<32> b) {
  return {_mm256_and_si256(a.m, b.m)};
}
PPL_INLINE mask8<32> operator|(mask8<32> a, mask8<32> b) {
  return {_mm256_or_si256(a.m, b.m)};
}
// a and not b
PPL_INLINE mask8<32> without(mask8<32> a, mask8<32> b) {
  return {_mm256_andnot_si256(b.m, a.m)};
}
PPL_INLINE vec<32> select(mask8<32> m, vec<32> a, vec<32> b) {
  return {_mm256_blendv_epi8(b.v, a.v, m.m)};
}
// a where the mask holds, 0 elsewhere
PPL_INLINE vec<32> keep(mask8<32> m, vec<32> a) {
  return {_mm256_and_si256(m.m, a.v)};
}
PPL_INLINE bool any(mask8<32> m) {
  return _mm256_movemask_epi8(m.m) != 0;
}
// The mask as a vector: all ones where it holds.
PPL_INLINE vec<32> to_vec(mask8<32> m) {
  return {m.m};
}
PPL_INLINE mask16<32> operator&(mask16<32> a, mask16<32> b) {
  return {_mm256_and_si256(a.m, b.m)};
}
PPL_INLINE mask16<32> operator|(mask16<32> a, mask16<32> b) {
  return {_mm256_or_si256(a.m, b.m)};
}
// a and not b
PPL_INLINE mask16<32> without(mask16<32> a, mask16<32> b) {
  return {_mm256_andnot_si256(b.m, a.m)};
}
PPL_INLINE vec<32> select(mask16<32> m, vec<32> a, vec<32> b) {
  return {_mm256_blendv_epi8(b.v, a.v, m.m)};
}
// a where the mask holds, 0 elsewhere
PPL_INLINE vec<32> keep(mask16<32> m, vec<32> a) {
  return {_mm256_and_si256(m.m, a.v)};
}
PPL_INLINE bool any(mask16<32> m) {
  return _mm256_movemask_epi8(m.m) != 0;
}
// The mask as a vector: all ones where it holds.
PPL_INLINE vec<32> to_vec(mask16<32> m) {
  return {m.m};
}
// A vector whose lanes are all ones or all zeros, as a mask.
PPL_INLINE mask8<32> to_mask8(vec<32> a) {
  return {a.v};
}
PPL_INLINE mask16<32> to_mask16(vec<32> a) {
  return {a.v};
}
// The decision of the even byte of each pair, for both bytes.
PPL_INLINE mask16<32> even_decides(mask8<32> m) {
  return {_mm256_srai_epi16(_mm256_slli_epi16(m.m, 8), 8)};
}
// Even bytes from a, odd bytes from b.
PPL_INLINE vec<32> even_odd(vec<32> a, vec<32> b) {
  const __m256i m = _mm256_set1_epi16(0x00ff);
  return {_mm256_or_si256(_mm256_and_si256(m, a.v), _mm256_andnot_si256(m, b.v))};
}
// Even and odd bytes as unsigned 16-bit lanes.
PPL_INLINE vec<32> even(vec<32> a) {
  return {_mm256_and_si256(a.v, _mm256_set1_epi16(0x00ff))};
}
PPL_INLINE vec<32> odd(vec<32> a) {
  return srl16<8>(a);
}
// Even and odd bytes as signed 16-bit lanes.
PPL_INLINE vec<32> even_s8(vec<32> a) {
  return sra16<8>(sll16<8>(a));
}
PPL_INLINE vec<32> odd_s8(vec<32> a) {
  return sra16<8>(a);
}
// Signed 16-bit lanes clamped to 0..255.
PPL_INLINE vec<32> clamp_u8_16(vec<32> a) {
  return {_mm256_min_epi16(_mm256_max_epi16(a.v, _mm256_setzero_si256()), _mm256_set1_epi16(255))};
}
// Lanes already within 0..255, joined to bytes: e at even places, o at odd ones.
PPL_INLINE vec<32> join8(vec<32> e, vec<32> o) {
  return e | sll16<8>(o);
}
// The same with a clamp of signed lanes to 0..255.
PPL_INLINE vec<32> join_clamp8(vec<32> e, vec<32> o) {
  const __m128i order = _mm_set_epi8(15, 7, 14, 6, 13, 5, 12, 4, 11, 3, 10, 2, 9, 1, 8, 0);
  return {_mm256_shuffle_epi8(_mm256_packus_epi16(e.v, o.v), _mm256_broadcastsi128_si256(order))};
}
PPL_INLINE vec<32> pack_u8(vec<32> lo, vec<32> hi) {
  return {_mm256_permute4x64_epi64(_mm256_packus_epi16(lo.v, hi.v), 0xd8)};
}
PPL_INLINE void interleave8(vec<32> a, vec<32> b, vec<32>& first, vec<32>& second) {
  const __m256i lo = _mm256_unpacklo_epi8(a.v, b.v), hi = _mm256_unpackhi_epi8(a.v, b.v);
  first.v = _mm256_permute2x128_si256(lo, hi, 0x20);
  second.v = _mm256_permute2x128_si256(lo, hi, 0x31);
}
PPL_INLINE void interleave16(vec<32> a, vec<32> b, vec<32>& first, vec<32>& second) {
  const __m256i lo = _mm256_unpacklo_epi16(a.v, b.v), hi = _mm256_unpackhi_epi16(a.v, b.v);
  first.v = _mm256_permute2x128_si256(lo, hi, 0x20);
  second.v = _mm256_permute2x128_si256(lo, hi, 0x31);
}
PPL_INLINE vec<32> reverse16(vec<32> a) {
  const __m256i x = _mm256_shuffle_epi8(
      a.v, _mm256_broadcastsi128_si256(_mm_set_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14)));
  return {_mm256_permute4x64_epi64(x, 0x4e)};
}
PPL_INLINE vec<32> reverse8(vec<32> a) {
  const __m256i x = _mm256_shuffle_epi8(
      a.v, _mm256_broadcastsi128_si256(_mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15)));
  return {_mm256_permute4x64_epi64(x, 0x4e)};
}
PPL_INLINE vec<32> move_up16(vec<32> before, vec<32> a) {
  return {_mm256_alignr_epi8(a.v, _mm256_permute2x128_si256(before.v, a.v, 0x21), 14)};
}
// Bytes as 16-bit lanes in two vectors, in an order of this width's own that narrow() undoes.
PPL_INLINE void widen(vec<32> a, vec<32>& lo, vec<32>& hi) {
  lo.v = _mm256_unpacklo_epi8(a.v, _mm256_setzero_si256());
  hi.v = _mm256_unpackhi_epi8(a.v, _mm256_setzero_si256());
}
// Signed lanes clamped to 0..255.
PPL_INLINE vec<32> narrow(vec<32> lo, vec<32> hi) {
  return {_mm256_packus_epi16(lo.v, hi.v)};
}
// 16-bit lanes from memory, in the order of widen().
PPL_INLINE void loadu_words(const void* p, vec<32>& lo, vec<32>& hi) {
  const __m128i* const from = static_cast<const __m128i*>(p);
  const auto two = [&](int a, int b) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(from + a)),
                                   _mm_loadu_si128(from + b), 1);
  };
  lo.v = two(0, 2);
  hi.v = two(1, 3);
}
// Byte pairs a0 b0 a1 b1 ... as 16-bit lanes, in the order of widen().
PPL_INLINE void widen_pairs(vec<32> a, vec<32> b, vec<32>& lo, vec<32>& hi) {
  lo.v = _mm256_unpacklo_epi8(a.v, b.v);
  hi.v = _mm256_unpackhi_epi8(a.v, b.v);
}
// Bytes picked within each 16; where the top bit of `at` is set, 0.
PPL_INLINE vec<32> shuffle8(vec<32> a, vec<32> at) {
  return {_mm256_shuffle_epi8(a.v, at.v)};
}
// Sums of two products, bytes of u unsigned and of s signed, to saturated 16-bit lanes.
PPL_INLINE vec<32> madd8(vec<32> u, vec<32> s) {
  return {_mm256_maddubs_epi16(u.v, s.v)};
}
// Within each 16 bytes: signed 32-bit lanes of a, then of b, clamped to 16 bits; the upper halves of a and b; 32-bit
// lanes of a and b in turn, from their lower (upper) halves; the even 32-bit lanes of a, then of b; lanes by number.
PPL_INLINE vec<32> narrow_s32(vec<32> a, vec<32> b) {
  return {_mm256_packs_epi32(a.v, b.v)};
}
PPL_INLINE vec<32> upper64(vec<32> a, vec<32> b) {
  return {_mm256_unpackhi_epi64(a.v, b.v)};
}
PPL_INLINE vec<32> lower32(vec<32> a, vec<32> b) {
  return {_mm256_unpacklo_epi32(a.v, b.v)};
}
PPL_INLINE vec<32> upper32(vec<32> a, vec<32> b) {
  return {_mm256_unpackhi_epi32(a.v, b.v)};
}
PPL_INLINE vec<32> even_lanes32(vec<32> a, vec<32> b) {
  return {_mm256_castps_si256(_mm256_shuffle_ps(_mm256_castsi256_ps(a.v), _mm256_castsi256_ps(b.v), 0x88))};
}
template <int I0, int I1, int I2, int I3>
PPL_INLINE vec<32> shuffle32(vec<32> a) {
  return {_mm256_shuffle_epi32(a.v, I0 | I1 << 2 | I2 << 4 | I3 << 6)};
}
// The even byte of each 16-bit lane less the odd one.
PPL_INLINE vec<32> even_minus_odd(vec<32> a) {
  return {_mm256_maddubs_epi16(a.v, _mm256_set1_epi16(static_cast<short>(0xff01)))};
}
// Within each 16 bytes: the even bytes, then the odd ones.
PPL_INLINE vec<32> even_then_odd(vec<32> a) {
  return {_mm256_shuffle_epi8(
      a.v, _mm256_broadcastsi128_si256(_mm_set_epi8(15, 13, 11, 9, 7, 5, 3, 1, 14, 12, 10, 8, 6, 4, 2, 0)))};
}
// kTimes (1, 2, 4) the sums of the bytes of a and b, widened likewise.
template <int kTimes>
PPL_INLINE void widen_sum(vec<32> a, vec<32> b, vec<32>& lo, vec<32>& hi) {
  lo.v = _mm256_maddubs_epi16(_mm256_unpacklo_epi8(a.v, b.v), _mm256_set1_epi8(kTimes));
  hi.v = _mm256_maddubs_epi16(_mm256_unpackhi_epi8(a.v, b.v), _mm256_set1_epi8(kTimes));
}
// The even (odd) bytes of a, then those of b, in memory order.
PPL_INLINE vec<32> even_bytes(vec<32> a, vec<32> b) {
  return pack_u8(even(a), even(b));
}
PPL_INLINE vec<32> odd_bytes(vec<32> a, vec<32> b) {
  return pack_u8(odd(a), odd(b));
}
#endif
#if defined(PPL_LEVEL_avx512)
// ---- 64 bytes

template <>
struct vec<64> {
  static constexpr int size = 64;
  __m512i v;
};
template <>
struct mask8<64> {
  __mmask64 m;
};
template <>
struct mask16<64> {
  __mmask32 m;
};
PPL_INLINE void load_to(vec<64>& d, const void* p) {
  d.v = _mm512_load_si512(static_cast<const __m512i*>(p));
}
PPL_INLINE void loadu_to(vec<64>& d, const void* p) {
  d.v = _mm512_loadu_si512(static_cast<const __m512i*>(p));
}
PPL_INLINE void load_widened_to(vec<64>& d, const void* p) {
  d.v = _mm512_cvtepu8_epi16(_mm256_loadu_si256(static_cast<const __m256i*>(p)));
}
PPL_INLINE void store(void* p, vec<64> a) {
  _mm512_store_si512(static_cast<__m512i*>(p), a.v);
}
PPL_INLINE void storeu(void* p, vec<64> a) {
  _mm512_storeu_si512(static_cast<__m512i*>(p), a.v);
}
PPL_INLINE void store_halves(void* first, void* second, vec<64> a) {
  _mm256_storeu_si256(static_cast<__m256i*>(first), _mm512_castsi512_si256(a.v));
  _mm256_storeu_si256(static_cast<__m256i*>(second), _mm512_extracti64x4_epi64(a.v, 1));
}
PPL_INLINE void zero_to(vec<64>& d) {
  d.v = _mm512_setzero_si512();
}
PPL_INLINE void set8_to(vec<64>& d, int x) {
  d.v = _mm512_set1_epi8(static_cast<char>(x));
}
PPL_INLINE void set16_to(vec<64>& d, int x) {
  d.v = _mm512_set1_epi16(static_cast<short>(x));
}
PPL_INLINE void set32_to(vec<64>& d, int x) {
  d.v = _mm512_set1_epi32(x);
}
PPL_INLINE void repeat16_to(vec<64>& d, const void* p) {
  d.v = _mm512_broadcast_i32x4(_mm_loadu_si128(static_cast<const __m128i*>(p)));
}
PPL_INLINE vec<64> operator&(vec<64> a, vec<64> b) {
  return {_mm512_and_si512(a.v, b.v)};
}
PPL_INLINE vec<64> operator|(vec<64> a, vec<64> b) {
  return {_mm512_or_si512(a.v, b.v)};
}
PPL_INLINE vec<64> operator^(vec<64> a, vec<64> b) {
  return {_mm512_xor_si512(a.v, b.v)};
}
// ~a & b
PPL_INLINE vec<64> andnot(vec<64> a, vec<64> b) {
  return {_mm512_andnot_si512(a.v, b.v)};
}
PPL_INLINE vec<64> add8(vec<64> a, vec<64> b) {
  return {_mm512_add_epi8(a.v, b.v)};
}
PPL_INLINE vec<64> sub8(vec<64> a, vec<64> b) {
  return {_mm512_sub_epi8(a.v, b.v)};
}
PPL_INLINE vec<64> adds_u8(vec<64> a, vec<64> b) {
  return {_mm512_adds_epu8(a.v, b.v)};
}
PPL_INLINE vec<64> subs_u8(vec<64> a, vec<64> b) {
  return {_mm512_subs_epu8(a.v, b.v)};
}
PPL_INLINE vec<64> avg8(vec<64> a, vec<64> b) {
  return {_mm512_avg_epu8(a.v, b.v)};
}
PPL_INLINE vec<64> min_u8(vec<64> a, vec<64> b) {
  return {_mm512_min_epu8(a.v, b.v)};
}
PPL_INLINE vec<64> max_u8(vec<64> a, vec<64> b) {
  return {_mm512_max_epu8(a.v, b.v)};
}
PPL_INLINE vec<64> add16(vec<64> a, vec<64> b) {
  return {_mm512_add_epi16(a.v, b.v)};
}
PPL_INLINE vec<64> sub16(vec<64> a, vec<64> b) {
  return {_mm512_sub_epi16(a.v, b.v)};
}
PPL_INLINE vec<64> adds_s16(vec<64> a, vec<64> b) {
  return {_mm512_adds_epi16(a.v, b.v)};
}
PPL_INLINE vec<64> subs_s16(vec<64> a, vec<64> b) {
  return {_mm512_subs_epi16(a.v, b.v)};
}
PPL_INLINE vec<64> subs_u16(vec<64> a, vec<64> b) {
  return {_mm512_subs_epu16(a.v, b.v)};
}
PPL_INLINE vec<64> mullo16(vec<64> a, vec<64> b) {
  return {_mm512_mullo_epi16(a.v, b.v)};
}
PPL_INLINE vec<64> mulhi_s16(vec<64> a, vec<64> b) {
  return {_mm512_mulhi_epi16(a.v, b.v)};
}
PPL_INLINE vec<64> mulhi_u16(vec<64> a, vec<64> b) {
  return {_mm512_mulhi_epu16(a.v, b.v)};
}
PPL_INLINE vec<64> min_s16(vec<64> a, vec<64> b) {
  return {_mm512_min_epi16(a.v, b.v)};
}
PPL_INLINE vec<64> max_s16(vec<64> a, vec<64> b) {
  return {_mm512_max_epi16(a.v, b.v)};
}
PPL_INLINE vec<64> madd16(vec<64> a, vec<64> b) {
  return {_mm512_madd_epi16(a.v, b.v)};
}
PPL_INLINE vec<64> add32(vec<64> a, vec<64> b) {
  return {_mm512_add_epi32(a.v, b.v)};
}
PPL_INLINE vec<64> add64(vec<64> a, vec<64> b) {
  return {_mm512_add_epi64(a.v, b.v)};
}
PPL_INLINE vec<64> sub32(vec<64> a, vec<64> b) {
  return {_mm512_sub_epi32(a.v, b.v)};
}
// Sums of eight absolute byte differences, one per 64-bit lane.
PPL_INLINE vec<64> sad_u8(vec<64> a, vec<64> b) {
  return {_mm512_sad_epu8(a.v, b.v)};
}
template <int S>
PPL_INLINE vec<64> sra16(vec<64> a) {
  return {_mm512_srai_epi16(a.v, S)};
}
template <int S>
PPL_INLINE vec<64> srl16(vec<64> a) {
  return {_mm512_srli_epi16(a.v, S)};
}
template <int S>
PPL_INLINE vec<64> sll16(vec<64> a) {
  return {_mm512_slli_epi16(a.v, S)};
}
template <int S>
PPL_INLINE vec<64> srl32(vec<64> a) {
  return {_mm512_srli_epi32(a.v, S)};
}
template <int S>
PPL_INLINE vec<64> sll32(vec<64> a) {
  return {_mm512_slli_epi32(a.v, S)};
}
template <int S>
PPL_INLINE vec<64> sra32(vec<64> a) {
  return {_mm512_srai_epi32(a.v, S)};
}
PPL_INLINE vec<64> absdiff_u8(vec<64> a, vec<64> b) {
  return subs_u8(a, b) | subs_u8(b, a);
}
PPL_INLINE vec<64> abs16(vec<64> a) {
  return {_mm512_abs_epi16(a.v)};
}
PPL_INLINE mask8<64> le_u8(vec<64> a, vec<64> b) {
  return {_mm512_cmple_epu8_mask(a.v, b.v)};
}
PPL_INLINE mask8<64> eq8(vec<64> a, vec<64> b) {
  return {_mm512_cmpeq_epi8_mask(a.v, b.v)};
}
PPL_INLINE mask16<64> gt_s16(vec<64> a, vec<64> b) {
  return {_mm512_cmpgt_epi16_mask(a.v, b.v)};
}
PPL_INLINE mask16<64> eq16(vec<64> a, vec<64> b) {
  return {_mm512_cmpeq_epi16_mask(a.v, b.v)};
}
PPL_INLINE mask8<64> operator&(mask8<64> a, mask8<64> b) {
  return {static_cast<__mmask64>(a.m & b.m)};
}
PPL_INLINE mask8<64> operator|(mask8<64> a, mask8<64> b) {
  return {static_cast<__mmask64>(a.m | b.m)};
}
PPL_INLINE mask8<64> without(mask8<64> a, mask8<64> b) {
  return {static_cast<__mmask64>(a.m & ~b.m)};
}
PPL_INLINE vec<64> select(mask8<64> m, vec<64> a, vec<64> b) {
  return {_mm512_mask_blend_epi8(m.m, b.v, a.v)};
}
PPL_INLINE vec<64> keep(mask8<64> m, vec<64> a) {
  return {_mm512_maskz_mov_epi8(m.m, a.v)};
}
PPL_INLINE bool any(mask8<64> m) {
  return m.m != 0;
}
PPL_INLINE vec<64> to_vec(mask8<64> m) {
  return {_mm512_movm_epi8(m.m)};
}
PPL_INLINE mask16<64> operator&(mask16<64> a, mask16<64> b) {
  return {static_cast<__mmask32>(a.m & b.m)};
}
PPL_INLINE mask16<64> operator|(mask16<64> a, mask16<64> b) {
  return {static_cast<__mmask32>(a.m | b.m)};
}
PPL_INLINE mask16<64> without(mask16<64> a, mask16<64> b) {
  return {static_cast<__mmask32>(a.m & ~b.m)};
}
PPL_INLINE vec<64> select(mask16<64> m, vec<64> a, vec<64> b) {
  return {_mm512_mask_blend_epi16(m.m, b.v, a.v)};
}
PPL_INLINE vec<64> keep(mask16<64> m, vec<64> a) {
  return {_mm512_maskz_mov_epi16(m.m, a.v)};
}
PPL_INLINE bool any(mask16<64> m) {
  return m.m != 0;
}
PPL_INLINE vec<64> to_vec(mask16<64> m) {
  return {_mm512_movm_epi16(m.m)};
}
PPL_INLINE mask8<64> to_mask8(vec<64> a) {
  return {_mm512_movepi8_mask(a.v)};
}
PPL_INLINE mask16<64> to_mask16(vec<64> a) {
  return {_mm512_movepi16_mask(a.v)};
}
PPL_INLINE mask16<64> even_decides(mask8<64> m) {
  return {_mm512_test_epi16_mask(_mm512_movm_epi8(m.m), _mm512_set1_epi16(0x00ff))};
}
PPL_INLINE vec<64> even_odd(vec<64> a, vec<64> b) {
  return {_mm512_mask_blend_epi8(0xaaaaaaaaaaaaaaaaull, a.v, b.v)};
}
// Even and odd bytes as unsigned 16-bit lanes.
PPL_INLINE vec<64> even(vec<64> a) {
  return {_mm512_maskz_mov_epi8(0x5555555555555555ull, a.v)};
}
PPL_INLINE vec<64> odd(vec<64> a) {
  return srl16<8>(a);
}
// Even and odd bytes as signed 16-bit lanes.
PPL_INLINE vec<64> even_s8(vec<64> a) {
  return sra16<8>(sll16<8>(a));
}
PPL_INLINE vec<64> odd_s8(vec<64> a) {
  return sra16<8>(a);
}
// Signed 16-bit lanes clamped to 0..255.
PPL_INLINE vec<64> clamp_u8_16(vec<64> a) {
  return {_mm512_min_epi16(_mm512_max_epi16(a.v, _mm512_setzero_si512()), _mm512_set1_epi16(255))};
}
// Lanes already within 0..255, joined to bytes: e at even places, o at odd ones.
PPL_INLINE vec<64> join8(vec<64> e, vec<64> o) {
  return e | sll16<8>(o);
}
// The same with a clamp of signed lanes to 0..255.
PPL_INLINE vec<64> join_clamp8(vec<64> e, vec<64> o) {
  const __m128i order = _mm_set_epi8(15, 7, 14, 6, 13, 5, 12, 4, 11, 3, 10, 2, 9, 1, 8, 0);
  return {_mm512_shuffle_epi8(_mm512_packus_epi16(e.v, o.v), _mm512_broadcast_i32x4(order))};
}
PPL_INLINE vec<64> pack_u8(vec<64> lo, vec<64> hi) {
  const __m512i order = _mm512_set_epi64(7, 5, 3, 1, 6, 4, 2, 0);
  return {_mm512_permutexvar_epi64(order, _mm512_packus_epi16(lo.v, hi.v))};
}
PPL_INLINE void interleave8(vec<64> a, vec<64> b, vec<64>& first, vec<64>& second) {
  const __m512i lo = _mm512_unpacklo_epi8(a.v, b.v), hi = _mm512_unpackhi_epi8(a.v, b.v);
  first.v = _mm512_permutex2var_epi64(lo, _mm512_set_epi64(11, 10, 3, 2, 9, 8, 1, 0), hi);
  second.v = _mm512_permutex2var_epi64(lo, _mm512_set_epi64(15, 14, 7, 6, 13, 12, 5, 4), hi);
}
PPL_INLINE void interleave16(vec<64> a, vec<64> b, vec<64>& first, vec<64>& second) {
  const __m512i lo = _mm512_unpacklo_epi16(a.v, b.v), hi = _mm512_unpackhi_epi16(a.v, b.v);
  first.v = _mm512_permutex2var_epi64(lo, _mm512_set_epi64(11, 10, 3, 2, 9, 8, 1, 0), hi);
  second.v = _mm512_permutex2var_epi64(lo, _mm512_set_epi64(15, 14, 7, 6, 13, 12, 5, 4), hi);
}
PPL_INLINE vec<64> reverse16(vec<64> a) {
  const __m512i x = _mm512_shuffle_epi8(
      a.v, _mm512_broadcast_i32x4(_mm_set_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14)));
  return {_mm512_shuffle_i64x2(x, x, 0x1b)};
}
PPL_INLINE vec<64> reverse8(vec<64> a) {
  const __m512i x = _mm512_shuffle_epi8(
      a.v, _mm512_broadcast_i32x4(_mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15)));
  return {_mm512_shuffle_i64x2(x, x, 0x1b)};
}
PPL_INLINE vec<64> move_up16(vec<64> before, vec<64> a) {
  return {_mm512_alignr_epi8(a.v, _mm512_alignr_epi64(a.v, before.v, 6), 14)};
}
// Bytes as 16-bit lanes in two vectors, in an order of this width's own that narrow() undoes.
PPL_INLINE void widen(vec<64> a, vec<64>& lo, vec<64>& hi) {
  lo.v = _mm512_unpacklo_epi8(a.v, _mm512_setzero_si512());
  hi.v = _mm512_unpackhi_epi8(a.v, _mm512_setzero_si512());
}
// Signed lanes clamped to 0..255.
PPL_INLINE vec<64> narrow(vec<64> lo, vec<64> hi) {
  return {_mm512_packus_epi16(lo.v, hi.v)};
}
// Byte pairs a0 b0 a1 b1 ... as 16-bit lanes, in the order of widen().
PPL_INLINE void widen_pairs(vec<64> a, vec<64> b, vec<64>& lo, vec<64>& hi) {
  lo.v = _mm512_unpacklo_epi8(a.v, b.v);
  hi.v = _mm512_unpackhi_epi8(a.v, b.v);
}
// Bytes picked within each 16; where the top bit of `at` is set, 0.
PPL_INLINE vec<64> shuffle8(vec<64> a, vec<64> at) {
  return {_mm512_shuffle_epi8(a.v, at.v)};
}
// Sums of two products, bytes of u unsigned and of s signed, to saturated 16-bit lanes.
PPL_INLINE vec<64> madd8(vec<64> u, vec<64> s) {
  return {_mm512_maddubs_epi16(u.v, s.v)};
}
// Within each 16 bytes: signed 32-bit lanes of a, then of b, clamped to 16 bits; the upper halves of a and b; 32-bit
// lanes of a and b in turn, from their lower (upper) halves; the even 32-bit lanes of a, then of b; lanes by number.
PPL_INLINE vec<64> narrow_s32(vec<64> a, vec<64> b) {
  return {_mm512_packs_epi32(a.v, b.v)};
}
PPL_INLINE vec<64> upper64(vec<64> a, vec<64> b) {
  return {_mm512_unpackhi_epi64(a.v, b.v)};
}
PPL_INLINE vec<64> lower32(vec<64> a, vec<64> b) {
  return {_mm512_unpacklo_epi32(a.v, b.v)};
}
PPL_INLINE vec<64> upper32(vec<64> a, vec<64> b) {
  return {_mm512_unpackhi_epi32(a.v, b.v)};
}
PPL_INLINE vec<64> even_lanes32(vec<64> a, vec<64> b) {
  return {_mm512_castps_si512(_mm512_shuffle_ps(_mm512_castsi512_ps(a.v), _mm512_castsi512_ps(b.v), 0x88))};
}
template <int I0, int I1, int I2, int I3>
PPL_INLINE vec<64> shuffle32(vec<64> a) {
  return {_mm512_shuffle_epi32(a.v, static_cast<_MM_PERM_ENUM>(I0 | I1 << 2 | I2 << 4 | I3 << 6))};
}
// The even byte of each 16-bit lane less the odd one.
PPL_INLINE vec<64> even_minus_odd(vec<64> a) {
  return {_mm512_maddubs_epi16(a.v, _mm512_set1_epi16(static_cast<short>(0xff01)))};
}
// Within each 16 bytes: the even bytes, then the odd ones.
PPL_INLINE vec<64> even_then_odd(vec<64> a) {
  return {_mm512_shuffle_epi8(
      a.v, _mm512_broadcast_i32x4(_mm_set_epi8(15, 13, 11, 9, 7, 5, 3, 1, 14, 12, 10, 8, 6, 4, 2, 0)))};
}
// kTimes (1, 2, 4) the sums of the bytes of a and b, widened likewise.
template <int kTimes>
PPL_INLINE void widen_sum(vec<64> a, vec<64> b, vec<64>& lo, vec<64>& hi) {
  lo.v = _mm512_maddubs_epi16(_mm512_unpacklo_epi8(a.v, b.v), _mm512_set1_epi8(kTimes));
  hi.v = _mm512_maddubs_epi16(_mm512_unpackhi_epi8(a.v, b.v), _mm512_set1_epi8(kTimes));
}
// The even (odd) bytes of a, then those of b, in memory order.
PPL_INLINE vec<64> even_bytes(vec<64> a, vec<64> b) {
  return pack_u8(even(a), even(b));
}
PPL_INLINE vec<64> odd_bytes(vec<64> a, vec<64> b) {
  return pack_u8(odd(a), odd(b));
}
#endif

// ---- the level's own width, and the ways to walk a row with it

template <class V>
PPL_INLINE V load(const void* p) {
  V d;
  load_to(d, p);
  return d;
}
template <class V>
PPL_INLINE V loadu(const void* p) {
  V d;
  loadu_to(d, p);
  return d;
}
template <class V>
PPL_INLINE V load_widened(const void* p) {
  V d;
  load_widened_to(d, p);
  return d;
}
template <class V>
PPL_INLINE V zero() {
  V d;
  zero_to(d);
  return d;
}
template <class V>
PPL_INLINE V set8(int x) {
  V d;
  set8_to(d, x);
  return d;
}
template <class V>
PPL_INLINE V set16(int x) {
  V d;
  set16_to(d, x);
  return d;
}
// The same for a factor of mullo16(), out of the compiler's sight: gcc takes a multiplication by lanes that it knows
// apart into shifts and additions, up to five for the one.
template <class V>
PPL_INLINE V factor16(int x) {
  V d;
  set16_to(d, x);
  asm("" : "+x"(d.v));
  return d;
}
template <class V>
PPL_INLINE V set32(int x) {
  V d;
  set32_to(d, x);
  return d;
}
// 16 bytes from memory, repeated over the whole vector.
template <class V>
PPL_INLINE V repeat16(const void* p) {
  V d;
  repeat16_to(d, p);
  return d;
}

using vec16 = vec<16>;
#if defined(PPL_LEVEL_avx512)
constexpr int kWidth = 64;
#elif defined(PPL_LEVEL_avx2)
constexpr int kWidth = 32;
#else
constexpr int kWidth = 16;
#endif
using wide = vec<kWidth>;

// A row and as many rows above it as below, by their distance from it.
template <int kRows>
struct rows_around {
  const uint8_t* row[kRows];
  PPL_INLINE_MEMBER const uint8_t* operator[](int distance) const { return row[distance + kRows / 2]; }
};
PPL_INLINE rows_around<3> three_rows(const uint8_t* const* from) {
  return {from[0], from[1], from[2]};
}
PPL_INLINE rows_around<5> five_rows(const uint8_t* const* from) {
  return {from[0], from[1], from[2], from[3], from[4]};
}

// Walks `bytes` bytes (a multiple of 16) of memory that must not be passed at either end: whole wide steps, then
// steps of 16. The step is a function object with a template operator()<V>(int position).
template <class Step>
PPL_INLINE void walk_exact(int bytes, Step&& step) {
  int x = 0;
  for (; x + kWidth <= bytes; x += kWidth) step.template operator()<wide>(x);
  if constexpr (kWidth > 16) {
    for (; x < bytes; x += 16) step.template operator()<vec16>(x);
  }
}
// Walks whole wide steps over at least `bytes` bytes of padded row storage.
template <class Step>
PPL_INLINE void walk_padded(int bytes, Step&& step) {
  for (int x = 0; x < bytes; x += kWidth) step.template operator()<wide>(x);
}

}  // namespace ppl::PPL_LEVEL
