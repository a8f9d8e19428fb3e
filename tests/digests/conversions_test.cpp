// The digests of digests/conversions.csv, against the plain reference or, with TEST_LIBRARY, against the library at
// every vector level.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "reference/convert.h"
#include "support/fenced.h"
#ifdef TEST_LIBRARY
#include "support/convert_exports.h"
#include "support/level.h"
#endif

namespace {

struct digest_row {
  std::string call;
  uint32_t in_width, in_height, out_width, out_height, threshold;
  bool h_mirror, v_mirror;
  int result;
  std::string output;
};

std::vector<digest_row> read_rows() {
  std::ifstream file(PPL_TEST_DIGESTS "/conversions.csv");
  std::vector<digest_row> rows;
  std::string line;
  std::getline(file, line);
  while (std::getline(file, line)) {
    for (char& c : line)
      if (c == ',') c = ' ';
    std::istringstream in(line);
    digest_row r;
    if (in >> r.call >> r.in_width >> r.in_height >> r.out_width >> r.out_height >> r.threshold >>
        r.h_mirror >> r.v_mirror >> r.result >> r.output)
      rows.push_back(r);
  }
  return rows;
}

std::string digest(const uint8_t* data, size_t n) {
  char text[17];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(support::digest_of(data, n)));
  return text;
}

struct fields {
  support::fenced earlier, kept, later;
  explicit fields(size_t n) : earlier(n), kept(n), later(n) {
    earlier.fill_noise(1);
    kept.fill_noise(2);
    uint32_t x = 3;
    for (size_t k = 0; k < n; ++k) {
      const uint32_t change = (support::step(x) >> 24) % 23;
      later.data()[k] = static_cast<uint8_t>(earlier.data()[k] + (k / 64 % 3 == 0 ? change : 0));
    }
  }
};

const fields& fields_of(const digest_row& r) {
  static std::map<size_t, fields> made;
  const size_t n = size_t{2} * r.in_width * r.in_height;
  return made.try_emplace(n, n).first->second;
}

size_t output_bytes(const ref::conversion& c, const digest_row& r) {
  return static_cast<size_t>(
      ref::frame_bytes(c.output, static_cast<int32_t>(r.out_width), static_cast<int32_t>(r.out_height)));
}

std::string name_of(const digest_row& r) {
  std::ostringstream out;
  out << r.call << ' ' << r.in_width << 'x' << r.in_height << " to " << r.out_width << 'x' << r.out_height
      << " T " << r.threshold << (r.h_mirror ? " h" : "") << (r.v_mirror ? " v" : "");
  return out.str();
}

#ifndef TEST_LIBRARY
TEST(conversion_digests, reference) {
  const std::vector<digest_row> rows = read_rows();
  ASSERT_EQ(rows.size(), 293u);
  for (const digest_row& r : rows) {
    const ref::conversion* c = ref::find_conversion(r.call.c_str());
    ASSERT_NE(c, nullptr) << r.call;
    const fields& f = fields_of(r);
    const bool one = !c->takes_fields();
    support::fenced output(output_bytes(*c, r));
    output.fill_noise(99);
    ref::picture picture({output.data(), output.data() + output.size()});
    ref::convert_state s;
    s.threshold = static_cast<int>(r.threshold);
    s.h_mirror = r.h_mirror;
    s.v_mirror = r.v_mirror;
    const ref::converted done = ref::convert(
        s, *c,
        {f.earlier.data(), one ? f.earlier.data() : f.kept.data(), f.later.data(),
         reinterpret_cast<uintptr_t>(output.data()), r.in_width, r.in_height, r.out_width, r.out_height},
        picture);
    EXPECT_EQ(done.result, r.result != 0) << name_of(r);
    EXPECT_EQ(digest(picture.bytes.data(), picture.bytes.size()), r.output) << name_of(r);
  }
}

#else
TEST(conversion_digests, library) {
  const std::vector<digest_row> rows = read_rows();
  ASSERT_EQ(rows.size(), 293u);
  for (int level = 0; level < ppl_test_levels(); ++level) {
    ppl_test_force_level(level);
    for (const digest_row& r : rows) {
      const convert_export* e = find_export(r.call.c_str());
      ASSERT_NE(e, nullptr) << r.call;
      const ref::conversion* c = ref::find_conversion(r.call.c_str());
      const fields& f = fields_of(r);
      support::fenced output(output_bytes(*c, r));
      output.fill_noise(99);
      ppl_context* context = ppl_init();
      ASSERT_NE(context, nullptr);
      ppl_set_intl_3T_threshold(context, r.threshold);
      ppl_set_h_mirror(context, r.h_mirror);
      ppl_set_v_mirror(context, r.v_mirror);
      const uint8_t* kept = c->takes_fields() ? f.kept.data() : f.earlier.data();
      const uint8_t result = (*e)(context, f.earlier.data(), kept, f.later.data(), output.data(), r.in_width,
                                  r.in_height, r.out_width, r.out_height);
      EXPECT_EQ(result, r.result) << name_of(r) << " level " << level;
      EXPECT_EQ(digest(output.data(), output.size()), r.output) << name_of(r) << " level " << level;
      ppl_free(context);
    }
  }
}
#endif

}  // namespace
