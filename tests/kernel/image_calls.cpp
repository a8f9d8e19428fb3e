// The functions of ppl.h, each a call into the loaded image.
//
// A thunk knows nothing of its function's prototype: all arguments are integers and pointers, so the caller's six
// argument registers and the words behind its return address hold them all, in order. The build generates the list
// of names (image_names.inc: one PPL_IMAGE_FUNCTION(name) each) from the list of exports.
#include "image_calls.h"

#include "support/level.h"

#include <cpuid.h>
#include <stdlib.h>

#include <array>

namespace kernel_image {
namespace {

constexpr const char* kNames[] = {
#define PPL_IMAGE_FUNCTION(name) #name,
#include "image_names.inc"
#undef PPL_IMAGE_FUNCTION
};

loaded_image load_from_environment() {
  const char* path = getenv("PPL_KERNEL_IMAGE");
  return load(path != nullptr ? path : PPL_KERNEL_IMAGE_DEFAULT);
}

std::array<void*, std::size(kNames)> functions() {
  std::array<void*, std::size(kNames)> found{};
  for (size_t i = 0; i < found.size(); ++i) {
    found[i] = image().exports.at(kNames[i]);
  }
  return found;
}

}  // namespace

const loaded_image& image() {
  static const loaded_image loaded = load_from_environment();
  return loaded;
}

extern "C" uint64_t kernel_image_thunk(uint64_t index, const uint64_t* registers, const uint64_t* stacked) {
  static const auto function = functions();
  std::vector<uint64_t> arguments(registers, registers + 6);
  arguments.insert(arguments.end(), stacked, stacked + 8);
  return call(kNames[index], function[index], arguments);
}

}  // namespace kernel_image

// The levels of the Linux library's tests: here 0 is sse2 and 1 is sse41, if the processor has it.
int ppl_test_levels() {
  unsigned a, b, c, d;
  __cpuid(1, a, b, c, d);
  return (c & bit_SSSE3) != 0 && (c & bit_SSE4_1) != 0 ? 2 : 1;
}

void ppl_test_force_level(int level) {
  kernel_image::deny_features(kernel_image::image(), level == 0 ? bit_SSE4_1 | bit_SSE4_2 | bit_AVX : 0);
}

// What the Linux library's tests call to start from an empty pool: the image's load entry does it.
extern "C" void ppl_clear_pool();
void ppl_clear_pool() {
  kernel_image::call("DllInitialize", kernel_image::image().exports.at("DllInitialize"), {0});
}

asm(R"(
.text
kernel_image_gate:
  push %r9
  push %r8
  push %rcx
  push %rdx
  push %rsi
  push %rdi
  mov %rax, %rdi
  mov %rsp, %rsi
  lea 56(%rsp), %rdx
  sub $8, %rsp
  call kernel_image_thunk
  add $56, %rsp
  ret
)");

// clang-format off
#define PPL_IMAGE_FUNCTION(name) \
    ".globl " #name "\n.type " #name ", @function\n" #name ":\n" \
    "mov $index, %eax\n.set index, index + 1\n" \
    "jmp kernel_image_gate\n.size " #name ", . - " #name "\n"
asm(
    ".set index, 0\n"
#include "image_names.inc"
);
// clang-format on
