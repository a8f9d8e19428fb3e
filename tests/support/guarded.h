// Memory between two inaccessible pages, so that a byte too far faults.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

// The usable bytes start and end on a page; the pages before and behind cannot be touched.
class guarded {
 public:
  explicit guarded(size_t bytes) {
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    usable_ = (bytes + page - 1) / page * page;
    whole_ = usable_ + 2 * page;
    void* p = mmap(nullptr, whole_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (p == MAP_FAILED) std::abort();
    base_ = static_cast<uint8_t*>(p) + page;
    if (usable_ > 0 && mprotect(base_, usable_, PROT_READ | PROT_WRITE) != 0) std::abort();
    map_ = p;
  }
  guarded(const guarded&) = delete;
  guarded& operator=(const guarded&) = delete;
  ~guarded() { munmap(map_, whole_); }

  uint8_t* begin() const { return base_; }
  uint8_t* end() const { return base_ + usable_; }

  // `bytes` bytes whose address is `offset` modulo 64, as close to the guard behind (or before) as that allows.
  uint8_t* place(size_t bytes, size_t offset, bool at_end) const {
    if (!at_end) return base_ + offset;
    const auto last = reinterpret_cast<uintptr_t>(end()) - bytes;
    return end() - bytes - (last - offset) % 64;
  }
  static size_t room_for(size_t bytes) { return bytes + 128; }

 private:
  void* map_;
  uint8_t* base_;
  size_t usable_, whole_;
};
