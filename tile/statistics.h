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
// A vector holds as many groups as it has 16 bytes; every layout below is that of one group's 16 bytes. A group's
// cells are numbered: 0 .. 3 from the earlier tile, 4 .. 7 from the current one.
#pragma once

#include "tile/kernels.h"
#include "tile/simd.h"

namespace ppl::PPL_LEVEL {

namespace statistics_detail {

// ---- samples of V::size / 16 groups

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

// Columns 2, 3 of every four in two tiles: four 16-bit words from the one, then four from the other. They stand in the
// upper word of each 32 bits.
template <class V>
PPL_INLINE V sampled(V first, V second) {
  return narrow_s32(sra32<16>(first), sra32<16>(second));
}
template <class V>
PPL_INLINE V sampled(tile_pairs<V> t) {
  return sampled(t.earlier, t.current);
}

// Black-corrected samples, a 16-bit lane for each cell.
template <class V>
struct black_cells {
  V b, gb, gr, r;
  PPL_INLINE_MEMBER black_cells(V even_row, V odd_row)  // words (B, Gb) and (Gr, R)
      : b(even(even_row)), gb(odd(even_row)), gr(even(odd_row)), r(odd(odd_row)) {}
};

// Samples after the gain, a byte for each cell: eight Gr and eight B, eight R and eight Gb.
template <class V>
struct bright_cells {
  V gr_b, r_gb;
};

// Gain and offset of the current tile's cells, in the order that their bytes get: Gr, B, R, Gb, four of each.
template <class V>
struct current_gain {
  V gain_gr_b, gain_r_gb, delta_gr_b, delta_r_gb;
  PPL_INLINE_MEMBER explicit current_gain(const ppl_context& c)
      : gain_gr_b(lower64(lane<0>(c.gain_g_r), lane<0>(c.gain_b_g))),
        gain_r_gb(lower64(lane<1>(c.gain_g_r), lane<1>(c.gain_b_g))),
        delta_gr_b(lower64(lane<0>(c.delta_g_r), lane<0>(c.delta_b_g))),
        delta_r_gb(lower64(lane<1>(c.delta_g_r), lane<1>(c.delta_b_g))) {}
  template <int N>
  static PPL_INLINE_MEMBER V lane(const vec_i16& v) {
    return set16<V>(v.lane[N]);
  }
  PPL_INLINE_MEMBER V operator()(const black_cells<V>& s) const {
    const V gr_b = upper64(s.gr, s.b), r_gb = upper64(s.r, s.gb);
    return narrow(add16(srl16<5>(mullo16(gr_b, gain_gr_b)), delta_gr_b),
                  add16(srl16<5>(mullo16(r_gb, gain_r_gb)), delta_r_gb));
  }
};

// From finished rows the earlier tile's cells, with the current one's between them.
template <class V>
PPL_INLINE bright_cells<V> bright(V tone_even, V tone_odd, V current) {
  const V words = sampled(tone_odd, tone_even);
  const V earlier = narrow(even(words), odd(words));
  return {lower32(earlier, current), upper32(earlier, current)};
}

// ---- sums

// The sums of a group's cells, in 32-bit lanes.
template <class V>
PPL_INLINE V sum_gr_r_b_gb(V gr_b, V r_gb) {
  return sad_u8(gr_b, zero<V>()) | shuffle32<1, 0, 3, 2>(sad_u8(r_gb, zero<V>()));
}
// As they stand in a cell of sub_window_means: R, G, B, and nothing for what follows there.
template <class V>
PPL_INLINE V sum_r_g_b(V gr_b, V r_gb) {
  return add32(shuffle32<1, 0, 2, 1>(sad_u8(gr_b, zero<V>())),
               shuffle32<0, 2, 1, 1>(sad_u8(r_gb, zero<V>())));
}

// ---- the tests

// Inclusive: x - lowest, unsigned, is at most highest - lowest. No range is empty.
template <class V>
struct difference_range {
  V lowest, span;
  PPL_INLINE_MEMBER difference_range(const vec_i16& low, const vec_i16& high)  // exclusive bounds
      : lowest(set16<V>(low.lane[0] + 1)), span(set16<V>(high.lane[0] - low.lane[0] - 2)) {}
  PPL_INLINE_MEMBER V excess(V x) const { return subs_u16(sub16(x, lowest), span); }
};
template <class V>
struct qual_ranges {
  V gb_min, gb_span, rg_min, rg_span;  // byte pairs: minimum and maximum - minimum
  difference_range<V> BmGb, GrmR, sum, diff;
  bool samples_tested;
  PPL_INLINE_MEMBER explicit qual_ranges(const ppl_context& c)
      : gb_min(repeat16<V>(&c.qual_gb_min)),
        gb_span(repeat16<V>(&c.qual_gb_span)),
        rg_min(repeat16<V>(&c.qual_rg_min)),
        rg_span(repeat16<V>(&c.qual_rg_span)),
        BmGb(c.qual_BmGb_low, c.qual_BmGb_high),
        GrmR(c.qual_GrmR_low, c.qual_GrmR_high),
        sum(c.qual_sum_low, c.qual_sum_high),
        diff(c.qual_diff_low, c.qual_diff_high),
        samples_tested((c.qual_gb_span.lane[0] & c.qual_rg_span.lane[0]) != -1) {}

  // How far the bytes of a word leave minimum .. minimum + span.
  static PPL_INLINE_MEMBER V excess(V x, V minimum, V span) { return subs_u8(sub8(x, minimum), span); }
  PPL_INLINE_MEMBER auto pass(const black_cells<V>& s, V even_row, V odd_row) const {
    const V dbg = sub16(s.b, s.gb), dgr = sub16(s.gr, s.r);
    V outside =
        BmGb.excess(dbg) | GrmR.excess(dgr) | sum.excess(add16(dbg, dgr)) | diff.excess(sub16(dbg, dgr));
    if (samples_tested)
      outside = outside | excess(even_row, gb_min, gb_span) | excess(odd_row, rg_min, rg_span);
    return eq16(outside, zero<V>());
  }
};

// A cell is rejected if all four samples are below a minimum above 0, or all four above a maximum below 255: a test
// that stands at its limit is off.
template <class V>
struct exposure_range {
  V below_min, above_max;  // the bytes that reject
  V low_on, high_on;       // all ones or all zeros
  bool open;               // both tests are off
  PPL_INLINE_MEMBER explicit exposure_range(const ppl_context& c)
      : below_min(repeat16<V>(&c.qAE_below_min)),
        above_max(repeat16<V>(&c.qAE_above_max)),
        low_on(set8<V>(c.qAE_min.lane[0] != 0 ? -1 : 0)),
        high_on(set8<V>(c.qAE_above_max.lane[0] != 0 ? -1 : 0)),
        open(c.qAE_min.lane[0] == 0 && c.qAE_above_max.lane[0] == 0) {}
  // A byte for each cell, the eight of them twice.
  PPL_INLINE_MEMBER V rejected(bright_cells<V> s) const {
    V top = max_u8(s.gr_b, s.r_gb), bottom = min_u8(s.gr_b, s.r_gb);
    top = max_u8(top, shuffle32<2, 3, 0, 1>(top));
    bottom = min_u8(bottom, shuffle32<2, 3, 0, 1>(bottom));
    return (to_vec(le_u8(top, below_min)) & low_on) | (to_vec(le_u8(above_max, bottom)) & high_on);
  }
};

// ---- the walk along a row pair

// The cells of sub_window_means from left to right. What belongs to one cell is added up here first.
struct cell_walk {
  ppl_context& c;
  rgb32* cell;
  int end_tile;  // where the cell ends
  vec16 sums = zero<vec16>();

  cell_walk(ppl_context& context, int row_pair)
      : c(context), cell(outside_cell(&context)), end_tile(INT32_MAX) {
    if (row_pair >= c.grid_row_pairs || c.grid_tiles == 0) return;
    cell = &c.sub_window_means[kGridColumns * (row_pair / c.cell_row_pairs)];
    end_tile = c.cell_tiles;
  }
  PPL_INLINE_MEMBER void add(int tile, vec16 r_g_b) {
    if (tile >= end_tile) move_to(tile);
    sums = add32(sums, r_g_b);
  }
  PPL_INLINE_MEMBER void move_to(int tile) {
    finish();
    while (tile >= end_tile) {
      ++cell;
      end_tile += c.cell_tiles;
      if (end_tile > c.grid_tiles) {
        cell = outside_cell(&c);
        end_tile = INT32_MAX;
      }
    }
    sums = zero<vec16>();
  }
  PPL_INLINE_MEMBER void finish() {
    alignas(16) uint32_t at[4];
    store(at, sums);
    cell->r += at[0];
    cell->g += at[1];
    cell->b += at[2];
  }
};

// Both greens of a group often share a bin: the second count follows from the first then, not from memory.
PPL_INLINE void count_greens(uint32_t* bins, uint32_t gb, uint32_t gr) {
  const uint32_t first = bins[gb] + 8, second = bins[gr] + 8;
  bins[gb] = first;
  bins[gr] = gb == gr ? first + 8 : second;
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

// All groups of the row pair, of which there are at least as many as a vector holds. The last vector ends with the last
// group; the groups that it takes again are left out.
template <class V>
PPL_INLINE void gather(const statistics_args& a, int groups) {
  constexpr int kGroups = V::size / 16;
  ppl_context& c = *a.context;
  const qual_ranges<V> qual(c);
  const exposure_range<V> exposure(c);
  const current_gain<V> gain(c);
  cell_walk walk(c, a.row_pair);
  V qualified = zero<V>(), exposed = zero<V>();  // sums as sum_gr_r_b_gb and sum_r_g_b make them
  V passed = zero<V>(), rejected = zero<V>();    // cells: in 16-bit lanes, and twice in bytes
  for (int next = 0; next < groups; next += kGroups) {
    const int first = next + kGroups <= groups ? next : groups - kGroups;
    const int again = next - first;
    const int x = (2 * first + a.tile_lead) * kTile;
    const V even_row = sampled(pairs_at<V>(a.black_even + x)),
            odd_row = sampled(pairs_at<V>(a.black_odd + x));
    const black_cells<V> black(even_row, odd_row);
    const bright_cells<V> s =
        bright(pairs_at<V>(a.tone_even + x).earlier, pairs_at<V>(a.tone_odd + x).earlier, gain(black));
    const V plain = sum_r_g_b(s.gr_b, s.r_gb);
    alignas(64) uint32_t sums[4 * kGroups];
    store(sums, plain);
    for (int g = again; g < kGroups; ++g) walk.add(2 * (first + g) + 1, load<vec16>(sums + 4 * g));
    if (a.plain_only) continue;

    const V fresh = groups_from<V>(again);
    const auto in_ranges = qual.pass(black, even_row, odd_row);
    const V group = sum_gr_r_b_gb(narrow(keep(in_ranges, black.gr), keep(in_ranges, black.b)),
                                  narrow(keep(in_ranges, black.r), keep(in_ranges, black.gb)));
    qualified = add32(qualified, group & fresh);
    passed = sub16(passed, to_vec(in_ranges) & fresh);
    alignas(64) uint32_t bins[4 * kGroups];
    store(bins, srl32<3>(group));
    for (int g = again; g < kGroups; ++g) {
      const uint32_t* const bin = bins + 4 * g;
      c.r_histogram[bin[1]] += 8;
      c.b_histogram[bin[2]] += 8;
      count_greens(c.g_histogram, bin[3], bin[0]);
    }
    if (exposure.open) {
      exposed = add32(exposed, plain & fresh);
    } else {
      const V out = exposure.rejected(s);
      exposed = add32(exposed, sum_r_g_b(andnot(out, s.gr_b), andnot(out, s.r_gb)) & fresh);
      rejected = sub8(rejected, out & fresh);
    }
  }
  walk.finish();
  if (a.plain_only) return;
  alignas(64) uint32_t q[V::size / 4], e[V::size / 4];
  store(q, qualified);
  store(e, exposed);
  for (int g = 0; g < V::size / 4; g += 4) {
    c.qual_means.r += q[g + 1];
    c.qual_means.g += q[g] + q[g + 3];
    c.qual_means.b += q[g + 2];
    c.qAE_means.r += e[g];
    c.qAE_means.g += e[g + 1];
    c.qAE_means.b += e[g + 2];
  }
  // Bytes of 0 .. 128 each, all cells counted in two places of a group.
  alignas(64) uint64_t in[V::size / 8], out[V::size / 8];
  store(in, sad_u8(passed, zero<V>()));
  store(out, sad_u8(rejected, zero<V>()));
  for (int i = 0; i < V::size / 8; ++i) c.qual_count += static_cast<uint32_t>(in[i]);
  c.qAE_count += static_cast<uint32_t>(8 * groups);
  for (int i = 0; i < V::size / 8; i += 2) c.qAE_count -= static_cast<uint32_t>(out[i]);
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
