// The bilinear frame scaler: a horizontal pass into two line buffers, a vertical blend of the two.
//
// Whole groups are written: a line buffer of an awkward width runs into the other one, and the rows of the
// destination lie at the rounded-up pitch. Nothing is written behind the destination.
#pragma once

#include <cstdint>

namespace ref {

// `readable` bytes can be read from `source` on; what lies behind them counts as 0. `writable` likewise.
struct scaler_planes {
  const uint8_t* source = nullptr;
  int64_t readable = 0;
  uint8_t* destination = nullptr;
  int64_t writable = 0;
};

// Widths in samples.
bool scale_planar(const scaler_planes& planes, uint32_t source_width, uint32_t source_height,
                  uint32_t destination_width, uint32_t destination_height);
// YUYV; row lengths in bytes.
bool scale_packed(const scaler_planes& planes, uint32_t source_row_bytes, uint32_t source_height,
                  uint32_t destination_row_bytes, uint32_t destination_height);

}  // namespace ref
