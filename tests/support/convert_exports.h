// The exported conversions by name, so that tests can walk them.
#pragma once

#include "ppl.h"

struct convert_export {
  using frame_call = uint8_t (*)(ppl_context*, const uint8_t*, uint8_t*, uint32_t, uint32_t, uint32_t,
                                 uint32_t);
  using field_call = uint8_t (*)(ppl_context*, const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*,
                                 uint32_t, uint32_t, uint32_t, uint32_t);
  const char* name;
  frame_call frame;  // one of the two
  field_call fields;

  uint8_t operator()(ppl_context* c, const uint8_t* earlier, const uint8_t* kept, const uint8_t* later,
                     uint8_t* output, uint32_t in_width, uint32_t in_height, uint32_t out_width,
                     uint32_t out_height) const {
    return frame ? frame(c, kept, output, in_width, in_height, out_width, out_height)
                 : fields(c, earlier, kept, later, output, in_width, in_height, out_width, out_height);
  }
};

#define FRAME(name) \
  { #name, name, nullptr }
#define FIELDS(name) \
  { #name, nullptr, name }
inline constexpr convert_export kConvertExports[] = {
    FRAME(YUYVToI420MMX),
    FRAME(ppl_process_yuyvtoi420),
    FRAME(UYVYToI420MMX),
    FRAME(ppl_process_uyvytoi420),
    FRAME(YUYVToRGB24MMX),
    FRAME(ppl_process_yuyvtorgb24),
    FRAME(UYVYToRGB24MMX),
    FRAME(ppl_process_uyvytorgb24),
    FRAME(UYVYYYYYToI420MMX),
    FRAME(ppl_process_uyvyyyyytoi420),
    FRAME(YUYVYYYYToI420MMX),
    FRAME(ppl_process_yuyvyyyytoi420),
    FRAME(RGB24ToRGB32MMX),
    FRAME(ppl_process_rgb24torgb32),
    FIELDS(IntlYUYVToYUYVMMX),
    FIELDS(ppl_process_intlyuyvtoyuyv),
    FIELDS(IntlYUYVToYUYVMMX_no_motion),
    FIELDS(IntlYUYVToUYVYMMX),
    FIELDS(IntlYUYVToUYVYMMX_no_motion),
    FIELDS(IntlYUYVToI420MMX),
    FIELDS(ppl_process_intlyuyvtoi420),
    FIELDS(IntlYUYVToI420MMX_no_motion),
    FIELDS(IntlYUYVToRGB24MMX),
    FIELDS(ppl_process_intlyuyvtorgb24),
    FIELDS(IntlYUYVToRGB24MMX_no_motion),
    FIELDS(IntlUYVYToYUYVMMX),
    FIELDS(IntlUYVYToYUYVMMX_no_motion),
    FIELDS(IntlUYVYToUYVYMMX),
    FIELDS(ppl_process_intluyvytouyvy),
    FIELDS(IntlUYVYToUYVYMMX_no_motion),
    FIELDS(IntlUYVYToI420MMX),
    FIELDS(ppl_process_intluyvytoi420),
    FIELDS(IntlUYVYToI420MMX_no_motion),
    FIELDS(IntlUYVYToRGB24MMX),
    FIELDS(ppl_process_intluyvytorgb24),
    FIELDS(IntlUYVYToRGB24MMX_no_motion),
};
#undef FRAME
#undef FIELDS

inline const convert_export* find_export(const char* name) {
  for (const convert_export& e : kConvertExports)
    if (__builtin_strcmp(e.name, name) == 0) return &e;
  return nullptr;
}
