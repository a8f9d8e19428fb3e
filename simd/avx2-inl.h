// YMM registers: operations on 32 bytes, beyond those of simd/x86-inl.h.
#pragma once

namespace ppl::PPL_LEVEL {

PPL_INLINE void store_halves(void* first, void* second, vec<32> a) {
  storeu(first, vec<16>{_mm256_castsi256_si128(a.v)});
  _mm_storeu_si128(static_cast<__m128i_u*>(second), _mm256_extracti128_si256(a.v, 1));
}
template <class At>
PPL_INLINE void load_16s_to(vec<32>& d, At&& at) {
  d.v = _mm256_inserti128_si256(_mm256_castsi128_si256(loadu<vec<16>>(at(0)).v), loadu<vec<16>>(at(1)).v, 1);
}
PPL_INLINE void repeat16_to(vec<32>& d, const void* p) {
  d.v = _mm256_broadcastsi128_si256(loadu<vec<16>>(p).v);
}
template <int kBits>
PPL_INLINE vec<32> select(mask<32, kBits> m, vec<32> a, vec<32> b) {
  return {_mm256_blendv_epi8(b.v, a.v, m.v.v)};
}
PPL_INLINE vec<32> select_by_top_bit(vec<32> m, vec<32> a, vec<32> b) {
  return {_mm256_blendv_epi8(b.v, a.v, m.v)};
}
PPL_INLINE vec<32> abs16(vec<32> a) {
  return {_mm256_abs_epi16(a.v)};
}
PPL_INLINE vec<32> in_order(vec<32> a) {
  return {_mm256_permute4x64_epi64(a.v, 0xd8)};
}
PPL_INLINE void halves_in_order(vec<32> lo, vec<32> hi, vec<32>& first, vec<32>& second) {
  first.v = _mm256_permute2x128_si256(lo.v, hi.v, 0x20);
  second.v = _mm256_permute2x128_si256(lo.v, hi.v, 0x31);
}
// Within each 16 bytes: two 32-bit lanes of a, then two of b. gcc takes three instructions for a plain shuffle of that
// kind.
template <int kOrder>
PPL_INLINE vec<32> two_of_each(vec<32> a, vec<32> b) {
  return {_mm256_castps_si256(_mm256_shuffle_ps(_mm256_castsi256_ps(a.v), _mm256_castsi256_ps(b.v), kOrder))};
}
PPL_INLINE vec<32> even32_in_16s(vec<32> a, vec<32> b) {
  return two_of_each<_MM_SHUFFLE(2, 0, 2, 0)>(a, b);
}
PPL_INLINE vec<32> even32(vec<32> a, vec<32> b) {
  return in_order(even32_in_16s(a, b));
}
PPL_INLINE vec<32> odd32(vec<32> a, vec<32> b) {
  return in_order(two_of_each<_MM_SHUFFLE(3, 1, 3, 1)>(a, b));
}
PPL_INLINE vec<32> reverse16(vec<32> a) {
  return {_mm256_permute4x64_epi64(pick16_in_16s(a, a, [](int i) { return 7 - i; }).v, 0x4e)};
}
PPL_INLINE vec<32> reverse8(vec<32> a) {
  return {_mm256_permute4x64_epi64(pick8_in_16s(a, a, [](int i) { return 15 - i; }).v, 0x4e)};
}
PPL_INLINE vec<32> move_up8(vec<32> before, vec<32> a) {
  return {_mm256_alignr_epi8(a.v, _mm256_permute2x128_si256(before.v, a.v, 0x21), 15)};
}
PPL_INLINE vec<32> move_up16(vec<32> before, vec<32> a) {
  return {_mm256_alignr_epi8(a.v, _mm256_permute2x128_si256(before.v, a.v, 0x21), 14)};
}
PPL_INLINE vec<32> move_down16(vec<32> a, vec<32> after) {
  return {_mm256_alignr_epi8(_mm256_permute2x128_si256(a.v, after.v, 0x21), a.v, 2)};
}

}  // namespace ppl::PPL_LEVEL
