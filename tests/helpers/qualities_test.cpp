// The public table of qualities, held to what frames do: where it says that a frame runs, something happens, and where
// it says that a picture is whole, it is, and nowhere else.
#include "helpers/ppl_qualities.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "paths/qualities.h"
#include "support/frame_fixture.h"

extern "C" int qualities_in_c99(void);  // qualities_c99.c

namespace {

using namespace engine;

constexpr int kWidth = 128, kHeight = 48;

struct made {
  bytes source, first, second;  // the picture over a buffer of 0x5a and over one of 0xa5
  int width, height;
  bool answer;
};

made make(uint32_t quality, bool medium, int f, int32_t size, bool h = false, bool v = false) {
  made m = {};
  for (int round = 0; round < 2; ++round) {
    ppl_context* const c = ppl_init();
    ppl_set_quality(c, quality);
    medium ? ppl_enable_medium_filter(c) : ppl_disable_medium_filter(c);
    ppl_set_decimation(c, size, 0, 0);
    ppl_set_h_mirror(c, h);
    ppl_set_v_mirror(c, v);
    ppl_set_rgb_delta(c, 3, 2, 1);
    m.width = size < 0 ? 2 * kWidth : kWidth >> size;
    m.height = size < 0 ? 2 * kHeight : kHeight >> size;
    fenced source(noise(kWidth * kHeight, 77));
    fenced destination(frame_bytes(f, size_t(m.width) * size_t(m.height)), round == 0 ? 0x5a : 0xa5);
    m.answer = call(f, c, source.data(), destination.data(), kWidth, kHeight) != 0;
    m.source = source.content();
    (round == 0 ? m.first : m.second) = destination.content();
    ppl_free(c);
  }
  return m;
}

// A byte of a pixel that carries its brightness: luma, or green.
uint8_t light(const bytes& picture, int f, int width, int height, int row, int column) {
  const size_t upwards = size_t(height - 1 - row) * size_t(width) + size_t(column);
  const size_t downwards = size_t(row) * size_t(width) + size_t(column);
  switch (f) {
    case I420:
      return picture[downwards];
    case YUYV:
      return picture[2 * downwards];
    case UYVY:
      return picture[2 * downwards + 1];
    case RGB24:
      return picture[3 * upwards + 1];
    default:
      return picture[4 * upwards + 1];
  }
}

// Are the picture's samples those of the picture at the same size: halved, every second one of every second row;
// doubled, all of them at every second column of every second row? A halved raw frame may take the odd columns, and a
// doubled picture begin with a repeated row.
bool is_resized(const made& m, const made& same, int f, int32_t size) {
  const int rows = size < 0 ? kHeight : m.height, columns = size < 0 ? kWidth : m.width - 1;
  const int step = size > 0 ? 1 << size : 1;
  const auto alike = [&](int shift) {
    for (int r = 0; r < rows; ++r)
      for (int x = 0; x < columns; ++x) {
        const int got = size < 0 ? light(m.first, f, m.width, m.height, 2 * r + shift, 2 * x + 1)
                                 : light(m.first, f, m.width, m.height, r, x);
        const int wanted = light(same.first, f, kWidth, kHeight, step * r, step * x + (size > 0 ? shift : 0));
        if (got != wanted) return false;
      }
    return true;
  };
  return alike(0) || (size != 0 && alike(1));
}

TEST(Qualities, TheTableSaysWhereFramesRun) {
  for (uint32_t q = 0; q < PPL_QUALITIES; ++q)
    for (int f = 0; f < PPL_FORMATS; ++f)
      for (int32_t size = -1; size <= 2; ++size) {
        const made m = make(q, false, f, size);
        const bool raw = ppl_quality_table[q].road == PPL_ROAD_RAW;
        EXPECT_EQ(m.answer, !raw);  // the mark of a raw I420 frame is not drawn at these widths
        const bool touched = m.source != noise(kWidth * kHeight, 77) ||
                             m.first != bytes(m.first.size(), 0x5a) ||
                             m.second != bytes(m.second.size(), 0xa5);
        EXPECT_EQ(touched, ppl_quality_runs(q, uint32_t(f), size) != 0)
            << "quality " << q << " format " << f << " size " << size;
      }
}

TEST(Qualities, TheTableSaysWherePicturesAreWhole) {
  for (uint32_t q = 0; q < PPL_QUALITIES; ++q)
    for (int f = 0; f < PPL_FORMATS; ++f)
      for (const bool medium : {false, true}) {
        const made same = make(q, medium, f, 0);
        for (int32_t size = -1; size <= 2; ++size) {
          if (!ppl_quality_runs(q, uint32_t(f), size)) {
            EXPECT_FALSE(ppl_quality_is_whole(q, medium, uint32_t(f), size, 0, 0));
            continue;
          }
          const made m = make(q, medium, f, size);
          const bool whole = m.first == m.second && is_resized(m, same, f, size);
          EXPECT_EQ(whole, ppl_quality_is_whole(q, medium, uint32_t(f), size, 0, 0) != 0)
              << "quality " << q << " medium filter " << medium << " format " << f << " size " << size;
        }
      }
}

TEST(Qualities, OneMirrorBreaksDoubledRgb24OfTheWalk) {
  for (uint32_t q = 0; q < PPL_QUALITIES; ++q)
    for (int f = 0; f < PPL_FORMATS; ++f)
      for (int32_t size = -1; size <= 1; ++size)
        for (int mirrors = 1; mirrors < 4; ++mirrors) {
          const bool h = (mirrors & 1) != 0, v = (mirrors & 2) != 0;
          if (!ppl_quality_is_whole(q, 0, uint32_t(f), size, 0, 0)) continue;
          const made m = make(q, false, f, size, h, v);
          EXPECT_EQ(m.first == m.second, ppl_quality_is_whole(q, 0, uint32_t(f), size, h, v) != 0)
              << "quality " << q << " format " << f << " size " << size << " mirrors " << mirrors;
        }
}

TEST(Qualities, OnlyThoseThatReadTheMediumFilterChangeWithIt) {
  for (uint32_t q = 0; q < PPL_QUALITIES; ++q) {
    if (!ppl_quality_runs(q, PPL_FORMAT_I420, 0)) continue;
    const bool changes = make(q, false, I420, 0).source != make(q, true, I420, 0).source;
    EXPECT_EQ(changes, ppl_quality_table[q].reads_medium_filter != 0) << q;
  }
}

TEST(Qualities, StatisticsAreThoseOfTheTable) {
  for (uint32_t q = 0; q < PPL_QUALITIES; ++q) {
    ppl_context* const c = ppl_init();
    ppl_set_quality(c, q);
    fenced source(bytes(192 * 96, 100));  // flat: every cell is in range
    fenced destination(frame_bytes(I420, 192 * 96));
    call(I420, c, source.data(), destination.data(), 192, 96);
    const auto any = [](const uint32_t* rgb) { return rgb[0] + rgb[1] + rgb[2] != 0; };
    const int got = (any(ppl_rgb_means_whole_frame(c)) ? PPL_STATISTICS_FRAME : 0) |
                    (any(ppl_rgb_means_all_sub_windows(c)) ? PPL_STATISTICS_WINDOWS : 0) |
                    (ppl_n_qual_2x2_whole_frame(c) != 0 ? PPL_STATISTICS_RANGES : 0);
    EXPECT_EQ(got, ppl_quality_table[q].statistics) << q;
    EXPECT_EQ(ppl_n_qAE_2x2_whole_frame(c) != 0, ppl_n_qual_2x2_whole_frame(c) != 0) << q;
    ppl_free(c);
  }
}

TEST(Qualities, RowsAreCompleteAndInOrder) {
  std::set<std::string> names, summaries;
  for (uint32_t q = 0; q < PPL_QUALITIES; ++q) {
    const ppl_quality_row& row = ppl_quality_table[q];
    EXPECT_EQ(row.quality, q);
    for (int f = 0; f < PPL_FORMATS; ++f) {
      EXPECT_EQ(row.whole[f] & ~row.runs[f], 0) << q;
      EXPECT_EQ(row.whole_medium[f] & ~row.runs[f], 0) << q;
      EXPECT_TRUE(row.reads_medium_filter || row.whole[f] == row.whole_medium[f]) << q;
      EXPECT_TRUE(row.road != PPL_ROAD_COUNTED || row.runs[f] == 0) << q;
    }
    if (row.road == PPL_ROAD_COUNTED || row.road == PPL_ROAD_RAW) {
      EXPECT_EQ(row.statistics, PPL_STATISTICS_NONE) << q;
      EXPECT_STREQ(ppl_quality_name(q), row.road == PPL_ROAD_RAW ? "raw" : "counted") << q;
    } else {
      EXPECT_TRUE(names.insert(ppl_quality_name(q)).second) << q;
      EXPECT_TRUE(summaries.insert(ppl_quality_summary(q)).second) << q;
    }
  }
  EXPECT_STREQ(ppl_quality_name(PPL_QUALITIES), "unknown");
  std::set<std::string> formats;
  for (uint32_t f = 0; f < PPL_FORMATS; ++f) formats.insert(ppl_format_name(f));
  EXPECT_EQ(formats.size(), size_t{PPL_FORMATS});
  EXPECT_EQ(formats.count("unknown"), 0u);
  EXPECT_STREQ(ppl_format_name(PPL_FORMATS), "unknown");
  EXPECT_FALSE(ppl_quality_runs(PPL_QUALITIES, 0, 0) || ppl_quality_runs(0, PPL_FORMATS, 0) ||
               ppl_quality_runs(0, 0, 3) || ppl_quality_runs(0, 0, -2));
  ppl_context* const c = ppl_init();
  EXPECT_EQ(ppl_quality(c), uint32_t{PPL_QUALITY_DEFAULT});
  ppl_free(c);
}

// What the library's own half of the table and its formats say once more for themselves.
TEST(Qualities, BothHalvesOfTheTableAgree) {
  for (const ppl::quality_row& q : ppl::quality_rows) {
    const bool flat = q.demosaic != nullptr && ppl::is_tested(q.demosaic->flat);
    const bool left_over = q.demosaic != nullptr && q.demosaic->flat == ppl::flat_colours::left_over;
    EXPECT_EQ(ppl_quality_leaves_colours(q.quality) != 0, flat) << int{q.quality};
    EXPECT_EQ(ppl_quality_shows_colours(q.quality) != 0, left_over) << int{q.quality};
    EXPECT_EQ(ppl_quality_is_pale_in_rgb(q.quality) != 0, q.rgb == ppl::rgb_form::yuv_planes)
        << int{q.quality};
  }
  for (uint32_t f = 0; f < PPL_FORMATS; ++f) {
    EXPECT_EQ(ppl_format_is_rgb(f) != 0, ppl::is_rgb(ppl::out_format(f))) << f;
    EXPECT_EQ(ppl_format_pixel_bytes(f), uint32_t(ppl::bytes_per_pixel(ppl::out_format(f)))) << f;
  }
}

TEST(Qualities, TheHeaderIsC99) {
  EXPECT_EQ(qualities_in_c99(), 0);
}

}  // namespace
