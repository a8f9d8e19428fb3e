#include "nearest.h"

#include <algorithm>

namespace tool {
namespace {

// Letters to change, add or drop to make one word of the other.
size_t distance(const std::string& a, const std::string& b) {
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j < row.size(); ++j) row[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t corner = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t above = row[j];
      row[j] = std::min({above + 1, row[j - 1] + 1, corner + (a[i - 1] != b[j - 1])});
      corner = above;
    }
  }
  return row.back();
}

}  // namespace

std::string nearest(const std::string& word, const std::vector<std::string>& known) {
  const auto best = std::min_element(known.begin(), known.end(), [&](const auto& a, const auto& b) {
    return distance(word, a) < distance(word, b);
  });
  return best != known.end() && distance(word, *best) <= 1 + word.size() / 3 ? *best : "";
}

}  // namespace tool
