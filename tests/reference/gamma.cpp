// The gamma tables, made with the rule of their curves.
#include <algorithm>
#include <cmath>

#include "state.h"

namespace ref {

namespace {

// Row k of the gamma tables has this offset in its power part.
constexpr double gamma_offsets[65] = {
    0.002, 0.002, 0.003, 0.001, 0.001, 0.001, 0.001, 0.001, 0.001, 0.000, 0.000, 0.001, 0.001,
    0.001, 0.002, 0.000, 0.004, 0.006, 0.008, 0.010, 0.013, 0.017, 0.021, 0.025, 0.031, 0.036,
    0.043, 0.051, 0.059, 0.068, 0.078, 0.090, 0.102, 0.115, 0.129, 0.145, 0.161, 0.179, 0.198,
    0.219, 0.241, 0.264, 0.289, 0.315, 0.344, 0.373, 0.405, 0.438, 0.474, 0.512, 0.551, 0.592,
    0.638, 0.683, 0.731, 0.781, 0.836, 0.896, 0.953, 1.016, 1.080, 1.150, 1.226, 1.298, 1.382};

// The curve of index 0, entry by entry.
constexpr table256 gamma_row_32 = {
    0,   4,   9,   13,  18,  22,  26,  30,  33,  36,  39,  42,  45,  48,  50,  53,  55,  57,  59,  61,
    63,  65,  67,  69,  71,  73,  75,  76,  78,  80,  81,  83,  84,  86,  88,  89,  90,  92,  93,  95,
    96,  98,  99,  100, 101, 103, 104, 105, 107, 108, 109, 110, 111, 113, 114, 115, 116, 117, 118, 119,
    121, 122, 123, 124, 125, 126, 127, 128, 129, 130, 131, 132, 133, 134, 135, 136, 137, 138, 139, 140,
    141, 142, 143, 144, 145, 145, 146, 147, 148, 149, 150, 151, 152, 153, 153, 154, 155, 156, 157, 158,
    158, 159, 160, 161, 162, 163, 163, 164, 165, 166, 167, 167, 168, 169, 170, 170, 171, 172, 173, 173,
    174, 175, 176, 176, 177, 178, 179, 179, 180, 181, 182, 182, 183, 184, 184, 185, 186, 186, 187, 188,
    189, 189, 190, 191, 191, 192, 193, 193, 194, 195, 195, 196, 197, 197, 198, 199, 199, 200, 201, 201,
    202, 202, 203, 204, 204, 205, 206, 206, 207, 208, 208, 209, 209, 210, 211, 211, 212, 212, 213, 214,
    214, 215, 215, 216, 217, 217, 218, 218, 219, 220, 220, 221, 221, 222, 222, 223, 224, 224, 225, 225,
    226, 226, 227, 228, 228, 229, 229, 230, 230, 231, 232, 232, 233, 233, 234, 234, 235, 235, 236, 236,
    237, 237, 238, 239, 239, 240, 240, 241, 241, 242, 242, 243, 243, 244, 244, 245, 245, 246, 246, 247,
    247, 248, 248, 249, 249, 250, 250, 251, 252, 252, 253, 253, 254, 254, 255, 255};

double curve(int row, double u) {
  const double g = gamma_value(row - 32) / 4096.0, a = gamma_offsets[row], t = 0.018;
  const double slope = ((1 + a) * std::pow(t, g) - a) / t;
  return u < t ? slope * u : (1 + a) * std::pow(u, g) - a;
}

uint8_t nearest(double value) {
  return static_cast<uint8_t>(std::clamp(static_cast<int>(std::floor(value + 0.5)), 0, 255));
}

library_tables make_tables() {
  library_tables made{};
  for (int row = 0; row < 65; ++row) {
    for (int x = 0; x < 256; ++x) {
      made.gamma[row][x] = nearest(255 * curve(row, x / 255.0));
      made.gamma_16_235[row][x] = x < 16     ? 16
                                  : x >= 235 ? 235
                                             : nearest(16 + 219 * curve(row, (x - 16) / 219.0));
    }
  }
  made.gamma[32] = gamma_row_32;
  return made;
}

}  // namespace

int32_t gamma_value(int index) {
  return static_cast<int32_t>(4096 * 0.45 * std::exp(-3.0 * index / 64));
}

const library_tables& built_in_tables() {
  static const library_tables tables = make_tables();
  return tables;
}

library_tables& shared_tables() {
  static library_tables tables = built_in_tables();
  return tables;
}

}  // namespace ref
