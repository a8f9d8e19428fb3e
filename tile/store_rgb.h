// Three planes to interleaved pixels in memory: B, G, R bytes, or B, G, R and a zero byte. For *_kernels.cpp only.
#pragma once

#include "tile/simd.h"

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
  // Four bytes a pixel first, then the unused byte of each is closed up: within 64 bits, within 128.
  vec<16> bg[2], r0[2], four[4];
  interleave8(b, g, bg[0], bg[1]);
  interleave8(r, zero<vec<16>>(), r0[0], r0[1]);
  interleave16(bg[0], r0[0], four[0], four[1]);
  interleave16(bg[1], r0[1], four[2], four[3]);
  const __m128i first = _mm_set1_epi64x(0x0000000000ffffff), second = _mm_set1_epi64x(0x0000ffffff000000);
  const __m128i low = _mm_set_epi64x(0, -1);
  __m128i twelve[4];
  for (int i = 0; i < 4; i++) {
    const __m128i six =
        _mm_or_si128(_mm_and_si128(four[i].v, first), _mm_and_si128(_mm_srli_epi64(four[i].v, 8), second));
    twelve[i] = _mm_or_si128(_mm_and_si128(six, low), _mm_srli_si128(_mm_andnot_si128(low, six), 2));
  }
  storeu(out, vec<16>{_mm_or_si128(twelve[0], _mm_slli_si128(twelve[1], 12))});
  storeu(out + 16, vec<16>{_mm_or_si128(_mm_srli_si128(twelve[1], 4), _mm_slli_si128(twelve[2], 8))});
  storeu(out + 32, vec<16>{_mm_or_si128(_mm_srli_si128(twelve[2], 8), _mm_slli_si128(twelve[3], 4))});
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
