// The frames of one or several files, one after the other.
#pragma once

#include <memory>
#include <optional>
#include <span>

#include "file.h"
#include "frame_file.h"

namespace tool {

class FrameStream {
 public:
  // Looks at the files as far as their sizes can be known, and throws where one does not hold what it must. With
  // `go_on` a bad file is told and passed over instead.
  FrameStream(const FrameFile&, Format, bool go_on = false);

  size_t frame_size() const { return row_ * rows_; }
  // How many frames there are; nothing where a pipe is among the files.
  std::optional<uint64_t> frames() const { return frames_; }
  // The next frame, its rows back to back; false behind the last one.
  bool next(std::span<uint8_t> frame);

 private:
  uint64_t period() const { return uint64_t{step_} * rows_; }
  uint64_t whole() const { return uint64_t{step_} * (rows_ - 1) + row_; }
  std::optional<uint64_t> look_at(const std::string& path, std::optional<uint64_t> size) const;
  void start(const std::string& path);
  bool read_frame(std::span<uint8_t> frame);
  void look_behind();
  [[noreturn]] void too_short(const std::string& path, uint64_t held) const;
  [[noreturn]] void no_whole_number(const std::string& path, uint64_t held) const;

  const FrameFile& where_;
  Format format_;
  bool go_on_;
  size_t row_, step_, rows_;  // bytes of a row, from row to row; number of rows
  std::optional<uint64_t> frames_ = 0;
  size_t file_number_ = 0;
  std::unique_ptr<InputFile> file_;
  std::string path_;
  uint64_t left_ = 0, read_ = 0;  // frames of the file: still to come where that is known, and read
  bool counted_ = false;
};

}  // namespace tool
