#include <algorithm>
#include <cstdlib>
#include <random>

#include "run.h"

namespace {

constexpr size_t width = 64, height = 32, row = 2 * width, field_size = row * height / 2;

Bytes noise(unsigned seed) {
  std::mt19937 random(seed);
  Bytes bytes(field_size);
  for (uint8_t& b : bytes) b = static_cast<uint8_t>(random());
  return bytes;
}

Bytes weave(const Bytes& kept, const Bytes& later) {
  Bytes frame;
  for (size_t r = 0; r < height / 2; ++r) {
    frame.insert(frame.end(), kept.begin() + static_cast<long>(r * row),
                 kept.begin() + static_cast<long>(r * row + row));
    frame.insert(frame.end(), later.begin() + static_cast<long>(r * row),
                 later.begin() + static_cast<long>(r * row + row));
  }
  return frame;
}

// The rule, one pixel at a time: three neighbouring chroma differences that do not agree mean motion, and motion
// replaces the chroma by the mean of the kept rows above and below. The last row pair is a plain weave.
Bytes motion(const Bytes& earlier, const Bytes& kept, const Bytes& later, int threshold) {
  Bytes frame = weave(kept, later);
  for (size_t r = 0; r + 1 < height / 2; ++r) {
    const auto d = [&](long x) {
      if (x < 0 || x >= static_cast<long>(width)) return 0;
      const size_t at = r * row + 2 * static_cast<size_t>(x) + 1;
      return later[at] - earlier[at];
    };
    for (long x = 0; x < static_cast<long>(width); ++x) {
      const int s = d(x - 1) + d(x) + d(x + 1);
      if (abs(s - 3 * d(x - 1)) + abs(s - 3 * d(x)) + abs(s - 3 * d(x + 1)) <= threshold) continue;
      const size_t at = r * row + 2 * static_cast<size_t>(x) + 1;
      frame[(2 * r + 1) * row + 2 * static_cast<size_t>(x) + 1] =
          static_cast<uint8_t>((kept[at] + kept[at + row] + 1) >> 1);
    }
  }
  return frame;
}

Bytes swapped(Bytes bytes) {
  for (size_t i = 0; i < bytes.size(); i += 2) std::swap(bytes[i], bytes[i + 1]);
  return bytes;
}

class Deinterlace : public Tool {
 protected:
  Deinterlace() {
    write("earlier", earlier);
    write("kept", kept);
    write("later", later);
  }
  const Bytes earlier = noise(1), kept = noise(2), later = noise(3);
};

TEST_F(Deinterlace, TwoFieldsWeave) {
  ok(Arguments{"deinterlace", "kept", "later", "-o", "a.yuyv"} + small_size);
  EXPECT_EQ(read("a.yuyv"), weave(kept, later));
  ok(Arguments{"deinterlace", "kept", "later", "-o", "a.uyvy"} + small_size);
  EXPECT_EQ(read("a.uyvy"), swapped(weave(kept, later)));
  ok(Arguments{"deinterlace", "earlier", "kept", "later", "--weave", "-o", "b.yuyv"} + small_size);
  EXPECT_EQ(read("b.yuyv"), weave(kept, later));
}

TEST_F(Deinterlace, ThreeFieldsMotion) {
  for (const int threshold : {0, 50, 500, 765}) {
    ok(Arguments{"deinterlace", "earlier", "kept", "later", "--threshold", std::to_string(threshold), "-o",
                 "a.yuyv"} +
       small_size);
    EXPECT_EQ(read("a.yuyv"), motion(earlier, kept, later, threshold)) << threshold;
  }
  write("earlier2", swapped(earlier));
  write("kept2", swapped(kept));
  write("later2", swapped(later));
  ok(Arguments{"deinterlace", "earlier2", "kept2", "later2", "--input", "uyvy", "-o", "b.yuyv"} + small_size);
  EXPECT_EQ(read("b.yuyv"), motion(earlier, kept, later, 50));
}

TEST_F(Deinterlace, SizesByName) {
  Bytes field(640 * 480, 128);
  for (size_t i = 0; i < field.size(); i += 2) field[i] = static_cast<uint8_t>(i >> 8);
  write("vga", field);
  for (const auto& [name, same] :
       {std::pair{"half", "320x240"}, {"quarter", "160x120"}, {"double", "1280x960"}}) {
    ok({"deinterlace", "vga", "vga", "vga", "-W", "640", "-H", "480", "--size", name, "-o", "a.yuyv"});
    ok({"deinterlace", "vga", "vga", "vga", "-W", "640", "-H", "480", "--size", same, "-o", "b.yuyv"});
    EXPECT_EQ(read("a.yuyv"), read("b.yuyv")) << name;
  }
}

// Frame n's earlier field is the later field of frame n - 1; the first frame is a plain weave.
TEST_F(Deinterlace, SequenceKeepsTheEarlierField) {
  Bytes sequence = weave(noise(10), earlier);
  const Bytes second = weave(kept, later);
  sequence.insert(sequence.end(), second.begin(), second.end());
  write("frames", sequence);
  Bytes want = weave(noise(10), earlier);
  const Bytes blended = motion(earlier, kept, later, 50);
  want.insert(want.end(), blended.begin(), blended.end());
  ok(Arguments{"deinterlace", "frames", "--frames", "-o", "a.yuyv"} + small_size);
  EXPECT_EQ(read("a.yuyv"), want);

  ok(Arguments{"deinterlace", "frames", "--frames", "-o", "a.y4m", "--rate", "30000/1001"} + small_size);
  const Bytes stream = read("a.y4m");
  const std::string head = "YUV4MPEG2 W64 H32 F30000:1001 Ip A0:0 C420mpeg2\n", mark = "FRAME\n";
  ASSERT_EQ(stream.size(), head.size() + 2 * (mark.size() + 64 * 32 * 3 / 2));
  EXPECT_EQ(std::string(stream.begin(), stream.begin() + static_cast<long>(head.size())), head);
  for (size_t frame = 0; frame < 2; ++frame) {
    const uint8_t* at = stream.data() + head.size() + frame * (mark.size() + 64 * 32 * 3 / 2);
    EXPECT_TRUE(std::equal(mark.begin(), mark.end(), at));
    at += mark.size();
    for (size_t i = 0; i < width * height; ++i) ASSERT_EQ(at[i], want[2 * (frame * width * height + i)]);
  }

  // The same from a pipe.
  const std::string line =
      "cd '" + path("") + "' && cat frames | '" TOOL "' deinterlace - --frames -o c.yuyv -W 64 -H 32";
  EXPECT_EQ(system(line.c_str()), 0);
  EXPECT_EQ(read("c.yuyv"), want);

  ok(Arguments{"deinterlace", "frames", "--frames", "-o", "p.png"} + small_size);
  EXPECT_EQ(png("p-0000.png").width, 64u);
  EXPECT_EQ(png("p-0001.png").height, 32u);
}

// Pictures go through the library's own RGB24: a grey of 116 is (100 * 74) >> 6 = 115.
TEST_F(Deinterlace, GreyPicture) {
  Bytes grey(field_size, 128);
  for (size_t i = 0; i < grey.size(); i += 2) grey[i] = 116;
  write("grey", grey);
  ok(Arguments{"deinterlace", "grey", "grey", "grey", "-o", "a.png"} + small_size);
  const Rgb picture = png("a.png");
  ASSERT_EQ(picture.pixels.size(), 3 * width * height);
  for (const uint8_t b : picture.pixels) ASSERT_EQ(b, 115);
}

// Other sizes: half and double, with both layouts in and out.
TEST_F(Deinterlace, OtherSizes) {
  Bytes flat(640 * 480);
  for (size_t i = 0; i < flat.size(); i += 4) {
    flat[i] = flat[i + 2] = 90;
    flat[i + 1] = 60;
    flat[i + 3] = 200;
  }
  write("flat", flat);
  write("flat2", swapped(flat));
  const auto want = [](size_t pixels, bool uyvy) {
    Bytes frame;
    for (size_t i = 0; i < pixels / 2; ++i)
      for (const int b : uyvy ? std::vector<int>{60, 90, 200, 90} : std::vector<int>{90, 60, 90, 200})
        frame.push_back(static_cast<uint8_t>(b));
    return frame;
  };
  for (const bool in_uyvy : {false, true})
    for (const bool out_uyvy : {false, true})
      for (const auto& [name, w, h] :
           {std::tuple{"320x240", 320u, 240u}, {"160x120", 160u, 120u}, {"1280x960", 1280u, 960u}}) {
        const std::string file = in_uyvy ? "flat2" : "flat", out = out_uyvy ? "o.uyvy" : "o.yuyv";
        ok({"deinterlace", file, file, file, "-W", "640", "-H", "480", "--input", in_uyvy ? "uyvy" : "yuyv",
            "--size", name, "-o", out});
        EXPECT_EQ(read(out), want(size_t{w} * h, out_uyvy)) << name << " " << in_uyvy << out_uyvy;
      }
}

}  // namespace
