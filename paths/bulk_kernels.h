// The entry points of the vector code of qualities 3 and 13: cells to colours. Planes become rows of a format by the
// output stage's kernels.
//
// Sources may be read up to 64 bytes behind their end (row storage, see tile/kernels.h). Destinations get exactly the
// bytes told and need no alignment: they may be the caller's memory.
#pragma once

#include <stdint.h>

#include "record/context.h"

namespace ppl {

// The two rows of a row pair of the finished mosaic, and the rows to make from them. Chroma has 128 added.
struct cell_rows {
  const ppl_context* context;
  const uint8_t *even, *odd;
  int32_t width;  // a multiple of 16
  uint8_t* luma[2];
  uint8_t *u, *v;         // width / 2 each
  uint8_t* words;         // width: U and V of each cell
  uint8_t *r, *g[2], *b;  // width each; red and blue serve both rows
};

struct bulk_kernels {
  void (*cells_to_yuv)(const cell_rows&);    // luma, u, v
  void (*cells_to_words)(const cell_rows&);  // luma, words
  void (*cells_to_rgb)(const cell_rows&);
};

}  // namespace ppl
