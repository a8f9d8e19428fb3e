// gains, lens and simulate from the command line; white balance and exposure of simulated frames.
#include <png.h>
#include <ppl_auto.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <sstream>

#include "run.h"

namespace {

// A light in the sensor's colours (R / G and B / G, 256 to the octave) as the picture shows it: behind the gains that
// suit daylight, through the default colour matrix.
std::array<double, 3> in_picture(double r, double b) {
  const double l[3] = {std::exp2(r / 256) * 397 / 256, 1, std::exp2(b / 256) * 346 / 256};
  static const double m[3][3] = {{389, -15, -120}, {-118, 509, -137}, {-19, -229, 503}};
  std::array<double, 3> out;
  for (size_t i = 0; i < 3; ++i) out[i] = std::max(1e-3, m[i][0] * l[0] + m[i][1] * l[1] + m[i][2] * l[2]);
  return out;
}

double angle(const std::array<double, 3>& a, const std::array<double, 3>& b) {
  double ab = 0, aa = 0, bb = 0;
  for (size_t i = 0; i < 3; ++i) ab += a[i] * b[i], aa += a[i] * a[i], bb += b[i] * b[i];
  return std::acos(std::min(1.0, ab / std::sqrt(aa * bb))) * 57.2957795;
}

class Auto : public Tool {
 protected:
  // A picture of one grey.
  void write_grey(const std::string& name, uint32_t width, uint32_t height, uint8_t value) const {
    const Bytes pixels(size_t{3} * width * height, value);
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = width;
    image.height = height;
    image.format = PNG_FORMAT_RGB;
    ASSERT_TRUE(png_image_write_to_file(&image, path(name).c_str(), 0, pixels.data(), 0, nullptr));
  }

  std::vector<int> numbers(const Result& result) const {
    EXPECT_EQ(result.status, 0) << result.err;
    std::vector<int> all;
    std::stringstream line(result.out);
    for (std::string one; std::getline(line, one, ',');) all.push_back(std::stoi(one));
    EXPECT_EQ(all.size(), 3u) << result.out;
    all.resize(3, 1);
    return all;
  }
};

// The sample's own gains are 397, 256, 346; a few degrees are let pass.
TEST_F(Auto, TheSampleIsBalanced) {
  const std::vector<int> g = numbers(run(Arguments{"gains", sample, "--black", "12"} + sample_size));
  const double r = std::log2(double(g[1]) / g[0]) * 256, b = std::log2(double(g[1]) / g[2]) * 256;
  const double right_r = std::log2(256.0 / 397) * 256, right_b = std::log2(256.0 / 346) * 256;
  EXPECT_LT(angle(in_picture(r, b), in_picture(right_r, right_b)), 5);
}

// The photograph, a red cup on brown wood, under five lights.
TEST_F(Auto, FiveLightsAreFound) {
  for (const char* kelvin : {"2850", "3800", "5000", "6500", "8000"}) {
    ok({"simulate", truth, "-o", "a.raw", "--kelvin", kelvin, "--noise", "0.5"});
    const std::vector<int> g = numbers(run(Arguments{"gains", "a.raw", "--black", "12"} + sample_size));
    // The truth: what a grey card gives in the same light.
    write_grey("grey.png", 64, 64, 200);
    ok({"simulate", "grey.png", "-o", "white.raw", "--kelvin", kelvin});
    const std::vector<int> card = numbers(
        run({"gains", "white.raw", "-W", "64", "-H", "64", "--black", "12", "--region", "4,4,50,50"}));
    const auto light = [](const std::vector<int>& gains) {
      return in_picture(std::log2(double(gains[1]) / gains[0]) * 256,
                        std::log2(double(gains[1]) / gains[2]) * 256);
    };
    EXPECT_LT(angle(light(g), light(card)), 7) << kelvin;
  }
}

TEST_F(Auto, AFlatFrameGivesTheOptionsThatFlattenIt) {
  write_grey("white.png", 640, 480, 255);
  ok({"simulate", "white.png", "-o", "flat.raw", "--shading", "0.3", "--exposure", "0.8", "--black", "0",
      "--noise", "1", "--centre", "0.52,0.47"});
  const Result options = run(Arguments{"lens", "flat.raw"} + sample_size);
  ASSERT_EQ(options.status, 0) << options.err;
  Arguments words{"convert", "flat.raw", "-o", "a.png", "--gains", "397,256,346"};
  std::stringstream line(options.out);
  for (std::string word; line >> word;) words.push_back(word);
  EXPECT_EQ(words.size(), 6u + 10u);
  ok(words + sample_size);
  const Rgb made = png("a.png");
  double least = 255, most = 0;
  for (uint32_t y = 0; y < 480; y += 32)
    for (uint32_t x = 0; x < 640; x += 32) {
      double mean = 0;
      for (uint32_t v = 0; v < 32; ++v)
        for (uint32_t u = 0; u < 32; ++u) mean += made.at(x + u, y + v)[1] / 1024.0;
      least = std::min(least, mean);
      most = std::max(most, mean);
    }
  EXPECT_LT(most - least, 2.5);
}

// Exposure and balance together, from a wrong start, on frames that the simulated sensor delivers: both come to rest,
// at the level that was wanted and the light that is there.
TEST_F(Auto, TheLoopComesToRestOnSimulatedFrames) {
  const auto frame = std::make_unique<ppl_auto_sample>();
  ppl_auto_curve curve;
  ppl_auto_daylight_curve(&curve, 397, 256, 346);
  ppl_auto_loop loop;
  ppl_auto_start(&loop, 1, 4000, 256, 1024);
  loop.delay = 0;
  loop.level = 6000;
  int still = 0, frames = 0;
  // Exposure 1000 at gain 1 is the picture as it is.
  for (; frames < 120 && still < 20; ++frames) {
    const double exposure = loop.exposure / 1000.0 * loop.gain / 256;
    std::ostringstream value;
    value << std::min(64.0, exposure);
    ok({"simulate", truth, "-o", "a.raw", "--size", "320x240", "--kelvin", "3800", "--exposure",
        value.str()});
    const Bytes raw = read("a.raw");
    ppl_auto_take_frame(frame.get(), raw.data(), 320, 240, 320, 12, 12, 12, 12);
    still = ppl_auto_step(&loop, &curve, frame.get()) ? 0 : still + 1;
  }
  EXPECT_EQ(still, 20);
  EXPECT_LE(frames, 60);
  EXPECT_NEAR(std::log2(ppl_auto_level(frame.get()) / 6000.0), 0, 0.15);
  ppl_auto_balance balance;
  ASSERT_TRUE(ppl_auto_white(&curve, frame.get(), &balance));
  EXPECT_LT(angle(in_picture(loop.r, loop.b), in_picture(balance.r, balance.b)), 2);
}

TEST_F(Auto, WrongInputIsNamed) {
  write("black.raw", Bytes(640 * 480, 0));
  const struct {
    Arguments words;
    int status;
    const char* says;
  } cases[] = {
      {Arguments{"gains", "black.raw"} + sample_size, 1, "too dark or too bright"},
      {Arguments{"gains", "black.raw", "--region", "0,0,40,40"} + sample_size, 1, "too dark"},
      {Arguments{"gains", "black.raw", "--region", "0,0,40"} + sample_size, 2, "4 whole numbers"},
      {Arguments{"gains", "black.raw", "--region", "620,0,40,40"} + sample_size, 2,
       "of a part of the 640 x 480 frame"},
      {Arguments{"gains", "black.raw", "--daylight", "1,2,3"} + sample_size, 2, "32 to 2047"},
      {Arguments{"lens", "black.raw"} + sample_size, 1, "not a flat frame"},
      {Arguments{"lens", "black.raw", "-W", "64", "-H", "48"}, 1, "frames"},
      {{"simulate", truth, "-o", "x.raw", "--kelvin", "100"}, 2, "2000 to 10000"},
      {{"simulate", truth, "-o", "x.raw", "--gains", "1,2"}, 2, "3 numbers"},
      {{"simulate", truth, "-o", "x.raw", "--packed"}, 2, "10 or 12"},
      {{"simulate", truth, "-o", "x.raw", "--bits", "17"}, 2, "bits"},
      {{"simulate", truth, "-o", "x.raw", "--pattern", "rgbg"}, 2, "pattern"},
      {{"simulate", sample, "-o", "x.raw"}, 1, "PNG"},
      {{"simulate", truth, "-o", "x.raw", "--size", "0x4"}, 2, "size"},
  };
  for (const auto& one : cases) {
    const Result result = run(one.words);
    EXPECT_EQ(result.status, one.status) << result.err;
    EXPECT_NE(result.err.find(one.says), std::string::npos) << result.err;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    for (const std::string& file : files()) EXPECT_NE(file, "x.raw");
  }
}

}  // namespace
