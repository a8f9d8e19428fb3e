// A pair of packed rows to I420: luma of both, one row of U and of V with the mean of the two rows' chroma.
#pragma once

#include "convert/convert_kernels.h"
#include "convert/packed_ops.h"

namespace ppl::PPL_LEVEL {

template <layout L, bool Mirror>
static void planes_rows(const plane_rows& out, const uint8_t* in_0, const uint8_t* in_1, int pixels) {
  walk_exact(pixels, [&]<class V>(int x) {
    const V a0 = loadu<V>(in_0 + 2 * x), a1 = loadu<V>(in_0 + 2 * x + V::size);
    const V b0 = loadu<V>(in_1 + 2 * x), b1 = loadu<V>(in_1 + 2 * x + V::size);
    V luma_0 = luma_bytes<L>(a0, a1), luma_1 = luma_bytes<L>(b0, b1);
    V mixed = chroma_bytes<L>(avg8(a0, b0), avg8(a1, b1));
    int at = x;
    if constexpr (Mirror) {
      at = pixels - V::size - x;
      luma_0 = reverse8(luma_0);
      luma_1 = reverse8(luma_1);
      mixed = reverse16(mixed);
    }
    storeu(out.luma[0] + at, luma_0);
    storeu(out.luma[1] + at, luma_1);
    store_split(out.u + at / 2, out.v + at / 2, mixed);
  });
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
