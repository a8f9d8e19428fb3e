// The doubled picture made cell by cell: widened rows, means between them, and one row at the end twice.
//
// Row pair p makes rows 4p and 4p + 2 of luma (or of the format) and row 2p of chroma; all others are rounded-up means
// of the rows beside them. A picture that runs upwards has row r of these one place above the bottom.
#include "output/output.h"
#include "paths/cells.h"

namespace ppl::cells {
namespace {

// The widened rows of a row pair, and those of the row pair before. In place they are rows of the frame. In a clipped
// frame they are made aside, three sets in turn, because a row outside the frame still enters the means beside it.
struct doubled_rows {
  // Luma, or the format's rows; `before` is the second of the row pair before.
  uint8_t *first, *second, *before;
  uint8_t *u, *u_before, *v, *v_before;
};

uint8_t* aside(ppl_context* c, int set) {
  return set == 0 ? packed_row(c, 0) : c->scratch + kLensBytes + (set - 1) * kAsideBytes;
}

doubled_rows rows_of(const cell_frame& f, int p) {
  if (f.place == placing::in_place) {
    const bool chroma = f.job->format == out_format::i420;
    const auto of = [&](const row_grid& g, int row) { return chroma ? at(f, g, row) : nullptr; };
    return {at(f, f.places.luma, 4 * p), at(f, f.places.luma, 4 * p + 2), at(f, f.places.luma, 4 * p - 2),
            of(f.places.u, 2 * p),       of(f.places.u, 2 * p - 2),       of(f.places.v, 2 * p),
            of(f.places.v, 2 * p - 2)};
  }
  uint8_t* const first = aside(f.context, 2 * p % 3);
  uint8_t* const second = aside(f.context, (2 * p + 1) % 3);
  // The set of the second row keeps its chroma: that of the row pair before.
  return {first,           second,           aside(f.context, (2 * p + 2) % 3),
          first + kAsideU, second + kAsideU, first + kAsideV,
          second + kAsideV};
}

// Stores one row as the rounded-up mean of two others (of one and itself: as it is), cut to the frame.
void put_mean(const cell_frame& f, const row_grid& g, int row, const uint8_t* a, const uint8_t* b, int n) {
  if (f.place == placing::in_place) return f.rows->mean(at(f, g, row), a, b, n);
  const frame_run run = f.job->out.inside(g.at(row), n);
  const int64_t skipped = run.first - g.at(row);
  if (run.bytes > 0) f.rows->mean(f.job->out.base + run.first, a + skipped, b + skipped, run.bytes);
}
void put_aside(const cell_frame& f, const row_grid& g, int row, const uint8_t* a, int n) {
  if (f.place == placing::clipped) put_mean(f, g, row, a, a, n);
}

// A picture that runs upwards repeats its first row below it; one that runs downwards repeats its last.
void put_copy(const cell_frame& f, const row_grid& g, int p, int rows, const uint8_t* first,
              const uint8_t* last, int n) {
  if (g.step < 0 && p == 0) put_mean(f, g, -1, first, first, n);
  if (g.step > 0 && p == f.row_pairs - 1) put_mean(f, g, rows * p + rows - 1, last, last, n);
}

// Rows 4p and 4p + 2 are the row pair's own; those between and before them are means. In chroma the own row is 2p.
void put_luma(const cell_frame& f, int p, const doubled_rows& d, int n) {
  put_aside(f, f.places.luma, 4 * p, d.first, n);
  put_aside(f, f.places.luma, 4 * p + 2, d.second, n);
  put_mean(f, f.places.luma, 4 * p + 1, d.first, d.second, n);
}
void put_luma_before(const cell_frame& f, int p, const doubled_rows& d, int n) {
  if (p > 0) put_mean(f, f.places.luma, 4 * p - 1, d.before, d.first, n);
}

// A plane widened, in tiles of so many samples.
void widen(const cell_frame& f, uint8_t* to, const uint8_t* from, int n, uint8_t tile) {
  f.output->widen(to, from, n, {from[0], f.mirrored, tile});
}

void double_i420(const cell_frame& f, int p) {
  const cell_rows a = cells_of(f);
  const doubled_rows d = rows_of(f, p);
  f.kernels->cells_to_yuv(a);
  widen(f, d.first, a.luma[0], f.columns, kTile);
  widen(f, d.second, a.luma[1], f.columns, kTile);
  widen(f, d.u, a.u, f.columns / 2, kTile / 2);
  widen(f, d.v, a.v, f.columns / 2, kTile / 2);
  // Planes can overlap in a clipped frame, so the order matters: own rows, means with the row pair before, copies.
  const int n = f.pixels;
  put_luma(f, p, d, n);
  put_aside(f, f.places.u, 2 * p, d.u, n / 2);
  put_aside(f, f.places.v, 2 * p, d.v, n / 2);
  put_luma_before(f, p, d, n);
  if (p > 0) {
    put_mean(f, f.places.u, 2 * p - 1, d.u_before, d.u, n / 2);
    put_mean(f, f.places.v, 2 * p - 1, d.v_before, d.v, n / 2);
  }
  put_copy(f, f.places.luma, p, 4, d.first, d.second, n);
  put_copy(f, f.places.u, p, 2, d.u, d.u, n / 2);
  put_copy(f, f.places.v, p, 2, d.v, d.v, n / 2);
}

// The other formats: planes are widened, then joined to rows.
void double_joined(const cell_frame& f, int p) {
  ppl_context* const c = f.context;
  const cell_rows a = cells_of(f);
  const doubled_rows d = rows_of(f, p);
  uint8_t* const to[2] = {d.first, d.second};
  uint8_t* const wide[3] = {wide_row(c, 0), wide_row(c, 1), wide_row(c, 2)};
  if (is_rgb(f.job->format)) {
    f.kernels->cells_to_rgb(a);
    widen(f, wide[0], a.r, f.columns, kTile);
    widen(f, wide[2], a.b, f.columns, kTile);
    for (int i = 0; i < 2; ++i) {
      widen(f, wide[1], a.g[i], f.columns, kTile);
      f.output->rgb24(to[i], from_planes(wide, 0), f.pixels, false);
    }
  } else {
    f.kernels->cells_to_words(a);
    f.output->widen_words(wide[1], a.words, f.columns / 2, f.mirrored);
    for (int i = 0; i < 2; ++i) {
      widen(f, wide[0], a.luma[i], f.columns, kTile);
      f.output->pack(to[i], wide[0], wide[1], f.pixels, false, order_of(f.job->format));
    }
  }
  const int n = bytes_per_pixel(f.job->format) * f.pixels;
  put_luma(f, p, d, n);
  put_luma_before(f, p, d, n);
  put_copy(f, f.places.luma, p, 4, d.first, d.second, n);
}

}  // namespace

void double_row_pair(const cell_frame& f, int row_pair) {
  (f.job->format == out_format::i420 ? double_i420 : double_joined)(f, row_pair);
}

}  // namespace ppl::cells
