#include "controls.h"

#include <algorithm>
#include <memory>

#include "failure.h"
#include "options.h"

namespace tool {

void Controls::number(CLI::App& app, const std::string& names, const std::string& what, int low, int high,
                      int standard, uint8_t (*set)(ppl_context*, int), std::shared_ptr<int> value) {
  if (!value) value = std::make_shared<int>(standard);
  CLI::Option* option = app.add_option_function<int>(
                               names, [value](const int& v) { *value = v; },
                               text(what, " (", low, " to ", high, ", default ", standard, ")"))
                            ->check(in_range(low, high))
                            ->type_name("N");
  given_.push_back({option, [value, set](ppl_context* context) { return set(context, *value) != 0; }});
}

void Controls::numbers(CLI::App& app, const std::string& names, const std::string& what, size_t count,
                       int low, int high, const std::string& standard,
                       uint8_t (*set)(ppl_context*, const int*)) {
  auto values = std::make_shared<std::vector<int>>();
  CLI::Option* option = app.add_option_function<std::string>(
                               names, [values](const std::string& list) { parse_numbers(list, *values); },
                               text(what, " (each ", low, " to ", high, ", default ", standard, ")"))
                            ->check([count, low, high](const std::string& list) {
                              std::vector<int> found;
                              const bool all = parse_numbers(list, found) && found.size() == count &&
                                               std::all_of(found.begin(), found.end(),
                                                           [&](int v) { return v >= low && v <= high; });
                              return all ? std::string()
                                         : text("takes ", count, " whole numbers from ", low, " to ", high,
                                                " with commas between them, not ", list);
                            })
                            ->type_name(count == 2   ? "MIN,MAX"
                                        : count == 3 ? "R,G,B"
                                        : count == 4 ? "B,Gb,Gr,R"
                                                     : "N,N,...");
  given_.push_back(
      {option, [values, set](ppl_context* context) { return set(context, values->data()) != 0; }});
}

void Controls::flag(CLI::App& app, const std::string& names, const std::string& what,
                    uint8_t (*set)(ppl_context*)) {
  CLI::Option* option = app.add_flag(names, what);
  given_.push_back({option, [set](ppl_context* context) { return set(context) != 0; }});
}

void Controls::add_options(CLI::App& app) {
  using C = ppl_context*;
  const std::string sensor = "Sensor", picture = "Picture", filters = "Filters", lens = "Lens correction",
                    statistics = "Statistics ranges";
  app.add_flag("--h-mirror", h_mirror, "Exchange left and right")->group(picture);
  app.add_flag("--v-mirror", v_mirror, "Exchange top and bottom")->group(picture);

  const auto group = [&](size_t first, const std::string& title) {
    for (size_t i = first; i < given_.size(); ++i) given_[i].option->group(title);
  };
  size_t mark = given_.size();
  number(app, "--black", "Black level of all four sites, in sample steps", 0, 255, 0, [](C c, int v) {
    const uint32_t b = static_cast<uint32_t>(v);
    return ppl_set_optical_black_b_gb_gr_r(c, b, b, b, b);
  });
  numbers(app, "--black-sites", "Black level B,Gb,Gr,R", 4, 0, 255, "0,0,0,0", [](C c, const int* v) {
    return ppl_set_optical_black_b_gb_gr_r(c, static_cast<uint32_t>(v[0]), static_cast<uint32_t>(v[1]),
                                           static_cast<uint32_t>(v[2]), static_cast<uint32_t>(v[3]));
  });
  numbers(app, "--gains", "White-balance gains R,G,B in 1/256, in effect in steps of 8", 3, 0, 2047,
          "256,256,256", [](C c, const int* v) {
            return ppl_set_rgb_gain(c, static_cast<uint32_t>(v[0]), static_cast<uint32_t>(v[1]),
                                    static_cast<uint32_t>(v[2]));
          });
  numbers(app, "--deltas", "Offsets R,G,B behind the gains, in sample steps", 3, -32768, 32767, "0,0,0",
          [](C c, const int* v) { return ppl_set_rgb_delta(c, v[0], v[1], v[2]); });
  numbers(app, "--sensor-matrix", "Colour matrix of the sensor, nine values row by row in 1/256", 9, -65536,
          65535, "389,-15,-120,-118,509,-137,-19,-229,503",
          [](C c, const int* v) { return ppl_copy_sensor_matrix(c, v); });
  flag(app, "--gbgr", "Green balance: even out the Gb and Gr sites", ppl_enable_GbGr_correction);
  number(app, "--gbgr-threshold", "Largest green difference, exclusive, that is evened out", -32768, 32767,
         10, [](C c, int v) { return ppl_set_GbGr_correction_diff_threshold(c, v); });
  group(mark, sensor);

  mark = given_.size();
  number(app, "--gamma", "Tone curve: 0 is the exponent 0.45, higher is brighter", -32, 32, 0,
         [](C c, int v) { return ppl_set_gamma(c, v); });
  number(
      app, "--contrast", "Contrast", -127, 127, 0,
      [](C c, int v) { return ppl_set_contrast_c(c, v, nullptr, nullptr); }, contrast_);
  number(app, "--saturation", "Saturation in 1/256; 0 is grey", 0, 512, 256,
         [](C c, int v) { return ppl_set_sat(c, static_cast<uint32_t>(v)); });
  number(app, "--hue", "Hue in degrees", -360, 360, 0, [](C c, int v) { return ppl_set_hue(c, v); });
  group(mark, picture);

  mark = given_.size();
  auto* medium = app.add_flag("--medium-filter", medium_filter,
                              "Remove hot and dead pixels (qualities 0, 1 and 2 alone)");
  given_.push_back({medium, [](C c) { return ppl_enable_medium_filter(c) != 0; }});
  number(app, "--medium-diff", "Medium filter difference; also the noise filter's horizontal test", -32768,
         32767, 24, [](C c, int v) { return ppl_set_medium_filter_diff_threshold(c, v); });
  number(app, "--medium-hot", "Medium filter: hot pixels lie above", -32768, 32767, 240,
         [](C c, int v) { return ppl_set_medium_filter_hot_pixel_threshold(c, v); });
  number(app, "--medium-dead", "Medium filter: dead pixels lie below", -32768, 32767, 16,
         [](C c, int v) { return ppl_set_medium_filter_dead_pixel_threshold(c, v); });
  number(app, "--medium-hot-percent", "Medium filter: hot pixel factor in 1/256", -65536, 65535, 80,
         [](C c, int v) { return ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(c, v); });
  number(app, "--medium-dead-percent", "Medium filter: dead pixel factor in 1/256", -65536, 65535, 48,
         [](C c, int v) { return ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(c, v); });
  number(app, "--edge-threshold", "Edges below it are not sharpened; also the noise filter's vertical test",
         0, 1530, 100, [](C c, int v) { return ppl_set_edge_threshold(c, static_cast<uint32_t>(v)); });
  number(app, "--edge-threshold2", "Edges above it are not sharpened", 0, 1530, 1530,
         [](C c, int v) { return ppl_set_edge_threshold2(c, static_cast<uint32_t>(v)); });
  number(app, "--edge-factor", "Strength of the sharpening in 1/256, in effect in steps of 8", 0, 256, 32,
         [](C c, int v) { return ppl_set_nf88_edge_enhance_factor(c, static_cast<uint32_t>(v)); });
  number(app, "--cfa-t0", "Flatness threshold of qualities 10 and 11", 0, 255, 10,
         [](C c, int v) { return ppl_set_CFA_T0_threshold(c, static_cast<uint32_t>(v)); });
  number(app, "--cfa-t1", "Edge direction threshold of qualities 0, 1, 10 and 11", 0, 63, 15,
         [](C c, int v) { return ppl_set_CFA_T1_threshold(c, static_cast<uint32_t>(v)); });
  const size_t noise = given_.size();
  number(app, "--noise-g", "Green noise threshold; the library keeps it, no picture depends on it", 0, 3060,
         60, [](C c, int v) { return ppl_set_noise_filter_G_12T_threshold(c, static_cast<uint32_t>(v)); });
  number(app, "--noise-r", "Red noise threshold; likewise", 0, 2040, 40,
         [](C c, int v) { return ppl_set_noise_filter_R_8T_threshold(c, static_cast<uint32_t>(v)); });
  number(app, "--noise-b", "Blue noise threshold; likewise", 0, 2040, 40,
         [](C c, int v) { return ppl_set_noise_filter_B_8T_threshold(c, static_cast<uint32_t>(v)); });
  for (size_t i = noise; i < given_.size(); ++i) idle_.push_back(given_[i].option);
  group(mark, filters);

  mark = given_.size();
  numbers(app, "--qual-bmgb", "Qualified cells: range MIN,MAX of B - Gb", 2, -32767, 32766, "-25,25",
          [](C c, const int* v) { return ppl_set_qual_BmGb_min_max(c, v[0], v[1]); });
  numbers(app, "--qual-grmr", "Qualified cells: range of Gr - R", 2, -32767, 32766, "-25,25",
          [](C c, const int* v) { return ppl_set_qual_GrmR_min_max(c, v[0], v[1]); });
  numbers(app, "--qual-sum", "Qualified cells: range of (B - Gb) + (Gr - R)", 2, -32767, 32766, "-30,30",
          [](C c, const int* v) { return ppl_set_qual_BmGb_p_GrmR_min_max(c, v[0], v[1]); });
  numbers(app, "--qual-diff", "Qualified cells: range of (B - Gb) - (Gr - R)", 2, -32767, 32766, "-30,30",
          [](C c, const int* v) { return ppl_set_qual_BmGb_m_GrmR_min_max(c, v[0], v[1]); });
  numbers(app, "--qual-r", "Qualified cells: range of R", 2, 0, 255, "0,255",
          [](C c, const int* v) { return ppl_set_qual_R_min_max(c, v[0], v[1]); });
  numbers(app, "--qual-g", "Qualified cells: range of Gb and Gr", 2, 0, 255, "0,255",
          [](C c, const int* v) { return ppl_set_qual_G_min_max(c, v[0], v[1]); });
  numbers(app, "--qual-b", "Qualified cells: range of B", 2, 0, 255, "0,255",
          [](C c, const int* v) { return ppl_set_qual_B_min_max(c, v[0], v[1]); });
  numbers(app, "--qae", "Exposure cells: range of R, G and B", 2, 0, 255, "0,255",
          [](C c, const int* v) { return ppl_set_qAE_RGB_min_max(c, v[0], v[1]); });
  group(mark, statistics);

  const auto coefficient = [&](const char* names, int& value, int low, int high, const char* what) {
    return app.add_option(names, value, text(what, " (", low, " to ", high, ", default ", value, ")"))
        ->check(in_range(low, high))
        ->type_name("N");
  };
  lens_options_ = {
      app.add_flag("--lens", lens_, "Correct lens shading; given by any of the options below as well"),
      coefficient("--lens-f1", f1_, -65536, 65535, "Factor 1 + f1 r^2 / 2^shift1 - f2 r^4 / 2^shift2: f1"),
      coefficient("--lens-shift1", f1_shift_, 13, 63, "shift1"),
      coefficient("--lens-f2", f2_, -65536, 65535, "f2"),
      coefficient("--lens-shift2", f2_shift_, 13, 63, "shift2"),
      app.add_option_function<std::string>(
             "--lens-origin", [this](const std::string& list) { parse_numbers(list, origin_); },
             "Optical centre in samples (each 0 to 2047, default the middle of the frame)")
          ->check([](const std::string& list) {
            std::vector<int> found;
            const bool both =
                parse_numbers(list, found) && found.size() == 2 &&
                std::all_of(found.begin(), found.end(), [](int v) { return v >= 0 && v <= 2047; });
            return both ? std::string() : text("takes X,Y, each from 0 to 2047, not ", list);
          })
          ->type_name("X,Y")};
  for (CLI::Option* option : lens_options_) option->group(lens);
}

bool Controls::set_lens(ppl_context* context, uint32_t width, uint32_t height, Words& table) const {
  const int w = static_cast<int>(width), h = static_cast<int>(height);
  const int x = origin_.empty() ? w / 2 : origin_[0];
  const int y = origin_.empty() ? h / 2 : origin_[1];
  table.resize(size_t{width} * static_cast<size_t>(std::max(y, h - y) + 1));
  return ppl_set_lens_correction(context, w, h, x, y, table.data(),
                                 static_cast<int32_t>(table.size() * sizeof table[0]), f1_, f1_shift_, f2_,
                                 f2_shift_) &&
         ppl_enable_lens_correction(context);
}

void Controls::apply(ppl_context* context, uint32_t width, uint32_t height, Words& lens_table) const {
  for (const Given& control : given_)
    if (control.option->count() && !control.set(context))
      misuse(control.option->get_name(),
             ": the library refuses this value; of a range MIN,MAX the minimum must not be "
             "above the maximum");
  ppl_set_h_mirror(context, h_mirror);
  ppl_set_v_mirror(context, v_mirror);
  const bool lens = std::any_of(lens_options_.begin(), lens_options_.end(),
                                [](const CLI::Option* option) { return option->count() > 0; });
  if (lens && !set_lens(context, width, height, lens_table))
    misuse("--lens: the library refuses these coefficients");
}

void Controls::note_idle(uint32_t quality) const {
  if (medium_filter && quality > 2)
    note(text("--medium-filter does nothing in quality ", quality, "; it acts in 0, 1 and 2"));
  for (const CLI::Option* option : idle_)
    if (option->count())
      note(text(option->get_name(),
                " does nothing: the library keeps the number, and no picture depends on it"));
}

std::string Controls::first_given() const {
  for (const Given& control : given_)
    if (control.option->count()) return control.option->get_name();
  for (const CLI::Option* option : lens_options_)
    if (option->count()) return option->get_name();
  return {};
}

}  // namespace tool
