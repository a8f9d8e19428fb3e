// From the mosaic in row storage to finished rows of a format.
#include "output/output.h"
#include "paths/cells.h"

namespace ppl::cells {

cell_rows cells_of(const cell_frame& f) {
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
  a.words = plane(c, kWords);
  a.r = plane(c, kR);
  a.g[0] = plane(c, kG0);
  a.g[1] = plane(c, kG1);
  a.b = plane(c, kB);
  return a;
}

namespace {

void put_rgb(const cell_frame& f, uint8_t* to, const uint8_t* r, const uint8_t* g, const uint8_t* b) {
  const rgb_source from = {rgb_source::planes, {r, g, b}};
  ppl_context* const c = f.context;
  if (f.halved)
    put_halved_rgb(*c->kernels, f.job->format, to, from, f.pixels, f.mirrored, wide_row(c, 0), kWidePitch);
  else
    f.output->rgb(f.job->format)(to, from, f.pixels, f.mirrored);
}

void put_grey(const cell_frame& f, const made_rows& out) {
  ppl_context* const c = f.context;
  const auto take = f.rows->copy_or_halve(f.halved);
  for (int i = 0; i < 2; ++i) {
    if (out.row[i] == nullptr) continue;
    const uint8_t* const s = plane(c, kEven + i);
    if (f.job->format == out_format::i420)
      take(out.row[i], s, f.pixels, f.mirrored);
    else
      put_rgb(f, out.row[i], s, s, s);
  }
  if (out.u != nullptr) {
    __builtin_memset(out.u, 128, static_cast<size_t>(f.pixels / 2));
    __builtin_memset(out.v, 128, static_cast<size_t>(f.pixels / 2));
  }
}

void put_i420(const cell_frame& f, const made_rows& out) {
  cell_rows a = cells_of(f);
  if (!f.halved && !f.mirrored) {  // in the same order and size: straight into the frame
    a.luma[0] = out.row[0];
    a.luma[1] = out.row[1];
    a.u = out.u;
    a.v = out.v;
    return f.kernels->cells_to_yuv(a);
  }
  f.kernels->cells_to_yuv(a);
  const auto take = f.rows->copy_or_halve(f.halved);
  for (int i = 0; i < 2; ++i)
    if (out.row[i] != nullptr) take(out.row[i], a.luma[i], f.pixels, f.mirrored);
  if (out.u != nullptr) {
    take(out.u, a.u, f.pixels / 2, f.mirrored);
    take(out.v, a.v, f.pixels / 2, f.mirrored);
  }
}

// Both rows of a cell carry its chroma; halved, every second cell's.
void put_packed(const cell_frame& f, const made_rows& out) {
  const cell_rows a = cells_of(f);
  f.kernels->cells_to_words(a);
  const auto pack = f.output->pack_or_halve(f.halved);
  for (int i = 0; i < 2; ++i)
    if (out.row[i] != nullptr)
      pack(out.row[i], a.luma[i], a.words, f.pixels, f.mirrored, order_of(f.job->format));
}

}  // namespace

void put_rows(const cell_frame& f, const made_rows& out) {
  if (f.grey) return put_grey(f, out);
  if (f.job->format == out_format::i420) return put_i420(f, out);
  if (!is_rgb(f.job->format)) return put_packed(f, out);
  const cell_rows a = cells_of(f);
  f.kernels->cells_to_rgb(a);
  for (int i = 0; i < 2; ++i)
    if (out.row[i] != nullptr) put_rgb(f, out.row[i], a.r, a.g[i], a.b);
}

}  // namespace ppl::cells
