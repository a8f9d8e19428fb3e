// What the tool says when it can't go on: one line, caught in main().
#pragma once

#include <sstream>
#include <stdexcept>
#include <string>

namespace tool {

// The work can't be done: a file, a device or memory is not as it must be. Exit status 1.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The command line asks for what can't be, whatever the files hold. Exit status 2.
struct Misuse : Failure {
  using Failure::Failure;
};

template <class... Parts>
std::string text(const Parts&... parts) {
  std::ostringstream line;
  (line << ... << parts);
  return line.str();
}

template <class... Parts>
[[noreturn]] void fail(const Parts&... parts) {
  throw Failure(text(parts...));
}

template <class... Parts>
[[noreturn]] void misuse(const Parts&... parts) {
  throw Misuse(text(parts...));
}

// Who is speaking: "ppl convert".
std::string& speaker();

// A line on standard error about a part of the work that can't be done while the rest goes on: the exit status will
// be 1.
void complain(const std::string& line);
bool complained();

// A line on standard error about something that does not stop the work.
void note(const std::string& line);

}  // namespace tool
