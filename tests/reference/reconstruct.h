// Qualities 0, 1, 2, 10, 11, 12 and 15 of the plain reference: from a frame to finished planes.
#pragma once

#include <cstdint>

#include "finished.h"
#include "state.h"

namespace ref {

// The mean_collection, medium filter and thresholds are those of the state. Overwrites the source (frame_stride *
// frame_height bytes) with what the front end, and the medium filter where it runs, leave there; adds to the
// statistics sums; keeps the leftovers. stats_scale, n_frame and the roll-up are the frame call's.
finished reconstruct(state& s, uint8_t* source, format f);

}  // namespace ref
