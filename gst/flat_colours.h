// What qualities 10 and 11 leave behind in a context shows in later pictures of qualities 0 and 1, whoever owns the
// context by then. One frame of quality 11 in which nothing is flat takes it away.
#pragma once

#include <ppl.h>

// Leaves every control at its default.
inline void forget_flat_colours(ppl_context* context) {
  constexpr uint32_t width = 32, height = 4;
  alignas(64) uint8_t bars[width * height], picture[2 * width * height];
  for (uint32_t i = 0; i < width * height; ++i) bars[i] = i & 2 ? 255 : 0;
  ppl_reset_all_controls(context);
  ppl_set_quality(context, 11);
  ppl_set_decimation(context, 0, 0, 0);
  ppl_process_blrtoyuyv(context, bars, picture, width, height, width);
  ppl_reset_quality(context);
}
