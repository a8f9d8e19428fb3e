// 16-byte vectors: XMM registers, from SSE2 on; higher levels' instructions where the level has them. A part of
// simd/simd-inl.h, which tells the conventions.
#pragma once

namespace ppl::PPL_LEVEL {

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
PPL_INLINE vec<16> add32(vec<16> a, vec<16> b) {
  return {_mm_add_epi32(a.v, b.v)};
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

}  // namespace ppl::PPL_LEVEL
