// The memory round an output frame: stores and read-backs may fall anywhere, the caller sees only its frame.
//
// Opening a canvas takes the caller's bytes in; commit() hands back the bytes inside the frame. What falls
// outside can be read back within the margin, as in memory that goes on on both sides, and is then forgotten.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

namespace ref {

class canvas {
 public:
  canvas(uint8_t* frame, int64_t size, int64_t margin)
      : frame_(frame), size_(size > 0 ? size : 0), margin_(margin), bytes_(size_t(size_ + 2 * margin)) {
    if (size_ > 0) std::memcpy(bytes_.data() + margin_, frame_, size_t(size_));
  }
  void store(int64_t offset, uint8_t value) {
    const int64_t at = offset + margin_;
    if (at >= 0 && at < int64_t(bytes_.size())) bytes_[size_t(at)] = value;
  }
  uint8_t load(int64_t offset) const {
    const int64_t at = offset + margin_;
    return at >= 0 && at < int64_t(bytes_.size()) ? bytes_[size_t(at)] : 0;
  }
  void fill(int64_t offset, int64_t count, uint8_t value) {
    for (int64_t i = 0; i < count; ++i) store(offset + i, value);
  }
  void commit() {
    if (size_ > 0) std::memcpy(frame_, bytes_.data() + margin_, size_t(size_));
  }

 private:
  uint8_t* frame_;
  int64_t size_, margin_;
  std::vector<uint8_t> bytes_;
};

}  // namespace ref
