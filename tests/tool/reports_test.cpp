#include <ppl.h>
#include <stdlib.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "helpers/ppl_qualities.h"
#include "run.h"

namespace {

class Compare : public Tool {};
class Stats : public Tool {};

// Twelve panels and the truth, four in a row; margins of 8, a label of 26 rows above each picture.
TEST_F(Compare, SheetHoldsEveryQuality) {
  const Result result =
      run(Arguments{"compare", sample, "--truth", truth, "-o", "sheet.png"} + sample_size + settings);
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 12);
  const Rgb sheet = png("sheet.png");
  ASSERT_EQ(sheet.width, 4 * 648u + 8);
  ASSERT_EQ(sheet.height, 4 * (480u + 26 + 8) + 8);
  const std::vector<Arguments> panels{{"13"},
                                      {"12"},
                                      {"3"},
                                      {"2"},
                                      {"2", "--medium-filter"},
                                      {"15"},
                                      {"1"},
                                      {"1", "--medium-filter"},
                                      {"0"},
                                      {"0", "--medium-filter"},
                                      {"11"},
                                      {"10"}};
  // All that make a picture, those of the medium filter both ways.
  size_t qualities = 0;
  for (const ppl_quality_row& q : ppl_quality_table)
    if (q.road == PPL_ROAD_CELLS || q.road == PPL_ROAD_WALK) qualities += q.reads_medium_filter != 0 ? 2 : 1;
  EXPECT_EQ(panels.size(), qualities);
  for (uint32_t i = 0; i <= panels.size(); ++i) {
    Rgb one = read_picture(truth);
    if (i < panels.size()) {
      ok(Arguments{"convert", sample, "-o", "a.png", "--via", "i420", "-q"} + panels[i] + sample_size +
         settings);
      one = png("a.png");
      char ratio[32];
      snprintf(ratio, sizeof ratio, "%.2f dB", psnr(one, read_picture(truth)));
      EXPECT_NE(result.out.find("quality " + std::string(panels[i][0].size() == 1 ? " " : "") + panels[i][0]),
                std::string::npos);
      EXPECT_NE(result.out.find(ratio), std::string::npos) << ratio << "\n" << result.out;
    }
    const uint32_t left = 8 + i % 4 * 648, top = 8 + i / 4 * 514;
    uint32_t white = 0;
    for (uint32_t y = 0; y < 26; ++y)
      for (uint32_t x = 0; x < 640; ++x) white += sheet.at(left + x, top + y)[1] > 200;
    EXPECT_GT(white, 50u) << "no label over panel " << i;
    for (uint32_t y = 0; y < 480; ++y)
      ASSERT_TRUE(std::equal(one.at(0, y), one.at(0, y) + 3 * 640, sheet.at(left, top + 26 + y)))
          << "panel " << i << ", row " << y;
  }
}

TEST_F(Compare, WithoutTruth) {
  const Result result = run(Arguments{"compare", sample, "-o", "sheet.png", "--columns", "6"} + sample_size);
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(png("sheet.png").width, 6 * 648u + 8);
  EXPECT_EQ(png("sheet.png").height, 2 * 514u + 8);
}

// The similarity once more, window by window.
double similarity(const Rgb& a, const Rgb& b) {
  const auto luma = [](const Rgb& picture, uint32_t x, uint32_t y) {
    const uint8_t* p = picture.at(x, y);
    return 0.299 * p[0] + 0.587 * p[1] + 0.114 * p[2];
  };
  double sum = 0;
  uint32_t windows = 0;
  for (uint32_t y = 0; y + 7 <= a.height; ++y)
    for (uint32_t x = 0; x + 7 <= a.width; ++x, ++windows) {
      double ma = 0, mb = 0, va = 0, vb = 0, v = 0;
      for (uint32_t i = 0; i < 49; ++i)
        ma += luma(a, x + i % 7, y + i / 7) / 49, mb += luma(b, x + i % 7, y + i / 7) / 49;
      for (uint32_t i = 0; i < 49; ++i) {
        const double da = luma(a, x + i % 7, y + i / 7) - ma, db = luma(b, x + i % 7, y + i / 7) - mb;
        va += da * da / 48, vb += db * db / 48, v += da * db / 48;
      }
      sum +=
          (2 * ma * mb + 6.5025) * (2 * v + 58.5225) / ((ma * ma + mb * mb + 6.5025) * (va + vb + 58.5225));
    }
  return sum / windows;
}

// One picture beside another.
TEST_F(Compare, PictureBesideAReference) {
  ok(Arguments{"convert", sample, "-o", "a.png", "-W", "128", "-H", "96", "--stride", "640", "--skip",
               "64128"});
  ok(Arguments{"convert", sample, "-o", "b.png", "-W", "128", "-H", "96", "--stride", "640", "--skip",
               "64128", "-q", "3"});
  const Result same = run({"compare", "a.png", "--truth", "a.png"});
  EXPECT_EQ(same.status, 0) << same.err;
  EXPECT_EQ(same.out, "inf dB  SSIM 1.0000\n");
  const Result other = run({"compare", "a.png", "--truth", "b.png", "--difference", "d.png"});
  EXPECT_EQ(other.status, 0) << other.err;
  const Rgb a = png("a.png"), b = png("b.png"), d = png("d.png");
  char line[64];
  snprintf(line, sizeof line, "%.2f dB  SSIM %.4f\n", psnr(a, b), similarity(a, b));
  EXPECT_EQ(other.out, line);
  for (size_t i = 0; i < a.pixels.size(); ++i)
    ASSERT_EQ(d.pixels[i], std::clamp(128 + 4 * (a.pixels[i] - b.pixels[i]), 0, 255));
  for (const Arguments& wrong :
       {Arguments{"compare", "a.png"}, Arguments{"compare", "a.png", "--difference", "d.png"},
        Arguments{"compare", "a.png", "--truth", "b.png", "--difference", "d.jpg"}})
    EXPECT_EQ(run(wrong).status, 2);
  EXPECT_EQ(run({"compare", "a.png", "--truth", truth}).status, 1);
}

TEST_F(Compare, DifferencesOfEveryQuality) {
  ok(Arguments{"convert", sample, "-o", "a.png", "-q", "13", "--via", "i420"} + sample_size + settings);
  ASSERT_EQ(run(Arguments{"compare", sample, "--truth", truth, "-o", "s.png", "--difference", "d.png"} +
                sample_size + settings)
                .status,
            0);
  const Rgb sheet = png("d.png"), a = png("a.png"), right = read_picture(truth);
  ASSERT_EQ(sheet.height, 3 * 514u + 8);
  for (uint32_t y = 0; y < 480; ++y)
    for (uint32_t x = 0; x < 640; ++x)
      for (size_t c = 0; c < 3; ++c)
        ASSERT_EQ(sheet.at(8 + x, 34 + y)[c],
                  std::clamp(128 + 4 * (a.at(x, y)[c] - right.at(x, y)[c]), 0, 255));
}

// The figures are those of the getters after the same frame.
TEST_F(Stats, JsonIsTheGetters) {
  const Result result =
      run(Arguments{"stats", sample, "--json", "--qual-bmgb", "-60,70", "--qual-grmr", "-80,50", "--qual-sum",
                    "-90,100", "--qual-diff", "-110,90", "--qual-r", "10,240", "--qual-g", "12,230",
                    "--qual-b", "14,220", "--qae", "20,200"} +
          sample_size + settings);
  ASSERT_EQ(result.status, 0) << result.err;
  const nlohmann::json j = nlohmann::json::parse(result.out);

  // A slot that no earlier frame of this program has used: statistics start from what a slot holds.
  ppl_context *used = ppl_init(), *c = ppl_init();
  ppl_set_optical_black_b_gb_gr_r(c, 12, 12, 12, 12);
  ppl_set_rgb_gain(c, 397, 256, 346);
  ppl_enable_GbGr_correction(c);
  ppl_set_qual_BmGb_min_max(c, -60, 70);
  ppl_set_qual_GrmR_min_max(c, -80, 50);
  ppl_set_qual_BmGb_p_GrmR_min_max(c, -90, 100);
  ppl_set_qual_BmGb_m_GrmR_min_max(c, -110, 90);
  ppl_set_qual_RGB_min_max(c, 10, 240, 12, 230, 14, 220);
  ppl_set_qAE_RGB_min_max(c, 20, 200);
  const size_t table_size = 241 * 640 * 2, frame_size = 640 * 480;
  auto* table = static_cast<uint16_t*>(aligned_alloc(64, table_size));
  auto* source = static_cast<uint8_t*>(aligned_alloc(64, frame_size));
  auto* frame = static_cast<uint8_t*>(aligned_alloc(64, frame_size * 3 / 2));
  ASSERT_TRUE(
      ppl_set_lens_correction(c, 640, 480, 320, 240, table, static_cast<int32_t>(table_size), 48, 24, 0, 44));
  ppl_enable_lens_correction(c);
  const Bytes raw = read_whole(sample);
  std::copy(raw.begin(), raw.end(), source);
  ASSERT_TRUE(ppl_process_blrtoi420(c, source, frame, 640, 480, 640));

  const auto is = [](const nlohmann::json& rgb, const uint32_t* want) {
    EXPECT_EQ(rgb, (nlohmann::json{want[0], want[1], want[2]}));
  };
  EXPECT_EQ(j["grid"]["means"].size(), 6u);
  EXPECT_EQ(j["grid"]["means"][5].size(), 8u);
  for (size_t cell = 0; cell < 48; ++cell)
    is(j["grid"]["means"][cell / 8][cell % 8], ppl_rgb_means_sub_windows(c) + 3 * cell);
  is(j["outside_grid"], ppl_rgb_means_outside_all_sub_windows(c));
  is(j["whole_grid"], ppl_rgb_means_all_sub_windows(c));
  is(j["whole_frame"], ppl_rgb_means_whole_frame(c));
  is(j["central_4_cells"], ppl_rgb_means_whole_frame_4pts(c));
  is(j["centre_weighted"]["4"], ppl_rgb_means_whole_frame_central4(c));
  is(j["centre_weighted"]["8"], ppl_rgb_means_whole_frame_central8(c));
  is(j["centre_weighted"]["16"], ppl_rgb_means_whole_frame_central16(c));
  is(j["exposure"]["means"], ppl_qAE_rgb_means_whole_frame(c));
  is(j["qualified"]["means"], ppl_qual_rgb_means_whole_frame(c));
  EXPECT_EQ(j["exposure"]["cells"], ppl_n_qAE_2x2_whole_frame(c));
  EXPECT_EQ(j["qualified"]["cells"], ppl_n_qual_2x2_whole_frame(c));
  EXPECT_GT(j["qualified"]["cells"], 0u);
  for (size_t bin = 0; bin < 256; ++bin) {
    EXPECT_EQ(j["histograms"]["r"][bin], ppl_r_histogram(c)[bin]);
    EXPECT_EQ(j["histograms"]["g"][bin], ppl_g_histogram(c)[bin]);
    EXPECT_EQ(j["histograms"]["b"][bin], ppl_b_histogram(c)[bin]);
  }
  ppl_free(c);
  ppl_free(used);
  free(table);
  free(source);
  free(frame);
}

// A flat mosaic with the identity tone curve is not at hand; a black one is: every mean is 0, and the table says so.
TEST_F(Stats, TableOfABlackFrame) {
  write("black.raw", Bytes(256 * 96));
  const Result result = run({"stats", "black.raw", "-W", "256", "-H", "96"});
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_NE(result.out.find("whole frame                0.0    0.0    0.0\n"), std::string::npos)
      << result.out;
  EXPECT_NE(result.out.find("248-255        0        0        0\n"), std::string::npos) << result.out;
  ok({"stats", "black.raw", "-W", "256", "-H", "96", "-o", "table.txt"});
  const Bytes file = read("table.txt");
  EXPECT_EQ(std::string(file.begin(), file.end()), result.out);
}

// Counts are estimates; the table does not tell of more cells than there are.
TEST_F(Stats, CountsStayWithinTheFrame) {
  const Result result = run(Arguments{"stats", sample} + sample_size);
  EXPECT_NE(result.out.find("exposure cells"), std::string::npos);
  for (size_t at = 0; (at = result.out.find(" of 76800 cells", at)) != std::string::npos; ++at) {
    const size_t from = result.out.rfind(' ', at - 1);
    EXPECT_LE(std::stoi(result.out.substr(from, at - from)), 76800) << result.out;
  }
  EXPECT_NE(result.out.find(" of 76800 cells"), std::string::npos) << result.out;
}

}  // namespace
