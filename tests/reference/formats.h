// Formats and calls by name, and the bytes of a frame. Nothing of the standard library but its integers, so that
// programs for any machine can include it.
#pragma once

#include <stdint.h>

namespace ref {

enum class format { i420, yuyv, uyvy, rgb24, rgb32 };

// Which of the wrappers of a format.
enum class ending { none, deci_2_1, intp_1_2, intp_1_2_stride, intp_1_4_stride };

// The bytes of an output frame. The number of pixels is a register's: it wraps in 32 bits. The bytes of those pixels
// are counted as they are. A frame of no positive width, height or number of pixels has none.
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

}  // namespace ref
