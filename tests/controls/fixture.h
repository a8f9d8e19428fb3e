// A context of its own for every test, and small helpers for vectors and frames.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "ppl.h"
#include "record/context.h"

namespace ctl {

struct controls : testing::Test {
  ppl_context* c = ppl_init();

  controls() {
    if (c) ppl_new_frame_size(c, 640, 480, 640);
  }
  ~controls() override { ppl_free(c); }
  void SetUp() override { ASSERT_NE(c, nullptr); }
};

inline std::vector<int> lanes(const ppl::vec_i16& v) {
  return {v.lane, v.lane + 8};
}

inline std::vector<int> lanes(const ppl::vec_u8& v) {
  return {v.lane, v.lane + 16};
}

inline std::vector<int> all(int x, int count = 8) {
  return std::vector<int>(static_cast<size_t>(count), x);
}

inline std::vector<int> bytes(int x) {
  return all(x, 16);
}

inline std::vector<int> pairs(int even, int odd, int count = 8) {
  std::vector<int> v;
  for (int i = 0; i < count; i += 2) {
    v.push_back(even);
    v.push_back(odd);
  }
  return v;
}

// Bytes at a base aligned to 64.
class buffer {
 public:
  explicit buffer(size_t size) : storage_(size + 64), size_(size) {}
  buffer(buffer&&) = default;  // a copy would lose the alignment
  uint8_t* data() {
    const uintptr_t p = reinterpret_cast<uintptr_t>(storage_.data());
    return storage_.data() + ((p + 63) / 64 * 64 - p);
  }
  size_t size() const { return size_; }
  void fill(uint8_t x) { std::memset(data(), x, size_); }
  std::vector<uint8_t> copy() { return {data(), data() + size_}; }

 private:
  std::vector<uint8_t> storage_;
  size_t size_;
};

inline uint32_t step(uint32_t& x) {
  x ^= x << 13;
  x ^= x >> 17;
  x ^= x << 5;
  return x;
}

inline buffer noise_frame(int width, int height, uint32_t seed) {
  buffer b(static_cast<size_t>(width) * static_cast<size_t>(height));
  for (size_t i = 0; i < b.size(); ++i) b.data()[i] = static_cast<uint8_t>(step(seed) >> 24);
  return b;
}

inline uint64_t digest(const void* data, size_t size) {
  uint64_t h = 0xcbf29ce484222325u;
  for (size_t i = 0; i < size; ++i) h = (h ^ static_cast<const uint8_t*>(data)[i]) * 0x100000001b3u;
  return h;
}

}  // namespace ctl
