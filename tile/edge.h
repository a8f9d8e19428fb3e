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

// The controls of an edge filter: the dead band's two ends, and the factor with 5 fraction bits.
struct edge_band {
  vec_i16 low, high, factor;
  explicit edge_band(const ppl_context& c)
      : low(c.edge_threshold_vector), high(c.edge_threshold2_vector), factor(c.edge_factor_vector) {}
};

// What a gradient `e` adds, if its size lies within the band.
template <class V>
PPL_INLINE V edge_gain(const edge_band& band, V e, V size) {
  const auto inside = gt_s16(size, repeat16<V>(&band.low)) & gt_s16(repeat16<V>(&band.high), size);
  return keep(inside, sra16<5>(mullo16(e, repeat16<V>(&band.factor))));
}

static void edge(const edge_args& args) {
  const edge_args a = args;
  const edge_band band(*a.context);
  walk_padded(a.width, [&]<class V>(int x) {
    const V up = load<V>(a.luma[0] + x), down = load<V>(a.luma[2] + x), centre = load<V>(a.luma[1] + x);
    const V left = loadu<V>(a.luma[1] + x - 1), right = loadu<V>(a.luma[1] + x + 1);
    const V e_even =
        sub16(sll16<2>(even(centre)), add16(add16(even(up), even(down)), add16(even(left), even(right))));
    const V e_odd =
        sub16(sll16<2>(odd(centre)), add16(add16(odd(up), odd(down)), add16(odd(left), odd(right))));
    store(a.out + x, join_clamp8(add16(even(centre), edge_gain(band, e_even, abs16(e_even))),
                                 add16(odd(centre), edge_gain(band, e_odd, abs16(e_odd)))));
  });
}

}  // namespace ppl::PPL_LEVEL
