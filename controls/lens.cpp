// Lens shading: a table of factors, in memory of the caller's, filled once from a polynomial in the squared
// distance from the optical centre. One row per distance in rows from the centre, one entry per column.
#include "record/context.h"

using namespace ppl;

namespace {

constexpr uint32_t kFactorBits = 13;  // fraction bits of a factor
constexpr uint64_t kUnity = 1u << kFactorBits;

int32_t wrapping_sub(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

uint64_t widened(int32_t x) {
  return static_cast<uint64_t>(static_cast<int64_t>(x));
}

// x * x + y * y in 32 bits.
int32_t squared_distance(int32_t x, int32_t y) {
  const uint32_t ux = static_cast<uint32_t>(x), uy = static_cast<uint32_t>(y);
  return static_cast<int32_t>(ux * ux + uy * uy);
}

// A term with `shift_count` fraction bits, brought to those of a factor. Counts below 13 come out modulo 64.
uint64_t term(uint64_t product, int32_t shift_count) {
  const uint32_t shift = (static_cast<uint32_t>(shift_count) - kFactorBits) & 63u;
  return static_cast<uint64_t>(static_cast<int64_t>(product) >> shift);
}

struct polynomial {
  uint64_t f1, f2;
  int32_t f1_shift_count, f2_shift_count;
};

uint16_t factor(const polynomial& p, int32_t x, int32_t y) {
  const uint64_t r = widened(squared_distance(x, y));
  const uint64_t a = term(p.f1 * r, p.f1_shift_count);
  const uint64_t b = term(p.f2 * r * r, p.f2_shift_count);
  return static_cast<uint16_t>(a - b + kUnity);
}

// Stops at the end of the table: the needed size may have wrapped below what the loops would write.
void fill_table(const ppl_context* c) {
  const int32_t first = c->lens_smallest_x_offset, last = c->lens_largest_x_offset;
  const int32_t last_row = c->lens_largest_y_offset;
  if (first > last || c->lens_table_size < 0) return;
  const polynomial p = {widened(c->lens_f1), widened(c->lens_f2), c->lens_f1_rshift_count,
                        c->lens_f2_rshift_count};
  uint16_t* entry = c->lens_table;
  uint16_t* const end = entry + c->lens_table_size / 2;
  for (int64_t y = 0; y <= last_row; ++y) {
    for (int64_t x = first; x <= last; ++x) {
      if (entry == end) return;
      *entry++ = factor(p, static_cast<int32_t>(x), static_cast<int32_t>(y));
    }
  }
}

}  // namespace

uint8_t ppl_lens_correction_enabled(const ppl_context* c) {
  return c->lens_correction_enabled;
}

uint8_t ppl_enable_lens_correction(ppl_context* c) {
  c->lens_correction_enabled = 1;
  return 1;
}

uint8_t ppl_disable_lens_correction(ppl_context* c) {
  c->lens_correction_enabled = 0;
  return 1;
}

int32_t ppl_lens_correction_width(const ppl_context* c) {
  return c->lens_width;
}

int32_t ppl_lens_correction_height(const ppl_context* c) {
  return c->lens_height;
}

int32_t ppl_lens_correction_origin_x(const ppl_context* c) {
  return c->lens_origin_x;
}

int32_t ppl_lens_correction_origin_y(const ppl_context* c) {
  return c->lens_origin_y;
}

int32_t ppl_lens_correction_f1(const ppl_context* c) {
  return c->lens_f1;
}

int32_t ppl_lens_correction_f1_rshift_count(const ppl_context* c) {
  return c->lens_f1_rshift_count;
}

int32_t ppl_lens_correction_f2(const ppl_context* c) {
  return c->lens_f2;
}

int32_t ppl_lens_correction_f2_rshift_count(const ppl_context* c) {
  return c->lens_f2_rshift_count;
}

uint16_t* ppl_lens_correction_table(const ppl_context* c) {
  return c->lens_table;
}

uint8_t ppl_set_lens_correction(ppl_context* c, int32_t width, int32_t height, int32_t origin_x,
                                int32_t origin_y, uint16_t* table, int32_t table_size, int32_t f1,
                                int32_t f1_rshift_count, int32_t f2, int32_t f2_rshift_count) {
  c->lens_f1 = f1;
  c->lens_f1_rshift_count = f1_rshift_count;
  c->lens_f2 = f2;
  c->lens_f2_rshift_count = f2_rshift_count;
  c->lens_height = height;
  c->lens_origin_y = origin_y;
  c->lens_width = width;
  c->lens_origin_x = origin_x;
  c->lens_table = table;
  c->lens_table_size = table_size;
  c->lens_largest_x_offset = wrapping_sub(wrapping_sub(width, origin_x), 1);
  c->lens_smallest_x_offset = wrapping_sub(0, origin_x);
  const int32_t below = wrapping_sub(height, origin_y);
  c->lens_largest_y_offset = origin_y > below ? origin_y : below;
  const uint32_t rows = static_cast<uint32_t>(c->lens_largest_y_offset) + 1u;
  c->lens_needed_size = static_cast<int32_t>(rows * static_cast<uint32_t>(width) * 2u);
  if (!table || table_size < c->lens_needed_size) {
    c->lens_table = nullptr;
    c->lens_table_size = 0;
    return 0;
  }
  fill_table(c);
  return 1;
}

uint8_t ppl_reset_lens_correction(ppl_context* c) {
  ppl_disable_lens_correction(c);
  return ppl_set_lens_correction(c, 640, 480, 320, 240, nullptr, 0, 16, 24, 16, 44);  // false: no table
}
