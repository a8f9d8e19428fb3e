// The raw path: the mosaic's samples as grey, with no front end, no mirror and no statistics. At a decimation
// that a format does not know here, nothing is drawn; I420 still gets its mark.
#include "frame/frame_call.h"

namespace ppl {
namespace {

// A run of destination bytes, cut to what the caller handed over. Only the mark can begin before the frame.
struct span {
  uint8_t* at;
  int64_t bytes;
};

int64_t min64(int64_t a, int64_t b) {
  return a < b ? a : b;
}

span cut(const frame_job& job, int64_t offset, int64_t bytes) {
  const int64_t first = offset < 0 ? 0 : offset, end = min64(offset + bytes, job.destination_bytes);
  return first < end ? span{job.destination + first, end - first} : span{nullptr, 0};
}

void fill(const span& s, uint8_t value) {
  for (int64_t i = 0; i < s.bytes; ++i) s.at[i] = value;
}

// One sample as it stands in each format. `step` is the distance of the samples taken, 1 or 2.
template <int step>
void luma_run(const uint8_t* source, const span& out) {
  for (int64_t i = 0; i < out.bytes; ++i) out.at[i] = source[step * i];
}
// `grey_first`: the sample stands before the 128 (YUYV), else behind it. Halved UYVY takes a pair's second sample.
template <int step, bool grey_first>
void packed_run(const uint8_t* source, const span& out) {
  constexpr int taken = step == 2 && !grey_first ? 1 : 0;
  int64_t i = 0;
  for (; i + 2 <= out.bytes; i += 2) {
    const uint8_t s = source[step * (i / 2) + taken];
    out.at[i] = grey_first ? s : 128;
    out.at[i + 1] = grey_first ? 128 : s;
  }
  if (i < out.bytes) out.at[i] = grey_first ? source[step * (i / 2)] : 128;
}
void rgb24_run(const uint8_t* source, const span& out) {
  int64_t i = 0;
  for (; i + 3 <= out.bytes; i += 3) out.at[i] = out.at[i + 1] = out.at[i + 2] = source[i / 3];
  for (; i < out.bytes; ++i) out.at[i] = source[i / 3];
}
template <int step>
void rgb32_run(const uint8_t* source, const span& out) {
  int64_t i = 0;
  for (; i + 4 <= out.bytes; i += 4) {
    out.at[i] = out.at[i + 1] = out.at[i + 2] = source[step * (i / 4)];
    out.at[i + 3] = 0;
  }
  for (; i < out.bytes; ++i) out.at[i] = i % 4 == 3 ? 0 : source[step * (i / 4)];
}

// Luma and packed formats. Same size: one run of all samples, whatever the stride. Half size: every second row.
using run = void (*)(const uint8_t* source, const span& out);
void draw_top_down(const frame_job& job, int32_t pixel_bytes, run same, run halved) {
  const ppl_context* c = job.context;
  if (c->decimation == 0) same(job.source, cut(job, 0, int64_t{pixel_bytes} * c->frame_pixels));
  if (c->decimation != 1) return;
  const int64_t row = int64_t{pixel_bytes} * c->out_width;
  for (int64_t r = 0; r < c->frame_height >> 1; ++r) {
    const span out = cut(job, r * row, row);
    if (out.bytes == 0) return;
    halved(job.source + 2 * r * c->frame_stride, out);
  }
}

// RGB rows go upwards from the last output row. The source is one continuous run at both sizes.
void draw_bottom_up(const frame_job& job, int32_t pixel_bytes, run same, run halved) {
  const ppl_context* c = job.context;
  const int32_t d = c->decimation;
  const run draw = d == 0 ? same : d == 1 ? halved : nullptr;
  if (draw == nullptr) return;
  const int64_t row = int64_t{pixel_bytes} * c->out_width, step = int64_t{c->frame_width} << d;
  for (int64_t r = 0; r < c->frame_height >> d; ++r)
    draw(job.source + r * step, cut(job, (int64_t{c->out_height} - 1 - r) * row, row));
}

// A white block in the V plane that walks through a grid of 5 columns and 6 rows, one place per frame.
void draw_moving_mark(const frame_job& job) {
  ppl_context* c = job.context;
  const int32_t bw = c->out_width / 10, bh = c->out_height / 12;
  if (bw % 16 != 0) return;
  const int32_t column = c->mark_position % 5, row = c->mark_position / 5;
  const int32_t down = static_cast<int32_t>(static_cast<uint32_t>(c->out_width) * static_cast<uint32_t>(row) *
                                            static_cast<uint32_t>(bh)) /
                       2;
  if (bw > 0) {
    const int64_t pitch = c->out_width / 2;
    int64_t at = job.chroma_offset + c->out_quarter_pixels + column * bw + down;
    const int64_t end = min64(at + bh * pitch, job.destination_bytes);
    // A height that has wrapped can place rows before the frame, millions of them: those are passed over at once.
    if (at + bw <= 0) at += (-at - bw) / pitch * pitch;
    for (; at < end; at += pitch) fill(cut(job, at, bw), 255);
  }
  c->mark_position = c->mark_position >= 29 ? 0 : c->mark_position + 1;
}

}  // namespace

// Also of an I420 frame at any other decimation: a mark without columns or rows.
buffer_use raw_path_use(const frame_job& job) {
  const ppl_context* c = job.context;
  const int32_t d = c->decimation;
  const bool draws = d == 0 || (d == 1 && job.format != out_format::rgb24);
  const bool marks = job.format == out_format::i420 && c->out_width / 10 % 16 == 0 && c->out_width >= 10 &&
                     c->out_height >= 12;
  return {draws && c->frame_pixels > 0 && job.destination_bytes > 0, draws || marks};
}

void run_raw_path(const frame_job& job) {
  const ppl_context* c = job.context;
  switch (job.format) {
    case out_format::i420:
      draw_top_down(job, 1, luma_run<1>, luma_run<2>);
      if (c->decimation == 0 || c->decimation == 1) fill(cut(job, job.chroma_offset, c->out_pixels / 2), 128);
      draw_moving_mark(job);
      break;
    case out_format::yuyv:
      draw_top_down(job, 2, packed_run<1, true>, packed_run<2, true>);
      break;
    case out_format::uyvy:
      draw_top_down(job, 2, packed_run<1, false>, packed_run<2, false>);
      break;
    case out_format::rgb24:
      draw_bottom_up(job, 3, rgb24_run, nullptr);
      break;
    case out_format::rgb32:
      draw_bottom_up(job, 4, rgb32_run<1>, rgb32_run<2>);
      break;
  }
}

}  // namespace ppl
