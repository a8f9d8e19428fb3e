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

// Sums over the group's cells, two 64-bit lanes each: (B, Gb) and (Gr, R).
struct sums {
  vec16 b_gb, gr_r;
};

// The low bytes of the words to the lower half, the high ones to the upper: one sum of eight bytes for each.
PPL_INLINE vec16 sum_by_place(vec16 words) {
  return sad_u8(pack_u8(even(words), odd(words)), zero<vec16>());
}
PPL_INLINE sums sum(cells c) {
  return {sum_by_place(c.even_row), sum_by_place(c.odd_row)};
}
PPL_INLINE sums operator+(sums a, sums b) {
  return {add64(a.b_gb, b.b_gb), add64(a.gr_r, b.gr_r)};
}

PPL_INLINE uint32_t low(vec16 v) {
  return static_cast<uint32_t>(_mm_cvtsi128_si32(v.v));
}
PPL_INLINE uint32_t high(vec16 v) {
  return low({_mm_unpackhi_epi64(v.v, v.v)});
}
PPL_INLINE void add_to(rgb32& total, sums s) {
  total.r += high(s.gr_r);
  total.g += high(s.b_gb) + low(s.gr_r);
  total.b += low(s.b_gb);
}

// Passing cells counted in 16-bit lanes; a row has far fewer groups than a lane can count.
PPL_INLINE uint32_t total_of(vec16 counts) {
  const vec16 pairs = madd16(counts, set16<vec16>(1));
  const __m128i halves = _mm_add_epi32(pairs.v, _mm_srli_si128(pairs.v, 8));
  return static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_add_epi32(halves, _mm_srli_si128(halves, 4))));
}

// What one row pair adds, kept in registers until its end.
struct row_totals {
  sums qual, qAE;
  vec16 qual_cells, qAE_cells;
};

PPL_INLINE mask16<16> between(vec16 x, const vec_i16& low, const vec_i16& high) {
  return gt_s16(x, load<vec16>(&low)) & gt_s16(load<vec16>(&high), x);
}

// Both bytes of a word within minimum .. minimum + span.
PPL_INLINE mask16<16> within(vec16 x, const vec_i16& minimum, const vec_i16& span) {
  const vec16 above = sub8(x, load<vec16>(&minimum));
  return eq16(subs_u8(above, load<vec16>(&span)), zero<vec16>());
}

PPL_INLINE void qual_step(ppl_context& c, row_totals& total, cells s) {
  const vec16 dbg = sub16(even(s.even_row), odd(s.even_row));
  const vec16 dgr = sub16(even(s.odd_row), odd(s.odd_row));
  const mask16<16> pass =
      within(s.even_row, c.qual_gb_min, c.qual_gb_span) & within(s.odd_row, c.qual_rg_min, c.qual_rg_span) &
      between(dbg, c.qual_BmGb_low, c.qual_BmGb_high) & between(dgr, c.qual_GrmR_low, c.qual_GrmR_high) &
      between(add16(dbg, dgr), c.qual_sum_low, c.qual_sum_high) &
      between(sub16(dbg, dgr), c.qual_diff_low, c.qual_diff_high);
  const sums t = sum({keep(pass, s.even_row), keep(pass, s.odd_row)});
  total.qual_cells = sub16(total.qual_cells, to_vec(pass));
  total.qual = total.qual + t;
  c.r_histogram[high(t.gr_r) >> 3] += 8;
  c.g_histogram[high(t.b_gb) >> 3] += 8;
  c.g_histogram[low(t.gr_r) >> 3] += 8;
  c.b_histogram[low(t.b_gb) >> 3] += 8;
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

PPL_INLINE void qAE_step(const ppl_context& c, row_totals& total, cells s) {
  const mask16<16> pass = qAE_pass(c, s);
  total.qAE_cells = sub16(total.qAE_cells, to_vec(pass));
  total.qAE = total.qAE + sum({keep(pass, s.even_row), keep(pass, s.odd_row)});
}

// The cells along a row pair, tile by tile from left to right.
struct cell_walk {
  ppl_context& c;
  rgb32* cell;   // of the current tile
  int end_tile;  // where it ends
  bool in_grid;

  cell_walk(ppl_context& context, int row_pair)
      : c(context), cell(outside_cell(&context)), end_tile(0), in_grid(false) {
    if (row_pair >= c.grid_row_pairs || c.grid_tiles == 0) return;
    in_grid = true;
    cell = &c.sub_window_means[kGridColumns * (row_pair / c.cell_row_pairs)];
    end_tile = c.cell_tiles;
  }
  rgb32* at(int tile) {
    if (!in_grid) return cell;
    if (tile >= c.grid_tiles) return outside_cell(&c);
    for (; tile >= end_tile; end_tile += c.cell_tiles) ++cell;
    return cell;
  }
};

}  // namespace statistics_detail

static void statistics(const statistics_args& a) {
  using namespace statistics_detail;
  ppl_context& c = *a.context;
  const bool full = a.black_even != nullptr;
  const vec16 none = zero<vec16>();
  row_totals total = {{none, none}, {none, none}, none, none};
  sums plain = {none, none};  // of the cell that the walk is in
  cell_walk walk(c, a.row_pair);
  rgb32* cell = walk.at(1);
  for (int t = 1; t <= a.last_tile; t += 2) {
    const int now = (t + a.tile_lead) * kTile, before = now - kTile;
    if (full) {
      const bool first = t == 1;
      const uint8_t* left_even = first ? c.leftovers.stat_even_row.lane : a.black_even + before;
      const uint8_t* left_odd = first ? c.leftovers.stat_odd_row.lane : a.black_odd + before;
      qual_step(c, total, {sampled(left_even, a.black_even + now), sampled(left_odd, a.black_odd + now)});
    }
    const cells s = {sampled(a.tone_even + before, a.value_even + now),
                     sampled(a.tone_odd + before, a.value_odd + now)};
    if (full) qAE_step(c, total, s);
    rgb32* const now_in = walk.at(t);
    if (now_in != cell) {
      add_to(*cell, plain);
      plain = {none, none};
      cell = now_in;
    }
    plain = plain + sum(s);
  }
  add_to(*cell, plain);
  if (!full) return;
  add_to(c.qual_means, total.qual);
  add_to(c.qAE_means, total.qAE);
  c.qual_count += total_of(total.qual_cells);
  c.qAE_count += total_of(total.qAE_cells);
  const int last_even = a.last_tile & ~1;
  if (last_even >= 2) {
    const int x = (last_even + a.tile_lead) * kTile;
    store(c.leftovers.stat_even_row.lane, loadu<vec16>(a.black_even + x));
    store(c.leftovers.stat_odd_row.lane, loadu<vec16>(a.black_odd + x));
  }
}

}  // namespace ppl::PPL_LEVEL
