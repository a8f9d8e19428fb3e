// Frame scaler: bilinear, any size to any size, 8-bit weights, in two passes.
//
// Positions are unsigned 12.20 fixed point, i * step with step = (source extent << 20) / destination extent. The
// weight of a position is the top 8 bits of its fraction: blend(a, b, f) = (a * (256 - f) + b * f + 128) >> 8.
// The horizontal pass makes one destination-width line of a source row, once at most; the vertical pass blends two
// lines. The walk moves on by one source row per destination row at most: below half height the picture therefore
// comes from the rows near the top, with the weights of the true positions.
//
// Whole groups are written: planar lines and all destination rows in groups of 16 bytes, packed lines in groups of 64.
// The two line buffers follow one another directly in the ring pool, so at a row length that is no multiple of the
// group the last group of a line runs into the next line, and destination rows lie at the rounded-up pitch.
//
// Bounds: nothing is written from `destination_end` on; bytes from `source_end` on read as 0. Where two lines do not
// fit the ring pool, or the destination has no width or height, nothing is written.
#pragma once

#include <stdint.h>

#include "record/context.h"

namespace ppl {

struct scaler_plane {
  const uint8_t* source;  // rows without gaps
  const uint8_t* source_end;
  uint32_t source_width, source_height;
  uint8_t* destination;
  uint8_t* destination_end;
  uint32_t width, height;
};

// One 8-bit plane. Always true.
bool frame_scaler_planar(ppl_context* c, const scaler_plane& p);

// A YUYV frame; the widths are row bytes. Luma and chroma advance by the same step, each over its own samples. The
// limit of the right neighbour is the row's length in bytes, so a row's last pixel is blended with the next row's
// first, and the frame's last with the 4 bytes after the frame. Always true.
bool frame_scaler_packed(ppl_context* c, const scaler_plane& p);

}  // namespace ppl
