// What a reconstruction hands to the output stage in the plain reference: whole planes of the frame.
#pragma once

#include <cstdint>
#include <vector>

namespace ref {

enum class format { i420, yuyv, uyvy, rgb24, rgb32 };

// The bytes of an output frame. The number of pixels is a register's: it wraps in 32 bits. The bytes of those pixels are
// counted as they are. A frame of no positive width, height or number of pixels has none.
constexpr int64_t frame_bytes(format kind, int32_t width, int32_t height) {
  if (width <= 0 || height <= 0) return 0;
  const int64_t n = static_cast<int32_t>(static_cast<uint32_t>(width) * static_cast<uint32_t>(height));
  if (n <= 0) return 0;
  switch (kind) {
    case format::i420:
      return n + 2 * (n / 4);
    case format::yuyv:
    case format::uyvy:
      return 2 * n;
    case format::rgb24:
      return 3 * n;
    case format::rgb32:
      break;
  }
  return 4 * n;
}

// Planes cover the visited area: width = 16 * (frame width / 16), height = 2 * (frame height / 2).
struct finished {
  int width = 0, height = 0;
  // I420, YUYV, UYVY: luma of every pixel; signed chroma of every column pair of every row (before 128 is added).
  std::vector<uint8_t> y;    // height * width
  std::vector<int8_t> u, v;  // height * (width / 2)
  // RGB24, RGB32: the final colours of every pixel.
  std::vector<uint8_t> r, g, b;  // height * width
  // RGB24 of quality 15 at double size alone: the planes it packs unconverted, as bytes.
  std::vector<uint8_t> raw_r, raw_g, raw_b;  // height * width
};

}  // namespace ref
