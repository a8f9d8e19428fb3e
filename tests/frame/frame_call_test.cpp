// The frame call: what is sized, cleared, skipped and counted; the raw path and its mark.
#include "record/context.h"
#include "support/frame_fixture.h"

namespace {

using namespace engine;

class frame_call : public at_level {
 protected:
  // The statistics of a flat frame through quality 3: every mean is the level itself, in 1/256 steps.
  void flat_frame(uint8_t level) {
    linear_tone();
    ppl_set_quality(c, 3);
    run(I420, bytes(64 * 32, level), 64, 32);
    ASSERT_EQ(ppl_rgb_means_whole_frame(c)[1], level * 256u);
  }
};
ENGINE_LEVELS(frame_call);

TEST_P(frame_call, P3_only_resets_the_statistics_and_nothing_else) {
  flat_frame(100);
  ppl_set_P3_only(c, 1);
  const uint32_t frames = ppl_n_frame(c);
  const bytes out = run(I420, noise(64 * 32, 5), 64, 32);
  EXPECT_EQ(out, bytes(out.size(), 0xa5));
  EXPECT_EQ(result, 1);
  EXPECT_EQ(ppl_n_frame(c), frames);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(ppl_rgb_means_whole_frame(c)[i], 0u);
}

TEST_P(frame_call, a_refused_size_leaves_the_statistics_readable) {
  flat_frame(100);
  const uint32_t frames = ppl_n_frame(c);
  fenced source(64), destination(64);
  EXPECT_EQ(call(I420, c, source.data(), destination.data(), 2037, 2, 2037), 0);
  EXPECT_EQ(call(I420, c, source.data(), destination.data(), 32, 2049, 32), 0);
  EXPECT_EQ(call(I420, c, source.data(), destination.data(), 32, 2, 2049), 0);
  EXPECT_EQ(ppl_n_frame(c), frames);
  EXPECT_EQ(ppl_rgb_means_whole_frame(c)[0], 25600u);
  EXPECT_TRUE(destination.all(0xa5));
}

TEST_P(frame_call, a_buffer_off_16_bytes_skips_the_frame_silently) {
  flat_frame(100);
  const uint32_t frames = ppl_n_frame(c);
  for (int which = 0; which < 2; ++which) {
    fenced source(bytes(64 * 32, 80), which == 0 ? 8 : 0), destination(64 * 48, 0xa5, which == 1 ? 8 : 0);
    EXPECT_EQ(call(I420, c, source.data(), destination.data(), 64, 32), 1);
    EXPECT_TRUE(destination.all(0xa5));
    EXPECT_EQ(ppl_n_frame(c), frames);
    EXPECT_EQ(ppl_rgb_means_whole_frame(c)[2], 0u);
  }
}

TEST_P(frame_call, a_stride_below_the_width_only_counts) {
  for (uint32_t quality = 0; quality < PPL_QUALITIES; ++quality) {
    ppl_set_quality(c, quality);
    for (int f = I420; f <= RGB32; ++f) {
      const bytes before = noise(48 * 32, 3);
      fenced source(before), destination(frame_bytes(f, 64 * 32));
      const uint32_t frames = ppl_n_frame(c);
      EXPECT_EQ(call(f, c, source.data(), destination.data(), 64, 32, 48), 1);
      EXPECT_EQ(ppl_n_frame(c), frames + 1);
      EXPECT_EQ(source.content(), before);
      EXPECT_TRUE(destination.all(0xa5)) << "quality " << quality << " " << kFormatNames[f];
    }
  }
}

TEST_P(frame_call, counting_qualities_leave_picture_source_and_scale) {
  flat_frame(100);
  const int32_t scale = c->stats_scale;
  for (uint32_t quality : support::kCounted) {
    ppl_set_quality(c, quality);
    for (int f = I420; f <= RGB32; ++f) {
      const uint32_t frames = ppl_n_frame(c);
      const bytes in = noise(64 * 32, quality), out = run(f, in, 64, 32);
      EXPECT_EQ(out, bytes(out.size(), 0xa5));
      EXPECT_EQ(source_after, in);
      EXPECT_EQ(result, 1);
      EXPECT_EQ(ppl_n_frame(c), frames + 1);
      EXPECT_EQ(c->stats_scale, scale);
    }
  }
}

// Without a buffer that it would read or write, a frame is only counted, raw ones too.
TEST_P(frame_call, null_buffers_only_count) {
  for (uint32_t quality = 0; quality < PPL_QUALITIES; ++quality)
    for (int f = I420; f <= RGB32; ++f)
      for (int d = -1; d <= 1; ++d)
        for (int missing = 1; missing < 4; ++missing) {
          ppl_set_quality(c, quality);
          ppl_set_decimation(c, d, 0, 0);
          const bytes in = noise(160 * 48, 5);
          fenced source(in), destination(320 * 96 * 4);
          c->stats_scale = 321;
          c->mark_position = 7;
          const uint32_t frames = ppl_n_frame(c);
          // Raw RGB24 draws nothing at half size and none of them at double size, but for the mark of I420.
          const bool raw = ppl_quality_table[quality].road == PPL_ROAD_RAW,
                     marks = f == I420 && (missing & 2) == 0;
          const bool draws = d == 0 || (d == 1 && f != RGB24) || (f == I420 && (missing & 2) != 0);
          EXPECT_EQ(call(f, c, missing & 1 ? nullptr : source.data(),
                         missing & 2 ? nullptr : destination.data(), 160, 48),
                    raw && !draws ? 0 : 1)
              << "quality " << quality << " of " << kFormatNames[f] << " at " << d << ", missing " << missing;
          EXPECT_EQ(c->stats_scale, 321);
          EXPECT_EQ(c->mark_position, raw && d < 0 && marks ? 8 : 7);
          EXPECT_EQ(ppl_n_frame(c), frames + 1);
          EXPECT_EQ(source.content(), in);
          EXPECT_TRUE(destination.all(0xa5) || (raw && d < 0 && marks));
          EXPECT_EQ(ppl_rgb_means_whole_frame(c)[0], 0u);
        }
}

// All rows are lost: there is a picture of no bytes, which may be nowhere, and the frame's statistics all the same.
TEST_P(frame_call, a_picture_of_no_bytes_may_be_nowhere) {
  linear_tone();
  ppl_set_quality(c, 3);
  ppl_new_frame_size(c, 64, 32, 64);
  ASSERT_EQ(ppl_set_decimation(c, 0, -32, 0), 1);
  fenced source(bytes(64 * 32, 100));
  const uint32_t frames = ppl_n_frame(c);
  EXPECT_EQ(call(I420, c, source.data(), nullptr, 64, 32), 1);
  EXPECT_EQ(ppl_n_frame(c), frames + 1);
  EXPECT_EQ(ppl_rgb_means_whole_frame(c)[1], 100u * 256);
  EXPECT_EQ(source.content(), bytes(64 * 32, 100));
}

// A lens of negative width has its rows in front of the table, where every factor is 1.
TEST_P(frame_call, a_lens_of_negative_width_changes_nothing) {
  ppl_set_quality(c, 2);
  const bytes in = noise(64 * 32, 9), plain = run(I420, in, 64, 32);
  std::vector<uint16_t> table(16, 20000);
  ASSERT_EQ(ppl_set_lens_correction(c, -5, 4, 0, -1, table.data(), 0, 16, 24, 16, 44), 1);
  ppl_enable_lens_correction(c);
  EXPECT_EQ(run(I420, in, 64, 32), plain);
  EXPECT_EQ(table, std::vector<uint16_t>(16, 20000));
}

// Sizes and P3_only come first.
TEST_P(frame_call, null_buffers_are_looked_for_last) {
  ppl_set_quality(c, 4);
  const uint32_t frames = ppl_n_frame(c);
  EXPECT_EQ(call(I420, c, nullptr, nullptr, 2037, 16), 0);
  ppl_set_P3_only(c, 1);
  EXPECT_EQ(call(I420, c, nullptr, nullptr, 64, 16), 1);
  EXPECT_EQ(ppl_n_frame(c), frames);
  ppl_set_P3_only(c, 0);
}

TEST_P(frame_call, RGB32_has_no_quality_15) {
  ppl_set_quality(c, 15);
  const uint32_t frames = ppl_n_frame(c);
  const bytes out = run(RGB32, noise(64 * 32, 1), 64, 32);
  EXPECT_EQ(out, bytes(out.size(), 0xa5));
  EXPECT_EQ(ppl_n_frame(c), frames + 1);
  EXPECT_EQ(result, 1);
}

TEST_P(frame_call, quality_13_is_for_I420_and_RGB24) {
  flat_frame(50);
  ASSERT_EQ(c->stats_scale, 1024);
  ppl_set_quality(c, 13);
  for (int f : {YUYV, UYVY, RGB32}) {
    const bytes out = run(f, noise(64 * 32, 2), 64, 32);
    EXPECT_EQ(out, bytes(out.size(), 0xa5)) << kFormatNames[f];
    EXPECT_EQ(c->stats_scale, 1024);
    EXPECT_EQ(result, 1);
  }
  const bytes out = run(I420, bytes(64 * 32, 7), 64, 32);
  EXPECT_NE(out[0], 0xa5);
  EXPECT_EQ(c->stats_scale, 0);
}

TEST_P(frame_call, a_counted_frame_rolls_up_zeros) {
  ppl_set_quality(c, 15);
  run(I420, noise(192 * 64, 9), 192, 64);
  EXPECT_NE(ppl_rgb_means_whole_frame(c)[1], 0u);
  ppl_set_quality(c, 5);
  run(I420, noise(192 * 64, 9), 192, 64);
  const uint32_t* means = ppl_rgb_means_sub_windows(c);
  EXPECT_EQ(std::count(means, means + 147, 0u), 147);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(ppl_rgb_means_whole_frame(c)[i], 0u);
    EXPECT_EQ(ppl_rgb_means_all_sub_windows(c)[i], 0u);
    EXPECT_EQ(ppl_qAE_rgb_means_whole_frame(c)[i], 0u);
    EXPECT_EQ(ppl_qual_rgb_means_whole_frame(c)[i], 0u);
  }
  EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(c), 0u);
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(c), 0u);
}

TEST_P(frame_call, frames_of_fewer_than_four_pixels_have_no_means) {
  for (uint32_t quality = 0; quality < PPL_QUALITIES; ++quality) {
    ppl_set_quality(c, quality);
    for (const auto& [w, h] : {std::array{1, 1}, std::array{3, 1}, std::array{0, 5}, std::array{5, 0}}) {
      fenced source(size_t(w * h)), destination(frame_bytes(I420, size_t(w * h)));
      call(I420, c, source.data(), destination.data(), w, h);
      for (int i = 0; i < 3; ++i) EXPECT_EQ(ppl_rgb_means_whole_frame(c)[i], 0u);
    }
  }
}

TEST_P(frame_call, decimation_2_stays_inside_a_frame_of_a_quarter_of_the_size) {
  for (uint32_t quality : {0u, 1u, 2u, 3u, 4u, 9u, 10u, 11u, 12u, 13u, 15u})
    for (int f = I420; f <= RGB32; ++f) {
      ppl_set_quality(c, quality);
      ppl_set_decimation(c, 2, 0, 0);
      run(f, noise(128 * 64, quality), 128, 64);
      EXPECT_EQ(c->out_width, 32);
      EXPECT_EQ(c->out_height, 16);
      EXPECT_EQ(c->out_pixels, 512);
    }
}

// ---- raw path

class raw_path : public at_level {
 protected:
  void SetUp() override {
    at_level::SetUp();
    if (c == nullptr) return;
    ppl_set_quality(c, 4);
    c->mark_position = 0;
  }
  // Where the mark is in a V plane of otherwise 128: its first sample and its size; {-1, 0, 0} if there is none.
  static std::array<int, 3> mark_in(const bytes& v, int width) {
    int first = -1, last = -1, left = width, right = -1, count = 0;
    for (int i = 0; i < int(v.size()); ++i) {
      if (v[size_t(i)] == 128) continue;
      EXPECT_EQ(v[size_t(i)], 255);
      if (first < 0) first = i;
      last = i;
      left = std::min(left, i % width);
      right = std::max(right, i % width);
      ++count;
    }
    if (first < 0) return {-1, 0, 0};
    const int w = right - left + 1, h = last / width - first / width + 1;
    EXPECT_EQ(count, w * h) << "the mark is a solid rectangle";
    return {first, w, h};
  }
};
ENGINE_LEVELS(raw_path);

TEST_P(raw_path, I420_is_the_mosaic_and_a_mark_that_walks_through_30_places) {
  const bytes in = noise(640 * 480, 11);
  std::vector<int> places;
  for (int i = 0; i < 31; ++i) {
    const bytes out = run(I420, in, 640, 480);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(source_after, in);
    ASSERT_TRUE(std::equal(in.begin(), in.end(), out.begin()));
    const auto u = out.begin() + 640 * 480, v = u + 320 * 240;
    ASSERT_TRUE(std::all_of(u, v, [](uint8_t b) { return b == 128; }));
    const auto [first, w, h] = mark_in(bytes(v, out.end()), 320);
    EXPECT_EQ(w, 64);
    EXPECT_EQ(h, 40);
    EXPECT_EQ(first, i % 30 % 5 * 64 + i % 30 / 5 * 40 * 320);
    places.push_back(first);
  }
  EXPECT_EQ(places[30], places[0]);
}

TEST_P(raw_path, no_mark_where_a_tenth_of_the_width_is_no_multiple_of_16) {
  const bytes out = run(I420, noise(720 * 48, 4), 720, 48);
  EXPECT_TRUE(std::all_of(out.begin() + 720 * 48, out.end(), [](uint8_t b) { return b == 128; }));
  EXPECT_EQ(c->mark_position, 0);
}

TEST_P(raw_path, a_mark_of_no_width_still_moves) {
  run(I420, noise(8 * 24, 4), 8, 24);
  EXPECT_EQ(c->mark_position, 1);
}

TEST_P(raw_path, quality_9_is_quality_4) {
  for (int f = I420; f <= RGB32; ++f)
    for (int d = -1; d <= 2; ++d) {
      ppl_set_decimation(c, d, 0, 0);
      const bytes in = noise(160 * 48, 8);
      ppl_set_quality(c, 4);
      c->mark_position = 7;
      const bytes four = run(f, in, 160, 48);
      ppl_set_quality(c, 9);
      c->mark_position = 7;
      EXPECT_EQ(run(f, in, 160, 48), four);
      EXPECT_EQ(result, 0);
    }
}

TEST_P(raw_path, honours_no_mirror) {
  for (int f = I420; f <= RGB32; ++f) {
    const bytes in = noise(160 * 48, 8);
    c->mark_position = 3;
    ppl_reset_mirrors(c);
    const bytes plain = run(f, in, 160, 48);
    for (int m = 1; m < 4; ++m) {
      c->mark_position = 3;
      ppl_set_h_mirror(c, uint8_t(m & 1));
      ppl_set_v_mirror(c, uint8_t(m >> 1));
      EXPECT_EQ(run(f, in, 160, 48), plain);
    }
  }
}

TEST_P(raw_path, decimation_2_draws_the_mark_alone) {
  ppl_set_decimation(c, 2, 0, 0);
  c->mark_position = 6;
  bytes out = run(I420, noise(640 * 480, 8), 640, 480);
  // 160 x 120: places of 16 x 10, V plane 80 wide; place 6 is column 1, row 1
  bytes expected(160 * 120 * 3 / 2, 0xa5);
  for (size_t y = 0; y < 10; ++y)
    std::fill_n(expected.begin() + 160 * 120 + 80 * 60 + 16 + std::ptrdiff_t(10 + y) * 80, 16, 255);
  EXPECT_EQ(out, expected);
}

TEST_P(raw_path, halved_I420_takes_even_samples_of_even_rows) {
  ppl_set_decimation(c, 1, 0, 0);
  const int w = 90, h = 13, stride = 100;  // 45 wide, 6 high: no mark
  const bytes in = noise(size_t(stride) * h, 21), out = run(I420, in, w, h, stride);
  bytes expected;
  for (int y = 0; y < 6; ++y)
    for (int x = 0; x < 45; ++x) expected.push_back(in[size_t(2 * y * stride + 2 * x)]);
  expected.resize(expected.size() + 45 * 6 / 2, 128);
  expected.resize(out.size(), 0xa5);
  EXPECT_EQ(out, expected);
}

TEST_P(raw_path, packed_formats_put_128_for_chroma) {
  const int w = 34, h = 6, stride = 40;
  const bytes in = noise(size_t(stride) * h, 22);
  for (int f : {YUYV, UYVY}) {
    const size_t luma = f == YUYV ? 0 : 1;
    ppl_set_decimation(c, 0, 0, 0);  // one run of w * h samples, whatever the stride
    bytes expected(2 * size_t(w * h), 128);
    for (size_t i = 0; i < size_t(w * h); ++i) expected[2 * i + luma] = in[i];
    EXPECT_EQ(run(f, in, w, h, stride), expected);
    ppl_set_decimation(c, 1, 0, 0);  // of a pair of samples YUYV takes the first, UYVY the second
    expected.assign(2 * 17 * 3, 128);
    for (int y = 0; y < 3; ++y)
      for (int x = 0; x < 17; ++x)
        expected[2 * size_t(17 * y + x) + luma] = in[size_t(2 * y * stride + 2 * x) + luma];
    EXPECT_EQ(run(f, in, w, h, stride), expected);
  }
}

TEST_P(raw_path, RGB_rows_go_upwards) {
  const int w = 34, h = 6, stride = 40;
  const bytes in = noise(size_t(stride) * h, 23);
  for (int f : {RGB24, RGB32}) {
    const size_t n = f == RGB24 ? 3 : 4;
    ppl_set_decimation(c, 0, 0, 0);
    bytes expected(n * size_t(w * h), 0);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x)
        std::fill_n(expected.begin() + std::ptrdiff_t(n) * ((h - 1 - y) * w + x), 3, in[size_t(y * w + x)]);
    EXPECT_EQ(run(f, in, w, h, stride), expected);
    ppl_set_decimation(c, 1, 0, 0);
    expected.assign(n * 17 * 3, f == RGB24 ? 0xa5 : 0);
    if (f == RGB32)  // source rows lie two widths apart, not two strides
      for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 17; ++x)
          std::fill_n(expected.begin() + 4 * ((2 - y) * 17 + x), 3, in[size_t(2 * y * w + 2 * x)]);
    EXPECT_EQ(run(f, in, w, h, stride), expected);
  }
}

TEST_P(raw_path, black_lines_keep_the_callers_bytes_but_for_I420_chroma) {
  const int w = 32, h = 4;
  const bytes in = noise(size_t(w * h), 24);
  fenced source(in);
  ASSERT_TRUE(ppl_new_frame_size(c, uint32_t(w), uint32_t(h), uint32_t(w)));
  ASSERT_TRUE(ppl_set_decimation(c, 0, 1, 3));  // 8 rows
  fenced yuv(32 * 8 * 3 / 2), rgb(32 * 8 * 3);
  call(I420, c, source.data(), yuv.data(), w, h);
  EXPECT_EQ(yuv.part(0, 128), in);
  EXPECT_EQ(yuv.part(128, 128), bytes(128, 0xa5));
  EXPECT_EQ(yuv.part(256, 128), bytes(128, 128));
  call(RGB24, c, source.data(), rgb.data(), w, h);
  EXPECT_EQ(rgb.part(0, 32 * 4 * 3), bytes(32 * 4 * 3, 0xa5));
  EXPECT_EQ(rgb[32 * 7 * 3], in[0]);
}

TEST_P(raw_path, frames_lowered_by_negative_black_lines_are_not_left) {
  const int w = 64, h = 16;
  for (int f = I420; f <= RGB32; ++f)
    for (int d = -1; d <= 2; ++d)
      // The last one makes the lowest height there is: -2^31.
      for (int lines : {-3, -15, -40, int(0x80000000), 0x7fffffff - (d < 0 ? 2 * h : h >> d) + 1}) {
        ASSERT_TRUE(ppl_new_frame_size(c, uint32_t(w), uint32_t(h), uint32_t(w)));
        ppl_set_decimation(c, 0, 0, 0);
        ASSERT_TRUE(ppl_set_decimation(c, d, lines, 0));
        fenced source(noise(size_t(w * h), 2));
        const int64_t rows = lines > 0 ? 0 : int64_t{d < 0 ? 2 * h : h >> d} + lines,
                      columns = d < 0 ? 2 * w : w >> d;
        fenced destination(rows > 0 ? frame_bytes(f, size_t(rows * columns)) : 0);
        EXPECT_EQ(call(f, c, source.data(), destination.data(), w, h), 0);
      }
}

}  // namespace
