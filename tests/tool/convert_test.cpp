#include <ppl.h>
#include <stdlib.h>

#include <algorithm>
#include <memory>

#include "run.h"

namespace {

struct Free {
  void operator()(void* p) const { free(p); }
};
using Buffer = std::unique_ptr<uint8_t, Free>;

Buffer buffer(size_t bytes) {
  Buffer b(static_cast<uint8_t*>(aligned_alloc(64, (bytes + 63) / 64 * 64)));
  std::fill_n(b.get(), bytes, uint8_t{0});
  return b;
}

Buffer buffer(const Bytes& content) {
  Buffer b = buffer(content.size());
  std::copy(content.begin(), content.end(), b.get());
  return b;
}

Rgb mirrored(const Rgb& from, bool columns, bool rows) {
  Rgb to = from;
  for (uint32_t y = 0; y < from.height; ++y)
    for (uint32_t x = 0; x < from.width; ++x)
      std::copy_n(from.at(columns ? from.width - 1 - x : x, rows ? from.height - 1 - y : y), 3,
                  &to.pixels[3 * (size_t{y} * to.width + x)]);
  return to;
}

// The middle of a picture, moved by dx, dy.
Rgb window(const Rgb& from, int dx, int dy) {
  Rgb to;
  to.width = from.width - 8;
  to.height = from.height - 8;
  for (uint32_t y = 0; y < to.height; ++y)
    for (uint32_t x = 0; x < to.width; ++x) {
      const uint8_t* p = from.at(x + 4 + static_cast<uint32_t>(dx), y + 4 + static_cast<uint32_t>(dy));
      to.pixels.insert(to.pixels.end(), p, p + 3);
    }
  return to;
}

class Convert : public Tool {};

// The right colours, the right way up, and no row or column off: the truth fits best where it is.
TEST_F(Convert, SampleLooksLikeTheTruth) {
  ok(Arguments{"convert", sample, "-o", "a.png"} + sample_size + settings);
  const Rgb made = png("a.png"), right = read_picture(truth);
  ASSERT_EQ(made.width, 640u);
  ASSERT_EQ(made.height, 480u);
  const Rgb middle = window(right, 0, 0);
  const double here = psnr(window(made, 0, 0), middle);
  EXPECT_GT(here, 25);
  for (const auto& [dx, dy] : {std::pair{1, 0}, {-1, 0}, {0, 1}, {0, -1}, {2, 0}, {0, 2}, {0, -2}, {-2, 0}})
    EXPECT_LT(psnr(window(made, dx, dy), middle), here - 1) << dx << " " << dy;
  EXPECT_LT(psnr(mirrored(made, true, false), right), 15);
  EXPECT_LT(psnr(mirrored(made, false, true), right), 15);
  Rgb swapped = made;  // red and blue exchanged
  for (size_t i = 0; i < swapped.pixels.size(); i += 3) std::swap(swapped.pixels[i], swapped.pixels[i + 2]);
  EXPECT_LT(psnr(swapped, right), 18);
}

TEST_F(Convert, EveryQualityGivesAPicture) {
  const Rgb right = read_picture(truth);
  for (const char* quality : {"0", "1", "2", "3", "10", "11", "15"}) {
    ok(Arguments{"convert", sample, "-o", "a.png", "-q", quality} + sample_size + settings);
    EXPECT_GT(psnr(png("a.png"), right), 22) << "quality " << quality;
  }
  for (const char* quality : {"12", "13", "4", "9"}) {
    ok(Arguments{"convert", sample, "-o", "a.png", "-q", quality} + sample_size + settings);
    const Rgb grey = png("a.png");
    for (size_t i = 0; i < grey.pixels.size(); i += 3)
      ASSERT_TRUE(std::string(quality) == "12" ||
                  (grey.pixels[i] == grey.pixels[i + 1] && grey.pixels[i] == grey.pixels[i + 2]));
  }
  const Rgb mosaic = png("a.png");
  const Bytes raw = read_whole(sample);
  for (size_t i = 0; i < raw.size(); ++i) ASSERT_EQ(mosaic.pixels[3 * i], raw[i]);
}

// The RGB of qualities 0 and 10 is paler than their YUV: their pictures come by way of I420, here and in compare.
TEST_F(Convert, PicturesOfQualities0And10ComeByWayOfI420) {
  const Rgb right = read_picture(truth);
  for (const char* quality : {"0", "10"}) {
    ok(Arguments{"convert", sample, "-o", "a.png", "-q", quality} + sample_size + settings);
    EXPECT_GT(psnr(png("a.png"), right), 26) << "quality " << quality;
    ok(Arguments{"convert", sample, "-o", "b.png", "-q", quality, "--via", "i420"} + sample_size + settings);
    EXPECT_EQ(png("a.png").pixels, png("b.png").pixels);
    ok(Arguments{"convert", sample, "-o", "b.png", "-q", quality, "--via", "rgb24"} + sample_size + settings);
    EXPECT_NE(png("a.png").pixels, png("b.png").pixels);
  }
  for (const char* quality : {"2", "15"}) {
    ok(Arguments{"convert", sample, "-o", "a.png", "-q", quality} + sample_size + settings);
    ok(Arguments{"convert", sample, "-o", "b.png", "-q", quality, "--via", "rgb24"} + sample_size + settings);
    EXPECT_EQ(png("a.png").pixels, png("b.png").pixels);
  }
}

// PNG, PPM, RGB24 and RGB32 of one frame hold the same pixels; the raw ones bottom row and blue byte first.
TEST_F(Convert, PictureFormatsAgree) {
  for (const char* name : {"a.png", "a.ppm", "a.rgb24", "a.rgb32"})
    ok(Arguments{"convert", sample, "-o", name, "-q", "2"} + sample_size + settings);
  const Rgb picture = png("a.png");
  const Bytes ppm = read("a.ppm"), rgb24 = read("a.rgb24"), rgb32 = read("a.rgb32");
  const std::string head = "P6\n640 480\n255\n";
  ASSERT_EQ(ppm.size(), head.size() + picture.pixels.size());
  EXPECT_TRUE(std::equal(head.begin(), head.end(), ppm.begin()));
  EXPECT_TRUE(
      std::equal(picture.pixels.begin(), picture.pixels.end(), ppm.begin() + static_cast<long>(head.size())));
  ASSERT_EQ(rgb24.size(), 640u * 480 * 3);
  ASSERT_EQ(rgb32.size(), 640u * 480 * 4);
  for (uint32_t y = 0; y < 480; ++y)
    for (uint32_t x = 0; x < 640; ++x)
      for (size_t c = 0; c < 3; ++c) {
        const size_t at = size_t{479 - y} * 640 + x;
        ASSERT_EQ(rgb24[3 * at + 2 - c], picture.at(x, y)[c]);
        ASSERT_EQ(rgb32[4 * at + 2 - c], picture.at(x, y)[c]);
      }
}

// Every option reaches the setter of its name: the file holds what the same calls give here.
TEST_F(Convert, OptionsAreTheSetters) {
  ok(Arguments{"convert", sample, "-o", "a.i420", "-q", "0"} + sample_size + every);
  ppl_context* c = ppl_init();
  ppl_set_quality(c, 0);
  ppl_enable_medium_filter(c);
  ppl_set_optical_black_b_gb_gr_r(c, 9, 11, 10, 8);
  ppl_set_rgb_gain(c, 397, 256, 346);
  ppl_set_rgb_delta(c, 3, -2, 5);
  ppl_enable_GbGr_correction(c);
  ppl_set_GbGr_correction_diff_threshold(c, 14);
  ppl_set_gamma(c, -5);
  ppl_set_contrast_c(c, 20, nullptr, nullptr);
  ppl_set_sat_hue(c, 300, 20);
  const int32_t matrix[] = {400, -20, -110, -100, 500, -120, -10, -200, 480};
  ppl_copy_sensor_matrix(c, matrix);
  ppl_set_medium_filter_diff_threshold(c, 40);
  ppl_set_medium_filter_hot_pixel_threshold(c, 200);
  ppl_set_medium_filter_dead_pixel_threshold(c, 24);
  ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(c, 90);
  ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(c, 50);
  ppl_set_edge_threshold(c, 30);
  ppl_set_edge_threshold2(c, 700);
  ppl_set_nf88_edge_enhance_factor(c, 64);
  ppl_set_CFA_T0_threshold(c, 18);
  ppl_set_CFA_T1_threshold(c, 20);
  ppl_set_h_mirror(c, 1);
  ppl_set_v_mirror(c, 1);
  const size_t table_size = 251 * 640 * 2;
  const Buffer table = buffer(table_size);
  ASSERT_TRUE(ppl_set_lens_correction(c, 640, 480, 300, 250, reinterpret_cast<uint16_t*>(table.get()),
                                      static_cast<int32_t>(table_size), 48, 23, 17, 43));
  ppl_enable_lens_correction(c);
  const Buffer source = buffer(read_whole(sample)), frame = buffer(640 * 480 * 3 / 2);
  ASSERT_TRUE(ppl_process_blrtoi420(c, source.get(), frame.get(), 640, 480, 640));
  const Bytes file = read("a.i420");
  ASSERT_EQ(file.size(), 640u * 480 * 3 / 2);
  EXPECT_TRUE(std::equal(file.begin(), file.end(), frame.get()));
  ppl_free(c);
}

TEST_F(Convert, PackedFormatsAreEachOtherWithBytesExchanged) {
  for (const char* name : {"a.yuyv", "a.uyvy"})
    ok(Arguments{"convert", sample, "-o", name} + sample_size + settings);
  const Bytes yuyv = read("a.yuyv"), uyvy = read("a.uyvy");
  ASSERT_EQ(yuyv.size(), 640u * 480 * 2);
  ASSERT_EQ(uyvy.size(), yuyv.size());
  for (size_t i = 0; i < yuyv.size(); ++i) ASSERT_EQ(yuyv[i], uyvy[i ^ 1]);
}

TEST_F(Convert, MirrorsTurnThePicture) {
  ok(Arguments{"convert", sample, "-o", "a.png"} + sample_size + settings);
  ok(Arguments{"convert", sample, "-o", "h.png", "--h-mirror"} + sample_size + settings);
  ok(Arguments{"convert", sample, "-o", "v.png", "--v-mirror"} + sample_size + settings);
  ok(Arguments{"convert", sample, "-o", "hv.png", "--h-mirror", "--v-mirror"} + sample_size + settings);
  EXPECT_EQ(png("h.png").pixels, mirrored(png("a.png"), true, false).pixels);
  EXPECT_EQ(png("v.png").pixels, mirrored(png("a.png"), false, true).pixels);
  EXPECT_EQ(png("hv.png").pixels, mirrored(png("a.png"), true, true).pixels);
}

// Half size takes the even columns of the even rows.
TEST_F(Convert, HalfSizeIsEverySecondPixel) {
  ok(Arguments{"convert", sample, "-o", "a.png", "-q", "2"} + sample_size + settings);
  ok(Arguments{"convert", sample, "-o", "half.png", "-q", "2", "--decimation", "1"} + sample_size + settings);
  const Rgb full = png("a.png"), half = png("half.png");
  ASSERT_EQ(half.width, 320u);
  ASSERT_EQ(half.height, 240u);
  for (uint32_t y = 0; y < 240; ++y)
    for (uint32_t x = 0; x < 320; ++x)
      ASSERT_TRUE(std::equal(half.at(x, y), half.at(x, y) + 3, full.at(2 * x, 2 * y))) << x << " " << y;
}

// Double size keeps every sample, in the odd columns of the even rows, under all mirrors.
TEST_F(Convert, DoubleSizeKeepsEveryPixel) {
  ok(Arguments{"convert", sample, "-o", "a.png", "-q", "2"} + sample_size + settings);
  const Rgb full = png("a.png");
  ok(Arguments{"convert", sample, "-o", "twice.png", "-q", "2", "--decimation", "-1"} + sample_size +
     settings);
  ok(Arguments{"convert", sample, "-o", "twice_v.png", "-q", "2", "--decimation", "-1", "--v-mirror"} +
     sample_size + settings);
  for (const Rgb& twice : {png("twice.png"), mirrored(png("twice_v.png"), false, true)}) {
    ASSERT_EQ(twice.width, 1280u);
    ASSERT_EQ(twice.height, 960u);
    for (uint32_t y = 0; y < 480; ++y)
      for (uint32_t x = 0; x < 640; ++x)
        ASSERT_TRUE(std::equal(full.at(x, y), full.at(x, y) + 3, twice.at(2 * x + 1, 2 * y)))
            << x << " " << y;
  }
}

// The default quality doubles through I420: shrunk again by taking those samples it is the single-size picture,
// but for the chroma that I420 shares between four pixels.
TEST_F(Convert, DefaultQualityDoublesInTheRightColours) {
  ok(Arguments{"convert", sample, "-o", "twice.png", "--decimation", "-1"} + sample_size + settings);
  const Rgb twice = png("twice.png");
  ASSERT_EQ(twice.width, 1280u);
  Rgb single;
  single.width = 640;
  single.height = 480;
  for (uint32_t y = 0; y < 480; ++y)
    for (uint32_t x = 0; x < 640; ++x)
      single.pixels.insert(single.pixels.end(), twice.at(2 * x + 1, 2 * y), twice.at(2 * x + 1, 2 * y) + 3);
  ok(Arguments{"convert", sample, "-o", "a.png"} + sample_size + settings);
  EXPECT_GT(psnr(single, png("a.png")), 35);
}

TEST_F(Convert, ScaleToTheSameSizeChangesNothing) {
  for (const char* name : {"a.i420", "a.yuyv"}) {
    ok(Arguments{"convert", sample, "-o", name} + sample_size + settings);
    ok(Arguments{"convert", sample, "-o", std::string("s") + name, "--scale", "640x480"} + sample_size +
       settings);
    EXPECT_EQ(read(name), read(std::string("s") + name));
  }
  ok(Arguments{"convert", sample, "-o", "b.png", "--scale", "800x600"} + sample_size + settings);
  EXPECT_EQ(png("b.png").width, 800u);
  EXPECT_EQ(png("b.png").height, 600u);
}

TEST_F(Convert, StrideSkipAndFrame) {
  const Bytes raw = read_whole(sample);
  Bytes padded(10, 0xaa);
  for (int frame = 0; frame < 2; ++frame)
    for (size_t y = 0; y < 480; ++y) {
      for (size_t x = 0; x < 640; ++x) padded.push_back(frame ? raw[640 * y + x] : 77);
      padded.resize(padded.size() + 13, 0x55);
    }
  write("padded.raw", padded);
  ok(Arguments{"convert", "padded.raw", "-o", "b.png", "--stride", "653", "--skip", "10", "--frame", "1"} +
     sample_size + settings);
  ok(Arguments{"convert", sample, "-o", "a.png"} + sample_size + settings);
  EXPECT_EQ(png("a.png").pixels, png("b.png").pixels);
}

TEST_F(Convert, StandardInputAndOutput) {
  ok(Arguments{"convert", sample, "-o", "a.ppm"} + sample_size);
  const Result piped = run(Arguments{"convert", sample, "-o", "-", "--format", "ppm"} + sample_size);
  const Bytes file = read("a.ppm");
  ASSERT_EQ(piped.out.size(), file.size());
  EXPECT_TRUE(std::equal(file.begin(), file.end(), reinterpret_cast<const uint8_t*>(piped.out.data())));
}

// Frames that the tool wrote come back as the same picture.
TEST_F(Convert, ReadsItsOwnFrames) {
  for (const char* name : {"rgb24", "rgb32"}) {
    const std::string raw = std::string("a.") + name;
    ok(Arguments{"convert", sample, "-o", raw, "-q", "2"} + sample_size);
    ok(Arguments{"convert", raw, "-o", "back.png", "--input", name} + sample_size);
    ok(Arguments{"convert", sample, "-o", "a.png", "-q", "2"} + sample_size);
    EXPECT_EQ(png("back.png").pixels, png("a.png").pixels) << name;
  }
  // Chroma is coarser in these: the same picture but for that.
  for (const char* name : {"i420", "yuyv", "uyvy"}) {
    const std::string raw = std::string("a.") + name;
    ok(Arguments{"convert", sample, "-o", raw} + sample_size + settings);
    ok(Arguments{"convert", raw, "-o", "back.png", "--input", name, "--chroma", "camera"} + sample_size);
    ok(Arguments{"convert", sample, "-o", "a.png"} + sample_size + settings);
    EXPECT_GT(psnr(png("back.png"), png("a.png")), 35) << name;
  }
}

// One pixel worked out by hand: Y 100, B - Y 20, R - Y 30, so R 130, B 120 and, as Y is 0.299 R + 0.587 G + 0.114 B,
// G 100 - (0.299 * 30 + 0.114 * 20) / 0.587 = 80.8.
TEST_F(Convert, CameraChromaByHand) {
  Bytes frame(96, 100);
  std::fill(frame.begin() + 64, frame.begin() + 80, uint8_t{148});
  std::fill(frame.begin() + 80, frame.end(), uint8_t{158});
  write("a.i420", frame);
  ok({"convert", "a.i420", "-W", "32", "-H", "2", "--input", "i420", "-o", "a.png"});
  const Rgb picture = png("a.png");
  for (size_t i = 0; i < picture.pixels.size(); i += 3) {
    ASSERT_EQ(picture.pixels[i], 130);
    ASSERT_EQ(picture.pixels[i + 1], 81);
    ASSERT_EQ(picture.pixels[i + 2], 120);
  }
}

// Studio white 235 becomes (235 - 16) * 74 / 64 = 253, studio black 0; U and V of a pair serve both pixels:
// U 138 adds 129 * 10 / 64 to blue, whole: (219 * 74 + 1290) >> 6 = 273, clamped; and at Y 116,
// (100 * 74 + 1290) >> 6 = 135, green (7400 - 250) >> 6 = 111, red 7400 >> 6 = 115.
TEST_F(Convert, DecoderFramesByHand) {
  Bytes yuyv;
  for (int row = 0; row < 2; ++row)
    for (int pair = 0; pair < 16; ++pair)
      for (const int b : row ? std::vector<int>{116, 138, 116, 128} : std::vector<int>{235, 128, 16, 128})
        yuyv.push_back(static_cast<uint8_t>(b));
  Bytes uyvy = yuyv;
  for (size_t i = 0; i < uyvy.size(); i += 2) std::swap(uyvy[i], uyvy[i + 1]);
  write("a.yuyv", yuyv);
  write("a.uyvy", uyvy);
  for (const char* layout : {"yuyv", "uyvy"}) {
    const std::string file = std::string("a.") + layout;
    ok({"convert", file, "-W", "32", "-H", "2", "--input", layout, "-o", "a.png"});
    const Rgb picture = png("a.png");
    for (uint32_t x = 0; x < 32; ++x)
      for (size_t c = 0; c < 3; ++c) {
        ASSERT_EQ(picture.at(x, 0)[c], x % 2 ? 0 : 253);
        ASSERT_EQ(picture.at(x, 1)[c], (std::vector<int>{115, 111, 135})[c]);
      }
    ok({"convert", file, "-W", "32", "-H", "2", "--input", layout, "-o", "b.i420"});
    const Bytes i420 = read("b.i420");
    ASSERT_EQ(i420.size(), 96u);
    for (size_t x = 0; x < 32; ++x) {
      EXPECT_EQ(i420[x], x % 2 ? 16 : 235);
      EXPECT_EQ(i420[32 + x], 116);
    }
    for (size_t x = 0; x < 16; ++x) {
      EXPECT_EQ(i420[64 + x], 133);  // the mean of 128 and 138
      EXPECT_EQ(i420[80 + x], 128);
    }
  }
}

}  // namespace
