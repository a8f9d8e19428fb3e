// The subcommands. Each adds itself to the parser and does its work when it was chosen.
#pragma once

#include <CLI/CLI.hpp>

namespace tool {

void add_convert(CLI::App&);
void add_compare(CLI::App&);
void add_stats(CLI::App&);
void add_deinterlace(CLI::App&);
void add_simulate(CLI::App&);
void add_settings(CLI::App&);
void add_gains(CLI::App&);
void add_lens(CLI::App&);
void add_manual(CLI::App&);

}  // namespace tool
