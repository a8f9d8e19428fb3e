// The one walk of all tile qualities: a frame from top to bottom, two rows a step, every block at its own lag.
//
// A quality is a line in a table (tile/paths.h) from which the walk lists its stages. A stage reads rows of some
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
#include "tile/paths.h"

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

// Row storage for `rows` consecutive rows of the frame, at most 8 of them; row r stands at place r mod rows. The places
// are listed twice over, so that the pointers of consecutive rows are consecutive too, wherever they begin.
struct row_ring {
  uint8_t** places;
  uint32_t rows;
  uint32_t reciprocal;  // 65536 / rows, rounded up: exact quotients below 8192
  row_ring() = default;
  row_ring(uint8_t** list, uint8_t* base, int32_t pitch, uint32_t n)
      : places(list), rows(n), reciprocal(n > 0 ? (65536u + n - 1) / n : 0) {
    for (uint32_t i = 0; i < n; ++i) list[i] = list[i + n] = base + static_cast<ptrdiff_t>(i) * pitch;
  }
  // The pointers of rows r, r + 1 ..., up to `rows` of them; r >= -1.
  uint8_t* const* from(int r) const {
    const uint32_t place = static_cast<uint32_t>(r) + rows;
    return places + (place - (place * reciprocal >> 16) * rows);
  }
};
constexpr int kPoolRows = 27;   // of all rings of a path that stand in the record's ring_pool
constexpr int kPlane3Rows = 3;  // the ring of the third plane stands in its scratch area

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

// Rows that a format takes: those r with (r & mask) == rest.
struct row_choice {
  int mask, rest;
};
constexpr row_choice kEveryRow = {0, 0}, kEvenRows = {1, 0};

// The stages of a path, in the order of their work, and what rings they need.
struct stage_list {
  stage stages[6] = {};
  int n_stages = 0;
  int producer_lag[kRings] = {};
  int ring_rows[kRings] = {};
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
  colour_matrix matrix;
  output_writer writer;
  row_choice luma_put_out, chroma_put_out;

  // Rows outside the frame are its rows mirrored about the border row, as often as a small frame needs.
  int mirrored(int r) const {
    while (r < 0 || r >= height) r = r < 0 ? -r : 2 * (height - 1) - r;
    return r;
  }
  bool inside(int r) const { return r >= 0 && r < height; }
  uint8_t* row(ring_id ring, int r) const { return *rings[ring].from(mirrored(r)); }

  // Rows first .. first + N - 1 of a ring to be read. Where some lie outside the frame `list` gets the pointers of
  // their mirror images.
  template <int N>
  uint8_t* const* rows(ring_id ring, int first, uint8_t* (&list)[N]) const {
    if (first >= 0 && first + N <= height) return rings[ring].from(first);
    return mirrored_rows(ring, first, list, N);
  }
  [[gnu::noinline]] uint8_t* const* mirrored_rows(ring_id ring, int first, uint8_t** list, int n) const;
  // Rows first and first + 1 of a ring to be made; which of the two lie inside and belong to a choice.
  uint8_t* const* rows(ring_id ring, int first) const { return rings[ring].from(first); }
  row_bits made(int first, row_choice choice = kEveryRow) const {
    const bool r0 = first >= 0 && (first & choice.mask) == choice.rest;
    const bool r1 = first + 1 < height && ((first + 1) & choice.mask) == choice.rest;
    return row_bits{r0} | row_bits{r1} << 1;
  }
};

}  // namespace ppl
