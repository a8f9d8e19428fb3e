// ppl.sys inside a Linux process: loaded as the kernel's loader does it, called by the Windows convention.
//
// The image is placed far from the base it was linked for, its sections get their protection, its one import is
// bound to stop_system() below. Every call runs on a stack of 24 KB between guard pages, as a kernel stack is, and is
// checked: the registers that a callee must preserve, the direction flag, the rounding mode, and how deep the stack
// was used. A broken promise ends the process with a message that names the function.
//
// The library kernel_image (image_calls.cpp) defines the functions of ppl.h on top of this, so that any program
// written for the Linux library runs against the image.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace kernel_image {

constexpr size_t kStackBytes = 24 * 1024;
constexpr size_t kStackLimit = 3584;  // what an export may take of it

struct loaded_image {
  std::string path;
  uint8_t* base = nullptr;
  size_t size = 0;
  uint8_t* code = nullptr;
  size_t code_size = 0;
  uint8_t* data = nullptr;  // the writable sections, from the first to the end of the last
  size_t data_size = 0;
  void* entry = nullptr;
  std::map<std::string, void*> exports;
  std::vector<std::string> imports;
};

// Maps the file. Ends the process with a message if the file is not as expected.
loaded_image load(const std::string& path);

// Features, as bits of ecx of leaf 1, that the image's one cpuid instruction, executed when an instance is claimed,
// denies. The first denial replaces that instruction by a trap; until then the image is as it came.
void deny_features(const loaded_image& image, uint32_t features);

// Calls a function of the image. Up to 14 integer or pointer arguments.
uint64_t call(const char* name, void* function, const std::vector<uint64_t>& arguments);

// The deepest stack of all calls so far in this thread, in bytes, and the function that took it.
struct deepest_stack {
  size_t bytes = 0;
  const char* name = "";
};
deepest_stack deepest();

// What the image handed to KeBugCheckEx.
struct bug_check {
  uint32_t code = 0;
  uint64_t parameters[4] = {};
};
// Runs work; true if it ended in a bug check. Outside of this a bug check ends the process.
bool stops_system(const std::function<void()>& work, bug_check* reason);

// The stack on which the current call of this thread runs: kStackBytes from here.
uint8_t* stack();

}  // namespace kernel_image
