#include "convert/convert_kernels.h"

#include "convert/row_blend-inl.h"
#include "convert/row_copy-inl.h"
#include "convert/row_planes-inl.h"
#include "convert/row_rgb24-inl.h"
#include "convert/row_scale-inl.h"
#include "platform/levels.h"

namespace ppl::PPL_LEVEL {

const convert_kernels convert_table = {
    .copy = copy_bytes,
    .fill = fill_bytes,
    .blend = {blend_row<layout::yuyv>, blend_row<layout::uyvy>},
    .shrink_2 = {shrink_row_2<layout::yuyv>, shrink_row_2<layout::uyvy>},
    .shrink_4 = {shrink_row_4<layout::yuyv>, shrink_row_4<layout::uyvy>},
    .widen = widen_row,
    .double_pair = double_row_pair,
    .swap = swap_row,
    .rgb24 = {rgb24_row<layout::yuyv>, rgb24_row<layout::uyvy>},
    .planes = {{planes_rows<layout::yuyv, false>, planes_rows<layout::yuyv, true>},
               {planes_rows<layout::uyvy, false>, planes_rows<layout::uyvy, true>}},
    .twelve_bit = {twelve_bit_row<false>, twelve_bit_row<true>},
};

}  // namespace ppl::PPL_LEVEL
