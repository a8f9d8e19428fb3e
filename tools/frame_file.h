// Where a frame stands in a headerless file.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "bytes.h"
#include "formats.h"

namespace tool {

struct FrameFile {
  std::string path;
  uint32_t width = 0, height = 0,
           stride = 0;  // stride: bytes from row to row in the file; 0: rows back to back
  uint32_t frame = 0;
  uint64_t skip = 0;

  void add_options(CLI::App&, const std::string& what);
  // Exactly one frame of the format, its rows back to back. Reads no more of the file than it must.
  Bytes read(Format) const;

 private:
  struct Extent {
    size_t row, step, rows;  // bytes of a row, from row to row; number of rows
    uint64_t period() const { return uint64_t{step} * rows; }
    uint64_t whole() const { return uint64_t{step} * (rows - 1) + row; }
  };
  Extent extent(Format) const;
  bool place_given() const;
  [[noreturn]] void too_short(Format, uint64_t held) const;
  void require_frame(Format, const Extent&, uint64_t held) const;
  [[noreturn]] void no_whole_number(Format, uint64_t held) const;

  CLI::Option *stride_option_ = nullptr, *frame_option_ = nullptr, *skip_option_ = nullptr;
};

}  // namespace tool
