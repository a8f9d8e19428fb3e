// 32-byte vectors: YMM registers, AVX2. The same operations as those of 16 bytes, in memory order across both halves.
// A part of simd/simd-inl.h, which tells the conventions.
#pragma once

namespace ppl::PPL_LEVEL {

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
PPL_INLINE vec<32> add32(vec<32> a, vec<32> b) {
  return {_mm256_add_epi32(a.v, b.v)};
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

}  // namespace ppl::PPL_LEVEL
