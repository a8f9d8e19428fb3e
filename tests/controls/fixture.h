// A context of its own for every test, and small helpers for vectors and frames.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "ppl.h"
#include "record/context.h"
#include "record/gaps.h"
#include "support/fenced.h"

namespace ctl {

struct controls : testing::Test {
  ppl_context* c = ppl_init();

  controls() {
    if (!c) return;
    ppl::open_gaps(*c);  // tests copy whole records
    ppl_new_frame_size(c, 640, 480, 640);
  }
  ~controls() override { ppl_free(c); }
  void SetUp() override { ASSERT_NE(c, nullptr); }
};

inline std::vector<int> lanes(const ppl::vec_i16& v) {
  return {v.lane, v.lane + 8};
}

inline std::vector<int> lanes(const ppl::vec_u8& v) {
  return {v.lane, v.lane + 16};
}

inline std::vector<int> all(int x, int count = 8) {
  return std::vector<int>(static_cast<size_t>(count), x);
}

inline std::vector<int> bytes(int x) {
  return all(x, 16);
}

inline std::vector<int> pairs(int even, int odd, int count = 8) {
  std::vector<int> v;
  for (int i = 0; i < count; i += 2) {
    v.push_back(even);
    v.push_back(odd);
  }
  return v;
}

using support::fenced;

inline fenced noise_frame(int width, int height, uint32_t seed) {
  return fenced(support::noise(static_cast<size_t>(width) * static_cast<size_t>(height), seed));
}

}  // namespace ctl
