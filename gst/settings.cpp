#include "settings.h"

#include <gst/gst.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "quality_list.h"

namespace element {
namespace {

using tool::all_controls;
using tool::control_count;
using Kind = Property::Kind;

constexpr size_t place(size_t bytes) {
  return bytes / sizeof(int32_t);
}
#define AT(field) place(offsetof(Settings, field))

std::vector<Property> own_properties() {
  return {
      {"quality",
       "Reconstruction: " + tool::quality_names(),
       Kind::number,
       AT(quality),
       1,
       0,
       PPL_QUALITIES - 1,
       {PPL_QUALITY_DEFAULT},
       false},
      {"round",
       "Bring samples of more than 8 bits to the nearest of 8, instead of dropping bits",
       Kind::flag,
       AT(round),
       1,
       0,
       1,
       {1},
       false},
      {"auto-white-balance",
       "Find the gains from the frames; those that were set are not used",
       Kind::flag,
       AT(auto_white_balance),
       1,
       0,
       1,
       {0},
       false},
      {"auto-exposure",
       "Brighten dark frames by the gains, as far as nothing bright is cut",
       Kind::flag,
       AT(auto_exposure),
       1,
       0,
       1,
       {0},
       false},
      {"auto-interval",
       "Look at every so many frames for auto-white-balance and auto-exposure",
       Kind::number,
       AT(auto_interval),
       1,
       1,
       1000,
       {24},
       false},
      {"daylight-gains",
       "R,G,B: the gains that suit the sensor in daylight of 6500 K, for auto-white-balance",
       Kind::numbers,
       AT(daylight),
       3,
       32,
       2047,
       {397, 256, 346},
       false},
      {"statistics", "Post element messages ppl-statistics", Kind::flag, AT(statistics), 1, 0, 1, {0}, false},
      {"statistics-interval",
       "Milliseconds from message to message, 0 for every frame",
       Kind::number,
       AT(statistics_interval),
       1,
       0,
       3600000,
       {200},
       false},
      {"lens", "Correct lens shading", Kind::flag, AT(lens), 1, 0, 1, {0}, false},
      {"lens-origin",
       "Column and row of the optical centre in the picture; -1 for the middle",
       Kind::numbers,
       AT(lens_origin),
       2,
       -1,
       16384,
       {-1, -1},
       false},
  };
}

std::vector<Property> make_properties() {
  std::vector<Property> all = own_properties();
  for (size_t i = 0; i < std::size(tool::lens_numbers); ++i) {
    const tool::LensNumber& n = tool::lens_numbers[i];
    all.push_back(
        {n.option + 2, n.what, Kind::number, AT(lens_numbers) + i, 1, n.low, n.high, {n.standard}, false});
  }
  for (size_t i = 0; i < control_count; ++i) {
    const tool::Control& c = all_controls[i];
    const size_t at = AT(controls) + 9 * i;
    const std::vector<int32_t> standard(c.standard.begin(),
                                        c.standard.begin() + static_cast<ptrdiff_t>(c.count));
    const std::string names = c.property;
    if (c.kind == tool::Control::Kind::flag) {
      all.push_back({names, c.what, Kind::flag, at, 1, 0, 1, standard, false});
    } else if (c.count == 1) {
      all.push_back({names, c.what, Kind::number, at, 1, c.low, c.high, standard, false});
    } else if (names.find(',') == std::string::npos) {
      all.push_back(
          {names, std::string(c.what), Kind::numbers, at, c.count, c.low, c.high, standard, c.count == 2});
    } else {
      size_t from = 0;
      for (size_t n = 0; n < c.count; ++n) {
        const size_t to = std::min(names.find(',', from), names.size());
        const std::string name = names.substr(from, to - from);
        all.push_back({name,
                       "White balance: " + name + " in 1/256, in effect in steps of 8",
                       Kind::number,
                       at + n,
                       1,
                       c.low,
                       c.high,
                       {standard[n]},
                       false});
        from = to + 1;
      }
    }
    if (!strcmp(c.property, "black-levels"))
      all.push_back({"black-level", "Black level of all four sites, in sample steps", Kind::same_numbers, at,
                     4, c.low, c.high, standard, false});
  }
  for (Property& p : all)
    if (p.kind == Kind::numbers)
      p.what += " (" + std::to_string(p.count) + " numbers from " + std::to_string(p.low) + " to " +
                std::to_string(p.high) + ")";
  return all;
}

int32_t* numbers_of(Settings& s) {
  return &s.quality;
}
static_assert(offsetof(Settings, quality) == 0 && sizeof(Settings) % sizeof(int32_t) == 0);

}  // namespace

const std::vector<Property>& properties() {
  static const std::vector<Property> all = make_properties();
  return all;
}

size_t control_at(const char* key) {
  size_t i = 0;
  while (i + 1 < control_count && strcmp(all_controls[i].key, key) != 0) ++i;
  return i;
}

Settings standard_settings() {
  Settings s{};
  for (const Property& p : properties())
    for (size_t n = 0; n < p.count; ++n) numbers_of(s)[p.at + n] = p.standard[n];
  return s;
}

void install_properties(GObjectClass* type) {
  const auto common =
      static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_PLAYING);
  const auto simple = static_cast<GParamFlags>(common | GST_PARAM_CONTROLLABLE);
  guint id = 0;
  for (const Property& p : properties()) {
    const char *name = p.name.c_str(), *what = p.what.c_str();
    GParamSpec* spec = nullptr;
    if (p.kind == Kind::flag)
      spec = g_param_spec_boolean(name, name, what, p.standard[0] != 0, simple);
    else if (p.kind == Kind::numbers)
      spec = gst_param_spec_array(
          name, name, what,
          g_param_spec_int("number", "number", "number", G_MININT, G_MAXINT, p.standard[0], common),
          common);  // the range is set_property's, which can say what it is
    else
      spec = g_param_spec_int(name, name, what, p.low, p.high, p.standard[0], simple);
    g_object_class_install_property(type, ++id, spec);
  }
}

std::string set_property(Settings& s, const Property& p, const GValue* value) {
  int32_t* const to = numbers_of(s) + p.at;
  if (p.kind == Kind::flag) {
    *to = g_value_get_boolean(value);
  } else if (p.kind != Kind::numbers) {
    std::fill_n(to, p.count, g_value_get_int(value));
  } else {
    const std::string rule = p.name + " takes " + std::to_string(p.count) + " numbers from " +
                             std::to_string(p.low) + " to " + std::to_string(p.high);
    const guint given = gst_value_array_get_size(value);
    if (given != p.count) return rule + ", not " + std::to_string(given);
    int32_t taken[9];
    for (guint n = 0; n < given; ++n) {
      const GValue* one = gst_value_array_get_value(value, n);
      if (!G_VALUE_HOLDS_INT(one)) return rule + ", not a " + G_VALUE_TYPE_NAME(one);
      taken[n] = g_value_get_int(one);
      if (taken[n] < p.low || taken[n] > p.high) return rule + ", not " + std::to_string(taken[n]);
    }
    if (p.ordered && taken[0] > taken[1])
      return p.name + " takes the smallest number first, not " + std::to_string(taken[0]) + " before " +
             std::to_string(taken[1]);
    std::copy_n(taken, p.count, to);
  }
  return {};
}

void get_property(const Settings& settings, const Property& p, GValue* value) {
  Settings s = settings;
  const int32_t* const from = numbers_of(s) + p.at;
  if (p.kind == Kind::flag)
    g_value_set_boolean(value, *from);
  else if (p.kind == Kind::numbers)
    set_array(value, from, p.count);
  else
    g_value_set_int(value, *from);
}

void set_array(GValue* value, const int32_t* numbers, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    GValue one = G_VALUE_INIT;
    g_value_init(&one, G_TYPE_INT);
    g_value_set_int(&one, numbers[i]);
    gst_value_array_append_and_take_value(value, &one);
  }
}

}  // namespace element
