// The blocks of the tile pipeline alone, at every vector level, against figures worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <random>
#include <vector>

#include "ppl.h"
#include "record/context.h"
#include "record/levels.h"
#include "support/blocks.h"
#include "support/random.h"
#include "tile/kernels.h"

namespace {

using namespace blocks;

class Blocks : public testing::Test {
 protected:
  // Luma after the noise filter for a row with the given rows above and below; chroma stays at 128.
  static std::vector<int> noise_filtered(ppl_context& c, const ppl::tile_kernels& k, row_store& luma) {
    row_store chroma(3), out(2);
    for (int r = 0; r < 3; ++r) chroma.fill(r, 128);
    k.noise_filter({.context = &c,
                    .luma = luma.from(0),
                    .chroma = chroma.from(0),
                    .luma_out = out.from(0),
                    .chroma_out = out.from(1),
                    .made = 1,
                    .width = kWidth});
    for (int x = 0; x < kWidth; ++x) EXPECT_EQ(out[1][x], 128) << x;
    return {out[0], out[0] + kWidth};
  }

  static std::vector<int> sharpened(ppl_context& c, const ppl::tile_kernels& k, row_store& luma) {
    row_store out(1);
    k.edge({.context = &c, .luma = luma.from(0), .out = out.from(0), .made = 1, .width = kWidth});
    return {out[0], out[0] + kWidth};
  }
};

// ---- front end: its rule sample by sample, whatever the tables hold

struct front_end_case {
  int width;
  bool lens;
  int black[4], gain[4], delta[4];  // B Gb Gr R
  int threshold;                    // below 0: no green balance
  std::vector<uint8_t> tone;
};

int low_16(int x) {
  return static_cast<int16_t>(x);
}

void expect_front_end(ppl_context& c, const ppl::tile_kernels& k, const front_end_case& t,
                      std::mt19937& random) {
  constexpr int kPitch = 512, kGuard = 16;
  const auto any = [&] { return static_cast<int>(random() & 0xffff); };
  for (int lane = 0; lane < 8; ++lane)
    for (int row = 0; row < 2; ++row) {
      const int site = 2 * row + (lane & 1);
      (row == 0 ? c.gain_b_g : c.gain_g_r).lane[lane] = static_cast<int16_t>(t.gain[site]);
      (row == 0 ? c.delta_b_g : c.delta_g_r).lane[lane] = static_cast<int16_t>(t.delta[site]);
      for (int half = 0; half < 2; ++half)
        (row == 0 ? c.black_b_gb : c.black_gr_r).lane[lane + 8 * half] = static_cast<uint8_t>(t.black[site]);
      c.GbGr_diff_plus.lane[lane] = static_cast<int16_t>(t.threshold);
    }
  c.GbGr_correction_enabled = t.threshold >= 0;

  std::vector<uint8_t> frame(2 * kPitch + 2 * kGuard), rows(2 * kPitch + 192), black(2 * kPitch + 192);
  std::vector<uint16_t> lens(2 * kPitch);
  const auto aligned = [](std::vector<uint8_t>& v) {
    return v.data() + 64 + (64 - reinterpret_cast<uintptr_t>(v.data()) % 64) % 64;
  };
  uint8_t* const source = frame.data() + kGuard;
  for (uint8_t& x : frame) x = static_cast<uint8_t>(any());
  for (int i = 0; i < t.width; ++i) source[i] = static_cast<uint8_t>(i / 2);  // every sample at either parity
  for (int i = 0; i < t.width; ++i)
    if ((any() & 3) != 0) source[kPitch + i] = static_cast<uint8_t>(source[i ^ 1] + any() % 5 - 2);
  for (uint16_t& f : lens) f = static_cast<uint16_t>((any() & 7) == 0 ? any() : 8192 + (any() & 4095));
  std::vector<uint8_t> want = frame;

  for (int i = 0; i < t.width; i += 2) {
    int x[2][2];
    for (int r = 0; r < 2; ++r)
      for (int col = 0; col < 2; ++col) {
        x[r][col] = source[r * kPitch + i + col];
        if (t.lens) x[r][col] = std::clamp(x[r][col] * low_16(lens[r * kPitch + i + col]) >> 13, 0, 255);
      }
    if (std::abs(x[0][1] - x[1][0]) < t.threshold) x[0][1] = x[1][0] = (x[0][1] + x[1][0] + 1) / 2;
    for (int r = 0; r < 2; ++r)
      for (int col = 0; col < 2; ++col) {
        const int site = 2 * r + col, b = std::max(x[r][col] - t.black[site], 0);
        const int v = low_16(((b * t.gain[site] & 0xffff) >> 5) + t.delta[site]);
        want[kGuard + r * kPitch + i + col] = t.tone[std::clamp(v, 0, 255)];
      }
  }

  k.prepare_tone(c, t.tone.data());
  k.front_end({.context = &c,
               .source_even = source,
               .source_odd = source + kPitch,
               .frame_even = source,
               .frame_odd = source + kPitch,
               .row_even = aligned(rows),
               .row_odd = aligned(rows) + kPitch,
               .lens_even = t.lens ? lens.data() : nullptr,
               .lens_odd = t.lens ? lens.data() + kPitch : nullptr,
               .black_even = (any() & 1) != 0 ? aligned(black) : nullptr,
               .black_odd = aligned(black) + kPitch,
               .width = t.width});
  EXPECT_EQ(frame, want);
  for (int r = 0; r < 2; ++r)
    EXPECT_TRUE(std::equal(source + r * kPitch, source + r * kPitch + t.width, aligned(rows) + r * kPitch))
        << r;
}

TEST_F(Blocks, FrontEndFollowsItsRuleWithAnyTables) {
  at_every_level([](ppl_context& c, const ppl::tile_kernels& k) {
    std::mt19937 random(static_cast<uint32_t>(support::seed(7)));
    for (int turn = 0; turn < 600; ++turn) {
      const auto below = [&](int n) { return static_cast<int>(random() % static_cast<uint32_t>(n)); };
      front_end_case t = {.width = 16 * (1 + below(32)),
                          .lens = turn % 3 == 0,
                          .black = {},
                          .gain = {},
                          .delta = {},
                          .threshold = below(8) == 0 ? 250 + below(20) : below(24) - 2,
                          .tone = std::vector<uint8_t>(256)};
      for (int site = 0; site < 4; ++site) {
        t.black[site] = below(3) == 0 ? below(256) : below(30);
        t.gain[site] = below(8) == 0 ? below(65536) : below(3) == 0 ? below(1024) : 32 + below(64);
        t.delta[site] = below(3) == 0 ? below(65536) - 32768 : below(64) - 32;
      }
      for (int i = 0; i < 256; ++i)  // noise, steps that end at either half, a ramp
        t.tone[i] = static_cast<uint8_t>(turn % 4 == 0   ? below(256)
                                         : turn % 4 == 1 ? (i < turn % 256 ? i : turn)
                                         : turn % 4 == 2 ? (i > turn % 256 ? 255 - i : turn)
                                                         : i);
      SCOPED_TRACE(turn);
      expect_front_end(c, k, t, random);
      if (HasFailure()) return;
    }
  });
}

// ---- noise filter; defaults: vertical limit 100, horizontal limit 24

TEST_F(Blocks, NoiseFilterRemovesASingleHotPixel) {
  at_every_level([](ppl_context& c, const ppl::tile_kernels& k) {
    row_store luma(3);
    for (int r = 0; r < 3; ++r) luma.fill(r, 50);
    luma[1][37] = 200;
    const std::vector<int> out = noise_filtered(c, k, luma);
    EXPECT_EQ(out[37], 50);  // all four neighbours agree
    EXPECT_EQ(out[36], 50);  // its own value: 150 across is not below 24, so it stays
    EXPECT_EQ(out[38], 50);
  });
}

TEST_F(Blocks, NoiseFilterNeighbourOfASmallSpikeTakesTheMiddle) {
  at_every_level([](ppl_context& c, const ppl::tile_kernels& k) {
    row_store luma(3);
    for (int r = 0; r < 3; ++r) luma.fill(r, 50);
    luma[1][36] = 60;  // the pixel itself plays no part
    luma[1][37] = 73;  // 23 above: below the horizontal limit
    const std::vector<int> out = noise_filtered(c, k, luma);
    EXPECT_EQ(out[36], 50);  // of 50, 50, 50, 73 the middle two
    luma[1][37] = 74;        // exactly the limit: strictly below is asked for
    EXPECT_EQ(noise_filtered(c, k, luma)[36], 60);
  });
}

TEST_F(Blocks, NoiseFilterKeepsAHorizontalLine) {
  at_every_level([](ppl_context& c, const ppl::tile_kernels& k) {
    row_store luma(3);
    luma.fill(0, 50);
    luma.fill(1, 50);
    luma.fill(2, 150);  // the row above a line of contrast 100: |U - D| is the limit
    luma[1][20] = 57;
    EXPECT_EQ(noise_filtered(c, k, luma)[20], 57);
    luma.fill(2, 149);  // one less: the test passes and the middle values, 50 and 50, replace it
    EXPECT_EQ(noise_filtered(c, k, luma)[20], 50);
  });
}

TEST_F(Blocks, NoiseFilterMeanRoundsDown) {
  at_every_level([](ppl_context& c, const ppl::tile_kernels& k) {
    row_store luma(3);
    luma.fill(0, 50);
    luma.fill(1, 51);
    luma.fill(2, 60);
    EXPECT_EQ(noise_filtered(c, k, luma)[11], 51);  // 50 51 51 60
    luma.fill(0, 40);
    luma[1][10] = 50;
    luma[1][12] = 53;
    EXPECT_EQ(noise_filtered(c, k, luma)[11], 51);  // 40 50 53 60: 103 / 2 = 51.5
  });
}

TEST_F(Blocks, NoiseFilterCopiesWithBothThresholdsZero) {
  at_every_level([](ppl_context& c, const ppl::tile_kernels& k) {
    EXPECT_EQ(ppl_set_edge_threshold(&c, 0), 1);
    EXPECT_EQ(ppl_set_medium_filter_diff_threshold(&c, 0), 1);
    row_store luma(3);
    for (int r = 0; r < 3; ++r) luma.fill(r, 50);
    luma[1][37] = 200;
    EXPECT_EQ(noise_filtered(c, k, luma)[37], 200);
  });
}

TEST_F(Blocks, NoiseFilterChromaFollowsTheEvenColumn) {
  at_every_level([](ppl_context& c, const ppl::tile_kernels& k) {
    row_store luma(3), chroma(3), out(2);
    for (int r = 0; r < 3; ++r) {
      luma.fill(r, 50);
      chroma.fill(r, 128);
    }
    luma[1][41] = 90;     // column 40 sees 90 on its right: not flat; column 41's neighbours agree: flat
    chroma[1][20] = 140;  // U of the pair of columns 20, 21: flat, replaced
    chroma[1][40] = 150;  // U of columns 40, 41: the even column is not flat, kept
    k.noise_filter({.context = &c,
                    .luma = luma.from(0),
                    .chroma = chroma.from(0),
                    .luma_out = out.from(0),
                    .chroma_out = out.from(1),
                    .made = 1,
                    .width = kWidth});
    EXPECT_EQ(out[0][41], 50);
    EXPECT_EQ(out[1][20], 128);
    EXPECT_EQ(out[1][40], 150);
  });
}

// ---- edge enhancement; defaults: band 100 to 1530, factor 32, that is e / 8

TEST_F(Blocks, EdgeDotGainsHalfItsHeight) {
  at_every_level([](ppl_context& c, const ppl::tile_kernels& k) {
    row_store luma(3);
    for (int r = 0; r < 3; ++r) luma.fill(r, 10);
    luma[1][33] = 90;  // e = 4 * 80 = 320, a = 40; beside it e = -80: within the dead band
    std::vector<int> out = sharpened(c, k, luma);
    EXPECT_EQ(out[33], 130);
    EXPECT_EQ(out[32], 10);
    EXPECT_EQ(out[34], 10);
    luma[1][33] = 35;  // e = 100 is not above 100
    EXPECT_EQ(sharpened(c, k, luma)[33], 35);
    ppl_set_edge_threshold(&c, 50);
    luma[1][33] = 90;
    out = sharpened(c, k, luma);
    EXPECT_EQ(out[32], 0);  // 10 - 80 / 8
    EXPECT_EQ(out[33], 130);
  });
}

TEST_F(Blocks, EdgeThresholdAbove1020IsTheIdentity) {
  at_every_level([](ppl_context& c, const ppl::tile_kernels& k) {
    row_store luma(3);
    luma[1][5] = 255;
    EXPECT_EQ(ppl_set_edge_threshold(&c, 1020), 1);  // the largest e, 4 * 255
    EXPECT_EQ(sharpened(c, k, luma)[5], 255);
    luma.fill(0, 255);
    luma.fill(2, 255);
    luma[1][4] = luma[1][6] = 255;
    luma[1][5] = 0;  // e = -1020
    EXPECT_EQ(sharpened(c, k, luma)[5], 0);
    luma[1][5] = 100;  // e = -620
    EXPECT_EQ(sharpened(c, k, luma)[5], 100);
    ppl_set_edge_threshold(&c, 619);
    EXPECT_EQ(sharpened(c, k, luma)[5], 22);  // -620 / 8 = -77.5, rounded towards minus infinity
  });
}

TEST_F(Blocks, EdgeFactorBelow8IsOff) {
  at_every_level([](ppl_context& c, const ppl::tile_kernels& k) {
    row_store luma(3);
    luma[1][33] = 120;
    ppl_set_nf88_edge_enhance_factor(&c, 7);
    EXPECT_EQ(sharpened(c, k, luma)[33], 120);
    ppl_set_nf88_edge_enhance_factor(&c, 8);  // one 32nd of 480
    EXPECT_EQ(sharpened(c, k, luma)[33], 135);
  });
}

TEST_F(Blocks, EdgeUpperThresholdIsStrict) {
  at_every_level([](ppl_context& c, const ppl::tile_kernels& k) {
    row_store luma(3);
    luma[1][33] = 80;  // e = 320
    ppl_set_edge_threshold2(&c, 320);
    EXPECT_EQ(sharpened(c, k, luma)[33], 80);
    ppl_set_edge_threshold2(&c, 321);
    EXPECT_EQ(sharpened(c, k, luma)[33], 120);
  });
}

// ---- chroma smoothing

TEST_F(Blocks, SmoothingLosesALittle) {
  at_every_level([](ppl_context&, const ppl::tile_kernels& k) {
    const auto smoothed = [&](int value) {
      row_store chroma(3), sums(2), out(1);
      for (int r = 0; r < 3; ++r) chroma.fill(r, value + 128);
      k.smooth({.chroma = chroma.from(0),
                .u_sums = sums[0],
                .v_sums = sums[1],
                .out = out.from(0),
                .made = 1,
                .width = kWidth});
      for (int x = 1; x < kWidth; ++x) EXPECT_EQ(out[0][x], out[0][0]) << x;
      return out[0][0] - 128;
    };
    EXPECT_EQ(smoothed(100), 98);
    EXPECT_EQ(smoothed(-128), -126);
    EXPECT_EQ(smoothed(127), 125);  // 1143 * 28 = 32004
    EXPECT_EQ(smoothed(0), 0);
  });
}

// ---- green fill

std::vector<int> green_row(ppl_context& c, const ppl::tile_kernels& k, row_store& mosaic, int odd_row) {
  row_store out(1);
  k.green_fill({.context = &c,
                .rows = mosaic.from(0),
                .out = out.from(0),
                .made = 1,
                .odd_row = odd_row,
                .width = kWidth});
  return {out[0], out[0] + kWidth};
}

// A B site at column 40: 100 itself, greens as given, the B samples two away all 100.
void surround(row_store& m, int left, int right, int up, int down) {
  for (int r = 0; r < 5; ++r) m.fill(r, 100);
  m[2][39] = static_cast<uint8_t>(left);
  m[2][41] = static_cast<uint8_t>(right);
  m[1][40] = static_cast<uint8_t>(up);
  m[3][40] = static_cast<uint8_t>(down);
}

TEST_F(Blocks, GreenFillChoosesItsDirection) {
  at_every_level([](ppl_context& c, const ppl::tile_kernels& k) {
    row_store m(5);
    ppl_set_CFA_T1_threshold(&c, 63);
    surround(m, 50, 120, 90, 100);  // gh 70, gv 10: directional along the column; ev = 190 - 100 = 90
    EXPECT_EQ(green_row(c, k, m, 0)[40], 50 + 45);
    surround(m, 50, 120, 60, 125);  // gh 70, gv 65: both above; eh = 70, ev = 85; (70 + 85) >> 2 = 38
    EXPECT_EQ(green_row(c, k, m, 0)[40], 50 + 38);
    ppl_set_CFA_T1_threshold(&c, 0);  // nothing is below 0: never directional
    surround(m, 50, 120, 100, 100);   // eh = 70, ev = 100: 170 >> 2 = 42
    EXPECT_EQ(green_row(c, k, m, 0)[40], 50 + 42);
    surround(m, 255, 255, 255, 255);  // 50 + (410 + 410 >> 2) = 255
    EXPECT_EQ(green_row(c, k, m, 0)[40], 255);
  });
}

TEST_F(Blocks, GreenFillOfAFlatMosaicLosesOneOfOddValues) {
  at_every_level([](ppl_context& c, const ppl::tile_kernels& k) {
    for (const int x : {100, 101, 255, 0}) {
      row_store m(5);
      for (int r = 0; r < 5; ++r) m.fill(r, x);
      for (int odd_row = 0; odd_row < 2; ++odd_row) {
        const std::vector<int> g = green_row(c, k, m, odd_row);
        for (int i = 0; i < kWidth; ++i) EXPECT_EQ(g[i], (i & 1) == odd_row ? x & ~1 : x) << i;
      }
    }
  });
}

// ---- medium filter; defaults: hot above 240 and 1.25 means, dead below 16 and 0.75 means

TEST_F(Blocks, MediumFilterTakesTheSecondSmallestOfFour) {
  at_every_level([](ppl_context& c, const ppl::tile_kernels& k) {
    row_store m(5), out(1);
    const auto at = [&](int column, int odd_row) {
      k.medium_filter({.context = &c,
                       .rows = m.from(0),
                       .out = out.from(0),
                       .made = 1,
                       .odd_row = odd_row,
                       .width = kWidth});
      return static_cast<int>(out[0][column]);
    };
    for (int r = 0; r < 5; ++r) m.fill(r, 100);
    m[0][40] = 90;
    m[4][40] = 120;
    m[2][38] = 95;
    m[2][42] = 110;
    m[2][40] = 255;
    EXPECT_EQ(at(40, 0), 95);   // a B site: neighbours two away
    EXPECT_EQ(at(40, 1), 100);  // a green site: the diagonals
    m[2][40] = 240;             // not above 240
    EXPECT_EQ(at(40, 0), 240);
    m[2][40] = 15;
    EXPECT_EQ(at(40, 0), 95);
    m[2][40] = 16;
    EXPECT_EQ(at(40, 0), 16);
    ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(&c, 0);
    m[2][40] = 0;  // the bound is 0: nothing can be dead
    EXPECT_EQ(at(40, 0), 0);
    for (int r = 0; r < 5; ++r) m.fill(r, 254);
    m[2][40] = 255;  // 1016 * 20 / 64 = 317: a hot pixel must stand out
    EXPECT_EQ(at(40, 0), 255);
  });
}

}  // namespace
