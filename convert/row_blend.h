// The motion test between two fields of the same parity, and the row that comes out of it.
//
// Only chroma takes part: one chroma byte per 16-bit word, U and V alternating as they stand. With d(x) the
// chroma of the later field less that of the earlier one, 0 on both sides of the row, and S the sum of
// d(x - 1), d(x), d(x + 1), a word moves if
//
//   |S - 3 d(x - 1)| + |S - 3 d(x)| + |S - 3 d(x + 1)| > threshold.
//
// The three terms without their bars sum to 0, so their absolute sum is twice the largest of them. With
// p = d(x) - d(x - 1) and q = d(x + 1) - d(x) they are 2p + q, q - p and -(p + 2q): twice the span of
// {0, 2p + q, p + 2q}. All of it stays within 16 bits: |d| <= 255, the span at most 1020.
#pragma once

#include "convert/convert_kernels.h"
#include "convert/packed_ops.h"

namespace ppl::PPL_LEVEL {

template <layout L>
static void blend_row(uint8_t* out, const blend_rows& rows, int pixels, int threshold) {
  int16_t* const d = rows.difference;
  d[-1] = d[pixels] = 0;
  walk_exact(2 * pixels, [&]<class V>(int x) {
    storeu(d + x / 2, sub16(chroma16<L>(loadu<V>(rows.later + x)), chroma16<L>(loadu<V>(rows.earlier + x))));
  });
  walk_exact(2 * pixels, [&]<class V>(int x) {
    const int16_t* const at = d + x / 2;
    const V here = loadu<V>(at);
    const V p = sub16(here, loadu<V>(at - 1)), q = sub16(loadu<V>(at + 1), here);
    const V s = add16(p, q), f = add16(s, p), g = add16(s, q), none = zero<V>();
    const V span = sub16(max_s16(max_s16(f, g), none), min_s16(min_s16(f, g), none));
    const V later = loadu<V>(rows.later + x);
    const V still = avg8(loadu<V>(rows.kept + x), loadu<V>(rows.below + x));
    storeu(out + x, select(gt_s16(span, set16<V>(threshold >> 1)), with_chroma<L>(later, still), later));
  });
}

}  // namespace ppl::PPL_LEVEL
