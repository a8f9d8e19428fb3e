// Copying, halving, averaging and filling rows.
#include "support/runs.h"

namespace {

using namespace runs;
using RowRuns = Runs;

TEST_P(RowRuns, Copy) {
  for (int n = 1; n <= kLongest; ++n)
    expect_run<ppl::row_kernels>(
        run_of(n, reversed_, [&](int k) { return bytes{u8(a_[k])}; }),
        [&](const ppl::row_kernels& k, uint8_t* to) { k.copy(to, a_.data(), n, reversed_); });
}

TEST_P(RowRuns, Halve) {
  for (int n = 1; n <= kLongest; ++n)
    expect_run<ppl::row_kernels>(
        run_of(n, reversed_, [&](int k) { return bytes{u8(a_[2 * k])}; }),
        [&](const ppl::row_kernels& k, uint8_t* to) { k.halve(to, a_.data(), n, reversed_); });
}

TEST_P(RowRuns, Mean) {
  for (int n = 1; n <= kLongest; ++n)
    expect_run<ppl::row_kernels>(
        run_of(n, false, [&](int k) { return bytes{mean(a_[k], b_[k])}; }),
        [&](const ppl::row_kernels& k, uint8_t* to) { k.mean(to, a_.data(), b_.data(), n); });
}

TEST_P(RowRuns, Fill) {
  for (int n = 1; n <= kLongest; ++n)
    expect_run<ppl::row_kernels>(run_of(n, false, [&](int k) { return bytes{u8(k % 2 == 0 ? 16 : 128)}; }),
                                 [&](const ppl::row_kernels& k, uint8_t* to) { k.fill(to, n, 16, 128); });
}

INSTANTIATE_TEST_SUITE_P(Both, RowRuns, testing::Bool(),
                         [](const auto& i) { return i.param ? "reversed" : "ahead"; });

}  // namespace
