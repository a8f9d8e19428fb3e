// A directional gradient sharpens the mosaic itself, then the colour conversion takes every sample for R, G and B
// alike. Works on the two rows of a row pair.
//
// Reads rows 2p - 1 .. 2p + 2, columns c - 1 .. c + 1:
//   Gv = sum of the three below - sum of the three above;  Gh = sum of the three right - sum of the three left
//   m = |Gv| + |Gh| strictly between the edge thresholds adds ((Gv + Gh) * factor) >> 5, 16-bit product, arithmetic
// In the formats with luma, Y overwrites the mosaic of a finished tile: the first column of the next tile has Y to its
// left, and the next row pair has Y in the row above. Pictures depend on that mixture. At the top and the bottom of
// the frame the rows around the pair are its own, mirrored.
//
// In its own rows only the first column of a tile meets Y, and the neighbours of an odd column are even ones, so
// nothing is passed on from tile to tile: the odd columns of a vector come first, then the even ones. By then the last
// column of every tile, to their left, is finished.
#pragma once

#include "paths/kernels.h"
#include "simd/simd-inl.h"
#include "tile/edge_band-inl.h"

namespace ppl::PPL_LEVEL {

namespace mosaic_edge_detail {

// What a gradient `e` of the given size adds, if the size lies within the band.
template <class V>
PPL_INLINE V edge_gain(const edge_band& band, V e, V size) {
  const auto inside = gt_s16(size, repeat16<V>(&band.low)) & gt_s16(repeat16<V>(&band.high), size);
  return keep(inside, sra16<5>(mullo16(e, repeat16<V>(&band.factor))));
}

// A column of samples in the rows 2p - 1 .. 2p + 2, seen from row 2p and from row 2p + 1.
template <class V>
struct column {
  V sum[2], fall[2];  // of the three samples around the row; the one below it less the one above
  PPL_INLINE_MEMBER explicit column(const V (&s)[4]) {
    const V middle = add16(s[1], s[2]);
    sum[0] = add16(middle, s[0]);
    sum[1] = add16(middle, s[3]);
    fall[0] = sub16(s[2], s[0]);
    fall[1] = sub16(s[3], s[1]);
  }
};

// The sharpened sample of row i, `sample` being the one in column `here`.
template <class V>
PPL_INLINE V sharpened(const edge_band& band, int i, V sample, const column<V>& left, const column<V>& here,
                       const column<V>& right) {
  const V gv = add16(add16(left.fall[i], here.fall[i]), right.fall[i]);
  const V gh = sub16(right.sum[i], left.sum[i]);
  const V gain = edge_gain(band, add16(gv, gh), add16(abs16(gv), abs16(gh)));
  return clamp_u8_16(add16(sample, gain));
}

// The colour matrix with R = G = B has one coefficient a row, the sum of three. Sums and products wrap, so the result
// is the same.
struct grey_matrix {
  vec_i16 coef[3], offset[3], bias[3];
  explicit grey_matrix(const colour_matrix& m) {
    for (int row = 0; row < 3; ++row) {
      const vec_i16* const c = m.coef + 3 * row;
      store(coef + row, add16(add16(load<vec16>(c), load<vec16>(c + 1)), load<vec16>(c + 2)));
      offset[row] = m.offset[row];
      bias[row] = m.bias[row];
    }
  }
  // Not clamped yet. Row 0 has no bias.
  template <int kRow, class V>
  PPL_INLINE_MEMBER V at(V e) const {
    const V y = sra16<6>(add16(mullo16(e, repeat16<V>(coef + kRow)), repeat16<V>(offset + kRow)));
    return kRow == 0 ? y : add16(y, repeat16<V>(bias + kRow));
  }
};

// The samples of odd columns, each moved to the even column after it. The last column of every tile is replaced by
// finished Y; that of the tile before the vector is finished in memory.
template <class V>
PPL_INLINE V left_of_even(const uint8_t* row, V samples, V finished) {
  if constexpr (V::size > 16) {
    alignas(16) static constexpr uint8_t kTileEnd[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 255, 255};
    samples = select(to_mask16(repeat16<V>(kTileEnd)), finished, samples);
  }
  return move_up16(odd(load<V>(row - V::size)), samples);
}

// f(0), f(1) ... written out, so that no array of vectors takes stack even where the optimizer leaves loops alone.
template <int n, class F>
PPL_INLINE void each_of(const F& f) {
  f(0);
  f(1);
  if constexpr (n > 2) f(2);
  if constexpr (n > 3) f(3);
}

template <bool kThreePlanes>
PPL_INLINE void mosaic_edge_rows(const mosaic_edge_args& a) {
  const grey_matrix grey(*a.matrix);
  const edge_band band(*a.context);
  walk_padded(a.width, [&]<class V>(int x) {
    V evens[4], odds[4];
    each_of<4>([&](int r) __attribute__((always_inline)) {
      const V samples = load<V>(a.rows[r] + x);
      evens[r] = even(samples);
      odds[r] = odd(samples);
    });
    const column<V> even_columns(evens), odd_columns(odds);
    V e_even[2], e_odd[2], y_odd[2];
    {
      V behind[4];
      each_of<4>([&](int r)
                     __attribute__((always_inline)) { behind[r] = even(loadu<V>(a.rows[r] + x + 2)); });
      const column<V> next(behind);
      each_of<2>([&](int i) __attribute__((always_inline)) {
        e_odd[i] = sharpened(band, i, odds[i + 1], even_columns, odd_columns, next);
        if constexpr (!kThreePlanes) y_odd[i] = grey.at<0>(e_odd[i]);
      });
    }
    V before[4];
    const auto raw = [&](int r) __attribute__((always_inline)) {
      return odd(loadu<V>(a.rows[r] + x - 2));
    };
    each_of<2>([&](int i) __attribute__((always_inline)) {
      before[i + 1] =
          kThreePlanes ? raw(i + 1) : left_of_even(a.rows[i + 1] + x, odds[i + 1], clamp_u8_16(y_odd[i]));
    });
    before[0] = a.rows[0] == a.rows[2] ? before[2] : raw(0);
    before[3] = a.rows[3] == a.rows[1] ? before[1] : raw(3);
    const column<V> previous(before);
    each_of<2>([&](int i) __attribute__((always_inline)) {
      e_even[i] = sharpened(band, i, evens[i + 1], previous, even_columns, odd_columns);
      if constexpr (kThreePlanes) {
        store(a.plane[0][i] + x, join_clamp8(grey.at<0>(e_even[i]), grey.at<0>(e_odd[i])));
        store(a.plane[1][i] + x, join_clamp8(grey.at<1>(e_even[i]), grey.at<1>(e_odd[i])));
        store(a.plane[2][i] + x, join_clamp8(grey.at<2>(e_even[i]), grey.at<2>(e_odd[i])));
      } else {
        const V y = join_clamp8(grey.at<0>(e_even[i]), y_odd[i]);
        store(a.plane[0][i] + x, y);
        store(a.rows[i + 1] + x, y);
        if (a.plane[1][i] != nullptr)
          store(a.plane[1][i] + x, join_clamp8(grey.at<1>(e_even[i]), grey.at<2>(e_even[i])));
      }
    });
  });
}

}  // namespace mosaic_edge_detail

static void mosaic_edge(const mosaic_edge_args& args) {
  const mosaic_edge_args a = args;
  if (a.three_planes != 0)
    mosaic_edge_detail::mosaic_edge_rows<true>(a);
  else
    mosaic_edge_detail::mosaic_edge_rows<false>(a);
}

}  // namespace ppl::PPL_LEVEL
