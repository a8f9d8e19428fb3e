// The kernel image as such: load entries, pool, stack guard, and the promises that every call is held to.
#include <cpuid.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <string.h>
#include <sys/mman.h>

#include <string>
#include <vector>

#include "image_calls.h"
#include "ppl.h"
#include "record/context.h"
#include "record/levels.h"
#include "support/level.h"

extern "C" void ppl_clear_pool();

namespace {

using kernel_image::image;

constexpr uint64_t kStartGuard = 0x00002B992DDFA232;

uint64_t call(const char* name, const std::vector<uint64_t>& arguments = {}) {
  return kernel_image::call(name, image().exports.at(name), arguments);
}

class KernelImage : public testing::Test {
 protected:
  // Finds where the image keeps its guard, before a load entry changes it.
  static void SetUpTestSuite() {
    for (size_t at = 0; at + 8 <= image().data_size; at += 8) {
      const auto* word = reinterpret_cast<const uint64_t*>(image().data + at);
      if (*word == kStartGuard) {
        ASSERT_EQ(guard, nullptr) << "the start value stands twice in the data";
        guard = word;
      }
    }
    ASSERT_NE(guard, nullptr) << "the start value stands nowhere in the data";
  }
  // Gives back what a test has claimed.
  void TearDown() override { ppl_clear_pool(); }

  static inline const uint64_t* guard = nullptr;
};

// First: after it the load entry has been called.
TEST_F(KernelImage, IsRightWithoutItsLoadEntry) {
  std::vector<ppl_context*> all;
  for (int i = 0; i < 8; ++i) {
    all.push_back(ppl_init());
    ASSERT_NE(all.back(), nullptr);
    EXPECT_EQ(ppl_n_frame(all.back()), 0u);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(all.back()) % 64, 0u);
  }
  EXPECT_EQ(ppl_init(), nullptr);
  EXPECT_EQ(ppl_free(all[3]), 1);
  EXPECT_EQ(ppl_init(), all[3]);
}

TEST_F(KernelImage, ExportsEveryFunctionAndTheLoadEntries) {
  EXPECT_EQ(image().exports.size(), 270u);
  EXPECT_EQ(image().exports.count("DllInitialize"), 1u);
  EXPECT_EQ(image().exports.count("DllUnload"), 1u);
  EXPECT_EQ(image().imports, std::vector<std::string>{"ntoskrnl.exe:KeBugCheckEx"});
}

TEST_F(KernelImage, LoadEntryClearsThePool) {
  alignas(64) static uint8_t raw[64 * 48], picture[64 * 48 * 3 / 2];
  ppl_context* first = ppl_init();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(ppl_process_blrtoi420(first, raw, picture, 64, 48, 64), 1);
  EXPECT_EQ(ppl_n_frame(first), 1u);
  while (ppl_init() != nullptr) {
  }
  EXPECT_EQ(static_cast<int32_t>(call("DllInitialize", {0})), 0);
  for (int i = 0; i < 8; ++i) {
    ppl_context* c = ppl_init();
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(i == 0, c == first);
    EXPECT_EQ(ppl_n_frame(c), 0u);
  }
  EXPECT_EQ(ppl_init(), nullptr);
}

TEST_F(KernelImage, LoadEntrySeedsTheGuard) {
  std::vector<uint64_t> seen{*guard};
  for (int i = 0; i < 4; ++i) {
    call("DllInitialize", {0});
    EXPECT_EQ(*guard >> 48, 0u);
    for (const uint64_t earlier : seen) {
      EXPECT_NE(*guard, earlier);
    }
    seen.push_back(*guard);
  }
}

TEST_F(KernelImage, EntryPointAnswersSuccess) {
  EXPECT_EQ(static_cast<int32_t>(kernel_image::call("the entry point", image().entry, {0, 0})), 0);
}

TEST_F(KernelImage, UnloadAnswersSuccess) {
  EXPECT_EQ(static_cast<int32_t>(call("DllUnload")), 0);
}

// ---- An overrun. A page of the caller's buffer cannot be touched; the fault comes in the middle of a frame call, and
// its handler does what an overrun would: it writes over the guard that stands on the stack of the call. Then the
// page is given free and the call goes on.

uint8_t* closed_page;
uint64_t guard_value;
int guards_hit;

void overrun(int, siginfo_t* info, void*) {
  auto* const fault = static_cast<uint8_t*>(info->si_addr);
  if (fault < closed_page || fault >= closed_page + 4096) {
    signal(SIGSEGV, SIG_DFL);
    return;
  }
  // The guard is stored as it is (GCC) or mixed with the stack pointer (clang).
  const auto low = reinterpret_cast<uint64_t>(kernel_image::stack());
  for (uint64_t at = low; at < low + kernel_image::kStackBytes; at += 8) {
    auto* const word = reinterpret_cast<uint64_t*>(at);
    const uint64_t mixed_with = *word ^ guard_value;
    if (mixed_with == 0 || mixed_with - low < kernel_image::kStackBytes) {
      *word = 0x4141414141414141;
      ++guards_hit;
    }
  }
  mprotect(closed_page, 4096, PROT_READ | PROT_WRITE);
}

// Runs one frame with quality q of which the last source page faults.
bool frame_stops_system(uint32_t quality, bool harm, kernel_image::bug_check* reason) {
  constexpr size_t kBytes = 128 * 64;
  static uint8_t* const raw = static_cast<uint8_t*>(
      mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  alignas(64) static uint8_t picture[128 * 64 * 3 / 2];
  ppl_context* c = ppl_init();
  ppl_set_quality(c, quality);
  struct sigaction action = {}, before;
  action.sa_sigaction = overrun;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK;
  sigaction(SIGSEGV, &action, &before);
  closed_page = raw + 4096;
  guards_hit = 0;
  if (harm) {
    mprotect(closed_page, 4096, PROT_NONE);
  }
  const bool stopped =
      kernel_image::stops_system([&] { ppl_process_blrtoi420(c, raw, picture, 128, 64, 128); }, reason);
  mprotect(closed_page, 4096, PROT_READ | PROT_WRITE);
  sigaction(SIGSEGV, &before, nullptr);
  return stopped;
}

TEST_F(KernelImage, OverrunEndsInABugCheck) {
  // At the start value and at a seeded one.
  for (int round = 0; round < 2; ++round) {
    guard_value = *guard;
    kernel_image::bug_check reason;
    EXPECT_FALSE(frame_stops_system(15, false, &reason));
    EXPECT_TRUE(frame_stops_system(15, true, &reason));
    EXPECT_GE(guards_hit, 1);
    EXPECT_EQ(reason.code, 0xF7u);
    EXPECT_EQ(reason.parameters[1], guard_value);
    EXPECT_EQ(reason.parameters[2], ~guard_value);
    EXPECT_GE(reason.parameters[3], reinterpret_cast<uint64_t>(image().code));
    EXPECT_LT(reason.parameters[3], reinterpret_cast<uint64_t>(image().code + image().code_size));
    call("DllInitialize", {0});
  }
}

// ---- The promises are really looked at: functions that break them.

extern "C" uint8_t clobbers_rsi[], clobbers_xmm9[], sets_direction[], uses_much_stack[], changes_rounding[],
    keeps_promises[];
asm(R"(
.text
clobbers_rsi:
  xor %esi, %esi
  ret
clobbers_xmm9:
  pxor %xmm9, %xmm9
  ret
sets_direction:
  std
  ret
uses_much_stack:
  movl $1, -3580(%rsp)
  ret
changes_rounding:
  push $0x7f80
  ldmxcsr (%rsp)
  pop %rax
  ret
keeps_promises:
  movl $1, -3572(%rsp)
  lea (%rcx, %rdx, 2), %rcx
  lea (%rcx, %r8, 4), %rcx
  lea (%rcx, %r9, 8), %rax
  shl $32, %rax
  add 40(%rsp), %rax
  add 112(%rsp), %rax
  ret
)");

uint64_t call_local(uint8_t* function, const std::vector<uint64_t>& arguments = {}) {
  return kernel_image::call("local", function, arguments);
}

TEST(KernelCallDeathTest, PromisesAreChecked) {
  EXPECT_DEATH(call_local(clobbers_rsi), "did not preserve a register among rbx");
  EXPECT_DEATH(call_local(clobbers_xmm9), "did not preserve a register among xmm6");
  EXPECT_DEATH(call_local(sets_direction), "direction flag");
  EXPECT_DEATH(call_local(uses_much_stack), "took 35.. bytes of stack");
  EXPECT_DEATH(call_local(changes_rounding), "rounding mode");
}

TEST(KernelCall, PassesArguments) {
  // 1 + 2 x 2 + 4 x 3 + 8 x 4 in the upper half; the fifth and the fourteenth in the lower.
  const uint64_t sum = call_local(keeps_promises, {1, 2, 3, 4, 5, 0, 0, 0, 0, 0, 0, 0, 0, 600});
  EXPECT_EQ(sum, (uint64_t{49} << 32) + 605);
}

// The wider level uses SSSE3 and SSE4.1; where either is denied, it is not taken.
TEST(KernelCall, WiderLevelNeedsBothItsFeatures) {
  const auto level = [] {
    ppl_context* const c = ppl_init();
    const std::string name = c->kernels->name;
    ppl_free(c);
    return name;
  };
  for (const uint32_t denied : {bit_SSE4_1, bit_SSSE3}) {
    kernel_image::deny_features(image(), static_cast<uint32_t>(denied));
    EXPECT_EQ(level(), "sse2") << denied;
  }
  kernel_image::deny_features(image(), bit_AVX);
  EXPECT_EQ(level(), ppl_test_levels() == 2 ? "sse41" : "sse2");
  kernel_image::deny_features(image(), 0);
}

TEST(KernelCall, LevelsDiffer) {
  // Both levels of the image run in one process and give the same picture.
  alignas(64) static uint8_t raw[2][128 * 64], picture[2][128 * 64 * 3 / 2];
  for (int level = 0; level < ppl_test_levels(); ++level) {
    ppl_test_force_level(level);
    for (size_t i = 0; i < sizeof raw[0]; ++i) {
      raw[level][i] = static_cast<uint8_t>(i * 7 + i / 128 * 31);
    }
    ppl_context* c = ppl_init();
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(ppl_process_blrtoi420(c, raw[level], picture[level], 128, 64, 128), 1);
    ppl_free(c);
  }
  ppl_test_force_level(-1);
  if (ppl_test_levels() == 2) {
    EXPECT_EQ(memcmp(picture[0], picture[1], sizeof picture[0]), 0);
  }
}

}  // namespace
