// ppl: the library's work from the command line. Exit status: 0 done, 1 the work can't be done, 2 the command line
// asks for what can't be. Every failure is one line on standard error, and no output is left half written.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "commands.h"
#include "failure.h"
#include "help.h"
#include "nearest.h"

namespace {

std::string explain(const CLI::App& app, const CLI::ParseError& error, int count, char** words) {
  const auto chosen = app.get_subcommands();
  const std::string command = chosen.empty() ? "ppl" : "ppl " + chosen[0]->get_name();
  std::string what = error.what();
  if (dynamic_cast<const CLI::RequiredError*>(&error) && chosen.empty()) {
    std::vector<std::string> known;
    for (const CLI::App* sub : app.get_subcommands({}))
      if (!sub->get_group().empty()) known.push_back(sub->get_name());
    what = "a command is needed: ";
    for (size_t i = 0; i < known.size(); ++i)
      what += (i == 0 ? "" : i + 1 < known.size() ? ", " : " or ") + known[i];
    if (count > 1 && !tool::nearest(words[1], known).empty())
      what += "; did you mean " + tool::nearest(words[1], known) + "?";
  } else if (dynamic_cast<const CLI::ExtrasError*>(&error) && !chosen.empty()) {
    std::vector<std::string> known;
    for (const CLI::Option* option : chosen[0]->get_options())
      known.push_back("--" + option->get_single_name());
    const std::vector<std::string> extras = chosen[0]->remaining(true);
    const std::string word = extras.empty() ? "" : extras[0].substr(0, extras[0].find('='));
    if (word.starts_with("-")) {
      what = "there is no option " + word;
      const std::string guess = tool::nearest(word, known);
      if (!guess.empty()) what += "; did you mean " + guess + "?";
    }
  }
  std::replace(what.begin(), what.end(), '\n', ' ');
  while (!what.empty() && what.back() == ' ') what.pop_back();
  return command + ": " + what + " (see " + command + " --help)";
}

// A standard stream that is closed would be the next file opened, and what is said would come into it. In its place
// stands one that takes nothing, and gives nothing.
void keep_standard_streams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (fcntl(stream, F_GETFD) < 0) open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

// Help and version, on standard output.
int show(const CLI::App& app, const CLI::ParseError& what) {
  const int status = app.exit(what);
  if (std::cout.flush()) return status;
  std::cerr << tool::speaker() << ": can't write standard output: " << strerror(errno) << "\n";
  return 1;
}

}  // namespace

int main(int count, char** words) {
  CLI::App app("Video pipeline library for a USB 2.0 camera: from raw frames to pictures", "ppl");
  app.set_version_flag("--version", "ppl " PPL_TOOL_VERSION);
  app.require_subcommand(1);
  app.formatter(std::make_shared<tool::Help>());
  app.footer("Exit status: 0 done, 1 the work can't be done, 2 the command line asks for what can't be.");
  tool::add_convert(app);
  tool::add_compare(app);
  tool::add_stats(app);
  tool::add_deinterlace(app);
  tool::add_simulate(app);
  tool::add_settings(app);
  tool::add_gains(app);
  tool::add_lens(app);
  tool::add_manual(app);
  keep_standard_streams();
  // A write that can't be done answers with an error, and the error is told.
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);
  for (CLI::App* sub : app.get_subcommands({}))
    sub->preparse_callback([sub](size_t) { tool::speaker() = "ppl " + sub->get_name(); });
  try {
    app.parse(count, words);
    return tool::complained() ? 1 : 0;
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return show(app, error);
    std::cerr << explain(app, error, count, words) << "\n";
    return 2;
  } catch (const tool::Misuse& error) {
    std::cerr << tool::speaker() << ": " << error.what() << "\n";
    return 2;
  } catch (const std::bad_alloc&) {
    std::cerr << tool::speaker() << ": there is not enough memory for this\n";
    return 1;
  } catch (const std::exception& error) {
    std::cerr << tool::speaker() << ": " << error.what() << "\n";
    return 1;
  }
}
