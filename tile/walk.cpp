#include "tile/walk.h"

#include <stddef.h>

#include "platform/levels.h"
#include "tile/lens_rows.h"
#include "tile/statistics_sums.h"

namespace ppl {

namespace {

// ---- rows

void copy(uint8_t* to, const uint8_t* from, int bytes) {
  __builtin_memcpy(to, from, static_cast<size_t>(bytes));
}

// Columns -2, -1 and width, width + 1: the row mirrored about its border samples.
void pad_samples(uint8_t* row, int width) {
  const uint8_t left[2] = {row[2], row[1]}, right[2] = {row[width - 2], row[width - 3]};
  copy(row - 2, left, 2);
  copy(row + width, right, 2);
}

// The words beside a row of chroma words: word 6 of the first tile, word 1 of the last.
void pad_words(uint8_t* row, int width) {
  copy(row - 2, row + 12, 2);
  copy(row + width, row + width - 14, 2);
}

void pad_samples(uint8_t* const* rows, row_bits made, int width) {
  each_row(made, [&](int i) { pad_samples(rows[i], width); });
}
void pad_words(uint8_t* const* rows, row_bits made, int width) {
  each_row(made, [&](int i) { pad_words(rows[i], width); });
}

// The record's scratch rows during a frame.
enum scratch_row {
  kBlackEven,
  kBlackOdd,
  kSumsU,
  kSumsV,
  kFlatMask,
  kFlatR,
  kFlatG,
  kFlatB,
  kColour0,
  kPlane3Row0 = kColour0 + 4,
  kScratchRows = kPlane3Row0 + kPlane3Rows
};
constexpr int kScratchPitch = 2048 + 64;
constexpr int kLensScratch = 64 + kScratchRows * kScratchPitch;  // two rows of factors
constexpr int kPlacesScratch = kLensScratch + 2 * 2 * 2048;      // the rings' lists of row pointers
static_assert(kPlacesScratch + 2 * (kPoolRows + kPlane3Rows + kRings * (kMostRows - 2)) * sizeof(uint8_t*) <=
              kScratchBytes - kOutputScratch);

template <class T>
T* scratch_at(const walk& w, int offset) {
  return static_cast<T*>(static_cast<void*>(w.context->scratch + offset));
}
uint8_t* scratch_row_at(const walk& w, int row) {
  return w.context->scratch + 64 + row * kScratchPitch;
}

// ---- stages

// `rows`: the two that passed the front end last.
void gather_statistics(walk& w, int output_row_pair, const uint8_t* const* rows) {
  const path_traits& path = *w.path;
  enter_row_pair(*w.context, output_row_pair);
  w.kernels->statistics({.context = w.context,
                         .black_even = scratch_row_at(w, kBlackEven),
                         .black_odd = scratch_row_at(w, kBlackOdd),
                         .tone_even = rows[0],
                         .tone_odd = rows[1],
                         .plain_only = !path.full_statistics,
                         .last_tile = w.tiles - 1 - path.right,
                         .tile_lead = path.lead_tiles});
}

void front_end_pair(walk& w, int r, uint8_t* const* rows) {
  ppl_context& c = *w.context;
  const path_traits& path = *w.path;
  const int output_row_pair = r / 2 - path.lead_row_pairs;
  const bool collect = c.mean_collection != 0 && (output_row_pair & 1) != 0 && output_row_pair >= 1 &&
                       output_row_pair <= w.row_pairs - 1 - path.rules.bottom_stages &&
                       w.tiles - 1 - path.right >= 1;
  uint8_t* const source = w.job->source + static_cast<ptrdiff_t>(r) * c.frame_stride;
  uint16_t* const spare = scratch_at<uint16_t>(w, kLensScratch);
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
  for (int i = 0; i < 2; ++i) pad_samples(rows[i], w.width);
}

void front_end_stage(walk& w, int first) {
  uint8_t* const* const rows = w.rows(w.path->medium_filter ? kRaw : kMosaic, first);
  for (int i = 0; i < w.step && first + i < w.height; i += 2) front_end_pair(w, first + i, rows + i);
}

// The first and last tile of a row, the row pairs above the path's first one and the last row pair pass unfiltered.
void median_stage(walk& w, int first) {
  walk::row_list mirrored;
  uint8_t* const* const raw = w.around(kRaw, first, 2, mirrored);
  uint8_t* const* const out = w.rows(kMosaic, first);
  const row_bits made = w.made(first);
  row_bits filtered = 0;
  each_row(made, [&](int i) {
    const int pair = (first + i) / 2;
    if (pair >= w.path->median_first_row_pair && pair <= w.row_pairs - 2 && w.tiles > 2) filtered |= 1u << i;
  });
  w.kernels->median({.context = w.context,
                     .rows = raw,
                     .out = out,
                     .made = filtered,
                     .odd_row = first & 1,
                     .width = w.width});
  each_row(made, [&](int i) {
    const int ends = in_bits(filtered, i) ? kTile : w.width;
    copy(out[i], raw[2 + i], ends);
    copy(out[i] + w.width - ends, raw[2 + i] + w.width - ends, ends);
    copy(w.job->source + static_cast<ptrdiff_t>(first + i) * w.context->frame_stride, out[i], w.width);
  });
  pad_samples(out, made, w.width);
}

void green_stage(walk& w, int first) {
  walk::row_list mirrored;
  uint8_t* const* const out = w.rows(kGreen, first);
  const row_bits made = w.made(first);
  w.kernels->green_fill({.context = w.context,
                         .rows = w.around(kMosaic, first, 2, mirrored),
                         .out = out,
                         .made = made,
                         .odd_row = first & 1,
                         .width = w.width});
  pad_samples(out, made, w.width);
}

// The flat colours find their rows at r * stride plus multiples of the frame's width: with a wider stride that is
// another place of the frame, copied here with the columns beside it.
const uint8_t* colour_row(const walk& w, int r, int neighbour, int slot) {
  const ppl_context& c = *w.context;
  uint8_t* const out = scratch_row_at(w, kColour0 + slot);
  const uint8_t* const from = w.job->source + static_cast<ptrdiff_t>(r) * c.frame_stride +
                              static_cast<ptrdiff_t>(w.mirrored(neighbour) - r) * c.frame_width;
  copy(out, from, w.width);
  pad_samples(out, w.width);
  return out;
}

// A tested path takes two rows a step.
void find_flat_blocks(walk& w, int r) {
  walk::row_list mirrored;
  const uint8_t* elsewhere[4];
  uint8_t* const* const rows = w.around(kMosaic, r, 2, mirrored);
  const bool in_rows = w.context->frame_stride == w.context->frame_width;
  for (int i = 0; i < 4 && !in_rows; ++i) elsewhere[i] = colour_row(w, r, r - 1 + i, i);
  w.kernels->flat_test({.context = w.context,
                        .rows = rows,
                        .colour_rows = in_rows ? rows + 1 : elsewhere,
                        .mask = w.flat_mask,
                        .r = w.flat_r,
                        .g = w.flat_g,
                        .b = w.flat_b,
                        .odd_row = r & 1,
                        .width = w.width});
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

row_bits flat_rows(const walk& w, int first, row_bits made) {
  row_bits flat = 0;
  if (w.path->flat != flat_colours::none)
    each_row(made, [&](int i) { flat |= row_bits{flat_in_row(w, first + i)} << i; });
  return flat;
}

void demosaic_stage(walk& w, int first) {
  const path_traits& path = *w.path;
  if (is_tested(path.flat) && w.inside(first) && flat_in_row(w, first)) find_flat_blocks(w, first);
  walk::row_list mirrored, mirrored_green;
  const row_bits made = w.made(first);
  const bool all_chroma = path.noise_filter || w.three_planes;
  const demosaic_args a = {
      .rows = w.around(kMosaic, first, 1, mirrored),
      .green = path.demosaic == interpolator::directed ? w.around(kGreen, first, 1, mirrored_green) : nullptr,
      .flat_mask = w.flat_mask,
      .flat_r = w.flat_r,
      .flat_g = w.flat_g,
      .flat_b = w.flat_b,
      .matrix = &w.matrix,
      .luma = w.rows(kLuma, first),
      .chroma = w.rows(kChroma, first),
      .plane3 = w.three_planes ? w.rows(kPlane3, first) : nullptr,
      .made = made,
      .with_chroma = all_chroma ? made : w.made(first, w.chroma_put_out),
      .with_flat = flat_rows(w, first, made),
      .odd_row = first & 1,
      .width = w.width};
  switch (path.demosaic) {
    case interpolator::gradient:
      w.kernels->demosaic_gradient(a);
      break;
    case interpolator::bilinear:
      w.kernels->demosaic_bilinear(a);
      break;
    case interpolator::directed:
      w.kernels->demosaic_directed(a);
      break;
    case interpolator::mosaic_edge:
      break;
  }
  if (path.edge) pad_samples(a.luma, made, w.width);
  if (path.noise_filter) pad_words(a.chroma, made, w.width);
}

// Two rows a step: each row pair sees what the one before it left.
void mosaic_edge_stage(walk& w, int first) {
  walk::row_list mirrored;
  uint8_t* const* const rows = w.around(kMosaic, first, 1, mirrored);
  uint8_t *const *const luma = w.rows(kLuma, first), *const *const chroma = w.rows(kChroma, first);
  const row_bits with_chroma = w.made(first, w.three_planes ? kEveryRow : w.chroma_put_out);
  mosaic_edge_args a = {.context = w.context,
                        .rows = {rows[0], rows[1], rows[2], rows[3]},
                        .matrix = &w.matrix,
                        .luma = {luma[0], luma[1]},
                        .chroma = {},
                        .plane3 = {},
                        .three_planes = w.three_planes,
                        .width = w.width};
  for (int i = 0; i < 2; ++i) {
    if (in_bits(with_chroma, i)) a.chroma[i] = chroma[i];
    if (w.three_planes) a.plane3[i] = w.row(kPlane3, first + i);
  }
  w.kernels->mosaic_edge(a);
  // The next row pair sees luma above it, and luma mirrored beside it.
  if (!w.three_planes) pad_samples(a.rows[2], w.width);
}

void noise_stage(walk& w, int first) {
  walk::row_list mirrored_luma, mirrored_chroma;
  uint8_t *const *const luma = w.rows(kLumaNf, first), *const *const chroma = w.rows(kChromaNf, first);
  const row_bits made = w.made(first);
  w.kernels->noise_filter({.context = w.context,
                           .luma = w.around(kLuma, first, 1, mirrored_luma),
                           .chroma = w.around(kChroma, first, 1, mirrored_chroma),
                           .luma_out = luma,
                           .chroma_out = chroma,
                           .made = made,
                           .width = w.width});
  pad_samples(luma, made, w.width);
  pad_words(chroma, made, w.width);
}

void edge_stage(walk& w, int first) {
  walk::row_list mirrored;
  w.kernels->edge({.context = w.context,
                   .luma = w.around(w.path->noise_filter ? kLumaNf : kLuma, first, 1, mirrored),
                   .out = w.rows(kLumaOut, first),
                   .made = w.made(first, w.luma_put_out),
                   .width = w.width});
}

void smooth_stage(walk& w, int first) {
  walk::row_list mirrored;
  w.kernels->smooth({.chroma = w.around(kChromaNf, first, 1, mirrored),
                     .u_sums = scratch_row_at(w, kSumsU),
                     .v_sums = scratch_row_at(w, kSumsV),
                     .out = w.rows(kChromaOut, first),
                     .made = w.made(first, w.chroma_put_out),
                     .width = w.width});
}

void output_stage(walk& w, int first) {
  uint8_t* const* const luma = w.rows(w.path->edge ? kLumaOut : kLuma, first);
  uint8_t* const* const chroma = w.rows(w.path->noise_filter ? kChromaOut : kChroma, first);
  uint8_t* const* const plane3 = w.three_planes ? w.rows(kPlane3, first) : nullptr;
  uint8_t* const* const unfiltered = w.writer.wants_unfiltered_chroma ? w.rows(kChroma, first) : nullptr;
  for (int i = 0; i < w.step && first + i < w.height; i += 2) {
    if (first + i < 0) continue;
    w.writer.put(w.writer, (first + i) / 2,
                 {.plane = {luma + i, chroma + i, plane3 != nullptr ? plane3 + i : nullptr},
                  .unfiltered_chroma = unfiltered != nullptr ? unfiltered + i : nullptr});
  }
}

// ---- the plan of a frame

// Adds stages one by one.
struct planner : stage_list {
  enum alignment { any, even_rows, odd_rows };

  constexpr void add(void (*run)(walk&, int), const ring_read* reads, int n_reads, const ring_id* writes,
                     int n_writes, alignment align) {
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
    stages[n_stages++] = {run, lag};
  }
  template <int R, int W>
  constexpr void add(void (*run)(walk&, int), const ring_read (&reads)[R], const ring_id (&writes)[W],
                     alignment align = any) {
    add(run, reads, R, writes, W, align);
  }
};

constexpr stage_list plan_stages(const path_traits& path, bool three_planes, bool unfiltered_chroma) {
  using enum planner::alignment;
  planner plan;

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

  ring_read finished[4] = {{path.edge ? kLumaOut : kLuma, 0, 0},
                           {path.noise_filter ? kChromaOut : kChroma, 0, 0}};
  int n = 2;
  if (three_planes) finished[n++] = {kPlane3, 0, 0};
  if (unfiltered_chroma) finished[n++] = {kChroma, 0, 0};
  plan.add(output_stage, finished, n, nullptr, 0, even_rows);
  return plan;
}

// Every path's rings fit, whatever the format. (A path with a noise filter has words, not planes.)
constexpr bool rings_fit() {
  for (const path_traits& path : kPaths)
    for (int form = 0; form < 4; ++form) {
      const bool three_planes = (form & 1) != 0 && !path.noise_filter;
      const stage_list plan = plan_stages(path, three_planes, (form & 2) != 0);
      int rows = 0;
      for (int ring = 0; ring < kRings; ++ring) rows += ring != kPlane3 ? plan.ring_rows[ring] : 0;
      if (rows > kPoolRows || plan.ring_rows[kPlane3] > kPlane3Rows) return false;
    }
  return true;
}
static_assert(rings_fit());
static_assert(64 + kPoolRows * kScratchPitch <= kRingPoolBytes);

// A step costs each stage a call, however narrow its rows are. A row more a step is a row more in each ring: as many as
// leave the rings well inside the first-level cache, and so inside the pool.
int rows_a_step(const path_traits& path, const stage_list& plan, int pitch) {
  constexpr int kNear = 24 * 1024;
  static_assert(kNear <= kRingPoolBytes - 64);
  if (path.demosaic == interpolator::mosaic_edge || is_tested(path.flat)) return 2;
  int rows = 0, rings = 0;
  for (const int n : plan.ring_rows) {
    rows += n;
    rings += n != 0 ? 1 : 0;
  }
  int step = kMostRows;
  while (step > 2 && (pitch * (rows + rings * (step - 2)) > kNear ||
                      pitch * (plan.ring_rows[kPlane3] + step - 2) > kPlane3Rows * kScratchPitch))
    step /= 2;
  return step;
}

void place_rings(walk& w, const stage_list& plan) {
  int pitch = (w.width + 63) / 64 * 64 + 64;
  // Rows whole pages apart would look like one row to the processor's queues of loads and stores.
  if (pitch % 1024 == 0) pitch += 64;
  w.step = rows_a_step(*w.path, plan, pitch);
  uint8_t* base = w.context->ring_pool + 64;
  uint8_t** places = scratch_at<uint8_t*>(w, kPlacesScratch);
  for (int i = 0; i < kRings; ++i) {
    const int rows = plan.ring_rows[i] != 0 ? plan.ring_rows[i] + w.step - 2 : 0;
    w.rings[i] = row_ring(places, i == kPlane3 ? scratch_row_at(w, kPlane3Row0) : base, pitch,
                          static_cast<uint32_t>(rows));
    places += 2 * rows;
    if (i != kPlane3) base += static_cast<ptrdiff_t>(pitch) * rows;
  }
}

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

uint8_t* const* walk::mirrored_rows(ring_id ring, int first, uint8_t** list, int n) const {
  for (int i = 0; i < n; ++i) list[i] = row(ring, first + i);
  return list;
}

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
  w.writer = make_writer(job, path->rules);
  // Halved pictures take even rows alone; I420 takes chroma of even rows, halved of every second of those.
  const bool halved = c->decimation > 0;
  w.luma_put_out = halved && w.writer.ordinary ? kEvenRows : kEveryRow;
  w.chroma_put_out = job.format != out_format::i420 ? w.luma_put_out
                     : halved                       ? kEverySecondEvenRow
                                                    : kEvenRows;
  load_matrix(w);
  w.kernels->prepare_tone(*c, c->rgb_gamma_table);
  prepare_flat_colours(w);
  const stage_list plan = plan_stages(*path, w.three_planes, w.writer.wants_unfiltered_chroma);
  place_rings(w, plan);
  clear_sums(c->sums);

  const int last_lag = plan.stages[plan.n_stages - 1].lag;
  for (int top = 0; top - last_lag < w.height; top += w.step)
    for (int i = 0; i < plan.n_stages; ++i) {
      const int first = top - plan.stages[i].lag;
      if (first > -w.step && first < w.height) plan.stages[i].run(w, first);
    }
  settle_sums(*c);
}

}  // namespace ppl
