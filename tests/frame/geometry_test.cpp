// Frame size, decimation, grid and border factors.
#include "frame/geometry.h"
#include "controls/fixture.h"

namespace {

using geometry = ctl::controls;

TEST_F(geometry, the_widest_frame_is_2036) {
  EXPECT_EQ(ppl_new_frame_size(c, 2036, 16, 2036), 1);
  EXPECT_EQ(c->frame_width, 2036);
  EXPECT_EQ(ppl_new_frame_size(c, 2037, 16, 2037), 0);
}

TEST_F(geometry, height_and_stride_end_at_2048_even_for_a_narrow_frame) {
  EXPECT_EQ(ppl_new_frame_size(c, 16, 2048, 2048), 1);
  EXPECT_EQ(ppl_new_frame_size(c, 16, 2049, 16), 0);
  EXPECT_EQ(ppl_new_frame_size(c, 16, 16, 2049), 0);
  EXPECT_EQ(ppl_new_frame_size(c, 0x80000010u, 16, 16), 0);
  EXPECT_EQ(ppl_new_frame_size(c, 16, 0xffffffffu, 16), 0);
}

TEST_F(geometry, a_refused_size_leaves_everything) {
  const ppl_context before = *c;
  EXPECT_EQ(ppl_new_frame_size(c, 2037, 480, 2037), 0);
  EXPECT_EQ(std::memcmp(&before, c, sizeof before), 0);
}

TEST_F(geometry, sizes_follow_the_decimation) {
  struct {
    int d, width, height;
  } const cases[] = {{-1, 1280, 960}, {0, 640, 480}, {1, 320, 240}, {2, 160, 120}};
  for (const auto& k : cases) {
    ASSERT_EQ(ppl_set_decimation(c, k.d, 0, 0), 1);
    ASSERT_EQ(ppl_new_frame_size(c, 640, 480, 700), 1);
    EXPECT_EQ(c->out_width, k.width);
    EXPECT_EQ(c->out_half_width, k.width / 2);
    EXPECT_EQ(c->out_height, k.height);
    EXPECT_EQ(c->out_pixels, k.width * k.height);
    EXPECT_EQ(c->out_quarter_pixels, k.width * k.height / 4);
  }
  EXPECT_EQ(c->frame_stride, 700);
  EXPECT_EQ(c->frame_pixels, 307200);
  EXPECT_EQ(c->frame_pixels_half, 153600);
  EXPECT_EQ(c->frame_pixels_quarter, 76800);
  EXPECT_EQ(c->frame_pixels_eighth, 38400);
}

// The grid covers whole cells from the top left corner: 1280 x 1024 has 80 tiles and 512 row pairs.
TEST_F(geometry, grid_and_divisors) {
  ASSERT_EQ(ppl_new_frame_size(c, 1280, 1024, 1280), 1);
  EXPECT_EQ(c->cell_tiles, 10);
  EXPECT_EQ(c->cell_row_pairs, 85);
  EXPECT_EQ(c->grid_first_tile, 0);
  EXPECT_EQ(c->grid_end_tile, 80);
  EXPECT_EQ(c->grid_tiles, 80);
  EXPECT_EQ(c->grid_first_row_pair, 0);
  EXPECT_EQ(c->grid_end_row_pair, 510);
  EXPECT_EQ(c->grid_row_pairs, 510);
  EXPECT_EQ(c->tiles_per_row, 80);
  EXPECT_EQ(c->row_pairs, 512);
  // 27200 pixels a cell: 1048576 / 6800 and / 13600.
  EXPECT_EQ(c->red_divisor, 154u);
  EXPECT_EQ(c->blue_divisor, 154u);
  EXPECT_EQ(c->green_divisor, 77u);
}

TEST_F(geometry, a_frame_too_small_for_the_grid_has_empty_cells_and_the_divisors_of_32_pixels) {
  for (const auto& size : {std::pair{112u, 480u}, std::pair{640u, 10u}}) {
    ASSERT_EQ(ppl_new_frame_size(c, size.first, size.second, size.first), 1);
    EXPECT_EQ(c->cell_tiles * c->cell_row_pairs, 0);
    EXPECT_EQ(c->grid_tiles * c->grid_row_pairs, 0);
    EXPECT_EQ(c->red_divisor, 131072u);
    EXPECT_EQ(c->green_divisor, 65536u);
    EXPECT_EQ(c->blue_divisor, 131072u);
  }
}

std::vector<int> scales(const ppl_context* c) {
  return {c->stats_scale_table, c->stats_scale_table + ppl::kStatsScales};
}

const std::vector<int> kSmall = {1024, 1024, 1024, 1024, 1024, 1024, 1024, 1024, 0,
                                 0,    1024, 1024, 1024, 1024, 1024, 1024, 1024, 1024};

TEST_F(geometry, small_frames_have_no_border_factors) {
  for (const auto& size :
       {std::pair{80u, 480u}, std::pair{640u, 16u}, std::pair{80u, 16u}, std::pair{0u, 0u}}) {
    ASSERT_EQ(ppl_new_frame_size(c, size.first, size.second, size.first), 1);
    EXPECT_EQ(scales(c), kSmall);
  }
}

// 640 x 480: 78643200 over a quarter of the area inside the border.
TEST_F(geometry, border_factors_of_640_by_480) {
  ASSERT_EQ(ppl_new_frame_size(c, 640, 480, 640), 1);
  const int b64_12 = 78643200 / (468 * 576 / 4), b48_12 = 78643200 / (468 * 592 / 4);
  const std::vector<int> expected = {b64_12,
                                     b64_12,
                                     b64_12,
                                     b48_12,
                                     b48_12,
                                     78643200 / (472 * 608 / 4),
                                     1024,
                                     1024,
                                     0,
                                     0,
                                     78643200 / (476 * 640 / 4),
                                     b64_12,
                                     b48_12,
                                     b48_12,
                                     b64_12,
                                     78643200 / (464 * 560 / 4),
                                     78643200 / (464 * 576 / 4),
                                     b48_12};
  EXPECT_EQ(scales(c), expected);
  EXPECT_EQ(b64_12, 1166);
}

// 81 x 17: 17 << 8 times 81 is 352512. Entry 15 reaches a single sample: its quarter, 0, counts as 1.
TEST_F(geometry, the_smallest_bordered_frames) {
  ASSERT_EQ(ppl_new_frame_size(c, 81, 17, 81), 1);
  EXPECT_EQ(c->stats_scale_table[0], 352512 / (5 * 17 / 4));
  EXPECT_EQ(c->stats_scale_table[5], 352512 / (9 * 49 / 4));
  EXPECT_EQ(c->stats_scale_table[15], 352512);
  EXPECT_EQ(c->stats_scale_table[16], 352512 / (1 * 17 / 4));
  ASSERT_EQ(ppl_new_frame_size(c, 83, 17, 83), 1);
  EXPECT_EQ(c->stats_scale_table[15], 83 * 17 * 256);
  ASSERT_EQ(ppl_new_frame_size(c, 84, 17, 84), 1);
  EXPECT_EQ(c->stats_scale_table[15], 84 * 17 * 256);
  ASSERT_EQ(ppl_new_frame_size(c, 88, 17, 88), 1);
  EXPECT_EQ(c->stats_scale_table[15], 88 * 17 * 256 / 2);
  ASSERT_EQ(ppl_new_frame_size(c, 81, 16, 81), 1);
  EXPECT_EQ(scales(c), kSmall);
}

TEST_F(geometry, decimations_from_minus_1_to_2) {
  for (int d : {-1, 0, 1, 2}) {
    EXPECT_EQ(ppl_set_decimation(c, d, 0, 0), 1);
    EXPECT_EQ(ppl_decimation(c), d);
  }
  for (int d : {-2, 3, INT32_MIN, INT32_MAX}) {
    const ppl_context before = *c;
    EXPECT_EQ(ppl_set_decimation(c, d, 1, 1), 0);
    EXPECT_EQ(std::memcmp(&before, c, sizeof before), 0);
  }
}

TEST_F(geometry, black_lines_add_to_the_height_and_wrap) {
  EXPECT_EQ(ppl_set_decimation(c, 0, 48, 50), 1);
  EXPECT_EQ(ppl_decimation_top_black_lines(c), 48);
  EXPECT_EQ(ppl_decimation_bottom_black_lines(c), 50);
  EXPECT_EQ(c->out_height, 578);
  EXPECT_EQ(c->out_pixels, 640 * 578);
  EXPECT_EQ(ppl_set_decimation(c, 0, INT32_MAX, INT32_MAX), 1);
  EXPECT_EQ(c->out_height, 478);
  EXPECT_EQ(ppl_set_decimation(c, 0, -100, -500), 1);
  EXPECT_EQ(c->out_height, -120);
  EXPECT_EQ(c->out_pixels, -76800);
}

TEST_F(geometry, the_same_decimation_again_rebuilds_nothing) {
  ASSERT_EQ(ppl_set_decimation(c, 0, 10, 10), 1);
  EXPECT_EQ(c->out_height, 500);
  ASSERT_EQ(ppl_new_frame_size(c, 640, 480, 640), 1);
  EXPECT_EQ(c->out_height, 480);
  ASSERT_EQ(ppl_set_decimation(c, 0, 10, 10), 1);
  EXPECT_EQ(c->out_height, 480);
  ASSERT_EQ(ppl_set_decimation(c, 0, 10, 11), 1);
  EXPECT_EQ(c->out_height, 501);
}

TEST_F(geometry, reset_decimation_brings_the_frame_back) {
  ASSERT_EQ(ppl_set_decimation(c, 2, 0, 0), 1);
  EXPECT_EQ(c->out_width, 160);
  ppl_reset_decimation(c);
  EXPECT_EQ(c->out_width, 640);
  EXPECT_EQ(c->out_half_width, 320);
  EXPECT_EQ(c->out_height, 480);
  EXPECT_EQ(c->out_pixels, 307200);
  EXPECT_EQ(c->out_quarter_pixels, 76800);
  EXPECT_EQ(c->plan.i420.luma_row_step, 640);
  ASSERT_EQ(ppl_set_decimation(c, 0, 0, 4), 1);
  ppl_reset_decimation(c);
  EXPECT_EQ(c->out_height, 480);
  EXPECT_EQ(ppl_decimation_bottom_black_lines(c), 0);
}

struct conversion {
  uint32_t in_width, in_height, out_width, out_height;
  int d, top, bottom, made_width, made_height;
};

TEST_F(geometry, every_row_of_the_size_table) {
  const conversion cases[] = {
      {320, 240, 160, 120, 1, 0, 0, 160, 120},    {320, 240, 320, 240, 0, 0, 0, 320, 240},
      {480, 480, 480, 480, 0, 0, 0, 480, 480},    {480, 480, 480, 576, 0, 48, 48, 480, 576},
      {480, 576, 480, 576, 0, 0, 0, 480, 576},    {640, 480, 160, 120, 2, 0, 0, 160, 120},
      {640, 480, 320, 240, 1, 0, 0, 320, 240},    {640, 480, 352, 240, 0, 0, 0, 640, 480},
      {640, 480, 352, 288, 0, 0, 0, 640, 480},    {640, 480, 640, 480, 0, 0, 0, 640, 480},
      {640, 480, 1280, 960, -1, 0, 0, 1280, 960}, {704, 480, 176, 120, 2, 0, 0, 176, 120},
      {704, 480, 176, 145, 2, 12, 13, 176, 145},  {704, 576, 176, 144, 2, 0, 0, 176, 144},
      {704, 480, 352, 288, 1, 24, 24, 352, 288},  {704, 576, 352, 289, 1, 0, 1, 352, 289},
      {704, 480, 704, 576, 0, 48, 48, 704, 576},  {704, 576, 704, 576, 0, 0, 0, 704, 576},
      {720, 480, 720, 480, 0, 0, 0, 720, 480},    {720, 480, 720, 2000, 0, 760, 760, 720, 2000},
      {720, 576, 720, 577, 0, 0, 1, 720, 577},    {1280, 1024, 1280, 1024, 0, 0, 0, 1280, 1024},
  };
  for (const conversion& k : cases) {
    SCOPED_TRACE(testing::Message() << k.in_width << "x" << k.in_height << " to " << k.out_width << "x"
                                    << k.out_height);
    ppl_reset_decimation(c);
    ASSERT_EQ(ppl_new_frame_sizes(c, k.in_width, k.in_height, k.out_width, k.out_height, 1), 1);
    EXPECT_EQ(ppl_decimation(c), k.d);
    EXPECT_EQ(ppl_decimation_top_black_lines(c), k.top);
    EXPECT_EQ(ppl_decimation_bottom_black_lines(c), k.bottom);
    EXPECT_EQ(c->out_width, k.made_width);
    EXPECT_EQ(c->out_height, k.made_height);
    EXPECT_EQ(c->frame_stride, static_cast<int>(k.in_width));
  }
}

TEST_F(geometry, any_other_combination_is_refused_and_changes_nothing) {
  const uint32_t cases[][4] = {
      {320, 240, 640, 480}, {320, 240, 160, 240},   {480, 480, 480, 577}, {480, 576, 480, 480},
      {640, 480, 352, 264}, {640, 480, 720, 480},   {704, 480, 176, 119}, {704, 576, 352, 287},
      {704, 480, 704, 479}, {704, 512, 704, 512},   {720, 576, 720, 575}, {720, 480, 360, 240},
      {800, 600, 800, 600}, {1280, 1024, 640, 512}, {0, 0, 0, 0},
  };
  for (const auto& k : cases) {
    const ppl_context before = *c;
    EXPECT_EQ(ppl_new_frame_sizes(c, k[0], k[1], k[2], k[3], 1), 0)
        << k[0] << " " << k[1] << " " << k[2] << " " << k[3];
    EXPECT_EQ(std::memcmp(&before, c, sizeof before), 0);
  }
}

TEST_F(geometry, without_validation_the_output_is_the_input) {
  ASSERT_EQ(ppl_set_decimation(c, 1, 4, 4), 1);
  EXPECT_EQ(ppl_new_frame_sizes(c, 800, 600, 1, 2, 0), 1);
  EXPECT_EQ(ppl_decimation(c), 0);
  EXPECT_EQ(c->out_width, 800);
  EXPECT_EQ(c->out_height, 600);
  EXPECT_EQ(ppl_new_frame_sizes(c, 2037, 600, 2037, 600, 0), 0);
}

TEST_F(geometry, black_lines_are_lost_when_the_same_sizes_are_set_again) {
  ASSERT_EQ(ppl_new_frame_sizes(c, 704, 480, 704, 576, 1), 1);
  EXPECT_EQ(c->out_height, 576);
  ASSERT_EQ(ppl_new_frame_sizes(c, 704, 480, 704, 576, 1), 1);
  EXPECT_EQ(c->out_height, 480);
  EXPECT_EQ(ppl_decimation_top_black_lines(c), 48);
}

}  // namespace
