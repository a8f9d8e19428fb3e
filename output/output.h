// Where finished rows go. A writer is chosen once per frame; it places row pair after row pair in the caller's frame.
//
// Positions are byte offsets from the frame's base and move by the output plan alone. In an ordinary frame every row
// of tiles is one run of bytes inside the frame, and the writer stores whole rows without a test. In all others
// (pointers that drift or overlap at odd tile counts, decimation 2, black lines that do not fit) it goes tile by
// tile, in the order of the plan, and keeps the bytes that would land outside from the caller's memory: those within
// a row of the frame go to a margin in the record, where the filling of a row at the frame's edge finds them.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "output/output_kernels.h"
#include "record/context.h"
#include "record/job.h"
#include "record/output_plan.h"
#include "record/quality.h"

namespace ppl {

constexpr int kTileColumns = 16;
constexpr int kPlanePitch = 2048 + 64;
constexpr int kMargin = 3 * 2 * 2048;  // bytes of a doubled RGB24 row
constexpr int kOutputScratch = 64 + 9 * kPlanePitch + 2 * kMargin;

// The two rows of a row pair as the path's last block left them: planes of the quality's rgb_form where the format is
// RGB, else Y and chroma words, which hold U, V with 128 added.
struct finished_rows {
  const uint8_t* const* plane[3];           // plane[1]: U, V words where there are two planes
  const uint8_t* const* unfiltered_chroma;  // words before noise filter and smoothing, where wanted
};

struct output_writer {
  void (*put)(output_writer&, int row_pair, const finished_rows& rows);
  const output_kernels* kernels;
  const ppl_context* context;
  uint8_t* base;
  int64_t bytes;                    // of the frame that the caller handed over
  int64_t luma;                     // next tile's place; packed and RGB formats use this one alone
  int64_t chroma;                   // I420: next U block's place; V lies out_quarter_pixels behind
  int32_t tiles, row_pairs, width;  // width: 16 * tiles
  int32_t decimation;
  quality_rules quality;
  uint8_t* planes;  // 9 rows of kPlanePitch bytes in the record's scratch
  uint8_t* margin;  // kMargin bytes that stand for those in front of the frame, then those behind it
  bool h_mirror;
  bool ordinary;                 // every row is one run inside the frame
  bool fills_gaps;               // doubled: rows between are interpolated
  bool wants_unfiltered_chroma;  // the path must keep those rows
  uint8_t held[3][16];           // halved RGB24: planes of the first tile of a pair
};

output_writer make_writer(const frame_job& job, quality_rules quality);

// One for each format; they fill in what depends on it.
void start_i420(output_writer& w, const frame_job& job);
void start_packed(output_writer& w, const frame_job& job);
void start_rgb24(output_writer& w, const frame_job& job);
void start_rgb32(output_writer& w, const frame_job& job);

// Where the byte at an offset lives: in the frame, in a margin, or nowhere (null).
inline uint8_t* place_of(const output_writer& w, int64_t at) {
  if (at >= 0 && at < w.bytes) return w.base + at;
  if (at < 0 && at >= -kMargin) return w.margin + kMargin + at;
  if (at >= w.bytes && at < w.bytes + kMargin) return w.margin + kMargin + (at - w.bytes);
  return nullptr;
}
inline void put_inside(const output_writer& w, int64_t at, const uint8_t* from, int n) {
  for (int i = 0; i < n; ++i)
    if (uint8_t* const to = place_of(w, at + i)) *to = from[i];
}
inline int byte_at(const output_writer& w, int64_t at) {
  const uint8_t* const from = place_of(w, at);
  return from != nullptr ? *from : 0;
}
// All of a run lies inside the frame.
inline bool inside(const output_writer& w, int64_t at, int n) {
  return at >= 0 && at + n <= w.bytes;
}

// Doubled pictures: the row of n bytes at `at` becomes the mean of the rows `pitch` bytes below and above it; the row
// at `to` becomes a copy of that at `from`.
void fill_row(const output_writer& w, int64_t at, int64_t pitch, int n);
void repeat_row(const output_writer& w, int64_t to, int64_t from, int n);

// The lowest address of a run of `count` tiles that starts at `at` and steps by `step` bytes.
constexpr int64_t run_start(int64_t at, int count, int64_t step) {
  return step < 0 ? at + (count - 1) * step : at;
}

// RGB24 and RGB32: what the pixels of row i are made from, from column x on.
rgb_source rgb_source_of(const output_writer& w, const finished_rows& rows, int i, int x);
// Both rows as they are, of pixels of 3 or 4 bytes.
void put_rgb_rows(const output_writer& w, const finished_rows& rows, int pixel_bytes, int64_t pitch,
                  int64_t tile_step);

}  // namespace ppl
