// A pair of packed rows to I420: luma of both, one row of U and of V with the mean of the two rows' chroma.
#pragma once

#include "convert/convert_kernels.h"
#include "simd/packed-inl.h"

namespace ppl::PPL_LEVEL {

// V::size pixels of both rows: stores luma, gives the mean chroma for split_chroma().
template <byte_order L, bool Mirror, class V>
PPL_INLINE V store_luma(uint8_t* luma_0, uint8_t* luma_1, const uint8_t* in_0, const uint8_t* in_1) {
  const V a0 = loadu<V>(in_0), a1 = loadu<V>(in_0 + V::size);
  const V b0 = loadu<V>(in_1), b1 = loadu<V>(in_1 + V::size);
  const auto store = [](uint8_t* out, V y) { storeu(out, Mirror ? reverse8(y) : y); };
  store(luma_0, luma_bytes<L>(a0, a1));
  store(luma_1, luma_bytes<L>(b0, b1));
  return mean_chroma<L>(a0, a1, b0, b1);
}

// Four places are written and two read in turn, more than processors prefetch by themselves. `out` is where Step bytes
// of a row go now, `done` bytes after its start: fetches the lines of 64 bytes that come soon.
template <int Step, bool Mirror>
PPL_INLINE void fetch_ahead(const uint8_t* out, ptrdiff_t done) {
  constexpr ptrdiff_t kAhead = 256;
  if (done % 64 != 0) return;
  for (ptrdiff_t i = kAhead; i < kAhead + Step; i += 64) {
    __builtin_prefetch(Mirror ? out - i : out + i);
  }
}

template <byte_order L, bool Mirror>
static void planes_rows(const plane_rows& out, const uint8_t* in_0, const uint8_t* in_1, int pixels) {
  uint8_t *const luma_0 = out.luma[0], *const luma_1 = out.luma[1], *const u = out.u, *const v = out.v;
  constexpr int n = kWidth;
  ptrdiff_t x = 0;
  for (; x + 2 * n <= pixels; x += 2 * n) {  // two vectors of luma in each row, one of U and one of V
    const ptrdiff_t at = Mirror ? pixels - 2 * n - x : x;
    const ptrdiff_t first = Mirror ? at + n : at, second = Mirror ? at : at + n;
    fetch_ahead<2 * n, Mirror>(luma_0 + at, x);
    fetch_ahead<2 * n, Mirror>(luma_1 + at, x);
    fetch_ahead<n, Mirror>(u + at / 2, x / 2);
    fetch_ahead<n, Mirror>(v + at / 2, x / 2);
    const wide a = store_luma<L, Mirror, wide>(luma_0 + first, luma_1 + first, in_0 + 2 * x, in_1 + 2 * x);
    const wide b =
        store_luma<L, Mirror, wide>(luma_0 + second, luma_1 + second, in_0 + 2 * (x + n), in_1 + 2 * (x + n));
    wide us, vs;
    split_chroma(a, b, us, vs);
    storeu(u + at / 2, Mirror ? reverse8(us) : us);
    storeu(v + at / 2, Mirror ? reverse8(vs) : vs);
  }
  for (; x < pixels; x += 16) {
    const ptrdiff_t at = Mirror ? pixels - 16 - x : x;
    const vec16 a = store_luma<L, Mirror, vec16>(luma_0 + at, luma_1 + at, in_0 + 2 * x, in_1 + 2 * x);
    vec16 us, vs;
    split_chroma(a, a, us, vs);  // eight of each, and once more
    store_half(u + at / 2, Mirror ? reverse8(us) : us);
    store_half(v + at / 2, Mirror ? reverse8(vs) : vs);
  }
}

// The 12-bit layout: units of 48 bytes for 32 pixels. Groups of four bytes 0 1, 3 4, 6 7, 9 10 read as YUYV words;
// groups 8, 5, 9 (without its odd bytes) and 11 give the lumas between theirs. Chroma stays as it comes, U and V
// mixed.
PPL_INLINE void twelve_bit_unit(const uint8_t* in, vec16& first, vec16& second, vec16& mixed) {
  const vec16 g0123 = loadu<vec16>(in), g4567 = loadu<vec16>(in + 16), g89ab = loadu<vec16>(in + 32);
  // Four groups in memory order: each lane by its number in two vectors.
  const vec16 g34 = pick32<3, 3, 4, 4>(g0123, g4567), a = pick32<0, 1, 4, 6>(g0123, g34);
  const vec16 b = pick32<2, 3, 5, 6>(g4567, g89ab);
  const vec16 g85 = pick32<0, 0, 5, 5>(g89ab, g4567), e = pick32<0, 2, 5, 7>(g85, g89ab);
  alignas(16) static constexpr uint8_t kThirdEven[16] = {255, 255, 255, 255, 255, 255, 255, 255,
                                                         255, 0,   255, 0,   255, 255, 255, 255};
  mixed = odd_bytes(a, b);
  interleave32(even_bytes(a, b), e & load<vec16>(kThirdEven), first, second);
}
template <bool Mirror>
static void twelve_bit_row(uint8_t* luma, uint8_t* chroma, const uint8_t* in, int units) {
  for (int i = 0; i < units; i++) {
    const int at = Mirror ? units - 1 - i : i;
    vec16 first, second, mixed;
    twelve_bit_unit(in + 48 * i, first, second, mixed);
    storeu(luma + 32 * at, Mirror ? reverse8(second) : first);
    storeu(luma + 32 * at + 16, Mirror ? reverse8(first) : second);
    storeu(chroma + 16 * at, mixed);
  }
}

}  // namespace ppl::PPL_LEVEL
