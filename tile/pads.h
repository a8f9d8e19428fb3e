// The columns beside a row, filled once when the row is made, so that no block knows the left and right edge.
#pragma once

#include <stddef.h>

#include "tile/kernels.h"

namespace ppl {

inline void copy(uint8_t* to, const uint8_t* from, int bytes) {
  __builtin_memcpy(to, from, static_cast<size_t>(bytes));
}

// Columns -2, -1 and width, width + 1: the row mirrored about its border samples.
inline void pad_samples(uint8_t* row, int width) {
  const uint8_t left[2] = {row[2], row[1]}, right[2] = {row[width - 2], row[width - 3]};
  copy(row - 2, left, 2);
  copy(row + width, right, 2);
}

// The words beside a row of chroma words: word 6 of the first tile, word 1 of the last.
inline void pad_words(uint8_t* row, int width) {
  copy(row - 2, row + 12, 2);
  copy(row + width, row + width - 14, 2);
}

// Of the rows made.
void pad_samples(uint8_t* const* rows, row_bits made, int width);
void pad_words(uint8_t* const* rows, row_bits made, int width);

}  // namespace ppl
