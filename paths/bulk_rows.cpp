// From the mosaic in row storage to finished rows of a format.
#include "paths/bulk.h"

namespace ppl::bulk {

cell_rows cells_of(const bulk_frame& f) {
  ppl_context* const c = f.context;
  cell_rows a = {};
  a.context = c;
  a.even = plane(c, kEven);
  a.odd = plane(c, kOdd);
  a.width = f.columns;
  a.luma[0] = plane(c, kLuma0);
  a.luma[1] = plane(c, kLuma1);
  a.u = plane(c, kU);
  a.v = plane(c, kV);
  a.r = plane(c, kR);
  a.g[0] = plane(c, kG0);
  a.g[1] = plane(c, kG1);
  a.b = plane(c, kB);
  return a;
}

namespace {

void fill(uint8_t* to, int n, uint8_t value) {
  for (int i = 0; i < n; ++i) to[i] = value;
}

// One row of RGB from planes, which are halved or reversed first where the frame is.
void put_rgb(const bulk_frame& f, uint8_t* to, const uint8_t* r, const uint8_t* g, const uint8_t* b) {
  const bulk_kernels& k = *f.kernels;
  const auto pack = f.job->format == out_format::rgb24 ? k.rgb24 : k.rgb32;
  if (!f.halved && !f.mirrored) return pack(to, r, g, b, f.pixels);
  const uint8_t* const planes[3] = {r, g, b};
  uint8_t* ready[3];
  for (int i = 0; i < 3; ++i) {
    ready[i] = wide_row(f.context, i);
    if (i > 0 && planes[i] == planes[0])
      ready[i] = ready[0];
    else
      (f.halved ? k.halve : k.copy)(ready[i], planes[i], f.pixels, f.mirrored);
  }
  pack(to, ready[0], ready[1], ready[2], f.pixels);
}

void put_grey(const bulk_frame& f, const made_rows& out) {
  ppl_context* const c = f.context;
  const auto take = f.halved ? f.kernels->halve : f.kernels->copy;
  for (int i = 0; i < 2; ++i) {
    if (out.row[i] == nullptr) continue;
    const uint8_t* const s = plane(c, kEven + i);
    if (f.job->format == out_format::i420)
      take(out.row[i], s, f.pixels, f.mirrored);
    else
      put_rgb(f, out.row[i], s, s, s);
  }
  if (out.u != nullptr) {
    fill(out.u, f.pixels / 2, 128);
    fill(out.v, f.pixels / 2, 128);
  }
}

void put_i420(const bulk_frame& f, const made_rows& out) {
  const bulk_kernels& k = *f.kernels;
  cell_rows a = cells_of(f);
  if (!f.halved && !f.mirrored) {  // in the same order and size: straight into the frame
    a.luma[0] = out.row[0];
    a.luma[1] = out.row[1];
    a.u = out.u;
    a.v = out.v;
    return k.cells_to_yuv(a);
  }
  k.cells_to_yuv(a);
  const auto take = f.halved ? k.halve : k.copy;
  for (int i = 0; i < 2; ++i)
    if (out.row[i] != nullptr) take(out.row[i], a.luma[i], f.pixels, f.mirrored);
  if (out.u != nullptr) {
    take(out.u, a.u, f.pixels / 2, f.mirrored);
    take(out.v, a.v, f.pixels / 2, f.mirrored);
  }
}

// Both rows of a cell carry its chroma; halved, every second cell's.
void put_packed(const bulk_frame& f, const made_rows& out) {
  ppl_context* const c = f.context;
  const bulk_kernels& k = *f.kernels;
  const auto pack = f.job->format == out_format::yuyv ? k.yuyv : k.uyvy;
  const cell_rows a = cells_of(f);
  k.cells_to_yuv(a);
  const uint8_t *u = a.u, *v = a.v;
  const bool moved = f.halved || f.mirrored;
  const auto take = f.halved ? k.halve : k.copy;
  if (moved) {
    take(wide_row(c, 1), u, f.pixels / 2, f.mirrored);
    take(wide_row(c, 2), v, f.pixels / 2, f.mirrored);
    u = wide_row(c, 1);
    v = wide_row(c, 2);
  }
  for (int i = 0; i < 2; ++i) {
    if (out.row[i] == nullptr) continue;
    const uint8_t* y = a.luma[i];
    if (moved) {
      take(wide_row(c, 0), y, f.pixels, f.mirrored);
      y = wide_row(c, 0);
    }
    pack(out.row[i], y, u, v, f.pixels);
  }
}

}  // namespace

void put_rows(const bulk_frame& f, const made_rows& out) {
  if (f.grey) return put_grey(f, out);
  if (f.job->format == out_format::i420) return put_i420(f, out);
  if (!is_rgb(f.job->format)) return put_packed(f, out);
  const cell_rows a = cells_of(f);
  f.kernels->cells_to_rgb(a);
  for (int i = 0; i < 2; ++i)
    if (out.row[i] != nullptr) put_rgb(f, out.row[i], a.r, a.g[i], a.b);
}

}  // namespace ppl::bulk
