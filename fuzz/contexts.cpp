// Lives of contexts: claimed, used, given back and claimed again in any order, never more than eight at once.
#include <stddef.h>
#include <stdint.h>

#include <set>

#include "fuzz/controls.h"
#include "fuzz/frame_size.h"
#include "tests/support/level.h"

namespace {

using namespace fuzz;

void require(bool holds) {
  if (!holds) abort();
}

void frame(ppl_context* c, input& in) {
  const uint32_t width = 32 * in.ConsumeIntegralInRange<uint32_t>(1, 3),
                 height = 2 * in.ConsumeIntegralInRange<uint32_t>(1, 20);
  const exact source(width * height, 0, in.ConsumeIntegral<uint8_t>());
  const exact picture(width * height * 4, 0, 0);
  const uint32_t before = ppl_n_frame(c);
  BaylorToYUYVMMX(c, source.at(), picture.at(), width, height);
  require(ppl_P3_only(c) != 0 || ppl_n_frame(c) == before + 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  input in(data, size);
  ppl_test_force_level(in.ConsumeIntegralInRange(0, ppl_test_levels() - 1));
  std::set<ppl_context*> claimed;
  const auto any = [&] {
    auto i = claimed.begin();
    std::advance(i, in.ConsumeIntegralInRange<size_t>(0, claimed.size() - 1));
    return *i;
  };
  require(ppl_free(nullptr) == 0);
  while (in.remaining_bytes() > 0) {
    const int what = in.ConsumeIntegralInRange(0, 5);
    if (what == 0 || claimed.empty()) {
      ppl_context* const c = ppl_init();
      require((c == nullptr) == (claimed.size() == 8) && claimed.count(c) == 0);
      if (c != nullptr) {
        require(ppl_quality(c) == 15 && ppl_nf88_sat(c) == 256 && ppl_decimation(c) == 0);
        claimed.insert(c);
      }
    } else if (what == 1) {
      ppl_context* const c = any();
      require(ppl_free(c) == 1 && ppl_free(c) == 1);
      claimed.erase(c);
    } else if (what == 2) {
      require(ppl_reset_all_controls(any()) == 0);
    } else if (what == 3) {
      frame(any(), in);
    } else {
      any_control(any(), in);
    }
  }
  for (ppl_context* const c : claimed) {
    ppl_reset_all_controls(c);
    ppl_free(c);
  }
  return 0;
}
