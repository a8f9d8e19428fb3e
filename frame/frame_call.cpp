#include "frame/frame_call.h"

#include "paths/paths.h"
#include "record/output_plan.h"

namespace ppl {
namespace {

void clear_statistics(ppl_context* c) {
  for (rgb32& cell : c->sub_window_means) cell = {};
  c->all_windows_means = {};
  c->whole_frame_means = {};
  c->qAE_means = {};
  c->qual_means = {};
  c->qAE_count = 0;
  c->qual_count = 0;
  for (int i = 0; i < 256; ++i) c->r_histogram[i] = c->g_histogram[i] = c->b_histogram[i] = 0;
}

// The rounded mean of `sites` samples, in units of 1/256 of a sample step; 0 without sites.
uint32_t mean(uint32_t sum, uint32_t half, uint32_t sites) {
  return sites == 0 ? 0 : static_cast<uint32_t>(((static_cast<uint64_t>(sum) << 8) + half) / sites);
}

// One component of the 49 cells: raw sums become means, and the whole frame and the grid get their shares.
void roll_up_cells(ppl_context* c, uint32_t rgb32::*colour, uint32_t divisor) {
  const uint32_t scale = static_cast<uint32_t>(c->stats_scale);
  uint32_t frame = c->whole_frame_means.*colour, grid = 0;
  for (int i = 0; i <= kCells; ++i) {
    uint32_t& cell = c->sub_window_means[i].*colour;
    const uint32_t sum = cell * scale >> 8;
    frame += sum;
    cell = sum * divisor >> 12;
    if (i < kCells) grid += cell;
  }
  c->whole_frame_means.*colour = frame;
  c->all_windows_means.*colour = grid * 341 >> 14;  // 341 / 16384: the mean of 48 cells, a hair low
}

// Sums over counted cells become means, the count an estimate for the whole frame.
void roll_up_counted(rgb32& sums, uint32_t& count, uint32_t scale) {
  const uint32_t n = count;
  if (n == 0) return;
  sums.r = mean(sums.r, n >> 1, n);
  sums.g = mean(sums.g, n, 2 * n);
  sums.b = mean(sums.b, n >> 1, n);
  count = n * scale >> 8;
}

void roll_up_statistics(ppl_context* c) {
  roll_up_cells(c, &rgb32::r, c->red_divisor);
  roll_up_cells(c, &rgb32::g, c->green_divisor);
  roll_up_cells(c, &rgb32::b, c->blue_divisor);

  const uint32_t half = static_cast<uint32_t>(c->frame_pixels_half);
  const uint32_t quarter = static_cast<uint32_t>(c->frame_pixels_quarter);
  const uint32_t eighth = static_cast<uint32_t>(c->frame_pixels_eighth);
  rgb32& frame = c->whole_frame_means;
  frame.r = mean(frame.r, eighth, quarter);
  frame.g = mean(frame.g, quarter, half);
  frame.b = mean(frame.b, eighth, quarter);

  roll_up_counted(c->qAE_means, c->qAE_count, static_cast<uint32_t>(c->stats_scale));
  roll_up_counted(c->qual_means, c->qual_count, static_cast<uint32_t>(c->stats_scale));
}

// The road of a frame is its quality's. It is only counted where the quality does not run, where rows of the source
// overlap, or where a buffer that it needs is null.
int road_of(const frame_job& job, const quality_row& quality) {
  const ppl_context* c = job.context;
  const int road = quality.facts().road;
  if (road == PPL_ROAD_COUNTED || c->frame_stride < c->frame_width) return PPL_ROAD_COUNTED;
  // A raw frame of a size that is not drawn still answers as raw.
  if (road != PPL_ROAD_RAW && !ppl_quality_runs(quality.quality, uint32_t(job.format), c->decimation))
    return PPL_ROAD_COUNTED;
  const bool visited = c->tiles_per_row > 0 && c->row_pairs > 0;
  const buffer_use use = road == PPL_ROAD_RAW ? raw_path_use(job) : buffer_use{visited, visited};
  const bool lacks = (use.source && job.source == nullptr) ||
                     (use.destination && job.out.base == nullptr && job.out.bytes > 0);
  return lacks ? PPL_ROAD_COUNTED : road;
}

// True for a frame that was made or only counted, false for a raw one.
bool quality_dispatch(const frame_job& job) {
  ppl_context* c = job.context;
  const quality_row& quality = quality_of(*c);
  const int road = road_of(job, quality);
  if (road == PPL_ROAD_RAW) run_raw_path(job);
  if (road == PPL_ROAD_CELLS) run_cells_path(job, quality);
  if (road == PPL_ROAD_WALK) run_walked_path(job, quality);
  if (road == PPL_ROAD_CELLS || road == PPL_ROAD_WALK)
    c->stats_scale = c->stats_scale_table[quality.form(c->medium_filter_enabled != 0).stats_scale];
  ++c->n_frame;
  return road != PPL_ROAD_RAW;
}

}  // namespace

call_result run_frame_call(ppl_context* c, out_format format, const bayer_call& call) {
  const bool same_size = call.width == static_cast<uint32_t>(c->frame_width) &&
                         call.height == static_cast<uint32_t>(c->frame_height) &&
                         call.stride == static_cast<uint32_t>(c->frame_stride);
  if (!same_size && !ppl_new_frame_size(c, call.width, call.height, call.stride)) return {false, false};
  clear_statistics(c);
  call_result result = {true, false};
  if (aligned(16, call.source, call.destination) && !c->P3_only) {
    result.ran = !call.lacks_buffer;
    if (result.ran)
      result.ok =
          quality_dispatch({c, format, call.source, {call.destination, output_bytes(c, format), nullptr}});
    else
      ++c->n_frame;
  }
  roll_up_statistics(c);
  return result;
}

}  // namespace ppl

#define PPL_FRAME_CALL(name, format)                                                           \
  uint8_t ppl_process_blrto##name(ppl_context* context, uint8_t* source, uint8_t* destination, \
                                  uint32_t width, uint32_t height, uint32_t stride) {          \
    return ppl::run_frame_call(context, ppl::out_format::format,                               \
                               {source, destination, width, height, stride, false})            \
        .ok;                                                                                   \
  }
PPL_FRAME_CALL(i420, i420)
PPL_FRAME_CALL(yuyv, yuyv)
PPL_FRAME_CALL(uyvy, uyvy)
PPL_FRAME_CALL(rgb24, rgb24)
PPL_FRAME_CALL(rgb32, rgb32)
#undef PPL_FRAME_CALL
