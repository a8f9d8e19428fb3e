#include "scaler.h"

#include <functional>
#include <vector>

namespace ref {
namespace {

constexpr int64_t kRingPool = 7 * 8192;

uint8_t blend(int a, int b, uint32_t f) {
  return uint8_t((uint32_t(a) * (256 - f) + uint32_t(b) * f + 128) >> 8);
}

// Fills the whole groups of a line buffer from input row r.
using horizontal_pass = std::function<void(int64_t r, uint8_t* line)>;

bool scale_rows(const scaler_planes& planes, uint32_t source_height, uint32_t row_bytes, uint32_t rows,
                int64_t group_bytes, const horizontal_pass& pass) {
  const int64_t whole = (int64_t(row_bytes) + group_bytes - 1) / group_bytes * group_bytes;
  if (int64_t(row_bytes) + whole > kRingPool) return true;
  std::vector<uint8_t> ring(size_t(kRingPool) + 64);
  uint8_t* top = ring.data();
  uint8_t* bottom = ring.data() + row_bytes;
  int64_t next_row = source_height > 1 ? 1 : 0;
  pass(0, top);
  pass(next_row, bottom);
  if (source_height <= 1) next_row = 0;

  const uint32_t step_y = (source_height << 20) / rows;
  uint32_t y = 0, index = 0;
  const int64_t pitch = (int64_t(row_bytes) + 15) / 16 * 16;
  for (int64_t out_row = 0; out_row < int64_t(rows); ++out_row) {
    if ((y >> 20) > index) {
      ++index;
      if (index < source_height - 1) {
        ++next_row;
        uint8_t* freed = top;
        top = bottom;
        bottom = freed;
        pass(next_row, bottom);
      } else {
        top = bottom;
      }
    }
    const uint32_t f = (y >> 12) & 255;
    for (int64_t i = 0; i < pitch; ++i) {
      const int64_t to = out_row * pitch + i;
      if (to >= planes.writable) return true;
      planes.destination[to] = blend(top[i], bottom[i], f);
    }
    y += step_y;
  }
  return true;
}

}  // namespace

bool scale_planar(const scaler_planes& planes, uint32_t source_width, uint32_t source_height,
                  uint32_t destination_width, uint32_t destination_height) {
  if (destination_width == 0 || destination_height == 0) return true;
  const uint32_t step_x = (source_width << 20) / destination_width;
  const auto pass = [&](int64_t r, uint8_t* line) {
    const auto R = [&](int64_t x) {
      const int64_t at = r * int64_t(source_width) + x;
      return at < planes.readable ? planes.source[at] : 0;
    };
    const uint32_t groups = ((destination_width - 1) >> 4) + 1;
    for (uint32_t i = 0; i < 16 * groups; ++i) {
      const uint32_t p = i * step_x, x = p >> 20;
      const uint32_t x1 = x < source_width - 1 ? x + 1 : x;
      line[i] = blend(R(x), R(x1), (p >> 12) & 255);
    }
  };
  return scale_rows(planes, source_height, destination_width, destination_height, 16, pass);
}

bool scale_packed(const scaler_planes& planes, uint32_t source_row_bytes, uint32_t source_height,
                  uint32_t destination_row_bytes, uint32_t destination_height) {
  if (destination_row_bytes == 0 || destination_height == 0) return true;
  const uint32_t step_x = (source_row_bytes << 20) / destination_row_bytes;
  const auto pass = [&](int64_t r, uint8_t* line) {
    const auto R = [&](int64_t x) {
      const int64_t at = r * int64_t(source_row_bytes) + x;
      return at < planes.readable ? planes.source[at] : 0;
    };
    const uint32_t pairs = destination_row_bytes >> 2;
    const uint32_t groups = (pairs + 15) / 16;
    for (uint32_t j = 0; j < 16 * groups; ++j) {
      const auto weighted = [&](uint32_t position, int64_t unit, int64_t offset) {
        const int64_t x = position >> 20;
        const int64_t x1 = x < int64_t(source_row_bytes) - 1 ? x + 1 : x;
        return blend(R(unit * x + offset), R(unit * x1 + offset), (position >> 12) & 255);
      };
      line[4 * j] = weighted(2 * j * step_x, 2, 0);
      line[4 * j + 1] = weighted(j * step_x, 4, 1);
      line[4 * j + 2] = weighted((2 * j + 1) * step_x, 2, 0);
      line[4 * j + 3] = weighted(j * step_x, 4, 3);
    }
  };
  return scale_rows(planes, source_height, destination_row_bytes, destination_height, 64, pass);
}

}  // namespace ref
