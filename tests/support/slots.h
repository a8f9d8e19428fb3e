// The library and the plain reference behind one face, so that a test can do the same thing to both.
//
// Every control has the name of the exported function without its prefix. A library slot calls exported functions
// only; a reference slot is the plain record itself.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "reference/frame.h"
#include "reference/state.h"
#include "support/library_slot.h"

namespace slots {

struct reference_slot : ref::state {
  bool process_frame(format kind, uint8_t* source, uint8_t* destination, uint32_t width, uint32_t height,
                     uint32_t stride) {
    return ref::process_frame(*this, kind, source, destination, width, height, stride);
  }
  bool wrapper(format kind, ending name, uint8_t* source, uint8_t* destination, uint32_t width,
               uint32_t height) {
    return ref::wrapper(*this, kind, name, source, destination, width, height);
  }
  bool scaling_wrapper(format kind, uint8_t* source, uint32_t width, uint32_t height, uint32_t stride,
                       uint8_t* destination, uint32_t new_width, uint32_t new_height, uint8_t* scratch) {
    return ref::scaling_wrapper(*this, kind, source, width, height, stride, destination, new_width,
                                new_height, scratch);
  }
};

// A named run of words: a getter's answer, a table, a group of statistics.
struct figure {
  const char* name;
  std::vector<uint32_t> words;
  bool operator==(const figure&) const = default;
};

// The statistics in the order of the digests of tests/digests.
std::vector<figure> statistics(const reference_slot& slot);
std::vector<figure> statistics(const library_slot& slot);

// Everything else that can be read back: controls, tables, geometry, the frame count, all centre-weighted means.
std::vector<figure> read_back(const reference_slot& slot);
std::vector<figure> read_back(const library_slot& slot);

}  // namespace slots
