// Whether a whole picture comes of a call, found out by looking at the picture.
//
// Four scenes go through the call: grey that rises with the column, grey that rises with the row, and colour that does.
// A picture is whole if no byte of it depends on what the buffers held before, and every pixel has the brightness and
// the colour of its place in the scene, give or take what interpolation and the known blemishes do. Nothing here knows
// the rules of the library or of the helper.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "helpers/ppl_check.h"

namespace scenes {

using bytes = std::vector<uint8_t>;

// Sources at the addresses that the plan gives; what is written starts as `fill`, as do bytes between rows.
struct made {
  bool result = false, counted = false;
  bytes picture;
};

// What runs a call: the library or the plain reference.
class machine {
 public:
  virtual ~machine() = default;
  virtual made frame(const ppl_plan& plan, const bytes& source, uint8_t fill) = 0;
  // Packed frames have one source, the second; the last is the later field.
  virtual made conversion(const ppl_plan& plan, const bytes (&source)[3], uint8_t fill) = 0;
};
machine& library();
machine& reference();

struct seen {
  bool whole = false, result = false, counted = false;
  std::string why;  // it is not whole
};
seen look(machine& m, const ppl_plan& plan);

// The size of the frame in the destination, by what the header of the library says.
struct extent {
  uint32_t width, height;
};
extent picture_of(const ppl_plan& plan);
uint64_t bytes_of(uint32_t format, extent e);

}  // namespace scenes
