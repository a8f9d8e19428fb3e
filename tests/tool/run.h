// Runs the command line tool in a directory of its own and looks at what it leaves there.
#pragma once

#include <gtest/gtest.h>
#include <stdint.h>

#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;
using Arguments = std::vector<std::string>;

// The shapes of the sample frame and of most made frames.
inline const Arguments sample_size{"-W", "640", "-H", "480"};
inline const Arguments small_size{"-W", "64", "-H", "32"};

struct Result {
  int status;  // -1 if a signal ended it
  std::string out, err;
  long peak;  // the most memory it held, in KiB
};

struct Rgb {
  uint32_t width = 0, height = 0;
  Bytes pixels;  // R, G, B, top row first
  const uint8_t* at(uint32_t x, uint32_t y) const { return &pixels[3 * (size_t{y} * width + x)]; }
};

class Tool : public testing::Test {
 protected:
  Tool();
  ~Tool() override;
  Result run(const Arguments&) const;
  // A line for the shell, in the directory of the test; "$PPL" is the tool.
  Result shell(const std::string& line) const;
  // Runs it and expects success.
  void ok(const Arguments&) const;
  std::string path(const std::string& name) const { return directory_ + "/" + name; }
  void write(const std::string& name, const Bytes&) const;
  Bytes read(const std::string& name) const;
  Rgb png(const std::string& name) const;
  std::vector<std::string> files() const;

 private:
  std::string directory_;
};

Bytes read_whole(const std::string& path);
Rgb read_picture(const std::string& path);
double psnr(const Rgb&, const Rgb&);

inline const std::string sample = SAMPLES "/coffee_640x480_bggr8.raw";
inline const std::string truth = SAMPLES "/coffee_640x480.png";
// The settings that the sample's description names.
inline const Arguments settings{"--black", "12",        "--gains", "397,256,346",
                                "--gbgr",  "--lens-f1", "48",      "--lens-shift1",
                                "24",      "--lens-f2", "0"};

// Every control of frames, none at its default.
inline const Arguments every{"--h-mirror",
                             "--v-mirror",
                             "--black-sites",
                             "9,11,10,8",
                             "--gains",
                             "397,256,346",
                             "--deltas",
                             "3,-2,5",
                             "--sensor-matrix",
                             "400,-20,-110,-100,500,-120,-10,-200,480",
                             "--gbgr",
                             "--gbgr-threshold",
                             "14",
                             "--gamma",
                             "-5",
                             "--contrast",
                             "20",
                             "--saturation",
                             "300",
                             "--hue",
                             "20",
                             "--medium-filter",
                             "--medium-diff",
                             "40",
                             "--medium-hot",
                             "200",
                             "--medium-dead",
                             "24",
                             "--medium-hot-percent",
                             "90",
                             "--medium-dead-percent",
                             "50",
                             "--edge-threshold",
                             "30",
                             "--edge-threshold2",
                             "700",
                             "--edge-factor",
                             "64",
                             "--cfa-t0",
                             "18",
                             "--cfa-t1",
                             "20",
                             "--qual-bmgb",
                             "-60,70",
                             "--qual-grmr",
                             "-80,50",
                             "--qual-sum",
                             "-90,100",
                             "--qual-diff",
                             "-110,90",
                             "--qual-r",
                             "10,240",
                             "--qual-g",
                             "12,230",
                             "--qual-b",
                             "14,220",
                             "--qae",
                             "20,200",
                             "--lens-f1",
                             "48",
                             "--lens-shift1",
                             "23",
                             "--lens-f2",
                             "17",
                             "--lens-shift2",
                             "43",
                             "--lens-origin",
                             "300,250"};

template <class T>
std::vector<T> operator+(std::vector<T> a, const std::vector<T>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}
