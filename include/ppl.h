/* ppl: a video pipeline library for a USB 2.0 camera. The whole interface of the library. */
#ifndef PPL_H
#define PPL_H

#include <stdint.h>

#if defined(_WIN32)
#if defined(PPL_BUILDING) || defined(PPL_STATIC)
#define PPL_API
#else
#define PPL_API __declspec(dllimport)
#endif
#elif defined(PPL_BUILDING)
#define PPL_API __attribute__((visibility("default")))
#else
#define PPL_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ppl_context ppl_context;

/* Context */
PPL_API ppl_context *ppl_init(void);
PPL_API uint8_t ppl_free(ppl_context *);
PPL_API uint8_t ppl_reset_all_controls(ppl_context *);

/* Geometry */
PPL_API uint8_t ppl_new_frame_size(ppl_context *, uint32_t width, uint32_t height, uint32_t stride);
PPL_API uint8_t ppl_new_frame_sizes(ppl_context *, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height, uint8_t validate);
PPL_API uint8_t ppl_set_decimation(ppl_context *, int32_t decimation, int32_t top_black_lines, int32_t bottom_black_lines);
PPL_API void ppl_reset_decimation(ppl_context *);
PPL_API int32_t ppl_decimation(const ppl_context *);
PPL_API int32_t ppl_decimation_top_black_lines(const ppl_context *);
PPL_API int32_t ppl_decimation_bottom_black_lines(const ppl_context *);

/* Bayer frame calls; the source is an in-out buffer */
PPL_API uint8_t ppl_process_blrtoi420(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height, uint32_t stride);
PPL_API uint8_t ppl_process_blrtoyuyv(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height, uint32_t stride);
PPL_API uint8_t ppl_process_blrtouyvy(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height, uint32_t stride);
PPL_API uint8_t ppl_process_blrtorgb24(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height, uint32_t stride);
PPL_API uint8_t ppl_process_blrtorgb32(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height, uint32_t stride);

/* Bayer wrappers */
PPL_API uint8_t BaylorToI420MMX(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToI420MMX_deci_2_1(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToI420MMX_intp_1_2(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToI420MMX_intp_1_2_stride(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToI420MMX_intp_1_4_stride(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToI420MMX_scaling_stride(ppl_context *, uint8_t *source, uint32_t width, uint32_t height, uint32_t stride, uint8_t *destination, uint32_t out_width, uint32_t out_height, uint8_t *scratch);
PPL_API uint8_t BaylorToYUYVMMX(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToYUYVMMX_deci_2_1(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToYUYVMMX_intp_1_2(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToYUYVMMX_intp_1_2_stride(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToYUYVMMX_intp_1_4_stride(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToYUYVMMX_scaling_stride(ppl_context *, uint8_t *source, uint32_t width, uint32_t height, uint32_t stride, uint8_t *destination, uint32_t out_width, uint32_t out_height, uint8_t *scratch);
PPL_API uint8_t BaylorToUYVYMMX(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToUYVYMMX_deci_2_1(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToUYVYMMX_intp_1_2(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToUYVYMMX_intp_1_2_stride(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToUYVYMMX_intp_1_4_stride(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToUYVYMMX_scaling_stride(ppl_context *, uint8_t *source, uint32_t width, uint32_t height, uint32_t stride, uint8_t *destination, uint32_t out_width, uint32_t out_height, uint8_t *scratch);
PPL_API uint8_t BaylorToRGB24MMX(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToRGB24MMX_deci_2_1(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToRGB24MMX_intp_1_2(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToRGB24MMX_intp_1_2_stride(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToRGB24MMX_intp_1_4_stride(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToRGB24MMX_scaling_stride(ppl_context *, uint8_t *source, uint32_t width, uint32_t height, uint32_t stride, uint8_t *destination, uint32_t out_width, uint32_t out_height, uint8_t *scratch);
PPL_API uint8_t BaylorToRGB32MMX(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToRGB32MMX_deci_2_1(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToRGB32MMX_intp_1_2(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToRGB32MMX_intp_1_2_stride(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToRGB32MMX_intp_1_4_stride(ppl_context *, uint8_t *source, uint8_t *destination, uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToRGB32MMX_scaling_stride(ppl_context *, uint8_t *source, uint32_t width, uint32_t height, uint32_t stride, uint8_t *destination, uint32_t out_width, uint32_t out_height, uint8_t *scratch);

/* Frame behaviour */
PPL_API uint32_t ppl_quality(const ppl_context *);
PPL_API uint8_t ppl_set_quality(ppl_context *, uint32_t quality);
PPL_API uint8_t ppl_reset_quality(ppl_context *);
PPL_API uint8_t ppl_mean_collection(const ppl_context *);
PPL_API uint8_t ppl_set_mean_collection(ppl_context *, uint8_t value);
PPL_API uint8_t ppl_reset_mean_collection(ppl_context *);
PPL_API uint8_t ppl_P3_only(const ppl_context *);
PPL_API uint8_t ppl_set_P3_only(ppl_context *, uint8_t value);
PPL_API uint8_t ppl_reset_P3_only(ppl_context *);
PPL_API uint32_t ppl_sensor_type(const ppl_context *);
PPL_API uint8_t ppl_set_sensor_type(ppl_context *, uint32_t code);
PPL_API uint8_t ppl_h_mirror(const ppl_context *);
PPL_API uint8_t ppl_set_h_mirror(ppl_context *, uint8_t value);
PPL_API uint8_t ppl_v_mirror(const ppl_context *);
PPL_API uint8_t ppl_set_v_mirror(ppl_context *, uint8_t value);
PPL_API uint8_t ppl_reset_mirrors(ppl_context *);
PPL_API uint32_t ppl_n_frame(const ppl_context *);

/* Sensor front end */
PPL_API void ppl_optical_black_b_gb_gr_r(const ppl_context *, uint32_t *b, uint32_t *gb, uint32_t *gr, uint32_t *r);
PPL_API uint8_t ppl_set_optical_black_b_gb_gr_r(ppl_context *, uint32_t b, uint32_t gb, uint32_t gr, uint32_t r);
PPL_API uint8_t ppl_reset_optical_black_b_gb_gr_r(ppl_context *);
PPL_API const uint8_t *ppl_r_dekneel_table(const ppl_context *);
PPL_API const uint8_t *ppl_g_dekneel_table(const ppl_context *);
PPL_API const uint8_t *ppl_b_dekneel_table(const ppl_context *);
PPL_API uint8_t ppl_copy_r_dekneel_table(ppl_context *, const uint8_t *table);
PPL_API uint8_t ppl_copy_g_dekneel_table(ppl_context *, const uint8_t *table);
PPL_API uint8_t ppl_copy_b_dekneel_table(ppl_context *, const uint8_t *table);
PPL_API uint8_t ppl_reset_rgb_dekneel_table(ppl_context *);
PPL_API int32_t ppl_r_delta(const ppl_context *);
PPL_API int32_t ppl_g_delta(const ppl_context *);
PPL_API int32_t ppl_b_delta(const ppl_context *);
PPL_API uint8_t ppl_set_rgb_delta(ppl_context *, int32_t r, int32_t g, int32_t b);
PPL_API uint8_t ppl_set_r_delta(ppl_context *, int32_t value);
PPL_API uint8_t ppl_set_g_delta(ppl_context *, int32_t value);
PPL_API uint8_t ppl_set_b_delta(ppl_context *, int32_t value);
PPL_API uint8_t ppl_reset_rgb_delta(ppl_context *);
PPL_API uint32_t ppl_nf88_r_gain(const ppl_context *);
PPL_API uint32_t ppl_nf88_g_gain(const ppl_context *);
PPL_API uint32_t ppl_nf88_b_gain(const ppl_context *);
PPL_API uint8_t ppl_set_rgb_gain(ppl_context *, uint32_t r, uint32_t g, uint32_t b);
PPL_API uint8_t ppl_set_r_gain(ppl_context *, uint32_t value);
PPL_API uint8_t ppl_set_g_gain(ppl_context *, uint32_t value);
PPL_API uint8_t ppl_set_b_gain(ppl_context *, uint32_t value);
PPL_API uint8_t ppl_reset_rgb_gain(ppl_context *);
PPL_API uint32_t ppl_nf88_quals_r_gain(const ppl_context *);
PPL_API uint32_t ppl_nf88_quals_g_gain(const ppl_context *);
PPL_API uint32_t ppl_nf88_quals_b_gain(const ppl_context *);
PPL_API uint8_t ppl_set_quals_rgb_gain(ppl_context *, uint32_t r, uint32_t g, uint32_t b);
PPL_API uint8_t ppl_set_quals_r_gain(ppl_context *, uint32_t value);
PPL_API uint8_t ppl_set_quals_g_gain(ppl_context *, uint32_t value);
PPL_API uint8_t ppl_set_quals_b_gain(ppl_context *, uint32_t value);
PPL_API uint8_t ppl_reset_quals_rgb_gain(ppl_context *);
PPL_API void ppl_sensor_matrix(const ppl_context *, int32_t *nine_words);
PPL_API uint8_t ppl_copy_sensor_matrix(ppl_context *, const int32_t *nine_words);
PPL_API uint8_t ppl_reset_sensor_matrix(ppl_context *);
PPL_API uint32_t ppl_sensor_matrix_index_upper_bound(const ppl_context *);
PPL_API uint8_t ppl_set_sensor_matrix_index_upper_bound(ppl_context *, uint32_t value);
PPL_API uint8_t ppl_reset_sensor_matrix_index_upper_bound(ppl_context *);

/* Medium filter */
PPL_API uint8_t ppl_medium_filter_enabled(const ppl_context *);
PPL_API uint8_t ppl_enable_medium_filter(ppl_context *);
PPL_API uint8_t ppl_disable_medium_filter(ppl_context *);
PPL_API uint8_t ppl_reset_medium_filter(ppl_context *);
PPL_API int32_t ppl_medium_filter_diff_threshold(const ppl_context *);
PPL_API uint8_t ppl_set_medium_filter_diff_threshold(ppl_context *, int32_t value);
PPL_API int32_t ppl_medium_filter_hot_pixel_threshold(const ppl_context *);
PPL_API uint8_t ppl_set_medium_filter_hot_pixel_threshold(ppl_context *, int32_t value);
PPL_API int32_t ppl_medium_filter_dead_pixel_threshold(const ppl_context *);
PPL_API uint8_t ppl_set_medium_filter_dead_pixel_threshold(ppl_context *, int32_t value);
PPL_API int32_t ppl_nf88_medium_filter_hot_pixel_threshold_percentage(const ppl_context *);
PPL_API uint8_t ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(ppl_context *, int32_t value);
PPL_API int32_t ppl_nf88_medium_filter_dead_pixel_threshold_percentage(const ppl_context *);
PPL_API uint8_t ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(ppl_context *, int32_t value);

/* Quality ranges */
PPL_API int32_t ppl_qual_BmGb_min(const ppl_context *);
PPL_API int32_t ppl_qual_BmGb_max(const ppl_context *);
PPL_API uint8_t ppl_set_qual_BmGb_min_max(ppl_context *, int32_t minimum, int32_t maximum);
PPL_API int32_t ppl_qual_GrmR_min(const ppl_context *);
PPL_API int32_t ppl_qual_GrmR_max(const ppl_context *);
PPL_API uint8_t ppl_set_qual_GrmR_min_max(ppl_context *, int32_t minimum, int32_t maximum);
PPL_API int32_t ppl_qual_BmGb_p_GrmR_min(const ppl_context *);
PPL_API int32_t ppl_qual_BmGb_p_GrmR_max(const ppl_context *);
PPL_API uint8_t ppl_set_qual_BmGb_p_GrmR_min_max(ppl_context *, int32_t minimum, int32_t maximum);
PPL_API int32_t ppl_qual_BmGb_m_GrmR_min(const ppl_context *);
PPL_API int32_t ppl_qual_BmGb_m_GrmR_max(const ppl_context *);
PPL_API uint8_t ppl_set_qual_BmGb_m_GrmR_min_max(ppl_context *, int32_t minimum, int32_t maximum);
PPL_API int32_t ppl_qual_R_min(const ppl_context *);
PPL_API int32_t ppl_qual_R_max(const ppl_context *);
PPL_API uint8_t ppl_set_qual_R_min_max(ppl_context *, int32_t minimum, int32_t maximum);
PPL_API int32_t ppl_qual_G_min(const ppl_context *);
PPL_API int32_t ppl_qual_G_max(const ppl_context *);
PPL_API uint8_t ppl_set_qual_G_min_max(ppl_context *, int32_t minimum, int32_t maximum);
PPL_API int32_t ppl_qual_B_min(const ppl_context *);
PPL_API int32_t ppl_qual_B_max(const ppl_context *);
PPL_API uint8_t ppl_set_qual_B_min_max(ppl_context *, int32_t minimum, int32_t maximum);
PPL_API int32_t ppl_qAE_RGB_min(const ppl_context *);
PPL_API int32_t ppl_qAE_RGB_max(const ppl_context *);
PPL_API uint8_t ppl_set_qAE_RGB_min_max(ppl_context *, int32_t minimum, int32_t maximum);
PPL_API uint8_t ppl_set_qual_RGB_min_max(ppl_context *, int32_t r_min, int32_t r_max, int32_t g_min, int32_t g_max, int32_t b_min, int32_t b_max);
PPL_API uint8_t ppl_reset_qual_min_max(ppl_context *);
PPL_API uint8_t ppl_reset_qAE_min_max(ppl_context *);

/* Filter thresholds */
PPL_API uint32_t ppl_edge_threshold(const ppl_context *);
PPL_API uint8_t ppl_set_edge_threshold(ppl_context *, uint32_t value);
PPL_API uint8_t ppl_reset_edge_threshold(ppl_context *);
PPL_API uint32_t ppl_edge_threshold2(const ppl_context *);
PPL_API uint8_t ppl_set_edge_threshold2(ppl_context *, uint32_t value);
PPL_API uint8_t ppl_reset_edge_threshold2(ppl_context *);
PPL_API uint32_t ppl_nf88_edge_enhance_factor(const ppl_context *);
PPL_API uint8_t ppl_set_nf88_edge_enhance_factor(ppl_context *, uint32_t value);
PPL_API uint8_t ppl_reset_nf88_edge_enhance_factor(ppl_context *);
PPL_API uint32_t ppl_noise_filter_G_12T_threshold(const ppl_context *);
PPL_API uint8_t ppl_set_noise_filter_G_12T_threshold(ppl_context *, uint32_t value);
PPL_API uint8_t ppl_reset_noise_filter_G_12T_threshold(ppl_context *);
PPL_API uint32_t ppl_noise_filter_R_8T_threshold(const ppl_context *);
PPL_API uint8_t ppl_set_noise_filter_R_8T_threshold(ppl_context *, uint32_t value);
PPL_API uint8_t ppl_reset_noise_filter_R_8T_threshold(ppl_context *);
PPL_API uint32_t ppl_noise_filter_B_8T_threshold(const ppl_context *);
PPL_API uint8_t ppl_set_noise_filter_B_8T_threshold(ppl_context *, uint32_t value);
PPL_API uint8_t ppl_reset_noise_filter_B_8T_threshold(ppl_context *);
PPL_API uint32_t ppl_CFA_T0_threshold(const ppl_context *);
PPL_API uint8_t ppl_set_CFA_T0_threshold(ppl_context *, uint32_t value);
PPL_API uint8_t ppl_reset_CFA_T0_threshold(ppl_context *);
PPL_API uint32_t ppl_CFA_T1_threshold(const ppl_context *);
PPL_API uint8_t ppl_set_CFA_T1_threshold(ppl_context *, uint32_t value);
PPL_API uint8_t ppl_reset_CFA_T1_threshold(ppl_context *);
PPL_API uint32_t ppl_intl_3T_threshold(const ppl_context *);
PPL_API uint8_t ppl_set_intl_3T_threshold(ppl_context *, uint32_t value);
PPL_API uint8_t ppl_reset_intl_3T_threshold(ppl_context *);

/* Picture controls */
PPL_API uint32_t ppl_nf88_sat(const ppl_context *);
PPL_API int32_t ppl_hue_degree(const ppl_context *);
PPL_API uint8_t ppl_set_sat(ppl_context *, uint32_t nf88_sat);
PPL_API uint8_t ppl_set_hue(ppl_context *, int32_t hue_degree);
PPL_API uint8_t ppl_set_sat_hue(ppl_context *, uint32_t nf88_sat, int32_t hue_degree);
PPL_API uint8_t ppl_reset_sat_hue(ppl_context *);
PPL_API const uint8_t *ppl_contrast_table(const ppl_context *);
PPL_API const uint8_t *ppl_yuv_contrast_gamma_table(const ppl_context *);
PPL_API const uint8_t *ppl_rgb_contrast_gamma_table(const ppl_context *);
PPL_API const uint8_t *ppl_yuv_gamma_table(const ppl_context *);
PPL_API const uint8_t *ppl_rgb_gamma_table(const ppl_context *);
PPL_API uint8_t ppl_set_contrast_xy(ppl_context *, uint32_t x, uint32_t y);
PPL_API uint8_t ppl_set_contrast_c(ppl_context *, int32_t c, uint32_t *out_x, uint32_t *out_y);
PPL_API uint8_t ppl_copy_contrast_table(ppl_context *, const uint8_t *table);
PPL_API uint8_t ppl_reset_contrast(ppl_context *);
PPL_API uint8_t ppl_get_yuv_gamma_table(const ppl_context *, uint8_t *table);
PPL_API uint8_t ppl_get_rgb_gamma_table(const ppl_context *, uint8_t *table);
PPL_API uint8_t ppl_copy_yuv_gamma_table(ppl_context *, const uint8_t *table);
PPL_API uint8_t ppl_copy_rgb_gamma_table(ppl_context *, const uint8_t *table);
PPL_API int32_t ppl_nf20_12_gamma(const ppl_context *, int32_t *out_index, int32_t *out_min, int32_t *out_max);
PPL_API uint8_t ppl_set_gamma(ppl_context *, int32_t index);
PPL_API uint8_t ppl_reset_gamma(ppl_context *);
PPL_API uint8_t ppl_get_gamma_tables65x256(const ppl_context *, uint8_t *tables);
PPL_API uint8_t ppl_copy_gamma_tables65x256(ppl_context *, const uint8_t *tables);
PPL_API uint8_t ppl_get_gamma_tables65x256_16_235(const ppl_context *, uint8_t *tables);
PPL_API uint8_t ppl_copy_gamma_tables65x256_16_235(ppl_context *, const uint8_t *tables);

/* Correction controls */
PPL_API uint8_t ppl_GbGr_correction_enabled(const ppl_context *);
PPL_API uint8_t ppl_enable_GbGr_correction(ppl_context *);
PPL_API uint8_t ppl_disable_GbGr_correction(ppl_context *);
PPL_API int32_t ppl_GbGr_correction_diff_threshold(const ppl_context *);
PPL_API uint8_t ppl_set_GbGr_correction_diff_threshold(ppl_context *, int32_t value);
PPL_API uint8_t ppl_reset_GbGr_correction(ppl_context *);
PPL_API uint8_t ppl_lens_correction_enabled(const ppl_context *);
PPL_API uint8_t ppl_enable_lens_correction(ppl_context *);
PPL_API uint8_t ppl_disable_lens_correction(ppl_context *);
PPL_API int32_t ppl_lens_correction_width(const ppl_context *);
PPL_API int32_t ppl_lens_correction_height(const ppl_context *);
PPL_API int32_t ppl_lens_correction_origin_x(const ppl_context *);
PPL_API int32_t ppl_lens_correction_origin_y(const ppl_context *);
PPL_API int32_t ppl_lens_correction_f1(const ppl_context *);
PPL_API int32_t ppl_lens_correction_f1_rshift_count(const ppl_context *);
PPL_API int32_t ppl_lens_correction_f2(const ppl_context *);
PPL_API int32_t ppl_lens_correction_f2_rshift_count(const ppl_context *);
PPL_API uint16_t *ppl_lens_correction_table(const ppl_context *);
PPL_API uint8_t ppl_set_lens_correction(ppl_context *, int32_t width, int32_t height, int32_t origin_x, int32_t origin_y, uint16_t *table, int32_t table_size, int32_t f1, int32_t f1_rshift_count, int32_t f2, int32_t f2_rshift_count);
PPL_API uint8_t ppl_reset_lens_correction(ppl_context *);

/* Statistics */
PPL_API uint32_t ppl_n_sub_windows(const ppl_context *, uint32_t *out_columns, uint32_t *out_rows);
PPL_API const uint32_t *ppl_rgb_means_sub_windows(const ppl_context *);
PPL_API const uint32_t *ppl_rgb_means_outside_all_sub_windows(const ppl_context *);
PPL_API const uint32_t *ppl_rgb_means_all_sub_windows(const ppl_context *);
PPL_API const uint32_t *ppl_rgb_means_whole_frame(const ppl_context *);
PPL_API const uint32_t *ppl_rgb_means_whole_frame_4pts(const ppl_context *);
PPL_API const uint32_t *ppl_rgb_means_whole_frame_central4(const ppl_context *);
PPL_API const uint32_t *ppl_rgb_means_whole_frame_central8(const ppl_context *);
PPL_API const uint32_t *ppl_rgb_means_whole_frame_central16(const ppl_context *);
PPL_API const uint32_t *ppl_qAE_rgb_means_whole_frame(const ppl_context *);
PPL_API const uint32_t *ppl_qual_rgb_means_whole_frame(const ppl_context *);
PPL_API const uint32_t *ppl_r_histogram(const ppl_context *);
PPL_API const uint32_t *ppl_g_histogram(const ppl_context *);
PPL_API const uint32_t *ppl_b_histogram(const ppl_context *);
PPL_API uint32_t ppl_n_qAE_2x2_whole_frame(const ppl_context *);
PPL_API uint32_t ppl_n_qual_2x2_whole_frame(const ppl_context *);

/* Packed YUV, 12-bit packed and RGB conversions */
PPL_API uint8_t YUYVToI420MMX(ppl_context *, const uint8_t *input, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t ppl_process_yuyvtoi420(ppl_context *, const uint8_t *input, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t UYVYToI420MMX(ppl_context *, const uint8_t *input, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t ppl_process_uyvytoi420(ppl_context *, const uint8_t *input, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t YUYVToRGB24MMX(ppl_context *, const uint8_t *input, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t ppl_process_yuyvtorgb24(ppl_context *, const uint8_t *input, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t UYVYToRGB24MMX(ppl_context *, const uint8_t *input, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t ppl_process_uyvytorgb24(ppl_context *, const uint8_t *input, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t UYVYYYYYToI420MMX(ppl_context *, const uint8_t *input, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t ppl_process_uyvyyyyytoi420(ppl_context *, const uint8_t *input, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t YUYVYYYYToI420MMX(ppl_context *, const uint8_t *input, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t ppl_process_yuyvyyyytoi420(ppl_context *, const uint8_t *input, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t RGB24ToRGB32MMX(ppl_context *, const uint8_t *input, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t ppl_process_rgb24torgb32(ppl_context *, const uint8_t *input, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);

/* Interlaced conversions */
PPL_API uint8_t IntlYUYVToYUYVMMX(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlYUYVToYUYVMMX_no_motion(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlYUYVToUYVYMMX(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlYUYVToUYVYMMX_no_motion(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlYUYVToI420MMX(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlYUYVToI420MMX_no_motion(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlYUYVToRGB24MMX(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlYUYVToRGB24MMX_no_motion(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlUYVYToYUYVMMX(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlUYVYToYUYVMMX_no_motion(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlUYVYToUYVYMMX(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlUYVYToUYVYMMX_no_motion(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlUYVYToI420MMX(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlUYVYToI420MMX_no_motion(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlUYVYToRGB24MMX(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlUYVYToRGB24MMX_no_motion(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t ppl_process_intlyuyvtoyuyv(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t ppl_process_intluyvytouyvy(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t ppl_process_intlyuyvtoi420(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t ppl_process_intluyvytoi420(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t ppl_process_intlyuyvtorgb24(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t ppl_process_intluyvytorgb24(ppl_context *, const uint8_t *earlier_field, const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height);

#ifdef __cplusplus
}
#endif

#endif /* PPL_H */
