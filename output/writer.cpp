// The writer's parts that all formats share.
#include "output/output.h"

#include "output/output_kernels.h"
#include "platform/levels.h"

namespace ppl {

namespace {

// The frame is what the plan was made for: whole tile groups, no lost or negative black lines, nothing overlapping.
bool is_ordinary(const ppl_context& c, out_format format, int64_t bytes) {
  const int d = c.decimation;
  const int tiles = c.tiles_per_row;
  if (d < -1 || d > 1 || bytes <= 0) return false;
  if (c.frame_width != kTileColumns * tiles || (c.frame_height & 1) != 0) return false;
  // Blocks of U and V come from two tiles, halved luma and RGB24 blocks too, halved U and V from four.
  const bool i420 = format == out_format::i420;
  if (i420 && (tiles & (d > 0 ? 3 : 1)) != 0) return false;
  if (d > 0 && (tiles & 1) != 0 && format != out_format::rgb32) return false;
  if (i420 && d > 0 && (c.row_pairs & 1) != 0) return false;
  const int64_t height = d < 0 ? int64_t{c.frame_height} * 2 : c.frame_height >> d;
  return c.out_height >= height && c.out_height <= height + 65536;
}

void put_byte(const output_writer& w, int64_t at, int value) {
  if (uint8_t* const to = place_of(w, at)) *to = static_cast<uint8_t>(value);
}

}  // namespace

void fill_row(const output_writer& w, int64_t at, int64_t pitch, int n) {
  if ((n & 15) == 0 && inside(w, at - pitch, n) && inside(w, at + pitch, n)) {
    w.kernels->mean(w.base + at, w.base + at - pitch, w.base + at + pitch, n);
    return;
  }
  for (int64_t i = at; i < at + n; ++i)
    put_byte(w, i, (byte_at(w, i - pitch) + byte_at(w, i + pitch) + 1) >> 1);
}

void repeat_row(const output_writer& w, int64_t to, int64_t from, int n) {
  for (int64_t i = 0; i < n; ++i) put_byte(w, to + i, byte_at(w, from + i));
}

rgb_source rgb_source_of(const output_writer& w, const finished_rows& rows, int i, int x) {
  const uint8_t *const a = rows.plane[0][i] + x, *const b = rows.plane[1][i] + x;
  if (w.quality.rgb == rgb_form::yuv_words) return {rgb_source::yuv_words, {a, b, nullptr}};
  return {w.quality.rgb == rgb_form::yuv_planes ? rgb_source::yuv_planes : rgb_source::planes,
          {a, b, rows.plane[2][i] + x}};
}

void put_rgb_rows(const output_writer& w, const finished_rows& rows, int pixel_bytes, int64_t pitch,
                  int64_t tile_step) {
  const auto pack = pixel_bytes == 3 ? w.kernels->rgb24 : w.kernels->rgb32;
  const int64_t at = run_start(w.luma, w.tiles, tile_step);
  for (int i = 0; i < 2; ++i) {
    if (w.ordinary) {
      pack(w.base + at + i * pitch, rgb_source_of(w, rows, i, 0), w.width, w.h_mirror);
      continue;
    }
    uint8_t block[64];
    for (int t = 0; t < w.tiles; ++t) {
      pack(block, rgb_source_of(w, rows, i, t * kTileColumns), 16, w.h_mirror);
      put_inside(w, w.luma + i * pitch + t * tile_step, block, 16 * pixel_bytes);
    }
  }
}

output_writer make_writer(const frame_job& job, quality_rules quality) {
  ppl_context& c = *job.context;
  output_writer w = {};
  w.kernels = c.kernels->output;
  w.context = &c;
  w.base = job.destination;
  w.bytes = job.destination_bytes;
  w.tiles = c.tiles_per_row;
  w.row_pairs = c.row_pairs;
  w.width = kTileColumns * w.tiles;
  w.decimation = c.decimation;
  w.quality = quality;
  w.h_mirror = c.h_mirror != 0;
  w.planes = c.scratch + kScratchBytes - kOutputScratch + 64;
  w.margin = w.planes + 9 * kPlanePitch;
  w.ordinary = is_ordinary(c, job.format, job.destination_bytes);
  if (!w.ordinary) __builtin_memset(w.margin, 0, 2 * kMargin);
  w.fills_gaps = c.decimation < 0 && quality.between != rows_between::rgb24_alone;
  switch (job.format) {
    case out_format::i420:
      start_i420(w, job);
      break;
    case out_format::yuyv:
    case out_format::uyvy:
      start_packed(w, job);
      break;
    case out_format::rgb24:
      start_rgb24(w, job);
      break;
    case out_format::rgb32:
      start_rgb32(w, job);
      break;
  }
  return w;
}

}  // namespace ppl
