// Contrast, gamma and their composition; the built-in gamma tables against their rule.
#include <array>
#include <cmath>
#include <fstream>
#include <sstream>
#include <string>

#include "controls/fixture.h"
#include "controls/gamma_tables.h"

namespace {

using tone = ctl::controls;
using table = std::vector<int>;

table of(const uint8_t* t) {
  return {t, t + 256};
}

table identity() {
  table t(256);
  for (int i = 0; i < 256; ++i) t[static_cast<size_t>(i)] = i;
  return t;
}

void expect_composed(const ppl_context* c) {
  const uint8_t* contrast = ppl_contrast_table(c);
  for (int i = 0; i < 256; ++i) {
    ASSERT_EQ(ppl_yuv_contrast_gamma_table(c)[i], ppl_yuv_gamma_table(c)[contrast[i]]) << i;
    ASSERT_EQ(ppl_rgb_contrast_gamma_table(c)[i], ppl_rgb_gamma_table(c)[contrast[i]]) << i;
  }
}

// Any table: an odd permutation of the bytes.
std::array<uint8_t, 256> scrambled(int factor) {
  std::array<uint8_t, 256> t;
  for (size_t i = 0; i < 256; ++i) t[i] = static_cast<uint8_t>(static_cast<int>(i) * factor + 3);
  return t;
}

TEST_F(tone, contrast_0_is_the_identity) {
  ASSERT_EQ(ppl_set_contrast_c(c, 50, nullptr, nullptr), 1);
  uint32_t x = 9, y = 9;
  EXPECT_EQ(ppl_set_contrast_c(c, 0, &x, &y), 1);
  EXPECT_EQ(x, 0u);
  EXPECT_EQ(y, 0u);
  EXPECT_EQ(of(ppl_contrast_table(c)), identity());
  expect_composed(c);
}

TEST_F(tone, contrast_127_is_a_step) {
  uint32_t x = 0, y = 9;
  EXPECT_EQ(ppl_set_contrast_c(c, 127, &x, &y), 1);
  EXPECT_EQ(x, 127u);
  EXPECT_EQ(y, 0u);
  EXPECT_EQ(ppl_contrast_table(c)[127], 0);
  EXPECT_EQ(ppl_contrast_table(c)[128], 255);
  for (int i = 0; i < 128; ++i) {
    ASSERT_EQ(ppl_contrast_table(c)[i], 0);
    ASSERT_EQ(ppl_contrast_table(c)[255 - i], 255);
  }
  expect_composed(c);
}

TEST_F(tone, copies_of_a_null_table_do_nothing_and_answer_as_ever) {
  ASSERT_EQ(ppl_set_gamma(c, 5), 1);
  ASSERT_EQ(ppl_set_contrast_c(c, 30, nullptr, nullptr), 1);
  const int32_t exponent = ppl_nf20_12_gamma(c, nullptr, nullptr, nullptr);
  const table contrast = of(ppl_contrast_table(c)), yuv = of(ppl_yuv_gamma_table(c)),
              rgb = of(ppl_rgb_gamma_table(c)), dekneel = of(ppl_r_dekneel_table(c));
  EXPECT_EQ(ppl_copy_contrast_table(c, nullptr), 1);
  EXPECT_EQ(ppl_copy_yuv_gamma_table(c, nullptr), 1);
  EXPECT_EQ(ppl_copy_rgb_gamma_table(c, nullptr), 1);
  EXPECT_EQ(ppl_copy_gamma_tables65x256(c, nullptr), 1);
  EXPECT_EQ(ppl_copy_gamma_tables65x256_16_235(c, nullptr), 1);
  EXPECT_EQ(ppl_copy_r_dekneel_table(c, nullptr), 0);
  EXPECT_EQ(ppl_copy_g_dekneel_table(c, nullptr), 0);
  EXPECT_EQ(ppl_copy_b_dekneel_table(c, nullptr), 0);
  EXPECT_EQ(ppl_copy_sensor_matrix(c, nullptr), 1);
  EXPECT_EQ(ppl_nf20_12_gamma(c, nullptr, nullptr, nullptr), exponent);
  EXPECT_EQ(of(ppl_contrast_table(c)), contrast);
  EXPECT_EQ(of(ppl_yuv_gamma_table(c)), yuv);
  EXPECT_EQ(of(ppl_rgb_gamma_table(c)), rgb);
  EXPECT_EQ(of(ppl_r_dekneel_table(c)), dekneel);
}

// From (0, 127) to (255, 128): the slope of 16 / 4080 truncates to 16 of 4096, which climbs 15.9 sixteenths.
TEST_F(tone, tables_copied_to_nowhere_answer_as_ever) {
  EXPECT_EQ(ppl_get_yuv_gamma_table(c, nullptr), 1);
  EXPECT_EQ(ppl_get_rgb_gamma_table(c, nullptr), 1);
  EXPECT_EQ(ppl_get_gamma_tables65x256(c, nullptr), 1);
  EXPECT_EQ(ppl_get_gamma_tables65x256_16_235(c, nullptr), 1);
}

TEST_F(tone, contrast_minus_127_falls_short_of_its_end) {
  uint32_t x = 9, y = 0;
  EXPECT_EQ(ppl_set_contrast_c(c, -127, &x, &y), 1);
  EXPECT_EQ(x, 0u);
  EXPECT_EQ(y, 127u);
  EXPECT_EQ(ppl_contrast_table(c)[0], 127);
  EXPECT_EQ(ppl_contrast_table(c)[255], 127);
}

TEST_F(tone, contrast_beyond_127_is_refused_and_writes_nothing) {
  ASSERT_EQ(ppl_set_contrast_c(c, 30, nullptr, nullptr), 1);
  const table before = of(ppl_contrast_table(c));
  uint32_t x = 77, y = 78;
  for (int bad : {128, -128, INT32_MIN, INT32_MAX}) EXPECT_EQ(ppl_set_contrast_c(c, bad, &x, &y), 0);
  EXPECT_EQ(x, 77u);
  EXPECT_EQ(y, 78u);
  EXPECT_EQ(c->contrast_c, 30);
  EXPECT_EQ(of(ppl_contrast_table(c)), before);
}

TEST_F(tone, contrast_x_128_is_refused_and_not_stored) {
  ASSERT_EQ(ppl_set_contrast_xy(c, 12, 34), 1);
  EXPECT_EQ(ppl_set_contrast_xy(c, 128, 0), 0);
  EXPECT_EQ(c->contrast_x, 12u);
  EXPECT_EQ(c->contrast_y, 34u);
}

TEST_F(tone, contrast_points_leave_the_contrast_gain_alone) {
  ASSERT_EQ(ppl_set_contrast_c(c, 100, nullptr, nullptr), 1);
  ASSERT_EQ(ppl_set_contrast_xy(c, 3, 200), 1);
  EXPECT_EQ(c->contrast_c, 100);
  EXPECT_EQ(c->y_bmy_rmy_offset, 32768 - 128 * 456);
  EXPECT_EQ(ppl_reset_contrast(c), 1);
  EXPECT_EQ(c->contrast_c, 0);
  EXPECT_EQ(c->y_bmy_rmy_offset, 0);
  EXPECT_EQ(of(ppl_contrast_table(c)), identity());
}

// Each entry on its own, in 64 bits; y of any size keeps to 32.
TEST_F(tone, contrast_curves_of_any_two_points) {
  const auto wrap = [](int64_t v) {
    return static_cast<int64_t>(static_cast<int32_t>(static_cast<uint64_t>(v)));
  };
  uint32_t seed = 9;
  for (int round = 0; round < 1500; ++round) {
    const uint32_t x = support::step(seed) % 128;
    const uint32_t y = round % 3 == 0 ? support::step(seed) : support::step(seed) % 256;
    ASSERT_EQ(ppl_set_contrast_xy(c, x, y), 1);
    const int64_t px[4] = {0, x, 255 - x, 255}, py[4] = {0, y, wrap(255 - int64_t{y}), 255};
    for (int i = 0; i < 256; ++i) {
      int k = x ? 0 : 1;
      while (px[k + 1] < i) ++k;
      const int64_t a = 16 * px[k], b = wrap(16 * py[k]), e = 16 * px[k + 1], d = wrap(16 * py[k + 1]);
      const int64_t slope = wrap(wrap(d - b) * 4096) / (e - a);
      const int64_t value = wrap((wrap((16 * i - a) * slope) >> 12) + b) >> 4;
      ASSERT_EQ(ppl_contrast_table(c)[i], value & 255) << x << " " << y << " " << i;
    }
  }
}

TEST_F(tone, a_copied_contrast_table_is_composed_and_leaves_the_matrices) {
  const auto t = scrambled(5);
  const int32_t before = c->y_bmy_rmy_matrix[0];
  c->y_bmy_rmy_matrix[0] = 12345;
  EXPECT_EQ(ppl_copy_contrast_table(c, t.data()), 1);
  EXPECT_EQ(c->y_bmy_rmy_matrix[0], 12345);
  c->y_bmy_rmy_matrix[0] = before;
  EXPECT_EQ(std::memcmp(ppl_contrast_table(c), t.data(), 256), 0);
  expect_composed(c);
}

TEST_F(tone, gamma_33_is_refused_and_changes_nothing) {
  ASSERT_EQ(ppl_set_gamma(c, 5), 1);
  const table yuv = of(ppl_yuv_gamma_table(c)), rgb = of(ppl_rgb_gamma_table(c));
  const int32_t exponent = ppl_nf20_12_gamma(c, nullptr, nullptr, nullptr);
  for (int bad : {33, -33, INT32_MIN, INT32_MAX}) EXPECT_EQ(ppl_set_gamma(c, bad), 0);
  EXPECT_EQ(of(ppl_yuv_gamma_table(c)), yuv);
  EXPECT_EQ(of(ppl_rgb_gamma_table(c)), rgb);
  EXPECT_EQ(ppl_nf20_12_gamma(c, nullptr, nullptr, nullptr), exponent);
}

TEST_F(tone, exponents) {
  const struct { int index, exponent; } cases[] = {{-32, 8260}, {0, 1843}, {32, 411}};
  for (const auto& k : cases) {
    ASSERT_EQ(ppl_set_gamma(c, k.index), 1);
    int32_t index = 7, low = 7, high = 7;
    EXPECT_EQ(ppl_nf20_12_gamma(c, &index, &low, &high), k.exponent);
    EXPECT_EQ(index, 0);  // the index is never stored
    EXPECT_EQ(low, -32);
    EXPECT_EQ(high, 32);
  }
}

TEST_F(tone, a_copied_gamma_table_has_no_exponent) {
  const auto t = scrambled(7);
  ASSERT_EQ(ppl_set_gamma(c, 3), 1);
  EXPECT_EQ(ppl_copy_rgb_gamma_table(c, t.data()), 1);
  EXPECT_EQ(ppl_nf20_12_gamma(c, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(std::memcmp(ppl_rgb_gamma_table(c), t.data(), 256), 0);
  EXPECT_NE(std::memcmp(ppl_yuv_gamma_table(c), t.data(), 256), 0);
  expect_composed(c);
  ASSERT_EQ(ppl_reset_gamma(c), 1);
  EXPECT_EQ(ppl_nf20_12_gamma(c, nullptr, nullptr, nullptr), 1843);
  EXPECT_EQ(ppl_copy_yuv_gamma_table(c, t.data()), 1);
  EXPECT_EQ(ppl_nf20_12_gamma(c, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(std::memcmp(ppl_yuv_gamma_table(c), t.data(), 256), 0);
  expect_composed(c);
  uint8_t out[256];
  EXPECT_EQ(ppl_get_yuv_gamma_table(c, out), 1);
  EXPECT_EQ(std::memcmp(out, t.data(), 256), 0);
  EXPECT_EQ(ppl_get_rgb_gamma_table(c, out), 1);
  EXPECT_EQ(std::memcmp(out, ppl_rgb_gamma_table(c), 256), 0);
}

TEST_F(tone, a_contexts_own_table_can_be_copied_into_it) {
  const auto t = scrambled(11);
  ASSERT_EQ(ppl_copy_contrast_table(c, t.data()), 1);
  ASSERT_EQ(ppl_copy_contrast_table(c, ppl_contrast_table(c)), 1);
  EXPECT_EQ(std::memcmp(ppl_contrast_table(c), t.data(), 256), 0);
  const table composed = of(ppl_yuv_contrast_gamma_table(c));
  ASSERT_EQ(ppl_copy_yuv_gamma_table(c, ppl_yuv_contrast_gamma_table(c)), 1);
  EXPECT_EQ(of(ppl_yuv_gamma_table(c)), composed);
  expect_composed(c);
}

// ---- The built-in tables.

const long double kOffsets[65] = {
    0.002L, 0.002L, 0.003L, 0.001L, 0.001L, 0.001L, 0.001L, 0.001L, 0.001L, 0.000L, 0.000L, 0.001L, 0.001L,
    0.001L, 0.002L, 0.000L, 0.004L, 0.006L, 0.008L, 0.010L, 0.013L, 0.017L, 0.021L, 0.025L, 0.031L, 0.036L,
    0.043L, 0.051L, 0.059L, 0.068L, 0.078L, 0.090L, 0.102L, 0.115L, 0.129L, 0.145L, 0.161L, 0.179L, 0.198L,
    0.219L, 0.241L, 0.264L, 0.289L, 0.315L, 0.344L, 0.373L, 0.405L, 0.438L, 0.474L, 0.512L, 0.551L, 0.592L,
    0.638L, 0.683L, 0.731L, 0.781L, 0.836L, 0.896L, 0.953L, 1.016L, 1.080L, 1.150L, 1.226L, 1.298L, 1.382L};

long double curve(int row, long double u) {
  const long double g = floorl(4096.0L * 0.45L * expl(-3.0L * (row - 32) / 64.0L)) / 4096.0L;
  const long double a = kOffsets[row], t = 0.018L;
  if (u < t) return ((1.0L + a) * powl(t, g) - a) / t * u;
  return (1.0L + a) * powl(u, g) - a;
}

int rounded(long double y) {
  const long double r = floorl(y + 0.5L);
  return r < 0.0L ? 0 : r > 255.0L ? 255 : static_cast<int>(r);
}

TEST_F(tone, the_built_in_rows_follow_the_rule) {
  std::vector<uint8_t> block(65 * 256);
  ASSERT_EQ(ppl_get_gamma_tables65x256(c, block.data()), 1);
  for (int row = 0; row < 65; ++row) {
    EXPECT_EQ(ppl::kGammaValues[row], static_cast<int>(4096.0L * 0.45L * expl(-3.0L * (row - 32) / 64.0L)));
    if (row == 32) continue;  // stands as given
    for (int x = 0; x < 256; ++x) {
      ASSERT_EQ(block[static_cast<size_t>(256 * row + x)], rounded(255.0L * curve(row, x / 255.0L)))
          << row << " " << x;
    }
  }
}

TEST_F(tone, the_default_row_lies_within_two_steps_of_the_rule) {
  for (int x = 0; x < 256; ++x) {
    EXPECT_NEAR(ppl_rgb_gamma_table(c)[x], rounded(255.0L * curve(32, x / 255.0L)), 2) << x;
  }
}

TEST_F(tone, the_default_row_in_full) {
  const int row[256] = {
#include "controls/default_row.inc"
  };
  for (int x = 0; x < 256; ++x) EXPECT_EQ(ppl_rgb_gamma_table(c)[x], row[x]) << x;
}

TEST_F(tone, telling_entries_of_other_rows) {
  const struct {
    int row;
    int entries[16];
  } rows[] = {{0, {0, 1, 4, 8, 15, 24, 35, 48, 63, 80, 99, 120, 143, 168, 195, 224}},
              {16, {0, 17, 35, 51, 68, 84, 100, 116, 132, 147, 163, 179, 194, 209, 225, 240}},
              {48, {0, 88, 121, 143, 159, 173, 185, 195, 204, 212, 220, 227, 233, 239, 245, 250}},
              {64, {0, 108, 141, 161, 176, 188, 198, 207, 215, 221, 227, 233, 238, 243, 247, 252}}};
  for (const auto& k : rows) {
    ASSERT_EQ(ppl_set_gamma(c, k.row - 32), 1);
    for (int i = 0; i < 16; ++i)
      EXPECT_NEAR(ppl_yuv_gamma_table(c)[16 * i], k.entries[i], 2) << k.row << " " << i;
  }
}

TEST_F(tone, the_studio_rows_follow_the_rule) {
  std::vector<uint8_t> block(65 * 256);
  ASSERT_EQ(ppl_get_gamma_tables65x256_16_235(c, block.data()), 1);
  for (int row = 0; row < 65; ++row) {
    for (int x = 0; x < 256; ++x) {
      const int y = x < 16 ? 16 : x >= 235 ? 235 : rounded(16.0L + 219.0L * curve(row, (x - 16) / 219.0L));
      ASSERT_EQ(block[static_cast<size_t>(256 * row + x)], y) << row << " " << x;
    }
  }
  const int telling[16] = {16, 16, 68, 95, 116, 132, 147, 160, 172, 183, 194, 203, 212, 221, 229, 235};
  for (size_t i = 0; i < 16; ++i) EXPECT_NEAR(block[256 * 32 + 16 * i], telling[i], 2) << i;
}

TEST_F(tone, replaced_blocks_reach_all_contexts_at_their_next_gamma) {
  ppl_context* other = ppl_init();
  ASSERT_NE(other, nullptr);
  std::vector<uint8_t> built_in(65 * 256), studio(65 * 256), mine(65 * 256), out(65 * 256);
  ASSERT_EQ(ppl_get_gamma_tables65x256(c, built_in.data()), 1);
  ASSERT_EQ(ppl_get_gamma_tables65x256_16_235(c, studio.data()), 1);
  for (size_t i = 0; i < mine.size(); ++i) mine[i] = static_cast<uint8_t>(i * 13 + i / 256);
  ASSERT_EQ(ppl_copy_gamma_tables65x256(c, mine.data()), 1);
  EXPECT_EQ(std::memcmp(ppl_rgb_gamma_table(other), built_in.data() + 32 * 256, 256), 0);  // already copied
  ASSERT_EQ(ppl_set_gamma(other, 2), 1);
  EXPECT_EQ(std::memcmp(ppl_rgb_gamma_table(other), mine.data() + 34 * 256, 256), 0);
  EXPECT_EQ(std::memcmp(ppl_yuv_gamma_table(other), mine.data() + 34 * 256, 256), 0);
  EXPECT_EQ(ppl_nf20_12_gamma(other, nullptr, nullptr, nullptr), ppl::kGammaValues[34]);
  ASSERT_EQ(ppl_get_gamma_tables65x256(other, out.data()), 1);
  EXPECT_EQ(out, mine);
  ASSERT_EQ(ppl_get_gamma_tables65x256_16_235(other, out.data()), 1);
  EXPECT_EQ(out, studio);
  ASSERT_EQ(ppl_copy_gamma_tables65x256_16_235(c, mine.data()), 1);
  ASSERT_EQ(ppl_get_gamma_tables65x256_16_235(other, out.data()), 1);
  EXPECT_EQ(out, mine);
  ppl_copy_gamma_tables65x256(c, built_in.data());
  ppl_copy_gamma_tables65x256_16_235(c, studio.data());
  ppl_free(other);
}

// ---- Frozen digests.

TEST_F(tone, digests_of_tables_csv) {
  std::ifstream file(std::string(PPL_TEST_DIGESTS) + "/tables.csv");
  ASSERT_TRUE(file);
  std::string line;
  std::getline(file, line);
  ASSERT_EQ(line, "call,arguments,result,digest");
  int count = 0;
  while (std::getline(file, line)) {
    SCOPED_TRACE(line);
    std::stringstream fields(line);
    std::string call, arguments, result, hex;
    std::getline(fields, call, ',');
    std::getline(fields, arguments, ',');
    std::getline(fields, result, ',');
    std::getline(fields, hex, ',');
    std::stringstream numbers(arguments);
    std::vector<int> a;
    for (int n; numbers >> n;) a.push_back(n);
    int answer = -1;
    uint64_t digest = 0;
    if (call == "ppl_set_contrast_c") {
      ASSERT_EQ(a.size(), 1u);
      answer = ppl_set_contrast_c(c, a[0], nullptr, nullptr);
      digest = support::digest_of(ppl_contrast_table(c), 256);
    } else if (call == "ppl_set_contrast_xy") {
      ASSERT_EQ(a.size(), 2u);
      answer = ppl_set_contrast_xy(c, static_cast<uint32_t>(a[0]), static_cast<uint32_t>(a[1]));
      digest = support::digest_of(ppl_rgb_contrast_gamma_table(c), 256);
    } else {
      ASSERT_EQ(call, "ppl_set_lens_correction");
      ASSERT_EQ(a.size(), 8u);
      const int rows = std::max(a[3], a[1] - a[3]) + 1;
      std::vector<uint16_t> lens(static_cast<size_t>(rows * a[0]));
      answer = ppl_set_lens_correction(c, a[0], a[1], a[2], a[3], lens.data(),
                                       static_cast<int>(lens.size() * 2), a[4], a[5], a[6], a[7]);
      digest = support::digest_of(lens.data(), lens.size() * 2);
      ppl_reset_lens_correction(c);
    }
    EXPECT_EQ(answer, std::stoi(result));
    EXPECT_EQ(digest, std::stoull(hex, nullptr, 16));
    ++count;
  }
  EXPECT_EQ(count, 101);
}

}  // namespace
