// The blocks and paths of the plain reference against figures worked by hand.
#include <gtest/gtest.h>

#include <vector>

#include "reference/blocks.h"
#include "reference/reconstruct.h"

namespace {

using ref::state;
using frame = std::vector<uint8_t>;

// A slot with a straight tone table.
state straight(uint32_t width, uint32_t height, uint32_t stride) {
  state s;
  EXPECT_TRUE(s.new_frame_size(width, height, stride));
  ref::table256 ramp;
  for (int i = 0; i < 256; ++i) ramp[i] = static_cast<uint8_t>(i);
  EXPECT_TRUE(s.copy_rgb_gamma_table(ramp.data()));
  return s;
}

// RGB output is then the reconstructed colour itself in the qualities without luma.
void neutral_rgb(state& s) {
  const int32_t unit[9] = {256, 0, 0, 0, 256, 0, 0, 0, 256};
  s.copy_sensor_matrix(unit);
}

// Luma is then the reconstructed green.
void luma_is_green(state& s) {
  const int32_t green[9] = {0, 256, 0, 0, 256, 0, 0, 256, 0};
  s.copy_sensor_matrix(green);
}

ref::plane filled(int width, int height, uint8_t value) {
  ref::plane p(width, height);
  p.samples.assign(p.samples.size(), value);
  return p;
}

ref::finished picture(state& s, uint32_t quality, ref::format f, frame samples) {
  EXPECT_TRUE(s.set_quality(quality));
  return ref::reconstruct(s, samples.data(), f);
}

TEST(ReferenceMirror, AboutTheBorderSample) {
  EXPECT_EQ(ref::mirrored(-1, 8), 1);
  EXPECT_EQ(ref::mirrored(-2, 8), 2);
  EXPECT_EQ(ref::mirrored(8, 8), 6);
  EXPECT_EQ(ref::mirrored(9, 8), 5);
  EXPECT_EQ(ref::mirrored(3, 2), 1);
  EXPECT_EQ(ref::mirrored(-2, 2), 0);
}

TEST(ReferenceMeans, GreenAtTheBorders) {
  ref::plane p(16, 6);
  for (int i = 0; i < 96; ++i) p.samples[i] = static_cast<uint8_t>(i * i % 251);
  const ref::colours c = ref::neighbour_means(p, true);
  for (int column = 0; column < 16; column += 2) EXPECT_EQ(c.g(0, column), p(1, column));
  for (int column = 1; column < 16; column += 2) EXPECT_EQ(c.g(5, column), p(4, column));
  for (int row = 2; row < 6; row += 2) {
    if (p(row - 1, 0) != p(row + 1, 0)) {
      EXPECT_EQ(c.g(row, 0), p(row, 1));
    }
  }
}

TEST(ReferenceMeans, NestedRounding) {
  ref::plane p = filled(16, 6, 0);
  p(2, 5) = 1;                                           // green right of the blue at (2, 4)
  EXPECT_EQ(ref::neighbour_means(p, false).g(2, 4), 1);  // avg(avg(0, 1), avg(0, 0))
  EXPECT_EQ(ref::neighbour_means(p, true).g(2, 4), 0);   // the vertical pair differs less
  p(2, 5) = 0;
  p(1, 5) = 1;  // a red: right above the blue at (2, 4)
  EXPECT_EQ(ref::neighbour_means(p, false).r(2, 4), 1);
  // At (0, 4) the vertical pair collapses to row 1.
  p = filled(16, 6, 0);
  p(0, 3) = 10, p(0, 5) = 21, p(1, 4) = 100;
  EXPECT_EQ(ref::neighbour_means(p, false).g(0, 4), 58);  // avg(16, 100)
}

TEST(ReferenceMeans, FlatStaysFlat) {
  for (bool select : {false, true}) {
    const ref::colours c = ref::neighbour_means(filled(16, 4, 77), select);
    EXPECT_EQ(c.r.samples, frame(64, 77));
    EXPECT_EQ(c.g.samples, frame(64, 77));
    EXPECT_EQ(c.b.samples, frame(64, 77));
  }
}

ref::plane green_site(uint8_t left, uint8_t right, uint8_t up, uint8_t down) {
  ref::plane p = filled(16, 8, 100);
  p(2, 3) = left, p(2, 5) = right, p(1, 4) = up, p(3, 4) = down;
  return p;
}

TEST(ReferenceGreenFill, Directions) {
  // gh 70, gv 10: along the column, (50) + ((110 - 100) >> 1).
  EXPECT_EQ(ref::green_filled(green_site(10, 80, 50, 60), 63)(2, 4), 55);
  // Not above 70: both, eh = -10 and ev = 10.
  EXPECT_EQ(ref::green_filled(green_site(10, 80, 50, 60), 0)(2, 4), 50);
  // gv 65 is above the threshold too: (-10 - 15) >> 2 = -7.
  EXPECT_EQ(ref::green_filled(green_site(10, 80, 10, 75), 63)(2, 4), 43);
  // At the threshold neither is above it, nor below.
  EXPECT_EQ(ref::green_filled(green_site(10, 73, 50, 60), 63)(2, 4), 48);  // (-17 + 10) >> 2 = -2
  EXPECT_EQ(ref::green_filled(green_site(10, 80, 10, 73), 63)(2, 4), 43);  // (-10 - 17) >> 2 = -7
  // The other way round: along the row.
  EXPECT_EQ(ref::green_filled(green_site(50, 60, 10, 80), 63)(2, 4), 55);
}

TEST(ReferenceGreenFill, RowZero) {
  ref::plane p = filled(16, 8, 100);
  p(1, 4) = 120, p(2, 4) = 90;
  p(0, 3) = 10, p(0, 5) = 80;  // gh 70; gv is 0, so ev = 2 * 120 - 90
  EXPECT_EQ(ref::green_filled(p, 15)(0, 4), 50 + 75);
}

TEST(ReferenceGreenFill, OddGreyLosesOne) {
  const ref::plane grey = filled(16, 8, 101), green = ref::green_filled(grey, 15);
  EXPECT_EQ(green(2, 4), 100);
  EXPECT_EQ(green(2, 5), 101);
  const ref::colours c = ref::difference_planes(grey, green);
  EXPECT_EQ(c.r(2, 4), 101);
  EXPECT_EQ(c.b(2, 4), 101);
  EXPECT_EQ(c.r(2, 5), 102);
  EXPECT_EQ(c.b(2, 5), 102);
  EXPECT_EQ(c.r(3, 5), 101);
}

TEST(ReferenceNoiseFilter, HotPixelGoes) {
  const state s;
  ref::yuv_planes in(32, 8);
  in.y = filled(32, 8, 100);
  in.y(4, 8) = 210;
  in.u(4, 4) = 50;
  const ref::yuv_planes out = ref::noise_filtered(s, in);
  EXPECT_EQ(out.y(4, 8), 100);
  EXPECT_EQ(out.u.at(4, 4), 0);
  EXPECT_EQ(out.y(3, 8), 100);
  EXPECT_EQ(out.y(4, 9), 100);
}

TEST(ReferenceNoiseFilter, BothTestsAreStrict) {
  state s;
  ref::yuv_planes in(32, 8);
  in.y = filled(32, 8, 100);
  in.y(4, 8) = 250;  // the centre is in no test
  in.y(3, 8) = 200;  // 100 from the one below
  EXPECT_EQ(ref::noise_filtered(s, in).y(4, 8), 250);
  s.set_edge_threshold(101);
  EXPECT_EQ(ref::noise_filtered(s, in).y(4, 8), 100);
  in.y(4, 7) = 124;  // 24 from the one at the right
  EXPECT_EQ(ref::noise_filtered(s, in).y(4, 8), 250);
  s.set_medium_filter_diff_threshold(25);
  EXPECT_EQ(ref::noise_filtered(s, in).y(4, 8), 112);  // the middle two of 200, 100, 124, 100
}

TEST(ReferenceNoiseFilter, ThresholdZeroCopies) {
  state s;
  s.set_edge_threshold(0);
  s.set_medium_filter_diff_threshold(0);
  ref::yuv_planes in(32, 8);
  for (int i = 0; i < 256; ++i) in.y.samples[i] = static_cast<uint8_t>(i * 37);
  EXPECT_EQ(ref::noise_filtered(s, in).y.samples, in.y.samples);
}

TEST(ReferenceNoiseFilter, RowZeroTestsTheColumnsAlone) {
  state s;
  s.set_edge_threshold(1);
  ref::yuv_planes in(32, 8);
  in.y = filled(32, 8, 100);
  for (int c = 0; c < 32; ++c) in.y(1, c) = 50, in.y(2, c) = 0;
  EXPECT_EQ(ref::noise_filtered(s, in).y(0, 6), 75);  // the middle two of 50, 50, 100, 100
  EXPECT_EQ(ref::noise_filtered(s, in).y(1, 6), 50);
}

TEST(ReferenceNoiseFilter, NegativeChromaRoundsDown) {
  const state s;
  ref::yuv_planes in(32, 8);
  in.y = filled(32, 8, 100);
  in.u(3, 4) = -3, in.u(5, 4) = -4, in.u(4, 3) = 20, in.u(4, 5) = -90;
  EXPECT_EQ(ref::noise_filtered(s, in).u.at(4, 4), -4);  // (-3 - 4) >> 1
}

TEST(ReferenceChroma, WordsBesideARow) {
  ref::chroma_plane p(16, 4);
  for (int word = 0; word < 16; ++word) p(1, word) = static_cast<int8_t>(word);
  EXPECT_EQ(p.at(1, -1), 6);
  EXPECT_EQ(p.at(1, 16), 9);
  EXPECT_EQ(p.at(-1, -1), 6);
}

TEST(ReferenceChroma, Smoothing) {
  ref::chroma_plane p(16, 4);
  p.samples.assign(64, -128);
  EXPECT_EQ(ref::smoothed(p)(2, 5), -126);
  p.samples.assign(64, 100);
  EXPECT_EQ(ref::smoothed(p)(0, 0), 98);
  p.samples.assign(64, -1);
  EXPECT_EQ(ref::smoothed(p)(0, 0), -1);  // -252 >> 8
  for (int i = 0; i < 64; ++i) p.samples[i] = static_cast<int8_t>(i % 16);
  EXPECT_EQ(ref::smoothed(p)(2, 0), 2);    // 3 * (6 + 0 + 1) * 28 >> 8
  EXPECT_EQ(ref::smoothed(p)(2, 15), 12);  // 3 * (14 + 15 + 9) * 28 >> 8
}

TEST(ReferenceEdges, DotAndItsNeighbours) {
  state s;
  ref::plane p = filled(16, 8, 50);
  p(4, 6) = 170;
  ref::plane out = ref::edge_enhanced(s, p);
  EXPECT_EQ(out(4, 6), 230);  // e = 480
  EXPECT_EQ(out(4, 5), 35);   // e = -120
  EXPECT_EQ(out(3, 5), 50);
  p(4, 6) = 150;
  EXPECT_EQ(ref::edge_enhanced(s, p)(4, 5), 50);  // e = -100 is not above the threshold
  s.set_edge_threshold2(400);
  EXPECT_EQ(ref::edge_enhanced(s, p)(4, 6), 150);  // e = 400 is not below the second
  s.set_edge_threshold2(401);
  EXPECT_EQ(ref::edge_enhanced(s, p)(4, 6), 200);
  s.set_nf88_edge_enhance_factor(7);
  EXPECT_EQ(ref::edge_enhanced(s, p)(4, 6), 150);
  s.set_nf88_edge_enhance_factor(256);
  s.set_edge_threshold(1021);
  EXPECT_EQ(ref::edge_enhanced(s, p).samples, p.samples);
}

TEST(ReferenceEdges, RowZeroCountsRowOneTwice) {
  const state s;
  ref::plane p = filled(16, 8, 100);
  for (int c = 0; c < 16; ++c) p(1, c) = 40;
  EXPECT_EQ(ref::edge_enhanced(s, p)(0, 5), 115);  // e = 2 * 60
}

TEST(ReferenceQuality15, FlatGrey) {
  state s = straight(32, 8, 32);
  const ref::finished out = picture(s, 15, ref::format::i420, frame(256, 100));
  EXPECT_EQ(out.y, frame(256, 98));               // (63 * 100 + 32) >> 6
  EXPECT_EQ(out.u, std::vector<int8_t>(128, 1));  // 2 before smoothing: 18 * 28 >> 8
  EXPECT_EQ(out.v, std::vector<int8_t>(128, 0));
  const ref::finished rgb = picture(s, 15, ref::format::rgb24, frame(256, 100));
  EXPECT_EQ(rgb.raw_r[17], 98);
  EXPECT_EQ(rgb.raw_g[16], 1);
  EXPECT_EQ(rgb.raw_g[17], 0);
  EXPECT_EQ(rgb.raw_b[16], 2);
  EXPECT_EQ(rgb.raw_b[17], 0);
  EXPECT_EQ(rgb.b[5], 99);  // (128 * 98 + 128 + 64) >> 7
}

TEST(ReferenceRgb, GreenSaturatesInTheOrderOfItsSum) {
  EXPECT_EQ(ref::yuv_to_pixel(255, 100, -128).g, 236);  // 32767 - 2500 + 64
  EXPECT_EQ(ref::yuv_to_pixel(255, 100, -128).r, 127);
  EXPECT_EQ(ref::yuv_to_pixel(255, 100, -128).b, 255);
  EXPECT_EQ(ref::yuv_to_pixel(0, -128, 127).b, 0);
}

TEST(ReferenceQuality1, LumaIsThatOfQuality0WithoutEdges) {
  state s = straight(64, 16, 64);
  s.set_edge_threshold(1021);
  frame f(64 * 16);
  for (std::size_t i = 0; i < f.size(); ++i) f[i] = static_cast<uint8_t>(i * i / 7);
  EXPECT_EQ(picture(s, 0, ref::format::i420, f).y, picture(s, 1, ref::format::i420, f).y);
}

TEST(ReferenceQuality11, EveryBlockFlat) {
  state s = straight(32, 8, 32);
  neutral_rgb(s);
  s.set_CFA_T0_threshold(255);
  frame f(256);
  for (std::size_t i = 0; i < f.size(); ++i) f[i] = static_cast<uint8_t>(i * i / 7);
  const ref::finished out = picture(s, 11, ref::format::rgb24, f);
  for (int row = 0; row < 8; row += 2) {
    for (int c = 0; c < 32; c += 2) {
      for (const auto* p : {&out.r, &out.g, &out.b}) {
        EXPECT_EQ((*p)[32 * row + c], (*p)[32 * row + c + 1]);
        EXPECT_EQ((*p)[32 * row + c], (*p)[32 * row + 32 + c]);
      }
    }
  }
  const auto at = [&](int r, int c) { return static_cast<int>(f[32 * r + c]); };
  const auto mean = [](int a, int b) { return (a + b + 1) >> 1; };
  EXPECT_EQ(out.r[32 * 2 + 4], mean(mean(at(1, 3), at(3, 3)), mean(at(1, 5), at(3, 5))));
  EXPECT_EQ(out.b[32 * 2 + 4], mean(mean(at(2, 4), at(4, 4)), mean(at(2, 6), at(4, 6))));
}

TEST(ReferenceQuality11, OneGreenStepAboveTheThreshold) {
  state s = straight(32, 8, 32);
  s.set_CFA_T0_threshold(10);
  frame f(256, 100);
  f[32 * 3 + 6] = 110;
  picture(s, 11, ref::format::i420, f);
  ref::plane p(32, 8);
  p.samples = f;
  ref::colours c(32, 8);
  ref::select_flat_blocks(s, p, f.data(), 0, c);
  EXPECT_NE(c.g(2, 4), 0);  // 10 apart still passes
  p(3, 6) = 111;
  ref::colours d(32, 8);
  ref::select_flat_blocks(s, p, f.data(), 0, d);
  EXPECT_EQ(d.g(2, 4), 0);
  EXPECT_NE(d.g(2, 16), 0);
}

// Rows of the flat colours are frame_width apart, at any stride: here each finds its columns 16 further or in the gap.
TEST(ReferenceQuality11, FlatColoursStepByWidth) {
  state s = straight(32, 8, 48);
  neutral_rgb(s);
  s.set_CFA_T0_threshold(255);
  frame f(48 * 8, 7);
  for (int row = 0; row < 8; ++row) {
    for (int c = 0; c < 32; ++c) f[48 * row + c] = c < 16 ? 100 : 140;
  }
  const ref::finished out = picture(s, 11, ref::format::rgb24, f);
  EXPECT_EQ(out.r[32 * 2 + 4], 74);   // avg(140, 7)
  EXPECT_EQ(out.b[32 * 2 + 4], 120);  // avg(100, 140)
  EXPECT_EQ(out.g[32 * 2 + 4], 97);   // avg(74, 120)
}

TEST(ReferenceLeftovers, LastBlocksOfTheLastTile) {
  state s = straight(32, 12, 32);
  s.set_CFA_T0_threshold(255);
  frame f(32 * 12);
  for (std::size_t i = 0; i < f.size(); ++i) f[i] = static_cast<uint8_t>(10 * (i / 32));
  picture(s, 11, ref::format::i420, f);  // rows 10, 11: means of 90, 110 and of 100, 100
  EXPECT_TRUE(s.flat_mask[7]);
  EXPECT_EQ(s.flat_r[3], 100);
  EXPECT_EQ(s.flat_g[3], 100);
  EXPECT_EQ(s.flat_b[3], 100);
  picture(s, 10, ref::format::rgb24, f);  // rows 9, 10: means of 80, 100 and of 90, 110
  EXPECT_EQ(s.flat_r[3], 100);
  EXPECT_EQ(s.flat_b[3], 90);
  EXPECT_EQ(s.flat_g[3], 95);
}

TEST(ReferenceLeftovers, RowsThatTheyReach) {
  state s = straight(32, 12, 32);
  picture(s, 11, ref::format::yuyv, frame(32 * 12, 50));
  s.reset_all_controls();
  ASSERT_TRUE(s.copy_rgb_gamma_table(straight(32, 12, 32).rgb_gamma_table.data()));
  luma_is_green(s);
  s.set_edge_threshold(1530);
  const frame f(32 * 12, 200);
  const ref::finished q15 = picture(s, 15, ref::format::i420, f);
  EXPECT_EQ(q15.y, f);
  const ref::finished q0 = picture(s, 0, ref::format::i420, f);
  for (int row = 0; row < 12; ++row)
    EXPECT_EQ(q0.y[32 * row + 9], row == 0 || row == 2 || row == 11 ? 200 : 50) << row;
  EXPECT_EQ(picture(s, 1, ref::format::i420, f).y, frame(32 * 12, 50));
}

TEST(ReferenceQuality12, FlatFrameAndClosedBand) {
  state s = straight(32, 8, 32);
  luma_is_green(s);
  EXPECT_EQ(picture(s, 12, ref::format::i420, frame(256, 90)).y, frame(256, 90));
  s.set_edge_threshold(300);
  s.set_edge_threshold2(300);
  frame f(256);
  for (std::size_t i = 0; i < f.size(); ++i) f[i] = static_cast<uint8_t>(i * i / 7);
  EXPECT_EQ(picture(s, 12, ref::format::i420, f).y, f);
}

// A conversion that blackens everything shows which neighbours are luma already.
TEST(ReferenceQuality12, EarlierTilesAreLuma) {
  state s = straight(32, 4, 32);
  const int32_t zero[9] = {};
  s.copy_sensor_matrix(zero);
  ref::plane luma;
  const ref::plane out = ref::mosaic_sharpened(s, filled(32, 4, 100), &luma);
  EXPECT_EQ(luma.samples, frame(128, 0));
  EXPECT_EQ(out(0, 0), 100);
  EXPECT_EQ(out(1, 15), 100);
  EXPECT_EQ(out(0, 16), 137);  // Gh 300: (300 * 4) >> 5
  EXPECT_EQ(out(1, 16), 137);  // Gv 100, Gh 200
  EXPECT_EQ(out(0, 17), 100);
  EXPECT_EQ(out(2, 1), 137);  // Gv 300: the row above is luma
  EXPECT_EQ(out(3, 1), 100);
  EXPECT_EQ(ref::mosaic_sharpened(s, filled(32, 4, 100), nullptr).samples, frame(128, 100));
}

TEST(ReferencePaths, SmallestFrames) {
  for (uint32_t quality : {0u, 1u, 2u, 10u, 11u, 12u, 15u}) {
    state s = straight(16, 2, 16);
    luma_is_green(s);
    EXPECT_EQ(picture(s, quality, ref::format::i420, frame(32, 100)).y, frame(32, 100)) << quality;
  }
}

TEST(ReferencePaths, BytesBehindTheWidthStay) {
  state s = straight(32, 8, 40);
  s.set_optical_black_b_gb_gr_r(1, 1, 1, 1);
  frame f(40 * 8, 9);
  s.set_quality(2);
  ref::reconstruct(s, f.data(), ref::format::i420);
  for (int row = 0; row < 8; ++row) {
    for (int c = 0; c < 40; ++c) EXPECT_EQ(f[40 * row + c], c < 32 ? 8 : 9);
  }
}

}  // namespace
