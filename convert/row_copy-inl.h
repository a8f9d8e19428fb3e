// Rows as they stand: copy, fill, bytes swapped.
#pragma once

#include "convert/packed_ops-inl.h"

namespace ppl::PPL_LEVEL {

// Runs step<V>(position) over any number of bytes: wide steps, 16-byte steps, and the rest byte by byte.
template <class Step, class Tail>
PPL_INLINE void walk_any(int64_t bytes, Step&& step, Tail&& tail) {
  int64_t x = 0;
  for (; x + kWidth <= bytes; x += kWidth) step.template operator()<wide>(x);
  if constexpr (kWidth > 16) {
    for (; x + 16 <= bytes; x += 16) step.template operator()<vec16>(x);
  }
  for (; x < bytes; x++) tail(x);
}

static void copy_bytes(uint8_t* out, const uint8_t* in, int64_t bytes) {
  walk_any(
      bytes, [&]<class V>(int64_t x) { storeu(out + x, loadu<V>(in + x)); },
      [&](int64_t x) {
        // Keeps the compiler from turning the tail into a call of the run-time library.
        *static_cast<volatile uint8_t*>(out + x) = in[x];
      });
}

// even at out[0], out[2], ..., odd between them.
static void fill_bytes(uint8_t* out, int64_t bytes, uint8_t even_byte, uint8_t odd_byte) {
  const int word = even_byte | odd_byte << 8;
  walk_any(
      bytes, [&]<class V>(int64_t x) { storeu(out + x, set16<V>(word)); },
      [&](int64_t x) { *static_cast<volatile uint8_t*>(out + x) = x & 1 ? odd_byte : even_byte; });
}

static void swap_row(uint8_t* out, const uint8_t* in, int pixels) {
  walk_exact(2 * pixels, [&]<class V>(int x) { storeu(out + x, swap_bytes(loadu<V>(in + x))); });
}

}  // namespace ppl::PPL_LEVEL
