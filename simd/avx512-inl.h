// ZMM registers: operations on 64 bytes, beyond those of simd/x86-inl.h. A mask is a bit a lane; one instruction moves
// bytes anywhere.
#pragma once

namespace ppl::PPL_LEVEL {

PPL_INLINE void store_halves(void* first, void* second, vec<64> a) {
  storeu(first, vec<32>{_mm512_castsi512_si256(a.v)});
  storeu(second, vec<32>{_mm512_extracti64x4_epi64(a.v, 1)});
}
template <class At>
PPL_INLINE void load_16s_to(vec<64>& d, At&& at) {
  vec<32> first, second;
  load_16s_to(first, at);
  load_16s_to(second, [&](int i) { return at(2 + i); });
  d.v = _mm512_inserti64x4(_mm512_castsi256_si512(first.v), second.v, 1);
}
PPL_INLINE void repeat16_to(vec<64>& d, const void* p) {
  d.v = _mm512_broadcast_i32x4(loadu<vec<16>>(p).v);
}
PPL_INLINE void load_every_second_16_to(vec<64>& d, const uint8_t* p) {
  d.v = _mm512_shuffle_i64x2(loadu<vec<64>>(p).v, loadu<vec<64>>(p + 64).v, 0x88);
}

template <>
struct mask<64, 8> {
  __mmask64 m;
};
template <>
struct mask<64, 16> {
  __mmask32 m;
};
PPL_INLINE mask8<64> le_u8(vec<64> a, vec<64> b) {
  return {_mm512_cmple_epu8_mask(a.v, b.v)};
}
PPL_INLINE mask8<64> eq8(vec<64> a, vec<64> b) {
  return {_mm512_cmpeq_epi8_mask(a.v, b.v)};
}
PPL_INLINE mask8<64> gt_s8(vec<64> a, vec<64> b) {
  return {_mm512_cmpgt_epi8_mask(a.v, b.v)};
}
PPL_INLINE mask16<64> gt_s16(vec<64> a, vec<64> b) {
  return {_mm512_cmpgt_epi16_mask(a.v, b.v)};
}
PPL_INLINE mask16<64> eq16(vec<64> a, vec<64> b) {
  return {_mm512_cmpeq_epi16_mask(a.v, b.v)};
}
template <int kBits>
PPL_INLINE mask<64, kBits> operator&(mask<64, kBits> a, mask<64, kBits> b) {
  return {static_cast<decltype(a.m)>(a.m & b.m)};
}
template <int kBits>
PPL_INLINE mask<64, kBits> operator|(mask<64, kBits> a, mask<64, kBits> b) {
  return {static_cast<decltype(a.m)>(a.m | b.m)};
}
PPL_INLINE vec<64> select(mask8<64> m, vec<64> a, vec<64> b) {
  return {_mm512_mask_blend_epi8(m.m, b.v, a.v)};
}
PPL_INLINE vec<64> select(mask16<64> m, vec<64> a, vec<64> b) {
  return {_mm512_mask_blend_epi16(m.m, b.v, a.v)};
}
PPL_INLINE vec<64> keep(mask8<64> m, vec<64> a) {
  return {_mm512_maskz_mov_epi8(m.m, a.v)};
}
PPL_INLINE vec<64> keep(mask16<64> m, vec<64> a) {
  return {_mm512_maskz_mov_epi16(m.m, a.v)};
}
PPL_INLINE vec<64> to_vec(mask8<64> m) {
  return {_mm512_movm_epi8(m.m)};
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

PPL_INLINE vec<64> abs16(vec<64> a) {
  return {_mm512_abs_epi16(a.v)};
}
PPL_INLINE vec<64> even(vec<64> a) {
  return {_mm512_maskz_mov_epi8(0x5555555555555555ull, a.v)};
}
PPL_INLINE vec<64> even_odd(vec<64> a, vec<64> b) {
  return {_mm512_mask_blend_epi8(0xaaaaaaaaaaaaaaaaull, a.v, b.v)};
}
PPL_INLINE vec<64> in_order(vec<64> a) {
  return {_mm512_permutexvar_epi64(_mm512_set_epi64(7, 5, 3, 1, 6, 4, 2, 0), a.v)};
}
PPL_INLINE void halves_in_order(vec<64> lo, vec<64> hi, vec<64>& first, vec<64>& second) {
  first.v = _mm512_permutex2var_epi64(lo.v, _mm512_set_epi64(11, 10, 3, 2, 9, 8, 1, 0), hi.v);
  second.v = _mm512_permutex2var_epi64(lo.v, _mm512_set_epi64(15, 14, 7, 6, 13, 12, 5, 4), hi.v);
}
PPL_INLINE void interleave32(vec<64> a, vec<64> b, vec<64>& first, vec<64>& second) {
  const __m512i lo = _mm512_set_epi32(23, 7, 22, 6, 21, 5, 20, 4, 19, 3, 18, 2, 17, 1, 16, 0);
  const __m512i hi = _mm512_set_epi32(31, 15, 30, 14, 29, 13, 28, 12, 27, 11, 26, 10, 25, 9, 24, 8);
  first.v = _mm512_permutex2var_epi32(a.v, lo, b.v);
  second.v = _mm512_permutex2var_epi32(a.v, hi, b.v);
}
PPL_INLINE vec<64> even32(vec<64> a, vec<64> b) {
  const __m512i at = _mm512_set_epi32(30, 28, 26, 24, 22, 20, 18, 16, 14, 12, 10, 8, 6, 4, 2, 0);
  return {_mm512_permutex2var_epi32(a.v, at, b.v)};
}
PPL_INLINE vec<64> odd32(vec<64> a, vec<64> b) {
  const __m512i at = _mm512_set_epi32(31, 29, 27, 25, 23, 21, 19, 17, 15, 13, 11, 9, 7, 5, 3, 1);
  return {_mm512_permutex2var_epi32(a.v, at, b.v)};
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
PPL_INLINE vec<64> move_up8(vec<64> before, vec<64> a) {
  return {_mm512_alignr_epi8(a.v, _mm512_alignr_epi64(a.v, before.v, 6), 15)};
}
PPL_INLINE vec<64> move_up16(vec<64> before, vec<64> a) {
  return {_mm512_alignr_epi8(a.v, _mm512_alignr_epi64(a.v, before.v, 6), 14)};
}
PPL_INLINE vec<64> move_down16(vec<64> a, vec<64> after) {
  return {_mm512_alignr_epi8(_mm512_alignr_epi64(after.v, a.v, 2), a.v, 2)};
}
// One permute after packing takes less than two before the products.
PPL_INLINE void times_factors_to(vec<64>& d, const uint8_t* bytes, const uint16_t* factors) {
  const auto half = [&](int from) {
    const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes + from));
    return mulhi_s16(sll16<3>(vec<64>{_mm512_cvtepu8_epi16(x)}), loadu<vec<64>>(factors + from));
  };
  d = pack_u8(half(0), half(32));
}

}  // namespace ppl::PPL_LEVEL
