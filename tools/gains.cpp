// ppl gains: the white-balance gains to set, from a whole frame or from a grey card in it.
#include <ppl_auto.h>

#include <algorithm>
#include <array>
#include <memory>

#include "commands.h"
#include "failure.h"
#include "file.h"
#include "frame_file.h"
#include "options.h"

namespace tool {
namespace {

struct Gains {
  FrameFile frame;
  std::string region, daylight = "397,256,346", black_sites, output = "-";
  int black = 0;

  void run();
};

std::vector<int> numbers(const std::string& option, const std::string& list, size_t count, int low,
                         int high) {
  std::vector<int> all;
  if (!parse_numbers(list, all) || all.size() != count ||
      std::any_of(all.begin(), all.end(), [&](int n) { return n < low || n > high; }))
    misuse(option, " takes ", count, " numbers from ", low, " to ", high, " with commas between them, not ",
           list);
  return all;
}

void Gains::run() {
  const std::vector<int> suit = numbers("--daylight", daylight, 3, 32, 2047);
  std::vector<int> sites(4, black);
  if (!black_sites.empty()) sites = numbers("--black-sites", black_sites, 4, 0, 255);
  std::vector<int> part;
  if (!region.empty()) part = numbers("--region", region, 4, 0, 16384);
  refuse_same_file(frame.paths[0], output);
  const Bytes raw = frame.read(Format::bayer);
  const uint32_t w = frame.width, h = frame.height;
  std::array<uint32_t, 4> b;
  for (size_t i = 0; i < 4; ++i) b[i] = static_cast<uint32_t>(sites[i]);

  ppl_auto_balance balance;
  if (!part.empty()) {
    std::array<uint32_t, 4> p;
    for (size_t i = 0; i < 4; ++i) p[i] = static_cast<uint32_t>(part[i]);
    if (p[2] < 18 || p[3] < 18 || p[0] + p[2] > w || p[1] + p[3] > h)
      misuse("--region ", region, " won't do: x,y,width,height of a part of the ", w, " x ", h,
             " frame, 18 x 18 samples at least");
    if (!ppl_auto_grey(raw.data(), w, p[0], p[1], p[2], p[3], b[0], b[1], b[2], b[3], &balance))
      fail("the region ", region,
           " is too dark or has samples at the upper end of the range; take a grey that is neither");
  } else {
    ppl_auto_curve curve;
    ppl_auto_daylight_curve(&curve, static_cast<uint32_t>(suit[0]), static_cast<uint32_t>(suit[1]),
                            static_cast<uint32_t>(suit[2]));
    const auto sample = std::make_unique<ppl_auto_sample>();
    ppl_auto_take_frame(sample.get(), raw.data(), w, h, w, b[0], b[1], b[2], b[3]);
    if (!ppl_auto_white(&curve, sample.get(), &balance))
      fail(frame.paths[0], " is too dark or too bright to tell the light by: hardly a sample lies between");
    if (balance.spread > 1000) note("the frame says little about its light: these gains are a guess");
  }
  const std::string line = text(balance.gain[0], ",", balance.gain[1], ",", balance.gain[2], "\n");
  write_file(output, {reinterpret_cast<const uint8_t*>(line.data()), line.size()});
}

}  // namespace

void add_gains(CLI::App& app) {
  CLI::App* command = app.add_subcommand(
      "gains",
      "The white-balance gains to set, from a frame or from a grey card in it: one line that --gains takes");
  const auto state = std::make_shared<Gains>();
  state->frame.add_options(*command, "File of headerless 8-bit Bayer frames; - is standard input");
  command->add_option("--region", state->region,
                      "X,Y,WIDTH,HEIGHT of a part that is grey, for example a card: its gains, exactly");
  command
      ->add_option("--daylight", state->daylight,
                   "R,G,B gains that suit the sensor in daylight of 6500 K; without --region")
      ->capture_default_str();
  command->add_option("--black", state->black, "Black level of all sites")
      ->capture_default_str()
      ->check(in_range(0, 255));
  command->add_option("--black-sites", state->black_sites, "Black levels of B,Gb,Gr,R");
  command->add_option("-o,--output", state->output, "File to write; - is standard output")
      ->capture_default_str();
  command->callback([state] { state->run(); });
}

}  // namespace tool
