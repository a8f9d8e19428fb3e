// Frame size and decimation, and what is constant from frame to frame because of them: output size, tile and
// row-pair counts, the 8 x 6 grid, its divisors, and the factors that make up for the border without statistics.
#pragma once

#include "record/context.h"

namespace ppl {

// A width or height of the frame after decimation d: shifted down for d >= 0, up for d < 0.
constexpr int32_t decimated(int32_t extent, int32_t d) {
  return d >= 0 ? extent >> d : static_cast<int32_t>(static_cast<uint32_t>(extent) << -d);
}

bool rebuild_frame_tables(ppl_context* c);  // grid and divisors
bool rebuild_stats_scales(ppl_context* c);  // tile counts and border factors

}  // namespace ppl
