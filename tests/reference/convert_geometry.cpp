#include "reference/convert_geometry.h"

namespace ref {

namespace {

int32_t wrap(int64_t value) {
  return static_cast<int32_t>(static_cast<uint32_t>(value));
}

int32_t scaled(int32_t size, int32_t decimation) {
  return decimation < 0 ? wrap(int64_t{size} << -decimation) : size >> decimation;
}

struct size_pair {
  uint32_t in_width, in_height, out_width, out_height;
  bool any_higher;  // out_height is the least height; what exceeds it is black lines
  int32_t decimation;
};

constexpr size_pair kSizePairs[] = {
    {320, 240, 160, 120, false, 1}, {320, 240, 320, 240, false, 0}, {480, 576, 480, 576, false, 0},
    {640, 480, 160, 120, false, 2}, {640, 480, 320, 240, false, 1}, {640, 480, 352, 240, false, 0},
    {640, 480, 352, 288, false, 0}, {640, 480, 640, 480, false, 0}, {640, 480, 1280, 960, false, -1},
    {704, 480, 176, 120, true, 2},  {704, 576, 176, 144, true, 2},  {704, 480, 352, 240, true, 1},
    {704, 576, 352, 288, true, 1},  {704, 480, 704, 480, true, 0},  {704, 576, 704, 576, true, 0},
    {720, 480, 720, 480, true, 0},  {720, 576, 720, 576, true, 0},  {1280, 1024, 1280, 1024, false, 0},
};

}  // namespace

int32_t convert_state::out_pixels() const {
  return wrap(int64_t{out_width} * out_height);
}

bool new_frame_size(convert_state& s, uint32_t width, uint32_t height, uint32_t stride) {
  if (width > 2048 || height > 2048 || stride > 2048) return false;
  if (4 * width + 48 > 8192 || 6 * width + 64 > 16384) return false;
  s.frame_width = static_cast<int32_t>(width);
  s.frame_height = static_cast<int32_t>(height);
  s.frame_stride = static_cast<int32_t>(stride);
  s.out_width = scaled(s.frame_width, s.decimation);
  s.out_height = scaled(s.frame_height, s.decimation);
  return true;
}

bool set_decimation(convert_state& s, int32_t d, int32_t top, int32_t bottom) {
  if (d == s.decimation && top == s.top_black_lines && bottom == s.bottom_black_lines) return true;
  if (d < -1 || d > 2) return false;
  s.decimation = d;
  s.top_black_lines = top;
  s.bottom_black_lines = bottom;
  s.out_width = scaled(s.frame_width, d);
  s.out_height = wrap(int64_t{scaled(s.frame_height, d)} + top + bottom);
  return true;
}

void reset_decimation(convert_state& s) {
  if (s.decimation == 0 && s.top_black_lines == 0 && s.bottom_black_lines == 0) return;
  set_decimation(s, 0, 0, 0);
}

bool new_frame_sizes(convert_state& s, uint32_t in_width, uint32_t in_height, uint32_t out_width,
                     uint32_t out_height, bool validate) {
  int32_t decimation = 0, top = 0, bottom = 0;
  if (validate) {
    bool found = false;
    for (const size_pair& p : kSizePairs) {
      if (in_width != p.in_width || in_height != p.in_height || out_width != p.out_width) continue;
      if (p.any_higher ? out_height < p.out_height : out_height != p.out_height) continue;
      found = true;
      decimation = p.decimation;
      const int32_t total = p.any_higher ? wrap(int64_t{out_height} - p.out_height) : 0;
      top = total / 2;
      bottom = total - top;
    }
    if (in_width == 480 && in_height == 480 && out_width == 480 && (out_height == 480 || out_height == 576)) {
      found = true;
      top = bottom = static_cast<int32_t>(out_height - 480) / 2;
    }
    if (!found) return false;
  }
  if (!new_frame_size(s, in_width, in_height, in_width)) return false;
  return set_decimation(s, decimation, top, bottom);
}

}  // namespace ref
