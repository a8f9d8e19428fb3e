// The entry points of the scaler's vector code.
#pragma once

#include <stdint.h>

namespace ppl {

// Where the outputs of a line come from: the same for every row of a plane, so it is worked out once.
struct scaler_columns {
  uint32_t step;    // of the positions, 12.20
  uint32_t count;   // outputs of a line: whole groups of 16 bytes (planar) or of 32 pixels (packed)
  uint32_t limit;   // the right neighbour of sample x is x + 1 below this, else x itself
  uint32_t plain;   // outputs 0 .. plain - 1 come in ascending order from below the limit
  uint8_t* memory;  // for tables, at a multiple of 64
  uint32_t memory_bytes;
  bool tabled;  // set by prepare: `memory` holds tables for this line
};

struct scaler_kernels {
  // Fills the tables of a planar line where this level has a use for them, they fit and the step allows it.
  void (*planar_prepare)(scaler_columns&);
  // Horizontal passes. They read up to 16 bytes behind the last sample that they use.
  void (*planar_line)(const scaler_columns&, const uint8_t* row, uint8_t* line);
  void (*packed_line)(const scaler_columns&, const uint8_t* row, uint8_t* line);
  // out = blend(top, bottom, weight) for exactly `bytes` bytes; lines are read in whole groups of 16.
  void (*blend_lines)(const uint8_t* top, const uint8_t* bottom, uint32_t weight, uint8_t* out,
                      uint32_t bytes);
};

}  // namespace ppl
