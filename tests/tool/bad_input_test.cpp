// Every mistake gets one line that says what is wrong and what would be right, a status that is not 0, and leaves no
// file behind.
#include <sys/stat.h>

#include <algorithm>

#include "run.h"

namespace {

struct Mistake {
  Arguments words;
  int status;
  std::vector<std::string> says;
};

class BadInput : public Tool {
 protected:
  BadInput() {
    write("small.raw", Bytes(64 * 32, 50));
    write("frame.yuyv", Bytes(64 * 32 * 2, 50));
    write("field", Bytes(64 * 32, 50));
    write("odd.png", read_whole(truth));
    write("fake.png", Bytes(100, 1));
  }
};

TEST_F(BadInput, OneLineAndNoFile) {
  const std::vector<std::string> before = files();
  const Arguments s{"-W", "64", "-H", "32"};
  const Arguments convert{"convert", "small.raw", "-o", "x.png"}, good = convert + s;
  const std::vector<Mistake> mistakes{
      {{}, 2, {"convert, compare, stats, deinterlace or simulate"}},
      {{"convrt"}, 2, {"did you mean convert?"}},
      {{"convert"}, 2, {"FRAME"}},
      {{"convert", "small.raw", "-W", "64", "-H", "32"}, 2, {"--output"}},
      {good + Arguments{"--qualty", "3"}, 2, {"--qualty", "--quality"}},
      {good + Arguments{"-q", "16"}, 2, {"16", "0 to 15"}},
      {good + Arguments{"-q", "5"}, 1, {"quality 5", "15"}},
      {good + Arguments{"--gains", "1,2"}, 2, {"3 whole numbers", "0 to 2047"}},
      {good + Arguments{"--gains", "1,2,2048"}, 2, {"2048", "0 to 2047"}},
      {good + Arguments{"--black", "256"}, 2, {"256", "0 to 255"}},
      {good + Arguments{"--saturation", "513"}, 2, {"513", "0 to 512"}},
      {good + Arguments{"--gamma", "x"}, 2, {"--gamma", "x"}},
      {good + Arguments{"--format", "gif"}, 2, {"gif", "png"}},
      {good + Arguments{"--decimation", "2"}, 2, {"-1 to 1"}},
      {good + Arguments{"--qual-r", "9,3"}, 1, {"--qual-r", "minimum"}},
      {convert + Arguments{"-W", "65", "-H", "32"}, 1, {"65", "multiples of 16", "-W 64 --stride 65"}},
      {convert + Arguments{"-W", "2048", "-H", "32"}, 1, {"2048", "2016"}},
      {convert + Arguments{"-W", "64", "-H", "31"}, 1, {"31", "multiples of 2"}},
      {convert + Arguments{"-W", "64", "-H", "4096"}, 1, {"4096", "2048"}},
      {convert + Arguments{"-W", "64", "-H", "32", "--stride", "60"}, 1, {"60", "64"}},
      {convert + Arguments{"-W", "64", "-H", "34"}, 1, {"too short", "2048", "2176"}},
      {convert + Arguments{"-W", "64", "-H", "30"}, 1, {"2048 bytes", "1920"}},
      {convert + Arguments{"-W", "64", "-H", "16"}, 1, {"2 frames", "--frame"}},
      {good + Arguments{"--frame", "1"}, 1, {"no frame 1"}},
      {convert + Arguments{"-W", "0", "-H", "16"}, 1, {"width 0"}},
      {convert + Arguments{"-W", "-64", "-H", "16"}, 2, {"-64"}},
      {Arguments{"convert", "small.raw", "-o", "x.i420", "-W", "48", "-H", "32"}, 1, {"multiples of 32"}},
      {Arguments{"convert", "small.raw", "-o", "x.rgb32"} + s, 1, {"quality 15", "rgb32"}},
      {Arguments{"convert", "small.raw", "-o", "x.yuyv", "-q", "13"} + s, 1, {"quality 13", "yuyv"}},
      {Arguments{"convert", "small.raw", "-o", "x.rgb24", "--decimation", "-1"} + s,
       1,
       {"quality 15", "png"}},
      {Arguments{"convert", "small.raw", "-o", "x.yuyv", "--decimation", "-1"} + s, 1, {"uyvy"}},
      {Arguments{"convert", "small.raw", "-o", "x.i420", "--decimation", "-1", "-q", "10"} + s, 1, {"rgb24"}},
      {Arguments{"convert", "small.raw", "-o", "x.uyvy", "--scale", "128x64"} + s, 1, {"i420, yuyv"}},
      {good + Arguments{"--scale", "100x64"}, 1, {"100", "multiples of 32"}},
      {good + Arguments{"--scale", "128x16"}, 1, {"16", "32"}},
      {good + Arguments{"--scale", "big"}, 1, {"800x600"}},
      {Arguments{"convert", "none.raw", "-o", "x.png"} + s, 1, {"none.raw", "No such file"}},
      {Arguments{"convert", "small.raw", "-o", "x.gif"} + s, 1, {"x.gif", ".png"}},
      {Arguments{"convert", "small.raw", "-o", "none/x.png"} + s, 1, {"none/x.png"}},
      {Arguments{"convert", "small.raw", "-o", ".", "--format", "png"} + s, 1, {"directory"}},
      {Arguments{"convert", "small.raw", "-o", "small.raw", "--format", "png"} + s, 1, {"input file"}},
      {Arguments{"convert", "frame.yuyv", "--input", "yuyv", "-o", "x.png", "--gains", "1,2,3"} + s,
       1,
       {"--gains"}},
      {Arguments{"convert", "frame.yuyv", "--input", "yuyv", "-o", "x.uyvy"} + s, 1, {"i420, rgb24"}},
      {Arguments{"convert", "frame.yuyv", "--input", "jpeg", "-o", "x.png"} + s, 2, {"jpeg", "yuyv"}},
      {Arguments{"convert", "small.raw", "-o", "/dev/full", "--format", "png"} + s,
       1,
       {"/dev/full", "No space"}},
      {Arguments{"compare", "small.raw", "-o", "x.png", "--truth", "odd.png"} + s,
       1,
       {"640 x 480", "64 x 32"}},
      {Arguments{"compare", "small.raw", "-o", "x.png", "--truth", "fake.png"} + s, 1, {"fake.png", "PNG"}},
      {Arguments{"compare", "small.raw", "-o", "x.i420"} + s, 1, {".png"}},
      {Arguments{"compare", "small.raw", "-W", "48", "-H", "32", "-o", "x.png"}, 1, {"multiples of 32"}},
      {Arguments{"stats", "small.raw", "-q", "4"} + s, 1, {"quality 4"}},
      {Arguments{"stats", "small.raw", "-W", "64", "-H", "33"}, 1, {"33"}},
      {Arguments{"deinterlace", "field", "-o", "x.png"} + s, 1, {"KEPT LATER"}},
      {Arguments{"deinterlace", "field", "small.raw", "-o", "x.png", "-W", "64", "-H", "34"},
       1,
       {"2048", "2176"}},
      {Arguments{"deinterlace", "field", "--frames", "-o", "x.y4m"} + s, 1, {"2048", "4096"}},
      {Arguments{"deinterlace", "field", "field", "-o", "x.png", "--size", "100x100"} + s,
       1,
       {"100x100", "64x32"}},
      {Arguments{"deinterlace", "field", "field", "-o", "x.png", "-W", "65", "-H", "32"},
       1,
       {"multiples of 16"}},
      {Arguments{"deinterlace", "field", "field", "-o", "x.y4m", "--rate", "fast"} + s, 1, {"25/1"}},
      {Arguments{"deinterlace", "field", "field", "-o", "x.png", "--threshold", "766"} + s,
       2,
       {"766", "0 to 765"}},
      {Arguments{"deinterlace", "field", "none", "-o", "x.y4m"} + s, 1, {"none"}},
  };
  for (const Mistake& mistake : mistakes) {
    const Result result = run(mistake.words);
    std::string line;
    for (const std::string& word : mistake.words) line += word + " ";
    EXPECT_EQ(result.status, mistake.status) << line << "\n" << result.err;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << line << "\n" << result.err;
    EXPECT_EQ(result.out, "") << line;
    for (const std::string& word : mistake.says)
      EXPECT_NE(result.err.find(word), std::string::npos) << line << "\n"
                                                          << word << " is not in: " << result.err;
    ASSERT_EQ(files(), before) << line;
  }
}

TEST_F(BadInput, KeepsTheFileThatWasThere) {
  const Bytes old{1, 2, 3};
  write("x.png", old);
  EXPECT_EQ(run({"convert", "small.raw", "-o", "x.png", "-W", "64", "-H", "34"}).status, 1);
  EXPECT_EQ(read("x.png"), old);
}

TEST_F(BadInput, DevicesStayDevices) {
  EXPECT_EQ(
      run({"convert", "small.raw", "-o", "/dev/null", "--format", "png", "-W", "64", "-H", "32"}).status, 0);
  struct stat device;
  ASSERT_EQ(stat("/dev/null", &device), 0);
  EXPECT_TRUE(S_ISCHR(device.st_mode));
}

TEST_F(BadInput, HelpAndVersion) {
  EXPECT_EQ(run({"--version"}).out, "ppl " VERSION "\n");
  for (const Arguments& words : {Arguments{"--help"},
                                 {"convert", "--help"},
                                 {"compare", "--help"},
                                 {"stats", "--help"},
                                 {"deinterlace", "--help"}}) {
    const Result result = run(words);
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.out.find("Usage"), std::string::npos);
  }
  EXPECT_NE(run({"convert", "--help"}).out.find("(each 0 to 2047, default 256,256,256)"), std::string::npos);
}

}  // namespace
