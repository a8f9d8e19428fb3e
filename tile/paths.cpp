// The qualities that walk in tiles, one line each.
#include "tile/walk.h"

namespace ppl {

namespace {

using enum interpolator;
using enum flat_colours;

// quality, medium filter, its first row pair | demosaic, flat colours | noise, edge, full statistics |
// front end leads by row pairs, tiles; steps without statistics below, right
constexpr path_traits kPaths[] = {
    {15, false, 0, gradient, none, true, true, true, 3, 3, 3, 3},
    {0, false, 0, directed, left_over, false, true, true, 2, 2, 2, 3},
    {0, true, 1, directed, left_over, false, true, true, 3, 3, 3, 4},
    {1, false, 0, directed, left_over, false, false, true, 2, 1, 2, 2},
    {1, true, 2, directed, left_over, false, false, true, 3, 2, 3, 3},
    {2, false, 0, bilinear, none, false, false, true, 1, 1, 1, 1},
    {2, true, 1, bilinear, none, false, false, true, 2, 2, 2, 2},
    {10, false, 0, directed, odd_blocks, false, true, true, 2, 2, 2, 3},
    {11, false, 0, directed, even_blocks, false, false, true, 2, 1, 2, 2},
    {12, false, 0, mosaic_edge, none, false, false, false, 1, 1, 1, 1},
};

}  // namespace

// Only qualities 0, 1 and 2 look at the medium filter.
const path_traits* find_path(uint32_t quality, bool medium_filter) {
  const bool medium = medium_filter && quality <= 2;
  for (const path_traits& p : kPaths)
    if (p.quality == quality && p.medium_filter == medium) return &p;
  return nullptr;
}

}  // namespace ppl
