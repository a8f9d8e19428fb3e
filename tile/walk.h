// The one walk of all tile qualities: a frame from top to bottom, some rows a step, every block at its own lag.
//
// A quality is a line in a table (tile/paths.h) from which the walk lists its stages. A stage reads rows of some
// rings, `above` rows up and `below` rows down from the rows it makes, and writes rows of others. Lags and
// ring lengths follow from that: a stage lags behind the producer of what it reads by `below` rows, and a ring holds
// every row from the oldest still to be read to the newest. No stage knows where it stands: outside the frame it is
// handed mirrored rows, and the columns beside a row are mirrored once, when the row is made (the pads).
#pragma once

#include <stdint.h>

#include "output/output.h"
#include "record/context.h"
#include "record/job.h"
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

// Row storage for `rows` consecutive rows of the frame, at most 14 of them; row r stands at place r mod rows. The
// places are listed twice over, so that the pointers of consecutive rows are consecutive too, wherever they begin.
struct row_ring {
  uint8_t** places;
  uint32_t rows;
  uint32_t reciprocal;  // 65536 / rows, rounded up: exact quotients below 65536 / 13
  row_ring() = default;
  row_ring(uint8_t** list, uint8_t* base, int32_t pitch, uint32_t n)
      : places(list), rows(n), reciprocal(n > 0 ? (65536u + n - 1) / n : 0) {
    for (uint32_t i = 0; i < n; ++i) list[i] = list[i + n] = base + static_cast<ptrdiff_t>(i) * pitch;
  }
  // The pointers of rows r, r + 1 ..., up to `rows` of them; r >= -rows.
  uint8_t* const* from(int r) const {
    const uint32_t place = static_cast<uint32_t>(r) + rows;
    return places + (place - (place * reciprocal >> 16) * rows);
  }
};
// With two rows a step: of all rings of a path that stand in the record's ring_pool; of the third plane's, which stands
// in its scratch area.
constexpr int kPoolRows = 27, kPlane3Rows = 3;
constexpr int kMostRows = 8;  // a step

struct walk;
struct ring_read {
  ring_id ring;
  uint8_t above, below;
};
struct stage {
  void (*run)(walk&, int first);  // makes rows first, first + 1 ... of a step, those of them inside the frame
  int lag;
};

// Rows that a format takes: bit r mod 4, repeated.
constexpr row_bits kEveryRow = 0xffffffffu, kEvenRows = 0x55555555u, kEverySecondEvenRow = 0x44444444u;

// The stages of a path, in the order of their work, and what rings they need with two rows a step.
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
  int step;           // rows: 2, 4 or 8
  bool three_planes;  // the conversion forms planes instead of luma and chroma words
  uint8_t *flat_mask, *flat_r, *flat_g, *flat_b;  // one row each; null while no flat colours apply
  row_ring rings[kRings];
  colour_matrix matrix;
  output_writer writer;
  row_bits luma_put_out, chroma_put_out;

  // Rows outside the frame are its rows mirrored about the border row, as often as a small frame needs.
  int mirrored(int r) const {
    while (r < 0 || r >= height) r = r < 0 ? -r : 2 * (height - 1) - r;
    return r;
  }
  bool inside(int r) const { return r >= 0 && r < height; }
  uint8_t* row(ring_id ring, int r) const { return *rings[ring].from(mirrored(r)); }

  // What a step at row `first` reads of a ring: its rows and `reach` more above and below. Where some lie outside the
  // frame `list` gets the pointers of their mirror images.
  using row_list = uint8_t * [kMostRows + 4];
  uint8_t* const* around(ring_id ring, int first, int reach, row_list& list) const {
    const int n = step + 2 * reach;
    if (first >= reach && first - reach + n <= height) return rings[ring].from(first - reach);
    return mirrored_rows(ring, first - reach, list, n);
  }
  [[gnu::noinline]] uint8_t* const* mirrored_rows(ring_id ring, int first, uint8_t** list, int n) const;
  // The rows of a step in a ring; which of them lie inside and belong to a choice.
  uint8_t* const* rows(ring_id ring, int first) const { return rings[ring].from(first); }
  row_bits made(int first, row_bits choice = kEveryRow) const {
    row_bits rows = (1u << step) - 1;
    if (first < 0) rows &= rows << -first;
    if (first + step > height) rows &= (1u << (height - first)) - 1;
    return rows & choice >> (first & 3);
  }
};

}  // namespace ppl
