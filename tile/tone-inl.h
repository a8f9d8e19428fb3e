// Black level, gain, offset and tone curve of the front end as one look-up for each of the four sites.
//
//   x = max(x - black, 0);  v = (x * gain >> 5) + delta: 16-bit product, logical shift, wrapping sum; clamped to
//   0..255;  tone[v]
//
// Made once per frame into the record's site tables, with which simd/look_up-inl.h then maps the rows.
#pragma once

#include "simd/look_up-inl.h"
#include "tile/kernels.h"

namespace ppl::PPL_LEVEL {

struct identity_table {
  alignas(64) uint8_t at[256];
};
constexpr identity_table make_identity() {
  identity_table t = {};
  for (int x = 0; x < 256; ++x) t.at[x] = static_cast<uint8_t>(x);
  return t;
}

// Samples first .. first + V::size - 1 of a site (row 0 even, 1 odd; column parity) on their way to the curve.
template <class V>
PPL_INLINE V before_curve(const ppl_context& c, int row, int column, int first) {
  static constexpr identity_table samples = make_identity();
  const V black = set8<V>((row == 0 ? c.black_b_gb : c.black_gr_r).lane[column]);
  const V gain = set16<V>((row == 0 ? c.gain_b_g : c.gain_g_r).lane[column]);
  const V delta = set16<V>((row == 0 ? c.delta_b_g : c.delta_g_r).lane[column]);
  const V x = subs_u8(load<V>(samples.at + first), black);
  return join_clamp8(add16(srl16<5>(mullo16(even(x), gain)), delta),
                     add16(srl16<5>(mullo16(odd(x), gain)), delta));
}

static_assert(sizeof(ppl_context::site_tables[0]) == kTablePairBytes);

static void prepare_tone(ppl_context& c, const uint8_t* tone) {
  alignas(64) uint8_t table[2][256];  // by column parity
  for (int row = 0; row < 2; ++row) {
    for (int column = 0; column < 2; ++column) {
      for (int x = 0; x < 256; x += kWidth) store(table[column] + x, before_curve<wide>(c, row, column, x));
      look_up_256(table[column], tone);
    }
    make_table_pair(c.site_tables[row], table[0], table[1]);
  }
}

}  // namespace ppl::PPL_LEVEL
