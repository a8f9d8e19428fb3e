// The levels this Linux build holds (PPL_HAS_..., one for each), and how many of them the processor in front of us
// runs.
#pragma once

#include "record/levels.h"
#if defined(__x86_64__)
#include "platform/x86.h"
#endif

namespace ppl {

struct built_level {
  kernels tables;
  bool (*runs)();
};

// Narrowest first. The first one is not asked whether it runs.
inline constexpr built_level kLevels[] = {
#if defined(PPL_HAS_plain)
    {PPL_LEVEL_TABLES(plain), nullptr},
#endif
#if defined(PPL_HAS_sse2)
    {PPL_LEVEL_TABLES(sse2), nullptr},  // every x86-64 processor has it, every aarch64 one NEON
#endif
#if defined(PPL_HAS_sse41)
    {PPL_LEVEL_TABLES(sse41), runs_sse41},
#endif
#if defined(PPL_HAS_avx2)
    {PPL_LEVEL_TABLES(avx2), runs_avx2},
#endif
#if defined(PPL_HAS_avx512)
    {PPL_LEVEL_TABLES(avx512), runs_avx512},
#endif
#if defined(PPL_HAS_neon)
    {PPL_LEVEL_TABLES(neon), nullptr},
#endif
};
constexpr int kBuiltLevels = sizeof kLevels / sizeof kLevels[0];
static_assert(kBuiltLevels == PPL_LEVELS_BUILT, "a level of cmake/sources.cmake is missing here");

// How many levels, from the narrowest on, the processor and the operating system run; the narrowest always counts.
inline int supported_levels() {
  int n = 1;
  while (n < kBuiltLevels && kLevels[n].runs()) ++n;
  return n;
}

}  // namespace ppl
