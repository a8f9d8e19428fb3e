// Files in and out. "-" is standard input or standard output.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "bytes.h"

namespace tool {

// A file that is read piece by piece.
class InputFile {
 public:
  explicit InputFile(const std::string& path);
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  // Fills the bytes as far as the file goes; how many it filled.
  size_t read(std::span<uint8_t> bytes);
  // Moves on by so many bytes, in a pipe by reading them; how many the file had.
  uint64_t skip(uint64_t bytes);
  // The size of a regular file that stood at its beginning; nothing for a pipe or a device.
  std::optional<uint64_t> size() const { return size_; }

 private:
  std::string path_;
  std::optional<uint64_t> size_;
  int file_;
};

// The size of a regular file, standard input too; nothing for a pipe or a device, which is not opened. Throws if there
// is none, or none that may be read.
std::optional<uint64_t> readable_size(const std::string& path);

// Whether the name is that of a pipe, a terminal or another device.
bool is_device(const std::string& path);

// Throws if the two names lead to the same file: an output must never replace an input.
void refuse_same_file(const std::string& input, const std::string& output);

// An output that appears whole or not at all: bytes go to a temporary file beside the target, commit() puts it
// in the target's place. Without commit(), or when a signal ends the program, the temporary file is removed and
// a file that was there before stays as it was. Devices, pipes and "-" are written directly.
class OutputFile {
 public:
  explicit OutputFile(const std::string& path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  void write(std::span<const uint8_t> bytes);
  void write(const std::string& bytes);
  void commit();

 private:
  std::string shown_, target_, temporary_;
  int file_ = -1;
};

void write_file(const std::string& path, std::span<const uint8_t> bytes);

}  // namespace tool
