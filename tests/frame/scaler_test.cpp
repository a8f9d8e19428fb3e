// The frame scaler, through the scaled calls. Quality 5 only counts, so scratch holds what the test put there.
#include <random>

#include "record/context.h"
#include "reference/frame.h"
#include "support/frame_fixture.h"
#include "support/random.h"

namespace {

using namespace engine;

struct size {
  int w, h;
};

class scaler : public at_level {
 protected:
  void SetUp() override {
    at_level::SetUp();
    if (c != nullptr) ppl_set_quality(c, *support::kCounted.begin());
  }
  // Scales a frame that stands in scratch already. YUYV frames have 4 bytes more behind them. Behind both, as close
  // as an alignment to 16 allows, lies a page that faults.
  bytes scale(int f, const bytes& frame, size in, size out) {
    const auto to_the_end = [](size_t n) { return -n % 64 / 16 * 16; };
    const size_t n = frame_bytes(f, size_t(out.w * out.h));
    fenced source(size_t(in.w * in.h)), scratch(frame, to_the_end(frame.size()));
    fenced destination(n, 0xa5, to_the_end(n));
    EXPECT_EQ(support::kScaledCalls[f](c, source.data(), uint32_t(in.w), uint32_t(in.h), uint32_t(in.w),
                                       destination.data(), uint32_t(out.w), uint32_t(out.h), scratch.data()),
              1);
    EXPECT_EQ(scratch.content(), frame);
    return destination.content();
  }
  static bytes frame_of(int f, size in, uint32_t seed) {
    return noise(frame_bytes(f, size_t(in.w * in.h)) + (f == YUYV ? 4 : 0), seed);
  }
};
ENGINE_LEVELS(scaler);

TEST_P(scaler, equal_sizes_reproduce_the_frame) {
  for (const size s : {size{64, 16}, size{32, 2}, size{640, 48}}) {
    const bytes yuv = frame_of(I420, s, 1), packed = frame_of(YUYV, s, 2);
    EXPECT_EQ(scale(I420, yuv, s, s), yuv);
    EXPECT_EQ(scale(YUYV, packed, s, s), bytes(packed.begin(), packed.end() - 4));
  }
}

TEST_P(scaler, halving_takes_even_columns_of_rows_in_order) {
  const size in = {640, 480}, out = {320, 240};
  const bytes frame = frame_of(I420, in, 3), got = scale(I420, frame, in, out);
  bytes expected;
  const auto plane = [&](size_t at, size_t w, size_t h) {  // row r from row r, not 2r: the walk skips no row
    for (size_t y = 0; y < h / 2; ++y)
      for (size_t x = 0; x < w / 2; ++x) expected.push_back(frame[at + y * w + 2 * x]);
  };
  plane(0, 640, 480);
  plane(640 * 480, 320, 240);
  plane(640 * 480 * 5 / 4, 320, 240);
  EXPECT_EQ(got, expected);
}

TEST_P(scaler, doubling_alternates_samples_and_means) {
  const size in = {320, 240}, out = {640, 480};
  const bytes frame = frame_of(I420, in, 4), got = scale(I420, frame, in, out);
  const auto at = [&](int y, int x) { return int(frame[size_t(320 * std::min(y, 239) + std::min(x, 319))]); };
  const auto half = [](int a, int b) { return (a * 128 + b * 128 + 128) >> 8; };
  const auto wide = [&](int y, int x) {
    return x % 2 == 0 ? at(y, x / 2) : half(at(y, x / 2), at(y, x / 2 + 1));
  };
  for (int y = 0; y < 480; ++y)
    for (int x = 0; x < 640; ++x)
      ASSERT_EQ(got[size_t(640 * y + x)],
                y % 2 == 0 ? wide(y / 2, x) : half(wide(y / 2, x), wide(y / 2 + 1, x)))
          << y << ", " << x;
}

TEST_P(scaler, one_source_row_serves_every_row) {
  const size in = {32, 1}, out = {32, 5};
  const bytes frame = frame_of(I420, in, 5), got = scale(I420, frame, in, out);
  for (int y = 0; y < 5; ++y)
    EXPECT_TRUE(std::equal(frame.begin(), frame.begin() + 32, got.begin() + 32 * y));
}

TEST_P(scaler, a_destination_without_width_or_height_gets_nothing) {
  const size in = {64, 16};
  for (const size out : {size{0, 8}, size{8, 0}, size{0, 0}})
    for (int f : {I420, YUYV}) EXPECT_TRUE(scale(f, frame_of(f, in, 6), in, out).empty());
}

TEST_P(scaler, lines_that_do_not_fit_the_ring_pool_scale_nothing) {
  const size in = {64, 4};
  bytes got = scale(I420, frame_of(I420, in, 7), in, {28688, 1});  // U and V, half as wide, still fit
  EXPECT_EQ(bytes(got.begin(), got.begin() + 28688), bytes(28688, 0xa5));
  got = scale(I420, frame_of(I420, in, 7), in, {28672, 2});
  EXPECT_EQ(std::count(got.begin(), got.begin() + 256, 0xa5) < 200, true);
  got = scale(YUYV, frame_of(YUYV, in, 7), in, {14368, 1});
  EXPECT_EQ(got, bytes(14368 * 2, 0xa5));
  // Wider than the pool by themselves.
  for (int f : {I420, YUYV}) {
    got = scale(f, frame_of(f, in, 7), in, {ppl::kRingPoolBytes + 32, 1});
    EXPECT_EQ(got, bytes(got.size(), 0xa5));
  }
}

TEST_P(scaler, a_packed_row_ends_on_the_next_rows_first_pixel) {
  const size in = {32, 2}, out = {64, 2};
  bytes frame(32 * 2 * 2 + 4, 40);
  frame[64] = 200;   // first luma of row 1
  frame[128] = 120;  // the 4 bytes behind the frame
  const bytes got = scale(YUYV, frame, in, out);
  EXPECT_EQ(got[2 * 63], 120);       // (40 + 200 + 1) / 2 of row 0: position 31.5
  EXPECT_EQ(got[128 + 2 * 63], 80);  // (40 + 120) / 2 of row 1
  EXPECT_EQ(got[2 * 62], 40);
}

// The reference scales the same frame.
void expect_as_reference(int f, const bytes& frame, size in, size out, const bytes& got) {
  ref::state s;
  s.quality = 5;
  bytes source(size_t(in.w * in.h)), scratch = frame, expected(got.size(), 0xa5);
  scratch.resize(scratch.size() + 64);
  ref::scaling_wrapper(s, f == I420 ? ref::format::i420 : ref::format::yuyv, source.data(), uint32_t(in.w),
                       uint32_t(in.h), uint32_t(in.w), expected.data(), uint32_t(out.w), uint32_t(out.h),
                       scratch.data());
  EXPECT_EQ(got, expected) << kFormatNames[f] << " " << in.w << "x" << in.h << " to " << out.w << "x"
                           << out.h;
}

// Any size to any size, widths off the groups included.
TEST_P(scaler, agrees_with_the_reference_at_any_size) {
  std::mt19937 random(static_cast<uint32_t>(support::seed(20)));
  const auto pick = [&](int a, int b) { return a + int(random() % unsigned(b - a + 1)); };
  for (int n = 0; n < 250 && !HasFailure(); ++n) {
    const int f = n % 2 == 0 ? I420 : YUYV, step = n % 3 == 0 ? 1 : 2;
    size in = {pick(1, 100) * step, pick(1, 20)}, out = {pick(1, 150) * step, pick(1, 40)};
    if (n % 10 == 0) in.w = pick(1000, 2036) / 2 * 2, out.w = pick(1, 4000) * 2;
    const bytes frame = frame_of(f, in, uint32_t(random()));
    expect_as_reference(f, frame, in, out, scale(f, frame, in, out));
  }
}

// Steps of exactly 1, 2 and 1/2 and those beside them, steps about 2, 14/3 and 14, lines longer than any table; widths
// on and off every group of 16 to 64 bytes, so that rows end inside a vector. Each with rows of like steps, and with
// rows at 5/2, where the lower of two stands alone next.
TEST_P(scaler, agrees_with_the_reference_beside_exact_ratios) {
  constexpr struct {
    int from, to;
  } widths[] = {{64, 64},    {62, 64},     {64, 62},     {640, 640},  {640, 638}, {638, 640},   {100, 100},
                {64, 32},    {128, 64},    {66, 32},     {640, 320},  {642, 320}, {638, 320},   {204, 102},
                {32, 64},    {34, 68},     {50, 100},    {54, 108},   {320, 640}, {322, 640},   {318, 640},
                {96, 192},   {352, 704},   {640, 336},   {640, 300},  {640, 96},  {2000, 34},   {2016, 1},
                {736, 640},  {640, 736},   {640, 752},   {66, 15134}, {2, 15200}, {100, 28000}, {1, 64},
                {2, 4},      {2016, 4032}, {2016, 1008}, {514, 512},  {510, 512}, {1118, 240},  {1120, 240},
                {1122, 240}, {1342, 96},   {1344, 96},   {1346, 96}},
    heights[] = {{24, 24}, {24, 12}, {12, 24}, {25, 24}, {24, 25},   {12, 23},
                 {24, 8},  {20, 8},  {1, 6},   {2, 1},   {257, 256}, {255, 256}};
  for (const auto& w : widths)
    for (const auto& h : heights)
      for (int f : {I420, YUYV}) {
        const size in = {w.from, h.from}, out = {w.to, h.to};
        if ((w.to > 1000 && h.to > 100) || (w.to > 10000 && h.to > 8)) continue;
        const bytes frame = frame_of(f, in, uint32_t(w.from + h.to));
        expect_as_reference(f, frame, in, out, scale(f, frame, in, out));
        ASSERT_FALSE(HasFailure());
      }
}

}  // namespace
