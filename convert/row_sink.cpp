#include "convert/row_sink.h"

namespace ppl {

namespace {

constexpr int kTile = 16;
constexpr int kPlaneStep = 32;  // pixels of a row pair that reach luma, U and V together
// The widest rows: 127 tiles, widened.
constexpr int kWidestTiles = (kRingSlotBytes - 48) / 4 / kTile;
constexpr int kWidestPixels = 2 * kTile * kWidestTiles;
static_assert(2 * kWidestPixels <= kRingSlotBytes);
static_assert(3 * kWidestPixels <=
              kScratchBytes);  // as planes: two luma rows, and U and V of half a row each

// A row in the format of the picture, for all formats but I420.
void pack_row(const row_sink& sink, uint8_t* out, const uint8_t* row) {
  if (sink.to == out_format::rgb24) {
    sink.kernels->rgb24[static_cast<int>(sink.from)](out, row, sink.padded);
  } else if (order_of(sink.to) == sink.from) {
    sink.rows->copy(out, row, 2 * sink.padded, false);
  } else {
    sink.kernels->swap(out, row, sink.padded);
  }
}

// Out of line, as the next one: put_row() then needs no stack of its own.
[[gnu::noinline]] void put_pair(row_sink& sink, const uint8_t* first, const uint8_t* second) {
  const plane_rows made = make_pair(sink);
  sink.kernels->planes[static_cast<int>(sink.from)][sink.mirrored](made, first, second, sink.padded);
  put_made_pair(sink, made);
}

[[gnu::noinline]] void put_cut_row(const row_sink& sink, int64_t at, const uint8_t* row) {
  uint8_t* const staging = sink.context->scratch;
  pack_row(sink, staging, row);
  sink.out.store(at, staging, static_cast<int64_t>(sink.pixels) * bytes_per_pixel(sink.to));
}

// How many rows of `step` bytes, the first at `at`, begin before the end of the destination. Rows of no bytes do not
// count: nothing of them is drawn.
int64_t rows_begun(const row_sink& sink, int64_t at, int64_t step) {
  return step <= 0 || at >= sink.out.bytes ? 0 : (sink.out.bytes - at + step - 1) / step;
}

void fill_inside(const row_sink& sink, int64_t at, int64_t count, uint8_t even, uint8_t odd) {
  const frame_run run = sink.out.inside(at, count);
  const bool swapped = ((run.first - at) & 1) != 0;
  if (run.bytes > 0)
    sink.rows->fill(sink.out.base + run.first, run.bytes, swapped ? odd : even, swapped ? even : odd);
}

}  // namespace

row_sink open_sink(ppl_context* c, const canvas& on, int64_t first_row, int64_t image_rows) {
  row_sink s = {};
  s.kernels = c->kernels->convert;
  s.rows = c->kernels->rows;
  s.context = c;
  s.from = on.from;
  s.to = on.to;
  s.mirrored = on.h_mirror;
  s.pixels = on.pixels;
  s.padded = (on.pixels + kTile - 1) & ~(kTile - 1);
  s.out = on.out;
  s.places = lay_out_rows(c, on.to, on.pixels, on.to == out_format::rgb24 || on.v_mirror, on.h_mirror, 0);
  s.row = first_row;
  s.direct =
      s.pixels == s.padded && rows_fit(c, on.to, s.out.bytes, s.places, s.pixels, first_row, image_rows);
  s.in_place = s.direct && is_packed(on.to) && order_of(on.to) == on.from;
  return s;
}

uint8_t* make_row(const row_sink& sink, int ahead) {
  if (sink.in_place) return sink.out.base + sink.places.luma.at(sink.row + ahead);
  return ring_row(sink.context, static_cast<int>(sink.row + ahead) & (kSinkRows - 1));
}

void put_made_row(row_sink& sink) {
  if (sink.in_place)
    sink.row++;
  else
    put_row(sink, make_row(sink));
}

void put_row(row_sink& sink, const uint8_t* row) {
  if (sink.to == out_format::i420) {
    if ((sink.row & 1) != 0) return put_pair(sink, sink.first_of_pair, row);
    sink.first_of_pair = row;
    sink.row++;
    return;
  }
  const int64_t at = sink.places.luma.at(sink.row++);
  sink.direct ? pack_row(sink, sink.out.base + at, row) : put_cut_row(sink, at, row);
}

void put_flat_rows(const row_sink& sink, int64_t first, int64_t count, uint8_t luma, uint8_t chroma) {
  const picture_rows& at = sink.places;
  if (count <= 0) return;
  if (sink.to == out_format::i420) {
    // Pair by pair, since the order counts where planes overlap.
    const auto least = [](int64_t a, int64_t b) { return a < b ? a : b; };
    const int64_t y = at.luma.at(first), u = at.u.at(first / 2), v = at.v.at(first / 2);
    const int64_t begun = rows_begun(sink, y, 2 * at.luma.step) + rows_begun(sink, u, at.u.step);
    for (int64_t i = 0; i < least(count / 2, begun); i++) {
      fill_inside(sink, y + 2 * i * at.luma.step, 2 * at.luma.step, luma, luma);
      fill_inside(sink, u + i * at.u.step, at.u.step, chroma, chroma);
      fill_inside(sink, v + i * at.v.step, at.v.step, chroma, chroma);
    }
  } else {
    const int64_t a = at.luma.at(first), b = at.luma.at(first + count);
    const bool rgb = sink.to == out_format::rgb24, yuyv = sink.to == out_format::yuyv;
    if (rgb)  // towards lower addresses
      fill_inside(sink, b - at.luma.step, a - b, 0, 0);
    else
      fill_inside(sink, a, b - a, yuyv ? luma : chroma, yuyv ? chroma : luma);
  }
}

// In steps of 32 pixels, from the side where the rows begin.
void store_pair(const row_sink& sink, const plane_rows& made) {
  const picture_rows& at = sink.places;
  const int64_t p = sink.row >> 1;
  for (int done = 0; done < sink.pixels; done += kPlaneStep) {
    const int n = sink.pixels - done < kPlaneStep ? sink.pixels - done : kPlaneStep;
    const int x = sink.mirrored ? sink.pixels - done - n : done;
    for (int i = 0; i < 2; i++) sink.out.store(at.luma.at(2 * p + i) + x, made.luma[i] + x, n);
    sink.out.store(at.u.at(p) + x / 2, made.u + x / 2, n / 2);
    if (made.v != nullptr) sink.out.store(at.v.at(p) + x / 2, made.v + x / 2, n / 2);
  }
}

}  // namespace ppl
