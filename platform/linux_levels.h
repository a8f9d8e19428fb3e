// The levels this Linux build holds, and how many of them the processor in front of us runs.
#pragma once

#include <cpuid.h>
#include <stdint.h>

#include "platform/levels.h"

namespace ppl {

constexpr int kLevels = 4;

// Narrowest first.
inline constexpr kernels kLevelTables[kLevels] = {
    {"sse2", &sse2::row_table, &sse2::tile_table, &sse2::path_table, &sse2::output_table,
     &sse2::convert_table, &sse2::scaler_table},
    {"sse41", &sse41::row_table, &sse41::tile_table, &sse41::path_table, &sse41::output_table,
     &sse41::convert_table, &sse41::scaler_table},
    {"avx2", &avx2::row_table, &avx2::tile_table, &avx2::path_table, &avx2::output_table,
     &avx2::convert_table, &avx2::scaler_table},
    {"avx512", &avx512::row_table, &avx512::tile_table, &avx512::path_table, &avx512::output_table,
     &avx512::convert_table, &avx512::scaler_table},
};

// What of the register file the operating system saves when it switches threads.
inline uint32_t saved_state() {
  uint32_t low = 0, high = 0;
  __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return low;
}

// How many levels, from the narrowest on, the processor and the operating system run: 1 to kLevels.
inline int supported_levels() {
  constexpr uint32_t kSse41 = bit_SSSE3 | bit_SSE4_1;
  constexpr uint32_t kAvx = bit_OSXSAVE | bit_AVX;
  constexpr uint32_t kAvx2 = bit_AVX2 | bit_BMI | bit_BMI2;
  constexpr uint32_t kAvx512 = bit_AVX512F | bit_AVX512DQ | bit_AVX512BW | bit_AVX512VL;
  constexpr uint32_t kSavesYmm = 0x06, kSavesZmm = 0xe6;
  uint32_t a = 0, b = 0, c = 0, d = 0;
  if (!__get_cpuid(1, &a, &b, &c, &d) || (c & kSse41) != kSse41) return 1;
  if ((c & kAvx) != kAvx || (saved_state() & kSavesYmm) != kSavesYmm) return 2;
  if (!__get_cpuid_count(7, 0, &a, &b, &c, &d) || (b & kAvx2) != kAvx2) return 2;
  if ((b & kAvx512) != kAvx512 || !(c & bit_AVX512VBMI) || (saved_state() & kSavesZmm) != kSavesZmm) return 3;
  return 4;
}

}  // namespace ppl
