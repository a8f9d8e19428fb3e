// The pool: who gets which slot, and what passes from one owner of a slot to the next.
#include <set>
#include <string>

#include "controls/fixture.h"
#include "record/levels.h"
#include "support/level.h"

namespace {

struct slots : testing::Test {
  std::vector<ppl_context*> claimed;

  void claim_all() {
    for (int i = 0; i < 8; ++i) {
      claimed.push_back(ppl_init());
      ASSERT_NE(claimed.back(), nullptr);
    }
  }
  ~slots() override {
    for (ppl_context* c : claimed) ppl_free(c);
  }
};

TEST_F(slots, holds_eight_and_the_ninth_claim_gets_nothing) {
  claim_all();
  EXPECT_EQ(std::set<ppl_context*>(claimed.begin(), claimed.end()).size(), 8u);
  EXPECT_EQ(ppl_init(), nullptr);
}

TEST_F(slots, a_freed_slot_is_the_next_one_claimed) {
  claim_all();
  EXPECT_EQ(ppl_free(claimed[3]), 1);
  EXPECT_EQ(ppl_init(), claimed[3]);
  EXPECT_EQ(ppl_init(), nullptr);
}

TEST_F(slots, the_first_free_slot_wins) {
  claim_all();
  ppl_free(claimed[5]);
  ppl_free(claimed[2]);
  EXPECT_EQ(ppl_init(), claimed[2]);
  EXPECT_EQ(ppl_init(), claimed[5]);
}

TEST_F(slots, freeing_nothing_is_refused_and_changes_nothing) {
  claim_all();
  EXPECT_EQ(ppl_free(nullptr), 0);
  EXPECT_EQ(ppl_init(), nullptr);
}

TEST_F(slots, freeing_twice_is_harmless) {
  ppl_context* c = ppl_init();
  EXPECT_EQ(ppl_free(c), 1);
  EXPECT_EQ(ppl_free(c), 1);
  claimed.push_back(ppl_init());
  EXPECT_EQ(claimed[0], c);
}

TEST_F(slots, records_and_their_vectors_are_aligned) {
  claim_all();
  for (ppl_context* c : claimed) {
    EXPECT_EQ(reinterpret_cast<uintptr_t>(c) % 64, 0u);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(&c->gain_b_g) % 16, 0u);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(c->ring_pool) % 32, 0u);
  }
}

// Quality 5 counts a frame and does nothing else.
TEST_F(slots, frame_count_size_and_statistics_pass_to_the_next_owner_but_controls_do_not) {
  ctl::fenced source = ctl::noise_frame(64, 32, 1);
  ctl::fenced destination(64 * 32 * 2);
  ppl_context* c = ppl_init();
  ppl_set_quality(c, 5);
  const uint32_t before = ppl_n_frame(c);
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(ppl_process_blrtoi420(c, source.data(), destination.data(), 64, 32, 64), 1);
  EXPECT_EQ(ppl_n_frame(c), before + 3);
  c->qual_count = 77;
  c->mark_position = 5;
  c->stats_scale = 1234;
  ppl_set_edge_threshold(c, 7);
  ppl_free(c);

  claimed.push_back(ppl_init());
  ASSERT_EQ(claimed[0], c);
  EXPECT_EQ(ppl_n_frame(c), before + 3);
  EXPECT_EQ(c->frame_width, 64);
  EXPECT_EQ(c->frame_height, 32);
  EXPECT_EQ(ppl_n_qual_2x2_whole_frame(c), 77u);
  EXPECT_EQ(c->mark_position, 5);
  EXPECT_EQ(c->stats_scale, 1234);
  EXPECT_EQ(ppl_quality(c), 15u);
  EXPECT_EQ(ppl_edge_threshold(c), 100u);
  c->mark_position = 0;
}

TEST_F(slots, claiming_sets_both_flags_and_freeing_clears_them) {
  ppl_context* c = ppl_init();
  EXPECT_EQ(c->in_use, 1);
  EXPECT_EQ(c->claimed_flag, 1);
  ppl_free(c);
  EXPECT_EQ(c->in_use, 0);
  EXPECT_EQ(c->claimed_flag, 0);
}

TEST_F(slots, the_sensor_type_is_never_stored) {
  ppl_context* c = ppl_init();
  claimed.push_back(c);
  for (uint32_t code : {0x5754u, 0x5948u, 0x42564Fu, 0x7544F4Du}) {
    EXPECT_EQ(ppl_set_sensor_type(c, code), 1) << code;
    EXPECT_EQ(ppl_sensor_type(c), 0u);
  }
  for (uint32_t code : {0u, 1u, 0x5755u, 0x42564Eu, 0x7544F4Cu, 0xffffffffu}) {
    EXPECT_EQ(ppl_set_sensor_type(c, code), 0) << code;
    EXPECT_EQ(ppl_sensor_type(c), 0u);
  }
}

TEST_F(slots, a_record_takes_the_level_that_it_was_claimed_at) {
  const int levels = ppl_test_levels();
  ASSERT_GE(levels, 1);
  std::set<std::string> names;
  for (int level = 0; level < levels; ++level) {
    ppl_test_force_level(level);
    ppl_context* c = ppl_init();
    EXPECT_STREQ(c->kernels->name, ppl_test_level_name(level));
    EXPECT_TRUE(names.insert(c->kernels->name).second) << c->kernels->name;
    ppl_free(c);
  }
  for (int level : {-1, levels}) {
    ppl_test_force_level(level);
    ppl_context* c = ppl_init();
    EXPECT_STREQ(c->kernels->name, ppl_test_level_name(levels - 1));
    ppl_free(c);
  }
  ppl_test_force_level(-1);
}

}  // namespace
