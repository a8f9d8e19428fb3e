// Reconstruction of R, G, B at every site, and the colour conversion in the same step.
//
// Each interpolator reads rows r - 1 .. r + 1 and columns c - 1 .. c + 1 of the mosaic (directed: c - 2 .. c + 2, and
// the same of the green rows). Even rows hold B, Gb; odd rows Gr, R. By symmetry an odd row is an even one with B
// and R, and even and odd columns, changing places: "own" is the row's own colour (B or R), "other" the colour of
// the rows above and below. avg(a, b) = (a + b + 1) >> 1 on bytes throughout.
#pragma once

#include "simd/simd-inl.h"
#include "tile/colour-inl.h"
#include "tile/kernels.h"

namespace ppl::PPL_LEVEL {

namespace demosaic_detail {

template <class V>
struct neighbourhood {
  V up_left, up, up_right, left, centre, right, down_left, down, down_right;
};

template <class V>
PPL_INLINE neighbourhood<V> around(const rows_around<3>& r, int x) {
  return {loadu<V>(r[-1] + x - 1), load<V>(r[-1] + x), loadu<V>(r[-1] + x + 1),
          loadu<V>(r[0] + x - 1),  load<V>(r[0] + x),  loadu<V>(r[0] + x + 1),
          loadu<V>(r[1] + x - 1),  load<V>(r[1] + x),  loadu<V>(r[1] + x + 1)};
}

// Means of two and four neighbours, straight to lanes: own colour and other colour of every column, green by the
// caller's rule at own sites.
//   at own sites    own: the sample; other: mean of the diagonals, first vertically, then across
//   at green sites  own: mean of left and right; other: mean of above and below
template <bool kOddRow, class V>
PPL_INLINE colours<V> bilinear_with_green(const neighbourhood<V>& n, V green_at_site) {
  const V across = avg8(n.left, n.right), along = avg8(n.up, n.down);
  const V diagonal = avg8(avg8(n.up_left, n.down_left), avg8(n.up_right, n.down_right));
  if constexpr (kOddRow)
    return {even(across), odd(n.centre), even(n.centre), odd(green_at_site), even(along), odd(diagonal)};
  else
    return {even(diagonal), odd(along), even(green_at_site), odd(n.centre), even(n.centre), odd(across)};
}

}  // namespace demosaic_detail

// What an interpolator reads to make a row.
struct demosaic_source {
  rows_around<3> mosaic, green;
  const uint8_t *flat_mask, *flat_r, *flat_g, *flat_b;
};

// Gradient. Missing green: the mean of the pair with the smaller difference; of the vertical one if they tie.
struct gradient_interpolator {
  template <bool kOddRow, class V>
  static PPL_INLINE_MEMBER colours<V> at(const demosaic_source& s, int x) {
    using namespace demosaic_detail;
    const neighbourhood<V> n = around<V>(s.mosaic, x);
    const auto vertical = le_u8(absdiff_u8(n.up, n.down), absdiff_u8(n.left, n.right));
    const V green = select(vertical, avg8(n.up, n.down), avg8(n.left, n.right));
    return bilinear_with_green<kOddRow>(n, green);
  }
};

// Bilinear. Missing green: the mean of both pairs' means.
struct bilinear_interpolator {
  template <bool kOddRow, class V>
  static PPL_INLINE_MEMBER colours<V> at(const demosaic_source& s, int x) {
    using namespace demosaic_detail;
    const neighbourhood<V> n = around<V>(s.mosaic, x);
    return bilinear_with_green<kOddRow>(n, avg8(avg8(n.left, n.right), avg8(n.up, n.down)));
  }
};

// Directed. Colour differences D = S - G interpolated against the filled green, arithmetic shifts:
//   at own sites    other: G + (sum of the four diagonal D >> 2)
//   at green sites  own: G + (D left + D right >> 1); other: G + (D above + D below >> 1)
// each clamped to 0..255; then a flat block's colours, where a mask says so.
template <bool kFlat>
struct directed_interpolator {
  // D of the row's even or odd columns, as lanes; dx shifts by whole lanes.
  template <bool kOddColumns, class V>
  static PPL_INLINE_MEMBER V difference(const demosaic_source& s, int row, int x) {
    const V vs = loadu<V>(s.mosaic[row] + x), vg = loadu<V>(s.green[row] + x);
    return kOddColumns ? sub16(odd(vs), odd(vg)) : sub16(even(vs), even(vg));
  }

  template <bool kOddRow, class V>
  static PPL_INLINE_MEMBER colours<V> at(const demosaic_source& s, int x) {
    // Lane i: the cell of columns 2i, 2i + 1. The neighbour lane across is i + 1 for an even row (own colour at
    // even columns), i - 1 for an odd row; for the other colour the other way round.
    constexpr int kOwnStep = kOddRow ? -2 : 2;
    const V own = difference<kOddRow, V>(s, 0, x);
    const V own_next = difference<kOddRow, V>(s, 0, x + kOwnStep);
    const V other = add16(difference<!kOddRow, V>(s, -1, x), difference<!kOddRow, V>(s, 1, x));
    const V other_next =
        add16(difference<!kOddRow, V>(s, -1, x - kOwnStep), difference<!kOddRow, V>(s, 1, x - kOwnStep));
    const V g = load<V>(s.green[0] + x), sample = load<V>(s.mosaic[0] + x);
    const V g_own = kOddRow ? odd(g) : even(g), g_green = kOddRow ? even(g) : odd(g);
    const V own_at_own = kOddRow ? odd(sample) : even(sample);
    const V other_at_own = clamp_u8_16(add16(g_own, sra16<2>(add16(other, other_next))));
    const V own_at_green = clamp_u8_16(add16(g_green, sra16<1>(add16(own, own_next))));
    const V other_at_green = clamp_u8_16(add16(g_green, sra16<1>(other)));
    colours<V> c;
    if constexpr (kOddRow)
      c = {own_at_green, own_at_own, g_green, g_own, other_at_green, other_at_own};
    else
      c = {other_at_own, other_at_green, g_own, g_green, own_at_own, own_at_green};
    if constexpr (kFlat) {
      const auto flat = to_mask16(load<V>(s.flat_mask + x));
      const V fr = load<V>(s.flat_r + x), fg = load<V>(s.flat_g + x), fb = load<V>(s.flat_b + x);
      c = {select(flat, fr, c.r_even), select(flat, fr, c.r_odd),  select(flat, fg, c.g_even),
           select(flat, fg, c.g_odd),  select(flat, fb, c.b_even), select(flat, fb, c.b_odd)};
    }
    return c;
  }
};

template <class Interpolator, bool kOddRow>
PPL_INLINE void demosaic_row(const demosaic_source& source, const colour_matrix& m, const colour_out& out,
                             int width) {
  const matrix_vectors<wide> matrix(m);
  with_colour_form(out, [&]<colour_form kForm>() {
    walk_padded(width, [&]<class V>(int x) {
      put_colours<kForm>(out, matrix, x, Interpolator::template at<kOddRow, V>(source, x));
    });
  });
}

// Row r + i.
template <class Interpolator>
static void demosaic(const demosaic_args& a, int i) {
  const demosaic_source source = {three_rows(a.rows + i),
                                  a.green != nullptr ? three_rows(a.green + i) : rows_around<3>{},
                                  a.flat_mask,
                                  a.flat_r,
                                  a.flat_g,
                                  a.flat_b};
  const colour_out out = {{a.plane[0][i], in_bits(a.with_chroma, i) ? a.plane[1][i] : nullptr,
                           a.plane[2] != nullptr ? a.plane[2][i] : nullptr}};
  ((a.odd_row + i) & 1) != 0 ? demosaic_row<Interpolator, true>(source, *a.matrix, out, a.width)
                             : demosaic_row<Interpolator, false>(source, *a.matrix, out, a.width);
}

static void demosaic_gradient(const demosaic_args& a) {
  each_row(a.made, [&](int i) { demosaic<gradient_interpolator>(a, i); });
}
static void demosaic_bilinear(const demosaic_args& a) {
  each_row(a.made, [&](int i) { demosaic<bilinear_interpolator>(a, i); });
}
static void demosaic_directed(const demosaic_args& a) {
  each_row(a.made & a.with_flat, [&](int i) { demosaic<directed_interpolator<true>>(a, i); });
  each_row(a.made & ~a.with_flat, [&](int i) { demosaic<directed_interpolator<false>>(a, i); });
}

}  // namespace ppl::PPL_LEVEL
