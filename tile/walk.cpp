// The driver of the walk: places the rings, then goes down the frame.
#include "tile/walk.h"

#include "tile/statistics_sums.h"

namespace ppl {

namespace {

// Each step costs every stage a call, however narrow its rows are. A row more in a step is a row more in every ring:
// steps take as many as keep the rings well inside the first-level cache, and inside the pool.
int rows_a_step(const stage_list& plan, int pitch) {
  constexpr int kNear = 24 * 1024;
  static_assert(kNear <= kRingPoolBytes - 64);
  if (plan.two_rows) return 2;
  int rows = 0, rings = 0;
  for (int i = 0; i < kRings; ++i) {
    rows += plan.ring_rows[i];
    rings += plan.ring_rows[i] != 0 ? 1 : 0;
  }
  int step = kMostRows;
  while (step > 2 && (pitch * (rows + rings * (step - 2)) > kNear ||
                      pitch * (plan.ring_rows[third_plane_ring] + step - 2) > kThirdPlaneRows * kRowPitch))
    step /= 2;
  return step;
}

void place_rings(walk& w, const stage_list& plan) {
  int pitch = (w.width + 63) / 64 * 64 + 64;
  // Rows whole pages apart would look like one row to the processor's queues of loads and stores.
  if (pitch % 1024 == 0) pitch += 64;
  w.step = rows_a_step(plan, pitch);
  uint8_t* base = w.context->ring_pool + 64;
  uint8_t** places = w.scratch<uint8_t*>(kPlacesScratch);
  for (int i = 0; i < kRings; ++i) {
    const int rows = plan.ring_rows[i] != 0 ? plan.ring_rows[i] + w.step - 2 : 0;
    const bool apart = i == third_plane_ring;
    w.rings[i] =
        row_ring(places, apart ? w.scratch_row(kThirdPlane) : base, pitch, static_cast<uint32_t>(rows));
    places += 2 * rows;
    if (!apart) base += static_cast<ptrdiff_t>(pitch) * rows;
  }
}

}  // namespace

uint8_t* const* walk::mirrored_rows(ring_id ring, int first, uint8_t** list, int n) const {
  for (int i = 0; i < n; ++i) list[i] = *rings[ring].from(mirrored(first + i));
  return list;
}

void run_walk(walk& w, const stage_list& plan) {
  w.plan = &plan;
  place_rings(w, plan);
  clear_sums(w.context->sums);
  const int last_lag = plan.stages[plan.n_stages - 1].lag;
  for (int top = 0; top - last_lag < w.height; top += w.step)
    for (int i = 0; i < plan.n_stages; ++i) {
      const stage& s = plan.stages[i];
      const int first = top - s.lag;
      if (first > -w.step && first < w.height) s.run(w, s, first);
    }
  settle_sums(*w.context);
}

}  // namespace ppl
