// One slot of the plain reference: every control, what the controls are turned into, geometry, statistics and what
// one frame leaves behind for the next. A field bears the name of its getter without the prefix; a function that of
// the exported function without the prefix, with the same arguments and the same result.
//
// A fresh object is a slot that was never used, just claimed. reset_all_controls() on a used one is a new claim.
#pragma once

#include <array>
#include <cstdint>

namespace ref {

using table256 = std::array<uint8_t, 256>;
using rgb_words = std::array<uint32_t, 3>;  // R, G, B
using matrix = std::array<int32_t, 9>;      // row by row

// Shared by all slots and replaceable by a caller.
struct library_tables {
  std::array<table256, 65> gamma;         // row k belongs to gamma index k - 32
  std::array<table256, 65> gamma_16_235;  // the same curves in studio range
};
const library_tables& built_in_tables();
library_tables& shared_tables();
int32_t gamma_value(int index);  // exponent of gamma index -32 .. 32, 20.12

struct range {
  int32_t minimum, maximum;
};

struct state {
  state();

  // Controls as stored, refused values included.
  uint32_t quality;
  uint8_t mean_collection, P3_only, h_mirror, v_mirror;
  int32_t decimation = 0, decimation_top_black_lines = 0, decimation_bottom_black_lines = 0;
  std::array<uint32_t, 4> optical_black_b_gb_gr_r;
  table256 r_dekneel_table, g_dekneel_table, b_dekneel_table;
  int32_t r_delta, g_delta, b_delta;
  uint32_t nf88_r_gain, nf88_g_gain, nf88_b_gain;
  uint32_t nf88_quals_r_gain, nf88_quals_g_gain, nf88_quals_b_gain;
  matrix sensor_matrix;
  uint32_t sensor_matrix_index_upper_bound;
  uint8_t medium_filter_enabled;
  int32_t medium_filter_diff_threshold, medium_filter_hot_pixel_threshold, medium_filter_dead_pixel_threshold;
  int32_t nf88_medium_filter_hot_pixel_threshold_percentage,
      nf88_medium_filter_dead_pixel_threshold_percentage;
  range qual_BmGb, qual_GrmR, qual_BmGb_p_GrmR, qual_BmGb_m_GrmR, qual_R, qual_G, qual_B, qAE_RGB;
  uint32_t edge_threshold, edge_threshold2, nf88_edge_enhance_factor;
  uint32_t noise_filter_G_12T_threshold, noise_filter_R_8T_threshold, noise_filter_B_8T_threshold;
  uint32_t CFA_T0_threshold, CFA_T1_threshold, intl_3T_threshold;
  int32_t contrast_c;
  uint32_t contrast_x, contrast_y;
  uint32_t nf88_sat;
  int32_t hue_degree;
  table256 contrast_table, yuv_contrast_gamma_table, rgb_contrast_gamma_table, yuv_gamma_table,
      rgb_gamma_table;
  int32_t nf20_12_gamma_value;
  uint8_t GbGr_correction_enabled;
  int32_t GbGr_correction_diff_threshold;
  uint8_t lens_correction_enabled;
  int32_t lens_correction_width, lens_correction_height, lens_correction_origin_x, lens_correction_origin_y;
  uint16_t* lens_correction_table;                                  // the caller's memory
  int32_t lens_correction_table_size, lens_correction_needed_size;  // bytes
  int32_t lens_correction_f1, lens_correction_f1_rshift_count, lens_correction_f2,
      lens_correction_f2_rshift_count;

  // What the controls are turned into. These keep their old contents when a value is refused. Lanes are those of an
  // even and an odd column.
  std::array<uint8_t, 2> black_b_gb, black_gr_r;
  std::array<uint16_t, 2> gain_b_g, gain_g_r;  // 5 fraction bits
  std::array<int16_t, 2> delta_b_g, delta_g_r;
  int16_t medium_diff, medium_hot, medium_dead;
  uint16_t medium_hot_percent, medium_dead_percent;  // 6 fraction bits
  int16_t GbGr_diff;
  struct open_range {
    int16_t low, high;  // exclusive
  } qual_BmGb_open, qual_GrmR_open, qual_sum_open, qual_diff_open;
  matrix rgb_matrix, yuv_matrix, y_bmy_rmy_matrix;  // 8 fraction bits
  int32_t y_bmy_rmy_offset, yuv_offset, rgb_offset;
  std::array<int16_t, 9> rgb_coef, yuv2_coef,
      yuv_coef;  // times the sensor matrix; rows of R, G, B; 6 fraction bits
  int16_t rgb_offset_lane, yuv2_offset, luma_offset;  // for the shift by 6, rounding included

  // Geometry.
  int32_t frame_width = 0, frame_height = 0, frame_stride = 0;
  int32_t frame_pixels = 0, frame_pixels_half = 0, frame_pixels_quarter = 0, frame_pixels_eighth = 0;
  int32_t out_width = 0, out_height = 0, out_half_width = 0, out_pixels = 0, out_quarter_pixels = 0;
  int32_t tiles_per_row = 0, row_pairs = 0;
  int32_t cell_tiles = 0, cell_row_pairs = 0, grid_tiles = 0, grid_row_pairs = 0;
  uint32_t red_divisor = 0, green_divisor = 0, blue_divisor = 0;
  std::array<int32_t, 18> stats_scale_table{};

  // Statistics: sums during a frame, means after roll_up().
  std::array<rgb_words, 49> sub_window_means{};  // row by row of the 8 x 6 grid; the last is the outside cell
  rgb_words all_windows_means{}, whole_frame_means{}, qAE_means{}, qual_means{};
  uint32_t qAE_count = 0, qual_count = 0;
  std::array<uint32_t, 256> r_histogram{}, g_histogram{}, b_histogram{};
  int32_t stats_scale = 0;

  // What outlives a frame, and the slot's release.
  uint32_t n_frame = 0;
  int32_t mark_position = 0;
  std::array<uint8_t, 16> stat_even_row{},
      stat_odd_row{};               // black-corrected samples of the last even inner tile
  std::array<bool, 8> flat_mask{};  // per column pair
  std::array<uint8_t, 8> flat_r{}, flat_g{}, flat_b{};

  // Frame behaviour and geometry.
  bool reset_all_controls();
  bool set_quality(uint32_t value);
  bool reset_quality();
  bool set_mean_collection(uint8_t value);
  bool reset_mean_collection();
  bool set_P3_only(uint8_t value);
  bool reset_P3_only();
  bool set_sensor_type(uint32_t code) const;
  bool set_h_mirror(uint8_t value);
  bool set_v_mirror(uint8_t value);
  bool reset_mirrors();
  bool new_frame_size(uint32_t width, uint32_t height, uint32_t stride);
  bool new_frame_sizes(uint32_t in_width, uint32_t in_height, uint32_t wanted_width, uint32_t wanted_height,
                       uint8_t validate);
  bool set_decimation(int32_t d, int32_t top, int32_t bottom);
  void reset_decimation();

  // Sensor front end.
  bool set_optical_black_b_gb_gr_r(uint32_t b, uint32_t gb, uint32_t gr, uint32_t r);
  bool reset_optical_black_b_gb_gr_r();
  bool copy_r_dekneel_table(const uint8_t* table);
  bool copy_g_dekneel_table(const uint8_t* table);
  bool copy_b_dekneel_table(const uint8_t* table);
  bool reset_rgb_dekneel_table();
  bool set_rgb_delta(int32_t r, int32_t g, int32_t b);
  bool set_r_delta(int32_t value);
  bool set_g_delta(int32_t value);
  bool set_b_delta(int32_t value);
  bool reset_rgb_delta();
  bool set_rgb_gain(uint32_t r, uint32_t g, uint32_t b);
  bool set_r_gain(uint32_t value);
  bool set_g_gain(uint32_t value);
  bool set_b_gain(uint32_t value);
  bool reset_rgb_gain();
  bool set_quals_rgb_gain(uint32_t r, uint32_t g, uint32_t b);
  bool set_quals_r_gain(uint32_t value);
  bool set_quals_g_gain(uint32_t value);
  bool set_quals_b_gain(uint32_t value);
  bool reset_quals_rgb_gain();
  bool copy_sensor_matrix(const int32_t* nine_words);
  bool reset_sensor_matrix();
  bool set_sensor_matrix_index_upper_bound(uint32_t value);
  bool reset_sensor_matrix_index_upper_bound();

  // Medium filter.
  bool enable_medium_filter();
  bool disable_medium_filter();
  bool reset_medium_filter();
  bool set_medium_filter_diff_threshold(int32_t value);
  bool set_medium_filter_hot_pixel_threshold(int32_t value);
  bool set_medium_filter_dead_pixel_threshold(int32_t value);
  bool set_nf88_medium_filter_hot_pixel_threshold_percentage(int32_t value);
  bool set_nf88_medium_filter_dead_pixel_threshold_percentage(int32_t value);

  // Quality ranges.
  bool set_qual_BmGb_min_max(int32_t minimum, int32_t maximum);
  bool set_qual_GrmR_min_max(int32_t minimum, int32_t maximum);
  bool set_qual_BmGb_p_GrmR_min_max(int32_t minimum, int32_t maximum);
  bool set_qual_BmGb_m_GrmR_min_max(int32_t minimum, int32_t maximum);
  bool set_qual_R_min_max(int32_t minimum, int32_t maximum);
  bool set_qual_G_min_max(int32_t minimum, int32_t maximum);
  bool set_qual_B_min_max(int32_t minimum, int32_t maximum);
  bool set_qual_RGB_min_max(int32_t r_min, int32_t r_max, int32_t g_min, int32_t g_max, int32_t b_min,
                            int32_t b_max);
  bool set_qAE_RGB_min_max(int32_t minimum, int32_t maximum);
  bool reset_qual_min_max();
  bool reset_qAE_min_max();

  // Filter thresholds.
  bool set_edge_threshold(uint32_t value);
  bool reset_edge_threshold();
  bool set_edge_threshold2(uint32_t value);
  bool reset_edge_threshold2();
  bool set_nf88_edge_enhance_factor(uint32_t value);
  bool reset_nf88_edge_enhance_factor();
  bool set_noise_filter_G_12T_threshold(uint32_t value);
  bool reset_noise_filter_G_12T_threshold();
  bool set_noise_filter_R_8T_threshold(uint32_t value);
  bool reset_noise_filter_R_8T_threshold();
  bool set_noise_filter_B_8T_threshold(uint32_t value);
  bool reset_noise_filter_B_8T_threshold();
  bool set_CFA_T0_threshold(uint32_t value);
  bool reset_CFA_T0_threshold();
  bool set_CFA_T1_threshold(uint32_t value);
  bool reset_CFA_T1_threshold();
  bool set_intl_3T_threshold(uint32_t value);
  bool reset_intl_3T_threshold();

  // Picture controls.
  bool set_sat(uint32_t sat);
  bool set_hue(int32_t hue);
  bool set_sat_hue(uint32_t sat, int32_t hue);
  bool reset_sat_hue();
  bool set_contrast_xy(uint32_t x, uint32_t y);
  bool set_contrast_c(int32_t c, uint32_t* out_x, uint32_t* out_y);
  bool copy_contrast_table(const uint8_t* table);
  bool reset_contrast();
  bool copy_yuv_gamma_table(const uint8_t* table);
  bool copy_rgb_gamma_table(const uint8_t* table);
  int32_t nf20_12_gamma(int32_t* out_index, int32_t* out_min, int32_t* out_max) const;
  bool set_gamma(int32_t index);
  bool reset_gamma();

  // Correction controls.
  bool enable_GbGr_correction();
  bool disable_GbGr_correction();
  bool set_GbGr_correction_diff_threshold(int32_t value);
  bool reset_GbGr_correction();
  bool enable_lens_correction();
  bool disable_lens_correction();
  bool set_lens_correction(int32_t width, int32_t height, int32_t origin_x, int32_t origin_y, uint16_t* table,
                           int32_t table_size, int32_t f1, int32_t f1_rshift_count, int32_t f2,
                           int32_t f2_rshift_count);
  bool reset_lens_correction();

  // Statistics of a frame.
  void clear_statistics();  // before the dispatch
  void roll_up();           // after it
  rgb_words rgb_means_whole_frame_4pts() const;
  rgb_words rgb_means_whole_frame_central4() const;
  rgb_words rgb_means_whole_frame_central8() const;
  rgb_words rgb_means_whole_frame_central16() const;

 private:
  bool rebuild_colour_matrices();
  void compose_gamma();
  void size_output(bool with_black_lines);
  rgb_words weighted_mean(int32_t k) const;
};

}  // namespace ref
