// Front end: the two rows of a row pair, from raw samples to display-referred ones, in place.
//
// Reads rows 2p and 2p + 1 at the column itself (green balance: at the other green of the cell). Lens shading,
// green balance, black level, white-balance gain with offset, tone curve, in this order, all between 8-bit values:
//   lens    x = clamp(x * f >> 13), f the signed 16-bit factor of the site, 8192 = 1.0
//   green   |Gb - Gr| below the threshold: both become their rounded-up mean
//   black   x = max(x - black, 0)
//   gain    v = (x * gain >> 5) + delta: 16-bit product, logical shift, wrapping sum; then clamped to 0..255
//   tone    tone[v]
#pragma once

#include "simd/simd-inl.h"
#include "tile/kernels.h"
#include "tile/tone-inl.h"

namespace ppl::PPL_LEVEL {

namespace front_end_detail {

// Bytes Gb of `even_row` and Gr of `odd_row` are brought together in the odd byte places. In the even ones B is
// compared with 0, and `limit` is 0 there: only a B of 0 passes, and its mean with 0 changes nothing.
template <class V>
PPL_INLINE void balance_green(V& even_row, V& odd_row, V limit) {
  const V gr = sll16<8>(odd_row), mean = avg8(even_row, gr);
  const auto near = le_u8(absdiff_u8(even_row, gr), limit);
  even_row = select(near, mean, even_row);
  odd_row = odd_row ^ odd(keep(near, gr ^ mean));
}

PPL_INLINE void look_up_rows(const front_end_args a, const uint8_t* even_row, const uint8_t* odd_row) {
  look_up_row(a.context->site_tables[0], even_row, a.row_even, a.frame_even, a.width);
  look_up_row(a.context->site_tables[1], odd_row, a.row_odd, a.frame_odd, a.width);
}

}  // namespace front_end_detail

// As far as the green balance, with what statistics keep; at levels that look up in registers, all of it.
template <bool kLens, bool kGreen>
static void front_end_rows(const front_end_args& args) {
  using namespace front_end_detail;
  const front_end_args a = args;
  const ppl_context& c = *a.context;
  const int green_limit = (c.GbGr_diff_plus.lane[0] > 255 ? 255 : c.GbGr_diff_plus.lane[0] - 1) << 8;
  const vec_u8 black_b_gb = c.black_b_gb, black_gr_r = c.black_gr_r;
  const table_pair even_curves(c.site_tables[0]), odd_curves(c.site_tables[1]);
  walk_exact(a.width, [&]<class V>(int x) {
    V e, o;
    if constexpr (kLens) {
      e = times_factors<V>(a.source_even + x, a.lens_even + x);
      o = times_factors<V>(a.source_odd + x, a.lens_odd + x);
    } else {
      e = loadu<V>(a.source_even + x);
      o = loadu<V>(a.source_odd + x);
    }
    if constexpr (kGreen) balance_green(e, o, set16<V>(green_limit));
    if (a.black_even != nullptr) {
      store(a.black_even + x, subs_u8(e, repeat16<V>(&black_b_gb)));
      store(a.black_odd + x, subs_u8(o, repeat16<V>(&black_gr_r)));
    }
    e = even_curves(e);
    o = odd_curves(o);
    if (kLooksUpVectors && a.frame_even != nullptr) {
      storeu(a.frame_even + x, e);
      storeu(a.frame_odd + x, o);
    }
    store(a.row_even + x, e);
    store(a.row_odd + x, o);
  });
  if constexpr (!kLooksUpVectors) look_up_rows(a, a.row_even, a.row_odd);
}

static void front_end(const front_end_args& a) {
  const bool green = a.context->GbGr_correction_enabled != 0 && a.context->GbGr_diff_plus.lane[0] > 0;
  if (a.lens_even != nullptr)
    green ? front_end_rows<true, true>(a) : front_end_rows<true, false>(a);
  else if (green)
    front_end_rows<false, true>(a);
  else if (!kLooksUpAnywhere || a.black_even != nullptr)
    front_end_rows<false, false>(a);
  else
    front_end_detail::look_up_rows(a, a.source_even, a.source_odd);
}

}  // namespace ppl::PPL_LEVEL
