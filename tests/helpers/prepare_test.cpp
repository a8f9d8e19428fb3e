// Preparing a sensor's frame: every sample by hand, every phase and layout; parts of a frame against one pass over it.
#include "helpers/ppl_prepare.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "ppl.h"
#include "support/level.h"

namespace {

class dice_box {
 public:
  explicit dice_box(uint32_t seed) : bits_(seed) {}
  uint32_t operator()() { return static_cast<uint32_t>(bits_()); }

 private:
  std::mt19937 bits_;
};

struct layout_of_test {
  int layout;
  uint32_t bits;
};
constexpr layout_of_test kLayouts[] = {{PPL_BYTES, 8},         {PPL_WORDS_LITTLE, 8},  {PPL_WORDS_LITTLE, 10},
                                       {PPL_WORDS_LITTLE, 12}, {PPL_WORDS_LITTLE, 14}, {PPL_WORDS_LITTLE, 16},
                                       {PPL_WORDS_BIG, 10},    {PPL_WORDS_BIG, 16},    {PPL_WORDS_LITTLE, 13},
                                       {PPL_PACKED_10, 10},    {PPL_PACKED_12, 12},    {PPL_WORDS_BIG, 9}};

// Writes samples as a sensor would.
std::vector<uint8_t> deliver(const ppl_sensor_frame& f, const std::vector<uint32_t>& samples) {
  std::vector<uint8_t> out(ppl_sensor_frame_bytes(&f), 0xee);
  for (uint32_t r = 0; r < f.height; ++r) {
    uint8_t* const row = out.data() + size_t{r} * ppl_sensor_stride(&f);
    if (f.layout == PPL_PACKED_10 || f.layout == PPL_PACKED_12)
      std::fill_n(row, ppl_sensor_row_bytes(&f), uint8_t{0});
    for (uint32_t x = 0; x < f.width; ++x) {
      const uint32_t s = samples[size_t{r} * f.width + x];
      switch (f.layout) {
        case PPL_BYTES:
          row[x] = static_cast<uint8_t>(s);
          break;
        case PPL_WORDS_LITTLE:
          row[2 * x] = static_cast<uint8_t>(s);
          row[2 * x + 1] = static_cast<uint8_t>(s >> 8);
          break;
        case PPL_WORDS_BIG:
          row[2 * x] = static_cast<uint8_t>(s >> 8);
          row[2 * x + 1] = static_cast<uint8_t>(s);
          break;
        case PPL_PACKED_10:
          row[x / 4 * 5 + x % 4] = static_cast<uint8_t>(s >> 2);
          row[x / 4 * 5 + 4] = static_cast<uint8_t>(row[x / 4 * 5 + 4] | (s & 3) << 2 * (x % 4));
          break;
        default:
          row[x / 2 * 3 + x % 2] = static_cast<uint8_t>(s >> 4);
          row[x / 2 * 3 + 2] = static_cast<uint8_t>(row[x / 2 * 3 + 2] | (s & 15) << 4 * (x % 2));
      }
    }
  }
  return out;
}

uint8_t expected(uint32_t s, uint32_t bits, int to_8, const std::vector<uint8_t>& table) {
  s = std::min(s, (1u << bits) - 1);
  if (to_8 == PPL_TO_8_TABLE) return table[s];
  const double steps = 1u << (bits - 8);
  const double v = s / steps;
  return static_cast<uint8_t>(std::min(255.0, to_8 == PPL_TO_8_ROUND
                                                  ? static_cast<double>(static_cast<int>(v + 0.5))
                                                  : static_cast<double>(static_cast<int>(v))));
}

TEST(Prepare, EverySampleOfEveryLayoutPhaseAndWayTo8Bits) {
  dice_box dice(1);
  for (const layout_of_test& l : kLayouts)
    for (int pattern = PPL_BGGR; pattern <= PPL_RGGB; ++pattern)
      for (int to_8 = PPL_TO_8_SHIFT; to_8 <= PPL_TO_8_TABLE; ++to_8)
        for (const uint32_t width : {2u, 5u, 34u, 67u}) {
          const uint32_t height = 4 + dice() % 3;
          ppl_sensor_frame f = {width, height, 0, pattern, l.layout, l.bits};
          if (dice() % 2 != 0) f.stride = ppl_sensor_row_bytes(&f) + dice() % 9;
          const bool words = l.layout == PPL_WORDS_LITTLE || l.layout == PPL_WORDS_BIG;
          std::vector<uint32_t> samples(size_t{width} * height);
          // Words can hold more than a sample's bits.
          for (uint32_t& s : samples) s = dice() % (words && dice() % 4 == 0 ? 65536u : 1u << l.bits);
          const std::vector<uint8_t> raw = deliver(f, samples);
          std::vector<uint8_t> table(size_t{1} << l.bits);
          for (uint8_t& t : table) t = static_cast<uint8_t>(dice());
          const uint32_t stride = width + dice() % 5;
          std::vector<uint8_t> out(size_t{stride} * height, 0xaa);
          ASSERT_EQ(ppl_prepare_frame(&f, raw.data(), to_8, table.data(), out.data(), stride),
                    PPL_PREPARE_FINE);
          const uint32_t dx = pattern == PPL_GBRG || pattern == PPL_RGGB,
                         dy = pattern == PPL_GRBG || pattern == PPL_RGGB;
          for (uint32_t r = 0; r < height; ++r)
            for (uint32_t x = 0; x < stride; ++x) {
              const uint32_t from_x = x + dx == width ? width - 2 : x + dx,
                             from_y = r + dy == height ? height - 2 : r + dy;
              const uint8_t want =
                  x >= width ? 0xaa : expected(samples[size_t{from_y} * width + from_x], l.bits, to_8, table);
              ASSERT_EQ(out[size_t{r} * stride + x], want)
                  << "layout " << l.layout << " bits " << l.bits << " pattern " << pattern << " way " << to_8
                  << " width " << width << " row " << r << " column " << x;
            }
        }
}

TEST(Prepare, EveryPhaseShowsTheSameScene) {
  // A scene of one colour: B 10, Gb 20, Gr 30, R 40, whatever phase the sensor begins with.
  for (int pattern = PPL_BGGR; pattern <= PPL_RGGB; ++pattern) {
    const uint32_t dx = ppl_pattern_column(pattern), dy = ppl_pattern_row(pattern);
    const ppl_sensor_frame f = {6, 6, 0, pattern, PPL_BYTES, 8};
    std::vector<uint8_t> raw(36), out(36);
    for (uint32_t r = 0; r < 6; ++r)
      for (uint32_t x = 0; x < 6; ++x)
        raw[r * 6 + x] = static_cast<uint8_t>(10 + 20 * ((r + dy) & 1) + 10 * ((x + dx) & 1));
    ASSERT_EQ(ppl_prepare_frame(&f, raw.data(), PPL_TO_8_SHIFT, nullptr, out.data(), 6), PPL_PREPARE_FINE);
    for (uint32_t r = 0; r < 6; ++r)
      for (uint32_t x = 0; x < 6; ++x) ASSERT_EQ(out[r * 6 + x], 10 + 20 * (r & 1) + 10 * (x & 1)) << pattern;
  }
}

TEST(Prepare, RefusalsNameTheReasonAndWriteNothing) {
  const ppl_sensor_frame good = {8, 4, 0, PPL_RGGB, PPL_WORDS_LITTLE, 10};
  std::vector<uint8_t> raw(64), out(32, 7);
  const auto reason = [&](const std::function<void(ppl_sensor_frame&)>& change) {
    ppl_sensor_frame f = good;
    change(f);
    const int result = ppl_prepare_frame(&f, raw.data(), PPL_TO_8_SHIFT, nullptr, out.data(), 8);
    EXPECT_EQ(out, std::vector<uint8_t>(32, 7));
    EXPECT_GT(std::string(ppl_prepare_sentence(result)).size(), 20u);
    return result;
  };
  EXPECT_EQ(reason([](auto& f) { f.width = 1; }), PPL_PREPARE_SIZE);
  EXPECT_EQ(reason([](auto& f) { f.height = 70000; }), PPL_PREPARE_SIZE);
  EXPECT_EQ(reason([](auto& f) { f.stride = 15; }), PPL_PREPARE_STRIDE);
  EXPECT_EQ(reason([](auto& f) { f.pattern = 4; }), PPL_PREPARE_PATTERN);
  EXPECT_EQ(reason([](auto& f) { f.layout = 5; }), PPL_PREPARE_LAYOUT);
  EXPECT_EQ(reason([](auto& f) { f.bits = 17; }), PPL_PREPARE_BITS);
  EXPECT_EQ(reason([](auto& f) { f.bits = 7; }), PPL_PREPARE_BITS);
  EXPECT_EQ(reason([](auto& f) { f.layout = PPL_PACKED_10, f.bits = 12; }), PPL_PREPARE_BITS);
  EXPECT_EQ(ppl_prepare_frame(&good, raw.data(), PPL_TO_8_TABLE, nullptr, out.data(), 8), PPL_PREPARE_TABLE);
  EXPECT_EQ(ppl_prepare_frame(&good, raw.data(), PPL_TO_8_SHIFT, nullptr, out.data(), 7), PPL_PREPARE_REGION);
  EXPECT_EQ(ppl_prepare_region(&good, raw.data(), 0, nullptr, 4, 0, 5, 1, out.data(), 8), PPL_PREPARE_REGION);
}

TEST(Prepare, PlansCoverTheFrameOnceAndFitTheLibrary) {
  ppl_part parts[PPL_MOST_PARTS];
  for (const auto& [width, height] :
       {std::pair{2592u, 1944u}, {3264u, 2448u}, {2048u, 1536u}, {640u, 480u}, {4096u, 4096u}})
    for (const int size : {PPL_SIZE_SAME, PPL_SIZE_HALF}) {
      const uint32_t n = ppl_plan_parts(width, height, size, parts, PPL_MOST_PARTS);
      if (size == PPL_SIZE_HALF && width % 64 != 0) {
        EXPECT_EQ(n, 0u);
        continue;
      }
      ASSERT_GT(n, 0u) << width;
      std::vector<int> seen(size_t{width / 2} * (height / 2));
      for (uint32_t i = 0; i < n; ++i) {
        const ppl_part& p = parts[i];
        EXPECT_LE(p.width, 2016u);
        EXPECT_LE(p.height, 2048u);
        EXPECT_EQ(p.width % 32, 0u);
        EXPECT_EQ(p.height % 2, 0u);
        EXPECT_LE(p.x + p.width, width);
        EXPECT_LE(p.y + p.height, height);
        for (uint32_t y = p.keep_y; y < p.keep_y + p.keep_height; y += 2)
          for (uint32_t x = p.keep_x; x < p.keep_x + p.keep_width; x += 2)
            ++seen[size_t{y / 2} * (width / 2) + x / 2];
      }
      EXPECT_TRUE(std::all_of(seen.begin(), seen.end(), [](int k) { return k == 1; }));
    }
  EXPECT_EQ(ppl_plan_parts(2592, 1943, PPL_SIZE_SAME, parts, PPL_MOST_PARTS), 0u);
  EXPECT_EQ(ppl_plan_parts(2592, 1944, PPL_SIZE_SAME, parts, 1), 0u);
}

using frame_call = uint8_t (*)(ppl_context*, uint8_t*, uint8_t*, uint32_t, uint32_t, uint32_t);
constexpr frame_call kFrameCalls[] = {ppl_process_blrtoi420, ppl_process_blrtoyuyv, ppl_process_blrtouyvy,
                                      ppl_process_blrtorgb24, ppl_process_blrtorgb32};

struct aligned_bytes {
  explicit aligned_bytes(size_t n) : bytes(n + 16), size(n) {}
  uint8_t* at() { return bytes.data() + (-reinterpret_cast<uintptr_t>(bytes.data()) & 15); }
  std::vector<uint8_t> bytes;
  size_t size;
};
size_t picture_bytes(int format, size_t n) {
  return format == PPL_FORMAT_I420    ? n + n / 2
         : format == PPL_FORMAT_RGB24 ? 3 * n
         : format == PPL_FORMAT_RGB32 ? 4 * n
                                      : 2 * n;
}

// One pass and parts over the same frame with the same controls; the number of bytes that differ.
struct joined {
  size_t different = 0;
  uint32_t parts = 0;
};
joined join(dice_box& dice, uint32_t quality, bool medium, int format, int size, uint32_t width,
            uint32_t height, uint32_t most_width, uint32_t most_height, bool lens) {
  std::vector<uint8_t> mosaic(size_t{width} * height);
  const uint32_t noise = dice() % 3;  // noise, a slope with dots, flat fields
  for (size_t i = 0; i < mosaic.size(); ++i)
    mosaic[i] = static_cast<uint8_t>(noise == 0   ? dice()
                                     : noise == 1 ? 40 + i % width / 3 + i / width / 5 + dice() % 24 +
                                                        (dice() % 61 == 0) * 120
                                                  : 100 + dice() % 9 + 30 * (i % width / 24 % 2));
  ppl_context* const c = ppl_init();
  const bool h = dice() % 2 != 0, v = dice() % 2 != 0;
  ppl_set_quality(c, quality);
  if (medium) ppl_enable_medium_filter(c);
  ppl_enable_GbGr_correction(c);
  ppl_set_optical_black_b_gb_gr_r(c, 9, 11, 10, 8);
  ppl_set_rgb_gain(c, 397, 256, 346);
  ppl_set_h_mirror(c, h);
  ppl_set_v_mirror(c, v);
  ppl_set_decimation(c, size, 0, 0);
  const int32_t x0 = static_cast<int32_t>(width / 2), y0 = static_cast<int32_t>(height / 3);
  std::vector<uint16_t> table;
  const auto set_lens = [&](const ppl_part& p) {
    if (!lens) return;
    table.assign(ppl_part_lens_bytes(&p, y0) / 2, 0);
    EXPECT_TRUE(ppl_set_lens_correction(c, static_cast<int32_t>(p.width), static_cast<int32_t>(p.height),
                                        x0 - static_cast<int32_t>(p.x), y0 - static_cast<int32_t>(p.y),
                                        table.data(), static_cast<int32_t>(2 * table.size()), 48, 24, 16,
                                        44));
    ppl_enable_lens_correction(c);
  };
  const size_t n = size_t{width >> size} * (height >> size);
  aligned_bytes source(mosaic.size()), whole(picture_bytes(format, n)), picture(picture_bytes(format, n)),
      part(picture.size);
  set_lens({0, 0, width, height, 0, 0, width, height});
  std::copy(mosaic.begin(), mosaic.end(), source.at());
  std::fill_n(whole.at(), whole.size, uint8_t{1});
  std::fill_n(picture.at(), picture.size, uint8_t{2});
  EXPECT_TRUE(kFrameCalls[format](c, source.at(), whole.at(), width, height, width));
  ppl_part parts[PPL_MOST_PARTS];
  joined result;
  result.parts = ppl_plan_parts_of(width, height, size, most_width, most_height, parts, PPL_MOST_PARTS);
  const ppl_sensor_frame f = {width, height, 0, PPL_BGGR, PPL_BYTES, 8};
  for (uint32_t i = 0; i < result.parts; ++i) {
    const ppl_part& p = parts[i];
    set_lens(p);
    EXPECT_EQ(ppl_prepare_region(&f, mosaic.data(), PPL_TO_8_SHIFT, nullptr, p.x, p.y, p.width, p.height,
                                 source.at(), p.width),
              PPL_PREPARE_FINE);
    EXPECT_TRUE(kFrameCalls[format](c, source.at(), part.at(), p.width, p.height, p.width));
    ppl_join_part(&p, width, height, format, size, h, v, part.at(), picture.at());
  }
  ppl_reset_all_controls(c);
  ppl_free(c);
  for (size_t i = 0; i < whole.size; ++i) result.different += whole.at()[i] != picture.at()[i];
  return result;
}

constexpr int kRounds = 2;
TEST(Prepare, JoinedPartsAreThePictureOfOnePass) {
  dice_box dice(2);
  for (const uint32_t quality : {0u, 1u, 2u, 3u, 10u, 11u, 12u, 13u, 15u})
    for (const bool medium : {false, true})
      for (int format = 0; format < PPL_FORMATS; ++format)
        for (const int size : {PPL_SIZE_SAME, PPL_SIZE_HALF}) {
          if (!ppl_quality_is_whole(quality, medium, static_cast<uint32_t>(format), size, 0, 0)) continue;
          if (medium && quality > 2) continue;
          const uint32_t width = size == PPL_SIZE_HALF ? 448 : 416;
          for (int k = 0; k < kRounds; ++k) {
            const joined j = join(dice, quality, medium, format, size, width, 144, 256, 100, dice() % 2 != 0);
            ASSERT_GE(j.parts, 4u);
            EXPECT_EQ(j.different, 0u)
                << "quality " << quality << " medium " << medium << " format " << format << " size " << size;
          }
        }
}

TEST(Prepare, MeansOfPartsMakeTheMeansOfTheFrame) {
  ppl_part parts[PPL_MOST_PARTS];
  const uint32_t n = ppl_plan_parts_of(640, 480, PPL_SIZE_SAME, 384, 300, parts, PPL_MOST_PARTS);
  ASSERT_GE(n, 4u);
  // An even grey: the means are the frame's, whatever the parts.
  ppl_context* const c = ppl_init();
  ppl_part_means m;
  ppl_part_means_clear(&m);
  aligned_bytes source(640 * 480), picture(640 * 480 * 3 / 2);
  const auto run = [&](uint32_t w, uint32_t h) {
    std::fill_n(source.at(), size_t{w} * h, uint8_t{80});
    EXPECT_TRUE(ppl_process_blrtoi420(c, source.at(), picture.at(), w, h, w));
  };
  run(640, 480);  // the first tile of a frame's statistics depends on the frame before
  for (uint32_t i = 0; i < n; ++i) {
    run(parts[i].width, parts[i].height);
    ppl_part_means_add(&m, parts + i, ppl_rgb_means_whole_frame(c), ppl_qual_rgb_means_whole_frame(c),
                       ppl_n_qual_2x2_whole_frame(c));
  }
  uint32_t whole[3], ranged[3], count = 0;
  ppl_part_means_total(&m, 640, 480, whole, ranged, &count);
  run(640, 480);
  for (int i = 0; i < 3; ++i) {
    EXPECT_NEAR(whole[i], ppl_rgb_means_whole_frame(c)[i], ppl_rgb_means_whole_frame(c)[i] / 50.0);
    EXPECT_EQ(ranged[i], ppl_qual_rgb_means_whole_frame(c)[i]);
  }
  EXPECT_NEAR(count, ppl_n_qual_2x2_whole_frame(c), 640 * 480 / 4 / 50.0);
  ppl_free(c);
}

}  // namespace
