// Where finished rows go: the end that all conversions share.
//
// A conversion hands over finished rows of packed 4:2:2 in image order: rows of the caller's source, or rows made
// where make_row() said. The sink packs them in the format of the picture.
//
// Black line counts are not tested when they are set, so a picture's rows can lie outside the destination, and the
// planes of I420 on top of one another. Whether that is so is found out once, when the sink is opened: a direct sink
// stores whole rows where they belong; any other prepares its rows in row storage and carries over what falls inside
// the destination, in steps of 32 pixels: luma, U, V.
#pragma once

#include <stdint.h>

#include "convert/convert_kernels.h"
#include "record/context.h"
#include "record/destination.h"
#include "record/job.h"
#include "record/levels.h"
#include "rows/row_kernels.h"

namespace ppl {

// Row storage of a call, laid over the record's rings: rows 0 to 3 are the sink's, the others its caller's.
constexpr int kSinkRows = 4;
inline uint8_t* ring_row(ppl_context* c, int i) {
  return c->ring_pool + i * kRingSlotBytes;
}

struct row_sink {
  const convert_kernels* kernels;
  const row_kernels* rows;
  ppl_context* context;
  byte_order from;
  out_format to;
  bool mirrored;       // I420 only: rows come out reversed
  bool direct;         // every image row lies inside the destination, and inside its own plane
  bool in_place;       // rows may be made where they belong
  int pixels, padded;  // of a row; padded: rounded up to whole tiles
  destination out;
  picture_rows places;
  int64_t row;                   // the next one's place in `places`
  const uint8_t* first_of_pair;  // I420: the row that waits for its second
};

// What a picture is drawn on and how. The mirrors are for I420 alone.
struct canvas {
  byte_order from;
  out_format to;
  destination out;
  int pixels;  // of a row
  bool h_mirror, v_mirror;
};
// A sink for image rows first_row .. first_row + image_rows - 1. Row 0 is the first in memory, for RGB24 the last.
row_sink open_sink(ppl_context* c, const canvas& on, int64_t first_row, int64_t image_rows);

// Where to make the next row, or one of the three after it. Good until four rows later.
uint8_t* make_row(const row_sink& sink, int ahead = 0);
// The next row has been made there.
void put_made_row(row_sink& sink);
void put_row(row_sink& sink, const uint8_t* row);
// Flat rows from row `first` on; in I420 two at a time, and an odd last one is not drawn. In RGB24 they are black.
void put_flat_rows(const row_sink& sink, int64_t first, int64_t count, uint8_t luma, uint8_t chroma);

// Where to make the next two rows and their chroma: in the destination if the sink is direct, else in row storage.
inline plane_rows make_pair(const row_sink& sink) {
  const picture_rows& at = sink.places;
  uint8_t *const base = sink.out.base, *const luma = sink.context->scratch, *const u = luma + 2 * sink.padded;
  if (!sink.direct) return {{luma, luma + sink.padded}, u, u + sink.padded / 2};
  const int64_t p = sink.row >> 1;
  uint8_t* const first = base + at.luma.at(2 * p);
  uint8_t* const u_row = base + at.u.at(p);
  return {{first, first + at.luma.step}, u_row, u_row + (at.v.start - at.u.start)};
}
// The two rows have been made in the planes of `made`.
void store_pair(const row_sink& sink, const plane_rows& made);  // what of it falls inside the destination
inline void put_made_pair(row_sink& sink, const plane_rows& made) {
  if (!sink.direct) store_pair(sink, made);
  sink.row = (sink.row | 1) + 1;
}

}  // namespace ppl
