#include "convert/conversion.h"

namespace ppl {

namespace {

bool aligned(const conversion_call& call, uintptr_t to) {
  uintptr_t all = reinterpret_cast<uintptr_t>(call.output);
  for (int i = 0; i < call.sources; i++) all |= reinterpret_cast<uintptr_t>(call.source[i]);
  return all % to == 0;
}

// Sizes are those of the call, whatever they are, and products wrap in 32 bits: no sizes have been looked at. A null
// source has nothing to copy.
void last_resort_picture(const conversion& conv, const ppl_context* c, const conversion_call& call) {
  const convert_kernels& k = *c->kernels->convert;
  const uint32_t pixels = call.out_width * call.out_height;
  if (call.output == nullptr) return;
  const auto copy = [&](uint8_t* out, const uint8_t* in) {
    if (in != nullptr) k.copy(out, in, pixels);
  };
  const uint8_t* const picture = call.source[call.sources == 1 ? kFrame : kKept];
  switch (conv.to) {
    case out_format::rgb24:
      k.fill(call.output, pixels * 3, 255, 255);
      break;
    case out_format::rgb32:
      k.fill(call.output, pixels * 4, 255, 255);
      break;
    case out_format::i420:
      copy(call.output, picture);
      k.fill(call.output + pixels, pixels / 2, 128, 128);
      break;
    case out_format::yuyv:
    case out_format::uyvy:
      copy(call.output, picture);
      copy(call.output + pixels, call.source[kLater]);
      break;
  }
}

// Null addresses pass the tests of alignment; a picture needs what it reads and where it goes.
bool has_what_it_needs(const conversion& conv, const ppl_context* c, const conversion_call& call) {
  if (call.output == nullptr) return false;
  if (call.sources == 1) return call.source[kFrame] != nullptr;
  if (call.source[kKept] == nullptr) return false;
  if (c->decimation > 0) return true;  // pictures are shrunk from the kept field
  return call.source[kLater] != nullptr && (conv.how != method::motion || call.source[kEarlier] != nullptr);
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
  const int64_t asked = picture_bytes(conv.to, call.out_width, call.out_height);
  const int64_t own = picture_bytes(conv.to, c->out_width, c->out_height);
  const conversion_job job = {conv, c, call, asked > own ? asked : own};
  switch (job.bytes > 0 && has_what_it_needs(conv, c, call) ? conv.how : method::count_only) {
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
