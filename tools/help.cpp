#include "help.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace tool {
namespace {

constexpr size_t usual_width = 80;

// COLUMNS where somebody says it, else the terminal's, else as wide as terminals are.
size_t columns() {
  size_t width = 0;
  if (const char* said = getenv("COLUMNS")) width = strtoul(said, nullptr, 10);
  struct winsize size;
  if (width == 0 && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0) width = size.ws_col;
  return width == 0 ? usual_width : std::clamp<size_t>(width, 40, 120);
}

}  // namespace

std::string value_of(const CLI::Option& option) {
  if (option.get_items_expected_max() == 0) return {};
  const std::string type = option.get_type_name().substr(0, option.get_type_name().find(':'));
  return type == "UINT" || type == "INT" ? "N" : type == "FLOAT" ? "X" : type == "TEXT" ? "WORD" : type;
}

std::string sentence_of(const CLI::Option& option) {
  std::string what = option.get_description();
  const std::string standard = option.get_default_str();
  if (!standard.empty() && what.find("default") == std::string::npos) {
    // Into the brackets of a range, if that is how the sentence ends.
    const size_t bracket = what.rfind('(');
    if (bracket != std::string::npos && what.back() == ')' &&
        what.find_first_of("-0123456789", bracket) == bracket + 1)
      what.replace(what.size() - 1, 1, ", default " + standard + ")");
    else
      what += " (default " + standard + ")";
  }
  return what;
}

std::string wrapped(const std::string& plain, size_t width, size_t indent) {
  std::istringstream words(plain);
  std::string out, word;
  for (size_t column = indent; words >> word; column += word.size()) {
    if (!out.empty() && column + 1 + word.size() > width) {
      out += "\n" + std::string(indent, ' ');
      column = indent;
    } else if (!out.empty()) {
      out += ' ';
      ++column;
    }
    out += word;
  }
  return out;
}

Help::Help() : width_(columns()) {
  column_width(width_ < 72 ? 16 : 27);
}

std::string Help::make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const {
  std::string out = Formatter::make_help(app, name, mode);
  for (size_t at; (at = out.find("\n\n\n")) != std::string::npos;) out.erase(at, 1);
  return out;
}

std::string Help::make_description(const CLI::App* app) const {
  return wrapped(app->get_description(), width_) + "\n";
}

std::string Help::make_footer(const CLI::App* app) const {
  return wrapped(app->get_footer(), width_) + "\n";
}

std::string Help::row(const std::string& name, const std::string& what) const {
  const size_t column = get_column_width();
  std::string out = "  " + name;
  if (out.size() + 2 > column) out += "\n";
  out.append(column - (out.back() == '\n' ? 0 : out.size()), ' ');
  return out + wrapped(what, width_, column) + "\n";
}

std::string Help::make_subcommand(const CLI::App* command) const {
  return row(command->get_display_name(true), command->get_description());
}

std::string Help::make_option(const CLI::Option* option, bool is_positional) const {
  std::string name;
  if (is_positional) {
    name = option->get_single_name();
    if (option->get_items_expected_max() > 1) name += "...";
  } else {
    for (const std::string& one : option->get_snames()) name += (name.empty() ? "-" : ", -") + one;
    for (const std::string& one : option->get_lnames()) name += (name.empty() ? "--" : ", --") + one;
    if (const std::string value = value_of(*option); !value.empty()) name += " " + value;
  }
  std::string what = sentence_of(*option);
  if (option->get_required() && !is_positional) what += " (required)";
  for (const CLI::Option* other : option->get_excludes()) what += " (not with " + other->get_name() + ")";
  return row(name, what);
}

}  // namespace tool
