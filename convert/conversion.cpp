#include "convert/conversion.h"

#include "record/output_plan.h"

namespace ppl {

namespace {

// Null, for calls with fewer than three sources.
bool aligned(const conversion_call& call, uintptr_t to) {
  return ppl::aligned(to, call.output, call.source[0], call.source[1], call.source[2]);
}

// Sizes are those of the call, not tested yet, and products wrap in 32 bits. There is no picture unless every buffer
// that it needs is there.
void last_resort_picture(const conversion& conv, const ppl_context* c, const conversion_call& call) {
  const row_kernels& k = *c->kernels->rows;
  const uint32_t pixels = call.out_width * call.out_height;
  const uint8_t* const picture = call.source[call.sources == 1 ? kFrame : kKept];
  const uint8_t* const other = conv.to == out_format::i420 ? picture : call.source[kLater];
  if (call.output == nullptr || (!is_rgb(conv.to) && (picture == nullptr || other == nullptr))) return;
  switch (conv.to) {
    case out_format::rgb24:
      k.fill(call.output, pixels * 3, 255, 255);
      break;
    case out_format::rgb32:
      k.fill(call.output, pixels * 4, 255, 255);
      break;
    case out_format::i420:
      k.copy(call.output, picture, pixels, false);
      k.fill(call.output + pixels, pixels / 2, 128, 128);
      break;
    case out_format::yuyv:
    case out_format::uyvy:
      k.copy(call.output, picture, pixels, false);
      k.copy(call.output + pixels, other, pixels, false);
      break;
  }
}

// Null addresses pass the tests of alignment; a picture needs what it reads and where it goes. Without tiles or row
// pairs there is nothing to read: fields still get their black lines.
bool has_what_it_needs(const conversion& conv, const ppl_context* c, const conversion_call& call) {
  if (call.output == nullptr) return false;
  if (c->tiles_per_row < 1 || c->row_pairs < 1) return true;
  if (call.sources == 1) return call.source[kFrame] != nullptr;
  if (c->decimation > 0) return call.source[kKept] != nullptr || c->row_pairs < c->decimation;
  const bool compares = conv.how == method::motion && c->row_pairs > 1;  // the last row pair is woven
  return call.source[kKept] != nullptr && call.source[kLater] != nullptr &&
         (!compares || call.source[kEarlier] != nullptr);
}

}  // namespace

bool run_wrapper(const conversion& conv, ppl_context* c, const conversion_call& call) {
  if (aligned(call, 8)) return run_process(conv, c, call);
  last_resort_picture(conv, c, call);
  return false;
}

bool run_process(const conversion& conv, ppl_context* c, const conversion_call& call) {
  if (call.out_width != static_cast<uint32_t>(c->out_width) ||
      call.out_height != static_cast<uint32_t>(c->out_height) ||
      call.in_width != static_cast<uint32_t>(c->frame_width) ||
      call.in_height != static_cast<uint32_t>(c->frame_height)) {
    if (!ppl_new_frame_sizes(c, call.in_width, call.in_height, call.out_width, call.out_height, 1))
      return false;
  }
  if (!aligned(call, 16) || c->P3_only) return true;
  // The caller has room for what it asked for, or for the picture of the context where that is larger.
  const int64_t asked = frame_bytes(conv.to, call.out_width, call.out_height);
  const int64_t own = output_bytes(c, conv.to);
  const conversion_job job = {conv, c, call, {call.output, asked > own ? asked : own, nullptr}};
  switch (job.out.bytes > 0 && has_what_it_needs(conv, c, call) ? conv.how : method::count_only) {
    case method::progressive:
      convert_progressive(job);
      break;
    case method::twelve_bit:
      convert_twelve_bit(job);
      break;
    case method::weave:
    case method::motion:
      convert_interlaced(job);
      break;
    case method::count_only:
      break;
  }
  c->n_frame++;
  return conv.to != out_format::rgb32;
}

}  // namespace ppl
