// The mosaic is sharpened in place, and each row pair sees what the one before it left.
#include "paths/blocks.h"
#include "paths/kernels.h"
#include "record/levels.h"
#include "tile/pads.h"

namespace ppl {

void mosaic_edge_stage(walk& w, const stage& s, int first) {
  walk::row_list mirrored;
  uint8_t* const* const rows = w.around(s.reads[0], first, 1, mirrored);
  const row_bits with_chroma = w.made(first, w.three_planes ? kEveryRow : w.chroma_rows);
  mosaic_edge_args a = {.context = w.context,
                        .rows = {rows[0], rows[1], rows[2], rows[3]},
                        .matrix = &w.matrix,
                        .plane = {},
                        .three_planes = w.three_planes,
                        .width = w.width};
  for (int i = 0; i < 2; ++i) {
    a.plane[0][i] = w.rows(s.writes[0], first)[i];
    if (in_bits(with_chroma, i)) a.plane[1][i] = w.rows(s.writes[1], first)[i];
    if (w.three_planes) a.plane[2][i] = w.rows(s.writes[2], first)[i];
  }
  w.context->kernels->paths->mosaic_edge(a);
  // The next row pair has luma above it, and luma mirrored beside that.
  if (!w.three_planes) pad_samples(a.rows[2], w.width);
}

}  // namespace ppl
