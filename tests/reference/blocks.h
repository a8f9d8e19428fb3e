// The blocks of the plain reference behind the mosaic, each over whole planes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "mosaic.h"
#include "state.h"

namespace ref {

struct colours {
  plane r, g, b;
  colours(int width, int height) : r(width, height), g(width, height), b(width, height) {}
};

// Signed chroma, one U or V for every column pair of every row.
struct chroma_plane {
  int width, height;
  std::vector<int8_t> samples;
  chroma_plane(int w, int h) : width(w), height(h), samples(static_cast<std::size_t>(w * h)) {}
  int8_t& operator()(int row, int word) { return samples[static_cast<std::size_t>(row * width + word)]; }
  // Rows are mirrored; beside a row stand word 6 of its first tile and word 1 of its last.
  int at(int row, int word) const;
};

struct yuv_planes {
  plane y;
  chroma_plane u, v;
  yuv_planes(int width, int height) : y(width, height), u(width / 2, height), v(width / 2, height) {}
};

struct pixel {
  uint8_t r, g, b;
};

uint8_t clamped(int value);
int8_t clamped_signed(int value);

// One matrix row, in 16 bits that wrap, without the final clamp.
int matrix_row(const int16_t* row, int offset, int r, int g, int b);

// Means of neighbours. A missing green is the mean of both pairs, or of the pair that differs less; ties go to the
// vertical one.
colours neighbour_means(const plane& s, bool select_green);

// Green at every site: along the direction of least change where exactly one direction changes by more than the
// threshold, from both otherwise.
plane green_filled(const plane& s, int threshold);

// Red and blue by their differences to green.
colours difference_planes(const plane& s, const plane& green);

// The flat test on blocks of two columns and two rows, the first blocks at first_row: a flat block takes one smoothed
// colour. frame is the whole buffer behind the front end: the colours find their rows frame_width apart there, the
// test does not. What the last tile decided stays in the state.
void select_flat_blocks(state& st, const plane& s, const uint8_t* frame, int first_row, colours& out);

// What a flat test left behind, on one row of a later frame.
void apply_leftover(const state& st, int row, colours& out);

// Luma of every pixel, chroma of even columns.
yuv_planes to_yuv(const state& st, const colours& in);

// Replaces a sample by the middle of its neighbours where these agree; chroma follows the even column of its pair.
yuv_planes noise_filtered(const state& st, const yuv_planes& in);

plane edge_enhanced(const state& st, const plane& y);

chroma_plane smoothed(const chroma_plane& in);

// The mosaic, sharpened as if it were a picture. Where luma is asked for, the grey conversion happens in place: what
// lies in an earlier row pair, or in an earlier tile of this one, is luma already when its neighbours look at it.
plane mosaic_sharpened(const state& st, const plane& mosaic_samples, plane* luma);

pixel yuv_to_pixel(int y, int cb, int cr);

}  // namespace ref
