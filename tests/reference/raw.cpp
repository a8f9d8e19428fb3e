#include "raw.h"

#include <algorithm>

namespace ref {
namespace {

// A white rectangle in the V plane that walks through 5 x 6 places, one place a frame.
void moving_mark(state& s, canvas& out) {
  const int64_t bw = s.out_width / 10, bh = s.out_height / 12;
  const int64_t column = s.mark_position % 5, row = s.mark_position / 5;
  if (bw % 16 != 0) return;
  s.mark_position = (s.mark_position + 1) % 30;
  if (bw == 0) return;
  const int64_t v_plane = int64_t(s.out_pixels) + s.out_quarter_pixels;
  const int64_t first = v_plane + column * bw + (s.out_width * row * bh) / 2;
  const int64_t rows = out.end() > first ? std::min(bh, (out.end() - first) / (s.out_width / 2) + 1) : 0;
  for (int64_t y = 0; y < rows; ++y) out.fill(first + y * (s.out_width / 2), bw, 255);
}

void draw(const state& s, format kind, const uint8_t* source, canvas& out) {
  const int d = s.decimation;
  const int64_t W = s.out_width, half_rows = s.frame_height >> 1;
  const auto at = [&](int64_t row, int64_t column) { return source[row * s.frame_stride + column]; };
  switch (kind) {
    case format::i420:
      if (d == 0)
        for (int64_t i = 0; i < s.frame_pixels; ++i) out.store(i, source[i]);
      if (d == 1)
        for (int64_t y = 0; y < half_rows; ++y)
          for (int64_t x = 0; x < W; ++x) out.store(y * W + x, at(2 * y, 2 * x));
      if (d == 0 || d == 1) out.fill(s.out_pixels, s.out_pixels / 2, 128);
      break;
    case format::yuyv:
      if (d == 0)
        for (int64_t i = 0; i < s.frame_pixels; ++i) {
          out.store(2 * i, source[i]);
          out.store(2 * i + 1, 128);
        }
      if (d == 1)
        for (int64_t y = 0; y < half_rows; ++y)
          for (int64_t x = 0; x < W; ++x) {
            out.store(2 * (y * W + x), at(2 * y, 2 * x));
            out.store(2 * (y * W + x) + 1, 128);
          }
      break;
    case format::uyvy:
      if (d == 0)
        for (int64_t i = 0; i < s.frame_pixels; ++i) {
          out.store(2 * i, 128);
          out.store(2 * i + 1, source[i]);
        }
      if (d == 1)
        for (int64_t y = 0; y < half_rows; ++y)
          for (int64_t x = 0; x < W; ++x) {
            out.store(2 * (y * W + x), 128);
            out.store(2 * (y * W + x) + 1, at(2 * y, 2 * x + 1));
          }
      break;
    case format::rgb24:
      if (d == 0)
        for (int64_t y = 0; y < s.frame_height; ++y)
          for (int64_t x = 0; x < W; ++x)
            out.fill(3 * ((int64_t(s.out_height) - 1 - y) * W + x), 3, source[y * W + x]);
      break;
    case format::rgb32:
      if (d == 0 || d == 1) {
        const int64_t rows = d == 0 ? s.frame_height : half_rows;
        for (int64_t y = 0; y < rows; ++y)
          for (int64_t x = 0; x < W; ++x) {
            // Rows lie the frame's width apart, whatever the stride.
            const uint8_t sample = source[d == 0 ? y * W + x : 2 * y * s.frame_width + 2 * x];
            const int64_t to = 4 * ((int64_t(s.out_height) - 1 - y) * W + x);
            out.fill(to, 3, sample);
            out.store(to + 3, 0);
          }
      }
      break;
  }
}

}  // namespace

void raw_picture(state& s, format kind, const uint8_t* source, canvas& out) {
  if (source) draw(s, kind, source, out);  // a null one comes with a frame of no bytes
  if (kind == format::i420) moving_mark(s, out);
}

}  // namespace ref
