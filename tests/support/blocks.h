// Single blocks at every vector level, on rows stored as the kernels want them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "ppl.h"
#include "record/context.h"
#include "record/levels.h"
#include "support/level.h"
#include "tile/kernels.h"

namespace blocks {

constexpr int kWidth = 80;  // more than one vector of every level, and no multiple of the wider ones

// Rows as the kernels want them: starts at multiples of 64, 64 bytes around.
class row_store {
 public:
  explicit row_store(int rows) : memory_(static_cast<size_t>(rows) * kPitch + 128 + 64) {
    const auto at = reinterpret_cast<uintptr_t>(memory_.data());
    base_ = memory_.data() + (64 - at % 64) % 64 + 64;
    for (int r = 0; r < rows; ++r) places_.push_back(base_ + r * kPitch);
  }
  uint8_t* operator[](int r) { return base_ + r * kPitch; }
  // The pointers of rows r, r + 1 ...
  uint8_t* const* from(int r) const { return places_.data() + r; }
  void fill(int r, int value) {
    std::fill_n(base_ + r * kPitch - 2, kWidth + 4, static_cast<uint8_t>(value));
  }

 private:
  static constexpr int kPitch = 256;
  std::vector<uint8_t> memory_;
  uint8_t* base_;
  std::vector<uint8_t*> places_;
};

// Runs the body once for every level that this processor has, with a fresh record.
inline void at_every_level(const std::function<void(ppl_context&, const ppl::tile_kernels&)>& body) {
  for (int level = 0; level < ppl_test_levels(); ++level) {
    ppl_test_force_level(level);
    ppl_context* const c = ppl_init();
    ASSERT_NE(c, nullptr);
    SCOPED_TRACE(c->kernels->name);
    body(*c, *c->kernels->tile);
    ppl_free(c);
  }
  ppl_test_force_level(-1);
}

}  // namespace blocks
