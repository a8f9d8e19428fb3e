// The simulated sensor: what the settings say is what the samples hold, and the library finds the way back.
#include "simulate.h"
#include "likeness.h"

#include <gtest/gtest.h>
#include <ppl.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "failure.h"

namespace tool {
namespace {

Picture flat(uint32_t width, uint32_t height, uint8_t r, uint8_t g, uint8_t b) {
  Picture picture(width, height);
  for (size_t i = 0; i < picture.rgb.size(); i += 3) {
    picture.rgb[i] = r;
    picture.rgb[i + 1] = g;
    picture.rgb[i + 2] = b;
  }
  return picture;
}

Simulation plain() {
  Simulation s;
  s.black = 0;
  s.gains = {1, 1, 1};
  return s;
}

// White is 235 of 255 at every site, with 1 / gain of it where a gain is set, and the black level on top.
TEST(Simulate, WhiteIsAtItsLevel) {
  Simulation s = plain();
  s.gains = {2, 1, 1.25};
  s.black = 10;
  const Mosaic m = simulate(flat(32, 2, 255, 255, 255), s);
  ASSERT_EQ(m.samples.size(), 64u);
  EXPECT_EQ(m.samples[0], 198);   // B: 235 / 1.25 + 10
  EXPECT_EQ(m.samples[1], 245);   // Gb
  EXPECT_EQ(m.samples[32], 245);  // Gr
  EXPECT_EQ(m.samples[33], 128);  // R: 235 / 2 + 10 = 127.5, rounded up
}

// More bits are the same light in finer steps: white at 235 / 255 of the largest sample.
TEST(Simulate, BitsAreFinerSteps) {
  for (unsigned bits = 8; bits <= 16; ++bits) {
    Simulation s = plain();
    s.bits = bits;
    const Mosaic m = simulate(flat(32, 2, 255, 255, 255), s);
    const double white = ((1 << bits) - 1) * 235.0 / 255;
    EXPECT_EQ(m.samples[0], std::floor(white + 0.5)) << bits;
  }
}

// A picture of one red pixel per cell: the phase decides which sites are lit.
TEST(Simulate, PhasesPutColoursInTheirPlaces) {
  const struct {
    Phase phase;
    size_t red;  // site of the first 2 x 2 cell
  } cases[] = {{Phase::bggr, 3}, {Phase::gbrg, 2}, {Phase::grbg, 1}, {Phase::rggb, 0}};
  for (const auto& one : cases) {
    Simulation s = plain();
    s.phase = one.phase;
    s.gains = {1, 1, 4};
    const Mosaic m = simulate(flat(2, 2, 255, 255, 255), s);
    // White: R and G at 235, B at 59; B lies opposite to R.
    for (size_t i = 0; i < 4; ++i) EXPECT_EQ(m.samples[i], i == 3 - one.red ? 59 : 235) << i;
    EXPECT_EQ(site_colour(one.phase, one.red & 1, static_cast<uint32_t>(one.red >> 1)), 0u);
  }
}

TEST(Simulate, GrIsBrighterThanGb) {
  for (const Phase phase : {Phase::bggr, Phase::gbrg, Phase::grbg, Phase::rggb}) {
    Simulation s = plain();
    s.phase = phase;
    s.green_imbalance = 0.02;  // 235 * 1.02 = 239.7
    const Mosaic m = simulate(flat(2, 2, 255, 255, 255), s);
    for (uint32_t y = 0; y < 2; ++y)
      for (uint32_t x = 0; x < 2; ++x) {
        const bool gr = site_colour(phase, x, y) == 1 && site_colour(phase, 1 - x, y) == 0;
        EXPECT_EQ(m.samples[2 * y + x], gr ? 240 : 235);
      }
  }
}

TEST(Simulate, ShadingFallsWithTheSquareOfTheDistance) {
  Simulation s = plain();
  s.bits = 16;
  s.shading = 0.4;
  const Mosaic m = simulate(flat(64, 48, 255, 255, 255), s);
  const double white = 65535 * 235.0 / 255;
  EXPECT_NEAR(m.samples[24 * 64 + 32], white, 1);                // the centre
  EXPECT_NEAR(m.samples[0], white * 0.6, 1);                     // the corner
  EXPECT_NEAR(m.samples[24 * 64], white * (1 - 0.4 * 0.64), 1);  // 32 of 40 away: 0.64 of the square
}

TEST(Simulate, NoiseHasItsDeviation) {
  Simulation s = plain();
  s.bits = 12;
  s.noise = 2;
  s.black = 400;
  const Mosaic m = simulate(flat(256, 256, 0, 0, 0), s);
  const double n = static_cast<double>(m.samples.size());
  const double mean = std::accumulate(m.samples.begin(), m.samples.end(), 0.0) / n;
  double variance = 0;
  for (const uint16_t v : m.samples) variance += (v - mean) * (v - mean) / n;
  EXPECT_NEAR(mean, 400, 0.5);
  EXPECT_NEAR(std::sqrt(variance), 2 * 4095 / 255.0, 0.5);
}

TEST(Simulate, TheSeedDecidesNoiseAndDefects) {
  Simulation s;
  s.noise = s.shot_noise = 1;
  s.hot = 30;
  s.dead = 50;
  const Picture grey = flat(128, 96, 120, 120, 120);
  const Mosaic a = simulate(grey, s), again = simulate(grey, s);
  EXPECT_EQ(a.samples, again.samples);
  EXPECT_EQ(std::count(a.samples.begin(), a.samples.end(), 255), 30);
  EXPECT_EQ(std::count(a.samples.begin(), a.samples.end(), 0), 50);
  s.seed = 2;
  EXPECT_NE(simulate(grey, s).samples, a.samples);
}

// Low light is red, high light blue, without a step where black body and daylight meet.
TEST(Simulate, IlluminantsFollowTheTemperature) {
  std::array<double, 3> before = illuminant(2000);
  for (double kelvin = 2050; kelvin <= 10000; kelvin += 50) {
    const std::array<double, 3> now = illuminant(kelvin);
    EXPECT_LT(now[0], before[0]) << kelvin;
    EXPECT_GT(now[2], before[2]) << kelvin;
    EXPECT_LT(before[0] / now[0], 1.05) << kelvin;
    EXPECT_LT(now[2] / before[2], 1.08) << kelvin;
    EXPECT_EQ(now[1], 1);
    before = now;
  }
  const std::array<double, 3> day = illuminant(6504);
  for (const double part : day) EXPECT_NEAR(part, 1, 1e-12);
  // Tungsten light, worked out by hand from x 0.4476, y 0.4074 (2,856 K): linear BT.709 1.845, 0.826, 0.233.
  const std::array<double, 3> lamp = illuminant(2856);
  const double m[3][3] = {{389, -15, -120}, {-118, 509, -137}, {-19, -229, 503}};
  double shown[3];
  for (int i = 0; i < 3; ++i) shown[i] = m[i][0] * lamp[0] + m[i][1] * lamp[1] + m[i][2] * lamp[2];
  EXPECT_NEAR(shown[0] / shown[1], 1.845 / 0.826, 0.05);
  EXPECT_NEAR(shown[2] / shown[1], 0.233 / 0.826, 0.02);
}

TEST(Simulate, PackedSamplesLieWhereCamerasPutThem) {
  Mosaic m{4, 1, 10, {0x3ff, 0x001, 0x155, 0x2aa}};
  const Bytes ten = pack(m, Packing::packed);
  EXPECT_EQ(ten, (Bytes{0xff, 0x00, 0x55, 0xaa, 0x03 | 0x01 << 2 | 0x01 << 4 | 0x02 << 6}));
  m.bits = 12;
  m.samples = {0xabc, 0x123, 0xfff, 0x000};
  EXPECT_EQ(pack(m, Packing::packed), (Bytes{0xab, 0x12, 0x3c, 0xff, 0x00, 0x0f}));
  EXPECT_EQ(pack(m, Packing::little_endian), (Bytes{0xbc, 0x0a, 0x23, 0x01, 0xff, 0x0f, 0x00, 0x00}));
  EXPECT_EQ(pack(m, Packing::big_endian), (Bytes{0x0a, 0xbc, 0x01, 0x23, 0x0f, 0xff, 0x00, 0x00}));
  m.bits = 8;
  m.samples = {1, 2, 254, 255};
  EXPECT_EQ(pack(m, Packing::big_endian), (Bytes{1, 2, 254, 255}));
  EXPECT_THROW(pack(m, Packing::packed), Failure);
  m = {6, 1, 10, {1, 2, 3, 4, 5, 6}};
  EXPECT_THROW(pack(m, Packing::packed), Failure);
}

TEST(Simulate, SettingsOutOfRangeAreRefused) {
  const Picture grey = flat(32, 32, 9, 9, 9);
  const auto refused = [&](auto change) {
    Simulation s;
    change(s);
    EXPECT_THROW(simulate(grey, s), Failure);
  };
  refused([](Simulation& s) { s.bits = 7; });
  refused([](Simulation& s) { s.bits = 17; });
  refused([](Simulation& s) { s.black = 255; });
  refused([](Simulation& s) { s.black = -1; });
  refused([](Simulation& s) { s.gains[1] = 0; });
  refused([](Simulation& s) { s.kelvin = 1999; });
  refused([](Simulation& s) { s.kelvin = std::nan(""); });
  refused([](Simulation& s) { s.exposure = 0; });
  refused([](Simulation& s) { s.shading = 1.1; });
  refused([](Simulation& s) { s.hot = 513; });
  EXPECT_THROW(simulate(Picture(), Simulation()), Failure);
}

TEST(Fitted, AveragesTheMiddle) {
  Picture p(8, 2);
  for (uint32_t y = 0; y < 2; ++y)
    for (uint32_t x = 0; x < 8; ++x) p.row(y)[3 * x] = static_cast<uint8_t>(10 * x + y);
  const Picture q = fitted(p, 2, 1);  // columns 2 to 5: 20, 21, 30, 31 and 40, 41, 50, 51
  EXPECT_EQ(q.width, 2u);
  EXPECT_EQ(q.height, 1u);
  EXPECT_EQ(q.rgb[0], 26);  // 25.5 rounded up
  EXPECT_EQ(q.rgb[3], 46);
  const Picture same = fitted(p, 8, 2);
  EXPECT_EQ(same.rgb, p.rgb);
}

// From the photograph to a raw frame under tungsten light with everything wrong, and back through the library with
// the settings that undo it.
TEST(Simulate, TheLibraryFindsTheWayBack) {
  const Picture truth = read_png(SAMPLES "/coffee_640x480.png");
  Simulation s;
  s.black = 16;
  s.gains = {1.25, 1, 1.25};
  s.kelvin = 2850;
  s.shading = 0.25;
  s.green_imbalance = 0.01;
  s.noise = 0.5;
  Bytes raw = pack(simulate(truth, s), Packing::little_endian);
  ppl_context* context = ppl_init();
  ASSERT_TRUE(context);
  const std::array<double, 3> w = illuminant(s.kelvin);
  ppl_set_optical_black_b_gb_gr_r(context, 16, 16, 16, 16);
  // White lies at 235 of 255: the gains bring it to the top.
  const auto gain = [&](size_t c) { return static_cast<uint32_t>(256 * s.gains[c] / w[c] * 255 / 235 + 4); };
  ASSERT_TRUE(ppl_set_rgb_gain(context, gain(0), gain(1), gain(2)));
  ppl_enable_GbGr_correction(context);
  // 1 / (1 - 0.25 r / 160000) is near 1 + 1.75e-6 r; the term in r squared is small at these distances.
  Words table(241 * 640);
  ASSERT_TRUE(
      ppl_set_lens_correction(context, 640, 480, 320, 240, table.data(), 241 * 640 * 2, 29, 24, -40, 44));
  ppl_enable_lens_correction(context);
  Bytes shown(640 * 480 * 3);
  ASSERT_TRUE(BaylorToRGB24MMX(context, raw.data(), shown.data(), 640, 480));
  ppl_free(context);
  Picture picture(640, 480);
  for (uint32_t y = 0; y < 480; ++y)
    for (uint32_t x = 0; x < 640; ++x)
      for (size_t c = 0; c < 3; ++c)
        picture.row(y)[3 * x + c] = shown[3 * (size_t{479 - y} * 640 + x) + 2 - c];
  EXPECT_GT(likeness(picture, truth).psnr, 27);
}

}  // namespace
}  // namespace tool
