// Whole frames: packed 4:2:2 and the 12-bit layout. Both convert at decimation 0 alone and draw no black lines.
#include "convert/conversion.h"

namespace ppl {

void convert_progressive(const conversion_job& job) {
  ppl_context* const c = job.context;
  if (c->decimation != 0 || c->tiles_per_row < 1) return;  // rows without a tile may come from nowhere
  const bool planes = job.conv.to == out_format::i420;     // mirrors reach I420 alone
  const int64_t rows = 2 * static_cast<int64_t>(c->row_pairs);
  row_sink sink = open_sink(c,
                            {job.conv.from, job.conv.to, job.out, 16 * c->tiles_per_row,
                             planes && c->h_mirror, planes && c->v_mirror},
                            0, rows);
  const uint8_t* const source = job.call.source[kFrame];
  const int64_t pitch = 2 * static_cast<int64_t>(c->frame_width);
  for (int64_t r = 0; r < rows; r++) put_row(sink, source + r * pitch);
}

// Units of 32 pixels; what is left of a row keeps what the buffer held. Both rows of a pair store their mixed
// chroma at the same place in the U plane, so the second row's stays; the V plane is never written.
void convert_twelve_bit(const conversion_job& job) {
  ppl_context* const c = job.context;
  const int units = c->tiles_per_row / 2;
  if (c->decimation != 0 || c->tiles_per_row < 1) return;
  row_sink sink = open_sink(
      c, {byte_order::yuyv, out_format::i420, job.out, 32 * units, c->h_mirror != 0, c->v_mirror != 0}, 0,
      2 * static_cast<int64_t>(c->row_pairs));
  const auto convert_row = sink.kernels->twelve_bit[sink.mirrored];
  const int64_t pitch = 3 * static_cast<int64_t>(c->frame_width) / 2;
  const uint8_t* row = job.call.source[kFrame];
  for (int p = 0; p < c->row_pairs; p++, row += 2 * pitch) {
    plane_rows made = make_pair(sink);
    made.v = nullptr;
    convert_row(made.luma[0], made.u, row, units);
    convert_row(made.luma[1], made.u, row + pitch, units);
    put_made_pair(sink, made);
  }
}

}  // namespace ppl
