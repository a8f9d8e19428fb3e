// A frame in progress, as the dispatch hands it to a quality path.
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
  destination out;  // I420: U begins out_pixels bytes behind its base, V out_quarter_pixels behind U
};

// Qualities 0, 1, 2, 10, 11, 12, 15: the tile pipeline (tile/). Fills the picture and the statistics sums.
void run_tile_path(const frame_job& job);
// Qualities 3 and 13: cell by cell, without neighbourhoods (paths/).
void run_bulk_path(const frame_job& job);

}  // namespace ppl
