#include "frame.h"

#include <cstring>

#include "bulk.h"
#include "canvas.h"
#include "place.h"
#include "raw.h"
#include "reconstruct.h"
#include "scaler.h"

namespace ref {
namespace {

bool aligned(const uint8_t* a, const uint8_t* b, uintptr_t to) {
  return (reinterpret_cast<uintptr_t>(a) | reinterpret_cast<uintptr_t>(b)) % to == 0;
}

thread_local std::vector<int64_t> last_open_bytes;

// Entry of the scale table, or -1 for a quality that is only counted in this format.
int scale_entry(const state& s, format kind) {
  const bool medium = s.medium_filter_enabled != 0;
  switch (s.quality) {
    case 0:
      return medium ? 15 : 0;
    case 1:
      return medium ? 16 : 4;
    case 2:
      return medium ? 17 : 5;
    case 3:
      return s.decimation == 2 ? -1 : 6;
    case 10:
      return 11;
    case 11:
      return 12;
    case 12:
      return 7;
    case 13:
      return s.decimation == 2 || (kind != format::i420 && kind != format::rgb24) ? -1 : 8;
    case 15:
      return kind == format::rgb32 ? -1 : 14;
    default:
      return -1;
  }
}

// Whether a frame of a path that runs reads a null source or writes to a null destination. The raw path reads no more
// than it writes; all others work on the source whatever becomes of the picture.
bool follows_null(const state& s, format kind, const uint8_t* source, const uint8_t* destination,
                  int64_t size) {
  if (s.quality != 4 && s.quality != 9)
    return (s.frame_width > 0 && s.frame_height > 0 && !source) || (size > 0 && !destination);
  if (size == 0) return false;
  const bool draws = s.decimation == 0 || (s.decimation == 1 && kind != format::rgb24);
  const bool marks =
      kind == format::i420 && s.out_width >= 160 && s.out_width / 10 % 16 == 0 && s.out_height >= 12;
  return (draws && !source) || ((draws || marks) && !destination);
}

bool dispatch(state& s, format kind, uint8_t* source, uint8_t* destination) {
  ++s.n_frame;
  if (s.frame_stride < s.frame_width) return true;
  const bool raw = s.quality == 4 || s.quality == 9;
  const int entry = scale_entry(s, kind);
  if (!raw && entry < 0) return true;

  const int64_t size = frame_bytes(kind, s.out_width, s.out_height);
  if (follows_null(s, kind, source, destination, size)) return true;
  const int times = s.decimation < 0 ? 2 : 1;
  canvas out(destination, destination ? size : 0,  // none is written to where it is null
             2 * frame_bytes(kind, times * s.frame_width, times * s.frame_height) + 65536);
  if (raw) {
    raw_picture(s, kind, source, out);
  } else if (s.quality == 3) {
    cell_frame(s, kind, source, out);
  } else if (s.quality == 13) {
    grey_frame(s, kind, source, out);
  } else {
    placing how;
    how.kind = kind;
    how.quality = s.quality;
    how.medium_filter = s.medium_filter_enabled != 0;
    how.plan = {s.out_width,     s.decimation, s.h_mirror != 0,
                s.v_mirror != 0, s.out_pixels, s.out_quarter_pixels};
    place(reconstruct(s, source, kind), how, out);
  }
  out.commit();
  last_open_bytes = out.open_bytes();
  if (!raw) s.stats_scale = s.stats_scale_table[size_t(entry)];
  return !raw;
}

bool resized(state& s, uint32_t width, uint32_t height, uint32_t stride) {
  const bool same = width == uint32_t(s.frame_width) && height == uint32_t(s.frame_height) &&
                    stride == uint32_t(s.frame_stride);
  return same || s.new_frame_size(width, height, stride);
}

bool is_rgb(format kind) {
  return kind == format::rgb24 || kind == format::rgb32;
}

void last_resort(format kind, const uint8_t* source, uint8_t* destination, uint32_t n) {
  if (!destination || (!is_rgb(kind) && !source)) return;
  if (is_rgb(kind)) {
    std::memset(destination, 255, n);
    return;
  }
  std::memcpy(destination, source, n);
  std::memset(destination + n, 128, n >> 1);
}

}  // namespace

bool picture_is_open(const state& s, format kind) {
  const bool bulk = s.quality == 3 || s.quality == 13;
  if (!bulk) return false;
  const int T = s.frame_width / 16, N = s.frame_height / 2;
  if (kind == format::i420 && s.decimation < 0 && s.out_height < 2 * s.frame_height) return true;
  const bool halves = s.decimation > 0 || (s.quality == 13 && s.decimation != 0);
  return halves ? T % 4 != 0 || N % 2 != 0 : T % 2 != 0;
}

const std::vector<int64_t>& open_bytes() {
  return last_open_bytes;
}

bool process_frame(state& s, format kind, uint8_t* source, uint8_t* destination, uint32_t width,
                   uint32_t height, uint32_t stride) {
  last_open_bytes.clear();
  if (!resized(s, width, height, stride)) return false;
  s.clear_statistics();
  bool result = true;
  if (aligned(source, destination, 16) && !s.P3_only) result = dispatch(s, kind, source, destination);
  s.roll_up();
  return result;
}

bool wrapper(state& s, format kind, ending name, uint8_t* source, uint8_t* destination, uint32_t width,
             uint32_t height) {
  last_open_bytes.clear();
  const uint32_t wh = width * height;
  if (!aligned(source, destination, 8)) {
    uint32_t n = 0;
    switch (name) {
      case ending::none:
        n = wh;
        break;
      case ending::deci_2_1:
        n = wh >> 2;
        break;
      default:
        n = 4 * wh;
        break;
    }
    if (kind == format::rgb24) n *= 3;
    if (kind == format::rgb32) n *= 4;
    last_resort(kind, source, destination, n);
    return false;
  }
  uint32_t stride = width;
  int32_t d = 0;
  switch (name) {
    case ending::none:
      break;
    case ending::deci_2_1:
      d = 1;
      break;
    case ending::intp_1_2:
      d = -1;
      break;
    case ending::intp_1_2_stride:
      d = -1;
      stride = 2 * width;
      break;
    case ending::intp_1_4_stride:
      d = -2;
      stride = 4 * width;
      break;
  }
  s.set_decimation(d, 0, 0);
  return process_frame(s, kind, source, destination, width, height, stride);
}

bool scaling_wrapper(state& s, format kind, uint8_t* source, uint32_t width, uint32_t height, uint32_t stride,
                     uint8_t* destination, uint32_t out_width, uint32_t out_height, uint8_t* scratch) {
  last_open_bytes.clear();
  const uint32_t n = out_width * out_height;
  if (is_rgb(kind)) {
    last_resort(kind, source, destination, n * (kind == format::rgb24 ? 3 : 4));
    return false;
  }
  if (!aligned(source, destination, 8)) {
    last_resort(kind, source, destination, n);
    return false;
  }
  s.set_decimation(0, 0, 0);
  last_open_bytes.clear();
  if (!resized(s, width, height, stride)) return false;
  s.clear_statistics();
  bool result = true;
  if (aligned(source, scratch, 16) && !s.P3_only) {
    const int64_t written = frame_bytes(kind, s.out_width, s.out_height);
    const int64_t behind = frame_bytes(kind, int32_t(out_width), int32_t(out_height));
    const bool resamples = (kind == format::i420 || kind == format::yuyv) && behind > 0;
    if (!source || !scratch || (resamples && !destination)) {
      ++s.n_frame;
      s.roll_up();
      return true;
    }
    result = dispatch(s, kind, source, scratch);
    if (kind == format::i420) {
      const auto plane = [&](int64_t from, int64_t to, uint32_t shift) {
        const scaler_planes planes = {scratch + from, written - from, destination + to, behind - to};
        result &=
            scale_planar(planes, width >> shift, height >> shift, out_width >> shift, out_height >> shift);
      };
      plane(0, 0, 0);
      plane(s.frame_pixels, n, 1);
      plane(int64_t(s.frame_pixels) + s.frame_pixels_quarter, int64_t(n) + (n >> 2), 1);
    }
    if (kind == format::yuyv) {
      const scaler_planes planes = {scratch, written + 4, destination, behind};
      result &= scale_packed(planes, 2 * width, height, 2 * out_width, out_height);
    }
  }
  s.roll_up();
  return result;
}

}  // namespace ref
