// A frame in progress, as the dispatch hands it to a path.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "record/context.h"
#include "record/format.h"

namespace ppl {

struct frame_job {
  ppl_context* context;
  out_format format;
  uint8_t* source;            // frame_stride * frame_height bytes, overwritten in place
  uint8_t* destination;       // base of the frame
  int64_t destination_bytes;  // what the caller handed over: no byte at or behind this is written
  int64_t chroma_offset;      // I420: where U starts; V lies out_quarter_pixels behind it
};

}  // namespace ppl
