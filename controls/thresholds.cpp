// Filter thresholds. These setters test first: above the limit nothing is stored.
//
// A limit is the largest sum of samples that its threshold is compared with.
#include "controls/defaults.h"
#include "controls/vectors.h"

using namespace ppl;

namespace {

bool set_threshold(uint32_t* control, vec_i16* v, uint32_t value, uint32_t limit) {
  if (value > limit) return false;
  *control = value;
  fill_lanes(v, static_cast<int32_t>(value));
  return true;
}

}  // namespace

uint32_t ppl_edge_threshold(const ppl_context* c) {
  return c->edge_threshold;
}

uint8_t ppl_set_edge_threshold(ppl_context* c, uint32_t value) {
  return set_threshold(&c->edge_threshold, &c->edge_threshold_vector, value, 6 * 255);
}

uint8_t ppl_reset_edge_threshold(ppl_context* c) {
  return ppl_set_edge_threshold(c, kDefaultEdgeThreshold);
}

uint32_t ppl_edge_threshold2(const ppl_context* c) {
  return c->edge_threshold2;
}

uint8_t ppl_set_edge_threshold2(ppl_context* c, uint32_t value) {
  return set_threshold(&c->edge_threshold2, &c->edge_threshold2_vector, value, 6 * 255);
}

uint8_t ppl_reset_edge_threshold2(ppl_context* c) {
  return ppl_set_edge_threshold2(c, kDefaultEdgeThreshold2);
}

uint32_t ppl_nf88_edge_enhance_factor(const ppl_context* c) {
  return c->nf88_edge_enhance_factor;
}

uint8_t ppl_set_nf88_edge_enhance_factor(ppl_context* c, uint32_t value) {
  if (value > 256) return 0;
  c->nf88_edge_enhance_factor = value;
  fill_lanes(&c->edge_factor_vector, static_cast<int32_t>(value >> 3));  // 5 fraction bits
  return 1;
}

uint8_t ppl_reset_nf88_edge_enhance_factor(ppl_context* c) {
  return ppl_set_nf88_edge_enhance_factor(c, kDefaultEdgeFactor);
}

uint32_t ppl_noise_filter_G_12T_threshold(const ppl_context* c) {
  return c->noise_filter_G_12T_threshold;
}

uint8_t ppl_set_noise_filter_G_12T_threshold(ppl_context* c, uint32_t value) {
  return set_threshold(&c->noise_filter_G_12T_threshold, &c->G_12T_vector, value, 12 * 255);
}

uint8_t ppl_reset_noise_filter_G_12T_threshold(ppl_context* c) {
  return ppl_set_noise_filter_G_12T_threshold(c, kDefaultG12T);
}

uint32_t ppl_noise_filter_R_8T_threshold(const ppl_context* c) {
  return c->noise_filter_R_8T_threshold;
}

uint8_t ppl_set_noise_filter_R_8T_threshold(ppl_context* c, uint32_t value) {
  return set_threshold(&c->noise_filter_R_8T_threshold, &c->R_8T_vector, value, 8 * 255);
}

uint8_t ppl_reset_noise_filter_R_8T_threshold(ppl_context* c) {
  return ppl_set_noise_filter_R_8T_threshold(c, kDefaultR8T);
}

uint32_t ppl_noise_filter_B_8T_threshold(const ppl_context* c) {
  return c->noise_filter_B_8T_threshold;
}

uint8_t ppl_set_noise_filter_B_8T_threshold(ppl_context* c, uint32_t value) {
  return set_threshold(&c->noise_filter_B_8T_threshold, &c->B_8T_vector, value, 8 * 255);
}

uint8_t ppl_reset_noise_filter_B_8T_threshold(ppl_context* c) {
  return ppl_set_noise_filter_B_8T_threshold(c, kDefaultB8T);
}

uint32_t ppl_CFA_T0_threshold(const ppl_context* c) {
  return c->CFA_T0_threshold;
}

uint8_t ppl_set_CFA_T0_threshold(ppl_context* c, uint32_t value) {
  if (value > 255) return 0;
  c->CFA_T0_threshold = value;
  fill_bytes(&c->CFA_T0_vector, static_cast<int32_t>(value));
  return 1;
}

uint8_t ppl_reset_CFA_T0_threshold(ppl_context* c) {
  return ppl_set_CFA_T0_threshold(c, kDefaultCfaT0);
}

uint32_t ppl_CFA_T1_threshold(const ppl_context* c) {
  return c->CFA_T1_threshold;
}

uint8_t ppl_set_CFA_T1_threshold(ppl_context* c, uint32_t value) {
  return set_threshold(&c->CFA_T1_threshold, &c->CFA_T1_vector, value, 63);
}

uint8_t ppl_reset_CFA_T1_threshold(ppl_context* c) {
  return ppl_set_CFA_T1_threshold(c, kDefaultCfaT1);
}

uint32_t ppl_intl_3T_threshold(const ppl_context* c) {
  return c->intl_3T_threshold;
}

uint8_t ppl_set_intl_3T_threshold(ppl_context* c, uint32_t value) {
  return set_threshold(&c->intl_3T_threshold, &c->intl_3T_vector, value, 3 * 255);
}

uint8_t ppl_reset_intl_3T_threshold(ppl_context* c) {
  return ppl_set_intl_3T_threshold(c, kDefaultIntl3T);
}
