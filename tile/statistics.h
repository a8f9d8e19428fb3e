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
//
// A group is 16 bytes of the even row and 16 of the odd row, so a vector takes as many groups at once as it has 16
// bytes; every figure below is per 16 bytes.
#pragma once

#include "tile/kernels.h"
#include "tile/simd.h"

namespace ppl::PPL_LEVEL {

namespace statistics_detail {

// ---- the cells of V::size / 16 groups

// The earlier and the current tile of each group, apart.
template <class V>
struct tile_pairs {
  V earlier, current;
};

PPL_INLINE void load_pairs(tile_pairs<vec<16>>& t, const uint8_t* p) {
  t = {loadu<vec16>(p), loadu<vec16>(p + 16)};
}
#if defined(PPL_LEVEL_avx2) || defined(PPL_LEVEL_avx512)
PPL_INLINE void load_pairs(tile_pairs<vec<32>>& t, const uint8_t* p) {
  const __m256i a = loadu<vec<32>>(p).v, b = loadu<vec<32>>(p + 32).v;
  t = {{_mm256_permute2x128_si256(a, b, 0x20)}, {_mm256_permute2x128_si256(a, b, 0x31)}};
}
#endif
#if defined(PPL_LEVEL_avx512)
PPL_INLINE void load_pairs(tile_pairs<vec<64>>& t, const uint8_t* p) {
  const __m512i a = loadu<vec<64>>(p).v, b = loadu<vec<64>>(p + 64).v;
  t = {{_mm512_shuffle_i64x2(a, b, 0x88)}, {_mm512_shuffle_i64x2(a, b, 0xdd)}};
}
#endif
template <class V>
PPL_INLINE tile_pairs<V> pairs_at(const uint8_t* p) {
  tile_pairs<V> t;
  load_pairs(t, p);
  return t;
}

// 16-bit words (B, Gb) of the even row and (Gr, R) of the odd row, the earlier tile's cells in the lower word of each
// 32 bits and the current one's in the upper. Columns 2, 3 of every four stand in the upper word of each 32 bits.
template <class V>
struct cells {
  V even_row, odd_row;
};
template <class V>
PPL_INLINE V from_earlier(V tile) {
  return srl32<16>(tile);
}
template <class V>
PPL_INLINE V only_current(V words) {
  return words & set32<V>(static_cast<int>(0xffff0000u));
}
template <class V>
PPL_INLINE V sampled(tile_pairs<V> t) {
  return from_earlier(t.earlier) | only_current(t.current);
}

// ---- sums over a group's cells, two 64-bit lanes each: (B, Gb) and (Gr, R)

template <class V>
struct sums {
  V b_gb, gr_r;
  static PPL_INLINE_MEMBER sums none() { return {zero<V>(), zero<V>()}; }
};

// The low bytes of the words to the lower half, the high ones to the upper: one sum of eight bytes for each.
template <class V>
PPL_INLINE V sum_by_place(V words) {
  return sad_u8(narrow(even(words), odd(words)), zero<V>());
}
template <class V>
PPL_INLINE sums<V> sum(cells<V> c) {
  return {sum_by_place(c.even_row), sum_by_place(c.odd_row)};
}
template <class V>
PPL_INLINE sums<V> operator+(sums<V> a, sums<V> b) {
  return {add64(a.b_gb, b.b_gb), add64(a.gr_r, b.gr_r)};
}
template <class V, class Mask>
PPL_INLINE cells<V> keep(Mask m, cells<V> s) {
  return {keep(m, s.even_row), keep(m, s.odd_row)};
}

// The sums of each group as numbers.
template <class V>
struct group_sums {
  alignas(64) uint64_t b_gb[V::size / 8], gr_r[V::size / 8];
  PPL_INLINE_MEMBER explicit group_sums(sums<V> s) {
    store(b_gb, s.b_gb);
    store(gr_r, s.gr_r);
  }
  static constexpr int kGroups = V::size / 16;
  uint32_t b(int g) const { return static_cast<uint32_t>(b_gb[2 * g]); }
  uint32_t gb(int g) const { return static_cast<uint32_t>(b_gb[2 * g + 1]); }
  uint32_t gr(int g) const { return static_cast<uint32_t>(gr_r[2 * g]); }
  uint32_t r(int g) const { return static_cast<uint32_t>(gr_r[2 * g + 1]); }
  PPL_INLINE_MEMBER void add_to(rgb32& total, int g) const {
    total.r += r(g);
    total.g += gb(g) + gr(g);
    total.b += b(g);
  }
};

// What passing cells add up to in a row pair: sums, and the cells themselves in 16-bit lanes (a row has far fewer
// groups than a lane can count).
template <class V>
struct totals {
  sums<V> of_passed = sums<V>::none();
  V cells_passed = zero<V>();
  template <class Mask>
  PPL_INLINE_MEMBER void add(Mask pass, sums<V> s) {
    of_passed = of_passed + s;
    cells_passed = sub16(cells_passed, to_vec(pass));
  }
  PPL_INLINE_MEMBER void add_to(rgb32& total, uint32_t& count) const {
    const group_sums<V> s(of_passed);
    for (int g = 0; g < group_sums<V>::kGroups; ++g) s.add_to(total, g);
    alignas(64) uint16_t lanes[V::size / 2];
    store(lanes, cells_passed);
    for (const uint16_t n : lanes) count += n;
  }
};

// ---- the tests

template <class V>
struct qual_ranges {
  V gb_min, gb_span, rg_min, rg_span;  // byte pairs: minimum and maximum - minimum
  V BmGb_low, BmGb_high, GrmR_low, GrmR_high, sum_low, sum_high, diff_low, diff_high;  // exclusive
  PPL_INLINE_MEMBER explicit qual_ranges(const ppl_context& c)
      : gb_min(repeat16<V>(&c.qual_gb_min)),
        gb_span(repeat16<V>(&c.qual_gb_span)),
        rg_min(repeat16<V>(&c.qual_rg_min)),
        rg_span(repeat16<V>(&c.qual_rg_span)),
        BmGb_low(repeat16<V>(&c.qual_BmGb_low)),
        BmGb_high(repeat16<V>(&c.qual_BmGb_high)),
        GrmR_low(repeat16<V>(&c.qual_GrmR_low)),
        GrmR_high(repeat16<V>(&c.qual_GrmR_high)),
        sum_low(repeat16<V>(&c.qual_sum_low)),
        sum_high(repeat16<V>(&c.qual_sum_high)),
        diff_low(repeat16<V>(&c.qual_diff_low)),
        diff_high(repeat16<V>(&c.qual_diff_high)) {}

  static PPL_INLINE_MEMBER auto between(V x, V low, V high) { return gt_s16(x, low) & gt_s16(high, x); }
  // How far the bytes of a word leave minimum .. minimum + span.
  static PPL_INLINE_MEMBER V excess(V x, V minimum, V span) { return subs_u8(sub8(x, minimum), span); }
  PPL_INLINE_MEMBER auto pass(cells<V> s) const {
    const V dbg = sub16(even(s.even_row), odd(s.even_row));
    const V dgr = sub16(even(s.odd_row), odd(s.odd_row));
    const V outside = excess(s.even_row, gb_min, gb_span) | excess(s.odd_row, rg_min, rg_span);
    return eq16(outside, zero<V>()) & between(dbg, BmGb_low, BmGb_high) & between(dgr, GrmR_low, GrmR_high) &
           between(add16(dbg, dgr), sum_low, sum_high) & between(sub16(dbg, dgr), diff_low, diff_high);
  }
};

// A cell is rejected if all four samples are below a minimum above 0, or all four above a maximum below 255: a test
// that stands at its limit is off.
template <class V>
struct exposure_range {
  V below_min, above_max;  // the bytes that reject
  V low_on, high_on;       // all ones or all zeros
  PPL_INLINE_MEMBER explicit exposure_range(const ppl_context& c)
      : below_min(repeat16<V>(&c.qAE_below_min)),
        above_max(repeat16<V>(&c.qAE_above_max)),
        low_on(set8<V>(c.qAE_min.lane[0] != 0 ? -1 : 0)),
        high_on(set8<V>(c.qAE_above_max.lane[0] != 0 ? -1 : 0)) {}
  PPL_INLINE_MEMBER auto pass(cells<V> s) const {
    const V top = max_u8(s.even_row, s.odd_row), bottom = min_u8(s.even_row, s.odd_row);
    const V too_low = to_vec(eq16(subs_u8(top, below_min), zero<V>())) & low_on;
    const V too_high = to_vec(eq16(subs_u8(above_max, bottom), zero<V>())) & high_on;
    return eq16(too_low | too_high, zero<V>());
  }
};

// Gain and offset of the current tile's cells, both rows in one vector: the even row's words in the lower half of each
// 32 bits, the odd row's in the upper.
template <class V>
struct current_gain {
  V gain_low, gain_high, delta_low, delta_high;  // of the low and the high byte of each word
  PPL_INLINE_MEMBER explicit current_gain(const ppl_context& c)
      : gain_low(pair(c.gain_b_g, c.gain_g_r, 0)),
        gain_high(pair(c.gain_b_g, c.gain_g_r, 1)),
        delta_low(pair(c.delta_b_g, c.delta_g_r, 0)),
        delta_high(pair(c.delta_b_g, c.delta_g_r, 1)) {}
  static PPL_INLINE_MEMBER V pair(const vec_i16& even_row, const vec_i16& odd_row, int place) {
    const uint32_t low = static_cast<uint16_t>(even_row.lane[place]),
                   high = static_cast<uint16_t>(odd_row.lane[place]);
    return set32<V>(static_cast<int>(low | high << 16));
  }
  PPL_INLINE_MEMBER V operator()(cells<V> black) const {
    const V x = srl32<16>(black.even_row) | only_current(black.odd_row);
    return join_clamp8(add16(srl16<5>(mullo16(even(x), gain_low)), delta_low),
                       add16(srl16<5>(mullo16(odd(x), gain_high)), delta_high));
  }
};

// ---- the walk along a row pair

// The cells of sub_window_means, tile by tile from left to right.
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
  rgb32& at(int tile) {
    if (!in_grid) return *cell;
    if (tile >= c.grid_tiles) return *outside_cell(&c);
    for (; tile >= end_tile; end_tile += c.cell_tiles) ++cell;
    return *cell;
  }
};

// The groups of tiles t, t + 2 ... as long as a whole vector of them is left; the first tile that is.
template <class V>
PPL_INLINE int gather(const statistics_args& a, cell_walk& walk, int t) {
  constexpr int kGroups = V::size / 16;
  ppl_context& c = *a.context;
  const qual_ranges<V> qual(c);
  const exposure_range<V> exposure(c);
  const current_gain<V> gain(c);
  totals<V> qualified, exposed;
  for (; t + 2 * (kGroups - 1) <= a.last_tile; t += 2 * kGroups) {
    const int x = (t + a.tile_lead - 1) * kTile;
    const cells<V> black = {sampled(pairs_at<V>(a.black_even + x)), sampled(pairs_at<V>(a.black_odd + x))};
    const V value = gain(black);
    const cells<V> s = {from_earlier(pairs_at<V>(a.tone_even + x).earlier) | sll32<16>(value),
                        from_earlier(pairs_at<V>(a.tone_odd + x).earlier) | only_current(value)};
    const group_sums<V> plain(sum(s));
    for (int g = 0; g < kGroups; ++g) plain.add_to(walk.at(t + 2 * g), g);
    if (a.plain_only) continue;
    const auto in_ranges = qual.pass(black);
    const sums<V> group = sum(keep(in_ranges, black));
    qualified.add(in_ranges, group);
    const group_sums<V> means(group);
    for (int g = 0; g < kGroups; ++g) {
      c.r_histogram[means.r(g) >> 3] += 8;
      c.b_histogram[means.b(g) >> 3] += 8;
      // Both greens often share a bin: one addition then, since a second would wait for the first.
      const uint32_t gb = means.gb(g) >> 3, gr = means.gr(g) >> 3;
      if (gb == gr) {
        c.g_histogram[gb] += 16;
      } else {
        c.g_histogram[gb] += 8;
        c.g_histogram[gr] += 8;
      }
    }
    const auto in_exposure = exposure.pass(s);
    exposed.add(in_exposure, sum(keep(in_exposure, s)));
  }
  if (!a.plain_only) {
    qualified.add_to(c.qual_means, c.qual_count);
    exposed.add_to(c.qAE_means, c.qAE_count);
  }
  return t;
}

}  // namespace statistics_detail

static void statistics(const statistics_args& args) {
  using namespace statistics_detail;
  const statistics_args a = args;
  tile_leftovers& left = a.context->leftovers;
  if (!a.plain_only) {
    // The tile before that of t = 1 is nobody else's: it stands for what the previous row pair left.
    const int x = a.tile_lead * kTile;
    store(a.black_even + x, loadu<vec16>(left.stat_even_row.lane));
    store(a.black_odd + x, loadu<vec16>(left.stat_odd_row.lane));
  }
  cell_walk walk(*a.context, a.row_pair);
  int t = gather<wide>(a, walk, 1);
  if constexpr (kWidth > 16) t = gather<vec16>(a, walk, t);
  const int last_even = a.last_tile & ~1;
  if (!a.plain_only && last_even >= 2) {
    const int x = (last_even + a.tile_lead) * kTile;
    store(left.stat_even_row.lane, loadu<vec16>(a.black_even + x));
    store(left.stat_odd_row.lane, loadu<vec16>(a.black_odd + x));
  }
}

}  // namespace ppl::PPL_LEVEL
