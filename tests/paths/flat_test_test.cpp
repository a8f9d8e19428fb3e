// The flat test alone, against figures worked out by hand.
#include "paths/kernels.h"

#include "support/blocks.h"

namespace {

using namespace blocks;

TEST(FlatTest, PassesAtItsThreshold) {
  at_every_level([](ppl_context& c, const ppl::tile_kernels&) {
    row_store m(6), out(4);
    const auto flat_at = [&](int column, int odd_row) {
      c.kernels->paths->flat_test({.context = &c,
                                   .rows = m.from(0),
                                   .colour_rows = m.from(1),
                                   .mask = out[0],
                                   .r = out[1],
                                   .g = out[2],
                                   .b = out[3],
                                   .odd_row = odd_row,
                                   .width = kWidth});
      EXPECT_EQ(out[0][column], out[0][column + 1]);
      return out[0][column] == 255;
    };
    for (int odd_row = 0; odd_row < 2; ++odd_row) {
      for (int r = 0; r < 6; ++r) m.fill(r, 80);
      EXPECT_TRUE(flat_at(40, odd_row));
      // One green of the row above the block: Gr at even columns of odd rows, Gb at odd columns of even rows.
      const int column = odd_row != 0 ? 41 : 40;
      m[1][column] = 90;
      EXPECT_TRUE(flat_at(40, odd_row));  // 10, the default threshold: equal passes
      m[1][column] = 91;
      EXPECT_FALSE(flat_at(40, odd_row));
      ppl_set_CFA_T0_threshold(&c, 0);
      m[1][column] = 81;
      EXPECT_FALSE(flat_at(40, odd_row));
      ppl_set_CFA_T0_threshold(&c, 255);
      m[1][column] = 255;
      EXPECT_TRUE(flat_at(40, odd_row));
      ppl_set_CFA_T0_threshold(&c, 10);
    }
  });
}

}  // namespace
