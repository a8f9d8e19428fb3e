// Every control of the interface, called with anything.
#pragma once

#include <stdint.h>

#include <iterator>
#include <tuple>

#include "fuzz/input.h"
#include "ppl.h"

namespace fuzz {

// An argument of a control. Tables have the size that the header tells; any pointer may be null.
template <class T>
struct argument {
  T value;
  explicit argument(input& in) : value(number<T>(in)) {}
};
template <class T, size_t Count>
struct words {
  exact block;
  T* value;
  explicit words(input& in)
      : block(Count * sizeof(T), 0, in.ConsumeIntegral<uint8_t>()),
        value(in.ConsumeIntegralInRange(0, 7) == 0 ? nullptr : reinterpret_cast<T*>(block.at())) {}
};
template <>
struct argument<const uint8_t*> : words<uint8_t, 256> {
  using words::words;
};
template <>
struct argument<uint8_t*> : words<uint8_t, 256> {
  using words::words;
};
template <>
struct argument<const int32_t*> : words<int32_t, 9> {
  using words::words;
};
// One word for results one by one, nine for the matrix: the shorter of the two would be too short for the longer.
template <>
struct argument<int32_t*> : words<int32_t, 9> {
  using words::words;
};
template <>
struct argument<uint32_t*> : words<uint32_t, 1> {
  using words::words;
};

template <class>
input& from(input& in) {
  return in;
}
template <class Result, class Context, class... Arguments>
void call_with(Result (*f)(Context*, Arguments...), ppl_context* c, input& in) {
  const std::tuple<argument<Arguments>...> all(from<Arguments>(in)...);
  std::apply([&](const auto&... a) { static_cast<void>(f(c, a.value...)); }, all);
}
template <auto F>
void call(ppl_context* c, input& in) {
  call_with(F, c, in);
}

constexpr void (*kControls[])(ppl_context*, input&) = {
    call<ppl_quality>,
    call<ppl_set_quality>,
    call<ppl_reset_quality>,
    call<ppl_mean_collection>,
    call<ppl_set_mean_collection>,
    call<ppl_reset_mean_collection>,
    call<ppl_P3_only>,
    call<ppl_set_P3_only>,
    call<ppl_reset_P3_only>,
    call<ppl_sensor_type>,
    call<ppl_set_sensor_type>,
    call<ppl_h_mirror>,
    call<ppl_set_h_mirror>,
    call<ppl_v_mirror>,
    call<ppl_set_v_mirror>,
    call<ppl_reset_mirrors>,
    call<ppl_n_frame>,
    call<ppl_optical_black_b_gb_gr_r>,
    call<ppl_set_optical_black_b_gb_gr_r>,
    call<ppl_reset_optical_black_b_gb_gr_r>,
    call<ppl_r_dekneel_table>,
    call<ppl_g_dekneel_table>,
    call<ppl_b_dekneel_table>,
    call<ppl_copy_r_dekneel_table>,
    call<ppl_copy_g_dekneel_table>,
    call<ppl_copy_b_dekneel_table>,
    call<ppl_reset_rgb_dekneel_table>,
    call<ppl_r_delta>,
    call<ppl_g_delta>,
    call<ppl_b_delta>,
    call<ppl_set_rgb_delta>,
    call<ppl_set_r_delta>,
    call<ppl_set_g_delta>,
    call<ppl_set_b_delta>,
    call<ppl_reset_rgb_delta>,
    call<ppl_nf88_r_gain>,
    call<ppl_nf88_g_gain>,
    call<ppl_nf88_b_gain>,
    call<ppl_set_rgb_gain>,
    call<ppl_set_r_gain>,
    call<ppl_set_g_gain>,
    call<ppl_set_b_gain>,
    call<ppl_reset_rgb_gain>,
    call<ppl_nf88_quals_r_gain>,
    call<ppl_nf88_quals_g_gain>,
    call<ppl_nf88_quals_b_gain>,
    call<ppl_set_quals_rgb_gain>,
    call<ppl_set_quals_r_gain>,
    call<ppl_set_quals_g_gain>,
    call<ppl_set_quals_b_gain>,
    call<ppl_reset_quals_rgb_gain>,
    call<ppl_sensor_matrix>,
    call<ppl_copy_sensor_matrix>,
    call<ppl_reset_sensor_matrix>,
    call<ppl_sensor_matrix_index_upper_bound>,
    call<ppl_set_sensor_matrix_index_upper_bound>,
    call<ppl_reset_sensor_matrix_index_upper_bound>,
    call<ppl_medium_filter_enabled>,
    call<ppl_enable_medium_filter>,
    call<ppl_disable_medium_filter>,
    call<ppl_reset_medium_filter>,
    call<ppl_medium_filter_diff_threshold>,
    call<ppl_set_medium_filter_diff_threshold>,
    call<ppl_medium_filter_hot_pixel_threshold>,
    call<ppl_set_medium_filter_hot_pixel_threshold>,
    call<ppl_medium_filter_dead_pixel_threshold>,
    call<ppl_set_medium_filter_dead_pixel_threshold>,
    call<ppl_nf88_medium_filter_hot_pixel_threshold_percentage>,
    call<ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage>,
    call<ppl_nf88_medium_filter_dead_pixel_threshold_percentage>,
    call<ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage>,
    call<ppl_qual_BmGb_min>,
    call<ppl_qual_BmGb_max>,
    call<ppl_set_qual_BmGb_min_max>,
    call<ppl_qual_GrmR_min>,
    call<ppl_qual_GrmR_max>,
    call<ppl_set_qual_GrmR_min_max>,
    call<ppl_qual_BmGb_p_GrmR_min>,
    call<ppl_qual_BmGb_p_GrmR_max>,
    call<ppl_set_qual_BmGb_p_GrmR_min_max>,
    call<ppl_qual_BmGb_m_GrmR_min>,
    call<ppl_qual_BmGb_m_GrmR_max>,
    call<ppl_set_qual_BmGb_m_GrmR_min_max>,
    call<ppl_qual_R_min>,
    call<ppl_qual_R_max>,
    call<ppl_set_qual_R_min_max>,
    call<ppl_qual_G_min>,
    call<ppl_qual_G_max>,
    call<ppl_set_qual_G_min_max>,
    call<ppl_qual_B_min>,
    call<ppl_qual_B_max>,
    call<ppl_set_qual_B_min_max>,
    call<ppl_qAE_RGB_min>,
    call<ppl_qAE_RGB_max>,
    call<ppl_set_qAE_RGB_min_max>,
    call<ppl_set_qual_RGB_min_max>,
    call<ppl_reset_qual_min_max>,
    call<ppl_reset_qAE_min_max>,
    call<ppl_edge_threshold>,
    call<ppl_set_edge_threshold>,
    call<ppl_reset_edge_threshold>,
    call<ppl_edge_threshold2>,
    call<ppl_set_edge_threshold2>,
    call<ppl_reset_edge_threshold2>,
    call<ppl_nf88_edge_enhance_factor>,
    call<ppl_set_nf88_edge_enhance_factor>,
    call<ppl_reset_nf88_edge_enhance_factor>,
    call<ppl_noise_filter_G_12T_threshold>,
    call<ppl_set_noise_filter_G_12T_threshold>,
    call<ppl_reset_noise_filter_G_12T_threshold>,
    call<ppl_noise_filter_R_8T_threshold>,
    call<ppl_set_noise_filter_R_8T_threshold>,
    call<ppl_reset_noise_filter_R_8T_threshold>,
    call<ppl_noise_filter_B_8T_threshold>,
    call<ppl_set_noise_filter_B_8T_threshold>,
    call<ppl_reset_noise_filter_B_8T_threshold>,
    call<ppl_CFA_T0_threshold>,
    call<ppl_set_CFA_T0_threshold>,
    call<ppl_reset_CFA_T0_threshold>,
    call<ppl_CFA_T1_threshold>,
    call<ppl_set_CFA_T1_threshold>,
    call<ppl_reset_CFA_T1_threshold>,
    call<ppl_intl_3T_threshold>,
    call<ppl_set_intl_3T_threshold>,
    call<ppl_reset_intl_3T_threshold>,
    call<ppl_nf88_sat>,
    call<ppl_hue_degree>,
    call<ppl_set_sat>,
    call<ppl_set_hue>,
    call<ppl_set_sat_hue>,
    call<ppl_reset_sat_hue>,
    call<ppl_contrast_table>,
    call<ppl_yuv_contrast_gamma_table>,
    call<ppl_rgb_contrast_gamma_table>,
    call<ppl_yuv_gamma_table>,
    call<ppl_rgb_gamma_table>,
    call<ppl_set_contrast_xy>,
    call<ppl_set_contrast_c>,
    call<ppl_copy_contrast_table>,
    call<ppl_reset_contrast>,
    call<ppl_get_yuv_gamma_table>,
    call<ppl_get_rgb_gamma_table>,
    call<ppl_copy_yuv_gamma_table>,
    call<ppl_copy_rgb_gamma_table>,
    call<ppl_nf20_12_gamma>,
    call<ppl_set_gamma>,
    call<ppl_reset_gamma>,
    call<ppl_GbGr_correction_enabled>,
    call<ppl_enable_GbGr_correction>,
    call<ppl_disable_GbGr_correction>,
    call<ppl_GbGr_correction_diff_threshold>,
    call<ppl_set_GbGr_correction_diff_threshold>,
    call<ppl_reset_GbGr_correction>,
    call<ppl_lens_correction_enabled>,
    call<ppl_enable_lens_correction>,
    call<ppl_disable_lens_correction>,
    call<ppl_lens_correction_width>,
    call<ppl_lens_correction_height>,
    call<ppl_lens_correction_origin_x>,
    call<ppl_lens_correction_origin_y>,
    call<ppl_lens_correction_f1>,
    call<ppl_lens_correction_f1_rshift_count>,
    call<ppl_lens_correction_f2>,
    call<ppl_lens_correction_f2_rshift_count>,
    call<ppl_lens_correction_table>,
    call<ppl_reset_lens_correction>,
    call<ppl_n_sub_windows>,
    call<ppl_rgb_means_sub_windows>,
    call<ppl_rgb_means_outside_all_sub_windows>,
    call<ppl_rgb_means_all_sub_windows>,
    call<ppl_rgb_means_whole_frame>,
    call<ppl_rgb_means_whole_frame_4pts>,
    call<ppl_rgb_means_whole_frame_central4>,
    call<ppl_rgb_means_whole_frame_central8>,
    call<ppl_rgb_means_whole_frame_central16>,
    call<ppl_qAE_rgb_means_whole_frame>,
    call<ppl_qual_rgb_means_whole_frame>,
    call<ppl_r_histogram>,
    call<ppl_g_histogram>,
    call<ppl_b_histogram>,
    call<ppl_n_qAE_2x2_whole_frame>,
    call<ppl_n_qual_2x2_whole_frame>,
};

inline void any_control(ppl_context* c, input& in) {
  kControls[in.ConsumeIntegralInRange<size_t>(0, std::size(kControls) - 1)](c, in);
}

}  // namespace fuzz
