// What the element is told by its properties: one flat block of numbers, and the table that ties names to them.
#pragma once

#include <glib-object.h>

#include <cstdint>
#include <string>
#include <vector>

#include "control_table.h"

namespace element {

struct Settings {
  int32_t quality;
  int32_t round;  // samples of more than 8 bits to the nearest, not down
  int32_t auto_white_balance, auto_exposure, auto_interval;
  int32_t daylight[3];
  int32_t statistics, statistics_interval;
  int32_t lens, lens_numbers[4], lens_origin[2];
  int32_t controls[tool::control_count][9];  // by tool::all_controls
};

struct Property {
  enum class Kind { flag, number, numbers, same_numbers };  // same_numbers: one for all of `count`
  std::string name, what;
  Kind kind;
  size_t at, count;  // in numbers from the start of Settings
  int32_t low, high;
  std::vector<int32_t> standard;
  bool ordered;  // a pair of a smallest and a largest number
};

// In the order of the properties' ids, which begin at 1.
const std::vector<Property>& properties();
// The place of a control by its key in tool::all_controls.
size_t control_at(const char* key);

Settings standard_settings();
void install_properties(GObjectClass*);
// What is wrong with the value; empty if it was taken.
std::string set_property(Settings&, const Property&, const GValue*);
void get_property(const Settings&, const Property&, GValue*);
// Numbers as an array value.
void set_array(GValue*, const int32_t*, size_t count);

}  // namespace element
