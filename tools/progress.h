// How far a recording has come: one line on the terminal that is drawn over and over. Nothing where standard error is
// no terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace tool {

class Progress {
 public:
  explicit Progress(std::optional<uint64_t> total);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  void step();

 private:
  using Clock = std::chrono::steady_clock;
  std::optional<uint64_t> total_;
  uint64_t done_ = 0;
  bool shown_;
  Clock::time_point start_ = Clock::now(), drawn_ = start_;
};

// The line after so many frames and seconds, for a terminal of so many columns.
std::string progress_line(uint64_t done, std::optional<uint64_t> total, double seconds, unsigned columns);

}  // namespace tool
