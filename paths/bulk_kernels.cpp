#include "paths/bulk_kernels.h"

#include "platform/levels.h"
#include "tile/simd.h"

namespace ppl::PPL_LEVEL {
namespace {

// Walks n bytes of memory that must not be passed: wide steps, steps of 16, single bytes.
template <class Step, class Single>
PPL_INLINE void walk_bytes(int n, Step&& step, Single&& single) {
  const int whole = n & ~15;
  walk_exact(whole, step);
  for (int x = whole; x < n; ++x) single(x);
}

// ---- cells

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

template <class V>
PPL_INLINE void luma_and_chroma(const cell_rows& a, int x, V& top, V& bottom, V& u, V& v) {
  const ppl_context& c = *a.context;
  const cells<V> s(a.even + x, a.odd + x);
  const matrix_row<V> y(&c.yuv_coef[0], c.luma_offset, s.r, s.b);
  const V centre = y.at(s.gm);
  top = join_clamp8(centre, y.at(s.gb));
  bottom = join_clamp8(y.at(s.gr), centre);
  u = add16(matrix_row<V>(&c.yuv_coef[3], kChromaOffset, s.r, s.b).at(s.gm), set16<V>(128));
  v = add16(matrix_row<V>(&c.yuv_coef[6], kChromaOffset, s.r, s.b).at(s.gm), set16<V>(128));
}

// Two vectors of mosaic columns make one of chroma.
template <class V>
PPL_INLINE void yuv_step(const cell_rows& a, int x) {
  V top[2], bottom[2], u[2], v[2];
  for (int i = 0; i < 2; ++i) luma_and_chroma(a, x + i * V::size, top[i], bottom[i], u[i], v[i]);
  for (int i = 0; i < 2; ++i) {
    storeu(a.luma[0] + x + i * V::size, top[i]);
    storeu(a.luma[1] + x + i * V::size, bottom[i]);
  }
  storeu(a.u + x / 2, pack_u8(u[0], u[1]));
  storeu(a.v + x / 2, pack_u8(v[0], v[1]));
}

void cells_to_yuv(const cell_rows& args) {
  const cell_rows a = args;  // its pointers stay in registers: no store can reach a copy
  int x = 0;
  for (; x + 2 * kWidth <= a.width; x += 2 * kWidth) yuv_step<wide>(a, x);
  for (; x + 32 <= a.width; x += 32) yuv_step<vec16>(a, x);
  if (x < a.width) {
    vec16 top, bottom, u, v;
    luma_and_chroma(a, x, top, bottom, u, v);
    storeu(a.luma[0] + x, top);
    storeu(a.luma[1] + x, bottom);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(a.u + x / 2), pack_u8(u, u).v);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(a.v + x / 2), pack_u8(v, v).v);
  }
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

// ---- rows of one plane

void copy(uint8_t* to, const uint8_t* from, int n, bool reversed) {
  if (reversed)
    walk_bytes(
        n, [&]<class V>(int x) { storeu(to + n - x - V::size, reverse8(loadu<V>(from + x))); },
        [&](int x) { to[n - 1 - x] = from[x]; });
  else
    walk_bytes(
        n, [&]<class V>(int x) { storeu(to + x, loadu<V>(from + x)); }, [&](int x) { to[x] = from[x]; });
}

void halve(uint8_t* to, const uint8_t* from, int n, bool reversed) {
  if (reversed)
    walk_bytes(
        n,
        [&]<class V>(int x) {
          const V picked = even_bytes(loadu<V>(from + 2 * x), loadu<V>(from + 2 * x + V::size));
          storeu(to + n - x - V::size, reverse8(picked));
        },
        [&](int x) { to[n - 1 - x] = from[2 * x]; });
  else
    walk_bytes(
        n,
        [&]<class V>(int x) {
          storeu(to + x, even_bytes(loadu<V>(from + 2 * x), loadu<V>(from + 2 * x + V::size)));
        },
        [&](int x) { to[x] = from[2 * x]; });
}

PPL_INLINE uint8_t mean_of(int a, int b) {
  return static_cast<uint8_t>((a + b + 1) >> 1);
}

// All ones in the first sample of every tile.
alignas(16) constexpr uint8_t kTileStarts[2][16] = {{255, 0, 0, 0, 0, 0, 0, 0, 255, 0, 0, 0, 0, 0, 0, 0},
                                                    {255, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}};

void widen(uint8_t* to, uint8_t* from, int n, widen_rule rule) {
  from[-1] = from[-2] = from[0];
  if (!rule.mirrored) {
    walk_bytes(
        n,
        [&]<class V>(int x) {
          const V s = loadu<V>(from + x);
          V first, second;
          interleave8(avg8(s, loadu<V>(from + x - 1)), s, first, second);
          storeu(to + 2 * x, first);
          storeu(to + 2 * x + V::size, second);
        },
        [&](int x) {
          to[2 * x] = mean_of(from[x], from[x - 1]);
          to[2 * x + 1] = from[x];
        });
    return;
  }
  const uint8_t* const starts = kTileStarts[rule.tile == 16];
  walk_bytes(
      n,
      [&]<class V>(int x) {
        const V s = loadu<V>(from + x), before = loadu<V>(from + x - 1);
        const V widened_before = avg8(before, loadu<V>(from + x - 2));
        const V neighbour = select(to_mask8(repeat16<V>(starts)), widened_before, before);
        V first, second;
        interleave8(s, avg8(s, neighbour), first, second);
        storeu(to + 2 * (n - x) - V::size, reverse8(first));
        storeu(to + 2 * (n - x) - 2 * V::size, reverse8(second));
      },
      [&](int x) {
        const int before = from[x - 1];
        const int neighbour = x % rule.tile == 0 ? mean_of(before, from[x - 2]) : before;
        to[2 * (n - x) - 1] = from[x];
        to[2 * (n - x) - 2] = mean_of(from[x], neighbour);
      });
}

void mean(uint8_t* to, const uint8_t* a, const uint8_t* b, int n) {
  walk_bytes(
      n, [&]<class V>(int x) { storeu(to + x, avg8(loadu<V>(a + x), loadu<V>(b + x))); },
      [&](int x) { to[x] = mean_of(a[x], b[x]); });
}

// ---- rows of a format

// One vector of U and of V serves two of luma.
template <bool luma_first>
PPL_INLINE void packed(uint8_t* to, const uint8_t* y, const uint8_t* u, const uint8_t* v, int pixels) {
  walk_bytes(
      pixels / 2,
      [&]<class V>(int x) {
        V chroma[2], first, second;
        interleave8(loadu<V>(u + x), loadu<V>(v + x), chroma[0], chroma[1]);
        for (int i = 0; i < 2; ++i) {
          const V luma = loadu<V>(y + 2 * x + i * V::size);
          if constexpr (luma_first)
            interleave8(luma, chroma[i], first, second);
          else
            interleave8(chroma[i], luma, first, second);
          storeu(to + 4 * x + 2 * i * V::size, first);
          storeu(to + 4 * x + (2 * i + 1) * V::size, second);
        }
      },
      [&](int x) {
        constexpr int l = luma_first ? 0 : 1;
        to[4 * x + l] = y[2 * x];
        to[4 * x + 1 - l] = u[x];
        to[4 * x + 2 + l] = y[2 * x + 1];
        to[4 * x + 3 - l] = v[x];
      });
}
void yuyv(uint8_t* to, const uint8_t* y, const uint8_t* u, const uint8_t* v, int pixels) {
  packed<true>(to, y, u, v, pixels);
}
void uyvy(uint8_t* to, const uint8_t* y, const uint8_t* u, const uint8_t* v, int pixels) {
  packed<false>(to, y, u, v, pixels);
}

// Blue, green, red, 0 of each pixel: four vectors of pixels.
template <class V>
PPL_INLINE void pixels_of(V r, V g, V b, V (&out)[4]) {
  V bg[2], r0[2];
  interleave8(b, g, bg[0], bg[1]);
  interleave8(r, zero<V>(), r0[0], r0[1]);
  interleave16(bg[0], r0[0], out[0], out[1]);
  interleave16(bg[1], r0[1], out[2], out[3]);
}

// Four pixels without their zeros: 12 bytes, with 4 behind them that the next store overwrites.
PPL_INLINE void store_12(uint8_t* to, vec16 pixels) {
#ifdef __SSSE3__
  const __m128i order = _mm_set_epi8(-1, -1, -1, -1, 14, 13, 12, 10, 9, 8, 6, 5, 4, 2, 1, 0);
  storeu(to, vec16{_mm_shuffle_epi8(pixels.v, order)});
#else
  const __m128i low = _mm_set1_epi64x(0x0000000000ffffff), high = _mm_set1_epi64x(0x0000ffffff000000);
  const __m128i six =
      _mm_or_si128(_mm_and_si128(pixels.v, low), _mm_and_si128(_mm_srli_epi64(pixels.v, 8), high));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(to), six);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(to + 6), _mm_unpackhi_epi64(six, six));
#endif
}

void rgb24(uint8_t* to, const uint8_t* r, const uint8_t* g, const uint8_t* b, int pixels) {
  int x = 0;
  for (; x + 20 <= pixels; x += 16, to += 48) {  // the last store's 4 surplus bytes stay inside the row
    vec16 out[4];
    pixels_of(loadu<vec16>(r + x), loadu<vec16>(g + x), loadu<vec16>(b + x), out);
    for (int i = 0; i < 4; ++i) store_12(to + 12 * i, out[i]);
  }
  for (; x < pixels; ++x, to += 3) {
    to[0] = b[x];
    to[1] = g[x];
    to[2] = r[x];
  }
}

void rgb32(uint8_t* to, const uint8_t* r, const uint8_t* g, const uint8_t* b, int pixels) {
  walk_bytes(
      pixels,
      [&]<class V>(int x) {
        V out[4];
        pixels_of(loadu<V>(r + x), loadu<V>(g + x), loadu<V>(b + x), out);
        for (int i = 0; i < 4; ++i) storeu(to + 4 * x + i * V::size, out[i]);
      },
      [&](int x) {
        to[4 * x] = b[x];
        to[4 * x + 1] = g[x];
        to[4 * x + 2] = r[x];
        to[4 * x + 3] = 0;
      });
}

}  // namespace

extern const bulk_kernels bulk_table;
const bulk_kernels bulk_table = {cells_to_yuv, cells_to_rgb, copy, halve, widen,
                                 mean,         yuyv,         uyvy, rgb24, rgb32};

}  // namespace ppl::PPL_LEVEL
