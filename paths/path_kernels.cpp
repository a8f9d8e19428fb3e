// This room's vector code for one level.
#include "paths/kernels.h"

#include "paths/flat_test-inl.h"
#include "paths/mosaic_edge-inl.h"
#include "record/levels.h"
#include "simd/simd-inl.h"

namespace ppl::PPL_LEVEL {
namespace {

// A vector of the record, repeated to V's width. At 16 bytes it is an aligned load, which can be an operand in memory:
// there are more coefficients than registers.
template <class V>
PPL_INLINE V constant(const vec_i16& v) {
  if constexpr (V::size == 16)
    return load<V>(&v);
  else
    return repeat16<V>(&v);
}

// One row of a colour matrix over the cell's R and B; the green is added later.
template <class V>
struct matrix_row {
  V rest, green;
  PPL_INLINE_MEMBER matrix_row(const vec_i16* coef, const vec_i16& offset, V r, V b)
      : rest(add16(add16(mullo16(r, constant<V>(coef[0])), mullo16(b, constant<V>(coef[2]))),
                   constant<V>(offset))),
        green(constant<V>(coef[1])) {}
  PPL_INLINE_MEMBER V at(V g) const { return sra16<6>(add16(rest, mullo16(g, green))); }
};

// The samples of as many cells as V has 16-bit lanes.
template <class V>
struct cells {
  V b, gb, gr, r, gm;
  PPL_INLINE_MEMBER cells(const uint8_t* even_row, const uint8_t* odd_row) {
    const V e = loadu<V>(even_row), o = loadu<V>(odd_row);
    b = even(e);
    gb = odd(e);
    gr = even(o);
    r = odd(o);
    gm = avg8(gb, gr);
  }
};

constexpr vec_i16 kChromaOffset = {{32, 32, 32, 32, 32, 32, 32, 32}};

// put(x, u, v) stores the chroma of the cells at column x: 16-bit lanes, not clamped yet.
template <class Put>
PPL_INLINE void luma_and_chroma(const cell_rows& a, Put&& put) {
  const ppl_context& c = *a.context;
  const uint8_t *const even_row = a.even, *const odd_row = a.odd;
  uint8_t *const luma_0 = a.luma[0], *const luma_1 = a.luma[1];
  walk_exact(a.width, [&]<class V>(int x) {
    const cells<V> s(even_row + x, odd_row + x);
    const matrix_row<V> y(&c.yuv_coef[0], c.luma_offset, s.r, s.b);
    const V centre = y.at(s.gm);
    storeu(luma_0 + x, join_clamp8(centre, y.at(s.gb)));
    storeu(luma_1 + x, join_clamp8(y.at(s.gr), centre));
    const matrix_row<V> u(&c.yuv_coef[3], kChromaOffset, s.r, s.b);
    const matrix_row<V> v(&c.yuv_coef[6], kChromaOffset, s.r, s.b);
    put(x, add16(u.at(s.gm), set16<V>(128)), add16(v.at(s.gm), set16<V>(128)));
  });
}

// Pointers are copied one by one: stores do not reach the copies. To copy the whole record of arguments would be to
// load, in wider pieces, what has just been stored, and to wait for those stores.
void cells_to_yuv(const cell_rows& a) {
  uint8_t *const u_row = a.u, *const v_row = a.v;
  luma_and_chroma(
      a, [&]<class V>(int x, V u, V v) { store_halves(u_row + x / 2, v_row + x / 2, pack_u8(u, v)); });
}

void cells_to_words(const cell_rows& a) {
  uint8_t* const words = a.words;
  luma_and_chroma(a, [&]<class V>(int x, V u, V v) { storeu(words + x, join_clamp8(u, v)); });
}

void cells_to_rgb(const cell_rows& a) {
  const ppl_context& c = *a.context;
  const uint8_t *const even_row = a.even, *const odd_row = a.odd;
  uint8_t *const r = a.r, *const g_0 = a.g[0], *const g_1 = a.g[1], *const b = a.b;
  walk_exact(a.width, [&]<class V>(int x) {
    const cells<V> s(even_row + x, odd_row + x);
    const V red = matrix_row<V>(&c.rgb_coef[0], c.rgb_offset_vector, s.r, s.b).at(s.gm);
    const matrix_row<V> green(&c.rgb_coef[3], c.rgb_offset_vector, s.r, s.b);
    const V blue = matrix_row<V>(&c.rgb_coef[6], c.rgb_offset_vector, s.r, s.b).at(s.gm);
    const V centre = green.at(s.gm);
    storeu(r + x, join_clamp8(red, red));
    storeu(g_0 + x, join_clamp8(centre, green.at(s.gb)));
    storeu(g_1 + x, join_clamp8(green.at(s.gr), centre));
    storeu(b + x, join_clamp8(blue, blue));
  });
}

}  // namespace

extern const path_kernels path_table;
const path_kernels path_table = {
    .cells_to_yuv = cells_to_yuv,
    .cells_to_words = cells_to_words,
    .cells_to_rgb = cells_to_rgb,
    .flat_test = flat_test,
    .mosaic_edge = mosaic_edge,
};

}  // namespace ppl::PPL_LEVEL
