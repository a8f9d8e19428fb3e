// Colour matrices: figures at the defaults, hue and saturation, and a recomputation in wide integers.
#include <array>
#include <cmath>

#include "controls/fixture.h"

namespace {

using namespace ctl;
using colour = ctl::controls;
using matrix = std::array<int, 9>;

matrix words(const int32_t* m) {
  matrix r;
  std::copy(m, m + 9, r.begin());
  return r;
}

// A group of nine vectors, each with one value in all lanes.
matrix group(const ppl::vec_i16* v) {
  matrix r;
  for (size_t i = 0; i < 9; ++i) {
    r[i] = v[i].lane[0];
    EXPECT_EQ(lanes(v[i]), all(r[i]));
  }
  return r;
}

TEST_F(colour, matrices_at_the_defaults) {
  EXPECT_EQ(words(c->y_bmy_rmy_matrix), (matrix{77, 150, 29, -77, -150, 227, 179, -150, -29}));
  EXPECT_EQ(words(c->yuv_matrix), (matrix{77, 150, 29, -44, -87, 131, 131, -110, -21}));
  EXPECT_EQ(words(c->rgb_matrix), (matrix{256, 0, 0, 0, 256, 0, 0, 0, 256}));
  EXPECT_EQ(c->hue_rotation[0], 256);
  EXPECT_EQ(c->hue_rotation[1], 0);
  EXPECT_EQ(c->hue_rotation[2], 0);
  EXPECT_EQ(c->hue_rotation[3], 256);
}

TEST_F(colour, vectors_at_the_defaults) {
  EXPECT_EQ(group(c->rgb_coef), (matrix{97, -4, -30, -29, 127, -34, -5, -57, 126}));
  EXPECT_EQ(group(c->yuv2_coef), (matrix{11, 67, -15, -9, -72, 81, 63, -52, -11}));
  EXPECT_EQ(group(c->yuv_coef), (matrix{11, 67, -15, -16, -124, 141, 86, -71, -15}));
  EXPECT_EQ(lanes(c->luma_offset), all(32));
  EXPECT_EQ(lanes(c->yuv2_offset), all(32));
  EXPECT_EQ(lanes(c->rgb_offset_vector), all(32));
}

TEST_F(colour, default_sensor_matrix) {
  int32_t m[9];
  ppl_sensor_matrix(c, m);
  EXPECT_EQ(words(m), (matrix{389, -15, -120, -118, 509, -137, -19, -229, 503}));
  const int32_t other[9] = {1, -2, 3, -4, 5, -6, 7, -8, 9};
  EXPECT_EQ(ppl_copy_sensor_matrix(c, other), 1);
  ppl_sensor_matrix(c, m);
  EXPECT_EQ(words(m), words(other));
  EXPECT_EQ(ppl_reset_sensor_matrix(c), 1);
  EXPECT_EQ(group(c->yuv_coef), (matrix{11, 67, -15, -16, -124, 141, 86, -71, -15}));
}

TEST_F(colour, a_matrix_copied_to_nowhere_is_none) {
  ppl_sensor_matrix(c, nullptr);
  int32_t kept[9];
  ppl_sensor_matrix(c, kept);
  EXPECT_EQ(kept[0], c->sensor_matrix[0]);
  EXPECT_EQ(kept[8], c->sensor_matrix[8]);
}

TEST_F(colour, the_index_bound_is_kept_and_changes_nothing) {
  const matrix before = group(c->yuv_coef);
  EXPECT_EQ(ppl_set_sensor_matrix_index_upper_bound(c, 0xffffffffu), 1);
  EXPECT_EQ(ppl_sensor_matrix_index_upper_bound(c), 0xffffffffu);
  EXPECT_EQ(group(c->yuv_coef), before);
  EXPECT_EQ(ppl_reset_sensor_matrix_index_upper_bound(c), 1);
  EXPECT_EQ(ppl_sensor_matrix_index_upper_bound(c), 12u);
}

TEST_F(colour, hue_is_reduced_to_one_turn) {
  const struct {
    int given, stored;
  } cases[] = {{360, 0},
               {-360, 0},
               {-1, 359},
               {361, 1},
               {719, 359},
               {-359, 1},
               {180, 180},
               {INT32_MAX, INT32_MAX % 360},
               {INT32_MIN, INT32_MIN % 360 + 360}};
  for (const auto& k : cases) {
    EXPECT_EQ(ppl_set_sat_hue(c, 256, k.given), 1);
    EXPECT_EQ(ppl_hue_degree(c), k.stored);
    EXPECT_EQ(ppl_set_hue(c, k.given), 1);
    EXPECT_EQ(ppl_hue_degree(c), k.stored);
  }
}

TEST_F(colour, saturation_513_is_refused_512_doubles_the_chroma_rows) {
  ASSERT_EQ(ppl_set_sat_hue(c, 200, 30), 1);
  EXPECT_EQ(ppl_set_sat_hue(c, 513, 60), 0);
  EXPECT_EQ(ppl_set_sat(c, 0xffffffffu), 0);
  EXPECT_EQ(ppl_nf88_sat(c), 200u);
  EXPECT_EQ(ppl_hue_degree(c), 30);
  ASSERT_EQ(ppl_set_sat_hue(c, 512, 0), 1);
  // Twice 1225, 2404, 3629, 2871, 467 with 12 fraction bits, rounded to 8.
  EXPECT_EQ(words(c->y_bmy_rmy_matrix), (matrix{77, 150, 29, -153, -300, 454, 359, -300, -58}));
}

TEST_F(colour, no_saturation_is_grey) {
  ASSERT_EQ(ppl_set_sat(c, 0), 1);
  EXPECT_EQ(words(c->y_bmy_rmy_matrix), (matrix{77, 150, 29, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(words(c->rgb_matrix), (matrix{77, 150, 29, 77, 150, 29, 77, 150, 29}));
}

TEST_F(colour, hue_90_turns_one_difference_into_the_other) {
  ASSERT_EQ(ppl_set_hue(c, 90), 1);
  EXPECT_EQ(words(c->y_bmy_rmy_matrix), (matrix{77, 150, 29, -179, 150, 29, -77, -150, 227}));
  EXPECT_EQ(c->hue_rotation[0], 0);
  EXPECT_EQ(c->hue_rotation[1], -256);
  EXPECT_EQ(c->hue_rotation[2], 256);
  ASSERT_EQ(ppl_set_hue(c, 180), 1);
  EXPECT_EQ(words(c->y_bmy_rmy_matrix), (matrix{77, 150, 29, 77, 150, -227, -179, 150, 29}));
}

TEST_F(colour, sat_and_hue_keep_each_other) {
  ASSERT_EQ(ppl_set_sat(c, 300), 1);
  ASSERT_EQ(ppl_set_hue(c, 20), 1);
  EXPECT_EQ(ppl_nf88_sat(c), 300u);
  EXPECT_EQ(ppl_hue_degree(c), 20);
  EXPECT_EQ(ppl_reset_sat_hue(c), 1);
  EXPECT_EQ(ppl_nf88_sat(c), 256u);
  EXPECT_EQ(ppl_hue_degree(c), 0);
}

TEST_F(colour, contrast_100_has_a_gain_of_456) {
  ASSERT_EQ(ppl_set_contrast_c(c, 100, nullptr, nullptr), 1);
  EXPECT_EQ(c->y_bmy_rmy_offset, 32768 - 58368);
  EXPECT_EQ(lanes(c->luma_offset), all(-6368));
  EXPECT_EQ(lanes(c->rgb_offset_vector), all(-6368));
  // A negative contrast lowers the gain half as steeply: 156 / 256.
  ASSERT_EQ(ppl_set_contrast_c(c, -100, nullptr, nullptr), 1);
  EXPECT_EQ(c->yuv_offset, 32768 - 128 * 156);
  EXPECT_EQ(lanes(c->yuv2_offset), all(((32768 - 19968 + 2) >> 2) + 32));
}

TEST_F(colour, the_clamp_looks_one_bit_further_than_the_lane) {
  const auto with = [&](int32_t x) {
    const int32_t m[9] = {x, 0, 0, 0, x, 0, 0, 0, x};
    EXPECT_EQ(ppl_copy_sensor_matrix(c, m), 1);
    return group(c->rgb_coef)[0];
  };
  // rgb_matrix is the identity: v = ((x * 256 + 128) >> 8, + 2) >> 2.
  EXPECT_EQ(with(131068), 32767);
  EXPECT_EQ(with(131072), -32768);  // 32768 wraps in the lane
  EXPECT_EQ(with(262140), -1);      // 65535 wraps too
  EXPECT_EQ(with(262144), 32767);   // 65536 is clamped
  EXPECT_EQ(with(-131072), -32768);
  EXPECT_EQ(with(-131076), 32767);   // -32769 wraps
  EXPECT_EQ(with(-262144), 0);       // -65536 wraps
  EXPECT_EQ(with(-262148), -32768);  // -65537 is clamped
  EXPECT_EQ(with(1 << 24), 0);       // the product wraps to 0
}

// The same rules in 64 bits, reduced to 32 where the library wraps.
int64_t wrap(int64_t x) {
  return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(x)));
}

int64_t floor_shift(int64_t x, int bits) {
  const int64_t d = int64_t{1} << bits;
  return x >= 0 ? x / d : -((-x + d - 1) / d);
}

int64_t lane(int64_t v) {
  if (v < -65536 || v > 65535) v = v > 0 ? 32767 : -32768;
  v = ((v % 65536) + 65536) % 65536;
  return v >= 32768 ? v - 65536 : v;
}

TEST_F(colour, random_sensor_matrices_and_controls) {
  uint32_t seed = 2024;
  for (int round = 0; round < 2000; ++round) {
    int32_t s[9];
    const uint32_t range = support::step(seed) % 4;
    for (int32_t& x : s) {
      const int32_t r = static_cast<int32_t>(support::step(seed));
      x = range == 0 ? r : range == 1 ? r >> 8 : range == 2 ? r >> 16 : r >> 22;
    }
    ASSERT_EQ(ppl_set_contrast_c(c, static_cast<int32_t>(support::step(seed) % 255) - 127, nullptr, nullptr),
              1);
    ASSERT_EQ(ppl_set_sat_hue(c, support::step(seed) % 513, static_cast<int32_t>(support::step(seed))), 1);
    ASSERT_EQ(ppl_copy_sensor_matrix(c, s), 1);
    for (size_t i = 0; i < 3; ++i) {
      for (size_t j = 0; j < 3; ++j) {
        const auto t = [&](const int32_t* m) {
          int64_t sum = 0;
          for (size_t k = 0; k < 3; ++k) sum = wrap(sum + wrap(int64_t{m[3 * i + k]} * s[3 * k + j]));
          return sum;
        };
        const int64_t rgb = t(c->rgb_matrix), yuv = t(c->yuv_matrix), ybr = t(c->y_bmy_rmy_matrix);
        const size_t n = 3 * i + j;
        ASSERT_EQ(c->rgb_coef[n].lane[5], lane(floor_shift(wrap(floor_shift(wrap(rgb + 128), 8) + 2), 2)));
        ASSERT_EQ(c->yuv2_coef[n].lane[5], lane(floor_shift(wrap(yuv + 512), 10)));
        ASSERT_EQ(c->yuv_coef[n].lane[5], lane(floor_shift(wrap(ybr + 512), 10)));
        ASSERT_EQ(c->unused_coef[n].lane[5], floor_shift(lane(wrap(ybr + 8)), 4));
      }
    }
  }
}

// Every hue and a few saturations and contrasts: the control matrices from the constants, and the sine by its table.
TEST_F(colour, control_matrices_of_every_hue) {
  const int64_t to_ybr[9] = {1225, 2404, 467, -1225, -2404, 3629, 2871, -2404, -467};
  const int64_t to_yuv[9] = {1225, 2404, 467, -707, -1389, 2095, 2095, -1754, -340};
  const int64_t to_rgb[9] = {4096, 0, 5616, 4096, -1376, -2859, 4096, 7094, 0};
  const auto sine = [](int degree) {  // exact at the multiples of 30, where a rounded sine would err
    const long double x = 4096.0L * sinl(3.14159265358979323846264338327950288L * degree / 180.0L);
    const long double nearest = roundl(x);
    return static_cast<int64_t>(fabsl(x - nearest) < 1e-9L ? nearest : truncl(x));
  };
  const auto multiply = [](const int64_t* a, const int64_t* b) {
    std::array<int64_t, 9> r{};
    for (size_t i = 0; i < 3; ++i) {
      for (size_t j = 0; j < 3; ++j) {
        int64_t sum = 2048;
        for (size_t k = 0; k < 3; ++k) sum += a[3 * i + k] * b[3 * k + j];
        r[3 * i + j] = floor_shift(sum, 12);
      }
    }
    return r;
  };
  for (int contrast : {-127, -40, 0, 33, 127}) {
    ASSERT_EQ(ppl_set_contrast_c(c, contrast, nullptr, nullptr), 1);
    const int64_t g = 256 + (contrast < 0 ? contrast : 2 * contrast);
    for (int sat : {0, 1, 100, 256, 511, 512}) {
      for (int hue = 0; hue < 360; ++hue) {
        ASSERT_EQ(ppl_set_sat_hue(c, static_cast<uint32_t>(sat), hue), 1);
        const int64_t co = floor_shift(sine((450 - hue) % 360) * sat, 8),
                      si = floor_shift(sine(hue) * sat, 8);
        const int64_t m[9] = {g * 16, 0, 0, 0, co, -si, 0, si, co};
        const auto ybr = multiply(m, to_ybr), yuv = multiply(m, to_yuv), rgb = multiply(to_rgb, yuv.data());
        for (size_t i = 0; i < 9; ++i) {
          ASSERT_EQ(c->y_bmy_rmy_matrix[i], floor_shift(ybr[i] + 8, 4)) << hue << " " << sat;
          ASSERT_EQ(c->yuv_matrix[i], floor_shift(yuv[i] + 8, 4)) << hue << " " << sat;
          ASSERT_EQ(c->rgb_matrix[i], floor_shift(rgb[i] + 8, 4)) << hue << " " << sat;
        }
        ASSERT_EQ(c->hue_rotation[0], floor_shift(co, 4));
        ASSERT_EQ(c->hue_rotation[1], floor_shift(-si, 4));
        ASSERT_EQ(c->hue_rotation[2], floor_shift(si, 4));
        ASSERT_EQ(c->hue_rotation[3], floor_shift(co, 4));
        ASSERT_EQ(c->rgb_offset, 32768 - 128 * g);
      }
    }
  }
}

}  // namespace
