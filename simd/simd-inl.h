// Vectors of 16, 32 and 64 bytes: thin values with named operations, one name for every width.
//
// A kernel is a template over the vector type V and is written once. This header is included by *_kernels.cpp
// only: those are compiled once per level, and everything here lives in the level's own namespace, so that code
// compiled for a wide processor can never be picked by the linker for a narrow one.
//
// Conventions. Memory order is lane order: lane 0 is the lowest address, whatever the width. u8 and 16-bit lanes
// share one type; the name of the operation tells the lanes. "even" and "odd" mean the bytes at even and odd
// addresses: a 16-bit lane holds an even byte low and the odd byte behind it high. Masks come from comparisons
// and go to select() and keep(); they are never stored.
//
// The operations of each width stand in a file of their own; here is what they share.
#pragma once

#include <immintrin.h>
#include <stddef.h>
#include <stdint.h>

#ifndef PPL_LEVEL
#error "vector code is compiled once per level, with PPL_LEVEL set"
#endif
#define PPL_INLINE static inline __attribute__((always_inline))
#define PPL_INLINE_MEMBER inline __attribute__((always_inline))

namespace ppl::PPL_LEVEL {

template <int N>
struct vec;
template <int N>
struct mask8;  // one decision per byte
template <int N>
struct mask16;  // one decision per 16-bit lane

}  // namespace ppl::PPL_LEVEL

#include "simd/simd_16-inl.h"
#if defined(PPL_LEVEL_avx2) || defined(PPL_LEVEL_avx512)
#include "simd/simd_32-inl.h"
#endif
#if defined(PPL_LEVEL_avx512)
#include "simd/simd_64-inl.h"
#endif

namespace ppl::PPL_LEVEL {

// ---- the level's own width, and the ways to walk a row with it

template <class V>
PPL_INLINE V load(const void* p) {
  V d;
  load_to(d, p);
  return d;
}
template <class V>
PPL_INLINE V loadu(const void* p) {
  V d;
  loadu_to(d, p);
  return d;
}
template <class V>
PPL_INLINE V load_widened(const void* p) {
  V d;
  load_widened_to(d, p);
  return d;
}
template <class V>
PPL_INLINE V zero() {
  V d;
  zero_to(d);
  return d;
}
template <class V>
PPL_INLINE V set8(int x) {
  V d;
  set8_to(d, x);
  return d;
}
template <class V>
PPL_INLINE V set16(int x) {
  V d;
  set16_to(d, x);
  return d;
}
// The same for a factor of mullo16(), out of the compiler's sight: gcc takes a multiplication by lanes that it knows
// apart into shifts and additions, up to five for the one.
template <class V>
PPL_INLINE V factor16(int x) {
  V d;
  set16_to(d, x);
  asm("" : "+x"(d.v));
  return d;
}
template <class V>
PPL_INLINE V set32(int x) {
  V d;
  set32_to(d, x);
  return d;
}
// 16 bytes from memory, repeated over the whole vector.
template <class V>
PPL_INLINE V repeat16(const void* p) {
  V d;
  repeat16_to(d, p);
  return d;
}

using vec16 = vec<16>;
#if defined(PPL_LEVEL_avx512)
constexpr int kWidth = 64;
#elif defined(PPL_LEVEL_avx2)
constexpr int kWidth = 32;
#else
constexpr int kWidth = 16;
#endif
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
