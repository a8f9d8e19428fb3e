// Timing under Google Benchmark: each call by itself, so that its preparation is left out of the time, and the
// minimum over all calls beside the mean, as the machine's other work only ever adds.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>

#include "jobs.h"

namespace bench {

// Counters: ns_px the minimum, ns_px_mean the mean, both for each of `pixels` pixels.
template <class Prepare, class Work>
void measure(benchmark::State& state, double pixels, const Prepare& prepare, const Work& work) {
  prepare();
  work();
  double least = 1e9, total = 0;
  int64_t calls = 0;
  for (auto _ : state) {
    prepare();
    const double start = seconds_now();
    work();
    const double time = seconds_now() - start;
    state.SetIterationTime(time);
    least = std::min(least, time);
    total += time;
    ++calls;
  }
  state.counters["ns_px"] = 1e9 * least / pixels;
  state.counters["ns_px_mean"] = 1e9 * total / double(calls) / pixels;
}

// The same for work of less than a microsecond: `times` calls between two looks at the clock.
template <class Work>
void measure_small(benchmark::State& state, double pixels, int times, const Work& work) {
  measure(
      state, pixels * times, [] {},
      [&] {
        for (int n = 0; n < times; ++n) {
          work();
          benchmark::ClobberMemory();
        }
      });
}

template <class Body>
benchmark::internal::Benchmark* add(const std::string& name, const Body& body) {
  return benchmark::RegisterBenchmark(name.c_str(), body)->UseManualTime()->Unit(benchmark::kMicrosecond);
}

inline int run_all(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

}  // namespace bench
