// The output stage's runs of any length, at every vector level: against the same rules one sample at a time, and
// without a byte before or behind.
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <vector>

#include "output/output_kernels.h"
#include "platform/levels.h"
#include "ppl.h"
#include "record/context.h"
#include "rows/row_kernels.h"
#include "support/level.h"
#include "support/random.h"

namespace {

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

uint8_t mean(int a, int b) {
  return static_cast<uint8_t>((a + b + 1) / 2);
}

const ppl::output_kernels& table_of(const ppl_context* c, const ppl::output_kernels*) {
  return *c->kernels->output;
}
const ppl::row_kernels& table_of(const ppl_context* c, const ppl::row_kernels*) {
  return *c->kernels->rows;
}

// Calls make(kernels, to) at every level and compares what it wrote.
template <class Kernels = ppl::output_kernels>
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
bytes run_of(int n, bool reversed, const std::function<bytes(int)>& at) {
  bytes out;
  for (int i = 0; i < n; ++i) {
    const bytes element = at(reversed ? n - 1 - i : i);
    out.insert(out.end(), element.begin(), element.end());
  }
  return out;
}
uint8_t u8(int v) {
  return static_cast<uint8_t>(v);
}

class OutputRuns : public testing::TestWithParam<bool> {
 protected:
  const bool reversed_ = GetParam();
  std::mt19937 random_{static_cast<uint32_t>(support::seed(20))};
  const random_row a_{random_, 4 * kLongest}, b_{random_, 4 * kLongest}, c_{random_, 4 * kLongest};
};

TEST_P(OutputRuns, Copy) {
  for (int n = 1; n <= kLongest; ++n)
    expect_run<ppl::row_kernels>(
        run_of(n, reversed_, [&](int k) { return bytes{u8(a_[k])}; }),
        [&](const ppl::row_kernels& k, uint8_t* to) { k.copy(to, a_.data(), n, reversed_); });
}

TEST_P(OutputRuns, Halve) {
  for (int n = 1; n <= kLongest; ++n)
    expect_run<ppl::row_kernels>(
        run_of(n, reversed_, [&](int k) { return bytes{u8(a_[2 * k])}; }),
        [&](const ppl::row_kernels& k, uint8_t* to) { k.halve(to, a_.data(), n, reversed_); });
}

TEST_P(OutputRuns, Mean) {
  for (int n = 1; n <= kLongest; ++n)
    expect_run<ppl::row_kernels>(
        run_of(n, false, [&](int k) { return bytes{mean(a_[k], b_[k])}; }),
        [&](const ppl::row_kernels& k, uint8_t* to) { k.mean(to, a_.data(), b_.data(), n); });
}

TEST_P(OutputRuns, Fill) {
  for (int n = 1; n <= kLongest; ++n)
    expect_run<ppl::row_kernels>(run_of(n, false, [&](int k) { return bytes{u8(k % 2 == 0 ? 16 : 128)}; }),
                                 [&](const ppl::row_kernels& k, uint8_t* to) { k.fill(to, n, 16, 128); });
}

// Each column gives its mean, then itself, in both directions.
TEST_P(OutputRuns, Widen) {
  for (const int tile : {0, 8, 16})
    for (int n = 1; n <= kLongest; ++n)
      expect_run<ppl::output_kernels>(run_of(n, reversed_,
                                             [&](int k) {
                                               int left = k == 0 ? 77 : a_[k - 1];
                                               if (reversed_ && tile != 0 && k > 0 && k % tile == 0)
                                                 left = mean(a_[k - 1], a_[k - 2]);
                                               return bytes{mean(a_[k], left), u8(a_[k])};
                                             }),
                                      [&](const ppl::output_kernels& k, uint8_t* to) {
                                        k.widen(to, a_.data(), n, {77, reversed_, u8(tile)});
                                      });
}

TEST_P(OutputRuns, WidenWords) {
  for (int n = 1; n <= kLongest; ++n)
    expect_run<ppl::output_kernels>(
        run_of(n, reversed_,
               [&](int k) {
                 bytes out(4);
                 for (int i = 0; i < 2; ++i) {
                   const auto word = [&](int at) { return a_[2 * at + i]; };
                   int left = word(k == 0 ? 0 : k - 1);
                   if (reversed_ && k > 0 && k % 8 == 0) left = mean(word(k - 1), word(k - 2));
                   out[static_cast<size_t>(i)] = mean(word(k), left);
                   out[static_cast<size_t>(2 + i)] = u8(word(k));
                 }
                 return out;
               }),
        [&](const ppl::output_kernels& k, uint8_t* to) { k.widen_words(to, a_.data(), n, reversed_); });
}

TEST_P(OutputRuns, PackHalved) {
  for (int pairs = 1; 2 * pairs <= kLongest; ++pairs)
    for (const auto order : {ppl::byte_order::yuyv, ppl::byte_order::uyvy})
      expect_run<ppl::output_kernels>(
          run_of(pairs, reversed_,
                 [&](int k) {  // columns 4k and 4k + 2, word 2k of those for two columns
                   const uint8_t first = u8(a_[4 * k + (reversed_ ? 2 : 0)]);
                   const uint8_t second = u8(a_[4 * k + (reversed_ ? 0 : 2)]);
                   const uint8_t u = u8(b_[4 * k]), v = u8(b_[4 * k + 1]);
                   return order == ppl::byte_order::yuyv ? bytes{first, u, second, v}
                                                         : bytes{u, first, v, second};
                 }),
          [&](const ppl::output_kernels& k, uint8_t* to) {
            k.pack_halved(to, a_.data(), b_.data(), 2 * pairs, reversed_, order);
          });
}

TEST_P(OutputRuns, Rgb) {
  const ppl::rgb_source planes = {ppl::rgb_source::planes, {a_.data(), b_.data(), c_.data()}};
  for (int n = 1; n <= kLongest; ++n) {
    expect_run<ppl::output_kernels>(
        run_of(n, reversed_,
               [&](int k) {
                 return bytes{u8(c_[k]), u8(b_[k]), u8(a_[k])};
               }),
        [&](const ppl::output_kernels& k, uint8_t* to) { k.rgb24(to, planes, n, reversed_); });
    expect_run<ppl::output_kernels>(
        run_of(n, reversed_,
               [&](int k) {
                 return bytes{u8(c_[k]), u8(b_[k]), u8(a_[k]), 0};
               }),
        [&](const ppl::output_kernels& k, uint8_t* to) { k.rgb32(to, planes, n, reversed_); });
  }
}

INSTANTIATE_TEST_SUITE_P(Both, OutputRuns, testing::Bool(),
                         [](const auto& i) { return i.param ? "reversed" : "ahead"; });

}  // namespace
