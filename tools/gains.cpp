// ppl gains: the white-balance gains to set, from a frame or from a grey card in it.
#include <ppl_auto.h>

#include <memory>

#include "auto_gains.h"
#include "bayer.h"
#include "commands.h"
#include "failure.h"
#include "frame_file.h"
#include "options.h"

namespace tool {
namespace {

struct GainsCommand {
  FrameFile frame;
  Controls controls;
  AutoGains gains;
  std::string region;

  void run();
  Gains of_card(const Bytes& mosaic) const;
};

// A region that is known to be grey.
Gains GainsCommand::of_card(const Bytes& mosaic) const {
  std::vector<int> r;
  parse_numbers(region, r);
  const uint32_t x = static_cast<uint32_t>(r[0]), y = static_cast<uint32_t>(r[1]),
                 w = static_cast<uint32_t>(r[2]), h = static_cast<uint32_t>(r[3]);
  if (x + w > frame.width || y + h > frame.height)
    misuse("--region ", region, " reaches beyond the frame of ", frame.width, " x ", frame.height);
  const Settings given = controls.given();
  const auto& black = given.values[control_index("optical_black_b_gb_gr_r")];
  const auto level = [&](size_t i) { return black ? static_cast<uint32_t>((*black)[i]) : 0u; };
  ppl_auto_balance balance;
  if (!ppl_auto_grey(mosaic.data(), frame.width, x, y, w, h, level(0), level(1), level(2), level(3),
                     &balance))
    fail("no gains from the region ", region,
         ": fewer than 16 blocks of 4 x 4 in it are neither dark nor cut; take a larger one, or a frame of "
         "another "
         "exposure");
  return {balance.gain[0], balance.gain[1], balance.gain[2]};
}

void GainsCommand::run() {
  frame.settle(Format::bayer);
  Job job;
  job.sensor = frame.sensor();
  BayerWorker worker(job, Controls(), Format::i420);
  worker.source() = frame.read(Format::bayer);
  const Bytes& mosaic = worker.prepare();
  Gains found;
  if (!region.empty()) {
    found = of_card(mosaic);
  } else {
    gains.start(controls);
    found = gains.next(mosaic, frame.width, frame.height);
    if (!gains.found()) fail("no gains from this frame: it holds no colours that are neither dark nor cut");
  }
  printf("%u,%u,%u\n", found[0], found[1], found[2]);
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
          "A grey card or another grey surface in the frame: X,Y,W,H in samples (default: the light is found "
          "in the whole frame)")
      ->check(CLI::Validator(
          [](std::string& list) {
            std::vector<int> r;
            const bool four = parse_numbers(list, r) && r.size() == 4 && r[0] >= 0 && r[1] >= 0 &&
                              r[2] >= 4 && r[3] >= 4 && r[0] < 65536 && r[1] < 65536 && r[2] < 65536 &&
                              r[3] < 65536;
            return four ? std::string() : text("takes X,Y,W,H in samples, W and H from 4 up, not ", list);
          },
          ""))
      ->type_name("X,Y,W,H");
  state->gains.ask_for_white();
  state->controls.add_options(*command);
  command->callback([state] { state->run(); });
}

}  // namespace tool
