// The statistics' kernel alone, at every vector level, cell by cell against the rule: any number of groups, row pairs
// in and below the grid, tests on and off.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <vector>

#include "ppl.h"
#include "record/context.h"
#include "record/levels.h"
#include "support/level.h"
#include "support/random.h"
#include "tile/kernels.h"
#include "tile/statistics_sums.h"

namespace {

constexpr int kFrameWidth = 432,
              kFrameHeight = 108;  // 27 tiles: cells of 3, outside 24 .. 26; cells of 9 row pairs
constexpr int kLine = 512;

struct figures {
  std::array<uint32_t, 256> r_bins{}, g_bins{}, b_bins{};
  std::array<std::array<uint32_t, 3>, 49> cells{};
  std::array<uint32_t, 4> qual{}, exposure{};  // R, G, B, count
  bool operator==(const figures&) const = default;
};

struct line_pair {
  alignas(64) std::array<uint8_t, kLine> black_even, black_odd, tone_even, tone_odd;
};

struct cell {
  int b, gb, gr, r;
};

// What the tests ask for, as a caller sets it.
struct settings {
  int r[2], g[2], b[2], bmgb[2], grmr[2], sum[2], diff[2], exposure[2];
  int gain[3], delta[3];
};

class plain_statistics {
 public:
  explicit plain_statistics(const settings& s) : set_(s) {}
  figures sums;

  void add(const line_pair& lines, int row_pair, int last_tile, int lead, bool plain_only) {
    for (int t = 1; t <= last_tile; t += 2) {
      const int here = 16 * (t + lead);
      int sum[4] = {};
      for (int i = 0; i < 8; ++i) {
        const bool current = i >= 4;
        const int column = 4 * (i % 4) + 2, x = here - (current ? 0 : 16) + column;
        cell black = {lines.black_even[x], lines.black_even[x + 1], lines.black_odd[x],
                      lines.black_odd[x + 1]};
        const cell gained = {value(black.b, 2), value(black.gb, 1), value(black.gr, 1), value(black.r, 0)};
        const cell tone = {lines.tone_even[x], lines.tone_even[x + 1], lines.tone_odd[x],
                           lines.tone_odd[x + 1]};
        if (t == 1 && !current)
          black = {left_even_[column], left_even_[column + 1], left_odd_[column], left_odd_[column + 1]};
        add_bright(current ? gained : tone, t, row_pair, plain_only);
        if (plain_only || !passes(black)) continue;
        sum[0] += black.b;
        sum[1] += black.gb;
        sum[2] += black.gr;
        sum[3] += black.r;
        count(sums.qual, black);
      }
      if (plain_only) continue;
      sums.b_bins[sum[0] / 8] += 8;
      sums.g_bins[sum[1] / 8] += 8;
      sums.g_bins[sum[2] / 8] += 8;
      sums.r_bins[sum[3] / 8] += 8;
    }
    if (plain_only || last_tile < 2) return;
    const int x = 16 * (last_tile / 2 * 2 + lead);
    std::copy_n(&lines.black_even[x], 16, left_even_.begin());
    std::copy_n(&lines.black_odd[x], 16, left_odd_.begin());
  }

 private:
  const settings set_;
  std::array<uint8_t, 16> left_even_{}, left_odd_{};

  int value(int x, int colour) const {
    return std::clamp((x * (set_.gain[colour] / 8)) / 32 + set_.delta[colour], 0, 255);
  }
  static bool within(int x, const int (&range)[2]) { return range[0] <= x && x <= range[1]; }
  bool passes(const cell& s) const {
    const int dbg = s.b - s.gb, dgr = s.gr - s.r;
    return within(s.b, set_.b) && within(s.gb, set_.g) && within(s.gr, set_.g) && within(s.r, set_.r) &&
           within(dbg, set_.bmgb) && within(dgr, set_.grmr) && within(dbg + dgr, set_.sum) &&
           within(dbg - dgr, set_.diff);
  }
  static void count(std::array<uint32_t, 4>& sum, const cell& s) {
    sum[0] += uint32_t(s.r);
    sum[1] += uint32_t(s.gb + s.gr);
    sum[2] += uint32_t(s.b);
    ++sum[3];
  }
  void add_bright(const cell& s, int tile, int row_pair, bool plain_only) {
    const int column = tile / 3, row = row_pair / 9;
    auto& to = sums.cells[column < 8 && row < 6 ? size_t(8 * row + column) : 48];
    to[0] += uint32_t(s.r);
    to[1] += uint32_t(s.gb + s.gr);
    to[2] += uint32_t(s.b);
    const int low = std::min({s.b, s.gb, s.gr, s.r}), high = std::max({s.b, s.gb, s.gr, s.r});
    const int(&range)[2] = set_.exposure;
    const bool rejected = (range[0] > 0 && high < range[0]) || (range[1] < 255 && low > range[1]);
    if (!plain_only && !rejected) count(sums.exposure, s);
  }
};

figures figures_of(const ppl_context& c) {
  figures f;
  std::copy_n(c.r_histogram, 256, f.r_bins.begin());
  std::copy_n(c.g_histogram, 256, f.g_bins.begin());
  std::copy_n(c.b_histogram, 256, f.b_bins.begin());
  for (size_t i = 0; i < 49; ++i)
    f.cells[i] = {c.sub_window_means[i].r, c.sub_window_means[i].g, c.sub_window_means[i].b};
  f.qual = {c.qual_means.r, c.qual_means.g, c.qual_means.b, c.qual_count};
  f.exposure = {c.qAE_means.r, c.qAE_means.g, c.qAE_means.b, c.qAE_count};
  return f;
}

void start_frame(ppl_context& c) {
  std::fill_n(c.r_histogram, 256, 0u);
  std::fill_n(c.g_histogram, 256, 0u);
  std::fill_n(c.b_histogram, 256, 0u);
  std::fill_n(c.sub_window_means, 49, ppl::rgb32{});
  c.qual_means = c.qAE_means = {};
  c.qual_count = c.qAE_count = 0;
  c.leftovers.stat_even_row = c.leftovers.stat_odd_row = {};
  ppl::clear_sums(c.sums);
}

void apply(ppl_context& c, const settings& s) {
  ppl_set_qual_RGB_min_max(&c, s.r[0], s.r[1], s.g[0], s.g[1], s.b[0], s.b[1]);
  ppl_set_qual_BmGb_min_max(&c, s.bmgb[0], s.bmgb[1]);
  ppl_set_qual_GrmR_min_max(&c, s.grmr[0], s.grmr[1]);
  ppl_set_qual_BmGb_p_GrmR_min_max(&c, s.sum[0], s.sum[1]);
  ppl_set_qual_BmGb_m_GrmR_min_max(&c, s.diff[0], s.diff[1]);
  ppl_set_qAE_RGB_min_max(&c, s.exposure[0], s.exposure[1]);
  ppl_set_rgb_gain(&c, uint32_t(s.gain[0]), uint32_t(s.gain[1]), uint32_t(s.gain[2]));
  ppl_set_rgb_delta(&c, s.delta[0], s.delta[1], s.delta[2]);
}

constexpr settings kDefaults = {{0, 255},  {0, 255},  {0, 255}, {-25, 25},       {-25, 25},
                                {-30, 30}, {-30, 30}, {0, 255}, {256, 256, 256}, {0, 0, 0}};

class Statistics : public testing::Test {
 protected:
  std::mt19937 random_{static_cast<uint32_t>(support::seed(4711))};
  int in(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }

  line_pair lines() {
    line_pair l;
    const int level = in(0, 255), spread = in(0, 3) * in(0, 40) + 1;
    for (auto* row : {&l.black_even, &l.black_odd, &l.tone_even, &l.tone_odd})
      for (uint8_t& x : *row) x = uint8_t(std::clamp(level + in(-spread, spread), 0, 255));
    return l;
  }

  // Four row pairs of the same frame: two of one row of the grid, one of another, one below it.
  void compare(const settings& set, int last_tile, int lead, bool plain_only) {
    constexpr int kRowPairs[] = {9, 11, 19, 55};
    std::vector<line_pair> rows;
    for (int i = 0; i < 4; ++i) rows.push_back(lines());
    plain_statistics expected(set);
    for (int i = 0; i < 4; ++i) expected.add(rows[i], kRowPairs[i], last_tile, lead, plain_only);
    for (int level = 0; level < ppl_test_levels(); ++level) {
      ppl_test_force_level(level);
      ppl_context* const c = ppl_init();
      ASSERT_NE(c, nullptr);
      SCOPED_TRACE(c->kernels->name);
      ASSERT_TRUE(ppl_new_frame_size(c, kFrameWidth, kFrameHeight, kFrameWidth));
      ASSERT_EQ(c->cell_tiles, 3);
      ASSERT_EQ(c->cell_row_pairs, 9);
      apply(*c, set);
      start_frame(*c);
      for (int i = 0; i < 4; ++i) {
        line_pair l = rows[i];
        ppl::enter_row_pair(*c, kRowPairs[i]);
        c->kernels->tile->statistics({.context = c,
                                      .black_even = l.black_even.data(),
                                      .black_odd = l.black_odd.data(),
                                      .tone_even = l.tone_even.data(),
                                      .tone_odd = l.tone_odd.data(),
                                      .plain_only = plain_only,
                                      .last_tile = last_tile,
                                      .tile_lead = lead});
      }
      ppl::settle_sums(*c);
      EXPECT_EQ(figures_of(*c), expected.sums) << last_tile << " tiles, lead " << lead;
      ppl_free(c);
    }
    ppl_test_force_level(-1);
  }
};

TEST_F(Statistics, EveryNumberOfGroups) {
  for (int last_tile = 0; last_tile <= 26; ++last_tile)
    for (const bool plain_only : {false, true}) compare(kDefaults, last_tile, in(0, 3), plain_only);
}

TEST_F(Statistics, OneTestAfterTheOther) {
  const auto with = [&](auto change) {
    settings s = kDefaults;
    change(s);
    for (int i = 0; i < 8; ++i) compare(s, in(1, 26), in(0, 3), false);
  };
  const auto put = [](int(&range)[2], int low, int high) { range[0] = low, range[1] = high; };
  with([&](settings& s) { put(s.r, 100, 140); });
  with([&](settings& s) { put(s.g, 0, 128); });
  with([&](settings& s) { put(s.b, 128, 255); });
  with([&](settings& s) { put(s.bmgb, 3, 90); });
  with([&](settings& s) { put(s.grmr, -90, -3); });
  with([&](settings& s) { put(s.sum, -400, 5), put(s.bmgb, -255, 255), put(s.grmr, -255, 255); });
  with([&](settings& s) { put(s.diff, 0, 0), put(s.bmgb, -32767, 32766); });
  with([&](settings& s) { put(s.exposure, 100, 255); });
  with([&](settings& s) { put(s.exposure, 0, 150); });
  with([&](settings& s) { put(s.exposure, 90, 110); });
  with([&](settings& s) { s.gain[0] = 2047, s.gain[2] = 100, s.delta[1] = -40, s.delta[2] = 30; });
}

TEST_F(Statistics, AnySettings) {
  for (int i = 0; i < 200; ++i) {
    settings s = kDefaults;
    const auto narrow = [&](int(&range)[2], int low, int high) {
      if (in(0, 2) != 0) return;
      range[0] = in(low, high);
      range[1] = in(range[0], high);
    };
    for (auto* range : {&s.r, &s.g, &s.b, &s.exposure}) narrow(*range, 0, 255);
    for (auto* range : {&s.bmgb, &s.grmr}) narrow(*range, -255, 255);
    for (auto* range : {&s.sum, &s.diff}) narrow(*range, -510, 510);
    for (int& gain : s.gain) gain = in(0, 2047);
    for (int& delta : s.delta) delta = in(-255, 255);
    compare(s, in(1, 26), in(0, 3), false);
  }
}

}  // namespace
