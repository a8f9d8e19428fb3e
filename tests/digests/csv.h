// What the known digests are made with, and the files that hold them.
#pragma once

#include <cstdint>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace csv {

// xorshift32: each step gives the number.
struct random32 {
  uint32_t x;
  uint32_t operator()() {
    x ^= x << 13;
    x ^= x >> 17;
    x ^= x << 5;
    return x;
  }
};

// FNV-1a, 64 bits, over bytes in memory order.
struct digest {
  uint64_t value = 14695981039346656037u;
  void byte(uint8_t b) { value = (value ^ b) * 1099511628211u; }
  void bytes(const uint8_t* data, size_t count) {
    for (size_t i = 0; i < count; ++i) byte(data[i]);
  }
  void word(uint32_t w) {
    for (int i = 0; i < 4; ++i) byte(uint8_t(w >> 8 * i));
  }
};

// The rows of a comma-separated file by the names of its first line.
using row = std::map<std::string, std::string>;
inline std::vector<row> read_csv(const std::string& path) {
  std::ifstream file(path);
  std::vector<row> rows;
  std::vector<std::string> names;
  std::string line;
  while (std::getline(file, line)) {
    std::vector<std::string> cells;
    std::stringstream in(line);
    std::string cell;
    while (std::getline(in, cell, ',')) {
      if (!cell.empty() && cell.back() == '\r') cell.pop_back();
      cells.push_back(cell);
    }
    if (names.empty()) {
      names = cells;
      continue;
    }
    row r;
    for (size_t i = 0; i < names.size() && i < cells.size(); ++i) r[names[i]] = cells[i];
    rows.push_back(r);
  }
  return rows;
}

}  // namespace csv
