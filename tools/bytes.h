// Buffers as the library wants them: every allocation starts at a multiple of 64 bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

namespace tool {

template <class T>
struct Aligned {
  using value_type = T;
  Aligned() = default;
  template <class U>
  Aligned(const Aligned<U>&) {}
  T* allocate(size_t n) { return static_cast<T*>(::operator new (n * sizeof(T), std::align_val_t{64})); }
  void deallocate(T* p, size_t) { ::operator delete (p, std::align_val_t{64}); }
  bool operator==(const Aligned&) const = default;
};

using Bytes = std::vector<uint8_t, Aligned<uint8_t>>;
using Words = std::vector<uint16_t, Aligned<uint16_t>>;

}  // namespace tool
