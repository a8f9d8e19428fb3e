// Buffers that fault when left, and small frames to put through an instance at every vector level.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "ppl.h"
#include "support/guarded.h"
#include "support/level.h"

namespace engine {

using bytes = std::vector<uint8_t>;

// Exactly `size` bytes at a multiple of 64 plus `offset`, as close to an inaccessible page as that allows; what is
// left between is watched as well.
class fenced {
 public:
  explicit fenced(size_t size, uint8_t value = 0xa5, size_t offset = 0)
      : memory_(guarded::room_for(size)), size_(size), data_(memory_.place(size, offset, true)) {
    std::fill(memory_.begin(), memory_.end(), kFence);
    std::fill_n(data_, size, value);
  }
  explicit fenced(const bytes& content, size_t offset = 0) : fenced(content.size(), 0, offset) {
    std::copy(content.begin(), content.end(), data_);
  }
  ~fenced() { EXPECT_TRUE(intact()) << "bytes beside a buffer of " << size_ << " were written"; }
  fenced(const fenced&) = delete;
  fenced& operator=(const fenced&) = delete;

  uint8_t* data() const { return data_; }
  size_t size() const { return size_; }
  uint8_t& operator[](size_t i) const { return data_[i]; }
  bytes content() const { return bytes(data_, data_ + size_); }
  bytes part(size_t from, size_t count) const { return bytes(data_ + from, data_ + from + count); }
  bool all(uint8_t value) const {
    return std::all_of(data_, data_ + size_, [value](uint8_t b) { return b == value; });
  }

 private:
  static constexpr uint8_t kFence = 0x3c;
  bool intact() const {
    const auto fence = [](uint8_t b) { return b == kFence; };
    return std::all_of(memory_.begin(), data_, fence) && std::all_of(data_ + size_, memory_.end(), fence);
  }
  guarded memory_;
  size_t size_;
  uint8_t* data_;
};

inline bytes noise(size_t n, uint32_t x) {
  bytes out(n);
  for (uint8_t& b : out) {
    x ^= x << 13;
    x ^= x >> 17;
    x ^= x << 5;
    b = static_cast<uint8_t>(x >> 24);
  }
  return out;
}

enum format { I420, YUYV, UYVY, RGB24, RGB32 };
constexpr const char* kFormatNames[] = {"I420", "YUYV", "UYVY", "RGB24", "RGB32"};
inline size_t frame_bytes(int f, size_t pixels) {
  constexpr size_t per_pixel[] = {1, 2, 2, 3, 4};
  return f == I420 ? pixels + 2 * (pixels / 4) : per_pixel[f] * pixels;
}
inline uint8_t call(int f, ppl_context* c, uint8_t* source, uint8_t* destination, int w, int h,
                    int stride = 0) {
  constexpr decltype(&ppl_process_blrtoi420) calls[] = {ppl_process_blrtoi420, ppl_process_blrtoyuyv,
                                                        ppl_process_blrtouyvy, ppl_process_blrtorgb24,
                                                        ppl_process_blrtorgb32};
  return calls[f](c, source, destination, uint32_t(w), uint32_t(h), uint32_t(stride > 0 ? stride : w));
}

// One instance per test, at the vector level that the parameter names.
class at_level : public testing::TestWithParam<int> {
 protected:
  void SetUp() override {
    if (GetParam() >= ppl_test_levels()) GTEST_SKIP() << "this processor has no level " << GetParam();
    ppl_test_force_level(GetParam());
    c = ppl_init();
    ASSERT_NE(c, nullptr);
  }
  void TearDown() override {
    if (c != nullptr) {
      // What a slot keeps must not reach the next test.
      ppl_reset_all_controls(c);
      ppl_free(c);
    }
    ppl_test_force_level(-1);
  }
  // Both tone tables the identity: a sample comes out as it went in.
  void linear_tone() {
    bytes table(256);
    for (size_t i = 0; i < 256; ++i) table[i] = uint8_t(i);
    ppl_copy_yuv_gamma_table(c, table.data());
    ppl_copy_rgb_gamma_table(c, table.data());
  }
  void identity_matrix() {
    const int32_t nine[9] = {256, 0, 0, 0, 256, 0, 0, 0, 256};
    ppl_copy_sensor_matrix(c, nine);
  }
  // A frame through the instance as it stands; the destination keeps 0xa5 where nothing is written.
  bytes run(int f, const bytes& frame, int w, int h, int stride = 0) {
    source_after = frame;
    const int d = ppl_decimation(c);
    const size_t ow = size_t(d < 0 ? 2 * w : w >> d), oh = size_t(d < 0 ? 2 * h : h >> d);
    fenced source(frame), destination(frame_bytes(f, ow * oh));
    result = call(f, c, source.data(), destination.data(), w, h, stride);
    source_after = source.content();
    return destination.content();
  }
  ppl_context* c = nullptr;
  uint8_t result = 0;
  bytes source_after;
};
#define ENGINE_LEVELS(suite)                                    \
  INSTANTIATE_TEST_SUITE_P(levels, suite, testing::Range(0, 4), \
                           [](const auto& i) { return std::string("level") + std::to_string(i.param); })

}  // namespace engine
