#include "plan.h"

#include <algorithm>

namespace ref {
namespace {

// A plane in memory, and where the pixels of the picture lie in it: mirrored, a row runs from right to left; upward,
// the first row is the last in memory.
struct memory_plane {
  int64_t width, pixels;
  int bytes_a_pixel;
  bool mirrored, upward;

  int64_t pixel(int64_t x, int64_t y) const {
    const int64_t column = mirrored ? width - 1 - x : x;
    const int64_t row = upward ? pixels - width * (y + 1) : width * y;
    return bytes_a_pixel * (row + column);
  }
  // The first byte of n pixels from column x on.
  int64_t run(int64_t x, int64_t n, int64_t y) const { return std::min(pixel(x, y), pixel(x + n - 1, y)); }
  // From the first pixel of a row to the place behind its last one, in the direction of the walk.
  int64_t whole_row() const { return width * (pixel(1, 0) - pixel(0, 0)); }
};

memory_plane luma_plane(const plan_input& in) {
  return {in.width, in.out_pixels, 1, in.h_mirror, in.v_mirror};
}
memory_plane chroma_plane(const plan_input& in) {
  return {in.width / 2, in.out_quarter_pixels, 1, in.h_mirror, in.v_mirror};
}
memory_plane packed_plane(const plan_input& in) {
  return {in.width, in.out_pixels, 2, in.h_mirror, in.v_mirror};
}
// RGB pictures are stored from the last row to the first.
memory_plane rgb_plane(const plan_input& in, int bytes_a_pixel) {
  return {in.width, in.out_pixels, bytes_a_pixel, in.h_mirror, !in.v_mirror};
}

// Columns and rows of the picture that a tile (or where only tile pairs are written, a pair) and a row pair make.
int tile_columns(const plan_input& in) {
  return in.decimation < 0 ? 32 : 16;
}
int pair_rows(const plan_input& in) {
  return in.decimation < 0 ? 4 : in.decimation == 0 ? 2 : 1;
}

// Luma, chroma and packed pictures: the pointer goes on behind every tile, the last one of a row included. It starts at
// the first 16 pixels, at double size too.
tile_walk stepping_behind(const memory_plane& p, int columns, int rows) {
  tile_walk w{};
  w.start = p.run(0, 16, 0);
  w.tile_step = p.pixel(columns, 0) - p.pixel(0, 0);
  w.row_step = p.pixel(0, rows) - (p.pixel(0, 0) + p.whole_row());
  w.row_pitch = p.pixel(0, 1) - p.pixel(0, 0);
  return w;
}

// RGB: the pointer stays at the last tile of a row and goes from there to the first of the next row pair.
tile_walk stepping_between(const memory_plane& p, int columns, int rows) {
  tile_walk w{};
  w.start = p.run(0, columns, 0);
  w.tile_step = p.run(columns, columns, 0) - p.run(0, columns, 0);
  w.row_step = p.run(0, columns, rows) - p.run(p.width - columns, columns, 0);
  w.row_pitch = p.pixel(0, 1) - p.pixel(0, 0);
  return w;
}

// A group of 2 * n columns in the rows 0 and `apart`. Where a doubled picture goes upward, its first group lies a row
// further from the end than its two rows ask for.
group_walk groups(const memory_plane& p, int n, int apart, int rows) {
  group_walk w{};
  const int64_t low_row = std::min(p.pixel(0, 0), p.pixel(0, apart));
  w.start = std::min(p.run(0, 2 * n, 0), p.run(0, 2 * n, apart));
  if (apart == 2 && p.upward) w.start -= p.bytes_a_pixel * p.width;
  for (int i = 0; i < 2; ++i) {
    w.half[i] = p.run(n * i, n, 0) - p.run(0, 2 * n, 0);
    w.row[i] = p.pixel(0, apart * i) - low_row;
  }
  w.group_step = p.pixel(2 * n, 0) - p.pixel(0, 0);
  w.row_step = p.pixel(0, rows) - (p.pixel(0, 0) + p.whole_row());
  return w;
}

}  // namespace

tile_walk luma_walk(const plan_input& in) {
  return stepping_behind(luma_plane(in), tile_columns(in), pair_rows(in));
}

// 16 samples of each plane for two tiles, doubled 32; at half size a row for two row pairs.
tile_walk chroma_walk(const plan_input& in) {
  return stepping_behind(chroma_plane(in), tile_columns(in), in.decimation < 0 ? 2 : 1);
}

tile_walk packed_walk(const plan_input& in) {
  return stepping_behind(packed_plane(in), tile_columns(in), pair_rows(in));
}

tile_walk rgb24_walk(const plan_input& in) {
  const int columns = in.decimation > 0 ? 8 : tile_columns(in);
  tile_walk w = stepping_between(rgb_plane(in, 3), columns, pair_rows(in));
  // Doubled under one mirror alone, row pairs follow one another two rows on instead of four.
  if (in.decimation < 0 && in.h_mirror && !in.v_mirror) w.row_step = -3 * int64_t{in.width} - 96;
  if (in.decimation < 0 && !in.h_mirror && in.v_mirror) w.row_step = 3 * int64_t{in.width} + 96;
  return w;
}

// Not doubled: a picture of twice the size is walked as one of the same.
tile_walk rgb32_walk(const plan_input& in) {
  return stepping_between(rgb_plane(in, 4), in.decimation > 0 ? 8 : 16, in.decimation > 0 ? 1 : 2);
}

group_walk luma_groups(const plan_input& in) {
  const int m = in.decimation < 0 ? 2 : 1;
  return groups(luma_plane(in), 16 * m, m, 2 * m);
}

group_walk chroma_groups(const plan_input& in) {
  const memory_plane p = chroma_plane(in);
  const int m = in.decimation < 0 ? 2 : 1;
  group_walk w{};
  w.start = p.run(0, 16 * m, 0);
  if (m == 2 && p.upward) w.start -= p.width;
  w.group_step = p.pixel(16 * m, 0) - p.pixel(0, 0);
  w.row_step = p.pixel(0, m) - (p.pixel(0, 0) + p.whole_row());
  return w;
}

group_walk rgb24_groups(const plan_input& in) {
  const int m = in.decimation < 0 ? 2 : 1;
  return groups(rgb_plane(in, 3), 16 * m, m, 2 * m);
}

group_walk rgb32_groups(const plan_input& in) {
  return groups(rgb_plane(in, 4), 16, 1, 2);
}

}  // namespace ref
