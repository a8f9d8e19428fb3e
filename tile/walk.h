// The walk: a frame from top to bottom, some rows a step, stage after stage, each at its own lag.
//
// A stage makes rows of some rings from rows of others, `reach` rows above and below the rows that it makes. Lags and
// ring lengths follow from that: a stage lags `reach` rows after the producer of what it reads, and a ring holds every
// row from the oldest still to be read to the newest. No stage knows the edges of the frame: for rows outside it a
// stage is handed mirrored ones, and the columns beside a row are filled when the row is made (tile/pads.h).
//
// Which stages a frame goes through, the format's own last, is decided in paths/.
#pragma once

#include <stdint.h>

#include "record/context.h"
#include "tile/kernels.h"
#include "tile/rings.h"

namespace ppl {

struct walk;
struct stage;
using stage_body = void (*)(walk&, const stage&, int first);

// What a stage is, whatever rings it works on.
struct stage_kind {
  stage_body run;         // makes rows first, first + 1 ... of a step, those of them inside the frame
  uint8_t reach[4] = {};  // of each ring that it reads
  enum : uint8_t { any_row, even_row, odd_row } first = any_row;
  bool two_rows = false;  // a step is always two rows: row pairs or blocks build on one another
};

// A stage of a frame.
struct stage {
  stage_body run;
  uint8_t lag;  // rows
  ring_id reads[4], writes[3];
};

// The stages in the order of their work, and the rings that they need with two rows a step.
struct stage_list {
  stage stages[8] = {};
  uint8_t n_stages = 0;
  bool two_rows = false;
  uint8_t producer_lag[kRings] = {};
  uint8_t ring_rows[kRings] = {};
  bool neighbours_read[kRings] = {};  // the columns beside the ring's rows are read

  [[gnu::noinline]] constexpr void add(const stage_kind& kind, const ring_id (&reads)[4],
                                       const ring_id (&writes)[3]) {
    int lag = 0;
    for (int i = 0; i < 4; ++i) {
      if (reads[i] == no_ring) continue;
      const int needed = producer_lag[reads[i]] + kind.reach[i];
      if (needed > lag) lag = needed;
    }
    if (kind.first != stage_kind::any_row && (lag & 1) != (kind.first == stage_kind::odd_row)) ++lag;
    stage& s = stages[n_stages++];
    s.run = kind.run;
    s.lag = static_cast<uint8_t>(lag);
    for (int i = 0; i < 4; ++i) {
      const ring_id ring = s.reads[i] = reads[i];
      if (ring == no_ring) continue;
      const int rows = lag - producer_lag[ring] + kind.reach[i] + 2;
      if (rows > ring_rows[ring]) ring_rows[ring] = static_cast<uint8_t>(rows);
      if (kind.reach[i] > 0) neighbours_read[ring] = true;
    }
    for (int i = 0; i < 3; ++i) {
      const ring_id ring = s.writes[i] = writes[i];
      if (ring != no_ring) producer_lag[ring] = static_cast<uint8_t>(lag);
    }
    two_rows |= kind.two_rows;
  }

  // Whether everything has its place with two rows a step.
  constexpr bool fits() const {
    int rows = 0;
    for (int ring = 0; ring < kRings; ++ring) rows += ring != third_plane_ring ? ring_rows[ring] : 0;
    return rows <= kPoolRows && ring_rows[third_plane_ring] <= kThirdPlaneRows;
  }
};

// Statistics belong to an output position: row pairs 1 .. N - 1 - bottom, tiles 1 .. T - 1 - right. They are taken from
// the samples that pass the front end at that moment, some row pairs further down and tiles further right.
struct statistics_rule {
  bool plain_only;  // sums of the grid and the frame alone
  uint8_t lead_row_pairs, lead_tiles, bottom, right;
};

// Colours that take the place of reconstructed ones in flat areas: rows of a mask and of R, G, B, one 16-bit lane for
// two columns, and the rows of the frame that they reach.
struct flat_rows {
  uint8_t *mask, *r, *g, *b;  // null: none
  int first, last, skipped;
  bool reach(int row) const { return mask != nullptr && row >= first && row <= last && row != skipped; }
};

// Rows that a format takes: bit r mod 4, repeated.
constexpr row_bits kEveryRow = 0xffffffffu, kEvenRows = 0x55555555u, kEverySecondEvenRow = 0x44444444u;

// A frame on its way. Whoever starts the walk fills in the first part.
struct walk {
  ppl_context* context;
  const tile_kernels* kernels;
  uint8_t* source;
  int tiles, row_pairs, width, height;
  statistics_rule statistics;
  int first_filtered_row_pair;  // by the medium filter
  void (*tile_kernels::*demosaic)(const demosaic_args&);
  bool three_planes;  // the conversion forms planes instead of luma and chroma words
  colour_matrix matrix;
  flat_rows flat;
  row_bits luma_rows, chroma_rows;  // those that the format takes

  const stage_list* plan;
  int step;  // rows: 2, 4 or 8
  row_ring rings[kRings];

  // Rows outside the frame are its rows mirrored about the border row, as often as a small frame needs.
  int mirrored(int r) const {
    while (r < 0 || r >= height) r = r < 0 ? -r : 2 * (height - 1) - r;
    return r;
  }
  bool inside(int r) const { return r >= 0 && r < height; }

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

  template <class T = uint8_t>
  T* scratch(int offset) const {
    return static_cast<T*>(static_cast<void*>(context->scratch + offset));
  }
  uint8_t* scratch_row(int row) const { return scratch(64 + row * kRowPitch); }
};

// Takes the frame through the stages, with its statistics.
void run_walk(walk& w, const stage_list& plan);

}  // namespace ppl
