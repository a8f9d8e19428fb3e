// The caller's frame: where it begins, how long it is, and what becomes of bytes outside it.
//
// An ordinary frame holds all rows of its picture (rows_fit), and whole rows are stored at base + offset. In any other
// every store goes through store(), which keeps what lies outside from the caller's memory.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "record/context.h"
#include "record/format.h"

namespace ppl {

// The part of a run of bytes that lies inside the frame: `bytes` is 0 where there is none.
struct frame_run {
  int64_t first, bytes;
};

struct destination {
  uint8_t* base;
  int64_t bytes;
  // Where up to kMargin bytes before the frame, and as many after it, are kept for place() to find; null: they are
  // dropped.
  uint8_t* margin;
  static constexpr int kMargin = 3 * 2 * 2048;  // a doubled row of RGB24

  bool holds(int64_t at, int64_t n) const { return at >= 0 && at + n <= bytes; }
  frame_run inside(int64_t at, int64_t n) const {
    const int64_t first = at < 0 ? 0 : at, end = at + n < bytes ? at + n : bytes;
    return {first, first < end ? end - first : 0};
  }
  // Where the byte at an offset is kept; null: nowhere.
  uint8_t* place(int64_t at) const {
    if (at >= 0 && at < bytes) return base + at;
    if (margin == nullptr || at < -kMargin || at >= bytes + kMargin) return nullptr;
    return margin + kMargin + (at < 0 ? at : at - bytes);
  }
  void store(int64_t at, const uint8_t* from, int64_t n) const;
};

// Rows of a plane: row r begins at start + r * step.
struct row_grid {
  int64_t start, step;
  int64_t at(int64_t row) const { return start + row * step; }
};
// Of a picture: I420 luma, or the rows of the one plane. Row r of u and v goes with rows 2r and 2r + 1.
struct picture_rows {
  row_grid luma, u, v;
};

// Rows of `pixels` pixels that fill the frame downwards from its first row, or upwards from its last but `below` rows.
// Mirrored rows end where the frame's rows end.
picture_rows lay_out_rows(const ppl_context* c, out_format format, int pixels, bool upwards, bool mirrored,
                          int below);

// Whether rows first .. first + count - 1 can be stored whole: all inside the frame, those of I420 inside their planes.
bool rows_fit(const ppl_context* c, out_format format, int64_t bytes, const picture_rows& rows, int pixels,
              int64_t first, int64_t count);

}  // namespace ppl
