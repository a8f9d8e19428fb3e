// The motion test of interlaced conversions, row by row: every pair of steps, every length of row.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "convert/convert_kernels.h"
#include "record/levels.h"
#include "support/fenced.h"
#include "support/level.h"

namespace {

using support::kUntouched;

const ppl::convert_kernels* kernels_of(int level) {
  ppl_test_force_level(level);
  const ppl::convert_kernels* const kernels = ppl::choose_kernels()->convert;
  ppl_test_force_level(-1);
  return kernels;
}

class MotionTest : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Levels, MotionTest, testing::Range(0, ppl_test_levels()));

// Rows with chosen differences between the fields, and what the rule makes of them: the sum M of |S - 3 d| over the
// three differences around a word, S their own sum.
class motion_rows {
 public:
  motion_rows(std::vector<int> differences, bool chroma_first)
      : pixels_(differences.size()),
        chroma_(chroma_first ? 0 : 1),
        kept_(support::noise(2 * pixels_, 1)),
        below_(support::noise(2 * pixels_, 2)),
        earlier_(support::noise(2 * pixels_, 3)),
        later_(support::noise(2 * pixels_, 4)),
        measure_(pixels_) {
    for (size_t x = 0; x < pixels_; x++) {
      const int d = differences[x], before = x > 0 ? differences[x - 1] : 0,
                after = x + 1 < pixels_ ? differences[x + 1] : 0, s = before + d + after;
      measure_[x] = std::abs(s - 3 * before) + std::abs(s - 3 * d) + std::abs(s - 3 * after);
      later_[2 * x + chroma_] = static_cast<uint8_t>(std::max(d, 0));
      earlier_[2 * x + chroma_] = static_cast<uint8_t>(std::max(-d, 0));
    }
  }
  // How many bytes the kernel makes otherwise than the rule, or writes where it should not.
  size_t wrong(const ppl::convert_kernels& kernels, int threshold) const {
    std::vector<uint8_t> out(2 * pixels_ + 64, kUntouched);
    kernels.blend[chroma_ ? 0 : 1](out.data(), nullptr,
                                   {kept_.data(), below_.data(), earlier_.data(), later_.data()},
                                   static_cast<int>(pixels_), threshold);
    size_t n = 0;
    for (size_t x = 0; x < pixels_; x++) {
      const size_t c = 2 * x + chroma_, luma = c ^ 1;
      n += out[luma] != later_[luma];
      n += out[c] != (measure_[x] > threshold ? (kept_[c] + below_[c] + 1) >> 1 : later_[c]);
    }
    for (size_t k = 2 * pixels_; k < out.size(); k++) n += out[k] != kUntouched;
    return n;
  }

 private:
  size_t pixels_, chroma_;
  std::vector<uint8_t> kept_, below_, earlier_, later_;
  std::vector<int> measure_;
};

// Every pair of steps from one difference to the next that three of them can make, around the thresholds where the
// arithmetic changes.
TEST_P(MotionTest, EveryPairOfStepsIsTestedAsTheRuleSays) {
  std::vector<int> differences;
  for (int p = -510; p <= 510; p++)
    for (int q = std::max(-510, -510 - p); q <= std::min(510, 510 - p); q++) {
      const int first = -255 - std::min({0, p, p + q});
      differences.insert(differences.end(), {first, first + p, first + p + q});
    }
  differences.resize((differences.size() + 15) / 16 * 16);
  const ppl::convert_kernels& kernels = *kernels_of(GetParam());
  for (bool chroma_first : {false, true}) {
    const motion_rows rows(differences, chroma_first);
    for (int threshold : {0, 1, 2, 49, 50, 51, 250, 251, 252, 253, 254, 255, 256, 257, 765})
      EXPECT_EQ(rows.wrong(kernels, threshold), 0u) << "threshold " << threshold;
  }
}

TEST_P(MotionTest, RowsOfEveryLengthAreTestedToTheirEnds) {
  const ppl::convert_kernels& kernels = *kernels_of(GetParam());
  for (size_t pixels = 16; pixels <= 400; pixels += 16) {
    const std::vector<uint8_t> noise = support::noise(pixels, static_cast<uint32_t>(pixels));
    for (int span : {3, 60, 255}) {
      std::vector<int> differences(pixels);
      for (size_t x = 0; x < pixels; x++) differences[x] = (2 * noise[x] - 255) * span / 255;
      for (bool chroma_first : {false, true})
        for (int threshold : {0, 50, 253, 254})
          EXPECT_EQ(motion_rows(differences, chroma_first).wrong(kernels, threshold), 0u)
              << pixels << " pixels, differences up to " << span << ", threshold " << threshold;
    }
  }
}

}  // namespace
