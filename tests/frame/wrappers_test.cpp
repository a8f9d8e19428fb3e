// The thirty exports by name: alignment and last-resort pictures, decimation, stride.
#include "record/context.h"
#include "support/frame_fixture.h"

namespace {

using namespace engine;

using support::kWrappers;

class wrappers : public at_level {};
ENGINE_LEVELS(wrappers);

TEST_P(wrappers, off_16_but_on_8_bytes_is_no_frame_and_no_fall_back) {
  ppl_set_quality(c, 13);
  fenced source(bytes(64 * 16, 9), 8), destination(64 * 24);
  EXPECT_EQ(BaylorToI420MMX(c, source.data(), destination.data(), 64, 16), 1);
  EXPECT_TRUE(destination.all(0xa5));
}

TEST_P(wrappers, off_8_bytes_gives_the_last_resort) {
  const bytes in = noise(64 * 16 * 4, 30);  // the doubling ones read four frames' worth
  for (int f = I420; f <= RGB32; ++f)
    for (int e = 0; e < 5; ++e) {
      const size_t n = e == 0 ? 64 * 16 : e == 1 ? 64 * 16 / 4 : 64 * 16 * 4;
      bytes expected(in.begin(), in.begin() + std::ptrdiff_t(n));
      expected.resize(n + n / 2, 128);
      if (f >= RGB24) expected.assign(n * (f == RGB24 ? 3 : 4), 255);
      for (int which = 0; which < 2; ++which) {
        ppl_set_decimation(c, 0, 0, 0);
        const uint32_t frames = ppl_n_frame(c);
        fenced source(in, which == 0 ? 4 : 0), destination(expected.size(), 0, which == 1 ? 4 : 0);
        EXPECT_EQ(kWrappers[f][e](c, source.data(), destination.data(), 64, 16), 0);
        EXPECT_EQ(destination.content(), expected) << kFormatNames[f] << " ending " << e;
        EXPECT_EQ(ppl_n_frame(c), frames);
        EXPECT_EQ(ppl_decimation(c), 0);
      }
    }
}

TEST_P(wrappers, RGB32_last_resort_of_a_half_size_frame_is_307200_bytes) {
  fenced source(64, 0, 4), destination(307200, 0);
  EXPECT_EQ(BaylorToRGB32MMX_deci_2_1(c, source.data(), destination.data(), 640, 480), 0);
  EXPECT_TRUE(destination.all(255));
}

TEST_P(wrappers, set_the_decimation_and_the_stride_that_the_name_promises) {
  ppl_set_quality(c, 5);
  fenced source(64 * 4 * 16), destination(128 * 32 * 4);
  constexpr int decimation[] = {0, 1, -1, -1}, strides[] = {1, 1, 1, 2};
  for (const auto& by_format : kWrappers)
    for (int e = 0; e < 4; ++e) {
      EXPECT_EQ(by_format[e](c, source.data(), destination.data(), 64, 16), 1);
      EXPECT_EQ(ppl_decimation(c), decimation[e]);
      EXPECT_EQ(c->frame_stride, 64 * strides[e]);
    }
}

TEST_P(wrappers, quadruple_size_runs_at_the_decimation_in_force) {
  ppl_set_quality(c, 5);
  fenced source(64 * 4 * 16), destination(64 * 16 * 4);
  for (const auto& by_format : kWrappers) {
    by_format[1](c, source.data(), destination.data(), 64, 16);
    EXPECT_EQ(by_format[4](c, source.data(), destination.data(), 64, 16), 1);
    EXPECT_EQ(ppl_decimation(c), 1);
    EXPECT_EQ(c->frame_stride, 256);
  }
}

TEST_P(wrappers, the_decimation_stays_set_if_the_frame_is_refused) {
  fenced source(64), destination(64);
  EXPECT_EQ(BaylorToI420MMX_deci_2_1(c, source.data(), destination.data(), 2037, 2), 0);
  EXPECT_EQ(ppl_decimation(c), 1);
}

TEST_P(wrappers, scaling_to_UYVY_writes_scratch_only) {
  ppl_set_quality(c, 4);
  const bytes in = noise(64 * 16, 31);
  fenced source(in), destination(32 * 8 * 2), scratch(64 * 16 * 2);
  EXPECT_EQ(
      BaylorToUYVYMMX_scaling_stride(c, source.data(), 64, 16, 64, destination.data(), 32, 8, scratch.data()),
      0);  // the raw path's answer
  EXPECT_TRUE(destination.all(0xa5));
  EXPECT_EQ(scratch[0], 128);
  EXPECT_EQ(scratch[1], in[0]);
}

TEST_P(wrappers, scaling_to_RGB_is_white_whatever_the_alignment) {
  for (size_t offset : {0, 4}) {
    fenced source(64 * 16, 1, offset), scratch(64 * 16 * 4), rgb24(30 * 7 * 3, 0, offset),
        rgb32(30 * 7 * 4, 0);
    EXPECT_EQ(
        BaylorToRGB24MMX_scaling_stride(c, source.data(), 64, 16, 64, rgb24.data(), 30, 7, scratch.data()),
        0);
    EXPECT_EQ(
        BaylorToRGB32MMX_scaling_stride(c, source.data(), 64, 16, 64, rgb32.data(), 30, 7, scratch.data()),
        0);
    EXPECT_TRUE(rgb24.all(255));
    EXPECT_TRUE(rgb32.all(255));
    EXPECT_TRUE(scratch.all(0xa5));
  }
}

TEST_P(wrappers, scaling_tests_source_and_destination_for_8_and_source_and_scratch_for_16) {
  ppl_set_quality(c, 5);
  const bytes in = noise(64 * 16, 32);
  {  // the last resort of the scaling forms has the destination's size
    fenced source(in, 4), destination(32 * 8 * 3 / 2, 0), scratch(64 * 24);
    EXPECT_EQ(BaylorToI420MMX_scaling_stride(c, source.data(), 64, 16, 64, destination.data(), 32, 8,
                                             scratch.data()),
              0);
    EXPECT_EQ(destination.part(0, 256), bytes(in.begin(), in.begin() + 256));
    EXPECT_EQ(destination.part(256, 128), bytes(128, 128));
  }
  {  // scratch at 8: no frame, no scaling, true
    const uint32_t frames = ppl_n_frame(c);
    fenced source(in), destination(32 * 8 * 3 / 2), scratch(64 * 24, 0xa5, 8);
    EXPECT_EQ(BaylorToI420MMX_scaling_stride(c, source.data(), 64, 16, 64, destination.data(), 32, 8,
                                             scratch.data()),
              1);
    EXPECT_TRUE(destination.all(0xa5));
    EXPECT_EQ(ppl_n_frame(c), frames);
  }
  {  // a destination at 8 is enough
    fenced source(in), destination(32 * 8 * 3 / 2, 0xa5, 8), scratch(64 * 24, 77);
    EXPECT_EQ(BaylorToI420MMX_scaling_stride(c, source.data(), 64, 16, 64, destination.data(), 32, 8,
                                             scratch.data()),
              1);
    EXPECT_TRUE(destination.all(77));
  }
}

TEST_P(wrappers, the_scaler_runs_whatever_the_dispatch_answers) {
  const bytes in(64 * 16, 60);
  fenced source(in), destination(128 * 32 * 3 / 2), scratch(64 * 24, 50);
  ppl_set_quality(c, 4);  // raw: false, and the mosaic scaled
  EXPECT_EQ(BaylorToI420MMX_scaling_stride(c, source.data(), 64, 16, 64, destination.data(), 128, 32,
                                           scratch.data()),
            0);
  EXPECT_EQ(destination.part(0, 128 * 32), bytes(128 * 32, 60));
  EXPECT_EQ(destination.part(128 * 32, 128 * 16), bytes(128 * 16, 128));
}

// Scaled calls look for source, scratch and, where they resample, destination before they start.
TEST_P(wrappers, scaled_calls_without_a_buffer_only_count) {
  constexpr decltype(&BaylorToI420MMX_scaling_stride) calls[] = {
      BaylorToI420MMX_scaling_stride, BaylorToYUYVMMX_scaling_stride, BaylorToUYVYMMX_scaling_stride};
  for (uint32_t quality : {0u, 3u, 4u, 15u})
    for (int f = I420; f <= UYVY; ++f)
      for (int missing = 1; missing < 8; ++missing) {
        if (f == UYVY && missing == 4) continue;  // nobody asks for its destination
        ppl_set_quality(c, quality);
        const bytes in = noise(160 * 48, 6);
        fenced source(in), scratch(160 * 48 * 2 + 4), destination(64 * 16 * 2);
        c->stats_scale = 321;
        c->mark_position = 7;
        const uint32_t frames = ppl_n_frame(c);
        EXPECT_EQ(calls[f](c, missing & 1 ? nullptr : source.data(), 160, 48, 160,
                           missing & 4 ? nullptr : destination.data(), 64, 16,
                           missing & 2 ? nullptr : scratch.data()),
                  1);
        EXPECT_EQ(c->stats_scale, 321);
        EXPECT_EQ(c->mark_position, 7);
        EXPECT_EQ(ppl_n_frame(c), frames + 1);
        EXPECT_EQ(source.content(), in);
        EXPECT_TRUE(scratch.all(0xa5));
        EXPECT_TRUE(destination.all(0xa5));
      }
}

TEST_P(wrappers, no_last_resort_without_what_it_needs) {
  fenced source(64 * 16 * 4, 1, 4), destination(64 * 16 * 16, 0xa5, 4);
  const uint32_t frames = ppl_n_frame(c);
  for (int f = I420; f <= RGB32; ++f)
    for (int e = 0; e < 5; ++e) {
      EXPECT_EQ(kWrappers[f][e](c, source.data(), nullptr, 64, 16), 0);
      if (f >= RGB24) continue;  // white needs no source
      EXPECT_EQ(kWrappers[f][e](c, nullptr, destination.data(), 64, 16), 0);
    }
  for (const auto scale :
       {BaylorToI420MMX_scaling_stride, BaylorToYUYVMMX_scaling_stride, BaylorToUYVYMMX_scaling_stride,
        BaylorToRGB24MMX_scaling_stride, BaylorToRGB32MMX_scaling_stride})
    EXPECT_EQ(scale(c, source.data(), 64, 16, 64, nullptr, 32, 8, nullptr), 0);
  EXPECT_TRUE(destination.all(0xa5));
  EXPECT_EQ(ppl_n_frame(c), frames);
}

TEST_P(wrappers, P3_only_skips_the_scaler_too) {
  ppl_set_P3_only(c, 1);
  fenced source(64 * 16), destination(32 * 8 * 2), scratch(64 * 16 * 2 + 4);
  EXPECT_EQ(
      BaylorToYUYVMMX_scaling_stride(c, source.data(), 64, 16, 64, destination.data(), 32, 8, scratch.data()),
      1);
  EXPECT_TRUE(destination.all(0xa5));
}

}  // namespace
