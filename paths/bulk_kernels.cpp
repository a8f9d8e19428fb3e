// The vector code of qualities 3 and 13 for one level.
#include "paths/bulk_kernels.h"

#include "platform/levels.h"
#include "tile/simd.h"

namespace ppl::PPL_LEVEL {
namespace {

// A vector of the record, repeated to V's width. At 16 bytes it is an aligned load, which an operation can take from
// memory: there are more coefficients than registers.
template <class V>
PPL_INLINE V constant(const vec_i16& v) {
  if constexpr (V::size == 16)
    return load<V>(&v);
  else
    return repeat16<V>(&v);
}

// One row of a colour matrix over the cell's R and B, waiting for a green.
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
  walk_exact(a.width, [&]<class V>(int x) {
    const cells<V> s(a.even + x, a.odd + x);
    const matrix_row<V> y(&c.yuv_coef[0], c.luma_offset, s.r, s.b);
    const V centre = y.at(s.gm);
    storeu(a.luma[0] + x, join_clamp8(centre, y.at(s.gb)));
    storeu(a.luma[1] + x, join_clamp8(y.at(s.gr), centre));
    const matrix_row<V> u(&c.yuv_coef[3], kChromaOffset, s.r, s.b);
    const matrix_row<V> v(&c.yuv_coef[6], kChromaOffset, s.r, s.b);
    put(x, add16(u.at(s.gm), set16<V>(128)), add16(v.at(s.gm), set16<V>(128)));
  });
}

void cells_to_yuv(const cell_rows& args) {
  const cell_rows a = args;  // its pointers stay in registers: no store can reach a copy
  luma_and_chroma(a,
                  [&]<class V>(int x, V u, V v) { store_halves(a.u + x / 2, a.v + x / 2, pack_u8(u, v)); });
}

void cells_to_words(const cell_rows& args) {
  const cell_rows a = args;
  luma_and_chroma(a, [&]<class V>(int x, V u, V v) { storeu(a.words + x, join_clamp8(u, v)); });
}

void cells_to_rgb(const cell_rows& args) {
  const cell_rows a = args;
  const ppl_context& c = *a.context;
  walk_exact(a.width, [&]<class V>(int x) {
    const cells<V> s(a.even + x, a.odd + x);
    const V red = matrix_row<V>(&c.rgb_coef[0], c.rgb_offset_vector, s.r, s.b).at(s.gm);
    const matrix_row<V> green(&c.rgb_coef[3], c.rgb_offset_vector, s.r, s.b);
    const V blue = matrix_row<V>(&c.rgb_coef[6], c.rgb_offset_vector, s.r, s.b).at(s.gm);
    const V centre = green.at(s.gm);
    storeu(a.r + x, join_clamp8(red, red));
    storeu(a.g[0] + x, join_clamp8(centre, green.at(s.gb)));
    storeu(a.g[1] + x, join_clamp8(green.at(s.gr), centre));
    storeu(a.b + x, join_clamp8(blue, blue));
  });
}

}  // namespace

extern const bulk_kernels bulk_table;
const bulk_kernels bulk_table = {
    .cells_to_yuv = cells_to_yuv,
    .cells_to_words = cells_to_words,
    .cells_to_rgb = cells_to_rgb,
};

}  // namespace ppl::PPL_LEVEL
