// Flat colours: found block by block, or what the last block of an earlier frame left, which later frames show.
#include "paths/blocks.h"
#include "paths/kernels.h"
#include "record/levels.h"
#include "tile/pads.h"

namespace ppl {

namespace {

uint8_t* flat_row(const walk& w, int row) {
  return w.scratch(kFlatScratch + row * kRowPitch);
}

// The colours are read at r * stride plus multiples of the frame's width: with a wider stride those are other places
// of the frame, copied here with the columns beside them.
const uint8_t* colour_row(const walk& w, int r, int neighbour, int slot) {
  const ppl_context& c = *w.context;
  uint8_t* const out = flat_row(w, 4 + slot);
  const uint8_t* const from = w.source + static_cast<ptrdiff_t>(r) * c.frame_stride +
                              static_cast<ptrdiff_t>(w.mirrored(neighbour) - r) * c.frame_width;
  copy(out, from, w.width);
  pad_samples(out, w.width);
  return out;
}

void find_flat_blocks(walk& w, ring_id mosaic, int r) {
  walk::row_list mirrored;
  const uint8_t* elsewhere[4];
  uint8_t* const* const rows = w.around(mosaic, r, 2, mirrored);
  const bool in_rows = w.context->frame_stride == w.context->frame_width;
  for (int i = 0; i < 4 && !in_rows; ++i) elsewhere[i] = colour_row(w, r, r - 1 + i, i);
  w.context->kernels->paths->flat_test({.context = w.context,
                                        .rows = rows,
                                        .colour_rows = in_rows ? rows + 1 : elsewhere,
                                        .mask = w.flat.mask,
                                        .r = w.flat.r,
                                        .g = w.flat.g,
                                        .b = w.flat.b,
                                        .odd_row = r & 1,
                                        .width = w.width});
  const int last = w.width - kTile;
  tile_leftovers& left = w.context->leftovers;
  __builtin_memcpy(&left.flat_mask, w.flat.mask + last, kTile);
  __builtin_memcpy(&left.flat_r, w.flat.r + last, kTile);
  __builtin_memcpy(&left.flat_g, w.flat.g + last, kTile);
  __builtin_memcpy(&left.flat_b, w.flat.b + last, kTile);
}

}  // namespace

void flat_blocks_stage(walk& w, const stage& s, int first) {
  if (w.inside(first) && w.flat.reach(first)) find_flat_blocks(w, s.reads[0], first);
  demosaic_stage(w, s, first);
}

// Tested frames write the rows of flat colours block by block. In others the rows hold what the last tile of an
// earlier frame left, if its mask has a bit, repeated along the row; with edge enhancement it shows in row 1 and rows
// 3 .. height - 2, without it in all.
void start_flat_colours(walk& w, const demosaic_block& block, bool edge) {
  w.flat = {};
  if (block.flat == flat_colours::none) return;
  const tile_leftovers& left = w.context->leftovers;
  if (block.flat == flat_colours::left_over) {
    int set = 0;
    for (int i = 0; i < 8; ++i) set |= left.flat_mask.lane[i];
    if (set == 0) return;
  }
  const bool inner =
      block.flat == flat_colours::odd_blocks || (block.flat == flat_colours::left_over && edge);
  const bool skips = block.flat == flat_colours::left_over && edge;
  // Row 1 of left-over colours is reached in a frame of two rows as well.
  const int last = !inner ? w.height - 1 : skips && w.height == 2 ? 1 : w.height - 2;
  w.flat = {flat_row(w, 0), flat_row(w, 1), flat_row(w, 2), flat_row(w, 3),
            inner ? 1 : 0,  last,           skips ? 2 : -1};
  if (is_tested(block.flat)) return;
  for (int x = 0; x < w.width + 64; x += kTile) {
    __builtin_memcpy(w.flat.mask + x, &left.flat_mask, kTile);
    __builtin_memcpy(w.flat.r + x, &left.flat_r, kTile);
    __builtin_memcpy(w.flat.g + x, &left.flat_g, kTile);
    __builtin_memcpy(w.flat.b + x, &left.flat_b, kTile);
  }
}

}  // namespace ppl
