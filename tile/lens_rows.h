// The lens factors of a frame row, as the front end reads them.
#pragma once

#include <stdint.h>

#include "record/context.h"

namespace ppl {

// Factors of columns 0 .. width - 1 of row r, or null where lens correction is off or has no table. The table has a
// row for each distance from the origin row. Entries outside the table count as 8192 (1.0): a row that needs any is
// made in `spare`, which has room for `width` factors.
inline const uint16_t* lens_row(const ppl_context& c, int r, int width, uint16_t* spare) {
  if (c.lens_correction_enabled == 0 || c.lens_table == nullptr) return nullptr;
  const int64_t distance = static_cast<int64_t>(r) - c.lens_origin_y;
  const int64_t first = (distance < 0 ? -distance : distance) * c.lens_width;
  const int64_t entries = c.lens_table_size / 2;
  if (first >= 0 && first + width <= entries) return c.lens_table + first;
  for (int x = 0; x < width; ++x) {
    const int64_t entry = first + x;
    spare[x] = entry >= 0 && entry < entries ? c.lens_table[entry] : uint16_t{8192};
  }
  return spare;
}

}  // namespace ppl
