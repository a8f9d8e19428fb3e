// What a reconstruction hands to the output stage in the plain reference: whole planes of the frame.
#pragma once

#include <cstdint>
#include <vector>

#include "formats.h"

namespace ref {

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
