// The parts of a writer that all formats share.
#include "output/output.h"

namespace ppl {

namespace {

// Whether the frame is what the plan was made for: whole groups of tiles, no lost or negative black lines, nothing
// overlapping.
bool is_ordinary(const ppl_context& c, const frame_job& job) {
  const int d = c.decimation, tiles = c.tiles_per_row, row_pairs = c.row_pairs;
  if (d < -1 || d > 1 || c.frame_width != kTileColumns * tiles || c.frame_height != 2 * row_pairs)
    return false;
  // Two tiles make a block of U and V, of halved luma and of halved RGB24; four make a block of halved U and V.
  const bool i420 = job.format == out_format::i420;
  if (i420 && (tiles & (d > 0 ? 3 : 1)) != 0) return false;
  if (d > 0 && (tiles & 1) != 0 && job.format != out_format::rgb32) return false;
  if (d < 0 && job.format == out_format::rgb32) return false;  // tiles overlap
  if (i420 && d > 0 && (row_pairs & 1) != 0) return false;
  const bool upwards = is_rgb(job.format) == (c.v_mirror == 0);
  return rows_fit(&c, job.format, job.out.bytes,
                  lay_out_rows(&c, job.format, c.out_width, upwards, c.h_mirror != 0, 0), c.out_width, 0,
                  d < 0   ? 4 * row_pairs
                  : d > 0 ? row_pairs
                          : 2 * row_pairs);
}

void put_byte(const output_writer& w, int64_t at, int value) {
  if (uint8_t* const to = w.out.place(at)) *to = static_cast<uint8_t>(value);
}

}  // namespace

void fill_row(const output_writer& w, int64_t at, int64_t pitch, int n) {
  if (w.out.holds(at - pitch, n) && w.out.holds(at + pitch, n)) {
    w.rows->mean(w.out.base + at, w.out.base + at - pitch, w.out.base + at + pitch, n);
    return;
  }
  for (int64_t i = at; i < at + n; ++i)
    put_byte(w, i, (byte_at(w, i - pitch) + byte_at(w, i + pitch) + 1) >> 1);
}

void repeat_row(const output_writer& w, int64_t to, int64_t from, int n) {
  for (int64_t i = 0; i < n; ++i) put_byte(w, to + i, byte_at(w, from + i));
}

namespace {

// What the pixels of row i are made from, from column x on.
rgb_source rgb_source_of(const output_writer& w, const finished_rows& rows, int i, int x) {
  const uint8_t *const a = rows.plane[0][i] + x, *const b = rows.plane[1][i] + x;
  if (w.quality.rgb == rgb_form::yuv_words) return {rgb_source::yuv_words, {a, b, nullptr}};
  return {w.quality.rgb == rgb_form::yuv_planes ? rgb_source::yuv_planes : rgb_source::planes,
          {a, b, rows.plane[2][i] + x}};
}

}  // namespace

rgb_source planes_of(const output_writer& w, const finished_rows& rows, int i, int scratch) {
  const rgb_source from = rgb_source_of(w, rows, i, 0);
  if (from.kind == rgb_source::planes) return from;
  uint8_t* const to[3] = {scratch_plane(w, scratch), scratch_plane(w, scratch + 1),
                          scratch_plane(w, scratch + 2)};
  w.kernels->rgb_planes(to, from, w.width);
  return from_planes(to, 0);
}

void put_rgb_rows(const output_writer& w, const finished_rows& rows, int64_t pitch, int64_t tile_step) {
  for (int i = 0; i < 2; ++i)
    put_all_tiles(w, [&]<bool kWhole>(int first, int tiles) {
      uint8_t block[64];
      const int64_t at = run_start(w.luma + i * pitch + first * tile_step, tiles, tile_step);
      w.kernels->rgb(w.format)(making_place<kWhole>(w, at, block),
                               rgb_source_of(w, rows, i, first * kTileColumns), tiles * kTileColumns,
                               w.h_mirror);
      settle<kWhole>(w, at, block, kTileColumns * bytes_per_pixel(w.format));
    });
}

void put_halved_rgb(const kernels& k, out_format format, uint8_t* to, const rgb_source& from, int n,
                    bool mirrored, uint8_t* half, int pitch) {
  const int first = mirrored && format == out_format::rgb32 ? 1 : 0;
  rgb_source halved = {rgb_source::planes, {}};
  for (int i = 0; i < 3; ++i, half += pitch) {
    k.rows->halve(half, from.plane[i] + first, n, false);
    halved.plane[i] = half;
  }
  k.output->rgb(format)(to, halved, n, mirrored);
}

namespace {

auto stage_of(out_format format) -> decltype(output_writer::put) {
  switch (format) {
    case out_format::i420:
      return put_i420;
    case out_format::yuyv:
    case out_format::uyvy:
      return put_packed;
    case out_format::rgb24:
      return put_rgb24;
    case out_format::rgb32:
      break;
  }
  return put_rgb32;
}

}  // namespace

output_writer make_writer(const frame_job& job, quality_rules quality) {
  ppl_context& c = *job.context;
  const start_pointers start = start_pointers_of(&c, job.format);
  const bool doubled = c.decimation < 0;
  output_writer w = {};
  w.put = stage_of(job.format);
  w.kernels = c.kernels->output;
  w.rows = c.kernels->rows;
  w.context = &c;
  w.format = job.format;
  w.out = job.out;
  w.luma = start.stage;
  w.chroma = c.out_pixels + start.stage_chroma;
  w.tiles = c.tiles_per_row;
  w.row_pairs = c.row_pairs;
  w.width = kTileColumns * w.tiles;
  w.decimation = c.decimation;
  w.quality = quality;
  w.h_mirror = c.h_mirror != 0;
  w.planes = c.scratch + kScratchBytes - kOutputScratch + 64;
  w.ordinary = is_ordinary(c, job);
  if (!w.ordinary) {
    w.out.margin = w.planes + 9 * kPlanePitch;
    __builtin_memset(w.out.margin, 0, 2 * destination::kMargin);
  }
  w.fills_gaps = doubled && quality.between != rows_between::rgb24_alone;
  w.wants_unfiltered_chroma =
      doubled && job.format == out_format::rgb24 && quality.rgb == rgb_form::yuv_words;
  return w;
}

}  // namespace ppl
