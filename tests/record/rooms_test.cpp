// A record's rooms: a call leaves everything alone but what it is there to change, and no byte that it makes depends on
// what its working areas held before. Every case runs twice from the same record, with other garbage in these areas.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "ppl.h"
#include "record/context.h"
#include "support/bayer_exports.h"
#include "support/convert_exports.h"
#include "support/level.h"
#include "support/qualities.h"

namespace {

// All of the record in front of its working areas.
constexpr size_t kKept = offsetof(ppl_context, kernels) + sizeof(void*);
static_assert(kKept <= offsetof(ppl_context, ring_pool));

struct part {
  size_t at, bytes;
};
#define PART(field) \
  { offsetof(ppl_context, field), sizeof(ppl_context::field) }
constexpr part kStatistics[] = {PART(sub_window_means), PART(all_windows_means), PART(whole_frame_means),
                                PART(qAE_means),        PART(qAE_count),         PART(qual_means),
                                PART(qual_count),       PART(r_histogram),       PART(g_histogram),
                                PART(b_histogram)};
// What a frame may change besides: it counts itself, chooses a factor, moves the mark, leaves tiles behind.
constexpr part kChanged[] = {PART(n_frame), PART(stats_scale), PART(mark_position), PART(leftovers)};
#undef PART

class dice_box {
 public:
  explicit dice_box(uint64_t seed) : bits_(seed) {}
  uint32_t operator()() { return static_cast<uint32_t>(bits_()); }
  uint32_t below(uint32_t n) { return (*this)() % n; }

 private:
  std::mt19937_64 bits_;
};

void garbage(ppl_context* c, uint64_t seed) {
  dice_box dice(seed);
  const auto fill = [&](void* at, size_t bytes) {
    auto* const to = static_cast<uint8_t*>(at);
    for (size_t i = 0; i < bytes; ++i) to[i] = static_cast<uint8_t>(dice());
  };
  fill(c->ring_pool, sizeof c->ring_pool);
  fill(c->scratch, sizeof c->scratch);
  fill(&c->sums, sizeof c->sums);
  fill(c->site_tables, sizeof c->site_tables);
}

struct buffer {
  explicit buffer(size_t n) : bytes(n + 64), size(n) {}
  uint8_t* at() { return bytes.data() + (-reinterpret_cast<uintptr_t>(bytes.data()) & 63); }
  void fill(uint64_t seed) {
    dice_box dice(seed);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(dice() >> 8);
  }
  std::vector<uint8_t> bytes;
  size_t size;
};

// Runs the call twice and holds the two against each other and against the record as it was before.
void run_twice(ppl_context* c, const std::vector<buffer*>& buffers, bool statistics,
               const std::function<void()>& call, const std::string& name) {
  const auto* const record = reinterpret_cast<const uint8_t*>(c);
  const std::vector<uint8_t> before(record, record + kKept);
  std::vector<std::vector<uint8_t>> made[2];
  for (int turn = 0; turn < 2; ++turn) {
    std::memcpy(static_cast<void*>(c), before.data(), kKept);
    garbage(c, 77 + static_cast<uint64_t>(turn));
    for (size_t i = 0; i < buffers.size(); ++i) buffers[i]->fill(5 + i);
    call();
    made[turn].emplace_back(record, record + kKept);
    for (buffer* const b : buffers) made[turn].emplace_back(b->at(), b->at() + b->size);
  }
  ASSERT_EQ(made[0].size(), made[1].size());
  for (size_t i = 0; i < made[0].size(); ++i)
    ASSERT_TRUE(made[0][i] == made[1][i])
        << name << ": " << (i == 0 ? "the record" : "buffer " + std::to_string(i - 1))
        << " depends on what a working area held";
  std::vector<uint8_t> expected = before;
  const auto may_change = [&](const part& p) {
    std::copy_n(made[0][0].begin() + p.at, p.bytes, expected.begin() + p.at);
  };
  for (const part& p : kChanged) may_change(p);
  if (statistics)
    for (const part& p : kStatistics) may_change(p);
  const auto difference = std::mismatch(expected.begin(), expected.end(), made[0][0].begin());
  ASSERT_TRUE(difference.first == expected.end())
      << name << " changes byte " << difference.first - expected.begin() << " of the record";
}

void any_controls(ppl_context* c, dice_box& dice) {
  ppl_set_optical_black_b_gb_gr_r(c, dice.below(30), dice.below(30), dice.below(30), dice.below(30));
  ppl_set_rgb_gain(c, 200 + dice.below(300), 256, 200 + dice.below(300));
  ppl_set_CFA_T0_threshold(c, dice.below(200));
  ppl_set_qAE_RGB_min_max(c, static_cast<int32_t>(dice.below(100)),
                          255 - static_cast<int32_t>(dice.below(100)));
  ppl_set_mean_collection(c, dice.below(4) != 0);
  ppl_set_h_mirror(c, dice.below(2) != 0);
  ppl_set_v_mirror(c, dice.below(2) != 0);
  if (dice.below(2) != 0) ppl_enable_medium_filter(c);
  if (dice.below(2) != 0) ppl_enable_GbGr_correction(c);
}

class Rooms : public testing::TestWithParam<int> {};

TEST_P(Rooms, AFrameChangesItsPictureItsStatisticsAndNothingElse) {
  if (GetParam() >= ppl_test_levels()) GTEST_SKIP() << "this processor has no such level";
  ppl_test_force_level(GetParam());
  dice_box dice(11);
  for (const uint32_t quality : support::kPictured)
    for (int format = 0; format < PPL_FORMATS; ++format)
      for (int32_t decimation = -1; decimation <= 2; ++decimation)
        for (const uint32_t width :
             {32u, 96u, 144u, 16 * (1 + dice.below(12)), dice.below(7) == 0 ? 2032u : 320u}) {
          const uint32_t height = width > 1000 ? 6 : 2 * (1 + dice.below(24)),
                         stride = width + (dice.below(3) == 0) * dice.below(16);
          if (width > 1000 && (format != static_cast<int>(quality % PPL_FORMATS))) continue;
          ppl_context* const c = ppl_init();
          ASSERT_NE(c, nullptr);
          any_controls(c, dice);
          ppl_set_quality(c, quality);
          ppl_set_decimation(c, decimation, 0, 0);
          ppl_new_frame_size(c, width, height, stride);
          buffer source(size_t{stride} * height), picture(size_t{16} * width * height);
          run_twice(
              c, {&source, &picture}, true,
              [&] { support::kFrameCalls[format](c, source.at(), picture.at(), width, height, stride); },
              "quality " + std::to_string(quality) + " format " + std::to_string(format) + " decimation " +
                  std::to_string(decimation) + " " + std::to_string(width) + " x " + std::to_string(height));
          ppl_reset_all_controls(c);
          ppl_free(c);
          if (HasFatalFailure()) return;
        }
}

TEST_P(Rooms, AConversionChangesItsPictureAndTheCountAlone) {
  if (GetParam() >= ppl_test_levels()) GTEST_SKIP() << "this processor has no such level";
  ppl_test_force_level(GetParam());
  dice_box dice(12);
  for (const convert_export& e : kConvertExports)
    for (int32_t decimation = -1; decimation <= 2; ++decimation)
      for (const uint32_t width : {32u, 48u, 160u, 16 * (1 + dice.below(40))}) {
        const uint32_t height = 4 * (1 + dice.below(8));
        ppl_context* const c = ppl_init();
        ASSERT_NE(c, nullptr);
        ppl_set_h_mirror(c, dice.below(2) != 0);
        ppl_set_v_mirror(c, dice.below(2) != 0);
        ppl_set_intl_3T_threshold(c, dice.below(400));
        ppl_new_frame_sizes(c, width, height, width, height, 0);
        const int32_t lines = static_cast<int32_t>(dice.below(3) * dice.below(9));
        ppl_set_decimation(c, decimation, lines, lines);
        const uint32_t out_width = static_cast<uint32_t>(c->out_width),
                       out_height = static_cast<uint32_t>(c->out_height);
        buffer earlier(2 * width * height), kept(2 * width * height), later(2 * width * height);
        buffer picture(size_t{3} * out_width * out_height);
        run_twice(
            c, {&earlier, &kept, &later, &picture}, false,
            [&] {
              e(c, earlier.at(), kept.at(), later.at(), picture.at(), width, height, out_width, out_height);
            },
            std::string(e.name) + " decimation " + std::to_string(decimation) + " " + std::to_string(width) +
                " x " + std::to_string(height));
        ppl_reset_all_controls(c);
        ppl_free(c);
        if (HasFatalFailure()) return;
      }
}

TEST_P(Rooms, AScaledFrameDoesNotDependOnTheRings) {
  if (GetParam() >= ppl_test_levels()) GTEST_SKIP() << "this processor has no such level";
  ppl_test_force_level(GetParam());
  dice_box dice(13);
  for (int k = 0; k < 120; ++k) {
    const uint32_t width = 32 * (1 + dice.below(8)), height = 2 * (1 + dice.below(20));
    const uint32_t out_width = k % 3 == 0   ? width
                               : k % 3 == 1 ? 2 * width
                                            : 32 + dice.below(400),
                   out_height = height + dice.below(40);
    ppl_context* const c = ppl_init();
    ASSERT_NE(c, nullptr);
    ppl_set_quality(c, support::kPictured.number[dice.below(std::size(support::kPictured.number))]);
    ppl_new_frame_size(c, width, height, width);
    buffer source(width * height), scratch(2 * width * height + 4),
        picture(2 * size_t{out_width} * out_height);
    run_twice(
        c, {&source, &scratch, &picture}, true,
        [&] {
          support::kScaledCalls[k & 1](c, source.at(), width, height, width, picture.at(), out_width,
                                       out_height, scratch.at());
        },
        "scaled call " + std::to_string(k));
    ppl_reset_all_controls(c);
    ppl_free(c);
    if (HasFatalFailure()) return;
  }
}

INSTANTIATE_TEST_SUITE_P(Levels, Rooms, testing::Range(0, PPL_TEST_LEVELS));

// The gaps are there to be felt: a byte behind the rings ends the program.
#if defined(PPL_RECORD_GAPS) && defined(GTEST_HAS_DEATH_TEST)
TEST(RoomsDeathTest, AByteBehindAnAreaIsNoticed) {
  ppl_context* const c = ppl_init();
  ASSERT_NE(c, nullptr);
  const auto write = [](uint8_t* at) { *static_cast<volatile uint8_t*>(at) = 1; };
  EXPECT_DEATH(write(c->ring_pool + sizeof c->ring_pool), "use-after-poison");
  EXPECT_DEATH(write(c->scratch + sizeof c->scratch), "use-after-poison");
  EXPECT_DEATH(write(reinterpret_cast<uint8_t*>(&c->sums) - 1), "use-after-poison");
  EXPECT_DEATH(write(reinterpret_cast<uint8_t*>(c->site_tables) + sizeof c->site_tables), "use-after-poison");
  ppl_free(c);
}
#endif

}  // namespace
