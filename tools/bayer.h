// One raw Bayer frame, from the file to a finished frame or picture.
#pragma once

#include <ppl.h>

#include "bytes.h"
#include "controls.h"
#include "formats.h"
#include "frame_file.h"
#include "picture.h"

namespace tool {

// What is to be made of a frame.
struct Job {
  uint32_t quality = 15;
  int32_t decimation = 0;  // -1 doubles, 1 halves
  Size scale = {0, 0};     // 0 x 0: no second pass
  bool via_i420 = false;   // pictures: through I420 even where the quality has RGB24
};

// Whether pictures of a quality come by way of I420 where nothing else is asked for: the RGB of 0 and 10 is paler.
bool best_via_i420(uint32_t quality);

// The size of the result.
Size output_size(const FrameFile&, const Job&);

// Throws with the reason if the library can't make the whole, right picture of this format from such a frame.
void require_possible(const FrameFile&, const Job&, const Controls&, Format);

// The frame as i420, yuyv, uyvy, rgb24 or rgb32, byte for byte as the library writes it.
Bytes convert_bayer(ppl_context*, const FrameFile&, const Job&, Format, Bytes source);

// The frame as a picture: through the library's RGB24 where the quality has it whole, else through RGB32 or I420.
Picture bayer_picture(ppl_context*, const FrameFile&, const Job&, const Controls&, const Bytes& source);

}  // namespace tool
