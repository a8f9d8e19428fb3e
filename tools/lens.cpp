// ppl lens: the lens correction that makes a flat frame flat, as the options that convert takes.
#include <ppl_auto.h>

#include <memory>
#include <vector>

#include "commands.h"
#include "failure.h"
#include "file.h"
#include "frame_file.h"

namespace tool {
namespace {

struct Lens {
  FrameFile frame;
  std::string output = "-";

  void run();
};

void Lens::run() {
  refuse_same_file(frame.paths[0], output);
  const Bytes raw = frame.read(Format::bayer);
  if (frame.width < 128 || frame.height < 96 || frame.width > 2048 || frame.height > 2048)
    misuse("a ", frame.width, " x ", frame.height, " frame won't do: 128 x 96 to 2048 x 2048");
  std::vector<uint32_t> scratch(768);
  ppl_auto_lens lens;
  // The library corrects shading before it subtracts the black level.
  if (!ppl_auto_fit_lens(raw.data(), frame.width, frame.height, frame.width, 0, 0, 0, 0, scratch.data(),
                         &lens))
    fail(frame.paths[0],
         " is not a flat frame: take an evenly lit white surface, or a white sheet over the lens, ",
         "with all samples from 16 to 249 and none below a quarter of the brightest");
  const std::string line = text("--lens-f1 ", lens.f1, " --lens-shift1 ", lens.f1_rshift_count, " --lens-f2 ",
                                lens.f2, " --lens-shift2 ", lens.f2_rshift_count, " --lens-origin ",
                                lens.origin_x, ",", lens.origin_y, "\n");
  write_file(output, {reinterpret_cast<const uint8_t*>(line.data()), line.size()});
}

}  // namespace

void add_lens(CLI::App& app) {
  CLI::App* command = app.add_subcommand(
      "lens", "The lens correction that makes a flat frame flat: one line of options that convert takes");
  const auto state = std::make_shared<Lens>();
  state->frame.add_options(*command,
                           "File of headerless 8-bit Bayer frames of a white surface; - is standard input");
  command->add_option("-o,--output", state->output, "File to write; - is standard output")
      ->capture_default_str();
  command->callback([state] { state->run(); });
}

}  // namespace tool
