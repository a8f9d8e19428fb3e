// Where finished rows go. A writer is chosen once per frame; it places row pair after row pair in the caller's frame.
//
// Positions are byte offsets from the frame's base and move by the output plan alone. In an ordinary frame every row
// of tiles is one run of bytes inside the frame, and the writer stores whole rows without a test. In all others
// (pointers that drift or overlap at odd tile counts, decimation 2, black lines that do not fit) it goes tile by tile,
// in the order of the plan, and every store is cut to the frame. Bytes that miss the frame by no more than a row are
// kept in a margin in the record, where fill_row() finds them.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "output/output_kernels.h"
#include "record/context.h"
#include "record/destination.h"
#include "record/job.h"
#include "record/levels.h"
#include "record/output_plan.h"
#include "record/quality.h"
#include "rows/row_kernels.h"

namespace ppl {

constexpr int kTileColumns = 16;
constexpr int kPlanePitch = 2048 + 64;
constexpr int kOutputScratch = 64 + 9 * kPlanePitch + 2 * destination::kMargin;

// The two rows of a row pair as the path's last block left them: planes of the quality's rgb_form where the format is
// RGB, else Y and chroma words, which hold U, V with 128 added.
struct finished_rows {
  const uint8_t* const* plane[3];           // plane[1]: U, V words where there are two planes
  const uint8_t* const* unfiltered_chroma;  // words before noise filter and smoothing, where wanted
};

struct output_writer {
  void (*put)(output_writer&, int row_pair, const finished_rows& rows);
  const output_kernels* kernels;
  const row_kernels* rows;
  const ppl_context* context;
  out_format format;
  destination out;
  int64_t luma;                     // next tile's place; packed and RGB formats use this one alone
  int64_t chroma;                   // I420: next U block's place; V lies out_quarter_pixels further on
  int32_t tiles, row_pairs, width;  // width: 16 * tiles
  int32_t decimation;
  quality_rules quality;
  uint8_t* planes;  // 9 rows of kPlanePitch bytes in the record's scratch
  bool h_mirror;
  bool ordinary;                 // every row is one run inside the frame
  bool fills_gaps;               // doubled: rows between are interpolated
  bool wants_unfiltered_chroma;  // the path must keep those rows
  uint8_t held[3][16];           // halved RGB24: planes of the first tile of a pair
};

output_writer make_writer(const frame_job& job, quality_rules quality);

// The writers' put, for each format.
void put_i420(output_writer& w, int row_pair, const finished_rows& rows);
void put_packed(output_writer& w, int row_pair, const finished_rows& rows);
void put_rgb24(output_writer& w, int row_pair, const finished_rows& rows);
void put_rgb32(output_writer& w, int row_pair, const finished_rows& rows);

// ---- what they are made of

// Rows are made of blocks of one or more tiles. put<kWhole>(first, tiles) puts the blocks that end in tiles first ..
// first + tiles - 1: all at once in an ordinary frame, tile by tile in any other.
template <class Put>
void put_all_tiles(const output_writer& w, Put&& put) {
  if (w.ordinary) return put.template operator()<true>(0, w.tiles);
  for (int t = 0; t < w.tiles; ++t) put.template operator()<false>(t, 1);
}
// Of tiles first .. first + tiles - 1: how many blocks of `group` tiles end in them, and the column of the first.
struct block_run {
  int blocks, column;
};
constexpr block_run blocks_of(int first, int tiles, int group) {
  return {(first + tiles) / group - first / group, first / group * group * kTileColumns};
}
// The lowest address of a run of `count` blocks that starts at `at` and steps by `step` bytes.
constexpr int64_t run_start(int64_t at, int count, int64_t step) {
  return step < 0 ? at + (count - 1) * step : at;
}
// Where to make a run of blocks: in its place, or in memory for one block, which settle() then stores.
template <bool kWhole>
uint8_t* making_place(const output_writer& w, int64_t at, uint8_t* block) {
  return kWhole ? w.out.base + at : block;
}
template <bool kWhole>
void settle(const output_writer& w, int64_t at, const uint8_t* block, int n) {
  if (!kWhole) w.out.store(at, block, n);
}

// The sample that a doubled row has to the left of column x.
inline uint8_t left_of(const output_writer& w, const uint8_t* row, int x) {
  return x > 0 ? row[x - 1] : w.h_mirror ? 0 : row[0];
}

// The first byte of a row of `n` bytes, from the place `at` that the plan gives: under the mirror that is the row's
// last block, of `block` bytes.
inline int64_t row_start(const output_writer& w, int64_t at, int n, int block) {
  return w.h_mirror ? at + block - n : at;
}
inline int byte_at(const output_writer& w, int64_t at) {
  const uint8_t* const from = w.out.place(at);
  return from != nullptr ? *from : 0;
}
// Doubled pictures: fill_row() makes the row of n bytes at `at` the mean of those `pitch` bytes before and after it;
// repeat_row() copies the row at `from` to `to`.
void fill_row(const output_writer& w, int64_t at, int64_t pitch, int n);
void repeat_row(const output_writer& w, int64_t to, int64_t from, int n);

// ---- RGB24 and RGB32

inline uint8_t* scratch_plane(const output_writer& w, int i) {
  return w.planes + i * kPlanePitch;
}
// Planes of R, G, B from column x on.
template <class Plane>
rgb_source from_planes(Plane* const (&plane)[3], int x) {
  return {rgb_source::planes, {plane[0] + x, plane[1] + x, plane[2] + x}};
}
// R, G, B of row i: as the path left them, or converted into three scratch planes, the first of them `scratch`.
rgb_source planes_of(const output_writer& w, const finished_rows& rows, int i, int scratch);
// Both rows in their own size.
void put_rgb_rows(const output_writer& w, const finished_rows& rows, int64_t pitch, int64_t tile_step);
// n pixels from 2n columns: the even ones. RGB32 is mirrored before they are taken, and so gets the odd ones. `half`
// is room for three planes of n bytes, one every `pitch` bytes.
void put_halved_rgb(const kernels& k, out_format format, uint8_t* to, const rgb_source& from, int n,
                    bool mirrored, uint8_t* half, int pitch);
inline void put_halved_rgb(const output_writer& w, uint8_t* to, const rgb_source& from, int n) {
  put_halved_rgb(*w.context->kernels, w.format, to, from, n, w.h_mirror, scratch_plane(w, 3), kPlanePitch);
}

}  // namespace ppl
