#include "simulate.h"

#include <ppl.h>

#include <algorithm>
#include <set>

#include "failure.h"
#include "instance.h"

namespace tool {
namespace {

using Vector = std::array<double, 3>;

struct Matrix {
  double at[3][3];
  Vector operator*(const Vector& v) const {
    Vector r{};
    for (size_t i = 0; i < 3; ++i)
      for (size_t k = 0; k < 3; ++k) r[i] += at[i][k] * v[k];
    return r;
  }
};

Matrix inverse(const Matrix& m) {
  const auto& a = m.at;
  Matrix r;
  double determinant = 0;
  for (size_t i = 0; i < 3; ++i)
    for (size_t k = 0; k < 3; ++k) {
      const size_t k1 = (k + 1) % 3, k2 = (k + 2) % 3, i1 = (i + 1) % 3, i2 = (i + 2) % 3;
      r.at[i][k] = a[k1][i1] * a[k2][i2] - a[k1][i2] * a[k2][i1];
    }
  for (size_t k = 0; k < 3; ++k) determinant += a[0][k] * r.at[k][0];
  for (auto& row : r.at)
    for (double& value : row) value /= determinant;
  return r;
}

// The default sensor matrix and tone curve of the library, both to be walked backwards.
struct Pipeline {
  Matrix to_sensor;
  // What goes into the tone curve where it gives 0 to 255; in the middle where several inputs give the same.
  std::array<double, 256> input{};

  Pipeline() {
    const Instance instance;
    int32_t words[9];
    ppl_sensor_matrix(instance.get(), words);
    Matrix m;
    for (size_t i = 0; i < 9; ++i) m.at[i / 3][i % 3] = words[i] / 256.0;
    to_sensor = inverse(m);

    const uint8_t* tone = ppl_rgb_gamma_table(instance.get());
    std::array<double, 256> sum{}, count{};
    for (size_t i = 0; i < 256; ++i) {
      sum[tone[i]] += static_cast<double>(i);
      count[tone[i]] += 1;
    }
    size_t below = 0;  // the last output that the curve takes
    input[0] = 0;
    for (size_t o = 1; o < 256; ++o) {
      if (count[o] == 0) continue;
      input[o] = sum[o] / count[o];
      for (size_t gap = below + 1; gap < o; ++gap)
        input[gap] = input[below] + (input[o] - input[below]) * static_cast<double>(gap - below) /
                                        static_cast<double>(o - below);
      below = o;
    }
    for (size_t o = below + 1; o < 256; ++o) input[o] = input[below];
  }

  double linear(double shown) const {
    if (shown <= 0) return 0;
    if (shown >= 255) return 1;
    const auto low = static_cast<size_t>(shown);
    const double part = shown - static_cast<double>(low);
    return (input[low] + (input[low + 1] - input[low]) * part) / 255;
  }
};

struct Chromaticity {
  double x, y;
};

// The black body's, to a few units of the fourth decimal from 1,667 to 25,000 K (a cubic fit in 1 / T).
Chromaticity black_body(double t) {
  const double u = 1000 / t;
  const double x = t < 4000 ? ((-0.2661239 * u - 0.2343589) * u + 0.8776956) * u + 0.179910
                            : ((-3.0258469 * u + 2.1070379) * u + 0.2226347) * u + 0.240390;
  const double y = t < 2222   ? ((-1.1063814 * x - 1.34811020) * x + 2.18555832) * x - 0.20219683
                   : t < 4000 ? ((-0.9549476 * x - 1.37418593) * x + 2.09137015) * x - 0.16748867
                              : ((3.0817580 * x - 5.87338670) * x + 3.75112997) * x - 0.37001483;
  return {x, y};
}

// The CIE's daylight, 4,000 to 25,000 K.
Chromaticity daylight(double t) {
  const double u = 1000 / t;
  const double x = t <= 7000 ? ((-4.6070 * u + 2.9678) * u + 0.09911) * u + 0.244063
                             : ((-2.0064 * u + 1.9018) * u + 0.24748) * u + 0.237040;
  return {x, (-3 * x + 2.870) * x - 0.275};
}

Chromaticity light(double t) {
  if (t <= 4000) return black_body(t);
  if (t >= 5000) return daylight(t);
  const Chromaticity a = black_body(t), b = daylight(t);
  const double part = (t - 4000) / 1000;
  return {a.x + (b.x - a.x) * part, a.y + (b.y - a.y) * part};
}

Vector linear_bt709(Chromaticity c) {
  static constexpr Matrix from_xyz{
      {{3.2406, -1.5372, -0.4986}, {-0.9689, 1.8758, 0.0415}, {0.0557, -0.2040, 1.0570}}};
  return from_xyz * Vector{c.x / c.y, 1, (1 - c.x - c.y) / c.y};
}

Vector illuminant_of(const Pipeline& pipeline, double kelvin) {
  const Vector white = pipeline.to_sensor * linear_bt709(light(6504));
  Vector w = pipeline.to_sensor * linear_bt709(light(kelvin));
  for (size_t c = 0; c < 3; ++c) w[c] /= white[c];
  return {w[0] / w[1], 1, w[2] / w[1]};
}

// Numbers that depend on the seed and a place alone, not on the order in which they are asked for.
uint64_t random_bits(uint64_t seed, uint64_t place) {
  uint64_t z = seed * 0x9e3779b97f4a7c15 + place * 0xd1342543de82ef95 + 0x2545f4914f6cdd1d;
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
  z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
  return z ^ (z >> 31);
}

// Near the normal distribution, variance 1: twelve numbers of 16 bits added, within -6 and 6.
double normal(uint64_t seed, uint64_t place) {
  int64_t sum = -6 * 65535;
  for (uint64_t part = 0; part < 3; ++part) {
    const uint64_t bits = random_bits(seed, 3 * place + part);
    for (unsigned shift = 0; shift < 64; shift += 16) sum += static_cast<int64_t>(bits >> shift & 0xffff);
  }
  return static_cast<double>(sum) / 65536;
}

double root(double value) {
  if (value <= 0) return 0;
  double r = value > 1 ? value : 1;
  for (int i = 0; i < 40; ++i) {
    const double next = (r + value / r) / 2;
    if (next >= r) break;
    r = next;
  }
  return r;
}

void require(bool good, const char* what, const char* right) {
  if (!good) misuse(what, " won't do: it takes ", right);
}

void check(const Picture& picture, const Simulation& s) {
  require(picture.width && picture.height, "an empty picture", "one pixel at least");
  require(s.bits >= 8 && s.bits <= 16, "the number of bits", "8 to 16");
  const double full = (1u << s.bits) - 1;
  require(s.black >= 0 && s.black < full, "the black level", "0 up to below the largest sample");
  for (const double gain : s.gains) require(gain >= 0.0625 && gain <= 16, "a gain", "0.0625 to 16");
  require(s.kelvin >= 2000 && s.kelvin <= 10000, "the illuminant", "2000 to 10000 K");
  require(s.exposure > 0 && s.exposure <= 64, "the exposure", "more than 0, at most 64");
  require(s.shading >= 0 && s.shading <= 1, "the shading", "0 to 1");
  require(s.centre_x >= 0 && s.centre_x <= 1 && s.centre_y >= 0 && s.centre_y <= 1, "the lens centre",
          "shares of width and height, 0 to 1");
  require(s.green_imbalance >= -0.5 && s.green_imbalance <= 0.5, "the green imbalance", "-0.5 to 0.5");
  require(s.noise >= 0 && s.noise <= 255 && s.shot_noise >= 0 && s.shot_noise <= 255, "the noise",
          "0 to 255");
  const uint64_t sites = uint64_t{picture.width} * picture.height;
  require(uint64_t{s.hot} + s.dead <= sites / 2, "the number of hot and dead sites",
          "at most half of the frame's");
}

}  // namespace

unsigned site_colour(Phase phase, uint32_t x, uint32_t y) {
  static constexpr unsigned colours[4][4] = {{2, 1, 1, 0}, {1, 2, 0, 1}, {1, 0, 2, 1}, {0, 1, 1, 2}};
  return colours[static_cast<size_t>(phase)][2 * (y & 1) + (x & 1)];
}

Vector illuminant(double kelvin) {
  require(kelvin >= 2000 && kelvin <= 10000, "the illuminant", "2000 to 10000 K");
  return illuminant_of(Pipeline(), kelvin);
}

Mosaic simulate(const Picture& picture, const Simulation& s) {
  check(picture, s);
  const Pipeline pipeline;
  const Vector light_seen = illuminant_of(pipeline, s.kelvin);
  const uint32_t w = picture.width, h = picture.height;
  const double full = (1u << s.bits) - 1, range = full * 235 / 255 * s.exposure;
  const double centre_x = s.centre_x * w, centre_y = s.centre_y * h;
  const double far_x = std::max(centre_x, w - centre_x), far_y = std::max(centre_y, h - centre_y);
  const double furthest = far_x * far_x + far_y * far_y;
  Vector scale;
  for (size_t c = 0; c < 3; ++c) scale[c] = range * light_seen[c] / s.gains[c];

  Mosaic mosaic{w, h, s.bits, std::vector<uint16_t>(size_t{w} * h)};
  for (uint32_t y = 0; y < h; ++y)
    for (uint32_t x = 0; x < w; ++x) {
      const size_t at = size_t{y} * w + x;
      const uint8_t* pixel = picture.rgb.data() + 3 * at;
      const unsigned colour = site_colour(s.phase, x, y);
      const Vector balanced =
          pipeline.to_sensor *
          Vector{static_cast<double>(pixel[0]), static_cast<double>(pixel[1]), static_cast<double>(pixel[2])};
      double value = pipeline.linear(balanced[colour]) * scale[colour];
      const double dx = x - centre_x, dy = y - centre_y;
      value *= 1 - s.shading * (dx * dx + dy * dy) / furthest;
      // A green site beside a red one is Gr.
      if (colour == 1 && site_colour(s.phase, x ^ 1, y) == 0) value *= 1 + s.green_imbalance;
      if (s.noise > 0) value += normal(s.seed, 2 * at) * s.noise * full / 255;
      if (s.shot_noise > 0)
        value += normal(s.seed, 2 * at + 1) * s.shot_noise * full / 255 * root(value / full);
      mosaic.samples[at] = static_cast<uint16_t>(std::clamp(value + s.black + 0.5, 0.0, full));
    }

  std::set<uint64_t> taken;
  uint64_t draw = uint64_t{1} << 48;  // beyond the places that noise uses
  while (taken.size() < size_t{s.hot} + s.dead) {
    const uint64_t at = random_bits(s.seed, draw++) % mosaic.samples.size();
    const bool hot = taken.size() < s.hot;
    if (taken.insert(at).second) mosaic.samples[at] = hot ? static_cast<uint16_t>(full) : uint16_t{0};
  }
  return mosaic;
}

Bytes pack(const Mosaic& mosaic, Packing packing) {
  const size_t n = mosaic.samples.size();
  const auto& s = mosaic.samples;
  Bytes bytes;
  if (packing == Packing::packed) {
    const unsigned bits = mosaic.bits;
    if (bits != 10 && bits != 12)
      misuse("samples of ", bits, " bits can't be packed: packed ones have 10 or 12");
    const size_t group = bits == 10 ? 4 : 2;
    if (mosaic.width % group)
      misuse("width ", mosaic.width, " can't be packed at ", bits, " bits: it takes multiples of ", group);
    for (size_t i = 0; i < n; i += group) {
      unsigned low = 0;
      for (size_t k = 0; k < group; ++k) {
        bytes.push_back(static_cast<uint8_t>(s[i + k] >> (bits - 8)));
        low |= (s[i + k] & ((1u << (bits - 8)) - 1)) << (k * (bits - 8));
      }
      bytes.push_back(static_cast<uint8_t>(low));
    }
  } else if (mosaic.bits == 8) {
    for (const uint16_t v : s) bytes.push_back(static_cast<uint8_t>(v));
  } else {
    const bool little = packing == Packing::little_endian;
    for (const uint16_t v : s) {
      bytes.push_back(static_cast<uint8_t>(little ? v : v >> 8));
      bytes.push_back(static_cast<uint8_t>(little ? v >> 8 : v));
    }
  }
  return bytes;
}

Picture fitted(const Picture& picture, uint32_t width, uint32_t height) {
  require(picture.width && picture.height && width && height, "an empty picture", "one pixel at least");
  // The part taken has the shape asked for: as wide or as high as the picture.
  uint64_t part_w = picture.width, part_h = picture.width * uint64_t{height} / width;
  if (part_h > picture.height) {
    part_h = picture.height;
    part_w = picture.height * uint64_t{width} / height;
  }
  part_w = std::max<uint64_t>(part_w, 1);
  part_h = std::max<uint64_t>(part_h, 1);
  const uint64_t left = (picture.width - part_w) / 2, top = (picture.height - part_h) / 2;
  Picture to(width, height);
  for (uint32_t y = 0; y < height; ++y) {
    const uint64_t y0 = top + y * part_h / height;
    const uint64_t y1 = std::max(y0 + 1, top + (y + uint64_t{1}) * part_h / height);
    for (uint32_t x = 0; x < width; ++x) {
      const uint64_t x0 = left + x * part_w / width;
      const uint64_t x1 = std::max(x0 + 1, left + (x + uint64_t{1}) * part_w / width);
      uint64_t sums[3] = {};
      for (uint64_t v = y0; v < y1; ++v)
        for (uint64_t u = x0; u < x1; ++u)
          for (size_t c = 0; c < 3; ++c) sums[c] += picture.row(static_cast<uint32_t>(v))[3 * u + c];
      const uint64_t count = (y1 - y0) * (x1 - x0);
      for (size_t c = 0; c < 3; ++c)
        to.row(y)[3 * x + c] = static_cast<uint8_t>((sums[c] + count / 2) / count);
    }
  }
  return to;
}

}  // namespace tool
