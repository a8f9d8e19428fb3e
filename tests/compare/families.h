// The main function of a random comparison: families of cases, each case a function of its seed.
//
//   PROGRAM [FAMILY] [--seed N] [--first N] [--cases N] [--share S] [--failures N] [--list]
//
// Without FAMILY all of them. --seed runs one case; --first, --cases and --share say from which seed on and how many, a
// share being one of the family's usual number; --failures is after how many a family ends, 3 by default. Frames are
// calls that made a picture, every byte of which that is promised was held to the reference's, at each level.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "support/level.h"

namespace compare {

struct family {
  std::string name;
  int cases;  // a fraction of a second's worth
  // What was called and what differs, line by line; empty where nothing does.
  std::function<std::vector<std::string>(uint64_t seed)> run;
  // After the usual number of cases from seed 1 on: what they should have reached and did not.
  std::function<std::vector<std::string>()> end = {};
};

inline uint64_t frames_compared = 0;

inline int run(const char* program, const std::vector<family>& all, int argc, char** argv) {
  std::string wanted;
  uint64_t first = 1;
  int cases = -1, most_failures = 3;
  double share = 1.0;
  bool one = false;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    const bool has_value = i + 1 < argc;
    if (arg == "--list") {
      for (const family& f : all) std::printf("%s\n", f.name.c_str());
      return 0;
    }
    if (arg == "--seed" && has_value) {
      first = std::strtoull(argv[++i], nullptr, 10);
      one = true;
    } else if (arg == "--first" && has_value) {
      first = std::strtoull(argv[++i], nullptr, 10);
    } else if (arg == "--cases" && has_value) {
      cases = std::atoi(argv[++i]);
    } else if (arg == "--share" && has_value) {
      share = std::atof(argv[++i]);
    } else if (arg == "--failures" && has_value) {
      most_failures = std::atoi(argv[++i]);
    } else if (arg[0] != '-' && wanted.empty()) {
      wanted = arg;
    } else {
      std::fprintf(
          stderr,
          "usage: %s [FAMILY] [--seed N] [--first N] [--cases N] [--share S] [--failures N] [--list]\n",
          program);
      return 2;
    }
  }
  bool known = wanted.empty(), failed = false;
  for (const family& f : all) {
    if (!wanted.empty() && f.name != wanted) continue;
    known = true;
    const int count = one ? 1 : cases >= 0 ? cases : std::max(1, static_cast<int>(f.cases * share));
    const uint64_t frames_before = frames_compared;
    int failures = 0, done = 0;
    const auto print = [](const std::vector<std::string>& log) {
      for (const std::string& line : log) std::printf("    %s\n", line.c_str());
    };
    for (; done < count && failures < most_failures; ++done) {
      const uint64_t seed = first + static_cast<uint64_t>(done);
      const std::vector<std::string> log = f.run(seed);
      if (log.empty()) continue;
      ++failures;
      std::printf("FAILED: %s %s --seed %llu\n", program, f.name.c_str(),
                  static_cast<unsigned long long>(seed));
      print(log);
    }
    if (f.end && first == 1 && !one && done >= f.cases && failures == 0) {
      const std::vector<std::string> missed = f.end();
      if (!missed.empty()) ++failures;
      print(missed);
    }
    std::printf("%s: %d cases, %llu frames at %d levels, %d failed\n", f.name.c_str(), done,
                static_cast<unsigned long long>(frames_compared - frames_before), ppl_test_levels(),
                failures);
    failed = failed || failures > 0;
  }
  if (!known) {
    std::fprintf(stderr, "%s: no family %s; --list names them\n", program, wanted.c_str());
    return 2;
  }
  return failed ? 1 : 0;
}

}  // namespace compare
