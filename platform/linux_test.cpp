// Like platform/linux.cpp, for the library that the tests link: it can be held to a narrower level.
#include "platform/linux_levels.h"
#include "tests/support/level.h"

static int forced_level = -1;

// Asked once: in a virtual machine the processor's answers take longer than a small frame.
int ppl_test_levels(void) {
  static const int levels = ppl::supported_levels();
  return levels;
}

const char* ppl_test_level_name(int level) {
  return ppl::kLevels[level].tables.name;
}

void ppl_test_force_level(int level) {
  forced_level = level;
}

const ppl::kernels* ppl::choose_kernels() {
  const int levels = ppl_test_levels();
  return &kLevels[forced_level >= 0 && forced_level < levels ? forced_level : levels - 1].tables;
}
