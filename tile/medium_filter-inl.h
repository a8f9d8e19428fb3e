// Medium filter: hot and dead samples of the mosaic replaced by a middle value of their four neighbours.
//
// Reads rows r - 2 .. r + 2, columns c - 2 .. c + 2, of front-end output; writes row r. The neighbours of a B or R
// site are the samples of its colour two rows and two columns away, those of a green site the diagonal greens:
//   even row  . n . n .       sum of the four, 16 bits; hi = max(sum * hot% >> 6, hot), lo = min(sum * dead% >> 6,
//             n . X . n  or   dead), both products modulo 65536, shifted logically, then compared as signed.
//             . n . n .       X above hi or below lo becomes the second smallest of the four.
#pragma once

#include "simd/simd-inl.h"
#include "tile/kernels.h"

namespace ppl::PPL_LEVEL {

namespace medium_detail {

template <class V>
struct quad {
  V n1, n2, n3, n4;
};

struct levels {
  vec_i16 hot, hot_percent, dead, dead_percent;
};

// The new values for one parity of columns, as 16-bit lanes; `lane` picks the parity.
template <class V, class Lane>
PPL_INLINE V filtered(const levels& c, quad<V> n, V x, Lane lane) {
  const V second =
      min_u8(max_u8(min_u8(n.n1, n.n2), min_u8(n.n3, n.n4)), min_u8(max_u8(n.n1, n.n2), max_u8(n.n3, n.n4)));
  const V sum = add16(add16(lane(n.n1), lane(n.n2)), add16(lane(n.n3), lane(n.n4)));
  const V hi = max_s16(srl16<6>(mullo16(sum, repeat16<V>(&c.hot_percent))), repeat16<V>(&c.hot));
  const V lo = min_s16(srl16<6>(mullo16(sum, repeat16<V>(&c.dead_percent))), repeat16<V>(&c.dead));
  const V v = lane(x);
  return select(gt_s16(v, hi) | gt_s16(lo, v), lane(second), v);
}

}  // namespace medium_detail

// The second smallest of four is min(max(min1, min2), min(max1, max2)).
template <bool kOddRow>
PPL_INLINE void medium_row(const medium_detail::levels& c, rows_around<5> r, uint8_t* out, int width) {
  using namespace medium_detail;
  walk_padded(width, [&]<class V>(int x) {
    const V centre = load<V>(r[0] + x);
    const quad<V> straight = {load<V>(r[-2] + x), load<V>(r[2] + x), loadu<V>(r[0] + x - 2),
                              loadu<V>(r[0] + x + 2)};
    const quad<V> diagonal = {loadu<V>(r[-1] + x - 1), loadu<V>(r[1] + x - 1), loadu<V>(r[-1] + x + 1),
                              loadu<V>(r[1] + x + 1)};
    const auto even_lane = [](V v) { return even(v); };
    const auto odd_lane = [](V v) { return odd(v); };
    const V e = filtered(c, kOddRow ? diagonal : straight, centre, even_lane);
    const V o = filtered(c, kOddRow ? straight : diagonal, centre, odd_lane);
    store(out + x, join8(e, o));
  });
}

static void medium_filter(const medium_args& a) {
  const ppl_context& record = *a.context;
  const medium_detail::levels c = {record.medium_hot, record.medium_hot_percent, record.medium_dead,
                                   record.medium_dead_percent};
  each_row(a.made, [&](int i) {
    ((a.odd_row + i) & 1) != 0 ? medium_row<true>(c, five_rows(a.rows + i), a.out[i], a.width)
                               : medium_row<false>(c, five_rows(a.rows + i), a.out[i], a.width);
  });
}

}  // namespace ppl::PPL_LEVEL
