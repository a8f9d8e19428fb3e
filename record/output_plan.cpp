#include "record/output_plan.h"

namespace ppl {
namespace {

// What the rules depend on.
struct terms {
  int32_t w;      // out_width
  int32_t d;      // decimation
  int32_t s;      // direction along a row: 1, or -1 under the horizontal mirror
  int32_t v;      // direction of YUV rows: 1, or -1 under the vertical mirror
  int32_t r;      // direction of RGB rows, which are stored bottom-up: -v
  int32_t m;      // 2 at double size, else 1
  int32_t state;  // 0 no mirror, 1 horizontal, 2 vertical, 3 both
  bool h, vertical, doubled, shrunk;
};

terms terms_of(const ppl_context* c) {
  terms t;
  t.w = c->out_width;
  t.d = c->decimation;
  t.h = c->h_mirror != 0;
  t.vertical = c->v_mirror != 0;
  t.s = t.h ? -1 : 1;
  t.v = t.vertical ? -1 : 1;
  t.r = -t.v;
  t.doubled = t.d < 0;
  t.shrunk = t.d > 0;
  t.m = t.doubled ? 2 : 1;
  t.state = (t.h ? 1 : 0) + (t.vertical ? 2 : 0);
  return t;
}

// A value that follows no formula over the mirrors: none, horizontal, vertical, both.
int32_t by_mirrors(const terms& t, int32_t none, int32_t horizontal, int32_t vertical, int32_t both) {
  const int32_t values[4] = {none, horizontal, vertical, both};
  return values[t.state];
}

int32_t luma_row_step(const terms& t, int32_t rows) {
  return t.v * rows * t.w - t.s * t.w;
}

void plan_i420(const terms& t, output_offset_plan* p) {
  const int32_t w = t.w, d = t.d, v = t.v, half = w / 2;
  const int32_t mirrored_tile = t.h ? 16 : 0;
  auto& o = p->i420;
  o.luma_tile_step = t.s * 16 * t.m;
  o.luma_row_step = luma_row_step(t, t.doubled ? 4 : t.shrunk ? 1 : 2);
  o.luma_fill_1 = v * (2 * d - 1) * w - mirrored_tile;
  o.luma_fill_2 = v * (4 * d - 1) * w - mirrored_tile;
  o.luma_last_source = v * 2 * d * w;
  o.luma_last_target = v * (2 * d + 1) * w;
  o.chroma_tile_step = t.s * 16 * t.m;
  o.chroma_row_step = v * (t.doubled ? 2 : 1) * half - t.s * half;
  o.chroma_fill = v * (2 * d - 1) * half;
  o.chroma_last_source = v * d * w;
  o.chroma_last_target = v * (2 * d + 1) * half;

  auto& b = p->bulk_i420;
  b.left_offset = t.h ? 16 * t.m : 0;
  b.right_offset = t.h ? 0 : 16 * t.m;
  b.row_0_offset = t.vertical ? t.m * w : 0;
  b.row_1_offset = t.vertical ? 0 : t.m * w;
  b.group_step = t.s * 32 * t.m;
  b.row_step = luma_row_step(t, t.doubled ? 4 : 2);
  b.last_source = by_mirrors(t, 2 * d * w, 0, -2 * d * w, -4 * d * w);
  b.chroma_group_step = t.s * 16 * t.m;
  b.chroma_row_step = o.chroma_row_step;
  b.chroma_last_source = by_mirrors(t, (2 * d + 1) * w, 0, 0, -(2 * d + 1) * w);

  p->i420_pitch = {0, t.s * 16, v * w, v * w + t.s * 16};
}

// YUYV and UYVY; reads what plan_i420 wrote.
void plan_packed(const terms& t, output_offset_plan* p) {
  const int32_t w = t.w, d = t.d;
  auto& o = p->packed;
  o.tile_step = t.s * 32 * t.m;
  o.row_step = 2 * p->i420.luma_row_step;
  o.fill_1 = 2 * p->i420.luma_fill_1;
  o.fill_2 = 2 * p->i420.luma_fill_2;
  o.last_source = 2 * p->i420.luma_last_source;
  o.last_target = 2 * p->i420.luma_last_target;
  // For doubled pictures made cell by cell, which place their rows without them: nothing reads these. The values with
  // and without the vertical mirror are not each other's mirror image.
  o.bulk_fill_1 = t.vertical ? -4 * d * w : 2 * (2 * d - 1) * w;
  o.bulk_fill_2 = t.vertical ? -8 * d * w : 2 * (4 * d - 1) * w;
  o.bulk_last_source = t.vertical ? -2 * (2 * d - 1) * w : 4 * d * w;
  o.bulk_last_target = t.vertical ? -8 * d * w : 2 * (2 * d + 1) * w;

  auto& b = p->bulk_packed;
  b.left_offset = t.h && !t.doubled ? 32 : 0;
  b.right_offset = t.h ? (t.doubled ? -64 : 0) : 32 * t.m;
  b.row_0_offset = t.vertical && !t.doubled ? 2 * w : 0;
  b.row_1_offset = t.vertical ? (t.doubled ? -4 * w : 0) : 2 * t.m * w;
  b.group_step = t.s * 64 * t.m;
  b.row_step = 2 * p->bulk_i420.row_step;

  p->packed_pitch = {0, t.s * 32, t.v * 2 * w, t.v * 2 * w + t.s * 32};
}

void plan_rgb24(const terms& t, output_offset_plan* p) {
  const int32_t w = t.w, d = t.d, r = t.r;
  auto& o = p->rgb24;
  o.tile_step = t.shrunk ? t.s * 24 : t.s * 48 * t.m;
  // At double size one mirror alone moves two image rows per row pair, not four: such pictures overlap themselves.
  const int32_t rows = t.doubled  ? by_mirrors(t, -15, -3, 3, 15)
                       : t.shrunk ? by_mirrors(t, -6, 0, 0, 6)
                                  : by_mirrors(t, -9, -3, 3, 9);
  o.row_step = rows * w + o.tile_step;
  o.fill_1 = -r * 3 * (1 - 2 * d) * w;
  o.fill_2 = -r * 3 * (1 - 4 * d) * w;
  o.last_source = r * 6 * d * w;
  o.last_target = r * 3 * (2 * d + 1) * w;

  auto& b = p->bulk_rgb24;
  b.left_offset = t.h ? 48 * t.m : 0;
  b.right_offset = t.h ? 0 : 48 * t.m;
  b.row_0_offset = t.vertical ? 0 : 3 * t.m * w;
  b.row_1_offset = t.vertical ? 3 * t.m * w : 0;
  b.group_step = t.s * 96 * t.m;
  b.row_step =
      t.doubled ? by_mirrors(t, -15 * w, -9 * w, 9 * w, 15 * w) : by_mirrors(t, -9 * w, -3 * w, 3 * w, 9 * w);
  b.last_source = by_mirrors(t, -6 * d * w, -12 * d * w, 6 * d * w, 0);

  p->rgb24_pitch = {0, t.s * 48 * t.m, r * 3 * w, r * 3 * w + t.s * 48 * t.m};
}

// RGB32 has no steps of its own for double size.
void plan_rgb32(const terms& t, output_offset_plan* p) {
  const int32_t w = t.w;
  auto& o = p->rgb32;
  o.tile_step = t.shrunk ? t.s * 32 : t.s * 64;
  const int32_t rows = t.shrunk ? by_mirrors(t, -8, 0, 0, 8) : by_mirrors(t, -12, -4, 4, 12);
  o.row_step = rows * w + o.tile_step;

  auto& b = p->bulk_rgb32;
  for (int i = 0; i < 2; ++i) b.half_offset[i] = 64 * (t.h ? 1 - i : i);
  for (int i = 0; i < 4; ++i) b.quarter_offset[i] = 32 * (t.h ? 3 - i : i);
  b.row_0_offset = t.vertical ? 0 : 4 * w;
  b.row_1_offset = t.vertical ? 4 * w : 0;
  b.group_step = t.s * 128;
  b.row_step = by_mirrors(t, -12 * w, -4 * w, 4 * w, 12 * w);

  p->rgb32_pitch = {0, t.s * 64, t.r * 4 * w, t.r * 4 * w + t.s * 64};
}

struct extent {
  int64_t w, n, q;  // out_width, out_pixels, out_quarter_pixels
};

start_pointers start_i420(const terms& t, const extent& e) {
  const int64_t w = e.w, half = e.w / 2;
  const int64_t group = t.doubled ? 64 : 32, chroma_group = t.doubled ? 32 : 16;
  start_pointers o = {};
  switch (t.state) {
    case 1:
      o.stage = w - 16;
      o.stage_chroma = half - 16;
      o.bulk = w - group;
      o.bulk_chroma = half - chroma_group;
      break;
    case 2:
      o.stage = e.n - w;
      o.stage_chroma = e.q - half;
      o.bulk = e.n - (t.doubled ? 4 : 2) * w;
      o.bulk_chroma = e.q - (t.doubled ? w : half);
      break;
    case 3:
      o.stage = e.n - 16;
      o.stage_chroma = e.q - 16;
      o.bulk = e.n - group - (t.doubled ? 3 : 1) * w;
      o.bulk_chroma = e.q - chroma_group - (t.doubled ? half : 0);
      break;
    default:
      break;
  }
  return o;
}

start_pointers start_packed(const terms& t, const extent& e) {
  start_pointers o = {};
  switch (t.state) {
    case 1:
      o.stage = e.w - 16;
      o.bulk = o.third = e.w - 32;
      break;
    case 2:
      o.stage = o.third = e.n - e.w;
      o.bulk = e.n - 2 * e.w;
      break;
    case 3:
      o.stage = e.n - 16;
      o.bulk = e.n - e.w - 32;
      o.third = e.n - 32;
      break;
    default:
      break;
  }
  return {2 * o.stage, 0, 2 * o.bulk, 0, 2 * o.third};
}

// RGB32 starts at double size as at its own.
start_pointers start_rgb(const terms& t, const extent& e, out_format format) {
  const bool doubled = t.doubled && format == out_format::rgb24;
  const int64_t tile = doubled ? 32 : t.shrunk ? 8 : 16, group = doubled ? 64 : 32;
  const int64_t bytes = bytes_per_pixel(format);
  start_pointers o = {};
  switch (t.state) {
    case 0:
      o.stage = e.n - e.w;
      o.bulk = e.n - (doubled ? 4 : 2) * e.w;
      break;
    case 1:
      o.stage = e.n - tile;
      o.bulk = e.n - group - (doubled ? 3 : 1) * e.w;
      break;
    case 3:
      o.stage = e.w - tile;
      o.bulk = e.w - group;
      break;
    default:
      break;
  }
  return {bytes * o.stage, 0, bytes * o.bulk, 0, 0};
}

}  // namespace

bool rebuild_output_plan(ppl_context* c) {
  const terms t = terms_of(c);
  plan_i420(t, &c->plan);
  plan_packed(t, &c->plan);
  plan_rgb24(t, &c->plan);
  plan_rgb32(t, &c->plan);
  return true;
}

start_pointers start_pointers_of(const ppl_context* c, out_format format) {
  const terms t = terms_of(c);
  const extent e = {c->out_width, c->out_pixels, c->out_quarter_pixels};
  switch (format) {
    case out_format::i420:
      return start_i420(t, e);
    case out_format::yuyv:
    case out_format::uyvy:
      return start_packed(t, e);
    case out_format::rgb24:
    case out_format::rgb32:
      return start_rgb(t, e, format);
  }
  return {};
}

int64_t output_bytes(const ppl_context* c, out_format format) {
  return frame_bytes(format, static_cast<uint32_t>(c->out_width), static_cast<uint32_t>(c->out_height));
}

}  // namespace ppl
