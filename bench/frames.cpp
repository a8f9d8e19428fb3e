// Bayer frame calls: every quality, format, decimation and size, at every level.
//
// Names are frame/QUALITY[m]/FORMAT/SCALE/WIDTHxHEIGHT/CONTENT/LEVEL, for --benchmark_filter; m: with medium filter.
#include "measure.h"

namespace {

using namespace bench;

struct quality {
  int number;
  bool medium_filter;
};
constexpr size kSizes[] = {{320, 240}, {640, 480}, {1280, 960}, {1920, 1080}, {2016, 1536}};
constexpr struct {
  int decimation;
  const char* name;
} kScales[] = {{0, "same"}, {1, "half"}, {-1, "double"}};

void add_frame(const frame_task& task, const std::string& name) {
  add(name, [task](benchmark::State& state) {
    frame_runner frame(task);
    measure(
        state, frame.pixels(), [&] { frame.refresh(); }, [&] { frame.call(); });
  });
}

std::string name_of(const quality& q, const std::string& rest) {
  return "frame/" + std::to_string(q.number) + (q.medium_filter ? "m/" : "/") + rest;
}

void add_frames(const quality& q, ppl_format f, const level& l) {
  for (const auto& scale : kScales) {
    if (!ppl_quality_runs(uint32_t(q.number), f, scale.decimation)) continue;
    for (const size s : kSizes)
      for (const content what : {content::photograph, content::random}) {
        const std::string rest = std::string(ppl_format_name(f)) + "/" + scale.name + "/" +
                                 std::to_string(s.width) + "x" + std::to_string(s.height) +
                                 (what == content::random ? "/random/" : "/photograph/") + l.name;
        add_frame({.quality = q.number,
                   .medium_filter = q.medium_filter,
                   .to = f,
                   .decimation = scale.decimation,
                   .frame = s,
                   .what = what,
                   .level_number = l.number},
                  name_of(q, rest));
      }
  }
}

// What statistics add: the same frame without them.
void add_without_statistics(const level& l) {
  for (const int q : {15, 0, 2, 3})
    add_frame({.quality = q, .level_number = l.number, .statistics = false},
              "no_statistics/" + std::to_string(q) + "/" + l.name);
}

}  // namespace

int main(int argc, char** argv) {
  for (const level& l : levels()) {
    for (int q = 0; q < PPL_QUALITIES; ++q)
      for (int f = 0; f < PPL_FORMATS; ++f) {
        add_frames({q, false}, ppl_format(f), l);
        if (ppl_quality_table[q].reads_medium_filter) add_frames({q, true}, ppl_format(f), l);
      }
    add_without_statistics(l);
  }
  return run_all(argc, argv);
}
