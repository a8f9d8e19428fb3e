// Frames that are no mosaics: packed YUV to I420 through the library, everything else through a picture.
#pragma once

#include "formats.h"
#include "instance.h"

namespace tool {

class FinishedFrames {
 public:
  // Throws if there is no way from the one format to the other, or none for frames of this size.
  FinishedFrames(Format in, Format out, Size, Chroma, bool h_mirror, bool v_mirror);
  // The frame in the other format: bytes of a frame, or an encoded picture.
  std::span<const uint8_t> convert(Bytes& source);

 private:
  void to_i420(const Bytes& source);

  Format in_, out_;
  Size size_;
  Chroma chroma_;
  bool h_mirror_, v_mirror_;
  Instance instance_;
  Bytes made_;
};

}  // namespace tool
