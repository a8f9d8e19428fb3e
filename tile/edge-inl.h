// Edge enhancement: a Laplacian with a dead band, added to luma.
//
// Reads rows r - 1 .. r + 1, columns c - 1 .. c + 1; writes row r.
//        -1        e is the sum, at most 1020 either way; |e| strictly between the two edge thresholds adds
//     -1  4 -1     (e * factor) >> 5, factor being the nf88 edge enhance factor >> 3, at most 32, so that the
//        -1        product fits 16 bits. The result is clamped to 0..255.
#pragma once

#include "simd/simd-inl.h"
#include "tile/edge_band-inl.h"
#include "tile/kernels.h"

namespace ppl::PPL_LEVEL {

// Four times e stays within 4080, and the band's ends within 6120, so the product's high half is (e * factor) >> 5. An
// upper end above 1020 needs no test.
template <bool kUpperEnd>
PPL_INLINE void edge_row(const edge_band& band, rows_around<3> r, uint8_t* to, int width) {
  walk_padded(width, [&]<class V>(int x) {
    const V low = sll16<2>(repeat16<V>(&band.low)), high = sll16<2>(repeat16<V>(&band.high));
    const V factor = sll16<9>(repeat16<V>(&band.factor));
    V above_below[2], beside[2], centre[2], out[2];
    widen_sum<4>(load<V>(r[-1] + x), load<V>(r[1] + x), above_below[0], above_below[1]);
    widen_sum<4>(loadu<V>(r[0] + x - 1), loadu<V>(r[0] + x + 1), beside[0], beside[1]);
    widen(load<V>(r[0] + x), centre[0], centre[1]);
    for (int i = 0; i < 2; ++i) {
      const V e = sub16(sll16<4>(centre[i]), add16(above_below[i], beside[i])), size = abs16(e);
      auto inside = gt_s16(size, low);
      if constexpr (kUpperEnd) inside = inside & gt_s16(high, size);
      out[i] = add16(centre[i], keep(inside, mulhi_s16(e, factor)));
    }
    store(to + x, narrow(out[0], out[1]));
  });
}

static void edge(const edge_args& a) {
  const edge_band band(*a.context);
  each_row(a.made, [&](int i) {
    if (band.high.lane[0] > 1020)
      edge_row<false>(band, three_rows(a.luma + i), a.out[i], a.width);
    else
      edge_row<true>(band, three_rows(a.luma + i), a.out[i], a.width);
  });
}

}  // namespace ppl::PPL_LEVEL
