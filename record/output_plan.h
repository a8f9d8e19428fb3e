// Where a frame's output begins, and by which steps its pointers move.
//
// A path only ever adds numbers to its output pointers. Which numbers depends on format, mirrors and decimation and
// never on a pixel, so rebuild_output_plan works all of them out when one of these changes. The horizontal mirror turns
// tile steps negative, the vertical one row steps. RGB frames are stored bottom row first: their row steps are negative
// without the vertical mirror.
//
// All figures, steps and starts alike, are bytes of the format.
#pragma once

#include <stdint.h>

#include "record/context.h"
#include "record/job.h"

namespace ppl {

// Byte offsets from the base of the frame (luma plane of I420), and for I420's two chroma planes, which move
// together, from the base of each plane. They may lie outside the frame at sizes, decimations or black line
// counts that have no true picture: record/destination.h tests what is stored.
struct start_pointers {
  int64_t stage, stage_chroma;  // frames that walk: place of the first tile
  int64_t bulk, bulk_chroma;  // frames made cell by cell: place of the first group of 32 columns and two rows
  int64_t third;              // YUYV and UYVY doubled cell by cell: the first row of tiles. Nothing reads it
};

// The start offsets of a frame in `format` for the mirrors, decimation and output size in the record.
start_pointers start_pointers_of(const ppl_context* c, out_format format);

// Bytes of the output frame that the record describes.
int64_t output_bytes(const ppl_context* c, out_format format);

}  // namespace ppl
