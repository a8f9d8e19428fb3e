#include "controls.h"

#include <algorithm>
#include <cstring>

#include "failure.h"
#include "options.h"
#include "quality_list.h"
#include "settings.h"

namespace tool {
namespace {

// The place of a control in the table, while compiling: a name that is not there does not compile.
constexpr size_t place(const char* key) {
  for (size_t i = 0; i < control_count; ++i) {
    const char *a = all_controls[i].key, *b = key;
    while (*a && *a == *b) ++a, ++b;
    if (*a == *b) return i;
  }
  throw "no such control";
}

std::string list_of(const Control& control) {
  std::string list;
  for (size_t i = 0; i < control.count; ++i) list += text(i ? "," : "", control.standard[i]);
  return list;
}

}  // namespace

size_t control_index(const std::string& key) {
  const auto found = std::find_if(std::begin(all_controls), std::end(all_controls),
                                  [&](const Control& c) { return c.key == key; });
  return static_cast<size_t>(found - std::begin(all_controls));
}

void Controls::add_control(CLI::App& app, size_t index) {
  const Control& c = all_controls[index];
  std::optional<Settings::Values>& target = from_options_.values[index];
  CLI::Option*& option = options_[index];
  if (c.kind == Control::Kind::flag) {
    option = app.add_flag_callback(
        c.option, [&target] { target = Settings::Values{1}; }, c.what);
  } else if (c.kind == Control::Kind::number) {
    option = app.add_option_function<int>(
                    c.option, [&target](const int& v) { target = Settings::Values{v}; },
                    text(c.what, " (", c.low, " to ", c.high, ", default ", c.standard[0], ")"))
                 ->check(in_range(c.low, c.high))
                 ->type_name(c.values);
  } else {
    option = app.add_option_function<std::string>(
                    c.option,
                    [&target](const std::string& list) {
                      std::vector<int> found;
                      parse_numbers(list, found);
                      target = Settings::Values{};
                      std::copy(found.begin(), found.end(), target->begin());
                    },
                    text(c.what, " (each ", c.low, " to ", c.high, ", default ", list_of(c), ")"))
                 ->check(numbers_in_range(c.count, c.low, c.high))
                 ->type_name(c.values);
  }
  option->group(c.group);
}

void Controls::add_lens(CLI::App& app) {
  lens_options_.push_back(
      app.add_flag("--lens", lens_asked_, "Correct lens shading; given by any of the options below as well"));
  for (size_t i = 0; i < lens_.numbers.size(); ++i) {
    const LensNumber& n = lens_numbers[i];
    lens_options_.push_back(
        app.add_option(n.option, lens_.numbers[i],
                       text(n.what, " (", n.low, " to ", n.high, ", default ", n.standard, ")"))
            ->check(in_range(n.low, n.high))
            ->type_name("N"));
  }
  lens_options_.push_back(
      app.add_option_function<std::string>(
             "--lens-origin",
             [this](const std::string& list) {
               std::vector<int> found;
               parse_numbers(list, found);
               lens_.origin = {found[0], found[1]};
             },
             "Optical centre in samples (each 0 to 16384, default the middle of the frame)")
          ->check(numbers_in_range(2, 0, 16384))
          ->type_name("X,Y"));
  for (CLI::Option* option : lens_options_) option->group("Lens correction");
}

void Controls::add_options(CLI::App& app) {
  settings_option_ =
      app.add_option_function<std::string>(
             "--settings", [this](const std::string& path) { from_file_ = read_settings(path); },
             "JSON file of controls; options given beside it count more")
          ->type_name("FILE");
  constexpr size_t black = place("optical_black_b_gb_gr_r");
  for (size_t i = 0; i < control_count; ++i) {
    if (i == black)
      black_option_ = app.add_option_function<int>(
                             "--black",
                             [this](const int& v) {
                               from_options_.values[place("optical_black_b_gb_gr_r")] = {v, v, v, v};
                             },
                             "Black level of all four sites, in sample steps (0 to 255, default 0)")
                          ->check(in_range(0, 255))
                          ->type_name("N")
                          ->group(all_controls[black].group);
    add_control(app, i);
  }
  add_lens(app);
}

Settings Controls::given() const {
  Settings all = from_file_;
  for (size_t i = 0; i < control_count; ++i)
    if (from_options_.values[i]) all.values[i] = from_options_.values[i];
  // Lens options change single numbers of the lens in the file.
  Settings::Lens lens = all.lens.value_or(Settings::Lens{});
  bool any = false;
  for (size_t i = 0; i < lens_options_.size(); ++i) {
    if (!lens_options_[i]->count()) continue;
    any = true;
    if (i >= 1 && i <= lens.numbers.size()) lens.numbers[i - 1] = lens_.numbers[i - 1];
    if (i > lens.numbers.size()) lens.origin = lens_.origin;
  }
  if (any) all.lens = lens;
  return all;
}

void Controls::take_quality(const CLI::Option* option, uint32_t& quality) const {
  if (!option->count() && from_file_.quality) quality = *from_file_.quality;
}

bool Controls::flag(const char* key) const {
  const size_t i = control_index(key);
  const auto& value = from_options_.values[i] ? from_options_.values[i] : from_file_.values[i];
  return value && (*value)[0];
}

int Controls::contrast() const {
  const Settings all = given();
  const auto& value = all.values[place("contrast_c")];
  return value ? (*value)[0] : 0;
}

void apply_settings(const Settings& settings, ppl_context* context) {
  for (size_t i = 0; i < control_count; ++i)
    if (settings.values[i] && !all_controls[i].set(context, settings.values[i]->data()))
      misuse(
          all_controls[i].option,
          ": the library refuses this value; of a range MIN,MAX the minimum must not be above the maximum");
}

void apply_lens(const Settings::Lens& lens, ppl_context* context, uint32_t width, uint32_t height,
                const Part& part, Words& table) {
  const auto whole = [](uint32_t n) { return static_cast<int>(n); };
  const int x = (lens.origin ? (*lens.origin)[0] : whole(width / 2)) - whole(part.x);
  const int y = (lens.origin ? (*lens.origin)[1] : whole(height / 2)) - whole(part.y);
  table.resize(size_t{part.width} * static_cast<size_t>(std::max(y, whole(part.height) - y) + 1));
  if (!ppl_set_lens_correction(context, whole(part.width), whole(part.height), x, y, table.data(),
                               static_cast<int32_t>(table.size() * sizeof table[0]), lens.numbers[0],
                               lens.numbers[1], lens.numbers[2], lens.numbers[3]))
    misuse("--lens: the library refuses these coefficients");
  ppl_enable_lens_correction(context);
}

void Controls::note_idle(uint32_t quality) const {
  if (medium_filter() && !ppl_quality_table[quality].reads_medium_filter)
    note(text("--medium-filter does nothing in quality ", quality, "; it acts in ",
              quality_list([](const ppl_quality_row& q) { return q.reads_medium_filter != 0; })));
  for (const size_t i : {place("noise_filter_G_12T_threshold"), place("noise_filter_R_8T_threshold"),
                         place("noise_filter_B_8T_threshold")})
    if (options_[i]->count())
      note(text(all_controls[i].option,
                " does nothing: the library keeps the number, and no picture depends on it"));
}

std::string Controls::first_given() const {
  if (settings_option_->count()) return settings_option_->get_name();
  if (black_option_->count()) return black_option_->get_name();
  for (size_t i = 0; i < control_count; ++i)
    if (options_[i]->count() && i != place("h_mirror") && i != place("v_mirror"))
      return options_[i]->get_name();
  for (const CLI::Option* option : lens_options_)
    if (option->count()) return option->get_name();
  return {};
}

}  // namespace tool
