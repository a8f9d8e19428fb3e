// Qualities 3 and 13 in all formats, with figures worked out by hand.
#include "record/context.h"
#include "support/frame_fixture.h"

namespace {

using namespace engine;

bytes rows_of(const bytes& picture, size_t from, size_t row_bytes, size_t row, size_t count = 1) {
  const auto first = picture.begin() + std::ptrdiff_t(from + row * row_bytes);
  return bytes(first, first + std::ptrdiff_t(count * row_bytes));
}

class bulk : public at_level {
 protected:
  void SetUp() override {
    at_level::SetUp();
    if (c == nullptr) return;
    linear_tone();
    identity_matrix();
  }
  void mirrors(bool h, bool v) {
    ppl_set_h_mirror(c, h);
    ppl_set_v_mirror(c, v);
  }
};

// ---- quality 13

class quality_13 : public bulk {
 protected:
  void SetUp() override {
    bulk::SetUp();
    if (c != nullptr) ppl_set_quality(c, 13);
  }
};
ENGINE_LEVELS(quality_13);

TEST_P(quality_13, with_a_linear_tone_curve_luma_is_the_mosaic) {
  const bytes in = noise(96 * 10, 1);
  bytes expected = in;
  expected.resize(96 * 15, 128);
  EXPECT_EQ(run(I420, in, 96, 10), expected);
  EXPECT_EQ(source_after, in);
  EXPECT_EQ(result, 1);
}

TEST_P(quality_13, takes_the_YUV_tone_curve_with_contrast) {
  bytes curve(256);
  for (size_t i = 0; i < 256; ++i) curve[i] = uint8_t(255 - i);
  ppl_copy_yuv_gamma_table(c, curve.data());
  const bytes out = run(I420, bytes(64 * 4, 10), 64, 4);
  EXPECT_EQ(out[0], ppl_yuv_contrast_gamma_table(c)[10]);
  EXPECT_EQ(out[0], 245);
  EXPECT_EQ(source_after, bytes(64 * 4, 245));
}

TEST_P(quality_13, a_single_row_pair_gives_no_statistics) {
  run(I420, bytes(64 * 2, 100), 64, 2);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(ppl_rgb_means_whole_frame(c)[i], 0u);
  run(I420, bytes(64 * 4, 100), 64, 4);  // the second one does: every cell of it counts four times
  for (int i = 0; i < 3; ++i) EXPECT_EQ(ppl_rgb_means_whole_frame(c)[i], 100u * 256);
}

TEST_P(quality_13, statistics_are_plain_sums_alone) {
  run(I420, noise(192 * 24, 6), 192, 24);
  const uint32_t* cells = ppl_rgb_means_sub_windows(c);
  EXPECT_EQ(std::count(cells, cells + 147, 0u), 147);
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(c), 0u);
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(c), 0u);
  EXPECT_EQ(std::count(ppl_r_histogram(c), ppl_r_histogram(c) + 256, 0u), 256);
  EXPECT_NE(ppl_rgb_means_whole_frame(c)[0], 0u);
}

TEST_P(quality_13, half_of_a_group_is_measured_before_the_tone_curve) {
  bytes curve(256, 0);  // everything comes out black
  ppl_copy_yuv_gamma_table(c, curve.data());
  run(I420, bytes(32 * 4, 100), 32, 4);
  // one group: the four cells of tile 1 at 100, those of tile 0 at 0; 4 * 400 over 32 sites of a colour
  for (int i = 0; i < 3; ++i) EXPECT_EQ(ppl_rgb_means_whole_frame(c)[i], 50u * 256);
}

TEST_P(quality_13, no_statistics_without_mean_collection) {
  ppl_set_mean_collection(c, 0);
  run(I420, bytes(64 * 8, 100), 64, 8);
  EXPECT_EQ(ppl_rgb_means_whole_frame(c)[1], 0u);
}

TEST_P(quality_13, greens_are_balanced_strictly_below_the_threshold) {
  bytes in(32 * 2, 50);
  in[1] = 100;  // Gb of cell 0; Gr is 91
  in[32] = 91;
  ppl_enable_GbGr_correction(c);
  ppl_set_GbGr_correction_diff_threshold(c, 9);
  EXPECT_EQ(run(I420, in, 32, 2)[1], 100);
  ppl_set_GbGr_correction_diff_threshold(c, 10);
  const bytes out = run(I420, in, 32, 2);
  EXPECT_EQ(out[1], 96);  // (100 + 91 + 1) >> 1
  EXPECT_EQ(out[32], 96);
  EXPECT_EQ(source_after[1], 96);
  in[32] = 100;
  ppl_set_GbGr_correction_diff_threshold(c, 0);
  in[3] = 10;
  EXPECT_EQ(run(I420, in, 32, 2)[3], 10);
}

TEST_P(quality_13, black_stops_at_0_and_deltas_clamp) {
  ppl_set_optical_black_b_gb_gr_r(c, 60, 0, 0, 0);
  EXPECT_EQ(run(I420, bytes(32 * 2, 50), 32, 2)[0], 0);
  EXPECT_EQ(run(I420, bytes(32 * 2, 70), 32, 2)[0], 10);
  ppl_reset_optical_black_b_gb_gr_r(c);
  ppl_set_rgb_delta(c, -300, -20, 250);
  const bytes out = run(I420, bytes(32 * 2, 10), 32, 2);
  EXPECT_EQ(out[0], 255);  // B: 10 + 250
  EXPECT_EQ(out[1], 0);    // Gb: 10 - 20
  EXPECT_EQ(out[32], 0);   // Gr
  EXPECT_EQ(out[33], 0);   // R: 10 - 300
}

TEST_P(quality_13, mirrors_turn_the_picture_and_not_the_source) {
  const bytes in = noise(64 * 8, 7);
  for (int half = 0; half < 2; ++half) {
    ppl_set_decimation(c, half, 0, 0);
    mirrors(false, false);
    const bytes plain = run(I420, in, 64, 8);
    const size_t n = 64 * 8 >> (2 * half), w = 64 >> half;
    mirrors(true, true);
    bytes turned(plain.begin(), plain.begin() + std::ptrdiff_t(n));
    std::reverse(turned.begin(), turned.end());
    turned.resize(n + n / 2, 128);
    EXPECT_EQ(run(I420, in, 64, 8), turned);
    EXPECT_EQ(source_after, in);
    mirrors(true, false);
    const bytes flipped = run(I420, in, 64, 8);
    for (size_t y = 0; y < n / w; ++y) {
      bytes row = rows_of(plain, 0, w, y);
      std::reverse(row.begin(), row.end());
      EXPECT_EQ(rows_of(flipped, 0, w, y), row);
    }
    mirrors(false, true);
    const bytes upside = run(I420, in, 64, 8);
    for (size_t y = 0; y < n / w; ++y)
      EXPECT_EQ(rows_of(upside, 0, w, y), rows_of(plain, 0, w, n / w - 1 - y));
  }
}

TEST_P(quality_13, halved_luma_is_the_B_sites_alone) {
  const bytes in = noise(128 * 8, 8);
  ppl_set_decimation(c, 1, 0, 0);
  bytes expected;
  for (size_t y = 0; y < 4; ++y)
    for (size_t x = 0; x < 64; ++x) expected.push_back(in[2 * y * 128 + 2 * x]);
  expected.resize(64 * 6, 128);
  EXPECT_EQ(run(I420, in, 128, 8), expected);
  EXPECT_EQ(source_after, in);
}

TEST_P(quality_13, any_size_stays_in_its_buffers_and_passes_the_front_end) {
  ppl_set_rgb_delta(c, 1, 1, 1);
  for (int d = -1; d <= 1; ++d)
    for (int w : {16, 17, 31, 48, 80, 96, 112, 130})
      for (int h : {1, 2, 3, 5, 6, 10}) {
        ppl_set_decimation(c, d, 0, 0);
        for (int m = 0; m < 4; ++m)
          for (int f : {I420, RGB24}) {
            mirrors(m & 1, m >> 1);
            run(f, bytes(size_t(w * h), 9), w, h);
            EXPECT_EQ(result, 1);
            for (int y = 0; y < h / 2 * 2; ++y)
              for (int x = 0; x < w / 16 * 16; ++x) ASSERT_EQ(source_after[size_t(y * w + x)], 10);
          }
      }
}

TEST_P(quality_13, decimation_2_only_counts) {
  run(I420, bytes(64 * 4, 9), 64, 4);
  c->stats_scale = 77;
  ppl_set_decimation(c, 2, 0, 0);
  const uint32_t frames = ppl_n_frame(c);
  for (int f : {I420, RGB24}) {
    const bytes out = run(f, noise(64 * 8, 3), 64, 8);
    EXPECT_EQ(out, bytes(out.size(), 0xa5));
    EXPECT_EQ(source_after, noise(64 * 8, 3));
    EXPECT_EQ(result, 1);
  }
  EXPECT_EQ(ppl_n_frame(c), frames + 2);
  EXPECT_EQ(c->stats_scale, 77);
}

TEST_P(quality_13, double_size_takes_the_halving_routine_with_the_plan_of_a_doubled_picture) {
  const bytes in = noise(64 * 8, 9);
  ppl_set_decimation(c, -1, 0, 0);
  // 128 wide. One group a row: tiles at 0 and 32 of rows 0 and 2; then 64 on, and 4 rows less one width
  bytes expected(128 * 16 * 3 / 2, 0xa5);
  for (size_t k = 0; k < 2; ++k) {
    const size_t at = k * (64 + 3 * 128);
    for (size_t row = 0; row < 2; ++row)
      for (size_t half = 0; half < 2; ++half)
        for (size_t i = 0; i < 16; ++i)
          expected[at + 256 * row + 32 * half + i] = in[(4 * k + 2 * row) * 64 + 32 * half + 2 * i];
    for (size_t plane = 0; plane < 2; ++plane)  // 32 on, and 2 chroma rows less one
      std::fill_n(expected.begin() + std::ptrdiff_t(128 * 16 + plane * 512 + k * (32 + 64)), 16, 128);
  }
  EXPECT_EQ(run(I420, in, 64, 8), expected);
}

TEST_P(quality_13, RGB24_repeats_the_sample_bottom_up) {
  const bytes in = noise(64 * 8, 10);
  bytes expected(64 * 8 * 3);
  for (size_t y = 0; y < 8; ++y)
    for (size_t x = 0; x < 64; ++x)
      std::fill_n(expected.begin() + std::ptrdiff_t(3 * ((7 - y) * 64 + x)), 3, in[y * 64 + x]);
  EXPECT_EQ(run(RGB24, in, 64, 8), expected);
  ppl_set_decimation(c, 1, 0, 0);
  mirrors(true, true);
  expected.resize(32 * 4 * 3);
  for (size_t y = 0; y < 4; ++y)
    for (size_t x = 0; x < 32; ++x)
      std::fill_n(expected.begin() + std::ptrdiff_t(3 * (y * 32 + 31 - x)), 3, in[2 * y * 64 + 2 * x]);
  EXPECT_EQ(run(RGB24, in, 64, 8), expected);
}

TEST_P(quality_13, lens_factors_come_by_the_distance_from_the_origin_row) {
  std::vector<uint16_t> table(64 * 4);
  ASSERT_TRUE(ppl_set_lens_correction(c, 64, 6, 32, 3, table.data(), 64 * 4 * 2, 0, 24, 0, 44));
  for (size_t d = 0; d < 4; ++d)
    std::fill_n(table.begin() + std::ptrdiff_t(64 * d), 64, uint16_t(8192 + 2048 * d));
  ppl_enable_lens_correction(c);
  const bytes out = run(I420, bytes(64 * 8, 40), 64, 8);
  const uint8_t expected[8] = {70, 60, 50, 40, 50, 60, 70, 40};  // row 7 is behind the table: 1.0
  for (size_t y = 0; y < 8; ++y) EXPECT_EQ(rows_of(out, 0, 64, y), bytes(64, expected[y])) << y;
}

// ---- quality 3

class quality_3 : public bulk {
 protected:
  void SetUp() override {
    bulk::SetUp();
    if (c != nullptr) ppl_set_quality(c, 3);
  }
  // Luma by the identity sensor matrix: coefficients 19, 38, 7 of 64.
  static uint8_t luma(int r, int g, int b) {
    return uint8_t(std::min((19 * r + 38 * g + 7 * b + 32) >> 6, 255));
  }
};
ENGINE_LEVELS(quality_3);

TEST_P(quality_3, flat_grey_has_no_colour) {
  bytes expected(64 * 8, 20);
  expected.resize(64 * 12, 128);
  EXPECT_EQ(run(I420, bytes(64 * 8, 20), 64, 8), expected);
  ppl_set_sat(c, 0);
  std::fill_n(expected.begin(), 64 * 8, 200);
  EXPECT_EQ(run(I420, bytes(64 * 8, 200), 64, 8), expected);
}

TEST_P(quality_3, a_bright_green_site_stays_within_its_cell) {
  ppl_set_sat(c, 0);
  bytes in(64 * 8, 0);
  in[4 * 64 + 2 * 5 + 1] = 200;  // Gb of cell (5, 2)
  const bytes out = run(I420, in, 64, 8);
  bytes expected(64 * 8, 0);
  expected[4 * 64 + 10] = luma(0, 100, 0);  // B site: half the green
  expected[4 * 64 + 11] = luma(0, 200, 0);
  expected[5 * 64 + 10] = 0;                // Gr site: its own green
  expected[5 * 64 + 11] = luma(0, 100, 0);  // R site
  EXPECT_EQ(luma(0, 100, 0), 59);
  EXPECT_EQ(luma(0, 200, 0), 119);
  EXPECT_EQ(rows_of(out, 0, 64 * 8, 0), expected);
}

TEST_P(quality_3, chroma_is_one_value_for_a_cell) {
  bytes in(32 * 2, 0);
  in[0] = 100;  // B of cell 0
  in[33] = 50;  // R of cell 0
  const bytes out = run(I420, in, 32, 2);
  // U row -19, -37, 57; V row 45, -37, -7
  EXPECT_EQ(out[64], 128 + ((-19 * 50 + 57 * 100 + 32) >> 6));
  EXPECT_EQ(out[64 + 16], 128 + ((45 * 50 - 7 * 100 + 32) >> 6));
  EXPECT_EQ(out[65], 128);
}

TEST_P(quality_3, halved_takes_the_B_site_and_every_second_cells_chroma) {
  const bytes in = noise(64 * 8, 12), whole = run(I420, in, 64, 8);
  ppl_set_decimation(c, 1, 0, 0);
  const bytes half = run(I420, in, 64, 8);
  for (size_t y = 0; y < 4; ++y)
    for (size_t x = 0; x < 32; ++x) ASSERT_EQ(half[32 * y + x], whole[64 * 2 * y + 2 * x]);
  for (size_t plane = 0; plane < 2; ++plane)
    for (size_t y = 0; y < 2; ++y)
      for (size_t x = 0; x < 16; ++x)
        ASSERT_EQ(half[128 + 32 * plane + 16 * y + x], whole[512 + 128 * plane + 32 * 2 * y + 2 * x]);
}

TEST_P(quality_3, a_doubled_row_begins_with_its_first_sample_twice) {
  const bytes in = noise(64 * 4, 13), whole = run(I420, in, 64, 4);
  ppl_set_decimation(c, -1, 0, 0);
  bytes out = run(I420, in, 64, 4);
  EXPECT_EQ(out[0], whole[0]);
  EXPECT_EQ(out[1], whole[0]);
  EXPECT_EQ(out[2], (whole[0] + whole[1] + 1) / 2);
  EXPECT_EQ(out[3], whole[1]);
  mirrors(true, false);
  out = run(I420, in, 64, 4);
  EXPECT_EQ(out[127], whole[0]);
  EXPECT_EQ(out[126], whole[0]);
  // Column 16 begins a tile: its neighbour is the widened value of columns 15 and 14.
  const int widened = (whole[15] + whole[14] + 1) / 2;
  EXPECT_EQ(out[127 - 32], whole[16]);
  EXPECT_EQ(out[126 - 32], (whole[16] + widened + 1) / 2);
  EXPECT_EQ(out[126 - 34], (whole[17] + whole[16] + 1) / 2);
}

TEST_P(quality_3, one_row_pair_doubles_to_A_the_mean_B_and_B) {
  const bytes in = noise(64 * 2, 14);
  ppl_set_decimation(c, -1, 0, 0);
  const bytes out = run(I420, in, 64, 2);
  const bytes a = rows_of(out, 0, 128, 0), b = rows_of(out, 0, 128, 2);
  bytes mean(128);
  for (size_t i = 0; i < 128; ++i) mean[i] = uint8_t((a[i] + b[i] + 1) / 2);
  EXPECT_EQ(rows_of(out, 0, 128, 1), mean);
  EXPECT_EQ(rows_of(out, 0, 128, 3), b);
  EXPECT_NE(a, b);
  EXPECT_EQ(rows_of(out, 512, 64, 1), rows_of(out, 512, 64, 0));  // chroma: one row and its copy
  EXPECT_EQ(rows_of(out, 640, 64, 1), rows_of(out, 640, 64, 0));
}

TEST_P(quality_3, the_duplicated_row_of_a_doubled_picture_is_the_last_in_memory) {
  const bytes in = noise(64 * 8, 15);
  ppl_set_decimation(c, -1, 0, 0);
  for (int f : {I420, YUYV, UYVY, RGB24}) {
    const size_t row = f == I420 ? 128 : f == RGB24 ? 384 : 256;
    for (int v = 0; v < 2; ++v) {
      mirrors(false, v);
      const bytes out = run(f, in, 64, 8);
      EXPECT_EQ(rows_of(out, 0, row, 15), rows_of(out, 0, row, 14)) << kFormatNames[f];
      // With the first image row below, the rows stand one place higher: every other row is a mean, row 13 too.
      const bytes above = rows_of(out, 0, row, 12), below = rows_of(out, 0, row, 14);
      bytes mean(row);
      for (size_t i = 0; i < row; ++i) mean[i] = uint8_t((above[i] + below[i] + 1) / 2);
      EXPECT_EQ(rows_of(out, 0, row, 13), mean) << kFormatNames[f];
    }
  }
}

TEST_P(quality_3, a_doubled_packed_picture_has_the_luma_and_widened_chroma_of_I420) {
  const bytes in = noise(64 * 8, 16);
  ppl_set_decimation(c, -1, 0, 0);
  for (int m = 0; m < 4; ++m) {
    mirrors(m & 1, m >> 1);
    const bytes planar = run(I420, in, 64, 8), yuyv = run(YUYV, in, 64, 8), uyvy = run(UYVY, in, 64, 8);
    for (size_t i = 0; i < 128 * 16; ++i) {
      ASSERT_EQ(yuyv[2 * i], planar[i]);
      ASSERT_EQ(uyvy[2 * i + 1], planar[i]);
      ASSERT_EQ(uyvy[2 * i], yuyv[2 * i + 1]);
    }
    // Rows of source row pairs: chroma row 2j of I420 serves packed rows 4j and 4j + 2.
    for (size_t j = 0; j < 4; ++j) {
      const size_t row = m >> 1 ? 14 - 4 * j : 4 * j, chroma = m >> 1 ? 6 - 2 * j : 2 * j;
      for (size_t x = 0; x < 64; ++x) {
        ASSERT_EQ(yuyv[row * 256 + 4 * x + 1], planar[2048 + chroma * 64 + x]);
        ASSERT_EQ(yuyv[row * 256 + 4 * x + 3], planar[2560 + chroma * 64 + x]);
      }
    }
  }
}

TEST_P(quality_3, both_rows_of_a_cell_carry_its_chroma_in_packed_formats) {
  const bytes in = noise(64 * 4, 17), planar = run(I420, in, 64, 4), yuyv = run(YUYV, in, 64, 4);
  for (size_t y = 0; y < 4; ++y)
    for (size_t x = 0; x < 64; ++x) {
      ASSERT_EQ(yuyv[128 * y + 2 * x], planar[64 * y + x]);
      ASSERT_EQ(yuyv[128 * y + 2 * x + 1], planar[256 + (x % 2) * 64 + 32 * (y / 2) + x / 2]);
    }
  mirrors(true, false);  // U stays in front of V
  const bytes mirrored = run(YUYV, in, 64, 4);
  for (size_t y = 0; y < 4; ++y)
    for (size_t x = 0; x < 32; ++x) {
      ASSERT_EQ(mirrored[128 * y + 4 * x + 1], yuyv[128 * y + 4 * (31 - x) + 1]);
      ASSERT_EQ(mirrored[128 * y + 4 * x + 3], yuyv[128 * y + 4 * (31 - x) + 3]);
      ASSERT_EQ(mirrored[128 * y + 4 * x], yuyv[128 * y + 4 * (31 - x) + 2]);
    }
}

TEST_P(quality_3, halved_packed_rows_take_chroma_from_their_own_row_pair) {
  const bytes in = noise(64 * 8, 18), whole = run(UYVY, in, 64, 8);
  ppl_set_decimation(c, 1, 0, 0);
  const bytes half = run(UYVY, in, 64, 8);
  for (size_t y = 0; y < 4; ++y)
    for (size_t x = 0; x < 16; ++x) {
      const size_t to = 64 * y + 4 * x, cell = 128 * 2 * y + 4 * 2 * x;  // cell (2x, y)
      ASSERT_EQ(half[to], whole[cell]);
      ASSERT_EQ(half[to + 2], whole[cell + 2]);
      ASSERT_EQ(half[to + 1], whole[cell + 1]);
      ASSERT_EQ(half[to + 3], whole[cell + 4 + 1]);
    }
}

TEST_P(quality_3, a_flat_grey_mosaic_gives_equal_colours_in_RGB) {
  for (int level : {0, 1, 77, 255}) {
    const bytes in(64 * 4, uint8_t(level));
    EXPECT_EQ(run(RGB24, in, 64, 4), bytes(64 * 4 * 3, uint8_t(level)));
    const bytes out = run(RGB32, in, 64, 4);
    for (size_t i = 0; i < out.size(); ++i) ASSERT_EQ(out[i], i % 4 == 3 ? 0 : level);
  }
}

TEST_P(quality_3, RGB_of_a_cell_is_one_red_one_blue_and_the_sites_green) {
  bytes in(32 * 2, 0);
  in[0] = 10, in[1] = 40, in[32] = 61, in[33] = 90;  // B Gb / Gr R
  for (int f : {RGB24, RGB32}) {
    const size_t n = f == RGB24 ? 3 : 4;
    const bytes out = run(f, in, 32, 2);
    const auto pixel = [&](size_t y, size_t x) {
      return bytes(&out[n * (32 * (1 - y) + x)], &out[n * (32 * (1 - y) + x)] + 3);
    };
    EXPECT_EQ(pixel(0, 0), (bytes{10, 51, 90}));
    EXPECT_EQ(pixel(0, 1), (bytes{10, 40, 90}));
    EXPECT_EQ(pixel(1, 0), (bytes{10, 61, 90}));
    EXPECT_EQ(pixel(1, 1), (bytes{10, 51, 90}));
  }
}

// Mirrored first, then every second column: odd ones, those of the Gb sites.
TEST_P(quality_3, halved_RGB32_takes_every_second_column_of_the_mirrored_picture) {
  const bytes in = noise(64 * 8, 19);
  mirrors(true, false);
  const bytes whole = run(RGB32, in, 64, 8);
  ppl_set_decimation(c, 1, 0, 0);
  const bytes out = run(RGB32, in, 64, 8);
  for (size_t y = 0; y < 4; ++y)
    for (size_t x = 0; x < 32; ++x)
      for (size_t k = 0; k < 4; ++k)
        ASSERT_EQ(out[128 * y + 4 * x + k], whole[256 * (2 * y + 1) + 8 * x + k]);
  EXPECT_EQ(out[3], 0);
}

TEST_P(quality_3, doubled_RGB32_runs_the_routine_for_the_same_size_along_the_doubled_plan) {
  const bytes in = noise(32 * 4, 20), plain = run(RGB32, in, 32, 4);
  ppl_set_decimation(c, -1, 0, 0);
  const bytes out = run(RGB32, in, 32, 4);
  // 64 x 8. Rows of 256 bytes; one group of 128 bytes a row pair: rows 7 and 6, then 128 - 12 * 64 bytes on
  bytes expected(64 * 8 * 4, 0xa5);
  for (size_t p = 0; p < 2; ++p)
    for (size_t k = 0; k < 2; ++k)
      std::copy_n(plain.begin() + std::ptrdiff_t(128 * (3 - 2 * p - k)), 128,
                  expected.begin() + std::ptrdiff_t(6 * 256 - 640 * p + 256 * (1 - k)));
  EXPECT_EQ(out, expected);
}

TEST_P(quality_3, at_most_a_quarter_of_the_cells_qualify) {
  run(I420, bytes(64 * 32, 90), 64, 32);
  // 8 cells of every 32 columns of every second row pair: 2 * 8 groups; the counts are scaled up to the frame
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(c), 4u * 128);
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(c), 4u * 128);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(ppl_qual_rgb_means_whole_frame(c)[i], 90u * 256);
    EXPECT_EQ(ppl_qAE_rgb_means_whole_frame(c)[i], 90u * 256);
    EXPECT_EQ(ppl_rgb_means_whole_frame(c)[i], 90u * 256);
  }
  EXPECT_EQ(ppl_r_histogram(c)[90], 16u * 8);
  EXPECT_EQ(ppl_g_histogram(c)[90], 16u * 16);
  EXPECT_EQ(ppl_b_histogram(c)[90], 16u * 8);
  const uint32_t* cells = ppl_rgb_means_sub_windows(c);
  EXPECT_EQ(std::count(cells, cells + 147, 0u), 147) << "no sub-windows in this path";
}

TEST_P(quality_3, the_first_collecting_tile_finds_its_own_neighbour) {
  bytes in(32 * 4, 0);
  // Tile 0 of row pair 1 alone is bright: half the cells of the one group.
  for (size_t y = 2; y < 4; ++y) std::fill_n(in.begin() + std::ptrdiff_t(32 * y), 16, 64);
  run(I420, in, 32, 4);
  EXPECT_EQ(ppl_r_histogram(c)[4 * 64 / 8], 8u);
  // and it is what a later frame finds behind it
  for (int i = 0; i < 16; ++i) EXPECT_EQ(c->leftovers.stat_even_row.lane[i], 64);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(c->leftovers.stat_odd_row.lane[i], 64);
}

TEST_P(quality_3, every_size_and_decimation_stays_in_its_buffers) {
  ppl_set_rgb_delta(c, 1, 1, 1);
  for (int f = I420; f <= RGB32; ++f)
    for (int d = -1; d <= 2; ++d) {
      ppl_set_decimation(c, d, 0, 0);
      for (int w : {16, 17, 47, 48, 80, 96, 144})
        for (int h : {1, 2, 3, 6, 7, 10})
          for (int m = 0; m < 4; ++m) {
            mirrors(m & 1, m >> 1);
            run(f, bytes(size_t(w * h), 9), w, h);
            EXPECT_EQ(result, 1);
            for (int y = 0; y < h / 2 * 2; ++y)
              for (int x = 0; x < w / 16 * 16; ++x)
                ASSERT_EQ(source_after[size_t(y * w + x)], d == 2 ? 9 : 10);
          }
    }
}

TEST_P(quality_3, a_stride_off_16_and_bytes_behind_the_rows) {
  for (int stride : {64, 65, 71, 80, 131}) {
    const bytes packed = noise(64 * 8, 25);
    bytes in(size_t(stride) * 8, 0x77);
    for (size_t y = 0; y < 8; ++y)
      std::copy_n(packed.begin() + std::ptrdiff_t(64 * y), 64,
                  in.begin() + std::ptrdiff_t(size_t(stride) * y));
    const bytes expected = run(RGB24, packed, 64, 8);
    EXPECT_EQ(run(RGB24, in, 64, 8, stride), expected);
    for (size_t y = 0; y < 8; ++y)
      for (size_t x = 64; x < size_t(stride); ++x) ASSERT_EQ(source_after[size_t(stride) * y + x], 0x77);
  }
}

TEST_P(quality_3, black_lines_keep_the_callers_bytes) {
  const bytes in = noise(64 * 8, 26);
  for (int f = I420; f <= RGB32; ++f)
    for (int d = -1; d <= 1; ++d)
      for (int v = 0; v < 2; ++v) {
        if (f == RGB32 && d < 0) continue;
        mirrors(false, v);
        ppl_set_decimation(c, d, 0, 0);
        const bytes plain = run(f, in, 64, 8);
        ppl_new_frame_size(c, 64, 8, 64);
        ASSERT_TRUE(ppl_set_decimation(c, d, 2, 4));
        const size_t w = size_t(c->out_width), h = size_t(c->out_height) - 6;
        fenced source(in), destination(frame_bytes(f, w * (h + 6)));
        call(f, c, source.data(), destination.data(), 64, 8);
        // The picture begins at row 0, or ends at the last row where it runs upwards.
        const bool upwards = (f >= RGB24) == (v == 0);
        const auto check = [&](size_t at, size_t plain_at, size_t row, size_t rows, size_t more) {
          const size_t first = upwards ? more : 0;
          EXPECT_EQ(destination.part(at + first * row, rows * row), rows_of(plain, plain_at, row * rows, 0))
              << kFormatNames[f] << " at " << d << " vertical " << v;
          EXPECT_EQ(destination.part(at + (upwards ? 0 : rows * row), more * row), bytes(more * row, 0xa5));
        };
        if (f == I420) {
          const size_t n = w * (h + 6), q = n / 4;
          check(0, 0, w, h, 6);
          check(n, w * h, w / 2, h / 2, 3);
          check(n + q, w * h * 5 / 4, w / 2, h / 2, 3);
        } else {
          check(0, 0, frame_bytes(f, w), h, 6);
        }
      }
}

TEST_P(quality_3, frames_lowered_by_negative_black_lines_are_not_left) {
  for (uint32_t quality : {3u, 13u}) {
    ppl_set_quality(c, quality);
    for (int f = I420; f <= RGB32; ++f)
      for (int d = -1; d <= 1; ++d)
        for (int m = 0; m < 4; ++m)
          for (int lines : {-1, -2, -5, -7, -40}) {
            mirrors(m & 1, m >> 1);
            ppl_new_frame_size(c, 64, 16, 64);
            ppl_set_decimation(c, 0, 0, 0);
            ASSERT_TRUE(ppl_set_decimation(c, d, lines, 0));
            const int rows = (d < 0 ? 32 : 16 >> d) + lines, columns = d < 0 ? 128 : 64 >> d;
            fenced source(noise(64 * 16, 2)),
                destination(rows > 0 ? frame_bytes(f, size_t(rows * columns)) : 0);
            EXPECT_EQ(call(f, c, source.data(), destination.data(), 64, 16), 1);
          }
  }
}

TEST_P(quality_3, a_lowered_picture_loses_rows_and_keeps_the_others) {
  const bytes in = noise(64 * 16, 27);
  for (int f : {YUYV, RGB24})
    for (int d = -1; d <= 1; ++d)
      for (int v = 0; v < 2; ++v) {
        mirrors(false, v);
        ppl_set_decimation(c, d, 0, 0);
        const bytes plain = run(f, in, 64, 16);
        ppl_new_frame_size(c, 64, 16, 64);
        ASSERT_TRUE(ppl_set_decimation(c, d, -3, 0));
        const size_t row = frame_bytes(f, size_t(c->out_width)), rows = size_t(c->out_height);
        fenced source(in), destination(row * rows);
        call(f, c, source.data(), destination.data(), 64, 16);
        const bool upwards = (f == RGB24) == (v == 0);
        EXPECT_EQ(destination.content(), rows_of(plain, upwards ? 3 * row : 0, row * rows, 0))
            << kFormatNames[f] << " at " << d << " vertical " << v;
      }
}

// Halved upwards into half as many rows as it has. Of luma, rows of 64, those of the first two row pairs are left. U
// and V, rows of 32, have one row each where they want two: U's second lies on the luma, V's second on U's first. Each
// comes from the first row pair of its two.
TEST_P(quality_3, halved_planes_that_overlap_take_chroma_from_the_first_row_pair_of_two) {
  const bytes in = noise(128 * 8, 28);
  mirrors(false, true);
  ppl_set_decimation(c, 1, 0, 0);
  const bytes plain =
      run(I420, in, 128, 8);  // luma rows at 0, U rows at 256, V rows at 320, the first one last
  const auto chroma = [&](size_t plane, size_t row) { return rows_of(plain, 256 + 64 * plane, 32, 1 - row); };
  ppl_new_frame_size(c, 128, 8, 128);
  ASSERT_TRUE(ppl_set_decimation(c, 1, -2, 0));
  fenced source(in), destination(64 * 2 * 3 / 2);
  call(I420, c, source.data(), destination.data(), 128, 8);
  EXPECT_EQ(destination.part(0, 64), rows_of(plain, 0, 64, 2));
  EXPECT_EQ(destination.part(64, 32), rows_of(plain, 0, 32, 6));
  EXPECT_EQ(destination.part(96, 32), chroma(0, 1));
  EXPECT_EQ(destination.part(128, 32), chroma(1, 1));
  EXPECT_EQ(destination.part(160, 32), chroma(1, 0));
  EXPECT_NE(chroma(1, 0), chroma(1, 1));
}

}  // namespace
