// Colour: sensor matrix, saturation, hue and contrast gain folded into one matrix per target space.
#pragma once

#include "record/context.h"

namespace ppl {

// Multiplies the control matrices with the sensor matrix into the vectors that frames load. Always true.
bool rebuild_colour_matrices(ppl_context* c);

}  // namespace ppl
