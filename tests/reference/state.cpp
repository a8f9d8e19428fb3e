#include "state.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <iterator>

namespace ref {
namespace {

// 32-bit sums and products that wrap.
int32_t wrap(int64_t value) {
  return static_cast<int32_t>(static_cast<uint32_t>(value));
}
int32_t add(int32_t a, int32_t b) {
  return wrap(int64_t{a} + b);
}
int32_t mul(int32_t a, int32_t b) {
  return wrap(int64_t{a} * b);
}
int16_t low16(int64_t value) {
  return static_cast<int16_t>(static_cast<uint16_t>(value));
}
bool fits16(int64_t value) {
  return value >= -32768 && value <= 32767;
}
bool fits17(int64_t value) {
  return value >= -65536 && value <= 65535;
}

constexpr matrix default_sensor_matrix = {389, -15, -120, -118, 509, -137, -19, -229, 503};
constexpr matrix rgb_to_y_bmy_rmy = {1225, 2404, 467, -1225, -2404, 3629, 2871, -2404, -467};
constexpr matrix rgb_to_yuv = {1225, 2404, 467, -707, -1389, 2095, 2095, -1754, -340};
constexpr matrix yuv_to_rgb = {4096, 0, 5616, 4096, -1376, -2859, 4096, 7094, 0};

// Row k of the gamma tables has this offset in its power part.
constexpr double gamma_offsets[65] = {
    0.002, 0.002, 0.003, 0.001, 0.001, 0.001, 0.001, 0.001, 0.001, 0.000, 0.000, 0.001, 0.001,
    0.001, 0.002, 0.000, 0.004, 0.006, 0.008, 0.010, 0.013, 0.017, 0.021, 0.025, 0.031, 0.036,
    0.043, 0.051, 0.059, 0.068, 0.078, 0.090, 0.102, 0.115, 0.129, 0.145, 0.161, 0.179, 0.198,
    0.219, 0.241, 0.264, 0.289, 0.315, 0.344, 0.373, 0.405, 0.438, 0.474, 0.512, 0.551, 0.592,
    0.638, 0.683, 0.731, 0.781, 0.836, 0.896, 0.953, 1.016, 1.080, 1.150, 1.226, 1.298, 1.382};

// The curve of index 0, entry by entry.
constexpr table256 gamma_row_32 = {
    0,   4,   9,   13,  18,  22,  26,  30,  33,  36,  39,  42,  45,  48,  50,  53,  55,  57,  59,  61,
    63,  65,  67,  69,  71,  73,  75,  76,  78,  80,  81,  83,  84,  86,  88,  89,  90,  92,  93,  95,
    96,  98,  99,  100, 101, 103, 104, 105, 107, 108, 109, 110, 111, 113, 114, 115, 116, 117, 118, 119,
    121, 122, 123, 124, 125, 126, 127, 128, 129, 130, 131, 132, 133, 134, 135, 136, 137, 138, 139, 140,
    141, 142, 143, 144, 145, 145, 146, 147, 148, 149, 150, 151, 152, 153, 153, 154, 155, 156, 157, 158,
    158, 159, 160, 161, 162, 163, 163, 164, 165, 166, 167, 167, 168, 169, 170, 170, 171, 172, 173, 173,
    174, 175, 176, 176, 177, 178, 179, 179, 180, 181, 182, 182, 183, 184, 184, 185, 186, 186, 187, 188,
    189, 189, 190, 191, 191, 192, 193, 193, 194, 195, 195, 196, 197, 197, 198, 199, 199, 200, 201, 201,
    202, 202, 203, 204, 204, 205, 206, 206, 207, 208, 208, 209, 209, 210, 211, 211, 212, 212, 213, 214,
    214, 215, 215, 216, 217, 217, 218, 218, 219, 220, 220, 221, 221, 222, 222, 223, 224, 224, 225, 225,
    226, 226, 227, 228, 228, 229, 229, 230, 230, 231, 232, 232, 233, 233, 234, 234, 235, 235, 236, 236,
    237, 237, 238, 239, 239, 240, 240, 241, 241, 242, 242, 243, 243, 244, 244, 245, 245, 246, 246, 247,
    247, 248, 248, 249, 249, 250, 250, 251, 252, 252, 253, 253, 254, 254, 255, 255};

double curve(int row, double u) {
  const double g = gamma_value(row - 32) / 4096.0, a = gamma_offsets[row], t = 0.018;
  const double slope = ((1 + a) * std::pow(t, g) - a) / t;
  return u < t ? slope * u : (1 + a) * std::pow(u, g) - a;
}

uint8_t nearest(double value) {
  return static_cast<uint8_t>(std::clamp(static_cast<int>(std::floor(value + 0.5)), 0, 255));
}

library_tables make_tables() {
  library_tables made{};
  for (int row = 0; row < 65; ++row) {
    for (int x = 0; x < 256; ++x) {
      made.gamma[row][x] = nearest(255 * curve(row, x / 255.0));
      made.gamma_16_235[row][x] = x < 16     ? 16
                                  : x >= 235 ? 235
                                             : nearest(16 + 219 * curve(row, (x - 16) / 219.0));
    }
  }
  made.gamma[32] = gamma_row_32;
  return made;
}

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

int32_t shifted(int32_t size, int32_t d) {
  return d >= 0 ? size >> d : static_cast<int32_t>(static_cast<uint32_t>(size) << -d);
}

bool store_checked(uint32_t& field, uint32_t value, uint32_t limit) {
  if (value > limit) return false;
  field = value;
  return true;
}

bool good_byte_range(int32_t minimum, int32_t maximum) {
  return minimum <= maximum && minimum >= 0 && maximum <= 255;
}

bool set_difference(range& field, state::open_range& open, int32_t minimum, int32_t maximum) {
  if (minimum > maximum) return false;
  field = {minimum, maximum};
  if (!fits16(int64_t{minimum} - 1) || !fits16(int64_t{maximum} + 1)) return false;
  open = {low16(int64_t{minimum} - 1), low16(int64_t{maximum} + 1)};
  return true;
}

bool set_byte_range(range& field, int32_t minimum, int32_t maximum) {
  if (!good_byte_range(minimum, maximum)) return false;
  field = {minimum, maximum};
  return true;
}

bool set_lane(int32_t& field, int16_t& lane, int32_t value) {
  field = value;
  if (!fits16(value)) return false;
  lane = low16(value);
  return true;
}

bool set_percentage(int32_t& field, uint16_t& lane, int32_t value) {
  field = value;
  if (!fits17(value)) return false;
  lane = static_cast<uint16_t>(value >> 2);
  return true;
}

}  // namespace

int32_t gamma_value(int index) {
  return static_cast<int32_t>(4096 * 0.45 * std::exp(-3.0 * index / 64));
}

const library_tables& built_in_tables() {
  static const library_tables tables = make_tables();
  return tables;
}

library_tables& shared_tables() {
  static library_tables tables = built_in_tables();
  return tables;
}

// A slot is zero before its first claim.
state::state() {
  contrast_c = 0;
  contrast_x = contrast_y = nf88_sat = 0;
  hue_degree = 0;
  sensor_matrix = {};
  nf20_12_gamma_value = 0;
  for (table256* t : {&contrast_table, &yuv_contrast_gamma_table, &rgb_contrast_gamma_table, &yuv_gamma_table,
                      &rgb_gamma_table})
    t->fill(0);
  rgb_matrix = yuv_matrix = y_bmy_rmy_matrix = {};
  y_bmy_rmy_offset = yuv_offset = rgb_offset = 0;
  reset_all_controls();
}

bool state::reset_all_controls() {
  reset_decimation();
  reset_quality();
  reset_mean_collection();
  reset_P3_only();
  reset_rgb_dekneel_table();
  reset_rgb_delta();
  reset_medium_filter();
  reset_rgb_gain();
  reset_sensor_matrix();
  reset_sensor_matrix_index_upper_bound();
  reset_quals_rgb_gain();
  reset_qual_min_max();
  reset_qAE_min_max();
  reset_edge_threshold();
  reset_edge_threshold2();
  reset_nf88_edge_enhance_factor();
  reset_noise_filter_G_12T_threshold();
  reset_noise_filter_R_8T_threshold();
  reset_noise_filter_B_8T_threshold();
  reset_CFA_T0_threshold();
  reset_CFA_T1_threshold();
  reset_intl_3T_threshold();
  reset_sat_hue();
  reset_contrast();
  reset_gamma();
  reset_mirrors();
  reset_optical_black_b_gb_gr_r();
  reset_GbGr_correction();
  return reset_lens_correction();
}

bool state::set_quality(uint32_t value) {
  return store_checked(quality, value, 15);
}
bool state::reset_quality() {
  return set_quality(15);
}
bool state::set_mean_collection(uint8_t value) {
  return mean_collection = value, true;
}
bool state::reset_mean_collection() {
  return set_mean_collection(1);
}
bool state::set_P3_only(uint8_t value) {
  return P3_only = value, true;
}
bool state::reset_P3_only() {
  return set_P3_only(0);
}
bool state::set_sensor_type(uint32_t code) const {
  return code == 0x5754 || code == 0x5948 || code == 0x42564F || code == 0x7544F4D;
}
bool state::set_h_mirror(uint8_t value) {
  return h_mirror = value, true;
}
bool state::set_v_mirror(uint8_t value) {
  return v_mirror = value, true;
}
bool state::reset_mirrors() {
  return h_mirror = v_mirror = 0, true;
}

void state::size_output(bool with_black_lines) {
  out_width = shifted(frame_width, decimation);
  out_half_width = out_width / 2;
  out_height = shifted(frame_height, decimation);
  if (with_black_lines)
    out_height = add(add(out_height, decimation_top_black_lines), decimation_bottom_black_lines);
  out_pixels = mul(out_width, out_height);
  out_quarter_pixels = out_pixels / 4;
}

bool state::new_frame_size(uint32_t width, uint32_t height, uint32_t stride) {
  if (width > 2048 || height > 2048 || stride > 2048 || 4 * width + 48 > 8192 || 6 * width + 64 > 16384)
    return false;
  frame_width = static_cast<int32_t>(width);
  frame_height = static_cast<int32_t>(height);
  frame_stride = static_cast<int32_t>(stride);
  frame_pixels = frame_width * frame_height;
  frame_pixels_half = frame_pixels / 2;
  frame_pixels_quarter = frame_pixels / 4;
  frame_pixels_eighth = frame_pixels / 8;
  size_output(false);

  cell_tiles = frame_width / 16 / 8;
  cell_row_pairs = frame_height / 2 / 6;
  grid_tiles = 8 * cell_tiles;
  grid_row_pairs = 6 * cell_row_pairs;
  const uint32_t n = 32 * static_cast<uint32_t>(std::max(cell_tiles * cell_row_pairs, 1));
  red_divisor = blue_divisor = 0x100000 / (n >> 2);
  green_divisor = 0x100000 / (n >> 1);

  tiles_per_row = frame_width / 16;
  row_pairs = frame_height / 2;
  struct border {
    int entry, columns, rows;
  };
  constexpr border borders[] = {{0, 64, 12},  {1, 64, 12},  {2, 64, 12},  {3, 48, 12},  {4, 48, 12},
                                {5, 32, 8},   {10, 0, 4},   {11, 64, 12}, {12, 48, 12}, {13, 48, 12},
                                {14, 64, 12}, {15, 80, 16}, {16, 64, 16}, {17, 48, 12}};
  stats_scale_table[6] = stats_scale_table[7] = 1024;
  for (const border& b : borders) {
    int32_t factor = 1024;
    if (frame_width >= 81 && frame_height >= 17) {
      const int32_t divisor = (frame_height - b.rows) * (frame_width - b.columns) / 4;
      factor = static_cast<int32_t>(static_cast<uint32_t>(frame_pixels) << 8) / std::max(divisor, 1);
    }
    stats_scale_table[b.entry] = factor;
  }
  return true;
}

bool state::set_decimation(int32_t d, int32_t top, int32_t bottom) {
  if (d == decimation && top == decimation_top_black_lines && bottom == decimation_bottom_black_lines)
    return true;
  if (d < -1 || d > 2) return false;
  decimation = d;
  decimation_top_black_lines = top;
  decimation_bottom_black_lines = bottom;
  size_output(true);
  return true;
}

void state::reset_decimation() {
  set_decimation(0, 0, 0);
}

bool state::new_frame_sizes(uint32_t in_width, uint32_t in_height, uint32_t wanted_width,
                            uint32_t wanted_height, uint8_t validate) {
  int32_t d = 0, top = 0, bottom = 0;
  if (validate) {
    const auto input = [&](uint32_t w, uint32_t h) { return in_width == w && in_height == h; };
    const auto wanted = [&](uint32_t w, uint32_t h) { return wanted_width == w && wanted_height == h; };
    const auto black_lines = [&](uint32_t picture_height) {
      const int32_t total = static_cast<int32_t>(wanted_height - picture_height);
      top = total / 2;
      bottom = total - top;
    };
    if (input(320, 240) && wanted(160, 120)) {
      d = 1;
    } else if (input(320, 240) && wanted(320, 240)) {
      d = 0;
    } else if (input(480, 480) && (wanted(480, 480) || wanted(480, 576))) {
      black_lines(480);
    } else if (input(480, 576) && wanted(480, 576)) {
      d = 0;
    } else if (input(640, 480) && wanted(160, 120)) {
      d = 2;
    } else if (input(640, 480) && wanted(320, 240)) {
      d = 1;
    } else if (input(640, 480) && (wanted(352, 240) || wanted(352, 288) || wanted(640, 480))) {
      d = 0;
    } else if (input(640, 480) && wanted(1280, 960)) {
      d = -1;
    } else if ((input(704, 480) || input(704, 576)) &&
               (wanted_width == 176 || wanted_width == 352 || wanted_width == 704)) {
      d = wanted_width == 176 ? 2 : wanted_width == 352 ? 1 : 0;
      if (wanted_height < in_height >> d) return false;
      black_lines(in_height >> d);
    } else if ((input(720, 480) || input(720, 576)) && wanted_width == 720) {
      if (wanted_height < in_height) return false;
      black_lines(in_height);
    } else if (input(1280, 1024) && wanted(1280, 1024)) {
      d = 0;
    } else {
      return false;
    }
  }
  if (!new_frame_size(in_width, in_height, in_width)) return false;
  return set_decimation(d, top, bottom);
}

bool state::set_optical_black_b_gb_gr_r(uint32_t b, uint32_t gb, uint32_t gr, uint32_t r) {
  optical_black_b_gb_gr_r = {b, gb, gr, r};
  if (b > 255 || gb > 255 || gr > 255 || r > 255) return false;
  black_b_gb = {static_cast<uint8_t>(b), static_cast<uint8_t>(gb)};
  black_gr_r = {static_cast<uint8_t>(gr), static_cast<uint8_t>(r)};
  return true;
}
bool state::reset_optical_black_b_gb_gr_r() {
  return set_optical_black_b_gb_gr_r(0, 0, 0, 0);
}

bool state::copy_r_dekneel_table(const uint8_t* table) {
  std::copy_n(table, 256, r_dekneel_table.begin());
  return false;
}
bool state::copy_g_dekneel_table(const uint8_t* table) {
  std::copy_n(table, 256, g_dekneel_table.begin());
  return false;
}
bool state::copy_b_dekneel_table(const uint8_t* table) {
  std::copy_n(table, 256, b_dekneel_table.begin());
  return false;
}
bool state::reset_rgb_dekneel_table() {
  for (int i = 0; i < 256; ++i)
    r_dekneel_table[i] = g_dekneel_table[i] = b_dekneel_table[i] = static_cast<uint8_t>(i);
  return true;
}

// A single colour tests only itself, but rebuilds from both stored colours of its vectors.
bool state::set_rgb_delta(int32_t r, int32_t g, int32_t b) {
  r_delta = r;
  g_delta = g;
  b_delta = b;
  if (!fits16(r) || !fits16(g) || !fits16(b)) return false;
  delta_b_g = {low16(b), low16(g)};
  delta_g_r = {low16(g), low16(r)};
  return true;
}
bool state::set_r_delta(int32_t value) {
  r_delta = value;
  if (!fits16(value)) return false;
  delta_g_r = {low16(g_delta), low16(r_delta)};
  return true;
}
bool state::set_g_delta(int32_t value) {
  g_delta = value;
  if (!fits16(value)) return false;
  delta_b_g = {low16(b_delta), low16(g_delta)};
  delta_g_r = {low16(g_delta), low16(r_delta)};
  return true;
}
bool state::set_b_delta(int32_t value) {
  b_delta = value;
  if (!fits16(value)) return false;
  delta_b_g = {low16(b_delta), low16(g_delta)};
  return true;
}
bool state::reset_rgb_delta() {
  return set_rgb_delta(0, 0, 0);
}

static uint16_t gain_lane(uint32_t gain) {
  return static_cast<uint16_t>(gain >> 3);
}
bool state::set_rgb_gain(uint32_t r, uint32_t g, uint32_t b) {
  nf88_r_gain = r;
  nf88_g_gain = g;
  nf88_b_gain = b;
  if (r > 2047 || g > 2047 || b > 2047) return false;
  gain_b_g = {gain_lane(b), gain_lane(g)};
  gain_g_r = {gain_lane(g), gain_lane(r)};
  return true;
}
bool state::set_r_gain(uint32_t value) {
  nf88_r_gain = value;
  if (value > 2047) return false;
  gain_g_r = {gain_lane(nf88_g_gain), gain_lane(nf88_r_gain)};
  return true;
}
bool state::set_g_gain(uint32_t value) {
  nf88_g_gain = value;
  if (value > 2047) return false;
  gain_b_g = {gain_lane(nf88_b_gain), gain_lane(nf88_g_gain)};
  gain_g_r = {gain_lane(nf88_g_gain), gain_lane(nf88_r_gain)};
  return true;
}
bool state::set_b_gain(uint32_t value) {
  nf88_b_gain = value;
  if (value > 2047) return false;
  gain_b_g = {gain_lane(nf88_b_gain), gain_lane(nf88_g_gain)};
  return true;
}
bool state::reset_rgb_gain() {
  return set_rgb_gain(256, 256, 256);
}

// The quals gains reach nothing: only the fields are kept.
bool state::set_quals_rgb_gain(uint32_t r, uint32_t g, uint32_t b) {
  nf88_quals_r_gain = r;
  nf88_quals_g_gain = g;
  nf88_quals_b_gain = b;
  return false;
}
bool state::set_quals_r_gain(uint32_t value) {
  return nf88_quals_r_gain = value, false;
}
bool state::set_quals_g_gain(uint32_t value) {
  return nf88_quals_g_gain = value, false;
}
bool state::set_quals_b_gain(uint32_t value) {
  return nf88_quals_b_gain = value, false;
}
bool state::reset_quals_rgb_gain() {
  return set_quals_rgb_gain(256, 256, 256), true;
}

bool state::copy_sensor_matrix(const int32_t* nine_words) {
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

bool state::enable_medium_filter() {
  return medium_filter_enabled = 1, true;
}
bool state::disable_medium_filter() {
  return medium_filter_enabled = 0, true;
}
bool state::reset_medium_filter() {
  set_medium_filter_diff_threshold(24);
  set_medium_filter_hot_pixel_threshold(240);
  set_medium_filter_dead_pixel_threshold(16);
  set_nf88_medium_filter_hot_pixel_threshold_percentage(80);
  set_nf88_medium_filter_dead_pixel_threshold_percentage(48);
  return disable_medium_filter();
}
bool state::set_medium_filter_diff_threshold(int32_t value) {
  return set_lane(medium_filter_diff_threshold, medium_diff, value);
}
bool state::set_medium_filter_hot_pixel_threshold(int32_t value) {
  return set_lane(medium_filter_hot_pixel_threshold, medium_hot, value);
}
bool state::set_medium_filter_dead_pixel_threshold(int32_t value) {
  return set_lane(medium_filter_dead_pixel_threshold, medium_dead, value);
}
bool state::set_nf88_medium_filter_hot_pixel_threshold_percentage(int32_t value) {
  return set_percentage(nf88_medium_filter_hot_pixel_threshold_percentage, medium_hot_percent, value);
}
bool state::set_nf88_medium_filter_dead_pixel_threshold_percentage(int32_t value) {
  return set_percentage(nf88_medium_filter_dead_pixel_threshold_percentage, medium_dead_percent, value);
}

bool state::set_qual_BmGb_min_max(int32_t minimum, int32_t maximum) {
  return set_difference(qual_BmGb, qual_BmGb_open, minimum, maximum);
}
bool state::set_qual_GrmR_min_max(int32_t minimum, int32_t maximum) {
  return set_difference(qual_GrmR, qual_GrmR_open, minimum, maximum);
}
bool state::set_qual_BmGb_p_GrmR_min_max(int32_t minimum, int32_t maximum) {
  return set_difference(qual_BmGb_p_GrmR, qual_sum_open, minimum, maximum);
}
bool state::set_qual_BmGb_m_GrmR_min_max(int32_t minimum, int32_t maximum) {
  return set_difference(qual_BmGb_m_GrmR, qual_diff_open, minimum, maximum);
}
bool state::set_qual_R_min_max(int32_t minimum, int32_t maximum) {
  return set_byte_range(qual_R, minimum, maximum);
}
bool state::set_qual_G_min_max(int32_t minimum, int32_t maximum) {
  return set_byte_range(qual_G, minimum, maximum);
}
bool state::set_qual_B_min_max(int32_t minimum, int32_t maximum) {
  return set_byte_range(qual_B, minimum, maximum);
}
bool state::set_qual_RGB_min_max(int32_t r_min, int32_t r_max, int32_t g_min, int32_t g_max, int32_t b_min,
                                 int32_t b_max) {
  if (!good_byte_range(r_min, r_max) || !good_byte_range(g_min, g_max) || !good_byte_range(b_min, b_max))
    return false;
  qual_R = {r_min, r_max};
  qual_G = {g_min, g_max};
  qual_B = {b_min, b_max};
  return true;
}
bool state::set_qAE_RGB_min_max(int32_t minimum, int32_t maximum) {
  return set_byte_range(qAE_RGB, minimum, maximum);
}
bool state::reset_qual_min_max() {
  set_qual_BmGb_min_max(-25, 25);
  set_qual_GrmR_min_max(-25, 25);
  set_qual_BmGb_p_GrmR_min_max(-30, 30);
  set_qual_BmGb_m_GrmR_min_max(-30, 30);
  return set_qual_RGB_min_max(0, 255, 0, 255, 0, 255);
}
bool state::reset_qAE_min_max() {
  return set_qAE_RGB_min_max(0, 255);
}

bool state::set_edge_threshold(uint32_t value) {
  return store_checked(edge_threshold, value, 1530);
}
bool state::reset_edge_threshold() {
  return set_edge_threshold(100);
}
bool state::set_edge_threshold2(uint32_t value) {
  return store_checked(edge_threshold2, value, 1530);
}
bool state::reset_edge_threshold2() {
  return set_edge_threshold2(1530);
}
bool state::set_nf88_edge_enhance_factor(uint32_t value) {
  return store_checked(nf88_edge_enhance_factor, value, 256);
}
bool state::reset_nf88_edge_enhance_factor() {
  return set_nf88_edge_enhance_factor(32);
}
bool state::set_noise_filter_G_12T_threshold(uint32_t value) {
  return store_checked(noise_filter_G_12T_threshold, value, 3060);
}
bool state::reset_noise_filter_G_12T_threshold() {
  return set_noise_filter_G_12T_threshold(60);
}
bool state::set_noise_filter_R_8T_threshold(uint32_t value) {
  return store_checked(noise_filter_R_8T_threshold, value, 2040);
}
bool state::reset_noise_filter_R_8T_threshold() {
  return set_noise_filter_R_8T_threshold(40);
}
bool state::set_noise_filter_B_8T_threshold(uint32_t value) {
  return store_checked(noise_filter_B_8T_threshold, value, 2040);
}
bool state::reset_noise_filter_B_8T_threshold() {
  return set_noise_filter_B_8T_threshold(40);
}
bool state::set_CFA_T0_threshold(uint32_t value) {
  return store_checked(CFA_T0_threshold, value, 255);
}
bool state::reset_CFA_T0_threshold() {
  return set_CFA_T0_threshold(10);
}
bool state::set_CFA_T1_threshold(uint32_t value) {
  return store_checked(CFA_T1_threshold, value, 63);
}
bool state::reset_CFA_T1_threshold() {
  return set_CFA_T1_threshold(15);
}
bool state::set_intl_3T_threshold(uint32_t value) {
  return store_checked(intl_3T_threshold, value, 765);
}
bool state::reset_intl_3T_threshold() {
  return set_intl_3T_threshold(50);
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
  std::copy_n(table, 256, yuv_gamma_table.begin());
  compose_gamma();
  nf20_12_gamma_value = 0;
  return true;
}
bool state::copy_rgb_gamma_table(const uint8_t* table) {
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

bool state::enable_GbGr_correction() {
  return GbGr_correction_enabled = 1, true;
}
bool state::disable_GbGr_correction() {
  return GbGr_correction_enabled = 0, true;
}
bool state::set_GbGr_correction_diff_threshold(int32_t value) {
  return set_lane(GbGr_correction_diff_threshold, GbGr_diff, value);
}
bool state::reset_GbGr_correction() {
  set_GbGr_correction_diff_threshold(10);
  return disable_GbGr_correction();
}

bool state::enable_lens_correction() {
  return lens_correction_enabled = 1, true;
}
bool state::disable_lens_correction() {
  return lens_correction_enabled = 0, true;
}
bool state::set_lens_correction(int32_t width, int32_t height, int32_t origin_x, int32_t origin_y,
                                uint16_t* table, int32_t table_size, int32_t f1, int32_t f1_rshift_count,
                                int32_t f2, int32_t f2_rshift_count) {
  lens_correction_f1 = f1;
  lens_correction_f1_rshift_count = f1_rshift_count;
  lens_correction_f2 = f2;
  lens_correction_f2_rshift_count = f2_rshift_count;
  lens_correction_height = height;
  lens_correction_origin_y = origin_y;
  lens_correction_width = width;
  lens_correction_origin_x = origin_x;
  lens_correction_table = table;
  lens_correction_table_size = table_size;
  const int32_t largest_x = wrap(int64_t{width} - origin_x - 1), smallest_x = wrap(-int64_t{origin_x});
  const int32_t largest_y = std::max(origin_y, wrap(int64_t{height} - origin_y));
  lens_correction_needed_size = mul(mul(add(largest_y, 1), width), 2);
  if (!table || table_size < lens_correction_needed_size) {
    lens_correction_table = nullptr;
    lens_correction_table_size = 0;
    return false;
  }
  const int64_t entries = table_size < 0 ? 0 : table_size / 2;
  const int f1_shift = (f1_rshift_count - 13) & 63, f2_shift = (f2_rshift_count - 13) & 63;
  int64_t entry = 0;
  for (int64_t y = 0; y <= largest_y && smallest_x <= largest_x && entry < entries; ++y) {
    for (int64_t x = smallest_x; x <= largest_x && entry < entries; ++x) {
      const uint64_t r = static_cast<uint64_t>(int64_t{wrap(x * x + y * y)});
      const int64_t a = static_cast<int64_t>(static_cast<uint64_t>(int64_t{f1}) * r) >> f1_shift;
      const int64_t b = static_cast<int64_t>(static_cast<uint64_t>(int64_t{f2}) * r * r) >> f2_shift;
      table[entry++] = static_cast<uint16_t>(static_cast<uint64_t>(a) - static_cast<uint64_t>(b) + 8192);
    }
  }
  return true;
}
bool state::reset_lens_correction() {
  disable_lens_correction();
  return set_lens_correction(640, 480, 320, 240, nullptr, 0, 16, 24, 16, 44);
}

void state::clear_statistics() {
  sub_window_means = {};
  all_windows_means = whole_frame_means = qAE_means = qual_means = {};
  r_histogram = g_histogram = b_histogram = {};
  qAE_count = qual_count = 0;
}

namespace {

uint32_t quotient(uint64_t dividend, uint32_t divisor) {
  return divisor ? static_cast<uint32_t>(dividend / divisor) : 0;
}

// Sums over n cells of one R, two G and one B sample to means.
void finish_cells(rgb_words& means, uint32_t& n, uint32_t scale) {
  if (n == 0) return;
  means[0] = quotient((uint64_t{means[0]} << 8) + (n >> 1), n);
  means[1] = quotient((uint64_t{means[1]} << 8) + n, 2 * n);
  means[2] = quotient((uint64_t{means[2]} << 8) + (n >> 1), n);
  n = (n * scale) >> 8;
}

}  // namespace

void state::roll_up() {
  const uint32_t scale = static_cast<uint32_t>(stats_scale);
  const uint32_t divisors[3] = {red_divisor, green_divisor, blue_divisor};
  for (int cell = 0; cell < 49; ++cell) {
    for (int colour = 0; colour < 3; ++colour) {
      uint32_t& value = sub_window_means[cell][colour];
      const uint32_t t = (value * scale) >> 8;
      whole_frame_means[colour] += t;
      value = (t * divisors[colour]) >> 12;
      if (cell < 48) all_windows_means[colour] += value;
    }
  }
  for (uint32_t& value : all_windows_means) value = (value * 341) >> 14;
  const uint32_t half = static_cast<uint32_t>(frame_pixels_half),
                 quarter = static_cast<uint32_t>(frame_pixels_quarter);
  const uint32_t eighth = static_cast<uint32_t>(frame_pixels_eighth);
  whole_frame_means[0] = quotient((uint64_t{whole_frame_means[0]} << 8) + eighth, quarter);
  whole_frame_means[1] = quotient((uint64_t{whole_frame_means[1]} << 8) + quarter, half);
  whole_frame_means[2] = quotient((uint64_t{whole_frame_means[2]} << 8) + eighth, quarter);
  finish_cells(qAE_means, qAE_count, scale);
  finish_cells(qual_means, qual_count, scale);
}

constexpr int central_cells[] = {19, 20, 27, 28};
constexpr int ring_cells[] = {9, 10, 11, 12, 13, 14, 17, 18, 21, 22, 25, 26, 29, 30, 33, 34, 35, 36, 37, 38};

rgb_words state::rgb_means_whole_frame_4pts() const {
  if (quality == 3) return whole_frame_means;
  rgb_words result{};
  for (int colour = 0; colour < 3; ++colour) {
    for (int cell : central_cells) result[colour] += sub_window_means[cell][colour];
    result[colour] >>= 2;
  }
  return result;
}

rgb_words state::weighted_mean(int32_t k) const {
  if (quality == 3) return whole_frame_means;
  rgb_words result{};
  for (int colour = 0; colour < 3; ++colour) {
    uint32_t central = 0, ring = 0;
    for (int cell : central_cells) central += sub_window_means[cell][colour];
    for (int cell : ring_cells) ring += sub_window_means[cell][colour];
    const uint32_t sum = 48 * all_windows_means[colour] + static_cast<uint32_t>(k) * central + ring;
    result[colour] = static_cast<uint32_t>(static_cast<int32_t>(sum) / (4 * k + 68));
  }
  return result;
}
rgb_words state::rgb_means_whole_frame_central4() const {
  return weighted_mean(3);
}
rgb_words state::rgb_means_whole_frame_central8() const {
  return weighted_mean(7);
}
rgb_words state::rgb_means_whole_frame_central16() const {
  return weighted_mean(15);
}

}  // namespace ref
