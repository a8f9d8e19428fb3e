// The entry points of the vector code of the blocks in this room. Each works on the two rows of a row pair, or makes
// some of the rows r, r + 1 ... of a ring, whose rows are given as a list of pointers.
//
// Row storage: a row starts at a multiple of 64 bytes; its samples are `width` bytes, a multiple of 16. Of the 64
// bytes on either side kernels may read all, and may write those after the end up to the next multiple of 64. Where a
// block reads neighbours, the two bytes on either side of the row are filled (tile/pads.h). Of the caller's memory
// exactly the `width` bytes given are touched.
//
// Kernels take their arguments, and the vectors of the record that they need, by value before the loop: a byte store
// may change anything in memory, so what a pointer leads to would be loaded again for every vector.
//
// Chroma rows hold words: the U byte, then the V byte of two columns, each with 128 added, so that all bytes in
// row storage are unsigned.
#pragma once

#include <stdint.h>

#include "record/context.h"

namespace ppl {

constexpr int kTile = 16;

// Some of the rows r, r + 1 ...: bit i is row r + i.
using row_bits = uint32_t;
constexpr bool in_bits(row_bits rows, int i) {
  return (rows >> i & 1) != 0;
}
// Runs body(i) for each of them.
template <class Body>
inline __attribute__((always_inline)) void each_row(row_bits rows, Body&& body) {
  for (int i = 0; rows != 0; ++i, rows >>= 1)
    if ((rows & 1) != 0) body(i);
}

// tile/front_end-inl.h
struct front_end_args {
  const ppl_context* context;
  const uint8_t *source_even, *source_odd;  // caller's memory
  uint8_t *frame_even, *frame_odd;          // caller's memory for the result, or null
  uint8_t *row_even, *row_odd;              // row storage for the result
  const uint16_t *lens_even, *lens_odd;     // factors of the two rows, or null
  uint8_t *black_even, *black_odd;          // row storage for the black-corrected samples, or null
  int32_t width;
};

// tile/statistics-inl.h
struct statistics_args {
  ppl_context* context;
  uint8_t *black_even, *black_odd;  // black-corrected samples; the tile before that of tile 1 is overwritten
  const uint8_t *tone_even, *tone_odd;  // finished samples
  int32_t plain_only;                   // neither qual nor qAE
  int32_t last_tile;                    // inner tiles are 1 .. last_tile
  int32_t tile_lead;                    // tiles by which the front end runs ahead
};

// tile/medium_filter-inl.h: rows r - 2 ...
struct medium_args {
  const ppl_context* context;
  const uint8_t* const* rows;
  uint8_t* const* out;
  row_bits made;
  int32_t odd_row;  // row r is odd
  int32_t width;
};

// tile/green_fill-inl.h: rows r - 2 ...
struct green_args {
  const ppl_context* context;
  const uint8_t* const* rows;
  uint8_t* const* out;
  row_bits made;
  int32_t odd_row;
  int32_t width;
};

// A colour matrix as the conversions load it: rows of R, G, B coefficients, 6 fraction bits.
struct colour_matrix {
  vec_i16 coef[9];
  vec_i16 offset[3];  // before the shift; includes the rounding
  vec_i16 bias[3];    // after it: 128 for a chroma row, else 0
};

// tile/demosaic-inl.h: rows r - 1 ... of the mosaic (and of the green rows where they exist)
struct demosaic_args {
  const uint8_t* const* rows;
  const uint8_t* const* green;
  const uint8_t *flat_mask, *flat_r, *flat_g, *flat_b;
  const colour_matrix* matrix;
  uint8_t* const*
      plane[3];  // Y and chroma words; or three planes, one of each matrix row. plane[2] may be null
  row_bits made, with_chroma, with_flat;
  int32_t odd_row;
  int32_t width;
};

// tile/noise_filter-inl.h: rows r - 1 ...
struct noise_args {
  const ppl_context* context;
  const uint8_t *const *luma, *const *chroma;
  uint8_t *const *luma_out, *const *chroma_out;
  row_bits made;
  int32_t width;
};

// tile/edge-inl.h: rows r - 1 ...
struct edge_args {
  const ppl_context* context;
  const uint8_t* const* luma;
  uint8_t* const* out;
  row_bits made;
  int32_t width;
};

// tile/chroma_smoothing-inl.h: rows r - 1 ...
struct smooth_args {
  const uint8_t* const* chroma;
  uint8_t *u_sums, *v_sums;  // row storage of width + 4 bytes, for the sums of three rows
  uint8_t* const* out;
  row_bits made;
  int32_t width;
};

struct tile_kernels {
  // Once per frame, before its first row pair: the record's site tables, in the level's own form.
  void (*prepare_tone)(ppl_context& context, const uint8_t* tone);
  void (*front_end)(const front_end_args&);
  void (*statistics)(const statistics_args&);
  void (*medium_filter)(const medium_args&);
  void (*green_fill)(const green_args&);
  void (*demosaic_gradient)(const demosaic_args&);
  void (*demosaic_bilinear)(const demosaic_args&);
  void (*demosaic_directed)(const demosaic_args&);
  void (*noise_filter)(const noise_args&);
  void (*edge)(const edge_args&);
  void (*smooth)(const smooth_args&);
};

}  // namespace ppl
