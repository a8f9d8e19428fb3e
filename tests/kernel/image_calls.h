// The image behind the functions of ppl.h in this process; see loaded_image.h.
#pragma once

#include "loaded_image.h"

namespace kernel_image {

// Loaded at the first call of a library function: the file that the environment names in PPL_KERNEL_IMAGE, or the
// one that preset kernel made.
const loaded_image& image();

}  // namespace kernel_image
