#include "controls/colour.h"

#include "controls/defaults.h"
#include "controls/vectors.h"

using namespace ppl;

namespace {

// 12 fraction bits, row by row.
constexpr int32_t kRgbToYBmyRmy[9] = {1225, 2404, 467, -1225, -2404, 3629, 2871, -2404, -467};
constexpr int32_t kRgbToYuv[9] = {1225, 2404, 467, -707, -1389, 2095, 2095, -1754, -340};
constexpr int32_t kYuvToRgb[9] = {4096, 0, 5616, 4096, -1376, -2859, 4096, 7094, 0};

constexpr uint32_t kLargestSaturation = 512;
constexpr int32_t kLargestContrast = 128;

// 4096 x sin(i degrees), truncated.
constexpr int16_t kSine[91] = {0,    71,   142,  214,  285,  356,  428,  499,  570,  640,  711,  781,  851,
                               921,  990,  1060, 1129, 1197, 1265, 1333, 1400, 1467, 1534, 1600, 1665, 1731,
                               1795, 1859, 1922, 1985, 2048, 2109, 2170, 2230, 2290, 2349, 2407, 2465, 2521,
                               2577, 2632, 2687, 2740, 2793, 2845, 2896, 2946, 2995, 3043, 3091, 3137, 3183,
                               3227, 3271, 3313, 3355, 3395, 3435, 3473, 3510, 3547, 3582, 3616, 3649, 3681,
                               3712, 3741, 3770, 3797, 3823, 3848, 3872, 3895, 3917, 3937, 3956, 3974, 3991,
                               4006, 4020, 4033, 4045, 4056, 4065, 4073, 4080, 4086, 4090, 4093, 4095, 4096};

int32_t full_circle(int32_t degree) {
  const int32_t d = degree % 360;
  return d < 0 ? d + 360 : d;
}

int32_t sine(int32_t degree) {  // 0 to 359
  const int32_t t = degree <= 180 ? degree : 360 - degree;
  const int32_t magnitude = kSine[t <= 90 ? t : 180 - t];
  return degree <= 180 ? magnitude : -magnitude;
}

// Element i, j of a x b. Products and sums wrap in 32 bits, and stay unsigned until they are shifted.
uint32_t product(const int32_t* a, const int32_t* b, int i, int j) {
  uint32_t sum = 0;
  for (int k = 0; k < 3; ++k) {
    sum += static_cast<uint32_t>(a[3 * i + k]) * static_cast<uint32_t>(b[3 * k + j]);
  }
  return sum;
}

int32_t rounded_shift(uint32_t x, int bits) {
  return static_cast<int32_t>(x + (1u << (bits - 1))) >> bits;
}

// Matrices of 12 fraction bits.
void multiply(int32_t* out, const int32_t* a, const int32_t* b) {
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) out[3 * i + j] = rounded_shift(product(a, b, i, j), 12);
  }
}

void reduce_to_8_bits(int32_t* out, const int32_t* m) {
  for (int i = 0; i < 9; ++i) out[i] = rounded_shift(static_cast<uint32_t>(m[i]), 4);
}

// Tests one bit more than a lane holds: 32768 to 65535 pass and turn negative in the lane.
int32_t clamp17(int32_t v) {
  if (fits_i17(v)) return v;
  return v > 0 ? 32767 : -32768;
}

int32_t offset_lane(int32_t offset) {
  return rounded_shift(static_cast<uint32_t>(offset), 2) + 32;
}

}  // namespace

// From 8 + 8 fraction bits to 6. Group 1 is rounded twice, 2 and 3 once; no frame uses the fourth group.
bool ppl::rebuild_colour_matrices(ppl_context* c) {
  const int32_t* s = c->sensor_matrix;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      const int n = 3 * i + j;
      const int32_t rgb = rounded_shift(product(c->rgb_matrix, s, i, j), 8);
      fill_lanes(&c->rgb_coef[n], clamp17(rounded_shift(static_cast<uint32_t>(rgb), 2)));
      fill_lanes(&c->yuv2_coef[n], clamp17(rounded_shift(product(c->yuv_matrix, s, i, j), 10)));
      const uint32_t y_bmy_rmy = product(c->y_bmy_rmy_matrix, s, i, j);
      fill_lanes(&c->yuv_coef[n], clamp17(rounded_shift(y_bmy_rmy, 10)));
      const int32_t fourth = clamp17(static_cast<int32_t>(y_bmy_rmy + 8u));
      fill_lanes(&c->unused_coef[n], static_cast<int16_t>(fourth) >> 4);
    }
  }
  fill_lanes(&c->luma_offset, offset_lane(c->y_bmy_rmy_offset));
  fill_lanes(&c->yuv2_offset, offset_lane(c->yuv_offset));
  fill_lanes(&c->rgb_offset_vector, offset_lane(c->rgb_offset));
  return true;
}

uint8_t ppl_set_sat_hue(ppl_context* c, uint32_t nf88_sat, int32_t hue_degree) {
  if (nf88_sat > kLargestSaturation) return 0;
  const int32_t hue = full_circle(hue_degree);
  c->nf88_sat = nf88_sat;
  c->hue_degree = hue;
  const int32_t saturation = static_cast<int32_t>(nf88_sat);
  const int32_t cosine_part = (sine(full_circle(90 - hue)) * saturation) >> 8;
  const int32_t sine_part = (sine(hue) * saturation) >> 8;

  const int32_t contrast = c->contrast_c;
  if (contrast < -kLargestContrast || contrast > kLargestContrast) return 0;
  const int32_t gain = 256 + (contrast < 0 ? contrast : 2 * contrast);  // 8.8, twice as steep upward

  const int32_t control[9] = {(gain * 4096) >> 8, 0, 0,         0,          cosine_part,
                              -sine_part,         0, sine_part, cosine_part};
  c->hue_rotation[0] = cosine_part >> 4;
  c->hue_rotation[1] = -sine_part >> 4;
  c->hue_rotation[2] = sine_part >> 4;
  c->hue_rotation[3] = cosine_part >> 4;

  // Contrast turns about mid-grey.
  const int32_t offset = 32768 - 128 * gain;
  int32_t m[9], rgb[9];
  multiply(m, control, kRgbToYBmyRmy);
  reduce_to_8_bits(c->y_bmy_rmy_matrix, m);
  c->y_bmy_rmy_offset = offset;
  multiply(m, control, kRgbToYuv);
  reduce_to_8_bits(c->yuv_matrix, m);
  c->yuv_offset = offset;
  multiply(rgb, kYuvToRgb, m);
  reduce_to_8_bits(c->rgb_matrix, rgb);
  c->rgb_offset = (offset * kYuvToRgb[0]) >> 12;
  return rebuild_colour_matrices(c);
}

uint32_t ppl_nf88_sat(const ppl_context* c) {
  return c->nf88_sat;
}

int32_t ppl_hue_degree(const ppl_context* c) {
  return c->hue_degree;
}

uint8_t ppl_set_sat(ppl_context* c, uint32_t nf88_sat) {
  return ppl_set_sat_hue(c, nf88_sat, c->hue_degree);
}

uint8_t ppl_set_hue(ppl_context* c, int32_t hue_degree) {
  return ppl_set_sat_hue(c, c->nf88_sat, hue_degree);
}

uint8_t ppl_reset_sat_hue(ppl_context* c) {
  return ppl_set_sat_hue(c, kDefaultSaturation, kDefaultHue);
}

void ppl_sensor_matrix(const ppl_context* c, int32_t* nine_words) {
  if (!nine_words) return;
  for (int i = 0; i < 9; ++i) nine_words[i] = c->sensor_matrix[i];
}

uint8_t ppl_copy_sensor_matrix(ppl_context* c, const int32_t* nine_words) {
  for (int i = 0; i < 9 && nine_words; ++i) c->sensor_matrix[i] = nine_words[i];
  return rebuild_colour_matrices(c);
}

uint8_t ppl_reset_sensor_matrix(ppl_context* c) {
  return ppl_copy_sensor_matrix(c, kDefaultSensorMatrix);
}

// The bound is kept for the caller: nothing reads it.
uint32_t ppl_sensor_matrix_index_upper_bound(const ppl_context* c) {
  return c->sensor_matrix_index_upper_bound;
}

uint8_t ppl_set_sensor_matrix_index_upper_bound(ppl_context* c, uint32_t value) {
  c->sensor_matrix_index_upper_bound = value;
  return rebuild_colour_matrices(c);
}

uint8_t ppl_reset_sensor_matrix_index_upper_bound(ppl_context* c) {
  return ppl_set_sensor_matrix_index_upper_bound(c, kDefaultSensorMatrixIndexUpperBound);
}
