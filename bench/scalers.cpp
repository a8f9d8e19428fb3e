// The frame scaler alone: scaled calls in quality 5, which reconstructs nothing. ns per OUTPUT pixel.
// Names: FORMAT/FROM/TO/LEVEL.
#include <cstring>

#include "measure.h"

namespace {

using namespace bench;

constexpr struct {
  size from, to;
} kScales[] = {{{640, 480}, {640, 480}},    {{640, 480}, {320, 480}},  {{640, 480}, {1280, 960}},
               {{640, 480}, {800, 600}},    {{640, 480}, {1024, 768}}, {{640, 480}, {736, 544}},
               {{640, 480}, {320, 240}},    {{640, 480}, {256, 192}},  {{640, 480}, {96, 192}},
               {{1280, 960}, {1920, 1080}}, {{1920, 1080}, {960, 540}}};

std::string text(size s) {
  return "/" + std::to_string(s.width) + "x" + std::to_string(s.height);
}

void scale(benchmark::State& state, bool packed, size from, size to, int level_number) {
  ppl_test_force_level(level_number);
  ppl_context* const c = ppl_init();
  ppl_set_quality(c, 5);
  const double pixels = double(to.width) * to.height;
  const buffer source(size_t(from.width) * size_t(from.height)), destination(size_t(2 * pixels)),
      scratch = packed_frame(from.width, from.height);
  const auto call = packed ? BaylorToYUYVMMX_scaling_stride : BaylorToI420MMX_scaling_stride;
  measure(
      state, pixels, [] {},
      [&] {
        call(c, source.data(), uint32_t(from.width), uint32_t(from.height), uint32_t(from.width),
             destination.data(), uint32_t(to.width), uint32_t(to.height), scratch.data());
      });
  ppl_reset_all_controls(c);
  ppl_free(c);
  ppl_test_force_level(-1);
}

}  // namespace

int main(int argc, char** argv) {
  for (const level& l : levels())
    for (const auto& s : kScales)
      for (const bool packed : {false, true})
        add(std::string(packed ? "yuyv" : "i420") + text(s.from) + text(s.to) + "/" + l.name,
            [=](benchmark::State& state) { scale(state, packed, s.from, s.to, l.number); });
  return run_all(argc, argv);
}
