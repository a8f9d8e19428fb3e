// Vector operations of packed 4:2:2 and RGB24, on top of the general ones. For *_kernels.cpp only.
#pragma once

#include "convert/convert_kernels.h"
#include "tile/simd.h"

namespace ppl::PPL_LEVEL {

// ---- 4:2:2 words

// Luma (chroma) of each word as an unsigned 16-bit lane.
template <layout L, class V>
PPL_INLINE V luma16(V a) {
  return L == layout::yuyv ? even(a) : odd(a);
}
template <layout L, class V>
PPL_INLINE V chroma16(V a) {
  return L == layout::yuyv ? odd(a) : even(a);
}
// Luma (chroma) bytes of a, then of b.
template <layout L, class V>
PPL_INLINE V luma_bytes(V a, V b) {
  return L == layout::yuyv ? even_bytes(a, b) : odd_bytes(a, b);
}
template <layout L, class V>
PPL_INLINE V chroma_bytes(V a, V b) {
  return L == layout::yuyv ? odd_bytes(a, b) : even_bytes(a, b);
}
// The luma bytes of one and the chroma bytes of the other.
template <layout L, class V>
PPL_INLINE V with_chroma(V luma, V chroma) {
  return L == layout::yuyv ? even_odd(luma, chroma) : even_odd(chroma, luma);
}
template <class V>
PPL_INLINE V swap_bytes(V a) {
  return sll16<8>(a) | srl16<8>(a);
}

// ---- 32-bit lanes in memory order

// The even (odd) 32-bit lanes of a, then those of b.
PPL_INLINE vec<16> even32(vec<16> a, vec<16> b) {
  return {_mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a.v), _mm_castsi128_ps(b.v), 0x88))};
}
PPL_INLINE vec<16> odd32(vec<16> a, vec<16> b) {
  return {_mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a.v), _mm_castsi128_ps(b.v), 0xdd))};
}
PPL_INLINE void interleave32(vec<16> a, vec<16> b, vec<16>& first, vec<16>& second) {
  first.v = _mm_unpacklo_epi32(a.v, b.v);
  second.v = _mm_unpackhi_epi32(a.v, b.v);
}
// The macropixels one further on; the last one twice.
PPL_INLINE vec<16> next_macropixels(vec<16> a) {
  return {_mm_shuffle_epi32(a.v, 0xf9)};
}
// Each 32-bit lane with its low (high) 16-bit lane in both places.
PPL_INLINE vec<16> repeat_low16(vec<16> a) {
#ifdef __SSSE3__
  return {_mm_shuffle_epi8(a.v, _mm_set_epi8(13, 12, 13, 12, 9, 8, 9, 8, 5, 4, 5, 4, 1, 0, 1, 0))};
#else
  return {_mm_shufflehi_epi16(_mm_shufflelo_epi16(a.v, 0xa0), 0xa0)};
#endif
}
PPL_INLINE vec<16> repeat_high16(vec<16> a) {
#ifdef __SSSE3__
  return {_mm_shuffle_epi8(a.v, _mm_set_epi8(15, 14, 15, 14, 11, 10, 11, 10, 7, 6, 7, 6, 3, 2, 3, 2))};
#else
  return {_mm_shufflehi_epi16(_mm_shufflelo_epi16(a.v, 0xf5), 0xf5)};
#endif
}
// The even bytes to u, the odd ones to v, half a vector each.
PPL_INLINE void store_split(uint8_t* u, uint8_t* v, vec<16> mixed) {
  const __m128i planes = _mm_packus_epi16(even(mixed).v, odd(mixed).v);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(u), planes);
  _mm_storeh_pd(reinterpret_cast<double*>(v), _mm_castsi128_pd(planes));
}

#if defined(PPL_LEVEL_avx2) || defined(PPL_LEVEL_avx512)
PPL_INLINE vec<32> even32(vec<32> a, vec<32> b) {
  const __m256 x = _mm256_shuffle_ps(_mm256_castsi256_ps(a.v), _mm256_castsi256_ps(b.v), 0x88);
  return {_mm256_permute4x64_epi64(_mm256_castps_si256(x), 0xd8)};
}
PPL_INLINE vec<32> odd32(vec<32> a, vec<32> b) {
  const __m256 x = _mm256_shuffle_ps(_mm256_castsi256_ps(a.v), _mm256_castsi256_ps(b.v), 0xdd);
  return {_mm256_permute4x64_epi64(_mm256_castps_si256(x), 0xd8)};
}
PPL_INLINE void interleave32(vec<32> a, vec<32> b, vec<32>& first, vec<32>& second) {
  const __m256i lo = _mm256_unpacklo_epi32(a.v, b.v), hi = _mm256_unpackhi_epi32(a.v, b.v);
  first.v = _mm256_permute2x128_si256(lo, hi, 0x20);
  second.v = _mm256_permute2x128_si256(lo, hi, 0x31);
}
PPL_INLINE vec<32> repeat_low16(vec<32> a) {
  return {_mm256_shuffle_epi8(
      a.v, _mm256_broadcastsi128_si256(_mm_set_epi8(13, 12, 13, 12, 9, 8, 9, 8, 5, 4, 5, 4, 1, 0, 1, 0)))};
}
PPL_INLINE vec<32> repeat_high16(vec<32> a) {
  return {_mm256_shuffle_epi8(a.v, _mm256_broadcastsi128_si256(_mm_set_epi8(15, 14, 15, 14, 11, 10, 11, 10, 7,
                                                                            6, 7, 6, 3, 2, 3, 2)))};
}
PPL_INLINE void store_split(uint8_t* u, uint8_t* v, vec<32> mixed) {
  const __m256i x = _mm256_packus_epi16(even(mixed).v, odd(mixed).v);
  const __m256i planes = _mm256_permute4x64_epi64(x, 0xd8);
  storeu(u, vec<16>{_mm256_castsi256_si128(planes)});
  storeu(v, vec<16>{_mm256_extracti128_si256(planes, 1)});
}
#endif

#if defined(PPL_LEVEL_avx512)
PPL_INLINE vec<64> even32(vec<64> a, vec<64> b) {
  const __m512i at = _mm512_set_epi32(30, 28, 26, 24, 22, 20, 18, 16, 14, 12, 10, 8, 6, 4, 2, 0);
  return {_mm512_permutex2var_epi32(a.v, at, b.v)};
}
PPL_INLINE vec<64> odd32(vec<64> a, vec<64> b) {
  const __m512i at = _mm512_set_epi32(31, 29, 27, 25, 23, 21, 19, 17, 15, 13, 11, 9, 7, 5, 3, 1);
  return {_mm512_permutex2var_epi32(a.v, at, b.v)};
}
PPL_INLINE void interleave32(vec<64> a, vec<64> b, vec<64>& first, vec<64>& second) {
  const __m512i lo = _mm512_set_epi32(23, 7, 22, 6, 21, 5, 20, 4, 19, 3, 18, 2, 17, 1, 16, 0);
  const __m512i hi = _mm512_set_epi32(31, 15, 30, 14, 29, 13, 28, 12, 27, 11, 26, 10, 25, 9, 24, 8);
  first.v = _mm512_permutex2var_epi32(a.v, lo, b.v);
  second.v = _mm512_permutex2var_epi32(a.v, hi, b.v);
}
PPL_INLINE vec<64> repeat_low16(vec<64> a) {
  return {_mm512_shuffle_epi8(
      a.v, _mm512_broadcast_i32x4(_mm_set_epi8(13, 12, 13, 12, 9, 8, 9, 8, 5, 4, 5, 4, 1, 0, 1, 0)))};
}
PPL_INLINE vec<64> repeat_high16(vec<64> a) {
  return {_mm512_shuffle_epi8(
      a.v, _mm512_broadcast_i32x4(_mm_set_epi8(15, 14, 15, 14, 11, 10, 11, 10, 7, 6, 7, 6, 3, 2, 3, 2)))};
}
PPL_INLINE void store_split(uint8_t* u, uint8_t* v, vec<64> mixed) {
  storeu(u, vec<32>{_mm512_cvtepi16_epi8(mixed.v)});
  storeu(v, vec<32>{_mm512_cvtepi16_epi8(odd(mixed).v)});
}
#endif

// ---- RGB24

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

// ---- one unit of the 12-bit layout, see row_planes.h
template <int Order>
PPL_INLINE vec<16> pick32(vec<16> a, vec<16> b) {
  return {_mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a.v), _mm_castsi128_ps(b.v), Order))};
}
PPL_INLINE void twelve_bit_unit(const uint8_t* in, vec<16>& first, vec<16>& second, vec<16>& mixed) {
  const vec<16> g0123 = loadu<vec<16>>(in), g4567 = loadu<vec<16>>(in + 16), g89ab = loadu<vec<16>>(in + 32);
  // Four groups in memory order: the first two of the result from the first operand, the others from the second.
  const vec<16> a = pick32<_MM_SHUFFLE(2, 0, 1, 0)>(g0123, pick32<_MM_SHUFFLE(0, 0, 3, 3)>(g0123, g4567));
  const vec<16> b = pick32<_MM_SHUFFLE(2, 1, 3, 2)>(g4567, g89ab);
  const vec<16> e = pick32<_MM_SHUFFLE(3, 1, 2, 0)>(pick32<_MM_SHUFFLE(1, 1, 0, 0)>(g89ab, g4567), g89ab);
  const vec<16> third_even = {_mm_set_epi32(-1, 0x00ff00ff, -1, -1)};
  interleave32(even_bytes(a, b), e & third_even, first, second);
  mixed = odd_bytes(a, b);
}

}  // namespace ppl::PPL_LEVEL
