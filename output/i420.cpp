// I420: Y plane, U plane, V plane.
//
//   decimation 0   both rows; U, V of the even row, one block of 16 for two tiles
//   halved         even columns of the even row; U, V of every second word of the even row of odd row pairs,
//                  one block for four tiles
//   doubled        each row widened, means and samples in turn, on every second row; U and V bytes twice; then the
//                  rows between filled with means of their neighbours
#include "output/output.h"

namespace ppl {

namespace {

// What a size makes of tiles: 0 the same, 1 half, -1 double.
template <int kSize>
struct size_rule {
  static constexpr int kLumaTiles = kSize > 0 ? 2 : 1, kChromaTiles = kSize > 0 ? 4 : 2;  // of a block
  static constexpr int kBlock = kSize < 0 ? 32 : 16;                                      // bytes
  static constexpr int kRows = kSize > 0 ? 1 : 2, kRowDistance = kSize < 0 ? 2 : 1;

  // A doubled block begins 16 bytes before its place under the mirror.
  static int64_t back(const output_writer& w) { return kSize < 0 && w.h_mirror ? -16 : 0; }

  template <bool kWhole>
  static void put_luma(output_writer& w, const finished_rows& rows, int first_tile, int tiles) {
    const output_offset_plan& plan = w.context->plan;
    const auto [blocks, x] = blocks_of(first_tile, tiles, kLumaTiles);
    if (blocks == 0) return;
    const int n = blocks * kBlock;
    int64_t at = run_start(w.luma + back(w), blocks, plan.i420.luma_tile_step);
    for (int i = 0; i < kRows; ++i, at += kRowDistance * int64_t{plan.i420_pitch.row_pitch}) {
      uint8_t block[kBlock];
      const uint8_t* const row = rows.plane[0][i];
      uint8_t* const to = making_place<kWhole>(w, at, block);
      if constexpr (kSize < 0)
        w.kernels->widen(to, row + x, n / 2, {left_of(w, row, x), w.h_mirror, 0});
      else
        w.rows->copy_or_halve(kSize > 0)(to, row + x, n, w.h_mirror);
      settle<kWhole>(w, at, block, kBlock);
    }
    w.luma += int64_t{blocks} * plan.i420.luma_tile_step;
  }

  template <bool kWhole>
  static void put_chroma(output_writer& w, const finished_rows& rows, int first_tile, int tiles) {
    const output_offset_plan& plan = w.context->plan;
    const output_kernels& k = *w.kernels;
    const auto [blocks, x] = blocks_of(first_tile, tiles, kChromaTiles);
    if (blocks == 0) return;
    const int64_t u = run_start(w.chroma + back(w), blocks, plan.i420.chroma_tile_step);
    const int64_t v = u + w.context->out_quarter_pixels;
    uint8_t u_block[kBlock], v_block[kBlock];
    const auto split = kSize == 0 ? k.split_words : kSize > 0 ? k.split_every_second : k.split_doubled;
    split(making_place<kWhole>(w, u, u_block), making_place<kWhole>(w, v, v_block), rows.plane[1][0] + x,
          16 * blocks, w.h_mirror);
    settle<kWhole>(w, u, u_block, kBlock);
    settle<kWhole>(w, v, v_block, kBlock);
    w.chroma += int64_t{blocks} * plan.i420.chroma_tile_step;
  }

  static void put(output_writer& w, const finished_rows& rows, bool has_chroma) {
    put_all_tiles(w, [&]<bool kWhole>(int first, int tiles) {
      put_luma<kWhole>(w, rows, first, tiles);
      if (has_chroma) put_chroma<kWhole>(w, rows, first, tiles);
    });
  }
};

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
  if (w.decimation == 0)
    size_rule<0>::put(w, rows, has_chroma);
  else if (w.decimation > 0)
    size_rule<1>::put(w, rows, has_chroma);
  else
    size_rule<-1>::put(w, rows, has_chroma);
  w.luma += plan.luma_row_step;
  if (has_chroma) w.chroma += plan.chroma_row_step;
  if (!w.fills_gaps) return;
  fill_gaps(w, p);
  if (p == w.row_pairs - 1) repeat_last_row(w);
}

}  // namespace ppl
