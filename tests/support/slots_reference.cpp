#include "support/slots.h"
#include "support/slots_getters.h"

namespace slots {
namespace {

template <typename Words>
std::vector<uint32_t> list(const Words& words) {
  return std::vector<uint32_t>(words.begin(), words.end());
}

}  // namespace

std::vector<figure> statistics(const reference_slot& s) {
  std::vector<uint32_t> cells;
  for (size_t i = 0; i < 48; ++i)
    cells.insert(cells.end(), s.sub_window_means[i].begin(), s.sub_window_means[i].end());
  return {{"sub-windows", cells},
          {"outside", list(s.sub_window_means[48])},
          {"all sub-windows", list(s.all_windows_means)},
          {"whole frame", list(s.whole_frame_means)},
          {"qAE means", list(s.qAE_means)},
          {"qAE count", {s.qAE_count}},
          {"qual means", list(s.qual_means)},
          {"qual count", {s.qual_count}},
          {"r histogram", list(s.r_histogram)},
          {"g histogram", list(s.g_histogram)},
          {"b histogram", list(s.b_histogram)},
          {"central8", list(s.rgb_means_whole_frame_central8())}};
}

std::vector<figure> read_back(const reference_slot& s) {
  std::vector<figure> all;
#define GET(name, field) all.push_back({#name, {uint32_t(s.field)}});
  PLAIN_GETTERS(GET)
#undef GET
#define GET(name) all.push_back({#name, list(s.name)});
  TABLES(GET)
#undef GET
  all.push_back({"sensor_type", {0}});
  all.push_back({"optical_black_b_gb_gr_r", list(s.optical_black_b_gb_gr_r)});
  all.push_back({"sensor_matrix", list(s.sensor_matrix)});
  int32_t gamma[3] = {};
  const int32_t value = s.nf20_12_gamma(&gamma[0], &gamma[1], &gamma[2]);
  all.push_back(
      {"nf20_12_gamma", {uint32_t(value), uint32_t(gamma[0]), uint32_t(gamma[1]), uint32_t(gamma[2])}});
  all.push_back({"lens_correction_table", {s.lens_correction_table ? 1u : 0u}});
  all.push_back({"n_sub_windows", {48, 8, 6}});
  all.push_back({"4pts", list(s.rgb_means_whole_frame_4pts())});
  all.push_back({"central4", list(s.rgb_means_whole_frame_central4())});
  all.push_back({"central16", list(s.rgb_means_whole_frame_central16())});
  return all;
}

}  // namespace slots
