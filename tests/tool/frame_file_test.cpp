// Which bytes of a file become a frame.
#include <filesystem>

#include "run.h"

namespace {

class FrameFile : public Tool {};

// One frame of a large file takes the memory of one frame.
TEST_F(FrameFile, ReadsNoMoreThanItMust) {
  write("large.raw", read_whole(sample));
  std::filesystem::resize_file(path("large.raw"), 640 * 480 * 2000);
  const Result result =
      run({"convert", "large.raw", "--frame", "0", "-W", "640", "-H", "480", "-o", "a.png"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_LT(result.peak, 300000);  // the file has 614 MB
  ok({"convert", sample, "-W", "640", "-H", "480", "-o", "b.png"});
  EXPECT_EQ(read("a.png"), read("b.png"));
}

TEST_F(FrameFile, FramesOfAPipe) {
  Bytes two(640 * 480, 77);
  const Bytes raw = read_whole(sample);
  two.insert(two.end(), raw.begin(), raw.end());
  write("two.raw", two);
  ok({"convert", sample, "-W", "640", "-H", "480", "-o", "a.png"});
  EXPECT_EQ(shell("cat two.raw | \"$PPL\" convert - --frame 1 -W 640 -H 480 -o b.png").status, 0);
  EXPECT_EQ(read("a.png"), read("b.png"));
  EXPECT_EQ(shell("cat two.raw | \"$PPL\" convert - --skip 307200 -W 640 -H 480 -o b.png").status, 0);
  EXPECT_EQ(read("a.png"), read("b.png"));
  for (const char* line :
       {"convert - -W 640 -H 480 -o c.png", "convert - --frame 2 -W 640 -H 480 -o c.png",
        "convert - -W 640 -H 478 -o c.png", "convert - --skip 307201 -W 640 -H 480 -o c.png"}) {
    const Result result = shell(std::string("cat two.raw | \"$PPL\" ") + line);
    EXPECT_EQ(result.status, 1) << line << result.err;
    EXPECT_FALSE(std::filesystem::exists(path("c.png")));
  }
}

// A part of a frame: 128 x 64 from column 32 and row 400 on. Nothing behind the part needs to be there.
TEST_F(FrameFile, CutsAPartOut) {
  const Bytes raw = read_whole(sample);
  Bytes part;
  for (size_t y = 400; y < 464; ++y)
    part.insert(part.end(), raw.begin() + static_cast<long>(640 * y + 32),
                raw.begin() + static_cast<long>(640 * y + 160));
  write("part.raw", part);
  ok({"convert", "part.raw", "-W", "128", "-H", "64", "-o", "a.png"});
  ok({"convert", sample, "-W", "128", "-H", "64", "--stride", "640", "--skip", "256032", "-o", "b.png"});
  EXPECT_EQ(read("a.png"), read("b.png"));
  write("short.raw", Bytes(raw.begin(), raw.begin() + 640 * 463 + 160));
  ok({"convert", "short.raw", "-W", "128", "-H", "64", "--stride", "640", "--skip", "256032", "-o", "b.png"});
  EXPECT_EQ(read("a.png"), read("b.png"));
  // The raw mosaic too, whose rows the library takes back to back only.
  ok({"convert", sample, "-q", "4", "-W", "128", "-H", "64", "--stride", "640", "--skip", "256032", "-o",
      "c.png"});
  EXPECT_EQ(png("c.png").at(0, 0)[1], part[0]);
  EXPECT_EQ(png("c.png").at(127, 63)[1], part.back());
}

}  // namespace
