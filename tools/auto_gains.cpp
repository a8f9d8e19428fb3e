#include "auto_gains.h"

#include <algorithm>
#include <cmath>

#include "failure.h"
#include "options.h"

namespace tool {

void AutoGains::add_daylight(CLI::App& app) {
  app.add_option(
         "--daylight", daylight_,
         "Gains R,G,B that suit the sensor in daylight of 6500 K (each 32 to 2047, default those of --gains, "
         "else 397,256,346)")
      ->check(numbers_in_range(3, 32, 2047))
      ->type_name("R,G,B")
      ->group("Sensor");
}

void AutoGains::ask_for_white(CLI::App& app) {
  white_ = true;
  add_daylight(app);
}

void AutoGains::add_options(CLI::App& app) {
  app.add_flag("--auto-white-balance", white_,
               "Find the white balance in every frame. A recording follows the light slowly")
      ->group("Sensor");
  add_daylight(app);
  app.add_flag("--auto-exposure", exposure_,
               "Find the brightness in every frame and make up for what is missing by gain; likewise slowly")
      ->group("Sensor");
}

void AutoGains::start(const Controls& controls) {
  const Settings given = controls.given();
  const auto& black = given.values[control_index("optical_black_b_gb_gr_r")];
  const auto& gains = given.values[control_index("rgb_gain")];
  for (size_t i = 0; i < 4; ++i) black_[i] = black ? static_cast<uint32_t>((*black)[i]) : 0;
  Gains daylight{397, 256, 346};
  std::vector<int> numbers;
  if (!daylight_.empty() && parse_numbers(daylight_, numbers)) {
    for (size_t i = 0; i < 3; ++i) daylight[i] = static_cast<uint32_t>(numbers[i]);
  } else if (gains) {
    for (size_t i = 0; i < 3; ++i) daylight[i] = static_cast<uint32_t>((*gains)[i]);
    if (white_ && std::find(daylight.begin(), daylight.end(), 0u) != daylight.end())
      misuse("a balance can't be found by the gains of daylight where one of them is 0");
  }
  ppl_auto_daylight_curve(&curve_, daylight[0], daylight[1], daylight[2]);
  ppl_auto_start(&loop_, 1, 1, 256, 256);
  sample_ = std::make_unique<ppl_auto_sample>();
  // Until a frame shows a light.
  if (gains)
    for (size_t i = 0; i < 3; ++i) fixed_[i] = static_cast<uint32_t>((*gains)[i]);
  else if (white_)
    fixed_ = daylight;
}

Gains AutoGains::next(const Bytes& mosaic, uint32_t width, uint32_t height) {
  ppl_auto_take_frame(sample_.get(), mosaic.data(), width, height, width, black_[0], black_[1], black_[2],
                      black_[3]);
  ppl_auto_balance balance{};
  std::copy(fixed_.begin(), fixed_.end(), balance.gain);
  if (white_) {
    ppl_auto_balance found;
    if (ppl_auto_white(&curve_, sample_.get(), &found)) {
      ppl_auto_step_balance(&loop_, &found);
      spread_ = found.spread;
    }
    if (loop_.balanced) std::copy(std::begin(loop_.rgb_gain), std::end(loop_.rgb_gain), balance.gain);
  }
  if (!exposure_) return {balance.gain[0], balance.gain[1], balance.gain[2]};
  Gains bright;
  ppl_auto_brighten(&balance, sample_.get(), 0, bright.data());
  const double wanted = balance.gain[1] ? static_cast<double>(bright[1]) / balance.gain[1] : 1;
  // A quarter of the way in each frame, as logarithms.
  brightness_ = brightness_ > 0 && wanted > 0 ? brightness_ * std::pow(wanted / brightness_, 0.25) : wanted;
  for (size_t i = 0; i < 3; ++i)
    bright[i] = static_cast<uint32_t>(std::clamp(balance.gain[i] * brightness_ + 0.5, 0.0, 2047.0));
  return bright;
}

}  // namespace tool
