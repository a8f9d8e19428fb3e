#include "support/library_figures.h"
#include "support/slots.h"

namespace slots {
namespace {

// Collects what the visitors above hand over.
struct collector {
  std::vector<figure>& all;
  void operator()(const char* name, const uint32_t* words, uint32_t count) const {
    all.push_back({name, std::vector<uint32_t>(words, words + count)});
  }
};

}  // namespace

std::vector<figure> statistics(const library_slot& slot) {
  std::vector<figure> all;
  library_statistics(slot.context, collector{all});
  return all;
}

std::vector<figure> read_back(const library_slot& slot) {
  std::vector<figure> all;
  library_read_back(slot.context, collector{all});
  return all;
}

}  // namespace slots
