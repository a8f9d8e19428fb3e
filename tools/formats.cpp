#include "formats.h"

#include <ppl.h>

#include <algorithm>
#include <cstdio>
#include <map>

#include "failure.h"
#include "instance.h"

namespace tool {
namespace {

const std::map<std::string, Format>& formats_by_name() {
  static const std::map<std::string, Format> names{
      {"i420", Format::i420},   {"yuv", Format::i420},  {"yuyv", Format::yuyv},   {"uyvy", Format::uyvy},
      {"rgb24", Format::rgb24}, {"rgb", Format::rgb24}, {"rgb32", Format::rgb32}, {"png", Format::png},
      {"ppm", Format::ppm},     {"y4m", Format::y4m}};
  return names;
}

uint8_t clamp_byte(int value) {
  return static_cast<uint8_t>(std::clamp(value, 0, 255));
}

// Y with the colour differences u = B - Y and v = R - Y. Green follows from Y = 0.299 R + 0.587 G + 0.114 B.
void camera_pixel(uint8_t* rgb, int y, int u, int v) {
  rgb[0] = clamp_byte(y + v);
  rgb[1] = clamp_byte((1000 * y - 509 * v - 194 * u + 500) / 1000);
  rgb[2] = clamp_byte(y + u);
}

struct Sample {
  int y, u, v;
};

Sample sample_at(Format format, std::span<const uint8_t> frame, uint32_t width, uint32_t height, uint32_t x,
                 uint32_t y) {
  const size_t pixels = size_t{width} * height;
  if (format == Format::i420) {
    const size_t chroma = size_t{y / 2} * (width / 2) + x / 2;
    return {frame[size_t{y} * width + x], frame[pixels + chroma], frame[pixels + pixels / 4 + chroma]};
  }
  const size_t pair = 2 * size_t{width} * y + 4 * size_t{x / 2};
  const size_t luma = format == Format::yuyv ? 0 : 1;
  const size_t chroma = 1 - luma;
  return {frame[pair + 2 * (x & 1) + luma], frame[pair + chroma], frame[pair + chroma + 2]};
}

// The library converts packed frames: an I420 frame is unpacked to YUYV first, each chroma row used twice.
Picture decoder_picture(Format format, std::span<const uint8_t> frame, uint32_t width, uint32_t height) {
  Bytes packed(frame.begin(), frame.end());
  if (format == Format::i420) {
    packed.resize(frame_bytes(Format::yuyv, width, height));
    for (uint32_t y = 0; y < height; ++y)
      for (uint32_t x = 0; x < width; ++x) {
        const Sample s = sample_at(format, frame, width, height, x, y);
        const size_t at = 2 * (size_t{width} * y + x);
        packed[at] = static_cast<uint8_t>(s.y);
        packed[at + 1] = static_cast<uint8_t>(x & 1 ? s.v : s.u);
      }
  }
  Bytes rgb(frame_bytes(Format::rgb24, width, height));
  const Instance instance;
  ppl_new_frame_sizes(instance.get(), width, height, width, height, 0);
  const auto convert = format == Format::uyvy ? ppl_process_uyvytorgb24 : ppl_process_yuyvtorgb24;
  if (!convert(instance.get(), packed.data(), rgb.data(), width, height, width, height))
    fail("the library refuses a ", width, " x ", height, " frame; widths go up to 2036 and heights to 2048");
  return picture_of(Format::rgb24, rgb, width, height, Chroma::decoder);
}

}  // namespace

const char* name(Format format) {
  static const char* const names[] = {"bayer", "i420", "yuyv", "uyvy", "rgb24", "rgb32", "png", "ppm", "y4m"};
  return names[static_cast<int>(format)];
}

bool is_picture(Format format) {
  return format == Format::png || format == Format::ppm;
}

Format output_format(const std::string& path, const std::string& asked) {
  std::string wanted = asked;
  if (wanted.empty()) {
    const size_t dot = path.rfind('.');
    if (dot != std::string::npos && path.find('/', dot) == std::string::npos) wanted = path.substr(dot + 1);
  }
  for (char& c : wanted) c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
  const auto found = formats_by_name().find(wanted);
  if (found == formats_by_name().end())
    misuse("can't tell the output format from ", path,
           ": end it in .png, .ppm, .i420, .yuyv, .uyvy, .rgb24, .rgb32 or .y4m, or give --format");
  return found->second;
}

Size parse_size(const std::string& option, const std::string& value) {
  unsigned w = 0, h = 0;
  char tail = 0;
  if (sscanf(value.c_str(), "%5ux%5u%c", &w, &h, &tail) != 2 || !w || !h)
    misuse(option, " takes a size like 800x600, not ", value);
  return {w, h};
}

size_t frame_bytes(Format format, uint32_t width, uint32_t height, uint32_t stride) {
  const size_t pixels = size_t{width} * height;
  switch (format) {
    case Format::bayer:
      return size_t{stride} * height;
    case Format::i420:
      return pixels + 2 * (pixels / 4);
    case Format::yuyv:
    case Format::uyvy:
      return 2 * pixels;
    case Format::rgb24:
      return 3 * pixels;
    case Format::rgb32:
      return 4 * pixels;
    default:
      fail("a ", name(format), " file has no fixed size");
  }
}

Picture picture_of(Format format, std::span<const uint8_t> frame, uint32_t width, uint32_t height,
                   Chroma chroma) {
  Picture picture(width, height);
  if (format == Format::rgb24 || format == Format::rgb32) {
    const size_t step = format == Format::rgb24 ? 3 : 4;
    for (uint32_t y = 0; y < height; ++y) {
      const uint8_t* bgr = frame.data() + step * width * (height - 1 - y);
      for (uint32_t x = 0; x < width; ++x)
        std::reverse_copy(bgr + step * x, bgr + step * x + 3, picture.row(y) + 3 * x);
    }
    return picture;
  }
  if (chroma == Chroma::decoder) return decoder_picture(format, frame, width, height);
  for (uint32_t y = 0; y < height; ++y)
    for (uint32_t x = 0; x < width; ++x) {
      const Sample s = sample_at(format, frame, width, height, x, y);
      camera_pixel(picture.row(y) + 3 * x, s.y, s.u - 128, s.v - 128);
    }
  return picture;
}

Bytes encode(Format format, const Picture& picture) {
  if (format == Format::png) return encode_png(picture);
  if (format == Format::ppm) return encode_ppm(picture);
  const size_t step = format == Format::rgb24 ? 3 : 4;
  Bytes frame(frame_bytes(format, picture.width, picture.height));
  for (uint32_t y = 0; y < picture.height; ++y) {
    uint8_t* bgr = frame.data() + step * picture.width * (picture.height - 1 - y);
    for (uint32_t x = 0; x < picture.width; ++x)
      std::reverse_copy(picture.row(y) + 3 * x, picture.row(y) + 3 * x + 3, bgr + step * x);
  }
  return frame;
}

void swap_words(std::span<uint8_t> frame) {
  for (size_t i = 0; i + 1 < frame.size(); i += 2) std::swap(frame[i], frame[i + 1]);
}

}  // namespace tool
