#include "options.h"

#include <algorithm>
#include <charconv>

#include "failure.h"

namespace tool {
namespace {

template <class T>
bool parse_whole(const std::string& word, T& number) {
  const char* const end = word.data() + word.size();
  const auto [stop, error] = std::from_chars(word.data(), end, number);
  return error == std::errc() && stop == end;
}

}  // namespace

CLI::Validator in_range(int64_t low, int64_t high) {
  return CLI::Validator(
      [low, high](std::string& word) {
        int64_t number = 0;
        return parse_whole(word, number) && number >= low && number <= high
                   ? std::string()
                   : text("takes a whole number from ", low, " to ", high, ", not ", word);
      },
      "");
}

CLI::Validator numbers_in_range(size_t count, int low, int high) {
  return CLI::Validator(
      [=](std::string& list) {
        std::vector<int> found;
        const bool all =
            parse_numbers(list, found) && found.size() == count &&
            std::all_of(found.begin(), found.end(), [&](int v) { return v >= low && v <= high; });
        return all ? std::string()
                   : text("takes ", count, " whole numbers from ", low, " to ", high,
                          " with commas between them, not ", list);
      },
      "");
}

bool parse_numbers(const std::string& list, std::vector<int>& numbers) {
  numbers.clear();
  for (const std::string& word : CLI::detail::split(list, ',')) {
    int number = 0;
    if (!parse_whole(word, number)) return false;
    numbers.push_back(number);
  }
  return true;
}

}  // namespace tool
