// Recordings: many frames in, numbered pictures or one stream out.
#include <algorithm>

#include "run.h"

namespace {

class Recording : public Tool {
 protected:
  // Frames that differ, cut from the sample.
  static Bytes frame(size_t number) {
    static const Bytes raw = read_whole(sample);
    Bytes cut;
    for (size_t y = 0; y < 32; ++y) {
      const auto row =
          raw.begin() + static_cast<long>((40 * number % 400 + y) / 2 * 2 * 640 + 32 * number % 512);
      cut.insert(cut.end(), row, row + 64);
    }
    return cut;
  }
  static Bytes frames(size_t first, size_t count) {
    Bytes all;
    for (size_t i = first; i < first + count; ++i) all = all + frame(i);
    return all;
  }
  static Bytes text(const std::string& words) { return Bytes(words.begin(), words.end()); }
  // What the tool makes of each frame alone.
  Bytes one_by_one(size_t first, size_t count, const Arguments& more) {
    Bytes all;
    for (size_t i = first; i < first + count; ++i) {
      write("one.raw", frame(i));
      ok(Arguments{"convert", "one.raw", "-o", "one.out"} + small_size + more);
      all = all + read("one.out");
    }
    return all;
  }
};

TEST_F(Recording, AStreamIsTheFramesOneByOne) {
  write("a.raw", frames(0, 9));
  write("b.raw", frames(9, 4));
  for (const char* format : {"i420", "yuyv", "uyvy", "rgb24"}) {
    const Arguments to{"--format", format};
    const Bytes want = one_by_one(0, 13, to);
    for (const char* jobs : {"1", "2", "3", "8"}) {
      ok(Arguments{"convert", "a.raw", "b.raw", "-o", "x", "--jobs", jobs} + to + small_size);
      EXPECT_EQ(read("x"), want) << format << " " << jobs;
    }
    ok(Arguments{"convert", "a.raw", "--all", "-o", "x"} + to + small_size);
    EXPECT_EQ(read("x"), Bytes(want.begin(), want.begin() + static_cast<long>(want.size() / 13 * 9)));
  }
}

TEST_F(Recording, EveryQualityIsTheSameByAnyNumberOfJobs) {
  write("a.raw", frames(0, 24));
  for (const char* quality : {"0", "1", "2", "3", "9", "10", "11", "12", "13", "15"}) {
    ok(Arguments{"convert", "a.raw", "--all", "-o", "one.i420", "-j", "1", "-q", quality} + small_size);
    ok(Arguments{"convert", "a.raw", "--all", "-o", "many.i420", "-j", "8", "-q", quality} + small_size);
    EXPECT_EQ(read("one.i420"), read("many.i420")) << quality;
  }
  // The raw mosaic's mark moves on from frame to frame, at widths that are multiples of 160.
  write("wide.raw", Bytes(160 * 32 * 12, 9));
  for (const char* jobs : {"1", "8"})
    ok({"convert", "wide.raw", "--all", "-o", std::string(jobs) + ".i420", "-j", jobs, "-q", "4", "-W", "160",
        "-H", "32"});
  EXPECT_EQ(read("1.i420"), read("8.i420"));
}

TEST_F(Recording, PicturesAreNumbered) {
  write("a.raw", frames(0, 12));
  ok(Arguments{"convert", "a.raw", "--all", "-o", "p.png", "-j", "4"} + small_size);
  for (size_t i = 0; i < 12; ++i) {
    write("one.raw", frame(i));
    ok(Arguments{"convert", "one.raw", "-o", "one.png"} + small_size);
    EXPECT_EQ(read(i < 10 ? "p-000" + std::to_string(i) + ".png" : "p-00" + std::to_string(i) + ".png"),
              read("one.png"));
  }
  EXPECT_EQ(files().size(), 12u + 3);
}

TEST_F(Recording, FromAPipe) {
  write("a.raw", frames(0, 7));
  const Bytes want = one_by_one(0, 7, {"--format", "i420"});
  const Result result =
      shell("cat a.raw | \"$PPL\" convert - --all -W 64 -H 32 --format i420 -o - -j 2 > x.i420");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(read("x.i420"), want);
}

// Rows with a gap behind each; behind the last row of all it may be missing.
TEST_F(Recording, RowsWithGaps) {
  Bytes padded;
  for (size_t i = 0; i < 5; ++i) {
    const Bytes one = frame(i);
    for (size_t y = 0; y < 32; ++y) {
      padded.insert(padded.end(), one.begin() + static_cast<long>(64 * y),
                    one.begin() + static_cast<long>(64 * y + 64));
      padded.resize(padded.size() + 7, 0xee);
    }
  }
  const Bytes want = one_by_one(0, 5, {"--format", "i420"});
  for (const size_t missing : {0, 7}) {
    write("padded.raw", Bytes(padded.begin(), padded.end() - static_cast<long>(missing)));
    ok(Arguments{"convert", "padded.raw", "--all", "--stride", "71", "-o", "x.i420"} + small_size);
    EXPECT_EQ(read("x.i420"), want);
    EXPECT_EQ(shell("cat padded.raw | \"$PPL\" convert - --all --stride 71 -W 64 -H 32 -o y.i420").status, 0);
    EXPECT_EQ(read("y.i420"), want);
  }
}

TEST_F(Recording, TakesTheMemoryOfAFewFrames) {
  write("a.raw", {});
  EXPECT_EQ(shell("truncate -s 614400000 a.raw").status, 0);
  const Result result = run({"convert", "a.raw", "--all", "-W", "640", "-H", "480", "-o", "/dev/null",
                             "--format", "i420", "-q", "13"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_LT(result.peak, 200000);
}

// What is cut short is refused: before anything is written where the size is known, at its end in a pipe.
TEST_F(Recording, CutShort) {
  write("a.raw", Bytes(64 * 32 * 3 + 5));
  const std::vector<std::string> before = files();
  const Result known = run(Arguments{"convert", "a.raw", "--all", "-o", "p.png"} + small_size);
  EXPECT_EQ(known.status, 1);
  EXPECT_NE(known.err.find("6149 bytes"), std::string::npos) << known.err;
  EXPECT_EQ(files(), before);
  const Result pipe = shell("cat a.raw | \"$PPL\" convert - --all -W 64 -H 32 -o x.i420 -j 3");
  EXPECT_EQ(pipe.status, 1);
  EXPECT_NE(pipe.err.find("ends within its frame 3"), std::string::npos) << pipe.err;
  EXPECT_EQ(std::count(pipe.err.begin(), pipe.err.end(), '\n'), 1) << pipe.err;
  EXPECT_EQ(files(), before);
  const Result nothing = shell("\"$PPL\" convert - --all -W 64 -H 32 -o x.i420 < /dev/null");
  EXPECT_EQ(nothing.status, 1);
  EXPECT_NE(nothing.err.find("too short"), std::string::npos) << nothing.err;
}

// A bad file among pictures is told, and the others are made; a stream with a gap would be no recording.
TEST_F(Recording, OtherWorkGoesOn) {
  write("a.raw", frame(0));
  write("bad.raw", Bytes(100));
  write("b.raw", frame(1));
  const Arguments names{"a.raw", "bad.raw", "none.raw", "b.raw"};
  const Result result = run(Arguments{"convert"} + names + Arguments{"-o", "p.png"} + small_size);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 2) << result.err;
  EXPECT_NE(result.err.find("bad.raw"), std::string::npos) << result.err;
  EXPECT_NE(result.err.find("none.raw"), std::string::npos) << result.err;
  ok(Arguments{"convert", "b.raw", "-o", "b.png"} + small_size);
  EXPECT_EQ(read("p-0001.png"), read("b.png"));
  EXPECT_EQ(read("p-0000.png").empty(), false);
  const std::vector<std::string> before = files();
  const Result stream = run(Arguments{"convert"} + names + Arguments{"-o", "x.i420"} + small_size);
  EXPECT_EQ(stream.status, 1);
  EXPECT_EQ(std::count(stream.err.begin(), stream.err.end(), '\n'), 1) << stream.err;
  EXPECT_EQ(files(), before);
}

TEST_F(Recording, AFullDiskEndsIt) {
  write("a.raw", frames(0, 6));
  for (const char* jobs : {"1", "4"}) {
    const Result result =
        run(Arguments{"convert", "a.raw", "--all", "-o", "/dev/full", "--format", "i420", "-j", jobs} +
            small_size);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_NE(result.err.find("/dev/full"), std::string::npos) << result.err;
    const Result limited =
        shell(std::string("ulimit -f 4; \"$PPL\" convert a.raw --all -W 64 -H 32 -o x.i420 -j ") + jobs);
    EXPECT_EQ(limited.status, 1);
    EXPECT_NE(limited.err.find("x.i420"), std::string::npos) << limited.err;
    EXPECT_EQ(files(), std::vector<std::string>{"a.raw"});
  }
}

TEST_F(Recording, ProgressOnATerminalAlone) {
  write("a.raw", frames(0, 3));
  const std::string convert = " | \"$PPL\" convert - --all -W 64 -H 32 -o x.i420";
  write("slow", text("cat a.raw; sleep 0.6; cat a.raw; sleep 0.3; cat a.raw"));
  const Result quiet = shell("sh slow" + convert);
  EXPECT_EQ(quiet.status, 0);
  EXPECT_EQ(quiet.err, "");
  if (shell("command -v script > /dev/null").status != 0) GTEST_SKIP() << "no script, which makes a terminal";
  // Frames come until progress is told, for minutes if need be.
  write("slower", text("for i in $(seq 1200); do cat a.raw; sleep 0.1; "
                       "if tr -d '\\r' < shown | grep -q 'frames, .* a second'; then break; fi; done"));
  write("line", text("PPL='" TOOL "'; sh slower" + convert));
  write("shown", {});
  const Result shown = shell("script -qfec 'sh line' shown < /dev/null");
  EXPECT_EQ(shown.status, 0);
  EXPECT_NE(shown.out.find("frames, "), std::string::npos) << shown.out;
  EXPECT_NE(shown.out.find(" a second"), std::string::npos) << shown.out;
}

TEST_F(Recording, MisuseIsTold) {
  write("a.raw", frames(0, 2));
  const std::vector<std::string> before = files();
  for (const auto& [more, says] :
       {std::pair{Arguments{"--all", "--frame", "1"}, "--frame"},
        {Arguments{"--all", "--jobs", "9"}, "from 1 to 8"},
        {Arguments{"--all", "--format", "y4m", "--rate", "fast"}, "25/1"},
        {Arguments{"--all", "--format", "y4m", "--out-chroma", "camera"}, "y4m"},
        {Arguments{"--format", "png", "--out-chroma", "bt601"}, "--out-chroma"},
        {Arguments{"--format", "i420", "--out-range", "video"}, "--out-chroma bt601"},
        {Arguments{"--format", "png", "--out-range", "full"}, "--out-range"}}) {
    const Result result = run(Arguments{"convert", "a.raw", "-o", "x"} + small_size + more);
    EXPECT_EQ(result.status, 2) << result.err;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_NE(result.err.find(says), std::string::npos) << says << " is not in " << result.err;
    EXPECT_EQ(files(), before);
  }
}

}  // namespace
