// Quality 12: a directional gradient sharpens the mosaic itself, then the colour conversion takes every sample for
// R, G and B alike. Works on the two rows of a row pair, tile by tile.
//
// Reads rows 2p - 1 .. 2p + 2, columns c - 1 .. c + 1:
//   Gv = sum of the three below - sum of the three above;  Gh = sum of the three right - sum of the three left
//   m = |Gv| + |Gh| strictly between the edge thresholds adds ((Gv + Gh) * factor) >> 5, 16-bit product, arithmetic
// In the formats with luma, Y overwrites the mosaic of a finished tile: the first column of the next tile sees Y to
// its left, and the next row pair sees Y in the row above. That mixture is the filter's definition.
#pragma once

#include "tile/colour.h"
#include "tile/edge.h"
#include "tile/kernels.h"
#include "tile/simd.h"

namespace ppl::PPL_LEVEL {

namespace mosaic_edge_detail {

template <class V, class Lane>
PPL_INLINE V sharpened(const edge_band& band, const uint8_t* const rows[3], int x, Lane lane) {
  const auto at = [&](int row, int dx) { return lane(loadu<V>(rows[row] + x + dx)); };
  const V up_left = at(0, -1), up_right = at(0, 1), down_left = at(2, -1), down_right = at(2, 1);
  const V gv =
      sub16(add16(add16(down_left, at(2, 0)), down_right), add16(add16(up_left, at(0, 0)), up_right));
  const V gh =
      sub16(add16(add16(up_right, at(1, 1)), down_right), add16(add16(up_left, at(1, -1)), down_left));
  const V gain = edge_gain(band, add16(gv, gh), add16(abs16(gv), abs16(gh)));
  return clamp_u8_16(add16(at(1, 0), gain));
}

}  // namespace mosaic_edge_detail

static void mosaic_edge(const mosaic_edge_args& args) {
  using namespace mosaic_edge_detail;
  using V = vec16;
  const mosaic_edge_args a = args;
  const colour_matrix matrix = *a.matrix;
  const edge_band band(*a.context);
  const auto even_lane = [](V v) { return even(v); };
  const auto odd_lane = [](V v) { return odd(v); };
  for (int x = 0; x < a.width; x += kTile) {
    colours<V> grey[2];
    for (int i = 0; i < 2; ++i) {
      const V e = sharpened<V>(band, a.rows + i, x, even_lane),
              o = sharpened<V>(band, a.rows + i, x, odd_lane);
      grey[i] = {e, o, e, o, e, o};
    }
    for (int i = 0; i < 2; ++i) {
      const colour_out out = {&matrix, a.luma[i], a.chroma[i], a.three_planes != 0 ? a.plane3[i] : nullptr};
      with_colour_form(out, [&]<colour_form kForm>() { put_colours<kForm>(out, x, grey[i]); });
      if (a.three_planes == 0) store(a.rows[i + 1] + x, load<V>(a.luma[i] + x));
    }
  }
}

}  // namespace ppl::PPL_LEVEL
