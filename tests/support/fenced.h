// Buffers for tests: what lies beside them faults when touched, or is found to have changed.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "support/guarded.h"
#include "support/random.h"

namespace support {

using bytes = std::vector<uint8_t>;

constexpr uint8_t kUntouched = 0xa5;

// Exactly `size` bytes at a multiple of 64 plus `offset`, as close to an inaccessible page as that allows; what is left
// between is watched as well.
class fenced {
 public:
  explicit fenced(size_t size, uint8_t value = kUntouched, size_t offset = 0)
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
  bool operator==(const fenced& other) const {
    return size_ == other.size_ && std::equal(data_, data_ + size_, other.data_);
  }

  // How many bytes of [from, to) are not the value.
  size_t others(size_t from, size_t to, uint8_t value) const {
    return static_cast<size_t>(
        std::count_if(data_ + from, data_ + to, [value](uint8_t b) { return b != value; }));
  }
  bool all(size_t from, size_t to, uint8_t value) const { return others(from, to, value) == 0; }
  bool all(uint8_t value) const { return all(0, size_, value); }

  void fill(uint8_t value) const { std::fill_n(data_, size_, value); }
  void fill_noise(uint32_t seed) const {
    for (size_t i = 0; i < size_; ++i) data_[i] = static_cast<uint8_t>(step(seed) >> 24);
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

}  // namespace support
