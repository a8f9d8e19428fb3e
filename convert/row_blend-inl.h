// The motion test between two fields of the same parity, and the row that comes out of it.
//
// Only chroma takes part: one chroma byte per 16-bit word, U and V in turn. With d(x) the chroma of the later field
// less that of the earlier one, 0 on both sides of the row, and S the sum of d(x - 1), d(x), d(x + 1), a word moves if
//
//   |S - 3 d(x - 1)| + |S - 3 d(x)| + |S - 3 d(x + 1)| > threshold.
//
// The three terms without their bars sum to 0, so their absolute sum is twice the largest of them. With
// p = d(x) - d(x - 1) and q = d(x + 1) - d(x) they are 2p + q, q - p and -(p + 2q): twice the span of
// {0, 2p + q, p + 2q}. All of it stays within 16 bits: |d| <= 255, the span at most 1020.
//
// With a small threshold the spans of two vectors at a time are found in signed bytes, p, q and all that follows
// saturated. Where a value saturates, the span is 127 or more in bytes as it is in words; elsewhere both are the
// same (a test goes through every p and q). So bytes decide rightly up to a half threshold of 126.
//
// The row above is read here anyway: where both rows reach the picture unchanged, it is copied in the same pass.
#pragma once

#include "convert/convert_kernels.h"
#include "simd/packed-inl.h"

namespace ppl::PPL_LEVEL {

constexpr int kByteLimit = 126;  // the largest half threshold that spans in bytes are compared with

template <byte_order L, bool PassKept, class V>
PPL_INLINE void blend_with(uint8_t* out, uint8_t* kept_out, const blend_rows& rows, int bytes,
                           int threshold) {
  const uint8_t *const kept = rows.kept, *const below = rows.below;
  const uint8_t *const earlier = rows.earlier, *const later = rows.later;
  const auto difference = [=](ptrdiff_t x) {
    return sub16(chroma16<L>(loadu<V>(later + x)), chroma16<L>(loadu<V>(earlier + x)));
  };
  const V none = zero<V>();
  const auto put = [=](ptrdiff_t x, auto moving) {
    const V above = loadu<V>(kept + x);
    if constexpr (PassKept) storeu(kept_out + x, above);
    const V still = avg8(above, loadu<V>(below + x));
    storeu(out + x, select_chroma<L>(moving, still, loadu<V>(later + x)));
  };
  ptrdiff_t x = 0;
  V d = difference(0), q = move_down16(none, d);

  if (threshold >> 1 <= kByteLimit) {
    const V limit = set8<V>(threshold >> 1);
    V bytes_before = pack_s8(q, q);
    // No difference of words saturates here. A saturating subtraction is used because the compiler would work out a
    // plain one three times.
    const auto two_steps = [&](V d_after) {
      const V d_second = difference(x + V::size), q_first = subs_s16(move_down16(d, d_second), d);
      q = subs_s16(move_down16(d_second, d_after), d_second);
      d = d_after;
      const V q8 = pack_s8(q_first, q), p8 = move_up8(bytes_before, q8);
      bytes_before = q8;
      const V s = adds_s8(p8, q8), f = adds_s8(s, p8), g = adds_s8(s, q8);
      const V span = subs_s8(max_s8(max_s8(f, g), none), min_s8(min_s8(f, g), none));
      const auto moving = chroma_masks<L>(gt_s8(span, limit));
      put(x, moving.first);
      put(x + V::size, moving.second);
    };
    for (; x < bytes - 2 * V::size; x += 2 * V::size) two_steps(difference(x + 2 * V::size));
    if (x == bytes - 2 * V::size) {
      two_steps(none);
      return;
    }
  }

  const V limit = set16<V>(threshold >> 1);
  const auto step = [&](V d_after) {
    const V q_before = q;
    q = sub16(move_down16(d, d_after), d);
    d = d_after;
    const V p = move_up16(q_before, q);
    const V s = add16(p, q), f = add16(s, p), g = add16(s, q);
    const V span = sub16(max_s16(max_s16(f, g), none), min_s16(min_s16(f, g), none));
    put(x, chroma_mask<L>(gt_s16(span, limit)));
  };
  for (; x < bytes - V::size; x += V::size) step(difference(x + V::size));
  step(none);
}

template <byte_order L, bool PassKept>
PPL_INLINE void blend_widest(uint8_t* out, uint8_t* kept_out, const blend_rows& rows, int bytes,
                             int threshold) {
  if constexpr (kWidth > 32) {  // rows are multiples of 32 bytes
    if (bytes % kWidth != 0) {
      blend_with<L, PassKept, vec<kWidth / 2>>(out, kept_out, rows, bytes, threshold);
      return;
    }
  }
  blend_with<L, PassKept, wide>(out, kept_out, rows, bytes, threshold);
}

template <byte_order L>
static void blend_row(uint8_t* out, uint8_t* kept_out, const blend_rows& rows, int pixels, int threshold) {
  if (pixels == 0) return;
  if (kept_out != nullptr) {
    blend_widest<L, true>(out, kept_out, rows, 2 * pixels, threshold);
  } else {
    blend_widest<L, false>(out, kept_out, rows, 2 * pixels, threshold);
  }
}

}  // namespace ppl::PPL_LEVEL
