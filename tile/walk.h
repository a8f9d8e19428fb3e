// The one walk of all tile qualities: a frame from top to bottom, two rows a step, every block at its own lag.
//
// A quality is a line in a table (tile/paths.cpp) from which the walk lists its stages. A stage reads rows of some
// rings, `above` rows up and `below` rows down from the two rows it makes, and writes rows of others. Lags and
// ring lengths follow from that: a stage lags behind the producer of what it reads by `below` rows, and a ring holds
// every row from the oldest still to be read to the newest. No stage knows where it stands: outside the frame it is
// handed mirrored rows, and the columns beside a row are mirrored once, when the row is made (the pads).
#pragma once

#include <stdint.h>

#include "frame/context.h"
#include "frame/paths.h"
#include "output/output.h"
#include "tile/kernels.h"

namespace ppl {

enum ring_id : uint8_t {
  kRaw,        // front-end output where a medium filter follows
  kMosaic,     // the mosaic that reconstruction reads
  kGreen,      // the same with a green value at every site
  kLuma,       // Y; three planes: the first
  kChroma,     // chroma words; three planes: the second
  kPlane3,     // three planes: the third
  kLumaNf,     // luma after the noise filter
  kChromaNf,   // chroma words after it
  kLumaOut,    // finished luma
  kChromaOut,  // finished chroma words
  kRings
};

enum class interpolator : uint8_t { gradient, bilinear, directed, mosaic_edge };
// Flat colours: none; those an earlier frame left; tested over blocks that start at even or at odd rows.
enum class flat_colours : uint8_t { none, left_over, even_blocks, odd_blocks };

// A quality path. Statistics run in row pairs 1 .. N - 1 - bottom and tiles 1 .. T - 1 - right of the output position,
// on samples lead_row_pairs further down and lead_tiles further right.
struct path_traits {
  uint8_t quality;
  bool medium_filter;
  uint8_t median_first_row_pair;
  interpolator demosaic;
  flat_colours flat;
  bool noise_filter, edge, full_statistics;
  uint8_t lead_row_pairs, lead_tiles, bottom, right;
};

const path_traits* find_path(uint32_t quality, bool medium_filter);

// Row storage for `rows` consecutive rows of the frame, at most 8 of them; row r stands at place r mod rows.
struct row_ring {
  uint8_t *base, *end;
  int32_t pitch, rows;
  uint32_t reciprocal;  // 65536 / rows, rounded up: exact quotients for rows below 8192
  row_ring() = default;
  row_ring(uint8_t* at, int32_t row_pitch, int32_t n)
      : base(at),
        end(at + static_cast<ptrdiff_t>(row_pitch) * n),
        pitch(row_pitch),
        rows(n),
        reciprocal(n > 0 ? (65536u + static_cast<uint32_t>(n) - 1) / static_cast<uint32_t>(n) : 0) {}
  uint8_t* row(int r) const {
    const int turns = static_cast<int>(static_cast<uint32_t>(r) * reciprocal >> 16);
    return base + static_cast<ptrdiff_t>(r - turns * rows) * pitch;
  }
  // The row below one.
  template <class Byte>
  Byte* after(Byte* row) const {
    return row + pitch == end ? base : row + pitch;
  }
};

struct walk;
struct ring_read {
  ring_id ring;
  uint8_t above, below;
};
struct stage {
  void (*run)(walk&,
              int first_row);  // makes rows first_row and first_row + 1, those of them inside the frame
  int lag;
};

struct walk {
  const frame_job* job;
  ppl_context* context;
  const tile_kernels* kernels;
  const path_traits* path;
  int tiles, row_pairs, width, height;
  bool three_planes;  // the conversion forms planes instead of luma and chroma words
  uint8_t *flat_mask, *flat_r, *flat_g, *flat_b;  // one row each; null while no flat colours apply
  row_ring rings[kRings];
  stage stages[6];
  int n_stages;
  colour_matrix matrix;
  output_writer writer;

  // Rows outside the frame are its rows mirrored about the border row, as often as a small frame needs.
  int mirrored(int r) const {
    while (r < 0 || r >= height) r = r < 0 ? -r : 2 * (height - 1) - r;
    return r;
  }
  // Halved pictures take even rows alone, I420 chroma of even rows, halved of every second of those.
  bool row_is_put_out(int r) const { return context->decimation <= 0 || (r & 1) == 0 || !writer.ordinary; }
  bool chroma_is_put_out(int r) const {
    if (job->format == out_format::i420) return (r & 1) == 0 && (context->decimation <= 0 || (r & 2) != 0);
    return row_is_put_out(r);
  }
  bool inside(int r) const { return r >= 0 && r < height; }
  uint8_t* row(ring_id ring, int r) const { return rings[ring].row(mirrored(r)); }

  // Rows first, first + 1 ... of a ring to read, mirrored where they lie outside.
  template <int N>
  void to_read(ring_id id, int first, const uint8_t* (&to)[N]) const {
    const row_ring& ring = rings[id];
    if (first < 0 || first + N > height) {
      for (int i = 0; i < N; ++i) to[i] = row(id, first + i);
      return;
    }
    const uint8_t* at = ring.row(first);
    for (int i = 0; i < N; ++i, at = ring.after(at)) to[i] = at;
  }
  // Rows first and first + 1 of a ring to be made: null outside.
  void to_make(ring_id id, int first, uint8_t* (&to)[2]) const {
    to[0] = first >= 0 ? rings[id].row(first) : nullptr;
    to[1] = first + 1 < height ? (first >= 0 ? rings[id].after(to[0]) : rings[id].base) : nullptr;
  }
};

}  // namespace ppl
