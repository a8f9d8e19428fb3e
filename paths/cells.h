// Frames made cell by cell, row pair after row pair: a cell's colours come from its own four samples.
//
// A row pair passes the front end in place. Its samples become planes, and the planes become rows of the format by the
// kernels of the output stage (cell_rows.cpp). These rows are placed in one of three ways, chosen once a frame:
//   in place   the ordinary frame: mirrors and decimation say where each row belongs, and all of them lie inside
//   by groups  along the pointers of the plan, 32 columns of two rows at a time, every store cut to the frame: pictures
//              whose pointers drift, and black lines that push rows out of the frame (cell_groups.cpp)
//   clipped    the doubled picture (cell_doubled.cpp) where not all of its rows are inside
#pragma once

#include "output/output_kernels.h"
#include "paths/kernels.h"
#include "record/context.h"
#include "record/destination.h"
#include "record/job.h"
#include "rows/row_kernels.h"
#include "tile/kernels.h"

namespace ppl::cells {

// Row storage in the record's ring pool: rows of a plane, of a doubled plane, and of a format.
constexpr int kPlanePitch = 2048 + 128, kWidePitch = 4096 + 128, kPackedPitch = 8192;
enum plane_row : uint8_t { kEven, kOdd, kBlackEven, kBlackOdd, kLuma0, kLuma1, kU, kV, kWords = kU };
constexpr int kPlaneRows = 8;
constexpr int kWideRows = 3;    // doubled planes
constexpr int kPackedRows = 2;  // finished rows that are not made in place
constexpr int kWideBase = kPlaneRows * kPlanePitch, kPackedBase = kWideBase + kWideRows * kWidePitch;
static_assert(kPackedBase + kPackedRows * kPackedPitch <= kRingPoolBytes);
static_assert(kPlanePitch % 64 == 0 && kWidePitch % 64 == 0 && kPackedPitch % 64 == 0);

// In the record's scratch: two rows of lens factors, then two of the three sets of doubled rows that a clipped frame
// makes aside. The third set takes the place of both finished rows. A set is a row of a format, or I420's rows of
// luma, U, V.
constexpr int kLensBytes = 2 * 2048 * 2;
constexpr int kAsideU = 4096, kAsideV = 8192, kAsideBytes = 12288;
static_assert(kLensBytes + 2 * kAsideBytes <= kScratchBytes && kAsideBytes <= kPackedRows * kPackedPitch);

inline uint8_t* plane(ppl_context* c, int row) {
  return c->ring_pool + 64 + row * kPlanePitch;
}
inline uint8_t* wide_row(ppl_context* c, int row) {
  return c->ring_pool + kWideBase + 64 + row * kWidePitch;
}
inline uint8_t* packed_row(ppl_context* c, int row) {
  return c->ring_pool + kPackedBase + row * kPackedPitch;
}

// RGB planes use the rows of the YUV ones.
constexpr plane_row kG0 = kLuma0, kG1 = kLuma1, kR = kU, kB = kV;

enum class placing : uint8_t { in_place, by_groups, clipped };

struct cell_frame {
  const frame_job* job;
  ppl_context* context;
  const path_kernels* kernels;   // cells to planes
  const output_kernels* output;  // planes to rows of a format
  const row_kernels* rows;
  bool grey;      // the samples themselves
  bool ranges;    // qual and qAE figures, histograms
  bool mirrored;  // rows run from right to left
  bool halved, doubled;
  placing place;
  int tiles, row_pairs;
  int columns;  // of the mosaic that are visited
  int pixels;   // of an output row that are made
  picture_rows places;
};

// The two rows, or the one of a halved picture, that a row pair makes and, in I420, its chroma rows. Null: not made.
struct made_rows {
  uint8_t* row[2];
  uint8_t *u, *v;
};

inline uint8_t* at(const cell_frame& f, const row_grid& g, int row) {
  return f.job->out.base + g.at(row);
}

// The cell kernels' rows in row storage.
cell_rows cells_of(const cell_frame& f);
// Makes finished rows of the row pair in row storage, in the order of memory, halved and reversed as the frame is.
void put_rows(const cell_frame& f, const made_rows& out);
// A row pair of a doubled picture, with the rows between and, at one end of the picture, the copy.
void double_row_pair(const cell_frame& f, int row_pair);

// The moving pointers of a frame by groups.
struct group_walk {
  int32_t half[2], row[2], group, row_step;  // offsets of a group's tiles and rows; steps
  int32_t chroma_group, chroma_row_step;
  int64_t luma, u, v;
};
group_walk start_groups(const cell_frame& f);
void place_groups(const cell_frame& f, group_walk& walk, int row_pair);

}  // namespace ppl::cells
