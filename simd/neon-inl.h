// aarch64: NEON. A part of simd/simd-inl.h, which tells the conventions; the operations are explained in
// simd/plain-inl.h. What is not here the compiler finds by itself.
#pragma once

namespace ppl::PPL_LEVEL {

#define PPL_BINARY(name, type, intrinsic)         \
  PPL_INLINE vec<16> name(vec<16> a, vec<16> b) { \
    return of(intrinsic((type)a.v, (type)b.v));   \
  }
PPL_BINARY(adds_u8, uint8x16_t, vqaddq_u8)
PPL_BINARY(subs_u8, uint8x16_t, vqsubq_u8)
PPL_BINARY(adds_s8, int8x16_t, vqaddq_s8)
PPL_BINARY(subs_s8, int8x16_t, vqsubq_s8)
PPL_BINARY(avg8, uint8x16_t, vrhaddq_u8)
PPL_BINARY(avg_down8, uint8x16_t, vhaddq_u8)
PPL_BINARY(absdiff_u8, uint8x16_t, vabdq_u8)
PPL_BINARY(min_u8, uint8x16_t, vminq_u8)
PPL_BINARY(max_u8, uint8x16_t, vmaxq_u8)
PPL_BINARY(min_s8, int8x16_t, vminq_s8)
PPL_BINARY(max_s8, int8x16_t, vmaxq_s8)
PPL_BINARY(adds_s16, int16x8_t, vqaddq_s16)
PPL_BINARY(subs_s16, int16x8_t, vqsubq_s16)
PPL_BINARY(subs_u16, uint16x8_t, vqsubq_u16)
PPL_BINARY(min_s16, int16x8_t, vminq_s16)
PPL_BINARY(max_s16, int16x8_t, vmaxq_s16)
PPL_BINARY(shuffle8, uint8x16_t, vqtbl1q_u8)
PPL_BINARY(even_bytes, uint8x16_t, vuzp1q_u8)
PPL_BINARY(odd_bytes, uint8x16_t, vuzp2q_u8)
PPL_BINARY(join_high8, uint8x16_t, vtrn2q_u8)
#undef PPL_BINARY

PPL_INLINE vec<16> abs16(vec<16> a) {
  return of(vabsq_s16((int16x8_t)a.v));
}
// The product is doubled before its high half is taken; only -32768 * -32768 would not fit.
PPL_INLINE vec<16> mulhi_s16(vec<16> a, vec<16> b) {
  return of(vshrq_n_s16(vqdmulhq_s16((int16x8_t)a.v, (int16x8_t)b.v), 1));
}
PPL_INLINE vec<16> unseen(vec<16> a) {
  asm("" : "+w"(a.v));
  return a;
}
template <int kBits>
PPL_INLINE vec<16> select(mask<16, kBits> m, vec<16> a, vec<16> b) {
  return of(vbslq_u8(m.v.v, a.v, b.v));
}
PPL_INLINE vec<16> even_odd(vec<16> a, vec<16> b) {
  return of(vbslq_u8((uint8x16_t)set16<vec<16>>(0x00ff).v, a.v, b.v));
}
PPL_INLINE vec<16> even_mean_down(vec<16> a, vec<16> b) {
  return even(avg_down8(a, b));
}
PPL_INLINE vec<16> odd_mean_down(vec<16> a, vec<16> b) {
  return odd(avg_down8(a, b));
}
PPL_INLINE vec<16> join8(vec<16> e, vec<16> o) {
  return of(vsliq_n_u16((uint16x8_t)e.v, (uint16x8_t)o.v, 8));
}
PPL_INLINE vec<16> twice_even(vec<16> a) {
  return of(vtrn1q_u8(a.v, a.v));
}
PPL_INLINE vec<16> twice_odd(vec<16> a) {
  return of(vtrn2q_u8(a.v, a.v));
}
// The bytes of two half vectors in turn.
PPL_INLINE vec<16> in_turn(uint8x8_t e, uint8x8_t o) {
  const uint8x8_t any = vdup_n_u8(0);
  return of(vzip1q_u8(vcombine_u8(e, any), vcombine_u8(o, any)));
}
PPL_INLINE vec<16> join_clamp8(vec<16> e, vec<16> o) {
  return in_turn(vqmovun_s16((int16x8_t)e.v), vqmovun_s16((int16x8_t)o.v));
}
template <int S>
PPL_INLINE vec<16> join_shifted8(vec<16> e, vec<16> o) {
  return in_turn(vqshrun_n_s16((int16x8_t)e.v, S), vqshrun_n_s16((int16x8_t)o.v, S));
}
PPL_INLINE vec<16> narrow(vec<16> lo, vec<16> hi) {
  return of(vqmovun_high_s16(vqmovun_s16((int16x8_t)lo.v), (int16x8_t)hi.v));
}
PPL_INLINE vec<16> narrow_s8(vec<16> lo, vec<16> hi) {
  return of(vqmovn_high_s16(vqmovn_s16((int16x8_t)lo.v), (int16x8_t)hi.v));
}
PPL_INLINE void widen(vec<16> a, vec<16>& lo, vec<16>& hi) {
  lo = of(vmovl_u8(vget_low_u8(a.v)));
  hi = of(vmovl_high_u8(a.v));
}
template <int kTimes>
PPL_INLINE void widen_sum(vec<16> a, vec<16> b, vec<16>& lo, vec<16>& hi) {
  lo = sll16<kTimes / 2>(of(vaddl_u8(vget_low_u8(a.v), vget_low_u8(b.v))));
  hi = sll16<kTimes / 2>(of(vaddl_high_u8(a.v, b.v)));
}
PPL_INLINE vec<16> sum_eights(vec<16> a, vec<16> b) {
  return of(vpaddlq_u16(vpaddq_u16(vpaddlq_u8(a.v), vpaddlq_u8(b.v))));
}
template <class At>
PPL_INLINE void gather_words_to(vec<16>& d, At&& at) {
  const auto from = [&](int i) { return reinterpret_cast<const uint16_t*>(at(i)); };
  uint16x8_t w = vld1q_dup_u16(from(0));
  w = vld1q_lane_u16(from(1), w, 1);
  w = vld1q_lane_u16(from(2), w, 2);
  w = vld1q_lane_u16(from(3), w, 3);
  w = vld1q_lane_u16(from(4), w, 4);
  w = vld1q_lane_u16(from(5), w, 5);
  w = vld1q_lane_u16(from(6), w, 6);
  w = vld1q_lane_u16(from(7), w, 7);
  d = of(w);
}
PPL_INLINE void times_factors_to(vec<16>& d, const uint8_t* bytes, const uint16_t* factors) {
  // (x << 2) * f, doubled, >> 16 is x * f >> 13.
  const uint8x16_t x = vld1q_u8(bytes);
  const auto half = [&](uint16x8_t four_x, int from) {
    return vqdmulhq_s16((int16x8_t)four_x, (int16x8_t)vld1q_u16(factors + from));
  };
  d = narrow(of(half(vshll_n_u8(vget_low_u8(x), 2), 0)), of(half(vshll_high_n_u8(x, 2), 8)));
}
PPL_INLINE vec<16> blend_pairs(vec<16> pairs, vec<16> weights) {
  const uint16x8_t lo = vmull_u8(vget_low_u8(pairs.v), vget_low_u8(weights.v)),
                   hi = vmull_high_u8(pairs.v, weights.v);
  return of(vrshrq_n_u16(vpaddq_u16(lo, hi), 8));
}
PPL_INLINE vec<16> blend8(vec<16> a, vec<16> b, int f) {
  const uint8x16_t of_a = set8<vec<16>>(256 - f).v, of_b = set8<vec<16>>(f).v;
  const uint16x8_t lo =
      vmlal_u8(vmull_u8(vget_low_u8(a.v), vget_low_u8(of_a)), vget_low_u8(b.v), vget_low_u8(of_b));
  const uint16x8_t hi = vmlal_high_u8(vmull_high_u8(a.v, of_a), b.v, of_b);
  return of(vrshrn_high_n_u16(vrshrn_n_u16(lo, 8), hi, 8));
}

}  // namespace ppl::PPL_LEVEL
