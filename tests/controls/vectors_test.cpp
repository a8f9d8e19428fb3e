// The vectors that setters derive: lanes, and what a refusal leaves of them.
#include "controls/fixture.h"

namespace {

using namespace ctl;
using vectors = ctl::controls;

TEST_F(vectors, defaults) {
  EXPECT_EQ(lanes(c->gain_b_g), all(32));
  EXPECT_EQ(lanes(c->gain_g_r), all(32));
  EXPECT_EQ(lanes(c->quals_gain_b_g), all(64));
  EXPECT_EQ(lanes(c->quals_gain_g_r), all(64));
  EXPECT_EQ(lanes(c->delta_b_g), all(0));
  EXPECT_EQ(lanes(c->delta_g_r), all(0));
  EXPECT_EQ(lanes(c->black_b_gb), bytes(0));
  EXPECT_EQ(lanes(c->black_gr_r), bytes(0));
  EXPECT_EQ(lanes(c->qual_BmGb_low), all(-26));
  EXPECT_EQ(lanes(c->qual_BmGb_high), all(26));
  EXPECT_EQ(lanes(c->qual_GrmR_low), all(-26));
  EXPECT_EQ(lanes(c->qual_GrmR_high), all(26));
  EXPECT_EQ(lanes(c->qual_sum_low), all(-31));
  EXPECT_EQ(lanes(c->qual_sum_high), all(31));
  EXPECT_EQ(lanes(c->qual_diff_low), all(-31));
  EXPECT_EQ(lanes(c->qual_diff_high), all(31));
  EXPECT_EQ(lanes(c->qual_rg_min), all(0));
  EXPECT_EQ(lanes(c->qual_rg_span), all(-1));  // 0xffff
  EXPECT_EQ(lanes(c->qual_gb_min), all(0));
  EXPECT_EQ(lanes(c->qual_gb_span), all(-1));
  EXPECT_EQ(lanes(c->qAE_min), bytes(0));
  EXPECT_EQ(lanes(c->qAE_below_min), bytes(255));
  EXPECT_EQ(lanes(c->qAE_max), bytes(255));
  EXPECT_EQ(lanes(c->qAE_above_max), bytes(0));
  EXPECT_EQ(lanes(c->medium_diff_plus), all(24));
  EXPECT_EQ(lanes(c->medium_diff_minus), all(-24));
  EXPECT_EQ(lanes(c->medium_hot), all(240));
  EXPECT_EQ(lanes(c->medium_dead), all(16));
  EXPECT_EQ(lanes(c->medium_hot_percent), all(20));
  EXPECT_EQ(lanes(c->medium_dead_percent), all(12));
  EXPECT_EQ(lanes(c->GbGr_diff_plus), all(10));
  EXPECT_EQ(lanes(c->GbGr_diff_minus), all(-10));
  EXPECT_EQ(lanes(c->edge_threshold_vector), all(100));
  EXPECT_EQ(lanes(c->edge_threshold2_vector), all(1530));
  EXPECT_EQ(lanes(c->edge_factor_vector), all(4));
  EXPECT_EQ(lanes(c->intl_3T_vector), all(50));
  EXPECT_EQ(lanes(c->G_12T_vector), all(60));
  EXPECT_EQ(lanes(c->R_8T_vector), all(40));
  EXPECT_EQ(lanes(c->B_8T_vector), all(40));
  EXPECT_EQ(lanes(c->CFA_T0_vector), bytes(10));
  EXPECT_EQ(lanes(c->CFA_T1_vector), all(15));
}

TEST_F(vectors, red_gain_300_reaches_the_red_lanes_alone) {
  EXPECT_EQ(ppl_set_r_gain(c, 300), 1);
  EXPECT_EQ(lanes(c->gain_g_r), pairs(32, 37));
  EXPECT_EQ(lanes(c->gain_b_g), all(32));
}

TEST_F(vectors, blue_gain_reaches_the_blue_lanes_alone_green_gain_both_rows) {
  EXPECT_EQ(ppl_set_b_gain(c, 2047), 1);
  EXPECT_EQ(lanes(c->gain_b_g), pairs(255, 32));
  EXPECT_EQ(lanes(c->gain_g_r), all(32));
  EXPECT_EQ(ppl_set_g_gain(c, 7), 1);
  EXPECT_EQ(lanes(c->gain_b_g), pairs(255, 0));
  EXPECT_EQ(lanes(c->gain_g_r), pairs(0, 32));
}

TEST_F(vectors, a_refused_gain_leaves_both_vectors) {
  ASSERT_EQ(ppl_set_rgb_gain(c, 80, 160, 240), 1);
  EXPECT_EQ(ppl_set_rgb_gain(c, 4000, 8, 8), 0);
  EXPECT_EQ(ppl_nf88_r_gain(c), 4000u);
  EXPECT_EQ(lanes(c->gain_b_g), pairs(30, 20));
  EXPECT_EQ(lanes(c->gain_g_r), pairs(20, 10));
}

// Red 4000 was refused; green, set alone, brings it in: 4000 >> 3.
TEST_F(vectors, a_refused_partner_reaches_a_lane_through_a_single_colour_setter) {
  EXPECT_EQ(ppl_set_r_gain(c, 4000), 0);
  EXPECT_EQ(lanes(c->gain_g_r), all(32));
  EXPECT_EQ(ppl_set_g_gain(c, 64), 1);
  EXPECT_EQ(lanes(c->gain_g_r), pairs(8, 500));
  EXPECT_EQ(lanes(c->gain_b_g), pairs(32, 8));
  // Green refused, red set alone: the green lanes of the two row types differ from then on.
  EXPECT_EQ(ppl_set_g_gain(c, 8000), 0);
  EXPECT_EQ(ppl_set_r_gain(c, 256), 1);
  EXPECT_EQ(lanes(c->gain_g_r), pairs(1000, 32));
  EXPECT_EQ(lanes(c->gain_b_g), pairs(32, 8));
}

TEST_F(vectors, lanes_take_the_low_16_bits_of_a_refused_gain) {
  EXPECT_EQ(ppl_set_g_gain(c, 0xfffffff8u), 0);
  EXPECT_EQ(ppl_set_b_gain(c, 256), 1);
  EXPECT_EQ(lanes(c->gain_b_g), pairs(32, -1));
}

TEST_F(vectors, deltas_do_not_borrow_from_their_neighbours) {
  EXPECT_EQ(ppl_set_rgb_delta(c, -1, 5, -32768), 1);
  EXPECT_EQ(lanes(c->delta_b_g), pairs(-32768, 5));
  EXPECT_EQ(lanes(c->delta_g_r), pairs(5, -1));
  EXPECT_EQ(ppl_set_g_delta(c, -7), 1);
  EXPECT_EQ(lanes(c->delta_b_g), pairs(-32768, -7));
  EXPECT_EQ(lanes(c->delta_g_r), pairs(-7, -1));
  EXPECT_EQ(ppl_set_r_delta(c, 9), 1);
  EXPECT_EQ(lanes(c->delta_g_r), pairs(-7, 9));
  EXPECT_EQ(ppl_set_b_delta(c, 11), 1);
  EXPECT_EQ(lanes(c->delta_b_g), pairs(11, -7));
}

TEST_F(vectors, a_refused_delta_leaves_the_vectors) {
  ASSERT_EQ(ppl_set_rgb_delta(c, 1, 2, 3), 1);
  EXPECT_EQ(ppl_set_rgb_delta(c, 4, 5, 40000), 0);
  EXPECT_EQ(ppl_set_r_delta(c, -40000), 0);
  EXPECT_EQ(lanes(c->delta_b_g), pairs(3, 2));
  EXPECT_EQ(lanes(c->delta_g_r), pairs(2, 1));
  // The refused blue comes in with green: 40000 - 65536.
  EXPECT_EQ(ppl_set_g_delta(c, 6), 1);
  EXPECT_EQ(lanes(c->delta_b_g), pairs(-25536, 6));
  EXPECT_EQ(lanes(c->delta_g_r), pairs(6, 25536));
}

TEST_F(vectors, black_levels_alternate_by_byte) {
  EXPECT_EQ(ppl_set_optical_black_b_gb_gr_r(c, 9, 11, 10, 255), 1);
  EXPECT_EQ(lanes(c->black_b_gb), pairs(9, 11, 16));
  EXPECT_EQ(lanes(c->black_gr_r), pairs(10, 255, 16));
  EXPECT_EQ(ppl_set_optical_black_b_gb_gr_r(c, 256, 0, 0, 0), 0);
  EXPECT_EQ(lanes(c->black_b_gb), pairs(9, 11, 16));
  EXPECT_EQ(lanes(c->black_gr_r), pairs(10, 255, 16));
}

TEST_F(vectors, medium_filter_diff_24) {
  EXPECT_EQ(ppl_set_medium_filter_diff_threshold(c, 24), 1);
  EXPECT_EQ(lanes(c->medium_diff_plus), all(24));
  EXPECT_EQ(lanes(c->medium_diff_minus), all(-24));
  // The negative of the least threshold wraps onto itself.
  EXPECT_EQ(ppl_set_medium_filter_diff_threshold(c, -32768), 1);
  EXPECT_EQ(lanes(c->medium_diff_minus), all(-32768));
  EXPECT_EQ(ppl_set_medium_filter_diff_threshold(c, 40000), 0);
  EXPECT_EQ(lanes(c->medium_diff_plus), all(-32768));
}

TEST_F(vectors, percentage_80) {
  EXPECT_EQ(ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(c, 80), 1);
  EXPECT_EQ(lanes(c->medium_hot_percent), all(20));
  EXPECT_EQ(ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(c, -1), 1);
  EXPECT_EQ(lanes(c->medium_hot_percent), all(-1));
  EXPECT_EQ(ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(c, -65536), 1);
  EXPECT_EQ(lanes(c->medium_hot_percent), all(-16384));
  EXPECT_EQ(ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(c, 65535), 1);
  EXPECT_EQ(lanes(c->medium_dead_percent), all(16383));
  EXPECT_EQ(ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(c, 65536), 0);
  EXPECT_EQ(lanes(c->medium_dead_percent), all(16383));
}

TEST_F(vectors, hot_dead_and_green_balance) {
  EXPECT_EQ(ppl_set_medium_filter_hot_pixel_threshold(c, -200), 1);
  EXPECT_EQ(ppl_set_medium_filter_dead_pixel_threshold(c, 31), 1);
  EXPECT_EQ(ppl_set_GbGr_correction_diff_threshold(c, 14), 1);
  EXPECT_EQ(lanes(c->medium_hot), all(-200));
  EXPECT_EQ(lanes(c->medium_dead), all(31));
  EXPECT_EQ(lanes(c->GbGr_diff_plus), all(14));
  EXPECT_EQ(lanes(c->GbGr_diff_minus), all(-14));
  EXPECT_EQ(ppl_set_medium_filter_hot_pixel_threshold(c, 32768), 0);
  EXPECT_EQ(ppl_set_medium_filter_dead_pixel_threshold(c, -32769), 0);
  EXPECT_EQ(ppl_set_GbGr_correction_diff_threshold(c, 32768), 0);
  EXPECT_EQ(lanes(c->medium_hot), all(-200));
  EXPECT_EQ(lanes(c->medium_dead), all(31));
  EXPECT_EQ(lanes(c->GbGr_diff_plus), all(14));
}

TEST_F(vectors, filter_thresholds) {
  EXPECT_EQ(ppl_set_edge_threshold(c, 1529), 1);
  EXPECT_EQ(ppl_set_edge_threshold2(c, 2), 1);
  EXPECT_EQ(ppl_set_nf88_edge_enhance_factor(c, 255), 1);
  EXPECT_EQ(ppl_set_noise_filter_G_12T_threshold(c, 3060), 1);
  EXPECT_EQ(ppl_set_noise_filter_R_8T_threshold(c, 2040), 1);
  EXPECT_EQ(ppl_set_noise_filter_B_8T_threshold(c, 2039), 1);
  EXPECT_EQ(ppl_set_CFA_T0_threshold(c, 254), 1);
  EXPECT_EQ(ppl_set_CFA_T1_threshold(c, 63), 1);
  EXPECT_EQ(ppl_set_intl_3T_threshold(c, 765), 1);
  EXPECT_EQ(lanes(c->edge_threshold_vector), all(1529));
  EXPECT_EQ(lanes(c->edge_threshold2_vector), all(2));
  EXPECT_EQ(lanes(c->edge_factor_vector), all(31));
  EXPECT_EQ(lanes(c->G_12T_vector), all(3060));
  EXPECT_EQ(lanes(c->R_8T_vector), all(2040));
  EXPECT_EQ(lanes(c->B_8T_vector), all(2039));
  EXPECT_EQ(lanes(c->CFA_T0_vector), bytes(254));
  EXPECT_EQ(lanes(c->CFA_T1_vector), all(63));
  EXPECT_EQ(lanes(c->intl_3T_vector), all(765));
  EXPECT_EQ(ppl_set_edge_threshold(c, 1531), 0);
  EXPECT_EQ(ppl_edge_threshold(c), 1529u);
  EXPECT_EQ(lanes(c->edge_threshold_vector), all(1529));
}

TEST_F(vectors, difference_ranges) {
  EXPECT_EQ(ppl_set_qual_BmGb_min_max(c, -60, 70), 1);
  EXPECT_EQ(ppl_set_qual_GrmR_min_max(c, -80, 50), 1);
  EXPECT_EQ(ppl_set_qual_BmGb_p_GrmR_min_max(c, -90, 100), 1);
  EXPECT_EQ(ppl_set_qual_BmGb_m_GrmR_min_max(c, -110, 90), 1);
  EXPECT_EQ(lanes(c->qual_BmGb_low), all(-61));
  EXPECT_EQ(lanes(c->qual_BmGb_high), all(71));
  EXPECT_EQ(lanes(c->qual_GrmR_low), all(-81));
  EXPECT_EQ(lanes(c->qual_GrmR_high), all(51));
  EXPECT_EQ(lanes(c->qual_sum_low), all(-91));
  EXPECT_EQ(lanes(c->qual_sum_high), all(101));
  EXPECT_EQ(lanes(c->qual_diff_low), all(-111));
  EXPECT_EQ(lanes(c->qual_diff_high), all(91));
  EXPECT_EQ(c->qual_BmGb.count, 131);
  EXPECT_EQ(ppl_set_qual_BmGb_min_max(c, -32768, 0), 0);
  EXPECT_EQ(lanes(c->qual_BmGb_low), all(-61));
  EXPECT_EQ(lanes(c->qual_BmGb_high), all(71));
}

// Byte pairs: green in the even bytes of the red and green vectors, blue in the even bytes of the others.
TEST_F(vectors, sample_ranges) {
  EXPECT_EQ(ppl_set_qual_RGB_min_max(c, 10, 240, 12, 230, 14, 220), 1);
  EXPECT_EQ(lanes(c->qual_rg_min), all(10 * 256 + 12));
  EXPECT_EQ(lanes(c->qual_rg_span), all(230 * 256 + 218 - 65536));
  EXPECT_EQ(lanes(c->qual_gb_min), all(12 * 256 + 14));
  EXPECT_EQ(lanes(c->qual_gb_span), all(218 * 256 + 206 - 65536));
  EXPECT_EQ(ppl_set_qual_R_min_max(c, 1, 2), 1);
  EXPECT_EQ(lanes(c->qual_rg_min), all(1 * 256 + 12));
  EXPECT_EQ(lanes(c->qual_rg_span), all(1 * 256 + 218));
  EXPECT_EQ(lanes(c->qual_gb_min), all(12 * 256 + 14));
  EXPECT_EQ(ppl_set_qual_B_min_max(c, 3, 6), 1);
  EXPECT_EQ(lanes(c->qual_gb_min), all(12 * 256 + 3));
  EXPECT_EQ(lanes(c->qual_gb_span), all(218 * 256 + 3 - 65536));
  EXPECT_EQ(lanes(c->qual_rg_min), all(1 * 256 + 12));
  EXPECT_EQ(ppl_set_qual_G_min_max(c, 7, 9), 1);
  EXPECT_EQ(lanes(c->qual_rg_min), all(1 * 256 + 7));
  EXPECT_EQ(lanes(c->qual_rg_span), all(1 * 256 + 2));
  EXPECT_EQ(lanes(c->qual_gb_min), all(7 * 256 + 3));
  EXPECT_EQ(lanes(c->qual_gb_span), all(2 * 256 + 3));
  EXPECT_EQ(ppl_set_qAE_RGB_min_max(c, 20, 200), 1);
  EXPECT_EQ(lanes(c->qAE_min), bytes(20));
  EXPECT_EQ(lanes(c->qAE_below_min), bytes(19));
  EXPECT_EQ(lanes(c->qAE_max), bytes(200));
  EXPECT_EQ(lanes(c->qAE_above_max), bytes(201));
}

}  // namespace
