// The corners of the conversions' contract, one test each, with figures worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

#include "ppl.h"
#include "support/convert_exports.h"
#include "support/fenced.h"
#include "support/level.h"

namespace {

using support::kUntouched;
using buffer = support::fenced;

// Each test runs once per level of vector code.
class ConvertEdges : public testing::TestWithParam<int> {
 protected:
  void SetUp() override {
    ppl_test_force_level(GetParam());
    context = ppl_init();
    ASSERT_NE(context, nullptr);
  }
  void TearDown() override {
    if (context) ppl_free(context);
  }
  uint32_t frames() const { return ppl_n_frame(context); }
  ppl_context* context = nullptr;
};
INSTANTIATE_TEST_SUITE_P(Levels, ConvertEdges, testing::Range(0, ppl_test_levels()));

TEST_P(ConvertEdges, OddMultipleOfEightIsASuccessWithoutAPicture) {
  buffer in(320 * 240 * 2 + 8), out(320 * 240 * 3 / 2);
  const uint32_t before = frames();
  EXPECT_EQ(YUYVToI420MMX(context, in.data() + 8, out.data(), 320, 240, 320, 240), 1);
  EXPECT_EQ(YUYVToI420MMX(context, in.data(), out.data() + 8, 320, 240, 320, 240), 1);
  EXPECT_TRUE(out.all(kUntouched));
  EXPECT_EQ(frames(), before);
}

TEST_P(ConvertEdges, ProcessFormsHaveNoFallBack) {
  buffer in(320 * 240 * 2 + 8), out(320 * 240 * 3 / 2);
  EXPECT_EQ(ppl_process_yuyvtoi420(context, in.data() + 1, out.data(), 320, 240, 320, 240), 1);
  EXPECT_TRUE(out.all(kUntouched));
}

TEST_P(ConvertEdges, SizesCountBeforeAlignment) {
  buffer in(320 * 240 * 2), out(160 * 120 * 3 / 2);
  EXPECT_EQ(YUYVToI420MMX(context, in.data() + 8, out.data(), 320, 240, 160, 120), 1);
  EXPECT_EQ(ppl_decimation(context), 1);
  EXPECT_EQ(YUYVToI420MMX(context, in.data() + 8, out.data(), 320, 240, 161, 120), 0);
}

TEST_P(ConvertEdges, AWrapperLooksAtNoSizesBeforeItsFallBack) {
  buffer in(64), out(64 + 32);
  in.fill_noise(5);
  const uint32_t before = frames();
  EXPECT_EQ(UYVYToI420MMX(context, in.data() + 4, out.data(), 8, 8, 6, 5), 0);
  EXPECT_TRUE(std::equal(out.data(), out.data() + 30, in.data() + 4));
  EXPECT_TRUE(out.all(30, 45, 128));
  EXPECT_TRUE(out.all(45, 96, kUntouched));
  EXPECT_EQ(frames(), before);
}

TEST_P(ConvertEdges, FallBacksOfTheOtherFormats) {
  buffer in(64), later(64), rgb(256);
  in.fill_noise(6);
  later.fill_noise(7);
  EXPECT_EQ(YUYVToRGB24MMX(context, in.data() + 2, rgb.data(), 8, 8, 6, 5), 0);
  EXPECT_TRUE(rgb.all(0, 90, 255));
  EXPECT_TRUE(rgb.all(90, 256, kUntouched));
  buffer rgb32(256);
  EXPECT_EQ(RGB24ToRGB32MMX(context, in.data() + 2, rgb32.data(), 8, 8, 6, 5), 0);
  EXPECT_TRUE(rgb32.all(0, 120, 255));
  EXPECT_TRUE(rgb32.all(120, 256, kUntouched));
  buffer packed(256);
  EXPECT_EQ(IntlYUYVToUYVYMMX_no_motion(context, nullptr, in.data() + 1, later.data() + 3, packed.data(), 8,
                                        8, 6, 5),
            0);
  EXPECT_TRUE(std::equal(packed.data(), packed.data() + 30, in.data() + 1));
  EXPECT_TRUE(std::equal(packed.data() + 30, packed.data() + 60, later.data() + 3));
  EXPECT_TRUE(packed.all(60, 256, kUntouched));
  buffer woven(256);
  EXPECT_EQ(IntlUYVYToRGB24MMX(context, in.data() + 1, in.data(), in.data(), woven.data(), 8, 8, 6, 5), 0);
  EXPECT_TRUE(woven.all(0, 90, 255));
  EXPECT_TRUE(woven.all(90, 256, kUntouched));
}

TEST_P(ConvertEdges, AnAcceptedShrinkLeavesAProgressiveFrameUntouched) {
  buffer in(320 * 240 * 2), out(320 * 240 * 3 / 2);
  const uint32_t before = frames();
  EXPECT_EQ(YUYVToI420MMX(context, in.data(), out.data(), 320, 240, 160, 120), 1);
  EXPECT_EQ(ppl_decimation(context), 1);
  EXPECT_TRUE(out.all(kUntouched));
  EXPECT_EQ(frames(), before + 1);
}

TEST_P(ConvertEdges, SizesOutsideTheTableAreRefused) {
  buffer in(320 * 240 * 2), out(320 * 240 * 3 / 2);
  const uint32_t before = frames();
  EXPECT_EQ(YUYVToI420MMX(context, in.data(), out.data(), 320, 240, 320, 242), 0);
  EXPECT_TRUE(out.all(kUntouched));
  EXPECT_EQ(frames(), before);
}

TEST_P(ConvertEdges, P3OnlyConvertsNothing) {
  buffer in(320 * 240 * 2), out(320 * 240 * 3);
  const uint32_t before = frames();
  ppl_set_P3_only(context, 1);
  EXPECT_EQ(UYVYToRGB24MMX(context, in.data(), out.data(), 320, 240, 320, 240), 1);
  EXPECT_TRUE(out.all(kUntouched));
  EXPECT_EQ(frames(), before);
}

TEST_P(ConvertEdges, PictureControlsReachNoConversion) {
  buffer in(320 * 240 * 2), plain(320 * 240 * 3), changed(320 * 240 * 3);
  in.fill_noise(11);
  EXPECT_EQ(YUYVToRGB24MMX(context, in.data(), plain.data(), 320, 240, 320, 240), 1);
  uint32_t x, y;
  ppl_set_contrast_c(context, 40, &x, &y);
  ppl_set_sat_hue(context, 400, 50);
  ppl_set_gamma(context, 12);
  ppl_set_rgb_gain(context, 500, 300, 400);
  EXPECT_EQ(YUYVToRGB24MMX(context, in.data(), changed.data(), 320, 240, 320, 240), 1);
  EXPECT_TRUE(plain == changed);
}

TEST_P(ConvertEdges, BlackWhiteAndTheBlueWrap) {
  buffer in(320 * 240 * 2), out(320 * 240 * 3);
  const auto convert = [&](uint8_t y, uint8_t u, uint8_t v) {
    for (size_t k = 0; k < in.size(); k += 4) {
      in[k] = in[k + 2] = y;
      in[k + 1] = u;
      in[k + 3] = v;
    }
    EXPECT_EQ(YUYVToRGB24MMX(context, in.data(), out.data(), 320, 240, 320, 240), 1);
    EXPECT_TRUE(std::equal(out.data(), out.data() + out.size() - 3, out.data() + 3));
    return std::vector<int>{out[0], out[1], out[2]};
  };
  EXPECT_EQ(convert(16, 128, 128), (std::vector<int>{0, 0, 0}));
  EXPECT_EQ(convert(0, 128, 128), (std::vector<int>{0, 0, 0}));
  // 219 * 74 = 16206, / 64 = 253.2
  EXPECT_EQ(convert(235, 128, 128), (std::vector<int>{253, 253, 253}));
  // Blue 129 * 127 + 74 * 239 = 34069, beyond 32767. Green (17686 - 3175) / 64 = 226.7. Red 276 is clamped.
  EXPECT_EQ(convert(255, 255, 128), (std::vector<int>{0, 226, 255}));
  // The last sum that does not wrap is 32767: 129 * 127 + 74 * 221 = 32737, / 64 = 511, clamped.
  EXPECT_EQ(convert(237, 255, 128)[0], 255);
  EXPECT_EQ(convert(238, 255, 128)[0], 0);
}

TEST_P(ConvertEdges, Rgb24GoesUpwardWhateverTheMirrors) {
  buffer in(320 * 240 * 2, 128), out(320 * 240 * 3);
  for (size_t x = 0; x < 640; x += 2) in[x] = 235;  // the first row white
  for (size_t k = 640; k < in.size(); k += 2) in[k] = 16;
  for (uint8_t mirrors = 0; mirrors < 4; ++mirrors) {
    ppl_set_h_mirror(context, mirrors & 1);
    ppl_set_v_mirror(context, mirrors >> 1);
    EXPECT_EQ(YUYVToRGB24MMX(context, in.data(), out.data(), 320, 240, 320, 240), 1);
    EXPECT_TRUE(out.all(320 * 239 * 3, 320 * 240 * 3, 253));
    EXPECT_TRUE(out.all(0, 320 * 239 * 3, 0));
  }
}

TEST_P(ConvertEdges, MirrorsTurnEveryPlaneAround) {
  buffer in(320 * 240 * 2), plain(320 * 240 * 3 / 2), turned(320 * 240 * 3 / 2);
  in.fill_noise(13);
  EXPECT_EQ(UYVYToI420MMX(context, in.data(), plain.data(), 320, 240, 320, 240), 1);
  ppl_set_h_mirror(context, 1);
  ppl_set_v_mirror(context, 1);
  EXPECT_EQ(UYVYToI420MMX(context, in.data(), turned.data(), 320, 240, 320, 240), 1);
  const size_t ends[] = {0, 320 * 240, 320 * 240 * 5 / 4, 320 * 240 * 3 / 2};
  for (int plane = 0; plane < 3; ++plane)
    EXPECT_TRUE(std::equal(plain.data() + ends[plane], plain.data() + ends[plane + 1],
                           std::reverse_iterator(turned.data() + ends[plane + 1])));
}

// ---- Fields at full size ----

constexpr size_t kField = 320 * 240;

struct fields {
  buffer earlier{kField}, kept{kField}, later{kField};
  fields() {
    earlier.fill_noise(21);
    kept.fill_noise(22);
    later.fill_noise(23);
  }
};

bool is_weave(const buffer& out, const fields& f, size_t first_row_pair, size_t end_row_pair) {
  for (size_t p = first_row_pair; p < end_row_pair; ++p)
    if (!std::equal(out.data() + p * 1280, out.data() + p * 1280 + 640, f.kept.data() + p * 640) ||
        !std::equal(out.data() + p * 1280 + 640, out.data() + p * 1280 + 1280, f.later.data() + p * 640))
      return false;
  return true;
}

TEST_P(ConvertEdges, IdenticalFieldsWeaveAtEveryThreshold) {
  fields f;
  std::copy_n(f.later.data(), kField, f.earlier.data());
  for (uint32_t threshold : {0u, 1u, 50u, 765u}) {
    ppl_set_intl_3T_threshold(context, threshold);
    buffer out(2 * kField);
    EXPECT_EQ(IntlYUYVToYUYVMMX(context, f.earlier.data(), f.kept.data(), f.later.data(), out.data(), 320,
                                240, 320, 240),
              1);
    EXPECT_TRUE(is_weave(out, f, 0, 120));
  }
}

TEST_P(ConvertEdges, TheMotionMeasureReaches2040) {
  EXPECT_EQ(ppl_set_intl_3T_threshold(context, 766), 0);
  EXPECT_EQ(ppl_set_intl_3T_threshold(context, 765), 1);
  fields f;
  for (size_t k = 0; k < kField; k += 2) {  // differences alternate between 255 and -255
    f.earlier[k + 1] = k / 2 % 2 ? 0 : 255;
    f.later[k + 1] = k / 2 % 2 ? 255 : 0;
  }
  buffer out(2 * kField);
  EXPECT_EQ(IntlYUYVToYUYVMMX(context, f.earlier.data(), f.kept.data(), f.later.data(), out.data(), 320, 240,
                              320, 240),
            1);
  for (size_t x = 0; x < 640; x += 2) {
    EXPECT_EQ(out[640 + x], f.later[x]);  // luma is woven
    EXPECT_EQ(out[640 + x + 1], (f.kept[x + 1] + f.kept[640 + x + 1] + 1) >> 1);
  }
}

TEST_P(ConvertEdges, TheLastRowPairIsWoven) {
  fields f;
  ppl_set_intl_3T_threshold(context, 0);
  buffer out(2 * kField);
  EXPECT_EQ(IntlUYVYToUYVYMMX(context, f.earlier.data(), f.kept.data(), f.later.data(), out.data(), 320, 240,
                              320, 240),
            1);
  EXPECT_TRUE(is_weave(out, f, 119, 120));
  EXPECT_FALSE(is_weave(out, f, 118, 119));
}

// A chroma change of 10 over the whole row: the inner words see three equal differences, measure 0. The first word
// sees 0, 10, 10: sum 20, measure 20 + 10 + 10; the last likewise.
TEST_P(ConvertEdges, RowEndsTestAgainstNoDifference) {
  fields f;
  for (size_t k = 1; k < kField; k += 2) f.later[k] = static_cast<uint8_t>((f.earlier[k] &= 127) + 10);
  for (uint32_t threshold : {39u, 40u}) {
    ppl_set_intl_3T_threshold(context, threshold);
    buffer out(2 * kField);
    EXPECT_EQ(IntlYUYVToYUYVMMX(context, f.earlier.data(), f.kept.data(), f.later.data(), out.data(), 320,
                                240, 320, 240),
              1);
    for (size_t x = 0; x < 640; x += 2) {
      const bool end = x == 0 || x == 638;
      const int blended = (f.kept[x + 1] + f.kept[640 + x + 1] + 1) >> 1;
      EXPECT_EQ(out[640 + x + 1], end && threshold == 39 ? blended : f.later[x + 1]) << x;
    }
  }
}

TEST_P(ConvertEdges, SwappedFormsWithoutMotionCountTheFrameOnly) {
  fields f;
  buffer out(2 * kField);
  const uint32_t before = frames();
  EXPECT_EQ(IntlUYVYToYUYVMMX_no_motion(context, f.earlier.data(), f.kept.data(), f.later.data(), out.data(),
                                        320, 240, 320, 240),
            1);
  EXPECT_EQ(IntlYUYVToUYVYMMX_no_motion(context, nullptr, nullptr, nullptr, out.data(), 320, 240, 160, 120),
            1);
  EXPECT_TRUE(out.all(kUntouched));
  EXPECT_EQ(frames(), before + 2);
}

TEST_P(ConvertEdges, MirrorsDoNotReachFields) {
  fields f;
  buffer plain(kField * 3), mirrored(kField * 3);
  for (const convert_export& e : kConvertExports) {
    if (!e.fields) continue;
    ppl_reset_mirrors(context);
    EXPECT_EQ(e(context, f.earlier.data(), f.kept.data(), f.later.data(), plain.data(), 320, 240, 320, 240),
              1);
    ppl_set_h_mirror(context, 1);
    ppl_set_v_mirror(context, 1);
    EXPECT_EQ(
        e(context, f.earlier.data(), f.kept.data(), f.later.data(), mirrored.data(), 320, 240, 320, 240), 1);
    EXPECT_TRUE(plain == mirrored) << e.name;
  }
}

TEST_P(ConvertEdges, WeavingDoesNotReadTheEarlierField) {
  fields f;
  buffer out(2 * kField);
  EXPECT_EQ(IntlYUYVToYUYVMMX_no_motion(context, nullptr, f.kept.data(), f.later.data(), out.data(), 320, 240,
                                        320, 240),
            1);
  EXPECT_TRUE(is_weave(out, f, 0, 120));
}

// ---- Black lines ----

TEST_P(ConvertEdges, BlackLinesOfPackedOutput) {
  buffer field(704 * 480, 77), out(704 * 576 * 2);
  EXPECT_EQ(
      IntlYUYVToUYVYMMX(context, field.data(), field.data(), field.data(), out.data(), 704, 480, 704, 576),
      1);
  EXPECT_EQ(ppl_decimation_top_black_lines(context), 48);
  EXPECT_EQ(ppl_decimation_bottom_black_lines(context), 48);
  const size_t row = 704 * 2;
  for (size_t k = 0; k < out.size(); ++k) {
    const size_t r = k / row;
    ASSERT_EQ(out[k], r < 48 || r >= 528 ? (k % 2 ? 16 : 128) : 77) << k;
  }
}

// With top lines the image starts on the last of them, and the row between it and the bottom lines stays free.
TEST_P(ConvertEdges, BlackLinesOfRgb24AreOffByOneRow) {
  buffer field(704 * 480), out(704 * 576 * 3);
  for (size_t k = 0; k < field.size(); ++k) field[k] = k % 2 ? 128 : 235;
  EXPECT_EQ(
      IntlYUYVToRGB24MMX(context, field.data(), field.data(), field.data(), out.data(), 704, 480, 704, 576),
      1);
  const size_t row = 704 * 3;  // image row r counts from the end of memory
  const auto image_rows = [&](size_t from, size_t to, uint8_t value) {
    return out.all((576 - to) * row, (576 - from) * row, value);
  };
  EXPECT_TRUE(image_rows(0, 47, 0));
  EXPECT_TRUE(image_rows(47, 527, 253));
  EXPECT_TRUE(image_rows(527, 528, kUntouched));
  EXPECT_TRUE(image_rows(528, 576, 0));
}

// Shrunk, everything starts one row further: the second row stays free, and the bottom lines cover the last image row.
TEST_P(ConvertEdges, BlackLinesOfShrunkRgb24) {
  buffer field(704 * 480), out(352 * 288 * 3);
  for (size_t k = 0; k < field.size(); ++k) field[k] = k % 2 ? 128 : 235;
  EXPECT_EQ(
      IntlYUYVToRGB24MMX(context, field.data(), field.data(), field.data(), out.data(), 704, 480, 352, 288),
      1);
  const size_t row = 352 * 3;
  const auto image_rows = [&](size_t from, size_t to, uint8_t value) {
    return out.all((288 - to) * row, (288 - from) * row, value);
  };
  EXPECT_TRUE(image_rows(0, 24, 0));
  EXPECT_TRUE(image_rows(24, 25, kUntouched));
  EXPECT_TRUE(image_rows(25, 264, 253));
  EXPECT_TRUE(image_rows(264, 288, 0));
}

// ---- 12 bits a pixel, and the empty conversion ----

TEST_P(ConvertEdges, TwelveBitLeavesTheVPlane) {
  buffer in(320 * 240 * 3 / 2), out(320 * 240 * 3 / 2), twin(320 * 240 * 3 / 2);
  in.fill_noise(31);
  EXPECT_EQ(UYVYYYYYToI420MMX(context, in.data(), out.data(), 320, 240, 320, 240), 1);
  EXPECT_TRUE(out.all(320 * 240 * 5 / 4, 320 * 240 * 3 / 2, kUntouched));
  EXPECT_EQ(YUYVYYYYToI420MMX(context, in.data(), twin.data(), 320, 240, 320, 240), 1);
  EXPECT_TRUE(out == twin);
  // The first unit's third group is never read; pixels 4 to 7 come from its ninth.
  EXPECT_TRUE(std::equal(in.data() + 32, in.data() + 36, out.data() + 4));
  EXPECT_EQ(out[20], in[36]);
  EXPECT_EQ(out[21], 0);
  // U holds the second row's mixed bytes.
  EXPECT_EQ(out[320 * 240], in[480 + 1]);
  EXPECT_EQ(out[320 * 240 + 4], in[480 + 13]);
}

TEST_P(ConvertEdges, TwelveBitMirrored) {
  buffer in(320 * 240 * 3 / 2), plain(320 * 240 * 3 / 2), mirrored(320 * 240 * 3 / 2);
  in.fill_noise(32);
  EXPECT_EQ(ppl_process_uyvyyyyytoi420(context, in.data(), plain.data(), 320, 240, 320, 240), 1);
  ppl_set_h_mirror(context, 1);
  EXPECT_EQ(ppl_process_yuyvyyyytoi420(context, in.data(), mirrored.data(), 320, 240, 320, 240), 1);
  EXPECT_TRUE(std::equal(plain.data(), plain.data() + 320, std::reverse_iterator(mirrored.data() + 320)));
  // Groups of 16 chroma bytes change places but keep their order inside.
  for (size_t g = 0; g < 10; ++g)
    EXPECT_TRUE(std::equal(plain.data() + 76800 + 16 * g, plain.data() + 76800 + 16 * g + 16,
                           mirrored.data() + 76800 + 144 - 16 * g));
}

TEST_P(ConvertEdges, Rgb24ToRgb32IsEmpty) {
  buffer in(320 * 240 * 3), out(320 * 240 * 4);
  const uint32_t before = frames();
  EXPECT_EQ(RGB24ToRGB32MMX(context, in.data(), out.data(), 320, 240, 320, 240), 0);
  EXPECT_EQ(frames(), before + 1);
  EXPECT_EQ(RGB24ToRGB32MMX(context, in.data(), out.data() + 8, 320, 240, 320, 240), 1);
  EXPECT_EQ(frames(), before + 1);
  EXPECT_TRUE(out.all(kUntouched));
  EXPECT_EQ(RGB24ToRGB32MMX(context, in.data(), out.data() + 4, 320, 240, 16, 4), 0);
  EXPECT_TRUE(out.all(0, 4, kUntouched));
  EXPECT_TRUE(out.all(4, 4 + 256, 255));
  EXPECT_TRUE(out.all(4 + 256, out.size(), kUntouched));
}

// ---- Shrinking and doubling ----

TEST_P(ConvertEdges, AFlatFrameShrinksToItself) {
  buffer field(kField), out(160 * 120 * 2);
  for (size_t k = 0; k < kField; ++k)
    field[k] = static_cast<uint8_t>(k % 4 == 0 || k % 4 == 2 ? 90 : k % 4 == 1 ? 60 : 200);
  EXPECT_EQ(
      IntlYUYVToYUYVMMX(context, field.data(), field.data(), field.data(), out.data(), 320, 240, 160, 120),
      1);
  EXPECT_TRUE(std::equal(out.data(), out.data() + out.size(), field.data()));
}

TEST_P(ConvertEdges, ShrinkingReadsTheKeptFieldAlone) {
  fields f;
  for (const convert_export& e : kConvertExports) {
    if (!e.fields) continue;
    buffer with(160 * 120 * 3), without(160 * 120 * 3);
    EXPECT_EQ(e(context, f.earlier.data(), f.kept.data(), f.later.data(), with.data(), 320, 240, 160, 120),
              1);
    EXPECT_EQ(e(context, nullptr, f.kept.data(), nullptr, without.data(), 320, 240, 160, 120), 1);
    EXPECT_TRUE(with == without) << e.name;
  }
}

TEST_P(ConvertEdges, DoubledRowZeroEqualsRowOne) {
  buffer earlier(640 * 480), kept(640 * 480), later(640 * 480), out(1280 * 960 * 2);
  kept.fill_noise(41);
  later.fill_noise(42);
  earlier.fill_noise(43);
  EXPECT_EQ(
      IntlYUYVToYUYVMMX(context, earlier.data(), kept.data(), later.data(), out.data(), 640, 480, 1280, 960),
      1);
  EXPECT_TRUE(std::equal(out.data(), out.data() + 2560, out.data() + 2560));
  // The last macropixel of a row is followed by its twin: the last luma is the mean of the last two.
  EXPECT_EQ(out[2560 - 2], (kept[1276] + kept[1278] + 1) >> 1);
  EXPECT_EQ(out[2560 - 3], kept[1277]);  // U
  EXPECT_EQ(out[2560 - 1], kept[1279]);  // V
}

TEST_P(ConvertEdges, DoublingExistsWithMotionAlone) {
  buffer field(640 * 480), out(1280 * 960 * 3);
  for (const convert_export& e : kConvertExports) {
    const std::string name = e.name;
    if (name.find("_no_motion") == std::string::npos && name != "IntlYUYVToUYVYMMX" &&
        name != "IntlUYVYToYUYVMMX")
      continue;
    const uint32_t before = frames();
    EXPECT_EQ(e(context, field.data(), field.data(), field.data(), out.data(), 640, 480, 1280, 960), 1)
        << name;
    EXPECT_TRUE(out.all(kUntouched)) << name;
    EXPECT_EQ(frames(), before + 1) << name;
  }
}

TEST_P(ConvertEdges, WidthsOf352WriteAFullFrame) {
  buffer field(640 * 480, 50), out(640 * 480 * 2 + 64);
  EXPECT_EQ(
      IntlYUYVToYUYVMMX(context, field.data(), field.data(), field.data(), out.data(), 640, 480, 352, 288),
      1);
  EXPECT_TRUE(out.all(0, 640 * 480 * 2, 50));
  EXPECT_TRUE(out.all(640 * 480 * 2, out.size(), kUntouched));
}

}  // namespace
