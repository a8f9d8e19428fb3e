// I420: Y plane, U plane, V plane.
//
//   decimation 0   both rows; U, V of the even row, one block of 16 for two tiles
//   halved         even columns of the even row; U, V of every second word of the even row of odd row pairs,
//                  one block for four tiles
//   doubled        each row widened to means and samples by turns and put on every second row, U and V bytes
//                  twice; then the rows between are filled with means of their neighbours
#include "output/output.h"

namespace ppl {

namespace {

// A doubled block begins 16 bytes before its place under the mirror.
int64_t block_back(const output_writer& w) {
  return w.decimation < 0 && w.h_mirror ? -16 : 0;
}

void put_luma(output_writer& w, const finished_rows& rows, int first_tile, int tiles) {
  const output_plan& plan = w.context->plan;
  const int d = w.decimation, bytes_of_block = d < 0 ? 32 : 16;
  const auto [blocks, x] = blocks_of(first_tile, tiles, d > 0 ? 2 : 1);
  if (blocks == 0) return;
  const int n = blocks * bytes_of_block;
  const int64_t at = run_start(w.luma + block_back(w), blocks, plan.i420.luma_tile_step);
  const int64_t pitch = (d < 0 ? 2 : 1) * int64_t{plan.i420_pitch.row_pitch};
  uint8_t block[32];
  for (int i = 0; i < (d > 0 ? 1 : 2); ++i) {
    const uint8_t* const row = rows.plane[0][i];
    uint8_t* const to = making_place(w, at + i * pitch, block);
    if (d < 0)
      w.kernels->widen(to, row + x, n / 2, {left_of(w, row, x), w.h_mirror, 0});
    else
      (d == 0 ? w.rows->copy : w.rows->halve)(to, row + x, n, w.h_mirror);
    settle(w, at + i * pitch, block, n);
  }
  w.luma += int64_t{blocks} * plan.i420.luma_tile_step;
}

void put_chroma(output_writer& w, const finished_rows& rows, int first_tile, int tiles) {
  const output_plan& plan = w.context->plan;
  const output_kernels& k = *w.kernels;
  const int d = w.decimation;
  const auto [blocks, x] = blocks_of(first_tile, tiles, d > 0 ? 4 : 2);
  if (blocks == 0) return;
  const int64_t u = run_start(w.chroma + block_back(w), blocks, plan.i420.chroma_tile_step);
  const int64_t v = u + w.context->out_quarter_pixels;
  uint8_t u_block[32], v_block[32];
  const auto split = d == 0 ? k.split_words : d > 0 ? k.split_every_second : k.split_doubled;
  split(making_place(w, u, u_block), making_place(w, v, v_block), rows.plane[1][0] + x, 16 * blocks,
        w.h_mirror);
  settle(w, u, u_block, d < 0 ? 32 : 16);
  settle(w, v, v_block, d < 0 ? 32 : 16);
  w.chroma += int64_t{blocks} * plan.i420.chroma_tile_step;
}

// ---- the rows between, at double size

void fill_gaps(const output_writer& w, int p) {
  const auto& plan = w.context->plan.i420;
  const int width = w.context->out_width, half = width / 2;
  const int64_t mirror = w.h_mirror ? 16 : 0;  // the luma fill figures carry a "less 16" of their own
  fill_row(w, row_start(w, w.luma + plan.luma_fill_1 + mirror, width, 16), width, width);
  if (p == 0) return;
  fill_row(w, row_start(w, w.luma + plan.luma_fill_2 + mirror, width, 16), width, width);
  const int64_t u = row_start(w, w.chroma + plan.chroma_fill, half, 16);
  fill_row(w, u, half, half);
  fill_row(w, u + w.context->out_quarter_pixels, half, half);
}

void repeat_last_row(const output_writer& w) {
  const auto& plan = w.context->plan.i420;
  const int width = w.context->out_width, half = width / 2;
  const int64_t v_plane = w.context->out_quarter_pixels;
  repeat_row(w, row_start(w, w.luma + plan.luma_last_target, width, 16),
             row_start(w, w.luma + plan.luma_last_source, width, 16), width);
  const int64_t from = row_start(w, w.chroma + plan.chroma_last_source, half, 16);
  const int64_t to = row_start(w, w.chroma + plan.chroma_last_target, half, 16);
  repeat_row(w, to, from, half);
  repeat_row(w, to + v_plane, from + v_plane, half);
}

}  // namespace

void put_i420(output_writer& w, int p, const finished_rows& rows) {
  const auto& plan = w.context->plan.i420;
  const bool has_chroma = w.decimation <= 0 || (p & 1) != 0;
  const int tiles = tiles_at_once(w);
  for (int t = 0; t < w.tiles; t += tiles) {
    put_luma(w, rows, t, tiles);
    if (has_chroma) put_chroma(w, rows, t, tiles);
  }
  w.luma += plan.luma_row_step;
  if (has_chroma) w.chroma += plan.chroma_row_step;
  if (!w.fills_gaps) return;
  fill_gaps(w, p);
  if (p == w.row_pairs - 1) repeat_last_row(w);
}

}  // namespace ppl
