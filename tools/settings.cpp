#include "settings.h"

#include <ppl_qualities.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>

#include "failure.h"
#include "file.h"
#include "nearest.h"

namespace tool {
namespace {

using Json = nlohmann::ordered_json;
constexpr size_t largest_file = 1 << 20;

// The numbers of a control that the file gives, each in range.
class Reader {
 public:
  explicit Reader(const std::string& path) : path_(path) {}

  Settings read() {
    const Json file = parse();
    if (!file.is_object()) fail(path_, " holds no settings: it must be an object, { ... }");
    if (!file.contains("ppl_settings"))
      fail(path_, " holds no settings: \"ppl_settings\": 1 is missing in it");
    if (file["ppl_settings"] != 1)
      fail(path_, " holds settings of version ", file["ppl_settings"].dump(),
           "; this program reads version 1");
    Settings settings;
    for (const auto& [key, value] : file.items()) {
      if (key == "ppl_settings") continue;
      const size_t i = control_index(key);
      if (key == "quality")
        settings.quality = static_cast<uint32_t>(number(key, value, 0, PPL_QUALITIES - 1));
      else if (key == "lens_correction")
        settings.lens = lens(value);
      else if (i < control_count)
        settings.values[i] = values(all_controls[i], value);
      else
        unknown(key, known());
    }
    return settings;
  }

 private:
  Json parse() {
    InputFile in(path_);
    Bytes text(largest_file + 1);
    text.resize(in.read(text));
    if (text.size() > largest_file) fail(path_, " is no settings file: it has more than a megabyte");
    try {
      return Json::parse(text.begin(), text.end());
    } catch (const Json::parse_error& error) {
      const size_t at = std::min(error.byte ? error.byte - 1 : 0, text.size());
      const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<ptrdiff_t>(at), '\n');
      fail(path_, " is not JSON: something is wrong at or before line ", line);
    }
  }

  int32_t number(const std::string& key, const Json& value, int32_t low, int32_t high) {
    const bool whole =
        value.is_number_integer() && !(value.is_number_unsigned() && value.get<uint64_t>() > INT32_MAX);
    const int64_t n = whole ? value.get<int64_t>() : 0;
    if (!whole || n < low || n > high)
      fail(path_, ": ", key, " takes a whole number from ", low, " to ", high, ", not ", value.dump());
    return static_cast<int32_t>(n);
  }

  Settings::Values values(const Control& control, const Json& value) {
    Settings::Values found{};
    if (control.kind == Control::Kind::flag) {
      if (!value.is_boolean()) fail(path_, ": ", control.key, " is true or false, not ", value.dump());
      found[0] = value.get<bool>();
    } else if (control.kind == Control::Kind::number) {
      found[0] = number(control.key, value, control.low, control.high);
    } else {
      const auto fits = [&](const Json& one) {
        return one.is_number_integer() && one >= control.low && one <= control.high;
      };
      if (!value.is_array() || value.size() != control.count ||
          !std::all_of(value.begin(), value.end(), fits))
        fail(path_, ": ", control.key, " takes ", control.count, " whole numbers from ", control.low, " to ",
             control.high, " in brackets, not ", value.dump());
      for (size_t i = 0; i < control.count; ++i) found[i] = value[i].get<int32_t>();
    }
    return found;
  }

  Settings::Lens lens(const Json& value) {
    if (!value.is_object())
      fail(path_, ": lens_correction is an object like {\"f1\": 48, \"f1_rshift_count\": 24}, not ",
           value.dump());
    Settings::Lens lens;
    std::vector<std::string> names{"origin"};
    for (const LensNumber& n : lens_numbers) names.push_back(n.key);
    for (const auto& [key, one] : value.items()) {
      const auto found = std::find(names.begin(), names.end(), key) - names.begin();
      if (key == "origin") {
        if (!one.is_array() || one.size() != 2)
          fail(path_, ": origin takes column and row in brackets, not ", one.dump());
        lens.origin = {number(key, one[0], 0, 16384), number(key, one[1], 0, 16384)};
      } else if (static_cast<size_t>(found) < names.size()) {
        const LensNumber& n = lens_numbers[found - 1];
        lens.numbers[static_cast<size_t>(found - 1)] = number(key, one, n.low, n.high);
      } else {
        unknown(key, names);
      }
    }
    return lens;
  }

  static std::vector<std::string> known() {
    std::vector<std::string> names{"quality", "lens_correction"};
    for (const Control& control : all_controls) names.push_back(control.key);
    return names;
  }

  [[noreturn]] void unknown(const std::string& key, const std::vector<std::string>& names) {
    const std::string guess = nearest(key, names);
    fail(path_, ": there is no control ", key, guess.empty() ? "" : "; did you mean " + guess + "?");
  }

  const std::string& path_;
};

std::string joined(const Settings::Values& values, size_t count, const char* between) {
  std::string list;
  for (size_t i = 0; i < count; ++i) list += text(i ? between : "", values[i]);
  return list;
}

void add_word(std::string& line, const std::string& word) {
  line += (line.empty() ? "" : " ") + word;
}

}  // namespace

Settings read_settings(const std::string& path) {
  return Reader(path).read();
}

std::string written(const Settings& settings, const std::string& as) {
  return as == "json"      ? settings_as_json(settings)
         : as == "options" ? settings_as_options(settings)
         : as == "c"       ? settings_as_c(settings)
                           : settings_as_element(settings);
}

Settings filled(Settings settings) {
  if (!settings.quality) settings.quality = PPL_QUALITY_DEFAULT;
  for (size_t i = 0; i < control_count; ++i)
    if (!settings.values[i]) settings.values[i] = all_controls[i].standard;
  return settings;
}

std::string settings_as_json(const Settings& settings) {
  std::string lines = "{\n  \"ppl_settings\": 1";
  const auto add = [&](const std::string& key, const std::string& value) {
    lines += ",\n  \"" + key + "\": " + value;
  };
  if (settings.quality) add("quality", text(*settings.quality));
  for (size_t i = 0; i < control_count; ++i) {
    if (!settings.values[i]) continue;
    const Control& c = all_controls[i];
    const Settings::Values& v = *settings.values[i];
    add(c.key, c.kind == Control::Kind::flag     ? (v[0] ? "true" : "false")
               : c.kind == Control::Kind::number ? text(v[0])
                                                 : "[" + joined(v, c.count, ", ") + "]");
  }
  if (settings.lens) {
    std::string lens;
    for (size_t i = 0; i < settings.lens->numbers.size(); ++i)
      lens += text(i ? ", " : "", "\"", lens_numbers[i].key, "\": ", settings.lens->numbers[i]);
    if (settings.lens->origin)
      lens += text(", \"origin\": [", (*settings.lens->origin)[0], ", ", (*settings.lens->origin)[1], "]");
    add("lens_correction", "{" + lens + "}");
  }
  return lines + "\n}\n";
}

std::string settings_as_options(const Settings& settings) {
  std::string line;
  if (settings.quality) add_word(line, text("-q ", *settings.quality));
  for (size_t i = 0; i < control_count; ++i) {
    if (!settings.values[i]) continue;
    const Control& c = all_controls[i];
    const Settings::Values& v = *settings.values[i];
    if (c.kind != Control::Kind::flag)
      add_word(line, text(c.option, " ", joined(v, c.count, ",")));
    else if (v[0])
      add_word(line, c.option);
  }
  if (settings.lens) {
    for (size_t i = 0; i < settings.lens->numbers.size(); ++i)
      add_word(line, text(lens_numbers[i].option, " ", settings.lens->numbers[i]));
    if (settings.lens->origin)
      add_word(line, text("--lens-origin ", (*settings.lens->origin)[0], ",", (*settings.lens->origin)[1]));
  }
  return line + "\n";
}

std::string settings_as_c(const Settings& settings) {
  std::string lines;
  if (settings.quality) lines += text("ppl_set_quality(context, ", *settings.quality, ");\n");
  for (size_t i = 0; i < control_count; ++i) {
    if (!settings.values[i]) continue;
    const Control& c = all_controls[i];
    const Settings::Values& v = *settings.values[i];
    const std::string key = c.key, list = joined(v, c.count, ", ");
    if (key == "sensor_matrix")
      lines += text("static const int32_t sensor_matrix[9] = {", list,
                    "};\nppl_copy_sensor_matrix(context, sensor_matrix);\n");
    else if (key == "medium_filter" || key == "GbGr_correction")
      lines += text("ppl_", v[0] ? "enable_" : "disable_", key, "(context);\n");
    else
      lines += text("ppl_set_", key, "(context, ", list, key == "contrast_c" ? ", 0, 0" : "", ");\n");
  }
  if (settings.lens) {
    const auto& n = settings.lens->numbers;
    const auto& origin = settings.lens->origin;
    const std::string centre =
        origin ? text((*origin)[0], ", ", (*origin)[1]) : std::string("width / 2, height / 2");
    const std::string below = origin ? text((*origin)[1], " > height - ", (*origin)[1], " ? ", (*origin)[1],
                                            " : height - ", (*origin)[1])
                                     : std::string("height - height / 2");
    lines += text("/* lens_table: width * ((", below,
                  ") + 1) words of uint16_t that stay valid as long as the context is in use */\n"
                  "ppl_set_lens_correction(context, width, height, ",
                  centre, ", lens_table, lens_table_bytes, ", n[0], ", ", n[1], ", ", n[2], ", ", n[3],
                  ");\nppl_enable_lens_correction(context);\n");
  }
  return lines;
}

std::string settings_as_element(const Settings& settings) {
  std::string line;
  if (settings.quality) add_word(line, text("quality=", *settings.quality));
  for (size_t i = 0; i < control_count; ++i) {
    if (!settings.values[i]) continue;
    const Control& c = all_controls[i];
    const Settings::Values& v = *settings.values[i];
    const std::string property = c.property;
    if (c.kind == Control::Kind::flag) {
      add_word(line, property + (v[0] ? "=true" : "=false"));
    } else if (c.kind == Control::Kind::number) {
      add_word(line, text(property, "=", v[0]));
    } else if (property == "black-levels" && v[0] == v[1] && v[0] == v[2] && v[0] == v[3]) {
      add_word(line, text("black-level=", v[0]));
    } else if (property.find(',') != std::string::npos) {
      size_t from = 0;
      for (size_t n = 0; n < c.count; ++n) {
        const size_t to = std::min(property.find(',', from), property.size());
        add_word(line, text(property.substr(from, to - from), "=", v[n]));
        from = to + 1;
      }
    } else {
      add_word(line, text(property, "=\"<", joined(v, c.count, ","), ">\""));
    }
  }
  if (settings.lens) {
    add_word(line, "lens=true");
    for (size_t i = 0; i < settings.lens->numbers.size(); ++i)
      add_word(line, text(lens_numbers[i].option + 2, "=", settings.lens->numbers[i]));
    if (settings.lens->origin)
      add_word(line,
               text("lens-origin=\"<", (*settings.lens->origin)[0], ",", (*settings.lens->origin)[1], ">\""));
  }
  return line + "\n";
}

}  // namespace tool
