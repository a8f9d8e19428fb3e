// Arithmetic that wraps, as the library's registers do.
#pragma once

#include <cstdint>

namespace ref {

inline int32_t wrap(int64_t value) {
  return static_cast<int32_t>(static_cast<uint32_t>(value));
}
inline int32_t add(int32_t a, int32_t b) {
  return wrap(int64_t{a} + b);
}
inline int32_t mul(int32_t a, int32_t b) {
  return wrap(int64_t{a} * b);
}
inline int16_t low16(int64_t value) {
  return static_cast<int16_t>(static_cast<uint16_t>(value));
}

}  // namespace ref
