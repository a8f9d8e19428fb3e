// Controls, geometry and Bayer frame calls in any order, at any level, with buffers that end where the header says.
#include <stddef.h>
#include <stdint.h>

#include <algorithm>
#include <memory>

#include "fuzz/controls.h"
#include "fuzz/frame_size.h"
#include "fuzz/subject.h"
#include "tests/support/bayer_exports.h"

namespace {

using namespace fuzz;

// By form: the decimation set (2: none), widths a stride, and the last-resort picture's size as a shift of the frame's.
constexpr int32_t kDecimations[] = {0, 1, -1, -1, 2};
constexpr uint32_t kStrides[] = {1, 1, 1, 2, 4};
constexpr int kSizeShifts[] = {0, -2, 2, 2, 2};

void call_frame(subject& s, input& in) {
  const auto which = in.ConsumeIntegralInRange(0, PPL_FORMATS - 1);
  const uint32_t width = side(in), height = side(in), pitch = stride(in, width);
  geometry after = s.size;
  const bool taken = after.take(width, height, pitch);
  const int64_t bytes = taken ? after.out_bytes(static_cast<format>(which)) : 0;
  if (bytes > kMostBytes) return;
  s.size = after;
  const exact source(taken ? size_t{pitch} * height : 0, alignment(in), in.ConsumeIntegral<uint8_t>());
  const exact destination(static_cast<size_t>(bytes), alignment(in), 0);
  const int null = in.ConsumeIntegralInRange(0, 31);
  support::kFrameCalls[which](s.context, null == 1 ? nullptr : source.at(),
                              null == 2 ? nullptr : destination.at(), width, height, pitch);
}

void call_wrapper(subject& s, input& in) {
  const auto which = in.ConsumeIntegralInRange(0, PPL_FORMATS - 1), form = in.ConsumeIntegralInRange(0, 4);
  const uint32_t width = side(in), height = side(in), pitch = kStrides[form] * width;
  const int null =
      in.ConsumeIntegralInRange(0, 31);  // which buffer is a null pointer, which counts as aligned
  const size_t source_offset = null == 1 ? 0 : alignment(in), offset = null == 2 ? 0 : alignment(in);
  const auto as = static_cast<format>(which);
  int64_t source_bytes = 0, bytes = 0;
  geometry after = s.size;
  if (((source_offset | offset) & 7) != 0) {
    const uint32_t n = width * height;
    const int64_t m = kSizeShifts[form] < 0 ? n >> 2 : n << kSizeShifts[form];
    source_bytes = as < format::rgb24 ? m : 0;
    bytes = as == format::rgb24 ? 3 * m : as == format::rgb32 ? 4 * m : m + m / 2;
  } else {
    if (kDecimations[form] != 2) after.decimate(kDecimations[form], 0, 0);
    if (after.take(width, height, pitch)) {
      source_bytes = int64_t{pitch} * height;
      bytes = after.out_bytes(as);
    }
  }
  if (std::max(bytes, source_bytes) > kMostBytes) return;
  s.size = after;
  const exact source(static_cast<size_t>(source_bytes), source_offset, in.ConsumeIntegral<uint8_t>());
  const exact destination(static_cast<size_t>(bytes), offset, 0);
  support::kWrappers[which][form](s.context, null == 1 ? nullptr : source.at(),
                                  null == 2 ? nullptr : destination.at(), width, height);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  input in(data, size);
  subject s(in);
  // Most pictures need a size that calls agree on: every second run takes one up.
  while (in.remaining_bytes() > 0) switch (in.ConsumeIntegralInRange(0, 9)) {
      case 0:
      case 1:
      case 2:
        any_control(s.context, in);
        break;
      case 3:
        ppl_set_quality(s.context, in.ConsumeIntegralInRange<uint32_t>(0, PPL_QUALITIES - 1));
        break;
      case 4:
        s.decimate(in);
        break;
      case 5:
        s.lens(in);
        break;
      case 6:
        call_wrapper(s, in);
        break;
      default:
        call_frame(s, in);
    }
  return 0;
}
