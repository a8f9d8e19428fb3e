// What an x86-64 processor and its operating system run.
#pragma once

#include <cpuid.h>
#include <stdint.h>

namespace ppl {

inline bool runs_sse41() {
  constexpr uint32_t kSse41 = bit_SSSE3 | bit_SSE4_1;
  uint32_t a = 0, b = 0, c = 0, d = 0;
  return __get_cpuid(1, &a, &b, &c, &d) != 0 && (c & kSse41) == kSse41;
}

// Whether the operating system saves these registers when it switches threads.
inline bool saves(uint32_t registers) {
  uint32_t a = 0, b = 0, c = 0, d = 0;
  if (__get_cpuid(1, &a, &b, &c, &d) == 0 || (c & bit_OSXSAVE) == 0) return false;
  uint32_t low = 0, high = 0;
  __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return (low & registers) == registers;
}

inline bool runs_avx2() {
  constexpr uint32_t kAvx2 = bit_AVX2 | bit_BMI | bit_BMI2, kYmm = 0x06;
  uint32_t a = 0, b = 0, c = 0, d = 0;
  return runs_sse41() && saves(kYmm) && __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b & kAvx2) == kAvx2;
}

inline bool runs_avx512() {
  constexpr uint32_t kAvx512 = bit_AVX512F | bit_AVX512DQ | bit_AVX512BW | bit_AVX512VL, kZmm = 0xe6;
  uint32_t a = 0, b = 0, c = 0, d = 0;
  return runs_avx2() && saves(kZmm) && __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 &&
         (b & kAvx512) == kAvx512 && (c & bit_AVX512VBMI) != 0;
}

}  // namespace ppl
