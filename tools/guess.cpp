#include "guess.h"

#include <algorithm>

#include "failure.h"

namespace tool {
namespace {

// Sizes that sensors have, the commonest first.
constexpr struct {
  uint32_t width, height;
} sizes[] = {{640, 480},   {1280, 720},  {1920, 1080}, {1280, 960},  {1280, 1024}, {320, 240},   {1600, 1200},
             {2592, 1944}, {3264, 2448}, {1280, 800},  {800, 600},   {1024, 768},  {352, 288},   {2048, 1536},
             {3280, 2464}, {1640, 1232}, {1920, 1200}, {4056, 3040}, {2028, 1520}, {160, 120},   {720, 576},
             {720, 480},   {704, 576},   {704, 480},   {1936, 1096}, {1440, 1080}, {2304, 1296}, {2688, 1520},
             {2560, 1440}, {3840, 2160}, {4096, 2160}, {4608, 2592}, {4208, 3120}, {4000, 3000}, {1296, 972},
             {648, 486},   {640, 400},   {752, 480},   {176, 144},   {1024, 1024}, {2048, 2048}, {512, 512}};

}  // namespace

uint64_t Shape::bytes() const {
  const uint64_t w = width, h = height;
  return !packed ? w * h * (bits > 8 ? 2 : 1) : bits == 10 ? (w + 3) / 4 * 5 * h : (w + 1) / 2 * 3 * h;
}

std::string describe(const Shape& shape) {
  return text(shape.width, " x ", shape.height, shape.packed ? " packed" : "", " samples of ", shape.bits,
              " bits");
}

std::string options_of(const Shape& shape) {
  return text("-W ", shape.width, " -H ", shape.height, shape.bits > 8 ? text(" --bits ", shape.bits) : "",
              shape.packed ? " --packed" : "");
}

std::vector<Shape> guess_shapes(uint64_t bytes, const Known& known) {
  std::vector<Shape> layouts;
  const auto layout = [&](unsigned bits, bool packed) {
    if ((known.bits == 0 || known.bits == bits) && (!known.packed || packed))
      layouts.push_back({0, 0, bits, packed});
  };
  if (known.words > 8) layout(known.words, false);
  layout(8, false);
  for (const unsigned bits : {10u, 12u, 14u, 16u})
    if (known.bits && bits != known.words) layout(bits, false);
  layout(10, true);
  layout(12, true);
  std::vector<Shape> once, often;
  const auto consider = [&](Shape shape) {
    if (!shape.bytes() || bytes < shape.bytes()) return;
    if (bytes == shape.bytes()) once.push_back(shape);
    if (bytes % shape.bytes() == 0 && bytes > shape.bytes()) often.push_back(shape);
  };
  for (Shape shape : layouts) {
    if (known.width && known.height) {
      shape.width = known.width;
      shape.height = known.height;
      consider(shape);
      continue;
    }
    for (const auto& size : sizes) {
      if ((known.width && known.width != size.width) || (known.height && known.height != size.height))
        continue;
      shape.width = size.width;
      shape.height = size.height;
      consider(shape);
    }
  }
  // The whole rows of a width that is known.
  if (once.empty() && bytes && known.width && !known.height && known.bits <= 8 && bytes % known.width == 0)
    once.push_back(
        {known.width, static_cast<uint32_t>(std::min<uint64_t>(bytes / known.width, 16384)), 8, false});
  return once.empty() ? often : once;
}

// The upper bytes of such words stay below a small power of two, which the lower ones do not.
unsigned bits_of_words(std::span<const uint8_t> bytes) {
  uint8_t even = 0, odd = 0;
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
    even = std::max(even, bytes[i]);
    odd = std::max(odd, bytes[i + 1]);
  }
  if (bytes.size() < 64 || odd == 0 || odd >= 64 || even < 128) return 8;
  return odd < 4 ? 10 : odd < 16 ? 12 : 14;
}

}  // namespace tool
