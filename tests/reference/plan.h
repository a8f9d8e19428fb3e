// The steps by which output pointers move, and where they start, worked out from where pixels lie in a picture.
//
// A walk writes tiles or groups of pixels, one after the other along a row and row pair after row pair. Its steps are
// distances between the pixels that it writes next, so a picture that fits the walk comes out pixel by pixel; one that
// does not (odd tile counts, decimation 2) comes out as the steps lead. All figures are bytes.
#pragma once

#include <cstdint>

#include "finished.h"

namespace ref {

// What the plan depends on: the output picture, the decimation, the mirrors.
struct plan_input {
  int32_t width = 0;  // of the picture that comes out
  int32_t decimation = 0;
  bool h_mirror = false, v_mirror = false;
  int32_t out_pixels = 0, out_quarter_pixels = 0;
};

// From tile to tile. The chroma planes' starts count from the start of U.
struct tile_walk {
  int64_t start;
  int64_t tile_step;  // after a tile that was written
  int64_t row_step;   // after a row pair
  int64_t row_pitch;  // from a row to the next one of the picture
};
tile_walk luma_walk(const plan_input& in);
tile_walk chroma_walk(const plan_input& in);
tile_walk packed_walk(const plan_input& in);
tile_walk rgb24_walk(const plan_input& in);
tile_walk rgb32_walk(const plan_input& in);

// The frame-at-once routines, which go by groups of 32 pixels in two rows. `half` and `row` lead from a group's pointer
// to its first and second half and row.
struct group_walk {
  int64_t start;
  int64_t half[2], row[2];
  int64_t group_step, row_step;
};
group_walk luma_groups(const plan_input& in);
group_walk chroma_groups(
    const plan_input& in);  // one row of 16 samples a group; `half` and `row` are not used
group_walk rgb24_groups(const plan_input& in);
group_walk rgb32_groups(const plan_input& in);

}  // namespace ref
