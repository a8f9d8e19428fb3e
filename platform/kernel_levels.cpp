// The kernel image's choice among the XMM levels. Wider registers would need the system to save them, which
// takes imports; XMM registers a 64-bit driver may use at any time.
#include "record/levels.h"

#include <cpuid.h>

namespace ppl {

static constexpr kernels sse2_kernels = PPL_LEVEL_TABLES(sse2);
static constexpr kernels sse41_kernels = PPL_LEVEL_TABLES(sse41);

const kernels* choose_kernels() {
  constexpr unsigned kSse41 = bit_SSSE3 | bit_SSE4_1;  // that level's code uses both
  unsigned a, b, c, d;
  __cpuid(1, a, b, c, d);
  return (c & kSse41) == kSse41 ? &sse41_kernels : &sse2_kernels;
}

}  // namespace ppl
