// Chroma smoothing of quality 15: each chroma word becomes 28/256 of the sum of the nine words around it.
//
// Reads words w - 1 .. w + 1 of rows r - 1 .. r + 1; writes row r. U and V apart, signed, arithmetic shift: a flat 100
// becomes 98. Rows hold the values with 128 added, so nine of them are 1152 above the signed sum.
#pragma once

#include "tile/kernels.h"
#include "tile/simd.h"

namespace ppl::PPL_LEVEL {

static void smooth(const smooth_args& a) {
  walk_padded(a.width, [&]<class V>(int x) {
    const auto column = [&](int dx, auto lane) {
      return add16(add16(lane(loadu<V>(a.chroma[0] + x + dx)), lane(loadu<V>(a.chroma[1] + x + dx))),
                   lane(loadu<V>(a.chroma[2] + x + dx)));
    };
    const auto scaled = [&](auto lane) {
      const V sum = add16(add16(column(-2, lane), column(0, lane)), column(2, lane));
      const V mean = sra16<8>(mullo16(sub16(sum, set16<V>(9 * 128)), set16<V>(28)));
      return add16(mean, set16<V>(128));  // within 2..251: no clamp
    };
    store(a.out + x, join8(scaled([](V v) { return even(v); }), scaled([](V v) { return odd(v); })));
  });
}

}  // namespace ppl::PPL_LEVEL
