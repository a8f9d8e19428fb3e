// The digests of digests/bayer.csv, against the plain reference or, with TEST_LIBRARY, against the library at every
// vector level.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <set>

#include "digests/csv.h"
#include "support/fenced.h"
#include "support/slots.h"
#ifdef TEST_LIBRARY
#include "support/level.h"
extern "C" void ppl_clear_pool();  // the slots as the load of the library leaves them
#endif

namespace {

using slots::format;

void draw_scene(uint8_t* to, int scene, uint32_t seed, int width, int height) {
  for (int r = 0; r < height; ++r)
    for (int c = 0; c < width; ++c) {
      const uint32_t n = support::step(seed) >> 8;
      uint32_t v = 0;
      if (scene == 0) {
        v = n & 255;
      } else if (scene == 1) {
        v = 30 + uint32_t((2 * c + 3 * r) % 170) + n % 9;
        if (r % 2 == c % 2) v += 12;
        if (n % 97 == 0) v = 255;
        if (n % 101 == 0) v = 0;
      } else {
        v = 100 + n % 5 + 30 * uint32_t((c / 24) % 2);
      }
      *to++ = uint8_t(v);
    }
}

template <typename Slot>
void set_controls_a(Slot& slot, int width, int height, std::vector<uint16_t>& lens_table) {
  slot.set_optical_black_b_gb_gr_r(9u, 11u, 10u, 8u);
  slot.set_rgb_gain(397u, 256u, 346u);
  slot.set_rgb_delta(3, 2, 5);
  slot.enable_GbGr_correction();
  slot.set_GbGr_correction_diff_threshold(14);
  slot.set_contrast_c(20, static_cast<uint32_t*>(nullptr), static_cast<uint32_t*>(nullptr));
  slot.set_sat_hue(300u, 20);
  slot.set_edge_threshold(30u);
  slot.set_edge_threshold2(700u);
  slot.set_nf88_edge_enhance_factor(64u);
  slot.set_CFA_T0_threshold(18u);
  slot.set_CFA_T1_threshold(20u);
  slot.set_medium_filter_diff_threshold(40);
  slot.set_medium_filter_hot_pixel_threshold(200);
  slot.set_medium_filter_dead_pixel_threshold(24);
  slot.set_qual_BmGb_min_max(-60, 70);
  slot.set_qual_GrmR_min_max(-80, 50);
  slot.set_qual_BmGb_p_GrmR_min_max(-90, 100);
  slot.set_qual_BmGb_m_GrmR_min_max(-110, 90);
  slot.set_qual_RGB_min_max(10, 240, 12, 230, 14, 220);
  slot.set_qAE_RGB_min_max(20, 200);
  lens_table.assign(size_t(height / 2 + 1) * size_t(width), 0);
  slot.set_lens_correction(width, height, width / 2, height / 2, lens_table.data(),
                           2 * width * (height / 2 + 1), 48, 24, 16, 44);
  slot.enable_lens_correction();
}

struct outcome {
  std::string result, output, source, statistics;
  bool operator==(const outcome&) const = default;
};
void PrintTo(const outcome& o, std::ostream* out) {
  *out << "result " << o.result << " output " << o.output << " source " << o.source << " statistics "
       << o.statistics;
}

std::string hex(const support::digest& d) {
  char text[17];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(d.value));
  return text;
}

size_t output_bytes(format kind, size_t n) {
  constexpr size_t per_pixel[] = {0, 2, 2, 3, 4};
  return kind == format::i420 ? n + 2 * (n / 4) : per_pixel[int(kind)] * n;
}

template <typename Slot>
outcome run(Slot& slot, const csv::row& row) {
  const auto number = [&](const char* name) { return std::stoi(row.at(name)); };
  const int width = number("width"), height = number("height"), d = number("decimation");
  const format kind =
      format(std::find(std::begin(slots::kFormatNames), std::end(slots::kFormatNames), row.at("format")) -
             std::begin(slots::kFormatNames));
  std::vector<uint16_t> lens_table;
  if (row.at("controls") == "A") set_controls_a(slot, width, height, lens_table);
  slot.set_h_mirror(uint8_t(number("h_mirror")));
  slot.set_v_mirror(uint8_t(number("v_mirror")));
  slot.set_decimation(d, 0, 0);

  const size_t in = size_t(width) * size_t(height);
  const size_t pixels = d < 0 ? 4 * in : size_t(width >> d) * size_t(height >> d);
  support::fenced source(in), destination(output_bytes(kind, pixels));
  const uint32_t w = uint32_t(width), h = uint32_t(height);
  if (number("before") >= 0) {
    slot.set_quality(uint32_t(number("before")));
    draw_scene(source.data(), 2, 77, width, height);
    support::fenced earlier(output_bytes(format::i420, pixels));
    slot.process_frame(format::i420, source.data(), earlier.data(), w, h, w);
  }
  slot.set_quality(uint32_t(number("quality")));
  if (number("medium")) slot.enable_medium_filter();
  draw_scene(source.data(), number("scene"), 12345, width, height);
  destination.fill_noise(99);

  outcome got;
  got.result = slot.process_frame(kind, source.data(), destination.data(), w, h, w) ? "1" : "0";
  support::digest output, source_after, figures;
  output.bytes(destination.data(), destination.size());
  source_after.bytes(source.data(), source.size());
  for (const slots::figure& f : slots::statistics(slot))
    for (uint32_t word : f.words) figures.word(word);
  got.output = hex(output);
  got.source = hex(source_after);
  got.statistics = hex(figures);
  return got;
}

std::string label(const csv::row& row) {
  std::string text;
  for (const char* name : {"format", "quality", "medium", "decimation", "h_mirror", "v_mirror", "controls",
                           "width", "height", "scene", "before"})
    text += std::string(name) + " " + row.at(name) + "  ";
  return text;
}

const std::vector<csv::row>& all_rows() {
  static const std::vector<csv::row> rows = csv::read_csv(PPL_TEST_DIGESTS "/bayer.csv");
  return rows;
}

// One test a format and quality, so that a failure says where it is.
class bayer_digest_rows : public testing::TestWithParam<std::pair<std::string, std::string>> {
 protected:
  std::vector<csv::row> rows() const {
    std::vector<csv::row> mine;
    for (const csv::row& r : all_rows())
      if (r.at("format") == GetParam().first && r.at("quality") == GetParam().second) mine.push_back(r);
    return mine;
  }
  static outcome expected(const csv::row& r) {
    return {r.at("result"), r.at("output"), r.at("source"), r.at("statistics")};
  }
};

TEST(bayer_digests, all_rows_are_there) {
  EXPECT_EQ(all_rows().size(), 1571u);
}

#ifndef TEST_LIBRARY
TEST_P(bayer_digest_rows, reference) {
  const std::vector<csv::row> mine = rows();
  ASSERT_FALSE(mine.empty());
  for (const csv::row& r : mine) {
    slots::reference_slot slot;
    EXPECT_EQ(run(slot, r), expected(r)) << label(r);
  }
}

#else
TEST_P(bayer_digest_rows, library) {
  const std::vector<csv::row> mine = rows();
  ASSERT_FALSE(mine.empty());
  for (int level = 0; level < ppl_test_levels(); ++level) {
    ppl_test_force_level(level);
    for (const csv::row& r : mine) {
      ppl_clear_pool();  // a slot that was never used
      slots::library_slot slot{ppl_init()};
      ASSERT_NE(slot.context, nullptr);
      EXPECT_EQ(run(slot, r), expected(r)) << label(r) << "level " << level;
      ppl_free(slot.context);
    }
  }
}
#endif

std::vector<std::pair<std::string, std::string>> families() {
  std::set<std::pair<std::string, std::string>> all;
  for (const csv::row& r : all_rows()) all.emplace(r.at("format"), r.at("quality"));
  return {all.begin(), all.end()};
}

INSTANTIATE_TEST_SUITE_P(all, bayer_digest_rows, testing::ValuesIn(families()),
                         [](const auto& one) { return one.param.first + "_quality_" + one.param.second; });

}  // namespace
