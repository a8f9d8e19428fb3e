// Ours beside the peers, in turns, in one run on one core: a table of minima and their ratios.
//
//   bench_peers LEVEL [SECONDS]     LEVEL 16, 32 or 64 bytes; SECONDS for each job and size, 0.2 by default
//
// At 16 bytes ours is held to SSE4.1 and the peers to SSE4: libyuv by MaskCpuFlags, OpenCV by OPENCV_CPU_DISABLE, which
// it reads when it is loaded: so this program sets it and starts itself anew. At 32 bytes the same with AVX2; at 64
// each takes what the processor has.
#include <libyuv.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <opencv2/core.hpp>

#include "peers.h"

namespace {

constexpr const char* kMark = "PPL_BENCH_PEERS_HELD";
constexpr int kSse4 = libyuv::kCpuHasX86 | libyuv::kCpuHasSSE2 | libyuv::kCpuHasSSSE3 | libyuv::kCpuHasSSE41 |
                      libyuv::kCpuHasSSE42 | libyuv::kCpuHasERMS;
constexpr int kAvx2 =
    kSse4 | libyuv::kCpuHasAVX | libyuv::kCpuHasAVX2 | libyuv::kCpuHasFMA3 | libyuv::kCpuHasF16C;
constexpr const char* kOver16 =
    "AVX,FP16,AVX2,FMA3,AVX512F,AVX512-COMMON,AVX512-SKX,AVX512-CNL,AVX512-CLX,AVX512-ICL";
constexpr const char* kOver32 = "AVX512F,AVX512-COMMON,AVX512-SKX,AVX512-CNL,AVX512-CLX,AVX512-ICL";

struct width {
  int bytes, level_number, libyuv_flags;
  const char* opencv_disable;
};
constexpr width kWidths[] = {{16, 1, kSse4, kOver16}, {32, 2, kAvx2, kOver32}, {64, 3, -1, nullptr}};

constexpr decltype(&peers::camera_jobs) kJobs[] = {peers::camera_jobs, peers::decoder_jobs,
#ifdef PPL_PEER_GSTREAMER
                                                   peers::field_jobs,
#endif
                                                   peers::scaler_jobs};

constexpr int kBurst = 4;

double time_of(const std::function<void()>& work) {
  const double start = bench::seconds_now();
  work();
  return bench::seconds_now() - start;
}

void print_row(const peers::job& job, bench::size s, double seconds) {
  double ours = 1e9, best = 1e9;
  std::vector<double> theirs(job.theirs.size(), 1e9);
  const double end = bench::seconds_now() + seconds;
  int turns = 0;
  do {
    // A few calls in a row, so that each side finds its own frame in the cache as it would frame by frame.
    for (int n = 0; n < kBurst; ++n) {
      job.refresh();
      ours = std::min(ours, time_of(job.ours));
    }
    for (size_t i = 0; i < theirs.size(); ++i)
      for (int n = 0; n < kBurst; ++n) theirs[i] = std::min(theirs[i], time_of(job.theirs[i].run));
  } while (++turns < 3 || bench::seconds_now() < end);
  const size_t fastest = size_t(std::min_element(theirs.begin(), theirs.end()) - theirs.begin());
  best = theirs[fastest];
  printf("| %s | %dx%d | %.3f | %.3f | %s | %.2f |\n", job.name.c_str(), s.width, s.height,
         1e9 * ours / job.pixels, 1e9 * best / job.pixels, job.theirs[fastest].name, ours / best);
  fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  const width* held = nullptr;
  for (const width& w : kWidths)
    if (argc > 1 && atoi(argv[1]) == w.bytes) held = &w;
  if (held == nullptr) {
    fprintf(stderr, "bench_peers 16|32|64 [SECONDS]\n");
    return 2;
  }
  if (held->level_number >= ppl_test_levels()) {
    fprintf(stderr, "this processor has no vectors of %d bytes\n", held->bytes);
    return 0;
  }
  if (held->opencv_disable != nullptr && getenv(kMark) == nullptr) {
    setenv(kMark, "1", 1);
    setenv("OPENCV_CPU_DISABLE", held->opencv_disable, 1);
    execv("/proc/self/exe", argv);
    perror("execv");
    return 1;
  }
  const bool avx2 = cv::checkHardwareSupport(CV_CPU_AVX2),
             avx512 = cv::checkHardwareSupport(CV_CPU_AVX512_SKX);
  if ((held->bytes < 32 && avx2) || (held->bytes < 64 && avx512)) {
    fprintf(stderr, "OpenCV is not held: %s\n", getenv("OPENCV_CPU_DISABLE"));
    return 1;
  }
  cv::setNumThreads(1);
  libyuv::MaskCpuFlags(held->libyuv_flags);
  const double seconds = argc > 2 ? atof(argv[2]) : 0.2;
  printf("| job: ours : theirs | size | ours | theirs | by | ours / theirs |\n|---|---|---|---|---|---|\n");
  for (const bench::size s : {bench::size{640, 480}, bench::size{1920, 1080}})
    for (const auto make : kJobs) {
      std::vector<peers::job> jobs = make(s, held->level_number);
      for (peers::job& job : jobs) {
        const peers::job one = std::move(job);  // its context is free again when it is done
        print_row(one, s, seconds);
      }
    }
}
