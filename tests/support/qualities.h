// The qualities by road, ascending, as the public table has them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "helpers/ppl_qualities.h"

namespace support {

template <ppl_road... roads>
constexpr bool takes(uint32_t quality) {
  return ((ppl_quality_table[quality].road == roads) || ...);
}
template <ppl_road... roads>
constexpr size_t count_on() {
  size_t n = 0;
  for (uint32_t q = 0; q < PPL_QUALITIES; ++q) n += takes<roads...>(q);
  return n;
}
template <ppl_road... roads>
struct qualities_on {
  constexpr qualities_on() {
    size_t n = 0;
    for (uint32_t q = 0; q < PPL_QUALITIES; ++q)
      if (takes<roads...>(q)) number[n++] = q;
  }
  constexpr const uint32_t* begin() const { return number; }
  constexpr const uint32_t* end() const { return number + count_on<roads...>(); }
  uint32_t number[count_on<roads...>()] = {};
};

// Those that correct samples; and these with the raw ones: all that make a picture.
inline constexpr qualities_on<PPL_ROAD_CELLS, PPL_ROAD_WALK> kFinished;
inline constexpr qualities_on<PPL_ROAD_RAW, PPL_ROAD_CELLS, PPL_ROAD_WALK> kPictured;
inline constexpr qualities_on<PPL_ROAD_COUNTED> kCounted;

}  // namespace support
