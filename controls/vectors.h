// Vectors derived from controls: how one value, or one per colour of a row, fills 16 bytes.
#pragma once

#include "record/context.h"

namespace ppl {

constexpr bool fits_i16(int64_t x) {
  return x >= -32768 && x <= 32767;
}

constexpr bool fits_i17(int64_t x) {
  return x >= -65536 && x <= 65535;
}

// The low 16 bits of each value, in turn: `even` in the even lanes, `odd` in the odd ones.
inline void fill_pairs(vec_i16* v, int32_t even, int32_t odd) {
  for (int i = 0; i < 8; i += 2) {
    v->lane[i] = static_cast<int16_t>(even);
    v->lane[i + 1] = static_cast<int16_t>(odd);
  }
}

inline void fill_lanes(vec_i16* v, int32_t x) {
  fill_pairs(v, x, x);
}

// The low 8 bits of each value, in turn.
inline void fill_byte_pairs(vec_u8* v, uint32_t even, uint32_t odd) {
  for (int i = 0; i < 16; i += 2) {
    v->lane[i] = static_cast<uint8_t>(even);
    v->lane[i + 1] = static_cast<uint8_t>(odd);
  }
}

inline void fill_bytes(vec_u8* v, int32_t x) {
  fill_byte_pairs(v, static_cast<uint32_t>(x), static_cast<uint32_t>(x));
}

}  // namespace ppl
