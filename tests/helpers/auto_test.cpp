// Exposure, white balance and lens shading: the arithmetic, what comes of hostile input, and loops that must settle.
#include "helpers/ppl_auto.h"

#include <gtest/gtest.h>
#include <ppl.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

extern "C" int auto_in_c99();

namespace {

class Random {
 public:
  explicit Random(uint32_t seed) : engine_(seed) {}
  uint32_t operator()() { return static_cast<uint32_t>(engine_()); }

 private:
  std::mt19937 engine_;
};

ppl_auto_curve daylight() {
  ppl_auto_curve curve;
  ppl_auto_daylight_curve(&curve, 397, 256, 346);
  return curve;
}

// A frame of cells that all hold the same four samples.
std::vector<uint8_t> even_frame(uint32_t width, uint32_t height, uint8_t r, uint8_t g, uint8_t b) {
  std::vector<uint8_t> raw(size_t{width} * height);
  for (uint32_t y = 0; y < height; ++y)
    for (uint32_t x = 0; x < width; ++x) raw[size_t{y} * width + x] = (x ^ y) & 1 ? g : y & 1 ? r : b;
  return raw;
}

TEST(Auto, WorksInC99) {
  EXPECT_EQ(auto_in_c99(), 0);
}

TEST(Auto, LogarithmsArePowersBackwards) {
  EXPECT_EQ(ppl_auto_log2(0), 0);
  EXPECT_EQ(ppl_auto_log2(1), 0);
  EXPECT_EQ(ppl_auto_log2(2), 256);
  EXPECT_EQ(ppl_auto_log2(0x80000000u), 31 * 256);
  Random random(1);
  for (int i = 0; i < 20000; ++i) {
    const uint32_t x = (random() >> (random() % 31)) | 1;
    EXPECT_NEAR(ppl_auto_log2(x), std::log2(x) * 256, 1.05) << x;
    const int32_t e = static_cast<int32_t>(random() % 7900) - 4000;
    const double power = std::exp2(e / 256.0) * 65536;
    if (e <= 3839) {
      EXPECT_NEAR(ppl_auto_exp2(e), power, 1 + power / 5000) << e;
    }
    const int32_t whole = static_cast<int32_t>(random() % (31 * 256));
    const double wanted = std::exp2(whole / 256.0);
    EXPECT_NEAR(ppl_auto_power(whole), wanted, 1 + wanted / 5000) << whole;
    const uint64_t square = (uint64_t{random()} << 32 | random()) >> (random() % 63);
    const uint64_t root = ppl_auto_root(square);
    EXPECT_LE(root * root, square);
    if (root < 0xffffffffu) {
      EXPECT_GT((root + 1) * (root + 1), square);
    }
  }
  EXPECT_EQ(ppl_auto_exp2(-5000), 0u);
  EXPECT_EQ(ppl_auto_exp2(100000), ppl_auto_exp2(3839));
  EXPECT_EQ(ppl_auto_power(-1), 0u);
  EXPECT_EQ(ppl_auto_power(1000000), 0x80000000u);
}

// Gains turn the ratios into grey, within the rounding to steps of 8, and never fall below 1.0.
TEST(Auto, GainsUndoTheLight) {
  for (int32_t r = -600; r <= 600; r += 50)
    for (int32_t b = -600; b <= 600; b += 50) {
      uint32_t gain[3];
      ppl_auto_gains(r, b, gain);
      EXPECT_EQ(std::min({gain[0], gain[1], gain[2]}), 256u);
      if (std::max({gain[0], gain[1], gain[2]}) >= 2040) continue;
      const double white[3] = {std::exp2(r / 256.0) * gain[0], double(gain[1]),
                               std::exp2(b / 256.0) * gain[2]};
      EXPECT_NEAR(white[0] / white[1], 1, 0.035);
      EXPECT_NEAR(white[2] / white[1], 1, 0.035);
    }
  uint32_t gain[3];
  ppl_auto_gains(-1000000, 1000000, gain);
  EXPECT_EQ(gain[0], 2047u);
  EXPECT_EQ(gain[2], 256u);
}

TEST(Auto, AGreyCardGivesItsGains) {
  // Behind a black level of 10: R 80, G 120, B 60. 120 / 80 * 256 = 384, 120 / 60 * 256 = 512.
  const std::vector<uint8_t> raw = even_frame(64, 64, 90, 130, 70);
  ppl_auto_balance balance;
  ASSERT_TRUE(ppl_auto_grey(raw.data(), 64, 3, 5, 40, 40, 10, 10, 10, 10, &balance));
  EXPECT_EQ(balance.gain[0], 384u);
  EXPECT_EQ(balance.gain[1], 256u);
  EXPECT_EQ(balance.gain[2], 512u);
  EXPECT_FALSE(ppl_auto_grey(raw.data(), 64, 0, 0, 12, 16, 10, 10, 10, 10, &balance));  // 12 blocks
  const std::vector<uint8_t> cut = even_frame(64, 64, 90, 255, 70);
  EXPECT_FALSE(ppl_auto_grey(cut.data(), 64, 0, 0, 64, 64, 0, 0, 0, 0, &balance));
}

// A frame as large as any: the sample stays within its arrays, and spreads over the whole frame.
TEST(Auto, SamplesFitAtEverySize) {
  const auto sample = std::make_unique<ppl_auto_sample>();
  const uint32_t sizes[] = {0,   1,   3,   4,   7,   8,   9,    16,   30,   32,  64,
                            100, 160, 240, 320, 480, 640, 1000, 1280, 2016, 2048};
  for (const uint32_t w : sizes)
    for (const uint32_t h : sizes) {
      // Exactly the frame: anything read beyond it is another process's or the sanitizer's to report.
      const std::vector<uint8_t> raw = even_frame(w, h, 90, 130, 70);
      ppl_auto_take_frame(sample.get(), raw.data(), w, h, w, 0, 0, 0, 0);
      if (w >= 8 && h >= 4) {
        EXPECT_GE(sample->blocks, 2u) << w << " " << h;
        EXPECT_LE(sample->blocks, 2u * PPL_AUTO_PAIRS) << w << " " << h;
        EXPECT_EQ(sample->colours, sample->blocks);
        EXPECT_EQ(ppl_auto_level(sample.get()), (90 + 2 * 130 + 70) * 64u);
      } else {
        EXPECT_EQ(sample->blocks, 0u) << w << " " << h;
        EXPECT_EQ(ppl_auto_level(sample.get()), 0u);
      }
      EXPECT_EQ(sample->edges, 0u);
    }
}

TEST(Auto, AFrameWithoutColoursHasNoLight) {
  const auto sample = std::make_unique<ppl_auto_sample>();
  const ppl_auto_curve curve = daylight();
  ppl_auto_balance balance;
  std::memset(&balance, 0xab, sizeof balance);
  const ppl_auto_balance before = balance;
  for (const int value : {0, 255}) {
    const std::vector<uint8_t> raw(640 * 480, static_cast<uint8_t>(value));
    ppl_auto_take_frame(sample.get(), raw.data(), 640, 480, 640, 0, 0, 0, 0);
    EXPECT_GT(sample->blocks, 1000u);
    EXPECT_EQ(ppl_auto_clipped(sample.get()), value ? 256u : 0u);
    EXPECT_FALSE(ppl_auto_white(&curve, sample.get(), &balance));
    EXPECT_EQ(std::memcmp(&balance, &before, sizeof balance), 0);
  }
}

void expect_balance_in_bounds(const ppl_auto_curve& curve, const ppl_auto_balance& balance) {
  for (const uint32_t gain : balance.gain) {
    EXPECT_GE(gain, 256u);
    EXPECT_LE(gain, 2047u);
  }
  EXPECT_LE(balance.position, (curve.lights - 1) * 256);
  EXPECT_LE(balance.spread, curve.lights * 256);
}

// Any bytes as a frame, any words as means, any curve: answers stay within their bounds, and come out the same again,
// whatever the sample held before.
TEST(Auto, HostileInputGivesAnswersWithinBounds) {
  Random random(2);
  const auto sample = std::make_unique<ppl_auto_sample>(), again = std::make_unique<ppl_auto_sample>();
  for (int round = 0; round < 60; ++round) {
    ppl_auto_curve curve = daylight();
    if (round % 3 == 0) {
      curve.lights = 2 + random() % 31;
      for (uint32_t i = 0; i < PPL_AUTO_LIGHTS; ++i) {
        curve.r[i] = static_cast<int16_t>(random());
        curve.b[i] = static_cast<int16_t>(random());
        curve.likely[i] = static_cast<int8_t>(random());
      }
    }
    for (auto* s : {sample.get(), again.get()})
      for (size_t i = 0; i < sizeof *s; i += 997)
        reinterpret_cast<uint8_t*>(s)[i] = static_cast<uint8_t>(random());
    if (round % 2) {
      std::vector<uint8_t> raw(256 * 128);
      const uint32_t top = 1 + random() % 256;
      for (uint8_t& v : raw) v = static_cast<uint8_t>(random() % top);
      ppl_auto_take_frame(sample.get(), raw.data(), 256, 128, 256, 7, 7, 7, 7);
      ppl_auto_take_frame(again.get(), raw.data(), 256, 128, 256, 7, 7, 7, 7);
    } else {
      uint32_t means[144];
      for (uint32_t& m : means) m = round % 4 ? random() : random() % 65281;
      uint8_t tone[256];
      for (uint8_t& t : tone) t = static_cast<uint8_t>(random());
      const uint32_t r = random() % 2048, g = random() % 2048, b = random() % 2048;
      ppl_auto_take_windows(sample.get(), means, 8, 6, r, g, b, tone);
      ppl_auto_take_windows(again.get(), means, 8, 6, r, g, b, tone);
    }
    ppl_auto_balance balance, same;
    std::memset(&balance, 0, sizeof balance);
    std::memset(&same, 0, sizeof same);
    const int found = ppl_auto_white(&curve, sample.get(), &balance);
    EXPECT_EQ(ppl_auto_white(&curve, again.get(), &same), found);
    EXPECT_EQ(std::memcmp(&balance, &same, sizeof balance), 0);
    if (found) expect_balance_in_bounds(curve, balance);
    uint32_t gain[3] = {};
    if (found) {
      ppl_auto_brighten(&balance, sample.get(), random(), gain);
      for (int c = 0; c < 3; ++c) {
        EXPECT_GE(gain[c], balance.gain[c]);
        EXPECT_LE(gain[c], 2047u);
      }
    }
  }
}

// A grey frame under one of the curve's lights: that light is found. The frame holds grey alone, in many brightnesses.
TEST(Auto, GreyUnderALightIsFound) {
  const ppl_auto_curve curve = daylight();
  const auto sample = std::make_unique<ppl_auto_sample>();
  for (uint32_t light = 2; light < 30; ++light) {
    std::vector<uint8_t> raw(320 * 240);
    for (uint32_t y = 0; y < 240; ++y)
      for (uint32_t x = 0; x < 320; ++x) {
        const double g = 40 + 100.0 * ((x / 16 * 7 + y / 16 * 3) % 20) / 20;
        const double r = g * std::exp2(curve.r[light] / 256.0), b = g * std::exp2(curve.b[light] / 256.0);
        raw[y * 320 + x] = static_cast<uint8_t>(((x ^ y) & 1 ? g : y & 1 ? r : b) + 0.5);
      }
    ppl_auto_take_frame(sample.get(), raw.data(), 320, 240, 320, 0, 0, 0, 0);
    ppl_auto_balance balance;
    ASSERT_TRUE(ppl_auto_white(&curve, sample.get(), &balance));
    EXPECT_NEAR(balance.r, curve.r[light], 26) << light;  // a tenth of an octave
    EXPECT_NEAR(balance.b, curve.b[light], 26) << light;
  }
}

// The way from the library's means back to what lay before gain and tone curve.
TEST(Auto, MeansAreTakenBackThroughToneAndGain) {
  const struct {
    uint8_t r, g, b;
    uint32_t gains[3];
  } cases[] = {{80, 120, 60, {256, 256, 256}}, {80, 120, 60, {384, 256, 504}}, {40, 60, 90, {512, 320, 256}}};
  for (const auto& one : cases) {
    std::vector<uint8_t> bytes = even_frame(640, 480, one.r, one.g, one.b);
    const size_t size = bytes.size();
    auto* raw = static_cast<uint8_t*>(aligned_alloc(64, size));
    auto* shown = static_cast<uint8_t*>(aligned_alloc(64, size * 3 / 2));
    std::copy(bytes.begin(), bytes.end(), raw);
    ppl_context* context = ppl_init();
    ppl_set_rgb_gain(context, one.gains[0], one.gains[1], one.gains[2]);
    ASSERT_TRUE(BaylorToI420MMX(context, raw, shown, 640, 480));
    const auto sample = std::make_unique<ppl_auto_sample>();
    ppl_auto_take_windows(sample.get(), ppl_rgb_means_sub_windows(context), 8, 6, one.gains[0], one.gains[1],
                          one.gains[2], ppl_rgb_gamma_table(context));
    EXPECT_EQ(sample->blocks, 48u);
    EXPECT_EQ(sample->colours, 48u);
    const double level = (one.r + 2 * one.g + one.b) * 64.0;
    // Cells at the frame's edge lack the samples there, which their scale makes up for only in the mean.
    std::vector<int> rs(sample->colour_r, sample->colour_r + 48), bs(sample->colour_b, sample->colour_b + 48);
    std::sort(rs.begin(), rs.end());
    std::sort(bs.begin(), bs.end());
    EXPECT_NEAR(rs[24], std::log2(double(one.r) / one.g) * 256, 14);
    EXPECT_NEAR(bs[24], std::log2(double(one.b) / one.g) * 256, 14);
    EXPECT_NEAR(ppl_auto_level(sample.get()), level, level * 0.06);
    ppl_free(context);
    free(raw);
    free(shown);
  }
}

TEST(Auto, OneFrameIsBrightenedWithinTheRange) {
  const auto sample = std::make_unique<ppl_auto_sample>();
  const std::vector<uint8_t> raw = even_frame(640, 480, 10, 16, 8);
  ppl_auto_take_frame(sample.get(), raw.data(), 640, 480, 640, 0, 0, 0, 0);
  ppl_auto_balance balance{};
  balance.gain[0] = 408;
  balance.gain[1] = 256;
  balance.gain[2] = 512;
  uint32_t gain[3];
  // Level 12.5, with gains (408 + 512 + 512) / 4 = 358 / 256 of it: 17.5. 45.9 asks for 2.6 times: 1061, 666, 1331.
  ppl_auto_brighten(&balance, sample.get(), 0, gain);
  EXPECT_NEAR(gain[0], 1071, 12);
  EXPECT_NEAR(gain[1], 672, 8);
  EXPECT_NEAR(gain[2], 1344, 15);
  // Gains end below 2048, and their ratios stay.
  ppl_auto_brighten(&balance, sample.get(), 65000, gain);
  EXPECT_NEAR(gain[2], 2047, 2);
  EXPECT_NEAR(gain[0] / double(gain[2]), 408.0 / 512, 0.002);
  // Nothing is darkened.
  ppl_auto_brighten(&balance, sample.get(), 10, gain);
  EXPECT_EQ(gain[0], 408u);
}

// ---- The loop -----------------------------------------------------------------------------------------------------

// A scene of areas with their own brightness before a sensor whose settings show some frames late.
struct Plant {
  std::vector<double> areas;  // light of each, in sample steps for exposure 1 at gain 1
  uint32_t delay;
  std::vector<double> settings;  // exposure times gain, as they were set

  void set(const ppl_auto_loop& loop) { settings.push_back(loop.exposure * (loop.gain / 256.0)); }
  void frame(uint32_t* level, uint32_t* clipped) const {
    const double s = settings[settings.size() - 1 - std::min<size_t>(delay, settings.size() - 1)];
    double sum = 0, cut = 0;
    for (const double area : areas) {
      sum += std::min(255.0, std::floor(area * s));
      cut += area * s >= 250;
    }
    *level = static_cast<uint32_t>(sum * 256 / static_cast<double>(areas.size()));
    *clipped = static_cast<uint32_t>(cut * 256 / static_cast<double>(areas.size()));
  }
};

Plant scene(Random& random, uint32_t delay) {
  Plant plant{{}, delay, {}};
  const double level = std::exp2(-12 + 11.0 * (random() % 1000) / 1000);
  const double sky = (random() % 100) / 100.0 * (random() % 2), contrast = 1 + random() % 40;
  for (int i = 0; i < 400; ++i) {
    const double area = level * (0.2 + (random() % 1000) / 600.0);
    plant.areas.push_back(i < 400 * sky ? area * contrast : area);
  }
  return plant;
}

// From any start to a light that then stands still, within the bounds, and without swinging: each turn of direction
// halves the longest step, so turns are few. Scenes from night to noon, with skies of any share and contrast, delays
// of 0 to 3 frames.
TEST(AutoLoop, ExposureSettlesWithoutSwinging) {
  Random random(3);
  int worst_frames = 0, worst_turns = 0;
  for (int round = 0; round < 400; ++round) {
    Plant plant = scene(random, round % 4);
    ppl_auto_loop loop;
    ppl_auto_start(&loop, 1, 20000, 256, 16 * 256);
    loop.delay = plant.delay;
    if (round % 5 == 0) loop.flicker = 1000;
    plant.set(loop);
    for (int change = 0; change < 4; ++change) {
      int frames = 0, still = 0, turns = 0;
      double before = 0, direction = 0;
      while (still < 40 && frames < 2000) {
        uint32_t level, clipped;
        plant.frame(&level, &clipped);
        const int changed = ppl_auto_step_exposure(&loop, level, clipped);
        plant.set(loop);
        ASSERT_GE(loop.exposure, 1u);
        ASSERT_LE(loop.exposure, 20000u);
        ASSERT_GE(loop.gain, 256u);
        ASSERT_LE(loop.gain, 4096u);
        const double now = loop.exposure * (loop.gain / 256.0);
        if (changed) {
          if (before != 0 && (now - before) * direction < 0) ++turns;
          direction = now - before;
          before = now;
        }
        still = changed ? 0 : still + 1;
        ++frames;
      }
      ASSERT_EQ(still, 40) << "round " << round << ", change " << change;
      worst_frames = std::max(worst_frames, frames - 40);
      worst_turns = std::max(worst_turns, turns);
      uint32_t level, clipped;
      plant.frame(&level, &clipped);
      const int32_t missing = ppl_auto_missing(&loop, level, clipped);
      // What is reached is what was wanted, unless the sensor can't, or the settings are too coarse for a sky that is
      // all cut or all not.
      const double now = loop.exposure * (loop.gain / 256.0);
      if (missing > 40) {
        EXPECT_TRUE(now > 20000 * 15.9 || clipped > 0 || plant.areas[0] * now > 200) << round;
      }
      if (missing < -40) {
        EXPECT_TRUE(now < 1.1 || clipped > 0) << round << " " << missing;
      }
      for (double& area : plant.areas) area *= change % 2 ? 1.0 / 9 : 7;
    }
  }
  EXPECT_LE(worst_frames, 40);
  EXPECT_LE(worst_turns, 4);
}

// Even if the loop knows nothing of the delay it comes to rest.
TEST(AutoLoop, AnUnknownDelayOnlySlowsItDown) {
  Random random(4);
  for (int round = 0; round < 100; ++round) {
    Plant plant = scene(random, 1 + round % 3);
    ppl_auto_loop loop;
    ppl_auto_start(&loop, 1, 20000, 256, 16 * 256);
    loop.delay = 0;
    plant.set(loop);
    int still = 0;
    for (int frame = 0; frame < 600 && still < 60; ++frame) {
      uint32_t level, clipped;
      plant.frame(&level, &clipped);
      still = ppl_auto_step_exposure(&loop, level, clipped) ? 0 : still + 1;
      plant.set(loop);
    }
    EXPECT_EQ(still, 60) << round;
  }
}

TEST(AutoLoop, FlickerIsAvoidedWherePossible) {
  ppl_auto_loop loop;
  ppl_auto_start(&loop, 100, 40000, 256, 4096);
  loop.flicker = 10000;
  for (int32_t light = 3000; light < 7000; light += 17) {
    loop.light = light;
    ppl_auto_split(&loop);
    if (loop.exposure > 10000) {
      EXPECT_EQ(loop.exposure % 10000, 0u);
    }
    const double made = std::log2(loop.exposure * double(loop.gain)) * 256;
    if (light > 256 * (std::log2(100) + 8) && light < 256 * (std::log2(40000) + 12)) {
      EXPECT_NEAR(made, light, 4);
    }
  }
}

// The gains go to the light in one direction and stay there; noise within the band moves nothing.
TEST(AutoLoop, BalanceFollowsWithoutOvershoot) {
  ppl_auto_loop loop;
  ppl_auto_start(&loop, 1, 1000, 256, 4096);
  ppl_auto_balance lamp{}, day{};
  lamp.r = 100;
  lamp.b = -250;
  day.r = -150;
  day.b = -110;
  ppl_auto_step_balance(&loop, &lamp);
  EXPECT_EQ(loop.r, 100);
  EXPECT_EQ(loop.b, -250);
  for (const uint32_t spread : {0u, 300u, 2000u, 0xffffffffu}) {
    const int32_t from_r = loop.r;
    const ppl_auto_balance to = from_r > 0 ? day : lamp;
    ppl_auto_balance aim = to;
    aim.spread = spread;
    int32_t last = std::abs(loop.r - aim.r);
    int frames = 0;
    while (last > 5 && frames < 2000) {
      ppl_auto_step_balance(&loop, &aim);
      const int32_t now = std::abs(loop.r - aim.r);
      ASSERT_LE(now, last);
      ASSERT_GE((loop.r - aim.r) * (from_r - aim.r), 0);  // never past it
      last = now;
      ++frames;
    }
    EXPECT_LE(last, 5);
    EXPECT_LE(frames, spread > 1000 ? 1000 : 40) << spread;
    for (int i = 0; i < 50; ++i) ppl_auto_step_balance(&loop, &aim);
    const uint32_t rest[3] = {loop.rgb_gain[0], loop.rgb_gain[1], loop.rgb_gain[2]};
    Random random(5);
    for (int i = 0; i < 200; ++i) {
      ppl_auto_balance noisy = aim;
      noisy.r += static_cast<int32_t>(random() % 5) - 2;
      noisy.b += static_cast<int32_t>(random() % 5) - 2;
      EXPECT_FALSE(ppl_auto_step_balance(&loop, &noisy));
    }
    EXPECT_TRUE(std::equal(rest, rest + 3, loop.rgb_gain));
  }
}

TEST(AutoLoop, HostileFiguresStayWithinTheBounds) {
  Random random(6);
  for (int round = 0; round < 200; ++round) {
    const uint32_t low = random() % 3000, high = random() % (1u << 24), gain_low = random() % 600,
                   gain_high = random() % 65536;
    ppl_auto_loop loop;
    ppl_auto_start(&loop, low, high, gain_low, gain_high);
    loop.exposure_speed = random();
    loop.balance_speed = random();
    loop.exposure_band = random() % 4 ? random() % 100 : random();
    loop.balance_band = random() % 4 ? random() % 100 : random();
    loop.level = random();
    loop.clipped = random() % 400;
    loop.flicker = random() % 3 ? 0 : random() % 20000;
    loop.delay = random() % 3;
    for (int i = 0; i < 200; ++i) {
      ppl_auto_step_exposure(&loop, random(), random());
      ppl_auto_balance balance{};
      balance.r = static_cast<int32_t>(random() % 20000) - 10000;
      balance.b = static_cast<int32_t>(random() % 20000) - 10000;
      balance.spread = random();
      ppl_auto_step_balance(&loop, &balance);
      ASSERT_GE(loop.exposure, loop.exposure_min);
      ASSERT_LE(loop.exposure, loop.exposure_max);
      ASSERT_GE(loop.gain, loop.gain_min);
      ASSERT_LE(loop.gain, loop.gain_max);
      for (const uint32_t gain : loop.rgb_gain) ASSERT_TRUE(gain >= 256 && gain <= 2047) << gain;
    }
  }
}

// ---- Lens shading -------------------------------------------------------------------------------------------------

std::vector<uint8_t> shaded(uint32_t width, uint32_t height, double x0, double y0, double k1, double k2,
                            uint32_t seed) {
  std::vector<uint8_t> raw(size_t{width} * height);
  Random random(seed);
  for (uint32_t y = 0; y < height; ++y)
    for (uint32_t x = 0; x < width; ++x) {
      const double r = (x - x0) * (x - x0) + (y - y0) * (y - y0), white = (x ^ y) & 1 ? 220
                                                                          : y & 1     ? 150
                                                                                      : 170;
      const double noise = (random() % 1024) / 1024.0;  // rounds at random: no steps
      raw[size_t{y} * width + x] = static_cast<uint8_t>(white / (1 + k1 * r - k2 * r * r) + noise);
    }
  return raw;
}

// Known coefficients and centre come back, as factors over the whole frame.
TEST(AutoLens, KnownShadingIsRecovered) {
  const struct {
    uint32_t width, height;
    double x0, y0, corner1, corner2;  // share of the factor at the far corner by r and r squared
  } cases[] = {{640, 480, 320, 240, 0.45, 0},    {640, 480, 300, 255, 0.6, 0.1},
               {1280, 960, 640, 480, 0.9, 0.2},  {320, 240, 170, 110, 0.3, -0.2},
               {2016, 2048, 1000, 1050, 1.2, 0}, {128, 96, 64, 48, 0.5, 0.05},
               {640, 480, 320, 240, 0, 0}};
  std::vector<uint32_t> scratch(768);
  for (const auto& one : cases) {
    const double fx = std::max(one.x0, one.width - one.x0), fy = std::max(one.y0, one.height - one.y0);
    const double far = fx * fx + fy * fy, k1 = one.corner1 / far, k2 = one.corner2 / far / far;
    const std::vector<uint8_t> raw = shaded(one.width, one.height, one.x0, one.y0, k1, k2, 7);
    ppl_auto_lens lens;
    ASSERT_TRUE(
        ppl_auto_fit_lens(raw.data(), one.width, one.height, one.width, 0, 0, 0, 0, scratch.data(), &lens))
        << one.width;
    if (one.corner1 > 0) {
      EXPECT_NEAR(lens.origin_x, one.x0, one.width / 100.0 + 2);
      EXPECT_NEAR(lens.origin_y, one.y0, one.width / 100.0 + 2);
    }
    EXPECT_LE(std::abs(lens.f1), 65535);
    EXPECT_LE(std::abs(lens.f2), 65535);
    EXPECT_TRUE(lens.f1_rshift_count >= 13 && lens.f1_rshift_count <= 63);
    EXPECT_TRUE(lens.f2_rshift_count >= 13 && lens.f2_rshift_count <= 63);
    double scale = 0;
    for (uint32_t y = 0; y < one.height; y += one.height / 12)
      for (uint32_t x = 0; x < one.width; x += one.width / 16) {
        const auto factor = [&](double cx, double cy, double a, double b) {
          const double r = (x - cx) * (x - cx) + (y - cy) * (y - cy);
          return 1 + a * r - b * r * r;
        };
        const double made = factor(lens.origin_x, lens.origin_y, std::ldexp(lens.f1, -lens.f1_rshift_count),
                                   std::ldexp(lens.f2, -lens.f2_rshift_count));
        const double right = factor(one.x0, one.y0, k1, k2);
        if (scale == 0) scale = made / right;
        EXPECT_NEAR(made / right / scale, 1, 0.025) << one.width << ": " << x << " " << y;
      }
    EXPECT_NEAR(lens.corner / 8192.0, 1 + one.corner1 - one.corner2, 0.06);
  }
}

// Through the library: the flat frame comes out flat.
TEST(AutoLens, TheLibraryFlattensAFlatFrame) {
  const std::vector<uint8_t> bytes = shaded(640, 480, 330, 230, 0.5 / 160000, 0, 8);
  std::vector<uint32_t> scratch(768);
  ppl_auto_lens lens;
  ASSERT_TRUE(ppl_auto_fit_lens(bytes.data(), 640, 480, 640, 0, 0, 0, 0, scratch.data(), &lens));
  auto* raw = static_cast<uint8_t*>(aligned_alloc(64, bytes.size()));
  auto* shown = static_cast<uint8_t*>(aligned_alloc(64, bytes.size() * 3 / 2));
  std::copy(bytes.begin(), bytes.end(), raw);
  std::vector<uint16_t> table(640 * 481);
  ppl_context* context = ppl_init();
  ASSERT_TRUE(ppl_set_lens_correction(context, 640, 480, lens.origin_x, lens.origin_y, table.data(),
                                      static_cast<int32_t>(table.size() * 2), lens.f1, lens.f1_rshift_count,
                                      lens.f2, lens.f2_rshift_count));
  ppl_enable_lens_correction(context);
  ASSERT_TRUE(BaylorToI420MMX(context, raw, shown, 640, 480));
  double least = 1e9, most = 0;
  for (int y = 0; y < 480; y += 40)
    for (int x = 0; x < 640; x += 40) {
      double mean = 0;
      for (int v = 0; v < 40; ++v)
        for (int u = 0; u < 40; ++u) mean += shown[(y + v) * 640 + x + u] / 1600.0;
      least = std::min(least, mean);
      most = std::max(most, mean);
    }
  EXPECT_LE(most - least, 2);  // uncorrected it is some 40
  ppl_free(context);
  free(raw);
  free(shown);
}

TEST(AutoLens, FramesThatAreNotFlatAreRefused) {
  std::vector<uint32_t> scratch(768);
  ppl_auto_lens lens;
  const auto refused = [&](const std::vector<uint8_t>& raw, uint32_t w, uint32_t h) {
    return !ppl_auto_fit_lens(raw.data(), w, h, w, 0, 0, 0, 0, scratch.data(), &lens);
  };
  EXPECT_TRUE(refused(std::vector<uint8_t>(640 * 480, 0), 640, 480));
  EXPECT_TRUE(refused(std::vector<uint8_t>(640 * 480, 10), 640, 480));
  EXPECT_TRUE(refused(std::vector<uint8_t>(640 * 480, 255), 640, 480));
  EXPECT_TRUE(refused(std::vector<uint8_t>(64 * 48, 100), 64, 48));
  std::vector<uint8_t> half(640 * 480, 30);
  std::fill(half.begin(), half.begin() + 640 * 240, uint8_t{200});
  EXPECT_TRUE(refused(half, 640, 480));
  Random random(9);
  for (int round = 0; round < 40; ++round) {  // any bytes: an answer within bounds or none
    std::vector<uint8_t> raw(256 * 192);
    const uint32_t low = random() % 200;
    for (size_t i = 0; i < raw.size(); ++i)
      raw[i] = static_cast<uint8_t>(low + random() % (256 - low) * ((i / 4096 + round) % 7) / 7);
    if (!ppl_auto_fit_lens(raw.data(), 256, 192, 256, 0, 0, 0, 0, scratch.data(), &lens)) continue;
    EXPECT_TRUE(lens.origin_x >= 0 && lens.origin_x <= 256 && lens.origin_y >= 0 && lens.origin_y <= 192);
    EXPECT_TRUE(lens.f1_rshift_count >= 13 && lens.f2_rshift_count >= 13);
    EXPECT_TRUE(lens.corner >= 4096 && lens.corner <= 32000);
  }
}

}  // namespace
