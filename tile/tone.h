// Tone curve: every sample of a row replaced through a table of 256 bytes.
#pragma once

#include "tile/simd.h"

namespace ppl::PPL_LEVEL {

#if defined(PPL_LEVEL_avx512)
constexpr bool kToneInRegisters = true;

// The table in four registers: two look-ups by the low seven bits, chosen by the top bit.
template <class V>
struct tone_curve {
  __m512i t0, t1, t2, t3;
  explicit tone_curve(const uint8_t* t)
      : t0(_mm512_loadu_si512(t)),
        t1(_mm512_loadu_si512(t + 64)),
        t2(_mm512_loadu_si512(t + 128)),
        t3(_mm512_loadu_si512(t + 192)) {}
  PPL_INLINE_MEMBER vec<64> operator()(vec<64> x) const {
    const __m512i low = _mm512_permutex2var_epi8(t0, x.v, t1);
    const __m512i high = _mm512_permutex2var_epi8(t2, x.v, t3);
    return {_mm512_mask_blend_epi8(_mm512_movepi8_mask(x.v), low, high)};
  }
  PPL_INLINE_MEMBER vec<16> operator()(vec<16> x) const {
    return {_mm512_castsi512_si128((*this)(vec<64>{_mm512_castsi128_si512(x.v)}).v)};
  }
};
#else
constexpr bool kToneInRegisters = false;

template <class V>
struct tone_curve {
  explicit tone_curve(const uint8_t*) {}
  PPL_INLINE_MEMBER V operator()(V x) const { return x; }
};
#endif

// In place, with a copy to `frame` where that is not null. Eight samples make one 64-bit store.
PPL_INLINE void tone_row(const uint8_t* table, uint8_t* row, uint8_t* frame, int width) {
  for (int x = 0; x < width; x += 8) {
    uint64_t in, out = 0;
    __builtin_memcpy(&in, row + x, 8);
    for (int i = 0; i < 64; i += 8) out |= static_cast<uint64_t>(table[(in >> i) & 255]) << i;
    __builtin_memcpy(row + x, &out, 8);
    if (frame != nullptr) __builtin_memcpy(frame + x, &out, 8);
  }
}

}  // namespace ppl::PPL_LEVEL
