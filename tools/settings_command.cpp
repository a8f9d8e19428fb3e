// ppl settings: controls from options and a settings file, written as others take them.
#include <ppl_qualities.h>

#include <memory>

#include "commands.h"
#include "failure.h"
#include "file.h"
#include "options.h"
#include "settings.h"

namespace tool {
namespace {

struct SettingsCommand {
  Controls controls;
  uint32_t quality = PPL_QUALITY_DEFAULT;
  CLI::Option* quality_option = nullptr;
  std::string as = "json", output = "-";
  bool all = false;

  void run();
};

void SettingsCommand::run() {
  Settings settings = controls.given();
  if (quality_option->count()) settings.quality = quality;
  if (all) settings = filled(settings);
  OutputFile file(output);
  file.write(written(settings, as));
  file.commit();
}

}  // namespace

void add_settings(CLI::App& app) {
  CLI::App* command = app.add_subcommand(
      "settings", "Write controls as a JSON file, as options, as C or as properties of the stream element");
  const auto state = std::make_shared<SettingsCommand>();
  command->add_option("--as", state->as, "json, options, c or element")
      ->capture_default_str()
      ->check(CLI::IsMember({"json", "options", "c", "element"}));
  command->add_flag("--full", state->all, "Every control, those at their default too");
  command->add_option("-o,--output", state->output, "File to write; - is standard output")
      ->type_name("FILE")
      ->capture_default_str();
  state->quality_option = command->add_option("-q,--quality", state->quality, "Reconstruction")
                              ->check(in_range(0, PPL_QUALITIES - 1));
  state->controls.add_options(*command);
  command->callback([state] { state->run(); });
}

}  // namespace tool
