// What the tool says when it can't go on: one line, caught in main(), exit status 1.
#pragma once

#include <sstream>
#include <stdexcept>
#include <string>

namespace tool {

struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
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

}  // namespace tool
