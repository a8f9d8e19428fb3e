// The library at every vector level against the plain reference, over random controls, frames, sizes and sequences.
//
// One case is a sequence of calls on one slot that was never used before. Every call is made to the reference and to
// one library slot per level; what comes back, the whole destination with what lies before and behind it, the source
// after the call, the statistics and every getter must be the same. Buffers end (or begin) at a page that cannot be
// touched. A failing case prints its seed, its calls and the first difference; the seed alone repeats it:
//   compare_bayer FAMILY --seed N
#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <functional>
#include <memory>
#include <random>
#include <string>

#include "compare/families.h"
#include "reference/place.h"
#include "support/guarded.h"
#include "support/level.h"
#include "support/qualities.h"
#include "support/random.h"
#include "support/slots.h"

extern "C" void ppl_clear_pool();  // the slots as the load of the library leaves them

namespace {

using compare::family;
using slots::ending;
using slots::format;
using support::random_source;

constexpr const auto& kQualities = support::kFinished.number;

// Room for the largest buffer of a case, once per slot.
struct arena {
  guarded memory{size_t(40) << 20};
};

struct view {
  uint8_t* data;    // where the call's buffer begins
  uint8_t* window;  // what is compared: the buffer and what lies round it
  size_t window_size;
};

// Everything that a slot owns beside its record. Index 0 is the reference, 1 .. the levels.
struct slot_memory {
  arena source, destination, scratch;
  std::deque<std::vector<uint16_t>> lens_tables;
};
slot_memory& memory_of(int slot) {
  static slot_memory all[PPL_TEST_LEVELS + 1];
  return all[slot];
}

// The two sets of gamma tables that the library came with.
const std::vector<uint8_t>& built_in_gamma() {
  static const std::vector<uint8_t> tables = [] {
    std::vector<uint8_t> both(2 * 65 * 256);
    ppl_context* context = ppl_init();
    ppl_get_gamma_tables65x256(context, both.data());
    ppl_get_gamma_tables65x256_16_235(context, both.data() + 65 * 256);
    ppl_free(context);
    return both;
  }();
  return tables;
}

class test_case {
 public:
  explicit test_case(uint64_t seed) : random(seed) {
    ppl_clear_pool();
    levels_ = ppl_test_levels();
    for (int i = 0; i < levels_; ++i) {
      ppl_test_force_level(i);
      library_.push_back({ppl_init()});
    }
    for (int i = 0; i <= levels_; ++i) memory_of(i).lens_tables.clear();
  }
  ~test_case() {
    for (const slots::library_slot& s : library_) ppl_free(s.context);
  }

  random_source random;
  slots::reference_slot reference;
  bool failed = false;

  int slot_count() const { return levels_ + 1; }

  // Makes one call to every slot and compares what it answers. `call` takes the slot and its index.
  template <typename Call>
  int each(const std::string& name, Call&& call) {
    log_.push_back(name);
    const int expected = int(call(reference, 0));
    log_.back() += expected ? "  -> 1" : "  -> 0";
    for (int i = 0; i < levels_; ++i) {
      const int got = int(call(library_[size_t(i)], i + 1));
      if (got != expected)
        fail(i, "the result is " + std::to_string(got) + ", expected " + std::to_string(expected));
    }
    return expected;
  }

  void compare_windows(const char* what, const std::function<view(int)>& at, size_t skip, size_t skip_size,
                       const std::vector<int64_t>* open = nullptr) {
    const view expected = at(0);
    for (int i = 0; i < levels_; ++i) {
      const view got = at(i + 1);
      // The first difference in full, then where the others are.
      std::string first;
      ptrdiff_t last = 0;
      size_t count = 0;
      for (size_t k = 0; k < expected.window_size; ++k) {
        const ptrdiff_t place = ptrdiff_t(k) - (expected.data - expected.window);
        if (expected.window[k] == got.window[k]) continue;
        if (open && std::binary_search(open->begin(), open->end(), int64_t(place))) continue;
        if (place >= ptrdiff_t(skip) && place < ptrdiff_t(skip + skip_size)) continue;
        if (count++ == 0)
          first = std::string(what) + " byte " + std::to_string(place) + " is " +
                  std::to_string(got.window[k]) + ", expected " + std::to_string(expected.window[k]);
        last = place;
      }
      if (count > 0)
        fail(i, first + "; " + std::to_string(count) + " bytes differ, the last at " + std::to_string(last));
    }
  }

  void compare_figures(bool with_statistics) {
    const auto compare = [&](const std::vector<slots::figure>& expected, int level,
                             const std::vector<slots::figure>& got) {
      for (size_t f = 0; f < expected.size(); ++f)
        for (size_t k = 0; k < expected[f].words.size(); ++k)
          if (expected[f].words[k] != got[f].words[k]) {
            fail(level, std::string(expected[f].name) + "[" + std::to_string(k) + "] is " +
                            std::to_string(got[f].words[k]) + ", expected " +
                            std::to_string(expected[f].words[k]));
            break;
          }
    };
    const std::vector<slots::figure> controls = slots::read_back(reference);
    const std::vector<slots::figure> sums = slots::statistics(reference);
    for (int i = 0; i < levels_; ++i) {
      std::vector<slots::figure> got = slots::read_back(library_[size_t(i)]);
      std::vector<slots::figure> expected = controls;
      if (!with_statistics) {  // the last three are centre-weighted means
        got.resize(got.size() - 3);
        expected.resize(expected.size() - 3);
      }
      compare(expected, i, got);
      if (with_statistics) compare(sums, i, slots::statistics(library_[size_t(i)]));
    }
  }

  void compare_lens_tables() {
    for (int i = 0; i < levels_; ++i)
      if (memory_of(i + 1).lens_tables.back() != memory_of(0).lens_tables.back())
        fail(i, "the lens table differs");
  }

  // Gives every slot back and takes it again; what a slot keeps stays with it.
  void reclaim() {
    log_.push_back("ppl_free, ppl_init");
    reference.reset_all_controls();
    for (int i = 0; i < levels_; ++i) {
      slots::library_slot& s = library_[size_t(i)];
      ppl_context* before = s.context;
      ppl_free(before);
      ppl_test_force_level(i);
      s.context = ppl_init();
      if (s.context != before) fail(i, "another slot than the free one");
    }
  }

  // The gamma tables belong to the library, not to a slot: they are put back at the end of the case.
  void replace_gamma_tables() {
    log_.push_back("ppl_copy_gamma_tables65x256, ppl_copy_gamma_tables65x256_16_235");
    ref::library_tables& tables = ref::shared_tables();
    for (std::array<ref::table256, 65>* set : {&tables.gamma, &tables.gamma_16_235})
      for (ref::table256& row : *set)
        for (uint8_t& entry : row) entry = uint8_t(random.bits());
    hand_over_gamma_tables();
  }
  void restore_gamma_tables() {
    ref::shared_tables() = ref::built_in_tables();
    ppl_context* context = library_[0].context;
    ppl_copy_gamma_tables65x256(context, built_in_gamma().data());
    ppl_copy_gamma_tables65x256_16_235(context, built_in_gamma().data() + 65 * 256);
  }

  const std::vector<std::string>& log() const { return log_; }

 private:
  // What was copied in must be what is copied out again.
  void hand_over_gamma_tables() {
    const ref::library_tables& tables = ref::shared_tables();
    for (int i = 0; i < levels_; ++i) {
      ppl_context* context = library_[size_t(i)].context;
      ppl_copy_gamma_tables65x256(context, tables.gamma[0].data());
      ppl_copy_gamma_tables65x256_16_235(context, tables.gamma_16_235[0].data());
      if (!ppl_copy_gamma_tables65x256(context, nullptr) ||
          !ppl_copy_gamma_tables65x256_16_235(context, nullptr))
        fail(i, "a null set of gamma tables is not answered like a good one");
      std::vector<uint8_t> got(65 * 256), got_16_235(65 * 256);
      ppl_get_gamma_tables65x256(context, got.data());
      ppl_get_gamma_tables65x256_16_235(context, got_16_235.data());
      if (std::memcmp(got.data(), tables.gamma[0].data(), got.size()) != 0 ||
          std::memcmp(got_16_235.data(), tables.gamma_16_235[0].data(), got.size()) != 0)
        fail(i, "the gamma tables differ");
    }
  }

  void fail(int level, const std::string& text) {
    failed = true;
    log_.push_back("*** level " + std::to_string(level) + ": " + text);
  }

  int levels_ = 0;
  std::vector<slots::library_slot> library_;
  std::vector<std::string> log_;
};

std::string text(const char* form, auto... values) {
  char line[400];
  std::snprintf(line, sizeof line, form, values...);
  return line;
}

// ---- controls ----

// A call that copies a table in; now and then it is handed none.
#define COPY_TABLE(name)                                                                     \
  do {                                                                                       \
    const uint8_t* from = random.chance(15) ? nullptr : t.data();                            \
    c.each(from ? #name : #name "(null)", [&](auto& slot, int) { return slot.name(from); }); \
  } while (false)

std::vector<uint8_t> random_table(random_source& random) {
  std::vector<uint8_t> table(256);
  const int kind = random.between(0, 3), a = random.between(0, 255);
  for (int i = 0; i < 256; ++i)
    table[size_t(i)] = kind == 0   ? uint8_t(i)
                       : kind == 1 ? uint8_t(random.bits())
                       : kind == 2 ? uint8_t(255 - i)
                                   : uint8_t(std::clamp((i * (a + 64)) >> 7, 0, 255));
  return table;
}

// `to_last` is what set_lens_correction is told of a frame: its size, or anything.
void random_lens(test_case& c, int frame_width, int frame_height) {
  random_source& random = c.random;
  int width = frame_width, height = frame_height, x = width / 2, y = height / 2;
  if (random.chance(35)) {
    width = random.between(0, 400);
    height = random.between(0, 200);
  }
  if (random.chance(40)) {
    x = random.between(-40, width + 40);
    y = random.between(-20, height + 20);
  }
  const int largest_y = std::max(y, height - y);
  const int64_t needed = (int64_t(largest_y) + 1) * width * 2;
  int64_t size = needed;
  if (random.chance(15)) size += random.between(-40, 40);
  if (random.chance(5)) size = random.between(0, 5000);
  size = std::clamp<int64_t>(size, 0, 1 << 22);
  const size_t entries = size_t(size / 2), shift = size_t(random.between(0, 3));
  const bool null = random.chance(4);
  const int f1 = random.chance(60) ? 48 : random.value(-2000, 60000), s1 = random.value(13, 40);
  const int f2 = random.chance(60) ? 16 : random.value(-2000, 60000), s2 = random.value(30, 60);
  for (int i = 0; i < c.slot_count(); ++i)
    memory_of(i).lens_tables.push_back(std::vector<uint16_t>(entries + 8, 12345));
  c.each(text("set_lens_correction(%d, %d, %d, %d, %s, %d, %d, %d, %d, %d)", width, height, x, y,
              null ? "null" : "table", int(size), f1, s1, f2, s2),
         [&](auto& slot, int i) {
           uint16_t* table = null ? nullptr : memory_of(i).lens_tables.back().data() + shift;
           return slot.set_lens_correction(width, height, x, y, table, int32_t(size), f1, s1, f2, s2);
         });
  c.compare_lens_tables();
}

#define CALL(name, ...) c.each(std::string(#name), [&](auto& slot, int) { return slot.name(__VA_ARGS__); })
#define CALL1(name, a) c.each(text(#name "(%d)", int(a)), [&](auto& slot, int) { return slot.name(a); })
#define CALL2(name, a, b) \
  c.each(text(#name "(%d, %d)", int(a), int(b)), [&](auto& slot, int) { return slot.name(a, b); })
#define CALL3(name, a, b, d)                                 \
  c.each(text(#name "(%d, %d, %d)", int(a), int(b), int(d)), \
         [&](auto& slot, int) { return slot.name(a, b, d); })

constexpr int kControls = 66;

void random_control(test_case& c, int which) {
  random_source& random = c.random;
  const auto u = [&](int low, int high) { return uint32_t(random.value(low, high)); };
  const auto s = [&](int low, int high) { return int32_t(random.value(low, high)); };
  switch (which) {
    case 0: {
      const uint32_t b = u(0, 60), gb = u(0, 60), gr = u(0, 60), r = u(0, 255);
      c.each(text("set_optical_black_b_gb_gr_r(%d, %d, %d, %d)", int(b), int(gb), int(gr), int(r)),
             [&](auto& slot, int) { return slot.set_optical_black_b_gb_gr_r(b, gb, gr, r); });
      break;
    }
    case 1:
    case 2: {
      const uint32_t r = u(0, 2047), g = u(0, 2047), b = u(0, 2047);
      CALL3(set_rgb_gain, r, g, b);
      break;
    }
    case 3: {
      const uint32_t r = u(200, 700), g = u(200, 400), b = u(200, 700);
      CALL3(set_rgb_gain, r, g, b);
      break;
    }
    case 4: {
      const uint32_t v = u(0, 2047);
      CALL1(set_r_gain, v);
      break;
    }
    case 5: {
      const uint32_t v = u(0, 2047);
      CALL1(set_g_gain, v);
      break;
    }
    case 6: {
      const uint32_t v = u(0, 2047);
      CALL1(set_b_gain, v);
      break;
    }
    case 7: {
      const int32_t r = s(-40, 40), g = s(-40, 40), b = s(-40, 40);
      CALL3(set_rgb_delta, r, g, b);
      break;
    }
    case 8: {
      const int32_t v = s(-32768, 32767);
      CALL1(set_r_delta, v);
      break;
    }
    case 9: {
      const int32_t v = s(-32768, 32767);
      CALL1(set_g_delta, v);
      break;
    }
    case 10: {
      const int32_t v = s(-32768, 32767);
      CALL1(set_b_delta, v);
      break;
    }
    case 11: {
      const uint32_t r = u(0, 1023), g = u(0, 1023), b = u(0, 1023);
      CALL3(set_quals_rgb_gain, r, g, b);
      break;
    }
    case 12: {
      const uint32_t v = u(0, 1023);
      switch (random.between(0, 2)) {
        case 0:
          CALL1(set_quals_r_gain, v);
          break;
        case 1:
          CALL1(set_quals_g_gain, v);
          break;
        default:
          CALL1(set_quals_b_gain, v);
          break;
      }
      break;
    }
    case 13:
    case 14: {
      std::vector<int32_t> m(9);
      const int reach = random.chance(20) ? INT_MAX / 2 : random.chance(30) ? 100000 : 600;
      for (int32_t& v : m) v = random.between(-reach, reach);
      const int32_t* from = random.chance(5) ? nullptr : m.data();
      c.each(text("copy_sensor_matrix(%s%d %d %d %d %d %d %d %d %d)", from ? "" : "null, not ", m[0], m[1],
                  m[2], m[3], m[4], m[5], m[6], m[7], m[8]),
             [&](auto& slot, int) { return slot.copy_sensor_matrix(from); });
      break;
    }
    case 15: {
      const uint32_t v = u(0, 20);
      CALL1(set_sensor_matrix_index_upper_bound, v);
      break;
    }
    case 16:
      CALL(enable_medium_filter);
      break;
    case 17:
      CALL(disable_medium_filter);
      break;
    case 18:
    case 19: {
      const int32_t v = random.chance(80) ? random.between(0, 255) : s(-32768, 32767);
      CALL1(set_medium_filter_diff_threshold, v);
      break;
    }
    case 20: {
      const int32_t v = random.chance(80) ? random.between(0, 300) : s(-32768, 32767);
      CALL1(set_medium_filter_hot_pixel_threshold, v);
      break;
    }
    case 21: {
      const int32_t v = random.chance(80) ? random.between(0, 300) : s(-32768, 32767);
      CALL1(set_medium_filter_dead_pixel_threshold, v);
      break;
    }
    case 22: {
      const int32_t v = random.chance(80) ? random.between(0, 300) : s(-65536, 65535);
      CALL1(set_nf88_medium_filter_hot_pixel_threshold_percentage, v);
      break;
    }
    case 23: {
      const int32_t v = random.chance(80) ? random.between(0, 300) : s(-65536, 65535);
      CALL1(set_nf88_medium_filter_dead_pixel_threshold_percentage, v);
      break;
    }
    case 24:
    case 25:
    case 26:
    case 27: {
      const int reach = random.chance(85) ? 300 : 40000;
      int32_t low = s(-reach, reach), high = s(-reach, reach);
      if (random.chance(90) && low > high) std::swap(low, high);
      switch (which) {
        case 24:
          CALL2(set_qual_BmGb_min_max, low, high);
          break;
        case 25:
          CALL2(set_qual_GrmR_min_max, low, high);
          break;
        case 26:
          CALL2(set_qual_BmGb_p_GrmR_min_max, low, high);
          break;
        default:
          CALL2(set_qual_BmGb_m_GrmR_min_max, low, high);
          break;
      }
      break;
    }
    case 28:
    case 29:
    case 30:
    case 31:
    case 32: {
      int32_t low = s(0, 255), high = s(0, 255);
      if (random.chance(90) && low > high) std::swap(low, high);
      switch (which) {
        case 28:
          CALL2(set_qual_R_min_max, low, high);
          break;
        case 29:
          CALL2(set_qual_G_min_max, low, high);
          break;
        case 30:
          CALL2(set_qual_B_min_max, low, high);
          break;
        default:
          CALL2(set_qAE_RGB_min_max, low, high);
          break;
      }
      break;
    }
    case 33: {
      int32_t v[6];
      for (int i = 0; i < 6; ++i) v[i] = i % 2 ? s(100, 255) : s(0, 120);
      c.each(text("set_qual_RGB_min_max(%d, %d, %d, %d, %d, %d)", v[0], v[1], v[2], v[3], v[4], v[5]),
             [&](auto& slot, int) { return slot.set_qual_RGB_min_max(v[0], v[1], v[2], v[3], v[4], v[5]); });
      break;
    }
    case 34:
    case 35: {
      const uint32_t v = random.chance(70) ? u(0, 120) : u(0, 1530);
      CALL1(set_edge_threshold, v);
      break;
    }
    case 36: {
      const uint32_t v = u(0, 1530);
      CALL1(set_edge_threshold2, v);
      break;
    }
    case 37:
    case 38: {
      const uint32_t v = u(0, 256);
      CALL1(set_nf88_edge_enhance_factor, v);
      break;
    }
    case 39: {
      const uint32_t v = u(0, 3060);
      switch (random.between(0, 3)) {
        case 0:
          CALL1(set_noise_filter_G_12T_threshold, v);
          break;
        case 1:
          CALL1(set_noise_filter_R_8T_threshold, v);
          break;
        case 2:
          CALL1(set_noise_filter_B_8T_threshold, v);
          break;
        default:
          CALL1(set_intl_3T_threshold, v);
          break;
      }
      break;
    }
    case 40:
    case 41: {
      const uint32_t v = random.chance(60) ? u(0, 40) : u(0, 255);
      CALL1(set_CFA_T0_threshold, v);
      break;
    }
    case 42:
    case 43: {
      const uint32_t v = u(0, 63);
      CALL1(set_CFA_T1_threshold, v);
      break;
    }
    case 44: {
      const uint32_t v = u(0, 512);
      CALL1(set_sat, v);
      break;
    }
    case 45: {
      const int32_t v = s(-720, 720);
      CALL1(set_hue, v);
      break;
    }
    case 46: {
      const uint32_t sat = u(0, 512);
      const int32_t hue = s(0, 360);
      CALL2(set_sat_hue, sat, hue);
      break;
    }
    case 47: {
      const uint32_t x = u(0, 127), y = random.chance(90) ? u(0, 255) : random.bits();
      CALL2(set_contrast_xy, x, y);
      break;
    }
    case 48:
    case 49: {
      const int32_t v = s(-127, 127);
      const bool both = random.chance(50);
      std::vector<std::array<uint32_t, 2>> out(size_t(c.slot_count()), {7, 7});
      c.each(text("set_contrast_c(%d)", int(v)), [&](auto& slot, int i) {
        uint32_t* to = out[size_t(i)].data();
        const int answer = slot.set_contrast_c(v, both ? to : nullptr, to + 1);
        return answer + int(2 * (out[size_t(i)][0] * 1000 + out[size_t(i)][1]));
      });
      break;
    }
    case 50: {
      const std::vector<uint8_t> t = random_table(random);
      COPY_TABLE(copy_contrast_table);
      break;
    }
    case 51: {
      const std::vector<uint8_t> t = random_table(random);
      COPY_TABLE(copy_yuv_gamma_table);
      break;
    }
    case 52:
    case 53: {
      const std::vector<uint8_t> t = random_table(random);
      COPY_TABLE(copy_rgb_gamma_table);
      break;
    }
    case 54: {
      const int32_t v = s(-32, 32);
      CALL1(set_gamma, v);
      break;
    }
    case 55:
      CALL(enable_GbGr_correction);
      break;
    case 56:
      CALL(disable_GbGr_correction);
      break;
    case 57: {
      const int32_t v = random.chance(80) ? random.between(0, 100) : s(-32768, 32767);
      CALL1(set_GbGr_correction_diff_threshold, v);
      break;
    }
    case 58:
      random_lens(c, std::max(c.reference.frame_width, 64), std::max(c.reference.frame_height, 32));
      break;
    case 59:
      CALL(enable_lens_correction);
      break;
    case 60:
      CALL(disable_lens_correction);
      break;
    case 61: {
      const std::vector<uint8_t> t = random_table(random);
      switch (random.between(0, 2)) {
        case 0:
          COPY_TABLE(copy_r_dekneel_table);
          break;
        case 1:
          COPY_TABLE(copy_g_dekneel_table);
          break;
        default:
          COPY_TABLE(copy_b_dekneel_table);
          break;
      }
      break;
    }
    case 62: {
      const uint8_t v = random.chance(70) ? 1 : uint8_t(random.bits());
      CALL1(set_mean_collection, v);
      break;
    }
    case 63: {
      const uint32_t codes[] = {0x5754, 0x5948, 0x42564F, 0x7544F4D, 0, 1};
      const uint32_t v = random.pick(codes);
      CALL1(set_sensor_type, v);
      break;
    }
    case 64:
      CALL(reset_all_controls);
      break;
    default:
      switch (random.between(0, 24)) {
        case 0:
          CALL(reset_quality);
          break;
        case 1:
          CALL(reset_mean_collection);
          break;
        case 2:
          CALL(reset_P3_only);
          break;
        case 3:
          CALL(reset_mirrors);
          break;
        case 4:
          CALL(reset_optical_black_b_gb_gr_r);
          break;
        case 5:
          CALL(reset_rgb_dekneel_table);
          break;
        case 6:
          CALL(reset_rgb_delta);
          break;
        case 7:
          CALL(reset_rgb_gain);
          break;
        case 8:
          CALL(reset_quals_rgb_gain);
          break;
        case 9:
          CALL(reset_sensor_matrix);
          break;
        case 10:
          CALL(reset_sensor_matrix_index_upper_bound);
          break;
        case 11:
          CALL(reset_medium_filter);
          break;
        case 12:
          CALL(reset_qual_min_max);
          break;
        case 13:
          CALL(reset_qAE_min_max);
          break;
        case 14:
          CALL(reset_edge_threshold);
          break;
        case 15:
          CALL(reset_edge_threshold2);
          break;
        case 16:
          CALL(reset_nf88_edge_enhance_factor);
          break;
        case 17:
          CALL(reset_noise_filter_G_12T_threshold);
          break;
        case 18:
          CALL(reset_CFA_T0_threshold);
          break;
        case 19:
          CALL(reset_CFA_T1_threshold);
          break;
        case 20:
          CALL(reset_sat_hue);
          break;
        case 21:
          CALL(reset_contrast);
          break;
        case 22:
          CALL(reset_gamma);
          break;
        case 23:
          CALL(reset_GbGr_correction);
          break;
        default:
          CALL(reset_lens_correction);
          break;
      }
  }
}

void random_controls(test_case& c, int most) {
  const int n = c.random.between(0, most);
  for (int i = 0; i < n; ++i) random_control(c, c.random.between(0, kControls - 1));
}

void set_mirrors(test_case& c) {
  random_source& random = c.random;
  if (random.chance(40)) {
    const uint8_t v = random.chance(50) ? uint8_t(random.chance(90) ? 1 : random.bits()) : 0;
    CALL1(set_h_mirror, v);
  }
  if (random.chance(40)) {
    const uint8_t v = random.chance(50) ? uint8_t(random.chance(90) ? 1 : random.bits()) : 0;
    CALL1(set_v_mirror, v);
  }
}

void set_decimation(test_case& c, bool lines) {
  random_source& random = c.random;
  constexpr int choices[] = {0, 0, 0, -1, -1, -1, 1, 1, 1, 2};
  const int32_t d = random.chance(97) ? random.pick(choices) : random.between(-3, 3);
  int32_t top = 0, bottom = 0;
  if (lines && random.chance(15)) {
    top = random.between(0, 12);
    bottom = random.between(0, 12);
    if (random.chance(15)) top = random.between(-12, 12);
  }
  CALL3(set_decimation, d, top, bottom);
}

// ---- frames ----

struct frame_size {
  int width, height, stride;
};

frame_size random_size(random_source& random) {
  constexpr int tiles[] = {1, 2, 2, 2, 3, 4, 4, 4, 5, 6, 6, 7, 8, 8, 8, 9, 10, 12, 14, 16, 18, 20};
  int T = random.pick(tiles), N = random.between(1, 20);
  if (random.chance(8)) {
    T = random.between(21, 126);
    N = random.between(1, 8);
  }
  if (random.chance(2)) N = random.between(20, 90);
  const int width = 16 * T;
  int stride = width;
  if (random.chance(40)) stride += random.chance(50) ? 16 * random.between(1, 4) : random.between(1, 70);
  if (stride > 2048) stride = width;
  return {width, 2 * N, stride};
}

std::vector<uint8_t> random_scene(random_source& random, const frame_size& f) {
  std::vector<uint8_t> scene(size_t(f.stride) * size_t(f.height));
  const int kind = random.between(0, 6);
  const int slope_x = random.between(0, 5), slope_y = random.between(0, 5), base = random.between(0, 200);
  const int edge = random.between(4, 40), step = random.between(0, 200), noise = random.between(1, 40);
  const int hot = random.between(0, 60);
  const int site[4] = {random.between(0, 255), random.between(0, 255), random.between(0, 255),
                       random.between(0, 255)};
  for (int r = 0; r < f.height; ++r)
    for (int col = 0; col < f.stride; ++col) {
      int v = 0;
      const uint32_t n = random.bits();
      switch (kind) {
        case 0:
          v = int(n & 255);
          break;
        case 1:
          v = base + ((slope_x * col + slope_y * r) >> 1) + int(n % uint32_t(noise));
          break;
        case 2:
          v = base + step * (((col + slope_x * r) / edge) % 2) + int(n % 4);
          break;
        case 3:
          v = n & 1 ? 255 : 0;
          break;
        case 4:
          v = site[2 * (r % 2) + col % 2] + int(n % uint32_t(noise));
          break;
        case 5:
          v = base + int(n % 3);
          break;
        default:
          v = 128 + ((slope_x * (col / 8)) ^ (slope_y * (r / 4))) + site[2 * (r % 2) + col % 2] / 8;
          break;
      }
      if (hot > 0 && (n >> 8) % 64 < uint32_t(hot) / 20) v = (n >> 16) & 1 ? 255 : 0;
      scene[size_t(r) * size_t(f.stride) + size_t(col)] = uint8_t(std::clamp(v, 0, 255));
    }
  return scene;
}

enum class buffer_role { source, destination, scratch };

// The same place in every slot's arena: at one end of it, with an address of the wanted remainder modulo 64.
struct placed_buffer {
  buffer_role role;
  size_t size, offset;
  bool at_end;

  view of(int slot) const {
    slot_memory& m = memory_of(slot);
    const guarded& g = (role == buffer_role::source        ? m.source
                        : role == buffer_role::destination ? m.destination
                                                           : m.scratch)
                           .memory;
    uint8_t* data = g.place(size, offset, at_end);
    constexpr size_t fence = 2048;
    if (at_end) return {data, data - fence, size_t(g.end() - data) + fence};
    return {data, g.begin(), size_t(data - g.begin()) + size + fence};
  }
  void fill(int slots, const std::vector<uint8_t>& content) const {
    for (int i = 0; i < slots; ++i) {
      const view v = of(i);
      std::memset(v.window, 0xA5, v.window_size);
      if (!content.empty()) std::memcpy(v.data, content.data(), content.size());
    }
  }
  // What it was filled with.
  std::vector<uint8_t> fill_random(int slots, uint32_t seed) const {
    std::vector<uint8_t> content(size);
    std::minstd_rand noise(seed);
    for (uint8_t& b : content) b = uint8_t(noise() >> 8);
    fill(slots, content);
    return content;
  }
};

// Offsets modulo 64 of a buffer: fit for a frame call nearly always.
size_t random_offset(random_source& random, int misaligned_percent) {
  if (random.chance(misaligned_percent)) {
    constexpr size_t bad[] = {8, 24, 4, 1, 12};
    return random.pick(bad);
  }
  return 16 * size_t(random.between(0, 3));
}

constexpr size_t kLargest = size_t(36) << 20;

size_t bytes_of(format kind, int32_t width, int32_t height) {
  return size_t(ref::frame_bytes(kind, width, height));
}
size_t output_bytes(format kind, const ref::state& s) {
  return bytes_of(kind, s.out_width, s.out_height);
}

// One frame more if the reference wrote a picture over what was there and all of it was compared.
void count_frame(const placed_buffer& destination, const std::vector<uint8_t>& before, bool compared) {
  if (compared && std::memcmp(destination.of(0).data, before.data(), before.size()) != 0)
    ++compare::frames_compared;
}

// Which of a call's buffers are null.
struct nulls {
  bool source = false, destination = false, scratch = false;
};
uint8_t* handed_over(const placed_buffer& buffer, int slot, bool null) {
  return null ? nullptr : buffer.of(slot).data;
}

// One frame call and everything that can be seen of it. Sizes outside the exact ones are `open`: only what must not
// be touched, the answer and the count are looked at.
void one_frame(test_case& c, format kind, const frame_size& f, int misaligned_percent, bool open,
               nulls null = {}) {
  random_source& random = c.random;
  ref::state after = c.reference;
  const bool accepted =
      (f.width == after.frame_width && f.height == after.frame_height && f.stride == after.frame_stride) ||
      after.new_frame_size(uint32_t(f.width), uint32_t(f.height), uint32_t(f.stride));
  const size_t output = accepted ? output_bytes(kind, after) : 0;
  if (output > kLargest) return;
  const std::vector<uint8_t> scene = accepted ? random_scene(random, f) : std::vector<uint8_t>();
  const placed_buffer source{buffer_role::source, scene.size(), random_offset(random, misaligned_percent),
                             random.chance(50)};
  const placed_buffer destination{buffer_role::destination, output, random_offset(random, misaligned_percent),
                                  random.chance(50)};
  source.fill(c.slot_count(), scene);
  const std::vector<uint8_t> before = destination.fill_random(c.slot_count(), random.bits());
  const bool skip_picture = open || ref::picture_is_open(after, kind);
  c.each(text("%s frame, quality %d, %d x %d, stride %d, %ssource +%d, %sdestination +%d",
              slots::kFormatNames[int(kind)], int(c.reference.quality), f.width, f.height, f.stride,
              null.source ? "null " : "", int(source.offset), null.destination ? "null " : "",
              int(destination.offset)),
         [&](auto& slot, int i) {
           return slot.process_frame(kind, handed_over(source, i, null.source),
                                     handed_over(destination, i, null.destination), uint32_t(f.width),
                                     uint32_t(f.height), uint32_t(f.stride));
         });
  c.compare_windows(
      "source", [&](int i) { return source.of(i); }, 0, open ? source.size : 0);
  c.compare_windows(
      "destination", [&](int i) { return destination.of(i); }, 0, skip_picture ? output : 0,
      &ref::open_bytes());
  count_frame(destination, before, !skip_picture);
  c.compare_figures(!open);
}

void set_quality(test_case& c, uint32_t quality) {
  CALL1(set_quality, quality);
}

// ---- families of cases ----

void quality_case(test_case& c, uint32_t quality, format kind) {
  random_source& random = c.random;
  random_controls(c, random.chance(50) ? 4 : 14);
  frame_size f = random_size(random);
  const int frames = random.between(1, 3);
  for (int i = 0; i < frames && !c.failed; ++i) {
    if (i > 0) random_controls(c, 2);
    set_mirrors(c);
    if (random.chance(75)) set_decimation(c, true);
    if (i > 0 && random.chance(40)) f = random_size(random);
    if (quality <= 2 && random.chance(50)) {
      if (random.chance(60)) {
        CALL(enable_medium_filter);
      } else {
        CALL(disable_medium_filter);
      }
    }
    if (i + 1 < frames && random.chance(25)) {
      set_quality(c, random.pick(kQualities));
      one_frame(c, format(random.between(0, PPL_FORMATS - 1)), f, 0, false);
    }
    set_quality(c, quality);
    one_frame(c, kind, f, 1, false);
  }
}

// Every width that is whole tiles, one a seed: rings, pads and scratch rows are placed by it. A few rows of each
// quality, with the medium filter in every second round of widths.
constexpr int kWidths = 2016 / 16;
void width_case(test_case& c, uint64_t seed) {
  random_source& random = c.random;
  const int turn = int((seed - 1) % (2 * kWidths)), width = 16 * (turn % kWidths + 1);
  if (turn >= kWidths) CALL(enable_medium_filter);
  for (const uint32_t quality : kQualities) {
    if (c.failed) return;
    set_mirrors(c);
    if (random.chance(50)) set_decimation(c, false);
    set_quality(c, quality);
    one_frame(c, random.chance(50) ? format::i420 : format(random.between(1, 4)), {width, 16, width}, 0,
              false);
  }
}

// Everything in turn on one slot: leftovers, scales and the mark pass from frame to frame.
void sequence_case(test_case& c) {
  random_source& random = c.random;
  random_controls(c, 8);
  frame_size f = random_size(random);
  const int frames = random.between(3, 10);
  for (int i = 0; i < frames && !c.failed; ++i) {
    random_controls(c, 3);
    set_mirrors(c);
    if (random.chance(40)) set_decimation(c, true);
    if (random.chance(5)) {
      c.each("reset_decimation", [&](auto& slot, int) {
        slot.reset_decimation();
        return 1;
      });
    }
    if (random.chance(40)) f = random_size(random);
    if (random.chance(3)) {
      const uint8_t v = uint8_t(random.between(0, 2));
      CALL1(set_P3_only, v);
    }
    if (random.chance(2)) c.reclaim();
    if (random.chance(80))
      set_quality(c, random.chance(85) ? random.pick(kQualities) : uint32_t(random.between(0, 16)));
    if (random.chance(3)) {
      const uint32_t width = uint32_t(random.between(2030, 2050)), height = uint32_t(random.between(2, 2060));
      CALL3(new_frame_size, width, height, width);
      continue;
    }
    frame_size now = f;
    if (random.chance(2)) now.stride = now.width - random.between(1, now.width);
    if (random.chance(2)) now.width = now.stride = random.between(2037, 2100);
    one_frame(c, format(random.between(0, PPL_FORMATS - 1)), now, 4, false);
  }
}

// The raw path at sizes that show the mark, that are no whole steps and that are tiny.
void raw_case(test_case& c, format kind) {
  random_source& random = c.random;
  constexpr int widths[] = {160, 320, 160, 32, 64, 48, 16, 96};
  frame_size f{random.pick(widths), 2 * random.between(1, 30), 0};
  if (random.chance(20)) f.width = random.between(1, 200);
  if (random.chance(20)) f.height = random.between(1, 40);
  f.stride = f.width + (random.chance(30) ? random.between(1, 40) : 0);
  const bool exact = f.width % 16 == 0 && f.height % 2 == 0;
  // Now and then long enough for the mark to come back to its first place.
  const bool round = kind == format::i420 && exact && random.chance(5);
  if (round) f.width = f.stride = 160;
  const int frames = round ? 35 : random.between(1, 4);
  for (int i = 0; i < frames && !c.failed; ++i) {
    set_mirrors(c);
    if (!round && random.chance(60)) set_decimation(c, true);
    set_quality(c, random.chance(50) ? 4 : 9);
    one_frame(c, kind, f, 2, !exact);
    if (!exact) break;
  }
}

// Qualities that are only counted, in this format or in all.
void counted_case(test_case& c) {
  random_source& random = c.random;
  const frame_size f = random_size(random);
  for (int i = 0; i < 3 && !c.failed; ++i) {
    random_controls(c, 2);
    set_decimation(c, true);
    set_quality(c, random.chance(40) ? random.pick(kQualities) : random.pick(support::kCounted.number));
    one_frame(c, random.chance(50) ? format::rgb32 : format(random.between(0, PPL_FORMATS - 1)), f, 5, false);
  }
}

// Black lines of every count, odd and negative ones too, and the size changes that lose them.
void black_lines_case(test_case& c) {
  random_source& random = c.random;
  frame_size f = random_size(random);
  random_controls(c, 2);
  for (int i = 0; i < 4 && !c.failed; ++i) {
    set_mirrors(c);
    if (random.chance(80)) {
      const int32_t d = random.between(-1, 2), reach = random.chance(70) ? 8 : 2 * f.height + 4;
      const int32_t top = random.between(-reach, reach),
                    bottom = random.chance(50) ? 0 : random.between(-reach, reach);
      CALL3(set_decimation, d, top, bottom);
    }
    if (random.chance(30)) f = random_size(random);
    set_quality(c, random.chance(90) ? random.pick(kQualities) : 4);
    one_frame(c, format(random.between(0, PPL_FORMATS - 1)), f, 0, false);
  }
}

// Line counts far beyond any frame, whose sums and products wrap: the frame may come out of no height, of a height that
// is negative or of one whose pixels wrap to a small number.
int32_t absurd_count(random_source& random) {
  constexpr int32_t far[] = {INT32_MAX, INT32_MIN, 1 << 30,    -(1 << 30),
                             1 << 27,   1 << 26,   -(1 << 28), 1 << 22};
  return random.chance(25) ? int32_t(random.bits())
                           : int32_t(uint32_t(random.pick(far)) + uint32_t(random.between(-24, 24)));
}
void absurd_lines_case(test_case& c) {
  random_source& random = c.random;
  frame_size f = random_size(random);
  if (random.chance(40)) f.width = f.stride = 160 * random.between(1, 2);
  random_controls(c, 2);
  set_quality(c, 2);
  one_frame(c, format::i420, f, 0, false);
  for (int i = 0; i < 6 && !c.failed; ++i) {
    set_mirrors(c);
    const int32_t d = random.between(-1, 2);
    int32_t top = absurd_count(random), bottom = random.chance(50) ? 0 : absurd_count(random);
    // Heights about zero: what is left of the frame is a row or two, or less than none.
    if (random.chance(30)) {
      bottom = -(d < 0 ? f.height << 1 : f.height >> d) + random.between(-3, 3);
      top = random.chance(50) ? 0 : int32_t(uint32_t(bottom) - uint32_t(random.between(0, 9)));
    }
    CALL3(set_decimation, d, top, bottom);
    set_quality(c, random.chance(70) ? random.pick(kQualities) : 4);
    one_frame(c, format(random.between(0, PPL_FORMATS - 1)), f, 0, false);
  }
}

// Small frames of qualities 10 and 11, whose last flat colours stay for later frames of 0 and 1 on the slot.
void leftovers_case(test_case& c) {
  random_source& random = c.random;
  random_controls(c, 2);
  for (int i = 0; i < 5 && !c.failed; ++i) {
    frame_size f{16 * random.between(1, 8), 2 * random.between(1, 5), 0};
    f.stride = f.width + (random.chance(20) ? 16 : 0);
    if (random.chance(50)) {
      const uint32_t v = random.chance(60) ? 255u : uint32_t(random.between(0, 255));
      CALL1(set_CFA_T0_threshold, v);
    }
    if (random.chance(30)) {
      CALL(enable_medium_filter);
    } else {
      CALL(disable_medium_filter);
    }
    set_mirrors(c);
    if (random.chance(30)) set_decimation(c, false);
    constexpr uint32_t qualities[] = {10, 11, 0, 1, 0};
    set_quality(c, i == 0 ? qualities[random.between(0, 1)] : random.pick(qualities));
    one_frame(c, format(random.between(0, PPL_FORMATS - 1)), f, 0, false);
  }
}

// Sizes that no picture is promised for: the buffers, the count and the answer are.
void safety_case(test_case& c) {
  random_source& random = c.random;
  random_controls(c, 6);
  set_mirrors(c);
  set_decimation(c, true);
  frame_size f{random.between(0, 130), random.between(0, 50), 0};
  if (random.chance(20)) f.width = random.between(0, 20);
  if (random.chance(20)) f.height = random.between(0, 4);
  if (random.chance(3)) f.width = random.between(1900, 2036);
  f.stride = std::min(f.width + (random.chance(40) ? random.between(1, 70) : 0), 2048);
  if (random.chance(10)) f.stride = random.between(0, f.stride);
  const bool exact = f.width % 16 == 0 && f.height % 2 == 0;
  set_quality(c, random.chance(90) ? random.pick(kQualities) : 4);
  one_frame(c, format(random.between(0, PPL_FORMATS - 1)), f, 3, !exact);
}

void wrapper_case(test_case& c, format kind, bool with_nulls = false) {
  random_source& random = c.random;
  random_controls(c, 4);
  for (int frame = 0; frame < 3 && !c.failed; ++frame) {
    set_mirrors(c);
    if (random.chance(70)) set_quality(c, random.pick(kQualities));
    if (random.chance(25)) set_decimation(c, true);
    const ending name = ending(random.between(0, 4));
    frame_size f = random_size(random);
    const int factor = name == ending::intp_1_2_stride ? 2 : name == ending::intp_1_4_stride ? 4 : 1;
    if (f.width > 500) f.width = 32 * random.between(1, 15);
    f.stride = factor * f.width;

    ref::state after = c.reference;
    constexpr int32_t decimations[] = {0, 1, -1, -1, -2};
    const size_t source_offset = random_offset(random, 12), destination_offset = random_offset(random, 12);
    size_t output = 0;
    const std::vector<uint8_t> scene = [&] {
      std::vector<uint8_t> s = random_scene(random, f);
      if (s.size() < 4 * size_t(f.width) * size_t(f.height))  // what a last-resort picture copies
        if (source_offset % 8 || destination_offset % 8)
          s.resize(4 * size_t(f.width) * size_t(f.height), uint8_t(random.bits()));
      return s;
    }();
    if (source_offset % 8 || destination_offset % 8) {
      const size_t wh = size_t(f.width) * size_t(f.height);
      const size_t n = name == ending::none ? wh : name == ending::deci_2_1 ? wh >> 2 : 4 * wh;
      output = kind == format::rgb24 ? 3 * n : kind == format::rgb32 ? 4 * n : n + (n >> 1);
    } else {
      after.set_decimation(decimations[int(name)], 0, 0);
      if (f.width != after.frame_width || f.height != after.frame_height || f.stride != after.frame_stride)
        after.new_frame_size(uint32_t(f.width), uint32_t(f.height), uint32_t(f.stride));
      output = output_bytes(kind, after);
    }
    if (output > kLargest) return;
    const placed_buffer source{buffer_role::source, scene.size(), source_offset, random.chance(50)};
    const placed_buffer destination{buffer_role::destination, output, destination_offset, random.chance(50)};
    source.fill(c.slot_count(), scene);
    const std::vector<uint8_t> before = destination.fill_random(c.slot_count(), random.bits());
    nulls null;
    if (with_nulls) {
      null.source = source_offset % 16 == 0 && random.chance(50);
      null.destination = destination_offset % 16 == 0 && random.chance(50);
    }
    c.each(text("BaylorTo%sMMX%s, quality %d, %d x %d, %ssource +%d, %sdestination +%d",
                slots::kFormatNames[int(kind)], support::kWrapperEndings[int(name)], int(c.reference.quality),
                f.width, f.height, null.source ? "null " : "", int(source_offset),
                null.destination ? "null " : "", int(destination_offset)),
           [&](auto& slot, int i) {
             return slot.wrapper(kind, name, handed_over(source, i, null.source),
                                 handed_over(destination, i, null.destination), uint32_t(f.width),
                                 uint32_t(f.height));
           });
    c.compare_windows(
        "source", [&](int i) { return source.of(i); }, 0, 0);
    c.compare_windows(
        "destination", [&](int i) { return destination.of(i); }, 0,
        ref::picture_is_open(after, kind) ? output : 0);
    count_frame(destination, before, !ref::picture_is_open(after, kind));
    c.compare_figures(true);
  }
}

void scaled_case(test_case& c, bool with_nulls = false) {
  random_source& random = c.random;
  random_controls(c, 3);
  const format kind = random.chance(90) ? format(random.between(0, 2)) : format(random.between(3, 4));
  for (int frame = 0; frame < 2 && !c.failed; ++frame) {
    set_mirrors(c);
    if (random.chance(20)) set_decimation(c, true);
    set_quality(c, random.chance(60) ? 2 : random.chance(80) ? random.pick(kQualities) : 4);
    const frame_size f = random_size(random);
    int ow = 32 * random.between(1, 12), oh = 2 * random.between(1, 60);
    if (random.chance(15)) ow = f.width;
    if (random.chance(15)) oh = f.height;
    if (random.chance(40)) ow = random.between(1, 300);
    if (random.chance(20)) oh = random.between(1, 90);
    if (random.chance(4)) ow = random.between(12000, 30000);
    if (random.chance(3)) ow = 0;
    if (random.chance(3)) oh = 0;
    // One position that the horizontal pass of a packed row does not make.
    if (kind == format::yuyv && ow % 32 == 1) ++ow;
    if (ow > 2000) oh = std::min(oh, 20);
    const size_t source_offset = random_offset(random, 4), destination_offset = random_offset(random, 4),
                 scratch_offset = random_offset(random, 4);

    ref::state after = c.reference;
    after.set_decimation(0, 0, 0);
    if (f.width != after.frame_width || f.height != after.frame_height || f.stride != after.frame_stride)
      after.new_frame_size(uint32_t(f.width), uint32_t(f.height), uint32_t(f.stride));
    std::vector<uint8_t> scene = random_scene(random, f);
    const int64_t n = int64_t(ow) * oh;
    const bool last_resort = source_offset % 8 || destination_offset % 8;
    size_t output = bytes_of(kind, ow, oh);
    if (last_resort && kind <= format::uyvy) {
      output = size_t(n + (n >> 1));
      if (scene.size() < size_t(n)) scene.resize(size_t(n), uint8_t(random.bits()));
    }
    const size_t scratch_size = output_bytes(kind, after) + (kind == format::yuyv ? 4 : 0);
    const placed_buffer source{buffer_role::source, scene.size(), source_offset, random.chance(50)};
    const placed_buffer destination{buffer_role::destination, output, destination_offset, random.chance(50)};
    const placed_buffer scratch{buffer_role::scratch, scratch_size, scratch_offset, random.chance(50)};
    source.fill(c.slot_count(), scene);
    const std::vector<uint8_t> before = destination.fill_random(c.slot_count(), random.bits());
    scratch.fill_random(c.slot_count(), random.bits());
    nulls null;
    if (with_nulls) {
      null.source = source_offset % 16 == 0 && random.chance(35);
      null.destination = destination_offset % 16 == 0 && random.chance(35);
      null.scratch = scratch_offset % 16 == 0 && random.chance(35);
    }
    c.each(text("BaylorTo%sMMX_scaling_stride, quality %d, %d x %d, stride %d, to %d x %d, offsets %d %d "
                "%d%s%s%s",
                slots::kFormatNames[int(kind)], int(c.reference.quality), f.width, f.height, f.stride, ow, oh,
                int(source_offset), int(destination_offset), int(scratch_offset),
                null.source ? ", source null" : "", null.destination ? ", destination null" : "",
                null.scratch ? ", scratch null" : ""),
           [&](auto& slot, int i) {
             return slot.scaling_wrapper(kind, handed_over(source, i, null.source), uint32_t(f.width),
                                         uint32_t(f.height), uint32_t(f.stride),
                                         handed_over(destination, i, null.destination), uint32_t(ow),
                                         uint32_t(oh), handed_over(scratch, i, null.scratch));
           });
    const bool open = ref::picture_is_open(after, kind);
    c.compare_windows(
        "source", [&](int i) { return source.of(i); }, 0, 0);
    c.compare_windows(
        "scratch", [&](int i) { return scratch.of(i); }, 0, open ? scratch_size : 0);
    c.compare_windows(
        "destination", [&](int i) { return destination.of(i); }, 0, open ? output : 0);
    count_frame(destination, before, !open);
    c.compare_figures(true);
  }
}

// Null for a source, a destination or a scratch, in every kind of call.
void null_case(test_case& c) {
  random_source& random = c.random;
  random_controls(c, 3);
  if (random.chance(50)) {  // statistics, a scale and a mark for the counted frames to keep
    set_quality(c, random.chance(50) ? 15 : 4);
    one_frame(c, format::i420, {160, 24, 160}, 0, false);
  }
  switch (random.between(0, 3)) {
    case 0:
      wrapper_case(c, format(random.between(0, PPL_FORMATS - 1)), true);
      return;
    case 1:
      scaled_case(c, true);
      return;
    default:
      break;
  }
  const frame_size f = random.chance(30) ? frame_size{320, 24, 320} : random_size(random);
  for (int i = 0; i < 4 && !c.failed; ++i) {
    set_mirrors(c);
    if (random.chance(75)) set_decimation(c, true);
    if (random.chance(10)) {
      const uint8_t v = uint8_t(random.between(0, 1));
      CALL1(set_P3_only, v);
    }
    constexpr uint32_t others[] = {4, 9, 4, 5};
    set_quality(c, random.chance(60) ? random.pick(kQualities) : random.pick(others));
    one_frame(c, format(random.between(0, PPL_FORMATS - 1)), f, 10, false,
              {random.chance(50), random.chance(50), false});
  }
}

void controls_case(test_case& c) {
  random_source& random = c.random;
  const int n = random.between(10, 60);
  for (int i = 0; i < n && !c.failed; ++i) {
    random_control(c, random.between(0, kControls - 1));
    if (random.chance(10)) set_decimation(c, true);
    if (random.chance(5)) {
      const uint32_t w = uint32_t(random.between(0, 2100)), h = uint32_t(random.between(0, 2100)),
                     stride = random.chance(80) ? w : uint32_t(random.between(0, 2100));
      CALL3(new_frame_size, w, h, stride);
    }
    if (random.chance(5)) {
      constexpr uint32_t sizes[][2] = {{320, 240}, {160, 120}, {480, 480},  {480, 576},
                                       {640, 480}, {352, 288}, {1280, 960}, {704, 480},
                                       {704, 576}, {176, 144}, {720, 480},  {1280, 1024}};
      const auto& in = sizes[random.bits() % 12];
      const auto& out = sizes[random.bits() % 12];
      const uint32_t lines = random.chance(50) ? 0 : uint32_t(random.between(0, 100));
      const uint8_t validate = random.chance(85) ? 1 : 0;
      c.each(text("new_frame_sizes(%d, %d, %d, %d, %d)", int(in[0]), int(in[1]), int(out[0]),
                  int(out[1] + lines), int(validate)),
             [&](auto& slot, int) {
               return slot.new_frame_sizes(in[0], in[1], out[0], out[1] + lines, validate);
             });
    }
    if (random.chance(2)) c.reclaim();
    c.compare_figures(true);
    if (random.chance(4)) c.replace_gamma_tables();
  }
  c.restore_gamma_tables();
}

// A family of cases that `run` makes.
family cases_of(const std::string& name, int cases, const std::function<void(test_case&)>& run) {
  return {name, cases, [run](uint64_t seed) {
            test_case c(seed);
            run(c);
            return c.failed ? c.log() : std::vector<std::string>();
          }};
}

std::vector<family> families() {
  std::vector<family> all;
  for (uint32_t quality : kQualities)
    for (int kind = 0; kind < PPL_FORMATS; ++kind) {
      if (ppl_quality_table[quality].runs[kind] == 0) continue;  // in `counted`
      all.push_back(cases_of("quality_" + std::to_string(quality) + "_" + slots::kFormatNames[kind], 250,
                             [=](test_case& c) { quality_case(c, quality, format(kind)); }));
    }
  for (int kind = 0; kind < PPL_FORMATS; ++kind) {
    all.push_back(cases_of(std::string("raw_") + slots::kFormatNames[kind], 250,
                           [=](test_case& c) { raw_case(c, format(kind)); }));
    all.push_back(cases_of(std::string("wrappers_") + slots::kFormatNames[kind], 150,
                           [=](test_case& c) { wrapper_case(c, format(kind)); }));
  }
  all.push_back(cases_of("counted", 200, counted_case));
  all.push_back(cases_of("sequences", 400, sequence_case));
  all.push_back({"widths", 2 * kWidths, [](uint64_t seed) {
                   test_case c(seed);
                   width_case(c, seed);
                   return c.failed ? c.log() : std::vector<std::string>();
                 }});
  all.push_back(cases_of("scaled", 400, [](test_case& c) { scaled_case(c); }));
  all.push_back(cases_of("black_lines", 400, black_lines_case));
  all.push_back(cases_of("leftovers", 300, leftovers_case));
  all.push_back(cases_of("absurd_lines", 400, absurd_lines_case));
  all.push_back(cases_of("nulls", 400, null_case));
  all.push_back(cases_of("safety", 1500, safety_case));
  all.push_back(cases_of("controls", 300, controls_case));
  return all;
}

}  // namespace

int main(int argc, char** argv) {
  built_in_gamma();  // before a case can replace them
  return compare::run("compare_bayer", families(), argc, argv);
}
