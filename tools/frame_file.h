// Where frames stand in headerless files.
#pragma once

#include <ppl_prepare.h>

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "bytes.h"
#include "formats.h"

namespace tool {

struct FrameFile {
  std::vector<std::string> paths;
  std::string pattern = "bggr", byte_order = "little";
  uint32_t bits = 8;
  bool packed = false;
  uint32_t width = 0, height = 0,
           stride = 0;  // stride: bytes from row to row in the file; 0: rows back to back
  uint32_t frame = 0;
  uint64_t skip = 0;
  bool all = false;

  void add_options(CLI::App&, const std::string& what);
  // The same for a command that takes several files, and all the frames in them.
  void add_recording_options(CLI::App&, const std::string& what);
  // Before anything else is asked: what was not given is guessed and said. Throws if there is nothing to guess from, or
  // the options contradict each other.
  void settle(Format);
  // A Bayer frame as next() of FrameStream gives it.
  ppl_sensor_frame sensor() const;

  // Whether more than the one frame is wanted.
  bool recording() const { return all || paths.size() > 1; }
  // Whoever names a stride or bytes to skip knows that the file is no plain sequence of such frames.
  bool place_given() const { return stride_option_->count() || skip_option_->count(); }
  bool frame_given() const { return frame_option_->count() > 0; }

  // Bytes from one row of a Bayer frame to the next in the file.
  size_t row_step() const;

  // Exactly one frame of the format, its rows back to back. Reads no more of the file than it must.
  Bytes read(Format) const;

 private:
  void add_place_options(CLI::App&);
  void guess();
  CLI::Option *width_option_ = nullptr, *height_option_ = nullptr, *bits_option_ = nullptr;
  CLI::Option *stride_option_ = nullptr, *frame_option_ = nullptr, *skip_option_ = nullptr;
};

}  // namespace tool
