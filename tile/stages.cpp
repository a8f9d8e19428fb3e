// The stages: each hands its block the rows of a step, and pads what the block made.
#include "tile/stages.h"

#include "tile/lens_rows.h"
#include "tile/pads.h"
#include "tile/statistics_sums.h"

namespace ppl {

namespace {

// `rows`: the two that passed the front end last.
void gather_statistics(walk& w, int output_row_pair, const uint8_t* const* rows) {
  const statistics_rule& rule = w.statistics;
  enter_row_pair(*w.context, output_row_pair);
  w.kernels->statistics({.context = w.context,
                         .black_even = w.scratch_row(kBlackEven),
                         .black_odd = w.scratch_row(kBlackOdd),
                         .tone_even = rows[0],
                         .tone_odd = rows[1],
                         .plain_only = rule.plain_only,
                         .last_tile = w.tiles - 1 - rule.right,
                         .tile_lead = rule.lead_tiles});
}

void front_end_pair(walk& w, int r, uint8_t* const* rows, bool in_place) {
  ppl_context& c = *w.context;
  const statistics_rule& rule = w.statistics;
  const int output_row_pair = r / 2 - rule.lead_row_pairs;
  const bool collect = c.mean_collection != 0 && (output_row_pair & 1) != 0 && output_row_pair >= 1 &&
                       output_row_pair <= w.row_pairs - 1 - rule.bottom && w.tiles - 1 - rule.right >= 1;
  uint8_t* const source = w.source + static_cast<ptrdiff_t>(r) * c.frame_stride;
  uint16_t* const spare = w.scratch<uint16_t>(kLensScratch);
  w.kernels->front_end({.context = &c,
                        .source_even = source,
                        .source_odd = source + c.frame_stride,
                        .frame_even = in_place ? source : nullptr,
                        .frame_odd = in_place ? source + c.frame_stride : nullptr,
                        .row_even = rows[0],
                        .row_odd = rows[1],
                        .lens_even = lens_row(c, r, w.width, spare),
                        .lens_odd = lens_row(c, r + 1, w.width, spare + 2048),
                        .black_even = collect ? w.scratch_row(kBlackEven) : nullptr,
                        .black_odd = collect ? w.scratch_row(kBlackOdd) : nullptr,
                        .width = w.width});
  if (collect) gather_statistics(w, output_row_pair, rows);
  for (int i = 0; i < 2; ++i) pad_samples(rows[i], w.width);
}

}  // namespace

// The medium filter reads rows below the one that it makes, as the front end left them: where it follows, it is the
// one to write the frame.
void front_end_stage(walk& w, const stage& s, int first) {
  uint8_t* const* const rows = w.rows(s.writes[0], first);
  for (int i = 0; i < w.step && first + i < w.height; i += 2)
    front_end_pair(w, first + i, rows + i, s.writes[0] == mosaic_ring);
}

// The first and last tile of a row, the first row pairs and the last one pass unfiltered.
void medium_filter_stage(walk& w, const stage& s, int first) {
  walk::row_list mirrored;
  uint8_t* const* const raw = w.around(s.reads[0], first, 2, mirrored);
  uint8_t* const* const out = w.rows(s.writes[0], first);
  const row_bits made = w.made(first);
  row_bits filtered = 0;
  each_row(made, [&](int i) {
    const int pair = (first + i) / 2;
    if (pair >= w.first_filtered_row_pair && pair <= w.row_pairs - 2 && w.tiles > 2) filtered |= 1u << i;
  });
  w.kernels->medium_filter({.context = w.context,
                            .rows = raw,
                            .out = out,
                            .made = filtered,
                            .odd_row = first & 1,
                            .width = w.width});
  each_row(made, [&](int i) {
    const int ends = in_bits(filtered, i) ? kTile : w.width;
    copy(out[i], raw[2 + i], ends);
    copy(out[i] + w.width - ends, raw[2 + i] + w.width - ends, ends);
    copy(w.source + static_cast<ptrdiff_t>(first + i) * w.context->frame_stride, out[i], w.width);
  });
  pad_samples(out, made, w.width);
}

void green_fill_stage(walk& w, const stage& s, int first) {
  walk::row_list mirrored;
  uint8_t* const* const out = w.rows(s.writes[0], first);
  const row_bits made = w.made(first);
  w.kernels->green_fill({.context = w.context,
                         .rows = w.around(s.reads[0], first, 2, mirrored),
                         .out = out,
                         .made = made,
                         .odd_row = first & 1,
                         .width = w.width});
  pad_samples(out, made, w.width);
}

void demosaic_stage(walk& w, const stage& s, int first) {
  walk::row_list mirrored, mirrored_green;
  const row_bits made = w.made(first);
  row_bits flat = 0;
  if (w.flat.mask != nullptr) each_row(made, [&](int i) { flat |= row_bits{w.flat.reach(first + i)} << i; });
  const bool all_chroma = w.three_planes || w.plan->neighbours_read[chroma_ring];
  const demosaic_args a = {
      .rows = w.around(s.reads[0], first, 1, mirrored),
      .green = s.reads[1] != no_ring ? w.around(s.reads[1], first, 1, mirrored_green) : nullptr,
      .flat_mask = w.flat.mask,
      .flat_r = w.flat.r,
      .flat_g = w.flat.g,
      .flat_b = w.flat.b,
      .matrix = &w.matrix,
      .plane = {w.rows(s.writes[0], first), w.rows(s.writes[1], first),
                w.three_planes ? w.rows(s.writes[2], first) : nullptr},
      .made = made,
      .with_chroma = all_chroma ? made : w.made(first, w.chroma_rows),
      .with_flat = flat,
      .odd_row = first & 1,
      .width = w.width};
  (w.kernels->*w.demosaic)(a);
  if (w.plan->neighbours_read[luma_ring]) pad_samples(a.plane[0], made, w.width);
  if (w.plan->neighbours_read[chroma_ring]) pad_words(a.plane[1], made, w.width);
}

void noise_filter_stage(walk& w, const stage& s, int first) {
  walk::row_list mirrored_luma, mirrored_chroma;
  uint8_t *const *const luma = w.rows(s.writes[0], first), *const *const chroma = w.rows(s.writes[1], first);
  const row_bits made = w.made(first);
  w.kernels->noise_filter({.context = w.context,
                           .luma = w.around(s.reads[0], first, 1, mirrored_luma),
                           .chroma = w.around(s.reads[1], first, 1, mirrored_chroma),
                           .luma_out = luma,
                           .chroma_out = chroma,
                           .made = made,
                           .width = w.width});
  pad_samples(luma, made, w.width);
  pad_words(chroma, made, w.width);
}

void edge_stage(walk& w, const stage& s, int first) {
  walk::row_list mirrored;
  w.kernels->edge({.context = w.context,
                   .luma = w.around(s.reads[0], first, 1, mirrored),
                   .out = w.rows(s.writes[0], first),
                   .made = w.made(first, w.luma_rows),
                   .width = w.width});
}

void chroma_smoothing_stage(walk& w, const stage& s, int first) {
  walk::row_list mirrored;
  w.kernels->smooth({.chroma = w.around(s.reads[0], first, 1, mirrored),
                     .u_sums = w.scratch_row(kSumsU),
                     .v_sums = w.scratch_row(kSumsV),
                     .out = w.rows(s.writes[0], first),
                     .made = w.made(first, w.chroma_rows),
                     .width = w.width});
}

}  // namespace ppl
