// The thirty exports by name: a test of the buffers for 8-byte alignment, with a last-resort picture where it fails;
// the decimation that the name promises; and for I420 and YUYV a scaling pass after the frame call.
#include "frame/frame_call.h"
#include "frame/scaler.h"
#include "record/output_plan.h"

namespace ppl {
namespace {

// Last resort of the YUV formats: n source bytes, then half as many of 128. Only the export's promise gives the size,
// even where the source is smaller. No picture without both buffers.
uint8_t raw_picture(const uint8_t* source, uint8_t* destination, uint32_t n) {
  if (source == nullptr || destination == nullptr) return 0;
  for (uint32_t i = 0; i < n; ++i) destination[i] = source[i];
  for (uint32_t i = 0; i < n >> 1; ++i) destination[int64_t{n} + i] = 128;
  return 0;
}

// Last resort of the RGB formats: white.
uint8_t white_picture(uint8_t* destination, uint32_t n) {
  if (destination == nullptr) return 0;
  for (uint32_t i = 0; i < n; ++i) destination[i] = 255;
  return 0;
}

// Sizes of the last resorts, by the frame's size factor: 0 same, 1 half, -1 double. All wrap in 32 bits.
uint32_t yuv_bytes(uint32_t width, uint32_t height, int factor) {
  const uint32_t n = width * height;
  return factor > 0 ? n >> 2 : factor < 0 ? 4 * n : n;
}
uint32_t white_bytes(out_format format, uint32_t width, uint32_t height, int factor) {
  const uint32_t n = width * height, pixel = format == out_format::rgb24 ? 3 : 4;
  return pixel * (factor > 0 ? n >> 2 : factor < 0 ? 4 * n : n);
}

struct promise {
  int32_t decimation;
  int factor;       // of the last resort's size
  uint32_t stride;  // in widths
};
constexpr promise kSame = {0, 0, 1};
constexpr promise kHalf = {1, 1, 1};
constexpr promise kDouble = {-1, -1, 1};
constexpr promise kDoubleStride = {-1, -1, 2};
// Decimation -2 is refused: the frame runs at the decimation in force, at four times the stride.
constexpr promise kQuadrupleStride = {-2, -1, 4};

uint8_t run_promised(ppl_context* c, out_format format, const promise& p, uint8_t* source,
                     uint8_t* destination, uint32_t width, uint32_t height) {
  if (!aligned(8, source, destination)) {
    const bool rgb = format == out_format::rgb24 || format == out_format::rgb32;
    return rgb ? white_picture(destination, white_bytes(format, width, height, p.factor))
               : raw_picture(source, destination, yuv_bytes(width, height, p.factor));
  }
  ppl_set_decimation(c, p.decimation, 0, 0);
  return run_frame_call(c, format, {source, destination, width, height, width * p.stride, false}).ok;
}

// ---- scaled frame calls

struct scaled_call {
  uint8_t* source;
  uint32_t width, height, stride;
  uint8_t* destination;
  uint32_t out_width, out_height;
  uint8_t* scratch;  // receives the frame at input size
};

// What the frame call is told. A scaled call needs all its buffers before it starts; the destination, of `bytes`
// bytes, is one of them where the format is resampled.
bayer_call frame_of(const scaled_call& s, int64_t bytes) {
  const bool lacks = s.source == nullptr || s.scratch == nullptr || (bytes > 0 && s.destination == nullptr);
  return {s.source, s.scratch, s.width, s.height, s.stride, lacks};
}

bool ppl_process_blrtoi420_scaled(ppl_context* c, const scaled_call& s) {
  const int64_t bytes = frame_bytes(out_format::i420, s.out_width, s.out_height);
  const call_result r = run_frame_call(c, out_format::i420, frame_of(s, bytes));
  if (!r.ran) return r.ok;
  const uint8_t* const scratch_end = s.scratch + output_bytes(c, out_format::i420);
  const uint32_t n = s.out_width * s.out_height;
  uint8_t* const end = s.destination + bytes;
  const uint8_t* const u = s.scratch + c->frame_pixels;
  uint8_t* const to_u = s.destination + n;
  const uint32_t w = s.width / 2, h = s.height / 2, ow = s.out_width / 2, oh = s.out_height / 2;
  bool ok = r.ok;
  ok &= frame_scaler_planar(
      c, {s.scratch, scratch_end, s.width, s.height, s.destination, end, s.out_width, s.out_height});
  ok &= frame_scaler_planar(c, {u, scratch_end, w, h, to_u, end, ow, oh});
  ok &=
      frame_scaler_planar(c, {u + c->frame_pixels_quarter, scratch_end, w, h, to_u + (n >> 2), end, ow, oh});
  return ok;
}

bool ppl_process_blrtoyuyv_scaled(ppl_context* c, const scaled_call& s) {
  const int64_t bytes = frame_bytes(out_format::yuyv, s.out_width, s.out_height);
  const call_result r = run_frame_call(c, out_format::yuyv, frame_of(s, bytes));
  if (!r.ran) return r.ok;
  // The last pixel of a row reads 4 bytes more: the caller provides them after the frame.
  const uint8_t* const scratch_end = s.scratch + output_bytes(c, out_format::yuyv) + 4;
  return r.ok & frame_scaler_packed(c, {s.scratch, scratch_end, 2 * s.width, s.height, s.destination,
                                        s.destination + bytes, 2 * s.out_width, s.out_height});
}

// There is no scaler for UYVY: the frame stays in scratch.
bool ppl_process_blrtouyvy_scaled(ppl_context* c, const scaled_call& s) {
  return run_frame_call(c, out_format::uyvy, frame_of(s, 0)).ok;
}

using scaled_frame_call = bool (*)(ppl_context*, const scaled_call&);
uint8_t scale(ppl_context* c, scaled_frame_call call, const scaled_call& s) {
  if (!aligned(8, s.source, s.destination))
    return raw_picture(s.source, s.destination, s.out_width * s.out_height);
  ppl_set_decimation(c, 0, 0, 0);
  return call(c, s);
}

}  // namespace
}  // namespace ppl

#define PPL_WRAPPER(name, format, promised)                                                               \
  uint8_t name(ppl_context* context, uint8_t* source, uint8_t* destination, uint32_t width,               \
               uint32_t height) {                                                                         \
    return ppl::run_promised(context, ppl::out_format::format, ppl::promised, source, destination, width, \
                             height);                                                                     \
  }
#define PPL_WRAPPERS(name, format)                           \
  PPL_WRAPPER(name, format, kSame)                           \
  PPL_WRAPPER(name##_deci_2_1, format, kHalf)                \
  PPL_WRAPPER(name##_intp_1_2, format, kDouble)              \
  PPL_WRAPPER(name##_intp_1_2_stride, format, kDoubleStride) \
  PPL_WRAPPER(name##_intp_1_4_stride, format, kQuadrupleStride)
PPL_WRAPPERS(BaylorToI420MMX, i420)
PPL_WRAPPERS(BaylorToYUYVMMX, yuyv)
PPL_WRAPPERS(BaylorToUYVYMMX, uyvy)
PPL_WRAPPERS(BaylorToRGB24MMX, rgb24)
PPL_WRAPPERS(BaylorToRGB32MMX, rgb32)
#undef PPL_WRAPPERS
#undef PPL_WRAPPER

#define PPL_SCALING_WRAPPER(name, call)                                                                 \
  uint8_t name(ppl_context* context, uint8_t* source, uint32_t width, uint32_t height, uint32_t stride, \
               uint8_t* destination, uint32_t out_width, uint32_t out_height, uint8_t* scratch) {       \
    return ppl::scale(context, ppl::call,                                                               \
                      {source, width, height, stride, destination, out_width, out_height, scratch});    \
  }
PPL_SCALING_WRAPPER(BaylorToI420MMX_scaling_stride, ppl_process_blrtoi420_scaled)
PPL_SCALING_WRAPPER(BaylorToYUYVMMX_scaling_stride, ppl_process_blrtoyuyv_scaled)
PPL_SCALING_WRAPPER(BaylorToUYVYMMX_scaling_stride, ppl_process_blrtouyvy_scaled)
#undef PPL_SCALING_WRAPPER

// No RGB format has a scaled frame call: white, and false, whatever the alignment.
#define PPL_WHITE_WRAPPER(name, bytes)                                                     \
  uint8_t name(ppl_context*, uint8_t*, uint32_t, uint32_t, uint32_t, uint8_t* destination, \
               uint32_t out_width, uint32_t out_height, uint8_t*) {                        \
    return ppl::white_picture(destination, (bytes)*out_width * out_height);                \
  }
PPL_WHITE_WRAPPER(BaylorToRGB24MMX_scaling_stride, 3)
PPL_WHITE_WRAPPER(BaylorToRGB32MMX_scaling_stride, 4)
#undef PPL_WHITE_WRAPPER
