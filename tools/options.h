// Tests of option values whose messages say what would be right.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>
#include <vector>

namespace tool {

// A whole number between the two, both included. The bounds stand in the message, not in the help text's type.
CLI::Validator in_range(int64_t low, int64_t high);

// So many of them with commas between them.
CLI::Validator numbers_in_range(size_t count, int low, int high);

// "1,-2,3"; false if something else than whole numbers stands between the commas.
bool parse_numbers(const std::string& list, std::vector<int>& numbers);

}  // namespace tool
