// The calls that take a frame: frame calls, wrappers with their last-resort pictures, scaled calls.
//
// Buffers are those of the exported functions. A scaled YUYV call may read 4 bytes behind the frame in `scratch`.
// A null buffer passes the tests of alignment. A frame that would then read or write one is counted and touches
// nothing; a last-resort picture that would is not made.
#pragma once

#include <cstdint>
#include <vector>

#include "finished.h"
#include "state.h"

namespace ref {

// Whether the rules leave the picture of a frame open: incomplete groups of the frame-at-once qualities, and doubled
// cells in I420 whose planes overlap because black lines of a negative count took rows away.
bool picture_is_open(const state& s, format kind);
// Offsets in the last frame that this thread put out of bytes that no rule settles (canvas.h).
const std::vector<int64_t>& open_bytes();

bool process_frame(state& s, format kind, uint8_t* source, uint8_t* destination, uint32_t width,
                   uint32_t height, uint32_t stride);

bool wrapper(state& s, format kind, ending name, uint8_t* source, uint8_t* destination, uint32_t width,
             uint32_t height);
bool scaling_wrapper(state& s, format kind, uint8_t* source, uint32_t width, uint32_t height, uint32_t stride,
                     uint8_t* destination, uint32_t out_width, uint32_t out_height, uint8_t* scratch);

}  // namespace ref
