// The entry points of the vector code of qualities 3 and 13: cells to colours, and rows of planes to rows of a format.
//
// Sources may be read up to 64 bytes behind their end (row storage, see tile/kernels.h). Destinations get exactly the
// bytes told and need no alignment: they may be the caller's memory. Counts are multiples of 4.
#pragma once

#include <stdint.h>

#include "frame/context.h"

namespace ppl {

// The two rows of a row pair of the finished mosaic, and the rows to make from them.
struct cell_rows {
  const ppl_context* context;
  const uint8_t *even, *odd;
  int32_t width;  // a multiple of 16
  uint8_t* luma[2];
  uint8_t *u, *v;         // width / 2 each, with 128 added
  uint8_t *r, *g[2], *b;  // width each; red and blue serve both rows
};

// A row widened to twice its samples: each sample with the rounded-up mean of itself and its neighbour in front.
struct widen_rule {
  bool
      mirrored;  // descending samples; then the first sample of a tile has for its neighbour the widened value before
  int32_t tile;  // samples in a tile, 8 or 16
};

struct bulk_kernels {
  void (*cells_to_yuv)(const cell_rows&);
  void (*cells_to_rgb)(const cell_rows&);
  void (*copy)(uint8_t* to, const uint8_t* from, int n, bool reversed);
  void (*halve)(uint8_t* to, const uint8_t* from, int n,
                bool reversed);  // n of the 2n bytes: those at even places
  void (*widen)(uint8_t* to, uint8_t* from, int n,
                widen_rule rule);  // fills the two bytes in front of `from`
  void (*mean)(uint8_t* to, const uint8_t* a, const uint8_t* b, int n);  // rounded up
  void (*yuyv)(uint8_t* to, const uint8_t* y, const uint8_t* u, const uint8_t* v, int pixels);
  void (*uyvy)(uint8_t* to, const uint8_t* y, const uint8_t* u, const uint8_t* v, int pixels);
  void (*rgb24)(uint8_t* to, const uint8_t* r, const uint8_t* g, const uint8_t* b, int pixels);
  void (*rgb32)(uint8_t* to, const uint8_t* r, const uint8_t* g, const uint8_t* b, int pixels);
};

}  // namespace ppl
