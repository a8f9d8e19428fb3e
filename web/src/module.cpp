// The tuning page's side of its module: the library's helpers and the table of controls, as functions that JavaScript
// can call. The library's own functions are exported beside them. Pointers are addresses in the module's memory.
#include <ppl.h>

#include "helpers/ppl_auto.h"
#include "helpers/ppl_check.h"
#include "helpers/ppl_prepare.h"
#include "helpers/ppl_qualities.h"
#include "tools/control_table.h"

#define PAGE(name) extern "C" __attribute__((export_name("page_" #name), visibility("default")))

// ---- The table of controls

PAGE(control_count) uint32_t page_control_count() {
  return tool::control_count;
}
// 0 key, 1 option, 2 property, 3 group, 4 what, 5 values
PAGE(control_text) const char* page_control_text(uint32_t i, uint32_t which) {
  const tool::Control& c = tool::all_controls[i];
  const char* const texts[] = {c.key, c.option, c.property, c.group, c.what, c.values};
  return texts[which];
}
// 0 kind (0 flag, 1 number, 2 numbers), 1 count, 2 low, 3 high, 4 and on the defaults
PAGE(control_number) int32_t page_control_number(uint32_t i, uint32_t which) {
  const tool::Control& c = tool::all_controls[i];
  switch (which) {
    case 0:
      return static_cast<int32_t>(c.kind);
    case 1:
      return static_cast<int32_t>(c.count);
    case 2:
      return c.low;
    case 3:
      return c.high;
    default:
      return c.standard[which - 4];
  }
}
PAGE(set_control) uint32_t page_set_control(ppl_context* context, uint32_t i, const int32_t* values) {
  return tool::all_controls[i].set(context, values);
}
PAGE(lens_text) const char* page_lens_text(uint32_t i, uint32_t which) {
  const tool::LensNumber& n = tool::lens_numbers[i];
  return which == 0 ? n.key : which == 1 ? n.option : n.what;
}
PAGE(lens_number) int32_t page_lens_number(uint32_t i, uint32_t which) {
  const tool::LensNumber& n = tool::lens_numbers[i];
  return which == 0 ? n.low : which == 1 ? n.high : n.standard;
}

// ---- What makes a picture

PAGE(quality_name) const char* page_quality_name(uint32_t quality) {
  return ppl_quality_name(quality);
}
PAGE(quality_summary) const char* page_quality_summary(uint32_t quality) {
  return ppl_quality_summary(quality);
}
PAGE(leaves_colours) uint32_t page_leaves_colours(uint32_t quality) {
  return static_cast<uint32_t>(ppl_quality_leaves_colours(quality));
}
PAGE(is_pale_in_rgb) uint32_t page_is_pale_in_rgb(uint32_t quality) {
  return static_cast<uint32_t>(ppl_quality_is_pale_in_rgb(quality));
}

static ppl_plan plan_of(uint32_t quality, uint32_t medium, uint32_t format, int32_t size, uint32_t h_mirror,
                        uint32_t v_mirror, uint32_t width, uint32_t height) {
  ppl_plan plan = ppl_plan_frame(PPL_CALL_FRAME, format, static_cast<uint8_t>(quality), width, height);
  plan.decimation = size;
  plan.medium_filter = medium != 0;
  plan.h_mirror = h_mirror != 0;
  plan.v_mirror = v_mirror != 0;
  return plan;
}
// 0 if the call makes a whole picture, or the reason why not.
PAGE(check)
uint32_t page_check(uint32_t quality, uint32_t medium, uint32_t format, int32_t size, uint32_t h_mirror,
                    uint32_t v_mirror, uint32_t width, uint32_t height) {
  const ppl_plan plan = plan_of(quality, medium, format, size, h_mirror, v_mirror, width, height);
  const ppl_verdict verdict = ppl_check(&plan);
  return verdict.whole ? 0 : verdict.reason;
}
PAGE(reason) const char* page_reason(uint32_t reason) {
  return ppl_reason_text(reason);
}

// ---- From the sensor's frame to the mosaic

static ppl_sensor_frame sensor(uint32_t width, uint32_t height, uint32_t stride, int pattern, int layout,
                               uint32_t bits) {
  ppl_sensor_frame f = {};
  f.width = width;
  f.height = height;
  f.stride = stride;
  f.pattern = pattern;
  f.layout = layout;
  f.bits = layout == PPL_WORDS_LITTLE || layout == PPL_WORDS_BIG ? bits : 0;
  return f;
}
PAGE(sensor_reason)
uint32_t page_sensor_reason(uint32_t width, uint32_t height, uint32_t stride, int pattern, int layout,
                            uint32_t bits) {
  const ppl_sensor_frame f = sensor(width, height, stride, pattern, layout, bits);
  return static_cast<uint32_t>(ppl_sensor_frame_reason(&f));
}
PAGE(sensor_sentence) const char* page_sensor_sentence(uint32_t reason) {
  return ppl_prepare_sentence(static_cast<int>(reason));
}
// The bytes of a frame in the file, and those of a row; for shapes without a reason against them.
PAGE(sensor_bytes) double page_sensor_bytes(uint32_t width, uint32_t height, uint32_t stride, int layout) {
  const ppl_sensor_frame f = sensor(width, height, stride, PPL_BGGR, layout, 16);
  return static_cast<double>(ppl_sensor_frame_bytes(&f));
}
PAGE(sensor_row_bytes) uint32_t page_sensor_row_bytes(uint32_t width, int layout) {
  const ppl_sensor_frame f = sensor(width, 2, 0, PPL_BGGR, layout, 16);
  return ppl_sensor_row_bytes(&f);
}
PAGE(prepare)
uint32_t page_prepare(const uint8_t* source, uint32_t width, uint32_t height, uint32_t stride, int pattern,
                      int layout, uint32_t bits, uint8_t* out, uint32_t out_width, uint32_t out_height) {
  const ppl_sensor_frame f = sensor(width, height, stride, pattern, layout, bits);
  return static_cast<uint32_t>(
      ppl_prepare_region(&f, source, PPL_TO_8_ROUND, nullptr, 0, 0, out_width, out_height, out, out_width));
}
// Rows of the mosaic, back to back: the library overwrites what it is given.
PAGE(copy)
void page_copy(const uint8_t* mosaic, uint32_t stride, uint32_t width, uint32_t height, uint8_t* out) {
  ppl_copy_rectangle(out, width, mosaic, stride, width, height);
}
PAGE(sample) uint32_t page_sample(int layout, const uint8_t* row, uint32_t x) {
  return ppl_sensor_sample(layout, row, x);
}

// ---- Frames beyond the library's limits, in parts

static ppl_part parts[PPL_MOST_PARTS];
PAGE(plan_parts) uint32_t page_plan_parts(uint32_t width, uint32_t height, int size) {
  return ppl_plan_parts(width, height, size, parts, PPL_MOST_PARTS);
}
PAGE(part) uint32_t page_part(uint32_t i, uint32_t which) {
  const uint32_t numbers[] = {parts[i].x, parts[i].y, parts[i].width, parts[i].height};
  return numbers[which];
}
PAGE(part_source) void page_part_source(uint32_t i, const uint8_t* mosaic, uint32_t stride, uint8_t* out) {
  const ppl_part& p = parts[i];
  ppl_copy_rectangle(out, p.width, mosaic + static_cast<size_t>(p.y) * stride + p.x, stride, p.width,
                     p.height);
}
PAGE(part_join)
void page_part_join(uint32_t i, uint32_t width, uint32_t height, int format, int size, int h_mirror,
                    int v_mirror, const uint8_t* picture, uint8_t* whole) {
  ppl_join_part(&parts[i], width, height, format, size, h_mirror, v_mirror, picture, whole);
}

// ---- Helpers that find settings

static ppl_auto_sample sample;
static uint32_t lens_scratch[768];

// Gains of R, G, B; 0 if the frame does not say. `daylight` are the gains that suit the sensor in daylight.
PAGE(white)
int32_t page_white(const uint8_t* mosaic, uint32_t width, uint32_t height, const uint32_t* black,
                   const uint32_t* daylight, uint32_t* gains) {
  ppl_auto_curve curve;
  ppl_auto_balance balance;
  ppl_auto_daylight_curve(&curve, daylight[0], daylight[1], daylight[2]);
  ppl_auto_take_frame(&sample, mosaic, width, height, width, black[0], black[1], black[2], black[3]);
  if (!ppl_auto_white(&curve, &sample, &balance)) return 0;
  for (int i = 0; i < 3; ++i) gains[i] = balance.gain[i];
  return static_cast<int32_t>(balance.spread) + 1;
}
// Origin x, y, f1 and its shift, f2 and its shift, the factor in the corner.
PAGE(fit_lens)
int32_t page_fit_lens(const uint8_t* mosaic, uint32_t width, uint32_t height, int32_t* found) {
  ppl_auto_lens lens;
  // The library corrects shading before it subtracts the black level, so the level stays in.
  if (!ppl_auto_fit_lens(mosaic, width, height, width, 0, 0, 0, 0, lens_scratch, &lens)) return 0;
  const int32_t numbers[] = {lens.origin_x,
                             lens.origin_y,
                             lens.f1,
                             lens.f1_rshift_count,
                             lens.f2,
                             lens.f2_rshift_count,
                             static_cast<int32_t>(lens.corner)};
  for (int i = 0; i < 7; ++i) found[i] = numbers[i];
  return 1;
}
// Gains that turn the square of `size` samples about a point grey; 0 where it is too dark or cut.
PAGE(grey)
int32_t page_grey(const uint8_t* mosaic, uint32_t width, uint32_t height, uint32_t x, uint32_t y,
                  uint32_t size, const uint32_t* black, uint32_t* gains) {
  uint32_t left = x > size / 2 ? x - size / 2 : 0, top = y > size / 2 ? y - size / 2 : 0;
  if (left + size > width) left = width > size ? width - size : 0;
  if (top + size > height) top = height > size ? height - size : 0;
  if (left + size > width || top + size > height) return 0;
  ppl_auto_balance balance;
  if (!ppl_auto_grey(mosaic, width, left & ~1u, top & ~1u, size, size, black[0], black[1], black[2], black[3],
                     &balance))
    return 0;
  for (int i = 0; i < 3; ++i) gains[i] = balance.gain[i];
  return 1;
}

// ---- For the eye

static uint32_t cut(int32_t v) {
  return static_cast<uint32_t>(v < 0 ? 0 : v > 255 ? 255 : v);
}
static uint32_t rgba(uint32_t r, uint32_t g, uint32_t b) {
  return 0xff000000u | b << 16 | g << 8 | r;
}
// Y with u = B - Y and v = R - Y. Green is (1000 y - 509 v - 194 u + 500) / 1000: an eighth of it by 125, which for
// what can occur, below 43,200, is times 33555 / 2^22.
static uint32_t yuv_pixel(int32_t y, int32_t u, int32_t v) {
  const int32_t n = 1000 * y - 509 * v - 194 * u + 500;
  const uint32_t g = (static_cast<uint32_t>(n < 0 ? 0 : n) >> 3) * 33555u >> 22;
  return rgba(cut(y + v), g > 255 ? 255 : g, cut(y + u));
}

// A frame of the library as pixels of a canvas.
PAGE(pixels)
void page_pixels(uint32_t format, const uint8_t* frame, uint32_t width, uint32_t height, uint32_t* out) {
  const size_t n = static_cast<size_t>(width) * height;
  for (uint32_t y = 0; y < height; ++y) {
    uint32_t* __restrict to = out + static_cast<size_t>(y) * width;
    if (format == PPL_FORMAT_I420) {
      const uint8_t* luma = frame + static_cast<size_t>(y) * width;
      const uint8_t* u = frame + n + static_cast<size_t>(y / 2) * (width / 2);
      const uint8_t* v = u + n / 4;
      for (uint32_t x = 0; x < width / 2; ++x) {
        to[2 * x] = yuv_pixel(luma[2 * x], u[x] - 128, v[x] - 128);
        to[2 * x + 1] = yuv_pixel(luma[2 * x + 1], u[x] - 128, v[x] - 128);
      }
    } else if (!ppl_format_is_rgb(format)) {
      const uint32_t luma = format == PPL_FORMAT_UYVY, chroma = 1 - luma;
      const uint8_t* pairs = frame + 2 * static_cast<size_t>(y) * width;
      for (uint32_t x = 0; x < width / 2; ++x) {
        const int32_t u = pairs[4 * x + chroma] - 128, v = pairs[4 * x + chroma + 2] - 128;
        to[2 * x] = yuv_pixel(pairs[4 * x + luma], u, v);
        to[2 * x + 1] = yuv_pixel(pairs[4 * x + luma + 2], u, v);
      }
    } else if (format == PPL_FORMAT_RGB24) {
      typedef uint8_t bytes16 __attribute__((vector_size(16)));
      typedef bytes16 anywhere __attribute__((aligned(1), may_alias));
      const uint8_t* bgr = frame + 3 * static_cast<size_t>(height - 1 - y) * width;
      const bytes16 opaque = {0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255};
      uint32_t x = 0;
      for (; x + 6 <= width; x += 4) {  // the load reads a third of a pixel beyond the fifth
        const bytes16 v = *reinterpret_cast<const anywhere*>(bgr + 3 * x);
        const bytes16 turned =
            __builtin_shufflevector(v, bytes16{}, 2, 1, 0, 16, 5, 4, 3, 16, 8, 7, 6, 16, 11, 10, 9, 16);
        *reinterpret_cast<anywhere*>(to + x) = turned | opaque;
      }
      for (; x < width; ++x) to[x] = rgba(bgr[3 * x + 2], bgr[3 * x + 1], bgr[3 * x]);
    } else {
      const uint8_t* bgr = frame + 4 * static_cast<size_t>(height - 1 - y) * width;
      for (uint32_t x = 0; x < width; ++x) to[x] = rgba(bgr[4 * x + 2], bgr[4 * x + 1], bgr[4 * x]);
    }
  }
}
// The mosaic, every sample in its own colour.
PAGE(mosaic_pixels)
void page_mosaic_pixels(const uint8_t* mosaic, uint32_t stride, uint32_t width, uint32_t height,
                        uint32_t* out) {
  for (uint32_t y = 0; y < height; ++y)
    for (uint32_t x = 0; x < width; ++x) {
      const uint32_t v = mosaic[static_cast<size_t>(y) * stride + x];
      out[static_cast<size_t>(y) * width + x] = ((x ^ y) & 1) ? rgba(0, v, 0)
                                                : (y & 1)     ? rgba(v, 0, 0)
                                                              : rgba(v / 4, v / 4, v);
    }
}
