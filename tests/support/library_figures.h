// All that can be read back from a slot of the library, figure by figure: take(name, words, count). Nothing of the
// standard library, so that programs for any machine can include it.
#pragma once

#include "ppl.h"
#include "support/slots_getters.h"

namespace slots {

// The statistics in the order of the digests in tests/digests.
template <typename Take>
void library_statistics(const ppl_context* c, Take&& take) {
  const auto count = [&](const char* name, uint32_t value) { take(name, &value, 1u); };
  take("sub-windows", ppl_rgb_means_sub_windows(c), 144u);
  take("outside", ppl_rgb_means_outside_all_sub_windows(c), 3u);
  take("all sub-windows", ppl_rgb_means_all_sub_windows(c), 3u);
  take("whole frame", ppl_rgb_means_whole_frame(c), 3u);
  take("qAE means", ppl_qAE_rgb_means_whole_frame(c), 3u);
  count("qAE count", ppl_n_qAE_2x2_whole_frame(c));
  take("qual means", ppl_qual_rgb_means_whole_frame(c), 3u);
  count("qual count", ppl_n_qual_2x2_whole_frame(c));
  take("r histogram", ppl_r_histogram(c), 256u);
  take("g histogram", ppl_g_histogram(c), 256u);
  take("b histogram", ppl_b_histogram(c), 256u);
  take("central8", ppl_rgb_means_whole_frame_central8(c), 3u);
}

// Everything else: controls, tables, geometry, the frame count, the other centre-weighted means.
template <typename Take>
void library_read_back(const ppl_context* c, Take&& take) {
  uint32_t words[256];
  const auto one = [&](const char* name, uint32_t value) { take(name, &value, 1u); };
#define GET(name, field) one(#name, static_cast<uint32_t>(ppl_##name(c)));
  PLAIN_GETTERS(GET)
#undef GET
  const auto table = [&](const char* name, const uint8_t* bytes) {
    for (int i = 0; i < 256; ++i) words[i] = bytes[i];
    take(name, static_cast<const uint32_t*>(words), 256u);
  };
#define GET(name) table(#name, ppl_##name(c));
  TABLES(GET)
#undef GET
  one("sensor_type", ppl_sensor_type(c));
  for (int i = 0; i < 4; ++i) words[i] = 0;
  ppl_optical_black_b_gb_gr_r(c, &words[0], &words[1], &words[2], &words[3]);
  take("optical_black_b_gb_gr_r", static_cast<const uint32_t*>(words), 4u);
  int32_t signed_words[9] = {};
  ppl_sensor_matrix(c, signed_words);
  for (int i = 0; i < 9; ++i) words[i] = static_cast<uint32_t>(signed_words[i]);
  take("sensor_matrix", static_cast<const uint32_t*>(words), 9u);
  int32_t gamma[3] = {};
  words[0] = static_cast<uint32_t>(ppl_nf20_12_gamma(c, &gamma[0], &gamma[1], &gamma[2]));
  for (int i = 0; i < 3; ++i) words[i + 1] = static_cast<uint32_t>(gamma[i]);
  take("nf20_12_gamma", static_cast<const uint32_t*>(words), 4u);
  one("lens_correction_table", ppl_lens_correction_table(c) ? 1u : 0u);
  words[1] = words[2] = 0;
  words[0] = ppl_n_sub_windows(c, &words[1], &words[2]);
  take("n_sub_windows", static_cast<const uint32_t*>(words), 3u);
  take("4pts", ppl_rgb_means_whole_frame_4pts(c), 3u);
  take("central4", ppl_rgb_means_whole_frame_central4(c), 3u);
  take("central16", ppl_rgb_means_whole_frame_central16(c), 3u);
}

}  // namespace slots
