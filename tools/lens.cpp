// ppl lens: the correction of lens shading, fitted from a frame of an even surface.
#include <ppl_auto.h>

#include <memory>

#include "bayer.h"
#include "commands.h"
#include "failure.h"
#include "file.h"
#include "frame_file.h"
#include "settings.h"

namespace tool {
namespace {

struct LensCommand {
  FrameFile frame;
  std::string as = "options", output = "-";

  void run();
};

void LensCommand::run() {
  frame.settle(Format::bayer);
  refuse_same_file(frame.paths[0], output);
  const Bytes mosaic = mosaic_of(frame.read(Format::bayer), frame.sensor());
  if (frame.width < 128 || frame.height < 96 || frame.width > 2048 || frame.height > 2048)
    misuse("a ", frame.width, " x ", frame.height, " frame won't do: 128 x 96 to 2048 x 2048");
  // The library corrects shading in front of the black level.
  uint32_t scratch[768];
  ppl_auto_lens found;
  if (!ppl_auto_fit_lens(mosaic.data(), frame.width, frame.height, frame.width, 0, 0, 0, 0, scratch, &found))
    fail(frame.paths[0],
         " is not a flat frame: take an evenly lit white surface, or a white sheet over the lens, with all "
         "samples "
         "from 16 to 249 and none below a quarter of the brightest");
  Settings settings;
  settings.lens = Settings::Lens{};
  settings.lens->numbers = {found.f1, found.f1_rshift_count, found.f2, found.f2_rshift_count};
  settings.lens->origin = {found.origin_x, found.origin_y};
  OutputFile file(output);
  file.write(written(settings, as));
  file.commit();
}

}  // namespace

void add_lens(CLI::App& app) {
  CLI::App* command = app.add_subcommand(
      "lens", "Fit the correction of lens shading from a frame of an evenly lit white surface");
  const auto state = std::make_shared<LensCommand>();
  state->frame.add_options(*command, "File of headerless Bayer frames; - is standard input");
  command->add_option("--as", state->as, "options, json, c or element")
      ->capture_default_str()
      ->check(CLI::IsMember({"options", "json", "c", "element"}));
  command->add_option("-o,--output", state->output, "File to write; - is standard output")
      ->type_name("FILE")
      ->capture_default_str();
  command->callback([state] { state->run(); });
}

}  // namespace tool
