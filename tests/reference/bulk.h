// Qualities 3 and 13: every cell, or every sample, by itself, the whole frame at once.
//
// At widths that are no multiple of 32 (64 when halved) or heights that are no multiple of 2 (4 when halved) the
// source and the statistics are right and the picture is not to be looked at.
#pragma once

#include <cstdint>

#include "canvas.h"
#include "finished.h"
#include "state.h"

namespace ref {

// Overwrites the source, adds to the statistics, draws the picture. Decimation 2 never gets here.
void grey_frame(state& s, format kind, uint8_t* source, canvas& out);  // quality 13: I420 and RGB24
void cell_frame(state& s, format kind, uint8_t* source, canvas& out);  // quality 3

}  // namespace ref
