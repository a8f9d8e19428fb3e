// Reconstruction of R, G, B at every site, and at once the colour conversion.
//
// Each interpolator reads rows r - 1 .. r + 1 and columns c - 1 .. c + 1 of the mosaic (directed: c - 2 .. c + 2, and
// the same of the green rows). Even rows hold B, Gb; odd rows Gr, R. By symmetry an odd row is an even one with B
// and R, and even and odd columns, changing places: "own" is the row's own colour (B or R), "other" the colour of
// the rows above and below. avg(a, b) = (a + b + 1) >> 1 on bytes throughout.
#pragma once

#include "tile/colour.h"
#include "tile/kernels.h"
#include "tile/simd.h"

namespace ppl::PPL_LEVEL {

namespace demosaic_detail {

template <class V>
struct neighbourhood {
  V up_left, up, up_right, left, centre, right, down_left, down, down_right;
};

template <class V>
PPL_INLINE neighbourhood<V> around(const uint8_t* const rows[3], int x) {
  return {loadu<V>(rows[0] + x - 1), load<V>(rows[0] + x), loadu<V>(rows[0] + x + 1),
          loadu<V>(rows[1] + x - 1), load<V>(rows[1] + x), loadu<V>(rows[1] + x + 1),
          loadu<V>(rows[2] + x - 1), load<V>(rows[2] + x), loadu<V>(rows[2] + x + 1)};
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

// Quality 15. Missing green: the pair with the smaller difference; the vertical one if they tie.
struct gradient_interpolator {
  template <bool kOddRow, class V>
  static PPL_INLINE_MEMBER colours<V> at(const demosaic_args& a, int x) {
    using namespace demosaic_detail;
    const neighbourhood<V> n = around<V>(a.rows, x);
    const auto vertical = le_u8(absdiff_u8(n.up, n.down), absdiff_u8(n.left, n.right));
    const V green = select(vertical, avg8(n.up, n.down), avg8(n.left, n.right));
    return bilinear_with_green<kOddRow>(n, green);
  }
};

// Quality 2. Missing green: the mean of both pairs' means.
struct bilinear_interpolator {
  template <bool kOddRow, class V>
  static PPL_INLINE_MEMBER colours<V> at(const demosaic_args& a, int x) {
    using namespace demosaic_detail;
    const neighbourhood<V> n = around<V>(a.rows, x);
    return bilinear_with_green<kOddRow>(n, avg8(avg8(n.left, n.right), avg8(n.up, n.down)));
  }
};

// Qualities 0, 1, 10, 11. Colour differences D = S - G interpolated against the filled green, arithmetic shifts:
//   at own sites    other: G + (sum of the four diagonal D >> 2)
//   at green sites  own: G + (D left + D right >> 1); other: G + (D above + D below >> 1)
// each clamped to 0..255; then a flat block's colours, where a mask says so.
template <bool kFlat>
struct directed_interpolator {
  // D of the row's even or odd columns, as lanes; dx shifts by whole lanes.
  template <bool kOddColumns, class V>
  static PPL_INLINE_MEMBER V difference(const uint8_t* s, const uint8_t* g, int x) {
    const V vs = loadu<V>(s + x), vg = loadu<V>(g + x);
    return kOddColumns ? sub16(odd(vs), odd(vg)) : sub16(even(vs), even(vg));
  }

  template <bool kOddRow, class V>
  static PPL_INLINE_MEMBER colours<V> at(const demosaic_args& a, int x) {
    // Lane i: the cell of columns 2i, 2i + 1. The neighbour lane across is i + 1 for an even row (own colour at
    // even columns), i - 1 for an odd row; for the other colour the other way round.
    constexpr int kOwnStep = kOddRow ? -2 : 2;
    const V own = difference<kOddRow, V>(a.rows[1], a.green[1], x);
    const V own_next = difference<kOddRow, V>(a.rows[1], a.green[1], x + kOwnStep);
    const V other = add16(difference<!kOddRow, V>(a.rows[0], a.green[0], x),
                          difference<!kOddRow, V>(a.rows[2], a.green[2], x));
    const V other_next = add16(difference<!kOddRow, V>(a.rows[0], a.green[0], x - kOwnStep),
                               difference<!kOddRow, V>(a.rows[2], a.green[2], x - kOwnStep));
    const V g = load<V>(a.green[1] + x), s = load<V>(a.rows[1] + x);
    const V g_own = kOddRow ? odd(g) : even(g), g_green = kOddRow ? even(g) : odd(g);
    const V own_at_own = kOddRow ? odd(s) : even(s);
    const V other_at_own = clamp_u8_16(add16(g_own, sra16<2>(add16(other, other_next))));
    const V own_at_green = clamp_u8_16(add16(g_green, sra16<1>(add16(own, own_next))));
    const V other_at_green = clamp_u8_16(add16(g_green, sra16<1>(other)));
    colours<V> c;
    if constexpr (kOddRow)
      c = {own_at_green, own_at_own, g_green, g_own, other_at_green, other_at_own};
    else
      c = {other_at_own, other_at_green, g_own, g_green, own_at_own, own_at_green};
    if constexpr (kFlat) {
      const auto flat = to_mask16(load<V>(a.flat_mask + x));
      const V fr = load<V>(a.flat_r + x), fg = load<V>(a.flat_g + x), fb = load<V>(a.flat_b + x);
      c = {select(flat, fr, c.r_even), select(flat, fr, c.r_odd),  select(flat, fg, c.g_even),
           select(flat, fg, c.g_odd),  select(flat, fb, c.b_even), select(flat, fb, c.b_odd)};
    }
    return c;
  }
};

template <class Interpolator, bool kOddRow>
static void demosaic_row(const demosaic_args& args) {
  const demosaic_args a = args;
  const colour_matrix matrix = *a.matrix;
  const colour_out out = {&matrix, a.luma, a.chroma, a.plane3};
  with_colour_form(out, [&]<colour_form kForm>() {
    walk_padded(a.width, [&]<class V>(int x) {
      put_colours<kForm>(out, x, Interpolator::template at<kOddRow, V>(a, x));
    });
  });
}

template <class Interpolator>
static void demosaic(const demosaic_args& a) {
  a.odd_row != 0 ? demosaic_row<Interpolator, true>(a) : demosaic_row<Interpolator, false>(a);
}

static void demosaic_gradient(const demosaic_args& a) {
  demosaic<gradient_interpolator>(a);
}
static void demosaic_bilinear(const demosaic_args& a) {
  demosaic<bilinear_interpolator>(a);
}
static void demosaic_directed(const demosaic_args& a) {
  a.flat_mask != nullptr ? demosaic<directed_interpolator<true>>(a)
                         : demosaic<directed_interpolator<false>>(a);
}

}  // namespace ppl::PPL_LEVEL
