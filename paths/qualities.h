// The qualities of the library, one row each: the private half of helpers/ppl_qualities.h, which says where each runs.
//
// Whatever depends on the quality is read here: by the dispatch, the statistics' factors, the walk, the cells, the
// output, the getters. A new quality is a row there, a row here and, if it has one, a block (paths/blocks.h).
#pragma once

#include "helpers/ppl_qualities.h"
#include "paths/blocks.h"
#include "record/context.h"
#include "record/format.h"
#include "record/quality.h"

namespace ppl {

// Both halves number the formats alike.
static_assert(static_cast<int>(out_format::i420) == PPL_FORMAT_I420 &&
              static_cast<int>(out_format::yuyv) == PPL_FORMAT_YUYV &&
              static_cast<int>(out_format::uyvy) == PPL_FORMAT_UYVY &&
              static_cast<int>(out_format::rgb24) == PPL_FORMAT_RGB24 &&
              static_cast<int>(out_format::rgb32) == PPL_FORMAT_RGB32);

// What the medium filter before a quality changes.
struct quality_form {
  // The entry of stats_scale_table that makes up for the border without statistics, and that border: columns and rows
  // of both sides together.
  uint8_t stats_scale = {};
  int8_t border_columns = {}, border_rows = {};
  // The front end is ahead of the output by so many row pairs and tiles; statistics stop so many before the end.
  uint8_t lead_row_pairs = {}, lead_tiles = {}, bottom = {}, right = {};
  rows_between between = {};
  uint8_t first_filtered_row_pair = {};  // with the medium filter
};
constexpr int8_t kNotWritten = -1;  // border: the entry stays 0, for sums outside the cells alone

struct quality_row {
  uint8_t quality;
  const demosaic_block* demosaic = {};  // of those that walk
  bool noise_filter = {};               // and chroma smoothing
  bool edge = {};
  rgb_form rgb = {};
  bool grey = {};               // made cell by cell: the samples themselves, by the tone table for luma
  bool centre_from_frame = {};  // the centre-weighted getters give the mean of the whole frame
  quality_form plain = {}, medium = {};

  constexpr const ppl_quality_row& facts() const { return ppl_quality_table[quality]; }
  constexpr bool walks() const { return facts().road == PPL_ROAD_WALK; }
  constexpr const quality_form& form(bool medium_filter) const {
    return medium_filter && facts().reads_medium_filter != 0 ? medium : plain;
  }
};

constexpr auto kAllBetween = rows_between::all;
constexpr auto kNotInYuyvMain = rows_between::not_in_yuyv_main_stage;
constexpr auto kRgb24Alone = rows_between::rgb24_alone;

// Forms: entry, border | leads, steps without statistics below and on the right | rows between | first filtered
inline constexpr quality_row quality_rows[PPL_QUALITIES] = {
    {.quality = 0,
     .demosaic = &kDirected,
     .edge = true,
     .rgb = rgb_form::yuv_planes,
     .plain = {0, 64, 12, 2, 2, 2, 3, kAllBetween, 0},
     .medium = {15, 80, 16, 3, 3, 3, 4, kAllBetween, 1}},
    {.quality = 1,
     .demosaic = &kDirected,
     .plain = {4, 48, 12, 2, 1, 2, 2, kAllBetween, 0},
     .medium = {16, 64, 16, 3, 2, 3, 3, kAllBetween, 2}},
    {.quality = 2,
     .demosaic = &kBilinear,
     .plain = {5, 32, 8, 1, 1, 1, 1, kAllBetween, 0},
     .medium = {17, 48, 12, 2, 2, 2, 2, kNotInYuyvMain, 1}},
    {.quality = 3, .centre_from_frame = true, .plain = {.stats_scale = 6}},
    {.quality = 4},
    {.quality = 5},
    {.quality = 6},
    {.quality = 7},
    {.quality = 8},
    {.quality = 9},
    {.quality = 10,
     .demosaic = &kDirectedOddBlocks,
     .edge = true,
     .rgb = rgb_form::yuv_planes,
     .plain = {11, 64, 12, 2, 2, 2, 3, kRgb24Alone, 0}},
    {.quality = 11, .demosaic = &kDirectedEvenBlocks, .plain = {12, 48, 12, 2, 1, 2, 2, kRgb24Alone, 0}},
    {.quality = 12, .demosaic = &kMosaicEdge, .plain = {7, 0, 0, 1, 1, 1, 1, kRgb24Alone, 0}},
    {.quality = 13, .grey = true, .plain = {.stats_scale = 8, .border_columns = kNotWritten}},
    {.quality = 14},
    {.quality = 15,
     .demosaic = &kGradient,
     .noise_filter = true,
     .edge = true,
     .rgb = rgb_form::yuv_words,
     .plain = {14, 64, 12, 3, 3, 3, 3, kNotInYuyvMain, 0}},
};

// Every row is in its place and has what its road needs; rows between agree with where pictures are whole.
constexpr bool is_complete(const quality_row& q, int place) {
  const ppl_quality_row& facts = q.facts();
  if (q.quality != place || facts.quality != place) return false;
  if (!q.walks()) return true;
  // A null pointer read here is no constant expression: the block exists.
  if (const demosaic_block block = *q.demosaic; block.kernel == nullptr && block.flat != flat_colours::none)
    return false;
  // RGB is made from chroma words in the qualities with the noise filter, and in no others.
  if (q.noise_filter != (q.rgb == rgb_form::yuv_words)) return false;
  for (int medium = 0; medium < 2; ++medium) {
    const auto doubled = [&](uint32_t format) {
      return ppl_quality_is_whole(q.quality, medium, format, PPL_SIZE_DOUBLE, 0, 0) != 0;
    };
    const rows_between between = q.form(medium != 0).between;
    if (doubled(PPL_FORMAT_I420) != (between != rows_between::rgb24_alone) ||
        doubled(PPL_FORMAT_UYVY) != (between != rows_between::rgb24_alone) ||
        doubled(PPL_FORMAT_YUYV) != (between == rows_between::all) ||
        doubled(PPL_FORMAT_RGB24) != (q.rgb != rgb_form::yuv_words))
      return false;
  }
  return true;
}
constexpr bool are_complete() {
  for (int i = 0; i < PPL_QUALITIES; ++i)
    if (!is_complete(quality_rows[i], i)) return false;
  return true;
}
static_assert(are_complete());

// ppl_set_quality refuses numbers past the table.
constexpr const quality_row& quality_of(const ppl_context& c) {
  return quality_rows[c.quality % PPL_QUALITIES];
}

}  // namespace ppl
