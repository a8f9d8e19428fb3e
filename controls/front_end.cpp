// Black level, delta and gain, per colour of the mosaic, and the tables and gains that reach no picture.
//
// A row of the mosaic alternates between two colours, so each control becomes two vectors whose lanes alternate: B and
// Gb for even rows, Gr and R for odd ones. These setters store before they test: a refused value can be read back,
// while the vectors keep what they held. A setter of one colour tests that colour alone, but rebuilds from the stored
// value of its partner too, refused or not.
#include "controls/defaults.h"
#include "controls/vectors.h"

using namespace ppl;

namespace {

constexpr uint32_t kLargestGain = 2047, kLargestQualsGain = 1023;
// Fraction bits dropped: a gain acts in steps of 8/256 in the picture, 4/256 in the quals.
constexpr int kGainShift = 3, kQualsGainShift = 2;

bool rebuild_black(ppl_context* c) {
  if (c->optical_black_b > 255 || c->optical_black_gb > 255 || c->optical_black_gr > 255 ||
      c->optical_black_r > 255) {
    return false;
  }
  fill_byte_pairs(&c->black_b_gb, c->optical_black_b, c->optical_black_gb);
  fill_byte_pairs(&c->black_gr_r, c->optical_black_gr, c->optical_black_r);
  return true;
}

void fill_delta_b_g(ppl_context* c) {
  fill_pairs(&c->delta_b_g, c->b_delta, c->g_delta);
}

void fill_delta_g_r(ppl_context* c) {
  fill_pairs(&c->delta_g_r, c->g_delta, c->r_delta);
}

bool rebuild_delta(ppl_context* c) {
  if (!fits_i16(c->r_delta) || !fits_i16(c->g_delta) || !fits_i16(c->b_delta)) return false;
  fill_delta_b_g(c);
  fill_delta_g_r(c);
  return true;
}

void fill_gains(vec_i16* v, uint32_t even, uint32_t odd, int shift) {
  fill_pairs(v, static_cast<int32_t>(even >> shift), static_cast<int32_t>(odd >> shift));
}

void fill_gain_b_g(ppl_context* c) {
  fill_gains(&c->gain_b_g, c->nf88_b_gain, c->nf88_g_gain, kGainShift);
}

void fill_gain_g_r(ppl_context* c) {
  fill_gains(&c->gain_g_r, c->nf88_g_gain, c->nf88_r_gain, kGainShift);
}

bool rebuild_gain(ppl_context* c) {
  if (c->nf88_r_gain > kLargestGain || c->nf88_g_gain > kLargestGain || c->nf88_b_gain > kLargestGain) {
    return false;
  }
  fill_gain_b_g(c);
  fill_gain_g_r(c);
  return true;
}

void fill_quals_gain_b_g(ppl_context* c) {
  fill_gains(&c->quals_gain_b_g, c->nf88_quals_b_gain, c->nf88_quals_g_gain, kQualsGainShift);
}

void fill_quals_gain_g_r(ppl_context* c) {
  fill_gains(&c->quals_gain_g_r, c->nf88_quals_g_gain, c->nf88_quals_r_gain, kQualsGainShift);
}

void rebuild_quals_gain(ppl_context* c) {
  if (c->nf88_quals_r_gain > kLargestQualsGain || c->nf88_quals_g_gain > kLargestQualsGain ||
      c->nf88_quals_b_gain > kLargestQualsGain) {
    return;
  }
  fill_quals_gain_b_g(c);
  fill_quals_gain_g_r(c);
}

void copy_table(uint8_t* to, const uint8_t* from) {
  __builtin_memmove(to, from, 256);
}

}  // namespace

void ppl_optical_black_b_gb_gr_r(const ppl_context* c, uint32_t* b, uint32_t* gb, uint32_t* gr, uint32_t* r) {
  if (b) *b = c->optical_black_b;
  if (gb) *gb = c->optical_black_gb;
  if (gr) *gr = c->optical_black_gr;
  if (r) *r = c->optical_black_r;
}

uint8_t ppl_set_optical_black_b_gb_gr_r(ppl_context* c, uint32_t b, uint32_t gb, uint32_t gr, uint32_t r) {
  c->optical_black_b = b;
  c->optical_black_gb = gb;
  c->optical_black_gr = gr;
  c->optical_black_r = r;
  return rebuild_black(c);
}

uint8_t ppl_reset_optical_black_b_gb_gr_r(ppl_context* c) {
  return ppl_set_optical_black_b_gb_gr_r(c, 0, 0, 0, 0);
}

// The dekneel tables are kept for the caller; no frame reads them. The copies are made, and the answer is false.
const uint8_t* ppl_r_dekneel_table(const ppl_context* c) {
  return c->r_dekneel_table;
}

const uint8_t* ppl_g_dekneel_table(const ppl_context* c) {
  return c->g_dekneel_table;
}

const uint8_t* ppl_b_dekneel_table(const ppl_context* c) {
  return c->b_dekneel_table;
}

uint8_t ppl_copy_r_dekneel_table(ppl_context* c, const uint8_t* table) {
  if (table) copy_table(c->r_dekneel_table, table);
  return 0;
}

uint8_t ppl_copy_g_dekneel_table(ppl_context* c, const uint8_t* table) {
  if (table) copy_table(c->g_dekneel_table, table);
  return 0;
}

uint8_t ppl_copy_b_dekneel_table(ppl_context* c, const uint8_t* table) {
  if (table) copy_table(c->b_dekneel_table, table);
  return 0;
}

uint8_t ppl_reset_rgb_dekneel_table(ppl_context* c) {
  for (int i = 0; i < 256; ++i) {
    c->r_dekneel_table[i] = c->g_dekneel_table[i] = c->b_dekneel_table[i] = static_cast<uint8_t>(i);
  }
  return 1;
}

int32_t ppl_r_delta(const ppl_context* c) {
  return c->r_delta;
}

int32_t ppl_g_delta(const ppl_context* c) {
  return c->g_delta;
}

int32_t ppl_b_delta(const ppl_context* c) {
  return c->b_delta;
}

uint8_t ppl_set_rgb_delta(ppl_context* c, int32_t r, int32_t g, int32_t b) {
  c->r_delta = r;
  c->g_delta = g;
  c->b_delta = b;
  return rebuild_delta(c);
}

uint8_t ppl_set_r_delta(ppl_context* c, int32_t value) {
  c->r_delta = value;
  if (!fits_i16(value)) return 0;
  fill_delta_g_r(c);
  return 1;
}

uint8_t ppl_set_g_delta(ppl_context* c, int32_t value) {
  c->g_delta = value;
  if (!fits_i16(value)) return 0;
  fill_delta_b_g(c);
  fill_delta_g_r(c);
  return 1;
}

uint8_t ppl_set_b_delta(ppl_context* c, int32_t value) {
  c->b_delta = value;
  if (!fits_i16(value)) return 0;
  fill_delta_b_g(c);
  return 1;
}

uint8_t ppl_reset_rgb_delta(ppl_context* c) {
  return ppl_set_rgb_delta(c, 0, 0, 0);
}

uint32_t ppl_nf88_r_gain(const ppl_context* c) {
  return c->nf88_r_gain;
}

uint32_t ppl_nf88_g_gain(const ppl_context* c) {
  return c->nf88_g_gain;
}

uint32_t ppl_nf88_b_gain(const ppl_context* c) {
  return c->nf88_b_gain;
}

uint8_t ppl_set_rgb_gain(ppl_context* c, uint32_t r, uint32_t g, uint32_t b) {
  c->nf88_r_gain = r;
  c->nf88_g_gain = g;
  c->nf88_b_gain = b;
  return rebuild_gain(c);
}

uint8_t ppl_set_r_gain(ppl_context* c, uint32_t value) {
  c->nf88_r_gain = value;
  if (value > kLargestGain) return 0;
  fill_gain_g_r(c);
  return 1;
}

uint8_t ppl_set_g_gain(ppl_context* c, uint32_t value) {
  c->nf88_g_gain = value;
  if (value > kLargestGain) return 0;
  fill_gain_b_g(c);
  fill_gain_g_r(c);
  return 1;
}

uint8_t ppl_set_b_gain(ppl_context* c, uint32_t value) {
  c->nf88_b_gain = value;
  if (value > kLargestGain) return 0;
  fill_gain_b_g(c);
  return 1;
}

uint8_t ppl_reset_rgb_gain(ppl_context* c) {
  return ppl_set_rgb_gain(c, kUnityGain, kUnityGain, kUnityGain);
}

uint32_t ppl_nf88_quals_r_gain(const ppl_context* c) {
  return c->nf88_quals_r_gain;
}

uint32_t ppl_nf88_quals_g_gain(const ppl_context* c) {
  return c->nf88_quals_g_gain;
}

uint32_t ppl_nf88_quals_b_gain(const ppl_context* c) {
  return c->nf88_quals_b_gain;
}

// The four quals setters answer false whether they stored the value or not.
uint8_t ppl_set_quals_rgb_gain(ppl_context* c, uint32_t r, uint32_t g, uint32_t b) {
  c->nf88_quals_r_gain = r;
  c->nf88_quals_g_gain = g;
  c->nf88_quals_b_gain = b;
  rebuild_quals_gain(c);
  return 0;
}

uint8_t ppl_set_quals_r_gain(ppl_context* c, uint32_t value) {
  c->nf88_quals_r_gain = value;
  if (value <= kLargestQualsGain) fill_quals_gain_g_r(c);
  return 0;
}

uint8_t ppl_set_quals_g_gain(ppl_context* c, uint32_t value) {
  c->nf88_quals_g_gain = value;
  if (value <= kLargestQualsGain) {
    fill_quals_gain_b_g(c);
    fill_quals_gain_g_r(c);
  }
  return 0;
}

uint8_t ppl_set_quals_b_gain(ppl_context* c, uint32_t value) {
  c->nf88_quals_b_gain = value;
  if (value <= kLargestQualsGain) fill_quals_gain_b_g(c);
  return 0;
}

uint8_t ppl_reset_quals_rgb_gain(ppl_context* c) {
  ppl_set_quals_rgb_gain(c, kUnityGain, kUnityGain, kUnityGain);
  return 1;
}
