// Qualities in words, from the table: "0 to 4, 9 to 13 or 15".
#pragma once

#include <ppl_qualities.h>

#include <string>
#include <vector>

namespace tool {

// Those whose row `has` what is asked for, ascending; three and more in a row by their first and last.
template <class Has>
std::string quality_list(Has has) {
  std::vector<std::string> runs;
  for (uint32_t q = 0; q < PPL_QUALITIES; ++q) {
    if (!has(ppl_quality_table[q])) continue;
    uint32_t last = q;
    while (last + 1 < PPL_QUALITIES && has(ppl_quality_table[last + 1])) ++last;
    runs.push_back(std::to_string(q));
    if (last > q + 1) runs.back() += " to ";
    if (last == q + 1) runs.emplace_back();
    if (last > q) runs.back() += std::to_string(last);
    q = last;
  }
  std::string list;
  for (size_t i = 0; i < runs.size(); ++i)
    list += (i == 0 ? "" : i + 1 == runs.size() ? " or " : ", ") + runs[i];
  return list;
}

// "0 directed-sharp, 1 directed, ..., 15 full": all that make a picture.
inline std::string quality_names() {
  std::string list;
  for (uint32_t q = 0; q < PPL_QUALITIES; ++q)
    if (ppl_quality_table[q].road != PPL_ROAD_COUNTED)
      list += (list.empty() ? "" : ", ") + std::to_string(q) + " " + ppl_quality_name(q);
  return list;
}

}  // namespace tool
