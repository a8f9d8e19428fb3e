#include "tile/walk.h"

#include <stddef.h>

#include "platform/levels.h"
#include "tile/lens_rows.h"

namespace ppl {

namespace {

// ---- rows

void copy(uint8_t* to, const uint8_t* from, int bytes) {
  __builtin_memcpy(to, from, static_cast<size_t>(bytes));
}

// Columns -2, -1 and width, width + 1: the row mirrored about its border samples.
void pad_samples(uint8_t* row, int width) {
  row[-2] = row[2];
  row[-1] = row[1];
  row[width] = row[width - 2];
  row[width + 1] = row[width - 3];
}

// The words beside a row of chroma words: word 6 of the first tile, word 1 of the last.
void pad_words(uint8_t* row, int width) {
  copy(row - 2, row + 12, 2);
  copy(row + width, row + width - 14, 2);
}

// The same for those of two rows that were made.
void pad_samples(uint8_t* const (&rows)[2], int width) {
  for (uint8_t* const row : rows)
    if (row != nullptr) pad_samples(row, width);
}
void pad_words(uint8_t* const (&rows)[2], int width) {
  for (uint8_t* const row : rows)
    if (row != nullptr) pad_words(row, width);
}

// The record's scratch rows during a frame.
enum scratch_row { kBlackEven, kBlackOdd, kSumsU, kSumsV, kFlatMask, kFlatR, kFlatG, kFlatB, kColour0 };
constexpr int kScratchPitch = 2048 + 64;
constexpr int kLensScratch = (kColour0 + 4) * kScratchPitch;  // two rows of factors
static_assert(64 + kLensScratch + 2 * 2 * 2048 <= kScratchBytes - kOutputScratch);

uint8_t* scratch_row_at(const walk& w, int row) {
  return w.context->scratch + 64 + row * kScratchPitch;
}

// ---- stages

// `rows`: the two that passed the front end last.
void gather_statistics(walk& w, int output_row_pair, uint8_t* const (&rows)[2]) {
  const path_traits& path = *w.path;
  w.kernels->statistics({.context = w.context,
                         .black_even = scratch_row_at(w, kBlackEven),
                         .black_odd = scratch_row_at(w, kBlackOdd),
                         .tone_even = rows[0],
                         .tone_odd = rows[1],
                         .plain_only = !path.full_statistics,
                         .row_pair = output_row_pair,
                         .last_tile = w.tiles - 1 - path.right,
                         .tile_lead = path.lead_tiles});
}

void front_end_stage(walk& w, int r) {
  ppl_context& c = *w.context;
  const path_traits& path = *w.path;
  const int output_row_pair = r / 2 - path.lead_row_pairs;
  const bool collect = c.mean_collection != 0 && (output_row_pair & 1) != 0 && output_row_pair >= 1 &&
                       output_row_pair <= w.row_pairs - 1 - path.bottom && w.tiles - 1 - path.right >= 1;
  uint8_t* const source = w.job->source + static_cast<ptrdiff_t>(r) * c.frame_stride;
  uint16_t* const spare = static_cast<uint16_t*>(static_cast<void*>(c.scratch + 64 + kLensScratch));
  uint8_t* rows[2];
  w.to_make(path.medium_filter ? kRaw : kMosaic, r, rows);
  w.kernels->front_end({.context = &c,
                        .source_even = source,
                        .source_odd = source + c.frame_stride,
                        .frame_even = path.medium_filter ? nullptr : source,
                        .frame_odd = path.medium_filter ? nullptr : source + c.frame_stride,
                        .row_even = rows[0],
                        .row_odd = rows[1],
                        .lens_even = lens_row(c, r, w.width, spare),
                        .lens_odd = lens_row(c, r + 1, w.width, spare + 2048),
                        .black_even = collect ? scratch_row_at(w, kBlackEven) : nullptr,
                        .black_odd = collect ? scratch_row_at(w, kBlackOdd) : nullptr,
                        .width = w.width});
  if (collect) gather_statistics(w, output_row_pair, rows);
  pad_samples(rows, w.width);
}

// The first and last tile of a row, the row pairs above the path's first one and the last row pair pass unfiltered.
void median_stage(walk& w, int first) {
  median_args a = {.context = w.context, .rows = {}, .out = {}, .odd_row = first & 1, .width = w.width};
  w.to_read(kRaw, first - 2, a.rows);
  w.to_make(kMosaic, first, a.out);
  uint8_t* const made[2] = {a.out[0], a.out[1]};
  for (int i = 0; i < 2; ++i) {
    const int pair = (first + i) / 2;
    if (made[i] == nullptr) continue;
    if (pair >= w.path->median_first_row_pair && pair <= w.row_pairs - 2 && w.tiles > 2) continue;
    copy(made[i], a.rows[2 + i], w.width);
    a.out[i] = nullptr;
  }
  w.kernels->median(a);
  for (int i = 0; i < 2; ++i) {
    if (made[i] == nullptr) continue;
    const int last = w.width - kTile;
    copy(made[i], a.rows[2 + i], kTile);
    copy(made[i] + last, a.rows[2 + i] + last, kTile);
    copy(w.job->source + static_cast<ptrdiff_t>(first + i) * w.context->frame_stride, made[i], w.width);
  }
  pad_samples(made, w.width);
}

void green_stage(walk& w, int first) {
  green_args a = {.context = w.context, .rows = {}, .out = {}, .odd_row = first & 1, .width = w.width};
  w.to_read(kMosaic, first - 2, a.rows);
  w.to_make(kGreen, first, a.out);
  w.kernels->green_fill(a);
  pad_samples(a.out, w.width);
}

// The flat colours find their rows at r * stride plus multiples of the frame's width: with a wider stride that is
// another place of the frame, copied here with the columns beside it.
const uint8_t* colour_row(const walk& w, int r, int neighbour, int slot) {
  const ppl_context& c = *w.context;
  if (c.frame_stride == c.frame_width) return w.row(kMosaic, neighbour);
  uint8_t* const out = scratch_row_at(w, kColour0 + slot);
  const uint8_t* const from = w.job->source + static_cast<ptrdiff_t>(r) * c.frame_stride +
                              static_cast<ptrdiff_t>(w.mirrored(neighbour) - r) * c.frame_width;
  copy(out, from, w.width);
  pad_samples(out, w.width);
  return out;
}

void find_flat_blocks(walk& w, int r) {
  flat_args a = {.context = w.context,
                 .rows = {},
                 .colour_rows = {},
                 .mask = w.flat_mask,
                 .r = w.flat_r,
                 .g = w.flat_g,
                 .b = w.flat_b,
                 .odd_row = r & 1,
                 .width = w.width};
  w.to_read(kMosaic, r - 2, a.rows);
  for (int i = 0; i < 4; ++i) a.colour_rows[i] = colour_row(w, r, r - 1 + i, i);
  w.kernels->flat_test(a);
  const int last = w.width - kTile;
  tile_leftovers& left = w.context->leftovers;
  __builtin_memcpy(&left.flat_mask, w.flat_mask + last, kTile);
  __builtin_memcpy(&left.flat_r, w.flat_r + last, kTile);
  __builtin_memcpy(&left.flat_g, w.flat_g + last, kTile);
  __builtin_memcpy(&left.flat_b, w.flat_b + last, kTile);
}

// Which rows flat colours reach: those of a tested block; of what an earlier frame left, all rows, or with edge
// enhancement behind them row 1 and rows 3 .. height - 2.
bool flat_in_row(const walk& w, int r) {
  switch (w.path->flat) {
    case flat_colours::none:
      return false;
    case flat_colours::even_blocks:
      return true;
    case flat_colours::odd_blocks:
      return r >= 1 && r <= w.height - 2;
    case flat_colours::left_over:
      break;
  }
  if (w.flat_mask == nullptr) return false;
  return !w.path->edge || r == 1 || (r >= 3 && r <= w.height - 2);
}

void demosaic_stage(walk& w, int first) {
  const path_traits& path = *w.path;
  const bool tested = path.flat == flat_colours::even_blocks || path.flat == flat_colours::odd_blocks;
  if (tested && w.inside(first) && flat_in_row(w, first)) find_flat_blocks(w, first);
  demosaic_args a = {.rows = {},
                     .green = {},
                     .flat_mask = {},
                     .flat_r = w.flat_r,
                     .flat_g = w.flat_g,
                     .flat_b = w.flat_b,
                     .matrix = &w.matrix,
                     .luma = {},
                     .chroma = {},
                     .plane3 = {},
                     .odd_row = first & 1,
                     .width = w.width};
  w.to_read(kMosaic, first - 1, a.rows);
  w.to_make(kLuma, first, a.luma);
  w.to_make(kChroma, first, a.chroma);
  if (w.three_planes) w.to_make(kPlane3, first, a.plane3);
  for (int i = 0; i < 2; ++i) {
    if (flat_in_row(w, first + i)) a.flat_mask[i] = w.flat_mask;
    if (!path.noise_filter && !w.three_planes && !w.chroma_is_put_out(first + i)) a.chroma[i] = nullptr;
  }
  switch (path.demosaic) {
    case interpolator::gradient:
      w.kernels->demosaic_gradient(a);
      break;
    case interpolator::bilinear:
      w.kernels->demosaic_bilinear(a);
      break;
    case interpolator::directed:
      w.to_read(kGreen, first - 1, a.green);
      w.kernels->demosaic_directed(a);
      break;
    case interpolator::mosaic_edge:
      break;
  }
  if (path.edge) pad_samples(a.luma, w.width);
  if (path.noise_filter) pad_words(a.chroma, w.width);
}

void mosaic_edge_stage(walk& w, int first) {
  if (!w.inside(first)) return;
  mosaic_edge_args a = {.context = w.context,
                        .rows = {},
                        .matrix = &w.matrix,
                        .luma = {},
                        .chroma = {},
                        .plane3 = {},
                        .three_planes = w.three_planes,
                        .width = w.width};
  for (int i = 0; i < 4; ++i) a.rows[i] = w.row(kMosaic, first - 1 + i);
  for (int i = 0; i < 2; ++i) {
    a.luma[i] = w.row(kLuma, first + i);
    a.chroma[i] = w.three_planes || w.chroma_is_put_out(first + i) ? w.row(kChroma, first + i) : nullptr;
    a.plane3[i] = w.three_planes ? w.row(kPlane3, first + i) : nullptr;
  }
  w.kernels->mosaic_edge(a);
  // The next row pair sees luma above it, and luma mirrored beside it.
  if (!w.three_planes) pad_samples(a.rows[2], w.width);
}

void noise_stage(walk& w, int first) {
  noise_args a = {
      .context = w.context, .luma = {}, .chroma = {}, .luma_out = {}, .chroma_out = {}, .width = w.width};
  w.to_read(kLuma, first - 1, a.luma);
  w.to_read(kChroma, first - 1, a.chroma);
  w.to_make(kLumaNf, first, a.luma_out);
  w.to_make(kChromaNf, first, a.chroma_out);
  w.kernels->noise_filter(a);
  pad_samples(a.luma_out, w.width);
  pad_words(a.chroma_out, w.width);
}

void edge_stage(walk& w, int first) {
  edge_args a = {.context = w.context, .luma = {}, .out = {}, .width = w.width};
  w.to_read(w.path->noise_filter ? kLumaNf : kLuma, first - 1, a.luma);
  w.to_make(kLumaOut, first, a.out);
  for (int i = 0; i < 2; ++i)
    if (!w.row_is_put_out(first + i)) a.out[i] = nullptr;
  w.kernels->edge(a);
}

void smooth_stage(walk& w, int first) {
  smooth_args a = {.chroma = {},
                   .u_sums = scratch_row_at(w, kSumsU),
                   .v_sums = scratch_row_at(w, kSumsV),
                   .out = {},
                   .width = w.width};
  w.to_read(kChromaNf, first - 1, a.chroma);
  w.to_make(kChromaOut, first, a.out);
  for (int i = 0; i < 2; ++i)
    if (!w.chroma_is_put_out(first + i)) a.out[i] = nullptr;
  w.kernels->smooth(a);
}

void output_stage(walk& w, int first) {
  finished_rows rows = {};
  w.to_read(w.path->edge ? kLumaOut : kLuma, first, rows.luma);
  w.to_read(w.path->noise_filter ? kChromaOut : kChroma, first, rows.chroma);
  if (w.three_planes) w.to_read(kPlane3, first, rows.plane3);
  if (w.writer.wants_unfiltered_chroma) w.to_read(kChroma, first, rows.unfiltered_chroma);
  w.writer.put(w.writer, first / 2, rows);
}

// ---- the plan of a frame

// Where each stage stands. `lead` is the lag of each ring's producer.
struct planner {
  walk& w;
  int producer_lag[kRings] = {};
  int ring_rows[kRings] = {};

  enum alignment { any, even_rows, odd_rows };

  void add(void (*run)(walk&, int), const ring_read* reads, int n_reads, const ring_id* writes, int n_writes,
           alignment align) {
    int lag = 0;
    for (int i = 0; i < n_reads; ++i) {
      const int behind = producer_lag[reads[i].ring] + reads[i].below;
      if (behind > lag) lag = behind;
    }
    if ((align == even_rows && (lag & 1) != 0) || (align == odd_rows && (lag & 1) == 0)) ++lag;
    for (int i = 0; i < n_reads; ++i) {
      const int rows = lag - producer_lag[reads[i].ring] + reads[i].above + 2;
      if (rows > ring_rows[reads[i].ring]) ring_rows[reads[i].ring] = rows;
    }
    for (int i = 0; i < n_writes; ++i) producer_lag[writes[i]] = lag;
    w.stages[w.n_stages++] = {run, lag};
  }
  template <int R, int W>
  void add(void (*run)(walk&, int), const ring_read (&reads)[R], const ring_id (&writes)[W],
           alignment align = any) {
    add(run, reads, R, writes, W, align);
  }
};

void plan_stages(walk& w) {
  const path_traits& path = *w.path;
  planner plan{w};
  using enum planner::alignment;
  w.n_stages = 0;

  const ring_id front[] = {path.medium_filter ? kRaw : kMosaic};
  plan.add(front_end_stage, nullptr, 0, front, 1, even_rows);
  if (path.medium_filter) plan.add(median_stage, {{kRaw, 2, 2}}, {kMosaic});

  switch (path.demosaic) {
    case interpolator::gradient:
    case interpolator::bilinear:
      plan.add(demosaic_stage, {{kMosaic, 1, 1}}, {kLuma, kChroma, kPlane3});
      break;
    case interpolator::directed: {
      plan.add(green_stage, {{kMosaic, 2, 2}}, {kGreen});
      const auto align = path.flat == flat_colours::even_blocks  ? even_rows
                         : path.flat == flat_colours::odd_blocks ? odd_rows
                                                                 : any;
      plan.add(demosaic_stage, {{kMosaic, 2, 2}, {kGreen, 1, 1}}, {kLuma, kChroma, kPlane3}, align);
      break;
    }
    case interpolator::mosaic_edge:
      plan.add(mosaic_edge_stage, {{kMosaic, 1, 1}}, {kLuma, kChroma, kPlane3}, even_rows);
      break;
  }
  if (path.noise_filter) plan.add(noise_stage, {{kLuma, 1, 1}, {kChroma, 1, 1}}, {kLumaNf, kChromaNf});
  if (path.edge) plan.add(edge_stage, {{path.noise_filter ? kLumaNf : kLuma, 1, 1}}, {kLumaOut});
  if (path.noise_filter) plan.add(smooth_stage, {{kChromaNf, 1, 1}}, {kChromaOut});

  const ring_id none[] = {kRaw};
  ring_read finished[4];
  int n = 0;
  finished[n++] = {path.edge ? kLumaOut : kLuma, 0, 0};
  finished[n++] = {path.noise_filter ? kChromaOut : kChroma, 0, 0};
  if (w.three_planes) finished[n++] = {kPlane3, 0, 0};
  if (w.writer.wants_unfiltered_chroma) finished[n++] = {kChroma, 0, 0};
  plan.add(output_stage, finished, n, none, 0, even_rows);

  const int pitch = (w.width + 63) / 64 * 64 + 64;
  uint8_t* base = w.context->ring_pool + 64;
  for (int i = 0; i < kRings; ++i) {
    w.rings[i] = row_ring(base, pitch, plan.ring_rows[i]);
    base += static_cast<ptrdiff_t>(pitch) * plan.ring_rows[i];
  }
}

// The widest list of rings, that of quality 15 with its unfiltered chroma kept, fits the pool at the widest frame.
static_assert(64 + 27 * (2048 + 64) <= kRingPoolBytes);

void load_matrix(walk& w) {
  const ppl_context& c = *w.context;
  const bool yuv2 = w.three_planes && w.path->edge;
  const vec_i16* const coef = !w.three_planes ? c.yuv_coef : yuv2 ? c.yuv2_coef : c.rgb_coef;
  for (int i = 0; i < 9; ++i) w.matrix.coef[i] = coef[i];
  for (int row = 0; row < 3; ++row) {
    const bool chroma = row > 0 && (!w.three_planes || yuv2);
    for (int lane = 0; lane < 8; ++lane) {
      w.matrix.bias[row].lane[lane] = chroma ? 128 : 0;
      w.matrix.offset[row].lane[lane] = 32;
    }
    if (!chroma)
      w.matrix.offset[row] = !w.three_planes ? c.luma_offset
                             : yuv2          ? c.yuv2_offset_vector
                                             : c.rgb_offset_vector;
  }
}

// Rows of flat colours: for the tested paths written block by block; for the others the pattern of an earlier
// frame's last tile, if there is one, repeated along the row.
void prepare_flat_colours(walk& w) {
  w.flat_mask = w.flat_r = w.flat_g = w.flat_b = nullptr;
  if (w.path->flat == flat_colours::none) return;
  const tile_leftovers& left = w.context->leftovers;
  if (w.path->flat == flat_colours::left_over) {
    int set = 0;
    for (int i = 0; i < 8; ++i) set |= left.flat_mask.lane[i];
    if (set == 0) return;
  }
  w.flat_mask = scratch_row_at(w, kFlatMask);
  w.flat_r = scratch_row_at(w, kFlatR);
  w.flat_g = scratch_row_at(w, kFlatG);
  w.flat_b = scratch_row_at(w, kFlatB);
  if (w.path->flat != flat_colours::left_over) return;
  for (int x = 0; x < w.width + 64; x += kTile) {
    __builtin_memcpy(w.flat_mask + x, &left.flat_mask, kTile);
    __builtin_memcpy(w.flat_r + x, &left.flat_r, kTile);
    __builtin_memcpy(w.flat_g + x, &left.flat_g, kTile);
    __builtin_memcpy(w.flat_b + x, &left.flat_b, kTile);
  }
}

}  // namespace

void run_tile_path(const frame_job& job) {
  ppl_context* const c = job.context;
  const path_traits* const path = find_path(c->quality, c->medium_filter_enabled != 0);
  if (path == nullptr || c->tiles_per_row < 1 || c->row_pairs < 1) return;
  walk w;
  w.job = &job;
  w.context = c;
  w.kernels = c->kernels->tile;
  w.path = path;
  w.tiles = c->tiles_per_row;
  w.row_pairs = c->row_pairs;
  w.width = w.tiles * kTile;
  w.height = 2 * w.row_pairs;
  const bool rgb = job.format == out_format::rgb24 || job.format == out_format::rgb32;
  w.three_planes = rgb && !path->noise_filter;
  w.writer = make_writer(job, path->bottom);
  load_matrix(w);
  w.kernels->prepare_tone(*c, c->rgb_gamma_table);
  prepare_flat_colours(w);
  plan_stages(w);

  const int last_lag = w.stages[w.n_stages - 1].lag;
  for (int top = 0; top - last_lag < w.height; top += 2)
    for (int i = 0; i < w.n_stages; ++i) {
      const int first = top - w.stages[i].lag;
      if (first >= -1 && first < w.height) w.stages[i].run(w, first);
    }
}

}  // namespace ppl
