// The stages that run the blocks of this room: what each reads, how far around, and where it may begin. The comments
// name the rings of `reads` and of `writes`, in their order.
#pragma once

#include "tile/walk.h"

namespace ppl {

// Reads the caller's frame; writes the mosaic ring and the frame, in place, or the median ring alone. Lens, green
// balance, black level, gain, delta, tone; on the way statistics.
void front_end_stage(walk& w, const stage& s, int first);
inline constexpr stage_kind kFrontEnd = {.run = front_end_stage, .first = stage_kind::even_row};

// median ring -> mosaic ring and the caller's frame.
void medium_filter_stage(walk& w, const stage& s, int first);
inline constexpr stage_kind kMediumFilter = {.run = medium_filter_stage, .reach = {2}};

// mosaic ring -> green ring.
void green_fill_stage(walk& w, const stage& s, int first);
inline constexpr stage_kind kGreenFill = {.run = green_fill_stage, .reach = {2}};

// mosaic ring, green ring or none -> luma and chroma ring; with three planes, the three planes' rings. Interpolation
// and colour conversion.
void demosaic_stage(walk& w, const stage& s, int first);
inline constexpr stage_kind kDemosaic = {.run = demosaic_stage, .reach = {1, 1}};

// luma, chroma ring -> luma, chroma ring.
void noise_filter_stage(walk& w, const stage& s, int first);
inline constexpr stage_kind kNoiseFilter = {.run = noise_filter_stage, .reach = {1, 1}};

// luma ring -> finished luma.
void edge_stage(walk& w, const stage& s, int first);
inline constexpr stage_kind kEdge = {.run = edge_stage, .reach = {1}};

// chroma ring -> finished chroma.
void chroma_smoothing_stage(walk& w, const stage& s, int first);
inline constexpr stage_kind kChromaSmoothing = {.run = chroma_smoothing_stage, .reach = {1}};

}  // namespace ppl
