#include "reference/convert_rows.h"

#include <algorithm>
#include <cstdlib>

namespace ref {

uint8_t rounded_mean(uint8_t a, uint8_t b) {
  return static_cast<uint8_t>((a + b + 1) >> 1);
}

row422 read_row(const uint8_t* bytes, int pixels, packing p) {
  row422 row;
  for (int x = 0; x < pixels; ++x) {
    row.luma.push_back(bytes[2 * x + (p == packing::yuyv ? 0 : 1)]);
    row.chroma.push_back(bytes[2 * x + (p == packing::yuyv ? 1 : 0)]);
  }
  return row;
}

row422 black_row(int pixels) {
  const auto n = static_cast<size_t>(pixels);
  return {std::vector<uint8_t>(n, 16), std::vector<uint8_t>(n, 128)};
}

uint8_t packed_byte(const row422& row, int x, packing p) {
  const bool luma_first = p == packing::yuyv;
  return (x % 2 == 0) == luma_first ? row.luma[x / 2] : row.chroma[x / 2];
}

row422 mean_row(const row422& a, const row422& b) {
  row422 out = a;
  for (int x = 0; x < out.width(); ++x) {
    out.luma[x] = rounded_mean(a.luma[x], b.luma[x]);
    out.chroma[x] = rounded_mean(a.chroma[x], b.chroma[x]);
  }
  return out;
}

bool moves(const row422& earlier, const row422& later, int x, int threshold) {
  int d[3], sum = 0, motion = 0;
  for (int k = 0; k < 3; ++k) {
    const int at = x - 1 + k;
    const bool inside = at >= 0 && at < later.width();
    d[k] = inside ? later.chroma[at] - earlier.chroma[at] : 0;
    sum += d[k];
  }
  for (int k = 0; k < 3; ++k) motion += std::abs(sum - 3 * d[k]);
  return motion > threshold;
}

row422 blend_row(const row422& earlier, const row422& later, const row422& kept_above,
                 const row422& kept_below, int threshold) {
  row422 out = later;
  for (int x = 0; x < out.width(); ++x)
    if (moves(earlier, later, x, threshold))
      out.chroma[x] = rounded_mean(kept_above.chroma[x], kept_below.chroma[x]);
  return out;
}

namespace {

// Each output macropixel comes from two source macropixels: the one at step * m and the one `apart` behind it.
row422 shrink(const row422& row, int step, int apart) {
  row422 out;
  for (int m = 0; (step * m + apart) * 2 + 1 < row.width(); ++m) {
    const int a = 2 * step * m, b = 2 * (step * m + apart);  // their first pixels
    out.luma.push_back(rounded_mean(row.luma[a], row.luma[a + 1]));
    out.luma.push_back(rounded_mean(row.luma[b], row.luma[b + 1]));
    out.chroma.push_back(rounded_mean(row.chroma[a], row.chroma[b]));
    out.chroma.push_back(rounded_mean(row.chroma[a + 1], row.chroma[b + 1]));
  }
  return out;
}

}  // namespace

row422 halve_row(const row422& row) {
  return shrink(row, 2, 1);
}
row422 quarter_row(const row422& row) {
  return shrink(row, 4, 2);
}

row422 widen_row(const row422& row) {
  row422 longer = row;  // with the last macropixel once more behind it
  for (int k = 0; k < 2 && row.width() >= 2; ++k) {
    longer.luma.push_back(row.luma[row.width() - 2 + k]);
    longer.chroma.push_back(row.chroma[row.width() - 2 + k]);
  }
  row422 out;
  for (int x = 0; x < row.width(); ++x) {
    out.luma.push_back(longer.luma[x]);
    out.luma.push_back(rounded_mean(longer.luma[x], longer.luma[x + 1]));
  }
  for (int x = 0; x + 1 < row.width(); x += 2) {
    out.chroma.push_back(longer.chroma[x]);
    out.chroma.push_back(longer.chroma[x + 1]);
    out.chroma.push_back(rounded_mean(longer.chroma[x], longer.chroma[x + 2]));
    out.chroma.push_back(rounded_mean(longer.chroma[x + 1], longer.chroma[x + 3]));
  }
  return out;
}

rgb_pixel to_rgb(const row422& row, int x) {
  const int u = row.chroma[x & ~1] - 128, v = row.chroma[x | 1] - 128;
  const int y = 74 * std::max(row.luma[x] - 16, 0);
  const auto colour = [](int sum) {
    return static_cast<uint8_t>(std::clamp(static_cast<int16_t>(sum) >> 6, 0, 255));
  };
  return {colour(102 * v + y), colour(-25 * u - 52 * v + y), colour(129 * u + y)};
}

}  // namespace ref
