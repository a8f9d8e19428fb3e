// The image controls as options of the command line, and their way into a context.
#pragma once

#include <ppl.h>

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bytes.h"

namespace tool {

class Controls {
 public:
  // Adds an option for every control. The options' ranges are those of the library's setters.
  void add_options(CLI::App&);

  // Sets what was given on the command line, in a context that stands at the defaults. The table is filled if the lens
  // is corrected and must outlive the context's frames; width and height are those of the Bayer frame.
  void apply(ppl_context*, uint32_t width, uint32_t height, Words& lens_table) const;

  // The contrast in force; the library has no way to ask it.
  int contrast() const { return *contrast_; }

  // A note for each option given that no picture of this quality depends on.
  void note_idle(uint32_t quality) const;

  // The first control option that was given, mirrors left out; empty if there is none.
  std::string first_given() const;

  bool h_mirror = false, v_mirror = false;
  bool medium_filter = false;

 private:
  struct Given {
    CLI::Option* option;
    std::function<bool(ppl_context*)> set;
  };
  void number(CLI::App&, const std::string& names, const std::string& what, int low, int high, int standard,
              uint8_t (*set)(ppl_context*, int), std::shared_ptr<int> value = {});
  void numbers(CLI::App&, const std::string& names, const std::string& what, size_t count, int low, int high,
               const std::string& standard, uint8_t (*set)(ppl_context*, const int*));
  void flag(CLI::App&, const std::string& names, const std::string& what, uint8_t (*set)(ppl_context*));
  bool set_lens(ppl_context*, uint32_t width, uint32_t height, Words& table) const;

  std::vector<Given> given_;
  std::vector<CLI::Option*> lens_options_, idle_;
  int f1_ = 16, f1_shift_ = 24, f2_ = 16, f2_shift_ = 44;
  bool lens_ = false;
  std::vector<int> origin_;
  std::shared_ptr<int> contrast_ = std::make_shared<int>(0);
};

}  // namespace tool
