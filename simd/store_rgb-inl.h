// Three planes to interleaved pixels in memory: B, G, R bytes, or B, G, R and a zero byte. For *_kernels.cpp only.
#pragma once

#include "simd/simd-inl.h"

namespace ppl::PPL_LEVEL {

// Where output byte k of three interleaved planes comes from: the table of one output vector, per plane the index
// of the source byte or none.
template <int N>
struct bgr_table {
  alignas(64) uint8_t at[3][3][N];  // [output vector][plane][byte]
};
template <int N>
constexpr bgr_table<N> make_bgr_table(uint8_t none) {
  bgr_table<N> t = {};
  for (int k = 0; k < 3 * N; k++) {
    for (int plane = 0; plane < 3; plane++) {
      t.at[k / N][plane][k % N] = k % 3 == plane ? static_cast<uint8_t>(k / 3) : none;
    }
  }
  return t;
}

#ifndef __SSSE3__
// Eight pairs of pixels, each pair as three words: B G, R B, G R. The words of a pair come together with one that is
// stored for nothing and overwritten by the next pair; the last pair is stored to its end and no further.
PPL_INLINE void store_bgr_words(uint8_t* out, vec<16> bg, vec<16> rb, vec<16> gr) {
  vec<16> bgrb[2], gr_[2], pairs[4];
  interleave16(bg, rb, bgrb[0], bgrb[1]);
  interleave16(gr, gr, gr_[0], gr_[1]);
  for (int i = 0; i < 2; i++) {
    pairs[2 * i].v = _mm_unpacklo_epi32(bgrb[i].v, gr_[i].v);
    pairs[2 * i + 1].v = _mm_unpackhi_epi32(bgrb[i].v, gr_[i].v);
  }
  for (int i = 0; i < 3; i++) store_halves(out + 12 * i, out + 12 * i + 6, pairs[i]);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(out + 36), pairs[3].v);
  const __m128i last = _mm_srli_si128(pairs[3].v, 8);
  _mm_storeu_si32(out + 42, last);
  _mm_storeu_si16(out + 46, _mm_srli_epi64(last, 32));
}
#endif

// V::size pixels from their three planes: three vectors.
PPL_INLINE void store_bgr(uint8_t* out, vec<16> b, vec<16> g, vec<16> r) {
#ifdef __SSSE3__
  static constexpr bgr_table<16> table = make_bgr_table<16>(0x80);
  for (int i = 0; i < 3; i++) {
    const vec<16> x = {_mm_shuffle_epi8(b.v, load<vec<16>>(table.at[i][0]).v)};
    const vec<16> y = {_mm_shuffle_epi8(g.v, load<vec<16>>(table.at[i][1]).v)};
    const vec<16> z = {_mm_shuffle_epi8(r.v, load<vec<16>>(table.at[i][2]).v)};
    storeu(out + 16 * i, x | y | z);
  }
#else
  store_bgr_words(out, even(b) | sll16<8>(g), even_odd(r, b), even_odd(srl16<8>(g), r));
#endif
}
#if defined(PPL_LEVEL_avx2) || defined(PPL_LEVEL_avx512)
PPL_INLINE void store_bgr(uint8_t* out, vec<32> b, vec<32> g, vec<32> r) {
  static constexpr bgr_table<16> table = make_bgr_table<16>(0x80);
  __m256i part[3];
  for (int i = 0; i < 3; i++) {
    const __m256i x = _mm256_shuffle_epi8(b.v, repeat16<vec<32>>(table.at[i][0]).v);
    const __m256i y = _mm256_shuffle_epi8(g.v, repeat16<vec<32>>(table.at[i][1]).v);
    const __m256i z = _mm256_shuffle_epi8(r.v, repeat16<vec<32>>(table.at[i][2]).v);
    part[i] = _mm256_or_si256(_mm256_or_si256(x, y), z);
  }
  // Each part holds 16 bytes of the first 16 pixels and 16 of the others.
  storeu(out, vec<32>{_mm256_permute2x128_si256(part[0], part[1], 0x20)});
  storeu(out + 32, vec<32>{_mm256_permute2x128_si256(part[2], part[0], 0x30)});
  storeu(out + 64, vec<32>{_mm256_permute2x128_si256(part[1], part[2], 0x31)});
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

template <class V>
PPL_INLINE void store_bgr0(uint8_t* out, V b, V g, V r) {
  V bg[2], r0[2], four[4];
  interleave8(b, g, bg[0], bg[1]);
  interleave8(r, zero<V>(), r0[0], r0[1]);
  interleave16(bg[0], r0[0], four[0], four[1]);
  interleave16(bg[1], r0[1], four[2], four[3]);
  for (int i = 0; i < 4; i++) storeu(out + i * V::size, four[i]);
}

}  // namespace ppl::PPL_LEVEL
