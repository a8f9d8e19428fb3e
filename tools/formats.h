// The frame formats by name, their sizes in bytes, and the way from each of them to a picture and back.
#pragma once

#include <span>
#include <string>

#include "bytes.h"
#include "picture.h"

namespace tool {

enum class Format { bayer, i420, yuyv, uyvy, rgb24, rgb32, png, ppm, y4m };

const char* name(Format);
bool is_picture(Format);  // png, ppm

// The format that --format or the ending of the file name asks for; throws if neither does.
Format output_format(const std::string& path, const std::string& asked);

// A size like 800x600, given to an option; throws if it is none.
Size parse_size(const std::string& option, const std::string& value);

// Bytes of one raw frame; stride counts for bayer only.
size_t frame_bytes(Format, uint32_t width, uint32_t height, uint32_t stride = 0);

// What the chroma of a YUV frame means. camera: full-range luma with the colour differences B - Y and R - Y, as
// the library's Bayer calls write it. decoder: studio-range BT.601 4:2:2, as a video decoder delivers it and the
// library's packed conversions take it.
enum class Chroma { camera, decoder };

// One raw frame (i420, yuyv, uyvy, rgb24, rgb32) as a picture.
Picture picture_of(Format, std::span<const uint8_t> frame, uint32_t width, uint32_t height, Chroma);

// A picture as png, ppm, rgb24 or rgb32.
Bytes encode(Format, const Picture&);

// YUYV to UYVY and back: the two bytes of every 16-bit word change places.
void swap_words(std::span<uint8_t> frame);

}  // namespace tool
