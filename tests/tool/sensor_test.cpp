// What sensors deliver: phases, bits, packing, frames larger than one call, and shapes guessed from the size.
#include <algorithm>

#include "run.h"

namespace {

class Sensor : public Tool {
 protected:
  static const Bytes& raw() {
    static const Bytes frame = read_whole(sample);
    return frame;
  }
  // Samples of the sample's frame with more bits, in words.
  static Bytes words(unsigned bits, bool big) {
    Bytes out;
    for (const uint8_t s : raw()) {
      const unsigned word = static_cast<unsigned>(s) << (bits - 8);
      const auto low = static_cast<uint8_t>(word), high = static_cast<uint8_t>(word >> 8);
      out.push_back(big ? high : low);
      out.push_back(big ? low : high);
    }
    return out;
  }
};

// Eight bits with zeros below them are the eight bits, whatever they come in.
TEST_F(Sensor, MoreBits) {
  ok(Arguments{"convert", sample, "-o", "a.i420"} + sample_size);
  const Bytes want = read("a.i420");
  for (const unsigned bits : {10u, 12u, 14u, 16u})
    for (const bool big : {false, true}) {
      write("words.raw", words(bits, big));
      ok(Arguments{"convert", "words.raw", "-o", "b.i420", "--bits", std::to_string(bits), "--byte-order",
                   big ? "big" : "little"} +
         sample_size);
      EXPECT_EQ(read("b.i420"), want) << bits << big;
    }
  Bytes packed10, packed12;
  for (size_t i = 0; i < raw().size(); i += 4) {
    packed10.insert(packed10.end(), raw().begin() + static_cast<long>(i),
                    raw().begin() + static_cast<long>(i + 4));
    packed10.push_back(0);
  }
  for (size_t i = 0; i < raw().size(); i += 2) {
    packed12.insert(packed12.end(), raw().begin() + static_cast<long>(i),
                    raw().begin() + static_cast<long>(i + 2));
    packed12.push_back(0);
  }
  write("p10.raw", packed10);
  write("p12.raw", packed12);
  ok(Arguments{"convert", "p10.raw", "-o", "b.i420", "--packed"} + sample_size);
  EXPECT_EQ(read("b.i420"), want);
  ok(Arguments{"convert", "p12.raw", "-o", "b.i420", "--packed", "--bits", "12"} + sample_size);
  EXPECT_EQ(read("b.i420"), want);
}

// The picture starts at the first B site; the column or row that is missing at the far end is the one before the last.
TEST_F(Sensor, Phases) {
  for (const auto& [name, dx, dy] : {std::tuple{"gbrg", 1u, 0u}, {"grbg", 0u, 1u}, {"rggb", 1u, 1u}}) {
    Bytes straight;
    for (size_t y = 0; y < 480; ++y)
      for (size_t x = 0; x < 640; ++x) {
        const size_t from_y = y + dy < 480 ? y + dy : 478, from_x = x + dx < 640 ? x + dx : 638;
        straight.push_back(raw()[640 * from_y + from_x]);
      }
    write("straight.raw", straight);
    ok(Arguments{"convert", "straight.raw", "-o", "a.i420"} + sample_size);
    ok(Arguments{"convert", sample, "-o", "b.i420", "--pattern", name} + sample_size);
    EXPECT_EQ(read("a.i420"), read("b.i420")) << name;
  }
}

// A simulated sensor of any kind gives the photograph back.
TEST_F(Sensor, SimulatedSensors) {
  const Rgb whole = read_picture(truth);
  for (const std::string pattern : {"bggr", "gbrg", "grbg", "rggb"}) {
    const uint32_t dx = pattern[0] == 'r' || pattern[1] == 'b', dy = pattern[0] == 'r' || pattern[2] == 'b';
    Rgb right = whole;  // from the first B site on
    for (uint32_t y = 0; y < 480; ++y)
      for (uint32_t x = 0; x < 640; ++x)
        std::copy_n(whole.at(std::min(x + dx, 639u), std::min(y + dy, 479u)), 3,
                    &right.pixels[3 * (640 * y + x)]);
    for (const Arguments& kind :
         {Arguments{"--bits", "8"}, Arguments{"--bits", "10"},
          Arguments{"--bits", "12", "--byte-order", "big"}, Arguments{"--bits", "10", "--packed"}}) {
      ok(Arguments{"simulate", truth, "-o", "s.raw", "--pattern", pattern, "--black", "0"} + kind);
      ok(Arguments{"convert", "s.raw", "-o", "s.png", "--gains", "397,256,346", "--pattern", pattern} + kind +
         sample_size);
      EXPECT_GT(psnr(png("s.png"), right), 26) << pattern << " " << kind[1] << kind.back();
    }
  }
}

TEST_F(Sensor, RecordingsOfWords) {
  Bytes two = words(12, false);
  const Bytes second = words(12, false);
  two.insert(two.end(), second.rbegin(), second.rend());
  for (size_t i = second.size(); i < two.size(); i += 2) std::swap(two[i], two[i + 1]);
  write("two.raw", two);
  Bytes joined;
  for (const char* frame : {"0", "1"}) {
    ok(Arguments{"convert", "two.raw", "--frame", frame, "--bits", "12", "--pattern", "rggb", "-o",
                 "one.i420"} +
       sample_size);
    joined = joined + read("one.i420");
  }
  ok(Arguments{"convert", "two.raw", "--all", "--bits", "12", "--pattern", "rggb", "-o", "all.i420"} +
     sample_size);
  EXPECT_EQ(read("all.i420"), joined);
}

// A frame beyond one call of the library: what is seen at the seams is what a frame of that part alone shows.
TEST_F(Sensor, LargeFrames) {
  constexpr size_t w = 2592, h = 1944, left = 976, top = 732;
  Bytes large;
  for (size_t y = 0; y < h; ++y)
    for (size_t x = 0; x < w; ++x) large.push_back(raw()[640 * (y % 480) + x % 640]);
  write("large.raw", large);
  const Arguments shading{"--lens-f1", "3", "--lens-shift1", "24", "--lens-f2", "0", "--gbgr"};
  for (const char* quality : {"2", "15", "0"})
    for (const bool mirrored : {false, true}) {
      const Arguments how = Arguments{"-q", quality, "--black", "12"} + shading +
                            (mirrored ? Arguments{"--h-mirror", "--v-mirror"} : Arguments{});
      ok(Arguments{"convert", "large.raw", "-W", "2592", "-H", "1944", "-o", "a.ppm"} + how);
      ok(Arguments{"convert", "large.raw", "--stride", "2592", "--skip", std::to_string(top * w + left), "-o",
                   "b.ppm", "--lens-origin",
                   std::to_string(w / 2 - left) + "," + std::to_string(h / 2 - top)} +
         how + sample_size);
      const Bytes a = read("a.ppm"), b = read("b.ppm");
      ASSERT_EQ(a.size(), 3 * w * h + 17);
      for (size_t y = 16; y < 464; ++y)
        for (size_t x = 16; x < 624; ++x) {
          const size_t ax = mirrored ? w - 1 - (left + 639 - x) : left + x,
                       ay = mirrored ? h - 1 - (top + 479 - y) : top + y;
          ASSERT_TRUE(std::equal(&a[17 + 3 * (w * ay + ax)], &a[17 + 3 * (w * ay + ax) + 3],
                                 &b[15 + 3 * (640 * y + x)]))
              << quality << " " << x << " " << y;
        }
    }
  ok({"convert", "large.raw", "-W", "2560", "-H", "1944", "-o", "half.png", "--decimation", "1", "-q", "2",
      "--stride", "2592"});
  EXPECT_EQ(png("half.png").width, 1280u);
}

TEST_F(Sensor, ShapesAreGuessedAndSaid) {
  ok(Arguments{"convert", sample, "-o", "a.i420"} + sample_size);
  const Result plain = run({"convert", sample, "-o", "b.i420"});
  EXPECT_EQ(plain.status, 0);
  EXPECT_NE(plain.err.find("640 x 480"), std::string::npos) << plain.err;
  EXPECT_NE(plain.err.find("-W 640 -H 480"), std::string::npos) << plain.err;
  EXPECT_EQ(read("a.i420"), read("b.i420"));
  for (const unsigned bits : {10u, 12u, 14u}) {
    write("words.raw", words(bits, false));
    for (const Arguments& given : {Arguments{}, sample_size}) {
      const Result guessed = run(Arguments{"convert", "words.raw", "-o", "b.i420"} + given);
      EXPECT_EQ(guessed.status, 0) << guessed.err;
      EXPECT_NE(guessed.err.find("--bits " + std::to_string(bits)), std::string::npos) << guessed.err;
      EXPECT_EQ(read("a.i420"), read("b.i420"));
    }
  }
  // Easy to correct: options that are given are not guessed at, and nothing is said.
  write("words.raw", words(10, false));
  ok(Arguments{"convert", "words.raw", "-o", "b.i420", "--bits", "8", "--frame", "1"} + sample_size);
  EXPECT_NE(read("a.i420"), read("b.i420"));
  write("wide.raw", Bytes(800 * 64, 9));
  const Result width = run({"convert", "wide.raw", "-W", "800", "-o", "b.png"});
  EXPECT_EQ(width.status, 0) << width.err;
  EXPECT_EQ(png("b.png").height, 64u);
}

TEST_F(Sensor, MisuseIsTold) {
  write("odd.raw", Bytes(12345));
  const std::vector<std::string> before = files();
  const std::vector<std::tuple<Arguments, int, std::string>> mistakes{
      {{"convert", "odd.raw", "-o", "x.png"}, 1, "name -W and -H"},
      {{"convert", "-", "-o", "x.png"}, 2, "-W and -H are needed"},
      {{"convert", "none.raw", "-o", "x.png"}, 1, "none.raw"},
      {Arguments{"convert", sample, "-o", "x.png", "--bits", "9"} + sample_size, 2, "--bits"},
      {Arguments{"convert", sample, "-o", "x.png", "--bits", "14", "--packed"} + sample_size, 2, "10 or 12"},
      {Arguments{"convert", sample, "-o", "x.png", "--byte-order", "big"} + sample_size, 2,
       "--byte-order is for words"},
      {Arguments{"convert", sample, "-o", "x.png", "--pattern", "bgrg"} + sample_size, 2, "bgrg"},
      {Arguments{"convert", sample, "-o", "x.png", "--bits", "12", "--stride", "700"} + sample_size, 2,
       "1280"},
      {Arguments{"convert", sample, "-o", "x.png", "--bits", "12"} + sample_size, 1, "614400"},
      {Arguments{"convert", sample, "-o", "x.png", "--input", "yuyv", "--pattern", "rggb"} + sample_size, 2,
       "--pattern"},
      {{"convert", sample, "-o", "x.png", "-W", "2600", "-H", "64"}, 2, "-W 2592 --stride 2600"},
      {{"convert", sample, "-o", "x.i420", "-W", "2576", "-H", "64"}, 2, "multiples of 32"},
      {{"convert", sample, "-o", "x.png", "-W", "2592", "-H", "64", "--decimation", "-1"}, 2, "to 2016"},
      {{"convert", sample, "-o", "x.png", "-W", "2592", "-H", "64", "-q", "4"}, 2, "to 2016"},
      {{"stats", sample, "-W", "2592", "-H", "64"}, 2, "up to 2016 x 2048"},
  };
  for (const auto& [words, status, says] : mistakes) {
    const Result result = run(words);
    EXPECT_EQ(result.status, status) << result.err;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_NE(result.err.find(says), std::string::npos) << says << " is not in " << result.err;
    EXPECT_EQ(files(), before);
  }
}

}  // namespace
