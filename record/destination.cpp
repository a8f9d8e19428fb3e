#include "record/destination.h"

namespace ppl {
namespace {

// Whether rows first .. first + count - 1, of n bytes each, lie between two offsets.
bool lie_between(const row_grid& g, int64_t first, int64_t count, int64_t n, int64_t low, int64_t high) {
  const int64_t a = g.at(first), b = g.at(first + count - 1);
  return count <= 0 || (low <= (a < b ? a : b) && (a < b ? b : a) + n <= high);
}

}  // namespace

void destination::store(int64_t at, const uint8_t* from, int64_t n) const {
  const frame_run run = inside(at, n);
  if (run.bytes > 0)
    __builtin_memcpy(base + run.first, from + (run.first - at), static_cast<size_t>(run.bytes));
  if (margin == nullptr || run.bytes == n) return;
  for (int64_t i = 0; i < n; ++i)
    if (at + i < 0 || at + i >= bytes)
      if (uint8_t* const to = place(at + i)) *to = from[i];
}

picture_rows lay_out_rows(const ppl_context* c, out_format format, int pixels, bool upwards, bool mirrored,
                          int below) {
  const int bytes = bytes_per_pixel(format);
  const int64_t row = int64_t{bytes} * c->out_width, half = c->out_width / 2, rows_up = below + 1;
  const int64_t inset = mirrored ? c->out_width - pixels : 0;
  const int64_t first = upwards ? int64_t{bytes} * c->out_pixels - rows_up * row : 0;
  picture_rows rows = {{first + bytes * inset, upwards ? -row : row}, {}, {}};
  if (format != out_format::i420) return rows;
  const int64_t chroma = int64_t{c->out_pixels} + (upwards ? c->out_quarter_pixels - rows_up * half : 0) +
                         (mirrored ? half - pixels / 2 : 0);
  rows.u = {chroma, upwards ? -half : half};
  rows.v = {chroma + c->out_quarter_pixels, rows.u.step};
  return rows;
}

bool rows_fit(const ppl_context* c, out_format format, int64_t bytes, const picture_rows& rows, int pixels,
              int64_t first, int64_t count) {
  const int64_t n = int64_t{bytes_per_pixel(format)} * pixels;
  if (format != out_format::i420) return lie_between(rows.luma, first, count, n, 0, bytes);
  const int64_t u = c->out_pixels, v = u + c->out_quarter_pixels, end = v + c->out_quarter_pixels;
  return end <= bytes && lie_between(rows.luma, first, count, n, 0, u) &&
         lie_between(rows.u, first / 2, count / 2, n / 2, u, v) &&
         lie_between(rows.v, first / 2, count / 2, n / 2, v, end);
}

}  // namespace ppl
