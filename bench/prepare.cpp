// What helpers/ppl_prepare.h costs beside copying what the sensor delivered: ns for each sample, and the ratio.
#include "helpers/ppl_prepare.h"

#include <benchmark/benchmark.h>
#include <string.h>

#include <string>
#include <vector>

namespace {

struct job {
  const char* name;
  int layout;
  uint32_t bits;
  int to_8;
};
constexpr job kJobs[] = {{"words_10_shift", PPL_WORDS_LITTLE, 10, PPL_TO_8_SHIFT},
                         {"words_10_round", PPL_WORDS_LITTLE, 10, PPL_TO_8_ROUND},
                         {"words_16_shift", PPL_WORDS_LITTLE, 16, PPL_TO_8_SHIFT},
                         {"words_big_endian_12_round", PPL_WORDS_BIG, 12, PPL_TO_8_ROUND},
                         {"words_12_table", PPL_WORDS_LITTLE, 12, PPL_TO_8_TABLE},
                         {"packed_10_shift", PPL_PACKED_10, 10, PPL_TO_8_SHIFT},
                         {"packed_10_round", PPL_PACKED_10, 10, PPL_TO_8_ROUND},
                         {"packed_12_shift", PPL_PACKED_12, 12, PPL_TO_8_SHIFT},
                         {"packed_12_round", PPL_PACKED_12, 12, PPL_TO_8_ROUND}};

struct frame {
  ppl_sensor_frame sensor;
  std::vector<uint8_t> raw, table, out;
  frame(const job& j, uint32_t width, uint32_t height, int pattern)
      : sensor{width, height, 0, pattern, j.layout, j.bits},
        raw(ppl_sensor_frame_bytes(&sensor)),
        table(65536),
        out(2 * size_t{width} * height) {
    uint32_t x = 1;
    for (uint8_t& byte : raw) byte = static_cast<uint8_t>((x = x * 1664525 + 1013904223) >> 28);
  }
};

void count(benchmark::State& state, const frame& f) {
  state.counters["ns_px"] =
      benchmark::Counter(1e-9 * static_cast<double>(state.iterations()) * f.sensor.width * f.sensor.height,
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  for (const auto& [width, height] : {std::pair{640u, 480u}, std::pair{1920u, 1080u}})
    for (const job& j : kJobs) {
      const std::string at = std::string(j.name) + "/" + std::to_string(width) + "x" + std::to_string(height);
      benchmark::RegisterBenchmark(("copy/" + at).c_str(), [=](benchmark::State& state) {
        frame f(j, width, height, PPL_BGGR);
        for (auto _ : state) {
          memcpy(f.out.data(), f.raw.data(), f.raw.size());
          benchmark::ClobberMemory();
        }
        count(state, f);
      });
      benchmark::RegisterBenchmark(("prepare/" + at).c_str(), [=](benchmark::State& state) {
        frame f(j, width, height, PPL_RGGB);
        for (auto _ : state) {
          ppl_prepare_frame(&f.sensor, f.raw.data(), j.to_8, f.table.data(), f.out.data(), width);
          benchmark::ClobberMemory();
        }
        count(state, f);
      });
    }
  benchmark::RunSpecifiedBenchmarks();
}
