// One Bayer frame: geometry, cleared statistics, the quality's path, finished statistics.
#pragma once

#include <stdint.h>

#include "record/context.h"
#include "record/job.h"

namespace ppl {

// What a frame call is given. The destination of a scaled call is its scratch buffer: the frame at input size.
struct bayer_call {
  uint8_t* source;
  uint8_t* destination;
  uint32_t width, height, stride;
  bool lacks_buffer;  // of a scaled call: the frame is only counted
};

// Outcome of a frame call. `ran`: the buffers were aligned, none was missing and the frame was let through, so that
// the destination now holds what the dispatch made.
struct call_result {
  bool ok;
  bool ran;
};

// A size that the geometry refuses ends the call at once: nothing is cleared, nothing is counted. A buffer off its
// 16-byte alignment, or P3_only, skips the dispatch but not the statistics; the call still succeeds. A frame that
// would read or write a null buffer is only counted, in every quality.
call_result run_frame_call(ppl_context* c, out_format format, const bayer_call& call);

// Raw frames: the samples as they are, with no reconstruction and no mirror (frame/raw_path.cpp).
void run_raw_path(const frame_job& job);

// Which of its buffers a frame reads or writes.
struct buffer_use {
  bool source, destination;
};
buffer_use raw_path_use(const frame_job& job);

}  // namespace ppl
