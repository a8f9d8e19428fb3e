// Row storage of the frame in progress. Blocks pass rows on through rings: a ring holds as many consecutive rows as
// lie between the oldest that is still to be read and the newest.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "record/context.h"

namespace ppl {

enum ring_id : uint8_t {
  no_ring,
  median_ring,       // front-end output where the medium filter follows
  mosaic_ring,       // the mosaic that reconstruction reads
  green_ring,        // the same with a green value at every site
  luma_ring,         // Y, or plane 0 of three
  chroma_ring,       // chroma words, or plane 1 of three
  third_plane_ring,  // plane 2 of three
  luma_nf_ring,      // luma after the noise filter
  chroma_nf_ring,    // chroma words after it
  luma_out_ring,     // finished luma
  chroma_out_ring,   // finished chroma words
  kRings
};

// Row r lies at place r mod `rows`, at most 14 of them. The places are listed twice over, so that the pointers of
// consecutive rows are consecutive too, wherever they begin.
struct row_ring {
  uint8_t** places;
  uint32_t rows;
  uint32_t reciprocal;  // 65536 / rows, rounded up: exact quotients below 65536 / 13
  row_ring() = default;
  row_ring(uint8_t** list, uint8_t* base, int32_t pitch, uint32_t n)
      : places(list), rows(n), reciprocal(n > 0 ? (65536u + n - 1) / n : 0) {
    for (uint32_t i = 0; i < n; ++i) list[i] = list[i + n] = base + static_cast<ptrdiff_t>(i) * pitch;
  }
  // The pointers of rows r, r + 1 ..., up to `rows` of them; r >= -rows.
  uint8_t* const* from(int r) const {
    const uint32_t place = static_cast<uint32_t>(r) + rows;
    return places + (place - (place * reciprocal >> 16) * rows);
  }
};
// Room for two rows a step: rows of all rings of a frame in the record's ring_pool; those of the third plane in its
// scratch.
constexpr int kPoolRows = 27, kThirdPlaneRows = 3;
constexpr int kMostRows = 8;  // a step
// The widest row with the bytes on either side.
constexpr int kRowPitch = 2048 + 64;
static_assert(64 + kPoolRows * kRowPitch <= kRingPoolBytes);

// The record's scratch during a walk: rows at a fixed pitch, then two rows of lens factors, then the rings' lists of
// row pointers. What follows is free for the rooms above.
enum scratch_row : uint8_t {
  kBlackEven,
  kBlackOdd,
  kSumsU,
  kSumsV,
  kThirdPlane,
  kScratchRows = kThirdPlane + kThirdPlaneRows
};
constexpr int kLensScratch = 64 + kScratchRows * kRowPitch;
constexpr int kPlacesScratch = kLensScratch + 2 * 2 * 2048;
constexpr int kPlaces = 2 * (kPoolRows + kThirdPlaneRows + kRings * (kMostRows - 2));
constexpr int kWalkScratch = kPlacesScratch + kPlaces * static_cast<int>(sizeof(uint8_t*));  // bytes taken

}  // namespace ppl
