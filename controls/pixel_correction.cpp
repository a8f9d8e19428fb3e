// Medium filter (hot and dead pixels) and green balance. Values are stored before they are tested.
#include "controls/defaults.h"
#include "controls/vectors.h"

using namespace ppl;

namespace {

bool rebuild_threshold(vec_i16* v, int32_t value) {
  if (!fits_i16(value)) return false;
  fill_lanes(v, value);
  return true;
}

bool rebuild_plus_minus(vec_i16* plus, vec_i16* minus, int32_t value) {
  if (!fits_i16(value)) return false;
  fill_lanes(plus, value);
  fill_lanes(minus, -value);
  return true;
}

// 8 fraction bits come in, 6 reach the lanes. A control may hold one bit more than a lane.
bool rebuild_percentage(vec_i16* v, int32_t value) {
  if (!fits_i17(value)) return false;
  fill_lanes(v, value >> 2);
  return true;
}

}  // namespace

uint8_t ppl_medium_filter_enabled(const ppl_context* c) {
  return c->medium_filter_enabled;
}

uint8_t ppl_enable_medium_filter(ppl_context* c) {
  c->medium_filter_enabled = 1;
  return 1;
}

uint8_t ppl_disable_medium_filter(ppl_context* c) {
  c->medium_filter_enabled = 0;
  return 1;
}

uint8_t ppl_reset_medium_filter(ppl_context* c) {
  ppl_set_medium_filter_diff_threshold(c, kDefaultMediumDiff);
  ppl_set_medium_filter_hot_pixel_threshold(c, kDefaultMediumHot);
  ppl_set_medium_filter_dead_pixel_threshold(c, kDefaultMediumDead);
  ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(c, kDefaultMediumHotPercentage);
  ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(c, kDefaultMediumDeadPercentage);
  return ppl_disable_medium_filter(c);
}

int32_t ppl_medium_filter_diff_threshold(const ppl_context* c) {
  return c->medium_filter_diff_threshold;
}

uint8_t ppl_set_medium_filter_diff_threshold(ppl_context* c, int32_t value) {
  c->medium_filter_diff_threshold = value;
  return rebuild_plus_minus(&c->medium_diff_plus, &c->medium_diff_minus, value);
}

int32_t ppl_medium_filter_hot_pixel_threshold(const ppl_context* c) {
  return c->medium_filter_hot_pixel_threshold;
}

uint8_t ppl_set_medium_filter_hot_pixel_threshold(ppl_context* c, int32_t value) {
  c->medium_filter_hot_pixel_threshold = value;
  return rebuild_threshold(&c->medium_hot, value);
}

int32_t ppl_medium_filter_dead_pixel_threshold(const ppl_context* c) {
  return c->medium_filter_dead_pixel_threshold;
}

uint8_t ppl_set_medium_filter_dead_pixel_threshold(ppl_context* c, int32_t value) {
  c->medium_filter_dead_pixel_threshold = value;
  return rebuild_threshold(&c->medium_dead, value);
}

int32_t ppl_nf88_medium_filter_hot_pixel_threshold_percentage(const ppl_context* c) {
  return c->nf88_medium_filter_hot_pixel_threshold_percentage;
}

uint8_t ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(ppl_context* c, int32_t value) {
  c->nf88_medium_filter_hot_pixel_threshold_percentage = value;
  return rebuild_percentage(&c->medium_hot_percent, value);
}

int32_t ppl_nf88_medium_filter_dead_pixel_threshold_percentage(const ppl_context* c) {
  return c->nf88_medium_filter_dead_pixel_threshold_percentage;
}

uint8_t ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(ppl_context* c, int32_t value) {
  c->nf88_medium_filter_dead_pixel_threshold_percentage = value;
  return rebuild_percentage(&c->medium_dead_percent, value);
}

uint8_t ppl_GbGr_correction_enabled(const ppl_context* c) {
  return c->GbGr_correction_enabled;
}

uint8_t ppl_enable_GbGr_correction(ppl_context* c) {
  c->GbGr_correction_enabled = 1;
  return 1;
}

uint8_t ppl_disable_GbGr_correction(ppl_context* c) {
  c->GbGr_correction_enabled = 0;
  return 1;
}

int32_t ppl_GbGr_correction_diff_threshold(const ppl_context* c) {
  return c->GbGr_correction_diff_threshold;
}

uint8_t ppl_set_GbGr_correction_diff_threshold(ppl_context* c, int32_t value) {
  c->GbGr_correction_diff_threshold = value;
  return rebuild_plus_minus(&c->GbGr_diff_plus, &c->GbGr_diff_minus, value);
}

uint8_t ppl_reset_GbGr_correction(ppl_context* c) {
  ppl_set_GbGr_correction_diff_threshold(c, kDefaultGbGrDiff);
  return ppl_disable_GbGr_correction(c);
}
