#include "support/slots.h"
#include "support/slots_getters.h"

namespace slots {
namespace {

std::vector<uint32_t> words_at(const uint32_t* words, size_t count) {
  return std::vector<uint32_t>(words, words + count);
}
std::vector<uint32_t> bytes_at(const uint8_t* bytes, size_t count) {
  return std::vector<uint32_t>(bytes, bytes + count);
}

}  // namespace

std::vector<figure> statistics(const library_slot& slot) {
  const ppl_context* c = slot.context;
  return {{"sub-windows", words_at(ppl_rgb_means_sub_windows(c), 144)},
          {"outside", words_at(ppl_rgb_means_outside_all_sub_windows(c), 3)},
          {"all sub-windows", words_at(ppl_rgb_means_all_sub_windows(c), 3)},
          {"whole frame", words_at(ppl_rgb_means_whole_frame(c), 3)},
          {"qAE means", words_at(ppl_qAE_rgb_means_whole_frame(c), 3)},
          {"qAE count", {ppl_n_qAE_2x2_whole_frame(c)}},
          {"qual means", words_at(ppl_qual_rgb_means_whole_frame(c), 3)},
          {"qual count", {ppl_n_qual_2x2_whole_frame(c)}},
          {"r histogram", words_at(ppl_r_histogram(c), 256)},
          {"g histogram", words_at(ppl_g_histogram(c), 256)},
          {"b histogram", words_at(ppl_b_histogram(c), 256)},
          {"central8", words_at(ppl_rgb_means_whole_frame_central8(c), 3)}};
}

std::vector<figure> read_back(const library_slot& slot) {
  const ppl_context* c = slot.context;
  std::vector<figure> all;
#define GET(name, field) all.push_back({#name, {uint32_t(ppl_##name(c))}});
  PLAIN_GETTERS(GET)
#undef GET
#define GET(name) all.push_back({#name, bytes_at(ppl_##name(c), 256)});
  TABLES(GET)
#undef GET
  all.push_back({"sensor_type", {ppl_sensor_type(c)}});
  uint32_t black[4] = {};
  ppl_optical_black_b_gb_gr_r(c, &black[0], &black[1], &black[2], &black[3]);
  all.push_back({"optical_black_b_gb_gr_r", words_at(black, 4)});
  int32_t matrix[9] = {};
  ppl_sensor_matrix(c, matrix);
  all.push_back({"sensor_matrix", std::vector<uint32_t>(matrix, matrix + 9)});
  int32_t gamma[3] = {};
  const int32_t value = ppl_nf20_12_gamma(c, &gamma[0], &gamma[1], &gamma[2]);
  all.push_back(
      {"nf20_12_gamma", {uint32_t(value), uint32_t(gamma[0]), uint32_t(gamma[1]), uint32_t(gamma[2])}});
  all.push_back({"lens_correction_table", {ppl_lens_correction_table(c) ? 1u : 0u}});
  uint32_t grid[2] = {};
  const uint32_t windows = ppl_n_sub_windows(c, &grid[0], &grid[1]);
  all.push_back({"n_sub_windows", {windows, grid[0], grid[1]}});
  all.push_back({"4pts", words_at(ppl_rgb_means_whole_frame_4pts(c), 3)});
  all.push_back({"central4", words_at(ppl_rgb_means_whole_frame_central4(c), 3)});
  all.push_back({"central16", words_at(ppl_rgb_means_whole_frame_central16(c), 3)});
  return all;
}

}  // namespace slots
