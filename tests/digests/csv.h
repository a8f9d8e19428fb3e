// The files that hold the known digests.
#pragma once

#include <cstdint>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace csv {

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
