// This room's vector code for one level.
#include "record/levels.h"
#include "tile/chroma_smoothing-inl.h"
#include "tile/demosaic-inl.h"
#include "tile/edge-inl.h"
#include "tile/front_end-inl.h"
#include "tile/green_fill-inl.h"
#include "tile/kernels.h"
#include "tile/medium_filter-inl.h"
#include "tile/noise_filter-inl.h"
#include "tile/statistics-inl.h"

namespace ppl::PPL_LEVEL {

extern const tile_kernels tile_table;
const tile_kernels tile_table = {
    .prepare_tone = prepare_tone,
    .front_end = front_end,
    .statistics = statistics,
    .medium_filter = medium_filter,
    .green_fill = green_fill,
    .demosaic_gradient = demosaic_gradient,
    .demosaic_bilinear = demosaic_bilinear,
    .demosaic_directed = demosaic_directed,
    .noise_filter = noise_filter,
    .edge = edge,
    .smooth = smooth,
};

}  // namespace ppl::PPL_LEVEL
