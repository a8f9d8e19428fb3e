// The corners of the tile paths and of the formats, through the exported calls, at every vector level.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <vector>

#include "ppl.h"
#include "support/guarded.h"
#include "support/level.h"

extern "C" void ppl_clear_pool();

namespace {

using sample_rule = std::function<int(int row, int column)>;

constexpr int kUntouched = 0xa5;

struct picture {
  std::vector<uint8_t> bytes;   // the destination, first filled with kUntouched
  std::vector<uint8_t> source;  // after the call
  int width;
  int result;
  int at(size_t i) const { return bytes[i]; }
  int pixel(int row_bytes, int row, int i) const { return bytes[static_cast<size_t>(row * row_bytes + i)]; }
};

enum class fmt { i420, yuyv, uyvy, rgb24, rgb32 };

class Paths : public testing::Test {
 protected:
  ppl_context* c = nullptr;

  // Runs the body once for every level, on a slot never used before.
  void at_every_level(const std::function<void()>& body) {
    for (int level = 0; level < ppl_test_levels(); ++level) {
      SCOPED_TRACE(testing::Message() << "level " << level);
      ppl_clear_pool();
      ppl_test_force_level(level);
      c = ppl_init();
      ASSERT_NE(c, nullptr);
      body();
    }
    ppl_clear_pool();
    ppl_test_force_level(-1);
  }

  // Samples pass the front end unchanged.
  void linear_tone() {
    std::array<uint8_t, 256> table;
    for (size_t i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(i);
    ppl_copy_rgb_gamma_table(c, table.data());
  }
  // Colour matrices without cross-talk: R, G, B as they are; luma (19 R + 38 G + 7 B + 32) >> 6; chroma 0.
  void plain_matrix() {
    const int32_t identity[9] = {256, 0, 0, 0, 256, 0, 0, 0, 256};
    ppl_copy_sensor_matrix(c, identity);
    ppl_set_sat(c, 0);
  }
  // The same with saturation 1.0: RGB planes of the qualities that form them directly are R, G, B as reconstructed.
  void plain_rgb() {
    plain();
    ppl_reset_sat_hue(c);
  }
  void no_filters() {
    ppl_set_nf88_edge_enhance_factor(c, 0);
    ppl_set_medium_filter_diff_threshold(c, 0);  // the noise filter's horizontal limit
  }
  void plain() {
    linear_tone();
    plain_matrix();
    no_filters();
  }

  picture frame(fmt kind, int width, int height, const sample_rule& rule, int stride = 0) {
    if (stride == 0) stride = width;
    const int d = ppl_decimation(c);
    const size_t pixels = static_cast<size_t>(d < 0 ? 4 * width * height : (width >> d) * (height >> d));
    const size_t bytes = kind == fmt::i420    ? pixels + 2 * (pixels / 4)
                         : kind == fmt::rgb24 ? 3 * pixels
                         : kind == fmt::rgb32 ? 4 * pixels
                                              : 2 * pixels;
    std::vector<uint8_t> source(static_cast<size_t>(stride * height) + 64, 0), out(bytes + 4096, kUntouched);
    uint8_t* const from = aligned(source);
    uint8_t* const to = aligned(out);
    for (int r = 0; r < height; ++r)
      for (int x = 0; x < width; ++x) from[r * stride + x] = static_cast<uint8_t>(rule(r, x));
    const auto call = kind == fmt::i420    ? ppl_process_blrtoi420
                      : kind == fmt::yuyv  ? ppl_process_blrtoyuyv
                      : kind == fmt::uyvy  ? ppl_process_blrtouyvy
                      : kind == fmt::rgb24 ? ppl_process_blrtorgb24
                                           : ppl_process_blrtorgb32;
    const auto u = [](int x) { return static_cast<uint32_t>(x); };
    const int result = call(c, from, to, u(width), u(height), u(stride));
    EXPECT_TRUE(std::all_of(out.data(), to, [](uint8_t b) { return b == kUntouched; }))
        << "in front of the frame";
    EXPECT_TRUE(std::all_of(to + bytes, out.data() + out.size(), [](uint8_t b) { return b == kUntouched; }))
        << "behind the frame";
    return {{to, to + bytes}, {from, from + stride * height}, width, result};
  }

 private:
  static uint8_t* aligned(std::vector<uint8_t>& v) {
    const auto at = reinterpret_cast<uintptr_t>(v.data());
    return v.data() + (64 - at % 64) % 64;
  }
};

sample_rule flat(int value) {
  return [value](int, int) { return value; };
}
sample_rule flat_but(int value, int row, int column, int other) {
  return [=](int r, int x) { return r == row && x == column ? other : value; };
}
sample_rule by_column() {
  return [](int, int x) { return 3 * x + 5; };
}
bool is_green(int r, int x) {
  return ((r ^ x) & 1) != 0;
}

// ---- the walk

TEST_F(Paths, FourTilesOrFewRowPairsGatherNothing) {
  at_every_level([&] {
    plain();
    for (const auto& [width, height] : {std::pair{64, 64}, {256, 8}}) {
      const picture p = frame(fmt::i420, width, height, flat(100));
      for (int i = 0; i < width * height; ++i) EXPECT_EQ(p.at(static_cast<size_t>(i)), 100) << i;
      EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(c), 0u);
      EXPECT_EQ(ppl_n_qual_2x2_whole_frame(c), 0u);
      EXPECT_EQ(ppl_rgb_means_whole_frame(c)[1], 0u);
      EXPECT_EQ(ppl_g_histogram(c)[0], 0u);
    }
  });
}

TEST_F(Paths, EqualFramesGiveEqualPicturesWhateverCameBefore) {
  at_every_level([&] {
    const sample_rule rule = [](int r, int x) { return (r * 37 + x * 11) & 255; };
    const picture first = frame(fmt::i420, 128, 32, rule);
    frame(fmt::rgb24, 96, 20, flat(255));
    EXPECT_EQ(frame(fmt::i420, 128, 32, rule).bytes, first.bytes);
  });
}

TEST_F(Paths, OneRowPairIsAPicture) {
  at_every_level([&] {
    plain();
    const picture p = frame(fmt::i420, 32, 2, flat(77));
    EXPECT_EQ(p.result, 1);
    for (size_t i = 0; i < 64; ++i) EXPECT_EQ(p.at(i), 77);
    for (size_t i = 64; i < 96; ++i) EXPECT_EQ(p.at(i), 128);
  });
}

// ---- front end, seen in the source after the call

TEST_F(Paths, LensFlagWithoutATableIsOff) {
  at_every_level([&] {
    linear_tone();
    ppl_enable_lens_correction(c);
    EXPECT_EQ(frame(fmt::i420, 32, 4, by_column()).source, [] {
      std::vector<uint8_t> v;
      for (int i = 0; i < 128; ++i) v.push_back(static_cast<uint8_t>(3 * (i % 32) + 5));
      return v;
    }());
  });
}

TEST_F(Paths, LensRowsFoldAboutTheOrigin) {
  at_every_level([&] {
    linear_tone();
    // Width 16, height 6, origin row 2: 5 table rows. f1 * r / 2^13 at shift 26: with f1 = 2^13 the entry is 8192 + r.
    std::vector<uint16_t> table(5 * 16);
    ASSERT_EQ(ppl_set_lens_correction(c, 16, 6, 0, 2, table.data(), 160, 8192, 26, 0, 26), 1);
    for (int row = 0; row < 5; ++row)  // a figure of its own for each row: 1.0, 0.5, 0.25 ...
      std::fill_n(table.begin() + 16 * row, 16, static_cast<uint16_t>(8192 >> row));
    ppl_enable_lens_correction(c);
    const picture p = frame(fmt::i420, 16, 6, flat(160));
    const int expected[] = {40, 80, 160, 80, 40, 20};  // two rows above the origin as two rows below
    for (int r = 0; r < 6; ++r) EXPECT_EQ(p.source[static_cast<size_t>(16 * r)], expected[r]) << r;
    ppl_set_lens_correction(c, 16, 6, 0, 0, table.data(), 160, 8192, 26, 0, 26);  // 7 rows do not fit
    EXPECT_EQ(ppl_lens_correction_table(c), nullptr);
  });
}

TEST_F(Paths, LensCentreInRowZeroUsesTableRowsZeroAndOne) {
  at_every_level([&] {
    linear_tone();
    std::vector<uint16_t> table(5 * 16);
    ASSERT_EQ(ppl_set_lens_correction(c, 16, 4, 0, 0, table.data(), 160, 0, 24, 0, 44), 1);
    for (int row = 0; row < 5; ++row)
      std::fill_n(table.begin() + 16 * row, 16, static_cast<uint16_t>(8192 >> row));
    ppl_enable_lens_correction(c);
    const picture p = frame(fmt::i420, 16, 2, flat(160));
    EXPECT_EQ(p.source[0], 160);
    EXPECT_EQ(p.source[16], 80);
  });
}

TEST_F(Paths, NegativeLensFactorGivesBlack) {
  at_every_level([&] {
    linear_tone();
    std::vector<uint16_t> table(3 * 16);
    ASSERT_EQ(ppl_set_lens_correction(c, 16, 4, 0, 2, table.data(), 96, 0, 24, 0, 44), 1);
    std::fill(table.begin(), table.end(), uint16_t{32768});
    ppl_enable_lens_correction(c);
    EXPECT_EQ(frame(fmt::i420, 16, 4, flat(255)).source[5], 0);
    std::fill(table.begin(), table.end(), uint16_t{32767});  // 3.99: clamped
    EXPECT_EQ(frame(fmt::i420, 16, 4, flat(100)).source[5], 255);
  });
}

TEST_F(Paths, GreenBalanceIsStrictlyBelowItsThreshold) {
  at_every_level([&] {
    linear_tone();
    ppl_enable_GbGr_correction(c);
    const auto greens = [&](int gb, int gr) {
      const picture p = frame(fmt::i420, 16, 2, [=](int r, int x) {
        return !is_green(r, x) ? 9 : r == 0 ? gb : gr;
      });
      EXPECT_EQ(p.source[0], 9);
      EXPECT_EQ(p.source[17], 9);
      return std::pair<int, int>{p.source[1], p.source[16]};
    };
    EXPECT_EQ(greens(100, 109), (std::pair<int, int>{105, 105}));  // 9 below 10; the mean rounds up
    EXPECT_EQ(greens(100, 110), (std::pair<int, int>{100, 110}));
    ppl_set_GbGr_correction_diff_threshold(c, 0);
    EXPECT_EQ(greens(100, 100), (std::pair<int, int>{100, 100}));
    EXPECT_EQ(greens(100, 101), (std::pair<int, int>{100, 101}));
  });
}

TEST_F(Paths, BlackStopsAtZeroAndDeltaClamps) {
  at_every_level([&] {
    linear_tone();
    ppl_set_optical_black_b_gb_gr_r(c, 20, 30, 40, 50);
    picture p = frame(fmt::i420, 16, 2, flat(35));
    EXPECT_EQ(p.source[0], 15);
    EXPECT_EQ(p.source[1], 5);
    EXPECT_EQ(p.source[16], 0);
    EXPECT_EQ(p.source[17], 0);
    ppl_reset_optical_black_b_gb_gr_r(c);
    ppl_set_rgb_delta(c, 300, -300, 10);
    p = frame(fmt::i420, 16, 2, flat(100));
    EXPECT_EQ(p.source[0], 110);
    EXPECT_EQ(p.source[1], 0);
    EXPECT_EQ(p.source[17], 255);
    ppl_set_rgb_delta(c, 0, 0, 0);
    ppl_set_rgb_gain(c, 512, 256, 128);
    p = frame(fmt::i420, 16, 2, flat(101));
    EXPECT_EQ(p.source[0], 50);
    EXPECT_EQ(p.source[1], 101);
    EXPECT_EQ(p.source[17], 202);
  });
}

// ---- reconstruction of quality 15 and the colour conversion

TEST_F(Paths, RowZeroTakesTheVerticalPair) {
  at_every_level([&] {
    plain();
    // Gr of row 1 is 64, all else 0: at even columns of row 0, G = 64 and R = B = 0.
    const picture p = frame(fmt::i420, 64, 12, [](int r, int x) { return r == 1 && (x & 1) == 0 ? 64 : 0; });
    EXPECT_EQ(p.at(20), (38 * 64 + 32) >> 6);
    // The last row likewise: the row above it, here with its Gb.
    const picture q = frame(fmt::i420, 64, 12, [](int r, int x) { return r == 10 && (x & 1) == 1 ? 64 : 0; });
    EXPECT_EQ(q.at(11 * 64 + 21), 38);
  });
}

TEST_F(Paths, ColumnZeroTakesTheHorizontalPairOfAVerticalDifference) {
  at_every_level([&] {
    plain();
    // At (4, 0): above 0, below 100, left mirrored and right both 64.
    const picture p = frame(fmt::i420, 64, 12, [](int r, int x) {
      if (r == 4 && x == 1) return 64;
      return r == 5 && x == 0 ? 100 : 0;
    });
    EXPECT_EQ(p.at(4 * 64), 38);
  });
}

TEST_F(Paths, SaturatedColoursClampAndWrapAsSixteenBits) {
  at_every_level([&] {
    linear_tone();
    no_filters();
    // R and G 255, B 0: Y = (11 + 67) * 255 / 64 beyond 255. U = -16 R - 124 G wraps to +29868: 127. V = 15 R: 60.
    const picture p =
        frame(fmt::i420, 64, 12, [](int r, int x) { return is_green(r, x) || (r & 1) ? 255 : 0; });
    const size_t middle = 64 * 12 + 32 * 3 + 16;
    EXPECT_EQ(p.at(64 * 6 + 30), 255);
    EXPECT_EQ(p.at(middle), 128 + ((9 * 127 * 28) >> 8));
    EXPECT_EQ(p.at(middle + 32 * 6), 128 + ((9 * 60 * 28) >> 8));
  });
}

// ---- statistics

TEST_F(Paths, CollectionOffChangesNoFigure) {
  at_every_level([&] {
    ppl_set_mean_collection(c, 0);
    frame(fmt::i420, 256, 64, flat(100));
    EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(c), 0u);
    EXPECT_EQ(ppl_rgb_means_whole_frame(c)[0], 0u);
    for (int i = 0; i < 256; ++i) EXPECT_EQ(ppl_g_histogram(c)[i], 0u);
  });
}

TEST_F(Paths, DefaultsCountEverySampledCell) {
  at_every_level([&] {
    linear_tone();
    // 8 tiles, 16 row pairs: tiles 1 and 3 of row pairs 1, 3 .. 11, 8 cells each: 96. The scale is
    // (4096 << 8) / ((32 - 12) * (128 - 64) / 4) = 3276.
    frame(fmt::i420, 128, 32, flat(100));
    EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(c), 96u * 3276 >> 8);
    EXPECT_EQ(ppl_n_qual_2x2_whole_frame(c), 96u * 3276 >> 8);
    EXPECT_EQ(ppl_qAE_rgb_means_whole_frame(c)[1], 100u << 8);
    // Of the 12 groups the first finds zeros where later ones find what an earlier row pair left: its mean is 50.
    EXPECT_EQ(ppl_g_histogram(c)[100], 2u * 11 * 8);
    EXPECT_EQ(ppl_g_histogram(c)[50], 2u * 8);
    EXPECT_EQ(ppl_r_histogram(c)[100], 11u * 8);
    EXPECT_EQ(ppl_b_histogram(c)[50], 8u);
  });
}

TEST_F(Paths, BlackAndRejectedFramesShareBinZero) {
  at_every_level([&] {
    linear_tone();
    frame(fmt::i420, 128, 32, flat(0));
    EXPECT_EQ(ppl_r_histogram(c)[0], 96u);
    EXPECT_EQ(ppl_n_qual_2x2_whole_frame(c), 96u * 3276 >> 8);
    frame(fmt::i420, 128, 32,
          flat(0));  // once more, so that the rows kept from the frame before are black too
    ppl_set_qual_R_min_max(c, 1, 255);
    frame(fmt::i420, 128, 32, flat(0));
    EXPECT_EQ(ppl_r_histogram(c)[0], 96u);
    EXPECT_EQ(ppl_n_qual_2x2_whole_frame(c), 0u);
  });
}

TEST_F(Paths, ExposureRangeRejectsWhollyClippedCells) {
  at_every_level([&] {
    linear_tone();
    ppl_set_qAE_RGB_min_max(c, 101, 255);
    frame(fmt::i420, 128, 32, flat(100));
    EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(c), 0u);
    // One sample of each cell inside saves it.
    frame(fmt::i420, 128, 32, [](int r, int x) { return (r & 1) != 0 && (x & 1) != 0 ? 101 : 100; });
    EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(c), 96u * 3276 >> 8);
    ppl_set_qAE_RGB_min_max(c, 0, 99);
    frame(fmt::i420, 128, 32, flat(100));
    EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(c), 0u);
    frame(fmt::i420, 128, 32, flat(99));
    EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(c), 96u * 3276 >> 8);
    // All but black, and black alone. Every frame twice: beside the second are no rows of another level.
    const auto count = [&](int level) {
      for (int i = 0; i < 2; ++i) frame(fmt::i420, 128, 32, flat(level));
      return ppl_n_qAE_2x2_whole_frame(c);
    };
    ppl_set_qAE_RGB_min_max(c, 1, 255);
    EXPECT_EQ(count(0), 0u);
    EXPECT_EQ(count(1), 96u * 3276 >> 8);
    ppl_set_qAE_RGB_min_max(c, 0, 0);
    EXPECT_EQ(count(0), 96u * 3276 >> 8);
    EXPECT_EQ(count(1), 0u);
  });
}

TEST_F(Paths, FourTilesAreEnoughForQuality2) {
  at_every_level([&] {
    linear_tone();
    ppl_set_quality(c, 2);
    frame(fmt::i420, 64, 16, flat(100));  // tile 1 of row pairs 1, 3, 5: scale 1024
    EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(c), 3u * 8 * 1024 >> 8);
    frame(fmt::i420, 64, 4, flat(100));
    EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(c), 0u);
    // With the medium filter the main stage begins at four row pairs.
    ppl_enable_medium_filter(c);
    frame(fmt::i420, 80, 6, flat(100));
    EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(c), 0u);
    frame(fmt::i420, 80, 8, flat(100));
    EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(c), 8u * 1024 >> 8);
    ppl_disable_medium_filter(c);
    ppl_set_quality(c, 12);
    frame(fmt::i420, 64, 4, flat(100));
    EXPECT_EQ(ppl_rgb_means_whole_frame(c)[0], 0u);
    frame(fmt::i420, 64, 6, flat(100));  // one row pair collects: 8 cells of 96, scale 1024, 64 * 6 / 4 sites
    EXPECT_EQ(ppl_rgb_means_whole_frame(c)[0], (uint32_t{8 * 100 * 4} * 256 + 48) / 96);
  });
}

// ---- the medium filter's reach

class MediumReach : public Paths, public testing::WithParamInterface<std::array<int, 2>> {};

TEST_P(MediumReach, RowsAndColumnsThatStay) {
  const auto [quality, first_row] = GetParam();
  at_every_level([&, quality = quality, first_row = first_row] {
    linear_tone();
    ppl_set_quality(c, static_cast<uint32_t>(quality));
    ppl_enable_medium_filter(c);
    const auto kept = [&](int row, int column) {
      const picture p = frame(fmt::i420, 96, 20, flat_but(100, row, column, 255));
      return p.source[static_cast<size_t>(row * 96 + column)] == 255;
    };
    for (int row = 0; row < 20; ++row) {
      EXPECT_EQ(kept(row, 40), row < first_row || row >= 18) << row;
      EXPECT_TRUE(kept(row, 15));
      EXPECT_TRUE(kept(row, 80));
    }
    EXPECT_FALSE(kept(8, 16));
    EXPECT_FALSE(kept(9, 79));
  });
}

INSTANTIATE_TEST_SUITE_P(Qualities, MediumReach,
                         testing::Values(std::array{0, 2}, std::array{1, 4}, std::array{2, 2}));

TEST_F(Paths, Quality15HasNoMediumFilter) {
  at_every_level([&] {
    linear_tone();
    ppl_enable_medium_filter(c);
    EXPECT_EQ(frame(fmt::i420, 96, 20, flat_but(100, 8, 40, 255)).source[8 * 96 + 40], 255);
  });
}

TEST_F(Paths, StatisticsSeeTheSamplesBeforeTheMediumFilter) {
  at_every_level([&] {
    linear_tone();
    ppl_set_quality(c, 2);
    ppl_set_qAE_RGB_min_max(c, 0, 254);
    ppl_enable_medium_filter(c);
    // All four samples of the cell at columns 18, 19 of row pair 4 are 255: the first collecting row pair sees it.
    const picture p =
        frame(fmt::i420, 96, 20, [](int r, int x) { return r / 2 == 3 && x / 2 == 17 ? 255 : 100; });
    EXPECT_NE(p.source[6 * 96 + 34], 255);  // it has been filtered
    // Tiles 1 and 3 of row pairs 1, 3, 5, 7: 64 cells, one of them rejected; (1920 << 8) / ((96 - 48) * 8 / 4) = 5120.
    EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(c), 63u * 5120 >> 8);
  });
}

// ---- the other qualities

TEST_F(Paths, FlatFramesStayFlat) {
  at_every_level([&] {
    plain();
    for (const uint32_t quality : {2u, 12u, 15u}) {
      ppl_set_quality(c, quality);
      const picture p = frame(fmt::i420, 96, 20, flat(101));
      for (size_t i = 0; i < 96 * 20; ++i) ASSERT_EQ(p.at(i), 101) << "quality " << quality << " at " << i;
    }
  });
}

TEST_F(Paths, Quality2RowZeroNestsItsMeans) {
  at_every_level([&] {
    plain_rgb();
    ppl_set_quality(c, 2);
    // Row 0: Gb 10 and 21 beside column 20; row 1 below it: 40. G = avg(avg(10, 21), avg(40, 40)) = avg(16, 40) = 28.
    const picture p = frame(fmt::rgb24, 64, 12, [](int r, int x) {
      if (r == 0 && x == 19) return 10;
      if (r == 0 && x == 21) return 21;
      return r == 1 && x == 20 ? 40 : 0;
    });
    EXPECT_EQ(p.pixel(192, 11, 3 * 20 + 1), 28);  // the first image row is the last in memory
  });
}

TEST_F(Paths, Quality12WithAClosedBandIsTheMosaic) {
  at_every_level([&] {
    plain();
    ppl_set_quality(c, 12);
    ppl_set_nf88_edge_enhance_factor(c, 256);
    ppl_set_edge_threshold(c, 700);
    ppl_set_edge_threshold2(c, 700);
    const sample_rule rule = [](int r, int x) { return (r * 61 + x * 97) & 255; };
    const picture p = frame(fmt::i420, 64, 12, rule);
    for (int i = 0; i < 64 * 12; ++i) EXPECT_EQ(p.at(static_cast<size_t>(i)), rule(i / 64, i % 64));
  });
}

TEST_F(Paths, Quality1IsQuality0WithoutEdges) {
  at_every_level([&] {
    ppl_set_edge_threshold(c, 1021);
    const sample_rule rule = [](int r, int x) { return (r * r * 7 + x * x * 3) & 255; };
    ppl_set_quality(c, 0);
    const picture q0 = frame(fmt::i420, 96, 20, rule);
    ppl_set_quality(c, 1);
    EXPECT_EQ(frame(fmt::i420, 96, 20, rule).bytes, q0.bytes);
  });
}

TEST_F(Paths, FlatTestAt255MakesEveryBlockFlat) {
  at_every_level([&] {
    plain();
    ppl_set_CFA_T0_threshold(c, 255);
    const sample_rule rule = [](int r, int x) { return (r * 91 + x * 57) & 255; };
    ppl_set_quality(c, 11);
    const picture q11 = frame(fmt::i420, 64, 12, rule);
    for (int r = 0; r < 12; r += 2)
      for (int x = 0; x < 64; x += 2) {
        const size_t i = static_cast<size_t>(64 * r + x);
        EXPECT_TRUE(q11.at(i) == q11.at(i + 1) && q11.at(i) == q11.at(i + 64) && q11.at(i) == q11.at(i + 65));
      }
    ppl_set_quality(c, 10);  // one row lower; rows 0 and 11 have no test
    const picture q10 = frame(fmt::i420, 64, 12, rule);
    for (int r = 1; r < 11; r += 2)
      for (int x = 0; x < 64; x += 2) {
        const size_t i = static_cast<size_t>(64 * r + x);
        EXPECT_TRUE(q10.at(i) == q10.at(i + 1) && q10.at(i) == q10.at(i + 64) && q10.at(i) == q10.at(i + 65));
      }
  });
}

TEST_F(Paths, FlatColoursOfAWiderStrideComeFromElsewhere) {
  at_every_level([&] {
    plain_rgb();
    ppl_set_quality(c, 11);
    ppl_set_CFA_T0_threshold(c, 255);
    // Rows of one value each: at (r, c) the row below the block is found at r * stride + width + c, which with a stride
    // of twice the width is still row r's unused half, 0. So blue, the mean of rows r and r + 2 as found (2 * 64
    // behind: row r + 1), is the mean of 10 r and 10 (r + 1).
    const picture wide = frame(
        fmt::rgb24, 64, 12, [](int r, int) { return 10 * r; }, 128);
    const picture tight = frame(fmt::rgb24, 64, 12, [](int r, int) { return 10 * r; });
    EXPECT_EQ(wide.pixel(192, 11 - 4, 3 * 20), 45);
    EXPECT_EQ(tight.pixel(192, 11 - 4, 3 * 20), 50);  // rows 4 and 6
  });
}

TEST_F(Paths, FlatTestAtZeroNeedsEqualGreens) {
  at_every_level([&] {
    plain_rgb();
    ppl_set_quality(c, 11);
    ppl_set_CFA_T0_threshold(c, 0);
    // Greens all 80, B and R checkered: flat everywhere, and no block shows its own samples.
    const sample_rule even = [](int r, int x) {
      return is_green(r, x) ? 80 : ((r / 2 + x / 2) & 1) != 0 ? 60 : 100;
    };
    picture p = frame(fmt::rgb24, 64, 12, even);
    EXPECT_EQ(p.pixel(192, 11 - 4, 3 * 20), 80);      // blue: mean of two 60s and two 100s
    EXPECT_EQ(p.pixel(192, 11 - 4, 3 * 20 + 2), 80);  // red
    // One green one off: the blocks that see it are not flat, and blue is the site's own.
    p = frame(fmt::rgb24, 64, 12, [&](int r, int x) { return r == 3 && x == 20 ? 81 : even(r, x); });
    EXPECT_EQ(p.pixel(192, 11 - 4, 3 * 20), 100);  // (4, 20): (2 + 10) & 1 = 0
  });
}

TEST_F(Paths, TheLastFlatTileStaysInForce) {
  at_every_level([&] {
    plain();
    const sample_rule rule = [](int r, int x) { return (r * 91 + x * 57) & 255; };
    ppl_set_quality(c, 1);
    const picture before = frame(fmt::i420, 64, 12, rule);
    ppl_set_quality(c, 11);
    ppl_set_CFA_T0_threshold(c, 255);
    frame(fmt::i420, 64, 12, flat(90));
    ppl_set_quality(c, 1);
    ppl_set_CFA_T0_threshold(c, 10);
    const picture after = frame(fmt::i420, 64, 12, rule);
    EXPECT_NE(after.bytes, before.bytes);
    for (size_t i = 0; i < 64 * 12; ++i) EXPECT_EQ(after.at(i), 90);  // every pixel shows the flat colour
    // With edge enhancement behind it, rows 1 and 3 .. 10 do.
    ppl_set_quality(c, 0);
    const picture q0 = frame(fmt::i420, 64, 12, rule);
    for (size_t r = 0; r < 12; ++r) {
      int same = 0;
      for (size_t x = 0; x < 64; ++x) same += q0.at(64 * r + x) == 90;
      EXPECT_EQ(same == 64, r == 1 || (r >= 3 && r <= 10)) << r;
    }
  });
}

// ---- I420

TEST_F(Paths, OddTileCountLosesTheLastChromaBlock) {
  at_every_level([&] {
    plain();
    const picture p = frame(fmt::i420, 48, 2, flat(50));
    for (size_t i = 0; i < 96; ++i) EXPECT_EQ(p.at(i), 50);
    for (size_t i = 0; i < 24; ++i) {
      EXPECT_EQ(p.at(96 + i), i < 16 ? 128 : kUntouched) << i;
      EXPECT_EQ(p.at(120 + i), i < 16 ? 128 : kUntouched) << i;
    }
  });
}

TEST_F(Paths, MirroredChromaSwapsItsTiles) {
  at_every_level([&] {
    linear_tone();
    ppl_set_quality(c, 2);
    const sample_rule rule = [](int r, int x) { return (r & 1) == 0 && (x & 1) == 0 ? 4 * x : 60; };
    const picture p = frame(fmt::i420, 64, 8, rule);
    ppl_set_h_mirror(c, 1);
    const picture q = frame(fmt::i420, 64, 8, rule);
    for (size_t row = 0; row < 8; ++row)
      for (size_t i = 0; i < 32; ++i)
        EXPECT_EQ(q.at(512 + 32 * row + i), p.at(512 + 32 * row + 31 - i)) << row << " " << i;
    for (size_t i = 0; i < 64; ++i) EXPECT_EQ(q.at(i), p.at(63 - i));
  });
}

TEST_F(Paths, HalvedChromaComesFromOddRowPairs) {
  at_every_level([&] {
    linear_tone();
    ppl_set_quality(c, 2);
    ppl_set_decimation(c, 1, 0, 0);
    // Grey 100 gives U = (100 + 32) >> 6 = 2 and V = 0. Blue in row 0 reaches rows 0 and 1 alone: row pair 0 is even,
    // and the one chroma row of the first two row pairs comes from row 2.
    const auto blue_in_row = [](int row) -> sample_rule {
      return [row](int r, int x) { return r == row && (x & 1) == 0 ? 255 : 100; };
    };
    const size_t u = 32 * 8, v = u + 16 * 4;
    picture p = frame(fmt::i420, 64, 16, blue_in_row(0));
    for (size_t i = 0; i < 16 * 4; ++i) {
      EXPECT_EQ(p.at(u + i), 130) << i;
      EXPECT_EQ(p.at(v + i), 128) << i;
    }
    p = frame(fmt::i420, 64, 16, blue_in_row(2));
    for (size_t i = 0; i < 16 * 4; ++i) EXPECT_EQ(p.at(u + i) != 130, i < 16) << i;
  });
}

TEST_F(Paths, DoubledRowsNeedNoRightNeighbour) {
  at_every_level([&] {
    plain();
    ppl_set_quality(c, 2);
    ppl_set_decimation(c, -1, 0, 0);
    const sample_rule rule = [](int, int x) { return 2 * x; };
    const picture p = frame(fmt::i420, 32, 4, rule);
    EXPECT_EQ(p.at(0), p.at(1));
    EXPECT_EQ(p.at(62), (p.at(61) + p.at(63) + 1) / 2);
    // The last row repeats the one above it, in all planes.
    for (size_t i = 0; i < 64; ++i) EXPECT_EQ(p.at(64 * 7 + i), p.at(64 * 6 + i));
    for (size_t i = 0; i < 32; ++i) EXPECT_EQ(p.at(512 + 32 * 3 + i), p.at(512 + 32 * 2 + i));
    ppl_set_h_mirror(c, 1);
    const picture q = frame(fmt::i420, 32, 4, rule);
    EXPECT_EQ(q.at(63), p.at(1));                 // column 0
    EXPECT_EQ(q.at(62), (0 + q.at(63) + 1) / 2);  // beside it a mean with 0
    EXPECT_EQ(q.at(60), (q.at(63) + q.at(61) + 1) / 2);
  });
}

TEST_F(Paths, GapRowsOfQualities10To12StayInYuv) {
  at_every_level([&] {
    plain();
    ppl_set_decimation(c, -1, 0, 0);
    for (const uint32_t quality : {10u, 11u, 12u})
      for (const int mirror : {0, 1}) {
        ppl_set_quality(c, quality);
        ppl_set_v_mirror(c, static_cast<uint8_t>(mirror));
        const picture p = frame(fmt::i420, 32, 8, flat(90));
        const picture q = frame(fmt::uyvy, 32, 8, flat(90));
        for (size_t row = 0; row < 16; ++row) {
          const bool gap = mirror != 0 ? row % 2 == 0 : row % 2 == 1;
          EXPECT_EQ(p.at(64 * row + 9) == kUntouched, gap) << quality << " " << row;
          EXPECT_EQ(q.at(128 * row + 9) == kUntouched, gap) << quality << " " << row;
        }
        if (mirror != 0) continue;  // with one mirror RGB24's row steps reach half the rows
        const picture rgb = frame(fmt::rgb24, 32, 8, flat(90));
        EXPECT_EQ(std::count(rgb.bytes.begin(), rgb.bytes.end(), kUntouched), 0) << quality;
      }
  });
}

// ---- RGB24 and RGB32

TEST_F(Paths, Rgb24MirrorReversesPixels) {
  at_every_level([&] {
    plain_rgb();
    ppl_set_quality(c, 2);
    const picture p = frame(fmt::rgb24, 64, 4, by_column());
    ppl_set_h_mirror(c, 1);
    const picture q = frame(fmt::rgb24, 64, 4, by_column());
    for (int row = 0; row < 4; ++row)
      for (int i = 0; i < 64; ++i)
        for (int k = 0; k < 3; ++k)
          EXPECT_EQ(q.pixel(192, row, 3 * i + k), p.pixel(192, row, 3 * (63 - i) + k));
  });
}

TEST_F(Paths, HalvedRgbTakesEvenColumnsOfEvenRows) {
  at_every_level([&] {
    plain_rgb();
    ppl_set_quality(c, 2);
    ppl_set_decimation(c, 1, 0, 0);
    // Blue of even columns and green of odd ones in even rows are the samples themselves.
    const picture p = frame(fmt::rgb24, 32, 4, by_column());
    const picture p32 = frame(fmt::rgb32, 32, 4, by_column());
    ppl_set_h_mirror(c, 1);
    const picture q = frame(fmt::rgb24, 32, 4, by_column());
    const picture q32 = frame(fmt::rgb32, 32, 4, by_column());
    for (int i = 0; i < 16; ++i) {
      EXPECT_EQ(p.at(static_cast<size_t>(3 * i)), 3 * (2 * i) + 5);
      EXPECT_EQ(p32.at(static_cast<size_t>(4 * i)), 3 * (2 * i) + 5);
      EXPECT_EQ(q.at(static_cast<size_t>(3 * i)), 3 * (30 - 2 * i) + 5);        // picked, then reversed
      EXPECT_EQ(q32.at(static_cast<size_t>(4 * i + 1)), 3 * (31 - 2 * i) + 5);  // reversed, then picked
      EXPECT_EQ(p32.at(static_cast<size_t>(4 * i + 3)), 0);
    }
  });
}

TEST_F(Paths, Rgb32FourthByteIsZero) {
  at_every_level([&] {
    ppl_set_quality(c, 1);
    const picture p = frame(fmt::rgb32, 64, 8, flat(200));
    for (size_t i = 3; i < p.bytes.size(); i += 4) EXPECT_EQ(p.at(i), 0);
    ppl_reset_quality(c);
    const uint32_t frames = ppl_n_frame(c);
    const picture q = frame(fmt::rgb32, 64, 8, flat(200));
    EXPECT_EQ(q.result, 1);
    EXPECT_EQ(ppl_n_frame(c), frames + 1);
    EXPECT_EQ(std::count(q.bytes.begin(), q.bytes.end(), kUntouched), 64 * 8 * 4);
  });
}

TEST_F(Paths, DoubledRgb24BeginsWithItsFirstSampleTwice) {
  at_every_level([&] {
    plain_rgb();
    ppl_set_quality(c, 2);
    ppl_set_decimation(c, -1, 0, 0);
    const picture p = frame(fmt::rgb24, 32, 4, by_column());
    for (int k = 0; k < 3; ++k) EXPECT_EQ(p.pixel(192, 7, k), p.pixel(192, 7, 3 + k));
    for (int i = 0; i < 192; ++i) EXPECT_EQ(p.pixel(192, 0, i), p.pixel(192, 1, i));  // the last image row
  });
}

TEST_F(Paths, DoubledRgb24OfQuality15IsUnconverted) {
  at_every_level([&] {
    plain();
    ppl_set_decimation(c, -1, 0, 0);
    const picture p =
        frame(fmt::rgb24, 32, 4, flat(90));  // luma 90 for red; chroma 0, without 128, for the others
    for (size_t i = 0; i < p.bytes.size(); i += 3) {
      EXPECT_EQ(p.at(i), 0);
      EXPECT_EQ(p.at(i + 1), 0);
      EXPECT_EQ(p.at(i + 2), 90);
    }
  });
}

TEST_F(Paths, Decimation2StaysInsideTheFrame) {
  at_every_level([&] {
    ppl_set_decimation(c, 2, 0, 0);
    for (const fmt kind : {fmt::i420, fmt::yuyv, fmt::rgb24, fmt::rgb32})
      for (const uint32_t quality : {0u, 2u, 15u}) {
        ppl_set_quality(c, quality);
        EXPECT_EQ(frame(kind, 64, 16, flat(90)).result, 1);  // frame() looks at the bytes around
      }
  });
}

// ---- YUYV and UYVY

TEST_F(Paths, PackedMirrorKeepsUInFrontOfV) {
  at_every_level([&] {
    linear_tone();
    ppl_set_quality(c, 2);
    const sample_rule rule = [](int r, int x) { return (r & 1) == 0 && (x & 1) == 0 ? 3 * x : 80; };
    const picture p = frame(fmt::yuyv, 64, 4, rule), u = frame(fmt::uyvy, 64, 4, rule);
    ppl_set_h_mirror(c, 1);
    const picture q = frame(fmt::yuyv, 64, 4, rule);
    for (int i = 0; i < 64; ++i) {
      EXPECT_EQ(q.pixel(128, 0, 2 * i), p.pixel(128, 0, 2 * (63 - i)));
      EXPECT_EQ(u.pixel(128, 0, 2 * i + 1), p.pixel(128, 0, 2 * i));
      EXPECT_EQ(u.pixel(128, 0, 2 * i), p.pixel(128, 0, 2 * i + 1));
    }
    for (int i = 0; i < 32; ++i) {
      EXPECT_EQ(q.pixel(128, 0, 4 * i + 1), p.pixel(128, 0, 4 * (31 - i) + 1));
      EXPECT_EQ(q.pixel(128, 0, 4 * i + 3), p.pixel(128, 0, 4 * (31 - i) + 3));
    }
  });
}

TEST_F(Paths, PackedChromaOfZeroIs128AndDoublesByRepeating) {
  at_every_level([&] {
    plain();
    const picture p = frame(fmt::yuyv, 64, 12, flat(70));
    for (size_t i = 1; i < p.bytes.size(); i += 2) EXPECT_EQ(p.at(i), 128);
    ppl_reset_sat_hue(c);
    ppl_set_quality(c, 2);
    ppl_set_decimation(c, -1, 0, 0);
    const picture d =
        frame(fmt::uyvy, 32, 4, [](int r, int x) { return (r & 1) == 0 && (x & 1) == 0 ? 7 * x : 80; });
    for (int i = 0; i < 16; ++i) {
      EXPECT_EQ(d.pixel(128, 0, 8 * i), d.pixel(128, 0, 8 * i + 4));
      EXPECT_EQ(d.pixel(128, 0, 8 * i + 2), d.pixel(128, 0, 8 * i + 6));
    }
  });
}

TEST_F(Paths, DoubledYuyvOfQuality15LeavesItsMainRows) {
  at_every_level([&] {
    ppl_set_decimation(c, -1, 0, 0);
    // 8 row pairs: the main stage has 1 .. 4, so image rows 3, 5 .. 15, 17 stay.
    const picture p = frame(fmt::yuyv, 32, 16, flat(90));
    const picture u = frame(fmt::uyvy, 32, 16, flat(90));
    for (size_t row = 0; row < 32; ++row) {
      EXPECT_EQ(p.at(128 * row + 40) == kUntouched, row % 2 == 1 && row >= 3 && row <= 17) << row;
      EXPECT_NE(u.at(128 * row + 40), kUntouched) << row;
    }
    for (size_t i = 0; i < 128; ++i) EXPECT_EQ(p.at(128 * 31 + i), p.at(128 * 30 + i));
    ppl_set_v_mirror(c, 1);
    const picture q = frame(fmt::yuyv, 32, 16, flat(90));
    for (size_t row = 0; row < 32; ++row)
      EXPECT_EQ(q.at(128 * row + 40) == kUntouched, (31 - row) % 2 == 1 && 31 - row >= 3 && 31 - row <= 17)
          << row;
  });
}

TEST_F(Paths, PackedGapIsAMeanOnlyInItsFirstHalf) {
  at_every_level([&] {
    plain();
    ppl_set_quality(c, 2);
    ppl_set_decimation(c, -1, 0, 0);
    // Image rows 0 and 2 are the mosaic's rows 0 and 1: grey 40 and 80 after means, whatever stands in row 1 of the
    // picture's first half, its second half mixes the upper row with bytes 16 .. 31 of the mean.
    const picture p = frame(fmt::uyvy, 32, 8, [](int r, int) { return r * 30; });
    for (size_t i = 0; i < 128; ++i) {
      const size_t in_group = i % 64;
      const int a = p.at(i), b = p.at(256 + i);
      if (in_group < 32)
        EXPECT_EQ(p.at(128 + i), (a + b + 1) >> 1) << i;
      else
        EXPECT_EQ(p.at(128 + i), (p.at(128 + i - in_group + 16 + in_group % 16) + a + 1) >> 1) << i;
    }
  });
}

// Rows that are no whole groups of 64 bytes, from pointers that drift: a page that cannot be touched follows the frame,
// and nothing in front of it changes.
TEST_F(Paths, DoubledPackedRowsOfAnyWidthStayInsideTheFrame) {
  at_every_level([&] {
    ppl_set_quality(c, 0);
    ppl_set_decimation(c, -1, 0, 0);
    for (int width = 17; width < 100; ++width)
      for (int height = 2; height <= 12; ++height) {
        const auto bytes = static_cast<size_t>(8 * width * height);
        const guarded source(static_cast<size_t>(width * height)), out(bytes);
        uint8_t* const to = out.end() - (bytes + 15) / 16 * 16;
        std::fill_n(out.begin(), to - out.begin(), uint8_t{kUntouched});
        for (int way = 0; way < 8; ++way) {
          ppl_set_h_mirror(c, way & 1);
          ppl_set_v_mirror(c, way >> 1 & 1);
          const auto call = (way & 4) != 0 ? ppl_process_blrtoyuyv : ppl_process_blrtouyvy;
          const auto w = static_cast<uint32_t>(width), h = static_cast<uint32_t>(height);
          EXPECT_TRUE(call(c, source.begin(), to, w, h, w));
        }
        EXPECT_TRUE(std::all_of(out.begin(), to, [](uint8_t b) { return b == kUntouched; })) << width;
      }
  });
}

TEST_F(Paths, QualitiesThatAreOnlyCounted) {
  at_every_level([&] {
    for (const fmt kind : {fmt::yuyv, fmt::uyvy})
      for (const uint32_t quality : {5u, 6u, 7u, 8u, 13u, 14u}) {
        ppl_set_quality(c, quality);
        const uint32_t frames = ppl_n_frame(c);
        const picture p = frame(kind, 32, 8, flat(90));
        EXPECT_EQ(p.result, 1);
        EXPECT_EQ(ppl_n_frame(c), frames + 1);
        EXPECT_EQ(std::count(p.bytes.begin(), p.bytes.end(), kUntouched), 32 * 8 * 2);
      }
  });
}

}  // namespace
