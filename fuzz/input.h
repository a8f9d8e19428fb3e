// What a fuzz target is fed with, and memory that ends exactly where the interface says.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <array>
#include <type_traits>

namespace fuzz {

using input = FuzzedDataProvider;

// A number that is usually small, sometimes at a border, sometimes anything.
template <class T>
T number(input& in) {
  switch (in.ConsumeIntegralInRange(0, 3)) {
    case 0:
      return in.ConsumeIntegral<T>();
    case 1: {
      constexpr int32_t kBorders[] = {0,    -1,    1,     16,    31,    32,     63,        127,
                                      128,  255,   256,   257,   512,   1020,   1530,      2047,
                                      2048, 32767, 32768, 65535, 65536, -32768, 0x7fffffff};
      return static_cast<T>(in.PickValueInArray(kBorders));
    }
    default:
      return static_cast<T>(in.ConsumeIntegralInRange(-64, 255));
  }
}

// Byte i of a buffer that begins with `value` is value + 37 i + i / 128. By table and 128 bytes at a time: one by one,
// with every comparison of the loop told to the fuzzer, filling takes longer than the frame.
inline void fill(uint8_t* to, size_t bytes, uint8_t value) {
  using row = std::array<uint8_t, 128>;
  static const std::array<row, 256> rows = [] {
    std::array<row, 256> all;
    for (size_t first = 0; first < all.size(); ++first)
      for (size_t i = 0; i < all[first].size(); ++i) all[first][i] = static_cast<uint8_t>(first + 37 * i);
    return all;
  }();
  for (size_t at = 0; at < bytes; at += sizeof(row), value = static_cast<uint8_t>(value + 128 * 37 + 1))
    memcpy(to + at, rows[value].data(), std::min(bytes - at, sizeof(row)));
}

// `bytes` bytes at an address that is `offset` modulo 16, with nothing behind them.
class exact {
 public:
  exact(size_t bytes, size_t offset, uint8_t value) : offset_(offset), bytes_(bytes) {
    block_ = static_cast<uint8_t*>(malloc(bytes + offset));
    if (block_ == nullptr) abort();
    fill(block_ + offset, bytes, value);
  }
  exact(const exact&) = delete;
  exact& operator=(const exact&) = delete;
  ~exact() { free(block_); }
  uint8_t* at() const { return block_ + offset_; }
  size_t bytes() const { return bytes_; }

 private:
  uint8_t* block_;
  size_t offset_, bytes_;
};

// Mostly aligned as calls want it.
inline size_t alignment(input& in) {
  constexpr size_t kOffsets[] = {0, 0, 0, 0, 0, 0, 8, 1};
  return in.PickValueInArray(kOffsets);
}

}  // namespace fuzz
