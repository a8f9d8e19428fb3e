// WebAssembly: SIMD128. A part of simd/simd-inl.h, which tells the conventions; the operations are explained in
// simd/plain-inl.h. What is not here the compiler finds by itself.
#pragma once

namespace ppl::PPL_LEVEL {

PPL_INLINE v128_t bits(vec<16> a) {
  return (v128_t)a.v;
}

#define PPL_BINARY(name, intrinsic)                \
  PPL_INLINE vec<16> name(vec<16> a, vec<16> b) {  \
    return of(wasm_##intrinsic(bits(a), bits(b))); \
  }
PPL_BINARY(adds_u8, u8x16_add_sat)
PPL_BINARY(subs_u8, u8x16_sub_sat)
PPL_BINARY(adds_s8, i8x16_add_sat)
PPL_BINARY(subs_s8, i8x16_sub_sat)
PPL_BINARY(avg8, u8x16_avgr)
PPL_BINARY(min_u8, u8x16_min)
PPL_BINARY(max_u8, u8x16_max)
PPL_BINARY(min_s8, i8x16_min)
PPL_BINARY(max_s8, i8x16_max)
PPL_BINARY(adds_s16, i16x8_add_sat)
PPL_BINARY(subs_s16, i16x8_sub_sat)
PPL_BINARY(subs_u16, u16x8_sub_sat)
PPL_BINARY(min_s16, i16x8_min)
PPL_BINARY(max_s16, i16x8_max)
PPL_BINARY(narrow, u8x16_narrow_i16x8)
PPL_BINARY(narrow_s8, i8x16_narrow_i16x8)
// An index is at most 15, or has its top bit set.
PPL_BINARY(shuffle8, i8x16_swizzle)
#undef PPL_BINARY

PPL_INLINE vec<16> abs16(vec<16> a) {
  return of(wasm_i16x8_abs(bits(a)));
}
PPL_INLINE vec<16> mulhi_s16(vec<16> a, vec<16> b) {
  const v128_t lo = wasm_i32x4_extmul_low_i16x8(bits(a), bits(b)),
               hi = wasm_i32x4_extmul_high_i16x8(bits(a), bits(b));
  return upper_words(of(lo), of(hi));
}
template <int kBits>
PPL_INLINE vec<16> select(mask<16, kBits> m, vec<16> a, vec<16> b) {
  return of(wasm_v128_bitselect(bits(a), bits(b), bits(m.v)));
}
PPL_INLINE vec<16> even_odd(vec<16> a, vec<16> b) {
  return of(wasm_v128_bitselect(bits(a), bits(b), wasm_i16x8_splat(0x00ff)));
}
// The compiler takes the plain forms for means of bytes, and works those out lane by lane.
PPL_INLINE vec<16> even_mean_down(vec<16> a, vec<16> b) {
  return even(avg_down8(a, b));
}
PPL_INLINE vec<16> odd_mean_down(vec<16> a, vec<16> b) {
  return odd(avg_down8(a, b));
}
PPL_INLINE vec<16> join_clamp8(vec<16> e, vec<16> o) {
  const vec<16> x = narrow(e, o);
  return pick8(x, x, [](int i) { return i / 2 + i % 2 * 8; });
}
PPL_INLINE vec<16> twice_even(vec<16> a) {
  return pick8(a, a, [](int i) { return i & ~1; });
}
PPL_INLINE vec<16> twice_odd(vec<16> a) {
  return pick8(a, a, [](int i) { return i | 1; });
}
PPL_INLINE void widen(vec<16> a, vec<16>& lo, vec<16>& hi) {
  lo = of(wasm_u16x8_extend_low_u8x16(bits(a)));
  hi = of(wasm_u16x8_extend_high_u8x16(bits(a)));
}
PPL_INLINE vec<16> sum_eights(vec<16> a, vec<16> b) {
  const auto fours = [](vec<16> x) {
    return of(wasm_i32x4_extadd_pairwise_i16x8(wasm_u16x8_extadd_pairwise_u8x16(bits(x))));
  };
  const vec<16> of_a = fours(a), of_b = fours(b);
  return add32(even32(of_a, of_b), odd32(of_a, of_b));
}

}  // namespace ppl::PPL_LEVEL
