#include "colour_standard.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace tool {
namespace {

using Matrix = std::array<double, 9>;
using Vector = std::array<double, 3>;

Matrix product(const Matrix& a, const Matrix& b) {
  Matrix m{};
  for (size_t i = 0; i < 3; ++i)
    for (size_t j = 0; j < 3; ++j)
      for (size_t k = 0; k < 3; ++k) m[3 * i + j] += a[3 * i + k] * b[3 * k + j];
  return m;
}

Vector product(const Matrix& a, const Vector& v) {
  Vector out{};
  for (size_t i = 0; i < 3; ++i)
    for (size_t k = 0; k < 3; ++k) out[i] += a[3 * i + k] * v[k];
  return out;
}

// R, G, B to Y, B - Y, R - Y and back.
constexpr double red = 0.299, green = 0.587, blue = 0.114;
constexpr Matrix to_differences{red, green, blue, -red, -green, 1 - blue, 1 - red, -green, -blue};
constexpr Matrix from_differences{1, 0, 1, 1, -blue / green, -red / green, 1, 1, 0};

// Y, B - Y, R - Y to the luma and chroma of a standard with these luma weights, all at full range.
Matrix to_standard(Standard standard) {
  const bool hd = standard == Standard::bt709;
  const double r = hd ? 0.2126 : red, b = hd ? 0.0722 : blue, g = 1 - r - b;
  const Matrix from_rgb{
      r, g, b, -r / (2 * (1 - b)), -g / (2 * (1 - b)), 0.5, 0.5, -g / (2 * (1 - r)), -b / (2 * (1 - r))};
  return product(from_rgb, from_differences);
}

// What saturation, hue and contrast do to Y, B - Y, R - Y, and the way back. Saturation 0 is left to the library.
struct Controls {
  Matrix forth, back;
  explicit Controls(const ColourControls& c) {
    const double gain = (c.contrast < 0 ? 256.0 + c.contrast : 256.0 + 2 * c.contrast) / 256;
    const double sat = c.sat ? c.sat / 256.0 : 1, angle = c.hue * std::acos(-1.0) / 180;
    const double co = std::cos(angle), si = std::sin(angle);
    forth = {gain, 0, 0, 0, sat * co, -sat * si, 0, sat * si, sat * co};
    back = {1 / gain, 0, 0, 0, co / sat, si / sat, 0, -si / sat, co / sat};
  }
};

// The chroma of a white frame under a sensor matrix, off its middle.
struct Tint {
  int u, v;
  int size() const { return std::abs(u) + std::abs(v); }
};
Tint tint_of_white(ppl_context* c, const std::array<int32_t, 9>& matrix) {
  constexpr uint32_t width = 32, height = 4;
  alignas(64) uint8_t white[width * height], picture[width * height * 3 / 2];
  std::fill(std::begin(white), std::end(white), uint8_t{255});
  ppl_copy_sensor_matrix(c, matrix.data());
  ppl_process_blrtoi420(c, white, picture, width, height, width);
  return {picture[width * height] - 128, picture[width * height * 5 / 4] - 128};
}

std::array<int32_t, 9> rounded(const Matrix& m) {
  std::array<int32_t, 9> whole;
  for (size_t i = 0; i < 9; ++i) whole[i] = static_cast<int32_t>(std::lround(m[i]));
  return whole;
}

}  // namespace

std::array<int32_t, 9> standard_matrix(Standard standard, const ColourControls& c, ppl_context* scratch) {
  if (standard == Standard::camera) return c.sensor_matrix;
  Matrix sensor;
  std::copy(c.sensor_matrix.begin(), c.sensor_matrix.end(), sensor.begin());
  const Controls controls(c);
  Matrix change = to_standard(standard);
  if (c.sat == 0) change[1] = change[2] = 0;  // a grey picture has no chroma that luma could take part of
  // Behind the library's own forth * to_differences stands change * forth * to_differences * sensor.
  const Matrix start = product(from_differences, controls.back);
  Matrix wanted = product(product(start, change), product(controls.forth, product(to_differences, sensor)));

  // The library rounds the whole to 1/64. Where that leaves white with a tint the greens make up for it.
  ppl_set_quality(scratch, 2);
  ppl_set_sat_hue(scratch, c.sat, c.hue);
  ppl_set_contrast_c(scratch, c.contrast, nullptr, nullptr);
  std::array<int32_t, 9> best = rounded(wanted);
  const double sums[] = {sensor[0] + sensor[1] + sensor[2], sensor[3] + sensor[4] + sensor[5],
                         sensor[6] + sensor[7] + sensor[8]};
  const bool neutral = std::abs(sums[0] - sums[1]) < 8 && std::abs(sums[2] - sums[1]) < 8;
  if (!neutral || c.sat == 0) return best;
  for (Tint least = tint_of_white(scratch, best); least.size();) {
    const Vector off = product(start, Vector{0, -least.u * 256 / 255.0, -least.v * 256 / 255.0});
    Matrix next = wanted;
    for (size_t i = 0; i < 3; ++i) next[3 * i + 1] += off[i];
    const Tint tint = tint_of_white(scratch, rounded(next));
    if (tint.size() >= least.size()) break;
    least = tint;
    wanted = next;
    best = rounded(next);
  }
  return best;
}

// 219 / 255 and 224 / 255 in 1/65536, in two steps of 16 bits that vectors have: the same as the division, rounded, for
// every byte.
constexpr uint16_t luma_factor = 56284, luma_offset = 16 * 256 + 128;
constexpr uint16_t chroma_factor = 57569, chroma_offset = 4112;
inline uint8_t to_range(uint8_t sample, uint16_t factor, uint16_t offset) {
  const uint16_t high = static_cast<uint16_t>(sample << 8);
  const uint16_t product = static_cast<uint16_t>((uint32_t{high} * factor) >> 16);
  return static_cast<uint8_t>(static_cast<uint16_t>(product + offset) >> 8);
}

void luma_to_video_range(uint8_t* samples, size_t count) {
  for (size_t i = 0; i < count; ++i) samples[i] = to_range(samples[i], luma_factor, luma_offset);
}

void chroma_to_video_range(uint8_t* samples, size_t count) {
  for (size_t i = 0; i < count; ++i) samples[i] = to_range(samples[i], chroma_factor, chroma_offset);
}

void packed_to_video_range(uint8_t* frame, size_t bytes, bool luma_first) {
  const uint16_t factors[] = {luma_first ? luma_factor : chroma_factor,
                              luma_first ? chroma_factor : luma_factor};
  const uint16_t offsets[] = {luma_first ? luma_offset : chroma_offset,
                              luma_first ? chroma_offset : luma_offset};
  for (size_t i = 0; i + 1 < bytes; i += 2) {
    frame[i] = to_range(frame[i], factors[0], offsets[0]);
    frame[i + 1] = to_range(frame[i + 1], factors[1], offsets[1]);
  }
}

}  // namespace tool
