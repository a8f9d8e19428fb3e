// I420: Y plane, U plane, V plane.
//
//   decimation 0   both rows; U, V of the even row, one block of 16 for two tiles
//   halved         even columns of the even row; U, V of every second word of the even row of odd row pairs,
//                  one block for four tiles
//   doubled        each row widened to means and samples by turns and put on every second row, U and V bytes
//                  twice; then the rows between are filled with means of their neighbours
#include "output/output.h"
#include "output/output_kernels.h"

namespace ppl {

namespace {

struct planes {
  uint8_t *u, *v;
};

planes chroma_at(const output_writer& w, int64_t at) {
  return {w.base + at, w.base + at + w.context->out_quarter_pixels};
}

// What a doubled row takes for the sample left of its first one.
uint8_t outside_sample(const output_writer& w, const uint8_t* row) {
  return w.h_mirror ? 0 : row[0];
}

// ---- ordinary frames: one run for each row

void put_rows(output_writer& w, int p, const finished_rows& rows) {
  const output_plan& plan = w.context->plan;
  const output_kernels& k = *w.kernels;
  const int d = w.decimation;
  const int luma_blocks = d > 0 ? w.tiles / 2 : w.tiles;
  const int chroma_blocks = d > 0 ? w.tiles / 4 : w.tiles / 2;
  // A doubled block begins 16 bytes before its place under the mirror.
  const int64_t back = d < 0 && w.h_mirror ? -16 : 0;
  uint8_t* const luma = w.base + run_start(w.luma + back, luma_blocks, plan.i420.luma_tile_step);
  const planes uv = chroma_at(w, run_start(w.chroma + back, chroma_blocks, plan.i420.chroma_tile_step));
  const int64_t pitch = plan.i420_pitch.row_pitch;
  if (d == 0) {
    k.copy(luma, rows.plane[0][0], w.width, w.h_mirror);
    k.copy(luma + pitch, rows.plane[0][1], w.width, w.h_mirror);
    k.split_words(uv.u, uv.v, rows.plane[1][0], w.width / 2, w.h_mirror);
  } else if (d > 0) {
    k.halve(luma, rows.plane[0][0], w.width / 2, w.h_mirror);
    if ((p & 1) != 0) k.split_every_second(uv.u, uv.v, rows.plane[1][0], w.width / 4, w.h_mirror);
  } else {
    k.widen(luma, rows.plane[0][0], w.width, {outside_sample(w, rows.plane[0][0]), w.h_mirror, 0});
    k.widen(luma + 2 * pitch, rows.plane[0][1], w.width,
            {outside_sample(w, rows.plane[0][1]), w.h_mirror, 0});
    k.split_doubled(uv.u, uv.v, rows.plane[1][0], w.width / 2, w.h_mirror);
  }
  w.luma += int64_t{luma_blocks} * plan.i420.luma_tile_step;
  if (d <= 0 || (p & 1) != 0) w.chroma += int64_t{chroma_blocks} * plan.i420.chroma_tile_step;
}

// ---- all other frames: tile by tile, clipped

void put_tiles(output_writer& w, int p, const finished_rows& rows) {
  const output_plan& plan = w.context->plan;
  const output_kernels& k = *w.kernels;
  const int64_t pitch = plan.i420_pitch.row_pitch;
  const int64_t v_plane = w.context->out_quarter_pixels;
  const bool h = w.h_mirror;
  uint8_t a[32], b[32];
  for (int t = 0; t < w.tiles; ++t) {
    const int x = t * kTileColumns;
    if (w.decimation == 0) {
      for (int i = 0; i < 2; ++i) {
        k.copy(a, rows.plane[0][i] + x, 16, h);
        put_inside(w, w.luma + i * pitch, a, 16);
      }
      w.luma += plan.i420.luma_tile_step;
      if ((t & 1) != 0) {
        k.split_words(a, b, rows.plane[1][0] + x - 16, 16, h);
        put_inside(w, w.chroma, a, 16);
        put_inside(w, w.chroma + v_plane, b, 16);
        w.chroma += plan.i420.chroma_tile_step;
      }
    } else if (w.decimation > 0) {
      if ((t & 1) != 0) {
        k.halve(a, rows.plane[0][0] + x - 16, 16, h);
        put_inside(w, w.luma, a, 16);
        w.luma += plan.i420.luma_tile_step;
      }
      if ((t & 3) == 3 && (p & 1) != 0) {
        k.split_every_second(a, b, rows.plane[1][0] + x - 48, 16, h);
        put_inside(w, w.chroma, a, 16);
        put_inside(w, w.chroma + v_plane, b, 16);
        w.chroma += plan.i420.chroma_tile_step;
      }
    } else {
      const int64_t back = h ? -16 : 0;
      for (int i = 0; i < 2; ++i) {
        const uint8_t* const row = rows.plane[0][i] + x;
        k.widen(a, row, 16, {t == 0 ? outside_sample(w, row) : row[-1], h, 0});
        put_inside(w, w.luma + back + 2 * i * pitch, a, 32);
      }
      w.luma += plan.i420.luma_tile_step;
      if ((t & 1) != 0) {
        k.split_doubled(a, b, rows.plane[1][0] + x - 16, 16, h);
        put_inside(w, w.chroma + back, a, 32);
        put_inside(w, w.chroma + back + v_plane, b, 32);
        w.chroma += plan.i420.chroma_tile_step;
      }
    }
  }
}

// ---- the rows between, at double size

// `at` is a place in the row as the tiles' pointers give it: the row's first byte, under the mirror its last block.
int64_t row_start(const output_writer& w, int64_t at, int row_bytes) {
  return w.h_mirror ? at + 16 - row_bytes : at;
}

void fill_gaps(output_writer& w, int p) {
  const auto& plan = w.context->plan.i420;
  const int width = w.context->out_width;
  const int64_t v_plane = w.context->out_quarter_pixels;
  const int64_t mirror = w.h_mirror ? 16 : 0;  // the luma fill figures carry a "less 16" of their own
  fill_row(w, row_start(w, w.luma + plan.luma_fill_1 + mirror, width), width, width);
  if (p == 0) return;
  fill_row(w, row_start(w, w.luma + plan.luma_fill_2 + mirror, width), width, width);
  const int64_t u = row_start(w, w.chroma + plan.chroma_fill, width / 2);
  fill_row(w, u, width / 2, width / 2);
  fill_row(w, u + v_plane, width / 2, width / 2);
}

void repeat_last_row(output_writer& w) {
  const auto& plan = w.context->plan.i420;
  const int width = w.context->out_width;
  const int64_t v_plane = w.context->out_quarter_pixels;
  repeat_row(w, row_start(w, w.luma + plan.luma_last_target, width),
             row_start(w, w.luma + plan.luma_last_source, width), width);
  const int64_t from = row_start(w, w.chroma + plan.chroma_last_source, width / 2);
  const int64_t to = row_start(w, w.chroma + plan.chroma_last_target, width / 2);
  repeat_row(w, to, from, width / 2);
  repeat_row(w, to + v_plane, from + v_plane, width / 2);
}

void put(output_writer& w, int p, const finished_rows& rows) {
  const auto& plan = w.context->plan.i420;
  w.ordinary ? put_rows(w, p, rows) : put_tiles(w, p, rows);
  w.luma += plan.luma_row_step;
  if (w.decimation <= 0 || (p & 1) != 0) w.chroma += plan.chroma_row_step;
  if (!w.fills_gaps) return;
  fill_gaps(w, p);
  if (p == w.row_pairs - 1) repeat_last_row(w);
}

}  // namespace

void start_i420(output_writer& w, const frame_job& job) {
  const start_offsets start = output_start(w.context, out_format::i420);
  w.put = put;
  w.luma = start.stage;
  w.chroma = job.chroma_offset + start.stage_chroma;
}

}  // namespace ppl
