// How help is written: within the width of the terminal, and one way to say what an option takes.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace tool {

// What stands behind an option: N, a name like FILE, nothing for a flag.
std::string value_of(const CLI::Option&);

// What an option does, with the value it has where none is given.
std::string sentence_of(const CLI::Option&);

// Text in lines of at most width columns where its words allow, all but the first behind indent spaces.
std::string wrapped(const std::string& plain, size_t width, size_t indent = 0);

class Help : public CLI::Formatter {
 public:
  Help();
  std::string make_help(const CLI::App*, std::string name, CLI::AppFormatMode) const override;
  std::string make_description(const CLI::App*) const override;
  std::string make_footer(const CLI::App*) const override;
  std::string make_subcommand(const CLI::App*) const override;
  std::string make_option(const CLI::Option*, bool is_positional) const override;

 private:
  std::string row(const std::string& name, const std::string& what) const;
  size_t width_;
};

}  // namespace tool
