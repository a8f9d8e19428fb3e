// Quality, statistics switch, mirrors, and the controls that only answer.
#include "controls/defaults.h"
#include "helpers/ppl_qualities.h"
#include "record/context.h"

using namespace ppl;

uint32_t ppl_quality(const ppl_context* c) {
  return c->quality;
}

uint8_t ppl_set_quality(ppl_context* c, uint32_t quality) {
  if (quality >= PPL_QUALITIES) return 0;
  c->quality = quality;
  return 1;
}

uint8_t ppl_reset_quality(ppl_context* c) {
  return ppl_set_quality(c, PPL_QUALITY_DEFAULT);
}

uint8_t ppl_mean_collection(const ppl_context* c) {
  return c->mean_collection;
}

uint8_t ppl_set_mean_collection(ppl_context* c, uint8_t value) {
  c->mean_collection = value;
  return 1;
}

uint8_t ppl_reset_mean_collection(ppl_context* c) {
  return ppl_set_mean_collection(c, kDefaultMeanCollection);
}

uint8_t ppl_P3_only(const ppl_context* c) {
  return c->P3_only;
}

uint8_t ppl_set_P3_only(ppl_context* c, uint8_t value) {
  c->P3_only = value;
  return 1;
}

uint8_t ppl_reset_P3_only(ppl_context* c) {
  return ppl_set_P3_only(c, 0);
}

uint32_t ppl_sensor_type(const ppl_context* c) {
  return c->sensor_type;
}

// Answers whether the code is known; nothing depends on the sensor.
uint8_t ppl_set_sensor_type(ppl_context*, uint32_t code) {
  return code == 0x5754 || code == 0x5948 || code == 0x42564F || code == 0x7544F4D;
}

uint8_t ppl_h_mirror(const ppl_context* c) {
  return c->h_mirror;
}

uint8_t ppl_set_h_mirror(ppl_context* c, uint8_t value) {
  c->h_mirror = value;
  return rebuild_output_plan(c);
}

uint8_t ppl_v_mirror(const ppl_context* c) {
  return c->v_mirror;
}

uint8_t ppl_set_v_mirror(ppl_context* c, uint8_t value) {
  c->v_mirror = value;
  return rebuild_output_plan(c);
}

uint8_t ppl_reset_mirrors(ppl_context* c) {
  const uint8_t v = ppl_set_v_mirror(c, 0);
  const uint8_t h = ppl_set_h_mirror(c, 0);
  return v && h;
}

uint32_t ppl_n_frame(const ppl_context* c) {
  return c->n_frame;
}
