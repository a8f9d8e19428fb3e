#include "paths/cells.h"

#include "paths/paths.h"
#include "record/levels.h"
#include "tile/lens_rows.h"
#include "tile/statistics_sums.h"

namespace ppl {
namespace cells {
namespace {

cell_frame plan_frame(const frame_job& job, const quality_row& q) {
  ppl_context* const c = job.context;
  cell_frame f = {};
  f.job = &job;
  f.context = c;
  f.kernels = c->kernels->paths;
  f.output = c->kernels->output;
  f.rows = c->kernels->rows;
  f.grey = q.grey;
  f.ranges = (q.facts().statistics & PPL_STATISTICS_RANGES) != 0;
  f.mirrored = c->h_mirror != 0;
  f.tiles = c->tiles_per_row;
  f.row_pairs = c->row_pairs;
  f.columns = kTile * f.tiles;
  // Grey has no double size: whatever is not the same size is halved. Nor has RGB32: it is made in its own size, along
  // the pointers of the doubled picture.
  f.halved = c->decimation > 0 || (f.grey && c->decimation < 0);
  f.doubled = c->decimation < 0 && !f.grey && job.format != out_format::rgb32;
  const bool drifts = c->decimation < 0 && !f.doubled;
  f.pixels = f.doubled ? 2 * f.columns : f.halved ? f.columns / 2 : f.columns;
  // A doubled picture has one row more, the copy: after the last row or, where rows run upwards, below the first,
  // which then lies one row above the bottom.
  const bool upwards = is_rgb(job.format) == (c->v_mirror == 0);
  const auto lay_out = [&](int below) {
    return lay_out_rows(c, job.format, f.pixels, upwards, f.mirrored, below);
  };
  f.places = lay_out(f.doubled ? 1 : 0);
  const int rows = f.doubled ? 4 * f.row_pairs : f.halved ? f.row_pairs : 2 * f.row_pairs;
  const bool ordinary =
      !drifts && rows_fit(c, job.format, job.out.bytes, f.doubled ? lay_out(0) : f.places, f.pixels, 0, rows);
  f.place = ordinary ? placing::in_place : f.doubled ? placing::clipped : placing::by_groups;
  return f;
}

// ---- front end and statistics

const uint8_t* tone_of(const cell_frame& f) {
  return f.grey ? f.context->yuv_contrast_gamma_table : f.context->rgb_gamma_table;
}

void front_end(const cell_frame& f, int row_pair) {
  ppl_context* const c = f.context;
  const int r = 2 * row_pair;
  uint8_t* const even = f.job->source + int64_t{r} * c->frame_stride;
  uint8_t* const odd = even + c->frame_stride;
  const bool collect = c->mean_collection != 0 && (row_pair & 1) != 0;
  const bool full = collect && f.ranges;
  uint16_t* const spare = static_cast<uint16_t*>(static_cast<void*>(c->scratch));
  const auto row_if = [&](bool wanted, plane_row row) { return wanted ? plane(c, row) : nullptr; };
  const tile_kernels& k = *c->kernels->tile;
  k.front_end({.context = c,
               .source_even = even,
               .source_odd = odd,
               .frame_even = even,
               .frame_odd = odd,
               .row_even = plane(c, kEven),
               .row_odd = plane(c, kOdd),
               .lens_even = lens_row(*c, r, f.columns, spare),
               .lens_odd = lens_row(*c, r + 1, f.columns, spare + 2048),
               .black_even = row_if(collect, kBlackEven),
               .black_odd = row_if(collect, kBlackOdd),
               .width = f.columns});
  if (!collect) return;
  if (full) {
    // In tile 1 the earlier tile is tile 0, which stores its rows like every even tile.
    __builtin_memcpy(&c->leftovers.stat_even_row, plane(c, kBlackEven), kTile);
    __builtin_memcpy(&c->leftovers.stat_odd_row, plane(c, kBlackOdd), kTile);
  }
  k.statistics({.context = c,
                .black_even = plane(c, kBlackEven),
                .black_odd = plane(c, kBlackOdd),
                .tone_even = plane(c, kEven),
                .tone_odd = plane(c, kOdd),
                .plain_only = !full,
                .last_tile = f.tiles - 1,
                .tile_lead = 0});
}

// These paths have no sub-windows: as for row pairs below the grid, all plain sums go to the outside cell. From there
// they are added to the whole frame four times, as every fourth cell was taken.
void finish_statistics(ppl_context* c) {
  settle_sums(*c);
  rgb32& sums = *outside_cell(c);
  c->whole_frame_means.r += 4 * sums.r;
  c->whole_frame_means.g += 4 * sums.g;
  c->whole_frame_means.b += 4 * sums.b;
  sums = {};
}

// ---- in place

void place_rows(const cell_frame& f, int p) {
  const picture_rows& to = f.places;
  const bool planes = f.job->format == out_format::i420;
  made_rows out = {};
  if (f.halved) {
    // One luma row for each row pair; a chroma row for two, from the first.
    out.row[0] = at(f, to.luma, p);
    if (planes && (p & 1) == 0 && p + 1 < f.row_pairs) {
      out.u = at(f, to.u, p / 2);
      out.v = at(f, to.v, p / 2);
    }
  } else {
    for (int i = 0; i < 2; ++i) out.row[i] = at(f, to.luma, 2 * p + i);
    if (planes) {
      out.u = at(f, to.u, p);
      out.v = at(f, to.v, p);
    }
  }
  put_rows(f, out);
}

}  // namespace
}  // namespace cells

void run_cells_path(const frame_job& job, const quality_row& quality) {
  using namespace cells;
  const cell_frame f = plan_frame(job, quality);
  if (f.tiles <= 0 || f.row_pairs <= 0) return;
  group_walk groups = start_groups(f);
  job.context->kernels->tile->prepare_tone(*job.context, tone_of(f));
  clear_sums(job.context->sums);
  enter_row_pair(*job.context, INT32_MAX);
  for (int p = 0; p < f.row_pairs; ++p) {
    front_end(f, p);
    if (f.doubled)
      double_row_pair(f, p);
    else if (f.place == placing::by_groups)
      place_groups(f, groups, p);
    else
      place_rows(f, p);
  }
  finish_statistics(job.context);
}

}  // namespace ppl
