// Conversions of decoder frames and fields, ns per pixel of the frame. Names: NAME/WIDTHxHEIGHT/LEVEL.
#include "measure.h"

namespace {

using namespace bench;

constexpr size kSizes[] = {{640, 480}, {720, 576}, {1920, 1080}};

// Takes any size, then stays at it: sizes equal to the context's are not looked up.
struct converter {
  ppl_context* context;
  uint32_t width, height;
  buffer kept, later, earlier, output;

  converter(size s, int level_number)
      : width(uint32_t(s.width)),
        height(uint32_t(s.height)),
        kept(packed_frame(s.width, s.height)),
        later(packed_frame(s.width, s.height, 1)),
        earlier(packed_frame(s.width, s.height, 3)),
        output(4 * size_t(s.width) * size_t(s.height)) {
    ppl_test_force_level(level_number);
    context = ppl_init();
    ppl_new_frame_sizes(context, width, height, width, height, 0);
  }
  ~converter() {
    ppl_free(context);
    ppl_test_force_level(-1);
  }
};

using frame_call = decltype(&ppl_process_yuyvtoi420);
using field_call = decltype(&ppl_process_intlyuyvtoyuyv);
constexpr struct {
  const char* name;
  frame_call call;
} kFrames[] = {{"yuyv_to_i420", ppl_process_yuyvtoi420},
               {"uyvy_to_i420", ppl_process_uyvytoi420},
               {"yuyv_to_rgb24", ppl_process_yuyvtorgb24},
               {"uyvy_to_rgb24", ppl_process_uyvytorgb24},
               {"12_bit_to_i420", ppl_process_uyvyyyyytoi420}};
constexpr struct {
  const char* name;
  field_call call;
} kFields[] = {{"motion_yuyv_to_yuyv", ppl_process_intlyuyvtoyuyv},
               {"motion_uyvy_to_uyvy", ppl_process_intluyvytouyvy},
               {"motion_yuyv_to_i420", ppl_process_intlyuyvtoi420},
               {"motion_uyvy_to_i420", ppl_process_intluyvytoi420},
               {"motion_yuyv_to_rgb24", ppl_process_intlyuyvtorgb24},
               {"motion_uyvy_to_rgb24", ppl_process_intluyvytorgb24},
               {"weave_yuyv_to_yuyv", IntlYUYVToYUYVMMX_no_motion},
               {"weave_yuyv_to_i420", IntlYUYVToI420MMX_no_motion}};

}  // namespace

int main(int argc, char** argv) {
  for (const level& l : levels())
    for (const size s : kSizes) {
      const std::string rest = "/" + std::to_string(s.width) + "x" + std::to_string(s.height) + "/" + l.name;
      const double pixels = double(s.width) * s.height;
      for (const auto& f : kFrames)
        add(f.name + rest, [=](benchmark::State& state) {
          const converter c(s, l.number);
          measure(
              state, pixels, [] {},
              [&] {
                f.call(c.context, c.kept.data(), c.output.data(), c.width, c.height, c.width, c.height);
              });
        });
      for (const auto& f : kFields)
        add(f.name + rest, [=](benchmark::State& state) {
          const converter c(s, l.number);
          measure(
              state, pixels, [] {},
              [&] {
                f.call(c.context, c.earlier.data(), c.kept.data(), c.later.data(), c.output.data(), c.width,
                       c.height, c.width, c.height);
              });
        });
    }
  return run_all(argc, argv);
}
