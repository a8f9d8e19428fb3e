// A pair of packed rows to I420: luma of both, one row of U and of V with the mean of the two rows' chroma.
#pragma once

#include "convert/convert_kernels.h"
#include "convert/packed_ops.h"

namespace ppl::PPL_LEVEL {

template <layout L, bool Mirror, class V>
PPL_INLINE void store_luma(uint8_t* out, V first, V second) {
  const V y = luma_bytes<L>(first, second);
  storeu(out, Mirror ? reverse8(y) : y);
}

template <layout L, bool Mirror>
static void planes_rows(const plane_rows& out, const uint8_t* in_0, const uint8_t* in_1, int pixels) {
  uint8_t *const luma_0 = out.luma[0], *const luma_1 = out.luma[1], *const u = out.u, *const v = out.v;
  // V::size pixels of both rows: stores luma, leaves the means of the packed rows.
  const auto luma_and_means = [=]<class V>(ptrdiff_t at, ptrdiff_t x, V& first, V& second) {
    const V a0 = loadu<V>(in_0 + 2 * x), a1 = loadu<V>(in_0 + 2 * x + V::size);
    const V b0 = loadu<V>(in_1 + 2 * x), b1 = loadu<V>(in_1 + 2 * x + V::size);
    store_luma<L, Mirror>(luma_0 + at, a0, a1);
    store_luma<L, Mirror>(luma_1 + at, b0, b1);
    first = avg8(a0, b0);
    second = avg8(a1, b1);
  };
  constexpr ptrdiff_t n = kWidth;
  ptrdiff_t x = 0;
  for (; x + 2 * n <= pixels; x += 2 * n) {  // two vectors of luma in each row, one of U and one of V
    const ptrdiff_t at = Mirror ? pixels - 2 * n - x : x;
    wide m[4], us, vs;
    luma_and_means(Mirror ? at + n : at, x, m[0], m[1]);
    luma_and_means(Mirror ? at : at + n, x + n, m[2], m[3]);
    split_chroma<L>(m, us, vs);
    storeu(u + at / 2, Mirror ? reverse8(us) : us);
    storeu(v + at / 2, Mirror ? reverse8(vs) : vs);
  }
  for (; x < pixels; x += 16) {
    const ptrdiff_t at = Mirror ? pixels - 16 - x : x;
    vec16 m[4], us, vs;
    luma_and_means(at, x, m[0], m[1]);
    m[2] = m[0];
    m[3] = m[1];
    split_chroma<L>(m, us, vs);
    store_half(u + at / 2, Mirror ? reverse8(us) : us);
    store_half(v + at / 2, Mirror ? reverse8(vs) : vs);
  }
}

// The 12-bit layout: units of 48 bytes for 32 pixels. Groups of four bytes 0 1, 3 4, 6 7, 9 10 read as YUYV words;
// groups 8, 5, 9 (without its odd bytes) and 11 give the lumas between theirs. Chroma stays as it comes, U and V
// mixed.
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
