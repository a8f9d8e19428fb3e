// How much stack the Linux library takes: every call runs on a painted stack of its own, at every level that this
// processor has, and what is no longer as painted afterwards was used. The figures are printed.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <ucontext.h>

#include <iterator>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "ppl.h"
#include "support/bayer_exports.h"
#include "support/level.h"

extern "C" void ppl_clear_pool();

namespace {

// What README.md and ppl.h promise of every call, its return address included.
constexpr size_t kBound = 4096;
// Plain C++, for processors without vector code of their own, keeps whole vectors on the stack.
constexpr size_t kPlainBound = 12288;
size_t bound_of(int level) {
  return __builtin_strcmp(ppl_test_level_name(level), "plain") == 0 ? kPlainBound : kBound;
}

constexpr size_t kStackBytes = 64 * 1024;
constexpr uint8_t kPaint = 0xCC;
alignas(64) uint8_t stack[kStackBytes];

size_t used_below(const uint8_t* top) {
  const uint8_t* p = stack;
  while (p < top && *p == kPaint) ++p;
  return static_cast<size_t>(top - p);
}

// Where the stack ends for whoever is called next.
inline uint8_t* stack_pointer() {
  uint8_t* here;
#if defined(__x86_64__)
  __asm__ volatile("mov %%rsp, %0" : "=r"(here));
#elif defined(__aarch64__)
  __asm__ volatile("mov %0, sp" : "=r"(here));
#elif defined(__riscv)
  __asm__ volatile("mv %0, sp" : "=r"(here));
#else
  here = static_cast<uint8_t*>(__builtin_frame_address(0));
#endif
  return here;
}

// Arguments beyond the registers, which this frame pushes, count too: no call looks cheaper than it is.
uint8_t* top;
template <class F, class... A>
__attribute__((noinline)) void call_from_here(F* function, A... arguments) {
  uint8_t* const here = stack_pointer();
  function(arguments...);
  top = here;
}

ucontext_t caller, callee;
void (*work)(const void*);
const void* work_of;
void run_work() {
  work(work_of);
}

// The bytes of stack that one call takes.
template <class R, class... A>
size_t depth_of(R (*function)(A...), std::type_identity_t<A>... arguments) {
  const auto call = [&] { call_from_here(function, arguments...); };
  work = [](const void* f) { (*static_cast<const decltype(call)*>(f))(); };
  work_of = &call;
  memset(stack, kPaint, kStackBytes);
  getcontext(&callee);
  callee.uc_stack.ss_sp = stack;
  callee.uc_stack.ss_size = kStackBytes;
  callee.uc_link = &caller;
  makecontext(&callee, run_work, 0);
  swapcontext(&caller, &callee);
  return used_below(top);
}

struct deepest {
  size_t bytes = 0;
  std::string name;
  void note(size_t used, const std::string& what) {
    if (used > bytes) *this = {used, what};
  }
};

// ---- Any function of ppl.h, with arguments by their types

// Room for every frame that the arguments below can ask for: at most 128 x 128, doubled, of 4 bytes, black lines added.
constexpr size_t kBufferBytes = 4 << 20;
alignas(64) uint8_t buffers[4][kBufferBytes];

class argument_source {
 public:
  // Numbers drawn at random, or all the same.
  static argument_source random(ppl_context* c, uint32_t seed) { return {c, seed, -1}; }
  static argument_source all(ppl_context* c, int number) { return {c, 0, number}; }

  template <class T>
  T next() {
    if constexpr (std::is_pointer_v<T>) {
      if constexpr (std::is_same_v<std::remove_cv_t<std::remove_pointer_t<T>>, ppl_context>)
        return context_;
      else
        return static_cast<T>(static_cast<void*>(buffers[pointers_++ % 4]));
    } else {
      static constexpr int kValues[] = {0, 1, 2, 3, 16, 32, 48, 64, 96, 128};
      return static_cast<T>(number_ >= 0 ? number_ : kValues[random_() % std::size(kValues)]);
    }
  }

 private:
  argument_source(ppl_context* c, uint32_t seed, int number) : context_(c), random_(seed), number_(number) {}

  ppl_context* context_;
  std::mt19937 random_;
  int number_;
  int pointers_ = 0;
};

template <class R, class... A>
size_t depth_of_any(R (*function)(A...), [[maybe_unused]] argument_source source) {
  return depth_of<R, A...>(function, source.next<A>()...);
}

struct named_call {
  const char* name;
  size_t (*depth)(argument_source);
};
const named_call kExports[] = {
#define PPL_EXPORT(name) {#name, [](argument_source source) { return depth_of_any(&name, source); }},
#include "exports.inc"
};

// ---- The measurements

class Stack : public testing::TestWithParam<int> {
 protected:
  void SetUp() override {
    if (GetParam() >= ppl_test_levels()) GTEST_SKIP() << "this processor has no such level";
    ppl_test_force_level(GetParam());
    context_ = ppl_init();
    ASSERT_NE(context_, nullptr);
    std::mt19937 random(1);
    for (uint8_t& sample : buffers[0]) sample = static_cast<uint8_t>(random() >> 24);
  }
  void TearDown() override {
    if (context_ == nullptr) return;
    ppl_free(context_);
    ppl_test_force_level(-1);
  }
  void report(const deepest& d) const {
    printf("level %d: %4zu bytes of stack, %s\n", GetParam(), d.bytes, d.name.c_str());
    EXPECT_GT(d.bytes, 100u) << "nothing was measured";
    EXPECT_LE(d.bytes, bound_of(GetParam())) << d.name;
  }
  ppl_context* context_ = nullptr;
};

TEST_P(Stack, BayerFrames) {
  deepest d;
  for (int f = 0; f < PPL_FORMATS; ++f)
    for (uint32_t quality = 0; quality < PPL_QUALITIES; ++quality)
      for (int decimation = -1; decimation <= 2; ++decimation)
        for (uint32_t flags = 0; flags < 8; ++flags)
          for (const uint32_t width : {48u, 128u}) {
            ppl_set_quality(context_, quality);
            ppl_set_decimation(context_, decimation, (flags & 1) != 0 ? 2 : 0, (flags & 2) != 0 ? 3 : 0);
            ppl_set_h_mirror(context_, flags & 1);
            ppl_set_v_mirror(context_, flags >> 1 & 1);
            (flags & 4) != 0 ? ppl_enable_medium_filter(context_) : ppl_disable_medium_filter(context_);
            ppl_set_mean_collection(context_, 1);
            d.note(depth_of(support::kFrameCalls[f], context_, buffers[0], buffers[1], width, 32u, width),
                   support::kFormatNames[f] + std::string(" of quality ") + std::to_string(quality) +
                       ", decimation " + std::to_string(decimation) + ", width " + std::to_string(width) +
                       ", flags " + std::to_string(flags));
          }
  report(d);
}

TEST_P(Stack, BayerFramesByWrappers) {
  deepest d;
  for (uint32_t quality = 0; quality < PPL_QUALITIES; ++quality)
    for (const named_call& f : kExports) {
      if (std::string(f.name).rfind("Baylor", 0) != 0) continue;
      ppl_set_quality(context_, quality);
      d.note(f.depth(argument_source::all(context_, 64)),
             f.name + (" of quality " + std::to_string(quality)));
    }
  report(d);
}

TEST_P(Stack, EveryFunction) {
  deepest d;
  for (uint32_t round = 0; round < 60; ++round) {
    ppl_reset_all_controls(context_);
    ppl_set_quality(context_, round % PPL_QUALITIES);
    for (const named_call& f : kExports) {
      const bool is_init = std::string(f.name) == "ppl_init";
      d.note(f.depth(argument_source::random(context_, round * 997 + 1)), f.name);
      if (is_init || std::string(f.name) == "ppl_free") {
        ppl_clear_pool();
        context_ = ppl_init();
      }
    }
  }
  report(d);
}

INSTANTIATE_TEST_SUITE_P(Level, Stack, testing::Range(0, PPL_TEST_LEVELS));

// libppl.so as a program loads it: its first calls cost no more than later ones, for nothing is looked up in them.
TEST(StackOfSharedLibrary, FirstCalls) {
  void* const library = dlopen(PPL_SHARED_LIBRARY, RTLD_LAZY | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  const auto find = [&](const char* name) {
    void* const f = dlsym(library, name);
    EXPECT_NE(f, nullptr) << name;
    return f;
  };
  const auto init = reinterpret_cast<decltype(&ppl_init)>(find("ppl_init"));
  const auto mirror = reinterpret_cast<decltype(&ppl_set_h_mirror)>(find("ppl_set_h_mirror"));
  const auto frame = reinterpret_cast<decltype(&ppl_process_blrtoi420)>(find("ppl_process_blrtoi420"));
  ppl_context* context = nullptr;
  const size_t first_init = depth_of(init);
  context = init();
  ASSERT_NE(context, nullptr);
  const size_t later_init = depth_of(init);
  printf("libppl.so: ppl_init %zu bytes of stack at first, %zu later\n", first_init, later_init);
  EXPECT_EQ(first_init, later_init);
  const size_t first_frame = depth_of(frame, context, buffers[0], buffers[1], 128u, 32u, 128u);
  const size_t later_frame = depth_of(frame, context, buffers[0], buffers[1], 128u, 32u, 128u);
  printf("libppl.so: a frame %zu bytes of stack at first, %zu later\n", first_frame, later_frame);
  EXPECT_LE(first_frame, bound_of(0));
  EXPECT_LE(first_frame, later_frame + 64);
  EXPECT_LE(depth_of(mirror, context, 1u), bound_of(0));
  dlclose(library);
}

// The measurement sees what a call takes.
__attribute__((noinline)) void takes(size_t bytes) {
  volatile uint8_t* const room = static_cast<volatile uint8_t*>(__builtin_alloca(bytes));
  room[0] = 1;
}
TEST(StackMeasurement, SeesWhatACallTakes) {
  for (const size_t bytes : {256u, 4096u, 8192u}) {
    const size_t used = depth_of(takes, bytes);
    EXPECT_GE(used, bytes);
    EXPECT_LE(used, bytes + 128);
  }
}

}  // namespace
