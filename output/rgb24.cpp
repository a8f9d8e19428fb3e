// RGB24: bytes B, G, R; rows bottom-up.
//
// The path leaves R, G, B planes (qualities 1, 2, 11, 12), Y, U, V planes (0, 10) or Y and chroma words (15); the last
// two are converted on the way.
//   decimation 0   both rows
//   halved         even columns of the even row, one block of 48 bytes for two tiles
//   doubled        each plane widened, on every second row, then the rows between filled in all qualities. Quality
//                  15 is not converted there: luma goes out as red, the bytes of the chroma words as green, those of
//                  the unfiltered chroma words as blue, all without the 128.
#include "output/output.h"

namespace ppl {

namespace {

// ---- planes of a row in the record's scratch

struct plane_rows {
  uint8_t* plane[3];
};

plane_rows scratch_planes(const output_writer& w) {
  return {{w.planes, w.planes + kPlanePitch, w.planes + 2 * kPlanePitch}};
}
plane_rows wide_planes(const output_writer& w) {
  uint8_t* const base = w.planes + 3 * kPlanePitch;
  return {{base, base + 2 * kPlanePitch, base + 4 * kPlanePitch}};
}

// R, G, B of row i, in scratch or where the path left them.
rgb_source finished_planes(const output_writer& w, const finished_rows& rows, int i, bool unconverted) {
  const rgb_source from = rgb_source_of(w, rows, i, 0);
  if (from.kind == rgb_source::planes) return from;
  const plane_rows to = scratch_planes(w);
  if (unconverted) {
    w.rows->copy(to.plane[0], rows.plane[0][i], w.width, false);
    w.kernels->unbias(to.plane[1], rows.plane[1][i], w.width);
    w.kernels->unbias(to.plane[2], rows.unfiltered_chroma[i], w.width);
  } else {
    w.kernels->rgb_planes(to.plane, from, w.width);
  }
  return {rgb_source::planes, {to.plane[0], to.plane[1], to.plane[2]}};
}

// Twice as wide. Under the mirror the first sample of a tile takes for its neighbour what the earlier tile's end was
// widened to, a mean itself; at column 0 its own.
void widen_planes(const output_writer& w, const rgb_source& from, const plane_rows& to) {
  for (int i = 0; i < 3; ++i) {
    const uint8_t* const p = from.plane[i];
    w.kernels->widen(to.plane[i], p, w.width, {p[0], w.h_mirror, kTileColumns});
  }
}

// ---- doubled rows, by runs or by clipped tiles

void put_doubled(const output_writer& w, const finished_rows& rows) {
  const output_offset_plan& plan = w.context->plan;
  const int64_t pitch = plan.rgb24_pitch.row_pitch;
  for (int i = 0; i < 2; ++i) {
    const plane_rows wide = wide_planes(w);
    widen_planes(w, finished_planes(w, rows, i, w.quality.rgb == rgb_form::yuv_words), wide);
    const int64_t at = run_start(w.luma + 2 * i * pitch, w.tiles, plan.rgb24.tile_step);
    put_all_tiles(w, [&]<bool kWhole>(int first, int tiles) {
      for (int x = 32 * first; x < 32 * (first + tiles); x += kWhole ? 32 * tiles : 16) {
        uint8_t block[48];
        const rgb_source part = {rgb_source::planes,
                                 {wide.plane[0] + x, wide.plane[1] + x, wide.plane[2] + x}};
        w.kernels->rgb24(making_place<kWhole>(w, at + 3 * x, block), part, kWhole ? 32 * tiles : 16, false);
        settle<kWhole>(w, at + 3 * x, block, 48);
      }
    });
  }
}

// ---- halved rows

void put_halved_row(const output_writer& w, const finished_rows& rows) {
  const output_offset_plan& plan = w.context->plan;
  const rgb_source full = finished_planes(w, rows, 0, false);
  const plane_rows half = wide_planes(w);
  for (int i = 0; i < 3; ++i) w.rows->halve(half.plane[i], full.plane[i], w.width / 2, w.h_mirror);
  const rgb_source from = {rgb_source::planes, {half.plane[0], half.plane[1], half.plane[2]}};
  const int64_t at = run_start(w.luma, w.tiles, plan.rgb24.tile_step);
  w.kernels->rgb24(w.out.base + at, from, w.width / 2, false);
}

// Pairs of tiles are found by the alignment of the pair's place. Where that slips, a pair's earlier tile is the last
// tile of the row before (quality 15: the tile held last).
void put_halved_tiles(output_writer& w, const finished_rows& rows) {
  const int32_t step = w.context->plan.rgb24.tile_step;
  const bool words = w.quality.rgb == rgb_form::yuv_words;
  const rgb_source full = finished_planes(w, rows, 0, false);
  uint8_t pair[3][32], half[3][16], block[48];
  for (int t = 0; t < w.tiles; ++t) {
    const int x = t * kTileColumns;
    const int64_t at = w.luma + int64_t{w.h_mirror ? t : t - 1} * step;
    if ((at & 15) != 0) {
      if (words)
        for (int i = 0; i < 3; ++i) __builtin_memcpy(w.held[i], full.plane[i] + x, 16);
      continue;
    }
    for (int i = 0; i < 3; ++i) {
      const uint8_t* const earlier = words || t == 0 ? w.held[i] : full.plane[i] + x - 16;
      __builtin_memcpy(pair[i], earlier, 16);
      __builtin_memcpy(pair[i] + 16, full.plane[i] + x, 16);
      w.rows->halve(half[i], pair[i], 16, w.h_mirror);
    }
    w.kernels->rgb24(block, {rgb_source::planes, {half[0], half[1], half[2]}}, 16, false);
    w.out.store(at, block, 48);
  }
  if (words) return;
  const rgb_source odd_row = finished_planes(w, rows, 1, false);
  for (int i = 0; i < 3; ++i) __builtin_memcpy(w.held[i], odd_row.plane[i] + w.width - 16, 16);
}

}  // namespace

void put_rgb24(output_writer& w, int p, const finished_rows& rows) {
  const auto& plan = w.context->plan.rgb24;
  if (w.decimation < 0)
    put_doubled(w, rows);
  else if (w.decimation == 0)
    put_rgb_rows(w, rows, 3, w.context->plan.rgb24_pitch.row_pitch, plan.tile_step);
  else
    w.ordinary ? put_halved_row(w, rows) : put_halved_tiles(w, rows);
  w.luma += int64_t{w.tiles - 1} * plan.tile_step + plan.row_step;
  if (w.decimation >= 0) return;
  const int n = 3 * w.context->out_width;
  fill_row(w, row_start(w, w.luma + plan.fill_1, n, 96), n, n);
  if (p > 0) fill_row(w, row_start(w, w.luma + plan.fill_2, n, 96), n, n);
  if (p == w.row_pairs - 1)
    repeat_row(w, row_start(w, w.luma + plan.last_target, n, 96),
               row_start(w, w.luma + plan.last_source, n, 96), n);
}

}  // namespace ppl
