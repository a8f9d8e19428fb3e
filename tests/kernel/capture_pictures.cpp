// The frames of the Wine test, and the pictures that the Linux library makes of them.
//
//   kernel_capture_pictures DIRECTORY
//
// For every case: N.raw, one raw frame after the other; N.picture, the pictures; N.means, the last frame's means. The
// file cases.txt has a line for each: number of frames and the arguments of `capture_tool convert`, WIDTH to V_MIRROR.
// test.picture is the picture of the driver's own test frame.
#include <stdint.h>
#include <stdio.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "capture.h"
#include "ppl.h"

namespace {

constexpr capture_format kCases[] = {
    {640, 480, 640, CAPTURE_I420, 0, 15, 0, 0},   {640, 480, 656, CAPTURE_RGB24, 0, 15, 0, 1},
    {320, 256, 320, CAPTURE_YUYV, 0, 15, 1, 0},   {640, 480, 640, CAPTURE_UYVY, 1, 10, 1, 1},
    {320, 240, 320, CAPTURE_RGB32, 0, 0, 0, 0},   {256, 128, 256, CAPTURE_I420, -1, 1, 0, 0},
    {512, 384, 512, CAPTURE_RGB24, 0, 2, 1, 0},   {640, 480, 640, CAPTURE_YUYV, 0, 12, 0, 1},
    {256, 192, 256, CAPTURE_RGB32, -1, 11, 0, 0}, {640, 480, 640, CAPTURE_I420, 0, 13, 0, 0},
    {512, 384, 512, CAPTURE_UYVY, 0, 3, 0, 0},    {2016, 1024, 2016, CAPTURE_I420, 0, 15, 0, 0},
};
constexpr int kFrames = 2;

class aligned_bytes {
 public:
  explicit aligned_bytes(size_t size) : room_(size + 64), size_(size) {}
  uint8_t* data() { return room_.data() + (64 - reinterpret_cast<uintptr_t>(room_.data()) % 64) % 64; }
  size_t size() const { return size_; }

 private:
  std::vector<uint8_t> room_;
  size_t size_;
};

void write(const std::filesystem::path& name, aligned_bytes& bytes, bool append) {
  std::ofstream out(name, std::ios::binary | (append ? std::ios::app : std::ios::trunc));
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

uint8_t make_picture(ppl_context* c, const capture_format& f, uint8_t* raw, uint8_t* picture) {
  switch (f.picture) {
    case CAPTURE_I420:
      return ppl_process_blrtoi420(c, raw, picture, f.width, f.height, f.stride);
    case CAPTURE_YUYV:
      return ppl_process_blrtoyuyv(c, raw, picture, f.width, f.height, f.stride);
    case CAPTURE_UYVY:
      return ppl_process_blrtouyvy(c, raw, picture, f.width, f.height, f.stride);
    case CAPTURE_RGB24:
      return ppl_process_blrtorgb24(c, raw, picture, f.width, f.height, f.stride);
    default:
      return ppl_process_blrtorgb32(c, raw, picture, f.width, f.height, f.stride);
  }
}

// Slopes, noise and a few defects, so that every block has something to do.
void fill(aligned_bytes& raw, const capture_format& f, uint32_t seed) {
  for (uint32_t y = 0; y < f.height; ++y) {
    for (uint32_t x = 0; x < f.stride; ++x) {
      seed ^= seed << 13;
      seed ^= seed >> 17;
      seed ^= seed << 5;
      const uint32_t noise = seed >> 8;
      const uint32_t slope = 24 + (x + 2 * y) % 190 + 18 * ((x ^ y) & 1);
      raw.data()[y * f.stride + x] = static_cast<uint8_t>(noise % 89 == 0   ? 255
                                                          : noise % 97 == 0 ? 0
                                                                            : slope + noise % 11);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: kernel_capture_pictures DIRECTORY\n");
    return 2;
  }
  const std::filesystem::path to = argv[1];
  // The driver's own frame first, as in the driver: an instance's slot remembers some of what passed through it.
  aligned_bytes test_raw(CAPTURE_TEST_WIDTH * CAPTURE_TEST_HEIGHT), test_picture(CAPTURE_TEST_PICTURE_BYTES);
  for (uint32_t y = 0; y < CAPTURE_TEST_HEIGHT; ++y) {
    for (uint32_t x = 0; x < CAPTURE_TEST_WIDTH; ++x) {
      test_raw.data()[y * CAPTURE_TEST_WIDTH + x] = capture_test_sample(x, y);
    }
  }
  ppl_context* c = ppl_init();
  ppl_set_decimation(c, 0, 0, 0);
  if (ppl_process_blrtoi420(c, test_raw.data(), test_picture.data(), CAPTURE_TEST_WIDTH, CAPTURE_TEST_HEIGHT,
                            CAPTURE_TEST_WIDTH) == 0) {
    fprintf(stderr, "the library refuses the test frame\n");
    return 1;
  }
  write(to / "test.picture", test_picture, false);
  ppl_free(c);

  std::ofstream list(to / "cases.txt");
  c = ppl_init();
  for (size_t n = 0; n < std::size(kCases); ++n) {
    const capture_format& f = kCases[n];
    const std::string name = std::to_string(n);
    const auto scaled = [&](uint32_t v) { return f.decimation < 0 ? v << 1 : v >> f.decimation; };
    aligned_bytes raw(f.stride * f.height);
    aligned_bytes picture(capture_picture_bytes(f.picture, scaled(f.width), scaled(f.height)));
    uint8_t good = ppl_new_frame_size(c, f.width, f.height, f.stride);
    good &= ppl_set_decimation(c, f.decimation, 0, 0);
    good &= ppl_set_quality(c, f.quality);
    ppl_set_h_mirror(c, f.h_mirror != 0);
    ppl_set_v_mirror(c, f.v_mirror != 0);
    list << kFrames << ' ' << f.width << ' ' << f.height << ' ' << f.stride << ' ' << f.picture << ' '
         << f.decimation << ' ' << f.quality << ' ' << f.h_mirror << ' ' << f.v_mirror << '\n';
    for (int frame = 0; frame < kFrames; ++frame) {
      fill(raw, f, static_cast<uint32_t>(1000 * n + 17) + static_cast<uint32_t>(frame));
      write(to / (name + "." + std::to_string(frame) + ".raw"), raw, false);
      good &= make_picture(c, f, raw.data(), picture.data());
      write(to / (name + ".picture"), picture, frame != 0);
    }
    if (!good) {
      fprintf(stderr, "the library refuses case %zu\n", n);
      return 1;
    }
    const uint32_t* means = ppl_rgb_means_whole_frame(c);
    std::ofstream(to / (name + ".means"))
        << "means " << means[0] << ' ' << means[1] << ' ' << means[2] << '\n';
  }
  ppl_free(c);
  return 0;
}
