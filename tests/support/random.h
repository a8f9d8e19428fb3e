// What tests draw at random, and the digests of what they see.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace support {

// xorshift32: each step gives the number.
inline uint32_t step(uint32_t& x) {
  x ^= x << 13;
  x ^= x >> 17;
  x ^= x << 5;
  return x;
}

inline std::vector<uint8_t> noise(size_t count, uint32_t seed) {
  std::vector<uint8_t> bytes(count);
  for (uint8_t& b : bytes) b = static_cast<uint8_t>(step(seed) >> 24);
  return bytes;
}

// FNV-1a, 64 bits, over bytes in memory order.
struct digest {
  uint64_t value = 14695981039346656037u;
  void byte(uint8_t b) { value = (value ^ b) * 1099511628211u; }
  void bytes(const void* data, size_t count) {
    for (size_t i = 0; i < count; ++i) byte(static_cast<const uint8_t*>(data)[i]);
  }
  void word(uint32_t w) {
    for (int i = 0; i < 4; ++i) byte(static_cast<uint8_t>(w >> 8 * i));
  }
};
inline uint64_t digest_of(const void* data, size_t count) {
  digest d;
  d.bytes(data, count);
  return d.value;
}

class random_source {
 public:
  explicit random_source(uint64_t seed) : engine_(seed * 0x9e3779b97f4a7c15u + 1) {}
  uint32_t bits() { return static_cast<uint32_t>(engine_() >> 16); }
  int between(int low, int high) {
    return low + static_cast<int>(bits() % static_cast<uint32_t>(high - low + 1));
  }
  bool chance(int percent) { return between(1, 100) <= percent; }
  bool one_in(int n) { return between(1, n) == 1; }
  template <typename T, size_t n>
  const T& pick(const T (&list)[n]) {
    return list[bits() % n];
  }
  // Mostly ordinary values of a control, sometimes the ends of its range and what lies beyond, sometimes anything.
  int value(int low, int high) {
    switch (between(0, 9)) {
      case 0:
        return chance(50) ? low : high;
      case 1:
        return chance(50) ? low - 1 : high + 1;
      case 2:
        return chance(70) ? between(low, high) : static_cast<int>(bits());
      default:
        return between(low, high);
    }
  }

 private:
  std::mt19937_64 engine_;
};

// The seed of a test: its own, or the one that the program was started with (--seed N).
uint64_t seed(uint64_t own);

}  // namespace support
