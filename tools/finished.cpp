#include "finished.h"

#include "failure.h"

namespace tool {
namespace {

bool is_packed(Format format) {
  return format == Format::yuyv || format == Format::uyvy;
}

bool is_i420(Format format) {
  return format == Format::i420 || format == Format::y4m;
}

}  // namespace

FinishedFrames::FinishedFrames(Format in, Format out, Size size, Chroma chroma, bool h_mirror, bool v_mirror)
    : in_(in), out_(out), size_(size), chroma_(chroma), h_mirror_(h_mirror), v_mirror_(v_mirror) {
  const std::string kind = name(in);
  if (size.height % 2 || size.width > 2032 || size.height > 2048 || size.width % 16)
    misuse("a ", kind, " frame of ", size.width, " x ", size.height,
           " won't do: widths are multiples of 16 up to 2032, heights even, up to 2048");
  if (out == Format::y4m && chroma == Chroma::camera)
    misuse("y4m can't say what the camera's chroma means; make it from the Bayer frame");
  if (in == Format::i420 && out == Format::y4m && (h_mirror || v_mirror))
    misuse("y4m from i420 is a copy: it has no mirrors");
  const bool made = is_picture(out) || out == Format::rgb24 || out == Format::rgb32 ||
                    (is_packed(in) && is_i420(out)) || (in == Format::i420 && out == Format::y4m);
  if (!made)
    misuse("no way from ", kind, " to ", name(out), "; ",
           is_packed(in) ? "i420, y4m, rgb24, rgb32, png and ppm can be made"
                         : "rgb24, rgb32, png and ppm can be made");
}

void FinishedFrames::to_i420(const Bytes& source) {
  ppl_context* c = instance_.get();
  const uint32_t w = size_.width, h = size_.height;
  ppl_set_h_mirror(c, h_mirror_);
  ppl_set_v_mirror(c, v_mirror_);
  ppl_new_frame_sizes(c, w, h, w, h, 0);
  made_.resize(frame_bytes(Format::i420, w, h));
  const auto call = in_ == Format::yuyv ? ppl_process_yuyvtoi420 : ppl_process_uyvytoi420;
  if (!call(c, source.data(), made_.data(), w, h, w, h))
    fail("the library refuses a ", w, " x ", h, " frame");
}

std::span<const uint8_t> FinishedFrames::convert(Bytes& source) {
  if (is_packed(in_) && is_i420(out_)) {
    to_i420(source);
    return made_;
  }
  if (in_ == Format::i420 && out_ == Format::y4m) return source;
  Picture picture = picture_of(in_, source, size_.width, size_.height, chroma_);
  if (h_mirror_) mirror_columns(picture);
  if (v_mirror_) mirror_rows(picture);
  made_ = encode(out_, picture);
  return made_;
}

}  // namespace tool
