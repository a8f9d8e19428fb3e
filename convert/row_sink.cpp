#include "convert/row_sink.h"

namespace ppl {

namespace {

constexpr int kTile = 16;
constexpr int kPlaneStep = 32;  // pixels of a row pair that reach luma, U and V together
constexpr int kRowBytes = kRingSlotBytes;
// The widest rows: 127 tiles, widened.
constexpr int kWidestTiles = (kRingSlotBytes - 48) / 4 / kTile;
constexpr int kWidestPixels = 2 * kTile * kWidestTiles;
static_assert(2 * kWidestPixels <= kRowBytes);
static_assert(3 * kWidestPixels <=
              kScratchBytes);  // as planes: two luma rows, and U and V of half a row each

int64_t min64(int64_t a, int64_t b) {
  return a < b ? a : b;
}
int64_t max64(int64_t a, int64_t b) {
  return a > b ? a : b;
}

layout layout_of(out_format format) {
  return format == out_format::uyvy ? layout::uyvy : layout::yuyv;
}
bool is_packed(out_format format) {
  return format == out_format::yuyv || format == out_format::uyvy;
}

// A row in the format of the picture, for all formats but I420.
void pack_row(const row_sink& sink, uint8_t* out, const uint8_t* row) {
  if (sink.to == out_format::rgb24) {
    sink.kernels->rgb24[static_cast<int>(sink.from)](out, row, sink.padded);
  } else if (layout_of(sink.to) == sink.from) {
    sink.kernels->copy(out, row, 2 * sink.padded);
  } else {
    sink.kernels->swap(out, row, sink.padded);
  }
}

void put_pair(row_sink& sink, const uint8_t* row_0, const uint8_t* row_1) {
  const auto planes = sink.kernels->planes[static_cast<int>(sink.from)][sink.mirrored];
  if (sink.direct) {
    uint8_t* const luma = sink.base + sink.at;
    planes({{luma, luma + sink.step}, sink.base + sink.u, sink.base + sink.v}, row_0, row_1, sink.padded);
  } else {
    uint8_t* const luma = sink.rows.staging;
    uint8_t* const u = luma + 2 * sink.padded;
    const plane_rows prepared = {{luma, luma + sink.padded}, u, u + sink.padded / 2};
    planes(prepared, row_0, row_1, sink.padded);
    store_planes_inside(sink, prepared);
  }
  sink.at += 2 * sink.step;
  sink.u += sink.chroma_step;
  sink.v += sink.chroma_step;
}

// How many rows of `step` bytes, the first at `at`, begin before the end of the destination. Rows of no bytes don't
// count: however many there are, nothing is drawn.
int64_t rows_begun(const row_sink& sink, int64_t at, int64_t step) {
  return step <= 0 || at >= sink.bytes ? 0 : (sink.bytes - at + step - 1) / step;
}

void fill_inside(const row_sink& sink, int64_t at, int64_t count, uint8_t even, uint8_t odd) {
  const int64_t first = at < 0 ? 0 : at, end = min64(at + count, sink.bytes);
  if (first >= end) return;
  const bool swapped = ((first - at) & 1) != 0;
  sink.kernels->fill(sink.base + first, end - first, swapped ? odd : even, swapped ? even : odd);
}

}  // namespace

row_storage lay_out_rows(ppl_context* c) {
  uint8_t* const ring = c->ring_pool;
  row_storage r = {};
  r.blended = ring;
  r.widened_before = ring + kRowBytes;
  for (int i = 0; i < 4; i++) r.made[i] = ring + (2 + i) * kRowBytes;
  r.staging = c->scratch;
  return r;
}

row_sink open_sink(ppl_context* c, layout from, out_format to, uint8_t* base, int64_t bytes, int pixels,
                   bool h_mirror, bool v_mirror) {
  const int64_t width = c->out_width, half = c->out_width / 2;
  row_sink s = {};
  s.kernels = c->kernels->convert;
  s.rows = lay_out_rows(c);
  s.from = from;
  s.to = to;
  s.mirrored = h_mirror;
  s.pixels = pixels;
  s.padded = (pixels + kTile - 1) & ~(kTile - 1);
  s.base = base;
  s.bytes = bytes;
  s.step = bytes_per_pixel(to) * width;
  if (to == out_format::rgb24) {
    s.at = 3 * (c->out_pixels - width);
    s.step = -s.step;
  } else if (to == out_format::i420) {
    s.u = c->out_pixels;
    s.chroma_step = half;
    if (v_mirror) {
      s.at = c->out_pixels - width;
      s.u += c->out_quarter_pixels - half;
      s.step = -s.step;
      s.chroma_step = -half;
    }
    if (h_mirror) {
      s.at += width - pixels;
      s.u += half - pixels / 2;
    }
    s.v = s.u + c->out_quarter_pixels;
  }
  return s;
}

void find_out_whether_direct(row_sink& sink, const ppl_context* c, const picture_rows& rows,
                             int64_t image_shift) {
  if (sink.pixels != sink.padded) {
    sink.direct = false;
  } else if (sink.to == out_format::i420) {
    const int64_t all = (rows.top_black / 2 + rows.image / 2 + rows.bottom_black / 2) * 2;
    const int64_t luma = c->out_pixels, chroma = c->out_quarter_pixels, width = c->out_width;
    sink.direct = all * width <= luma && all / 2 * (width / 2) <= chroma && luma + 2 * chroma <= sink.bytes;
  } else {
    const int64_t first = sink.at + rows.top_black * sink.step + image_shift;
    const int64_t last = first + (rows.image - 1) * sink.step;
    const int64_t room = sink.bytes - static_cast<int64_t>(sink.pixels) * bytes_per_pixel(sink.to);
    sink.direct = first >= 0 && first <= room && last >= 0 && last <= room;
  }
}

bool makes_rows_in_place(const row_sink& sink) {
  return sink.direct && is_packed(sink.to) && layout_of(sink.to) == sink.from;
}

uint8_t* make_row(const row_sink& sink, int ahead) {
  if (makes_rows_in_place(sink)) return sink.base + sink.at + ahead * sink.step;
  return sink.rows.made[(sink.put + ahead) & 3];
}

void put_row(row_sink& sink, const uint8_t* row) {
  sink.put++;
  if (sink.to == out_format::i420) {
    if (sink.first_of_pair == nullptr) {
      sink.first_of_pair = row;
    } else {
      put_pair(sink, sink.first_of_pair, row);
      sink.first_of_pair = nullptr;
    }
    return;
  }
  if (!sink.direct) {
    pack_row(sink, sink.rows.staging, row);
    store_inside(sink, sink.at, sink.rows.staging,
                 static_cast<int64_t>(sink.pixels) * bytes_per_pixel(sink.to));
  } else if (row != sink.base + sink.at) {  // not made in place
    pack_row(sink, sink.base + sink.at, row);
  }
  sink.at += sink.step;
}

void put_flat_rows(row_sink& sink, int64_t count, uint8_t luma, uint8_t chroma) {
  if (count <= 0) return;
  if (sink.to == out_format::i420) {
    const int64_t steps = count / 2;
    const int64_t drawn = min64(steps, max64(rows_begun(sink, sink.at, 2 * sink.step),
                                             max64(rows_begun(sink, sink.u, sink.chroma_step),
                                                   rows_begun(sink, sink.v, sink.chroma_step))));
    for (int64_t i = 0; i < drawn; i++) {
      fill_inside(sink, sink.at + 2 * i * sink.step, 2 * sink.step, luma, luma);
      fill_inside(sink, sink.u + i * sink.chroma_step, sink.chroma_step, chroma, chroma);
      fill_inside(sink, sink.v + i * sink.chroma_step, sink.chroma_step, chroma, chroma);
    }
    sink.at += 2 * steps * sink.step;
    sink.u += steps * sink.chroma_step;
    sink.v += steps * sink.chroma_step;
  } else if (sink.to == out_format::rgb24) {  // towards lower addresses
    sink.at += count * sink.step;
    fill_inside(sink, sink.at - sink.step, -count * sink.step, 0, 0);
  } else {
    const bool yuyv = sink.to == out_format::yuyv;
    fill_inside(sink, sink.at, count * sink.step, yuyv ? luma : chroma, yuyv ? chroma : luma);
    sink.at += count * sink.step;
  }
}

void store_inside(const row_sink& sink, int64_t at, const uint8_t* bytes, int64_t count) {
  const int64_t first = at < 0 ? 0 : at, end = min64(at + count, sink.bytes);
  if (first < end) sink.kernels->copy(sink.base + first, bytes + (first - at), end - first);
}

void store_planes_inside(const row_sink& sink, const plane_rows& prepared) {
  for (int done = 0; done < sink.pixels; done += kPlaneStep) {
    const int n = sink.pixels - done < kPlaneStep ? sink.pixels - done : kPlaneStep;
    const int x = sink.mirrored ? sink.pixels - done - n : done;
    store_inside(sink, sink.at + x, prepared.luma[0] + x, n);
    store_inside(sink, sink.at + sink.step + x, prepared.luma[1] + x, n);
    if (prepared.u != nullptr) store_inside(sink, sink.u + x / 2, prepared.u + x / 2, n / 2);
    if (prepared.v != nullptr) store_inside(sink, sink.v + x / 2, prepared.v + x / 2, n / 2);
  }
}

}  // namespace ppl
