// Whole frames: packed 4:2:2 and the 12-bit layout. Both convert at decimation 0 alone and draw no black lines.
#include "convert/conversion.h"

namespace ppl {

void convert_progressive(const conversion_job& job) {
  ppl_context* const c = job.context;
  if (c->decimation != 0) return;
  const bool planes = job.conv.to == out_format::i420;  // mirrors reach I420 alone
  row_sink sink = open_sink(c, job.conv.from, job.conv.to, job.call.output, job.bytes, 16 * c->tiles_per_row,
                            planes && c->h_mirror, planes && c->v_mirror);
  const int64_t rows = 2 * static_cast<int64_t>(c->row_pairs);
  find_out_whether_direct(sink, c, {0, rows, 0}, 0);
  const uint8_t* const source = job.call.source[kFrame];
  const int64_t pitch = 2 * static_cast<int64_t>(c->frame_width);
  for (int64_t r = 0; r < rows; r++) put_row(sink, source + r * pitch);
}

// Units of 32 pixels; what is left of a row keeps what the buffer held. Both rows of a pair store their mixed
// chroma at the same place in the U plane, so the second row's stays; the V plane is never written.
void convert_twelve_bit(const conversion_job& job) {
  ppl_context* const c = job.context;
  const int units = c->tiles_per_row / 2;
  if (c->decimation != 0) return;
  row_sink sink = open_sink(c, layout::yuyv, out_format::i420, job.call.output, job.bytes, 32 * units,
                            c->h_mirror, c->v_mirror);
  find_out_whether_direct(sink, c, {0, 2 * static_cast<int64_t>(c->row_pairs), 0}, 0);
  const auto convert_row = sink.kernels->twelve_bit[sink.mirrored];
  const int64_t pitch = 3 * static_cast<int64_t>(c->frame_width) / 2;
  const uint8_t* row = job.call.source[kFrame];
  for (int p = 0; p < c->row_pairs; p++, row += 2 * pitch) {
    uint8_t* luma = sink.rows.staging;
    plane_rows out = {{luma, luma + sink.pixels}, luma + 2 * sink.pixels, nullptr};
    if (sink.direct) {
      luma = sink.base + sink.at;
      out = {{luma, luma + sink.step}, sink.base + sink.u, nullptr};
    }
    convert_row(out.luma[0], out.u, row, units);
    convert_row(out.luma[1], out.u, row + pitch, units);
    if (!sink.direct) store_planes_inside(sink, out);
    sink.at += 2 * sink.step;
    sink.u += sink.chroma_step;
  }
}

}  // namespace ppl
