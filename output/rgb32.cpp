// RGB32: bytes B, G, R, 0; rows bottom-up. No quality 15.
//
//   decimation 0   both rows
//   halved         the row is mirrored first and then its even places are taken, eight pixels for each tile
//   doubled        no usable picture, and kept so: RGB24's three-byte pixels at RGB24's row distance, 96 bytes a tile
//   at
//                  a tile step of 64, so that tiles overlap; each widened tile reads its neighbour back from the bytes
//                  beside its place, whatever they are. No rows between.
#include "output/output.h"

namespace ppl {

namespace {

// One pixel of each pair: the even column, under the mirror the odd one.
void put_halved(output_writer& w, const finished_rows& rows) {
  const output_offset_plan& plan = w.context->plan;
  uint8_t* const full[3] = {w.planes, w.planes + kPlanePitch, w.planes + 2 * kPlanePitch};
  uint8_t* const half[3] = {w.planes + 3 * kPlanePitch, w.planes + 4 * kPlanePitch,
                            w.planes + 5 * kPlanePitch};
  w.kernels->rgb_planes(full, rgb_source_of(w, rows, 0, 0), w.width);
  const int n = (w.width / 2 + 15) / 16 * 16;
  for (int i = 0; i < 3; ++i) w.rows->halve(half[i], full[i] + (w.h_mirror ? 1 : 0), n, false);
  const int64_t at = run_start(w.luma, w.tiles, plan.rgb32.tile_step);
  if (w.ordinary && (w.tiles & 1) == 0) {
    w.kernels->rgb32(w.out.base + at, {rgb_source::planes, {half[0], half[1], half[2]}}, n, w.h_mirror);
    return;
  }
  for (int t = 0; t < w.tiles; ++t) {
    uint8_t part[3][16], block[64];
    for (int i = 0; i < 3; ++i) {
      for (int k = 0; k < 8; ++k) part[i][k] = half[i][8 * t + (w.h_mirror ? 7 - k : k)];
      for (int k = 8; k < 16; ++k) part[i][k] = 0;
    }
    w.kernels->rgb32(block, {rgb_source::planes, {part[0], part[1], part[2]}}, 16, false);
    w.out.store(w.luma + int64_t{t} * plan.rgb32.tile_step, block, 32);
  }
}

// Tile by tile, since each reads what the one before it stored.
void put_doubled(output_writer& w, const finished_rows& rows) {
  const output_offset_plan& plan = w.context->plan;
  const int64_t pitch = plan.rgb24_pitch.row_pitch;
  uint8_t plane[2][3][16];
  uint8_t block[96];
  for (int t = 0; t < w.tiles; ++t) {
    const int64_t tile = w.luma + int64_t{t} * plan.rgb32.tile_step;
    for (int i = 0; i < 2; ++i) {
      uint8_t* const to[3] = {plane[i][0], plane[i][1], plane[i][2]};
      w.kernels->rgb_planes(to, rgb_source_of(w, rows, i, t * kTileColumns), 16);
      const int64_t at = tile + 2 * i * pitch;
      for (int c = 0; c < 3; ++c) {  // byte c of a pixel: blue, green, red
        const uint8_t* const p = plane[i][2 - c];
        for (int k = 0; k < 16; ++k) {
          const int s = w.h_mirror ? p[15 - k] : p[k];
          int neighbour;
          if (w.h_mirror)
            neighbour = k < 15 ? p[14 - k] : t == 0 ? s : byte_at(w, at + 96 + c);
          else
            neighbour = k > 0 ? p[k - 1] : t == 0 ? s : byte_at(w, at - 3 + c);
          block[6 * k + c] = static_cast<uint8_t>((s + neighbour + 1) >> 1);
          block[6 * k + 3 + c] = static_cast<uint8_t>(s);
        }
      }
      w.out.store(at, block, 96);
    }
  }
}

}  // namespace

void put_rgb32(output_writer& w, int, const finished_rows& rows) {
  const auto& plan = w.context->plan.rgb32;
  if (w.decimation < 0)
    put_doubled(w, rows);
  else if (w.decimation == 0)
    put_rgb_rows(w, rows, 4, w.context->plan.rgb32_pitch.row_pitch, plan.tile_step);
  else
    put_halved(w, rows);
  w.luma += int64_t{w.tiles - 1} * plan.tile_step + plan.row_step;
}

}  // namespace ppl
