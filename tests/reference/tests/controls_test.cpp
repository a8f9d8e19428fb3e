// The controls and the geometry of the plain reference against figures worked by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "reference/state.h"

namespace {

using ref::state;

TEST(ReferenceGeometry, WidestFrame) {
  state s;
  EXPECT_TRUE(s.new_frame_size(2036, 32, 2036));   // 4 * 2036 + 48 = 8192
  EXPECT_FALSE(s.new_frame_size(2037, 32, 2037));  // 8196
  EXPECT_FALSE(s.new_frame_size(64, 2049, 64));
  EXPECT_FALSE(s.new_frame_size(64, 32, 2049));
  EXPECT_EQ(s.frame_width, 2036);
}

TEST(ReferenceGeometry, StatisticsScales) {
  state s;
  ASSERT_TRUE(s.new_frame_size(80, 32, 80));
  EXPECT_EQ(s.stats_scale_table[0], 1024);
  ASSERT_TRUE(s.new_frame_size(128, 16, 128));
  EXPECT_EQ(s.stats_scale_table[14], 1024);
  ASSERT_TRUE(s.new_frame_size(81, 17, 81));
  const int p = 81 * 17 * 256;
  EXPECT_EQ(s.stats_scale_table[10], p / 263);  // 13 * 81 / 4
  EXPECT_EQ(s.stats_scale_table[0], p / 21);    // 5 * 17 / 4
  EXPECT_EQ(s.stats_scale_table[15], p);        // 1 * 1 / 4 counts as 1
  EXPECT_EQ(s.stats_scale_table[6], 1024);
  EXPECT_EQ(s.stats_scale_table[8], 0);
  ASSERT_TRUE(s.new_frame_size(640, 480, 640));
  EXPECT_EQ(s.stats_scale_table[14], 640 * 480 * 256 / (468 * 576 / 4));
}

TEST(ReferenceGeometry, SmallGridFallsOutside) {
  state s;
  ASSERT_TRUE(s.new_frame_size(112, 480, 112));
  EXPECT_EQ(s.cell_tiles, 0);
  EXPECT_EQ(s.red_divisor, 131072u);   // 2^20 over 8 red sites
  EXPECT_EQ(s.green_divisor, 65536u);  // 2^20 over 16 green sites
  ASSERT_TRUE(s.new_frame_size(128, 10, 128));
  EXPECT_EQ(s.cell_row_pairs, 0);
}

TEST(ReferenceGeometry, BlackLinesAreLostOnTheSecondCall) {
  state s;
  ASSERT_TRUE(s.new_frame_sizes(704, 480, 352, 288, 1));
  EXPECT_EQ(s.decimation, 1);
  EXPECT_EQ(s.decimation_top_black_lines, 24);
  EXPECT_EQ(s.decimation_bottom_black_lines, 24);
  EXPECT_EQ(s.out_height, 288);
  ASSERT_TRUE(s.new_frame_sizes(704, 480, 352, 288, 1));
  EXPECT_EQ(s.out_height, 240);
  EXPECT_FALSE(s.new_frame_sizes(704, 480, 352, 239, 1));
  EXPECT_FALSE(s.new_frame_sizes(640, 480, 640, 481, 1));
  EXPECT_EQ(s.frame_width, 704);
}

TEST(ReferenceGeometry, DecimationAndBack) {
  state s;
  ASSERT_TRUE(s.new_frame_size(640, 480, 640));
  ASSERT_TRUE(s.set_decimation(2, 0, 0));
  EXPECT_EQ(s.out_width, 160);
  EXPECT_FALSE(s.set_decimation(-2, 0, 0));
  EXPECT_FALSE(s.set_decimation(3, 0, 0));
  s.reset_decimation();
  EXPECT_EQ(s.out_width, 640);
  ASSERT_TRUE(s.set_decimation(-1, 1, 2));
  EXPECT_EQ(s.out_width, 1280);
  EXPECT_EQ(s.out_height, 963);
}

TEST(ReferenceControls, ResultOfResetIsThatOfTheLensTable) {
  state s;
  EXPECT_FALSE(s.reset_all_controls());
  EXPECT_FALSE(s.reset_lens_correction());
  EXPECT_TRUE(s.reset_rgb_dekneel_table());
  EXPECT_TRUE(s.reset_quals_rgb_gain());
}

TEST(ReferenceControls, DefaultLanes) {
  const state s;
  EXPECT_EQ(s.gain_b_g[0], 32);
  EXPECT_EQ(s.gain_g_r[1], 32);
  EXPECT_EQ(s.qual_BmGb_open.low, -26);
  EXPECT_EQ(s.qual_BmGb_open.high, 26);
  EXPECT_EQ(s.qual_diff_open.high, 31);
  EXPECT_EQ(s.medium_hot_percent, 20);
  EXPECT_EQ(s.medium_dead_percent, 12);
  EXPECT_EQ(s.luma_offset, 32);
}

TEST(ReferenceControls, RefusedGainStaysInItsFieldAlone) {
  state s;
  EXPECT_TRUE(s.set_r_gain(300));
  EXPECT_EQ(s.gain_g_r[1], 37);
  EXPECT_EQ(s.gain_b_g[0], 32);
  EXPECT_FALSE(s.set_rgb_gain(512, 2048, 512));
  EXPECT_EQ(s.nf88_g_gain, 2048u);
  EXPECT_EQ(s.gain_g_r[1], 37);
  EXPECT_EQ(s.gain_b_g[1], 32);
}

// A single colour rebuilds its pair from the stored fields, so a refused neighbour comes along and the green lanes
// of the two rows part.
TEST(ReferenceControls, RefusedValueOfTheOtherColourReachesALane) {
  state s;
  EXPECT_FALSE(s.set_g_gain(2048));
  EXPECT_TRUE(s.set_b_gain(512));
  EXPECT_EQ(s.gain_b_g[0], 64);
  EXPECT_EQ(s.gain_b_g[1], 256);
  EXPECT_EQ(s.gain_g_r[0], 32);
  EXPECT_FALSE(s.set_g_delta(32768));
  EXPECT_TRUE(s.set_r_delta(-1));
  EXPECT_EQ(s.delta_g_r[0], -32768);
  EXPECT_EQ(s.delta_g_r[1], -1);
  EXPECT_EQ(s.delta_b_g[1], 0);
}

TEST(ReferenceControls, ThresholdsTestFirst) {
  state s;
  EXPECT_FALSE(s.set_edge_threshold(1531));
  EXPECT_EQ(s.edge_threshold, 100u);
  EXPECT_TRUE(s.set_edge_threshold(1530));
  EXPECT_FALSE(s.set_quality(16));
  EXPECT_EQ(s.quality, 15u);
  EXPECT_FALSE(s.set_CFA_T1_threshold(64));
  EXPECT_FALSE(s.set_intl_3T_threshold(766));
}

TEST(ReferenceControls, MediumThresholdsStoreFirst) {
  state s;
  EXPECT_FALSE(s.set_medium_filter_hot_pixel_threshold(32768));
  EXPECT_EQ(s.medium_filter_hot_pixel_threshold, 32768);
  EXPECT_EQ(s.medium_hot, 240);
  EXPECT_TRUE(s.set_nf88_medium_filter_hot_pixel_threshold_percentage(-65536));
  EXPECT_EQ(s.medium_hot_percent, 0xC000);
  EXPECT_FALSE(s.set_nf88_medium_filter_hot_pixel_threshold_percentage(65536));
  EXPECT_EQ(s.medium_hot_percent, 0xC000);
}

TEST(ReferenceControls, QualityRanges) {
  state s;
  EXPECT_FALSE(s.set_qual_G_min_max(-1, 10));
  EXPECT_FALSE(s.set_qual_G_min_max(10, 256));
  EXPECT_EQ(s.qual_G.maximum, 255);
  EXPECT_FALSE(s.set_qual_RGB_min_max(1, 2, 3, 4, 6, 5));
  EXPECT_EQ(s.qual_R.minimum, 0);
  EXPECT_FALSE(s.set_qual_BmGb_min_max(5, 4));
  EXPECT_EQ(s.qual_BmGb.minimum, -25);
  EXPECT_FALSE(s.set_qual_BmGb_min_max(-32768, 4));  // -32769 does not fit
  EXPECT_EQ(s.qual_BmGb.minimum, -32768);
  EXPECT_EQ(s.qual_BmGb_open.low, -26);
  EXPECT_TRUE(s.set_qual_BmGb_min_max(-32767, 32766));
}

TEST(ReferenceControls, SensorTypeIsOnlyRecognised) {
  const state s;
  EXPECT_TRUE(s.set_sensor_type(0x42564F));
  EXPECT_FALSE(s.set_sensor_type(0));
}

TEST(ReferenceMatrices, Defaults) {
  const state s;
  EXPECT_EQ(s.y_bmy_rmy_matrix, (ref::matrix{77, 150, 29, -77, -150, 227, 179, -150, -29}));
  EXPECT_EQ(s.yuv_matrix, (ref::matrix{77, 150, 29, -44, -87, 131, 131, -110, -21}));
  EXPECT_EQ(s.rgb_matrix, (ref::matrix{256, 0, 0, 0, 256, 0, 0, 0, 256}));
  EXPECT_EQ(s.rgb_coef, (std::array<int16_t, 9>{97, -4, -30, -29, 127, -34, -5, -57, 126}));
  EXPECT_EQ(s.yuv2_coef, (std::array<int16_t, 9>{11, 67, -15, -9, -72, 81, 63, -52, -11}));
  EXPECT_EQ(s.yuv_coef, (std::array<int16_t, 9>{11, 67, -15, -16, -124, 141, 86, -71, -15}));
}

TEST(ReferenceMatrices, HueAndSaturation) {
  state s;
  EXPECT_TRUE(s.set_sat_hue(256, 360));
  EXPECT_EQ(s.hue_degree, 0);
  EXPECT_TRUE(s.set_hue(-1));
  EXPECT_EQ(s.hue_degree, 359);
  EXPECT_FALSE(s.set_sat(513));
  EXPECT_EQ(s.nf88_sat, 256u);
  EXPECT_TRUE(s.set_sat_hue(0, 0));
  EXPECT_EQ(s.y_bmy_rmy_matrix, (ref::matrix{77, 150, 29, 0, 0, 0, 0, 0, 0}));
}

TEST(ReferenceMatrices, ContrastGain) {
  state s;
  EXPECT_TRUE(s.set_contrast_c(100, nullptr, nullptr));
  EXPECT_EQ(s.luma_offset, -6368);        // gain 456: ((32768 - 58368 + 2) >> 2) + 32
  EXPECT_EQ(s.y_bmy_rmy_matrix[1], 268);  // 2404 * 7296 / 4096 = 4282; (4282 + 8) >> 4
}

// Group 1 rounds twice: 257 * 129 = 32 * 1024 + 385 comes out as 33.
TEST(ReferenceMatrices, RgbRoundsTwice) {
  state s;
  ref::matrix red{};
  red[0] = 129;
  EXPECT_TRUE(s.copy_sensor_matrix(red.data()));
  EXPECT_TRUE(s.set_contrast_c(1, nullptr, nullptr));
  EXPECT_EQ(s.rgb_matrix[0], 257);
  EXPECT_EQ(s.rgb_coef[0], 33);
}

// The clamp looks at 17 bits, the lane keeps 16.
TEST(ReferenceMatrices, CoefficientsWrapBetween16And17Bits) {
  state s;
  ref::matrix big{};
  big[0] = 40000 * 4;  // group 1: t = 256 * 160000, v = 40000
  EXPECT_TRUE(s.copy_sensor_matrix(big.data()));
  EXPECT_EQ(s.rgb_coef[0], static_cast<int16_t>(40000));
  big[0] = 70000 * 4;
  EXPECT_TRUE(s.copy_sensor_matrix(big.data()));
  EXPECT_EQ(s.rgb_coef[0], 32767);
  big[0] = -70000 * 4;
  EXPECT_TRUE(s.copy_sensor_matrix(big.data()));
  EXPECT_EQ(s.rgb_coef[0], -32768);
}

TEST(ReferenceTone, Contrast) {
  state s;
  for (int i = 0; i < 256; ++i) EXPECT_EQ(s.contrast_table[i], i);
  uint32_t x = 9, y = 9;
  EXPECT_TRUE(s.set_contrast_c(127, &x, &y));
  EXPECT_EQ(x, 127u);
  EXPECT_EQ(y, 0u);
  EXPECT_EQ(s.contrast_table[127], 0);
  EXPECT_EQ(s.contrast_table[128], 255);
  EXPECT_TRUE(s.set_contrast_c(-127, nullptr, &y));
  EXPECT_EQ(y, 127u);
  EXPECT_EQ(s.contrast_table[0], 127);
  EXPECT_EQ(s.contrast_table[255], 127);
  EXPECT_FALSE(s.set_contrast_c(128, nullptr, nullptr));
  EXPECT_EQ(s.contrast_c, -127);
  EXPECT_FALSE(s.set_contrast_xy(128, 0));
  EXPECT_EQ(s.contrast_x, 0u);
}

TEST(ReferenceTone, GammaValues) {
  EXPECT_EQ(ref::gamma_value(0), 1843);
  EXPECT_EQ(ref::gamma_value(-32), 8260);
  EXPECT_EQ(ref::gamma_value(32), 411);
  state s;
  EXPECT_EQ(s.nf20_12_gamma(nullptr, nullptr, nullptr), 1843);
  EXPECT_FALSE(s.set_gamma(33));
  const ref::table256 table = s.yuv_gamma_table;
  EXPECT_TRUE(s.copy_rgb_gamma_table(table.data()));
  int32_t index = 7, low = 0, high = 0;
  EXPECT_EQ(s.nf20_12_gamma(&index, &low, &high), 0);
  EXPECT_EQ(index, 0);
  EXPECT_EQ(low, -32);
  EXPECT_EQ(high, 32);
}

// Published entries of some rows; the rule meets them within two steps, and row 32 exactly.
TEST(ReferenceTone, GammaRows) {
  struct row {
    int k;
    uint8_t every_16th[16];
  };
  const row rows[] = {{0, {0, 1, 4, 8, 15, 24, 35, 48, 63, 80, 99, 120, 143, 168, 195, 224}},
                      {16, {0, 17, 35, 51, 68, 84, 100, 116, 132, 147, 163, 179, 194, 209, 225, 240}},
                      {48, {0, 88, 121, 143, 159, 173, 185, 195, 204, 212, 220, 227, 233, 239, 245, 250}},
                      {64, {0, 108, 141, 161, 176, 188, 198, 207, 215, 221, 227, 233, 238, 243, 247, 252}}};
  for (const row& r : rows) {
    for (int i = 0; i < 16; ++i)
      EXPECT_LE(std::abs(ref::built_in_tables().gamma[r.k][16 * i] - r.every_16th[i]), 2);
  }
  const uint8_t studio[16] = {16, 16, 68, 95, 116, 132, 147, 160, 172, 183, 194, 203, 212, 221, 229, 235};
  for (int i = 0; i < 16; ++i)
    EXPECT_LE(std::abs(ref::built_in_tables().gamma_16_235[32][16 * i] - studio[i]), 2);
  EXPECT_EQ(ref::built_in_tables().gamma[32][1], 4);
  EXPECT_EQ(ref::built_in_tables().gamma[32][255], 255);
}

TEST(ReferenceTone, CompositionIsContrastFirst) {
  state s;
  EXPECT_TRUE(s.set_contrast_c(20, nullptr, nullptr));
  ref::table256 inverted;
  for (int i = 0; i < 256; ++i) inverted[i] = static_cast<uint8_t>(255 - i);
  EXPECT_TRUE(s.copy_yuv_gamma_table(inverted.data()));
  for (int i = 0; i < 256; ++i) EXPECT_EQ(s.yuv_contrast_gamma_table[i], 255 - s.contrast_table[i]);
  EXPECT_TRUE(s.copy_contrast_table(inverted.data()));
  EXPECT_EQ(s.yuv_contrast_gamma_table[3], 3);
}

TEST(ReferenceLens, TableSize) {
  state s;
  std::vector<uint16_t> table(241 * 640);
  EXPECT_FALSE(s.set_lens_correction(640, 480, 320, 240, table.data(), 308479, 16, 24, 16, 44));
  EXPECT_EQ(s.lens_correction_table, nullptr);
  EXPECT_EQ(s.lens_correction_needed_size, 308480);
  EXPECT_TRUE(s.set_lens_correction(640, 480, 320, 240, table.data(), 308480, 16, 24, 16, 44));
  EXPECT_EQ(table[320], 8192);           // the centre
  EXPECT_EQ(table[0], 8192 + 800 - 78);  // r = 320^2 = 102400: (16 r) >> 11 = 800; (16 r^2) >> 31 = 78
  EXPECT_TRUE(s.set_lens_correction(640, 480, 320, 240, table.data(), 308480, 0, 24, 0, 44));
  EXPECT_EQ(std::count(table.begin(), table.end(), 8192), 241 * 640);
  EXPECT_FALSE(s.set_lens_correction(16, 16, 8, 8, nullptr, 100000, 0, 24, 0, 44));
}

TEST(ReferenceRollUp, MeanOf48Cells) {
  state s;
  ASSERT_TRUE(s.new_frame_size(640, 480, 640));
  s.stats_scale = 256;
  s.red_divisor = s.green_divisor = s.blue_divisor = 4096;
  for (ref::rgb_words& cell : s.sub_window_means) cell = {1000, 1000, 1000};
  s.roll_up();
  EXPECT_EQ(s.sub_window_means[0][0], 1000u);
  EXPECT_EQ(s.all_windows_means[1], 999u);
  EXPECT_EQ(s.rgb_means_whole_frame_central4()[2], 999u);
  EXPECT_EQ(s.rgb_means_whole_frame_4pts()[0], 1000u);
  EXPECT_EQ(s.whole_frame_means[0], (49000u * 256 + 38400) / 76800);  // the outside cell included
  s.quality = 3;
  EXPECT_EQ(s.rgb_means_whole_frame_central16(), s.whole_frame_means);
}

TEST(ReferenceRollUp, CountedMeans) {
  state s;
  ASSERT_TRUE(s.new_frame_size(640, 480, 640));
  s.stats_scale = 512;
  s.qAE_means = {10, 20, 11};
  s.qAE_count = 3;
  s.roll_up();
  EXPECT_EQ(s.qAE_means, (ref::rgb_words{853, 853, 939}));  // 2561 / 3, 5123 / 6, 2817 / 3
  EXPECT_EQ(s.qAE_count, 6u);
  EXPECT_EQ(s.qual_count, 0u);
}

TEST(ReferenceRollUp, FrameWithoutPixelsHasNoMeans) {
  state s;
  s.whole_frame_means = {5, 5, 5};
  s.roll_up();
  EXPECT_EQ(s.whole_frame_means, (ref::rgb_words{0, 0, 0}));
}

}  // namespace
