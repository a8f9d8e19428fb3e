// Rows of bytes copied, filled, halved and averaged, at one vector level: what output, conversions, the raw path and
// the scaler share. Nothing outside the bytes told is read or written; any address, any count.
#pragma once

#include <stdint.h>

namespace ppl {

struct row_kernels {
  // n bytes as they are. "reversed" writes a row end for end.
  void (*copy)(uint8_t* to, const uint8_t* from, int64_t n, bool reversed);
  // `even` at to[0], to[2], ..., `odd` between them.
  void (*fill)(uint8_t* to, int64_t n, uint8_t even, uint8_t odd);
  // The bytes at even places of 2n.
  void (*halve)(uint8_t* to, const uint8_t* from, int64_t n, bool reversed);
  auto copy_or_halve(bool halved) const { return halved ? halve : copy; }
  // Rounded-up means of two rows.
  void (*mean)(uint8_t* to, const uint8_t* a, const uint8_t* b, int64_t n);
  // Packed YUYV to planes and back; a multiple of 32 pixels.
  void (*split)(uint8_t* y, uint8_t* u, uint8_t* v, const uint8_t* row, uint32_t pixels);
  void (*join)(uint8_t* row, const uint8_t* y, const uint8_t* u, const uint8_t* v, uint32_t pixels);
};

}  // namespace ppl
