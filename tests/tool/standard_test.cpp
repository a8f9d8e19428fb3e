// YUV as other programs read it: decoded by the textbook, it is the picture.
#include <algorithm>
#include <cmath>

#include "run.h"
#include "tools/colour_standard.h"

namespace {

class Standard : public Tool {
 protected:
  struct Kind {
    const char* name;
    double red, blue;
    bool video;
  };
  static constexpr Kind kinds[] = {{"bt601", 0.299, 0.114, true},
                                   {"bt601", 0.299, 0.114, false},
                                   {"bt709", 0.2126, 0.0722, true},
                                   {"bt709", 0.2126, 0.0722, false}};

  // One pixel by the standard's own definition: R - Y is 2 (1 - red) times the red difference, likewise blue.
  static void decode(const Kind& kind, double y, double u, double v, uint8_t* rgb) {
    if (kind.video) {
      y = (y - 16) * 255 / 219;
      u = (u - 128) * 255 / 224;
      v = (v - 128) * 255 / 224;
    } else {
      u -= 128;
      v -= 128;
    }
    const double r = y + 2 * (1 - kind.red) * v, b = y + 2 * (1 - kind.blue) * u;
    const double g = (y - kind.red * r - kind.blue * b) / (1 - kind.red - kind.blue);
    const double out[] = {r, g, b};
    for (int c = 0; c < 3; ++c)
      rgb[c] = static_cast<uint8_t>(std::clamp(std::floor(out[c] + 0.5), 0.0, 255.0));
  }

  static Rgb decode(const Kind& kind, const std::string& format, const Bytes& frame) {
    Rgb picture{640, 480, Bytes(640 * 480 * 3)};
    for (size_t y = 0; y < 480; ++y)
      for (size_t x = 0; x < 640; ++x) {
        uint8_t* rgb = &picture.pixels[3 * (640 * y + x)];
        const size_t pair = 1280 * y + x / 2 * 4, chroma = y / 2 * 320 + x / 2,
                     luma = format == "yuyv" ? 0 : 1;
        if (format == "i420")
          decode(kind, frame[640 * y + x], frame[307200 + chroma], frame[384000 + chroma], rgb);
        else
          decode(kind, frame[pair + 2 * (x & 1) + luma], frame[pair + 1 - luma], frame[pair + 3 - luma], rgb);
      }
    return picture;
  }

  Rgb made(const Kind& kind, const std::string& format, const Arguments& controls) {
    ok(Arguments{"convert", sample, "-o", "a." + format, "--out-chroma", kind.name, "--out-range",
                 kind.video ? "video" : "full"} +
       sample_size + controls);
    return decode(kind, format, read("a." + format));
  }
};

// Chroma for two or four pixels costs something where colours are fine or noisy: the camera's own YUV shows how much.
TEST_F(Standard, DecodedItIsThePicture) {
  for (const Arguments& controls :
       {settings, settings + Arguments{"--saturation", "340", "--hue", "30"},
        settings + Arguments{"--contrast", "40"}, settings + Arguments{"--saturation", "0"},
        settings + Arguments{"-q", "2"}, settings + Arguments{"-q", "3"}}) {
    ok(Arguments{"convert", sample, "-o", "a.png", "--via", "rgb24"} + sample_size + controls);
    const Rgb picture = png("a.png");
    ok(Arguments{"convert", sample, "-o", "b.png", "--via", "i420"} + sample_size + controls);
    const double least = controls[controls.size() - 2] == "-q" ? psnr(png("b.png"), picture) - 1 : 31;
    EXPECT_GT(least, 26);
    for (const Kind& kind : kinds)
      for (const char* format : {"i420", "yuyv", "uyvy"})
        EXPECT_GT(psnr(made(kind, format, controls), picture), least)
            << kind.name << kind.video << format << " " << controls.back();
  }
}

// Qualities 0 and 10 have paler RGB: held to the picture by way of the camera's YUV.
TEST_F(Standard, AllQualities) {
  for (const char* quality : {"0", "1", "10", "11", "12", "13"}) {
    const Arguments controls = settings + Arguments{"-q", quality};
    ok(Arguments{"convert", sample, "-o", "a.png", "--via", "i420"} + sample_size + controls);
    const Rgb picture = png("a.png");
    for (const Kind& kind : kinds)
      EXPECT_GT(psnr(made(kind, "i420", controls), picture), 31) << kind.name << quality;
  }
}

// Grey stays grey, and black and white stand at the ends of the range.
TEST_F(Standard, GreyIsNeutral) {
  Bytes steps;
  for (size_t y = 0; y < 64; ++y)
    for (size_t x = 0; x < 256; ++x)
      steps.push_back(static_cast<uint8_t>(x < 64 ? 0 : x < 128 ? 60 : x < 192 ? 140 : 255));
  write("steps.raw", steps);
  for (const Kind& kind : kinds) {
    ok({"convert", "steps.raw", "-W", "256", "-H", "64", "-o", "a.i420", "--out-chroma", kind.name,
        "--out-range", kind.video ? "video" : "full", "-q", "2"});
    const Bytes frame = read("a.i420");
    const auto at = [&](size_t x) { return static_cast<int>(frame[256 * 32 + x]); };
    EXPECT_EQ(at(32), kind.video ? 16 : 0);
    EXPECT_NEAR(at(224), kind.video ? 232 : 251, 3);  // the default sensor matrix makes 251 of 255
    for (const size_t x : {16u, 48u, 80u, 112u})
      for (const size_t plane : {256 * 64u, 256 * 64u * 5 / 4})
        EXPECT_NEAR(frame[plane + 128 * 16 + x], 128, 1) << kind.name << kind.video << " " << x;
  }
}

// A frame of one strong colour: the camera's differences are cut, the standard's are not.
TEST_F(Standard, StrongColoursAreNotCut) {
  Bytes blue;
  for (size_t y = 0; y < 32; ++y)
    for (size_t x = 0; x < 64; ++x) blue.push_back(static_cast<uint8_t>(y % 2 == 0 && x % 2 == 0 ? 255 : 0));
  write("blue.raw", blue);
  const Arguments exact{"-W", "64", "-H", "32", "-q", "2", "--sensor-matrix", "256,0,0,0,256,0,0,0,256"};
  ok(Arguments{"convert", "blue.raw", "-o", "a.i420", "--out-chroma", "bt601", "--out-range", "full"} +
     exact);
  const Bytes frame = read("a.i420");
  EXPECT_NEAR(frame[64 * 16 + 32], 29, 3);                 // 0.114 of 255
  EXPECT_NEAR(frame[64 * 32 + 32 * 8 + 16], 255, 3);       // half of the range above the middle
  EXPECT_NEAR(frame[64 * 40 + 32 * 8 + 16], 128 - 21, 3);  // -0.114 / 0.701 / 2 of 255
}

TEST_F(Standard, VideoRangeIsTheDivision) {
  Bytes all(256);
  for (size_t i = 0; i < 256; ++i) all[i] = static_cast<uint8_t>(i);
  Bytes luma = all, chroma = all, yuyv = all + all, uyvy = all + all;
  for (size_t i = 0; i < 512; ++i) yuyv[i] = uyvy[i] = static_cast<uint8_t>(i / 2);
  tool::luma_to_video_range(luma.data(), luma.size());
  tool::chroma_to_video_range(chroma.data(), chroma.size());
  tool::packed_to_video_range(yuyv.data(), yuyv.size(), true);
  tool::packed_to_video_range(uyvy.data(), uyvy.size(), false);
  for (int i = 0; i < 256; ++i) {
    const size_t at = static_cast<size_t>(i);
    EXPECT_EQ(luma[at], std::floor(16 + i * 219 / 255.0 + 0.5));
    EXPECT_EQ(chroma[at], std::floor(128 + (i - 128) * 224 / 255.0 + 0.5));
    EXPECT_EQ(yuyv[2 * at], luma[at]);
    EXPECT_EQ(yuyv[2 * at + 1], chroma[at]);
    EXPECT_EQ(uyvy[2 * at], chroma[at]);
    EXPECT_EQ(uyvy[2 * at + 1], luma[at]);
  }
}

TEST_F(Standard, RawFilesKeepTheCamerasChroma) {
  ok(Arguments{"convert", sample, "-o", "a.i420"} + sample_size + settings);
  ok(Arguments{"convert", sample, "-o", "b.i420", "--out-chroma", "camera"} + sample_size + settings);
  EXPECT_EQ(read("a.i420"), read("b.i420"));
}

TEST_F(Standard, Y4mIsBt601InVideoRange) {
  ok(Arguments{"convert", sample, "-o", "a.y4m", "--rate", "30000/1001"} + sample_size + settings);
  ok(Arguments{"convert", sample, "-o", "a.i420", "--out-chroma", "bt601"} + sample_size + settings);
  const std::string head = "YUV4MPEG2 W640 H480 F30000:1001 Ip A1:1 C420mpeg2 XCOLORRANGE=LIMITED\nFRAME\n";
  const Bytes stream = read("a.y4m"), frame = read("a.i420");
  ASSERT_EQ(stream.size(), head.size() + frame.size());
  EXPECT_EQ(std::string(stream.begin(), stream.begin() + static_cast<long>(head.size())), head);
  EXPECT_TRUE(std::equal(frame.begin(), frame.end(), stream.begin() + static_cast<long>(head.size())));
}

// ffmpeg reads it and sees the colours of the picture.
TEST_F(Standard, FfmpegReadsY4m) {
  if (shell("command -v ffmpeg > /dev/null").status != 0) GTEST_SKIP() << "ffmpeg is not installed";
  ok(Arguments{"convert", sample, "-o", "a.png"} + sample_size + settings);
  const Rgb picture = png("a.png");
  for (const char* range : {"video", "full"}) {
    ok(Arguments{"convert", sample, sample, "-o", "a.y4m", "--out-range", range} + sample_size + settings);
    const Result result = shell(
        "ffmpeg -v error -i a.y4m -vf scale=in_color_matrix=bt601:flags=accurate_rnd+full_chroma_int "
        "-f rawvideo -pix_fmt rgb24 -y a.rgb && ffprobe -v error -count_frames -show_entries "
        "stream=nb_read_frames,color_range -of csv=p=0 a.y4m");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_NE(result.out.find(range == std::string("full") ? "pc" : "tv"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("2"), std::string::npos) << result.out;
    Rgb seen{640, 480, read("a.rgb")};
    ASSERT_EQ(seen.pixels.size(), 2 * picture.pixels.size());
    seen.pixels.resize(picture.pixels.size());
    EXPECT_GT(psnr(seen, picture), 31) << range;
  }
}

}  // namespace
