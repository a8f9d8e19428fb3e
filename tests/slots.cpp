#include "slots.h"

namespace slots {
namespace {

template <typename Words>
std::vector<uint32_t> list(const Words& words) {
  return std::vector<uint32_t>(words.begin(), words.end());
}
std::vector<uint32_t> words_at(const uint32_t* words, size_t count) {
  return std::vector<uint32_t>(words, words + count);
}
std::vector<uint32_t> bytes_at(const uint8_t* bytes, size_t count) {
  return std::vector<uint32_t>(bytes, bytes + count);
}

}  // namespace

std::vector<figure> statistics(const reference_slot& s) {
  std::vector<uint32_t> cells;
  for (size_t i = 0; i < 48; ++i)
    cells.insert(cells.end(), s.sub_window_means[i].begin(), s.sub_window_means[i].end());
  return {{"sub-windows", cells},
          {"outside", list(s.sub_window_means[48])},
          {"all sub-windows", list(s.all_windows_means)},
          {"whole frame", list(s.whole_frame_means)},
          {"qAE means", list(s.qAE_means)},
          {"qAE count", {s.qAE_count}},
          {"qual means", list(s.qual_means)},
          {"qual count", {s.qual_count}},
          {"r histogram", list(s.r_histogram)},
          {"g histogram", list(s.g_histogram)},
          {"b histogram", list(s.b_histogram)},
          {"central8", list(s.rgb_means_whole_frame_central8())}};
}

std::vector<figure> statistics(const library_slot& slot) {
  const ppl_context* c = slot.context;
  return {{"sub-windows", words_at(ppl_rgb_means_sub_windows(c), 144)},
          {"outside", words_at(ppl_rgb_means_outside_all_sub_windows(c), 3)},
          {"all sub-windows", words_at(ppl_rgb_means_all_sub_windows(c), 3)},
          {"whole frame", words_at(ppl_rgb_means_whole_frame(c), 3)},
          {"qAE means", words_at(ppl_qAE_rgb_means_whole_frame(c), 3)},
          {"qAE count", {ppl_n_qAE_2x2_whole_frame(c)}},
          {"qual means", words_at(ppl_qual_rgb_means_whole_frame(c), 3)},
          {"qual count", {ppl_n_qual_2x2_whole_frame(c)}},
          {"r histogram", words_at(ppl_r_histogram(c), 256)},
          {"g histogram", words_at(ppl_g_histogram(c), 256)},
          {"b histogram", words_at(ppl_b_histogram(c), 256)},
          {"central8", words_at(ppl_rgb_means_whole_frame_central8(c), 3)}};
}

// Every plain getter with the expression that the reference has for it.
#define PLAIN_GETTERS(GET)                                                                                  \
  GET(decimation, decimation)                                                                               \
  GET(decimation_top_black_lines, decimation_top_black_lines)                                               \
  GET(decimation_bottom_black_lines, decimation_bottom_black_lines)                                         \
  GET(quality, quality)                                                                                     \
  GET(mean_collection, mean_collection)                                                                     \
  GET(P3_only, P3_only)                                                                                     \
  GET(h_mirror, h_mirror)                                                                                   \
  GET(v_mirror, v_mirror)                                                                                   \
  GET(n_frame, n_frame)                                                                                     \
  GET(r_delta, r_delta)                                                                                     \
  GET(g_delta, g_delta)                                                                                     \
  GET(b_delta, b_delta)                                                                                     \
  GET(nf88_r_gain, nf88_r_gain)                                                                             \
  GET(nf88_g_gain, nf88_g_gain)                                                                             \
  GET(nf88_b_gain, nf88_b_gain)                                                                             \
  GET(nf88_quals_r_gain, nf88_quals_r_gain)                                                                 \
  GET(nf88_quals_g_gain, nf88_quals_g_gain)                                                                 \
  GET(nf88_quals_b_gain, nf88_quals_b_gain)                                                                 \
  GET(sensor_matrix_index_upper_bound, sensor_matrix_index_upper_bound)                                     \
  GET(medium_filter_enabled, medium_filter_enabled)                                                         \
  GET(medium_filter_diff_threshold, medium_filter_diff_threshold)                                           \
  GET(medium_filter_hot_pixel_threshold, medium_filter_hot_pixel_threshold)                                 \
  GET(medium_filter_dead_pixel_threshold, medium_filter_dead_pixel_threshold)                               \
  GET(nf88_medium_filter_hot_pixel_threshold_percentage, nf88_medium_filter_hot_pixel_threshold_percentage) \
  GET(nf88_medium_filter_dead_pixel_threshold_percentage,                                                   \
      nf88_medium_filter_dead_pixel_threshold_percentage)                                                   \
  GET(qual_BmGb_min, qual_BmGb.minimum)                                                                     \
  GET(qual_BmGb_max, qual_BmGb.maximum)                                                                     \
  GET(qual_GrmR_min, qual_GrmR.minimum)                                                                     \
  GET(qual_GrmR_max, qual_GrmR.maximum)                                                                     \
  GET(qual_BmGb_p_GrmR_min, qual_BmGb_p_GrmR.minimum)                                                       \
  GET(qual_BmGb_p_GrmR_max, qual_BmGb_p_GrmR.maximum)                                                       \
  GET(qual_BmGb_m_GrmR_min, qual_BmGb_m_GrmR.minimum)                                                       \
  GET(qual_BmGb_m_GrmR_max, qual_BmGb_m_GrmR.maximum)                                                       \
  GET(qual_R_min, qual_R.minimum)                                                                           \
  GET(qual_R_max, qual_R.maximum)                                                                           \
  GET(qual_G_min, qual_G.minimum)                                                                           \
  GET(qual_G_max, qual_G.maximum)                                                                           \
  GET(qual_B_min, qual_B.minimum)                                                                           \
  GET(qual_B_max, qual_B.maximum)                                                                           \
  GET(qAE_RGB_min, qAE_RGB.minimum)                                                                         \
  GET(qAE_RGB_max, qAE_RGB.maximum)                                                                         \
  GET(edge_threshold, edge_threshold)                                                                       \
  GET(edge_threshold2, edge_threshold2)                                                                     \
  GET(nf88_edge_enhance_factor, nf88_edge_enhance_factor)                                                   \
  GET(noise_filter_G_12T_threshold, noise_filter_G_12T_threshold)                                           \
  GET(noise_filter_R_8T_threshold, noise_filter_R_8T_threshold)                                             \
  GET(noise_filter_B_8T_threshold, noise_filter_B_8T_threshold)                                             \
  GET(CFA_T0_threshold, CFA_T0_threshold)                                                                   \
  GET(CFA_T1_threshold, CFA_T1_threshold)                                                                   \
  GET(intl_3T_threshold, intl_3T_threshold)                                                                 \
  GET(nf88_sat, nf88_sat)                                                                                   \
  GET(hue_degree, hue_degree)                                                                               \
  GET(GbGr_correction_enabled, GbGr_correction_enabled)                                                     \
  GET(GbGr_correction_diff_threshold, GbGr_correction_diff_threshold)                                       \
  GET(lens_correction_enabled, lens_correction_enabled)                                                     \
  GET(lens_correction_width, lens_correction_width)                                                         \
  GET(lens_correction_height, lens_correction_height)                                                       \
  GET(lens_correction_origin_x, lens_correction_origin_x)                                                   \
  GET(lens_correction_origin_y, lens_correction_origin_y)                                                   \
  GET(lens_correction_f1, lens_correction_f1)                                                               \
  GET(lens_correction_f1_rshift_count, lens_correction_f1_rshift_count)                                     \
  GET(lens_correction_f2, lens_correction_f2)                                                               \
  GET(lens_correction_f2_rshift_count, lens_correction_f2_rshift_count)

#define TABLES(GET)             \
  GET(r_dekneel_table)          \
  GET(g_dekneel_table)          \
  GET(b_dekneel_table)          \
  GET(contrast_table)           \
  GET(yuv_contrast_gamma_table) \
  GET(rgb_contrast_gamma_table) \
  GET(yuv_gamma_table)          \
  GET(rgb_gamma_table)

std::vector<figure> read_back(const reference_slot& s) {
  std::vector<figure> all;
#define GET(name, field) all.push_back({#name, {uint32_t(s.field)}});
  PLAIN_GETTERS(GET)
#undef GET
#define GET(name) all.push_back({#name, list(s.name)});
  TABLES(GET)
#undef GET
  all.push_back({"sensor_type", {0}});
  all.push_back({"optical_black_b_gb_gr_r", list(s.optical_black_b_gb_gr_r)});
  all.push_back({"sensor_matrix", list(s.sensor_matrix)});
  int32_t gamma[3] = {};
  const int32_t value = s.nf20_12_gamma(&gamma[0], &gamma[1], &gamma[2]);
  all.push_back(
      {"nf20_12_gamma", {uint32_t(value), uint32_t(gamma[0]), uint32_t(gamma[1]), uint32_t(gamma[2])}});
  all.push_back({"lens_correction_table", {s.lens_correction_table ? 1u : 0u}});
  all.push_back({"n_sub_windows", {48, 8, 6}});
  all.push_back({"4pts", list(s.rgb_means_whole_frame_4pts())});
  all.push_back({"central4", list(s.rgb_means_whole_frame_central4())});
  all.push_back({"central16", list(s.rgb_means_whole_frame_central16())});
  return all;
}

std::vector<figure> read_back(const library_slot& slot) {
  const ppl_context* c = slot.context;
  std::vector<figure> all;
#define GET(name, field) all.push_back({#name, {uint32_t(ppl_##name(c))}});
  PLAIN_GETTERS(GET)
#undef GET
#define GET(name) all.push_back({#name, bytes_at(ppl_##name(c), 256)});
  TABLES(GET)
#undef GET
  all.push_back({"sensor_type", {ppl_sensor_type(c)}});
  uint32_t black[4] = {};
  ppl_optical_black_b_gb_gr_r(c, &black[0], &black[1], &black[2], &black[3]);
  all.push_back({"optical_black_b_gb_gr_r", words_at(black, 4)});
  int32_t matrix[9] = {};
  ppl_sensor_matrix(c, matrix);
  all.push_back({"sensor_matrix", std::vector<uint32_t>(matrix, matrix + 9)});
  int32_t gamma[3] = {};
  const int32_t value = ppl_nf20_12_gamma(c, &gamma[0], &gamma[1], &gamma[2]);
  all.push_back(
      {"nf20_12_gamma", {uint32_t(value), uint32_t(gamma[0]), uint32_t(gamma[1]), uint32_t(gamma[2])}});
  all.push_back({"lens_correction_table", {ppl_lens_correction_table(c) ? 1u : 0u}});
  uint32_t grid[2] = {};
  const uint32_t windows = ppl_n_sub_windows(c, &grid[0], &grid[1]);
  all.push_back({"n_sub_windows", {windows, grid[0], grid[1]}});
  all.push_back({"4pts", words_at(ppl_rgb_means_whole_frame_4pts(c), 3)});
  all.push_back({"central4", words_at(ppl_rgb_means_whole_frame_central4(c), 3)});
  all.push_back({"central16", words_at(ppl_rgb_means_whole_frame_central16(c), 3)});
  return all;
}

}  // namespace slots
