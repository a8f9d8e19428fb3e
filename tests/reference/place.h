// From finished planes to the caller's frame: the walk of output pointers, tile by tile and store by store.
//
// Nothing is worked out for the picture as a whole: a pointer starts where the start pointers say and then only
// ever has steps of the plan added to it, so that odd tile counts, decimation 2 and mirrored doubling come out
// as the walk has them. Stores outside the caller's frame are dropped.
#pragma once

#include <cstdint>

#include "canvas.h"
#include "finished.h"
#include "plan.h"

namespace ref {

struct placing {
  format kind = format::i420;
  uint32_t quality = 15;
  bool medium_filter = false;  // the control; it counts in qualities 0, 1 and 2
  plan_input plan;
};

// The whole picture of a quality path with tiles (0, 1, 2, 10, 11, 12, 15).
void place(const finished& picture, const placing& how, canvas& out);

// avg(a, b), the rounded-up mean of two bytes that serves every interpolation.
constexpr uint8_t mean(int a, int b) {
  return uint8_t((a + b + 1) >> 1);
}

}  // namespace ref
