// Steps and starts of the plain reference against figures worked by hand.
#include "reference/plan.h"

#include <gtest/gtest.h>

namespace {

using ref::plan_input;

plan_input picture(int width, int height, int decimation, bool h, bool v) {
  return {width, decimation, h, v, width * height, width * height / 4};
}

TEST(reference_plan, a_plain_picture_of_640_columns) {
  const plan_input in = picture(640, 480, 0, false, false);
  EXPECT_EQ(ref::luma_walk(in).start, 0);
  EXPECT_EQ(ref::luma_walk(in).tile_step, 16);
  EXPECT_EQ(ref::luma_walk(in).row_step, 640);  // the second row of the pair
  EXPECT_EQ(ref::chroma_walk(in).tile_step, 16);
  EXPECT_EQ(ref::chroma_walk(in).row_step, 0);
  EXPECT_EQ(ref::packed_walk(in).tile_step, 32);
  EXPECT_EQ(ref::packed_walk(in).row_step, 1280);
  // Upward: back over 39 tiles of 48 bytes and up two rows of 1920.
  EXPECT_EQ(ref::rgb24_walk(in).start, 3 * 640 * 479);
  EXPECT_EQ(ref::rgb24_walk(in).row_step, -5712);
  EXPECT_EQ(ref::rgb32_walk(in).row_step, -7616);
}

TEST(reference_plan, doubled_and_mirrored_both_ways) {
  const plan_input in = picture(640, 480, -1, true, true);
  EXPECT_EQ(ref::luma_walk(in).start, 640 * 480 - 16);
  EXPECT_EQ(ref::luma_walk(in).tile_step, -32);
  EXPECT_EQ(ref::luma_walk(in).row_step, -4 * 640 + 640);
  EXPECT_EQ(ref::chroma_walk(in).start, 640 * 120 - 16);
  EXPECT_EQ(ref::chroma_walk(in).row_step, -2 * 320 + 320);
  EXPECT_EQ(ref::rgb24_walk(in).start, 3 * (640 - 32));
  EXPECT_EQ(ref::rgb24_walk(in).row_step, 9504);
}

// Under one mirror alone doubled row pairs of RGB24 lie two rows apart: back over 19 tiles of 96 bytes, 1824, and on by
// two rows of 1920.
TEST(reference_plan, doubled_rgb24_under_one_mirror) {
  EXPECT_EQ(ref::rgb24_walk(picture(640, 480, -1, true, false)).row_step, 1824 - 2 * 1920);
  EXPECT_EQ(ref::rgb24_walk(picture(640, 480, -1, false, true)).row_step, -1824 + 2 * 1920);
}

TEST(reference_plan, halved_rgb_steps_by_eight_pixels) {
  EXPECT_EQ(ref::rgb24_walk(picture(320, 240, 1, false, false)).tile_step, 24);
  EXPECT_EQ(ref::rgb24_walk(picture(320, 240, 1, false, false)).row_step, -1920 + 24);
  EXPECT_EQ(ref::rgb24_walk(picture(320, 240, 1, true, false)).row_step, -24);
  EXPECT_EQ(ref::rgb24_walk(picture(320, 240, 1, false, true)).row_step, 24);
  EXPECT_EQ(ref::rgb32_walk(picture(320, 240, 1, true, true)).row_step, 8 * 320 - 32);
  EXPECT_EQ(ref::rgb32_walk(picture(320, 240, 1, true, false)).start, 4 * (320 * 240 - 8));
}

TEST(reference_plan, groups_of_32_pixels_in_two_rows) {
  const plan_input plain = picture(640, 480, 0, false, false), turned = picture(640, 480, 0, true, true);
  EXPECT_EQ(ref::luma_groups(plain).start, 0);
  EXPECT_EQ(ref::luma_groups(plain).half[1], 16);
  EXPECT_EQ(ref::luma_groups(plain).row[1], 640);
  EXPECT_EQ(ref::luma_groups(plain).row_step, 640);
  EXPECT_EQ(ref::luma_groups(turned).start, 640 * 478 + 640 - 32);
  EXPECT_EQ(ref::luma_groups(turned).half[0], 16);
  EXPECT_EQ(ref::luma_groups(turned).half[1], 0);
  EXPECT_EQ(ref::luma_groups(turned).row[0], 640);
  EXPECT_EQ(ref::luma_groups(turned).group_step, -32);
  EXPECT_EQ(ref::chroma_groups(turned).start, 640 * 120 - 16);
  EXPECT_EQ(ref::rgb24_groups(plain).start, 3 * (640 * 480 - 2 * 640));
  EXPECT_EQ(ref::rgb24_groups(plain).row[0], 1920);
  EXPECT_EQ(ref::rgb24_groups(plain).row_step, -9 * 640);
  EXPECT_EQ(ref::rgb24_groups(turned).row_step, 9 * 640);
  EXPECT_EQ(ref::rgb32_groups(turned).start, 4 * (640 - 32));
  EXPECT_EQ(ref::rgb32_groups(turned).half[0], 64);
}

// At double size the group's rows are two apart, and upward it starts a row further from the end.
TEST(reference_plan, groups_of_a_doubled_picture) {
  const plan_input down = picture(640, 480, -1, false, false), up = picture(640, 480, -1, true, true);
  EXPECT_EQ(ref::luma_groups(down).half[1], 32);
  EXPECT_EQ(ref::luma_groups(down).row[1], 1280);
  EXPECT_EQ(ref::luma_groups(down).row_step, 3 * 640);
  EXPECT_EQ(ref::luma_groups(up).start, 640 * 480 - 64 - 3 * 640);
  EXPECT_EQ(ref::chroma_groups(up).start, 640 * 120 - 32 - 320);
  EXPECT_EQ(ref::rgb24_groups(down).start, 3 * (640 * 480 - 4 * 640));
}

}  // namespace
