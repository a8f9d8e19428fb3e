// Colour conversion: reconstructed R, G, B of a vector of columns to the bytes that the next block reads.
//
// All products and sums are 16-bit and wrap; the shift by 6 is arithmetic; the result is clamped. Two forms:
//   luma and chroma  Y of every column to one row; U and V of even columns as words (U, V) with 128 added to
//                    another. Chroma is clamped to -128..127 before that.
//   three planes     every column of all three matrix rows, each to a row of its own (R, G, B, or Y, U, V with 128
//                    added to U and V)
// The matrix rows take R, G, B in this order.
#pragma once

#include "simd/simd-inl.h"
#include "tile/kernels.h"

namespace ppl::PPL_LEVEL {

// Colours of a vector of columns as 16-bit lanes, even and odd columns apart, each within 0..255.
template <class V>
struct colours {
  V r_even, r_odd, g_even, g_odd, b_even, b_odd;
};

// A colour matrix, kept in registers as far as they go.
template <class V>
struct matrix_vectors {
  V coef[9], offset[3], bias[3];  // all with 6 fraction bits
  PPL_INLINE_MEMBER explicit matrix_vectors(const colour_matrix& m)
      : coef{at(m.coef[0]), at(m.coef[1]), at(m.coef[2]), at(m.coef[3]), at(m.coef[4]),
             at(m.coef[5]), at(m.coef[6]), at(m.coef[7]), at(m.coef[8])},
        offset{at(m.offset[0]), at(m.offset[1]), at(m.offset[2])},
        bias{sll16<6>(at(m.bias[0])), sll16<6>(at(m.bias[1])), sll16<6>(at(m.bias[2]))} {}
  static PPL_INLINE_MEMBER V at(const vec_i16& lanes) { return repeat16<V>(&lanes); }

  // Before the shift.
  PPL_INLINE_MEMBER V row(int n, V r, V g, V b) const {
    const V rg = add16(mullo16(r, coef[3 * n]), mullo16(g, coef[3 * n + 1]));
    return add16(rg, add16(mullo16(b, coef[3 * n + 2]), offset[n]));
  }
  PPL_INLINE_MEMBER V even_row(int n, const colours<V>& c) const {
    return row(n, c.r_even, c.g_even, c.b_even);
  }
  PPL_INLINE_MEMBER V odd_row(int n, const colours<V>& c) const { return row(n, c.r_odd, c.g_odd, c.b_odd); }
  PPL_INLINE_MEMBER V plane(int n, const colours<V>& c) const {
    return join_biased(even_row(n, c), odd_row(n, c), bias[n]);
  }
  // The bias is added before the shift: a sum that it takes out of 16 bits is beyond 255 either way.
  static PPL_INLINE_MEMBER V join_biased(V even_lanes, V odd_lanes, V bias) {
    return join_shifted8<6>(adds_s16(even_lanes, bias), adds_s16(odd_lanes, bias));
  }
};

struct colour_out {
  uint8_t* plane[3];  // Y and chroma words, or three planes; no chroma, no third plane: null
};

enum class colour_form { luma, luma_chroma, three_planes };

template <colour_form kForm, class V>
PPL_INLINE void put_colours(const colour_out& o, const matrix_vectors<V>& m, int x, const colours<V>& c) {
  if constexpr (kForm == colour_form::three_planes) {
    store(o.plane[0] + x, m.plane(0, c));
    store(o.plane[1] + x, m.plane(1, c));
    store(o.plane[2] + x, m.plane(2, c));
  } else {
    store(o.plane[0] + x, join_shifted8<6>(m.even_row(0, c), m.odd_row(0, c)));
    if constexpr (kForm == colour_form::luma_chroma) {
      store(o.plane[1] + x, m.join_biased(m.even_row(1, c), m.even_row(2, c), set16<V>(128 << 6)));
    }
  }
}
// Runs body<form>() for the form that the outputs ask for.
template <class Body>
PPL_INLINE void with_colour_form(const colour_out& o, Body&& body) {
  if (o.plane[2] != nullptr)
    body.template operator()<colour_form::three_planes>();
  else if (o.plane[1] != nullptr)
    body.template operator()<colour_form::luma_chroma>();
  else
    body.template operator()<colour_form::luma>();
}

}  // namespace ppl::PPL_LEVEL
