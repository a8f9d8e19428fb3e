// Packed and interlaced conversions in any order, with sizes from the table and others, black lines and mirrors.
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <iterator>

#include "fuzz/frame_size.h"
#include "fuzz/subject.h"
#include "tests/support/convert_exports.h"

namespace {

using namespace fuzz;

struct sizes {
  uint32_t in_width, in_height, out_width, out_height;
};
constexpr sizes kTable[] = {{320, 240, 160, 120}, {320, 240, 320, 240}, {480, 480, 480, 576},
                            {640, 480, 160, 120}, {640, 480, 352, 288}, {704, 480, 176, 140},
                            {704, 576, 352, 300}, {704, 480, 704, 500}};

format made_by(const char* name) {
  const auto has = [&](const char* word) { return strstr(name, word) != nullptr; };
  if (has("ToI420") || has("toi420")) return format::i420;
  if (has("ToRGB24") || has("torgb24")) return format::rgb24;
  if (has("ToRGB32") || has("torgb32")) return format::rgb32;
  return has("ToYUYV") || has("toyuyv") ? format::yuyv : format::uyvy;
}

// Sizes other than the context's are looked up; a second context tells how.
bool take(geometry& g, const sizes& z) {
  if (z.in_width == g.width && z.in_height == g.height && z.out_width == static_cast<uint32_t>(g.out_width) &&
      z.out_height == static_cast<uint32_t>(g.out_height))
    return true;
  ppl_context* const probe = ppl_init();
  if (probe == nullptr) abort();
  const bool found = ppl_new_frame_sizes(probe, z.in_width, z.in_height, z.out_width, z.out_height, 1) != 0;
  if (found) {
    g.resize(z.in_width, z.in_height, z.in_width);
    g.decimate(ppl_decimation(probe), ppl_decimation_top_black_lines(probe),
               ppl_decimation_bottom_black_lines(probe));
  }
  ppl_free(probe);
  return found;
}

sizes any_sizes(const subject& s, input& in) {
  const geometry& g = s.size;
  switch (in.ConsumeIntegralInRange(0, 3)) {
    case 0:
      return in.PickValueInArray(kTable);
    case 1:
      return {side(in), side(in), number<uint32_t>(in), number<uint32_t>(in)};
    default:
      return {g.width, g.height, static_cast<uint32_t>(g.out_width), static_cast<uint32_t>(g.out_height)};
  }
}

void convert(subject& s, input& in) {
  const convert_export& e =
      kConvertExports[in.ConsumeIntegralInRange<size_t>(0, std::size(kConvertExports) - 1)];
  const bool process = strncmp(e.name, "ppl_", 4) == 0,
             packed_12 = strstr(e.name, "YYYY") || strstr(e.name, "yyyy");
  const format to = made_by(e.name);
  const sizes z = any_sizes(s, in);
  const int null =
      in.ConsumeIntegralInRange(0, 31);  // which buffer is a null pointer, which counts as aligned
  size_t offsets[4];
  size_t all = 0;
  for (int i = 0; i < 4; ++i) all |= offsets[i] = null == i + 1 ? 0 : alignment(in);
  if (e.fields == nullptr) all = offsets[1] | offsets[3];
  int64_t source_bytes = 0, bytes = 0;
  geometry after = s.size;
  if (!process && (all & 7) != 0) {
    const uint32_t n = z.out_width * z.out_height;
    source_bytes = to < format::rgb24 ? n : 0;
    bytes = to == format::i420    ? int64_t{n} + n / 2
            : to < format::rgb24  ? 2 * int64_t{n}
            : to == format::rgb24 ? n * 3
                                  : n * 4;
  } else if (take(after, z)) {
    const int64_t n = int64_t{after.width} * after.height;
    source_bytes = e.fields != nullptr ? n : packed_12 ? n * 3 / 2 : 2 * n;
    bytes = std::max(after.out_bytes(to),
                     frame_bytes(to, static_cast<int32_t>(z.out_width), static_cast<int32_t>(z.out_height)));
  }
  if (std::max(bytes, source_bytes) > kMostBytes) return;
  s.size = after;
  const auto source = static_cast<size_t>(source_bytes);
  const exact earlier(e.fields != nullptr ? source : 0, offsets[0], in.ConsumeIntegral<uint8_t>());
  const exact kept(source, offsets[1], in.ConsumeIntegral<uint8_t>());
  const exact later(e.fields != nullptr ? source : 0, offsets[2], in.ConsumeIntegral<uint8_t>());
  const exact output(static_cast<size_t>(bytes), offsets[3], 0);
  e(s.context, null == 1 ? nullptr : earlier.at(), null == 2 ? nullptr : kept.at(),
    null == 3 ? nullptr : later.at(), null == 4 ? nullptr : output.at(), z.in_width, z.in_height, z.out_width,
    z.out_height);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  input in(data, size);
  subject s(in);
  while (in.remaining_bytes() > 0) switch (in.ConsumeIntegralInRange(0, 7)) {
      case 0: {
        const uint32_t w = side(in), h = side(in);
        ppl_new_frame_sizes(s.context, w, h, w, h, 0);
        s.size.resize(w, h, w);
        if (geometry::accepts(w, h, w)) s.size.decimate(0, 0, 0);
        break;
      }
      case 1:
        s.decimate(in);
        break;
      case 2:
        ppl_set_h_mirror(s.context, in.ConsumeBool());
        ppl_set_v_mirror(s.context, in.ConsumeBool());
        ppl_set_intl_3T_threshold(s.context, number<uint32_t>(in));
        break;
      default:
        convert(s, in);
    }
  return 0;
}
