// The blocks that reconstruct colour from the mosaic, each with the stage that it runs in.
#pragma once

#include "tile/stages.h"

namespace ppl {

// Where flat colours come from: an earlier frame's test may have left some; or this frame is tested, in blocks of two
// rows that start at even or at odd ones.
enum class flat_colours : uint8_t { none, left_over, even_blocks, odd_blocks };
constexpr bool is_tested(flat_colours flat) {
  return flat == flat_colours::even_blocks || flat == flat_colours::odd_blocks;
}

struct demosaic_block {
  stage_kind stage;
  void (*tile_kernels::*kernel)(const demosaic_args&);  // null: the stage knows its own
  bool reads_green;
  flat_colours flat;
};

// The flat test, then the demosaic of the two rows (paths/flat_blocks.cpp).
void flat_blocks_stage(walk& w, const stage& s, int first);
constexpr stage_kind kEvenFlatBlocks = {flat_blocks_stage, {2, 1}, stage_kind::even_row, true};
constexpr stage_kind kOddFlatBlocks = {flat_blocks_stage, {2, 1}, stage_kind::odd_row, true};
void start_flat_colours(walk& w, const demosaic_block& block, bool edge);

// The sharpening of the mosaic, with its colour conversion (paths/mosaic_edge.cpp).
void mosaic_edge_stage(walk& w, const stage& s, int first);
constexpr stage_kind kMosaicEdgeRows = {mosaic_edge_stage, {1}, stage_kind::even_row, true};

inline constexpr demosaic_block kGradient = {kDemosaic, &tile_kernels::demosaic_gradient, false,
                                             flat_colours::none};
inline constexpr demosaic_block kBilinear = {kDemosaic, &tile_kernels::demosaic_bilinear, false,
                                             flat_colours::none};
inline constexpr demosaic_block kDirected = {kDemosaic, &tile_kernels::demosaic_directed, true,
                                             flat_colours::left_over};
inline constexpr demosaic_block kDirectedEvenBlocks = {kEvenFlatBlocks, &tile_kernels::demosaic_directed,
                                                       true, flat_colours::even_blocks};
inline constexpr demosaic_block kDirectedOddBlocks = {kOddFlatBlocks, &tile_kernels::demosaic_directed, true,
                                                      flat_colours::odd_blocks};
inline constexpr demosaic_block kMosaicEdge = {kMosaicEdgeRows, nullptr, false, flat_colours::none};

// In the record's scratch, after what the walk takes: the flat colours of a row of blocks, and the rows from which
// they are made.
constexpr int kFlatScratch = (kWalkScratch + 63) / 64 * 64 + 64;
constexpr int kFlatRows = 8;
constexpr int kBlockScratch = kFlatScratch + kFlatRows * kRowPitch;  // bytes taken

}  // namespace ppl
