// The entry points of the scaler's vector code.
#pragma once

#include <stdint.h>

namespace ppl {

// How a line is made of a row; the first two by row kernels.
enum class scaler_way : uint8_t {
  copied,    // step 1: the row as it is
  halved,    // step 2: every second sample
  doubled,   // step 1/2: samples and the means between them
  shuffled,  // any other step up to 14, where the level can shuffle bytes: from tables
  gathered,  // any other step: from tables
  single     // a line too long for the tables: one output at a time
};

// Where the outputs of a line come from: the same for every row of a plane, so it is worked out once.
struct scaler_columns {
  uint32_t step;    // of the positions, 12.20
  uint32_t count;   // outputs of a line, a multiple of 16
  uint32_t limit;   // the right neighbour of sample x is x + 1 below this, else x itself
  uint8_t* memory;  // for tables, at a multiple of 64
  uint32_t memory_bytes;
  scaler_way way;    // set by prepare
  uint32_t windows;  // likewise, shuffled: from how many places eight outputs are put together
};

struct scaler_kernels {
  // Chooses the way of a line and fills its tables.
  void (*prepare)(scaler_columns&);
  // Horizontal pass of one plane by a way other than `copied` and `halved`, which are row kernels: outputs first ..
  // first + count - 1, first a multiple of 32, count of 16. Reads up to 16 bytes after the last sample that it uses.
  void (*line)(const scaler_columns&, const uint8_t* row, uint8_t* line, uint32_t first, uint32_t count);
  // Vertical pass: out = blend(top, bottom, weight) for exactly `bytes` bytes.
  void (*blend)(const uint8_t* top, const uint8_t* bottom, uint32_t weight, uint8_t* out, uint32_t bytes);
};

}  // namespace ppl
