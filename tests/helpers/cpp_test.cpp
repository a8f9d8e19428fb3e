// helpers/ppl.hpp: the same bytes as the C calls that it stands for, and an exception wherever those would say nothing.
#include "helpers/ppl.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace {

static_assert(!std::is_copy_constructible_v<ppl::context> &&
              std::is_nothrow_move_constructible_v<ppl::context>);

constexpr ppl::extent kFrame = {128, 48};

ppl::buffer noise(size_t n, uint32_t x = 1) {
  ppl::buffer b(n);
  for (uint8_t& v : b) {
    x = x * 1664525 + 1013904223;
    v = static_cast<uint8_t>(x >> 24);
  }
  return b;
}
ppl::mosaic frame(ppl::buffer& b, ppl::extent e = kFrame) {
  return {b, e.width, e.height};
}

bool same(const ppl::buffer& a, const ppl::buffer& b) {
  return std::vector<uint8_t>(a.begin(), a.end()) == std::vector<uint8_t>(b.begin(), b.end());
}

// The sentence of what a call throws, and its reason.
template <class Call>
std::pair<std::string, ppl_reason> thrown(const Call& call) {
  try {
    call();
  } catch (const ppl::error& e) {
    return {e.what(), e.reason()};
  }
  return {"nothing", PPL_WHOLE};
}

TEST(Cpp, PicturesAreThoseOfTheCCalls) {
  using c_call = decltype(&BaylorToI420MMX);
  const struct {
    ppl::format to;
    ppl::size at;
    c_call call;
  } cases[] = {{ppl::format::i420, ppl::size::same, BaylorToI420MMX},
               {ppl::format::yuyv, ppl::size::half, BaylorToYUYVMMX_deci_2_1},
               {ppl::format::uyvy, ppl::size::twice, BaylorToUYVYMMX_intp_1_2},
               {ppl::format::rgb24, ppl::size::same, BaylorToRGB24MMX},
               {ppl::format::rgb32, ppl::size::half, BaylorToRGB32MMX_deci_2_1}};
  for (const auto& k : cases) {
    ppl::context one, other;
    for (ppl::context* c : {&one, &other}) {
      c->quality(k.to == ppl::format::rgb32 ? ppl::quality::bilinear : ppl::quality::full)
          .gains(300, 256, 400);
      c->black_level(3).mirrors(false, false).saturation(300).contrast(10);
    }
    ppl::buffer a = noise(kFrame.width * kFrame.height), b = a;
    const ppl::buffer picture = one.convert(frame(a), k.to, k.at);
    ppl::buffer wanted(picture.size());
    ASSERT_EQ(k.call(other.get(), b.data(), wanted.data(), kFrame.width, kFrame.height), 1);
    EXPECT_TRUE(same(picture, wanted));
    EXPECT_TRUE(same(a, b));
    EXPECT_EQ(one.whole_frame(), other.whole_frame());
    EXPECT_NE(one.whole_frame(), ppl::rgb{});
    EXPECT_EQ(one.windows()[9].g, ppl_rgb_means_sub_windows(other.get())[9 * 3 + 1]);
    EXPECT_EQ(one.green_histogram()[40], ppl_g_histogram(other.get())[40]);
    EXPECT_EQ(one.exposure_cells(), ppl_n_qAE_2x2_whole_frame(other.get()));
  }
}

TEST(Cpp, StridesAndScaledPictures) {
  ppl::context one, other;
  ppl::buffer a = noise(160 * kFrame.height), b = a;
  const ppl::buffer picture = one.convert({a, kFrame.width, kFrame.height, 160}, ppl::format::yuyv);
  ppl::buffer wanted(picture.size());
  ppl_process_blrtoyuyv(other.get(), b.data(), wanted.data(), kFrame.width, kFrame.height, 160);
  EXPECT_TRUE(same(picture, wanted));

  ppl::buffer c = noise(kFrame.width * kFrame.height), d = c, scratch(128 * 48 * 2), large(160 * 60 * 3 / 2);
  const ppl::buffer scaled = one.convert_scaled(frame(c), ppl::format::i420, {160, 60});
  BaylorToI420MMX_scaling_stride(other.get(), d.data(), 128, 48, 128, large.data(), 160, 60, scratch.data());
  EXPECT_TRUE(same(scaled, large));
}

TEST(Cpp, DecoderFramesAreThoseOfTheCCalls) {
  ppl::context one, other;
  constexpr ppl::extent e = {64, 32};
  const ppl::buffer in = noise(64 * 32 * 2), before = noise(64 * 32, 7), kept = noise(64 * 32, 8),
                    later = noise(64 * 32, 9);
  one.mirrors(true, false);
  const ppl::buffer picture = one.convert(ppl::packing::uyvy, in, e, ppl::format::i420);
  ppl_new_frame_sizes(other.get(), 64, 32, 64, 32, 0);
  ppl_set_h_mirror(other.get(), 1);
  ppl::buffer wanted(picture.size());
  ASSERT_EQ(UYVYToI420MMX(other.get(), in.data(), wanted.data(), 64, 32, 64, 32), 1);
  EXPECT_TRUE(same(picture, wanted));

  const ppl::buffer woven = one.deinterlace(ppl::packing::yuyv, before, kept, later, e, ppl::format::rgb24);
  ppl::buffer weave(woven.size());
  ASSERT_EQ(
      IntlYUYVToRGB24MMX(other.get(), before.data(), kept.data(), later.data(), weave.data(), 64, 32, 64, 32),
      1);
  EXPECT_TRUE(same(woven, weave));
  const ppl::buffer plain = one.deinterlace(ppl::packing::yuyv, {}, kept, later, e, ppl::format::yuyv);
  for (size_t row = 0; row < 32; ++row)
    EXPECT_EQ(std::memcmp(&plain[row * 128], &(row % 2 ? later : kept)[row / 2 * 128], 128), 0) << row;
}

// A window of the frame, converted by itself, is the frame's picture but for what lies near its own edges.
TEST(Cpp, LargeFramesAreMadeInPartsAsOnePicture) {
  constexpr uint32_t w = 4096, h = 64, window = 640, edge = 64;
  const ppl::buffer raw = noise(w * h, 5);
  for (const bool mirrored : {false, true}) {
    ppl::context c, small;
    for (ppl::context* one : {&c, &small}) one->gains(300, 256, 280).black_level(9).mirrors(mirrored, false);
    c.lens_correction({w, h}, {1500, 20}, 30, 24);
    ppl::buffer samples = raw;
    const ppl::buffer picture = c.convert_large({samples, w, h}, ppl::format::rgb24);
    EXPECT_TRUE(same(samples, raw)) << "the frame is only read";
    ASSERT_EQ(picture.size(), size_t{3} * w * h);
    for (uint32_t x = 0; x + window <= w; x += 384) {  // seams lie at multiples of 64
      ppl::buffer part(window * h);
      for (uint32_t y = 0; y < h; ++y) std::memcpy(&part[y * window], &raw[y * w + x], window);
      // The optical centre stands left of most windows: beyond what ppl::context takes, but not the library.
      std::vector<uint16_t> table(window * (h + 1));
      const auto bytes = static_cast<int32_t>(2 * table.size());
      ASSERT_EQ(ppl_set_lens_correction(small.get(), window, h, 1500 - static_cast<int32_t>(x), 20,
                                        table.data(), bytes, 30, 24, 0, 44),
                1);
      ppl_enable_lens_correction(small.get());
      const ppl::buffer wanted = small.convert({part, window, h}, ppl::format::rgb24);
      for (uint32_t y = 0; y < h; ++y) {
        const uint32_t at = mirrored ? w - x - window : x;
        ASSERT_EQ(std::memcmp(&picture[3 * (y * w + at + edge)], &wanted[3 * (y * window + edge)],
                              3 * (window - 2 * edge)),
                  0)
            << "columns from " << x << ", row " << y;
      }
    }
    EXPECT_EQ(ppl_lens_correction_width(c.get()), static_cast<int32_t>(w)) << "the whole frame's once more";
    EXPECT_EQ(ppl_lens_correction_origin_x(c.get()), 1500);
  }
}

TEST(Cpp, LargeFramesAreMeasuredAsWholes) {
  constexpr uint32_t w = 2688, h = 256;
  ppl::buffer raw(w * h);
  for (size_t i = 0; i < raw.size(); ++i) raw[i] = i % w < w / 2 ? 60 : 180;
  ppl::context c;
  ppl::measurements m{};
  c.convert_large({raw, w, h}, ppl::format::i420, ppl::size::half, &m);
  for (const uint32_t mean : {m.qualified.r, m.qualified.g, m.qualified.b}) EXPECT_NEAR(mean / 256.0, 120, 3);
  EXPECT_NEAR(m.qualified_cells, w * h / 4, w * h / 80);
  EXPECT_NEAR(m.exposure_cells, w * h / 4, w * h / 80);
}

TEST(Cpp, LargeFramesThatCantBeAreThrown) {
  ppl::context c;
  ppl::buffer raw(2624 * 8);
  const auto sentence = [&](uint32_t w, uint32_t h, ppl::size at = ppl::size::same) {
    return thrown([&] { c.convert_large({raw, w, h}, ppl::format::i420, at); }).first;
  };
  EXPECT_NE(sentence(2625, 8).find("multiple of 32"), std::string::npos);
  EXPECT_NE(sentence(2624, 8, ppl::size::twice).find("not doubled"), std::string::npos);
  EXPECT_NE(sentence(2624, 10).find("needs 26240 bytes"), std::string::npos);
  EXPECT_EQ(thrown([&] {
              c.convert_large({raw, 2624, 8}, ppl::format::rgb32);
            }).second,
            PPL_REASON_QUALITY_NOT_IN_FORMAT);
  c.quality(ppl::quality::raw);
  EXPECT_NE(sentence(2624, 8).find("not made in parts"), std::string::npos);
}

TEST(Cpp, BlackLinesStandAboveAndBelow) {
  ppl::context c;
  constexpr ppl::extent e = {64, 32};
  const ppl::buffer kept = noise(64 * 32, 8), later = noise(64 * 32, 9);
  const ppl::buffer plain = c.deinterlace(ppl::packing::yuyv, {}, kept, later, e, ppl::format::yuyv);
  const ppl::buffer lined = c.deinterlace(ppl::packing::yuyv, {}, kept, later, e, ppl::format::yuyv, {3, 5});
  ASSERT_EQ(lined.size(), size_t{2 * 64 * (3 + 32 + 5)});
  for (size_t i = 0; i < lined.size(); ++i) {
    const size_t row = i / 128;
    ASSERT_EQ(lined[i], row < 3 || row >= 35 ? (i % 2 ? 128 : 16) : plain[i - 3 * 128]) << i;
  }
  EXPECT_TRUE(same(c.deinterlace(ppl::packing::yuyv, {}, kept, later, e, ppl::format::yuyv), plain));
  EXPECT_EQ(thrown([&] {
              c.deinterlace(ppl::packing::yuyv, {}, kept, later, e, ppl::format::i420, {3, 5});
            }).second,
            PPL_REASON_LINES_ODD);
  EXPECT_EQ(thrown([&] {
              c.deinterlace(ppl::packing::yuyv, {}, kept, later, e, ppl::format::rgb24, {2, 2});
            }).second,
            PPL_REASON_LINES_SHIFT_RGB24);
}

// Twelve bytes hold eight pixels: four pairs of luma and chroma, then four of luma alone. Of 32 pixels the first four
// stand where they belong.
TEST(Cpp, TwelveBitFramesBecomeI420) {
  ppl::context c;
  constexpr ppl::extent e = {64, 4};
  const ppl::buffer in = noise(64 * 4 * 3 / 2, 11);
  const ppl::buffer picture = c.convert_12_bit(in, e);
  ASSERT_EQ(picture.size(), size_t{64 * 4 * 3 / 2});
  for (size_t y = 0; y < 4; ++y)
    for (size_t x = 0; x < 4; ++x) EXPECT_EQ(picture[y * 64 + x], in[y * 96 + 2 * x]) << x << ", " << y;
  for (size_t i = 64 * 4 * 5 / 4; i < picture.size(); ++i) ASSERT_EQ(picture[i], 128) << i;
  EXPECT_NE(thrown([&] { c.convert_12_bit(in, {48, 4}); }).first.find("multiples of 32"), std::string::npos);
  EXPECT_NE(thrown([&] { c.convert_12_bit(in, {64, 6}); }).first.find("needs 576 bytes"), std::string::npos);
  EXPECT_EQ(thrown([&] { c.convert_12_bit(in, {4096, 4}); }).second, PPL_REASON_SIZE_REFUSED);
}

TEST(Cpp, WhatMakesNoPictureIsThrownWithTheReason) {
  ppl::context c;
  ppl::buffer raw = noise(700 * 500);
  const auto convert = [&](uint32_t w, uint32_t h, ppl::format f, ppl::size s = ppl::size::same,
                           uint32_t stride = 0) {
    return thrown([&] { c.convert({raw, w, h, stride}, f, s); });
  };
  const ppl::buffer untouched = raw;
  EXPECT_EQ(convert(640, 480, ppl::format::rgb32).second, PPL_REASON_QUALITY_NOT_IN_FORMAT);
  EXPECT_NE(convert(640, 480, ppl::format::rgb32).first.find("quality 0 would do"), std::string::npos);
  EXPECT_EQ(convert(650, 480, ppl::format::i420).first,
            "the width must be a multiple of 32; 640 x 480 would do");
  EXPECT_EQ(convert(64, 32, ppl::format::rgb24, ppl::size::twice).second, PPL_REASON_NOT_CONVERTED_TO_RGB);
  EXPECT_EQ(convert(64, 32, ppl::format::i420, ppl::size::same, 32).second, PPL_REASON_STRIDE_BELOW_WIDTH);
  EXPECT_EQ(convert(4096, 32, ppl::format::i420).second, PPL_REASON_SIZE_REFUSED);
  EXPECT_EQ(convert(0x7fffffff, 1, ppl::format::rgb24).second, PPL_REASON_SIZE_REFUSED);
  EXPECT_EQ(thrown([&] {
              c.convert(ppl::packing::yuyv, raw, {0x7fffffff, 1}, ppl::format::rgb24);
            }).second,
            PPL_REASON_SIZE_REFUSED);
  EXPECT_EQ(thrown([&] {
              c.convert_scaled({raw, 64, 32}, ppl::format::uyvy, {128, 64});
            }).second,
            PPL_REASON_FORMAT_NOT_SCALED);
  EXPECT_EQ(thrown([&] {
              c.convert({std::span(raw).subspan(8), 64, 32}, ppl::format::i420);
            }).second,
            PPL_REASON_SOURCE_MISALIGNED);
  EXPECT_EQ(thrown([&] {
              c.convert({std::span(raw).first(100), 64, 32}, ppl::format::i420);
            }).first,
            "the frame needs 2048 bytes, its buffer has 100");
  ppl::buffer small(64 * 32);
  EXPECT_EQ(thrown([&] {
              c.convert({raw, 64, 32}, small, ppl::format::i420);
            }).first,
            "the picture needs 3072 bytes, its buffer has 2048");
  EXPECT_EQ(thrown([&] {
              c.convert(ppl::packing::yuyv, raw, {64, 33}, ppl::format::i420);
            }).second,
            PPL_REASON_HEIGHT_2);
  EXPECT_EQ(thrown([&] {
              c.convert(ppl::packing::yuyv, raw, {64, 32}, ppl::format::uyvy);
            }).second,
            PPL_REASON_NO_SUCH_CONVERSION);
  ppl_set_P3_only(c.get(), 1);
  EXPECT_EQ(convert(64, 32, ppl::format::i420).second, PPL_REASON_P3_ONLY);
  EXPECT_EQ(c.frames(), ppl_n_frame(c.get()));
  EXPECT_TRUE(same(raw, untouched)) << "a refused frame was worked on";
}

TEST(Cpp, ControlsOutOfRangeAreThrownAndStayAsTheyWere) {
  ppl::context c;
  c.gains(300, 310, 320).black_level(5, 6, 7, 8);
  EXPECT_EQ(thrown([&] { c.gains(300, 2048, 300); }).first, "gains go from 0 to 2047, 256 being 1.0");
  EXPECT_EQ(ppl_nf88_g_gain(c.get()), 310u);
  EXPECT_NE(thrown([&] { c.black_level(256); }).first, "nothing");
  EXPECT_NE(thrown([&] { c.deltas(0, 40000, 0); }).first, "nothing");
  EXPECT_NE(thrown([&] { c.saturation(513); }).first, "nothing");
  EXPECT_NE(thrown([&] { c.contrast(-128); }).first, "nothing");
  EXPECT_NE(thrown([&] { c.gamma(33); }).first, "nothing");
  EXPECT_NE(thrown([&] { c.green_balance(true, 40000); }).first, "nothing");
  EXPECT_EQ(ppl_GbGr_correction_enabled(c.get()), 0);
  EXPECT_NE(thrown([&] { c.sharpness(257); }).first, "nothing");
  EXPECT_NE(thrown([&] { c.lens_correction({640, 480}, {700, 240}, 48); }).first, "nothing");
  uint32_t b = 0;
  ppl_optical_black_b_gb_gr_r(c.get(), &b, nullptr, nullptr, nullptr);
  EXPECT_EQ(b, 5u);
  EXPECT_EQ(c.quality(), ppl::quality::full);
}

TEST(Cpp, ContextsAreEightAndFreeThemselves) {
  for (int round = 0; round < 3; ++round) {
    std::vector<ppl::context> all(8);
    EXPECT_EQ(thrown([] { ppl::context ninth; }).first, "all eight contexts are in use: drop one first");
    ppl::context moved = std::move(all[3]);
    EXPECT_EQ(all[3].get(), nullptr);
    EXPECT_NE(moved.get(), nullptr);
    all.pop_back();
    const ppl::context again;
    EXPECT_NE(again.get(), nullptr);
  }
}

TEST(Cpp, LensTablesLiveAsLongAsTheirContext) {
  std::optional<ppl::context> first(std::in_place);
  first->lens_correction(kFrame, {64, 24}, 4000).quality(ppl::quality::directed);
  ppl::context c = std::move(*first);
  first.reset();
  ppl::context other;
  std::vector<uint16_t> table(25 * 128);
  ASSERT_EQ(ppl_set_lens_correction(other.get(), 128, 48, 64, 24, table.data(),
                                    static_cast<int32_t>(table.size() * 2), 4000, 24, 0, 44),
            1);
  ppl_enable_lens_correction(other.get());
  other.quality(ppl::quality::directed);
  ppl::buffer a = noise(128 * 48), b = a;
  EXPECT_TRUE(same(c.convert(frame(a), ppl::format::i420), other.convert(frame(b), ppl::format::i420)));
  EXPECT_TRUE(same(a, b));
  ppl_reset_lens_correction(other.get());
  c.no_lens_correction();
  a = noise(128 * 48);
  b = a;
  EXPECT_TRUE(same(c.convert(frame(a), ppl::format::i420), other.convert(frame(b), ppl::format::i420)));
}

TEST(Cpp, FlatColoursDoNotReachLaterPictures) {
  for (uint32_t number = 0; number < PPL_QUALITIES; ++number) {
    if (ppl_quality_shows_colours(number) == 0) continue;
    const auto shows = static_cast<ppl::quality>(number);
    SCOPED_TRACE(number);
    ppl::context c;
    const auto picture = [&](ppl::quality q, bool flat) {
      ppl::buffer b = flat ? ppl::buffer(128 * 48) : noise(128 * 48);
      if (flat) std::fill(b.begin(), b.end(), uint8_t{90});
      c.quality(q);
      return c.convert(frame(b), ppl::format::i420);
    };
    const ppl::buffer fresh = picture(shows, false);
    for (const auto q : {ppl::quality::flat, ppl::quality::flat_sharp}) {
      picture(q, true);
      EXPECT_TRUE(same(picture(shows, false), fresh));
      // Where the controls make all samples alike nothing can clear them; they are cleared when that ends.
      picture(q, true);
      c.black_level(255);
      picture(shows, false);
      c.black_level(0);
      EXPECT_TRUE(same(picture(shows, false), fresh));
      EXPECT_EQ(ppl_CFA_T0_threshold(c.get()), 10u);
    }
  }
}

TEST(Cpp, BuffersAreAlignedAndCopied) {
  ppl::buffer a = noise(100);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(a.data()) % 64, 0u);
  ppl::buffer b = a, c = std::move(a);
  EXPECT_TRUE(same(b, c));
  EXPECT_TRUE(a.empty());
  b[0] ^= 1;
  EXPECT_FALSE(same(b, c));
  EXPECT_TRUE(ppl::buffer().empty());
  EXPECT_EQ(ppl::bytes(ppl::format::i420, {6, 5}), 30u + 14);
}

}  // namespace
