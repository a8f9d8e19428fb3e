// Every control: default, range, what a refusal stores, what a setter answers.
#include "controls/fixture.h"

namespace {

using surface = ctl::controls;

TEST_F(surface, defaults) {
  EXPECT_EQ(ppl_quality(c), 15u);
  EXPECT_EQ(ppl_mean_collection(c), 1);
  EXPECT_EQ(ppl_P3_only(c), 0);
  EXPECT_EQ(ppl_sensor_type(c), 0u);
  EXPECT_EQ(ppl_h_mirror(c), 0);
  EXPECT_EQ(ppl_v_mirror(c), 0);
  EXPECT_EQ(ppl_decimation(c), 0);
  EXPECT_EQ(ppl_decimation_top_black_lines(c), 0);
  EXPECT_EQ(ppl_decimation_bottom_black_lines(c), 0);
  uint32_t b = 1, gb = 1, gr = 1, r = 1;
  ppl_optical_black_b_gb_gr_r(c, &b, &gb, &gr, &r);
  EXPECT_EQ(b + gb + gr + r, 0u);
  for (const uint8_t* t : {ppl_r_dekneel_table(c), ppl_g_dekneel_table(c), ppl_b_dekneel_table(c)}) {
    for (int i = 0; i < 256; ++i) ASSERT_EQ(t[i], i);
  }
  EXPECT_EQ(ppl_r_delta(c), 0);
  EXPECT_EQ(ppl_g_delta(c), 0);
  EXPECT_EQ(ppl_b_delta(c), 0);
  EXPECT_EQ(ppl_nf88_r_gain(c), 256u);
  EXPECT_EQ(ppl_nf88_g_gain(c), 256u);
  EXPECT_EQ(ppl_nf88_b_gain(c), 256u);
  EXPECT_EQ(ppl_nf88_quals_r_gain(c), 256u);
  EXPECT_EQ(ppl_nf88_quals_g_gain(c), 256u);
  EXPECT_EQ(ppl_nf88_quals_b_gain(c), 256u);
  EXPECT_EQ(ppl_sensor_matrix_index_upper_bound(c), 12u);
  EXPECT_EQ(ppl_medium_filter_enabled(c), 0);
  EXPECT_EQ(ppl_medium_filter_diff_threshold(c), 24);
  EXPECT_EQ(ppl_medium_filter_hot_pixel_threshold(c), 240);
  EXPECT_EQ(ppl_medium_filter_dead_pixel_threshold(c), 16);
  EXPECT_EQ(ppl_nf88_medium_filter_hot_pixel_threshold_percentage(c), 80);
  EXPECT_EQ(ppl_nf88_medium_filter_dead_pixel_threshold_percentage(c), 48);
  EXPECT_EQ(ppl_qual_BmGb_min(c), -25);
  EXPECT_EQ(ppl_qual_BmGb_max(c), 25);
  EXPECT_EQ(ppl_qual_GrmR_min(c), -25);
  EXPECT_EQ(ppl_qual_GrmR_max(c), 25);
  EXPECT_EQ(ppl_qual_BmGb_p_GrmR_min(c), -30);
  EXPECT_EQ(ppl_qual_BmGb_p_GrmR_max(c), 30);
  EXPECT_EQ(ppl_qual_BmGb_m_GrmR_min(c), -30);
  EXPECT_EQ(ppl_qual_BmGb_m_GrmR_max(c), 30);
  EXPECT_EQ(ppl_qual_R_min(c), 0);
  EXPECT_EQ(ppl_qual_R_max(c), 255);
  EXPECT_EQ(ppl_qual_G_min(c), 0);
  EXPECT_EQ(ppl_qual_G_max(c), 255);
  EXPECT_EQ(ppl_qual_B_min(c), 0);
  EXPECT_EQ(ppl_qual_B_max(c), 255);
  EXPECT_EQ(ppl_qAE_RGB_min(c), 0);
  EXPECT_EQ(ppl_qAE_RGB_max(c), 255);
  EXPECT_EQ(ppl_nf88_sat(c), 256u);
  EXPECT_EQ(ppl_hue_degree(c), 0);
  EXPECT_EQ(ppl_GbGr_correction_enabled(c), 0);
  EXPECT_EQ(ppl_GbGr_correction_diff_threshold(c), 10);
  EXPECT_EQ(ppl_lens_correction_enabled(c), 0);
  EXPECT_EQ(ppl_lens_correction_width(c), 640);
  EXPECT_EQ(ppl_lens_correction_height(c), 480);
  EXPECT_EQ(ppl_lens_correction_origin_x(c), 320);
  EXPECT_EQ(ppl_lens_correction_origin_y(c), 240);
  EXPECT_EQ(ppl_lens_correction_table(c), nullptr);
  EXPECT_EQ(ppl_lens_correction_f1(c), 16);
  EXPECT_EQ(ppl_lens_correction_f1_rshift_count(c), 24);
  EXPECT_EQ(ppl_lens_correction_f2(c), 16);
  EXPECT_EQ(ppl_lens_correction_f2_rshift_count(c), 44);
}

TEST_F(surface, quality_16_is_refused_and_not_stored) {
  for (uint32_t q = 0; q <= 15; ++q) {
    EXPECT_EQ(ppl_set_quality(c, q), 1);
    EXPECT_EQ(ppl_quality(c), q);
  }
  ppl_set_quality(c, 3);
  EXPECT_EQ(ppl_set_quality(c, 16), 0);
  EXPECT_EQ(ppl_set_quality(c, 0xffffffffu), 0);
  EXPECT_EQ(ppl_quality(c), 3u);
}

TEST_F(surface, flags_hold_any_byte) {
  for (int v : {0, 1, 2, 255}) {
    const uint8_t b = static_cast<uint8_t>(v);
    EXPECT_EQ(ppl_set_mean_collection(c, b), 1);
    EXPECT_EQ(ppl_mean_collection(c), v);
    EXPECT_EQ(ppl_set_P3_only(c, b), 1);
    EXPECT_EQ(ppl_P3_only(c), v);
    EXPECT_EQ(ppl_set_h_mirror(c, b), 1);
    EXPECT_EQ(ppl_h_mirror(c), v);
    EXPECT_EQ(ppl_set_v_mirror(c, b), 1);
    EXPECT_EQ(ppl_v_mirror(c), v);
  }
}

TEST_F(surface, enabling_and_disabling) {
  EXPECT_EQ(ppl_enable_medium_filter(c), 1);
  EXPECT_EQ(ppl_medium_filter_enabled(c), 1);
  EXPECT_EQ(ppl_disable_medium_filter(c), 1);
  EXPECT_EQ(ppl_medium_filter_enabled(c), 0);
  EXPECT_EQ(ppl_enable_GbGr_correction(c), 1);
  EXPECT_EQ(ppl_GbGr_correction_enabled(c), 1);
  EXPECT_EQ(ppl_disable_GbGr_correction(c), 1);
  EXPECT_EQ(ppl_GbGr_correction_enabled(c), 0);
  EXPECT_EQ(ppl_enable_lens_correction(c), 1);
  EXPECT_EQ(ppl_lens_correction_enabled(c), 1);
  EXPECT_EQ(ppl_disable_lens_correction(c), 1);
  EXPECT_EQ(ppl_lens_correction_enabled(c), 0);
}

TEST_F(surface, every_reset_answers_true_but_that_of_lens_correction_and_of_all) {
  using reset = uint8_t (*)(ppl_context*);
  const reset resets[] = {ppl_reset_quality,
                          ppl_reset_mean_collection,
                          ppl_reset_P3_only,
                          ppl_reset_mirrors,
                          ppl_reset_optical_black_b_gb_gr_r,
                          ppl_reset_rgb_dekneel_table,
                          ppl_reset_rgb_delta,
                          ppl_reset_rgb_gain,
                          ppl_reset_quals_rgb_gain,
                          ppl_reset_sensor_matrix,
                          ppl_reset_sensor_matrix_index_upper_bound,
                          ppl_reset_medium_filter,
                          ppl_reset_qual_min_max,
                          ppl_reset_qAE_min_max,
                          ppl_reset_edge_threshold,
                          ppl_reset_edge_threshold2,
                          ppl_reset_nf88_edge_enhance_factor,
                          ppl_reset_noise_filter_G_12T_threshold,
                          ppl_reset_noise_filter_R_8T_threshold,
                          ppl_reset_noise_filter_B_8T_threshold,
                          ppl_reset_CFA_T0_threshold,
                          ppl_reset_CFA_T1_threshold,
                          ppl_reset_intl_3T_threshold,
                          ppl_reset_sat_hue,
                          ppl_reset_contrast,
                          ppl_reset_gamma,
                          ppl_reset_GbGr_correction};
  for (reset r : resets) EXPECT_EQ(r(c), 1);
  EXPECT_EQ(ppl_reset_lens_correction(c), 0);
  EXPECT_EQ(ppl_reset_all_controls(c), 0);
}

TEST_F(surface, a_refused_gain_is_stored) {
  EXPECT_EQ(ppl_set_rgb_gain(c, 0, 2047, 2047), 1);
  EXPECT_EQ(ppl_set_rgb_gain(c, 256, 2048, 300), 0);
  EXPECT_EQ(ppl_nf88_r_gain(c), 256u);
  EXPECT_EQ(ppl_nf88_g_gain(c), 2048u);
  EXPECT_EQ(ppl_nf88_b_gain(c), 300u);
  EXPECT_EQ(ppl_set_r_gain(c, 2048), 0);
  EXPECT_EQ(ppl_nf88_r_gain(c), 2048u);
  EXPECT_EQ(ppl_set_b_gain(c, 0xffffffffu), 0);
  EXPECT_EQ(ppl_nf88_b_gain(c), 0xffffffffu);
  EXPECT_EQ(ppl_set_g_gain(c, 2047), 1);
}

TEST_F(surface, a_frame_after_a_refused_gain_uses_the_old_one) {
  const auto luma = [&](ppl_context* context) {
    ctl::fenced source = ctl::noise_frame(640, 480, 5), out(640 * 480 * 3 / 2);
    EXPECT_EQ(ppl_process_blrtoi420(context, source.data(), out.data(), 640, 480, 640), 1);
    return out.content();
  };
  ppl_set_quality(c, 13);
  ASSERT_EQ(ppl_set_rgb_gain(c, 300, 280, 270), 1);
  const std::vector<uint8_t> before = luma(c);
  EXPECT_EQ(ppl_set_rgb_gain(c, 400, 2048, 400), 0);
  EXPECT_EQ(ppl_nf88_g_gain(c), 2048u);
  EXPECT_EQ(luma(c), before);
  EXPECT_EQ(ppl_set_rgb_gain(c, 400, 2047, 400), 1);
  EXPECT_NE(luma(c), before);
}

std::vector<uint8_t> i420_of_noise(ppl_context* c) {
  ctl::fenced source = ctl::noise_frame(640, 480, 6), out(640 * 480 * 3 / 2);
  EXPECT_EQ(ppl_process_blrtoi420(c, source.data(), out.data(), 640, 480, 640), 1);
  return out.content();
}

TEST_F(surface, a_mirror_set_between_frames_turns_the_next_one) {
  ppl_set_quality(c, 13);
  const std::vector<uint8_t> plain = i420_of_noise(c);
  ppl_set_h_mirror(c, 1);
  const std::vector<uint8_t> mirrored = i420_of_noise(c);
  ppl_set_v_mirror(c, 1);
  const std::vector<uint8_t> turned = i420_of_noise(c);
  for (size_t y = 0; y < 480; ++y) {
    for (size_t x = 0; x < 640; ++x) {
      ASSERT_EQ(mirrored[640 * y + x], plain[640 * y + 639 - x]);
      ASSERT_EQ(turned[640 * y + x], plain[640 * (479 - y) + 639 - x]);
    }
  }
  ppl_reset_mirrors(c);
  EXPECT_EQ(i420_of_noise(c), plain);
}

TEST_F(surface, a_frame_without_saturation_is_grey) {
  ppl_set_sat(c, 0);
  for (uint32_t quality : {15u, 3u, 0u, 1u, 2u}) {
    ppl_set_quality(c, quality);
    const std::vector<uint8_t> picture = i420_of_noise(c);
    for (size_t i = 640 * 480; i < picture.size(); ++i) ASSERT_EQ(picture[i], 128) << quality << " " << i;
  }
}

TEST_F(surface, a_refused_delta_is_stored) {
  EXPECT_EQ(ppl_set_rgb_delta(c, -32768, 32767, 0), 1);
  EXPECT_EQ(ppl_set_rgb_delta(c, -32769, 1, 2), 0);
  EXPECT_EQ(ppl_r_delta(c), -32769);
  EXPECT_EQ(ppl_g_delta(c), 1);
  EXPECT_EQ(ppl_b_delta(c), 2);
  EXPECT_EQ(ppl_set_g_delta(c, 32768), 0);
  EXPECT_EQ(ppl_g_delta(c), 32768);
  EXPECT_EQ(ppl_set_b_delta(c, -5), 1);
  EXPECT_EQ(ppl_b_delta(c), -5);
}

TEST_F(surface, a_refused_black_level_is_stored) {
  EXPECT_EQ(ppl_set_optical_black_b_gb_gr_r(c, 255, 254, 253, 252), 1);
  EXPECT_EQ(ppl_set_optical_black_b_gb_gr_r(c, 1, 2, 3, 256), 0);
  uint32_t b, gb, gr, r;
  ppl_optical_black_b_gb_gr_r(c, &b, &gb, &gr, &r);
  EXPECT_EQ(b, 1u);
  EXPECT_EQ(gb, 2u);
  EXPECT_EQ(gr, 3u);
  EXPECT_EQ(r, 256u);
  ppl_optical_black_b_gb_gr_r(c, nullptr, nullptr, nullptr, nullptr);
  ppl_optical_black_b_gb_gr_r(c, nullptr, nullptr, &gr, nullptr);
  EXPECT_EQ(gr, 3u);
}

TEST_F(surface, copying_a_dekneel_table_takes_effect_and_answers_false) {
  uint8_t table[256];
  for (int i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(255 - i);
  EXPECT_EQ(ppl_copy_r_dekneel_table(c, table), 0);
  EXPECT_EQ(std::memcmp(ppl_r_dekneel_table(c), table, 256), 0);
  EXPECT_EQ(ppl_g_dekneel_table(c)[0], 0);
  EXPECT_EQ(ppl_copy_g_dekneel_table(c, table), 0);
  EXPECT_EQ(std::memcmp(ppl_g_dekneel_table(c), table, 256), 0);
  EXPECT_EQ(ppl_b_dekneel_table(c)[0], 0);
  EXPECT_EQ(ppl_copy_b_dekneel_table(c, table), 0);
  EXPECT_EQ(std::memcmp(ppl_b_dekneel_table(c), table, 256), 0);
  EXPECT_EQ(ppl_reset_rgb_dekneel_table(c), 1);
  for (int i = 0; i < 256; ++i) ASSERT_EQ(ppl_r_dekneel_table(c)[i] + ppl_b_dekneel_table(c)[i], 2 * i);
}

TEST_F(surface, quals_gains_take_effect_and_answer_false) {
  EXPECT_EQ(ppl_set_quals_rgb_gain(c, 1023, 512, 100), 0);
  EXPECT_EQ(ppl_nf88_quals_r_gain(c), 1023u);
  EXPECT_EQ(ppl_nf88_quals_g_gain(c), 512u);
  EXPECT_EQ(ppl_nf88_quals_b_gain(c), 100u);
  EXPECT_EQ(ctl::lanes(c->quals_gain_b_g), ctl::pairs(25, 128));
  EXPECT_EQ(ctl::lanes(c->quals_gain_g_r), ctl::pairs(128, 255));
  EXPECT_EQ(ppl_set_quals_r_gain(c, 8), 0);
  EXPECT_EQ(ppl_set_quals_g_gain(c, 12), 0);
  EXPECT_EQ(ppl_set_quals_b_gain(c, 16), 0);
  EXPECT_EQ(ctl::lanes(c->quals_gain_b_g), ctl::pairs(4, 3));
  EXPECT_EQ(ctl::lanes(c->quals_gain_g_r), ctl::pairs(3, 2));
  EXPECT_EQ(ppl_set_quals_b_gain(c, 1024), 0);
  EXPECT_EQ(ppl_nf88_quals_b_gain(c), 1024u);
  EXPECT_EQ(ppl_set_quals_rgb_gain(c, 0, 0, 1024), 0);
  EXPECT_EQ(ctl::lanes(c->quals_gain_b_g), ctl::pairs(4, 3));
  EXPECT_EQ(ctl::lanes(c->quals_gain_g_r), ctl::pairs(3, 2));
}

struct threshold {
  const char* name;
  uint8_t (*set)(ppl_context*, uint32_t);
  uint32_t (*get)(const ppl_context*);
  uint8_t (*reset)(ppl_context*);
  uint32_t limit, initial;
};

const threshold kThresholds[] = {
    {"edge_threshold", ppl_set_edge_threshold, ppl_edge_threshold, ppl_reset_edge_threshold, 1530, 100},
    {"edge_threshold2", ppl_set_edge_threshold2, ppl_edge_threshold2, ppl_reset_edge_threshold2, 1530, 1530},
    {"edge_enhance_factor", ppl_set_nf88_edge_enhance_factor, ppl_nf88_edge_enhance_factor,
     ppl_reset_nf88_edge_enhance_factor, 256, 32},
    {"G_12T", ppl_set_noise_filter_G_12T_threshold, ppl_noise_filter_G_12T_threshold,
     ppl_reset_noise_filter_G_12T_threshold, 3060, 60},
    {"R_8T", ppl_set_noise_filter_R_8T_threshold, ppl_noise_filter_R_8T_threshold,
     ppl_reset_noise_filter_R_8T_threshold, 2040, 40},
    {"B_8T", ppl_set_noise_filter_B_8T_threshold, ppl_noise_filter_B_8T_threshold,
     ppl_reset_noise_filter_B_8T_threshold, 2040, 40},
    {"CFA_T0", ppl_set_CFA_T0_threshold, ppl_CFA_T0_threshold, ppl_reset_CFA_T0_threshold, 255, 10},
    {"CFA_T1", ppl_set_CFA_T1_threshold, ppl_CFA_T1_threshold, ppl_reset_CFA_T1_threshold, 63, 15},
    {"intl_3T", ppl_set_intl_3T_threshold, ppl_intl_3T_threshold, ppl_reset_intl_3T_threshold, 765, 50},
};

TEST_F(surface, a_filter_threshold_above_its_limit_is_not_stored) {
  for (const threshold& t : kThresholds) {
    SCOPED_TRACE(t.name);
    EXPECT_EQ(t.get(c), t.initial);
    EXPECT_EQ(t.set(c, t.limit), 1);
    EXPECT_EQ(t.get(c), t.limit);
    EXPECT_EQ(t.set(c, 5), 1);
    EXPECT_EQ(t.set(c, t.limit + 1), 0);
    EXPECT_EQ(t.set(c, 0xffffffffu), 0);
    EXPECT_EQ(t.get(c), 5u);
    EXPECT_EQ(t.set(c, 0), 1);
    EXPECT_EQ(t.get(c), 0u);
    EXPECT_EQ(t.reset(c), 1);
    EXPECT_EQ(t.get(c), t.initial);
  }
}

struct pixel_control {
  const char* name;
  uint8_t (*set)(ppl_context*, int32_t);
  int32_t (*get)(const ppl_context*);
  int32_t low, high;
};

TEST_F(surface, a_refused_correction_threshold_is_stored) {
  const pixel_control pixel_controls[] = {
      {"diff", ppl_set_medium_filter_diff_threshold, ppl_medium_filter_diff_threshold, -32768, 32767},
      {"hot", ppl_set_medium_filter_hot_pixel_threshold, ppl_medium_filter_hot_pixel_threshold, -32768,
       32767},
      {"dead", ppl_set_medium_filter_dead_pixel_threshold, ppl_medium_filter_dead_pixel_threshold, -32768,
       32767},
      {"hot percentage", ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage,
       ppl_nf88_medium_filter_hot_pixel_threshold_percentage, -65536, 65535},
      {"dead percentage", ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage,
       ppl_nf88_medium_filter_dead_pixel_threshold_percentage, -65536, 65535},
      {"GbGr", ppl_set_GbGr_correction_diff_threshold, ppl_GbGr_correction_diff_threshold, -32768, 32767},
  };
  for (const pixel_control& k : pixel_controls) {
    SCOPED_TRACE(k.name);
    for (int32_t good : {k.low, k.high, 0, -1}) {
      EXPECT_EQ(k.set(c, good), 1);
      EXPECT_EQ(k.get(c), good);
    }
    for (int32_t bad : {k.low - 1, k.high + 1, INT32_MIN, INT32_MAX}) {
      EXPECT_EQ(k.set(c, bad), 0);
      EXPECT_EQ(k.get(c), bad);
    }
  }
}

TEST_F(surface, resetting_the_medium_filter_resets_its_whole_family) {
  ppl_enable_medium_filter(c);
  ppl_set_medium_filter_diff_threshold(c, 1);
  ppl_set_medium_filter_hot_pixel_threshold(c, 2);
  ppl_set_medium_filter_dead_pixel_threshold(c, 3);
  ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(c, 4);
  ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(c, 5);
  EXPECT_EQ(ppl_reset_medium_filter(c), 1);
  EXPECT_EQ(ppl_medium_filter_enabled(c), 0);
  EXPECT_EQ(ppl_medium_filter_diff_threshold(c), 24);
  EXPECT_EQ(ppl_medium_filter_hot_pixel_threshold(c), 240);
  EXPECT_EQ(ppl_medium_filter_dead_pixel_threshold(c), 16);
  EXPECT_EQ(ppl_nf88_medium_filter_hot_pixel_threshold_percentage(c), 80);
  EXPECT_EQ(ppl_nf88_medium_filter_dead_pixel_threshold_percentage(c), 48);
}

TEST_F(surface, resetting_GbGr_resets_threshold_and_flag) {
  ppl_enable_GbGr_correction(c);
  ppl_set_GbGr_correction_diff_threshold(c, 99);
  EXPECT_EQ(ppl_reset_GbGr_correction(c), 1);
  EXPECT_EQ(ppl_GbGr_correction_enabled(c), 0);
  EXPECT_EQ(ppl_GbGr_correction_diff_threshold(c), 10);
}

struct sample_range {
  const char* name;
  uint8_t (*set)(ppl_context*, int32_t, int32_t);
  int32_t (*low)(const ppl_context*);
  int32_t (*high)(const ppl_context*);
};

const sample_range kSampleRanges[] = {
    {"R", ppl_set_qual_R_min_max, ppl_qual_R_min, ppl_qual_R_max},
    {"G", ppl_set_qual_G_min_max, ppl_qual_G_min, ppl_qual_G_max},
    {"B", ppl_set_qual_B_min_max, ppl_qual_B_min, ppl_qual_B_max},
    {"qAE", ppl_set_qAE_RGB_min_max, ppl_qAE_RGB_min, ppl_qAE_RGB_max},
};

TEST_F(surface, a_bad_sample_range_is_not_stored) {
  for (const sample_range& k : kSampleRanges) {
    SCOPED_TRACE(k.name);
    EXPECT_EQ(k.set(c, 20, 200), 1);
    EXPECT_EQ(k.set(c, -1, 10), 0);
    EXPECT_EQ(k.set(c, 10, 256), 0);
    EXPECT_EQ(k.set(c, 11, 10), 0);
    EXPECT_EQ(k.low(c), 20);
    EXPECT_EQ(k.high(c), 200);
    EXPECT_EQ(k.set(c, 128, 128), 1);
    EXPECT_EQ(k.low(c), 128);
    EXPECT_EQ(k.high(c), 128);
  }
}

TEST_F(surface, the_three_sample_ranges_are_stored_together_or_not_at_all) {
  EXPECT_EQ(ppl_set_qual_RGB_min_max(c, 1, 2, 3, 4, 5, 6), 1);
  EXPECT_EQ(ppl_set_qual_RGB_min_max(c, 10, 20, 30, 40, 60, 50), 0);
  EXPECT_EQ(ppl_set_qual_RGB_min_max(c, 10, 20, 30, 40, 50, 256), 0);
  EXPECT_EQ(ppl_qual_R_min(c), 1);
  EXPECT_EQ(ppl_qual_R_max(c), 2);
  EXPECT_EQ(ppl_qual_G_min(c), 3);
  EXPECT_EQ(ppl_qual_G_max(c), 4);
  EXPECT_EQ(ppl_qual_B_min(c), 5);
  EXPECT_EQ(ppl_qual_B_max(c), 6);
}

const sample_range kDifferenceRanges[] = {
    {"BmGb", ppl_set_qual_BmGb_min_max, ppl_qual_BmGb_min, ppl_qual_BmGb_max},
    {"GrmR", ppl_set_qual_GrmR_min_max, ppl_qual_GrmR_min, ppl_qual_GrmR_max},
    {"BmGb_p_GrmR", ppl_set_qual_BmGb_p_GrmR_min_max, ppl_qual_BmGb_p_GrmR_min, ppl_qual_BmGb_p_GrmR_max},
    {"BmGb_m_GrmR", ppl_set_qual_BmGb_m_GrmR_min_max, ppl_qual_BmGb_m_GrmR_min, ppl_qual_BmGb_m_GrmR_max},
};

TEST_F(surface, an_empty_difference_range_is_not_stored_a_too_wide_one_is) {
  for (const sample_range& k : kDifferenceRanges) {
    SCOPED_TRACE(k.name);
    EXPECT_EQ(k.set(c, -32767, 32766), 1);
    EXPECT_EQ(k.set(c, 6, 5), 0);
    EXPECT_EQ(k.low(c), -32767);
    EXPECT_EQ(k.high(c), 32766);
    EXPECT_EQ(k.set(c, -32768, 5), 0);
    EXPECT_EQ(k.low(c), -32768);
    EXPECT_EQ(k.high(c), 5);
    EXPECT_EQ(k.set(c, 5, 32767), 0);
    EXPECT_EQ(k.low(c), 5);
    EXPECT_EQ(k.high(c), 32767);
    EXPECT_EQ(k.set(c, INT32_MIN, INT32_MAX), 0);
    EXPECT_EQ(k.low(c), INT32_MIN);
    EXPECT_EQ(k.high(c), INT32_MAX);
  }
}

// Everything that a fresh claim sets, a reset of a disturbed context sets to the same bytes; size and statistics stay.
TEST_F(surface, reset_all_controls_restores_every_default) {
  ppl_reset_all_controls(c);
  const ppl_context fresh = *c;
  uint8_t table[256] = {};
  int32_t matrix[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  std::vector<uint16_t> lens(16 * 16);
  ppl_set_decimation(c, 1, 4, 6);
  ppl_set_quality(c, 2);
  ppl_set_mean_collection(c, 0);
  ppl_set_P3_only(c, 1);
  ppl_copy_r_dekneel_table(c, table);
  ppl_copy_g_dekneel_table(c, table);
  ppl_copy_b_dekneel_table(c, table);
  ppl_set_rgb_delta(c, 1, 2, 3);
  ppl_set_medium_filter_diff_threshold(c, 1);
  ppl_set_medium_filter_hot_pixel_threshold(c, 1);
  ppl_set_medium_filter_dead_pixel_threshold(c, 1);
  ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(c, 4);
  ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(c, 4);
  ppl_enable_medium_filter(c);
  ppl_set_rgb_gain(c, 1, 2, 3000);
  ppl_copy_sensor_matrix(c, matrix);
  ppl_set_sensor_matrix_index_upper_bound(c, 1);
  ppl_set_quals_rgb_gain(c, 1, 2, 3);
  for (const sample_range& k : kSampleRanges) k.set(c, 1, 2);
  for (const sample_range& k : kDifferenceRanges) k.set(c, 1, 2);
  for (const threshold& t : kThresholds) t.set(c, 1);
  ppl_set_contrast_c(c, 90, nullptr, nullptr);
  ppl_set_sat_hue(c, 100, 77);
  ppl_set_gamma(c, -7);
  ppl_copy_contrast_table(c, table);
  ppl_copy_rgb_gamma_table(c, table);
  ppl_set_h_mirror(c, 1);
  ppl_set_v_mirror(c, 1);
  ppl_set_optical_black_b_gb_gr_r(c, 1, 2, 3, 4);
  ppl_set_GbGr_correction_diff_threshold(c, 1);
  ppl_enable_GbGr_correction(c);
  ppl_enable_lens_correction(c);
  EXPECT_EQ(ppl_set_lens_correction(c, 16, 16, 8, 8, lens.data(), 512, 1, 2, 3, 4), 1);
  EXPECT_NE(std::memcmp(&fresh, c, sizeof fresh), 0);
  EXPECT_EQ(ppl_reset_all_controls(c), 0);
  EXPECT_EQ(std::memcmp(&fresh, c, sizeof fresh), 0);
}

TEST_F(surface, reset_all_controls_keeps_size_count_and_statistics) {
  c->n_frame = 41;
  c->qual_count = 42;
  c->stats_scale = 43;
  c->mark_position = 4;
  c->sub_window_means[7].g = 45;
  ppl_reset_all_controls(c);
  EXPECT_EQ(ppl_n_frame(c), 41u);
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(c), 42u);
  EXPECT_EQ(c->stats_scale, 43);
  EXPECT_EQ(c->mark_position, 4);
  EXPECT_EQ(c->frame_width, 640);
  EXPECT_EQ(ppl_rgb_means_sub_windows(c)[3 * 7 + 1], 45u);
  c->n_frame = c->qual_count = 0;
  c->stats_scale = c->mark_position = 0;
  c->sub_window_means[7].g = 0;
}

}  // namespace
