// Conversions where rows, planes and destinations do not fit together as usual. Figures are worked out by hand.
//
// Frames are set up through ppl_new_frame_size() and ppl_set_decimation(): sizes equal to the instance's own are not
// looked up in the table of conversion sizes.
#include <gtest/gtest.h>

#include <cstring>
#include <ctime>
#include <vector>

#include "ppl.h"
#include "support/fenced.h"
#include "support/level.h"

namespace {

using support::fenced;
using support::kUntouched;

class ConvertCorners : public testing::TestWithParam<int> {
 protected:
  void SetUp() override {
    ppl_test_force_level(GetParam());
    context = ppl_init();
    ASSERT_NE(context, nullptr);
    ppl_test_force_level(-1);
  }
  void TearDown() override { ppl_free(context); }
  void size(uint32_t width, uint32_t height, int decimation, int top, int bottom) {
    ASSERT_EQ(ppl_new_frame_size(context, width, height, width), 1);
    ppl_reset_decimation(context);
    ASSERT_EQ(ppl_set_decimation(context, decimation, top, bottom), 1);
  }
  ppl_context* context = nullptr;
};
INSTANTIATE_TEST_SUITE_P(Levels, ConvertCorners, testing::Range(0, ppl_test_levels()));

// Each row of YUYV: luma 10 + column, U 100 + 2 * pair, V 101 + 2 * pair.
void ramp(uint8_t* out, int width, int rows) {
  for (int r = 0; r < rows; r++) {
    for (int x = 0; x < width; x++) {
      *out++ = static_cast<uint8_t>(10 + x);
      *out++ = static_cast<uint8_t>(100 + x);
    }
  }
}

// 48 columns are three tiles: the last one has no partner, its chroma is stored all the same.
TEST_P(ConvertCorners, AnOddTileCountKeepsItsLastChroma) {
  size(48, 4, 0, 0, 0);
  fenced frame(48 * 4 * 2), out(48 * 4 * 3 / 2);
  ramp(frame.data(), 48, 4);
  EXPECT_EQ(YUYVToI420MMX(context, frame.data(), out.data(), 48, 4, 48, 4), 1);
  EXPECT_EQ(out[47], 57);
  EXPECT_EQ(out[192 + 23], 146);       // U of pair 23: 100 + 46
  EXPECT_EQ(out[192 + 48 + 23], 147);  // V lies 48 bytes behind U
  fenced woven(48 * 4 * 3 / 2);
  EXPECT_EQ(IntlYUYVToI420MMX(context, frame.data(), frame.data(), frame.data(), woven.data(), 48, 4, 48, 4),
            1);
  EXPECT_EQ(woven[192 + 23], 146);
  EXPECT_EQ(woven[192 + 48 + 23], 147);
}

TEST_P(ConvertCorners, ReversedRowsBeginAtTheEndOfTheRow) {
  size(48, 2, 0, 0, 0);
  ppl_set_h_mirror(context, 1);
  fenced frame(48 * 2 * 2), out(48 * 2 * 3 / 2);
  ramp(frame.data(), 48, 2);
  EXPECT_EQ(YUYVToI420MMX(context, frame.data(), out.data(), 48, 2, 48, 2), 1);
  for (int x = 0; x < 48; x++) EXPECT_EQ(out[x], 57 - x);
  for (int x = 0; x < 24; x++) EXPECT_EQ(out[96 + x], 146 - 2 * x);
  for (int x = 0; x < 24; x++) EXPECT_EQ(out[96 + 24 + x], 147 - 2 * x);
}

// Three tiles hold one unit of 32 pixels of the 12-bit layout; the third tile keeps what the buffer held.
TEST_P(ConvertCorners, TwelveBitUnitsLeaveTheRestOfARow) {
  size(48, 2, 0, 0, 0);
  fenced frame(72 * 2, 7), plain(48 * 2 * 3 / 2), mirrored(48 * 2 * 3 / 2);
  EXPECT_EQ(UYVYYYYYToI420MMX(context, frame.data(), plain.data(), 48, 2, 48, 2), 1);
  EXPECT_EQ(plain.others(0, 20, 7), 0u);
  EXPECT_EQ(plain[21], 0);
  EXPECT_EQ(plain.others(32, 48, kUntouched), 0u);
  EXPECT_EQ(plain.others(80, 96, kUntouched), 0u);
  EXPECT_EQ(plain.others(96, 112, 7), 0u);
  EXPECT_EQ(plain.others(112, 144, kUntouched), 0u);
  ppl_set_h_mirror(context, 1);
  EXPECT_EQ(UYVYYYYYToI420MMX(context, frame.data(), mirrored.data(), 48, 2, 48, 2), 1);
  EXPECT_EQ(mirrored.others(0, 16, kUntouched), 0u);
  EXPECT_EQ(mirrored.others(16, 48, 7), 2u);  // the two zeros of the unit, from its columns 21 and 23
  EXPECT_EQ(mirrored[47 - 21], 0);
  EXPECT_EQ(mirrored[47 - 23], 0);
  EXPECT_EQ(mirrored.others(96, 104, kUntouched), 0u);
  EXPECT_EQ(mirrored.others(104, 120, 7), 0u);
}

// 32 columns shrink to 8 pixels, less than any vector: neither neighbours nor what lies behind is touched.
TEST_P(ConvertCorners, RowsOfEightPixels) {
  size(32, 8, 2, 0, 0);
  fenced field(32 * 4 * 2), yuyv(8 * 2 * 2), i420(8 * 2 * 3 / 2), rgb(8 * 2 * 3);
  ramp(field.data(), 32, 4);
  EXPECT_EQ(IntlYUYVToYUYVMMX(context, nullptr, field.data(), nullptr, yuyv.data(), 32, 8, 8, 2), 1);
  // Macropixel m comes from 4m and 4m + 2: lumas 10 + 8m and 11 + 8m, and four columns on.
  for (int r = 0; r < 2; r++) {
    for (int m = 0; m < 4; m++) {
      const size_t at = static_cast<size_t>(16 * r + 4 * m);
      EXPECT_EQ(yuyv[at], 11 + 8 * m);
      EXPECT_EQ(yuyv[at + 1], 102 + 8 * m);
      EXPECT_EQ(yuyv[at + 2], 15 + 8 * m);
      EXPECT_EQ(yuyv[at + 3], 103 + 8 * m);
    }
  }
  EXPECT_EQ(IntlYUYVToI420MMX(context, nullptr, field.data(), nullptr, i420.data(), 32, 8, 8, 2), 1);
  EXPECT_EQ(i420[7], 15 + 24);
  EXPECT_EQ(i420[8], 11);
  EXPECT_EQ(i420[16 + 3], 102 + 24);
  EXPECT_EQ(i420[20 + 3], 103 + 24);
  std::memset(field.data(), 0x80, 32 * 4 * 2);
  EXPECT_EQ(IntlYUYVToRGB24MMX(context, nullptr, field.data(), nullptr, rgb.data(), 32, 8, 8, 2), 1);
  EXPECT_EQ(rgb.others(0, 48, (128 - 16) * 74 >> 6), 0u);
}

// Five field rows shrink to five rows; planes take pairs, the fifth row stays as the buffer held it.
TEST_P(ConvertCorners, AnOddShrunkRowIsNotVisitedInPlanes) {
  size(64, 10, 1, 0, 0);
  fenced field(64 * 5 * 2, 60), out(32 * 5 + 2 * (32 * 5 / 4));
  EXPECT_EQ(IntlYUYVToI420MMX(context, nullptr, field.data(), nullptr, out.data(), 64, 10, 32, 5), 1);
  EXPECT_EQ(out.others(0, 128, 60), 0u);
  EXPECT_EQ(out.others(128, 160, kUntouched), 0u);
  EXPECT_EQ(out.others(160, 192, 60), 0u);          // two rows of U
  EXPECT_EQ(out.others(192, 200, kUntouched), 0u);  // Q is 40
  EXPECT_EQ(out.others(200, 232, 60), 0u);
}

// One tile: the motion test has no difference on both sides. A change of 13 in one word gives M = 52 there and at
// its neighbours' edges, one of 12 gives 48; the threshold is 50.
TEST_P(ConvertCorners, OneTileHasNothingOnBothSides) {
  size(16, 4, 0, 0, 0);
  for (const int change : {12, 13}) {
    fenced earlier(64, 100), kept(64, 20), later(64, 100), out(128);
    later.data()[31] = static_cast<uint8_t>(100 + change);  // V of the last pair of row 0
    EXPECT_EQ(IntlYUYVToYUYVMMX(context, earlier.data(), kept.data(), later.data(), out.data(), 16, 4, 16, 4),
              1);
    const bool moves = change == 13;
    EXPECT_EQ(out[32 + 31], moves ? 20 : 112);
    EXPECT_EQ(out[32 + 29], moves ? 20 : 100);  // U before it has the same three differences about it
    EXPECT_EQ(out[32 + 27], 100);
    EXPECT_EQ(out[32 + 30], 100);  // luma stays
  }
}

// The widest frame: 2036 columns, 127 tiles, doubled rows of 8144 bytes.
TEST_P(ConvertCorners, TheWidestFrameDoubles) {
  size(2032, 4, -1, 0, 0);
  fenced field(2032 * 2 * 2), out(4064 * 8 * 2);
  ramp(field.data(), 2032, 2);
  EXPECT_EQ(
      IntlYUYVToYUYVMMX(context, field.data(), field.data(), field.data(), out.data(), 2032, 4, 4064, 8), 1);
  const auto luma = [](int x) { return (10 + x) & 255; };
  for (int x = 0; x < 2032; x++) {
    // Behind the last macropixel an identical one is assumed.
    const int next = x < 2031 ? luma(x + 1) : luma(2030);
    ASSERT_EQ(out[static_cast<size_t>(4 * x)], luma(x)) << x;
    ASSERT_EQ(out[static_cast<size_t>(4 * x + 2)], (luma(x) + next + 1) >> 1) << x;
  }
  size(2036, 2, -1, 0, 0);
  fenced two(2036 * 2 * 2), wide(4072 * 4 * 3);
  EXPECT_EQ(IntlYUYVToRGB24MMX(context, two.data(), two.data(), two.data(), wide.data(), 2036, 2, 4072, 4),
            1);
}

// With two black lines above, 32 x 4 is 32 x 6 in I420. A new frame size drops the lines from the height, but not
// from the picture: U begins at 128 and V at 160 again, while luma goes on to 192.
TEST_P(ConvertCorners, LostBlackLinesOverlapThePlanesInFrameOrder) {
  size(32, 4, 0, 2, 0);
  ASSERT_EQ(ppl_new_frame_size(context, 32, 4, 32), 1);
  fenced field(32 * 2 * 2), out(32 * 4 * 3 / 2);
  for (size_t i = 0; i < 128; i++) field.data()[i] = i % 2 == 0 ? 50 : 90;
  EXPECT_EQ(IntlYUYVToI420MMX_no_motion(context, field.data(), field.data(), field.data(), out.data(), 32, 4,
                                        32, 4),
            1);
  // Black: luma 0 .. 63, U 128 .. 143, V 160 .. 175. Row pair 0: luma 64 .. 127, U 144 .. 159, V 176 .. 191.
  // Row pair 1: luma 128 .. 191 over all of it, then U at 160 .. 175, and V at 192, outside.
  EXPECT_EQ(out.others(0, 64, 16), 0u);
  EXPECT_EQ(out.others(64, 128, 50), 0u);
  EXPECT_EQ(out.others(128, 160, 50), 0u);
  EXPECT_EQ(out.others(160, 176, 90), 0u);
  EXPECT_EQ(out.others(176, 192, 50), 0u);
}

// Sums and products wrap in 32 bits and counts are not tested; a call ends in no time and stays in its frame.
TEST_P(ConvertCorners, BlackLineCountsBeyondAnyFrame) {
  constexpr int kLines = 1 << 27;  // times 32 columns: nothing is left of the product in 32 bits
  fenced field(32 * 2 * 2, 1), frame(32 * 4 * 3);
  for (const auto convert : {IntlYUYVToYUYVMMX, IntlYUYVToI420MMX, IntlYUYVToRGB24MMX}) {
    size(32, 4, 0, kLines, 0);
    std::memset(frame.data(), kUntouched, 32 * 4 * 3);
    const uint32_t before = ppl_n_frame(context);
    EXPECT_EQ(convert(context, field.data(), field.data(), field.data(), frame.data(), 32, 4, 32, 4 + kLines),
              1);
    EXPECT_EQ(ppl_n_frame(context), before + 1);
  }
  // A negative count draws nothing: the picture begins at row 0 and its last two rows are outside.
  size(32, 4, 0, -2, 0);
  fenced two(32 * 2 * 2);
  EXPECT_EQ(IntlYUYVToYUYVMMX(context, field.data(), field.data(), field.data(), two.data(), 32, 4, 32, 2),
            1);
  EXPECT_EQ(two.others(0, 128, 1), 0u);
}

// The product of a negative height may wrap to a positive number all the same; a frame that is not positive has no
// bytes.
TEST_P(ConvertCorners, AFrameOfNegativeHeightHasNoBytes) {
  fenced source(320 * 240 * 3 / 2, 1), out(320 * 240 * 3 / 2);
  size(320, 240, 0, 288452948, -1185647173);  // 320 x -897193985: 669,466,304 in 32 bits
  ppl_set_v_mirror(context, 1);
  EXPECT_EQ(ppl_process_yuyvyyyytoi420(context, source.data(), out.data(), 320, 240, 320, 3397773311u), 1);
  EXPECT_EQ(out.others(0, 320 * 240 * 3 / 2, kUntouched), 0u);
  ppl_reset_mirrors(context);
  // 704 x -2147482648 is 704,000 in 32 bits.
  fenced field(704 * 240 * 2, 1), frame(704 * 480 * 2);
  EXPECT_EQ(IntlYUYVToYUYVMMX(context, field.data(), field.data(), field.data(), frame.data(), 704, 480, 704,
                              2147484648u),
            1);
  EXPECT_EQ(frame.others(0, 704 * 480 * 2, kUntouched), 0u);
}

// Whatever the counts, a call walks no more rows than the frame has room for.
TEST_P(ConvertCorners, BlackLinesTakeNoTimeOutsideTheFrame) {
  constexpr int64_t kRoom = 1 << 20;
  fenced field(64 * 10 * 2, 1), frame(kRoom);
  constexpr int kCounts[] = {1 << 27, (1 << 27) + 1, 1 << 30, 0x7fffffff, -0x7fffffff, 7};
  int calls = 0;
  for (const int width : {1, 2, 10, 16, 32, 33, 64})
    for (const int height : {2, 5, 10})
      for (int d = 0; d <= 2; d++)
        for (const int top : kCounts)
          for (const int bottom : kCounts) {
            const auto w = static_cast<uint32_t>(width), h = static_cast<uint32_t>(height);
            const uint32_t ow = w >> d,
                           oh = (h >> d) + static_cast<uint32_t>(top) + static_cast<uint32_t>(bottom);
            if (int64_t{static_cast<int32_t>(ow * oh)} * 3 > kRoom) continue;
            size(w, h, d, top, bottom);
            for (const auto convert :
                 {IntlYUYVToYUYVMMX_no_motion, IntlUYVYToUYVYMMX, IntlYUYVToI420MMX_no_motion,
                  IntlUYVYToI420MMX, IntlYUYVToRGB24MMX_no_motion}) {
              // 2^27 rows take a good part of a second each time; what else the machine does can't hold up every try.
              bool quick = false;
              for (int tries = 0; tries < 20 && !quick; ++tries) {
                const std::clock_t before = std::clock();
                EXPECT_EQ(
                    convert(context, field.data(), field.data(), field.data(), frame.data(), w, h, ow, oh),
                    1);
                quick = std::clock() - before < CLOCKS_PER_SEC / 4;
              }
              ASSERT_TRUE(quick) << width << " x " << height << " at " << d << ", lines " << top << ", "
                                 << bottom;
              calls++;
            }
          }
  EXPECT_GT(calls, 1000);
}

// A null address passes the tests of alignment. There is no picture without what it is made from: the frame is
// counted and nothing else. What is not read may be null.
TEST_P(ConvertCorners, NullAddressesGiveNoPicture) {
  size(32, 4, 0, 0, 0);
  fenced field(32 * 2 * 2, 1), out(32 * 4 * 3);
  const uint32_t before = ppl_n_frame(context);
  EXPECT_EQ(YUYVToI420MMX(context, nullptr, out.data(), 32, 4, 32, 4), 1);
  EXPECT_EQ(YUYVToRGB24MMX(context, field.data(), nullptr, 32, 4, 32, 4), 1);
  EXPECT_EQ(IntlYUYVToYUYVMMX(context, nullptr, field.data(), field.data(), out.data(), 32, 4, 32, 4), 1);
  EXPECT_EQ(out.others(0, 32 * 4 * 3, kUntouched), 0u);
  EXPECT_EQ(
      IntlYUYVToYUYVMMX_no_motion(context, nullptr, field.data(), field.data(), out.data(), 32, 4, 32, 4), 1);
  EXPECT_EQ(out.others(0, 32 * 4 * 2, 1), 0u);
  EXPECT_EQ(ppl_n_frame(context), before + 4);
  EXPECT_EQ(RGB24ToRGB32MMX(context, nullptr, nullptr, 32, 4, 32, 4), 0);
  EXPECT_EQ(ppl_n_frame(context), before + 5);
}

// Rows of less than a tile are not read: their frames may be nowhere. No address is made from a null one, which the
// undefined-behaviour sanitizer would tell.
TEST_P(ConvertCorners, RowsWithoutATileComeFromNowhere) {
  fenced out(10 * 8 * 4 * 3);
  for (const int32_t decimation : {0, 1, -1}) {
    size(10, 8, decimation, 0, 0);
    const uint32_t w = decimation < 0 ? 20 : 10u >> decimation, h = decimation < 0 ? 16 : 8u >> decimation;
    const uint32_t before = ppl_n_frame(context);
    EXPECT_EQ(UYVYToRGB24MMX(context, nullptr, out.data(), 10, 8, w, h), 1);
    EXPECT_EQ(YUYVToI420MMX(context, nullptr, out.data(), 10, 8, w, h), 1);
    EXPECT_EQ(UYVYYYYYToI420MMX(context, nullptr, out.data(), 10, 8, w, h), 1);
    EXPECT_EQ(IntlYUYVToYUYVMMX(context, nullptr, nullptr, nullptr, out.data(), 10, 8, w, h), 1);
    EXPECT_EQ(IntlYUYVToI420MMX(context, nullptr, nullptr, nullptr, out.data(), 10, 8, w, h), 1);
    EXPECT_EQ(IntlYUYVToRGB24MMX_no_motion(context, nullptr, nullptr, nullptr, out.data(), 10, 8, w, h), 1);
    EXPECT_EQ(ppl_n_frame(context), before + 6);
    EXPECT_EQ(out.others(0, 10 * 8 * 4 * 3, kUntouched), 0u);
  }
}

// Each of a call's four sizes counts: another one than the context's, which no table of sizes has, is refused.
TEST_P(ConvertCorners, EachSizeOfACallCounts) {
  size(32, 8, 0, 0, 0);
  fenced frame(32 * 8 * 2, 1), out(32 * 8 * 3);
  const uint32_t before = ppl_n_frame(context);
  EXPECT_EQ(YUYVToI420MMX(context, frame.data(), out.data(), 16, 8, 32, 8), 0);
  EXPECT_EQ(YUYVToI420MMX(context, frame.data(), out.data(), 32, 6, 32, 8), 0);
  EXPECT_EQ(YUYVToI420MMX(context, frame.data(), out.data(), 32, 8, 16, 8), 0);
  EXPECT_EQ(YUYVToI420MMX(context, frame.data(), out.data(), 32, 8, 32, 6), 0);
  EXPECT_EQ(ppl_n_frame(context), before);
  EXPECT_EQ(out.others(0, 32 * 8 * 3, kUntouched), 0u);
  EXPECT_EQ(YUYVToI420MMX(context, frame.data(), out.data(), 32, 8, 32, 8), 1);
}

// Fewer rows than one of the picture is made of: black lines alone, from fields that may be nowhere.
TEST_P(ConvertCorners, PicturesOfBlackLinesComeFromNowhere) {
  fenced out(128 * 8 * 2);
  size(64, 2, 2, 4, 4);
  const uint32_t before = ppl_n_frame(context);
  EXPECT_EQ(IntlYUYVToYUYVMMX(context, nullptr, nullptr, nullptr, out.data(), 64, 2, 16, 8), 1);
  for (size_t i = 0; i < 16 * 8 * 2; ++i) EXPECT_EQ(out.data()[i], i % 2 == 0 ? 16 : 128) << i;
  EXPECT_EQ(ppl_n_frame(context), before + 1);
  // Doubled frames have no black lines.
  std::fill_n(out.data(), 128 * 8 * 2, kUntouched);
  size(64, 1, -1, 2, 2);
  EXPECT_EQ(IntlYUYVToYUYVMMX(context, nullptr, nullptr, nullptr, out.data(), 64, 1, 128, 6), 1);
  EXPECT_EQ(out.others(0, 128 * 8 * 2, kUntouched), 0u);
  EXPECT_EQ(ppl_n_frame(context), before + 2);
}

// A new size drops the black lines from the picture's height, and a call that asks for the same ones once more does not
// bring them back; they are drawn all the same, as there is room for the picture that was asked for.
TEST_P(ConvertCorners, RoomIsThatOfThePictureAskedFor) {
  size(480, 480, 0, 48, 48);
  ASSERT_EQ(ppl_new_frame_size(context, 480, 480, 480), 1);
  constexpr size_t row = 480 * 2;
  fenced field(row * 240, 1), out(row * 576);
  EXPECT_EQ(IntlYUYVToYUYVMMX_no_motion(context, nullptr, field.data(), field.data(), out.data(), 480, 480,
                                        480, 576),
            1);
  const auto is_black = [&](size_t from, size_t to) {
    for (size_t i = from * row; i < to * row; ++i)
      if (out.data()[i] != (i % 2 == 0 ? 16 : 128)) return false;
    return true;
  };
  EXPECT_TRUE(is_black(0, 48));
  EXPECT_EQ(out.others(48 * row, 528 * row, 1), 0u);
  EXPECT_TRUE(is_black(528, 576));
}

// A frame of two rows has one row pair, which is never tested: the earlier field isn't read.
TEST_P(ConvertCorners, OneRowPairNeedsNoEarlierField) {
  size(32, 2, 0, 0, 0);
  fenced field(32 * 2, 1), out(32 * 2 * 2);
  EXPECT_EQ(IntlYUYVToYUYVMMX(context, nullptr, field.data(), field.data(), out.data(), 32, 2, 32, 2), 1);
  EXPECT_EQ(out.others(0, 32 * 2 * 2, 1), 0u);
}

// The last resorts need all that they are made of, or write nothing; they are false and not counted.
TEST_P(ConvertCorners, NullAddressesGiveNoLastResort) {
  fenced field(64, 1), out(256);
  uint8_t* const off = out.data() + 4;
  const uint32_t before = ppl_n_frame(context);
  EXPECT_EQ(YUYVToI420MMX(context, nullptr, off, 4, 4, 4, 4), 0);
  EXPECT_EQ(YUYVToI420MMX(context, field.data() + 4, nullptr, 4, 4, 4, 4), 0);
  EXPECT_EQ(YUYVToRGB24MMX(context, field.data() + 4, nullptr, 4, 4, 4, 4), 0);
  EXPECT_EQ(RGB24ToRGB32MMX(context, field.data() + 4, nullptr, 4, 4, 4, 4), 0);
  EXPECT_EQ(IntlYUYVToI420MMX(context, field.data(), nullptr, field.data(), off, 4, 4, 4, 4), 0);
  EXPECT_EQ(IntlYUYVToYUYVMMX(context, field.data(), nullptr, field.data(), off, 4, 4, 4, 4), 0);
  EXPECT_EQ(IntlYUYVToYUYVMMX(context, field.data(), field.data(), nullptr, off, 4, 4, 4, 4), 0);
  EXPECT_EQ(out.others(0, 256, kUntouched), 0u);
  EXPECT_EQ(IntlYUYVToYUYVMMX(context, nullptr, field.data(), field.data(), off, 4, 4, 4, 4), 0);
  EXPECT_EQ(out.others(4, 36, 1), 0u);
  EXPECT_EQ(YUYVToRGB24MMX(context, nullptr, off, 4, 4, 4, 4), 0);
  EXPECT_EQ(out.others(4, 52, 255), 0u);
  EXPECT_EQ(ppl_n_frame(context), before);
}

}  // namespace
