// One context held to a vector level, its geometry, and the lens table that it holds on to.
#pragma once

#include <stdint.h>

#include <memory>

#include "fuzz/frame_size.h"
#include "fuzz/input.h"
#include "ppl.h"
#include "tests/support/level.h"

namespace fuzz {

struct subject {
  ppl_context* context;
  geometry size;
  std::unique_ptr<exact> table;

  explicit subject(input& in) {
    ppl_test_force_level(in.ConsumeIntegralInRange(0, ppl_test_levels() - 1));
    context = ppl_init();
    if (context == nullptr) abort();
    ppl_new_frame_size(context, 0, 0, 0);
  }
  ~subject() {
    ppl_reset_all_controls(context);
    ppl_free(context);
  }
  subject(const subject&) = delete;
  subject& operator=(const subject&) = delete;

  void decimate(input& in) {
    const int32_t d = in.ConsumeIntegralInRange(-3, 3), top = lines(in), bottom = lines(in);
    size.decimate(d, top, bottom);
    ppl_set_decimation(context, d, top, bottom);
  }

  // A table of any size for a frame of any other, right or not.
  void lens(input& in) {
    const auto width = number<int32_t>(in), height = number<int32_t>(in);
    const auto x = number<int32_t>(in), y = number<int32_t>(in);
    const auto f1 = number<int32_t>(in), f2 = number<int32_t>(in);
    const auto shift1 = number<int32_t>(in), shift2 = number<int32_t>(in);
    const auto bytes = in.ConsumeIntegralInRange<int32_t>(0, 1 << 17);
    auto next = std::make_unique<exact>(static_cast<size_t>(bytes), in.ConsumeBool() ? 2 : 0, uint8_t{1});
    const bool null = in.ConsumeIntegralInRange(0, 15) == 0;
    ppl_set_lens_correction(context, width, height, x, y,
                            null ? nullptr : reinterpret_cast<uint16_t*>(next->at()), bytes, f1, shift1, f2,
                            shift2);
    table = std::move(next);
    if (in.ConsumeBool()) ppl_enable_lens_correction(context);
  }
};

}  // namespace fuzz
