// The lens table: sizes, refusals, entries.
#include "controls/fixture.h"

namespace {

using lens = ctl::controls;

constexpr uint16_t kGuard = 0xabcd;

TEST_F(lens, the_needed_size_of_640_by_480_about_its_centre_is_308480_bytes) {
  std::vector<uint16_t> table(154240 + 1, kGuard);
  EXPECT_EQ(ppl_set_lens_correction(c, 640, 480, 320, 240, table.data(), 308479, 16, 24, 16, 44), 0);
  EXPECT_EQ(ppl_lens_correction_table(c), nullptr);
  EXPECT_EQ(table[0], kGuard);
  EXPECT_EQ(ppl_set_lens_correction(c, 640, 480, 320, 240, table.data(), 308480, 16, 24, 16, 44), 1);
  EXPECT_EQ(ppl_lens_correction_table(c), table.data());
  EXPECT_EQ(c->lens_needed_size, 308480);
  EXPECT_NE(table[154239], kGuard);
  EXPECT_EQ(table[154240], kGuard);
}

TEST_F(lens, one_byte_too_few_drops_the_table_and_keeps_the_rest) {
  std::vector<uint16_t> table(32 * 17);
  EXPECT_EQ(ppl_set_lens_correction(c, 32, 24, 10, 8, table.data(), 32 * 17 * 2 - 1, 1, 2, 3, 4), 0);
  EXPECT_EQ(ppl_lens_correction_table(c), nullptr);
  EXPECT_EQ(c->lens_table_size, 0);
  EXPECT_EQ(ppl_lens_correction_width(c), 32);
  EXPECT_EQ(ppl_lens_correction_height(c), 24);
  EXPECT_EQ(ppl_lens_correction_origin_x(c), 10);
  EXPECT_EQ(ppl_lens_correction_origin_y(c), 8);
  EXPECT_EQ(ppl_lens_correction_f1(c), 1);
  EXPECT_EQ(ppl_lens_correction_f1_rshift_count(c), 2);
  EXPECT_EQ(ppl_lens_correction_f2(c), 3);
  EXPECT_EQ(ppl_lens_correction_f2_rshift_count(c), 4);
  EXPECT_EQ(c->lens_largest_x_offset, 21);
  EXPECT_EQ(c->lens_smallest_x_offset, -10);
  EXPECT_EQ(c->lens_largest_y_offset, 16);
  EXPECT_EQ(ppl_set_lens_correction(c, 32, 24, 10, 8, table.data(), 32 * 17 * 2, 1, 24, 3, 44), 1);
}

TEST_F(lens, no_table_is_refused_whatever_size_is_claimed) {
  EXPECT_EQ(ppl_set_lens_correction(c, 32, 24, 16, 12, nullptr, INT32_MAX, 16, 24, 16, 44), 0);
  EXPECT_EQ(ppl_set_lens_correction(c, 0, 0, 0, 0, nullptr, 0, 16, 24, 16, 44), 0);
  EXPECT_EQ(c->lens_table_size, 0);
}

// 2^30 rows of one factor wrap to a size below any other, a negative one too, of which there is no table.
TEST_F(lens, a_table_of_a_negative_size_is_left_alone) {
  std::vector<uint16_t> table(4, 77);
  EXPECT_EQ(ppl_set_lens_correction(c, 1, 0x3fffffff, 0, 0, table.data(), -1, 16, 24, 16, 44), 1);
  EXPECT_EQ(c->lens_needed_size, INT32_MIN);
  EXPECT_EQ(table, std::vector<uint16_t>(4, 77));
}

TEST_F(lens, without_coefficients_every_factor_is_1) {
  std::vector<uint16_t> table(64 * 17);
  ASSERT_EQ(ppl_set_lens_correction(c, 64, 32, 32, 16, table.data(), 64 * 17 * 2, 0, 24, 0, 44), 1);
  for (uint16_t x : table) ASSERT_EQ(x, 8192);
}

TEST_F(lens, the_factor_at_the_origin_is_1_whatever_the_coefficients) {
  std::vector<uint16_t> table(64 * 17);
  for (int f : {1, -1, 30000, INT32_MIN, INT32_MAX}) {
    ASSERT_EQ(ppl_set_lens_correction(c, 64, 32, 20, 16, table.data(), 64 * 17 * 2, f, 13, f, 13), 1);
    EXPECT_EQ(table[20], 8192);
  }
}

// x = 3, y = 4: r = 25. f1 = 1000 at 20 bits: 25000 >> 7 = 195. f2 = 700 at 24 bits: 437500 >> 11 = 213.
TEST_F(lens, entries_by_hand) {
  std::vector<uint16_t> table(16 * 9);
  ASSERT_EQ(ppl_set_lens_correction(c, 16, 16, 8, 8, table.data(), 16 * 9 * 2, 1000, 20, 700, 24), 1);
  EXPECT_EQ(table[4 * 16 + 8 + 3], 8192 + 195 - 213);
  EXPECT_EQ(table[4 * 16 + 8 - 3], 8192 + 195 - 213);
  EXPECT_EQ(table[3 * 16 + 8 - 4], 8192 + 195 - 213);
  // Shifts of negative terms round down: -25000 >> 7 = -196, -437500 >> 11 = -214.
  ASSERT_EQ(ppl_set_lens_correction(c, 16, 16, 8, 8, table.data(), 16 * 9 * 2, -1000, 20, -700, 24), 1);
  EXPECT_EQ(table[4 * 16 + 8 + 3], 8192 - 196 + 214);
}

// A count of 12 shifts by -1, that is by 63: only the sign is left.
TEST_F(lens, a_shift_count_below_13_counts_modulo_64) {
  std::vector<uint16_t> table(16 * 9);
  ASSERT_EQ(ppl_set_lens_correction(c, 16, 16, 8, 8, table.data(), 16 * 9 * 2, -5, 12, 7, 12), 1);
  EXPECT_EQ(table[0], 8192 - 1);
  EXPECT_EQ(table[8], 8192);
  ASSERT_EQ(ppl_set_lens_correction(c, 16, 16, 8, 8, table.data(), 16 * 9 * 2, 1, 13 + 64, 0, 44), 1);
  EXPECT_EQ(table[0], 8192 + 64);
}

TEST_F(lens, an_origin_outside_the_middle_needs_the_longer_side) {
  std::vector<uint16_t> table(16 * 21, kGuard);
  ASSERT_EQ(ppl_set_lens_correction(c, 16, 24, 0, 20, table.data(), 16 * 21 * 2, 16, 24, 16, 44), 1);
  EXPECT_EQ(c->lens_largest_y_offset, 20);
  ASSERT_EQ(ppl_set_lens_correction(c, 16, 24, 15, 4, table.data(), 16 * 21 * 2, 16, 24, 16, 44), 1);
  EXPECT_EQ(c->lens_largest_y_offset, 20);
  EXPECT_EQ(c->lens_smallest_x_offset, -15);
  EXPECT_EQ(c->lens_largest_x_offset, 0);
}

// 65536 columns and rows 0 to 32768 need 2 x 65536 x 32769 bytes, which wraps to 131072: the table has room for one
// row, and the fill stops there.
TEST_F(lens, a_needed_size_that_wraps_fills_no_further_than_the_table) {
  std::vector<uint16_t> table(65536 + 1, kGuard);
  EXPECT_EQ(ppl_set_lens_correction(c, 65536, 65536, 0, 32768, table.data(), 131072, 0, 24, 0, 44), 1);
  EXPECT_EQ(c->lens_needed_size, 131072);
  EXPECT_EQ(table[65535], 8192);
  EXPECT_EQ(table[65536], kGuard);
}

TEST_F(lens, sizes_without_columns_write_nothing) {
  std::vector<uint16_t> table(16, kGuard);
  EXPECT_EQ(ppl_set_lens_correction(c, 0, 16, 0, 8, table.data(), 32, 16, 24, 16, 44), 1);
  EXPECT_EQ(ppl_set_lens_correction(c, -16, 16, 0, 8, table.data(), 32, 16, 24, 16, 44), 1);
  EXPECT_EQ(ppl_set_lens_correction(c, 16, INT32_MAX, 0, 0, table.data(), 32, 0, 24, 0, 44),
            1);  // needs 0 bytes
  EXPECT_EQ(table[0], 8192);
  EXPECT_EQ(ppl_set_lens_correction(c, 16, INT32_MIN, 0, INT32_MIN, table.data(), -2, 1, 24, 1, 44), 0);
}

TEST_F(lens, enabling_does_not_touch_the_table_and_resetting_drops_it) {
  std::vector<uint16_t> table(16 * 9);
  ASSERT_EQ(ppl_set_lens_correction(c, 16, 16, 8, 8, table.data(), 16 * 9 * 2, 16, 24, 16, 44), 1);
  const std::vector<uint16_t> before = table;
  EXPECT_EQ(ppl_enable_lens_correction(c), 1);
  EXPECT_EQ(ppl_disable_lens_correction(c), 1);
  EXPECT_EQ(ppl_enable_lens_correction(c), 1);
  EXPECT_EQ(ppl_lens_correction_table(c), table.data());
  ASSERT_EQ(ppl_new_frame_size(c, 320, 240, 320), 1);
  EXPECT_EQ(ppl_reset_lens_correction(c), 0);
  EXPECT_EQ(ppl_lens_correction_enabled(c), 0);
  EXPECT_EQ(ppl_lens_correction_table(c), nullptr);
  EXPECT_EQ(ppl_lens_correction_width(c), 640);
  EXPECT_EQ(table, before);
}

}  // namespace
