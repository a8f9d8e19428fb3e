// Sentences of ppl.h that a caller might not expect, each tried on the library.
#include <gtest/gtest.h>
#include <ppl.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "support/fenced.h"

extern "C" unsigned header_version();

namespace {

using bytes = std::vector<uint8_t>;

// Bytes at a multiple of 64, or so many after one; zero if not said.
struct buffer : support::fenced {
  explicit buffer(size_t n, uint8_t value = 0, size_t offset = 0) : fenced(n, value, offset) {}
};

class header : public testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(c = ppl_init(), nullptr); }
  void TearDown() override {
    ppl_reset_all_controls(c);
    ppl_free(c);
  }
  void linear_tone() {
    uint8_t table[256];
    for (int i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(i);
    ppl_copy_rgb_gamma_table(c, table);
    ppl_copy_yuv_gamma_table(c, table);
  }
  // One I420 frame of noise, or of `value` where that is not negative.
  bytes picture(uint32_t quality, uint32_t w = 64, uint32_t h = 32, int value = -1) {
    buffer source(w * h), out(w * h * 3 / 2);
    uint32_t x = 1;
    for (size_t i = 0; i < source.size(); ++i) {
      x = x * 1664525 + 1013904223;
      source[i] = static_cast<uint8_t>(value < 0 ? x >> 24 : static_cast<uint32_t>(value));
    }
    ppl_set_quality(c, quality);
    EXPECT_EQ(BaylorToI420MMX(c, source.data(), out.data(), w, h), 1);
    return out.content();
  }
  ppl_context* c = nullptr;
};

TEST_F(header, version_is_that_of_the_project) {
  const std::string v = std::to_string(PPL_VERSION_MAJOR) + "." + std::to_string(PPL_VERSION_MINOR) + "." +
                        std::to_string(PPL_VERSION_PATCH);
  EXPECT_EQ(v, WANTED_VERSION);
  EXPECT_EQ(header_version(), PPL_VERSION_MAJOR * 10000u + PPL_VERSION_MINOR * 100u + PPL_VERSION_PATCH);
}

TEST_F(header, intp_1_4_stride_keeps_decimation_and_black_lines) {
  ppl_new_frame_size(c, 32, 64, 128);
  ppl_set_decimation(c, 1, 4, 6);
  buffer source(128 * 64), out(32 * 64 * 2);
  EXPECT_EQ(BaylorToI420MMX_intp_1_4_stride(c, source.data(), out.data(), 32, 64), 1);
  EXPECT_EQ(ppl_decimation(c), 1);
  EXPECT_EQ(ppl_decimation_top_black_lines(c), 4);
  EXPECT_EQ(ppl_decimation_bottom_black_lines(c), 6);
}

TEST_F(header, the_12_bit_process_form_has_no_last_resort) {
  ppl_new_frame_sizes(c, 64, 32, 64, 32, 0);
  buffer in(64 * 32 * 2, 9), out(64 * 32 * 2, 7, 4);
  EXPECT_EQ(ppl_process_uyvyyyyytoi420(c, in.data(), out.data(), 64, 32, 64, 32), 1);
  EXPECT_TRUE(out.all(7));
  EXPECT_EQ(UYVYYYYYToI420MMX(c, in.data(), out.data(), 64, 32, 64, 32), 0);
  EXPECT_EQ(out[0], 9);
}

TEST_F(header, an_empty_lens_table_is_filled_and_leaves_the_frame_alone) {
  uint16_t table[4] = {1, 2, 3, 4};
  linear_tone();
  ppl_enable_lens_correction(c);
  for (int32_t width : {0, -640}) {
    EXPECT_EQ(ppl_set_lens_correction(c, width, 480, 0, 240, table, 0, 16, 24, 16, 44), 1);
    const bytes out = picture(13, 64, 32, 200);
    EXPECT_EQ(std::count(out.begin(), out.begin() + 64 * 32, 200), 64 * 32);
  }
  EXPECT_EQ(table[0], 1);
}

TEST_F(header, a_frame_wider_than_the_lens_table_reads_on_in_its_next_row) {
  std::vector<uint16_t> table(33 * 32);
  const auto size = static_cast<int32_t>(table.size() * 2);
  ASSERT_EQ(ppl_set_lens_correction(c, 32, 32, 0, 0, table.data(), size, 0, 24, 0, 44), 1);
  std::fill_n(table.begin() + 32, 32, uint16_t{4096});
  linear_tone();
  ppl_enable_lens_correction(c);
  const bytes out = picture(13, 64, 32, 200);
  EXPECT_EQ(out[31], 200);
  EXPECT_EQ(out[32], 100);
  EXPECT_EQ(out[63], 100);
  EXPECT_EQ(out[64], 100);
  EXPECT_EQ(out[64 + 32], 200);
}

TEST_F(header, only_qualities_10_and_11_see_the_bytes_behind_a_row) {
  constexpr uint32_t w = 64, h = 32, stride = 96;
  ppl_set_CFA_T0_threshold(c, 255);
  for (uint32_t quality : {0, 1, 2, 3, 10, 11, 12, 13, 15}) {
    bytes seen[2];
    for (int fill : {0, 1}) {
      buffer source(stride * h, fill ? 255 : 0), out(w * h * 3 / 2);
      for (uint32_t r = 0; r < h; ++r)
        for (uint32_t x = 0; x < w; ++x) source[r * stride + x] = static_cast<uint8_t>(r * 37 + x * 101);
      ppl_set_quality(c, quality);
      ppl_process_blrtoi420(c, source.data(), out.data(), w, h, stride);
      seen[fill] = out.content();
    }
    EXPECT_EQ(seen[0] != seen[1], quality == 10 || quality == 11) << quality;
  }
}

TEST_F(header, flat_colours_stay_behind_until_a_frame_without_any) {
  const auto clean = [this] {
    buffer bars(32 * 4), out(32 * 4 * 3 / 2);
    for (size_t i = 0; i < bars.size(); ++i) bars[i] = i % 4 < 2 ? 0 : 255;
    ppl_reset_all_controls(c);
    ppl_set_quality(c, 11);
    EXPECT_EQ(BaylorToI420MMX(c, bars.data(), out.data(), 32, 4), 1);
  };
  clean();
  const bytes fresh[2] = {picture(0), picture(1)};
  for (uint32_t quality : {10u, 11u}) {
    picture(quality, 64, 32, 90);
    EXPECT_NE(picture(0), fresh[0]) << quality;
    EXPECT_NE(picture(1), fresh[1]) << quality;
    ppl_free(c);
    c = ppl_init();
    EXPECT_NE(picture(1), fresh[1]) << quality << " after ppl_free and ppl_init";
    clean();
    EXPECT_EQ(picture(0), fresh[0]) << quality;
    EXPECT_EQ(picture(1), fresh[1]) << quality;
  }
}

TEST_F(header, a_misaligned_scratch_makes_the_call_do_nothing) {
  buffer source(64 * 32, 90), scratch(64 * 32 * 2, 9, 8), out(128 * 64 * 2, 7);
  const uint32_t n = ppl_n_frame(c);
  EXPECT_EQ(BaylorToI420MMX_scaling_stride(c, source.data(), 64, 32, 64, out.data(), 128, 64, scratch.data()),
            1);
  EXPECT_TRUE(out.all(7));
  EXPECT_TRUE(scratch.all(9));
  EXPECT_TRUE(source.all(90));
  EXPECT_EQ(ppl_n_frame(c), n);
}

TEST_F(header, the_scaler_takes_what_scratch_holds) {
  buffer source(64 * 32, 90), scratch(64 * 32 * 3 / 2, 9), out(128 * 64 * 3 / 2, 7);
  ppl_set_quality(c, 5);
  EXPECT_EQ(BaylorToI420MMX_scaling_stride(c, source.data(), 64, 32, 64, out.data(), 128, 64, scratch.data()),
            1);
  EXPECT_TRUE(out.all(9));
}

TEST_F(header, a_raw_quality_with_a_stride_below_the_width_answers_true) {
  buffer source(64 * 32, 90), out(64 * 32 * 3 / 2, 7);
  ppl_set_quality(c, 4);
  EXPECT_EQ(ppl_process_blrtoi420(c, source.data(), out.data(), 64, 32, 48), 1);
  EXPECT_TRUE(out.all(7));
  EXPECT_EQ(ppl_process_blrtoi420(c, source.data(), out.data(), 64, 32, 64), 0);
  EXPECT_EQ(out[0], 90);
}

TEST_F(header, a_raw_rgb32_frame_of_half_size_takes_rows_2_widths_apart) {
  constexpr uint32_t w = 64, h = 32, stride = 80;
  buffer source(stride * h), out(w * h);
  for (size_t i = 0; i < source.size(); ++i) source[i] = static_cast<uint8_t>(i % 251);
  ppl_new_frame_size(c, w, h, stride);
  ppl_set_decimation(c, 1, 0, 0);
  ppl_set_quality(c, 4);
  ppl_process_blrtorgb32(c, source.data(), out.data(), w, h, stride);
  for (uint32_t r = 0; r < h / 2; ++r)
    for (uint32_t x = 0; x < w / 2; ++x)
      ASSERT_EQ(out[((h / 2 - 1 - r) * (w / 2) + x) * 4], (2 * w * r + 2 * x) % 251) << r << " " << x;
}

TEST_F(header, a_gamma_reset_takes_a_replaced_curve) {
  bytes built_in(65 * 256), mine(65 * 256, 77);
  ppl_get_gamma_tables65x256(c, built_in.data());
  ppl_copy_gamma_tables65x256(c, mine.data());
  ppl_reset_gamma(c);
  EXPECT_EQ(ppl_rgb_gamma_table(c)[200], 77);
  EXPECT_EQ(ppl_nf20_12_gamma(c, nullptr, nullptr, nullptr), 1843);
  ppl_copy_gamma_tables65x256(c, built_in.data());
  EXPECT_EQ(ppl_rgb_gamma_table(c)[200], 77);
  ppl_reset_gamma(c);
  EXPECT_NE(ppl_rgb_gamma_table(c)[200], 77);
}

TEST_F(header, the_toe_of_the_default_curve_is_straight) {
  // 255 * 4.374 * x / 255, to within a step, up to 0.018 * 255 = 4.6.
  for (int x = 0; x <= 4; ++x) EXPECT_NEAR(ppl_rgb_gamma_table(c)[x], 4.374 * x, 1.0) << x;
}

TEST_F(header, a_doubled_picture_under_the_horizontal_mirror_darkens_column_w_minus_2) {
  ppl_set_h_mirror(c, 1);
  for (uint32_t quality : {0, 1, 2, 15}) {
    buffer source(64 * 32, 100), out(128 * 64 * 3 / 2);
    ppl_set_quality(c, quality);
    EXPECT_EQ(BaylorToI420MMX_intp_1_2(c, source.data(), out.data(), 64, 32), 1);
    const int bright = out[0];
    for (int r = 0; r < 64; ++r)
      for (int x = 0; x < 128; ++x)
        ASSERT_EQ(int{out[static_cast<size_t>(r * 128 + x)]}, x == 126 ? (bright + 1) / 2 : bright)
            << r << " " << x;
  }
}

TEST_F(header, doubled_uyvy_fills_the_right_half_of_32_columns_from_columns_8_to_15) {
  constexpr int w = 128;
  buffer source(64 * 32), out(128 * 64 * 2);
  for (size_t i = 0; i < source.size(); ++i) source[i] = static_cast<uint8_t>(i * 7919 >> 5);
  EXPECT_EQ(BaylorToUYVYMMX_intp_1_2(c, source.data(), out.data(), 64, 32), 1);
  const auto at = [&](int r, int b) { return int{out[static_cast<size_t>(r * 2 * w + b)]}; };
  const auto mean = [](int a, int b) { return (a + b + 1) / 2; };
  for (int r = 1; r < 63; r += 2)
    for (int b = 0; b < 2 * w; ++b) {
      const int place = b % 64;
      const int straight = mean(at(r - 1, b), at(r + 1, b));
      const int other = b - place + 16 + place % 16;
      const int across = mean(mean(at(r - 1, other), at(r + 1, other)), at(r - 1, b));
      ASSERT_EQ(at(r, b), place < 32 ? straight : across) << r << " " << b;
    }
}

TEST_F(header, statistics_wrap_where_the_header_says_and_not_below) {
  struct {
    uint32_t w, h;
    int value;
    bool wraps;
  } cases[] = {{96, 2048, 200, true},
               {96, 2048, 84, false},
               {240, 1172, 255, false},
               {256, 2048, 255, false},
               {80, 812, 255, false}};
  linear_tone();
  for (const auto& k : cases) {
    picture(2, k.w, k.h, k.value);
    const uint32_t green = ppl_rgb_means_whole_frame(c)[1], red = ppl_rgb_means_whole_frame(c)[0];
    if (k.wraps) {
      EXPECT_EQ(green, 7609u);
    } else {
      EXPECT_EQ(green, red) << k.w << " x " << k.h;
    }
  }
}

TEST_F(header, the_first_group_of_a_frame_depends_on_the_frame_before) {
  linear_tone();
  picture(15, 256, 64, 10);
  picture(15, 256, 64, 120);
  const uint32_t first = ppl_qual_rgb_means_whole_frame(c)[1];
  picture(15, 256, 64, 120);
  EXPECT_EQ(ppl_qual_rgb_means_whole_frame(c)[1], 120u * 256);
  EXPECT_LT(first, 120u * 256);
}

TEST_F(header, half_of_the_samples_of_the_frames_mean_are_toned) {
  uint8_t dark[256] = {};
  ppl_copy_rgb_gamma_table(c, dark);
  picture(3, 256, 64, 100);
  EXPECT_EQ(ppl_rgb_means_whole_frame(c)[1], 50u * 256);
  EXPECT_EQ(ppl_qual_rgb_means_whole_frame(c)[1], 100u * 256);
}

}  // namespace
