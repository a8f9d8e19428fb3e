// Scaled Bayer calls between any two sizes.
#include <stddef.h>
#include <stdint.h>

#include <algorithm>

#include "fuzz/frame_size.h"
#include "fuzz/subject.h"
#include "tests/support/bayer_exports.h"

namespace {

using namespace fuzz;

uint32_t out_side(input& in) {
  return in.ConsumeIntegralInRange(0, 7) == 0 ? in.ConsumeIntegralInRange<uint32_t>(0, 70000) : side(in);
}

void scale(subject& s, input& in) {
  const auto which = in.ConsumeIntegralInRange(0, PPL_FORMATS - 1);
  const auto as = static_cast<format>(which);
  const uint32_t width = side(in), height = side(in), pitch = stride(in, width);
  const uint32_t out_width = out_side(in), out_height = out_side(in);
  const int null =
      in.ConsumeIntegralInRange(0, 31);  // which buffer is a null pointer, which counts as aligned
  const size_t source_offset = null == 1 ? 0 : alignment(in);
  const size_t offset = null == 2 ? 0 : in.ConsumeIntegralInRange(0, 7) == 0 ? 1 : 8 * in.ConsumeBool();
  const size_t scratch_offset = alignment(in);
  const uint32_t n = out_width * out_height;
  int64_t source_bytes = 0, scratch_bytes = 0, bytes = 0;
  geometry after = s.size;
  if (as >= format::rgb24) {
    bytes = static_cast<uint32_t>((as == format::rgb24 ? 3 : 4) * n);
  } else if (((source_offset | offset) & 7) != 0) {
    source_bytes = n;
    bytes = int64_t{n} + n / 2;
  } else {
    after.decimate(0, 0, 0);
    if (after.take(width, height, pitch)) {
      source_bytes = int64_t{pitch} * height;
      scratch_bytes = after.out_bytes(as) + (as == format::yuyv ? 4 : 0);
      bytes = as == format::i420   ? static_cast<uint32_t>(n + 2 * (n / 4))
              : as == format::yuyv ? static_cast<uint32_t>(2 * n)
                                   : 0;
    }
  }
  if (std::max({bytes, source_bytes, scratch_bytes}) > kMostBytes) return;
  s.size = after;
  const exact source(static_cast<size_t>(source_bytes), source_offset, in.ConsumeIntegral<uint8_t>());
  const exact destination(static_cast<size_t>(bytes), offset, 0);
  const exact scratch(static_cast<size_t>(scratch_bytes), scratch_offset, 1);
  support::kScaledCalls[which](s.context, null == 1 ? nullptr : source.at(), width, height, pitch,
                               null == 2 ? nullptr : destination.at(), out_width, out_height,
                               null == 3 ? nullptr : scratch.at());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  input in(data, size);
  subject s(in);
  ppl_set_quality(s.context, in.PickValueInArray<uint32_t>({2, 3, 4, 15, 14}));
  while (in.remaining_bytes() > 0) scale(s, in);
  return 0;
}
