// The exported conversions: each is a row of this table, a wrapper and, for some, its process form.
#include "convert/conversion.h"
#include "ppl.h"

using namespace ppl;

namespace {

constexpr auto kYUYV = byte_order::yuyv, kUYVY = byte_order::uyvy;
constexpr auto kI420 = out_format::i420, kRGB24 = out_format::rgb24, kRGB32 = out_format::rgb32;
constexpr auto kToYUYV = out_format::yuyv, kToUYVY = out_format::uyvy;
constexpr auto kWhole = method::progressive, kMotion = method::motion, kWeave = method::weave;
constexpr auto kNone = method::count_only;

}  // namespace

#define PPL_FRAME_CALL(run, name, from, to, how)                                                             \
  uint8_t name(ppl_context* c, const uint8_t* input, uint8_t* output, uint32_t in_width, uint32_t in_height, \
               uint32_t out_width, uint32_t out_height) {                                                    \
    return run({from, to, how}, c, {{input}, 1, output, in_width, in_height, out_width, out_height});        \
  }
#define PPL_FIELD_CALL(run, name, from, to, how)                                                            \
  uint8_t name(ppl_context* c, const uint8_t* earlier_field, const uint8_t* kept_field,                     \
               const uint8_t* later_field, uint8_t* output, uint32_t in_width, uint32_t in_height,          \
               uint32_t out_width, uint32_t out_height) {                                                   \
    return run(                                                                                             \
        {from, to, how}, c,                                                                                 \
        {{earlier_field, kept_field, later_field}, 3, output, in_width, in_height, out_width, out_height}); \
  }
#define PPL_FRAMES(wrapper, process, from, to, how)   \
  PPL_FRAME_CALL(run_wrapper, wrapper, from, to, how) \
  PPL_FRAME_CALL(run_process, process, from, to, how)

extern "C" {

PPL_FRAMES(YUYVToI420MMX, ppl_process_yuyvtoi420, kYUYV, kI420, kWhole)
PPL_FRAMES(UYVYToI420MMX, ppl_process_uyvytoi420, kUYVY, kI420, kWhole)
PPL_FRAMES(YUYVToRGB24MMX, ppl_process_yuyvtorgb24, kYUYV, kRGB24, kWhole)
PPL_FRAMES(UYVYToRGB24MMX, ppl_process_uyvytorgb24, kUYVY, kRGB24, kWhole)
// One function under two names: the bytes are used as YUYV.
PPL_FRAMES(UYVYYYYYToI420MMX, ppl_process_uyvyyyyytoi420, kYUYV, kI420, method::twelve_bit)
PPL_FRAMES(YUYVYYYYToI420MMX, ppl_process_yuyvyyyytoi420, kYUYV, kI420, method::twelve_bit)
PPL_FRAMES(RGB24ToRGB32MMX, ppl_process_rgb24torgb32, kYUYV, kRGB32, kNone)

PPL_FIELD_CALL(run_wrapper, IntlYUYVToYUYVMMX, kYUYV, kToYUYV, kMotion)
PPL_FIELD_CALL(run_wrapper, IntlYUYVToYUYVMMX_no_motion, kYUYV, kToYUYV, kWeave)
PPL_FIELD_CALL(run_wrapper, IntlYUYVToUYVYMMX, kYUYV, kToUYVY, kMotion)
PPL_FIELD_CALL(run_wrapper, IntlYUYVToUYVYMMX_no_motion, kYUYV, kToUYVY, kNone)
PPL_FIELD_CALL(run_wrapper, IntlYUYVToI420MMX, kYUYV, kI420, kMotion)
PPL_FIELD_CALL(run_wrapper, IntlYUYVToI420MMX_no_motion, kYUYV, kI420, kWeave)
PPL_FIELD_CALL(run_wrapper, IntlYUYVToRGB24MMX, kYUYV, kRGB24, kMotion)
PPL_FIELD_CALL(run_wrapper, IntlYUYVToRGB24MMX_no_motion, kYUYV, kRGB24, kWeave)
PPL_FIELD_CALL(run_wrapper, IntlUYVYToYUYVMMX, kUYVY, kToYUYV, kMotion)
PPL_FIELD_CALL(run_wrapper, IntlUYVYToYUYVMMX_no_motion, kUYVY, kToYUYV, kNone)
PPL_FIELD_CALL(run_wrapper, IntlUYVYToUYVYMMX, kUYVY, kToUYVY, kMotion)
PPL_FIELD_CALL(run_wrapper, IntlUYVYToUYVYMMX_no_motion, kUYVY, kToUYVY, kWeave)
PPL_FIELD_CALL(run_wrapper, IntlUYVYToI420MMX, kUYVY, kI420, kMotion)
PPL_FIELD_CALL(run_wrapper, IntlUYVYToI420MMX_no_motion, kUYVY, kI420, kWeave)
PPL_FIELD_CALL(run_wrapper, IntlUYVYToRGB24MMX, kUYVY, kRGB24, kMotion)
PPL_FIELD_CALL(run_wrapper, IntlUYVYToRGB24MMX_no_motion, kUYVY, kRGB24, kWeave)

PPL_FIELD_CALL(run_process, ppl_process_intlyuyvtoyuyv, kYUYV, kToYUYV, kMotion)
PPL_FIELD_CALL(run_process, ppl_process_intluyvytouyvy, kUYVY, kToUYVY, kMotion)
PPL_FIELD_CALL(run_process, ppl_process_intlyuyvtoi420, kYUYV, kI420, kMotion)
PPL_FIELD_CALL(run_process, ppl_process_intluyvytoi420, kUYVY, kI420, kMotion)
PPL_FIELD_CALL(run_process, ppl_process_intlyuyvtorgb24, kYUYV, kRGB24, kMotion)
PPL_FIELD_CALL(run_process, ppl_process_intluyvytorgb24, kUYVY, kRGB24, kMotion)

}  // extern "C"
