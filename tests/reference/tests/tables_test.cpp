// The tables of the plain reference against digests of an independent computation (tests/digests/tables.csv).
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "reference/state.h"

namespace {

std::string digest(const void* bytes, std::size_t size) {
  uint64_t h = 0xcbf29ce484222325u;
  for (std::size_t i = 0; i < size; ++i) h = (h ^ static_cast<const uint8_t*>(bytes)[i]) * 0x100000001b3u;
  char text[17];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(h));
  return text;
}

TEST(ReferenceTables, Digests) {
  std::ifstream file(PPL_TEST_DIGESTS "/tables.csv");
  ASSERT_TRUE(file);
  std::string line;
  std::getline(file, line);
  ref::state s;
  int rows = 0;
  while (std::getline(file, line)) {
    std::replace(line.begin(), line.end(), ',', ' ');
    std::istringstream fields(line);
    std::string call, expected;
    fields >> call;
    std::vector<int32_t> a(call == "ppl_set_contrast_c" ? 1 : call == "ppl_set_contrast_xy" ? 2 : 8);
    for (int32_t& value : a) fields >> value;
    int result = -1;
    fields >> result >> expected;
    ASSERT_TRUE(fields) << line;
    bool answered;
    std::string found;
    if (call == "ppl_set_contrast_c") {
      answered = s.set_contrast_c(a[0], nullptr, nullptr);
      found = digest(s.contrast_table.data(), 256);
    } else if (call == "ppl_set_contrast_xy") {
      answered = s.set_contrast_xy(static_cast<uint32_t>(a[0]), static_cast<uint32_t>(a[1]));
      found = digest(s.rgb_contrast_gamma_table.data(), 256);
    } else {
      ASSERT_EQ(call, "ppl_set_lens_correction");
      std::vector<uint16_t> table(static_cast<std::size_t>(a[0]) * (std::max(a[3], a[1] - a[3]) + 1));
      const int32_t bytes = static_cast<int32_t>(2 * table.size());
      answered = s.set_lens_correction(a[0], a[1], a[2], a[3], table.data(), bytes, a[4], a[5], a[6], a[7]);
      found = digest(table.data(), bytes);
    }
    EXPECT_EQ(answered, result == 1) << line;
    EXPECT_EQ(found, expected) << line;
    ++rows;
  }
  EXPECT_GT(rows, 90);
}

}  // namespace
