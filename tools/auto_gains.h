// White balance and brightness found in the frames themselves.
#pragma once

#include <ppl_auto.h>

#include <CLI/CLI.hpp>
#include <array>
#include <memory>
#include <string>

#include "bytes.h"
#include "controls.h"

namespace tool {

using Gains = std::array<uint32_t, 3>;

class AutoGains {
 public:
  void add_options(CLI::App&);
  // For a command whose only work it is to find the white balance.
  void ask_for_white(CLI::App&);
  bool wanted() const { return white_ || exposure_; }
  // Whether a light was found in any frame.
  bool found() const { return loop_.balanced != 0; }
  bool unsure() const { return spread_ > 1000; }
  // Before the first frame: black level and gains of the controls.
  void start(const Controls&);
  // The gains for the next frame of a recording: its own, following slowly where there were frames before it.
  Gains next(const Bytes& mosaic, uint32_t width, uint32_t height);

 private:
  void add_daylight(CLI::App&);

  bool white_ = false, exposure_ = false;
  std::string daylight_;
  uint32_t spread_ = 0;
  std::array<uint32_t, 4> black_{};
  Gains fixed_{256, 256, 256};
  ppl_auto_curve curve_{};
  ppl_auto_loop loop_{};
  double brightness_ = 0;  // times the balance; 0 before the first frame
  std::unique_ptr<ppl_auto_sample> sample_;
};

}  // namespace tool
