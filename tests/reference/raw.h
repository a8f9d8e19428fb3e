// The raw path (qualities 4 and 9): the mosaic itself as the picture, with no correction and no mirror.
#pragma once

#include <cstdint>

#include "canvas.h"
#include "finished.h"
#include "state.h"

namespace ref {

// Draws the frame and, in I420, the moving mark. Counting the frame is left to the caller.
void raw_picture(state& s, format kind, const uint8_t* source, canvas& out);

}  // namespace ref
