#include "loaded_image.h"

#include <cpuid.h>
#include <setjmp.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/ucontext.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>

namespace kernel_image {
namespace {

constexpr size_t kPage = 4096;
constexpr uint8_t kPaint = 0xCC;

[[noreturn]] void give_up(const std::string& why) {
  fprintf(stderr, "kernel image: %s\n", why.c_str());
  abort();
}

// ---- Bug checks

thread_local bool expected = false;
thread_local jmp_buf resume;
thread_local bug_check reason;

// What KeBugCheckEx is bound to.
__attribute__((ms_abi)) void stop_system(uint32_t code, uint64_t a, uint64_t b, uint64_t c, uint64_t d) {
  if (!expected) {
    char text[160];
    snprintf(text, sizeof text, "bug check %#x (%#lx, %#lx, %#lx, %#lx)", code, a, b, c, d);
    give_up(text);
  }
  reason = {code, {a, b, c, d}};
  longjmp(resume, 1);
}

// ---- Loading

template <class T>
T read(const uint8_t* p) {
  T value;
  memcpy(&value, p, sizeof value);
  return value;
}

// An address that the image was not linked for.
void* const kLoadAddress = reinterpret_cast<void*>(0x7e5a12340000);

struct file_view {
  std::vector<uint8_t> bytes;
  const uint8_t *header, *optional, *sections;
  int section_count;

  const uint8_t* at(size_t offset, size_t size) const {
    if (offset > bytes.size() || size > bytes.size() - offset) {
      give_up("the file is cut short");
    }
    return bytes.data() + offset;
  }
};

file_view open_image(const std::string& path) {
  file_view f;
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    give_up("cannot open " + path);
  }
  f.bytes.assign(std::istreambuf_iterator<char>(in), {});
  f.header = f.at(read<uint32_t>(f.at(0x3c, 4)), 24 + 240);
  f.optional = f.header + 24;
  if (read<uint16_t>(f.header + 4) != 0x8664 || read<uint16_t>(f.optional) != 0x20b) {
    give_up(path + " is no 64-bit image for x86-64");
  }
  f.section_count = read<uint16_t>(f.header + 6);
  f.sections = f.optional + read<uint16_t>(f.header + 20);
  return f;
}

struct directory {
  uint8_t* start;
  uint32_t size;
};

directory directory_of(const file_view& f, const loaded_image& image, int number) {
  const uint8_t* entry = f.optional + 112 + 8 * number;
  return {image.base + read<uint32_t>(entry), read<uint32_t>(entry + 4)};
}

void relocate(const file_view& f, const loaded_image& image) {
  const uint64_t distance = reinterpret_cast<uint64_t>(image.base) - read<uint64_t>(f.optional + 24);
  const directory table = directory_of(f, image, 5);
  for (uint8_t* block = table.start; block < table.start + table.size;) {
    const uint32_t page = read<uint32_t>(block), length = read<uint32_t>(block + 4);
    if (length == 0) {
      break;
    }
    for (uint32_t k = 8; k < length; k += 2) {
      const uint16_t entry = read<uint16_t>(block + k);
      if (entry >> 12 == 10) {
        uint8_t* word = image.base + page + (entry & 0xfff);
        const uint64_t value = read<uint64_t>(word) + distance;
        memcpy(word, &value, sizeof value);
      } else if (entry >> 12 != 0) {
        give_up("unknown type of relocation");
      }
    }
    block += length;
  }
}

void bind_imports(const file_view& f, loaded_image& image) {
  const directory table = directory_of(f, image, 1);
  for (uint8_t* module = table.start; table.size != 0 && read<uint32_t>(module + 12) != 0; module += 20) {
    const std::string from = reinterpret_cast<char*>(image.base + read<uint32_t>(module + 12));
    for (uint8_t* slot = image.base + read<uint32_t>(module + 16); read<uint64_t>(slot) != 0; slot += 8) {
      const std::string name = reinterpret_cast<char*>(image.base + read<uint64_t>(slot) + 2);
      image.imports.push_back(from + ":" + name);
      if (name != "KeBugCheckEx") {
        give_up("nothing to bind the import " + name + " to");
      }
      void* target = reinterpret_cast<void*>(&stop_system);
      memcpy(slot, &target, sizeof target);
    }
  }
}

void read_exports(const file_view& f, loaded_image& image) {
  image.entry = image.base + read<uint32_t>(f.optional + 16);
  const uint8_t* table = directory_of(f, image, 0).start;
  const uint8_t* functions = image.base + read<uint32_t>(table + 28);
  const uint8_t* names = image.base + read<uint32_t>(table + 32);
  const uint8_t* indices = image.base + read<uint32_t>(table + 36);
  for (uint32_t i = 0; i < read<uint32_t>(table + 24); ++i) {
    const char* name = reinterpret_cast<char*>(image.base + read<uint32_t>(names + 4 * i));
    image.exports[name] = image.base + read<uint32_t>(functions + 4 * read<uint16_t>(indices + 2 * i));
  }
}

// ---- The processor's answer

uint32_t denied_features = 0;

// Stands in for the image's cpuid instruction.
void answer_cpuid(int, siginfo_t*, void* context) {
  greg_t* r = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
  const auto leaf = static_cast<unsigned>(r[REG_RAX]);
  unsigned a, b, c, d;
  __cpuid_count(leaf, static_cast<unsigned>(r[REG_RCX]), a, b, c, d);
  if (leaf == 1) c &= ~denied_features;
  r[REG_RAX] = a;
  r[REG_RBX] = b;
  r[REG_RCX] = c;
  r[REG_RDX] = d;
}

// The instruction's two bytes may stand in a constant too: the real ones follow the loading of leaf 1 to eax.
bool follows_leaf_1(const loaded_image& image, const uint8_t* at) {
  static constexpr uint8_t kLeaf1[] = {0xb8, 1, 0, 0, 0};
  const uint8_t* const from = at - std::min<ptrdiff_t>(8, at - image.code);
  return std::search(from, at, std::begin(kLeaf1), std::end(kLeaf1)) != at;
}

void trap_cpuid(const loaded_image& image) {
  static constexpr uint8_t kCpuid[] = {0x0f, 0xa2}, kTrap[] = {0xcc, 0x90};
  uint8_t* const end = image.code + image.code_size;
  uint8_t* found = nullptr;
  int instructions = 0;
  for (uint8_t* at = image.code;; ++at) {
    at = std::search(at, end, std::begin(kCpuid), std::end(kCpuid));
    if (at == end) break;
    if (!follows_leaf_1(image, at)) continue;
    found = at;
    ++instructions;
  }
  if (instructions != 1) give_up("not exactly one cpuid instruction in the image");
  mprotect(image.code, image.code_size, PROT_READ | PROT_WRITE);
  memcpy(found, kTrap, sizeof kTrap);
  mprotect(image.code, image.code_size, PROT_READ | PROT_EXEC);
  struct sigaction action = {};
  action.sa_sigaction = answer_cpuid;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK;
  sigaction(SIGTRAP, &action, nullptr);
}

// ---- Calling

// Offsets into this record stand in run_call below.
struct call_record {
  void* function;           // 0
  void* stack_top;          // 8
  uint64_t arguments[14];   // 16
  uint64_t result;          // 128
  uint64_t caller_stack;    // 136
  uint64_t before[8];       // 144: rbx rbp rsi rdi r12 r13 r14 r15
  uint64_t after[8];        // 208
  uint64_t xmm_before[20];  // 272: xmm6 to xmm15
  uint64_t xmm_after[20];   // 432
  uint64_t stack_after;     // 592
  uint64_t flags_after;     // 600
  uint32_t control_before;  // 608: rounding and exceptions of XMM arithmetic
  uint32_t control_after;   // 612
};
static_assert(offsetof(call_record, result) == 128 && offsetof(call_record, before) == 144 &&
              offsetof(call_record, xmm_before) == 272 && offsetof(call_record, stack_after) == 592 &&
              offsetof(call_record, control_after) == 612);

extern "C" void kernel_image_run_call(call_record*);
asm(R"(
.text
.type kernel_image_run_call, @function
kernel_image_run_call:
  push %rbp
  push %rbx
  push %r12
  push %r13
  push %r14
  push %r15
  mov %rsp, 136(%rdi)
  stmxcsr 608(%rdi)
  # The record's address stands on the new stack above the arguments: no register but rsp must lead back to it.
  mov 8(%rdi), %rsp
  push %rdi
  push %rdi
  mov %rdi, %rbx
  sub $112, %rsp
  lea 16(%rbx), %rsi
  mov %rsp, %rdi
  mov $14, %ecx
  rep movsq
  mov (%rsp), %rcx
  mov 8(%rsp), %rdx
  mov 16(%rsp), %r8
  mov 24(%rsp), %r9
  # The room that a callee may spill these four to holds nothing. All other registers hold rubbish.
  movabs $0xBADBADBADBADBAD0, %rax
  mov %rax, (%rsp)
  mov %rax, 8(%rsp)
  mov %rax, 16(%rsp)
  mov %rax, 24(%rsp)
  mov %rax, %r10
  mov (%rbx), %r11
  .irp n, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15
  movups 272 + (\n - 6) * 16(%rbx), %xmm\n
  .endr
  .irp n, 0, 1, 2, 3, 4, 5
  movups 280 + \n * 16(%rbx), %xmm\n
  .endr
  mov 152(%rbx), %rbp
  mov 160(%rbx), %rsi
  mov 168(%rbx), %rdi
  mov 176(%rbx), %r12
  mov 184(%rbx), %r13
  mov 192(%rbx), %r14
  mov 200(%rbx), %r15
  mov 144(%rbx), %rbx
  call *%r11
  mov 112(%rsp), %rcx
  mov %rax, 128(%rcx)
  mov %rbx, 208(%rcx)
  mov %rbp, 216(%rcx)
  mov %rsi, 224(%rcx)
  mov %rdi, 232(%rcx)
  mov %r12, 240(%rcx)
  mov %r13, 248(%rcx)
  mov %r14, 256(%rcx)
  mov %r15, 264(%rcx)
  .irp n, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15
  movups %xmm\n, 432 + (\n - 6) * 16(%rcx)
  .endr
  mov %rsp, 592(%rcx)
  pushfq
  popq 600(%rcx)
  stmxcsr 612(%rcx)
  cld
  mov 136(%rcx), %rsp
  pop %r15
  pop %r14
  pop %r13
  pop %r12
  pop %rbx
  pop %rbp
  ret
.size kernel_image_run_call, . - kernel_image_run_call
)");

// 24 KB between two guard pages. The page above them stands for the callers' frames: an overrun writes upwards.
// Signals that arrive during a call are handled on a stack of their own.
struct guarded_stack {
  static constexpr size_t kSignalBytes = 64 * 1024;
  static constexpr size_t kAll = kPage + kStackBytes + kPage + kPage + kSignalBytes;
  uint8_t* low;

  guarded_stack() {
    void* room = mmap(nullptr, kAll, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    low = static_cast<uint8_t*>(room) + kPage;
    uint8_t* const signals = low + kStackBytes + kPage + kPage;
    if (room == MAP_FAILED || mprotect(low, kStackBytes + kPage, PROT_READ | PROT_WRITE) != 0 ||
        mprotect(signals, kSignalBytes, PROT_READ | PROT_WRITE) != 0) {
      give_up("no memory for a stack");
    }
    memset(low, kPaint, kStackBytes);
    stack_t description = {};
    description.ss_sp = signals;
    description.ss_size = kSignalBytes;
    sigaltstack(&description, nullptr);
  }
  ~guarded_stack() {
    stack_t none = {};
    none.ss_flags = SS_DISABLE;
    sigaltstack(&none, nullptr);
    munmap(low - kPage, kAll);
  }
};
thread_local guarded_stack call_stack;
thread_local deepest_stack depth_so_far;

// Bytes of the stack that are no longer as painted; paints them anew.
size_t used_stack() {
  uint8_t* const low = call_stack.low;
  uint8_t* const top = low + kStackBytes;
  uint8_t* p = low;
  const uint64_t paint = 0x0101010101010101u * kPaint;
  // Far from the top nothing is ever touched: whole blocks first.
  constexpr size_t kBlock = 512;
  static const std::array<uint8_t, kBlock> untouched = [] {
    std::array<uint8_t, kBlock> block;
    block.fill(kPaint);
    return block;
  }();
  while (p < top && memcmp(p, untouched.data(), kBlock) == 0) {
    p += kBlock;
  }
  while (p < top && read<uint64_t>(p) == paint) {
    p += 8;
  }
  memset(p, kPaint, static_cast<size_t>(top - p));
  return static_cast<size_t>(top - p);
}

}  // namespace

void deny_features(const loaded_image& image, uint32_t features) {
  static bool trapped = false;
  if (features != 0 && !trapped) {
    trap_cpuid(image);
    trapped = true;
  }
  denied_features = features;
}

loaded_image load(const std::string& path) {
  const file_view f = open_image(path);
  loaded_image image;
  image.path = path;
  image.size = read<uint32_t>(f.optional + 56);
  void* room = mmap(kLoadAddress, image.size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (room == MAP_FAILED) {
    give_up("no memory for the image");
  }
  image.base = static_cast<uint8_t*>(room);
  const uint32_t header_size = read<uint32_t>(f.optional + 60);
  memcpy(image.base, f.at(0, header_size), header_size);
  struct section {
    uint8_t* start;
    size_t size;
    int protection;
  };
  std::vector<section> sections;
  for (int i = 0; i < f.section_count; ++i) {
    const uint8_t* s = f.sections + 40 * i;
    const uint32_t size = read<uint32_t>(s + 8), start = read<uint32_t>(s + 12);
    const uint32_t in_file = std::min(size, read<uint32_t>(s + 16)), flags = read<uint32_t>(s + 36);
    if (start > image.size || size > image.size - start) {
      give_up("a section leaves the image");
    }
    if (in_file != 0) {
      memcpy(image.base + start, f.at(read<uint32_t>(s + 20), in_file), in_file);
    }
    sections.push_back(
        {image.base + start, (size + kPage - 1) & ~(kPage - 1),
         PROT_READ | (flags & 0x80000000 ? PROT_WRITE : 0) | (flags & 0x20000000 ? PROT_EXEC : 0)});
  }
  relocate(f, image);
  bind_imports(f, image);
  read_exports(f, image);
  mprotect(image.base, kPage, PROT_READ);
  uint8_t* data_end = nullptr;
  for (const section& s : sections) {
    if ((s.protection & PROT_EXEC) != 0) {
      if (image.code != nullptr) {
        give_up("more than one section with code");
      }
      image.code = s.start;
      image.code_size = s.size;
    }
    if ((s.protection & PROT_WRITE) != 0) {
      image.data = image.data == nullptr ? s.start : image.data;
      data_end = s.start + s.size;
    }
    if (mprotect(s.start, s.size, s.protection) != 0) {
      give_up("cannot protect a section");
    }
  }
  image.data_size = static_cast<size_t>(data_end - image.data);
  return image;
}

uint64_t call(const char* name, void* function, const std::vector<uint64_t>& arguments) {
  call_record r = {};
  if (arguments.size() > std::size(r.arguments)) {
    give_up("too many arguments");
  }
  r.function = function;
  r.stack_top = call_stack.low + kStackBytes;
  std::copy(arguments.begin(), arguments.end(), r.arguments);
  uint64_t pattern = 0x9E3779B97F4A7C15;
  for (uint64_t& word : r.before) {
    word = pattern *= 0xD1342543DE82EF95;
  }
  for (uint64_t& word : r.xmm_before) {
    word = pattern *= 0xD1342543DE82EF95;
  }
  kernel_image_run_call(&r);
  const auto fail = [&](const char* what) { give_up(std::string(name) + " " + what); };
  if (!std::equal(std::begin(r.before), std::end(r.before), r.after)) {
    fail("did not preserve a register among rbx, rbp, rsi, rdi, r12 to r15");
  }
  if (!std::equal(std::begin(r.xmm_before), std::end(r.xmm_before), r.xmm_after)) {
    fail("did not preserve a register among xmm6 to xmm15");
  }
  if (r.stack_after != reinterpret_cast<uint64_t>(r.stack_top) - 128) {
    fail("returned with another stack pointer");
  }
  if ((r.flags_after & 0x400) != 0) {
    fail("left the direction flag set");
  }
  if (r.control_before >> 6 != r.control_after >> 6) {
    fail("changed the rounding mode or the exception masks");
  }
  // The record's address and the arguments take 128 bytes; they are the caller's.
  const size_t used = used_stack() - 128;
  if (used > kStackLimit) {
    fail(("took " + std::to_string(used) + " bytes of stack").c_str());
  }
  if (used > depth_so_far.bytes) {
    depth_so_far = {used, name};
  }
  return r.result;
}

deepest_stack deepest() {
  return depth_so_far;
}

uint8_t* stack() {
  return call_stack.low;
}

bool stops_system(const std::function<void()>& work, bug_check* why) {
  expected = true;
  if (setjmp(resume) == 0) {
    work();
    expected = false;
    return false;
  }
  expected = false;
  *why = reason;
  memset(call_stack.low, kPaint, kStackBytes);
  return true;
}

}  // namespace kernel_image
