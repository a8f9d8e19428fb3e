// 64-byte vectors: ZMM registers, AVX-512 with VBMI. The same operations as those of 16 bytes, in memory order across
// all quarters; masks are bits. A part of simd/simd-inl.h, which tells the conventions.
#pragma once

namespace ppl::PPL_LEVEL {

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
PPL_INLINE vec<64> add32(vec<64> a, vec<64> b) {
  return {_mm512_add_epi32(a.v, b.v)};
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

}  // namespace ppl::PPL_LEVEL
