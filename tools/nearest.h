// Guesses at what a misspelt word was meant to be.
#pragma once

#include <string>
#include <vector>

namespace tool {

// The known word that takes the fewest changes; empty if none is near.
std::string nearest(const std::string& word, const std::vector<std::string>& known);

}  // namespace tool
