// Flat test: where the greens around a 2 x 2 block differ little, one smoothed colour for its four pixels.
//
// The block is rows r, r + 1 and columns c, c + 1 with c even; one 16-bit lane of the result serves a block. The test
// reads rows r - 2 .. r + 3, columns c - 2 .. c + 3; the colours read rows r - 1 .. r + 2, columns c - 1 .. c + 2. A
// block is flat if each of twelve differences, six between Gr sites and six between Gb sites, is at most T0. Gr sites
// lie at even columns, so the even byte of a lane holds their differences, the odd byte those of Gb sites. With r
// even, Gr sites are in rows r - 1, r + 1, r + 3 and Gb sites in rows r - 2, r, r + 2; with r odd it is the other way
// round.
#pragma once

#include "paths/kernels.h"
#include "simd/simd-inl.h"

namespace ppl::PPL_LEVEL {

template <bool kOddRow>
static void flat_test_rows(const flat_args& args) {
  const flat_args a = args;
  const vec_u8 t0 = a.context->CFA_T0_vector;
  walk_padded(a.width, [&]<class V>(int x) {
    // m2 .. p3: rows r - 2 .. r + 3; _l and _r two columns to the left and right
    const V m2 = load<V>(a.rows[0] + x), m1 = load<V>(a.rows[1] + x), c0 = load<V>(a.rows[2] + x);
    const V p1 = load<V>(a.rows[3] + x), p2 = load<V>(a.rows[4] + x), p3 = load<V>(a.rows[5] + x);
    const auto left = [&](int row) { return loadu<V>(a.rows[row] + x - 2); };
    const auto right = [&](int row) { return loadu<V>(a.rows[row] + x + 2); };
    const auto worst = [](V v1, V v2, V v3, V v4, V v5, V v6) {
      return max_u8(max_u8(max_u8(v1, v2), max_u8(v3, v4)), max_u8(v5, v6));
    };
    V gr, gb;
    if constexpr (!kOddRow) {
      const V m1_r = right(1), p1_l = left(3), p1_r = right(3);
      gr = worst(absdiff_u8(m1, m1_r), absdiff_u8(m1, left(1)), absdiff_u8(p1, p1_l), absdiff_u8(m1_r, p1_r),
                 absdiff_u8(p1_r, right(5)), absdiff_u8(p1, p3));
      const V c0_l = left(2), p2_l = left(4);
      gb = worst(absdiff_u8(m2, c0), absdiff_u8(left(0), c0_l), absdiff_u8(c0_l, p2_l),
                 absdiff_u8(c0, right(2)), absdiff_u8(p2, right(4)), absdiff_u8(p2, p2_l));
    } else {
      const V c0_r = right(2), p2_r = right(4);
      gr = worst(absdiff_u8(m2, c0), absdiff_u8(right(0), c0_r), absdiff_u8(c0_r, p2_r), absdiff_u8(p2, p2_r),
                 absdiff_u8(p2, left(4)), absdiff_u8(c0, left(2)));
      const V m1_l = left(1), p1_l = left(3);
      gb = worst(absdiff_u8(m1, m1_l), absdiff_u8(m1, right(1)), absdiff_u8(p1, right(3)), absdiff_u8(p1, p3),
                 absdiff_u8(p1_l, left(5)), absdiff_u8(m1_l, p1_l));
    }
    const V excess = subs_u8(even_odd(gr, gb), repeat16<V>(&t0));
    store(a.mask + x, to_vec(eq16(excess, zero<V>())));

    // v: mean of rows r - 1, r + 1; w: mean of rows r, r + 2. At odd r they change places.
    const auto v = [&](int dx) {
      const int top = kOddRow ? 1 : 0;
      return avg8(loadu<V>(a.colour_rows[top] + x + dx), loadu<V>(a.colour_rows[top + 2] + x + dx));
    };
    const auto w = [&](int dx) {
      const int top = kOddRow ? 0 : 1;
      return avg8(loadu<V>(a.colour_rows[top] + x + dx), loadu<V>(a.colour_rows[top + 2] + x + dx));
    };
    const V v_mean_odd = odd(avg8(v(-2), v(0))), w_mean_even = even(avg8(w(0), w(2)));
    const V v_mean_even = even(avg8(v(0), v(2))), w_mean_odd = odd(avg8(w(-2), w(0)));
    store(a.r + x, v_mean_odd);
    store(a.b + x, w_mean_even);
    store(a.g + x, avg8(v_mean_even, w_mean_odd));
  });
}

static void flat_test(const flat_args& a) {
  a.odd_row != 0 ? flat_test_rows<true>(a) : flat_test_rows<false>(a);
}

}  // namespace ppl::PPL_LEVEL
