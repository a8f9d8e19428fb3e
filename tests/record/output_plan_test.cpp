// The output plan: single figures, and walks that follow it over a frame and must land where the picture belongs.
#include "record/output_plan.h"
#include "controls/fixture.h"

namespace {

using ppl::out_format;

struct output_offset_plan : ctl::controls {
  const ppl::output_offset_plan& plan = c->plan;

  void state(bool h, bool v, int d) {
    ASSERT_EQ(ppl_set_h_mirror(c, h), 1);
    ASSERT_EQ(ppl_set_v_mirror(c, v), 1);
    ASSERT_EQ(ppl_set_decimation(c, d, 0, 0), 1);
  }
  // An output of the same size whatever the decimation.
  void state_of(int w, int h, bool horizontal, bool vertical, int d) {
    state(horizontal, vertical, d);
    const auto before = [d](int x) { return static_cast<uint32_t>(d < 0 ? x / 2 : x << d); };
    ASSERT_EQ(ppl_new_frame_size(c, before(w), before(h), 2048), 1);
    ASSERT_EQ(c->out_width, w);
    ASSERT_EQ(c->out_height, h);
  }
  void state_640(bool h, bool v, int d) { state_of(640, 480, h, v, d); }
  void state_320(bool h, bool v, int d) { state_of(320, 240, h, v, d); }
};

TEST_F(output_offset_plan, no_mirrors_at_640) {
  state_640(false, false, 0);
  EXPECT_EQ(plan.i420.luma_tile_step, 16);
  EXPECT_EQ(plan.i420.luma_row_step, 640);
  EXPECT_EQ(plan.i420.chroma_row_step, 0);
  EXPECT_EQ(plan.rgb24.row_step, -5712);
  EXPECT_EQ(plan.rgb32.row_step, -7616);
}

TEST_F(output_offset_plan, both_mirrors_doubled_to_640) {
  state_640(true, true, -1);
  EXPECT_EQ(plan.i420.luma_row_step, -1920);
  EXPECT_EQ(plan.rgb24.row_step, 9504);
}

TEST_F(output_offset_plan, does_not_depend_on_the_height) {
  state_640(true, false, -1);
  const ppl::output_offset_plan before = plan;
  ASSERT_EQ(ppl_set_decimation(c, -1, 40, 8), 1);
  EXPECT_EQ(std::memcmp(&before, &plan, sizeof before), 0);
  ASSERT_EQ(ppl_new_frame_size(c, 320, 100, 320), 1);
  EXPECT_EQ(std::memcmp(&before, &plan, sizeof before), 0);
}

TEST_F(output_offset_plan, a_mirror_takes_effect_with_no_other_call) {
  state_640(false, false, 0);
  ppl_set_h_mirror(c, 1);
  EXPECT_EQ(plan.i420.luma_tile_step, -16);
  ppl_set_v_mirror(c, 1);
  EXPECT_EQ(plan.i420.luma_row_step, -640);
  ppl_reset_mirrors(c);
  EXPECT_EQ(plan.i420.luma_tile_step, 16);
  EXPECT_EQ(plan.i420.luma_row_step, 640);
  ppl_set_h_mirror(c, 128);  // any byte but zero
  EXPECT_EQ(plan.i420.luma_tile_step, -16);
  EXPECT_EQ(ppl_h_mirror(c), 128);
}

// The words of one state, in record order, worked out by hand for W = 640.
std::vector<int> words(const ppl::output_offset_plan& plan) {
  std::vector<int> v(79);
  std::memcpy(v.data(), &plan, sizeof plan);
  return v;
}

TEST_F(output_offset_plan, all_words_without_mirrors) {
  state_640(false, false, 0);
  const std::vector<int> expected = {
      0,  16,    0,     640,   32, 640,   0,     16,    0,    640,                // I420 groups
      0,  32,    0,     1280,  64, 1280,                                          // packed groups
      0,  48,    1920,  0,     96, -5760, 0,                                      // RGB24 groups
      0,  64,    0,     32,    64, 96,    2560,  0,     128,  -7680,              // RGB32 groups
      16, 640,   -640,  -640,  0,  640,   16,    0,     -320, 0,     0,     320,  // I420 tiles
      32, 1280,  -1280, -1280, 0,  1280,  -1280, -1280, 0,    1280,               // packed tiles
      48, -5712, 1920,  1920,  0,  -1920,                                         // RGB24 tiles
      64, -7616,                                                                  // RGB32 tiles
      0,  16,    640,   656,   0,  32,    1280,  1312,  0,    48,    -1920, -1872, 0, 64, -2560, -2496};
  EXPECT_EQ(words(plan), expected);
}

TEST_F(output_offset_plan, all_words_mirrored_horizontally_and_doubled) {
  state_640(true, false, -1);
  const std::vector<int> expected = {
      32,  0,     0,     1280,  -64,   3200,  0,     -32,   960,   0,                   // I420 groups
      0,   -64,   0,     2560,  -128,  6400,                                            // packed groups
      96,  0,     3840,  0,     -192,  -5760, 7680,                                     // RGB24 groups
      64,  0,     96,    64,    32,    0,     2560,  0,     -128,  -2560,               // RGB32 groups
      -32, 3200,  -1936, -3216, -1280, -640,  -32,   960,   -960,  0,     -640,  -320,  // I420 tiles
      -64, 6400,  -3872, -6432, -2560, -1280, -3840, -6400, -2560, -1280,               // packed tiles
      -96, -2016, 5760,  9600,  3840,  1920,                                            // RGB24 tiles
      -64, -2624,                                                                       // RGB32 tiles
      0,   -16,   640,   624,   0,     -32,   1280,  1248,  0,     -96,   -1920, -2016, 0, -64, -2560, -2624};
  EXPECT_EQ(words(plan), expected);
}

TEST_F(output_offset_plan, all_words_mirrored_vertically_and_doubled) {
  state_640(false, true, -1);
  const std::vector<int> expected = {
      0,  32,    1280,  0,     64,    -3200, 1280,  32,    -960, 0,                // I420 groups
      0,  64,    0,     -2560, 128,   -6400,                                       // packed groups
      0,  96,    0,     3840,  192,   5760,  -3840,                                // RGB24 groups
      0,  64,    0,     32,    64,    96,    0,     2560,  128,  2560,             // RGB32 groups
      32, -3200, 1920,  3200,  1280,  640,   32,    -960,  960,  0,    640,  320,  // I420 tiles
      64, -6400, 3840,  6400,  2560,  1280,  2560,  5120,  3840, 5120,             // packed tiles
      96, 2016,  -5760, -9600, -3840, -1920,                                       // RGB24 tiles
      64, 2624,                                                                    // RGB32 tiles
      0,  16,    -640,  -624,  0,     32,    -1280, -1248, 0,    96,   1920, 2016, 0, 64, 2560, 2624};
  EXPECT_EQ(words(plan), expected);
}

TEST_F(output_offset_plan, all_words_with_both_mirrors_and_doubled) {
  state_640(true, true, -1);
  const std::vector<int> expected = {
      32,  0,     1280,  0,     -64,   -1920, 2560,  -32,   -320, 640,              // I420 groups
      0,   -64,   0,     -2560, -128,  -3840,                                       // packed groups
      96,  0,     0,     3840,  -192,  9600,  0,                                    // RGB24 groups
      64,  0,     96,    64,    32,    0,     0,     2560,  -128, 7680,             // RGB32 groups
      -32, -1920, 1904,  3184,  1280,  640,   -32,   -320,  960,  0,    640,  320,  // I420 tiles
      -64, -3840, 3808,  6368,  2560,  1280,  2560,  5120,  3840, 5120,             // packed tiles
      -96, 9504,  -5760, -9600, -3840, -1920,                                       // RGB24 tiles
      -64, 7616,                                                                    // RGB32 tiles
      0,   -16,   -640,  -656,  0,     -32,   -1280, -1312, 0,    -96,  1920, 1824, 0, -64, 2560, 2496};
  EXPECT_EQ(words(plan), expected);
}

TEST_F(output_offset_plan, all_words_with_both_mirrors_and_halved) {
  for (int d : {1, 2}) {
    state_320(true, true, d);
    const int k = 2 * d - 1, f = 4 * d - 1, b = 2 * d + 1;
    const std::vector<int> expected = {
        16, 0, 320, 0, -32, -320, -1280 * d, -16, 0, -320 * b,  // I420 groups
        32, 0, 640, 0, -64, -640,                               // packed groups
        48, 0, 0, 960, -96, 2880, 0,                            // RGB24 groups
        64, 0, 96, 64, 32, 0, 0, 1280, -128, 3840,              // RGB32 groups
        // I420 tiles
        -16, 0, -320 * k - 16, -320 * f - 16, -640 * d, -320 * b, -16, 0, -160 * k, 0, -320 * d, -160 * b,
        // packed tiles
        -32, 0, -640 * k - 32, -640 * f - 32, -1280 * d, -640 * b, -1280 * d, -2560 * d, -640 * k, -2560 * d,
        -24, 1896, 960 * k, 960 * f, 1920 * d, 960 * b,  // RGB24 tiles
        -32, 2528,                                       // RGB32 tiles
        0, -16, -320, -336, 0, -32, -640, -672, 0, -48, 960, 912, 0, -64, 1280, 1216};
    EXPECT_EQ(words(plan), expected) << d;
  }
}

TEST_F(output_offset_plan, rgb_row_steps_by_mirror_state) {
  struct {
    bool h, v;
    int d, rgb24, rgb32, bulk24, bulk32;
  } const cases[] = {
      {false, false, -1, -15 * 640 + 96, -12 * 640 + 64, -9600, -7680},
      {true, false, -1, -3 * 640 - 96, -4 * 640 - 64, -5760, -2560},
      {false, true, -1, 3 * 640 + 96, 4 * 640 + 64, 5760, 2560},
      {true, true, -1, 15 * 640 - 96, 12 * 640 - 64, 9600, 7680},
      {false, false, 0, -9 * 640 + 48, -12 * 640 + 64, -5760, -7680},
      {true, false, 0, -3 * 640 - 48, -4 * 640 - 64, -1920, -2560},
      {false, true, 0, 3 * 640 + 48, 4 * 640 + 64, 1920, 2560},
      {true, true, 0, 9 * 640 - 48, 12 * 640 - 64, 5760, 7680},
      {false, false, 1, -6 * 640 + 24, -8 * 640 + 32, -5760, -7680},
      {true, false, 1, -24, -32, -1920, -2560},
      {false, true, 1, 24, 32, 1920, 2560},
      {true, true, 1, 6 * 640 - 24, 8 * 640 - 32, 5760, 7680},
  };
  for (const auto& k : cases) {
    SCOPED_TRACE(testing::Message() << k.h << k.v << " " << k.d);
    state_640(k.h, k.v, k.d);
    EXPECT_EQ(plan.rgb24.row_step, k.rgb24);
    EXPECT_EQ(plan.rgb32.row_step, k.rgb32);
    EXPECT_EQ(plan.bulk_rgb24.row_step, k.bulk24);
    EXPECT_EQ(plan.bulk_rgb32.row_step, k.bulk32);
  }
}

// ---- Walks. A place in the picture is a column and a row of the unmirrored output; `at` tells the byte where the
// ---- leftmost of `width` columns, as they stand in memory, must then lie.

struct picture {
  int w, h, pixel;  // size, bytes per pixel
  bool mirror_h, mirror_v, bottom_up;
  int64_t at(int x, int y, int width) const {
    const int column = mirror_h ? w - x - width : x;
    const int row = mirror_v != bottom_up ? h - 1 - y : y;
    return (static_cast<int64_t>(row) * w + column) * pixel;
  }
};

struct walk : output_offset_plan, testing::WithParamInterface<std::tuple<bool, bool>> {
  bool h = std::get<0>(GetParam()), v = std::get<1>(GetParam());

  void prepare(int d) {
    state(h, v, d);
    ASSERT_EQ(ppl_new_frame_size(c, 192, 48, 192), 1);
  }
  picture of(int pixel, bool bottom_up = false) const {
    return {c->out_width, c->out_height, pixel, h, v, bottom_up};
  }
  picture chroma() const { return {c->out_width / 2, c->out_height / 2, 1, h, v, false}; }
  int tiles() const { return c->tiles_per_row; }
  int pairs() const { return c->row_pairs; }
};

TEST_P(walk, tiles_of_luma_and_packed_at_equal_size) {
  prepare(0);
  const struct {
    out_format format;
    int pixel, tile_step, row_step, pitch;
  } layouts[] = {
      {out_format::i420, 1, plan.i420.luma_tile_step, plan.i420.luma_row_step, plan.i420_pitch.row_pitch},
      {out_format::yuyv, 2, plan.packed.tile_step, plan.packed.row_step, plan.packed_pitch.row_pitch}};
  for (const auto& l : layouts) {
    const picture image = of(l.pixel);
    int64_t at = ppl::start_pointers_of(c, l.format).stage;
    for (int p = 0; p < pairs(); ++p) {
      for (int t = 0; t < tiles(); ++t) {
        ASSERT_EQ(at, image.at(16 * t, 2 * p, 16)) << p << " " << t;
        ASSERT_EQ(at + l.pitch, image.at(16 * t, 2 * p + 1, 16));
        at += l.tile_step;
      }
      at += l.row_step;
    }
  }
}

TEST_P(walk, chroma_tiles_at_equal_size_and_halved) {
  for (int d : {0, 1}) {
    prepare(d);
    const picture image = chroma();
    int64_t at = ppl::start_pointers_of(c, out_format::i420).stage_chroma;
    for (int y = 0; y < image.h; ++y) {
      for (int x = 0; x < image.w; x += 16) {
        ASSERT_EQ(at, image.at(x, y, 16)) << x << " " << y;
        at += plan.i420.chroma_tile_step;
      }
      at += plan.i420.chroma_row_step;
    }
  }
}

TEST_P(walk, tiles_of_luma_and_packed_halved) {
  prepare(1);
  const struct {
    out_format format;
    int pixel, tile_step, row_step;
  } layouts[] = {{out_format::i420, 1, plan.i420.luma_tile_step, plan.i420.luma_row_step},
                 {out_format::uyvy, 2, plan.packed.tile_step, plan.packed.row_step}};
  for (const auto& l : layouts) {
    const picture image = of(l.pixel);
    int64_t at = ppl::start_pointers_of(c, l.format).stage;
    for (int y = 0; y < image.h; ++y) {
      for (int x = 0; x < image.w; x += 16) {
        ASSERT_EQ(at, image.at(x, y, 16)) << x << " " << y;
        at += l.tile_step;
      }
      at += l.row_step;
    }
  }
}

// Under the horizontal mirror a widened tile begins 16 pixels before the pointer. The rows between are filled
// after the row step; the very last row gets a copy.
TEST_P(walk, tiles_of_luma_and_packed_doubled) {
  prepare(-1);
  const struct {
    out_format format;
    int pixel, tile_step, row_step, pitch, fill_1, fill_2, last_source, last_target;
  } layouts[] = {
      {out_format::i420, 1, plan.i420.luma_tile_step, plan.i420.luma_row_step, plan.i420_pitch.row_pitch,
       plan.i420.luma_fill_1, plan.i420.luma_fill_2, plan.i420.luma_last_source, plan.i420.luma_last_target},
      {out_format::yuyv, 2, plan.packed.tile_step, plan.packed.row_step, plan.packed_pitch.row_pitch,
       plan.packed.fill_1, plan.packed.fill_2, plan.packed.last_source, plan.packed.last_target}};
  for (const auto& l : layouts) {
    const picture image = of(l.pixel);
    const int back = h ? 16 * l.pixel : 0;
    int64_t at = ppl::start_pointers_of(c, l.format).stage;
    for (int p = 0; p < pairs(); ++p) {
      for (int t = 0; t < tiles(); ++t) {
        ASSERT_EQ(at - back, image.at(32 * t, 4 * p, 32)) << p << " " << t;
        ASSERT_EQ(at - back + 2 * l.pitch, image.at(32 * t, 4 * p + 2, 32));
        at += l.tile_step;
      }
      at += l.row_step;
      ASSERT_EQ(at + l.fill_1, image.at(0, 4 * p + 1, 32));
      if (p > 0) {
        ASSERT_EQ(at + l.fill_2, image.at(0, 4 * p - 1, 32));
      }
    }
    ASSERT_EQ(at - back + l.last_source, image.at(0, 4 * pairs() - 2, 32));
    ASSERT_EQ(at - back + l.last_target, image.at(0, 4 * pairs() - 1, 32));
  }
}

TEST_P(walk, chroma_tiles_doubled) {
  prepare(-1);
  const picture image = chroma();
  const int back = h ? 16 : 0;
  int64_t at = ppl::start_pointers_of(c, out_format::i420).stage_chroma;
  for (int p = 0; p < pairs(); ++p) {
    for (int x = 0; x < image.w; x += 32) {
      ASSERT_EQ(at - back, image.at(x, 2 * p, 32));
      at += plan.i420.chroma_tile_step;
    }
    at += plan.i420.chroma_row_step;
    if (p > 0) {
      ASSERT_EQ(at - back + plan.i420.chroma_fill, image.at(0, 2 * p - 1, 32));
    }
  }
  ASSERT_EQ(at - back + plan.i420.chroma_last_source, image.at(0, 2 * pairs() - 2, 32));
  ASSERT_EQ(at - back + plan.i420.chroma_last_target, image.at(0, 2 * pairs() - 1, 32));
}

// RGB rows: the last tile of a row takes no tile step, its row step holds it.
TEST_P(walk, rgb_tiles_at_equal_size) {
  prepare(0);
  const struct {
    out_format format;
    int pixel, tile_step, row_step, pitch;
  } layouts[] = {
      {out_format::rgb24, 3, plan.rgb24.tile_step, plan.rgb24.row_step, plan.rgb24_pitch.row_pitch},
      {out_format::rgb32, 4, plan.rgb32.tile_step, plan.rgb32.row_step, plan.rgb32_pitch.row_pitch}};
  for (const auto& l : layouts) {
    const picture image = of(l.pixel, true);
    int64_t at = ppl::start_pointers_of(c, l.format).stage;
    for (int p = 0; p < pairs(); ++p) {
      for (int t = 0; t < tiles(); ++t) {
        ASSERT_EQ(at, image.at(16 * t, 2 * p, 16)) << p << " " << t;
        ASSERT_EQ(at + l.pitch, image.at(16 * t, 2 * p + 1, 16));
        if (t + 1 < tiles()) at += l.tile_step;
      }
      at += l.row_step;
    }
  }
}

TEST_P(walk, rgb_tiles_halved) {
  prepare(1);
  const struct {
    out_format format;
    int pixel, tile_step, row_step;
  } layouts[] = {{out_format::rgb24, 3, plan.rgb24.tile_step, plan.rgb24.row_step},
                 {out_format::rgb32, 4, plan.rgb32.tile_step, plan.rgb32.row_step}};
  for (const auto& l : layouts) {
    const picture image = of(l.pixel, true);
    int64_t at = ppl::start_pointers_of(c, l.format).stage;
    for (int p = 0; p < pairs(); ++p) {
      for (int t = 0; t < tiles(); ++t) {
        ASSERT_EQ(at, image.at(8 * t, p, 8)) << p << " " << t;
        if (t + 1 < tiles()) at += l.tile_step;
      }
      at += l.row_step;
    }
  }
}

// With exactly one mirror a row pair moves the doubled RGB24 picture by two image rows, not by four.
TEST_P(walk, rgb24_tiles_doubled) {
  prepare(-1);
  const picture image = of(3, true);
  const int rows = h != v ? 2 : 4;
  int64_t at = ppl::start_pointers_of(c, out_format::rgb24).stage;
  for (int p = 0; p < pairs(); ++p) {
    for (int t = 0; t < tiles(); ++t) {
      ASSERT_EQ(at, image.at(32 * t, rows * p, 32)) << p << " " << t;
      ASSERT_EQ(at + 2 * plan.rgb24_pitch.row_pitch, image.at(32 * t, rows * p + 2, 32));
      if (t + 1 < tiles()) at += plan.rgb24.tile_step;
    }
    at += plan.rgb24.row_step;
  }
  if (rows == 4) {
    ASSERT_EQ(at + plan.rgb24.last_source, image.at(0, 4 * pairs() - 2, 32));
    ASSERT_EQ(at + plan.rgb24.last_target, image.at(0, 4 * pairs() - 1, 32));
    ASSERT_EQ(at + plan.rgb24.fill_1, image.at(0, 4 * pairs() - 3, 32));
    ASSERT_EQ(at + plan.rgb24.fill_2, image.at(0, 4 * pairs() - 5, 32));
  }
}

// Groups of 32 columns and two rows. At double size a row of the frame stands two rows from the next, and always in
// the one of the two that has the lower address: where rows run towards lower addresses, that is the second.
TEST_P(walk, groups_of_luma_packed_and_rgb24) {
  for (int d : {-1, 0, 1}) {
    prepare(d);
    const int m = d < 0 ? 2 : 1;
    const struct {
      out_format format;
      int pixel;
      bool bottom_up;
      int left, right, row_0, row_1, group_step, row_step;
    } layouts[] = {{out_format::i420, 1, false, plan.bulk_i420.left_offset, plan.bulk_i420.right_offset,
                    plan.bulk_i420.row_0_offset, plan.bulk_i420.row_1_offset, plan.bulk_i420.group_step,
                    plan.bulk_i420.row_step},
                   {out_format::uyvy, 2, false, plan.bulk_packed.left_offset, plan.bulk_packed.right_offset,
                    plan.bulk_packed.row_0_offset, plan.bulk_packed.row_1_offset, plan.bulk_packed.group_step,
                    plan.bulk_packed.row_step},
                   {out_format::rgb24, 3, true, plan.bulk_rgb24.left_offset, plan.bulk_rgb24.right_offset,
                    plan.bulk_rgb24.row_0_offset, plan.bulk_rgb24.row_1_offset, plan.bulk_rgb24.group_step,
                    plan.bulk_rgb24.row_step}};
    for (const auto& l : layouts) {
      const picture image = of(l.pixel, l.bottom_up);
      const int lower = d < 0 && v != l.bottom_up ? 1 : 0;
      int64_t at = ppl::start_pointers_of(c, l.format).bulk;
      for (int y = 0; y < image.h; y += 2 * m) {
        for (int x = 0; x < image.w; x += 32 * m) {
          SCOPED_TRACE(testing::Message() << "d " << d << " pixel " << l.pixel << " at " << x << ", " << y);
          ASSERT_EQ(at + l.left + l.row_0, image.at(x, y + lower, 16 * m));
          ASSERT_EQ(at + l.right + l.row_0, image.at(x + 16 * m, y + lower, 16 * m));
          ASSERT_EQ(at + l.left + l.row_1, image.at(x, y + m + lower, 16 * m));
          ASSERT_EQ(at + l.right + l.row_1, image.at(x + 16 * m, y + m + lower, 16 * m));
          at += l.group_step;
        }
        at += l.row_step;
      }
    }
  }
}

TEST_P(walk, groups_of_chroma) {
  for (int d : {-1, 0, 1}) {
    prepare(d);
    const int m = d < 0 ? 2 : 1;
    const picture image = chroma();
    const int lower = d < 0 && v ? 1 : 0;
    int64_t at = ppl::start_pointers_of(c, out_format::i420).bulk_chroma;
    for (int y = 0; y < image.h; y += m) {
      for (int x = 0; x < image.w; x += 16 * m) {
        ASSERT_EQ(at, image.at(x, y + lower, 16 * m)) << d << " " << x << " " << y;
        at += plan.bulk_i420.chroma_group_step;
      }
      at += plan.bulk_i420.chroma_row_step;
    }
  }
}

TEST_P(walk, groups_of_rgb32) {
  for (int d : {0, 1}) {
    prepare(d);
    const picture image = of(4, true);
    const auto& b = plan.bulk_rgb32;
    int64_t at = ppl::start_pointers_of(c, out_format::rgb32).bulk;
    for (int y = 0; y < image.h; y += 2) {
      for (int x = 0; x < image.w; x += 32) {
        for (int row = 0; row < 2; ++row) {
          const int64_t base = at + (row ? b.row_1_offset : b.row_0_offset);
          for (int i = 0; i < 2; ++i) ASSERT_EQ(base + b.half_offset[i], image.at(x + 16 * i, y + row, 16));
          for (int i = 0; i < 4; ++i) ASSERT_EQ(base + b.quarter_offset[i], image.at(x + 8 * i, y + row, 8));
        }
        at += b.group_step;
      }
      at += b.row_step;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(mirrors, walk, testing::Combine(testing::Bool(), testing::Bool()));

// ---- Starts by figure, in pixels times bytes per pixel.

TEST_F(output_offset_plan,
       starts_without_mirrors_are_at_the_first_row_in_memory_for_yuv_and_at_the_last_for_rgb) {
  for (int d : {-1, 0, 1, 2}) {
    state_320(false, false, d);
    for (out_format f : {out_format::i420, out_format::yuyv, out_format::uyvy}) {
      const ppl::start_pointers o = ppl::start_pointers_of(c, f);
      EXPECT_EQ(o.stage, 0);
      EXPECT_EQ(o.stage_chroma, 0);
      EXPECT_EQ(o.bulk, 0);
      EXPECT_EQ(o.bulk_chroma, 0);
      EXPECT_EQ(o.third, 0);
    }
    EXPECT_EQ(ppl::start_pointers_of(c, out_format::rgb24).stage, 239 * 320 * 3);
    EXPECT_EQ(ppl::start_pointers_of(c, out_format::rgb24).bulk, (d < 0 ? 236 : 238) * 320 * 3);
    EXPECT_EQ(ppl::start_pointers_of(c, out_format::rgb32).stage, 239 * 320 * 4);
    EXPECT_EQ(ppl::start_pointers_of(c, out_format::rgb32).bulk, 238 * 320 * 4);
  }
}

TEST_F(output_offset_plan, starts_under_both_mirrors) {
  const int n = 320 * 240, q = n / 4;
  for (int d : {-1, 0, 1, 2}) {
    state_320(true, true, d);
    const ppl::start_pointers i420 = ppl::start_pointers_of(c, out_format::i420);
    EXPECT_EQ(i420.stage, n - 16);
    EXPECT_EQ(i420.stage_chroma, q - 16);
    EXPECT_EQ(i420.bulk, d < 0 ? n - 64 - 3 * 320 : n - 32 - 320);
    EXPECT_EQ(i420.bulk_chroma, d < 0 ? q - 32 - 160 : q - 16);
    const ppl::start_pointers packed = ppl::start_pointers_of(c, out_format::uyvy);
    EXPECT_EQ(packed.stage, 2 * (n - 16));
    EXPECT_EQ(packed.bulk, 2 * (n - 320 - 32));
    EXPECT_EQ(packed.third, 2 * (n - 32));
    const ppl::start_pointers rgb24 = ppl::start_pointers_of(c, out_format::rgb24);
    EXPECT_EQ(rgb24.stage, 3 * (320 - (d < 0 ? 32 : d > 0 ? 8 : 16)));
    EXPECT_EQ(rgb24.bulk, 3 * (320 - (d < 0 ? 64 : 32)));
    const ppl::start_pointers rgb32 = ppl::start_pointers_of(c, out_format::rgb32);
    EXPECT_EQ(rgb32.stage, 4 * (320 - (d > 0 ? 8 : 16)));
    EXPECT_EQ(rgb32.bulk, 4 * (320 - 32));
  }
}

TEST_F(output_offset_plan, the_third_pointer_of_packed_formats) {
  const int n = 640 * 480;
  state_640(true, false, -1);
  EXPECT_EQ(ppl::start_pointers_of(c, out_format::yuyv).third, 2 * (640 - 32));
  state_640(false, true, -1);
  EXPECT_EQ(ppl::start_pointers_of(c, out_format::yuyv).third, 2 * (n - 640));
}

TEST_F(output_offset_plan, starts_count_black_lines_as_rows_of_the_frame) {
  state_640(false, true, 0);
  ASSERT_EQ(ppl_set_decimation(c, 0, 8, 12), 1);
  EXPECT_EQ(ppl::start_pointers_of(c, out_format::i420).stage, 640 * 499);
  EXPECT_EQ(ppl::start_pointers_of(c, out_format::yuyv).stage, 2 * 640 * 499);
}

TEST_F(output_offset_plan, bytes_of_a_frame) {
  state_640(false, false, 0);
  EXPECT_EQ(ppl::output_bytes(c, out_format::i420), 460800);
  EXPECT_EQ(ppl::output_bytes(c, out_format::yuyv), 614400);
  EXPECT_EQ(ppl::output_bytes(c, out_format::uyvy), 614400);
  EXPECT_EQ(ppl::output_bytes(c, out_format::rgb24), 921600);
  EXPECT_EQ(ppl::output_bytes(c, out_format::rgb32), 1228800);
  ASSERT_EQ(ppl_set_decimation(c, 0, -480, 0), 1);
  EXPECT_EQ(ppl::output_bytes(c, out_format::rgb32), 0);
  ASSERT_EQ(ppl_set_decimation(c, 0, -481, 0), 1);
  EXPECT_EQ(ppl::output_bytes(c, out_format::rgb32), 0);
}

}  // namespace
