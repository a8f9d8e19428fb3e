// Every image control that a frame depends on, once: its names, range, default, words and setter. The options of the
// command line tool, the settings file and whatever else offers the controls by name are made from this table. It needs
// nothing but the library's header.
#pragma once

#include <ppl.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace tool {

struct Control {
  enum class Kind { flag, number, numbers };
  const char*
      key;  // in a settings file: the name that the library's calls have behind ppl_set_ or ppl_enable_
  const char* option;  // of the command line tool
  const char*
      property;  // of the stream element; with commas between them where every number has one of its own
  const char* group;
  const char* what;
  const char* values;  // what the numbers are called
  Kind kind;
  size_t count;
  int32_t low, high;
  std::array<int32_t, 9> standard;
  uint8_t (*set)(ppl_context*, const int32_t*);
};

namespace control_table {

using C = ppl_context*;
using V = const int32_t*;
constexpr Control::Kind flag = Control::Kind::flag, number = Control::Kind::number,
                        numbers = Control::Kind::numbers;
constexpr const char *sensor = "Sensor", *picture = "Picture", *filters = "Filters",
                     *statistics = "Statistics ranges";
// A setter of one number, of a range.
template <class T, uint8_t (*call)(ppl_context*, T)>
uint8_t one(C c, V v) {
  return call(c, static_cast<T>(v[0]));
}
template <uint8_t (*call)(ppl_context*, int32_t, int32_t)>
uint8_t range(C c, V v) {
  return call(c, v[0], v[1]);
}
template <uint8_t (*on)(ppl_context*), uint8_t (*off)(ppl_context*)>
uint8_t either(C c, V v) {
  return v[0] ? on(c) : off(c);
}
inline uint8_t black(C c, V v) {
  const auto u = [v](size_t i) { return static_cast<uint32_t>(v[i]); };
  return ppl_set_optical_black_b_gb_gr_r(c, u(0), u(1), u(2), u(3));
}
inline uint8_t gain(C c, V v) {
  return ppl_set_rgb_gain(c, static_cast<uint32_t>(v[0]), static_cast<uint32_t>(v[1]),
                          static_cast<uint32_t>(v[2]));
}
inline uint8_t delta(C c, V v) {
  return ppl_set_rgb_delta(c, v[0], v[1], v[2]);
}
inline uint8_t contrast(C c, V v) {
  return ppl_set_contrast_c(c, v[0], nullptr, nullptr);
}

}  // namespace control_table

#define PPL_ONE(type, call) &control_table::one<type, call>
#define PPL_RANGE(call) &control_table::range<call>
// clang-format off
inline constexpr Control all_controls[] = {
    {"h_mirror", "--h-mirror", "h-mirror", control_table::picture, "Exchange left and right", "", control_table::flag,
     1, 0, 1, {0}, PPL_ONE(uint8_t, ppl_set_h_mirror)},
    {"v_mirror", "--v-mirror", "v-mirror", control_table::picture, "Exchange top and bottom", "", control_table::flag,
     1, 0, 1, {0}, PPL_ONE(uint8_t, ppl_set_v_mirror)},
    {"optical_black_b_gb_gr_r", "--black-sites", "black-levels", control_table::sensor, "Black level B,Gb,Gr,R",
     "B,Gb,Gr,R", control_table::numbers, 4, 0, 255, {0, 0, 0, 0}, control_table::black},
    {"rgb_gain", "--gains", "red-gain,green-gain,blue-gain", control_table::sensor,
     "White-balance gains R,G,B in 1/256, in effect in steps of 8", "R,G,B", control_table::numbers, 3, 0, 2047, {256,
     256, 256}, control_table::gain},
    {"rgb_delta", "--deltas", "deltas", control_table::sensor, "Offsets R,G,B behind the gains, in sample steps",
     "R,G,B", control_table::numbers, 3, -32768, 32767, {0, 0, 0}, control_table::delta},
    {"sensor_matrix", "--sensor-matrix", "sensor-matrix", control_table::sensor,
     "Colour matrix of the sensor, nine values row by row in 1/256", "N,N,...", control_table::numbers, 9, -65536,
     65535, {389, -15, -120, -118, 509, -137, -19, -229, 503}, ppl_copy_sensor_matrix},
    {"GbGr_correction", "--gbgr", "green-balance", control_table::sensor,
     "Green balance: even out the Gb and Gr sites", "", control_table::flag, 1, 0, 1, {0},
     &control_table::either<ppl_enable_GbGr_correction, ppl_disable_GbGr_correction>},
    {"GbGr_correction_diff_threshold", "--gbgr-threshold", "green-balance-threshold", control_table::sensor,
     "Largest green difference, exclusive, that is evened out", "N", control_table::number, 1, -32768, 32767, {10},
     PPL_ONE(int32_t, ppl_set_GbGr_correction_diff_threshold)},
    {"gamma", "--gamma", "gamma", control_table::picture, "Tone curve: 0 is the exponent 0.45, higher is brighter",
     "N", control_table::number, 1, -32, 32, {0}, PPL_ONE(int32_t, ppl_set_gamma)},
    {"contrast_c", "--contrast", "contrast", control_table::picture, "Contrast", "N", control_table::number, 1, -127,
     127, {0}, control_table::contrast},
    {"sat", "--saturation", "saturation", control_table::picture, "Saturation in 1/256; 0 is grey", "N",
     control_table::number, 1, 0, 512, {256}, PPL_ONE(uint32_t, ppl_set_sat)},
    {"hue", "--hue", "hue", control_table::picture, "Hue in degrees", "N", control_table::number, 1, -360, 360, {0},
     PPL_ONE(int32_t, ppl_set_hue)},
    {"medium_filter", "--medium-filter", "medium-filter", control_table::filters,
     "Remove hot and dead pixels (qualities 0, 1 and 2 alone)", "", control_table::flag, 1, 0, 1, {0},
     &control_table::either<ppl_enable_medium_filter, ppl_disable_medium_filter>},
    {"medium_filter_diff_threshold", "--medium-diff", "medium-diff", control_table::filters,
     "Medium filter difference; also the noise filter's horizontal test", "N", control_table::number, 1, -32768,
     32767, {24}, PPL_ONE(int32_t, ppl_set_medium_filter_diff_threshold)},
    {"medium_filter_hot_pixel_threshold", "--medium-hot", "medium-hot", control_table::filters,
     "Medium filter: hot pixels lie above", "N", control_table::number, 1, -32768, 32767, {240}, PPL_ONE(int32_t,
     ppl_set_medium_filter_hot_pixel_threshold)},
    {"medium_filter_dead_pixel_threshold", "--medium-dead", "medium-dead", control_table::filters,
     "Medium filter: dead pixels lie below", "N", control_table::number, 1, -32768, 32767, {16}, PPL_ONE(int32_t,
     ppl_set_medium_filter_dead_pixel_threshold)},
    {"nf88_medium_filter_hot_pixel_threshold_percentage", "--medium-hot-percent", "medium-hot-percent",
     control_table::filters, "Medium filter: hot pixel factor in 1/256", "N", control_table::number, 1, -65536, 65535,
     {80}, PPL_ONE(int32_t, ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage)},
    {"nf88_medium_filter_dead_pixel_threshold_percentage", "--medium-dead-percent", "medium-dead-percent",
     control_table::filters, "Medium filter: dead pixel factor in 1/256", "N", control_table::number, 1, -65536,
     65535, {48}, PPL_ONE(int32_t, ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage)},
    {"edge_threshold", "--edge-threshold", "edge-threshold", control_table::filters,
     "Edges below it are not sharpened; also the noise filter's vertical test", "N", control_table::number, 1, 0,
     1530, {100}, PPL_ONE(uint32_t, ppl_set_edge_threshold)},
    {"edge_threshold2", "--edge-threshold2", "edge-threshold2", control_table::filters,
     "Edges above it are not sharpened", "N", control_table::number, 1, 0, 1530, {1530}, PPL_ONE(uint32_t,
     ppl_set_edge_threshold2)},
    {"nf88_edge_enhance_factor", "--edge-factor", "edge-factor", control_table::filters,
     "Strength of the sharpening in 1/256, in effect in steps of 8", "N", control_table::number, 1, 0, 256, {32},
     PPL_ONE(uint32_t, ppl_set_nf88_edge_enhance_factor)},
    {"CFA_T0_threshold", "--cfa-t0", "cfa-t0", control_table::filters, "Flatness threshold of qualities 10 and 11",
     "N", control_table::number, 1, 0, 255, {10}, PPL_ONE(uint32_t, ppl_set_CFA_T0_threshold)},
    {"CFA_T1_threshold", "--cfa-t1", "cfa-t1", control_table::filters,
     "Edge direction threshold of qualities 0, 1, 10 and 11", "N", control_table::number, 1, 0, 63, {15},
     PPL_ONE(uint32_t, ppl_set_CFA_T1_threshold)},
    {"noise_filter_G_12T_threshold", "--noise-g", "noise-g", control_table::filters,
     "Green noise threshold; the library keeps it, no picture depends on it", "N", control_table::number, 1, 0, 3060,
     {60}, PPL_ONE(uint32_t, ppl_set_noise_filter_G_12T_threshold)},
    {"noise_filter_R_8T_threshold", "--noise-r", "noise-r", control_table::filters, "Red noise threshold; likewise",
     "N", control_table::number, 1, 0, 2040, {40}, PPL_ONE(uint32_t, ppl_set_noise_filter_R_8T_threshold)},
    {"noise_filter_B_8T_threshold", "--noise-b", "noise-b", control_table::filters, "Blue noise threshold; likewise",
     "N", control_table::number, 1, 0, 2040, {40}, PPL_ONE(uint32_t, ppl_set_noise_filter_B_8T_threshold)},
    {"qual_BmGb_min_max", "--qual-bmgb", "qual-bmgb", control_table::statistics,
     "Qualified cells: range MIN,MAX of B - Gb", "MIN,MAX", control_table::numbers, 2, -32767, 32766, {-25, 25},
     PPL_RANGE(ppl_set_qual_BmGb_min_max)},
    {"qual_GrmR_min_max", "--qual-grmr", "qual-grmr", control_table::statistics, "Qualified cells: range of Gr - R",
     "MIN,MAX", control_table::numbers, 2, -32767, 32766, {-25, 25}, PPL_RANGE(ppl_set_qual_GrmR_min_max)},
    {"qual_BmGb_p_GrmR_min_max", "--qual-sum", "qual-sum", control_table::statistics,
     "Qualified cells: range of (B - Gb) + (Gr - R)", "MIN,MAX", control_table::numbers, 2, -32767, 32766, {-30, 30},
     PPL_RANGE(ppl_set_qual_BmGb_p_GrmR_min_max)},
    {"qual_BmGb_m_GrmR_min_max", "--qual-diff", "qual-diff", control_table::statistics,
     "Qualified cells: range of (B - Gb) - (Gr - R)", "MIN,MAX", control_table::numbers, 2, -32767, 32766, {-30, 30},
     PPL_RANGE(ppl_set_qual_BmGb_m_GrmR_min_max)},
    {"qual_R_min_max", "--qual-r", "qual-r", control_table::statistics, "Qualified cells: range of R", "MIN,MAX",
     control_table::numbers, 2, 0, 255, {0, 255}, PPL_RANGE(ppl_set_qual_R_min_max)},
    {"qual_G_min_max", "--qual-g", "qual-g", control_table::statistics, "Qualified cells: range of Gb and Gr",
     "MIN,MAX", control_table::numbers, 2, 0, 255, {0, 255}, PPL_RANGE(ppl_set_qual_G_min_max)},
    {"qual_B_min_max", "--qual-b", "qual-b", control_table::statistics, "Qualified cells: range of B", "MIN,MAX",
     control_table::numbers, 2, 0, 255, {0, 255}, PPL_RANGE(ppl_set_qual_B_min_max)},
    {"qAE_RGB_min_max", "--qae", "qae", control_table::statistics, "Exposure cells: range of R, G and B", "MIN,MAX",
     control_table::numbers, 2, 0, 255, {0, 255}, PPL_RANGE(ppl_set_qAE_RGB_min_max)},
};
// clang-format on
#undef PPL_ONE
#undef PPL_RANGE
inline constexpr size_t control_count = sizeof all_controls / sizeof all_controls[0];

// The factor of lens shading, apart from the others because it takes a table of the caller's.
struct LensNumber {
  const char* key;     // within "lens_correction"
  const char* option;  // and, behind "lens-", the property of the stream element
  const char* what;
  int32_t low, high, standard;
};
inline constexpr LensNumber lens_numbers[] = {
    {"f1", "--lens-f1", "Factor 1 + f1 r^2 / 2^shift1 - f2 r^4 / 2^shift2: f1", -65536, 65535, 16},
    {"f1_rshift_count", "--lens-shift1", "shift1", 13, 63, 24},
    {"f2", "--lens-f2", "f2", -65536, 65535, 16},
    {"f2_rshift_count", "--lens-shift2", "shift2", 13, 63, 44},
};

}  // namespace tool
