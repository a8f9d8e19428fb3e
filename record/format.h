// The five output formats: their pixels, their byte order, the bytes of a frame.
#pragma once

#include <stdint.h>

namespace ppl {

enum class out_format : uint8_t { i420, yuyv, uyvy, rgb24, rgb32 };

// Of I420: a luma sample.
constexpr int bytes_per_pixel(out_format format) {
  switch (format) {
    case out_format::i420:
      return 1;
    case out_format::yuyv:
    case out_format::uyvy:
      return 2;
    case out_format::rgb24:
      return 3;
    case out_format::rgb32:
      break;
  }
  return 4;
}

constexpr bool is_rgb(out_format format) {
  return format == out_format::rgb24 || format == out_format::rgb32;
}
constexpr bool is_packed(out_format format) {
  return format == out_format::yuyv || format == out_format::uyvy;
}

// Packed 4:2:2: which byte of a 16-bit word is luma, the low one in YUYV, the high one in UYVY. Also the order of a
// source.
enum class byte_order : uint8_t { yuyv, uyvy };
constexpr int kByteOrders = 2;
constexpr byte_order order_of(out_format format) {
  return format == out_format::uyvy ? byte_order::uyvy : byte_order::yuyv;
}

// Bytes of a frame, for all calls. Heights include black line counts, which are not tested, so the product of width
// and height may wrap in 32 bits; bytes are counted in 64. A frame whose width, height or product is not positive has
// no bytes.
constexpr int64_t frame_bytes(out_format format, uint32_t width, uint32_t height) {
  const int64_t pixels = static_cast<int32_t>(width * height);
  if (static_cast<int32_t>(width) <= 0 || static_cast<int32_t>(height) <= 0 || pixels <= 0) return 0;
  return format == out_format::i420 ? pixels + 2 * (pixels / 4) : bytes_per_pixel(format) * pixels;
}

// Whether all addresses are multiples of `step`, a power of two. Null is a multiple of everything.
template <class... Address>
bool aligned(uintptr_t step, const Address*... address) {
  return ((... | reinterpret_cast<uintptr_t>(address)) & (step - 1)) == 0;
}

}  // namespace ppl
