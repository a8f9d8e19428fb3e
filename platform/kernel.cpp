// The kernel image's load entries and its stack guard.
//
// The one import of the image, KeBugCheckEx, stands here, for the guard alone. The file is compiled without the
// guard, since DllInitialize changes it. Everything is right as well if nobody calls DllInitialize: the pool is
// zero at load, and the guard has a start value.
#include <stdint.h>

extern "C" {

using nt_status = int32_t;
constexpr nt_status kSuccess = 0;
constexpr uint32_t kOverranStackBuffer = 0xF7;  // DRIVER_OVERRAN_STACK_BUFFER

__declspec(dllimport) void KeBugCheckEx(uint32_t code, uintptr_t, uintptr_t, uintptr_t, uintptr_t);
void ppl_clear_pool();  // frame/pool.cpp

// The two names that the compiler's stack protector asks for.
extern uintptr_t __stack_chk_guard;
[[noreturn]] void __stack_chk_fail();

// The entries that the loader asks for, exported to it but not to the import libraries.
nt_status DllInitialize(void* registry_path);
nt_status DllUnload();
// The image's entry point. Not exported, and not called for an image that is loaded because another imports it.
nt_status DriverEntry(void* driver_object, void* registry_path);

uintptr_t __stack_chk_guard = 0x00002B992DDFA232;

void __stack_chk_fail() {
  const auto caller = reinterpret_cast<uintptr_t>(__builtin_return_address(0));
  KeBugCheckEx(kOverranStackBuffer, 0, __stack_chk_guard, ~__stack_chk_guard, caller);
  for (;;) {
    __builtin_trap();
  }
}

// The time stamp counter and the load address are the only seeds to be had without an import. The guard keeps
// two zero bytes on top, which stop a copy of a string.
nt_status DllInitialize(void*) {
  const auto address = reinterpret_cast<uintptr_t>(&__stack_chk_guard);
  uintptr_t seed = __builtin_ia32_rdtsc() ^ address;
  seed = (seed ^ (seed << 17) ^ (seed >> 9)) & 0x0000FFFFFFFFFFFF;
  if (seed != 0) {
    __stack_chk_guard = seed;
  }
  ppl_clear_pool();
  return kSuccess;
}

// Any other answer would keep the image in memory for good.
nt_status DllUnload() {
  return kSuccess;
}

nt_status DriverEntry(void*, void*) {
  return kSuccess;
}

}  // extern "C"
