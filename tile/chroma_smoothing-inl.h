// Chroma smoothing: each chroma word becomes 28/256 of the sum of the nine words around it.
//
// Reads words w - 1 .. w + 1 of rows r - 1 .. r + 1; writes row r. U and V are summed apart, signed, and shifted
// arithmetically: a flat 100 becomes 98. Rows hold the values with 128 added, so a sum of nine is 1152 above the
// signed one.
#pragma once

#include "simd/simd-inl.h"
#include "tile/kernels.h"

namespace ppl::PPL_LEVEL {

constexpr int kWordBytes = 2;

PPL_INLINE void smooth_row(rows_around<3> r, uint8_t* u_sums, uint8_t* v_sums, uint8_t* out, int width) {
  // First the sums of three rows, U and V apart, up to one word beyond either end; then three words across.
  walk_padded(width + 2 * kWordBytes, [&]<class V>(int at) {
    const int x = at - kWordBytes;
    const V r0 = loadu<V>(r[-1] + x), r1 = loadu<V>(r[0] + x), r2 = loadu<V>(r[1] + x);
    store(u_sums + at, add16(add16(even(r0), even(r1)), even(r2)));
    store(v_sums + at, add16(add16(odd(r0), odd(r1)), odd(r2)));
  });
  walk_padded(width, [&]<class V>(int x) {
    const auto nine = [&](const uint8_t* sums) {
      const V left = load<V>(sums + x), centre = loadu<V>(sums + x + kWordBytes);
      return add16(add16(left, centre), loadu<V>(sums + x + 2 * kWordBytes));
    };
    // 28 * (sum - 1152) >> 8, then 128 added: within 2..251, no clamp. 28 * 1152 = 126 * 256, so the bias moves
    // through the shift; the product itself is below 65536, and its high byte is wanted.
    const V times_28 = factor16<V>(28);
    const V both = join_high8(mullo16(nine(u_sums), times_28), mullo16(nine(v_sums), times_28));
    store(out + x, add8(both, set8<V>(2)));
  });
}

static void smooth(const smooth_args& a) {
  each_row(a.made,
           [&](int i) { smooth_row(three_rows(a.chroma + i), a.u_sums, a.v_sums, a.out[i], a.width); });
}

}  // namespace ppl::PPL_LEVEL
