// A packed row to RGB24: bytes B, G, R.
//
// With u = U - 128, v = V - 128 and y = 74 * max(Y - 16, 0), in 16 bits that wrap:
//   B = 129 u + y,  G = -25 u - 52 v + y,  R = 102 v + y,  each >> 6 and clamped to 0..255.
// Only blue can leave 16 bits: very bright saturated blues wrap and fall to 0, and that is the required picture.
#pragma once

#include "convert/convert_kernels.h"
#include "convert/packed_ops.h"

namespace ppl::PPL_LEVEL {

template <class V>
struct bgr16 {
  V b, g, r;
};

template <layout L, class V>
PPL_INLINE bgr16<V> colours(V packed) {
  const V y = mullo16(subs_u16(luma16<L>(packed), set16<V>(16)), set16<V>(74));
  const V uv = sub16(chroma16<L>(packed), set16<V>(128));
  const V blue_red = mullo16(uv, set32<V>(129 | 102 << 16));
  const V green = madd16(uv, set32<V>((-25 & 0xffff) | static_cast<int>(static_cast<unsigned>(-52) << 16)));
  return {sra16<6>(add16(y, repeat_low16(blue_red))), sra16<6>(add16(y, repeat_low16(green))),
          sra16<6>(add16(y, repeat_high16(blue_red)))};
}

template <layout L>
static void rgb24_row(uint8_t* out, const uint8_t* in, int pixels) {
  walk_exact(pixels, [&]<class V>(int x) {
    const bgr16<V> first = colours<L>(loadu<V>(in + 2 * x)),
                   second = colours<L>(loadu<V>(in + 2 * x + V::size));
    store_bgr(out + 3 * x, pack_u8(first.b, second.b), pack_u8(first.g, second.g),
              pack_u8(first.r, second.r));
  });
}

}  // namespace ppl::PPL_LEVEL
