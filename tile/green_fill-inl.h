// Green fill: a green value at every B and R site by an edge-directed estimate with a second-order correction.
//
// Reads rows r - 2 .. r + 2, columns c - 2 .. c + 2, of the mosaic; writes row r: green sites as they are, the
// others as told here. Sites to fill: even columns of even rows (B), odd columns of odd rows (R).
//   gh = |GL - GR|, gv = |GU - GD|; eh = GL + GR - (XL2 + XR2 >> 1), ev = GU + GD - (XU2 + XD2 >> 1)
//   greater of gh, gv above T1 and lesser below T1:  G = (X >> 1) + (e >> 1), e along the direction of least change
//   otherwise:                                       G = (X >> 1) + (eh + ev >> 2)
// Arithmetic shifts on 16 bits (|e| stays below 766); G is clamped to 0..255.
#pragma once

#include "simd/simd-inl.h"
#include "tile/kernels.h"

namespace ppl::PPL_LEVEL {

template <bool kOddRow>
PPL_INLINE void green_fill_row(rows_around<5> r, uint8_t* out, vec_i16 threshold, int width) {
  walk_padded(width, [&]<class V>(int x) {
    const auto site = [](V v) { return kOddRow ? odd(v) : even(v); };
    const V t1 = repeat16<V>(&threshold);
    const V centre = load<V>(r[0] + x);
    const V left = loadu<V>(r[0] + x - 1), right = loadu<V>(r[0] + x + 1);
    const V up = load<V>(r[-1] + x), down = load<V>(r[1] + x);
    const V gh = site(absdiff_u8(left, right)), gv = site(absdiff_u8(up, down));
    const auto mean_down = [](V a, V b) { return kOddRow ? odd_mean_down(a, b) : even_mean_down(a, b); };
    const V across = mean_down(loadu<V>(r[0] + x - 2), loadu<V>(r[0] + x + 2));
    const V along = mean_down(load<V>(r[-2] + x), load<V>(r[2] + x));
    const V eh = sub16(add16(site(left), site(right)), across);
    const V ev = sub16(add16(site(up), site(down)), along);
    const V mean = sra16<2>(add16(eh, ev));
    const auto directional = gt_s16(t1, min_s16(gh, gv)) & gt_s16(max_s16(gh, gv), t1);
    const V directed = sra16<1>(select(gt_s16(gh, gv), ev, eh));
    const V green = clamp_u8_16(add16(srl16<1>(site(centre)), select(directional, directed, mean)));
    store(out + x, kOddRow ? join8(even(centre), green) : even_odd(green, centre));
  });
}

static void green_fill(const green_args& a) {
  const vec_i16 threshold = a.context->CFA_T1_vector;
  each_row(a.made, [&](int i) {
    ((a.odd_row + i) & 1) != 0 ? green_fill_row<true>(five_rows(a.rows + i), a.out[i], threshold, a.width)
                               : green_fill_row<false>(five_rows(a.rows + i), a.out[i], threshold, a.width);
  });
}

}  // namespace ppl::PPL_LEVEL
