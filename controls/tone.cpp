// Tone: a contrast table, two gamma tables, and each gamma table seen through the contrast table.
//
// Whatever changes, yuv_contrast_gamma[i] = yuv_gamma[contrast[i]], and the same for RGB.
#include "controls/gamma_tables.h"
#include "record/context.h"

using namespace ppl;

namespace {

constexpr uint32_t kLargestContrastX = 127;
constexpr int32_t kLargestContrastC = 127;
constexpr int32_t kLargestGammaIndex = kGammaRows / 2;

void compose_tables(ppl_context* c) {
  for (int i = 0; i < 256; ++i) {
    const uint8_t x = c->contrast_table[i];
    c->yuv_contrast_gamma_table[i] = c->yuv_gamma_table[x];
    c->rgb_contrast_gamma_table[i] = c->rgb_gamma_table[x];
  }
}

// memmove: a caller may hand one of this context's own tables.
void copy_table(uint8_t* to, const uint8_t* from) {
  __builtin_memmove(to, from, 256);
}

void copy_block(uint8_t* to, const uint8_t* from) {
  __builtin_memmove(to, from, kGammaBlockBytes);
}

// A control point, both coordinates with 4 fraction bits; y is untested and wraps.
struct point {
  int32_t x;
  uint32_t y;
};

struct segment {
  point from, to;
  int32_t slope;  // 12 fraction bits
};

segment join(point from, point to) {
  const int32_t rise = static_cast<int32_t>((to.y - from.y) * 4096u);
  return {from, to, rise / (to.x - from.x)};
}

uint8_t on_segment(const segment& s, int32_t x) {
  const uint32_t climb = static_cast<uint32_t>(x - s.from.x) * static_cast<uint32_t>(s.slope);
  const uint32_t y = static_cast<uint32_t>(static_cast<int32_t>(climb) >> 12) + s.from.y;
  return static_cast<uint8_t>(static_cast<int32_t>(y) >> 4);
}

// The curve through (0, 0), (x, y), (255 - x, 255 - y), (255, 255); for x = 0 its middle part alone.
void fill_contrast_table(uint8_t* table, uint32_t x, uint32_t y) {
  const point start = {0, 0}, end = {16 * 255, 16 * 255};
  const point low = {static_cast<int32_t>(16 * x), 16 * y};
  const point high = {static_cast<int32_t>(16 * (255 - x)), 16 * (255 - y)};
  segment segments[3];
  int count = 0;
  if (x) segments[count++] = join(start, low);
  segments[count++] = join(low, high);
  if (x) segments[count++] = join(high, end);
  for (int32_t i = 0, s = 0; i < 256; ++i) {
    while (segments[s].to.x < 16 * i) ++s;
    table[i] = on_segment(segments[s], 16 * i);
  }
}

}  // namespace

const uint8_t* ppl_contrast_table(const ppl_context* c) {
  return c->contrast_table;
}

const uint8_t* ppl_yuv_contrast_gamma_table(const ppl_context* c) {
  return c->yuv_contrast_gamma_table;
}

const uint8_t* ppl_rgb_contrast_gamma_table(const ppl_context* c) {
  return c->rgb_contrast_gamma_table;
}

const uint8_t* ppl_yuv_gamma_table(const ppl_context* c) {
  return c->yuv_gamma_table;
}

const uint8_t* ppl_rgb_gamma_table(const ppl_context* c) {
  return c->rgb_gamma_table;
}

uint8_t ppl_set_contrast_xy(ppl_context* c, uint32_t x, uint32_t y) {
  if (x > kLargestContrastX) return 0;
  c->contrast_x = x;
  c->contrast_y = y;
  fill_contrast_table(c->contrast_table, x, y);
  compose_tables(c);
  return ppl_set_sat_hue(c, c->nf88_sat, c->hue_degree);  // the contrast gain is part of the colour matrices
}

// Upward the ends of the curve are clipped, downward its ends are lifted off black and white.
uint8_t ppl_set_contrast_c(ppl_context* c, int32_t contrast, uint32_t* out_x, uint32_t* out_y) {
  if (contrast < -kLargestContrastC || contrast > kLargestContrastC) return 0;
  const uint32_t x = contrast >= 0 ? static_cast<uint32_t>(contrast) : 0;
  const uint32_t y = contrast < 0 ? static_cast<uint32_t>(-contrast) : 0;
  if (out_x) *out_x = x;
  if (out_y) *out_y = y;
  c->contrast_c = contrast;
  return ppl_set_contrast_xy(c, x, y);
}

// With a null table nothing is copied, and the answer is the same.
uint8_t ppl_copy_contrast_table(ppl_context* c, const uint8_t* table) {
  if (!table) return 1;
  copy_table(c->contrast_table, table);
  compose_tables(c);
  return 1;
}

uint8_t ppl_reset_contrast(ppl_context* c) {
  c->contrast_c = 0;
  return ppl_set_contrast_xy(c, 0, 0);
}

uint8_t ppl_get_yuv_gamma_table(const ppl_context* c, uint8_t* table) {
  if (table) copy_table(table, c->yuv_gamma_table);
  return 1;
}

uint8_t ppl_get_rgb_gamma_table(const ppl_context* c, uint8_t* table) {
  if (table) copy_table(table, c->rgb_gamma_table);
  return 1;
}

// A table of the caller's has no known exponent.
uint8_t ppl_copy_yuv_gamma_table(ppl_context* c, const uint8_t* table) {
  if (!table) return 1;
  copy_table(c->yuv_gamma_table, table);
  compose_tables(c);
  c->nf20_12_gamma = 0;
  return 1;
}

uint8_t ppl_copy_rgb_gamma_table(ppl_context* c, const uint8_t* table) {
  if (!table) return 1;
  copy_table(c->rgb_gamma_table, table);
  compose_tables(c);
  c->nf20_12_gamma = 0;
  return 1;
}

int32_t ppl_nf20_12_gamma(const ppl_context* c, int32_t* out_index, int32_t* out_min, int32_t* out_max) {
  if (out_index) *out_index = c->gamma_index;
  if (out_min) *out_min = -kLargestGammaIndex;
  if (out_max) *out_max = kLargestGammaIndex;
  return c->nf20_12_gamma;
}

uint8_t ppl_set_gamma(ppl_context* c, int32_t index) {
  if (index < -kLargestGammaIndex || index > kLargestGammaIndex) return 0;
  const int32_t row = index + kLargestGammaIndex;
  copy_table(c->yuv_gamma_table, gamma_tables65x256[row]);
  copy_table(c->rgb_gamma_table, gamma_tables65x256[row]);
  compose_tables(c);
  c->nf20_12_gamma = kGammaValues[row];
  return 1;
}

uint8_t ppl_reset_gamma(ppl_context* c) {
  return ppl_set_gamma(c, 0);
}

uint8_t ppl_get_gamma_tables65x256(const ppl_context*, uint8_t* tables) {
  if (tables) copy_block(tables, gamma_tables65x256[0]);
  return 1;
}

uint8_t ppl_copy_gamma_tables65x256(ppl_context*, const uint8_t* tables) {
  if (tables) copy_block(gamma_tables65x256[0], tables);
  return 1;
}

uint8_t ppl_get_gamma_tables65x256_16_235(const ppl_context*, uint8_t* tables) {
  if (tables) copy_block(tables, gamma_tables65x256_16_235[0]);
  return 1;
}

uint8_t ppl_copy_gamma_tables65x256_16_235(ppl_context*, const uint8_t* tables) {
  if (tables) copy_block(gamma_tables65x256_16_235[0], tables);
  return 1;
}
