// The image controls of one command: from its options, from a settings file, and into a context.
#pragma once

#include <ppl.h>

#include <CLI/CLI.hpp>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "bytes.h"
#include "control_table.h"

namespace tool {

// What stands in a settings file; what it does not name keeps its default.
struct Settings {
  using Values = std::array<int32_t, 9>;
  struct Lens {
    std::array<int32_t, 4> numbers{lens_numbers[0].standard, lens_numbers[1].standard,
                                   lens_numbers[2].standard, lens_numbers[3].standard};
    std::optional<std::array<int32_t, 2>> origin;  // the middle of the frame
  };
  std::optional<uint32_t> quality;
  std::array<std::optional<Values>, control_count> values;  // by the place in the table of controls
  std::optional<Lens> lens;
};

class Controls {
 public:
  // Adds --settings and an option for every control. The options' ranges are those of the library's setters.
  void add_options(CLI::App&);

  // What was given: by an option, else by the settings file.
  Settings given() const;
  // The quality of the settings file, unless the option was given.
  void take_quality(const CLI::Option*, uint32_t& quality) const;

  bool h_mirror() const { return flag("h_mirror"); }
  bool v_mirror() const { return flag("v_mirror"); }
  bool medium_filter() const { return flag("medium_filter"); }
  // The contrast in force; the library has no way to ask it.
  int contrast() const;

  // A note for each option given that no picture of this quality depends on.
  void note_idle(uint32_t quality) const;
  // The first control option that was given, mirrors left out; empty if there is none.
  std::string first_given() const;

 private:
  void add_control(CLI::App&, size_t index);
  void add_lens(CLI::App&);
  bool flag(const char* key) const;

  std::array<CLI::Option*, control_count> options_{};
  std::vector<CLI::Option*> lens_options_;
  CLI::Option *black_option_ = nullptr, *settings_option_ = nullptr;
  Settings from_options_, from_file_;
  Settings::Lens lens_;
  bool lens_asked_ = false;
};

// The place of a control in the table by its key.
size_t control_index(const std::string& key);

// Sets values that were given, the lens apart; throws with the control's name if the library refuses one.
void apply_settings(const Settings&, ppl_context*);

// A rectangle of a frame: where the library's frame lies in that of the sensor.
struct Part {
  uint32_t x = 0, y = 0, width = 0, height = 0;
};
// Fills the table for a part of a frame whose size the lens's own middle goes by, and turns the correction on.
void apply_lens(const Settings::Lens&, ppl_context*, uint32_t width, uint32_t height, const Part&,
                Words& table);

}  // namespace tool
