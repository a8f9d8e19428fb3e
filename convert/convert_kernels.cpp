#include "convert/convert_kernels.h"

#include "convert/row_blend-inl.h"
#include "convert/row_planes-inl.h"
#include "convert/row_rgb24-inl.h"
#include "convert/row_scale-inl.h"
#include "record/levels.h"

namespace ppl::PPL_LEVEL {

static void swap_row(uint8_t* out, const uint8_t* in, int pixels) {
  walk_exact(2 * pixels, [&]<class V>(int x) { storeu(out + x, swap_bytes(loadu<V>(in + x))); });
}

const convert_kernels convert_table = {
    .blend = {blend_row<byte_order::yuyv>, blend_row<byte_order::uyvy>},
    .shrink_2 = {shrink_row_2<byte_order::yuyv>, shrink_row_2<byte_order::uyvy>},
    .shrink_4 = {shrink_row_4<byte_order::yuyv>, shrink_row_4<byte_order::uyvy>},
    .widen = widen_row,
    .double_pair = double_row_pair,
    .swap = swap_row,
    .rgb24 = {rgb24_row<byte_order::yuyv>, rgb24_row<byte_order::uyvy>},
    .planes = {{planes_rows<byte_order::yuyv, false>, planes_rows<byte_order::yuyv, true>},
               {planes_rows<byte_order::uyvy, false>, planes_rows<byte_order::uyvy, true>}},
    .twelve_bit = {twelve_bit_row<false>, twelve_bit_row<true>},
};

}  // namespace ppl::PPL_LEVEL
