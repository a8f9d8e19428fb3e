// YUYV and UYVY: two pixels in four bytes, rows top-down.
//
//   decimation 0   both rows, each with its own chroma
//   halved         even columns of the even row with the words of every second pair, one block for two tiles
//   doubled        luma widened, each word twice, on every second row; then the rows between (see packed_gap), the
//                  last row repeated. Where rows_between says so, YUYV leaves them out in the main stage: they keep
//                  what the caller's buffer held.
#include "output/output.h"

namespace ppl {

namespace {

template <bool kWhole>
void put_blocks(output_writer& w, const finished_rows& rows, int first_tile, int tiles) {
  const output_offset_plan& plan = w.context->plan;
  const output_kernels& k = *w.kernels;
  const int d = w.decimation;
  const byte_order order = order_of(w.format);
  const auto [blocks, x] = blocks_of(first_tile, tiles, d > 0 ? 2 : 1);
  if (blocks == 0) return;
  const int n = blocks * kTileColumns;
  // A doubled block begins 32 bytes before its place under the mirror.
  const int64_t back = d < 0 && w.h_mirror ? -32 : 0;
  const int64_t at = run_start(w.luma + back, blocks, plan.packed.tile_step);
  const int64_t pitch = (d < 0 ? 2 : 1) * int64_t{plan.packed_pitch.row_pitch};
  uint8_t block[64];
  for (int i = 0; i < (d > 0 ? 1 : 2); ++i) {
    const uint8_t *const luma = rows.plane[0][i], *const words = rows.plane[1][i] + x;
    uint8_t* const to = making_place<kWhole>(w, at + i * pitch, block);
    if (d < 0)
      k.pack_doubled(to, luma + x, words, n, left_of(w, luma, x), w.h_mirror, order);
    else
      k.pack_or_halve(d > 0)(to, luma + x, words, n, w.h_mirror, order);
    settle<kWhole>(w, at + i * pitch, block, d < 0 ? 64 : 32);
  }
  w.luma += int64_t{blocks} * plan.packed.tile_step;
}

void fill_gap(const output_writer& w, int64_t at, int n) {
  if ((n & 63) == 0 && w.out.holds(at - n, n) && w.out.holds(at + n, n)) {
    w.kernels->packed_gap(w.out.base + at, w.out.base + at - n, w.out.base + at + n, n);
    return;
  }
  uint8_t a[64], b[64], group[64];
  for (int x = 0; x < n; x += 64) {
    for (int i = 0; i < 64; ++i) {
      a[i] = static_cast<uint8_t>(byte_at(w, at - n + x + i));
      b[i] = static_cast<uint8_t>(byte_at(w, at + n + x + i));
    }
    w.kernels->packed_gap(group, a, b, 64);
    w.out.store(at + x, group, 64);
  }
}

bool in_main_stage(const output_writer& w, int p) {
  return p >= 1 && p <= w.row_pairs - 1 - w.quality.bottom_stages;
}

}  // namespace

void put_packed(output_writer& w, int p, const finished_rows& rows) {
  const auto& plan = w.context->plan.packed;
  put_all_tiles(w, [&]<bool kWhole>(int first, int tiles) { put_blocks<kWhole>(w, rows, first, tiles); });
  w.luma += plan.row_step;
  if (!w.fills_gaps) return;
  const int n = 2 * w.context->out_width;
  const int64_t mirror = w.h_mirror ? 32 : 0;  // the fill figures carry a "less 32" of their own
  const bool left_out = w.format == out_format::yuyv && in_main_stage(w, p) &&
                        w.quality.between == rows_between::not_in_yuyv_main_stage;
  if (!left_out) {
    fill_gap(w, row_start(w, w.luma + plan.fill_1 + mirror, n, 32), n);
    if (p > 0) fill_gap(w, row_start(w, w.luma + plan.fill_2 + mirror, n, 32), n);
  }
  if (p == w.row_pairs - 1)
    repeat_row(w, row_start(w, w.luma + plan.last_target, n, 32),
               row_start(w, w.luma + plan.last_source, n, 32), n);
}

}  // namespace ppl
