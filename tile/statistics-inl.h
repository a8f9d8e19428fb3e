// Statistics of one collecting row pair: qualified sums and histograms, exposure sums, sub-window sums.
//
// At every odd inner tile t a group of eight cells is taken, columns 2 and 3 of every four, from the front-end tile t
// + lead and the one before it. Two steps:
//   qual  on black-corrected samples: cells within all ranges add to the qual sums; the group's means over all
//         eight cells go to the histograms (failing cells as zeros)
//   qAE   on samples after the gain (the earlier tile: after the tone curve): cells not wholly clipped at one end
//         add to the qAE sums; every cell adds to its sub-window
// In tile 1 the first step takes for the earlier tile what the last even inner tile of the previous collecting
// row pair left in the record.
//
// A vector holds as many groups as it has 16 bytes; every layout below is that of one group's 16 bytes. A group's
// cells are numbered: 0 .. 3 from the earlier tile, 4 .. 7 from the current one.
//
// Sums go to ppl_context::sums, and from there to the record's fields (tile/statistics_sums.h).
#pragma once

#include "simd/simd-inl.h"
#include "tile/kernels.h"

namespace ppl::PPL_LEVEL {

namespace statistics_detail {

// ---- the cells of V::size / 16 groups

// Black-corrected samples: words (B, Gb) and (Gr, R).
template <class V>
struct black_cells {
  V even_row, odd_row;
};
template <class V>
PPL_INLINE black_cells<V> black_at(const uint8_t* even, const uint8_t* odd) {
  // Columns 2, 3 of every four are the upper word of each 32 bits.
  const auto sampled = [](const uint8_t* p) {
    return in_order(upper_words(loadu<V>(p), loadu<V>(p + V::size)));
  };
  return {sampled(even), sampled(odd)};
}

// Samples after the gain, a byte for each cell: eight B and eight Gr, eight Gb and eight R.
template <class V>
struct bright_cells {
  V b_gr, gb_r;
};
// Cells of the earlier tile from finished rows, four bytes of each colour, with those of the current tile between
// them.
template <class V>
PPL_INLINE bright_cells<V> bright_at(const uint8_t* even, const uint8_t* odd, V current) {
  const V earlier = even_then_odd(upper_words(load_every_second_16<V>(even), load_every_second_16<V>(odd)));
  return {lower32(earlier, current), upper32(earlier, current)};
}

// Gain and offset of the current tile's cells; bytes B, Gr, Gb, R, four of each.
template <class V>
struct current_gain {
  V gain_b_gr, gain_gb_r, delta_b_gr, delta_gb_r;
  PPL_INLINE_MEMBER explicit current_gain(const ppl_context& c)
      : gain_b_gr(even_lanes(c.gain_b_g, c.gain_g_r)),
        gain_gb_r(odd_lanes(c.gain_b_g, c.gain_g_r)),
        delta_b_gr(even_lanes(c.delta_b_g, c.delta_g_r)),
        delta_gb_r(odd_lanes(c.delta_b_g, c.delta_g_r)) {}
  static PPL_INLINE_MEMBER V odd_lanes(const vec_i16& a, const vec_i16& b) {
    return upper_words(repeat16<V>(&a), repeat16<V>(&b));
  }
  static PPL_INLINE_MEMBER V even_lanes(const vec_i16& a, const vec_i16& b) {
    return lower_words(repeat16<V>(&a), repeat16<V>(&b));
  }
  PPL_INLINE_MEMBER V operator()(black_cells<V> s) const {
    const V x = upper64(s.even_row, s.odd_row);
    return narrow(add16(srl16<5>(mullo16(even(x), gain_b_gr)), delta_b_gr),
                  add16(srl16<5>(mullo16(odd(x), gain_gb_r)), delta_gb_r));
  }
};

// ---- sums

// The sums of a group's cells, from eight bytes of each colour: 32-bit lanes B, green, the other green, R. Which green
// comes first makes no difference.
template <class V>
PPL_INLINE V sum(V b_green, V green_r) {
  return sum_eights(b_green, green_r);
}
template <class V>
PPL_INLINE V sum(bright_cells<V> s) {
  return sum(s.b_gr, s.gb_r);
}
// Even row B and Gb, odd row Gr and R: here the greens change places.
template <class V, class Mask>
PPL_INLINE V sum(Mask m, black_cells<V> s) {
  return sum(even_then_odd(keep(m, s.even_row)), even_then_odd(keep(m, s.odd_row)));
}

// ---- the tests

// Inclusive: x - lowest, unsigned, is at most highest - lowest. No range is empty.
template <class V>
struct difference_range {
  V lowest, span;
  PPL_INLINE_MEMBER difference_range(const vec_i16& low, const vec_i16& high)  // exclusive bounds
      : lowest(add16(repeat16<V>(&low), set16<V>(1))),
        span(sub16(sub16(repeat16<V>(&high), lowest), set16<V>(1))) {}
  PPL_INLINE_MEMBER V excess(V x) const { return subs_u16(sub16(x, lowest), span); }
};
template <class V>
struct difference_ranges {
  difference_range<V> BmGb, GrmR, sum, diff;
  PPL_INLINE_MEMBER explicit difference_ranges(const ppl_context& c)
      : BmGb(c.qual_BmGb_low, c.qual_BmGb_high),
        GrmR(c.qual_GrmR_low, c.qual_GrmR_high),
        sum(c.qual_sum_low, c.qual_sum_high),
        diff(c.qual_diff_low, c.qual_diff_high) {}
  PPL_INLINE_MEMBER V excess(black_cells<V> s) const {
    const V dbg = even_minus_odd(s.even_row), dgr = even_minus_odd(s.odd_row);
    return BmGb.excess(dbg) | GrmR.excess(dgr) | sum.excess(add16(dbg, dgr)) | diff.excess(sub16(dbg, dgr));
  }
};

// Whether any range of samples is narrower than 0 .. 255, the default; asked once a row pair.
static inline bool samples_tested(const ppl_context& c) {
  return (c.qual_gb_span.lane[0] & c.qual_rg_span.lane[0]) != -1;
}
// By how much the bytes of a word leave minimum .. minimum + span.
template <class V>
PPL_INLINE V sample_excess(V x, const vec_i16& minimum, const vec_i16& span) {
  return subs_u8(sub8(x, repeat16<V>(&minimum)), repeat16<V>(&span));
}

// A cell is rejected if all four samples are below a minimum above 0, or all four above a maximum below 255. By
// default the minimum is 0 and the maximum 255: neither test is made.
static inline bool exposure_tested(const ppl_context& c) {
  return c.qAE_min.lane[0] != 0 || c.qAE_above_max.lane[0] != 0;
}
// All ones in the bytes of rejected cells.
template <class V>
PPL_INLINE V rejected_cells(const ppl_context& c, bright_cells<V> s) {
  V top = max_u8(s.b_gr, s.gb_r), bottom = min_u8(s.b_gr, s.gb_r);
  top = max_u8(top, swap_halves(top));
  bottom = min_u8(bottom, swap_halves(bottom));
  const V low_on = set8<V>(c.qAE_min.lane[0] != 0 ? -1 : 0),
          high_on = set8<V>(c.qAE_above_max.lane[0] != 0 ? -1 : 0);
  return (to_vec(le_u8(top, repeat16<V>(&c.qAE_below_min))) & low_on) |
         (to_vec(le_u8(repeat16<V>(&c.qAE_above_max), bottom)) & high_on);
}

// ---- the walk along a row pair

// Counts a group in the histograms. Both greens often share a bin: the second count is then worked out from the first,
// not read back from memory.
PPL_INLINE void count(ppl_context& c, const uint32_t (&bins)[4]) {
  const uint32_t g = bins[1], g2 = bins[2];
  c.b_histogram[bins[0]] += 8;
  c.r_histogram[bins[3]] += 8;
  const uint32_t first = c.g_histogram[g] + 8, second = c.g_histogram[g2] + 8;
  c.g_histogram[g] = first;
  c.g_histogram[g2] = g == g2 ? first + 8 : second;
}

// All ones in the groups of a vector from number `first` on.
template <class V>
PPL_INLINE V groups_from(int first) {
  struct zeros_and_ones {
    uint8_t at[2 * V::size];
  };
  static constexpr zeros_and_ones bytes = [] {
    zeros_and_ones b = {};
    for (int i = V::size; i < 2 * V::size; ++i) b.at[i] = 0xff;
    return b;
  }();
  return loadu<V>(bytes.at + V::size - 16 * first);
}

template <class V>
PPL_INLINE void add_to(uint32_t* lanes, V sums) {
  storeu(lanes, add32(loadu<V>(lanes), sums));
}

// All groups of the row pair, at least as many as a wide vector holds. The last vector ends with the last group; the
// groups in it that were taken before add nothing.
template <class V>
PPL_INLINE void gather(const statistics_args& a, int groups) {
  constexpr int kGroups = V::size / 16;
  // With narrow vectors the processor has room to count the group before at the same time.
  constexpr bool kCountedAfterwards = kGroups > 1;
  ppl_context& c = *a.context;
  statistics_sums& total = c.sums;
  const difference_ranges<V> differences(c);
  const current_gain<V> gain(c);
  const bool test_samples = samples_tested(c), test_exposure = exposure_tested(c);
  V qualified = zero<V>(), exposed = zero<V>();
  V passed = zero<V>(), rejected = zero<V>();  // cells: in 16-bit lanes; in bytes, twice each
  for (int next = 0; next < groups; next += kGroups) {
    const int first = next + kGroups <= groups ? next : groups - kGroups;
    const int x = (2 * first + a.tile_lead) * kTile;
    const V fresh = groups_from<V>(next - first);
    const black_cells<V> black = black_at<V>(a.black_even + x, a.black_odd + x);
    const bright_cells<V> bright = bright_at(a.tone_even + x, a.tone_odd + x, gain(black));
    const V plain = sum(bright) & fresh;
    add_to(total.tiles[first], plain);
    if (a.plain_only) continue;

    V outside = differences.excess(black);
    if (test_samples)
      outside = outside | sample_excess(black.even_row, c.qual_gb_min, c.qual_gb_span) |
                sample_excess(black.odd_row, c.qual_rg_min, c.qual_rg_span);
    const auto pass = eq16(outside, zero<V>());
    const V group = sum(pass, black);
    storeu(total.bins[first], srl32<3>(group));
    if constexpr (!kCountedAfterwards)
      if (next > 0) count(c, total.bins[next - 1]);
    qualified = add32(qualified, group & fresh);
    passed = sub16(passed, to_vec(pass) & fresh);
    if (test_exposure) {
      const V out = rejected_cells(c, bright);
      exposed =
          add32(exposed, sum(bright_cells<V>{andnot(out, bright.b_gr), andnot(out, bright.gb_r)}) & fresh);
      rejected = sub8(rejected, out & fresh);
    } else {
      exposed = add32(exposed, plain);
    }
  }
  if (a.plain_only || groups == 0) return;
  for (int i = kCountedAfterwards ? 0 : groups - 1; i < groups; ++i) count(c, total.bins[i]);
  add_to(total.qualified, qualified);
  add_to(total.passed, sum_eights(passed, zero<V>()));
  add_to(total.exposed, exposed);
  add_to(total.rejected, sum_eights(rejected, zero<V>()));
  c.qAE_count += static_cast<uint32_t>(8 * groups);
}

}  // namespace statistics_detail

static void statistics(const statistics_args& args) {
  using namespace statistics_detail;
  const statistics_args a = args;
  tile_leftovers& left = a.context->leftovers;
  if (!a.plain_only) {
    // The tile before that of t = 1 is used for nothing else: it is overwritten with what the previous row pair left.
    const int x = a.tile_lead * kTile;
    store(a.black_even + x, loadu<vec16>(left.stat_even_row.lane));
    store(a.black_odd + x, loadu<vec16>(left.stat_odd_row.lane));
  }
  const int groups = (a.last_tile + 1) / 2;
  if (kWidth > 16 && groups < kWidth / 16)
    gather<vec16>(a, groups);
  else
    gather<wide>(a, groups);
  const int last_even = a.last_tile & ~1;
  if (!a.plain_only && last_even >= 2) {
    const int x = (last_even + a.tile_lead) * kTile;
    store(left.stat_even_row.lane, loadu<vec16>(a.black_even + x));
    store(left.stat_odd_row.lane, loadu<vec16>(a.black_odd + x));
  }
}

}  // namespace ppl::PPL_LEVEL
