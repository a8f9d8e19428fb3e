// What the rooms below paths/ must know of the quality that a frame goes through. The qualities are the table in
// paths/qualities.h.
#pragma once

#include <stdint.h>

namespace ppl {

// The form in which finished rows reach RGB24 and RGB32: planes of R, G, B; planes of Y, U, V; or Y and chroma words.
enum class rgb_form : uint8_t { planes, yuv_planes, yuv_words };

// At double size, the formats whose rows between two rows of samples are filled: all that have such rows; all, but
// YUYV not in the main stage; RGB24 alone.
enum class rows_between : uint8_t { all, not_in_yuyv_main_stage, rgb24_alone };

struct quality_rules {
  rgb_form rgb;
  rows_between between;
  uint8_t bottom_stages;  // row pairs below the main stage, which begins at row pair 1
};

}  // namespace ppl
