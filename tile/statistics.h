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
#include "tile/tone.h"

namespace ppl::PPL_LEVEL {

namespace statistics_detail {

// Eight cells, the earlier tile's in the lower word of each 32 bits and the current one's in the upper: 16-bit words
// (B, Gb) of the even row and (Gr, R) of the odd row.
struct cells {
  vec16 even_row, odd_row;
};

// Columns 2, 3 of every four stand in the upper word of each 32 bits.
PPL_INLINE vec16 from_earlier(const uint8_t* tile) {
  return srl32<16>(loadu<vec16>(tile));
}
PPL_INLINE vec16 only_current(vec16 words) {
  return words & set32<vec16>(static_cast<int>(0xffff0000u));
}
PPL_INLINE vec16 sampled(const uint8_t* earlier, const uint8_t* current) {
  return from_earlier(earlier) | only_current(loadu<vec16>(current));
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
PPL_INLINE cells keep(mask16<16> m, cells s) {
  return {keep(m, s.even_row), keep(m, s.odd_row)};
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

// Gain and offset of the current tile's cells, both rows in one vector: the even row's words in the lower half of each
// 32 bits, the odd row's in the upper.
struct current_gain {
  vec16 gain_low, gain_high, delta_low, delta_high;  // of the low and the high byte of each word
  PPL_INLINE_MEMBER explicit current_gain(const ppl_context& c)
      : gain_low(pair(c.gain_b_g, c.gain_g_r, 0)),
        gain_high(pair(c.gain_b_g, c.gain_g_r, 1)),
        delta_low(pair(c.delta_b_g, c.delta_g_r, 0)),
        delta_high(pair(c.delta_b_g, c.delta_g_r, 1)) {}
  static PPL_INLINE_MEMBER vec16 pair(const vec_i16& even_row, const vec_i16& odd_row, int place) {
    const uint32_t low = static_cast<uint16_t>(even_row.lane[place]),
                   high = static_cast<uint16_t>(odd_row.lane[place]);
    return set32<vec16>(static_cast<int>(low | high << 16));
  }
  PPL_INLINE_MEMBER vec16 operator()(cells black) const {
    const vec16 x = srl32<16>(black.even_row) | only_current(black.odd_row);
    return join_clamp8(add16(srl16<5>(mullo16(even(x), gain_low)), delta_low),
                       add16(srl16<5>(mullo16(odd(x), gain_high)), delta_high));
  }
};

// What passing cells add up to in a row pair.
struct totals {
  sums of_passed;
  vec16 cells_passed;
  PPL_INLINE_MEMBER void add(mask16<16> pass, sums s) {
    of_passed = of_passed + s;
    cells_passed = sub16(cells_passed, to_vec(pass));
  }
};

struct qual_ranges {
  vec_i16 gb_min, gb_span, rg_min, rg_span;  // byte pairs: minimum and maximum - minimum
  vec_i16 BmGb_low, BmGb_high, GrmR_low, GrmR_high, sum_low, sum_high, diff_low, diff_high;  // exclusive

  static PPL_INLINE_MEMBER mask16<16> between(vec16 x, const vec_i16& low, const vec_i16& high) {
    return gt_s16(x, load<vec16>(&low)) & gt_s16(load<vec16>(&high), x);
  }
  // How far the bytes of a word leave minimum .. minimum + span.
  static PPL_INLINE_MEMBER vec16 excess(vec16 x, const vec_i16& minimum, const vec_i16& span) {
    return subs_u8(sub8(x, load<vec16>(&minimum)), load<vec16>(&span));
  }
  PPL_INLINE_MEMBER mask16<16> pass(cells s) const {
    const vec16 dbg = sub16(even(s.even_row), odd(s.even_row));
    const vec16 dgr = sub16(even(s.odd_row), odd(s.odd_row));
    const vec16 outside = excess(s.even_row, gb_min, gb_span) | excess(s.odd_row, rg_min, rg_span);
    return eq16(outside, zero<vec16>()) & between(dbg, BmGb_low, BmGb_high) &
           between(dgr, GrmR_low, GrmR_high) & between(add16(dbg, dgr), sum_low, sum_high) &
           between(sub16(dbg, dgr), diff_low, diff_high);
  }
};

// A cell is rejected if all four samples are below a minimum above 0, or all four above a maximum below 255: a test
// that stands at its limit is off.
struct exposure_range {
  vec16 below_min, above_max;  // the bytes that reject
  mask16<16> low_on, high_on;
  PPL_INLINE_MEMBER explicit exposure_range(const ppl_context& c)
      : below_min(loadu<vec16>(&c.qAE_below_min)),
        above_max(loadu<vec16>(&c.qAE_above_max)),
        low_on(gt_s16(even(loadu<vec16>(&c.qAE_min)), zero<vec16>())),
        high_on(gt_s16(even(above_max), zero<vec16>())) {}
  bool is_open() const { return !any(low_on) && !any(high_on); }  // nothing can be rejected
  PPL_INLINE_MEMBER mask16<16> pass(cells s) const {
    const vec16 top = max_u8(s.even_row, s.odd_row), bottom = min_u8(s.even_row, s.odd_row);
    const mask16<16> too_low = eq16(subs_u8(top, below_min), zero<vec16>()) & low_on;
    const mask16<16> too_high = eq16(subs_u8(above_max, bottom), zero<vec16>()) & high_on;
    return eq16(to_vec(too_low | too_high), zero<vec16>());
  }
};

// The cells of sub_window_means along a row pair, tile by tile from left to right.
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

PPL_INLINE void add_to_histograms(ppl_context& c, sums group) {
  c.r_histogram[high(group.gr_r) >> 3] += 8;
  c.g_histogram[high(group.b_gb) >> 3] += 8;
  c.g_histogram[low(group.gr_r) >> 3] += 8;
  c.b_histogram[low(group.b_gb) >> 3] += 8;
}

}  // namespace statistics_detail

static void statistics(const statistics_args& args) {
  using namespace statistics_detail;
  const statistics_args a = args;
  ppl_context& c = *a.context;
  const vec16 none = zero<vec16>();
  const qual_ranges qual = {c.qual_gb_min,   c.qual_gb_span,   c.qual_rg_min,   c.qual_rg_span,
                            c.qual_BmGb_low, c.qual_BmGb_high, c.qual_GrmR_low, c.qual_GrmR_high,
                            c.qual_sum_low,  c.qual_sum_high,  c.qual_diff_low, c.qual_diff_high};
  const exposure_range qAE(c);
  const bool qAE_open = qAE.is_open();
  uint32_t groups = 0;  // counted where all their cells pass
  const current_gain gain(c);
  totals qual_total = {{none, none}, none}, qAE_total = {{none, none}, none};
  sums plain = {none, none};  // of the sub-window that the walk is in
  cell_walk walk(c, a.row_pair);
  rgb32* cell = walk.at(1);
  const uint8_t* left_even = c.leftovers.stat_even_row.lane;
  const uint8_t* left_odd = c.leftovers.stat_odd_row.lane;
  for (int t = 1; t <= a.last_tile; t += 2) {
    const int now = (t + a.tile_lead) * kTile, before = now - kTile;
    if (t > 1) {
      left_even = a.black_even + before;
      left_odd = a.black_odd + before;
    }
    const cells black = {sampled(left_even, a.black_even + now), sampled(left_odd, a.black_odd + now)};
    const vec16 value = gain(black);
    const cells s = {from_earlier(a.tone_even + before) | sll32<16>(value),
                     from_earlier(a.tone_odd + before) | only_current(value)};
    if (!a.plain_only) {
      const mask16<16> qualified = qual.pass(black);
      const sums group = sum(keep(qualified, black));
      qual_total.add(qualified, group);
      add_to_histograms(c, group);
    }
    const sums all = sum(s);
    if (qAE_open) {
      qAE_total.of_passed = qAE_total.of_passed + all;
      groups += 1;
    } else {
      const mask16<16> exposed = qAE.pass(s);
      qAE_total.add(exposed, sum(keep(exposed, s)));
    }
    rgb32* const now_in = walk.at(t);
    if (now_in != cell) {
      add_to(*cell, plain);
      plain = {none, none};
      cell = now_in;
    }
    plain = plain + all;
  }
  add_to(*cell, plain);
  if (a.plain_only) return;
  add_to(c.qual_means, qual_total.of_passed);
  add_to(c.qAE_means, qAE_total.of_passed);
  c.qual_count += total_of(qual_total.cells_passed);
  c.qAE_count += total_of(qAE_total.cells_passed) + 8 * groups;
  const int last_even = a.last_tile & ~1;
  if (last_even >= 2) {
    const int x = (last_even + a.tile_lead) * kTile;
    store(c.leftovers.stat_even_row.lane, loadu<vec16>(a.black_even + x));
    store(c.leftovers.stat_odd_row.lane, loadu<vec16>(a.black_odd + x));
  }
}

}  // namespace ppl::PPL_LEVEL
