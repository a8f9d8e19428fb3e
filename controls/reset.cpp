// All controls to their defaults.
#include "record/context.h"

// The order matters: saturation and hue rebuild the matrices with the contrast that the slot had last, and the reset
// of contrast rebuilds them with its own. Frame size, frame count, statistics and leftovers stay. The result is that
// of the lens reset, which is false: by default there is no table.
uint8_t ppl_reset_all_controls(ppl_context* c) {
  ppl_reset_decimation(c);
  ppl_reset_quality(c);
  ppl_reset_mean_collection(c);
  ppl_reset_P3_only(c);
  ppl_reset_rgb_dekneel_table(c);
  ppl_reset_rgb_delta(c);
  ppl_reset_medium_filter(c);
  ppl_reset_rgb_gain(c);
  ppl_reset_sensor_matrix(c);
  ppl_reset_sensor_matrix_index_upper_bound(c);
  ppl_reset_quals_rgb_gain(c);
  ppl_reset_qual_min_max(c);
  ppl_reset_qAE_min_max(c);
  ppl_reset_edge_threshold(c);
  ppl_reset_edge_threshold2(c);
  ppl_reset_nf88_edge_enhance_factor(c);
  ppl_reset_noise_filter_G_12T_threshold(c);
  ppl_reset_noise_filter_R_8T_threshold(c);
  ppl_reset_noise_filter_B_8T_threshold(c);
  ppl_reset_CFA_T0_threshold(c);
  ppl_reset_CFA_T1_threshold(c);
  ppl_reset_intl_3T_threshold(c);
  ppl_reset_sat_hue(c);
  ppl_reset_contrast(c);
  ppl_reset_gamma(c);
  ppl_reset_mirrors(c);
  ppl_reset_optical_black_b_gb_gr_r(c);
  ppl_reset_GbGr_correction(c);
  return ppl_reset_lens_correction(c);
}
