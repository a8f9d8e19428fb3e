// The WebAssembly module has one vector level; programs of the tests ask for it as they do elsewhere.
#include "record/levels.h"
#include "support/level.h"

#include <stdint.h>

int ppl_test_levels(void) {
  return 1;
}
const char* ppl_test_level_name(int) {
  return ppl::choose_kernels()->name;
}
void ppl_test_force_level(int) {}

// The one function of the compiler's run-time library that the C library's reading of numbers asks for: the low 128
// bits of a product, put together from 32-bit halves.
extern "C" __int128 __multi3(__int128 a, __int128 b) {
  const auto a_low = static_cast<uint64_t>(a), b_low = static_cast<uint64_t>(b);
  const auto a_high = static_cast<uint64_t>(a >> 64), b_high = static_cast<uint64_t>(b >> 64);
  const uint64_t a0 = a_low & 0xffffffffu, a1 = a_low >> 32, b0 = b_low & 0xffffffffu, b1 = b_low >> 32;
  const uint64_t first = a0 * b0, cross = a1 * b0 + (first >> 32), other = a0 * b1 + (cross & 0xffffffffu);
  const uint64_t high = a1 * b1 + (cross >> 32) + (other >> 32) + a_low * b_high + a_high * b_low;
  return static_cast<__int128>(static_cast<unsigned __int128>(high) << 64 |
                               (other << 32 | (first & 0xffffffffu)));
}
