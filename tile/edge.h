// Edge enhancement: a Laplacian with a dead band, added to luma.
//
// Reads rows r - 1 .. r + 1, columns c - 1 .. c + 1; writes row r.
//        -1        e is the sum, at most 1020 either way; |e| strictly between the two edge thresholds adds
//     -1  4 -1     (e * factor) >> 5, factor being the nf88 edge enhance factor >> 3, at most 32, so that the
//        -1        product fits 16 bits. The result is clamped to 0..255.
#pragma once

#include "tile/kernels.h"
#include "tile/simd.h"

namespace ppl::PPL_LEVEL {

template <class V>
PPL_INLINE V laplacian_gain(const ppl_context& c, V e) {
  const V size = abs16(e);
  const auto inside = gt_s16(size, repeat16<V>(&c.edge_threshold_vector)) &
                      gt_s16(repeat16<V>(&c.edge_threshold2_vector), size);
  return keep(inside, sra16<5>(mullo16(e, repeat16<V>(&c.edge_factor_vector))));
}

static void edge(const edge_args& a) {
  const ppl_context& c = *a.context;
  walk_padded(a.width, [&]<class V>(int x) {
    const V up = load<V>(a.luma[0] + x), down = load<V>(a.luma[2] + x), centre = load<V>(a.luma[1] + x);
    const V left = loadu<V>(a.luma[1] + x - 1), right = loadu<V>(a.luma[1] + x + 1);
    const V e_even =
        sub16(sll16<2>(even(centre)), add16(add16(even(up), even(down)), add16(even(left), even(right))));
    const V e_odd =
        sub16(sll16<2>(odd(centre)), add16(add16(odd(up), odd(down)), add16(odd(left), odd(right))));
    store(a.out + x, join_clamp8(add16(even(centre), laplacian_gain(c, e_even)),
                                 add16(odd(centre), laplacian_gain(c, e_odd))));
  });
}

}  // namespace ppl::PPL_LEVEL
