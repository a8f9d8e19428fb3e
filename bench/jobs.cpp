#include "jobs.h"

#include <time.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bayer_exports.h"

namespace bench {

namespace {

constexpr int kSampleWidth = 640, kSampleHeight = 480;

const std::vector<uint8_t>& sample() {
  static const std::vector<uint8_t> frame = [] {
    std::vector<uint8_t> bytes(size_t{kSampleWidth} * kSampleHeight);
    FILE* const f = fopen(PPL_SAMPLE, "rb");
    if (f == nullptr || fread(bytes.data(), 1, bytes.size(), f) != bytes.size()) {
      fprintf(stderr, "cannot read %s\n", PPL_SAMPLE);
      exit(1);
    }
    fclose(f);
    return bytes;
  }();
  return frame;
}

uint8_t sample_at(int row, int column) {
  return sample()[size_t(row % kSampleHeight) * kSampleWidth + size_t(column % kSampleWidth)];
}

size_t lens_bytes(size s) {
  return 2 * size_t(s.width) * size_t(s.height / 2 + 1);
}

size_t output_bytes(const frame_task& t) {
  return 4 * size_t(t.frame.width) * size_t(t.frame.height) * (t.decimation < 0 ? 4 : 1);
}

}  // namespace

buffer::buffer(size_t bytes)
    : bytes_(bytes), memory_(static_cast<uint8_t*>(aligned_alloc(64, (bytes + 127) / 64 * 64))) {
  if (memory_ == nullptr) abort();
  memset(memory_.get(), 0, (bytes + 127) / 64 * 64);
}

void buffer::release::operator()(uint8_t* p) const {
  free(p);
}

buffer mosaic(int width, int height, content what) {
  buffer frame(size_t(width) * size_t(height));
  uint32_t state = 2463534242u;
  for (int row = 0; row < height; ++row)
    for (int column = 0; column < width; ++column) {
      state ^= state << 13;
      state ^= state >> 17;
      state ^= state << 5;
      frame.data()[size_t(row) * size_t(width) + size_t(column)] =
          what == content::random ? uint8_t(state >> 24) : sample_at(row, column);
    }
  return frame;
}

buffer packed_frame(int width, int height, int shift) {
  buffer frame(2 * size_t(width) * size_t(height));
  for (int row = 0; row < height; ++row)
    for (int column = 0; column < 2 * width; ++column)  // luma from one row of samples, chroma from another
      frame.data()[2 * size_t(row) * size_t(width) + size_t(column)] =
          column % 2 == 0 ? sample_at(2 * row, column + 2 * shift)
                          : sample_at(2 * row + 1, column + 2 * shift);
  return frame;
}

std::vector<level> levels() {
  std::vector<level> all;
  for (int n = 0; n < ppl_test_levels(); ++n) all.push_back({n, ppl_test_level_name(n)});
  return all;
}

frame_runner::frame_runner(const frame_task& task)
    : task_(task),
      raw_(mosaic(task.frame.width, task.frame.height, task.what)),
      source_(raw_.size()),
      destination_(output_bytes(task)),
      lens_(lens_bytes(task.frame)) {
  ppl_test_force_level(task.level_number);
  context_ = ppl_init();
  if (context_ == nullptr) abort();
  ppl_set_optical_black_b_gb_gr_r(context_, 12, 12, 12, 12);
  ppl_set_rgb_gain(context_, 397, 256, 346);
  ppl_enable_GbGr_correction(context_);
  ppl_set_lens_correction(context_, task.frame.width, task.frame.height, task.frame.width / 2,
                          task.frame.height / 2, reinterpret_cast<uint16_t*>(lens_.data()),
                          int32_t(lens_.size()), 48, 24, 0, 44);
  if (task.lens) ppl_enable_lens_correction(context_);
  ppl_set_quality(context_, uint32_t(task.quality));
  if (task.medium_filter) ppl_enable_medium_filter(context_);
  ppl_set_decimation(context_, task.decimation, 0, 0);
  ppl_set_mean_collection(context_, task.statistics);
  refresh();
}

frame_runner::~frame_runner() {
  ppl_reset_all_controls(context_);
  ppl_free(context_);
  ppl_test_force_level(-1);
}

void frame_runner::refresh() {
  memcpy(source_.data(), raw_.data(), raw_.size());
}

bool frame_runner::call() {
  const uint32_t width = uint32_t(task_.frame.width), height = uint32_t(task_.frame.height);
  return support::kFrameCalls[task_.to](context_, source_.data(), destination_.data(), width, height,
                                        width) != 0;
}

double seconds_now() {
  timespec t;
  clock_gettime(CLOCK_MONOTONIC, &t);
  return double(t.tv_sec) + 1e-9 * double(t.tv_nsec);
}

}  // namespace bench
