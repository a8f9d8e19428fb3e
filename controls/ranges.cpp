// Ranges that decide which 2 x 2 cells of the mosaic count in the qualified means.
//
// Ranges of samples are refused, and not stored, unless they lie in 0 to 255. Ranges of differences are refused, and
// not stored, only if they are empty; if a bound's exclusive neighbour does not fit in 16 bits they are stored, then
// refused, and the vectors stay.
#include "controls/defaults.h"
#include "controls/vectors.h"

using namespace ppl;

namespace {

void store(range* r, int32_t minimum, int32_t maximum) {
  r->minimum = minimum;
  r->maximum = maximum;
  r->count = static_cast<int32_t>(static_cast<uint32_t>(maximum) - static_cast<uint32_t>(minimum) + 1u);
}

bool set_difference(range* r, vec_i16* low, vec_i16* high, int32_t minimum, int32_t maximum) {
  if (minimum > maximum) return false;
  store(r, minimum, maximum);
  if (!fits_i16(static_cast<int64_t>(minimum) - 1) || !fits_i16(static_cast<int64_t>(maximum) + 1))
    return false;
  fill_lanes(low, minimum - 1);
  fill_lanes(high, maximum + 1);
  return true;
}

bool is_sample_range(int32_t minimum, int32_t maximum) {
  return minimum <= maximum && minimum >= 0 && maximum <= 255;
}

// The range of the odd bytes and that of the even bytes of a row of byte pairs.
void fill_sample_pair(vec_i16* least, vec_i16* span, const range& odd, const range& even) {
  fill_lanes(least, (odd.minimum << 8) + (even.minimum & 255));
  fill_lanes(span, ((odd.count - 1) << 8) + (even.count - 1));
}

void rebuild_qual_rg(ppl_context* c) {
  fill_sample_pair(&c->qual_rg_min, &c->qual_rg_span, c->qual_R, c->qual_G);
}

void rebuild_qual_gb(ppl_context* c) {
  fill_sample_pair(&c->qual_gb_min, &c->qual_gb_span, c->qual_G, c->qual_B);
}

void rebuild_qAE(ppl_context* c) {
  fill_bytes(&c->qAE_min, c->qAE_RGB.minimum);
  fill_bytes(&c->qAE_below_min, c->qAE_RGB.minimum - 1);  // wraps to 255 for minimum 0
  fill_bytes(&c->qAE_max, c->qAE_RGB.maximum);
  fill_bytes(&c->qAE_above_max, c->qAE_RGB.maximum + 1);  // wraps to 0 for maximum 255
}

}  // namespace

int32_t ppl_qual_BmGb_min(const ppl_context* c) {
  return c->qual_BmGb.minimum;
}

int32_t ppl_qual_BmGb_max(const ppl_context* c) {
  return c->qual_BmGb.maximum;
}

uint8_t ppl_set_qual_BmGb_min_max(ppl_context* c, int32_t minimum, int32_t maximum) {
  return set_difference(&c->qual_BmGb, &c->qual_BmGb_low, &c->qual_BmGb_high, minimum, maximum);
}

int32_t ppl_qual_GrmR_min(const ppl_context* c) {
  return c->qual_GrmR.minimum;
}

int32_t ppl_qual_GrmR_max(const ppl_context* c) {
  return c->qual_GrmR.maximum;
}

uint8_t ppl_set_qual_GrmR_min_max(ppl_context* c, int32_t minimum, int32_t maximum) {
  return set_difference(&c->qual_GrmR, &c->qual_GrmR_low, &c->qual_GrmR_high, minimum, maximum);
}

int32_t ppl_qual_BmGb_p_GrmR_min(const ppl_context* c) {
  return c->qual_BmGb_p_GrmR.minimum;
}

int32_t ppl_qual_BmGb_p_GrmR_max(const ppl_context* c) {
  return c->qual_BmGb_p_GrmR.maximum;
}

uint8_t ppl_set_qual_BmGb_p_GrmR_min_max(ppl_context* c, int32_t minimum, int32_t maximum) {
  return set_difference(&c->qual_BmGb_p_GrmR, &c->qual_sum_low, &c->qual_sum_high, minimum, maximum);
}

int32_t ppl_qual_BmGb_m_GrmR_min(const ppl_context* c) {
  return c->qual_BmGb_m_GrmR.minimum;
}

int32_t ppl_qual_BmGb_m_GrmR_max(const ppl_context* c) {
  return c->qual_BmGb_m_GrmR.maximum;
}

uint8_t ppl_set_qual_BmGb_m_GrmR_min_max(ppl_context* c, int32_t minimum, int32_t maximum) {
  return set_difference(&c->qual_BmGb_m_GrmR, &c->qual_diff_low, &c->qual_diff_high, minimum, maximum);
}

int32_t ppl_qual_R_min(const ppl_context* c) {
  return c->qual_R.minimum;
}

int32_t ppl_qual_R_max(const ppl_context* c) {
  return c->qual_R.maximum;
}

uint8_t ppl_set_qual_R_min_max(ppl_context* c, int32_t minimum, int32_t maximum) {
  if (!is_sample_range(minimum, maximum)) return 0;
  store(&c->qual_R, minimum, maximum);
  rebuild_qual_rg(c);
  return 1;
}

int32_t ppl_qual_G_min(const ppl_context* c) {
  return c->qual_G.minimum;
}

int32_t ppl_qual_G_max(const ppl_context* c) {
  return c->qual_G.maximum;
}

uint8_t ppl_set_qual_G_min_max(ppl_context* c, int32_t minimum, int32_t maximum) {
  if (!is_sample_range(minimum, maximum)) return 0;
  store(&c->qual_G, minimum, maximum);
  rebuild_qual_rg(c);
  rebuild_qual_gb(c);
  return 1;
}

int32_t ppl_qual_B_min(const ppl_context* c) {
  return c->qual_B.minimum;
}

int32_t ppl_qual_B_max(const ppl_context* c) {
  return c->qual_B.maximum;
}

uint8_t ppl_set_qual_B_min_max(ppl_context* c, int32_t minimum, int32_t maximum) {
  if (!is_sample_range(minimum, maximum)) return 0;
  store(&c->qual_B, minimum, maximum);
  rebuild_qual_gb(c);
  return 1;
}

uint8_t ppl_set_qual_RGB_min_max(ppl_context* c, int32_t r_min, int32_t r_max, int32_t g_min, int32_t g_max,
                                 int32_t b_min, int32_t b_max) {
  if (!is_sample_range(r_min, r_max) || !is_sample_range(g_min, g_max) || !is_sample_range(b_min, b_max)) {
    return 0;
  }
  store(&c->qual_R, r_min, r_max);
  store(&c->qual_G, g_min, g_max);
  store(&c->qual_B, b_min, b_max);
  rebuild_qual_rg(c);
  rebuild_qual_gb(c);
  return 1;
}

uint8_t ppl_reset_qual_min_max(ppl_context* c) {
  ppl_set_qual_BmGb_min_max(c, -kDefaultDifference, kDefaultDifference);
  ppl_set_qual_GrmR_min_max(c, -kDefaultDifference, kDefaultDifference);
  ppl_set_qual_BmGb_p_GrmR_min_max(c, -kDefaultSumOrDifference, kDefaultSumOrDifference);
  ppl_set_qual_BmGb_m_GrmR_min_max(c, -kDefaultSumOrDifference, kDefaultSumOrDifference);
  return ppl_set_qual_RGB_min_max(c, 0, 255, 0, 255, 0, 255);
}

int32_t ppl_qAE_RGB_min(const ppl_context* c) {
  return c->qAE_RGB.minimum;
}

int32_t ppl_qAE_RGB_max(const ppl_context* c) {
  return c->qAE_RGB.maximum;
}

uint8_t ppl_set_qAE_RGB_min_max(ppl_context* c, int32_t minimum, int32_t maximum) {
  if (!is_sample_range(minimum, maximum)) return 0;
  store(&c->qAE_RGB, minimum, maximum);
  rebuild_qAE(c);
  return 1;
}

uint8_t ppl_reset_qAE_min_max(ppl_context* c) {
  return ppl_set_qAE_RGB_min_max(c, 0, 255);
}
