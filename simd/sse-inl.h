// XMM registers: operations on 16 bytes, beyond those of simd/x86-inl.h, for the levels sse2 and sse41 and for the
// narrow vectors of the wider ones.
#pragma once

namespace ppl::PPL_LEVEL {

PPL_INLINE void store_halves(void* first, void* second, vec<16> a) {
  _mm_storel_epi64(static_cast<__m128i*>(first), a.v);
  _mm_storeh_pi(static_cast<__m64*>(second), _mm_castsi128_ps(a.v));
}
PPL_INLINE void store_half(void* p, vec<16> a) {
  _mm_storel_epi64(static_cast<__m128i*>(p), a.v);
}
// Without optimization the intrinsic is a macro that narrows an int by itself.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
template <class At>
PPL_INLINE void gather_words_to(vec<16>& d, At&& at) {
  const auto word = [&](int i) {
    uint16_t w;
    __builtin_memcpy(&w, at(i), 2);
    return static_cast<int>(w);
  };
  d.v = _mm_cvtsi32_si128(word(0));
  d.v = _mm_insert_epi16(d.v, word(1), 1);
  d.v = _mm_insert_epi16(d.v, word(2), 2);
  d.v = _mm_insert_epi16(d.v, word(3), 3);
  d.v = _mm_insert_epi16(d.v, word(4), 4);
  d.v = _mm_insert_epi16(d.v, word(5), 5);
  d.v = _mm_insert_epi16(d.v, word(6), 6);
  d.v = _mm_insert_epi16(d.v, word(7), 7);
}
#pragma GCC diagnostic pop
#if defined(__SSE4_1__)
template <int kBits>
PPL_INLINE vec<16> select(mask<16, kBits> m, vec<16> a, vec<16> b) {
  return {_mm_blendv_epi8(b.v, a.v, m.v.v)};
}
#endif
#if !defined(__SSE4_1__)
PPL_INLINE vec<16> min_s8(vec<16> a, vec<16> b) {
  const vec<16> sign = set8<vec<16>>(0x80);
  return min_u8(a ^ sign, b ^ sign) ^ sign;
}
PPL_INLINE vec<16> max_s8(vec<16> a, vec<16> b) {
  const vec<16> sign = set8<vec<16>>(0x80);
  return max_u8(a ^ sign, b ^ sign) ^ sign;
}
#endif
#if !defined(__SSSE3__)
// Shuffles by bytes that compilers do not find without an instruction of their own.
PPL_INLINE vec<16> reverse16(vec<16> a) {
  const __m128i x = _mm_shufflehi_epi16(_mm_shufflelo_epi16(a.v, 0x1b), 0x1b);
  return {_mm_shuffle_epi32(x, 0x4e)};
}
PPL_INLINE vec<16> reverse8(vec<16> a) {
  return reverse16(swap_bytes(a));
}
PPL_INLINE vec<16> move_up8(vec<16> before, vec<16> a) {
  return {_mm_or_si128(_mm_slli_si128(a.v, 1), _mm_srli_si128(before.v, 15))};
}
PPL_INLINE vec<16> move_up16(vec<16> before, vec<16> a) {
  return {_mm_or_si128(_mm_slli_si128(a.v, 2), _mm_srli_si128(before.v, 14))};
}
PPL_INLINE vec<16> move_down16(vec<16> a, vec<16> after) {
  return {_mm_or_si128(_mm_srli_si128(a.v, 2), _mm_slli_si128(after.v, 14))};
}
#endif

}  // namespace ppl::PPL_LEVEL
