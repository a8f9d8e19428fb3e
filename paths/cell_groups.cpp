// Groups of 32 columns in two rows along the plan's pointers, wherever these lead; bytes outside the frame are
// dropped.
#include "paths/cells.h"
#include "record/output_plan.h"

namespace ppl::cells {
namespace {

template <class Plan>
void take_plan(group_walk& w, const Plan& p) {
  w.row[0] = p.row_0_offset;
  w.row[1] = p.row_1_offset;
  w.group = p.group_step;
  w.row_step = p.row_step;
  if constexpr (requires { p.half_offset; }) {
    w.half[0] = p.half_offset[0];
    w.half[1] = p.half_offset[1];
  } else {
    w.half[0] = p.left_offset;
    w.half[1] = p.right_offset;
  }
  if constexpr (requires { p.chroma_group_step; }) {
    w.chroma_group = p.chroma_group_step;
    w.chroma_row_step = p.chroma_row_step;
  }
}

// Stores two finished rows group by group: in each, tile by tile, first row before second, luma before U before V.
void store_groups(const cell_frame& f, const made_rows& rows, group_walk& w) {
  const int tile_bytes = kTile * bytes_per_pixel(f.job->format), tiles = f.pixels / kTile, groups = tiles / 2;
  // Rows are made in the order of memory: under the mirror the walk's first tile is the last of a row.
  const auto tile_of = [&](const uint8_t* row, int t, int count, int bytes) {
    return row + (f.mirrored ? count - 1 - t : t) * bytes;
  };
  for (int g = 0; g < groups; ++g) {
    for (int h = 0; h < 2; ++h)
      for (int i = 0; i < 2; ++i)
        f.job->out.store(w.luma + w.half[h] + w.row[i], tile_of(rows.row[i], 2 * g + h, tiles, tile_bytes),
                         tile_bytes);
    if (rows.u != nullptr) {
      f.job->out.store(w.u, tile_of(rows.u, g, groups, kTile), kTile);
      f.job->out.store(w.v, tile_of(rows.v, g, groups, kTile), kTile);
    }
    w.luma += w.group;
    w.u += w.chroma_group;
    w.v += w.chroma_group;
  }
  w.luma += w.row_step;
  w.u += w.chroma_row_step;
  w.v += w.chroma_row_step;
}

}  // namespace

group_walk start_groups(const cell_frame& f) {
  const output_offset_plan& plan = f.context->plan;
  const start_pointers start = start_pointers_of(f.context, f.job->format);
  group_walk w = {};
  w.luma = start.bulk;
  w.u = int64_t{f.context->out_pixels} + start.bulk_chroma;
  w.v = w.u + f.context->out_quarter_pixels;
  switch (f.job->format) {
    case out_format::i420:
      take_plan(w, plan.bulk_i420);
      break;
    case out_format::yuyv:
    case out_format::uyvy:
      take_plan(w, plan.bulk_packed);
      break;
    case out_format::rgb24:
      take_plan(w, plan.bulk_rgb24);
      break;
    case out_format::rgb32:
      take_plan(w, plan.bulk_rgb32);
      break;
  }
  return w;
}

// Rows are made aside. A halved group takes two row pairs, and its chroma from the first.
void place_groups(const cell_frame& f, group_walk& walk, int p) {
  ppl_context* const c = f.context;
  made_rows rows = {{packed_row(c, 0), packed_row(c, 1)}, nullptr, nullptr};
  if (f.job->format == out_format::i420) {  // after the luma, which fills a quarter of a packed row
    rows.u = packed_row(c, 0) + kPackedPitch / 2;
    rows.v = packed_row(c, 1) + kPackedPitch / 2;
  }
  if (!f.halved) {
    put_rows(f, rows);
    return store_groups(f, rows, walk);
  }
  made_rows half = {{rows.row[p & 1], nullptr}, nullptr, nullptr};
  if ((p & 1) == 0) {
    half.u = rows.u;
    half.v = rows.v;
  }
  put_rows(f, half);
  if ((p & 1) != 0) store_groups(f, rows, walk);
}

}  // namespace ppl::cells
