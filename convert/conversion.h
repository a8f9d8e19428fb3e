// A conversion of decoder frames: what it is told, what it is called with, and the steps all of them share.
#pragma once

#include <stdint.h>

#include "convert/row_sink.h"

namespace ppl {

enum class method : uint8_t {
  progressive,  // whole frames, row by row
  twelve_bit,   // whole frames of the 12-bit packed layout
  weave,        // two fields, unchanged
  motion,       // two fields, chroma of the later one tested against the earlier one
  count_only,   // no picture
};

struct conversion {
  byte_order from;
  out_format to;
  method how;
};

// What a call hands over. Whole frames have one source, interlaced calls three: earlier, kept, later field.
struct conversion_call {
  const uint8_t* source[3];
  int sources;
  uint8_t* output;
  uint32_t in_width, in_height, out_width, out_height;
};
constexpr int kFrame = 0;  // whole frames
constexpr int kEarlier = 0, kKept = 1, kLater = 2;

// The ...MMX form: a last-resort picture and false if an address is no multiple of 8, else the process form.
bool run_wrapper(const conversion& conv, ppl_context* c, const conversion_call& call);
// The process form: sizes, alignment to 16, picture, frame count.
bool run_process(const conversion& conv, ppl_context* c, const conversion_call& call);

// A conversion about to write a picture: geometry is settled, addresses are aligned.
struct conversion_job {
  const conversion& conv;
  ppl_context* context;
  const conversion_call& call;
  destination out;
};
void convert_progressive(const conversion_job& job);
void convert_twelve_bit(const conversion_job& job);
void convert_interlaced(const conversion_job& job);

}  // namespace ppl
