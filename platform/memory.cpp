// The four memory functions to which a compiler may turn loops and struct copies at any time. In the kernel image and
// in the WebAssembly module nobody else provides them.
//
// 16 bytes at a time; the last, partial 16 are covered by one step that overlaps the one before it. memmove
// goes backwards where it must, and leaves the direction flag alone.
#include <stddef.h>
#include <stdint.h>

namespace {

typedef uint8_t bytes16 __attribute__((vector_size(16)));
typedef bytes16 bytes16_anywhere __attribute__((may_alias, aligned(1)));

bytes16 load(const uint8_t* p) {
  return *reinterpret_cast<const bytes16_anywhere*>(p);
}

void store(uint8_t* p, bytes16 v) {
  *reinterpret_cast<bytes16_anywhere*>(p) = v;
}

}  // namespace

extern "C" {

void* memset(void* destination, int value, size_t size) {
  auto* d = static_cast<uint8_t*>(destination);
  const auto byte = static_cast<uint8_t>(value);
  if (size < 16) {
    for (size_t i = 0; i < size; ++i) {
      d[i] = byte;
    }
    return destination;
  }
  const bytes16 v = bytes16{} + byte;
  for (size_t i = 0; i + 16 <= size; i += 16) {
    store(d + i, v);
  }
  store(d + size - 16, v);
  return destination;
}

void* memmove(void* destination, const void* source, size_t size) {
  auto* d = static_cast<uint8_t*>(destination);
  const auto* s = static_cast<const uint8_t*>(source);
  // Forwards is right unless the destination begins inside the source.
  const bool forwards = static_cast<size_t>(d - s) >= size;
  if (size < 16) {
    for (size_t i = 0; i < size; ++i) {
      const size_t at = forwards ? i : size - 1 - i;
      d[at] = s[at];
    }
    return destination;
  }
  // What the overlapping step moves is read before anything is written.
  if (forwards) {
    const bytes16 last = load(s + size - 16);
    for (size_t i = 0; i + 16 <= size; i += 16) {
      store(d + i, load(s + i));
    }
    store(d + size - 16, last);
  } else {
    const bytes16 first = load(s);
    for (size_t i = size; i >= 16; i -= 16) {
      store(d + i - 16, load(s + i - 16));
    }
    store(d, first);
  }
  return destination;
}

void* memcpy(void* destination, const void* source, size_t size) {
  return memmove(destination, source, size);
}

int memcmp(const void* left, const void* right, size_t size) {
  const auto* a = static_cast<const uint8_t*>(left);
  const auto* b = static_cast<const uint8_t*>(right);
  for (size_t i = 0; i < size; ++i) {
    if (a[i] != b[i]) {
      return a[i] < b[i] ? -1 : 1;
    }
  }
  return 0;
}

}  // extern "C"
