// Vector operations of packed 4:2:2 and RGB24, on top of the general ones. For *_kernels.cpp only.
#pragma once

#include "convert/convert_kernels.h"
#include "simd/simd-inl.h"

namespace ppl::PPL_LEVEL {

// ---- 4:2:2 words

// Luma (chroma) of each word as an unsigned 16-bit lane.
template <byte_order L, class V>
PPL_INLINE V luma16(V a) {
  return L == byte_order::yuyv ? even(a) : odd(a);
}
template <byte_order L, class V>
PPL_INLINE V chroma16(V a) {
  return L == byte_order::yuyv ? odd(a) : even(a);
}
// The luma bytes of one and the chroma bytes of the other.
template <byte_order L, class V>
PPL_INLINE V with_chroma(V luma, V chroma) {
  return L == byte_order::yuyv ? even_odd(luma, chroma) : even_odd(chroma, luma);
}
template <class V>
PPL_INLINE V swap_bytes(V a) {
  return sll16<8>(a) | srl16<8>(a);
}

// The words of a run one further on (back), when the run goes on (begins) with b (with a).
PPL_INLINE vec<16> one_word_on(vec<16> a, vec<16> b) {
#ifdef __SSSE3__
  return {_mm_alignr_epi8(b.v, a.v, 2)};
#else
  return {_mm_or_si128(_mm_srli_si128(a.v, 2), _mm_slli_si128(b.v, 14))};
#endif
}
PPL_INLINE vec<16> one_word_back(vec<16> a, vec<16> b) {
#ifdef __SSSE3__
  return {_mm_alignr_epi8(b.v, a.v, 14)};
#else
  return {_mm_or_si128(_mm_srli_si128(a.v, 14), _mm_slli_si128(b.v, 2))};
#endif
}
// The same by bytes.
PPL_INLINE vec<16> one_byte_back(vec<16> a, vec<16> b) {
#ifdef __SSSE3__
  return {_mm_alignr_epi8(b.v, a.v, 15)};
#else
  return {_mm_or_si128(_mm_srli_si128(a.v, 15), _mm_slli_si128(b.v, 1))};
#endif
}

// Signed bytes. Sums and differences saturate.
PPL_INLINE vec<16> adds_s8(vec<16> a, vec<16> b) {
  return {_mm_adds_epi8(a.v, b.v)};
}
PPL_INLINE vec<16> subs_s8(vec<16> a, vec<16> b) {
  return {_mm_subs_epi8(a.v, b.v)};
}
PPL_INLINE vec<16> max_s8(vec<16> a, vec<16> b) {
#ifdef __SSE4_1__
  return {_mm_max_epi8(a.v, b.v)};
#else
  const vec<16> sign = set8<vec<16>>(0x80);
  return max_u8(a ^ sign, b ^ sign) ^ sign;
#endif
}
PPL_INLINE vec<16> min_s8(vec<16> a, vec<16> b) {
#ifdef __SSE4_1__
  return {_mm_min_epi8(a.v, b.v)};
#else
  const vec<16> sign = set8<vec<16>>(0x80);
  return min_u8(a ^ sign, b ^ sign) ^ sign;
#endif
}
PPL_INLINE mask8<16> gt_s8(vec<16> a, vec<16> b) {
  return {_mm_cmpgt_epi8(a.v, b.v)};
}
// Signed 16-bit lanes of lo, then of hi, clamped to -128..127, in memory order.
PPL_INLINE vec<16> pack_s8(vec<16> lo, vec<16> hi) {
  return {_mm_packs_epi16(lo.v, hi.v)};
}

// Which words take other chroma: all ones in their chroma bytes, 0 in luma. From one decision a word, or, for two
// vectors of words, from one decision a byte.
template <class M>
struct two_masks {
  M first, second;
};
template <byte_order L, int N>
PPL_INLINE vec<N> chroma_mask(mask16<N> m) {
  return keep(m, set16<vec<N>>(L == byte_order::yuyv ? 0xff00 : 0x00ff));
}
template <byte_order L>
PPL_INLINE two_masks<vec<16>> chroma_masks(mask8<16> m) {
  two_masks<vec<16>> both;
  const vec<16> none = zero<vec<16>>();
  interleave8(L == byte_order::yuyv ? none : to_vec(m), L == byte_order::yuyv ? to_vec(m) : none, both.first,
              both.second);
  return both;
}
// The words of b, with chroma from a where the mask tells so.
template <byte_order L, int N>
PPL_INLINE vec<N> select_chroma(vec<N> chroma, vec<N> a, vec<N> b) {
  return select(to_mask8(chroma), a, b);
}
#if defined(PPL_LEVEL_avx2) || defined(PPL_LEVEL_avx512)
PPL_INLINE vec<32> one_word_on(vec<32> a, vec<32> b) {
  return {_mm256_alignr_epi8(_mm256_permute2x128_si256(a.v, b.v, 0x21), a.v, 2)};
}
PPL_INLINE vec<32> one_word_back(vec<32> a, vec<32> b) {
  return {_mm256_alignr_epi8(b.v, _mm256_permute2x128_si256(a.v, b.v, 0x21), 14)};
}
PPL_INLINE vec<32> one_byte_back(vec<32> a, vec<32> b) {
  return {_mm256_alignr_epi8(b.v, _mm256_permute2x128_si256(a.v, b.v, 0x21), 15)};
}
PPL_INLINE vec<32> adds_s8(vec<32> a, vec<32> b) {
  return {_mm256_adds_epi8(a.v, b.v)};
}
PPL_INLINE vec<32> subs_s8(vec<32> a, vec<32> b) {
  return {_mm256_subs_epi8(a.v, b.v)};
}
PPL_INLINE vec<32> max_s8(vec<32> a, vec<32> b) {
  return {_mm256_max_epi8(a.v, b.v)};
}
PPL_INLINE vec<32> min_s8(vec<32> a, vec<32> b) {
  return {_mm256_min_epi8(a.v, b.v)};
}
PPL_INLINE mask8<32> gt_s8(vec<32> a, vec<32> b) {
  return {_mm256_cmpgt_epi8(a.v, b.v)};
}
PPL_INLINE vec<32> pack_s8(vec<32> lo, vec<32> hi) {
  return {_mm256_permute4x64_epi64(_mm256_packs_epi16(lo.v, hi.v), 0xd8)};
}
template <byte_order L>
PPL_INLINE two_masks<vec<32>> chroma_masks(mask8<32> m) {
  const __m256i none = _mm256_setzero_si256(), halves = _mm256_permute4x64_epi64(m.m, 0xd8);
  const __m256i even = L == byte_order::yuyv ? none : halves, odd = L == byte_order::yuyv ? halves : none;
  return {{_mm256_unpacklo_epi8(even, odd)}, {_mm256_unpackhi_epi8(even, odd)}};
}
#endif
#if defined(PPL_LEVEL_avx512)
PPL_INLINE vec<64> one_word_on(vec<64> a, vec<64> b) {
  return {_mm512_alignr_epi8(_mm512_alignr_epi64(b.v, a.v, 2), a.v, 2)};
}
PPL_INLINE vec<64> one_word_back(vec<64> a, vec<64> b) {
  return {_mm512_alignr_epi8(b.v, _mm512_alignr_epi64(b.v, a.v, 6), 14)};
}
PPL_INLINE vec<64> one_byte_back(vec<64> a, vec<64> b) {
  return {_mm512_alignr_epi8(b.v, _mm512_alignr_epi64(b.v, a.v, 6), 15)};
}
PPL_INLINE vec<64> adds_s8(vec<64> a, vec<64> b) {
  return {_mm512_adds_epi8(a.v, b.v)};
}
PPL_INLINE vec<64> subs_s8(vec<64> a, vec<64> b) {
  return {_mm512_subs_epi8(a.v, b.v)};
}
PPL_INLINE vec<64> max_s8(vec<64> a, vec<64> b) {
  return {_mm512_max_epi8(a.v, b.v)};
}
PPL_INLINE vec<64> min_s8(vec<64> a, vec<64> b) {
  return {_mm512_min_epi8(a.v, b.v)};
}
PPL_INLINE mask8<64> gt_s8(vec<64> a, vec<64> b) {
  return {_mm512_cmpgt_epi8_mask(a.v, b.v)};
}
PPL_INLINE vec<64> pack_s8(vec<64> lo, vec<64> hi) {
  const __m512i order = _mm512_set_epi64(7, 5, 3, 1, 6, 4, 2, 0);
  return {_mm512_permutexvar_epi64(order, _mm512_packs_epi16(lo.v, hi.v))};
}
// Here a mask is a bit a word.
template <byte_order L>
PPL_INLINE mask16<64> chroma_mask(mask16<64> m) {
  return m;
}
template <byte_order L>
PPL_INLINE two_masks<mask16<64>> chroma_masks(mask8<64> m) {
  return {{static_cast<__mmask32>(m.m)}, {static_cast<__mmask32>(m.m >> 32)}};
}
template <byte_order L>
PPL_INLINE vec<64> select_chroma(mask16<64> m, vec<64> a, vec<64> b) {
  return select(m, with_chroma<L>(b, a), b);
}
#endif

// ---- a pair of packed rows to planes

PPL_INLINE void store_half(uint8_t* out, vec<16> a) {
  _mm_storel_epi64(reinterpret_cast<__m128i*>(out), a.v);
}

#ifdef __SSE4_1__
// Vectors are taken apart by one byte shuffle each: luma, U, V of the first of two, U, V, luma of the second. Halves
// of both then make a vector of luma and one of chroma. Here "halves" are those of each 16 bytes (of all 64 in the
// widest vectors, whose bytes go anywhere).
template <int N>
struct byte_table {
  alignas(N) uint8_t at[N];
};
template <int N>
constexpr byte_table<N> apart(byte_order from, bool luma_first) {
  byte_table<N> t = {};
  const int luma = from == byte_order::yuyv ? 0 : 1, chroma = 1 - luma;
  const int luma_at = luma_first ? 0 : N / 2, u_at = luma_first ? N / 2 : 0, v_at = u_at + N / 4;
  for (int i = 0; i < N / 2; i++) t.at[luma_at + i] = static_cast<uint8_t>(2 * i + luma);
  for (int i = 0; i < N / 4; i++) t.at[u_at + i] = static_cast<uint8_t>(4 * i + chroma);
  for (int i = 0; i < N / 4; i++) t.at[v_at + i] = static_cast<uint8_t>(4 * i + 2 + chroma);
  return t;
}
// The lower halves of a, the upper ones of b.
PPL_INLINE vec<16> lower_upper(vec<16> a, vec<16> b) {
  return {_mm_blend_epi16(a.v, b.v, 0xf0)};
}
template <byte_order L, bool LumaFirst>
PPL_INLINE vec<16> take_apart(vec<16> a) {
  static constexpr byte_table<16> order = apart<16>(L, LumaFirst);
  return {_mm_shuffle_epi8(a.v, load<vec<16>>(order.at).v)};
}
PPL_INLINE vec<16> luma_in_order(vec<16> a) {
  return a;
}
// Two results of mean_chroma(), each of them U1 V1 U0 V0.
PPL_INLINE void split_chroma(vec<16> a, vec<16> b, vec<16>& u, vec<16>& v) {
  const __m128 x = _mm_castsi128_ps(a.v), y = _mm_castsi128_ps(b.v);
  u.v = _mm_castps_si128(_mm_shuffle_ps(x, y, _MM_SHUFFLE(0, 2, 0, 2)));
  v.v = _mm_castps_si128(_mm_shuffle_ps(x, y, _MM_SHUFFLE(1, 3, 1, 3)));
}
#if defined(PPL_LEVEL_avx2) || defined(PPL_LEVEL_avx512)
PPL_INLINE vec<32> lower_upper(vec<32> a, vec<32> b) {
  return {_mm256_blend_epi32(a.v, b.v, 0xcc)};
}
template <byte_order L, bool LumaFirst>
PPL_INLINE vec<32> take_apart(vec<32> a) {
  static constexpr byte_table<16> order = apart<16>(L, LumaFirst);
  return {_mm256_shuffle_epi8(a.v, repeat16<vec<32>>(order.at).v)};
}
PPL_INLINE vec<32> luma_in_order(vec<32> a) {
  return {_mm256_permute4x64_epi64(a.v, 0xd8)};
}
PPL_INLINE void split_chroma(vec<32> a, vec<32> b, vec<32>& u, vec<32>& v) {
  const __m256 x = _mm256_castsi256_ps(a.v), y = _mm256_castsi256_ps(b.v);
  const __m256i order = _mm256_set_epi32(7, 3, 6, 2, 5, 1, 4, 0);
  u.v = _mm256_permutevar8x32_epi32(_mm256_castps_si256(_mm256_shuffle_ps(x, y, _MM_SHUFFLE(0, 2, 0, 2))),
                                    order);
  v.v = _mm256_permutevar8x32_epi32(_mm256_castps_si256(_mm256_shuffle_ps(x, y, _MM_SHUFFLE(1, 3, 1, 3))),
                                    order);
}
#endif
#if defined(PPL_LEVEL_avx512)
PPL_INLINE vec<64> lower_upper(vec<64> a, vec<64> b) {
  return {_mm512_mask_blend_epi64(0xf0, a.v, b.v)};
}
template <byte_order L, bool LumaFirst>
PPL_INLINE vec<64> take_apart(vec<64> a) {
  static constexpr byte_table<64> order = apart<64>(L, LumaFirst);
  return {_mm512_permutexvar_epi8(load<vec<64>>(order.at).v, a.v)};
}
PPL_INLINE vec<64> luma_in_order(vec<64> a) {
  return a;
}
PPL_INLINE void split_chroma(vec<64> a, vec<64> b, vec<64>& u, vec<64>& v) {
  u.v = _mm512_shuffle_i64x2(a.v, b.v, _MM_SHUFFLE(0, 2, 0, 2));
  v.v = _mm512_shuffle_i64x2(a.v, b.v, _MM_SHUFFLE(1, 3, 1, 3));
}
#endif
// V::size pixels of a row are two vectors: their luma.
template <byte_order L, class V>
PPL_INLINE V luma_bytes(V first, V second) {
  return luma_in_order(lower_upper(take_apart<L, true>(first), take_apart<L, false>(second)));
}
// The mean of their chroma with that of b0, b1 of another row, in an order that split_chroma() undoes.
template <byte_order L, class V>
PPL_INLINE V mean_chroma(V a0, V a1, V b0, V b1) {
  return avg8(lower_upper(take_apart<L, false>(a1), take_apart<L, true>(a0)),
              lower_upper(take_apart<L, false>(b1), take_apart<L, true>(b0)));
}
#else
// The same without a byte shuffle: U and V in turn.
template <byte_order L>
PPL_INLINE vec<16> luma_bytes(vec<16> first, vec<16> second) {
  return pack_u8(luma16<L>(first), luma16<L>(second));
}
template <byte_order L>
PPL_INLINE vec<16> mean_chroma(vec<16> a0, vec<16> a1, vec<16> b0, vec<16> b1) {
  return pack_u8(chroma16<L>(avg8(a0, b0)), chroma16<L>(avg8(a1, b1)));
}
PPL_INLINE void split_chroma(vec<16> a, vec<16> b, vec<16>& u, vec<16>& v) {
  u = even_bytes(a, b);
  v = odd_bytes(a, b);
}
#endif

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
#endif

// ---- RGB24, with byte shuffles; without them see row_rgb24.h

#ifdef __SSSE3__
// V::size / 2 pixels, their colours in signed 16-bit lanes, not yet clamped.
template <class V>
struct bgr16 {
  V b, g, r;
};

// 2 * V::size bytes of packed words for the two halves of a store_bgr(). Packing stays within 128 bits: in vectors
// of 32 bytes each half takes every second 16 bytes.
template <class V>
PPL_INLINE void load_for_bgr(const uint8_t* p, V& first, V& second) {
#if defined(PPL_LEVEL_avx2) || defined(PPL_LEVEL_avx512)
  if constexpr (V::size == 32) {
    const auto two = [](const uint8_t* lo, const uint8_t* hi) {
      const __m256i x = _mm256_castsi128_si256(loadu<vec<16>>(lo).v);
      return vec<32>{_mm256_inserti128_si256(x, loadu<vec<16>>(hi).v, 1)};
    };
    first = two(p, p + 32);
    second = two(p + 16, p + 48);
    return;
  }
#endif
  first = loadu<V>(p);
  second = loadu<V>(p + V::size);
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
PPL_INLINE void bgr_parts(V bg0, V bg1, V r, V (&part)[3]) {
  static constexpr bgr_picks t = make_bgr_picks();
  part[0] = shuffle8(bg0, repeat16<V>(t.blue_green_0[0])) | shuffle8(r, repeat16<V>(t.red[0]));
  part[1] = shuffle8(bg0, repeat16<V>(t.blue_green_0[1])) | shuffle8(bg1, repeat16<V>(t.blue_green_1[1])) |
            shuffle8(r, repeat16<V>(t.red[1]));
  part[2] = shuffle8(bg1, repeat16<V>(t.blue_green_1[2])) | shuffle8(r, repeat16<V>(t.red[2]));
}

// V::size pixels, clamped to bytes B, G, R: three vectors.
PPL_INLINE void store_bgr(uint8_t* out, const bgr16<vec<16>>& first, const bgr16<vec<16>>& second) {
  vec<16> part[3];
  bgr_parts(pack_u8(first.b, first.g), pack_u8(second.b, second.g), pack_u8(first.r, second.r), part);
  for (int i = 0; i < 3; i++) storeu(out + 16 * i, part[i]);
}
#if defined(PPL_LEVEL_avx2) || defined(PPL_LEVEL_avx512)
PPL_INLINE void store_bgr(uint8_t* out, const bgr16<vec<32>>& first, const bgr16<vec<32>>& second) {
  const auto pack = [](vec<32> a, vec<32> b) { return vec<32>{_mm256_packus_epi16(a.v, b.v)}; };
  vec<32> part[3];  // each holds 16 bytes of the first 16 pixels and 16 of the others
  bgr_parts(pack(first.b, first.g), pack(second.b, second.g), pack(first.r, second.r), part);
  storeu(out, vec<32>{_mm256_permute2x128_si256(part[0].v, part[1].v, 0x20)});
  storeu(out + 32, vec<32>{_mm256_permute2x128_si256(part[2].v, part[0].v, 0x30)});
  storeu(out + 64, vec<32>{_mm256_permute2x128_si256(part[1].v, part[2].v, 0x31)});
}
#endif
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
  const __m512i bg0 = _mm512_packus_epi16(first.b.v, first.g.v),
                bg1 = _mm512_packus_epi16(second.b.v, second.g.v);
  const __m512i r = _mm512_packus_epi16(first.r.v, second.r.v);
  storeu(out, vec<64>{_mm512_permutex2var_epi8(bg0, load<vec<64>>(t.first).v, r)});
  const __m512i middle = _mm512_permutex2var_epi8(bg0, load<vec<64>>(t.second).v, bg1);
  storeu(out + 64,
         vec<64>{_mm512_mask_permutexvar_epi8(middle, t.second_is_red, load<vec<64>>(t.second_red).v, r)});
  storeu(out + 128, vec<64>{_mm512_permutex2var_epi8(bg1, load<vec<64>>(t.third).v, r)});
}
#endif

#endif  // __SSSE3__

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
