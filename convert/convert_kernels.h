// Row kernels of the decoder frame conversions: one table of them per vector level.
//
// A row is packed 4:2:2: two bytes a pixel, one luma and one chroma byte. Rows are counted in pixels here, always
// a multiple of 16 (rows that came out of shrinking are padded in their row storage). No kernel reads or writes
// outside the row lengths told here, and none needs alignment.
#pragma once

#include <stdint.h>

#include "record/format.h"

namespace ppl {

// What the motion test of one row looks at.
struct blend_rows {
  const uint8_t* kept;     // the row above the one to make, from the kept field
  const uint8_t* below;    // the row below it
  const uint8_t* earlier;  // the same row one frame ago
  const uint8_t* later;    // the row itself, as its field has it
};

// Where a pair of rows goes in I420.
struct plane_rows {
  uint8_t *luma[2], *u, *v;
};

struct convert_kernels {
  // Row operations. All means round up: (a + b + 1) >> 1.
  // The later row, its chroma bytes replaced by the mean of kept and below where the motion test says so. The kept row
  // is copied to kept_out, if that is not null.
  void (*blend[kByteOrders])(uint8_t* out, uint8_t* kept_out, const blend_rows& rows, int pixels,
                             int threshold);
  // in_pixels is a multiple of 16; out gets a half or a quarter of them, and up to 64 bytes of padding.
  void (*shrink_2[kByteOrders])(uint8_t* out, const uint8_t* in, int in_pixels);
  void (*shrink_4[kByteOrders])(uint8_t* out, const uint8_t* in, int in_pixels);
  // Twice the pixels, YUYV only.
  void (*widen)(uint8_t* out, const uint8_t* in, int in_pixels);
  // Both rows widened to K and L, between them and the widened row before their means: mean(K, before), K,
  // mean(K, L), L. L replaces the row before. YUYV only.
  void (*double_pair)(uint8_t* const out[4], const uint8_t* kept, const uint8_t* later, uint8_t* before,
                      int in_pixels);

  // Row sinks.
  void (*swap)(uint8_t* out, const uint8_t* in, int pixels);  // the two bytes of every word change places
  void (*rgb24[kByteOrders])(uint8_t* out, const uint8_t* in, int pixels);
  // Luma of both rows and the mean of their chroma; [1] with each output row reversed.
  void (*planes[kByteOrders][2])(const plane_rows& out, const uint8_t* in_0, const uint8_t* in_1, int pixels);

  // Units of 48 bytes of the 12-bit layout to 32 luma bytes and 16 mixed chroma bytes each; [1] with the units in
  // reversed order and luma reversed.
  void (*twelve_bit[2])(uint8_t* luma, uint8_t* chroma, const uint8_t* in, int units);
};

}  // namespace ppl
