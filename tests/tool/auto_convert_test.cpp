// Gains and brightness found while converting, a grey card, a lens as settings.
#include <algorithm>
#include <cstdlib>

#include "run.h"

namespace {

std::vector<int> numbers(const std::string& line) {
  std::vector<int> found;
  size_t from = 0;
  while (from < line.size()) {
    found.push_back(atoi(line.c_str() + from));
    const size_t comma = line.find(',', from);
    if (comma == std::string::npos) break;
    from = comma + 1;
  }
  return found;
}

class AutoConvert : public Tool {};

// A card of B 60, G 100, R 50 above a black level of 12, in a frame of other colours.
TEST_F(AutoConvert, GainsOfAGreyCard) {
  Bytes frame;
  for (size_t y = 0; y < 64; ++y)
    for (size_t x = 0; x < 96; ++x) {
      const bool card = x >= 32 && x < 64 && y >= 16 && y < 48;
      const size_t site = 2 * (y & 1) + (x & 1);
      frame.push_back(card ? (site == 0 ? 72 : site == 3 ? 62 : 112) : static_cast<uint8_t>(x + 2 * y));
    }
  write("card.raw", frame);
  const Arguments at{"-W", "96", "-H", "64", "--black", "12", "--region", "32,16,32,32"};
  const Result result = run(Arguments{"gains", "card.raw"} + at);
  EXPECT_EQ(result.status, 0) << result.err;
  const std::vector<int> found = numbers(result.out);
  ASSERT_EQ(found.size(), 3u) << result.out;
  EXPECT_NEAR(found[0], 512, 8);  // 256 times 100 / 50
  EXPECT_EQ(found[1], 256);
  EXPECT_NEAR(found[2], 427, 8);  // 256 times 100 / 60
  // The line is what --gains takes.
  ok(Arguments{"convert", "card.raw", "-o", "a.png", "-W", "96", "-H", "64", "--gains",
               result.out.substr(0, result.out.size() - 1)});
}

TEST_F(AutoConvert, GainsOfTheSample) {
  const Result result = run(Arguments{"gains", sample, "--black", "12"} + sample_size);
  EXPECT_EQ(result.status, 0) << result.err;
  const std::vector<int> found = numbers(result.out);
  ASSERT_EQ(found.size(), 3u);
  EXPECT_NEAR(found[0], 397, 60);
  EXPECT_EQ(found[1], 256);
  EXPECT_NEAR(found[2], 346, 60);
  // One frame: convert finds the same.
  ok(Arguments{"convert", sample, "--black", "12", "--auto-white-balance", "-o", "a.png"} + sample_size);
  ok(Arguments{"convert", sample, "--black", "12", "--gains", result.out.substr(0, result.out.size() - 1),
               "-o", "b.png"} +
     sample_size);
  EXPECT_EQ(read("a.png"), read("b.png"));
}

// A dark frame comes out brighter, and a recording is the same by any number of jobs.
TEST_F(AutoConvert, Exposure) {
  ok({"simulate", truth, "-o", "dark.raw", "--exposure", "0.25", "--black", "12"});
  const Arguments controls{"--black", "12", "--auto-white-balance", "--auto-exposure"};
  ok(Arguments{"convert", "dark.raw", "-o", "plain.png", "--black", "12", "--auto-white-balance"} +
     sample_size);
  ok(Arguments{"convert", "dark.raw", "-o", "bright.png"} + controls + sample_size);
  const auto mean = [](const Rgb& picture) {
    double sum = 0;
    for (const uint8_t p : picture.pixels) sum += p;
    return sum / static_cast<double>(picture.pixels.size());
  };
  EXPECT_GT(mean(png("bright.png")), mean(png("plain.png")) + 20);
  ok({"simulate", truth, "-o", "light.raw", "--kelvin", "3000", "--black", "12"});
  for (const char* jobs : {"1", "4"})
    ok(Arguments{"convert", "dark.raw", "light.raw", "dark.raw", "light.raw", "light.raw", "-j", jobs, "-o",
                 std::string(jobs) + ".i420"} +
       controls + sample_size);
  EXPECT_EQ(read("1.i420"), read("4.i420"));
}

// A flat surface behind a lens that darkens its corners by 30 % comes out flat.
TEST_F(AutoConvert, Lens) {
  write("flat.ppm", {});
  Bytes yuyv;
  for (size_t i = 0; i < 640 * 480 / 2; ++i)
    for (const uint8_t b : {uint8_t{180}, uint8_t{128}, uint8_t{180}, uint8_t{128}}) yuyv.push_back(b);
  write("flat.yuyv", yuyv);
  ok(Arguments{"convert", "flat.yuyv", "--input", "yuyv", "-o", "flat.png"} + sample_size);
  ok({"simulate", "flat.png", "-o", "flat.raw", "--shading", "0.3", "--black", "0"});
  const Result fitted = run(Arguments{"lens", "flat.raw"} + sample_size);
  ASSERT_EQ(fitted.status, 0) << fitted.err;
  EXPECT_EQ(fitted.out.substr(0, 9), "--lens-f1") << fitted.out;
  const auto corner = [&](const std::string& name) {
    const Rgb picture = png(name);
    return std::abs(picture.at(320, 240)[1] - picture.at(8, 8)[1]);
  };
  ok(Arguments{"convert", "flat.raw", "-o", "dark.png"} + sample_size);
  EXPECT_GT(corner("dark.png"), 15);
  ok(Arguments{"lens", "flat.raw", "--as", "json", "-o", "lens.json"} + sample_size);
  ok(Arguments{"convert", "flat.raw", "-o", "even.png", "--settings", "lens.json"} + sample_size);
  EXPECT_LT(corner("even.png"), 5);
}

TEST_F(AutoConvert, MisuseIsTold) {
  write("black.raw", Bytes(640 * 480));
  const std::vector<std::string> before = files();
  const std::vector<std::tuple<Arguments, int, std::string>> mistakes{
      {Arguments{"gains", "black.raw"} + sample_size, 1, "too dark or too bright"},
      {Arguments{"gains", "black.raw", "--region", "0,0,64,64"} + sample_size, 1, "too dark"},
      {Arguments{"gains", sample, "--region", "600,0,64,64"} + sample_size, 2,
       "of a part of the 640 x 480 frame"},
      {Arguments{"gains", sample, "--region", "1,2,3"} + sample_size, 2, "4 whole numbers"},
      {Arguments{"lens", "black.raw"} + sample_size, 1, "not a flat frame"},
      {{"lens", sample, "-W", "64", "-H", "64", "--stride", "640"}, 2, "128 x 96"},
      {Arguments{"convert", sample, "-o", "x.png", "--auto-white-balance", "--daylight", "0,256,256"} +
           sample_size,
       2, "32 to 2047"},
      {Arguments{"convert", sample, "-o", "x.png", "--input", "yuyv", "--auto-exposure"} + sample_size, 2,
       "Bayer"},
  };
  for (const auto& [words, status, says] : mistakes) {
    const Result result = run(words);
    EXPECT_EQ(result.status, status) << result.err;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_NE(result.err.find(says), std::string::npos) << says << " is not in " << result.err;
    EXPECT_EQ(files(), before);
  }
}

}  // namespace
