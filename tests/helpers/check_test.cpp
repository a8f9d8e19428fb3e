// helpers/ppl_check.h against the library and the plain reference: over all combinations it promises no picture that
// does not come, denies none that does, and knows what the call answers and whether it counts the frame.
#include "helpers/ppl_check.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "helpers/scenes.h"
#include "ppl.h"
#include "support/qualities.h"

extern "C" int whole_in_c(uint32_t format, uint32_t quality, uint32_t width, uint32_t height);

namespace {

constexpr ppl_plan kOrdinary = ppl_plan_frame(PPL_CALL_SAME, PPL_FORMAT_I420, PPL_QUALITY_FULL, 640, 480);
static_assert(ppl_check(&kOrdinary).whole);
static_assert(ppl_check(&kOrdinary).destination_bytes == 640 * 480 * 3 / 2);

std::string words(const ppl_plan& p) {
  std::string s = "call " + std::to_string(p.call) + ", " + ppl_format_name(p.format);
  if (ppl_call_takes_bayer(p.call))
    s += ", quality " + std::to_string(p.quality) + (p.medium_filter ? " with medium filter" : "");
  else
    s += std::string(" from ") + ppl_format_name(p.input) + (p.process ? ", process" : "");
  s += ", mirrors " + std::to_string(p.h_mirror) + std::to_string(p.v_mirror);
  s += ", decimation " + std::to_string(p.decimation) + ", lines " + std::to_string(p.top_black_lines) +
       " + " + std::to_string(p.bottom_black_lines) + (p.sized ? ", sized" : "") +
       (p.P3_only ? ", P3_only" : "");
  s += ", " + std::to_string(p.width) + " x " + std::to_string(p.height) + " stride " +
       std::to_string(p.stride) + " to " + std::to_string(p.out_width) + " x " + std::to_string(p.out_height);
  s += ", at " + std::to_string(p.source_at) + " " + std::to_string(p.destination_at) + " " +
       std::to_string(p.scratch_at);
  return s;
}

int promised, denied, failed;

bool leaves_open(const ppl_plan& p) {
  const bool bayer = ppl_call_takes_bayer(p.call);
  // The rows of a scaled picture come out in whole groups, at a pitch of their own.
  if (p.call == PPL_CALL_SCALED && p.out_width % 32 != 0) return true;
  if (bayer && (p.quality == 4 || p.quality == 9)) return false;
  if (p.width % 16 != 0 || p.height % 2 != 0) return true;
  const bool cells = bayer && (p.quality == 3 || p.quality == 13);
  const bool half = p.call == PPL_CALL_HALF ||
                    ((p.call == PPL_CALL_FRAME || p.call == PPL_CALL_STRIDE_4) && p.decimation > 0);
  return cells && (p.width % 32 != 0 || (half && (p.width % 64 != 0 || p.height % 4 != 0)));
}

// One plan: the verdict, and what is seen. `reference` looks at the plain reference too.
void hold(const ppl_plan& p, bool reference = false) {
  const ppl_verdict v = ppl_check(&p);
  (v.whole ? promised : denied)++;
  // At widths that are no multiple of 16 and at odd heights what a picture holds is open, as it is at the cells' odd
  // groups: no promise may be made there, whatever happens to come out.
  const bool open = leaves_open(p);
  EXPECT_FALSE(open && v.whole) << words(p);
  const auto judge = [&](const char* who, const scenes::seen& s) {
    if ((open || s.whole == (v.whole != 0)) && s.result == (v.answer != 0) && s.counted == (v.counted != 0))
      return;
    if (++failed > 40) return;
    ADD_FAILURE() << who << ": " << words(p) << "\n  verdict: whole " << int{v.whole} << " ("
                  << ppl_reason_text(v.reason) << "), answer " << int{v.answer} << ", counted "
                  << int{v.counted} << "\n  seen: whole " << s.whole << ", answer " << s.result
                  << ", counted " << s.counted << "; " << s.why;
  };
  judge("library", scenes::look(scenes::library(), p));
  if (reference) judge("reference", scenes::look(scenes::reference(), p));
  if (v.whole) {
    EXPECT_EQ(v.destination_bytes, scenes::bytes_of(p.format, scenes::picture_of(p))) << words(p);
  }
  EXPECT_EQ(v.whole != 0, v.reason == PPL_WHOLE);
  ppl_plan better;
  if (ppl_nearest(&p, &better)) {
    if (!ppl_check(&better).whole) ADD_FAILURE() << "nearest to " << words(p) << " is " << words(better);
    if (v.whole) {
      EXPECT_EQ(words(better), words(p));
    }
  } else {
    EXPECT_FALSE(v.whole) << words(p);
    EXPECT_TRUE(p.call == PPL_CALL_PACKED_12_BIT || p.call == PPL_CALL_RGB24_TO_RGB32 ||
                v.reason == PPL_REASON_NO_SUCH_CONVERSION)
        << words(p);
  }
}

class check : public testing::Test {
 protected:
  void SetUp() override { promised = denied = failed = 0; }
  bool never_ = false;  // no plan of the test makes a picture
  // A test that only promises, or only denies, would show little.
  void TearDown() override {
    if (HasFailure()) ADD_FAILURE() << failed << " of " << promised + denied << " plans";
    EXPECT_EQ(promised == 0, never_);
    EXPECT_GT(denied, 0);
    RecordProperty("promised", promised);
    RecordProperty("denied", denied);
  }
};

struct size {
  uint32_t width, height;
};

// Every quality, format, decimation, mirror state and medium filter, at sizes of every kind.
class check_frames : public check, public testing::WithParamInterface<int> {};

TEST_P(check_frames, every_combination) {
  constexpr size sizes[] = {{64, 8},   {32, 4}, {48, 8}, {96, 12}, {80, 6},
                            {128, 16}, {64, 6}, {40, 8}, {64, 7},  {16, 2}};
  const auto format = static_cast<uint32_t>(GetParam());
  for (uint32_t quality = 0; quality < PPL_QUALITIES; ++quality)
    for (int medium = 0; medium < 2; ++medium)
      for (int mirrors = 0; mirrors < 4; ++mirrors)
        for (int decimation = -1; decimation <= 2; ++decimation)
          for (const size& s : sizes) {
            ppl_plan p = ppl_plan_frame(PPL_CALL_FRAME, format, quality, s.width, s.height);
            p.medium_filter = medium != 0;
            p.h_mirror = mirrors & 1;
            p.v_mirror = mirrors > 1;
            p.decimation = decimation;
            hold(p, s.width <= 64 && s.height <= 8 && medium == (quality == 2));
          }
}

TEST_P(check_frames, every_size) {
  const auto format = static_cast<uint32_t>(GetParam());
  const std::set<uint32_t> widths = {0,  1,  2,  3,  8,  15, 16,  17,  24,  30,  32,
                                     33, 48, 50, 64, 80, 96, 112, 128, 144, 160, 320};
  for (uint32_t quality = 0; quality < PPL_QUALITIES; ++quality)
    for (int decimation = -1; decimation <= 1; ++decimation)
      for (uint32_t width : widths)
        for (uint32_t height : {0, 1, 2, 3, 4, 5, 6, 8, 10, 14}) {
          ppl_plan p = ppl_plan_frame(PPL_CALL_FRAME, format, quality, width, height);
          p.decimation = decimation;
          hold(p);
        }
}

TEST_P(check_frames, limits_and_strides) {
  const auto format = static_cast<uint32_t>(GetParam());
  for (uint32_t quality = 0; quality < PPL_QUALITIES; ++quality)
    for (int decimation = -1; decimation <= 1; ++decimation) {
      for (const size& s :
           {size{2016, 4}, {2032, 4}, {2036, 4}, {2037, 4}, {2048, 4}, {64, 2048}, {64, 2049}, {32, 2046}}) {
        ppl_plan p = ppl_plan_frame(PPL_CALL_FRAME, format, quality, s.width, s.height);
        p.decimation = decimation;
        if (s.height < 5 || quality == 2 || quality == 3 || quality == 4) hold(p);
      }
      for (uint32_t stride : {0, 32, 63, 65, 80, 128, 256, 2048, 2049}) {
        ppl_plan p = ppl_plan_frame(PPL_CALL_FRAME, format, quality, 64, 24);
        p.decimation = decimation;
        p.stride = stride;
        hold(p, stride == 80);
      }
    }
}

TEST_P(check_frames, black_lines_addresses_and_the_off_switch) {
  const auto format = static_cast<uint32_t>(GetParam());
  for (uint32_t quality : {0, 3, 4, 5, 13, 15})
    for (int decimation = -1; decimation <= 1; ++decimation) {
      ppl_plan p = ppl_plan_frame(PPL_CALL_FRAME, format, quality, 64, 12);
      p.decimation = decimation;
      const int lines[][2] = {{2, 2}, {-2, 0}, {5, -5}, {0, 1}, {-100, 0}};
      for (const auto& l : lines) {
        ppl_plan q = p;
        q.sized = 1;
        q.top_black_lines = l[0];
        q.bottom_black_lines = l[1];
        hold(q, true);
      }
      for (uint32_t call = PPL_CALL_FRAME; call <= PPL_CALL_STRIDE_4; ++call)
        for (uint8_t source_at : {uint8_t{0}, uint8_t{1}, uint8_t{4}, uint8_t{8}})
          for (uint8_t destination_at : {uint8_t{0}, uint8_t{2}, uint8_t{8}}) {
            ppl_plan q = p;
            q.call = static_cast<uint8_t>(call);
            q.source_at = source_at;
            q.destination_at = destination_at;
            hold(q, decimation == 0);
          }
      p.P3_only = 1;
      hold(p, true);
    }
}

TEST_P(check_frames, wrappers) {
  const auto format = static_cast<uint32_t>(GetParam());
  for (uint32_t call = PPL_CALL_SAME; call <= PPL_CALL_STRIDE_4; ++call)
    for (uint32_t quality = 0; quality < PPL_QUALITIES; ++quality)
      for (int decimation = -1; decimation <= 2; ++decimation)
        for (const size& s : {size{64, 8}, {48, 6}, {512, 2}, {528, 2}, {1024, 2}, {1040, 2}}) {
          ppl_plan p = ppl_plan_frame(call, format, quality, s.width, s.height);
          p.decimation = decimation;
          if (decimation == 0 || call == PPL_CALL_STRIDE_4) hold(p, s.width == 64);
          p.sized = 1;
          p.top_black_lines = 2;
          if (s.width == 64) hold(p);
        }
}

TEST_P(check_frames, scaled) {
  const auto format = static_cast<uint32_t>(GetParam());
  never_ = format >= PPL_FORMAT_UYVY;
  for (uint32_t quality = 0; quality < PPL_QUALITIES; ++quality)
    for (const size& s : {size{64, 24}, {32, 2}, {48, 24}, {64, 23}})
      for (uint32_t out_width : {0, 16, 32, 40, 48, 64, 80, 96, 160})
        for (uint32_t out_height : {0, 2, 8, 12, 24, 25, 26, 48}) {
          ppl_plan p = ppl_plan_frame(PPL_CALL_SCALED, format, quality, s.width, s.height);
          p.out_width = out_width;
          p.out_height = out_height;
          hold(p, s.width == 64 && out_width == 96);
        }
  for (const size& s : {size{14336, 2}, {14368, 2}, {28672, 2}, {28704, 2}, {65536, 2}}) {
    ppl_plan p = ppl_plan_frame(PPL_CALL_SCALED, format, 3, 32, 2);
    p.out_width = s.width;
    p.out_height = s.height;
    hold(p);
  }
  for (uint8_t source_at : {uint8_t{0}, uint8_t{4}, uint8_t{8}})
    for (uint8_t destination_at : {uint8_t{0}, uint8_t{4}, uint8_t{8}})
      for (uint8_t scratch_at : {uint8_t{0}, uint8_t{4}, uint8_t{8}}) {
        ppl_plan p = ppl_plan_frame(PPL_CALL_SCALED, format, 0, 64, 8);
        p.stride = 96;
        p.out_width = 96;
        p.out_height = 12;
        p.source_at = source_at;
        p.destination_at = destination_at;
        p.scratch_at = scratch_at;
        hold(p, true);
      }
}

INSTANTIATE_TEST_SUITE_P(formats, check_frames, testing::Range(0, int{PPL_FORMATS}), [](const auto& i) {
  return std::string(ppl_format_name(static_cast<uint32_t>(i.param)));
});

// ---- Conversions

bool is_exported(const ppl_plan& p) {
  if (p.call == PPL_CALL_PACKED) return p.format == PPL_FORMAT_I420 || p.format == PPL_FORMAT_RGB24;
  if (p.call == PPL_CALL_PACKED_12_BIT) return p.format == PPL_FORMAT_I420;
  if (p.call == PPL_CALL_RGB24_TO_RGB32) return p.format == PPL_FORMAT_RGB32;
  if (p.format == PPL_FORMAT_RGB32) return false;
  const bool swapped = p.format != p.input && (p.format == PPL_FORMAT_YUYV || p.format == PPL_FORMAT_UYVY);
  return !p.process || (p.call == PPL_CALL_FIELDS && !swapped);
}

template <class Each>
void every_conversion(const Each& each) {
  for (uint32_t call = PPL_CALL_PACKED; call < PPL_CALLS; ++call)
    for (uint32_t input : {PPL_FORMAT_YUYV, PPL_FORMAT_UYVY})
      for (uint32_t format = 0; format < PPL_FORMATS; ++format)
        for (uint8_t process : {uint8_t{0}, uint8_t{1}}) {
          ppl_plan p = ppl_plan_conversion(call, input, format, 64, 32, 64, 32);
          p.process = process;
          if (is_exported(p)) each(p);
        }
}

TEST_F(check, conversions_at_sizes_that_stand) {
  every_conversion([](ppl_plan p) {
    for (int decimation = -1; decimation <= 2; ++decimation)
      for (const size& s : {size{64, 8},
                            {16, 2},
                            {32, 4},
                            {48, 12},
                            {64, 6},
                            {80, 16},
                            {40, 8},
                            {64, 10},
                            {2032, 4},
                            {2037, 4}})
        for (const auto& lines : {std::pair{0, 0}, {2, 2}, {4, 6}, {1, 2}, {0, 2}, {2, 0}, {0, 1}}) {
          if ((lines.first || lines.second) && s.width > 64) continue;
          p.sized = 1;
          p.decimation = decimation;
          p.top_black_lines = lines.first;
          p.bottom_black_lines = lines.second;
          p.width = s.width;
          p.height = s.height;
          p.out_width = decimation < 0 ? 2 * s.width : s.width >> decimation;
          p.out_height = (decimation < 0 ? 2 * s.height : s.height >> decimation) +
                         static_cast<uint32_t>(lines.first + lines.second);
          hold(p, s.width <= 64 && s.height <= 8);
        }
  });
}

TEST_F(check, conversions_by_the_table) {
  const struct {
    size in, out;
  } pairs[] = {
      {{320, 240}, {160, 120}}, {{320, 240}, {320, 240}}, {{480, 480}, {480, 480}},  {{480, 480}, {480, 576}},
      {{480, 576}, {480, 576}}, {{640, 480}, {160, 120}}, {{640, 480}, {320, 240}},  {{640, 480}, {352, 240}},
      {{640, 480}, {352, 288}}, {{640, 480}, {640, 480}}, {{640, 480}, {1280, 960}}, {{704, 480}, {176, 120}},
      {{704, 480}, {176, 128}}, {{704, 480}, {352, 240}}, {{704, 480}, {352, 288}},  {{704, 576}, {704, 576}},
      {{704, 480}, {704, 576}}, {{704, 480}, {352, 243}}, {{720, 480}, {720, 481}},  {{720, 576}, {720, 580}},
      {{320, 240}, {640, 480}}, {{64, 8}, {64, 8}}};
  // The pictures are large: each conversion takes every third pair, the next conversion its neighbour.
  size_t turn = 0;
  every_conversion([&](ppl_plan p) {
    if (p.process && p.input == PPL_FORMAT_UYVY) return;
    ++turn;
    for (size_t i = turn % 3; i < std::size(pairs); i += 3) {
      const auto& pair = pairs[i];
      p.width = pair.in.width;
      p.height = pair.in.height;
      p.out_width = pair.out.width;
      p.out_height = pair.out.height;
      p.decimation = p.top_black_lines = p.bottom_black_lines = 0;
      hold(p, pair.in.width == 320 && !p.process);
      // The context holds what the table asks for, and so loses the lines.
      const ppl_placement place = ppl_place(p.width, p.height, p.out_width, p.out_height);
      if (place.top_black_lines == 0 || p.process) continue;
      p.decimation = place.decimation;
      p.top_black_lines = place.top_black_lines;
      p.bottom_black_lines = place.bottom_black_lines;
      hold(p);
    }
  });
}

TEST_F(check, conversions_at_any_address) {
  every_conversion([](ppl_plan p) {
    p.sized = 1;
    for (uint8_t source_at : {uint8_t{0}, uint8_t{1}, uint8_t{8}})
      for (uint8_t destination_at : {uint8_t{0}, uint8_t{4}, uint8_t{8}})
        for (uint8_t P3_only : {uint8_t{0}, uint8_t{1}})
          for (uint8_t mirrors : {uint8_t{0}, uint8_t{1}, uint8_t{2}, uint8_t{3}}) {
            p.source_at = source_at;
            p.destination_at = destination_at;
            p.P3_only = P3_only;
            p.h_mirror = mirrors & 1;
            p.v_mirror = mirrors >> 1;
            hold(p, mirrors == 3);
          }
  });
}

// ---- The table of sizes, the nearest plan, the sentences

TEST(check_table, is_that_of_the_library) {
  ppl_context* const c = ppl_init();
  for (uint32_t in_width : {320, 480, 640, 704, 720, 1280, 64})
    for (uint32_t in_height : {240, 480, 576, 1024})
      for (uint32_t out_width : {160, 176, 320, 352, 480, 640, 704, 720, 1280})
        for (uint32_t out_height :
             {119u, 120u, 144u, 240u, 241u, 288u, 480u, 481u, 576u, 577u, 960u, 1024u, 3000u, 0x80000100u}) {
          ppl_reset_decimation(c);
          const bool taken = ppl_new_frame_sizes(c, in_width, in_height, out_width, out_height, 1);
          const ppl_placement p = ppl_place(in_width, in_height, out_width, out_height);
          ASSERT_EQ(p.found != 0, taken)
              << in_width << " " << in_height << " " << out_width << " " << out_height;
          if (!taken) continue;
          EXPECT_EQ(p.decimation, ppl_decimation(c));
          EXPECT_EQ(p.top_black_lines, ppl_decimation_top_black_lines(c));
          EXPECT_EQ(p.bottom_black_lines, ppl_decimation_bottom_black_lines(c));
        }
  ppl_free(c);
}

// Where sizes alone are wrong, no other size is nearer in width, nor in height.
TEST(check_nearest, sizes_are_the_nearest) {
  for (uint32_t format = 0; format < PPL_FORMATS; ++format)
    for (uint32_t quality : {0, 3, 11, 13, 15})
      for (int decimation : {0, 1})
        for (uint32_t width : {1, 17, 100, 656, 1000, 2040, 5000})
          for (uint32_t height : {1, 5, 99, 481, 2047, 3000}) {
            ppl_plan p = ppl_plan_frame(PPL_CALL_FRAME, format, quality, width, height), near;
            p.decimation = decimation;
            if (!ppl_quality_is_whole(quality, 0, format, decimation, 0, 0)) continue;
            ASSERT_TRUE(ppl_nearest(&p, &near));
            EXPECT_EQ(near.quality, quality);
            EXPECT_EQ(near.decimation, decimation);
            const auto distance = [](uint32_t a, uint32_t b) { return a < b ? b - a : a - b; };
            uint32_t least = UINT32_MAX;
            for (uint32_t w = 1; w <= 2048; ++w) {
              const ppl_plan q = [&] {
                ppl_plan r = near;
                r.width = r.stride = w;
                return r;
              }();
              if (ppl_check(&q).whole) least = std::min(least, distance(w, width));
            }
            EXPECT_EQ(distance(near.width, width), least) << words(p) << ": " << words(near);
            least = UINT32_MAX;
            for (uint32_t h = 1; h <= 2048; ++h) {
              ppl_plan q = near;
              q.height = h;
              if (ppl_check(&q).whole) least = std::min(least, distance(h, height));
            }
            EXPECT_EQ(distance(near.height, height), least) << words(p) << ": " << words(near);
          }
}

TEST(check_nearest, as_a_user_would_want_it) {
  ppl_plan p = ppl_plan_frame(PPL_CALL_SAME, PPL_FORMAT_RGB32, 15, 640, 480), near;
  EXPECT_EQ(ppl_check(&p).reason, PPL_REASON_QUALITY_NOT_IN_FORMAT);
  ASSERT_TRUE(ppl_nearest(&p, &near));
  EXPECT_EQ(near.quality, 0);
  EXPECT_EQ(near.width, 640u);
  p = ppl_plan_frame(PPL_CALL_HALF, PPL_FORMAT_I420, 15, 650, 481);
  EXPECT_EQ(ppl_check(&p).reason, PPL_REASON_WIDTH_64);
  ASSERT_TRUE(ppl_nearest(&p, &near));
  EXPECT_EQ(near.width, 640u);
  EXPECT_EQ(near.height, 480u);
  EXPECT_EQ(near.call, PPL_CALL_HALF);
  p = ppl_plan_frame(PPL_CALL_DOUBLE, PPL_FORMAT_I420, 11, 64, 64);
  ASSERT_TRUE(ppl_nearest(&p, &near));
  EXPECT_EQ(near.quality, 1);
  EXPECT_EQ(near.call, PPL_CALL_DOUBLE);
  p = ppl_plan_frame(PPL_CALL_DOUBLE, PPL_FORMAT_RGB24, 0, 64, 64);
  p.h_mirror = 1;
  ASSERT_TRUE(ppl_nearest(&p, &near));
  EXPECT_EQ(near.v_mirror, 1);
  EXPECT_EQ(near.quality, 0);
  p = ppl_plan_conversion(PPL_CALL_PACKED, PPL_FORMAT_YUYV, PPL_FORMAT_I420, 1920, 1080, 1920, 1080);
  EXPECT_EQ(ppl_check(&p).reason, PPL_REASON_SIZES_NOT_IN_TABLE);
  ASSERT_TRUE(ppl_nearest(&p, &near));
  EXPECT_EQ(near.sized, 1);
  EXPECT_EQ(near.out_height, 1080u);
}

TEST(check_words, every_reason_has_a_sentence_of_its_own) {
  std::set<std::string> seen;
  for (uint32_t r = 0; r <= PPL_REASONS; ++r) {
    const std::string s = ppl_reason_text(r);
    EXPECT_TRUE(seen.insert(s).second) << r << ": " << s;
    EXPECT_EQ(s == "no such reason", r == PPL_REASONS) << r;
    EXPECT_GT(s.size(), 10u);
  }
}

// Sentences that recommend qualities name those of the table.
TEST(check_words, sentences_name_the_qualities_of_the_table) {
  const auto doubled = [](uint32_t format, int medium) {
    std::vector<std::string> numbers;
    for (uint32_t q = 0; q < PPL_QUALITIES; ++q)
      if (ppl_quality_is_whole(q, medium, format, PPL_SIZE_DOUBLE, 0, 0))
        numbers.push_back(std::to_string(q));
    return numbers;
  };
  const auto list = [](const std::vector<std::string>& numbers, const std::string& last) {
    std::string text;
    for (size_t i = 0; i < numbers.size(); ++i)
      text += (i == 0 ? "" : i + 1 < numbers.size() ? ", " : last) + numbers[i];
    return text;
  };
  const auto says = [](ppl_reason reason, const std::string& words) {
    const std::string sentence = ppl_reason_text(reason);
    EXPECT_NE(sentence.find(words), std::string::npos) << sentence << ": " << words;
  };
  const auto all = doubled(PPL_FORMAT_I420, 0), yuyv = doubled(PPL_FORMAT_YUYV, 1);
  std::vector<std::string> of_all_formats, by_medium_filter;
  for (const std::string& q : all) {
    const auto has = [&](const std::vector<std::string>& v) {
      return std::count(v.begin(), v.end(), q) != 0;
    };
    if (has(doubled(PPL_FORMAT_RGB24, 0))) of_all_formats.push_back(q);
    if (has(doubled(PPL_FORMAT_YUYV, 0)) && !has(yuyv)) by_medium_filter.push_back(q);
  }
  EXPECT_EQ(doubled(PPL_FORMAT_UYVY, 0), all);
  says(PPL_REASON_GREY_NOT_DOUBLED, "; " + list(all, " and ") + " are");
  says(PPL_REASON_NOT_CONVERTED_TO_RGB, "use quality " + list(of_all_formats, " or "));
  says(PPL_REASON_ROWS_BETWEEN, "in I420 and UYVY " + list(all, " and ") + " do not, in YUYV " +
                                    list(yuyv, ", ") + " and, without medium filter, " +
                                    list(by_medium_filter, ", "));
  std::string counted;  // as "5 to 8 and 14"
  for (uint32_t q = 0, end; q < PPL_QUALITIES; q = end) {
    end = q + 1;
    if (ppl_quality_table[q].road != PPL_ROAD_COUNTED) continue;
    while (end < PPL_QUALITIES && ppl_quality_table[end].road == PPL_ROAD_COUNTED) ++end;
    counted += (counted.empty() ? "" : " and ") + std::to_string(q);
    if (end - q > 1) counted += " to " + std::to_string(end - 1);
  }
  says(PPL_REASON_QUALITY_ONLY_COUNTS, "qualities " + counted + " only count");
  for (const uint32_t q : support::kFinished)
    for (uint32_t format = 0; format < PPL_FORMATS; ++format)
      if (ppl_quality_table[q].runs[format] == 0)
        says(PPL_REASON_QUALITY_NOT_IN_FORMAT, std::to_string(q) + " ");
}

TEST(check_words, c_agrees) {
  EXPECT_EQ(whole_in_c(PPL_FORMAT_I420, 15, 640, 480), 1);
  EXPECT_EQ(whole_in_c(PPL_FORMAT_RGB32, 15, 640, 480), 0);
}

TEST(check_words, what_does_not_exist) {
  ppl_plan p = ppl_plan_frame(PPL_CALL_SAME, 9, 15, 64, 8), near = {};
  EXPECT_EQ(ppl_check(&p).reason, PPL_REASON_UNKNOWN_CALL);
  EXPECT_FALSE(ppl_nearest(&p, &near));
  p = ppl_plan_frame(PPL_CALL_SAME, 0, 16, 64, 8);
  EXPECT_EQ(ppl_check(&p).reason, PPL_REASON_UNKNOWN_CALL);
  ASSERT_TRUE(ppl_nearest(&p, &near));
  EXPECT_EQ(near.quality, PPL_QUALITY_DEFAULT);
  p = ppl_plan_conversion(PPL_CALL_PACKED, PPL_FORMAT_RGB24, PPL_FORMAT_I420, 64, 8, 64, 8);
  EXPECT_EQ(ppl_check(&p).reason, PPL_REASON_NO_SUCH_CONVERSION);
  p = ppl_plan_frame(99, 0, 15, 64, 8);
  EXPECT_EQ(ppl_check(&p).reason, PPL_REASON_UNKNOWN_CALL);
}

}  // namespace
