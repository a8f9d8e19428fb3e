// What the frames of a headerless file may look like, by its size and its first bytes.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tool {

struct Shape {
  uint32_t width = 0, height = 0;
  unsigned bits = 8;
  bool packed = false;
  uint64_t bytes() const;  // of a frame, rows back to back
};

// "640 x 480 samples of 8 bits", and the options that say so.
std::string describe(const Shape&);
std::string options_of(const Shape&);

// What is known already; 0 and false are open. `words`: the bits that the file's first bytes look like, if they look
// like little-endian words; 8 if they do not.
struct Known {
  uint32_t width = 0, height = 0;
  unsigned bits = 0;
  bool packed = false;
  unsigned words = 8;
};

// Shapes of which the file holds exactly one frame, the likeliest first; if there are none, those of which it holds a
// whole number.
std::vector<Shape> guess_shapes(uint64_t bytes, const Known&);

// The bits of a sample, if the bytes look like little-endian words of more than 8 bits; otherwise 8.
unsigned bits_of_words(std::span<const uint8_t> bytes);

}  // namespace tool
