#include "failure.h"

#include <cstdio>

namespace tool {

std::string& speaker() {
  static std::string name = "ppl";
  return name;
}

namespace {
bool any_complaint = false;
}

void complain(const std::string& line) {
  any_complaint = true;
  fprintf(stderr, "%s: %s\n", speaker().c_str(), line.c_str());
}

bool complained() {
  return any_complaint;
}

void note(const std::string& line) {
  fprintf(stderr, "%s: note: %s\n", speaker().c_str(), line.c_str());
}

}  // namespace tool
