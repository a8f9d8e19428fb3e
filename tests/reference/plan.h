// The steps by which output pointers move, and where they start: every value by its own rule.
//
// Steps are bytes of the format in question. Start pointers are pixels from the start of the plane or frame.
#pragma once

#include <cstdint>

#include "finished.h"

namespace ref {

// What the plan depends on: the output width after decimation, the decimation, the mirrors.
struct plan_input {
  int32_t width = 0;
  int32_t decimation = 0;
  bool h_mirror = false, v_mirror = false;
};

struct luma_plan {
  int32_t luma_tile_step, luma_row_step, luma_fill_1, luma_fill_2, luma_last_source, luma_last_target;
  int32_t chroma_tile_step, chroma_row_step, chroma_fill, chroma_last_source, chroma_last_target;
  int32_t row_pitch;
};

struct packed_plan {
  int32_t tile_step, row_step, fill_1, fill_2, last_source, last_target;
  int32_t row_pitch;
};

struct rgb_plan {
  int32_t tile_step, row_step, fill_1, fill_2, last_source, last_target;
  int32_t row_pitch;
};

// The frame-at-once routines, which step by groups of 32 pixels in two rows.
struct bulk_plan {
  int32_t left_offset, right_offset, row_0_offset, row_1_offset, group_step, row_step;
  int32_t chroma_group_step, chroma_row_step;  // I420 alone
};

luma_plan i420_plan(const plan_input& in);
packed_plan yuyv_plan(const plan_input& in);
rgb_plan rgb24_plan(const plan_input& in);
rgb_plan rgb32_plan(const plan_input& in);  // tile_step, row_step and row_pitch alone

bulk_plan bulk_i420_plan(const plan_input& in);
bulk_plan bulk_rgb24_plan(const plan_input& in);
bulk_plan bulk_rgb32_plan(const plan_input& in);

// Start pointers in pixels; `chroma` is set for I420 alone and counts from the start of its plane.
struct start {
  int64_t main = 0, chroma = 0;
};
start stage_start(format f, const plan_input& in, int32_t out_pixels, int32_t out_quarter_pixels);
start bulk_start(format f, const plan_input& in, int32_t out_pixels, int32_t out_quarter_pixels);

}  // namespace ref
