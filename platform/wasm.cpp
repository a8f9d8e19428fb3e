// The WebAssembly module has one level.
#include "record/levels.h"

namespace ppl {

#if defined(PPL_HAS_simd128)
static constexpr kernels only_level = PPL_LEVEL_TABLES(simd128);
#else
static constexpr kernels only_level = PPL_LEVEL_TABLES(plain);
#endif

const kernels* choose_kernels() {
  return &only_level;
}

}  // namespace ppl
