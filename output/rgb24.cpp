// RGB24: bytes B, G, R; rows bottom-up.
//
// Finished rows come in the quality's rgb_form; what is not R, G, B is converted on the way.
//   decimation 0   both rows
//   halved         even columns of the even row, one block of 48 bytes for two tiles
//   doubled        each plane widened, on every second row; then the rows between, in all qualities. Rows that come as
//                  Y and chroma words are not converted here: luma goes out as red, the bytes of the words as green,
//                  those of the words before noise filter and smoothing as blue, all without the 128.
#include "output/output.h"

namespace ppl {

namespace {

void put_doubled(const output_writer& w, const finished_rows& rows) {
  const output_offset_plan& plan = w.context->plan;
  const int64_t pitch = plan.rgb24_pitch.row_pitch;
  uint8_t* const wide[3] = {scratch_plane(w, 3), scratch_plane(w, 5), scratch_plane(w, 7)};
  for (int i = 0; i < 2; ++i) {
    rgb_source full = {};
    if (w.quality.rgb == rgb_form::yuv_words) {
      uint8_t* const to[3] = {scratch_plane(w, 0), scratch_plane(w, 1), scratch_plane(w, 2)};
      w.rows->copy(to[0], rows.plane[0][i], w.width, false);
      w.kernels->unbias(to[1], rows.plane[1][i], w.width);
      w.kernels->unbias(to[2], rows.unfiltered_chroma[i], w.width);
      full = from_planes(to, 0);
    } else {
      full = planes_of(w, rows, i, 0);
    }
    for (int c = 0; c < 3; ++c)
      w.kernels->widen(wide[c], full.plane[c], w.width, {full.plane[c][0], w.h_mirror, kTileColumns});
    const int64_t at = run_start(w.luma + 2 * i * pitch, w.tiles, plan.rgb24.tile_step);
    put_all_tiles(w, [&]<bool kWhole>(int first, int tiles) {
      for (int x = 32 * first; x < 32 * (first + tiles); x += kWhole ? 32 * tiles : 16) {
        uint8_t block[48];
        w.kernels->rgb24(making_place<kWhole>(w, at + 3 * x, block), from_planes(wide, x),
                         kWhole ? 32 * tiles : 16, false);
        settle<kWhole>(w, at + 3 * x, block, 48);
      }
    });
  }
}

// Pairs of tiles are found by the alignment of the pair's place. Where that slips, a pair's earlier tile is the last
// tile of the row before; with chroma words, the tile held last.
void put_halved_tiles(output_writer& w, const finished_rows& rows) {
  const int32_t step = w.context->plan.rgb24.tile_step;
  const bool words = w.quality.rgb == rgb_form::yuv_words;
  const rgb_source full = planes_of(w, rows, 0, 0);
  uint8_t pair[3][32], block[48];
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
    }
    put_halved_rgb(w, block, {rgb_source::planes, {pair[0], pair[1], pair[2]}}, 16);
    w.out.store(at, block, 48);
  }
  if (words) return;
  const rgb_source odd_row = planes_of(w, rows, 1, 0);
  for (int i = 0; i < 3; ++i) __builtin_memcpy(w.held[i], odd_row.plane[i] + w.width - 16, 16);
}

void put_halved(output_writer& w, const finished_rows& rows) {
  if (!w.ordinary) return put_halved_tiles(w, rows);
  const int64_t at = run_start(w.luma, w.tiles, w.context->plan.rgb24.tile_step);
  put_halved_rgb(w, w.out.base + at, planes_of(w, rows, 0, 0), w.width / 2);
}

}  // namespace

void put_rgb24(output_writer& w, int p, const finished_rows& rows) {
  const auto& plan = w.context->plan.rgb24;
  if (w.decimation < 0)
    put_doubled(w, rows);
  else if (w.decimation == 0)
    put_rgb_rows(w, rows, w.context->plan.rgb24_pitch.row_pitch, plan.tile_step);
  else
    put_halved(w, rows);
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
