// A frame in progress, as the dispatch hands it to a path.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "record/context.h"
#include "record/destination.h"
#include "record/format.h"

namespace ppl {

struct frame_job {
  ppl_context* context;
  out_format format;
  uint8_t* source;  // frame_stride * frame_height bytes, overwritten in place
  destination out;  // I420: U begins out_pixels bytes after its base, V out_quarter_pixels after U
};

}  // namespace ppl
