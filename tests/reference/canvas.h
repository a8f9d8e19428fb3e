// The memory round an output frame: stores and read-backs may fall anywhere, the caller sees only its frame.
//
// Opening a canvas takes the caller's bytes in; commit() hands back the bytes inside the frame. What falls outside can
// be read back within the margin, as in memory that goes on on both sides, and is then forgotten. A byte that is made
// from memory outside which nothing has written is open: no rule says what it is.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

namespace ref {

class canvas {
 public:
  canvas(uint8_t* frame, int64_t size, int64_t margin)
      : frame_(frame),
        size_(size > 0 ? size : 0),
        margin_(margin),
        bytes_(size_t(size_ + 2 * margin)),
        known_(bytes_.size()) {
    if (size_ == 0) return;
    std::memcpy(bytes_.data() + margin_, frame_, size_t(size_));
    std::memset(known_.data() + margin_, 1, size_t(size_));
  }
  void store(int64_t offset, uint8_t value, bool known = true) {
    const int64_t at = offset + margin_;
    if (at < 0 || at >= int64_t(bytes_.size())) return;
    bytes_[size_t(at)] = value;
    known_[size_t(at)] = known;
  }
  uint8_t load(int64_t offset) const {
    const int64_t at = offset + margin_;
    return at >= 0 && at < int64_t(bytes_.size()) ? bytes_[size_t(at)] : 0;
  }
  bool known(int64_t offset) const {
    const int64_t at = offset + margin_;
    return at >= 0 && at < int64_t(bytes_.size()) && known_[size_t(at)];
  }
  // The rounded-up mean of two bytes, and a copy, within the memory.
  void mean_of(int64_t target, int64_t a, int64_t b) {
    store(target, uint8_t((load(a) + load(b) + 1) >> 1), known(a) && known(b));
  }
  void copy(int64_t target, int64_t source) { store(target, load(source), known(source)); }
  void fill(int64_t offset, int64_t count, uint8_t value) {
    for (int64_t i = 0; i < count; ++i) store(offset + i, value);
  }
  void commit() {
    if (size_ > 0) std::memcpy(frame_, bytes_.data() + margin_, size_t(size_));
  }
  // Stores from here on are dropped.
  int64_t end() const { return size_ + margin_; }
  // Offsets of the open bytes inside the frame.
  std::vector<int64_t> open_bytes() const {
    std::vector<int64_t> open;
    for (int64_t i = 0; i < size_; ++i)
      if (!known(i)) open.push_back(i);
    return open;
  }

 private:
  uint8_t* frame_;
  int64_t size_, margin_;
  std::vector<uint8_t> bytes_, known_;
};

}  // namespace ref
