// White balance against the truth: photographs under simulated lights, four ways to guess the light, and the angle
// between the guess and the light. Called by the script `run` beside it; prints tables in Markdown.
//
//   measure PICTURE.png...
#include <ppl.h>
#include <ppl_auto.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "picture.h"
#include "simulate.h"

namespace {

using tool::Bytes;
using Light = std::array<double, 3>;  // R, G, B of a white surface

constexpr uint32_t kWidth = 640, kHeight = 480;
constexpr double kKelvins[] = {2850, 3800, 5000, 6500, 8000};
constexpr double kBlack = 12;

const tool::Simulation& sensor() {
  static const tool::Simulation s = [] {
    tool::Simulation made;
    made.black = kBlack;
    made.noise = 0.5;
    return made;
  }();
  return s;
}

// Cells of the frame as R, G, B behind the black level; those with a cut or an empty sample left out.
std::vector<Light> cells(const Bytes& raw) {
  std::vector<Light> all;
  for (uint32_t y = 0; y < kHeight; y += 2)
    for (uint32_t x = 0; x < kWidth; x += 2) {
      const uint8_t* at = raw.data() + size_t{y} * kWidth + x;
      const uint8_t site[] = {at[0], at[1], at[kWidth], at[kWidth + 1]};
      if (*std::max_element(site, site + 4) >= 250) continue;
      const Light c{site[3] - kBlack, (site[1] + site[2]) / 2.0 - kBlack, site[0] - kBlack};
      if (*std::min_element(c.begin(), c.end()) > 0) all.push_back(c);
    }
  return all;
}

double sum(const Light& c) {
  return c[0] + 2 * c[1] + c[2];
}

// The mean of the scene is grey.
Light grey_world(const Bytes& raw) {
  Light mean{};
  for (const Light& c : cells(raw))
    for (size_t i = 0; i < 3; ++i) mean[i] += c[i];
  return mean;
}

// The brightest hundredth of the scene is white.
Light brightest_patch(const Bytes& raw) {
  std::vector<Light> all = cells(raw);
  const size_t part = std::max<size_t>(1, all.size() / 100);
  std::nth_element(all.begin(), all.begin() + static_cast<ptrdiff_t>(part), all.end(),
                   [](const Light& a, const Light& b) { return sum(a) > sum(b); });
  Light mean{};
  for (size_t k = 0; k < part; ++k)
    for (size_t i = 0; i < 3; ++i) mean[i] += all[k][i];
  return mean;
}

Light light_of(double kelvin) {
  Light l = tool::illuminant(kelvin);
  for (size_t i = 0; i < 3; ++i) l[i] /= sensor().gains[i];
  return l;
}

// Each cell votes for the lights that its own colour is near (a tenth of an octave), bright ones more.
Light votes(const Bytes& raw) {
  static const std::vector<Light> lights = [] {
    std::vector<Light> all;
    for (double mired = 100; mired <= 425; mired += 5) all.push_back(light_of(1e6 / mired));
    return all;
  }();
  std::vector<double> count(lights.size());
  double most = 0;
  const std::vector<Light> all = cells(raw);
  for (const Light& c : all) most = std::max(most, sum(c));
  for (const Light& c : all) {
    const double r = std::log2(c[0] / c[1]), b = std::log2(c[2] / c[1]), weight = std::pow(sum(c) / most, 2);
    for (size_t k = 0; k < lights.size(); ++k) {
      const double dr = r - std::log2(lights[k][0] / lights[k][1]),
                   db = b - std::log2(lights[k][2] / lights[k][1]);
      count[k] += weight * std::exp(-(dr * dr + db * db) / 2 / 0.01);
    }
  }
  return lights[static_cast<size_t>(std::max_element(count.begin(), count.end()) - count.begin())];
}

ppl_auto_curve curve() {
  ppl_auto_curve made;
  ppl_auto_daylight_curve(&made, 397, 256, 346);
  return made;
}

Light light_of(const ppl_auto_balance& balance) {
  return {std::exp2(balance.r / 256.0), 1, std::exp2(balance.b / 256.0)};
}

ppl_auto_sample sample;

Light ppl_frame(const Bytes& raw) {
  const ppl_auto_curve c = curve();
  ppl_auto_balance balance;
  ppl_auto_take_frame(&sample, raw.data(), kWidth, kHeight, kWidth, 12, 12, 12, 12);
  if (!ppl_auto_white(&c, &sample, &balance)) return light_of(5000);
  return light_of(balance);
}

// The same from the grid of means that the library keeps of a converted frame.
Light ppl_windows(const Bytes& raw) {
  Bytes source = raw, shown(kWidth * kHeight * 3 / 2);
  ppl_context* context = ppl_init();
  ppl_set_optical_black_b_gb_gr_r(context, 12, 12, 12, 12);
  BaylorToI420MMX(context, source.data(), shown.data(), kWidth, kHeight);
  ppl_auto_take_windows(&sample, ppl_rgb_means_sub_windows(context), 8, 6, 256, 256, 256,
                        ppl_rgb_gamma_table(context));
  ppl_free(context);
  const ppl_auto_curve c = curve();
  ppl_auto_balance balance;
  if (!ppl_auto_white(&c, &sample, &balance)) return light_of(5000);
  return light_of(balance);
}

double angle(const Light& a, const Light& b) {
  double ab = 0, aa = 0, bb = 0;
  for (size_t i = 0; i < 3; ++i) {
    ab += a[i] * b[i];
    aa += a[i] * a[i];
    bb += b[i] * b[i];
  }
  return std::acos(std::min(1.0, ab / std::sqrt(aa * bb))) * 180 / 3.14159265358979;
}

// A light in the sensor's colours as linear BT.709, the colours of the picture: gains and the default colour matrix.
Light in_picture(const Light& l) {
  static const double m[3][3] = {{389, -15, -120}, {-118, 509, -137}, {-19, -229, 503}};
  // The matrix sees lights relative to daylight; daylight itself is the picture's white.
  Light out;
  for (size_t i = 0; i < 3; ++i) {
    out[i] = 0;
    for (size_t k = 0; k < 3; ++k) out[i] += m[i][k] * l[k] * sensor().gains[k];
    out[i] = std::max(out[i], 1e-3);
  }
  return out;
}

// Whether the true picture holds something grey: two hundredths of it within a tenth of grey, and not dark.
bool holds_grey(const tool::Picture& picture) {
  size_t grey = 0;
  for (size_t i = 0; i < picture.rgb.size(); i += 3) {
    const uint8_t* p = picture.rgb.data() + i;
    const int most = *std::max_element(p, p + 3), least = *std::min_element(p, p + 3);
    grey += most >= 64 && (most - least) * 10 <= most;
  }
  return grey * 50 >= picture.rgb.size() / 3;
}

struct Method {
  const char* name;
  std::function<Light(const Bytes&)> guess;
  std::vector<double> picture, sensor, grey;
};

double median(std::vector<double> values) {
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  const size_t n = values.size();
  return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

double mean(const std::vector<double>& values) {
  double total = 0;
  for (const double v : values) total += v;
  return values.empty() ? 0 : total / static_cast<double>(values.size());
}

}  // namespace

int main(int count, char** words) {
  std::vector<Method> methods{{"grey world", grey_world, {}, {}, {}},
                              {"brightest patch", brightest_patch, {}, {}, {}},
                              {"votes near the line of lights", votes, {}, {}, {}},
                              {"`ppl_auto.h`, samples of the frame", ppl_frame, {}, {}, {}},
                              {"`ppl_auto.h`, the library's 48 means", ppl_windows, {}, {}, {}}};
  std::string photographs;
  size_t with_grey = 0;
  double seconds = 0;
  for (int i = 1; i < count; ++i) {
    const tool::Picture truth = tool::fitted(tool::read_png(words[i]), kWidth, kHeight);
    const bool grey = holds_grey(truth);
    with_grey += grey;
    photographs +=
        "| " + std::filesystem::path(words[i]).stem().string() + " | " + (grey ? "yes" : "") + " |";
    for (const double kelvin : kKelvins) {
      tool::Simulation s = sensor();
      s.kelvin = kelvin;
      const Bytes raw = tool::pack(tool::simulate(truth, s), tool::Packing::little_endian);
      const Light light = light_of(kelvin);
      for (Method& method : methods) {
        const auto before = std::chrono::steady_clock::now();
        const Light guess = method.guess(raw);
        if (&method == &methods[3])
          seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - before).count();
        const double off = angle(in_picture(guess), in_picture(light));
        method.picture.push_back(off);
        method.sensor.push_back(angle(guess, light));
        if (grey) method.grey.push_back(off);
        if (&method == &methods[3]) {
          char text[16];
          std::snprintf(text, sizeof text, " %.1f |", off);
          photographs += text;
        }
      }
    }
    photographs += "\n";
  }
  std::printf("%d photographs, %zu of them with something grey, under 5 lights.\n\n", count - 1, with_grey);
  std::printf(
      "| method | median | mean | median with grey | median, sensor's colours | mean, sensor's colours |\n");
  std::printf("|---|---|---|---|---|---|\n");
  for (const Method& m : methods)
    std::printf("| %s | %.1f | %.1f | %.1f | %.1f | %.1f |\n", m.name, median(m.picture), mean(m.picture),
                median(m.grey), median(m.sensor), mean(m.sensor));
  std::printf(
      "\n| photograph | grey | 2850 K | 3800 K | 5000 K | 6500 K | 8000 K "
      "|\n|---|---|---|---|---|---|---|\n%s",
      photographs.c_str());
  std::fprintf(stderr, "%.2f ms a frame of %u x %u\n", seconds * 1000 / std::max(1, (count - 1) * 5), kWidth,
               kHeight);
  return 0;
}
