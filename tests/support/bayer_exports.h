// The exported Bayer calls by format, in the order of ppl_format, so that whoever walks the formats has them once.
#pragma once

#include <stddef.h>

#include "helpers/ppl_qualities.h"
#include "ppl.h"

namespace support {

inline constexpr const char* kFormatNames[] = {"I420", "YUYV", "UYVY", "RGB24", "RGB32"};
inline constexpr decltype(&ppl_process_blrtoi420) kFrameCalls[] = {
    ppl_process_blrtoi420, ppl_process_blrtoyuyv, ppl_process_blrtouyvy, ppl_process_blrtorgb24,
    ppl_process_blrtorgb32};

// The wrappers of a format, by what follows its name.
inline constexpr const char* kWrapperEndings[] = {"", "_deci_2_1", "_intp_1_2", "_intp_1_2_stride",
                                                  "_intp_1_4_stride"};
#define PPL_WRAPPERS(F)                                                     \
  {                                                                         \
    BaylorTo##F##MMX, BaylorTo##F##MMX_deci_2_1, BaylorTo##F##MMX_intp_1_2, \
        BaylorTo##F##MMX_intp_1_2_stride, BaylorTo##F##MMX_intp_1_4_stride  \
  }
inline constexpr decltype(&BaylorToI420MMX) kWrappers[][5] = {
    PPL_WRAPPERS(I420), PPL_WRAPPERS(YUYV), PPL_WRAPPERS(UYVY), PPL_WRAPPERS(RGB24), PPL_WRAPPERS(RGB32)};
#undef PPL_WRAPPERS

inline constexpr decltype(&BaylorToI420MMX_scaling_stride) kScaledCalls[] = {
    BaylorToI420MMX_scaling_stride, BaylorToYUYVMMX_scaling_stride, BaylorToUYVYMMX_scaling_stride,
    BaylorToRGB24MMX_scaling_stride, BaylorToRGB32MMX_scaling_stride};

template <class T, size_t n>
constexpr bool has_all_formats(const T (&)[n]) {
  return n == PPL_FORMATS;
}
static_assert(has_all_formats(kFormatNames) && has_all_formats(kFrameCalls) && has_all_formats(kWrappers) &&
              has_all_formats(kScaledCalls));

}  // namespace support
