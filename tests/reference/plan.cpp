#include "plan.h"

namespace ref {
namespace {

int sign(bool mirror) {
  return mirror ? -1 : 1;
}

}  // namespace

luma_plan i420_plan(const plan_input& in) {
  const int W = in.width, d = in.decimation, s = sign(in.h_mirror), v = sign(in.v_mirror);
  const int m = d < 0 ? 2 : 1;
  const int less = in.h_mirror ? 16 : 0;
  const int R = d < 0 ? 4 : d == 0 ? 2 : 1;
  const int C = d < 0 ? 2 : 1;
  luma_plan p{};
  p.luma_tile_step = s * 16 * m;
  p.luma_row_step = v * R * W - s * W;
  p.luma_fill_1 = v * (2 * d - 1) * W - less;
  p.luma_fill_2 = v * (4 * d - 1) * W - less;
  p.luma_last_source = v * 2 * d * W;
  p.luma_last_target = v * (2 * d + 1) * W;
  p.chroma_tile_step = s * 16 * m;
  p.chroma_row_step = v * C * (W / 2) - s * (W / 2);
  p.chroma_fill = v * (2 * d - 1) * (W / 2);
  p.chroma_last_source = v * d * W;
  p.chroma_last_target = v * (2 * d + 1) * (W / 2);
  p.row_pitch = v * W;
  return p;
}

packed_plan yuyv_plan(const plan_input& in) {
  const luma_plan l = i420_plan(in);
  packed_plan p{};
  p.tile_step = sign(in.h_mirror) * 32 * (in.decimation < 0 ? 2 : 1);
  p.row_step = 2 * l.luma_row_step;
  p.fill_1 = 2 * l.luma_fill_1;
  p.fill_2 = 2 * l.luma_fill_2;
  p.last_source = 2 * l.luma_last_source;
  p.last_target = 2 * l.luma_last_target;
  p.row_pitch = 2 * l.row_pitch;
  return p;
}

rgb_plan rgb24_plan(const plan_input& in) {
  const int W = in.width, d = in.decimation, s = sign(in.h_mirror);
  const int r = in.v_mirror ? 1 : -1;
  rgb_plan p{};
  p.tile_step = d > 0 ? s * 24 : s * 48 * (d < 0 ? 2 : 1);
  const int t = p.tile_step;
  if (!in.h_mirror && !in.v_mirror) p.row_step = (d < 0 ? -15 : d == 0 ? -9 : -6) * W + t;
  if (in.h_mirror && !in.v_mirror) p.row_step = (d <= 0 ? -3 : 0) * W + t;
  if (!in.h_mirror && in.v_mirror) p.row_step = (d <= 0 ? 3 : 0) * W + t;
  if (in.h_mirror && in.v_mirror) p.row_step = (d < 0 ? 15 : d == 0 ? 9 : 6) * W + t;
  p.fill_1 = -r * 3 * (1 - 2 * d) * W;
  p.fill_2 = -r * 3 * (1 - 4 * d) * W;
  p.last_source = r * 6 * d * W;
  p.last_target = r * 3 * (2 * d + 1) * W;
  p.row_pitch = r * 3 * W;
  return p;
}

rgb_plan rgb32_plan(const plan_input& in) {
  const int W = in.width, d = in.decimation, s = sign(in.h_mirror);
  const int r = in.v_mirror ? 1 : -1;
  rgb_plan p{};
  p.tile_step = d > 0 ? s * 32 : s * 64;
  const int t = p.tile_step;
  if (!in.h_mirror && !in.v_mirror) p.row_step = (d > 0 ? -8 : -12) * W + t;
  if (in.h_mirror && !in.v_mirror) p.row_step = (d > 0 ? 0 : -4) * W + t;
  if (!in.h_mirror && in.v_mirror) p.row_step = (d > 0 ? 0 : 4) * W + t;
  if (in.h_mirror && in.v_mirror) p.row_step = (d > 0 ? 8 : 12) * W + t;
  p.row_pitch = r * 4 * W;
  return p;
}

bulk_plan bulk_i420_plan(const plan_input& in) {
  const int W = in.width, d = in.decimation, s = sign(in.h_mirror), v = sign(in.v_mirror);
  const int m = d < 0 ? 2 : 1;
  bulk_plan p{};
  p.left_offset = in.h_mirror ? 16 * m : 0;
  p.right_offset = in.h_mirror ? 0 : 16 * m;
  p.row_0_offset = in.v_mirror ? m * W : 0;
  p.row_1_offset = in.v_mirror ? 0 : m * W;
  p.group_step = s * 32 * m;
  p.row_step = v * (d < 0 ? 4 : 2) * W - s * W;
  p.chroma_group_step = s * 16 * m;
  p.chroma_row_step = i420_plan(in).chroma_row_step;
  return p;
}

bulk_plan bulk_rgb24_plan(const plan_input& in) {
  const int W = in.width, d = in.decimation, s = sign(in.h_mirror);
  const int m = d < 0 ? 2 : 1;
  bulk_plan p{};
  p.left_offset = in.h_mirror ? 48 * m : 0;
  p.right_offset = in.h_mirror ? 0 : 48 * m;
  p.row_0_offset = in.v_mirror ? 0 : 3 * m * W;
  p.row_1_offset = in.v_mirror ? 3 * m * W : 0;
  p.group_step = s * 96 * m;
  if (!in.h_mirror && !in.v_mirror) p.row_step = (d < 0 ? -15 : -9) * W;
  if (in.h_mirror && !in.v_mirror) p.row_step = (d < 0 ? -9 : -3) * W;
  if (!in.h_mirror && in.v_mirror) p.row_step = (d < 0 ? 9 : 3) * W;
  if (in.h_mirror && in.v_mirror) p.row_step = (d < 0 ? 15 : 9) * W;
  return p;
}

bulk_plan bulk_rgb32_plan(const plan_input& in) {
  const int W = in.width;
  bulk_plan p{};
  p.left_offset = in.h_mirror ? 64 : 0;
  p.right_offset = in.h_mirror ? 0 : 64;
  p.row_0_offset = in.v_mirror ? 0 : 4 * W;
  p.row_1_offset = in.v_mirror ? 4 * W : 0;
  p.group_step = sign(in.h_mirror) * 128;
  if (!in.h_mirror && !in.v_mirror) p.row_step = -12 * W;
  if (in.h_mirror && !in.v_mirror) p.row_step = -4 * W;
  if (!in.h_mirror && in.v_mirror) p.row_step = 4 * W;
  if (in.h_mirror && in.v_mirror) p.row_step = 12 * W;
  return p;
}

start stage_start(format f, const plan_input& in, int32_t out_pixels, int32_t out_quarter_pixels) {
  const int64_t W = in.width, N = out_pixels, Q = out_quarter_pixels;
  const int d = in.decimation;
  const bool h = in.h_mirror, v = in.v_mirror;
  start p;
  switch (f) {
    case format::i420:
      p.main = !v ? (h ? W - 16 : 0) : (h ? N - 16 : N - W);
      p.chroma = !v ? (h ? W / 2 - 16 : 0) : (h ? Q - 16 : Q - W / 2);
      break;
    case format::yuyv:
    case format::uyvy:
      p.main = !v ? (h ? W - 16 : 0) : (h ? N - 16 : N - W);
      break;
    case format::rgb24: {
      const int back = d < 0 ? 32 : d == 0 ? 16 : 8;
      p.main = !v ? (h ? N - back : N - W) : (h ? W - back : 0);
      break;
    }
    case format::rgb32: {
      const int back = d <= 0 ? 16 : 8;
      p.main = !v ? (h ? N - back : N - W) : (h ? W - back : 0);
      break;
    }
  }
  return p;
}

start bulk_start(format f, const plan_input& in, int32_t out_pixels, int32_t out_quarter_pixels) {
  const int64_t W = in.width, N = out_pixels, Q = out_quarter_pixels;
  const int d = in.decimation;
  const bool h = in.h_mirror, v = in.v_mirror;
  const int64_t a = d < 0 ? 64 : 32, c = d < 0 ? 32 : 16;
  start p;
  switch (f) {
    case format::i420:
      if (!v) {
        p.main = h ? W - a : 0;
        p.chroma = h ? W / 2 - c : 0;
      } else if (!h) {
        // The group's two rows are the last of the plane; at double size they are the last and last but two.
        p.main = N - W * (d < 0 ? 4 : 2);
        p.chroma = Q - (d < 0 ? W : W / 2);
      } else {
        p.main = N - a - (d < 0 ? 3 * W : W);
        p.chroma = Q - c - (d < 0 ? W / 2 : 0);
      }
      break;
    case format::yuyv:
    case format::uyvy:
      p.main = !v ? (h ? W - 32 : 0) : (h ? N - W - 32 : N - 2 * W);
      break;
    case format::rgb24:
      if (!v) {
        p.main = d < 0 ? (h ? N - a - 3 * W : N - 4 * W) : (h ? N - a - W : N - 2 * W);
      } else {
        p.main = h ? W - a : 0;
      }
      break;
    case format::rgb32:
      p.main = !v ? (h ? N - W - 32 : N - 2 * W) : (h ? W - 32 : 0);
      break;
  }
  return p;
}

}  // namespace ref
