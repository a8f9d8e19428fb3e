// ppl gains: the white-balance gains to set, from a frame or from a grey card in it.
#include <ppl_auto.h>

#include <memory>

#include "auto_gains.h"
#include "bayer.h"
#include "commands.h"
#include "failure.h"
#include "file.h"
#include "frame_file.h"
#include "options.h"

namespace tool {
namespace {

struct GainsCommand {
  FrameFile frame;
  Controls controls;
  AutoGains gains;
  std::string region, output = "-";

  void run();
  Gains of_card(const Bytes& mosaic) const;
};

// A region that is known to be grey.
Gains GainsCommand::of_card(const Bytes& mosaic) const {
  std::vector<int> r;
  parse_numbers(region, r);
  const uint32_t x = static_cast<uint32_t>(r[0]), y = static_cast<uint32_t>(r[1]),
                 w = static_cast<uint32_t>(r[2]), h = static_cast<uint32_t>(r[3]);
  if (w < 18 || h < 18 || x + w > frame.width || y + h > frame.height)
    misuse("--region ", region, " won't do: x,y,width,height of a part of the ", frame.width, " x ",
           frame.height, " frame, 18 x 18 samples at least");
  const Settings given = controls.given();
  const auto& black = given.values[control_index("optical_black_b_gb_gr_r")];
  const auto level = [&](size_t i) { return black ? static_cast<uint32_t>((*black)[i]) : 0u; };
  ppl_auto_balance balance;
  if (!ppl_auto_grey(mosaic.data(), frame.width, x, y, w, h, level(0), level(1), level(2), level(3),
                     &balance))
    fail("the region ", region,
         " is too dark or has samples at the upper end of the range; take a grey that is neither");
  return {balance.gain[0], balance.gain[1], balance.gain[2]};
}

void GainsCommand::run() {
  frame.settle(Format::bayer);
  refuse_same_file(frame.paths[0], output);
  const Bytes mosaic = mosaic_of(frame.read(Format::bayer), frame.sensor());
  Gains found;
  if (!region.empty()) {
    found = of_card(mosaic);
  } else {
    gains.start(controls);
    found = gains.next(mosaic, frame.width, frame.height);
    if (!gains.found())
      fail(frame.paths[0], " is too dark or too bright to tell the light by: hardly a sample lies between");
    if (gains.unsure()) note("the frame says little about its light: these gains are a guess");
  }
  OutputFile file(output);
  file.write(text(found[0], ",", found[1], ",", found[2], "\n"));
  file.commit();
}

}  // namespace

void add_gains(CLI::App& app) {
  CLI::App* command = app.add_subcommand(
      "gains", "The white-balance gains of one Bayer frame, one line R,G,B that --gains takes");
  const auto state = std::make_shared<GainsCommand>();
  state->frame.add_options(*command, "File of headerless Bayer frames; - is standard input");
  command
      ->add_option(
          "--region", state->region,
          "A part that is grey, for example a card: its gains, exactly (default: the light is found in the "
          "whole frame)")
      ->check(numbers_in_range(4, 0, 16384))
      ->type_name("X,Y,W,H");
  command->add_option("-o,--output", state->output, "File to write; - is standard output")
      ->type_name("FILE")
      ->capture_default_str();
  state->gains.ask_for_white(*command);
  state->controls.add_options(*command);
  command->callback([state] { state->run(); });
}

}  // namespace tool
