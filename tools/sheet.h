// A sheet of pictures of one size, each with a line of text above it.
#pragma once

#include <string>
#include <vector>

#include "picture.h"

namespace tool {

struct Panel {
  std::string label;
  Picture picture;
};

Picture make_sheet(const std::vector<Panel>&, uint32_t columns);

}  // namespace tool
