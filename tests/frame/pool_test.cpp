// The pool of eight instances.
#include "support/frame_fixture.h"

namespace {

using namespace engine;

struct eight {
  ppl_context* slot[8];
  eight() {
    for (auto& s : slot) s = ppl_init();
  }
  ~eight() {
    for (auto* s : slot) ppl_free(s);
  }
};

TEST(pool, holds_eight) {
  const eight all;
  for (int i = 0; i < 8; ++i) {
    ASSERT_NE(all.slot[i], nullptr);
    for (int k = 0; k < i; ++k) EXPECT_NE(all.slot[i], all.slot[k]);
  }
  EXPECT_EQ(ppl_init(), nullptr);
}

TEST(pool, a_freed_slot_is_the_next_one_claimed) {
  const eight all;
  EXPECT_EQ(ppl_free(all.slot[3]), 1);
  EXPECT_EQ(ppl_init(), all.slot[3]);
  EXPECT_EQ(ppl_init(), nullptr);
}

TEST(pool, the_lowest_free_slot_comes_first) {
  const eight all;
  ppl_free(all.slot[6]);
  ppl_free(all.slot[2]);
  EXPECT_EQ(ppl_init(), all.slot[2]);
  EXPECT_EQ(ppl_init(), all.slot[6]);
}

TEST(pool, freeing_nothing_is_refused_and_freeing_twice_is_harmless) {
  EXPECT_EQ(ppl_free(nullptr), 0);
  ppl_context* c = ppl_init();
  EXPECT_EQ(ppl_free(c), 1);
  EXPECT_EQ(ppl_free(c), 1);
}

TEST(pool, the_frame_count_survives_a_claim) {
  ppl_context* c = ppl_init();
  ppl_set_quality(c, 5);
  fenced source(32 * 4), destination(32 * 4 * 3 / 2);
  const uint32_t before = ppl_n_frame(c);
  for (int i = 0; i < 3; ++i) call(I420, c, source.data(), destination.data(), 32, 4);
  ppl_free(c);
  ASSERT_EQ(ppl_init(), c);
  EXPECT_EQ(ppl_n_frame(c), before + 3);
  EXPECT_EQ(ppl_quality(c), 15u);  // controls are the default ones again
  ppl_free(c);
}

TEST(pool, the_sensor_type_is_always_0) {
  ppl_context* c = ppl_init();
  for (uint32_t code : {0u, 1u, 7u, 0xffffffffu}) {
    ppl_set_sensor_type(c, code);
    EXPECT_EQ(ppl_sensor_type(c), 0u);
  }
  ppl_free(c);
}

}  // namespace
