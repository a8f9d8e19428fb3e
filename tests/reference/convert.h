// The 36 conversions of packed and interlaced 4:2:2 frames, plainly: whole pictures made of whole rows, one
// sample at a time, then stored row by row.
#pragma once

#include <cstdint>
#include <vector>

#include "reference/convert_geometry.h"
#include "reference/convert_rows.h"
#include "reference/finished.h"

namespace ref {

using target = format;
enum class work {
  progressive,  // one packed frame
  twelve_bit,   // one frame of 12 bits a pixel
  nothing,      // checks and counts only, false
  fields,       // two fields and the earlier one
  counts,       // takes fields, counts the frame only
};

struct conversion {
  const char* name;
  work kind;
  packing source;
  target output;
  bool motion;   // fields: tests for motion; false weaves
  bool wrapper;  // tests for multiples of 8 and has a fall-back picture

  bool takes_fields() const { return kind == work::fields || kind == work::counts; }
};

// Every exported conversion once.
extern const std::vector<conversion> kConversions;
const conversion* find_conversion(const char* name);

// Pointers are tested for alignment, which null passes. One-frame conversions take their input as `kept`.
struct convert_call {
  const uint8_t *earlier, *kept, *later;
  uintptr_t output;  // address of the destination; its bytes are in the picture
  uint32_t in_width, in_height, out_width, out_height;
};

// The destination as an observer sees it. A store outside `room` bytes is dropped.
struct picture {
  std::vector<uint8_t> bytes;
  std::vector<bool> stored;  // as large as bytes
  int64_t room = 0;

  explicit picture(std::vector<uint8_t> before) : bytes(std::move(before)), stored(bytes.size()) {}
  void store(int64_t at, uint8_t value);
};

enum class promise {
  exact,           // every byte
  nothing_inside,  // the bytes of `room` are left open, all others keep their value
};

struct converted {
  bool result;
  promise content;
};

// How far a call comes, the state it leaves, and the bytes that its caller hands over as destination: the larger of
// the arguments' and the state's frame, or the fall-back picture; 0 where nothing may be written.
enum class reach { fall_back, refused, idle, runs };
struct foresight {
  reach reached;
  convert_state after;
  int64_t room;
};
foresight foresee(const convert_state& s, const conversion& c, const convert_call& call);

// One call: the state as it is afterwards, the destination, the answer. out.bytes must hold the foreseen room. A call
// that would read or write a null buffer leaves the picture alone and is counted like any other.
converted convert(convert_state& s, const conversion& c, const convert_call& call, picture& out);

}  // namespace ref
