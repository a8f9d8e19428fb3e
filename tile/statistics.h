// Statistics of one collecting row pair: qualified sums and histograms, exposure sums, sub-window sums.
//
// At every odd inner tile t a group of eight cells is taken from the front-end tile t + lead and the one before
// it: columns 2 and 3 of every four. Two steps:
//   qual  on black-corrected samples: cells within all ranges add to the qual sums; the group's means over all
//         eight cells go to the histograms (failing cells as zeros)
//   qAE   on samples after the gain (the earlier tile: after the tone curve): cells not wholly clipped at one end
//         add to the qAE sums; every cell adds to its sub-window
// In tile 1 the first step takes for the earlier tile what the last even inner tile of the previous collecting
// row pair left behind.
#pragma once

#include "tile/kernels.h"
#include "tile/simd.h"

namespace ppl::PPL_LEVEL {

namespace statistics_detail {

// Eight cells: 16-bit words (B, Gb) of the even row and (Gr, R) of the odd row.
struct cells {
  vec16 even_row, odd_row;
};

// Columns 2, 3 of every four: the upper word of each 32 bits; the earlier tile's moves to the lower one.
PPL_INLINE vec16 sampled(const uint8_t* earlier, const uint8_t* current) {
  const vec16 e = srl32<16>(loadu<vec16>(earlier));
  const vec16 c = sll32<16>(srl32<16>(loadu<vec16>(current)));
  return e | c;
}

struct sums {
  uint32_t even_low, even_high, odd_low, odd_high;  // B, Gb, Gr, R
};

PPL_INLINE uint32_t horizontal(vec16 lanes) {
  const __m128i s = sad_u8(lanes, zero<vec16>()).v;
  return static_cast<uint32_t>(_mm_cvtsi128_si32(s)) +
         static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_unpackhi_epi64(s, s)));
}

PPL_INLINE sums sum(cells c) {
  return {horizontal(even(c.even_row)), horizontal(odd(c.even_row)), horizontal(even(c.odd_row)),
          horizontal(odd(c.odd_row))};
}

PPL_INLINE uint32_t count(mask16<16> m) {
  return (horizontal(to_vec(m)) + 16) >> 9;  // a passing lane counts 510
}

PPL_INLINE mask16<16> between(vec16 x, const vec_i16& low, const vec_i16& high) {
  return gt_s16(x, load<vec16>(&low)) & gt_s16(load<vec16>(&high), x);
}

// Both bytes of a word within minimum .. minimum + span.
PPL_INLINE mask16<16> within(vec16 x, const vec_i16& minimum, const vec_i16& span) {
  const vec16 above = sub8(x, load<vec16>(&minimum));
  return eq16(subs_u8(above, load<vec16>(&span)), zero<vec16>());
}

PPL_INLINE void qual_step(ppl_context& c, cells s) {
  const vec16 dbg = sub16(even(s.even_row), odd(s.even_row));
  const vec16 dgr = sub16(even(s.odd_row), odd(s.odd_row));
  const mask16<16> pass =
      within(s.even_row, c.qual_gb_min, c.qual_gb_span) & within(s.odd_row, c.qual_rg_min, c.qual_rg_span) &
      between(dbg, c.qual_BmGb_low, c.qual_BmGb_high) & between(dgr, c.qual_GrmR_low, c.qual_GrmR_high) &
      between(add16(dbg, dgr), c.qual_sum_low, c.qual_sum_high) &
      between(sub16(dbg, dgr), c.qual_diff_low, c.qual_diff_high);
  const sums t = sum({keep(pass, s.even_row), keep(pass, s.odd_row)});
  c.qual_count += count(pass);
  c.qual_means.r += t.odd_high;
  c.qual_means.g += t.even_high + t.odd_low;
  c.qual_means.b += t.even_low;
  c.r_histogram[t.odd_high >> 3] += 8;
  c.g_histogram[t.even_high >> 3] += 8;
  c.g_histogram[t.odd_low >> 3] += 8;
  c.b_histogram[t.even_low >> 3] += 8;
}

// A cell is rejected if all four samples are below a minimum above 0, or all four above a maximum below 255.
PPL_INLINE mask16<16> qAE_pass(const ppl_context& c, cells s) {
  const vec16 top = max_u8(s.even_row, s.odd_row), bottom = min_u8(s.even_row, s.odd_row);
  // subs(top, min - 1) is 0 where below the minimum; the minimum 0 wraps to 255 and is switched off by qAE_min
  const vec16 saves_low = subs_u8(top, load<vec16>(&c.qAE_below_min));
  const vec16 saves_high = subs_u8(load<vec16>(&c.qAE_above_max), bottom);
  const mask16<16> low = eq16(saves_low, zero<vec16>());
  const mask16<16> high = eq16(saves_high, zero<vec16>());
  const mask16<16> low_on = gt_s16(even(load<vec16>(&c.qAE_min)), zero<vec16>());
  const mask16<16> high_on = gt_s16(even(load<vec16>(&c.qAE_above_max)), zero<vec16>());
  const vec16 all = to_vec(eq16(zero<vec16>(), zero<vec16>()));
  return without(to_mask16(all), (low & low_on) | (high & high_on));
}

PPL_INLINE void add_plain(rgb32& cell, sums t) {
  cell.r += t.odd_high;
  cell.g += t.even_high + t.odd_low;
  cell.b += t.even_low;
}

PPL_INLINE void qAE_step(ppl_context& c, cells s, rgb32& cell) {
  const mask16<16> pass = qAE_pass(c, s);
  const sums all = sum(s);
  const sums t = sum({keep(pass, s.even_row), keep(pass, s.odd_row)});
  c.qAE_count += count(pass);
  add_plain(c.qAE_means, t);
  add_plain(cell, all);
}

PPL_INLINE rgb32& cell_of(ppl_context& c, int row_pair, int tile) {
  if (row_pair < c.grid_row_pairs && tile < c.grid_tiles)
    return c.sub_window_means[kGridColumns * (row_pair / c.cell_row_pairs) + tile / c.cell_tiles];
  return c.sub_window_means[kCells];
}

}  // namespace statistics_detail

static void statistics(const statistics_args& a) {
  using namespace statistics_detail;
  ppl_context& c = *a.context;
  for (int t = 1; t <= a.last_tile; t += 2) {
    const int now = (t + a.tile_lead) * kTile, before = now - kTile;
    if (a.black_even != nullptr) {
      const bool first = t == 1;
      const uint8_t* left_even = first ? c.leftovers.stat_even_row.lane : a.black_even + before;
      const uint8_t* left_odd = first ? c.leftovers.stat_odd_row.lane : a.black_odd + before;
      qual_step(c, {sampled(left_even, a.black_even + now), sampled(left_odd, a.black_odd + now)});
    }
    const cells s = {sampled(a.tone_even + before, a.value_even + now),
                     sampled(a.tone_odd + before, a.value_odd + now)};
    rgb32& cell = cell_of(c, a.row_pair, t);
    if (a.black_even != nullptr)
      qAE_step(c, s, cell);
    else
      add_plain(cell, sum(s));
  }
  const int last_even = a.last_tile & ~1;
  if (a.black_even != nullptr && last_even >= 2) {
    const int x = (last_even + a.tile_lead) * kTile;
    store(c.leftovers.stat_even_row.lane, loadu<vec16>(a.black_even + x));
    store(c.leftovers.stat_odd_row.lane, loadu<vec16>(a.black_odd + x));
  }
}

}  // namespace ppl::PPL_LEVEL
