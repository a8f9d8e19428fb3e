#include "tile/statistics_sums.h"

namespace ppl {

namespace {

uint32_t take(uint32_t& sum) {
  const uint32_t value = sum;
  sum = 0;
  return value;
}

// Adds the sums of odd tiles to their cells: from left to right through one row of the grid, then outside.
void settle_tiles(ppl_context& c) {
  const bool outside = c.sums.grid_row >= kGridRows;
  rgb32* cell = outside ? outside_cell(&c) : &c.sub_window_means[kGridColumns * c.sums.grid_row];
  int end = outside ? INT32_MAX : c.cell_tiles;
  for (int tile = 1; tile < c.tiles_per_row; tile += 2) {
    for (; tile >= end && tile < c.grid_tiles; end += c.cell_tiles) ++cell;
    if (tile >= end) {
      cell = outside_cell(&c);
      end = INT32_MAX;
    }
    uint32_t(&sums)[4] = c.sums.tiles[tile / 2];
    cell->b += take(sums[0]);
    cell->g += take(sums[1]) + take(sums[2]);
    cell->r += take(sums[3]);
  }
}

}  // namespace

void clear_sums(statistics_sums& s) {
  for (uint32_t(&tile)[4] : s.tiles)
    for (uint32_t& sum : tile) sum = 0;
  for (int i = 0; i < 16; ++i) s.qualified[i] = s.exposed[i] = s.passed[i] = s.rejected[i] = 0;
  s.grid_row = 0;
}

void enter_row_pair(ppl_context& c, int row_pair) {
  const bool outside = row_pair >= c.grid_row_pairs || c.grid_tiles == 0;
  const int row = outside ? kGridRows : row_pair / c.cell_row_pairs;
  if (row == c.sums.grid_row) return;
  settle_tiles(c);
  c.sums.grid_row = row;
}

void settle_sums(ppl_context& c) {
  settle_tiles(c);
  const statistics_sums& s = c.sums;
  for (int group = 0; group < 16; group += 4) {
    const uint32_t *const q = s.qualified + group, *const e = s.exposed + group;
    c.qual_means.r += q[3];
    c.qual_means.g += q[1] + q[2];
    c.qual_means.b += q[0];
    c.qual_count += s.passed[group] + s.passed[group + 1];
    c.qAE_means.r += e[3];
    c.qAE_means.g += e[1] + e[2];
    c.qAE_means.b += e[0];
    c.qAE_count -= s.rejected[group];
  }
}

}  // namespace ppl
