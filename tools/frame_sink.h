// Where finished frames go: one file, one stream of frames, or a numbered picture each.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "file.h"
#include "formats.h"

namespace tool {

class FrameSink {
 public:
  struct Target {
    std::string path;
    Format format = Format::i420;
    bool numbered = false;          // pictures: out.png becomes out-0000.png, out-0001.png and so on
    std::string head;               // what a y4m stream begins with
    std::vector<std::string> kept;  // files that must not be written over
  };
  explicit FrameSink(Target);
  // One frame, as it stands in the file: encoded, if it is a picture.
  void put(std::span<const uint8_t> frame);
  // Behind the last frame: a stream appears in its place.
  void commit();

 private:
  Target target_;
  std::unique_ptr<OutputFile> stream_;
  size_t number_ = 0;
};

// The first line of a y4m stream. `rate` is a fraction like 25/1 or 30000/1001; throws if it is none.
std::string y4m_head(Size, const std::string& rate, bool full_range, bool interlaced_source);

}  // namespace tool
