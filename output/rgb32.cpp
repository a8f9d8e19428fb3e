// RGB32: bytes B, G, R, 0; rows bottom-up. Not in qualities whose rows come as Y and chroma words.
//
//   decimation 0   both rows
//   halved         one pixel of each pair: the even column, under the mirror the odd one; eight pixels for each tile
//   doubled        no usable picture, and kept so: RGB24's three-byte pixels at RGB24's row distance, 96 bytes a tile
//                  at a tile step of 64, so that tiles overlap; each widened tile reads its neighbour back from the
//                  bytes beside its place, whatever they are. No rows between.
#include "output/output.h"

namespace ppl {

namespace {

void put_halved(const output_writer& w, const finished_rows& rows) {
  const int64_t step = w.context->plan.rgb32.tile_step;
  const rgb_source full = planes_of(w, rows, 0, 0);
  put_all_tiles(w, [&]<bool kWhole>(int first, int tiles) {
    uint8_t block[32];
    const int64_t at = run_start(w.luma + first * step, tiles, step);
    put_halved_rgb(w, making_place<kWhole>(w, at, block), from_planes(full.plane, first * kTileColumns),
                   8 * tiles);
    settle<kWhole>(w, at, block, 32);
  });
}

// Tile by tile, since each reads what the one before it stored.
void put_doubled(const output_writer& w, const finished_rows& rows) {
  const output_offset_plan& plan = w.context->plan;
  const rgb_source full[2] = {planes_of(w, rows, 0, 0), planes_of(w, rows, 1, 3)};
  uint8_t* const wide[3] = {scratch_plane(w, 6), scratch_plane(w, 7), scratch_plane(w, 8)};
  for (int t = 0; t < w.tiles; ++t)
    for (int i = 0; i < 2; ++i) {
      const int64_t at =
          w.luma + int64_t{t} * plan.rgb32.tile_step + 2 * i * int64_t{plan.rgb24_pitch.row_pitch};
      const int64_t neighbour = at + (w.h_mirror ? 96 : -3);
      for (int c = 0; c < 3; ++c) {
        const uint8_t* const from = full[i].plane[c] + t * kTileColumns;
        const uint8_t outside = t == 0 ? from[0] : static_cast<uint8_t>(byte_at(w, neighbour + 2 - c));
        w.kernels->widen(wide[c], from, kTileColumns, {outside, w.h_mirror, 0});
      }
      uint8_t block[96];
      w.kernels->rgb24(block, from_planes(wide, 0), 32, false);
      w.out.store(at, block, 96);
    }
}

}  // namespace

void put_rgb32(output_writer& w, int, const finished_rows& rows) {
  const auto& plan = w.context->plan.rgb32;
  if (w.decimation < 0)
    put_doubled(w, rows);
  else if (w.decimation == 0)
    put_rgb_rows(w, rows, w.context->plan.rgb32_pitch.row_pitch, plan.tile_step);
  else
    put_halved(w, rows);
  w.luma += int64_t{w.tiles - 1} * plan.tile_step + plan.row_step;
}

}  // namespace ppl
