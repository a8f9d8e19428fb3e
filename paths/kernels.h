// The entry points of this room's vector code: cells to colours, for the frames made cell by cell, whose planes the
// output stage's kernels make rows of a format; and the two blocks that run in the walk for single qualities.
//
// Rows of the walk are row storage as in tile/kernels.h. Cells: sources may be read up to 64 bytes beyond their end;
// destinations get exactly the bytes told and need no alignment, as they may be the caller's memory.
#pragma once

#include <stdint.h>

#include "record/context.h"
#include "tile/kernels.h"

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

// paths/flat_test-inl.h: rows r - 2 .. r + 3 for the test, r - 1 .. r + 2 for the colours
struct flat_args {
  const ppl_context* context;
  const uint8_t* const* rows;
  const uint8_t* const* colour_rows;
  uint8_t *mask, *r, *g, *b;  // row storage, one 16-bit lane for two columns
  int32_t odd_row;
  int32_t width;
};

// paths/mosaic_edge-inl.h: the two rows of a row pair with the rows around them, in place
struct mosaic_edge_args {
  const ppl_context* context;
  uint8_t* rows[4];  // 2p - 1 .. 2p + 2; 2p and 2p + 1 are overwritten with Y, unless there are three planes
  const colour_matrix* matrix;
  uint8_t* plane[3][2];  // of each row Y and chroma words, which may be null; or three planes
  int32_t three_planes;  // no Y enters the neighbourhood
  int32_t width;
};

struct path_kernels {
  void (*cells_to_yuv)(const cell_rows&);    // luma, u, v
  void (*cells_to_words)(const cell_rows&);  // luma, words
  void (*cells_to_rgb)(const cell_rows&);
  void (*flat_test)(const flat_args&);
  void (*mosaic_edge)(const mosaic_edge_args&);
};

}  // namespace ppl
