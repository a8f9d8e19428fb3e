#include "likeness.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <vector>

#include "failure.h"

namespace tool {
namespace {

void require_alike(const Picture& a, const Picture& b) {
  if (a.width != b.width || a.height != b.height || a.rgb.empty())
    fail("pictures of ", a.width, " x ", a.height, " and ", b.width, " x ", b.height, " can't be compared");
}

double psnr(const Picture& a, const Picture& b) {
  double sum = 0;
  for (size_t i = 0; i < a.rgb.size(); ++i) {
    const double d = static_cast<double>(a.rgb[i]) - b.rgb[i];
    sum += d * d;
  }
  if (sum == 0) return std::numeric_limits<double>::infinity();
  return 10 * std::log10(255.0 * 255.0 * static_cast<double>(a.rgb.size()) / sum);
}

std::vector<double> luma(const Picture& picture) {
  std::vector<double> y(picture.rgb.size() / 3);
  for (size_t i = 0; i < y.size(); ++i)
    y[i] = 0.299 * picture.rgb[3 * i] + 0.587 * picture.rgb[3 * i + 1] + 0.114 * picture.rgb[3 * i + 2];
  return y;
}

// Structural similarity with even windows: means, variances and covariance (of a sample: by one less than the window's
// pixels) of each window of 7 x 7, with the usual constants.
double ssim(const Picture& a, const Picture& b) {
  constexpr size_t window = 7;
  constexpr double n = window * window, c1 = 0.01 * 255 * 0.01 * 255, c2 = 0.03 * 255 * 0.03 * 255;
  const size_t width = a.width, height = a.height;
  if (width < window || height < window) return std::numeric_limits<double>::quiet_NaN();
  const std::vector<double> x = luma(a), y = luma(b);
  enum { sx, sy, sxx, syy, sxy, sums };
  double total = 0;
  std::vector<double> columns(width * sums);  // sums over the rows of the window, by column
  const auto add_row = [&](size_t row, double sign) {
    for (size_t i = 0; i < width; ++i) {
      const double p = x[row * width + i], q = y[row * width + i];
      double* const s = &columns[i * sums];
      s[sx] += sign * p, s[sy] += sign * q, s[sxx] += sign * p * p, s[syy] += sign * q * q,
          s[sxy] += sign * p * q;
    }
  };
  for (size_t row = 0; row < height; ++row) {
    add_row(row, 1);
    if (row >= window) add_row(row - window, -1);
    if (row + 1 < window) continue;
    double s[sums] = {};
    for (size_t i = 0; i < width; ++i) {
      for (size_t k = 0; k < sums; ++k)
        s[k] += columns[i * sums + k] - (i >= window ? columns[(i - window) * sums + k] : 0);
      if (i + 1 < window) continue;
      const double mx = s[sx] / n, my = s[sy] / n;
      const double vx = (s[sxx] - n * mx * mx) / (n - 1), vy = (s[syy] - n * my * my) / (n - 1);
      const double v = (s[sxy] - n * mx * my) / (n - 1);
      total += (2 * mx * my + c1) * (2 * v + c2) / ((mx * mx + my * my + c1) * (vx + vy + c2));
    }
  }
  return total / (static_cast<double>(width - window + 1) * static_cast<double>(height - window + 1));
}

}  // namespace

Likeness likeness(const Picture& a, const Picture& b) {
  require_alike(a, b);
  return {psnr(a, b), ssim(a, b)};
}

std::string describe(const Likeness& alike) {
  char line[64];
  snprintf(line, sizeof line, "%.2f dB  SSIM %.4f", alike.psnr, alike.ssim);
  return line;
}

Picture difference(const Picture& a, const Picture& b) {
  require_alike(a, b);
  Picture made(a.width, a.height);
  for (size_t i = 0; i < a.rgb.size(); ++i)
    made.rgb[i] = static_cast<uint8_t>(std::clamp(128 + 4 * (a.rgb[i] - b.rgb[i]), 0, 255));
  return made;
}

}  // namespace tool
