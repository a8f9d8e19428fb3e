// Kernels that write runs of any length, held at every vector level to the same rule one sample at a time, without a
// byte changed before or after the run.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <vector>

#include "output/output_kernels.h"
#include "ppl.h"
#include "record/context.h"
#include "record/levels.h"
#include "rows/row_kernels.h"
#include "support/level.h"
#include "support/random.h"

namespace runs {

using bytes = std::vector<uint8_t>;

constexpr int kLongest = 150;  // whole vectors of every level, and all remainders
constexpr uint8_t kAround = 0xa5;

// A row of random samples with 64 bytes on either side, as row storage has it.
class random_row {
 public:
  random_row(std::mt19937& random, int n) : memory_(static_cast<size_t>(n) + 128 + 64) {
    for (uint8_t& b : memory_) b = static_cast<uint8_t>(random());
  }
  const uint8_t* data() const { return memory_.data() + 64; }
  int operator[](int i) const { return memory_[static_cast<size_t>(64 + i)]; }

 private:
  bytes memory_;
};

inline uint8_t mean(int a, int b) {
  return static_cast<uint8_t>((a + b + 1) / 2);
}

inline const ppl::output_kernels& table_of(const ppl_context* c, const ppl::output_kernels*) {
  return *c->kernels->output;
}
inline const ppl::row_kernels& table_of(const ppl_context* c, const ppl::row_kernels*) {
  return *c->kernels->rows;
}

// Calls make(kernels, to) at every level and compares what it wrote.
template <class Kernels>
void expect_run(const bytes& expected, const std::function<void(const Kernels&, uint8_t* to)>& make) {
  for (int level = 0; level < ppl_test_levels(); ++level) {
    ppl_test_force_level(level);
    ppl_context* const c = ppl_init();
    ASSERT_NE(c, nullptr);
    bytes memory(expected.size() + 2 * 65, kAround), whole(memory);
    std::copy(expected.begin(), expected.end(), whole.begin() + 65);
    make(table_of(c, static_cast<const Kernels*>(nullptr)), memory.data() + 65);
    EXPECT_EQ(memory, whole) << c->kernels->name;
    ppl_free(c);
  }
  ppl_test_force_level(-1);
}

// Runs of n elements of so many bytes, each element as at(k) tells it for position k of the unreversed run.
inline bytes run_of(int n, bool reversed, const std::function<bytes(int)>& at) {
  bytes out;
  for (int i = 0; i < n; ++i) {
    const bytes element = at(reversed ? n - 1 - i : i);
    out.insert(out.end(), element.begin(), element.end());
  }
  return out;
}
inline uint8_t u8(int v) {
  return static_cast<uint8_t>(v);
}

// In either direction.
class Runs : public testing::TestWithParam<bool> {
 protected:
  const bool reversed_ = GetParam();
  std::mt19937 random_{static_cast<uint32_t>(support::seed(20))};
  const random_row a_{random_, 4 * kLongest}, b_{random_, 4 * kLongest}, c_{random_, 4 * kLongest};
};

}  // namespace runs
