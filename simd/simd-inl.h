// Vectors of 16, 32 and 64 bytes: thin values with named operations, one name for every width and every processor.
//
// A kernel is a template over the vector type V and is written once. This header is included by *_kernels.cpp
// only: those are compiled once per level, and everything here lives in the level's own namespace, so that code
// compiled for a wide processor can never be picked by the linker for a narrow one.
//
// Conventions. Memory order is lane order: lane 0 is the lowest address, whatever the width. Bytes and 16-bit lanes
// share one type; the name of the operation tells the lanes. "even" and "odd" mean the bytes at even and odd
// addresses: a 16-bit lane holds an even byte low and the odd byte after it high. Masks come from comparisons and go
// to select() and keep(); they are never stored.
//
// plain-inl.h says what every operation does; the files of the processors say again what their instructions do better.
// No file outside simd/ asks for a level.
#pragma once

#include <stddef.h>
#include <stdint.h>

#ifndef PPL_LEVEL
#error "vector code is compiled once per level, with PPL_LEVEL set"
#endif
#define PPL_INLINE static inline __attribute__((always_inline))
#define PPL_INLINE_MEMBER inline __attribute__((always_inline))

#if defined(PPL_LEVEL_sse2) || defined(PPL_LEVEL_sse41) || defined(PPL_LEVEL_avx2) || \
    defined(PPL_LEVEL_avx512)
#define PPL_X86
#include <immintrin.h>
#elif defined(PPL_LEVEL_neon)
#include <arm_neon.h>
#elif defined(PPL_LEVEL_simd128)
#include <wasm_simd128.h>
#endif

namespace ppl::PPL_LEVEL {

// N bytes as the compiler's own vectors, by lanes; and as they lie in memory, aligned or anywhere.
template <int N>
struct lanes {
  typedef uint8_t u8 __attribute__((vector_size(N)));
  typedef int8_t s8 __attribute__((vector_size(N)));
  typedef uint16_t u16 __attribute__((vector_size(N)));
  typedef int16_t s16 __attribute__((vector_size(N)));
  typedef uint32_t u32 __attribute__((vector_size(N)));
  typedef int32_t s32 __attribute__((vector_size(N)));
  typedef uint64_t u64 __attribute__((vector_size(N)));
  typedef u8 aligned __attribute__((may_alias));
  typedef u8 anywhere __attribute__((may_alias, aligned(1)));
};
// What a vector is held in: the type that the processor's intrinsics take, where there are any.
template <int N>
struct native {
  using type = typename lanes<N>::u8;
};
#if defined(PPL_X86)
template <>
struct native<16> {
  using type = __m128i;
};
#endif
#if defined(PPL_LEVEL_avx2) || defined(PPL_LEVEL_avx512)
template <>
struct native<32> {
  using type = __m256i;
};
#endif
#if defined(PPL_LEVEL_avx512)
template <>
struct native<64> {
  using type = __m512i;
};
constexpr int kWidth = 64;
#elif defined(PPL_LEVEL_avx2)
constexpr int kWidth = 32;
#else
constexpr int kWidth = 16;
#endif

// Whether one instruction picks bytes by indices in a register (shuffle8), and one multiplies pairs of bytes (madd8).
// Where there is none, these operations take many, and some kernels have another way.
#if defined(PPL_X86) && defined(__SSSE3__)
constexpr bool kShufflesBytes = true, kMultipliesBytes = true;
#elif defined(PPL_LEVEL_neon) || defined(PPL_LEVEL_simd128)
constexpr bool kShufflesBytes = true, kMultipliesBytes = false;
#else
constexpr bool kShufflesBytes = false, kMultipliesBytes = false;
#endif

}  // namespace ppl::PPL_LEVEL

#include "simd/plain-inl.h"
#if defined(PPL_X86)
#include "simd/x86-inl.h"
#elif defined(PPL_LEVEL_neon)
#include "simd/neon-inl.h"
#elif defined(PPL_LEVEL_simd128)
#include "simd/wasm-inl.h"
#endif

namespace ppl::PPL_LEVEL {

// ---- the level's own width, and the ways to walk a row with it

using vec16 = vec<16>;
using wide = vec<kWidth>;

// A row and as many rows above it as below, by their distance from it.
template <int kRows>
struct rows_around {
  const uint8_t* row[kRows];
  PPL_INLINE_MEMBER const uint8_t* operator[](int distance) const { return row[distance + kRows / 2]; }
};
PPL_INLINE rows_around<3> three_rows(const uint8_t* const* from) {
  return {from[0], from[1], from[2]};
}
PPL_INLINE rows_around<5> five_rows(const uint8_t* const* from) {
  return {from[0], from[1], from[2], from[3], from[4]};
}

// Walks `bytes` bytes (a multiple of 16) of memory that must not be passed at either end: whole wide steps, then
// steps of 16. The step is a function object with a template operator()<V>(int position).
template <class Step>
PPL_INLINE void walk_exact(int bytes, Step&& step) {
  int x = 0;
  for (; x + kWidth <= bytes; x += kWidth) step.template operator()<wide>(x);
  if constexpr (kWidth > 16) {
    for (; x < bytes; x += 16) step.template operator()<vec16>(x);
  }
}
// Walks whole wide steps over at least `bytes` bytes of padded row storage.
template <class Step>
PPL_INLINE void walk_padded(int bytes, Step&& step) {
  for (int x = 0; x < bytes; x += kWidth) step.template operator()<wide>(x);
}

}  // namespace ppl::PPL_LEVEL
