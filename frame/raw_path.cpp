// The raw path: the mosaic's samples as grey, with no front end, no mirror and no statistics. At decimations that a
// format does not have here nothing is drawn, but for the mark of I420.
#include "frame/frame_call.h"
#include "record/levels.h"
#include "rows/row_kernels.h"

namespace ppl {
namespace {

// `n` samples, each or every second one, as pixels of a format. Halved UYVY takes a pair's second sample.
void draw_run(const frame_job& job, uint8_t* out, const uint8_t* source, int64_t n, bool halved) {
  const int step = halved ? 2 : 1;
  const row_kernels& k = *job.context->kernels->rows;
  switch (job.format) {
    case out_format::i420:
      k.copy_or_halve(halved)(out, source, n, false);
      break;
    case out_format::yuyv:
      for (int64_t i = 0; i < n; ++i, out += 2) {
        out[0] = source[step * i];
        out[1] = 128;
      }
      break;
    case out_format::uyvy:
      for (int64_t i = 0; i < n; ++i, out += 2) {
        out[0] = 128;
        out[1] = source[step * i + step - 1];
      }
      break;
    case out_format::rgb24:
      for (int64_t i = 0; i < n; ++i, out += 3) out[0] = out[1] = out[2] = source[i];
      break;
    case out_format::rgb32:
      for (int64_t i = 0; i < n; ++i, out += 4) {
        out[0] = out[1] = out[2] = source[step * i];
        out[3] = 0;
      }
      break;
  }
}

// `n` pixels from the one at `first` on, cut to the frame.
void draw(const frame_job& job, int64_t first, const uint8_t* source, int64_t n, bool halved) {
  const int64_t bytes = bytes_per_pixel(job.format);
  const frame_run run = job.out.inside(bytes * first, bytes * n);
  if (first >= 0 && run.bytes > 0) draw_run(job, job.out.base + run.first, source, run.bytes / bytes, halved);
}

// Whether the format has the decimation here.
bool draws(const frame_job& job) {
  const int32_t d = job.context->decimation;
  return d == 0 || (d == 1 && job.format != out_format::rgb24);
}

// Luma and packed formats. Same size: one run of all samples, whatever the stride. Half size: every second row. RGB
// rows go upwards from the last output row; their source is one continuous run at both sizes.
void draw_samples(const frame_job& job) {
  const ppl_context* c = job.context;
  const bool halved = c->decimation != 0, rgb = is_rgb(job.format);
  if (!halved && !rgb) return draw(job, 0, job.source, c->frame_pixels, false);
  const int64_t width = c->out_width,
                step = int64_t{rgb ? c->frame_width : c->frame_stride} << (halved ? 1 : 0);
  for (int64_t r = 0; r < c->frame_height >> (halved ? 1 : 0); ++r)
    draw(job, width * (rgb ? int64_t{c->out_height} - 1 - r : r), job.source + r * step, width, halved);
}

void clear_chroma(const frame_job& job) {
  const ppl_context* c = job.context;
  const frame_run run = job.out.inside(c->out_pixels, c->out_pixels / 2);
  if (run.bytes > 0) c->kernels->rows->fill(job.out.base + run.first, run.bytes, 128, 128);
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
    int64_t at = int64_t{c->out_pixels} + c->out_quarter_pixels + column * bw + down;
    const int64_t end = at + bh * pitch;
    // A height that has wrapped can place millions of rows before the frame: those are skipped at once.
    if (at + bw <= 0) at += (-at - bw) / pitch * pitch;
    for (; at < end && at < job.out.bytes; at += pitch) {
      const frame_run run = job.out.inside(at, bw);
      if (run.bytes > 0) __builtin_memset(job.out.base + run.first, 255, static_cast<size_t>(run.bytes));
    }
  }
  c->mark_position = c->mark_position >= 29 ? 0 : c->mark_position + 1;
}

}  // namespace

buffer_use raw_path_use(const frame_job& job) {
  const ppl_context* c = job.context;
  const bool marks = job.format == out_format::i420 && c->out_width >= 160 && c->out_width / 10 % 16 == 0 &&
                     c->out_height >= 12;
  return {draws(job) && c->frame_pixels > 0 && job.out.bytes > 0, draws(job) || marks};
}

void run_raw_path(const frame_job& job) {
  if (draws(job)) draw_samples(job);
  if (job.format != out_format::i420) return;
  if (draws(job)) clear_chroma(job);
  draw_moving_mark(job);
}

}  // namespace ppl
