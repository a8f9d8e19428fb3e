// A frame in progress, as the dispatch hands it to a quality path.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "record/context.h"

namespace ppl {

enum class out_format : uint8_t { i420, yuyv, uyvy, rgb24, rgb32 };

// I420: of luma.
constexpr int bytes_per_pixel(out_format format) {
  switch (format) {
    case out_format::i420:
      return 1;
    case out_format::yuyv:
    case out_format::uyvy:
      return 2;
    case out_format::rgb24:
      return 3;
    case out_format::rgb32:
      break;
  }
  return 4;
}

struct frame_job {
  ppl_context* context;
  out_format format;
  uint8_t* source;            // frame_stride * frame_height bytes, overwritten in place
  uint8_t* destination;       // base of the frame
  int64_t destination_bytes;  // what the caller handed over: no byte at or behind this is written
  int64_t chroma_offset;      // I420: where U starts; V lies out_quarter_pixels behind it
};

// Qualities 0, 1, 2, 10, 11, 12, 15: the tile pipeline (tile/). Fills the picture and the statistics sums.
void run_tile_path(const frame_job& job);
// Qualities 3 and 13: cell by cell, without neighbourhoods (paths/).
void run_bulk_path(const frame_job& job);

}  // namespace ppl
