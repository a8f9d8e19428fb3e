#include "failure.h"

#include <cstdio>

namespace tool {

std::string& speaker() {
  static std::string name = "ppl";
  return name;
}

void note(const std::string& line) {
  fprintf(stderr, "%s: note: %s\n", speaker().c_str(), line.c_str());
}

}  // namespace tool
