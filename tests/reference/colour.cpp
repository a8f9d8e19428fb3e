// Colour matrices, contrast and tone.
#include <algorithm>

#include "state.h"
#include "wrapping.h"

namespace ref {

namespace {

constexpr matrix default_sensor_matrix = {389, -15, -120, -118, 509, -137, -19, -229, 503};
constexpr matrix rgb_to_y_bmy_rmy = {1225, 2404, 467, -1225, -2404, 3629, 2871, -2404, -467};
constexpr matrix rgb_to_yuv = {1225, 2404, 467, -707, -1389, 2095, 2095, -1754, -340};
constexpr matrix yuv_to_rgb = {4096, 0, 5616, 4096, -1376, -2859, 4096, 7094, 0};

// 4096 * sin of whole degrees, truncated, from the quarter wave.
int32_t sine(int32_t degrees) {
  static constexpr int16_t quarter[91] = {
      0,    71,   142,  214,  285,  356,  428,  499,  570,  640,  711,  781,  851,  921,  990,  1060,
      1129, 1197, 1265, 1333, 1400, 1467, 1534, 1600, 1665, 1731, 1795, 1859, 1922, 1985, 2048, 2109,
      2170, 2230, 2290, 2349, 2407, 2465, 2521, 2577, 2632, 2687, 2740, 2793, 2845, 2896, 2946, 2995,
      3043, 3091, 3137, 3183, 3227, 3271, 3313, 3355, 3395, 3435, 3473, 3510, 3547, 3582, 3616, 3649,
      3681, 3712, 3741, 3770, 3797, 3823, 3848, 3872, 3895, 3917, 3937, 3956, 3974, 3991, 4006, 4020,
      4033, 4045, 4056, 4065, 4073, 4080, 4086, 4090, 4093, 4095, 4096};
  const int32_t t = degrees <= 180 ? degrees : 360 - degrees;
  const int32_t value = t <= 90 ? quarter[t] : quarter[180 - t];
  return degrees <= 180 ? value : -value;
}

matrix product(const matrix& a, const matrix& b) {
  matrix out{};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      int32_t sum = 0;
      for (int k = 0; k < 3; ++k) sum = add(sum, mul(a[3 * i + k], b[3 * k + j]));
      out[3 * i + j] = sum;
    }
  }
  return out;
}

matrix product_of_12_bit(const matrix& a, const matrix& b) {
  matrix out = product(a, b);
  for (int32_t& value : out) value = add(value, 2048) >> 12;
  return out;
}

matrix to_8_bit(matrix value) {
  for (int32_t& v : value) v = add(v, 8) >> 4;
  return value;
}

int16_t coefficient(int32_t v) {
  if (v < -65536 || v > 65535) v = v > 0 ? 32767 : -32768;
  return low16(v);
}

int16_t offset_lane(int32_t word) {
  return low16(add(add(word, 2) >> 2, 32));
}

}  // namespace

bool state::copy_sensor_matrix(const int32_t* nine_words) {
  if (!nine_words) return true;
  std::copy_n(nine_words, 9, sensor_matrix.begin());
  return rebuild_colour_matrices();
}
bool state::reset_sensor_matrix() {
  return copy_sensor_matrix(default_sensor_matrix.data());
}
bool state::set_sensor_matrix_index_upper_bound(uint32_t value) {
  sensor_matrix_index_upper_bound = value;
  return rebuild_colour_matrices();
}
bool state::reset_sensor_matrix_index_upper_bound() {
  return set_sensor_matrix_index_upper_bound(12);
}

bool state::rebuild_colour_matrices() {
  const matrix t1 = product(rgb_matrix, sensor_matrix);
  const matrix t2 = product(yuv_matrix, sensor_matrix);
  const matrix t3 = product(y_bmy_rmy_matrix, sensor_matrix);
  for (int i = 0; i < 9; ++i) {
    rgb_coef[i] = coefficient(add(add(t1[i], 128) >> 8, 2) >> 2);
    yuv2_coef[i] = coefficient(add(t2[i], 512) >> 10);
    yuv_coef[i] = coefficient(add(t3[i], 512) >> 10);
  }
  luma_offset = offset_lane(y_bmy_rmy_offset);
  yuv2_offset = offset_lane(yuv_offset);
  rgb_offset_lane = offset_lane(rgb_offset);
  return true;
}

bool state::set_sat(uint32_t sat) {
  return set_sat_hue(sat, hue_degree);
}
bool state::set_hue(int32_t hue) {
  return set_sat_hue(nf88_sat, hue);
}
bool state::reset_sat_hue() {
  return set_sat_hue(256, 0);
}
bool state::set_sat_hue(uint32_t sat, int32_t hue) {
  if (sat > 512) return false;
  int32_t h = hue % 360;
  if (h < 0) h += 360;
  nf88_sat = sat;
  hue_degree = h;
  const int32_t icos = sine((90 - h + 360) % 360), isin = sine(h);
  const int32_t c = (icos * static_cast<int32_t>(sat)) >> 8, s = (isin * static_cast<int32_t>(sat)) >> 8;
  const int32_t g = contrast_c < 0 ? contrast_c + 256 : 2 * contrast_c + 256;
  const matrix control = {(g * 4096) >> 8, 0, 0, 0, c, -s, 0, s, c};

  y_bmy_rmy_matrix = to_8_bit(product_of_12_bit(control, rgb_to_y_bmy_rmy));
  const matrix yuv = product_of_12_bit(control, rgb_to_yuv);
  yuv_matrix = to_8_bit(yuv);
  rgb_matrix = to_8_bit(product_of_12_bit(yuv_to_rgb, yuv));
  y_bmy_rmy_offset = yuv_offset = 32768 - 128 * g;
  rgb_offset = ((32768 - 128 * g) * 4096) >> 12;
  return rebuild_colour_matrices();
}

bool state::set_contrast_xy(uint32_t x, uint32_t y) {
  if (x > 127) return false;
  contrast_x = x;
  contrast_y = y;
  struct point {
    int32_t x, y;
  };
  const int32_t px = static_cast<int32_t>(x), py = static_cast<int32_t>(y);
  const point curve_points[4] = {{0, 0}, {px, py}, {255 - px, wrap(int64_t{255} - py)}, {255, 255}};
  const point line_points[2] = {{0, py}, {255, wrap(int64_t{255} - py)}};
  const point* points = px ? curve_points : line_points;
  for (int32_t i = 0; i < 256; ++i) {
    const int32_t p = 16 * i;
    int end = 1;
    while (16 * points[end].x < p) ++end;
    const int32_t ax = 16 * points[end - 1].x, ay = mul(16, points[end - 1].y);
    const int32_t bx = 16 * points[end].x, by = mul(16, points[end].y);
    const int32_t slope = mul(wrap(int64_t{by} - ay), 4096) / (bx - ax);
    contrast_table[i] = static_cast<uint8_t>(add(mul(p - ax, slope) >> 12, ay) >> 4);
  }
  compose_gamma();
  return set_sat_hue(nf88_sat, hue_degree);
}
bool state::set_contrast_c(int32_t c, uint32_t* out_x, uint32_t* out_y) {
  if (c < -127 || c > 127) return false;
  const uint32_t x = c >= 0 ? static_cast<uint32_t>(c) : 0, y = c < 0 ? static_cast<uint32_t>(-c) : 0;
  if (out_x) *out_x = x;
  if (out_y) *out_y = y;
  contrast_c = c;
  return set_contrast_xy(x, y);
}
bool state::copy_contrast_table(const uint8_t* table) {
  if (!table) return true;
  std::copy_n(table, 256, contrast_table.begin());
  compose_gamma();
  return true;
}
bool state::reset_contrast() {
  return set_contrast_c(0, nullptr, nullptr);
}

void state::compose_gamma() {
  for (int i = 0; i < 256; ++i) {
    yuv_contrast_gamma_table[i] = yuv_gamma_table[contrast_table[i]];
    rgb_contrast_gamma_table[i] = rgb_gamma_table[contrast_table[i]];
  }
}

bool state::copy_yuv_gamma_table(const uint8_t* table) {
  if (!table) return true;
  std::copy_n(table, 256, yuv_gamma_table.begin());
  compose_gamma();
  nf20_12_gamma_value = 0;
  return true;
}
bool state::copy_rgb_gamma_table(const uint8_t* table) {
  if (!table) return true;
  std::copy_n(table, 256, rgb_gamma_table.begin());
  compose_gamma();
  nf20_12_gamma_value = 0;
  return true;
}
int32_t state::nf20_12_gamma(int32_t* out_index, int32_t* out_min, int32_t* out_max) const {
  if (out_index) *out_index = 0;
  if (out_min) *out_min = -32;
  if (out_max) *out_max = 32;
  return nf20_12_gamma_value;
}
bool state::set_gamma(int32_t index) {
  if (index < -32 || index > 32) return false;
  copy_yuv_gamma_table(shared_tables().gamma[index + 32].data());
  copy_rgb_gamma_table(shared_tables().gamma[index + 32].data());
  nf20_12_gamma_value = gamma_value(index);
  return true;
}
bool state::reset_gamma() {
  return set_gamma(0);
}

}  // namespace ref
