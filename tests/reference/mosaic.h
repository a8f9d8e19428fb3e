// The mosaic side of the plain reference: front end, medium filter and the statistics of the tile paths, over whole
// planes. The visited area is 16 * tiles_per_row columns of 2 * row_pairs rows; what lies beside it is left alone.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "state.h"

namespace ref {

int mirrored(int position, int size);

struct plane {
  int width = 0, height = 0;
  std::vector<uint8_t> samples;

  plane() = default;
  plane(int w, int h)
      : width(w), height(h), samples(static_cast<std::size_t>(w) * static_cast<std::size_t>(h)) {}
  uint8_t& operator()(int row, int column) { return samples[static_cast<std::size_t>(row * width + column)]; }
  uint8_t operator()(int row, int column) const {
    return samples[static_cast<std::size_t>(row * width + column)];
  }
  // Positions outside are mirrored about the border sample, as often as needed.
  uint8_t at(int row, int column) const {
    const bool inside = row >= 0 && row < height && column >= 0 && column < width;
    return inside ? (*this)(row, column) : (*this)(mirrored(row, height), mirrored(column, width));
  }
};

// A frame behind the front end, at the three points where something looks at it.
struct mosaic {
  plane black;   // after lens, green balance and black level
  plane linear;  // after gain and delta
  plane toned;   // after the tone table
};
mosaic front_end(const state& s, const uint8_t* source, const table256& tone_table);

// The medium filter on tiles 1 .. T - 2 of row pairs first .. N - 2; everything else is copied.
plane medium_filtered(const state& s, const plane& toned, int first_row_pair);

// Stores a plane over the rows of the frame; bytes behind the visited columns keep their values.
void write_back(const state& s, const plane& from, uint8_t* source);

// Eight sampled 2 x 2 cells: columns 4k + 2, 4k + 3 of an earlier tile (cells 0, 2, 4, 6) and of the current one.
struct cell_group {
  std::array<uint8_t, 8> b, gb, gr, r;
};
cell_group sampled_cells(const uint8_t* earlier_even, const uint8_t* earlier_odd, const uint8_t* current_even,
                         const uint8_t* current_odd);
void add_qualified(state& s,
                   const cell_group& cells);  // black-corrected samples: qual sums, count, histograms
void add_exposure(state& s, const cell_group& cells);  // qAE sums and count
rgb_words plain_sums(const cell_group& cells);         // R, both greens, B

// How far the front end runs ahead of the output position, and the steps that collect.
struct walk {
  int row_pairs_ahead, tiles_ahead;
  int rows_kept_off;   // the last collecting row pair is N - this
  int tiles_kept_off;  // the last inner tile is T - this
  bool plain_only;     // nothing but sub-window sums
};
void gather_statistics(state& s, const mosaic& m, const walk& w);

}  // namespace ref
