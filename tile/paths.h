// The qualities that walk in tiles, one line each.
#pragma once

#include <stdint.h>

#include "record/quality.h"

namespace ppl {

enum class interpolator : uint8_t { gradient, bilinear, directed, mosaic_edge };
// Flat colours: none; those an earlier frame left; tested over blocks that start at even or at odd rows.
enum class flat_colours : uint8_t { none, left_over, even_blocks, odd_blocks };
constexpr bool is_tested(flat_colours flat) {
  return flat == flat_colours::even_blocks || flat == flat_colours::odd_blocks;
}

// A quality path. Statistics run in row pairs 1 .. N - 1 - rules.bottom_stages and tiles 1 .. T - 1 - right of the output position,
// on samples lead_row_pairs further down and lead_tiles further right.
struct path_traits {
  uint8_t quality;
  bool medium_filter;
  uint8_t median_first_row_pair;
  interpolator demosaic;
  flat_colours flat;
  bool noise_filter, edge, full_statistics;
  uint8_t lead_row_pairs, lead_tiles, right;
  quality_rules rules;
};

// quality, medium filter, its first row pair | demosaic, flat colours | noise, edge, full statistics |
// front end leads by row pairs, tiles; steps without statistics on the right | rules
inline constexpr path_traits kPaths[] = {
    {15,
     false,
     0,
     interpolator::gradient,
     flat_colours::none,
     true,
     true,
     true,
     3,
     3,
     3,
     {rgb_form::yuv_words, rows_between::not_in_yuyv_main_stage, 3}},
    {0,
     false,
     0,
     interpolator::directed,
     flat_colours::left_over,
     false,
     true,
     true,
     2,
     2,
     3,
     {rgb_form::yuv_planes, rows_between::all, 2}},
    {0,
     true,
     1,
     interpolator::directed,
     flat_colours::left_over,
     false,
     true,
     true,
     3,
     3,
     4,
     {rgb_form::yuv_planes, rows_between::all, 3}},
    {1,
     false,
     0,
     interpolator::directed,
     flat_colours::left_over,
     false,
     false,
     true,
     2,
     1,
     2,
     {rgb_form::planes, rows_between::all, 2}},
    {1,
     true,
     2,
     interpolator::directed,
     flat_colours::left_over,
     false,
     false,
     true,
     3,
     2,
     3,
     {rgb_form::planes, rows_between::all, 3}},
    {2,
     false,
     0,
     interpolator::bilinear,
     flat_colours::none,
     false,
     false,
     true,
     1,
     1,
     1,
     {rgb_form::planes, rows_between::all, 1}},
    {2,
     true,
     1,
     interpolator::bilinear,
     flat_colours::none,
     false,
     false,
     true,
     2,
     2,
     2,
     {rgb_form::planes, rows_between::not_in_yuyv_main_stage, 2}},
    {10,
     false,
     0,
     interpolator::directed,
     flat_colours::odd_blocks,
     false,
     true,
     true,
     2,
     2,
     3,
     {rgb_form::yuv_planes, rows_between::rgb24_alone, 2}},
    {11,
     false,
     0,
     interpolator::directed,
     flat_colours::even_blocks,
     false,
     false,
     true,
     2,
     1,
     2,
     {rgb_form::planes, rows_between::rgb24_alone, 2}},
    {12,
     false,
     0,
     interpolator::mosaic_edge,
     flat_colours::none,
     false,
     false,
     false,
     1,
     1,
     1,
     {rgb_form::planes, rows_between::rgb24_alone, 1}},
};

// Only qualities 0, 1 and 2 look at the medium filter.
constexpr const path_traits* find_path(uint32_t quality, bool medium_filter) {
  const bool medium = medium_filter && quality <= 2;
  for (const path_traits& p : kPaths)
    if (p.quality == quality && p.medium_filter == medium) return &p;
  return nullptr;
}

}  // namespace ppl
