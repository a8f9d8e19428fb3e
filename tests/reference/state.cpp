#include "state.h"

#include <algorithm>

#include "wrapping.h"

namespace ref {

namespace {

bool fits16(int64_t value) {
  return value >= -32768 && value <= 32767;
}
bool fits17(int64_t value) {
  return value >= -65536 && value <= 65535;
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
  if (table) std::copy_n(table, 256, r_dekneel_table.begin());
  return false;
}
bool state::copy_g_dekneel_table(const uint8_t* table) {
  if (table) std::copy_n(table, 256, g_dekneel_table.begin());
  return false;
}
bool state::copy_b_dekneel_table(const uint8_t* table) {
  if (table) std::copy_n(table, 256, b_dekneel_table.begin());
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
      const int32_t square = add(mul(wrap(x), wrap(x)), mul(wrap(y), wrap(y)));
      const uint64_t r = static_cast<uint64_t>(int64_t{square});
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

}  // namespace ref
