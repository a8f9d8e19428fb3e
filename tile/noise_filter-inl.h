// Noise filter: a pixel becomes the mean of the two middle values of its four neighbours, where these agree with each
// other. The centre takes part neither in the mean nor in the test.
//
// Reads luma and chroma of rows r - 1 .. r + 1, columns c - 1 .. c + 1 (chroma: one word on either side); writes both
// of row r.
//       U      flat: |U - D| below the edge threshold and |L - R| below the medium filter's diff threshold, both
//     L c R    strictly, the thresholds as signed 16 bits. The mean is rounded down. Chroma follows the decision
//       D      of the pair's even column; its left and right neighbours are the words next to it.
#pragma once

#include "simd/simd-inl.h"
#include "tile/kernels.h"

namespace ppl::PPL_LEVEL {

namespace noise_detail {

// Two neighbours on opposite sides, in order.
template <class V>
struct opposite {
  V low, high;
  PPL_INLINE_MEMBER opposite(V a, V b) : low(min_u8(a, b)), high(max_u8(a, b)) {}
  // 0 where they differ by `limit` at most.
  PPL_INLINE_MEMBER V beyond(V limit) const { return subs_u8(sub8(high, low), limit); }
};

template <class V>
PPL_INLINE V middle_mean(const opposite<V>& a, const opposite<V>& b) {
  return avg_down8(max_u8(a.low, b.low), min_u8(a.high, b.high));
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
    const opposite<V> column(load<V>(r.luma[-1] + x), load<V>(r.luma[1] + x));
    const opposite<V> row(loadu<V>(r.luma[0] + x - 1), loadu<V>(r.luma[0] + x + 1));
    const V beyond = column.beyond(set8<V>(vertical.limit)) | row.beyond(set8<V>(horizontal.limit));
    store(r.luma_out + x, select(eq8(beyond, zero<V>()), middle_mean(column, row), load<V>(r.luma[0] + x)));
    const opposite<V> words_column(load<V>(r.chroma[-1] + x), load<V>(r.chroma[1] + x));
    const opposite<V> words_row(loadu<V>(r.chroma[0] + x - 2), loadu<V>(r.chroma[0] + x + 2));
    store(r.chroma_out + x, select(eq16(even(beyond), zero<V>()), middle_mean(words_column, words_row),
                                   load<V>(r.chroma[0] + x)));
  });
}

}  // namespace noise_detail

static void noise_filter(const noise_args& a) {
  using namespace noise_detail;
  const byte_limit vertical = below(a.context->edge_threshold_vector.lane[0]);
  const byte_limit horizontal = below(a.context->medium_diff_plus.lane[0]);
  each_row(a.made, [&](int i) {
    const noise_rows rows = {three_rows(a.luma + i), three_rows(a.chroma + i), a.luma_out[i],
                             a.chroma_out[i]};
    if (vertical.any && horizontal.any)
      filter_rows(rows, vertical, horizontal, a.width);
    else
      copy_rows(rows, a.width);
  });
}

}  // namespace ppl::PPL_LEVEL
