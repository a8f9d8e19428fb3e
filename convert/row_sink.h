// Where finished rows go: the end that all conversions share.
//
// A conversion hands over finished rows of packed 4:2:2 in image order, by pointer: a row of the caller's source
// as it stands, or one that it made where make_row() told it. The sink packs them in the format of the picture and
// keeps the place of the next row.
//
// The destination is a run of bytes. Black line counts are not tested when they are set, so a picture's rows can lie
// outside it, and the planes of I420 on top of one another. Whether that is so is found out once, when the sink is
// opened: a direct sink stores whole rows where they belong; any other prepares its rows in row storage and
// carries over what falls inside the destination, in steps of 32 pixels: luma, U, V.
#pragma once

#include <stdint.h>

#include "convert/convert_kernels.h"
#include "platform/levels.h"
#include "record/context.h"
#include "record/job.h"

namespace ppl {

// Row storage of a call, laid over the record's rings.
struct row_storage {
  uint8_t *blended, *widened_before, *made[4], *staging;
};
row_storage lay_out_rows(ppl_context* c);

struct row_sink {
  const convert_kernels* kernels;
  row_storage rows;
  layout from;
  out_format to;
  bool mirrored;       // I420 only: rows come out reversed
  bool direct;         // every store lies inside the destination and inside its own plane
  int pixels, padded;  // of a row; padded: rounded up to whole tiles
  uint8_t* base;       // destination
  int64_t bytes;
  int64_t at, step;  // the next row (I420: luma), bytes from base, and what leads to the one after it
  int64_t u, v, chroma_step;
  const uint8_t* first_of_pair;  // I420: the row that waits for its second
  int put;                       // rows so far
};

// The rows a picture is made of. Counts are those really drawn: never negative.
struct picture_rows {
  int64_t top_black, image, bottom_black;
};

// A sink at the first row of the picture: the first row in memory, for RGB24 the last. h_mirror and v_mirror are
// for I420 alone.
row_sink open_sink(ppl_context* c, layout from, out_format to, uint8_t* base, int64_t bytes, int pixels,
                   bool h_mirror, bool v_mirror);
// To be called with the sink at its first row, black ones included. image_shift: how far the first image row lies
// from the place behind the top black lines.
void find_out_whether_direct(row_sink& sink, const ppl_context* c, const picture_rows& rows,
                             int64_t image_shift);

// Where the next row may be made, or one of the three behind it. Good until four rows later.
uint8_t* make_row(const row_sink& sink, int ahead = 0);
// Whether that is the picture itself.
bool makes_rows_in_place(const row_sink& sink);
void put_row(row_sink& sink, const uint8_t* row);
// Flat rows; in I420 two at a time, an odd last one is not drawn. RGB24 has 0 for any colour.
void put_flat_rows(row_sink& sink, int64_t count, uint8_t luma, uint8_t chroma);

// What of these bytes falls inside the destination.
void store_inside(const row_sink& sink, int64_t at, const uint8_t* bytes, int64_t count);
// The same for the luma and chroma of prepared rows, in steps of 32 pixels, from the side where the rows begin.
void store_planes_inside(const row_sink& sink, const plane_rows& prepared);

}  // namespace ppl
