// Small frames to put through an instance at every vector level.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "ppl.h"
#include "reference/formats.h"
#include "support/bayer_exports.h"
#include "support/fenced.h"
#include "support/level.h"
#include "support/qualities.h"

namespace engine {

using support::bytes;
using support::fenced;
using support::kFormatNames;
using support::noise;

enum format {
  I420 = PPL_FORMAT_I420,
  YUYV = PPL_FORMAT_YUYV,
  UYVY = PPL_FORMAT_UYVY,
  RGB24 = PPL_FORMAT_RGB24,
  RGB32 = PPL_FORMAT_RGB32
};
inline size_t frame_bytes(int f, size_t pixels) {
  return size_t(ref::frame_bytes(ref::format(f), int32_t(pixels), 1));
}
inline uint8_t call(int f, ppl_context* c, uint8_t* source, uint8_t* destination, int w, int h,
                    int stride = 0) {
  return support::kFrameCalls[f](c, source, destination, uint32_t(w), uint32_t(h),
                                 uint32_t(stride > 0 ? stride : w));
}

// One instance per test, at the vector level that the parameter names.
class at_level : public testing::TestWithParam<int> {
 protected:
  void SetUp() override {
    if (GetParam() >= ppl_test_levels()) GTEST_SKIP() << "this processor has no level " << GetParam();
    ppl_test_force_level(GetParam());
    c = ppl_init();
    ASSERT_NE(c, nullptr);
  }
  void TearDown() override {
    if (c != nullptr) {
      // What a slot keeps must not reach the next test.
      ppl_reset_all_controls(c);
      ppl_free(c);
    }
    ppl_test_force_level(-1);
  }
  // Both tone tables the identity: a sample comes out as it went in.
  void linear_tone() {
    bytes table(256);
    for (size_t i = 0; i < 256; ++i) table[i] = uint8_t(i);
    ppl_copy_yuv_gamma_table(c, table.data());
    ppl_copy_rgb_gamma_table(c, table.data());
  }
  void identity_matrix() {
    const int32_t nine[9] = {256, 0, 0, 0, 256, 0, 0, 0, 256};
    ppl_copy_sensor_matrix(c, nine);
  }
  // A frame through the instance as it stands; the destination keeps 0xa5 where nothing is written.
  bytes run(int f, const bytes& frame, int w, int h, int stride = 0) {
    source_after = frame;
    const int d = ppl_decimation(c);
    const size_t ow = size_t(d < 0 ? 2 * w : w >> d), oh = size_t(d < 0 ? 2 * h : h >> d);
    fenced source(frame), destination(frame_bytes(f, ow * oh));
    result = call(f, c, source.data(), destination.data(), w, h, stride);
    source_after = source.content();
    return destination.content();
  }
  ppl_context* c = nullptr;
  uint8_t result = 0;
  bytes source_after;
};
#define ENGINE_LEVELS(suite)                                                  \
  INSTANTIATE_TEST_SUITE_P(levels, suite, testing::Range(0, PPL_TEST_LEVELS), \
                           [](const auto& i) { return std::string("level") + std::to_string(i.param); })

}  // namespace engine
