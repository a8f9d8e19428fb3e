// YUYV and UYVY: two pixels in four bytes, rows top-down.
//
//   decimation 0   both rows, each with its own chroma
//   halved         even columns of the even row with the words of every second pair, one block for two tiles
//   doubled        luma widened, each word twice, on every second row; then the rows between (see packed_gap), the
//                  last row repeated. YUYV leaves the rows between out in the main stage of quality 15 and of
//                  quality 2 with the medium filter: they keep what the caller's buffer held.
#include "output/output.h"
#include "output/output_kernels.h"

namespace ppl {

namespace {

template <byte_order kOrder>
struct packed_writer {
  static int outside_sample(const output_writer& w, const uint8_t* row) { return w.h_mirror ? 0 : row[0]; }

  static void put_rows(output_writer& w, const finished_rows& rows) {
    const output_plan& plan = w.context->plan;
    const output_kernels& k = *w.kernels;
    const int d = w.decimation;
    const int blocks = d > 0 ? w.tiles / 2 : w.tiles;
    const int64_t back = d < 0 && w.h_mirror ? -32 : 0;
    uint8_t* const to = w.base + run_start(w.luma + back, blocks, plan.packed.tile_step);
    if (d > 0) {
      k.pack_halved(to, rows.plane[0][0], rows.plane[1][0], w.width / 2, w.h_mirror, kOrder);
    } else {
      const int64_t pitch = plan.packed_pitch.row_pitch;
      for (int i = 0; i < 2; ++i) {
        if (d == 0)
          k.pack(to + i * pitch, rows.plane[0][i], rows.plane[1][i], w.width, w.h_mirror, kOrder);
        else
          k.pack_doubled(to + 2 * i * pitch, rows.plane[0][i], rows.plane[1][i], w.width,
                         outside_sample(w, rows.plane[0][i]), w.h_mirror, kOrder);
      }
    }
    w.luma += int64_t{blocks} * plan.packed.tile_step;
  }

  static void put_tiles(output_writer& w, const finished_rows& rows) {
    const output_plan& plan = w.context->plan;
    const output_kernels& k = *w.kernels;
    const int d = w.decimation;
    const int64_t pitch = plan.packed_pitch.row_pitch;
    uint8_t block[64];
    for (int t = 0; t < w.tiles; ++t) {
      const int x = t * kTileColumns;
      if (d > 0) {
        if ((t & 1) == 0) continue;
        k.pack_halved(block, rows.plane[0][0] + x - 16, rows.plane[1][0] + x - 16, 16, w.h_mirror, kOrder);
        put_inside(w, w.luma, block, 32);
      } else {
        for (int i = 0; i < 2; ++i) {
          const uint8_t* const luma = rows.plane[0][i] + x;
          if (d == 0) {
            k.pack(block, luma, rows.plane[1][i] + x, 16, w.h_mirror, kOrder);
            put_inside(w, w.luma + i * pitch, block, 32);
          } else {
            k.pack_doubled(block, luma, rows.plane[1][i] + x, 16, t == 0 ? outside_sample(w, luma) : luma[-1],
                           w.h_mirror, kOrder);
            put_inside(w, w.luma - (w.h_mirror ? 32 : 0) + 2 * i * pitch, block, 64);
          }
        }
      }
      w.luma += plan.packed.tile_step;
    }
  }

  // The first byte of the row in which the tiles' pointers give `at`.
  static int64_t row_start(const output_writer& w, int64_t at) {
    return w.h_mirror ? at + 32 - 2 * int64_t{w.context->out_width} : at;
  }

  static void fill_gap(const output_writer& w, int64_t at) {
    const int n = 2 * w.context->out_width;
    if ((n & 63) == 0 && inside(w, at - n, n) && inside(w, at + n, n)) {
      w.kernels->packed_gap(w.base + at, w.base + at - n, w.base + at + n, n);
      return;
    }
    uint8_t a[64], b[64], group[64];
    for (int x = 0; x < n; x += 64) {
      for (int i = 0; i < 64; ++i) {
        a[i] = static_cast<uint8_t>(byte_at(w, at - n + x + i));
        b[i] = static_cast<uint8_t>(byte_at(w, at + n + x + i));
      }
      w.kernels->packed_gap(group, a, b, 64);
      put_inside(w, at + x, group, 64);
    }
  }

  static bool in_main_stage(const output_writer& w, int p) {
    return p >= 1 && p <= w.row_pairs - 1 - w.quality.bottom_stages;
  }

  static void put(output_writer& w, int p, const finished_rows& rows) {
    const auto& plan = w.context->plan.packed;
    w.ordinary ? put_rows(w, rows) : put_tiles(w, rows);
    w.luma += plan.row_step;
    if (!w.fills_gaps) return;
    const int64_t mirror = w.h_mirror ? 32 : 0;  // the fill figures carry a "less 32" of their own
    const bool left_out = kOrder == byte_order::yuyv && in_main_stage(w, p) &&
                          w.quality.between == rows_between::not_in_yuyv_main_stage;
    if (!left_out) {
      fill_gap(w, row_start(w, w.luma + plan.fill_1 + mirror));
      if (p > 0) fill_gap(w, row_start(w, w.luma + plan.fill_2 + mirror));
    }
    if (p == w.row_pairs - 1)
      repeat_row(w, row_start(w, w.luma + plan.last_target), row_start(w, w.luma + plan.last_source),
                 2 * w.context->out_width);
  }
};

}  // namespace

void start_packed(output_writer& w, const frame_job& job) {
  w.put = job.format == out_format::yuyv ? packed_writer<byte_order::yuyv>::put
                                         : packed_writer<byte_order::uyvy>::put;
  w.luma = output_start(w.context, job.format).stage;
}

}  // namespace ppl
