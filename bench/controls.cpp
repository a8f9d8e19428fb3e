// Getters and setters, ns per call; ppl_init; and the first frame of a context beside the later ones. A setter
// rebuilds what depends on it at once, so each call here gets another value than the one before.
#include <cstring>

#include "measure.h"

namespace {

using namespace bench;

struct control {
  const char* name;
  void (*call)(ppl_context*, int turn);
};

uint8_t tables[65 * 256];
uint16_t lens_table[640 * 241];

constexpr control kControls[] = {
    {"get/quality", [](ppl_context* c, int) { benchmark::DoNotOptimize(ppl_quality(c)); }},
    {"get/sat", [](ppl_context* c, int) { benchmark::DoNotOptimize(ppl_nf88_sat(c)); }},
    {"get/r_gain", [](ppl_context* c, int) { benchmark::DoNotOptimize(ppl_nf88_r_gain(c)); }},
    {"get/rgb_means_whole_frame",
     [](ppl_context* c, int) { benchmark::DoNotOptimize(ppl_rgb_means_whole_frame(c)); }},
    {"get/rgb_means_whole_frame_central4",
     [](ppl_context* c, int) { benchmark::DoNotOptimize(ppl_rgb_means_whole_frame_central4(c)); }},
    {"get/rgb_means_whole_frame_central8",
     [](ppl_context* c, int) { benchmark::DoNotOptimize(ppl_rgb_means_whole_frame_central8(c)); }},
    {"get/rgb_means_whole_frame_central16",
     [](ppl_context* c, int) { benchmark::DoNotOptimize(ppl_rgb_means_whole_frame_central16(c)); }},
    {"get/g_histogram", [](ppl_context* c, int) { benchmark::DoNotOptimize(ppl_g_histogram(c)); }},
    {"get/gamma_tables65x256", [](ppl_context* c, int) { ppl_get_gamma_tables65x256(c, tables); }},
    {"set/quality", [](ppl_context* c, int n) { ppl_set_quality(c, uint32_t(n % 16)); }},
    {"set/mirrors", [](ppl_context* c, int n) { ppl_set_h_mirror(c, uint8_t(n & 1)); }},
    {"set/decimation", [](ppl_context* c, int n) { ppl_set_decimation(c, n & 1, 0, 0); }},
    {"set/frame_size",
     [](ppl_context* c, int n) { ppl_new_frame_size(c, n & 1 ? 640 : 1280, n & 1 ? 480 : 960, 1280); }},
    {"set/rgb_gain", [](ppl_context* c, int n) { ppl_set_rgb_gain(c, uint32_t(300 + n % 100), 256, 346); }},
    {"set/rgb_delta", [](ppl_context* c, int n) { ppl_set_rgb_delta(c, n % 8, 0, 0); }},
    {"set/optical_black",
     [](ppl_context* c, int n) { ppl_set_optical_black_b_gb_gr_r(c, uint32_t(n % 16), 12, 12, 12); }},
    {"set/sat_hue", [](ppl_context* c, int n) { ppl_set_sat_hue(c, uint32_t(256 + n % 64), n % 90 - 45); }},
    {"set/sat", [](ppl_context* c, int n) { ppl_set_sat(c, uint32_t(256 + n % 64)); }},
    {"set/hue", [](ppl_context* c, int n) { ppl_set_hue(c, n % 90 - 45); }},
    {"set/gamma", [](ppl_context* c, int n) { ppl_set_gamma(c, n % 60); }},
    {"set/contrast_xy",
     [](ppl_context* c, int n) { ppl_set_contrast_xy(c, uint32_t(64 + n % 64), uint32_t(80 + n % 16)); }},
    {"set/contrast_c",
     [](ppl_context* c, int n) {
       uint32_t x = 0, y = 0;
       ppl_set_contrast_c(c, n % 64, &x, &y);
     }},
    {"set/edge_threshold", [](ppl_context* c, int n) { ppl_set_edge_threshold(c, uint32_t(n % 64)); }},
    {"set/CFA_T0_threshold", [](ppl_context* c, int n) { ppl_set_CFA_T0_threshold(c, uint32_t(n % 64)); }},
    {"set/qual_BmGb_min_max", [](ppl_context* c, int n) { ppl_set_qual_BmGb_min_max(c, -(n % 64), n % 64); }},
    {"set/lens_correction (640 x 480 table)",
     [](ppl_context* c, int n) {
       ppl_set_lens_correction(c, 640, 480, 320, 240, lens_table, sizeof lens_table, 40 + n % 16, 24, 0, 44);
     }},
    {"set/reset_all_controls", [](ppl_context* c, int) { ppl_reset_all_controls(c); }},
};

void add_first_frame(int quality, bool first, const level& l) {
  add("frame/" + std::string(first ? "first" : "later") + "/" + std::to_string(quality) + "/" + l.name,
      [=](benchmark::State& state) {
        double least = 1e9;
        const buffer raw = mosaic(640, 480, content::photograph), source(640 * 480),
                     picture(640 * 480 * 3 / 2), lens(2 * 640 * 241);
        for (auto _ : state) {
          // A context just set up, on memory that is warm: what is left is what the library does once.
          ppl_test_force_level(l.number);
          ppl_context* const c = ppl_init();
          ppl_set_quality(c, uint32_t(quality));
          ppl_set_lens_correction(c, 640, 480, 320, 240, reinterpret_cast<uint16_t*>(lens.data()),
                                  int32_t(lens.size()), 48, 24, 0, 44);
          ppl_enable_lens_correction(c);
          ppl_enable_GbGr_correction(c);
          memcpy(source.data(), raw.data(), raw.size());
          if (!first) ppl_process_blrtoi420(c, source.data(), picture.data(), 640, 480, 640);
          memcpy(source.data(), raw.data(), raw.size());
          const double start = seconds_now();
          ppl_process_blrtoi420(c, source.data(), picture.data(), 640, 480, 640);
          const double time = seconds_now() - start;
          ppl_reset_all_controls(c);
          ppl_free(c);
          state.SetIterationTime(time);
          least = std::min(least, time);
        }
        ppl_test_force_level(-1);
        state.counters["ns_px"] = 1e9 * least / (640 * 480);
      });
}

}  // namespace

int main(int argc, char** argv) {
  for (const control& k : kControls)
    add(k.name, [k](benchmark::State& state) {
      ppl_context* const c = ppl_init();
      ppl_get_gamma_tables65x256(c, tables);
      int turn = 0;
      const int times = strstr(k.name, "lens") != nullptr ? 4 : 256;
      measure_small(state, 1, times, [&] { k.call(c, ++turn); });
      ppl_reset_all_controls(c);
      ppl_free(c);
    });
  add("init/init and free",
      [](benchmark::State& state) { measure_small(state, 1, 16, [] { ppl_free(ppl_init()); }); });
  for (const level& l : levels())
    for (const int quality : {15, 0, 3})
      for (const bool first : {true, false}) add_first_frame(quality, first, l);
  return run_all(argc, argv);
}
