// YUV as other programs read it. The library's own chroma is the plain colour differences B - Y and R - Y; the matrix
// from the sensor's colours to YUV is linear, so a sensor matrix of another kind makes the chroma and luma of a
// broadcast standard, with nothing cut that the standard has room for.
#pragma once

#include <ppl.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace tool {

enum class Standard { camera, bt601, bt709 };

// The colour controls behind a picture, as the library takes them.
struct ColourControls {
  std::array<int32_t, 9> sensor_matrix;
  uint32_t sat = 256;
  int32_t hue = 0, contrast = 0;
};

// The sensor matrix that makes YUV frames under these controls full-range YUV of the standard. `scratch` is a context
// at its defaults, of which nothing but a few small frames is asked: greys are held to it until they come out neutral.
// For camera it is the sensor matrix as it is.
std::array<int32_t, 9> standard_matrix(Standard, const ColourControls&, ppl_context* scratch);

// Full range to 16..235 for luma and 16..240 for chroma, in place.
void luma_to_video_range(uint8_t* samples, size_t count);
void chroma_to_video_range(uint8_t* samples, size_t count);
// The same for pairs of bytes of which the first (second) is luma.
void packed_to_video_range(uint8_t* frame, size_t bytes, bool luma_first);

}  // namespace tool
