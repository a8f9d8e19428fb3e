// Widening, packing and interleaving rows.
#include "support/runs.h"

namespace {

using namespace runs;
using OutputRuns = Runs;

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
