// Settings as a JSON file, and as others write them.
#pragma once

#include <string>

#include "controls.h"

namespace tool {

// Throws with the file's name if it is no settings file: syntax, unknown names, numbers out of range.
Settings read_settings(const std::string& path);

std::string settings_as_json(const Settings&);
// As options of this tool, on one line.
std::string settings_as_options(const Settings&);
// As calls of the library.
std::string settings_as_c(const Settings&);
// As properties of the stream element, on one line.
std::string settings_as_element(const Settings&);

// As json, options, c or element.
std::string written(const Settings&, const std::string& as);

// Every control that is not given at its default.
Settings filled(Settings);

}  // namespace tool
