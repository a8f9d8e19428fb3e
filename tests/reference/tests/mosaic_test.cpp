// Front end, medium filter and statistics of the plain reference against figures worked by hand.
#include <gtest/gtest.h>

#include <vector>

#include "reference/mosaic.h"
#include "reference/reconstruct.h"

namespace {

using ref::state;
using frame = std::vector<uint8_t>;

ref::table256 ramp() {
  ref::table256 table;
  for (int i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(i);
  return table;
}

ref::table256 constant(uint8_t value) {
  ref::table256 table;
  table.fill(value);
  return table;
}

// A slot with a straight tone table.
state straight(uint32_t width, uint32_t height) {
  state s;
  EXPECT_TRUE(s.new_frame_size(width, height, width));
  EXPECT_TRUE(s.copy_rgb_gamma_table(ramp().data()));
  return s;
}

ref::mosaic front(const state& s, const frame& f) {
  return ref::front_end(s, f.data(), s.rgb_gamma_table);
}

TEST(ReferenceFrontEnd, DefaultsAreTheToneTableAlone) {
  state s;
  ASSERT_TRUE(s.new_frame_size(16, 2, 16));
  frame f(32);
  for (int i = 0; i < 32; ++i) f[i] = static_cast<uint8_t>(8 * i);
  const ref::mosaic m = front(s, f);
  for (int i = 0; i < 32; ++i) {
    EXPECT_EQ(m.linear.samples[i], 8 * i);
    EXPECT_EQ(m.toned.samples[i], s.rgb_gamma_table[8 * i]);
  }
}

TEST(ReferenceFrontEnd, NullLensTableIsNoCorrection) {
  state s = straight(16, 2);
  EXPECT_TRUE(s.enable_lens_correction());
  EXPECT_EQ(front(s, frame(32, 77)).toned(1, 5), 77);
}

TEST(ReferenceFrontEnd, LensRowsFoldAboutTheOrigin) {
  state s = straight(16, 6);
  std::vector<uint16_t> table(16 * 5);
  ASSERT_TRUE(s.set_lens_correction(16, 6, 8, 2, table.data(), 160, 0, 24, 0, 44));
  for (int row = 0; row < 5; ++row) {
    for (int c = 0; c < 16; ++c) table[16 * row + c] = static_cast<uint16_t>(8192 * (row + 1) / 2);
  }
  s.enable_lens_correction();
  const ref::mosaic m = front(s, frame(96, 20));
  const int expected[6] = {30, 20, 10, 20, 30, 40};  // factors 1.5, 1.0, 0.5, 1.0, 1.5, 2.0
  for (int row = 0; row < 6; ++row) EXPECT_EQ(m.black(row, 3), expected[row]) << row;
}

TEST(ReferenceFrontEnd, LensEntriesOutsideTheTableCountAsOne) {
  state s = straight(16, 6);
  std::vector<uint16_t> table(16 * 4);
  ASSERT_TRUE(s.set_lens_correction(16, 3, 8, 0, table.data(), 128, 0, 24, 0, 44));
  for (uint16_t& entry : table) entry = 4096;
  table[5] = 40000;  // as a signed factor below 0
  table[6] = 32767;
  s.enable_lens_correction();
  const ref::mosaic m = front(s, frame(96, 100));
  EXPECT_EQ(m.black(3, 0), 50);
  EXPECT_EQ(m.black(4, 0), 100);
  EXPECT_EQ(m.black(0, 5), 0);
  EXPECT_EQ(m.black(0, 6), 255);  // 3.99 times 100
}

TEST(ReferenceFrontEnd, GreenBalanceIsStrict) {
  state s = straight(16, 2);
  s.enable_GbGr_correction();
  frame f(32, 100);
  f[1] = 109, f[16] = 100;  // 9 apart
  f[3] = 110, f[18] = 100;  // 10 apart, the threshold
  const ref::mosaic m = front(s, f);
  EXPECT_EQ(m.black(0, 1), 105);
  EXPECT_EQ(m.black(1, 0), 105);
  EXPECT_EQ(m.black(0, 3), 110);
  EXPECT_EQ(m.black(1, 2), 100);
  EXPECT_TRUE(s.set_GbGr_correction_diff_threshold(0));
  f[1] = 100, f[16] = 101;
  EXPECT_EQ(front(s, f).black(0, 1), 100);
}

TEST(ReferenceFrontEnd, BlackStopsAtZero) {
  state s = straight(16, 2);
  EXPECT_TRUE(s.set_optical_black_b_gb_gr_r(10, 11, 12, 50));
  const ref::mosaic m = front(s, frame(32, 40));
  EXPECT_EQ(m.black(0, 0), 30);
  EXPECT_EQ(m.black(0, 1), 29);
  EXPECT_EQ(m.black(1, 0), 28);
  EXPECT_EQ(m.black(1, 1), 0);
}

TEST(ReferenceFrontEnd, DeltaClamps) {
  state s = straight(16, 2);
  EXPECT_TRUE(s.set_rgb_delta(-41, 300, -40));
  const ref::mosaic m = front(s, frame(32, 40));
  EXPECT_EQ(m.linear(0, 0), 0);
  EXPECT_EQ(m.linear(0, 1), 255);
  EXPECT_EQ(m.linear(1, 1), 0);
}

TEST(ReferenceFrontEnd, GainProductKeeps16Bits) {
  state s = straight(16, 2);
  EXPECT_FALSE(s.set_g_gain(4096));
  EXPECT_TRUE(s.set_b_gain(512));  // brings green lane 512 into the even row
  frame f(32, 100);
  f[1] = 128, f[3] = 129;
  const ref::mosaic m = front(s, f);
  EXPECT_EQ(m.linear(0, 0), 200);
  EXPECT_EQ(m.linear(0, 1), 0);   // 128 * 512 = 65536
  EXPECT_EQ(m.linear(0, 3), 16);  // 512 >> 5
  EXPECT_EQ(m.linear(1, 0), 100);
}

// A picture of one value but for some samples of the mosaic.
struct sample {
  int row, column;
  uint8_t value;
};
ref::plane picture(int width, int height, uint8_t value, const std::vector<sample>& samples) {
  ref::plane p(width, height);
  p.samples.assign(p.samples.size(), value);
  for (const sample& s : samples) p(s.row, s.column) = s.value;
  return p;
}

TEST(ReferenceMediumFilter, HotAndDeadPixels) {
  const state s;
  // Red at (5, 21): neighbours 100, 90, 80, 70, so the second smallest is 80.
  const ref::plane p =
      picture(64, 12, 100, {{5, 21, 250}, {3, 21, 90}, {7, 21, 80}, {5, 19, 70}, {6, 31, 5}, {4, 40, 240}});
  const ref::plane out = ref::medium_filtered(s, p, 1);
  EXPECT_EQ(out(5, 21), 80);
  EXPECT_EQ(out(6, 31), 100);  // dead green, diagonal neighbours
  EXPECT_EQ(out(4, 40), 240);  // not above the hot level
  EXPECT_EQ(out(3, 21), 90);
}

TEST(ReferenceMediumFilter, PercentagesAtZero) {
  state s;
  s.set_nf88_medium_filter_hot_pixel_threshold_percentage(0);
  s.set_nf88_medium_filter_dead_pixel_threshold_percentage(0);
  const ref::plane p = picture(64, 12, 250, {{5, 21, 0}});
  const ref::plane out = ref::medium_filtered(s, p, 1);
  EXPECT_EQ(out(5, 21), 0);    // nothing is dead
  EXPECT_EQ(out(6, 30), 250);  // above the hot level, but its neighbours are no other
}

TEST(ReferenceMediumFilter, BrightSurroundingsAreNotHot) {
  const state s;
  const ref::plane p = picture(64, 12, 254, {{5, 21, 255}});  // hi = max(1016 * 20 >> 6, 240) = 317
  EXPECT_EQ(ref::medium_filtered(s, p, 1)(5, 21), 255);
}

TEST(ReferenceMediumFilter, BordersAreCopied) {
  const state s;
  const std::vector<sample> hot = {{1, 20, 255}, {2, 20, 255}, {5, 15, 255}, {5, 16, 255},
                                   {5, 47, 255}, {5, 48, 255}, {9, 30, 255}, {10, 30, 255}};
  const ref::plane p = picture(64, 12, 100, hot);
  const ref::plane from_1 = ref::medium_filtered(s, p, 1), from_2 = ref::medium_filtered(s, p, 2);
  EXPECT_EQ(from_1(1, 20), 255);
  EXPECT_EQ(from_1(2, 20), 100);
  EXPECT_EQ(from_2(2, 20), 255);
  EXPECT_EQ(from_1(5, 15), 255);
  EXPECT_EQ(from_1(5, 16), 100);
  EXPECT_EQ(from_1(5, 47), 100);
  EXPECT_EQ(from_1(5, 48), 255);
  EXPECT_EQ(from_1(9, 30), 100);
  EXPECT_EQ(from_1(10, 30), 255);
}

void run(state& s, frame& f, uint32_t quality, bool medium = false) {
  s.clear_statistics();
  EXPECT_TRUE(s.set_quality(quality));
  s.medium_filter_enabled = medium;
  ref::reconstruct(s, f.data(), ref::format::i420);
}

// 8 tiles and 16 row pairs in quality 15: row pairs 1, 3, .. 11 and tiles 1 and 3 collect, 12 groups of 8 cells.
TEST(ReferenceStatistics, FlatFrameOfQuality15) {
  state s = straight(128, 32);
  frame f(128 * 32, 100);
  run(s, f, 15);
  EXPECT_EQ(s.qAE_count, 96u);
  EXPECT_EQ(s.qAE_means, (ref::rgb_words{9600, 19200, 9600}));
  EXPECT_EQ(s.qual_count, 96u);
  EXPECT_EQ(s.r_histogram[100], 88u);
  EXPECT_EQ(s.r_histogram[50], 8u);  // the first group found 4 black cells in the slot
  EXPECT_EQ(s.g_histogram[100], 176u);
  EXPECT_EQ(s.g_histogram[50], 16u);
  EXPECT_EQ(s.qual_means[2], 11u * 800 + 400);
  for (int cell = 0; cell < 49; ++cell) {
    const bool sampled = cell < 48 && (cell % 8 == 1 || cell % 8 == 3);
    EXPECT_EQ(s.sub_window_means[cell][0], sampled ? 800u : 0u) << cell;
  }
  f.assign(f.size(), 100);
  run(s, f, 15);
  EXPECT_EQ(s.r_histogram[100], 96u);
}

TEST(ReferenceStatistics, KeptRowsOutliveControlsAndQualities) {
  state s = straight(128, 32);
  frame f(128 * 32, 80);
  run(s, f, 2);
  s.reset_all_controls();
  s.copy_rgb_gamma_table(ramp().data());
  f.assign(f.size(), 10);
  run(s, f, 12);  // keeps none
  EXPECT_EQ(s.qual_count, 0u);
  f.assign(f.size(), 0);
  run(s, f, 15);
  EXPECT_EQ(s.b_histogram[40], 8u);  // 4 cells of 80, 4 of 0
}

TEST(ReferenceStatistics, CellAndSamplesAreSkewed) {
  state s = straight(128, 32);
  frame f(128 * 32, 100);
  for (int row = 8; row < 10; ++row) std::fill_n(&f[128 * row + 64], 16, 200);
  run(s, f, 15);  // row pair 4, tile 4 is measured at row pair 1, tile 1
  EXPECT_EQ(s.sub_window_means[1][0], 1200u);
  EXPECT_EQ(s.sub_window_means[3][0], 800u);
  f.assign(f.size(), 100);
  for (int row = 4; row < 6; ++row) std::fill_n(&f[128 * row + 32], 16, 200);
  run(s, f, 2);  // one row pair and one tile ahead
  EXPECT_EQ(s.sub_window_means[1][1], 2400u);
}

TEST(ReferenceStatistics, HalfBeforeAndHalfBehindTheToneTable) {
  state s = straight(128, 32);
  s.copy_rgb_gamma_table(constant(200).data());
  frame f(128 * 32, 100);
  run(s, f, 15);
  EXPECT_EQ(s.sub_window_means[1][0], 4u * 200 + 4 * 100);
  EXPECT_EQ(s.qAE_means[0], 12u * 1200);
  EXPECT_EQ(s.qual_means[0], 11u * 800 + 400);
}

TEST(ReferenceStatistics, NothingWithoutCollection) {
  state s = straight(128, 32);
  s.set_mean_collection(0);
  frame f(128 * 32, 100);
  run(s, f, 15);
  EXPECT_EQ(s.qAE_count, 0u);
  EXPECT_EQ(s.g_histogram[100] + s.g_histogram[0], 0u);
}

TEST(ReferenceStatistics, SmallFramesHaveNone) {
  state s = straight(64, 32);
  frame f(64 * 32, 100);
  run(s, f, 15);
  EXPECT_EQ(s.qAE_count, 0u);
  state low = straight(128, 8);
  run(low, f, 15);
  EXPECT_EQ(low.qAE_count, 0u);
  run(low, f, 2);  // N - 2 = 2: row pair 1 collects tiles 1, 3 and 5
  EXPECT_EQ(low.qAE_count, 24u);
}

// 16 tiles and 32 row pairs: the odd ones among row pairs 1 .. N - a and tiles 1 .. T - b.
TEST(ReferenceStatistics, ReachOfEveryQuality) {
  struct path {
    uint32_t quality;
    bool medium;
    uint32_t groups;
  };
  const path paths[] = {{15, false, 14 * 6}, {0, false, 15 * 6},  {0, true, 14 * 6},
                        {1, false, 15 * 7},  {1, true, 14 * 6},   {2, false, 15 * 7},
                        {2, true, 15 * 7},   {10, false, 15 * 6}, {11, false, 15 * 7}};
  for (const path& p : paths) {
    state s = straight(256, 64);
    frame f(256 * 64, 100);
    run(s, f, p.quality, p.medium);
    EXPECT_EQ(s.qAE_count, 8 * p.groups) << p.quality << " " << p.medium;
  }
  state s = straight(256, 64);
  frame f(256 * 64, 1);
  run(s, f, 12);
  uint32_t sum = 0;
  for (const ref::rgb_words& cell : s.sub_window_means) sum += cell[0];
  EXPECT_EQ(sum, 8u * 15 * 7);
  EXPECT_EQ(s.qAE_count, 0u);
}

TEST(ReferenceStatistics, ExposureRange) {
  state s = straight(128, 32);
  ref::cell_group cells;
  cells.b.fill(100), cells.gb.fill(100), cells.gr.fill(100), cells.r.fill(100);
  cells.r[3] = 101;
  s.set_qAE_RGB_min_max(101, 255);
  ref::add_exposure(s, cells);
  EXPECT_EQ(s.qAE_count, 1u);
  EXPECT_EQ(s.qAE_means, (ref::rgb_words{101, 200, 100}));
  s.clear_statistics();
  s.set_qAE_RGB_min_max(0, 100);
  ref::add_exposure(s, cells);
  EXPECT_EQ(s.qAE_count, 8u);
  s.clear_statistics();
  s.set_qAE_RGB_min_max(0, 99);
  ref::add_exposure(s, cells);
  EXPECT_EQ(s.qAE_count, 0u);
}

TEST(ReferenceStatistics, QualifiedRangesIncludeTheirEnds) {
  state s = straight(128, 32);
  ref::cell_group cells;
  cells.b.fill(125), cells.gb.fill(100), cells.gr.fill(100), cells.r.fill(100);
  cells.b[7] = 126;
  ref::add_qualified(s, cells);  // B - Gb up to 25
  EXPECT_EQ(s.qual_count, 7u);
  EXPECT_EQ(s.b_histogram[7 * 125 / 8], 8u);
  EXPECT_EQ(s.r_histogram[7 * 100 / 8], 8u);
}

TEST(ReferenceStatistics, BlackAndFailingGroupsShareBinZero) {
  state s = straight(128, 32);
  frame f(128 * 32, 0);
  run(s, f, 15);
  EXPECT_EQ(s.r_histogram[0], 96u);
  EXPECT_EQ(s.qual_count, 96u);
  s.set_qual_R_min_max(1, 255);
  run(s, f, 15);
  EXPECT_EQ(s.r_histogram[0], 96u);
  EXPECT_EQ(s.g_histogram[0], 192u);
  EXPECT_EQ(s.qual_count, 0u);
}

TEST(ReferenceStatistics, SeeTheSamplesBeforeTheMediumFilter) {
  state s = straight(128, 32);
  frame f(128 * 32, 100);
  f[128 * 9 + 67] = 255;  // red of row pair 4, in a sampled column of tile 4
  const frame raw = f;
  run(s, f, 0, true);
  EXPECT_EQ(s.sub_window_means[1][0], 700u + 255);
  EXPECT_EQ(f[128 * 9 + 67], 100);
}

}  // namespace
