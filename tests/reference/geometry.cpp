// Sizes, decimation and what follows from them.
#include <algorithm>

#include "state.h"
#include "wrapping.h"

namespace ref {

static int32_t shifted(int32_t size, int32_t d) {
  return d >= 0 ? size >> d : static_cast<int32_t>(static_cast<uint32_t>(size) << -d);
}

void state::size_output(bool with_black_lines) {
  out_width = shifted(frame_width, decimation);
  out_half_width = out_width / 2;
  out_height = shifted(frame_height, decimation);
  if (with_black_lines)
    out_height = add(add(out_height, decimation_top_black_lines), decimation_bottom_black_lines);
  out_pixels = mul(out_width, out_height);
  out_quarter_pixels = out_pixels / 4;
}

bool state::new_frame_size(uint32_t width, uint32_t height, uint32_t stride) {
  if (width > 2048 || height > 2048 || stride > 2048 || 4 * width + 48 > 8192 || 6 * width + 64 > 16384)
    return false;
  frame_width = static_cast<int32_t>(width);
  frame_height = static_cast<int32_t>(height);
  frame_stride = static_cast<int32_t>(stride);
  frame_pixels = frame_width * frame_height;
  frame_pixels_half = frame_pixels / 2;
  frame_pixels_quarter = frame_pixels / 4;
  frame_pixels_eighth = frame_pixels / 8;
  size_output(false);

  cell_tiles = frame_width / 16 / 8;
  cell_row_pairs = frame_height / 2 / 6;
  grid_tiles = 8 * cell_tiles;
  grid_row_pairs = 6 * cell_row_pairs;
  const uint32_t n = 32 * static_cast<uint32_t>(std::max(cell_tiles * cell_row_pairs, 1));
  red_divisor = blue_divisor = 0x100000 / (n >> 2);
  green_divisor = 0x100000 / (n >> 1);

  tiles_per_row = frame_width / 16;
  row_pairs = frame_height / 2;
  struct border {
    int entry, columns, rows;
  };
  constexpr border borders[] = {{0, 64, 12},  {1, 64, 12},  {2, 64, 12},  {3, 48, 12},  {4, 48, 12},
                                {5, 32, 8},   {10, 0, 4},   {11, 64, 12}, {12, 48, 12}, {13, 48, 12},
                                {14, 64, 12}, {15, 80, 16}, {16, 64, 16}, {17, 48, 12}};
  stats_scale_table[6] = stats_scale_table[7] = 1024;
  for (const border& b : borders) {
    int32_t factor = 1024;
    if (frame_width >= 81 && frame_height >= 17) {
      const int32_t divisor = (frame_height - b.rows) * (frame_width - b.columns) / 4;
      factor = static_cast<int32_t>(static_cast<uint32_t>(frame_pixels) << 8) / std::max(divisor, 1);
    }
    stats_scale_table[b.entry] = factor;
  }
  return true;
}

bool state::set_decimation(int32_t d, int32_t top, int32_t bottom) {
  if (d == decimation && top == decimation_top_black_lines && bottom == decimation_bottom_black_lines)
    return true;
  if (d < -1 || d > 2) return false;
  decimation = d;
  decimation_top_black_lines = top;
  decimation_bottom_black_lines = bottom;
  size_output(true);
  return true;
}

void state::reset_decimation() {
  set_decimation(0, 0, 0);
}

bool state::new_frame_sizes(uint32_t in_width, uint32_t in_height, uint32_t wanted_width,
                            uint32_t wanted_height, uint8_t validate) {
  int32_t d = 0, top = 0, bottom = 0;
  if (validate) {
    const auto input = [&](uint32_t w, uint32_t h) { return in_width == w && in_height == h; };
    const auto wanted = [&](uint32_t w, uint32_t h) { return wanted_width == w && wanted_height == h; };
    const auto black_lines = [&](uint32_t picture_height) {
      const int32_t total = static_cast<int32_t>(wanted_height - picture_height);
      top = total / 2;
      bottom = total - top;
    };
    if (input(320, 240) && wanted(160, 120)) {
      d = 1;
    } else if (input(320, 240) && wanted(320, 240)) {
      d = 0;
    } else if (input(480, 480) && (wanted(480, 480) || wanted(480, 576))) {
      black_lines(480);
    } else if (input(480, 576) && wanted(480, 576)) {
      d = 0;
    } else if (input(640, 480) && wanted(160, 120)) {
      d = 2;
    } else if (input(640, 480) && wanted(320, 240)) {
      d = 1;
    } else if (input(640, 480) && (wanted(352, 240) || wanted(352, 288) || wanted(640, 480))) {
      d = 0;
    } else if (input(640, 480) && wanted(1280, 960)) {
      d = -1;
    } else if ((input(704, 480) || input(704, 576)) &&
               (wanted_width == 176 || wanted_width == 352 || wanted_width == 704)) {
      d = wanted_width == 176 ? 2 : wanted_width == 352 ? 1 : 0;
      if (wanted_height < in_height >> d) return false;
      black_lines(in_height >> d);
    } else if ((input(720, 480) || input(720, 576)) && wanted_width == 720) {
      if (wanted_height < in_height) return false;
      black_lines(in_height);
    } else if (input(1280, 1024) && wanted(1280, 1024)) {
      d = 0;
    } else {
      return false;
    }
  }
  if (!new_frame_size(in_width, in_height, in_width)) return false;
  return set_decimation(d, top, bottom);
}

}  // namespace ref
