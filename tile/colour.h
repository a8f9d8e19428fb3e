// Colour conversion: reconstructed R, G, B of a vector of columns to the bytes that the next block reads.
//
// All products and sums are 16-bit and wrap; the shift by 6 is arithmetic; the result is clamped. Two forms:
//   luma and chroma  Y of every column to one row; U and V of even columns as words (U, V) with 128 added to
//                    another. Chroma is clamped to -128..127 before that.
//   three planes     every column of all three matrix rows, each to a row of its own (R, G, B, or Y, U, V with 128
//                    added to U and V)
// The matrix rows take R, G, B in this order.
#pragma once

#include "tile/kernels.h"
#include "tile/simd.h"

namespace ppl::PPL_LEVEL {

// Colours of a vector of columns as 16-bit lanes, even and odd columns apart, each within 0..255.
template <class V>
struct colours {
  V r_even, r_odd, g_even, g_odd, b_even, b_odd;
};

template <class V>
PPL_INLINE V matrix_row(const colour_matrix& m, int row, V r, V g, V b) {
  const V rg =
      add16(mullo16(r, repeat16<V>(&m.coef[3 * row])), mullo16(g, repeat16<V>(&m.coef[3 * row + 1])));
  const V gb = add16(mullo16(b, repeat16<V>(&m.coef[3 * row + 2])), repeat16<V>(&m.offset[row]));
  return sra16<6>(add16(rg, gb));
}

template <class V>
PPL_INLINE V matrix_row_even(const colour_matrix& m, int row, const colours<V>& c) {
  return matrix_row(m, row, c.r_even, c.g_even, c.b_even);
}
template <class V>
PPL_INLINE V matrix_row_odd(const colour_matrix& m, int row, const colours<V>& c) {
  return matrix_row(m, row, c.r_odd, c.g_odd, c.b_odd);
}

template <class V>
PPL_INLINE V plane(const colour_matrix& m, int row, const colours<V>& c) {
  const V bias = repeat16<V>(&m.bias[row]);
  return join_clamp8(add16(matrix_row_even(m, row, c), bias), add16(matrix_row_odd(m, row, c), bias));
}

struct colour_out {
  const colour_matrix* matrix;
  uint8_t *luma, *chroma, *plane3;
};

enum class colour_form { luma, luma_chroma, three_planes };

template <colour_form kForm, class V>
PPL_INLINE void put_colours(const colour_out& o, int x, const colours<V>& c) {
  const colour_matrix& m = *o.matrix;
  if constexpr (kForm == colour_form::three_planes) {
    store(o.luma + x, plane(m, 0, c));
    store(o.chroma + x, plane(m, 1, c));
    store(o.plane3 + x, plane(m, 2, c));
  } else {
    store(o.luma + x, join_clamp8(matrix_row_even(m, 0, c), matrix_row_odd(m, 0, c)));
    if constexpr (kForm == colour_form::luma_chroma) {
      const V bias = set16<V>(128);
      store(o.chroma + x,
            join_clamp8(add16(matrix_row_even(m, 1, c), bias), add16(matrix_row_even(m, 2, c), bias)));
    }
  }
}

// Runs body<form>() for the form that the outputs ask for.
template <class Body>
PPL_INLINE void with_colour_form(const colour_out& o, Body&& body) {
  if (o.plane3 != nullptr)
    body.template operator()<colour_form::three_planes>();
  else if (o.chroma != nullptr)
    body.template operator()<colour_form::luma_chroma>();
  else
    body.template operator()<colour_form::luma>();
}

}  // namespace ppl::PPL_LEVEL
