// The geometry of a context as its header describes it, kept beside the library: what a call promises to stay inside.
#pragma once

#include <stdint.h>

#include <algorithm>

#include "fuzz/input.h"
#include "ppl.h"
#include "tests/reference/formats.h"

namespace fuzz {

using ref::format;
using ref::frame_bytes;

struct geometry {
  uint32_t width = 0, height = 0, stride = 0;
  int32_t decimation = 0, top = 0, bottom = 0, out_width = 0, out_height = 0;

  static bool accepts(uint32_t w, uint32_t h, uint32_t s) { return w <= 2036 && h <= 2048 && s <= 2048; }
  static int32_t scaled(uint32_t n, int32_t d) { return static_cast<int32_t>(d < 0 ? n << -d : n >> d); }

  void resize(uint32_t w, uint32_t h, uint32_t s) {
    if (!accepts(w, h, s)) return;
    width = w, height = h, stride = s;
    place(0);
  }
  void decimate(int32_t d, int32_t t, int32_t b) {
    if ((d == decimation && t == top && b == bottom) || d < -1 || d > 2) return;
    decimation = d, top = t, bottom = b;
    place(static_cast<uint32_t>(t) + static_cast<uint32_t>(b));
  }
  // As a frame call does: another size is taken, the same one changes nothing.
  bool take(uint32_t w, uint32_t h, uint32_t s) {
    if (w == width && h == height && s == stride) return true;
    resize(w, h, s);
    return accepts(w, h, s);
  }
  int64_t out_bytes(format f) const { return frame_bytes(f, out_width, out_height); }

 private:
  void place(uint32_t lines) {
    out_width = scaled(width, decimation);
    out_height = static_cast<int32_t>(static_cast<uint32_t>(scaled(height, decimation)) + lines);
  }
};

// Frames that a run can afford.
constexpr int64_t kMostBytes = 3 << 20;

inline uint32_t side(input& in) {
  switch (in.ConsumeIntegralInRange(0, 5)) {
    case 0:
      return in.ConsumeIntegralInRange<uint32_t>(0, 2100);
    case 1:
      return in.ConsumeIntegralInRange<uint32_t>(0, 24);
    case 2:
      return in.ConsumeIntegralInRange<uint32_t>(1, 8) * 16;
    default:
      return in.ConsumeIntegralInRange<uint32_t>(1, 6) * 32;
  }
}
inline uint32_t stride(input& in, uint32_t width) {
  return in.ConsumeIntegralInRange(0, 3) != 0 ? width
                                              : width + in.ConsumeIntegralInRange<uint32_t>(0, 70) - 8;
}
inline int32_t lines(input& in) {
  switch (in.ConsumeIntegralInRange(0, 3)) {
    case 0:
      return in.ConsumeIntegral<int32_t>();
    case 1:
      return in.ConsumeIntegralInRange(-40, 40);
    default:
      return 0;
  }
}

}  // namespace fuzz
