// Noise filter of quality 15: a pixel becomes the mean of the two middle values of its four neighbours, where
// these agree with each other. The centre takes part neither in the mean nor in the test.
//
// Reads luma and chroma of rows r - 1 .. r + 1, columns c - 1 .. c + 1 (chroma: one word on either side); writes both
// of row r.
//       U      flat: |U - D| below the edge threshold and |L - R| below the medium filter's diff threshold, both
//     L c R    strictly, the thresholds as signed 16 bits. The mean is rounded down. Chroma follows the decision
//       D      of the pair's even column; its left and right neighbours are the words next to it.
#pragma once

#include "tile/kernels.h"
#include "tile/simd.h"

namespace ppl::PPL_LEVEL {

namespace noise_detail {

// Rounded down: the rounded-up mean less the bit that rounding added.
template <class V>
PPL_INLINE V mean_down(V a, V b) {
  return sub8(avg8(a, b), (a ^ b) & set8<V>(1));
}

template <class V>
PPL_INLINE V middle_mean(V up, V down, V left, V right) {
  const V a = max_u8(min_u8(up, down), min_u8(left, right));
  const V b = min_u8(max_u8(up, down), max_u8(left, right));
  return mean_down(a, b);
}

// "d < t" for a byte d and a signed 16-bit t as d <= limit: t - 1 within 0..255; nothing passes at t <= 0.
struct byte_limit {
  int limit;
  bool any;
};
PPL_INLINE byte_limit below(int t) {
  return {t > 256 ? 255 : t - 1, t > 0};
}

// The rows of both planes, and where they go.
struct noise_rows {
  rows_around<3> luma, chroma;
  uint8_t *luma_out, *chroma_out;
};

PPL_INLINE void copy_rows(noise_rows r, int width) {
  walk_padded(width, [&]<class V>(int x) {
    store(r.luma_out + x, load<V>(r.luma[0] + x));
    store(r.chroma_out + x, load<V>(r.chroma[0] + x));
  });
}

PPL_INLINE void filter_rows(noise_rows r, byte_limit vertical, byte_limit horizontal, int width) {
  walk_padded(width, [&]<class V>(int x) {
    const V up = load<V>(r.luma[-1] + x), down = load<V>(r.luma[1] + x);
    const V left = loadu<V>(r.luma[0] + x - 1), right = loadu<V>(r.luma[0] + x + 1);
    const auto flat = le_u8(absdiff_u8(up, down), set8<V>(vertical.limit)) &
                      le_u8(absdiff_u8(left, right), set8<V>(horizontal.limit));
    store(r.luma_out + x, select(flat, middle_mean(up, down, left, right), load<V>(r.luma[0] + x)));
    const V mean = middle_mean(load<V>(r.chroma[-1] + x), load<V>(r.chroma[1] + x),
                               loadu<V>(r.chroma[0] + x - 2), loadu<V>(r.chroma[0] + x + 2));
    store(r.chroma_out + x, select(even_decides(flat), mean, load<V>(r.chroma[0] + x)));
  });
}

}  // namespace noise_detail

static void noise_filter(const noise_args& a) {
  using namespace noise_detail;
  const byte_limit vertical = below(a.context->edge_threshold_vector.lane[0]);
  const byte_limit horizontal = below(a.context->medium_diff_plus.lane[0]);
  for (int i = 0; i < 2; ++i) {
    if (!in_bits(a.made, i)) continue;
    const noise_rows rows = {three_rows(a.luma + i), three_rows(a.chroma + i), a.luma_out[i],
                             a.chroma_out[i]};
    if (vertical.any && horizontal.any)
      filter_rows(rows, vertical, horizontal, a.width);
    else
      copy_rows(rows, a.width);
  }
}

}  // namespace ppl::PPL_LEVEL
