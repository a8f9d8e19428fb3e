// Eight contexts on eight threads at once: what the interface allows gives the bytes of one thread alone.
//
//   threads_test             frames and setters on a context of each thread's own; ends with "N passed, M failed"
//   threads_test --shared    what the interface does not allow without a lock: two contexts ask for centre-weighted
//   means at
//                            the same time, which share their result. A thread sanitizer has to report it.
//
// Neither GoogleTest nor anything else that a sanitizer could not see through.
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <thread>
#include <vector>

#include "ppl.h"

namespace {

constexpr int kThreads = 8, kFrames = 24;
constexpr uint32_t kWidth = 160, kHeight = 48;
constexpr uint32_t kQualities[] = {15, 0, 1, 2, 3, 12, 13, 10};

using frame_call = uint8_t (*)(ppl_context*, uint8_t*, uint8_t*, uint32_t, uint32_t);
constexpr frame_call kFrameCalls[] = {BaylorToI420MMX, BaylorToYUYVMMX,          BaylorToRGB24MMX,
                                      BaylorToUYVYMMX, BaylorToI420MMX_deci_2_1, BaylorToI420MMX_intp_1_2,
                                      BaylorToRGB32MMX};

struct digest {
  uint64_t value = 14695981039346656037u;
  void bytes(const uint8_t* from, size_t n) {
    for (size_t i = 0; i < n; ++i) value = (value ^ from[i]) * 1099511628211u;
  }
};

// What one thread does with its context: controls, frames, fields, statistics, all of them its own.
uint64_t work(ppl_context* c, uint32_t number) {
  alignas(16) static thread_local uint8_t source[2 * kWidth * kHeight], picture[16 * kWidth * kHeight];
  alignas(16) static thread_local uint16_t table[kWidth * (kHeight + 1)];
  digest d;
  uint32_t x = number * 2654435761u + 1;
  const auto next = [&] { return x = x * 1664525 + 1013904223, x >> 24; };
  for (uint32_t frame = 0; frame < kFrames; ++frame) {
    ppl_set_quality(c, kQualities[(number + frame) % 8]);
    ppl_set_rgb_gain(c, 200 + next(), 256, 200 + next());
    ppl_set_gamma(c, static_cast<int32_t>(next() % 60) - 30);
    ppl_set_sat_hue(c, 2 * next(), static_cast<int32_t>(next()));
    ppl_set_contrast_c(c, static_cast<int32_t>(next() % 200) - 100, nullptr, nullptr);
    ppl_set_h_mirror(c, next() & 1);
    if ((frame & 3) == 1) {
      ppl_set_lens_correction(c, kWidth, kHeight, kWidth / 2, kHeight / 2, table, sizeof table, 48, 24, 16,
                              44);
      ppl_enable_lens_correction(c);
    }
    for (uint8_t& sample : source) sample = static_cast<uint8_t>(next());
    memset(picture, 0, sizeof picture);
    kFrameCalls[(number + frame) % 7](c, source, picture, kWidth, kHeight);
    d.bytes(picture, sizeof picture);
    d.bytes(reinterpret_cast<const uint8_t*>(ppl_rgb_means_sub_windows(c)), 48 * 12);
    ppl_new_frame_sizes(c, kWidth, kHeight, kWidth, kHeight, 0);
    IntlYUYVToRGB24MMX(c, source, source + kWidth * kHeight / 2, source + kWidth * kHeight, picture, kWidth,
                       kHeight, kWidth, kHeight);
    d.bytes(picture, 3 * kWidth * kHeight);
  }
  return d.value;
}

// The means are asked for by both threads until each has seen the other's turn.
int shared_results(ppl_context* a, ppl_context* b) {
  uint32_t sums[2] = {};
  const auto ask = [&](ppl_context* c, int i) {
    for (int k = 0; k < 20000; ++k) sums[i] += *ppl_rgb_means_whole_frame_central8(c);
  };
  std::thread other(ask, a, 0);
  ask(b, 1);
  other.join();
  printf("asked %u\n", sums[0] + sums[1]);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  ppl_context* contexts[kThreads];
  for (ppl_context*& c : contexts) c = ppl_init();  // one after the other, as the interface asks
  if (contexts[kThreads - 1] == nullptr) return 2;
  if (argc > 1 && strcmp(argv[1], "--shared") == 0) return shared_results(contexts[0], contexts[1]);

  uint64_t alone[kThreads], together[kThreads];
  for (uint32_t i = 0; i < kThreads; ++i) {
    // The first run leaves in the slot what frames leave; the second begins where the threads will.
    work(contexts[i], i);
    ppl_reset_all_controls(contexts[i]);
    alone[i] = work(contexts[i], i);
    ppl_reset_all_controls(contexts[i]);
  }
  std::vector<std::thread> threads;
  for (uint32_t i = 0; i < kThreads; ++i)
    threads.emplace_back([&, i] { together[i] = work(contexts[i], i); });
  for (std::thread& t : threads) t.join();
  int passed = 0;
  for (int i = 0; i < kThreads; ++i) passed += alone[i] == together[i];
  for (ppl_context* const c : contexts) ppl_free(c);
  printf("%d passed, %d failed\n", passed, kThreads - passed);
  return passed == kThreads ? 0 : 1;
}
