// The exported calls that a frame or a control takes, as members: a slot of the library looks like one of the
// reference. Nothing of the standard library, so that programs for any machine can include it.
#pragma once

#include "ppl.h"
#include "reference/formats.h"
#include "support/bayer_exports.h"

namespace slots {

using ref::ending;
using ref::format;

using support::kFormatNames;

struct library_slot {
  ppl_context* context = nullptr;

#define SLOT_CALL(name)                    \
  template <typename... Values>            \
  auto name(Values... values) const {      \
    return ppl_##name(context, values...); \
  }
  SLOT_CALL(reset_all_controls)
  SLOT_CALL(new_frame_size)
  SLOT_CALL(new_frame_sizes)
  SLOT_CALL(set_decimation)
  SLOT_CALL(reset_decimation)
  SLOT_CALL(set_quality)
  SLOT_CALL(reset_quality)
  SLOT_CALL(set_mean_collection)
  SLOT_CALL(reset_mean_collection)
  SLOT_CALL(set_P3_only)
  SLOT_CALL(reset_P3_only)
  SLOT_CALL(set_sensor_type)
  SLOT_CALL(set_h_mirror)
  SLOT_CALL(set_v_mirror)
  SLOT_CALL(reset_mirrors)
  SLOT_CALL(set_optical_black_b_gb_gr_r)
  SLOT_CALL(reset_optical_black_b_gb_gr_r)
  SLOT_CALL(copy_r_dekneel_table)
  SLOT_CALL(copy_g_dekneel_table)
  SLOT_CALL(copy_b_dekneel_table)
  SLOT_CALL(reset_rgb_dekneel_table)
  SLOT_CALL(set_rgb_delta)
  SLOT_CALL(set_r_delta)
  SLOT_CALL(set_g_delta)
  SLOT_CALL(set_b_delta)
  SLOT_CALL(reset_rgb_delta)
  SLOT_CALL(set_rgb_gain)
  SLOT_CALL(set_r_gain)
  SLOT_CALL(set_g_gain)
  SLOT_CALL(set_b_gain)
  SLOT_CALL(reset_rgb_gain)
  SLOT_CALL(set_quals_rgb_gain)
  SLOT_CALL(set_quals_r_gain)
  SLOT_CALL(set_quals_g_gain)
  SLOT_CALL(set_quals_b_gain)
  SLOT_CALL(reset_quals_rgb_gain)
  SLOT_CALL(copy_sensor_matrix)
  SLOT_CALL(reset_sensor_matrix)
  SLOT_CALL(set_sensor_matrix_index_upper_bound)
  SLOT_CALL(reset_sensor_matrix_index_upper_bound)
  SLOT_CALL(enable_medium_filter)
  SLOT_CALL(disable_medium_filter)
  SLOT_CALL(reset_medium_filter)
  SLOT_CALL(set_medium_filter_diff_threshold)
  SLOT_CALL(set_medium_filter_hot_pixel_threshold)
  SLOT_CALL(set_medium_filter_dead_pixel_threshold)
  SLOT_CALL(set_nf88_medium_filter_hot_pixel_threshold_percentage)
  SLOT_CALL(set_nf88_medium_filter_dead_pixel_threshold_percentage)
  SLOT_CALL(set_qual_BmGb_min_max)
  SLOT_CALL(set_qual_GrmR_min_max)
  SLOT_CALL(set_qual_BmGb_p_GrmR_min_max)
  SLOT_CALL(set_qual_BmGb_m_GrmR_min_max)
  SLOT_CALL(set_qual_R_min_max)
  SLOT_CALL(set_qual_G_min_max)
  SLOT_CALL(set_qual_B_min_max)
  SLOT_CALL(set_qual_RGB_min_max)
  SLOT_CALL(set_qAE_RGB_min_max)
  SLOT_CALL(reset_qual_min_max)
  SLOT_CALL(reset_qAE_min_max)
  SLOT_CALL(set_edge_threshold)
  SLOT_CALL(reset_edge_threshold)
  SLOT_CALL(set_edge_threshold2)
  SLOT_CALL(reset_edge_threshold2)
  SLOT_CALL(set_nf88_edge_enhance_factor)
  SLOT_CALL(reset_nf88_edge_enhance_factor)
  SLOT_CALL(set_noise_filter_G_12T_threshold)
  SLOT_CALL(reset_noise_filter_G_12T_threshold)
  SLOT_CALL(set_noise_filter_R_8T_threshold)
  SLOT_CALL(reset_noise_filter_R_8T_threshold)
  SLOT_CALL(set_noise_filter_B_8T_threshold)
  SLOT_CALL(reset_noise_filter_B_8T_threshold)
  SLOT_CALL(set_CFA_T0_threshold)
  SLOT_CALL(reset_CFA_T0_threshold)
  SLOT_CALL(set_CFA_T1_threshold)
  SLOT_CALL(reset_CFA_T1_threshold)
  SLOT_CALL(set_intl_3T_threshold)
  SLOT_CALL(reset_intl_3T_threshold)
  SLOT_CALL(set_sat)
  SLOT_CALL(set_hue)
  SLOT_CALL(set_sat_hue)
  SLOT_CALL(reset_sat_hue)
  SLOT_CALL(set_contrast_xy)
  SLOT_CALL(set_contrast_c)
  SLOT_CALL(copy_contrast_table)
  SLOT_CALL(reset_contrast)
  SLOT_CALL(copy_yuv_gamma_table)
  SLOT_CALL(copy_rgb_gamma_table)
  SLOT_CALL(set_gamma)
  SLOT_CALL(reset_gamma)
  SLOT_CALL(enable_GbGr_correction)
  SLOT_CALL(disable_GbGr_correction)
  SLOT_CALL(set_GbGr_correction_diff_threshold)
  SLOT_CALL(reset_GbGr_correction)
  SLOT_CALL(enable_lens_correction)
  SLOT_CALL(disable_lens_correction)
  SLOT_CALL(set_lens_correction)
  SLOT_CALL(reset_lens_correction)
#undef SLOT_CALL

  uint8_t process_frame(format kind, uint8_t* source, uint8_t* destination, uint32_t width, uint32_t height,
                        uint32_t stride) const {
    return support::kFrameCalls[int(kind)](context, source, destination, width, height, stride);
  }
  uint8_t wrapper(format kind, ending name, uint8_t* source, uint8_t* destination, uint32_t width,
                  uint32_t height) const {
    return support::kWrappers[int(kind)][int(name)](context, source, destination, width, height);
  }
  uint8_t scaling_wrapper(format kind, uint8_t* source, uint32_t width, uint32_t height, uint32_t stride,
                          uint8_t* destination, uint32_t out_width, uint32_t out_height,
                          uint8_t* scratch) const {
    return support::kScaledCalls[int(kind)](context, source, width, height, stride, destination, out_width,
                                            out_height, scratch);
  }
};

}  // namespace slots
