// The plain getters and the 256-byte tables, by name, for the two sides of slots.h.
#pragma once

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
