// What the two edge filters have in common: their controls.
#pragma once

#include "record/context.h"

namespace ppl::PPL_LEVEL {

// The controls of an edge filter: the dead band's two ends, and the factor with 5 fraction bits.
struct edge_band {
  vec_i16 low, high, factor;
  explicit edge_band(const ppl_context& c)
      : low(c.edge_threshold_vector), high(c.edge_threshold2_vector), factor(c.edge_factor_vector) {}
};

}  // namespace ppl::PPL_LEVEL
