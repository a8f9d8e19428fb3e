// Every mistake gets one line that says what is wrong and what would be right, a status that is not 0, and leaves no
// file behind.
#include <sys/stat.h>

#include <algorithm>
#include <sstream>

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
    write("empty.raw", {});
  }
};

TEST_F(BadInput, OneLineAndNoFile) {
  const std::vector<std::string> before = files();
  const Arguments s{"-W", "64", "-H", "32"};
  const Arguments convert{"convert", "small.raw", "-o", "x.png"}, good = convert + s;
  const std::vector<Mistake> mistakes{
      {{}, 2, {"convert, compare, stats, deinterlace, simulate, settings, gains or lens"}},
      {{"convrt"}, 2, {"did you mean convert?"}},
      {{"convert"}, 2, {"FRAME"}},
      {{"convert", "small.raw", "-W", "64", "-H", "32"}, 2, {"--output"}},
      {good + Arguments{"--qualty", "3"}, 2, {"--qualty", "--quality"}},
      {good + Arguments{"-q", "16"}, 2, {"16", "0 to 15"}},
      {good + Arguments{"-q", "abc"}, 2, {"--quality", "from 0 to 15, not abc"}},
      {good + Arguments{"-q", "5"}, 2, {"quality 5", "15"}},
      {good + Arguments{"--gains", "1,2"}, 2, {"3 whole numbers", "0 to 2047"}},
      {good + Arguments{"--gains", "1,2,2048"}, 2, {"2048", "0 to 2047"}},
      {good + Arguments{"--black", "256"}, 2, {"256", "0 to 255"}},
      {good + Arguments{"--saturation", "513"}, 2, {"513", "0 to 512"}},
      {good + Arguments{"--gamma", "x"}, 2, {"--gamma", "from -32 to 32, not x"}},
      {good + Arguments{"--format", "gif"}, 2, {"gif", "png"}},
      {good + Arguments{"--decimation", "2"}, 2, {"-1 to 1"}},
      {good + Arguments{"--qual-r", "9,3"}, 2, {"--qual-r", "minimum"}},
      {convert + Arguments{"-W", "65", "-H", "32"}, 2, {"65", "multiples of 16", "-W 64 --stride 65"}},
      {convert + Arguments{"-W", "2600", "-H", "32"}, 2, {"2600", "-W 2592 --stride 2600"}},
      {convert + Arguments{"-W", "64", "-H", "31"}, 2, {"31", "multiples of 2", "-H 30 --stride 64"}},
      {convert + Arguments{"-W", "64", "-H", "32", "--stride", "60"}, 2, {"60", "64"}},
      {convert + Arguments{"-W", "abc", "-H", "32"}, 2, {"--width", "whole number from 1 to 16384, not abc"}},
      {convert + Arguments{"-W", "4294967360", "-H", "32"}, 2, {"--width", "from 1 to 16384"}},
      {good + Arguments{"--skip", "-1"}, 2, {"--skip", "from 0 to", "not -1"}},
      {good + Arguments{"--frame", "-1"}, 2, {"--frame", "from 0 to", "not -1"}},
      {convert + Arguments{"-W", "32", "-H", "32"}, 1, {"2 frames", "--frame 0", "10 to 16 bits"}},
      {convert + Arguments{"-W", "64", "-H", "34"}, 1, {"too short", "2048", "2176"}},
      {convert + Arguments{"-W", "64", "-H", "30"}, 1, {"2048 bytes", "1920"}},
      {convert + Arguments{"-W", "64", "-H", "16"}, 1, {"2 frames", "--frame"}},
      {good + Arguments{"--frame", "1"}, 1, {"no frame 1"}},
      {convert + Arguments{"-W", "0", "-H", "16"}, 2, {"--width", "not 0"}},
      {convert + Arguments{"-W", "-64", "-H", "16"}, 2, {"-64"}},
      {Arguments{"convert", "small.raw", "-o", "x.i420", "-W", "48", "-H", "32"}, 2, {"multiples of 32"}},
      {Arguments{"convert", "small.raw", "-o", "x.rgb32"} + s, 2, {"quality 15", "rgb32"}},
      {Arguments{"convert", "small.raw", "-o", "x.yuyv", "-q", "13"} + s, 2, {"quality 13", "yuyv"}},
      {Arguments{"convert", "small.raw", "-o", "x.rgb24", "--decimation", "-1"} + s,
       2,
       {"quality 15", "png"}},
      {Arguments{"convert", "small.raw", "-o", "x.yuyv", "--decimation", "-1"} + s, 2, {"uyvy"}},
      {Arguments{"convert", "small.raw", "-o", "x.i420", "--decimation", "-1", "-q", "10"} + s, 2, {"rgb24"}},
      {Arguments{"convert", "small.raw", "-o", "x.uyvy", "--scale", "128x64"} + s, 2, {"i420, yuyv"}},
      {good + Arguments{"--scale", "100x64"}, 2, {"100", "multiples of 32"}},
      {good + Arguments{"--scale", "128x16"}, 2, {"16", "32"}},
      {good + Arguments{"--scale", "big"}, 2, {"800x600"}},
      {{"convert", "empty.raw", "-W", "64", "-o", "x.png"}, 1, {"no size", "0 bytes", "-H"}},
      {{"gains", "empty.raw", "-W", "64"}, 1, {"no size", "0 bytes", "-H"}},
      {{"lens", "empty.raw", "-W", "128"}, 1, {"no size", "0 bytes", "-H"}},
      {Arguments{"convert", "none.raw", "-o", "x.png"} + s, 1, {"none.raw", "No such file"}},
      {Arguments{"convert", "small.raw", "-o", "x.gif"} + s, 2, {"x.gif", ".png"}},
      {Arguments{"convert", "small.raw", "-o", "none/x.png"} + s, 1, {"none/x.png"}},
      {Arguments{"convert", "small.raw", "-o", ".", "--format", "png"} + s, 1, {"directory"}},
      {Arguments{"convert", "small.raw", "-o", "small.raw", "--format", "png"} + s, 1, {"input file"}},
      {Arguments{"convert", "frame.yuyv", "--input", "yuyv", "-o", "x.png", "--gains", "1,2,3"} + s,
       2,
       {"--gains"}},
      {Arguments{"convert", "frame.yuyv", "--input", "yuyv", "-o", "x.uyvy"} + s, 2, {"i420, y4m, rgb24"}},
      {Arguments{"convert", "frame.yuyv", "--input", "jpeg", "-o", "x.png"} + s, 2, {"jpeg", "yuyv"}},
      {Arguments{"convert", "small.raw", "-o", "/dev/full", "--format", "png"} + s,
       1,
       {"/dev/full", "No space"}},
      {Arguments{"compare", "small.raw", "-o", "x.png", "--truth", "odd.png"} + s,
       1,
       {"640 x 480", "64 x 32"}},
      {Arguments{"compare", "small.raw", "-o", "x.png", "--truth", "fake.png"} + s, 1, {"fake.png", "PNG"}},
      {Arguments{"compare", "small.raw", "-o", "x.jpg"} + s, 2, {"end the output's name in .png, not x.jpg"}},
      {Arguments{"compare", "small.raw", "-o", "x.i420"} + s, 2, {".png"}},
      {Arguments{"compare", "small.raw", "-W", "48", "-H", "32", "-o", "x.png"}, 2, {"multiples of 32"}},
      {Arguments{"stats", "small.raw", "-q", "4"} + s, 2, {"quality 4"}},
      {Arguments{"stats", "small.raw", "-W", "64", "-H", "33"}, 2, {"33"}},
      {Arguments{"deinterlace", "field", "-o", "x.png"} + s, 2, {"KEPT LATER"}},
      {Arguments{"deinterlace", "field", "small.raw", "-o", "x.png", "-W", "64", "-H", "34"},
       1,
       {"2048", "2176"}},
      {Arguments{"deinterlace", "field", "--frames", "-o", "x.y4m"} + s, 1, {"2048", "4096"}},
      {Arguments{"deinterlace", "field", "field", "-o", "x.png", "--size", "100x100"} + s,
       2,
       {"100x100", "64x32"}},
      {Arguments{"deinterlace", "field", "field", "-o", "x.png", "-W", "65", "-H", "32"},
       2,
       {"multiples of 16"}},
      {Arguments{"deinterlace", "field", "field", "-o", "x.y4m", "--rate", "fast"} + s, 2, {"25/1"}},
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

// Advice that was given works.
TEST_F(BadInput, AFrameTooWideCanBeCut) {
  write("wide.raw", Bytes(2592 * 32, 50));
  ok({"convert", "wide.raw", "-o", "x.png", "-W", "2016", "--stride", "2592", "-H", "32"});
  EXPECT_EQ(png("x.png").width, 2016u);
  ok({"convert", "small.raw", "-o", "y.png", "-W", "64", "-H", "30", "--stride", "64"});
  EXPECT_EQ(png("y.png").height, 30u);
}

// What is asked for in vain is told, and the work goes on.
TEST_F(BadInput, IdleOptionsGetANote) {
  const Arguments s{"-W", "64", "-H", "32"};
  const auto says = [](const Result& result, const std::string& words) {
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), words.empty() ? 0 : 1) << result.err;
    EXPECT_NE(result.err.find(words), std::string::npos) << result.err;
  };
  const Arguments convert = Arguments{"convert", "small.raw", "-o", "x.png"} + s;
  says(run(convert + Arguments{"--medium-filter"}), "--medium-filter does nothing in quality 15");
  says(run(convert + Arguments{"--medium-filter", "-q", "2"}), "");
  for (const char* option : {"--noise-g", "--noise-r", "--noise-b"})
    says(run(convert + Arguments{option, "3"}), std::string(option) + " does nothing");
  says(run(Arguments{"stats", "small.raw", "--medium-filter"} + s),
       "--medium-filter does nothing in quality 15");
  says(run(Arguments{"compare", "small.raw", "-o", "x.png", "--noise-r", "3"} + s), "--noise-r does nothing");
}

TEST_F(BadInput, AFileTooLargeForTheSystemLeavesNothing) {
  const std::vector<std::string> before = files();
  const Result result = shell("ulimit -f 1; \"$PPL\" convert small.raw -W 64 -H 32 -o x.ppm");
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.err.find("x.ppm"), std::string::npos) << result.err;
  EXPECT_EQ(files(), before);
}

TEST_F(BadInput, AClosedPipeIsTold) {
  // The reader has opened the pipe and is gone before the tool begins.
  const Result result = shell(
      "mkfifo pipe; true < pipe & exec 4> pipe; wait; "
      "\"$PPL\" convert small.raw -W 64 -H 32 --format ppm -o - >&4; echo $? > status");
  EXPECT_EQ(read("status"), (Bytes{'1', '\n'}));
  EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
}

// Input without an end is read no further than it must be.
// The address sanitizer maps more than any limit on addresses lets it.
#if defined(__SANITIZE_ADDRESS__)
constexpr char kFourGigabytes[] = "";
#else
constexpr char kFourGigabytes[] = "ulimit -v 4000000; ";
#endif

TEST_F(BadInput, EndlessInput) {
  const std::vector<std::string> before = files();
  for (const std::string line :
       {"convert /dev/zero -W 64 -H 32 -o x.png", "stats /dev/zero -W 64 -H 32",
        "compare /dev/zero -W 64 -H 32 -o x.png", "deinterlace /dev/zero /dev/zero -W 64 -H 32 -o x.png",
        "compare small.raw --truth /dev/zero -W 64 -H 32 -o x.png"}) {
    const Result result = shell(kFourGigabytes + ("timeout 200 \"$PPL\" " + line));
    EXPECT_EQ(result.status, 1) << line << "\n" << result.err;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << line << "\n" << result.err;
    EXPECT_NE(result.err.find("/dev/zero"), std::string::npos) << line << "\n" << result.err;
    EXPECT_EQ(files(), before);
  }
  ok({"convert", "/dev/zero", "--frame", "3", "-W", "64", "-H", "32", "-o", "x.png"});
}

// A picture of another size is refused before there is memory for it: this one claims 2.7 GB.
TEST_F(BadInput, APictureThatClaimsToBeLarge) {
  const auto claim = [&](uint32_t side) {
    Bytes head{'I', 'H', 'D', 'R'};
    for (int i = 0; i < 2; ++i)
      for (int shift = 24; shift >= 0; shift -= 8) head.push_back(static_cast<uint8_t>(side >> shift));
    for (const int b : {8, 2, 0, 0, 0}) head.push_back(static_cast<uint8_t>(b));
    uint32_t crc = 0xffffffff;
    for (const uint8_t b : head) {
      crc ^= b;
      for (int i = 0; i < 8; ++i) crc = crc >> 1 ^ (crc & 1 ? 0xedb88320 : 0);
    }
    Bytes file{0x89, 'P', 'N', 'G', 13, 10, 26, 10, 0, 0, 0, 13};
    file.insert(file.end(), head.begin(), head.end());
    for (int shift = 24; shift >= 0; shift -= 8) file.push_back(static_cast<uint8_t>(~crc >> shift));
    const Bytes tail{0, 0, 0, 0, 'I', 'D', 'A', 'T', 0x35, 0xaf, 0x06, 0x1e};
    file.insert(file.end(), tail.begin(), tail.end());
    write("large.png", file);
  };
  for (const uint32_t side : {30000u, 500000u}) {
    claim(side);
    const Result result =
        run({"compare", "small.raw", "--truth", "large.png", "-W", "64", "-H", "32", "-o", "x.png"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("large.png"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find(std::to_string(side)), std::string::npos) << result.err;
    EXPECT_LT(result.peak, 300000);
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
  // Anew in lines: the sentence may have been broken anywhere.
  std::istringstream words(run({"convert", "--help"}).out);
  std::string help;
  for (std::string word; words >> word;) help += word + " ";
  EXPECT_NE(help.find("(each 0 to 2047, default 256,256,256)"), std::string::npos);
}

size_t longest_line(const std::string& text) {
  size_t longest = 0;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);)
    longest = std::max(longest, line.size() - (line.ends_with('\r') ? 1 : 0));
  return longest;
}

// Help is as wide as the terminal, 80 columns where there is none; only a word that is longer stands over.
TEST_F(BadInput, HelpKeepsWithinTheTerminal) {
  for (const char* command :
       {"", "convert", "compare", "stats", "deinterlace", "simulate", "settings", "gains", "lens"}) {
    const std::string ask = std::string("$PPL ") + command + " --help";
    const size_t plain = longest_line(shell("unset COLUMNS; " + ask).out);
    EXPECT_LE(plain, 80u) << command;
    EXPECT_GT(plain, 60u) << command;
    const size_t wide = longest_line(shell("COLUMNS=110 " + ask).out);
    EXPECT_LE(wide, 110u) << command;
    EXPECT_GT(wide, 80u) << command;
    EXPECT_LE(longest_line(shell("COLUMNS=60 " + ask).out), 60u) << command;
  }
  for (const char* senseless : {"0", "3", "x", "-1", "99999999999999999999"})
    EXPECT_EQ(shell(std::string("COLUMNS=") + senseless + " $PPL --help").status, 0) << senseless;
  if (shell("command -v script > /dev/null").status != 0) GTEST_SKIP() << "no script, which makes a terminal";
  const Result shown =
      shell("unset COLUMNS; export PPL; script -qec 'stty cols 64; $PPL gains --help' /dev/null < /dev/null");
  EXPECT_LE(longest_line(shown.out), 64u);
  EXPECT_GT(longest_line(shown.out), 55u);
}

}  // namespace
