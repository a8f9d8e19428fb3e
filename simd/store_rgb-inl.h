// Three colours to interleaved pixels in memory: B, G, R bytes, or B, G, R and a zero byte. For *_kernels.cpp only.
#pragma once

#include "simd/simd-inl.h"

namespace ppl::PPL_LEVEL {

// Where output byte k of three interleaved planes comes from: the table of one output vector, per plane the index
// of the source byte or none.
struct bgr_table {
  alignas(16) uint8_t at[3][3][16];  // [output vector][plane][byte]
};
constexpr bgr_table make_bgr_table(uint8_t none) {
  bgr_table t = {};
  for (int k = 0; k < 48; k++) {
    for (int plane = 0; plane < 3; plane++) {
      t.at[k / 16][plane][k % 16] = k % 3 == plane ? static_cast<uint8_t>(k / 3) : none;
    }
  }
  return t;
}

// Three vectors of 16 interleaved pixels each, one after the other, in memory order.
PPL_INLINE void store_bgr_parts(uint8_t* out, const vec<16> (&part)[3]) {
  for (int i = 0; i < 3; i++) storeu(out + 16 * i, part[i]);
}
#if defined(PPL_LEVEL_avx2) || defined(PPL_LEVEL_avx512)
// Each part holds 16 bytes of the first 16 pixels and 16 of the others.
PPL_INLINE void store_bgr_parts(uint8_t* out, const vec<32> (&part)[3]) {
  storeu(out, vec<32>{_mm256_permute2x128_si256(part[0].v, part[1].v, 0x20)});
  storeu(out + 32, vec<32>{_mm256_permute2x128_si256(part[2].v, part[0].v, 0x30)});
  storeu(out + 64, vec<32>{_mm256_permute2x128_si256(part[1].v, part[2].v, 0x31)});
}
#endif

// ---- V::size pixels from their three planes: three vectors

#if defined(PPL_LEVEL_sse2)
// Eight pairs of pixels, each pair as three words: B G, R B, G R. The words of a pair come together with one that is
// stored for nothing and overwritten by the next pair; the last pair is stored to its end and no further.
PPL_INLINE void store_bgr_words(uint8_t* out, vec<16> bg, vec<16> rb, vec<16> gr) {
  vec<16> bgrb[2], gr_[2];
  interleave16(bg, rb, bgrb[0], bgrb[1]);
  interleave16(gr, gr, gr_[0], gr_[1]);
  const vec<16> pairs[4] = {lower32(bgrb[0], gr_[0]), upper32(bgrb[0], gr_[0]), lower32(bgrb[1], gr_[1]),
                            upper32(bgrb[1], gr_[1])};
  for (int i = 0; i < 3; i++) store_halves(out + 12 * i, out + 12 * i + 6, pairs[i]);
  store_half(out + 36, pairs[3]);
  const __m128i last = _mm_srli_si128(pairs[3].v, 8);
  _mm_storeu_si32(out + 42, last);
  _mm_storeu_si16(out + 46, _mm_srli_epi64(last, 32));
}
PPL_INLINE void store_bgr(uint8_t* out, vec<16> b, vec<16> g, vec<16> r) {
  store_bgr_words(out, even(b) | sll16<8>(g), even_odd(r, b), even_odd(srl16<8>(g), r));
}
#elif defined(PPL_LEVEL_neon)
PPL_INLINE void store_bgr(uint8_t* out, vec<16> b, vec<16> g, vec<16> r) {
  vst3q_u8(out, uint8x16x3_t{{b.v, g.v, r.v}});
}
#elif defined(PPL_LEVEL_plain)
PPL_INLINE void store_bgr(uint8_t* out, vec<16> b, vec<16> g, vec<16> r) {
  for (int i = 0; i < 16; ++i) {
    out[3 * i] = u8(b)[i];
    out[3 * i + 1] = u8(g)[i];
    out[3 * i + 2] = u8(r)[i];
  }
}
#else
template <class V>
PPL_INLINE void store_bgr(uint8_t* out, V b, V g, V r) {
  static constexpr bgr_table table = make_bgr_table(0x80);
  V part[3];
  for (int i = 0; i < 3; i++)
    part[i] = shuffle8(b, repeat16<V>(table.at[i][0])) | shuffle8(g, repeat16<V>(table.at[i][1])) |
              shuffle8(r, repeat16<V>(table.at[i][2]));
  store_bgr_parts(out, part);
}
#endif
#if defined(PPL_LEVEL_avx512)
// Two-source permutes: bit 6 of an index picks the second source.
struct bgr_permute {
  alignas(64) uint8_t blue_green[3][64], red[3][64];
  uint64_t is_red[3];
};
constexpr bgr_permute make_bgr_permute() {
  bgr_permute t = {};
  for (int k = 0; k < 192; k++) {
    const uint8_t pixel = static_cast<uint8_t>(k / 3);
    t.blue_green[k / 64][k % 64] = static_cast<uint8_t>(k % 3 == 1 ? 64 | pixel : pixel);
    t.red[k / 64][k % 64] = pixel;
    t.is_red[k / 64] |= static_cast<uint64_t>(k % 3 == 2) << k % 64;
  }
  return t;
}
PPL_INLINE void store_bgr(uint8_t* out, vec<64> b, vec<64> g, vec<64> r) {
  static constexpr bgr_permute table = make_bgr_permute();
  for (int i = 0; i < 3; i++) {
    const __m512i x = _mm512_permutex2var_epi8(b.v, load<vec<64>>(table.blue_green[i]).v, g.v);
    const __m512i at = load<vec<64>>(table.red[i]).v;
    storeu(out + 64 * i, vec<64>{_mm512_mask_permutexvar_epi8(x, table.is_red[i], at, r.v)});
  }
}
#endif

#if defined(PPL_LEVEL_neon)
PPL_INLINE void store_bgr0(uint8_t* out, vec<16> b, vec<16> g, vec<16> r) {
  vst4q_u8(out, uint8x16x4_t{{b.v, g.v, r.v, zero<vec<16>>().v}});
}
#else
template <class V>
PPL_INLINE void store_bgr0(uint8_t* out, V b, V g, V r) {
  V bg[2], r0[2], four[4];
  interleave8(b, g, bg[0], bg[1]);
  interleave8(r, zero<V>(), r0[0], r0[1]);
  interleave16(bg[0], r0[0], four[0], four[1]);
  interleave16(bg[1], r0[1], four[2], four[3]);
  for (int i = 0; i < 4; i++) storeu(out + i * V::size, four[i]);
}
#endif

// ---- V::size pixels from signed 16-bit lanes >> S, clamped

// Lanes of even and of odd columns apart.
template <class V>
struct bgr_columns {
  V b, g, r;
};
template <int S, class V>
PPL_INLINE void store_bgr(uint8_t* out, const bgr_columns<V>& even, const bgr_columns<V>& odd) {
#if defined(PPL_LEVEL_sse2)
  const auto words = [](V first_bytes, V second_bytes) {
    V first, second;
    interleave16(sra16<S>(first_bytes), sra16<S>(second_bytes), first, second);
    return pack_u8(first, second);
  };
  store_bgr_words(out, words(even.b, even.g), words(even.r, odd.b), words(odd.g, odd.r));
#else
  store_bgr(out, join_shifted8<S>(even.b, odd.b), join_shifted8<S>(even.g, odd.g),
            join_shifted8<S>(even.r, odd.r));
#endif
}

// Lanes of V::size / 2 pixels, not yet clamped.
template <class V>
struct bgr16 {
  V b, g, r;
};

// 2 * V::size bytes of 16-bit pixels for the two halves of a store_bgr(). Packing stays within 128 bits: in vectors
// of 32 bytes each half takes every second 16 bytes.
template <class V>
PPL_INLINE void load_for_bgr(const uint8_t* p, V& first, V& second) {
  if constexpr (V::size == 32) {
    load_16s_to(first, [=](int i) { return p + 32 * i; });
    load_16s_to(second, [=](int i) { return p + 16 + 32 * i; });
  } else {
    first = loadu<V>(p);
    second = loadu<V>(p + V::size);
  }
}

// 16 pixels, blue and green of eight packed together, red of sixteen: where the bytes of the three output vectors
// come from. The first takes nothing from the second eight pixels, the last nothing from the first.
struct bgr_picks {
  alignas(16) uint8_t blue_green_0[3][16], blue_green_1[3][16], red[3][16];
};
constexpr bgr_picks make_bgr_picks() {
  constexpr uint8_t none = 0x80;
  bgr_picks t = {};
  for (int k = 0; k < 48; k++) {
    const int pixel = k / 3, plane = k % 3, at = plane * 8 + pixel % 8;
    t.blue_green_0[k / 16][k % 16] = plane < 2 && pixel < 8 ? static_cast<uint8_t>(at) : none;
    t.blue_green_1[k / 16][k % 16] = plane < 2 && pixel >= 8 ? static_cast<uint8_t>(at) : none;
    t.red[k / 16][k % 16] = plane == 2 ? static_cast<uint8_t>(pixel) : none;
  }
  return t;
}
template <class V>
PPL_INLINE void store_bgr(uint8_t* out, const bgr16<V>& first, const bgr16<V>& second) {
  static constexpr bgr_picks t = make_bgr_picks();
  const V bg0 = narrow(first.b, first.g), bg1 = narrow(second.b, second.g), r = narrow(first.r, second.r);
  V part[3];
  part[0] = shuffle8(bg0, repeat16<V>(t.blue_green_0[0])) | shuffle8(r, repeat16<V>(t.red[0]));
  part[1] = shuffle8(bg0, repeat16<V>(t.blue_green_0[1])) | shuffle8(bg1, repeat16<V>(t.blue_green_1[1])) |
            shuffle8(r, repeat16<V>(t.red[1]));
  part[2] = shuffle8(bg1, repeat16<V>(t.blue_green_1[2])) | shuffle8(r, repeat16<V>(t.red[2]));
  store_bgr_parts(out, part);
}
#if defined(PPL_LEVEL_avx512)
// Where byte k of 192 comes from. Blue and green of 32 pixels, and red of 64, were packed within 128 bits; bit 6
// of an index of two sources picks the second one.
struct bgr_order {
  alignas(64) uint8_t first[64], second[64], second_red[64], third[64];
  uint64_t second_is_red;
};
constexpr bgr_order make_bgr_order() {
  bgr_order t = {};
  for (int k = 0; k < 192; k++) {
    const int pixel = k / 3, plane = k % 3, of_32 = pixel % 32;
    const int blue_green = of_32 / 8 * 16 + plane * 8 + of_32 % 8;
    const int red = of_32 / 8 * 16 + pixel / 32 * 8 + of_32 % 8;
    const int i = k % 64;
    if (k < 64) {
      t.first[i] = static_cast<uint8_t>(plane == 2 ? 64 + red : blue_green);
    } else if (k < 128) {
      t.second[i] = static_cast<uint8_t>(plane == 2 ? 0 : pixel / 32 * 64 + blue_green);
      t.second_red[i] = static_cast<uint8_t>(red);
      t.second_is_red |= static_cast<uint64_t>(plane == 2) << i;
    } else {
      t.third[i] = static_cast<uint8_t>(plane == 2 ? 64 + red : blue_green);
    }
  }
  return t;
}
PPL_INLINE void store_bgr(uint8_t* out, const bgr16<vec<64>>& first, const bgr16<vec<64>>& second) {
  static constexpr bgr_order t = make_bgr_order();
  const __m512i bg0 = narrow(first.b, first.g).v, bg1 = narrow(second.b, second.g).v;
  const __m512i r = narrow(first.r, second.r).v;
  storeu(out, vec<64>{_mm512_permutex2var_epi8(bg0, load<vec<64>>(t.first).v, r)});
  const __m512i middle = _mm512_permutex2var_epi8(bg0, load<vec<64>>(t.second).v, bg1);
  storeu(out + 64,
         vec<64>{_mm512_mask_permutexvar_epi8(middle, t.second_is_red, load<vec<64>>(t.second_red).v, r)});
  storeu(out + 128, vec<64>{_mm512_permutex2var_epi8(bg1, load<vec<64>>(t.third).v, r)});
}
#endif

}  // namespace ppl::PPL_LEVEL
