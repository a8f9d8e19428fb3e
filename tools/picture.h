// A finished picture to look at: rows from the top down, three bytes R, G, B a pixel, no padding.
#pragma once

#include <optional>
#include <string>

#include "bytes.h"

namespace tool {

struct Picture {
  uint32_t width = 0, height = 0;
  Bytes rgb;

  Picture() = default;
  Picture(uint32_t w, uint32_t h) : width(w), height(h), rgb(size_t{3} * w * h) {}
  uint8_t* row(uint32_t y) { return rgb.data() + size_t{3} * width * y; }
  const uint8_t* row(uint32_t y) const { return rgb.data() + size_t{3} * width * y; }
};

struct Size {
  uint32_t width = 0, height = 0;
};

// The PNG picture of that name. Throws before its pixels are read if it is larger than any that the tool takes, or has
// another size than the one asked for.
Picture read_png(const std::string& path, std::optional<Size> = {});
Bytes encode_png(const Picture&);
Bytes encode_ppm(const Picture&);

void mirror_columns(Picture&);
void mirror_rows(Picture&);

}  // namespace tool
