// The main function of the test programs that use GoogleTest: its own options, and
//   --seed N   the seed of every random test
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "support/random.h"

namespace {

bool given = false;
uint64_t given_seed = 0;
uint64_t last_seed = 0;

// Says how to repeat a failure.
class seed_printer : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo&) override { last_seed = 0; }
  void OnTestEnd(const testing::TestInfo& test) override {
    if (test.result()->Failed() && last_seed != 0)
      std::printf("--gtest_filter=%s.%s --seed %llu repeats this\n", test.test_suite_name(), test.name(),
                  static_cast<unsigned long long>(last_seed));
  }
};

}  // namespace

uint64_t support::seed(uint64_t own) {
  return last_seed = given ? given_seed : own;
}

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--seed") != 0 || i + 1 == argc) {
      std::fprintf(stderr, "%s: not known: %s; there are --seed N and GoogleTest's options\n", argv[0],
                   argv[i]);
      return 2;
    }
    given = true;
    given_seed = std::strtoull(argv[++i], nullptr, 10);
  }
  testing::UnitTest::GetInstance()->listeners().Append(new seed_printer);
  return RUN_ALL_TESTS();
}
