// Statistics read-out: the getters that compute, and what frames leave to read.
#include "controls/fixture.h"

namespace {

struct statistics : ctl::controls {
  ppl_context saved = *c;
  ~statistics() override {  // what a test writes into the record must not reach the slot's next owner
    std::memcpy(c->sub_window_means, saved.sub_window_means, sizeof saved.sub_window_means);
    c->all_windows_means = saved.all_windows_means;
    c->whole_frame_means = saved.whole_frame_means;
  }

  void frame(uint32_t width, uint32_t height) {
    ctl::fenced source = ctl::noise_frame(static_cast<int>(width), static_cast<int>(height), 3);
    ctl::fenced out(width * height * 3 / 2);
    ASSERT_EQ(ppl_process_blrtoi420(c, source.data(), out.data(), width, height, width), 1);
  }
};

std::vector<uint32_t> three(const uint32_t* p) {
  return {p, p + 3};
}

TEST_F(statistics, a_grid_of_8_by_6) {
  uint32_t columns = 0, rows = 0;
  EXPECT_EQ(ppl_n_sub_windows(c, &columns, &rows), 48u);
  EXPECT_EQ(columns, 8u);
  EXPECT_EQ(rows, 6u);
  EXPECT_EQ(ppl_n_sub_windows(c, nullptr, nullptr), 48u);
}

// (48 x 999 + 3 x 4000 + 20 x 1000) / 80 = 79952 / 80 = 999.
TEST_F(statistics, equal_cells) {
  for (int i = 0; i < 48; ++i) c->sub_window_means[i] = {1000, 1000, 1000};
  c->all_windows_means = {999, 999, 999};
  EXPECT_EQ(three(ppl_rgb_means_whole_frame_central4(c)), (std::vector<uint32_t>{999, 999, 999}));
  EXPECT_EQ(three(ppl_rgb_means_whole_frame_central8(c)), (std::vector<uint32_t>{999, 999, 999}));
  EXPECT_EQ(three(ppl_rgb_means_whole_frame_central16(c)), (std::vector<uint32_t>{999, 999, 999}));
  EXPECT_EQ(three(ppl_rgb_means_whole_frame_4pts(c)), (std::vector<uint32_t>{1000, 1000, 1000}));
}

// One cell at a time: its share in each of the four means.
TEST_F(statistics, weights_of_every_cell) {
  for (int cell = 0; cell < 49; ++cell) {
    std::memset(c->sub_window_means, 0, sizeof c->sub_window_means);
    c->all_windows_means = {};
    c->sub_window_means[cell] = {96000, 960000, 9600000};
    const int column = cell % 8, row = cell / 8;
    const bool central = cell < 48 && (column == 3 || column == 4) && (row == 2 || row == 3);
    const bool ring = !central && cell < 48 && column >= 1 && column <= 6 && row >= 1 && row <= 4;
    const auto weighted = [&](uint32_t k) {
      const uint32_t share = central ? k : ring ? 1 : 0, parts = 4 * k + 68;
      return std::vector<uint32_t>{96000 * share / parts, 960000 * share / parts, 9600000 * share / parts};
    };
    SCOPED_TRACE(cell);
    EXPECT_EQ(three(ppl_rgb_means_whole_frame_central4(c)), weighted(3));
    EXPECT_EQ(three(ppl_rgb_means_whole_frame_central8(c)), weighted(7));
    EXPECT_EQ(three(ppl_rgb_means_whole_frame_central16(c)), weighted(15));
    const uint32_t q = central ? 1 : 0;
    EXPECT_EQ(three(ppl_rgb_means_whole_frame_4pts(c)),
              (std::vector<uint32_t>{24000 * q, 240000 * q, 2400000 * q}));
  }
}

TEST_F(statistics, the_division_is_signed_and_truncates) {
  std::memset(c->sub_window_means, 0, sizeof c->sub_window_means);
  c->all_windows_means = {0x7fffffff, 0, 79};    // 48 x 0x7fffffff wraps to -48
  c->sub_window_means[19] = {0, 0x2aaaaaab, 0};  // 3 x that wraps to -2147483647
  const uint32_t* m = ppl_rgb_means_whole_frame_central4(c);
  EXPECT_EQ(m[0], 0u);
  EXPECT_EQ(m[1], static_cast<uint32_t>(-2147483647 / 80));
  EXPECT_EQ(m[2], 48u * 79 / 80);
  c->sub_window_means[20] = {0xfffffff8, 0, 0};
  EXPECT_EQ(ppl_rgb_means_whole_frame_4pts(c)[0], 0x3ffffffeu);
}

TEST_F(statistics, quality_3_answers_with_the_whole_frame) {
  ASSERT_EQ(ppl_set_quality(c, 3), 1);
  const uint32_t* whole = ppl_rgb_means_whole_frame(c);
  EXPECT_EQ(ppl_rgb_means_whole_frame_4pts(c), whole);
  EXPECT_EQ(ppl_rgb_means_whole_frame_central4(c), whole);
  EXPECT_EQ(ppl_rgb_means_whole_frame_central8(c), whole);
  EXPECT_EQ(ppl_rgb_means_whole_frame_central16(c), whole);
  ASSERT_EQ(ppl_set_quality(c, 15), 1);  // the control as it stands at the call decides
  EXPECT_NE(ppl_rgb_means_whole_frame_4pts(c), whole);
}

TEST_F(statistics, the_computed_means_are_shared_by_all_contexts_and_the_four_are_apart) {
  ppl_context* other = ppl_init();
  ASSERT_NE(other, nullptr);
  const uint32_t* p[4] = {ppl_rgb_means_whole_frame_4pts(c), ppl_rgb_means_whole_frame_central4(c),
                          ppl_rgb_means_whole_frame_central8(c), ppl_rgb_means_whole_frame_central16(c)};
  EXPECT_EQ(ppl_rgb_means_whole_frame_4pts(other), p[0]);
  EXPECT_EQ(ppl_rgb_means_whole_frame_central4(other), p[1]);
  EXPECT_EQ(ppl_rgb_means_whole_frame_central8(other), p[2]);
  EXPECT_EQ(ppl_rgb_means_whole_frame_central16(other), p[3]);
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < i; ++j) EXPECT_NE(p[i], p[j]);
  }
  ppl_free(other);
}

TEST_F(statistics, outside_follows_the_48_cells) {
  EXPECT_EQ(ppl_rgb_means_outside_all_sub_windows(c), ppl_rgb_means_sub_windows(c) + 3 * 48);
}

TEST_F(statistics, without_collection_the_means_are_zeros) {
  frame(640, 480);
  EXPECT_NE(three(ppl_rgb_means_whole_frame_4pts(c)), std::vector<uint32_t>(3, 0u));
  ASSERT_EQ(ppl_set_mean_collection(c, 0), 1);
  frame(640, 480);
  EXPECT_EQ(three(ppl_rgb_means_whole_frame_4pts(c)), std::vector<uint32_t>(3, 0u));
  EXPECT_EQ(three(ppl_rgb_means_whole_frame(c)), std::vector<uint32_t>(3, 0u));
}

// A white frame: black level, gain and tone leave it white. Of 6 tiles only tile 1 is an odd inner one; of 48 row pairs
// 1, 3 .. 43 collect: 22 groups of 8 cells. 176 x 255 = 44880; times the border factor 9216 x 256 / (84 x 32 / 4) =
// 3510, over 256: 615346; in units of 1/256 over 2304 sites, rounded: 68372. Green: twice that over twice the sites.
TEST_F(statistics, below_128_columns_everything_is_outside_the_grid) {
  ctl::fenced source(96 * 96), out(96 * 96 * 3 / 2);
  source.fill(255);
  ASSERT_EQ(ppl_process_blrtoi420(c, source.data(), out.data(), 96, 96, 96), 1);
  for (int i = 0; i < 3 * 48; ++i) ASSERT_EQ(ppl_rgb_means_sub_windows(c)[i], 0u);
  EXPECT_EQ(three(ppl_rgb_means_all_sub_windows(c)), std::vector<uint32_t>(3, 0u));
  for (int i = 0; i < 3; ++i) {
    EXPECT_GT(ppl_rgb_means_outside_all_sub_windows(c)[i], 0u);
    EXPECT_EQ(ppl_rgb_means_whole_frame(c)[i], 68372u);
  }
}

TEST_F(statistics, the_mean_of_the_grid_is_that_of_its_cells_a_hair_low) {
  frame(640, 480);
  for (int i = 0; i < 3; ++i) {
    uint32_t sum = 0;
    for (int cell = 0; cell < 48; ++cell) sum += ppl_rgb_means_sub_windows(c)[3 * cell + i];
    EXPECT_EQ(ppl_rgb_means_all_sub_windows(c)[i], sum * 341 >> 14);
    EXPECT_GT(sum, 0u);
  }
}

TEST_F(statistics, they_survive_until_the_next_frame_whatever_is_set) {
  frame(640, 480);
  const std::vector<uint32_t> means = three(ppl_rgb_means_whole_frame(c));
  const std::vector<uint32_t> histogram(ppl_g_histogram(c), ppl_g_histogram(c) + 256);
  const uint32_t count = ppl_n_qual_2x2_whole_frame(c), qae = ppl_n_qAE_2x2_whole_frame(c);
  ppl_reset_all_controls(c);
  ppl_set_quality(c, 5);
  EXPECT_EQ(three(ppl_rgb_means_whole_frame(c)), means);
  EXPECT_EQ(std::vector<uint32_t>(ppl_g_histogram(c), ppl_g_histogram(c) + 256), histogram);
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(c), count);
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(c), qae);
  frame(640, 480);
  EXPECT_EQ(three(ppl_rgb_means_whole_frame(c)), std::vector<uint32_t>(3, 0u));
  EXPECT_EQ(three(ppl_qAE_rgb_means_whole_frame(c)), std::vector<uint32_t>(3, 0u));
  EXPECT_EQ(three(ppl_qual_rgb_means_whole_frame(c)), std::vector<uint32_t>(3, 0u));
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(c), 0u);
  for (int i = 0; i < 256; ++i) {
    ASSERT_EQ(ppl_r_histogram(c)[i] + ppl_g_histogram(c)[i] + ppl_b_histogram(c)[i], 0u);
  }
}

}  // namespace
