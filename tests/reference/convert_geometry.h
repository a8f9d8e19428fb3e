// The frame geometry of one instance as the conversions see it, kept by plain arithmetic.
//
// Quantities are 32-bit and wrap. width << 1 is written for "doubled", width >> d for d = 0, 1, 2.
#pragma once

#include <cstdint>

namespace ref {

struct convert_state {
  int32_t frame_width = 0, frame_height = 0, frame_stride = 0;
  int32_t decimation = 0, top_black_lines = 0, bottom_black_lines = 0;
  int32_t out_width = 0, out_height = 0;
  bool h_mirror = false, v_mirror = false;
  bool P3_only = false;
  int threshold = 50;  // of the motion test
  uint32_t n_frame = 0;

  int32_t out_pixels() const;
  int32_t out_quarter_pixels() const { return out_pixels() / 4; }
  int tiles() const { return frame_width / 16; }
  int row_pairs() const { return frame_height / 2; }
};

// Sets the input size and with it the output size at the decimation in force; black lines are not added.
// False and no change if a size is not accepted.
bool new_frame_size(convert_state& s, uint32_t width, uint32_t height, uint32_t stride);

// Changes the decimation and the black lines, which out_height then contains. Returns early, true, if all three
// are the values in force: an out_height that lost its black lines stays as it is. False if not -1 <= d <= 2.
bool set_decimation(convert_state& s, int32_t d, int32_t top, int32_t bottom);

void reset_decimation(convert_state& s);

// Looks the size pair up, then new_frame_size and set_decimation. Without validate: no test, decimation 0.
bool new_frame_sizes(convert_state& s, uint32_t in_width, uint32_t in_height, uint32_t out_width,
                     uint32_t out_height, bool validate);

}  // namespace ref
