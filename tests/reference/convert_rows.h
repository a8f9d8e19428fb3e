// Rows of 4:2:2 video, one sample at a time: read them, blend them, shrink them, widen them.
#pragma once

#include <cstdint>
#include <vector>

namespace ref {

enum class packing { yuyv, uyvy };

// One row: luma of every pixel, and beside it the chroma byte of the pixel's 16-bit word: U at even pixels, V at
// odd ones.
struct row422 {
  std::vector<uint8_t> luma, chroma;
  int width() const { return static_cast<int>(luma.size()); }
};

struct rgb_pixel {
  uint8_t r, g, b;
};

// (a + b + 1) / 2 rounded down.
uint8_t rounded_mean(uint8_t a, uint8_t b);

row422 read_row(const uint8_t* bytes, int pixels, packing p);
row422 black_row(int pixels);

// Byte x of the row in packed output.
uint8_t packed_byte(const row422& row, int x, packing p);

// Sample by sample mean of two rows.
row422 mean_row(const row422& a, const row422& b);

// True where the chroma of the later field moved against the earlier field; both rows are of the same place.
bool moves(const row422& earlier, const row422& later, int x, int threshold);

// The later row with the chroma of moving words replaced by the mean of the kept rows above and below.
row422 blend_row(const row422& earlier, const row422& later, const row422& kept_above,
                 const row422& kept_below, int threshold);

// Half the columns from all macropixels; a quarter of them from the even macropixels alone.
row422 halve_row(const row422& row);
row422 quarter_row(const row422& row);

// Twice the columns; the last macropixel is followed by an identical one.
row422 widen_row(const row422& row);

// Pixel x of the row in fixed colour arithmetic with 6 fraction bits; blue wraps in 16 bits before its shift.
rgb_pixel to_rgb(const row422& row, int x);

}  // namespace ref
