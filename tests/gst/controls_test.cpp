// The element's properties: ranges and defaults, changes while it runs, the automatic controls, statistics messages.
#include <atomic>
#include <cmath>
#include <memory>
#include <thread>

#include "element.h"

namespace {

using namespace gst_test;

struct Specs {
  guint count = 0;
  GParamSpec** all;
  explicit Specs(GstElement* element)
      : all(g_object_class_list_properties(G_OBJECT_GET_CLASS(element), &count)) {}
  ~Specs() { g_free(all); }
};

bool is_own(const GParamSpec* spec) {
  return g_str_equal(g_type_name(spec->owner_type), "PplBayer");
}

std::string text_of(const GValue* value) {
  gchar* text = gst_value_serialize(value);
  const std::string result = text;
  g_free(text);
  return result;
}

// A value of its own for every property, by what its range allows; empty for those that cannot be written.
std::string another_value(const GParamSpec* spec) {
  if (!(spec->flags & G_PARAM_WRITABLE)) return {};
  const std::string name = spec->name;
  if (name == "sensor-matrix") return "<256,0,0,0,256,0,0,0,256>";
  if (name == "black-levels") return "<3,9,27,40>";
  if (name == "deltas") return "<-9,4,21>";
  if (name == "daylight-gains") return "<300,256,500>";
  if (name == "lens-origin") return "<20,7>";
  if (GST_IS_PARAM_SPEC_ARRAY_LIST(spec))
    return name.find("qual-") == 0 && name.size() == 6 ? "<10,200>" : "<2,9>";
  if (G_IS_PARAM_SPEC_BOOLEAN(spec)) return G_PARAM_SPEC_BOOLEAN(spec)->default_value ? "false" : "true";
  const auto* number = G_PARAM_SPEC_INT(spec);
  if (name == "quality") return "1";
  if (name == "gamma") return "-20";
  if (name == "lens-f1") return "3000";
  if (name == "lens-f2") return "60000";
  if (name == "edge-threshold2") return "60";
  return std::to_string(number->default_value + (number->default_value + 13 <= number->maximum ? 13 : -13));
}

class Controls : public Element {
 protected:
  // What makes the controls show.
  static constexpr const char* lively[] = {
      "quality=15 lens=true green-balance=true lens-f1=900 lens-shift2=28",
      "quality=0 medium-filter=true edge-threshold=20",
      "quality=1 lens=true lens-shift1=18 lens-f2=900",
      "quality=2 medium-filter=true",
      "quality=2 black-level=120",
      "quality=10 cfa-t1=4",
      "saturation=300"};
  // The frame of all tests with hot and dead samples in a bright and in a dark area.
  static Bytes spotted() {
    Bytes raw = mosaic();
    for (uint32_t y = 6; y < 26; ++y)
      for (uint32_t x = 32; x < 128; ++x) {
        uint8_t& sample = raw[y * width + x];
        if (x >= 100)
          sample = x % 7 == 3 && y % 5 == 2 ? 250 : 200;
        else if (x < 64)
          sample = x % 7 == 3 && y % 5 == 2 ? (y < 16 ? 4 : 3) : (y < 16 ? 7 : 4);
        else if (x % 7 == 3 && y % 5 == 2)
          sample = y % 2 ? 250 : 20;
      }
    return raw;
  }
  Bytes picture_of(const std::string& controls, const std::string& format) {
    open(controls, format);
    EXPECT_EQ(push(spotted()), GST_FLOW_OK) << controls << error();
    return pull();
  }
};

// Set while frames run, each property does what it does when it was set before the start; it is read back; and a
// change back gives the first picture again.
TEST_F(Controls, EveryPropertyMayChangeWhileItRuns) {
  size_t seen = 0;
  std::string unseen;
  open("", "I420");
  const Specs specs(element_);
  for (guint i = 0; i < specs.count; ++i) {
    const GParamSpec* spec = specs.all[i];
    const std::string value = is_own(spec) ? another_value(spec) : "";
    if (value.empty()) continue;
    const std::string name = spec->name;
    ++seen;
    bool differs = false;
    for (const char* controls : lively)
      for (const char* format : {"I420", "BGR"}) {
        const std::string before_words = controls;
        if (before_words.find(name + "=") != std::string::npos) continue;
        const Bytes fresh = picture_of(before_words + " " + name + "=\"" + value + "\"", format);
        ASSERT_FALSE(fresh.empty()) << name << error();
        const Bytes before = picture_of(before_words, format);
        GValue old = G_VALUE_INIT;
        g_value_init(&old, spec->value_type);
        g_object_get_property(G_OBJECT(element_), spec->name, &old);
        gst_util_set_object_arg(G_OBJECT(element_), spec->name, value.c_str());
        ASSERT_EQ(push(spotted()), GST_FLOW_OK) << name << error();
        const Bytes after = pull();
        EXPECT_EQ(after, fresh) << name << " " << controls << " " << format;
        GValue now = G_VALUE_INIT;
        g_value_init(&now, spec->value_type);
        g_object_get_property(G_OBJECT(element_), spec->name, &now);
        EXPECT_NE(text_of(&now), text_of(&old)) << name;
        g_object_set_property(G_OBJECT(element_), spec->name, &old);
        ASSERT_EQ(push(spotted()), GST_FLOW_OK);
        EXPECT_EQ(pull(), before) << name;
        differs |= after != before;
        g_value_unset(&old);
        g_value_unset(&now);
      }
    if (!differs) unseen += name + " ";
  }
  EXPECT_GE(seen, 50u);
  // Pictures do not depend on these.
  EXPECT_EQ(
      unseen,
      "round auto-interval daylight-gains statistics statistics-interval noise-g noise-r noise-b qual-bmgb "
      "qual-grmr qual-sum qual-diff qual-r qual-g qual-b qae ");
}

TEST_F(Controls, ArraysOfOtherLengthsAndNumbersAreRefused) {
  struct Catch {
    static void say(const gchar*, GLogLevelFlags, const gchar* text, gpointer to) {
      *static_cast<std::string*>(to) += text;
    }
  };
  open("black-levels=<1,2,3,4>", "I420");
  for (const auto& [name, value, why] :
       {std::tuple{"black-levels", "<1,2>", "takes 4 numbers from 0 to 255, not 2"},
        {"black-levels", "<1,2,3,256>", "takes 4 numbers from 0 to 255, not 256"},
        {"qual-bmgb", "<5,4>", "smallest number first"},
        {"sensor-matrix", "<1>", "takes 9 numbers"},
        {"lens-origin", "<3,-2>", "takes 2 numbers from -1 to 16384, not -2"}}) {
    std::string said;
    const guint handler = g_log_set_handler(nullptr, G_LOG_LEVEL_WARNING, Catch::say, &said);
    GValue array = G_VALUE_INIT;
    g_value_init(&array, GST_TYPE_ARRAY);
    ASSERT_TRUE(gst_value_deserialize(&array, value));
    g_object_set_property(G_OBJECT(element_), name, &array);
    g_value_unset(&array);
    g_log_remove_handler(nullptr, handler);
    EXPECT_NE(said.find(why), std::string::npos) << name << value << ": " << said;
  }
  GValue kept = G_VALUE_INIT;
  g_value_init(&kept, GST_TYPE_ARRAY);
  g_object_get_property(G_OBJECT(element_), "black-levels", &kept);
  EXPECT_EQ(text_of(&kept), "< (int)1, (int)2, (int)3, (int)4 >");
  g_value_unset(&kept);
}

// Properties set from another thread as fast as it can, while frames run: every picture is one of the two that the
// settings stand for, never a mixture.
TEST_F(Controls, SettersMayRunDuringFrames) {
  const Bytes dark = convert("black-levels=<60,60,60,60> gamma=-20", "I420"),
              bright = convert("black-levels=<0,0,0,0> gamma=-20", "I420");
  ASSERT_NE(dark, bright);
  open("black-level=60 gamma=-20", "I420");
  std::atomic<bool> stop{false};
  std::thread other([&] {
    for (int i = 0; !stop; ++i) g_object_set(element_, "black-level", i & 1 ? 60 : 0, nullptr);
  });
  for (int i = 0; i < 300; ++i) {
    ASSERT_EQ(push(mosaic()), GST_FLOW_OK);
    const Bytes picture = pull();
    ASSERT_TRUE(picture == dark || picture == bright) << i;
  }
  stop = true;
  other.join();
}

// A flat grey card under light that makes green twice as strong as red and blue: the gains bring them together.
Bytes card(uint32_t b, uint32_t g, uint32_t r, uint32_t w, uint32_t h) {
  Bytes raw;
  for (uint32_t y = 0; y < h; ++y)
    for (uint32_t x = 0; x < w; ++x) {
      const uint32_t light = 40 + (x / 8 * 5 + y / 8 * 11) % 60;  // patches of grey
      const uint32_t colour = (y & 1) + (x & 1) == 1 ? g : y & 1 ? r : b;
      raw.push_back(static_cast<uint8_t>(light * colour / 100));
    }
  return raw;
}

std::vector<int> gains_of(GstElement* element) {
  GValue array = G_VALUE_INIT;
  g_value_init(&array, GST_TYPE_ARRAY);
  g_object_get_property(G_OBJECT(element), "gains", &array);
  std::vector<int> gains;
  for (guint i = 0; i < gst_value_array_get_size(&array); ++i)
    gains.push_back(g_value_get_int(gst_value_array_get_value(&array, i)));
  g_value_unset(&array);
  return gains;
}

TEST_F(Controls, AutomaticWhiteBalanceFindsTheLight) {
  const std::string caps = "video/x-bayer,format=bggr,width=160,height=160";
  // In daylight the sensor wants 397, 256, 346: samples of grey are as 1/397, 1/256, 1/346.
  const Bytes daylight = card(74, 100, 64, 160, 160);
  open("red-gain=300 blue-gain=300 auto-white-balance=true auto-interval=2", "I420", caps);
  ASSERT_EQ(push(daylight), GST_FLOW_OK);
  EXPECT_FALSE(pull().empty());
  std::vector<int> found = gains_of(element_);
  ASSERT_EQ(found.size(), 3u);
  EXPECT_EQ(found[1], 256);
  EXPECT_NEAR(found[0], 397, 40);
  EXPECT_NEAR(found[2], 346, 40);
  // Lamplight, redder: the gains follow from frame to frame, red down, blue up, and come to rest.
  const Bytes lamp = card(45, 100, 115, 160, 160);
  int last_red = found[0];
  for (int i = 0; i < 60; ++i) {
    ASSERT_EQ(push(lamp), GST_FLOW_OK);
    pull();
    found = gains_of(element_);
    const double red = static_cast<double>(found[0]) / found[1];
    EXPECT_LE(red, static_cast<double>(last_red) / 256 + 0.02) << i;
    last_red = static_cast<int>(256 * red);
  }
  EXPECT_LT(last_red, 300);
  EXPECT_GT(found[2], found[0] * 3 / 2);
  // Off again: what was set before.
  g_object_set(element_, "auto-white-balance", FALSE, nullptr);
  ASSERT_EQ(push(lamp), GST_FLOW_OK);
  EXPECT_EQ(gains_of(element_), (std::vector<int>{300, 256, 300}));
  const Bytes plain = (pull(), push(lamp), pull());
  open("red-gain=300 blue-gain=300", "I420", caps);
  push(lamp);
  EXPECT_EQ(pull(), plain);
}

TEST_F(Controls, AutomaticExposureBrightensWithoutCutting) {
  const std::string caps = "video/x-bayer,format=bggr,width=160,height=160";
  open("auto-exposure=true auto-interval=1", "I420", caps);
  ASSERT_EQ(push(card(20, 20, 20, 160, 160)), GST_FLOW_OK);  // samples 8 to 19
  pull();
  std::vector<int> gains = gains_of(element_);
  EXPECT_EQ(gains[0], gains[1]);
  EXPECT_EQ(gains[1], gains[2]);
  EXPECT_GT(gains[0], 256 * 2);
  EXPECT_LE(gains[0], 2047);
  // A bright scene: down again, in steps, to 256 and not below.
  int last = gains[0];
  for (int i = 0; i < 40; ++i) {
    ASSERT_EQ(push(card(250, 250, 250, 160, 160)), GST_FLOW_OK);
    pull();
    gains = gains_of(element_);
    EXPECT_LE(gains[0], last);
    last = gains[0];
  }
  EXPECT_NEAR(last, 256, 16);
}

class Messages : public Controls {
 protected:
  void push_at(GstClockTime time) {
    const Bytes samples = mosaic();
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, samples.size(), nullptr);
    gst_buffer_fill(buffer, 0, samples.data(), samples.size());
    GST_BUFFER_PTS(buffer) = time;
    ASSERT_EQ(gst_harness_push(harness_, buffer), GST_FLOW_OK);
    pull();
  }
  // Times of the messages on the bus.
  std::vector<GstClockTime> times() {
    std::vector<GstClockTime> all;
    while (GstMessage* message = gst_bus_pop_filtered(bus_, GST_MESSAGE_ELEMENT)) {
      const GstStructure* s = gst_message_get_structure(message);
      EXPECT_TRUE(gst_structure_has_name(s, "ppl-statistics"));
      guint64 time = 0;
      EXPECT_TRUE(gst_structure_get_uint64(s, "running-time", &time));
      all.push_back(time);
      gst_message_unref(message);
    }
    return all;
  }
};

TEST_F(Messages, ComeAsOftenAsAskedFor) {
  open("statistics=true statistics-interval=100", "I420");
  for (GstClockTime t = 0; t < 10; ++t) push_at(t * 40 * GST_MSECOND);
  EXPECT_EQ(times(), (std::vector<GstClockTime>{0, 120 * GST_MSECOND, 240 * GST_MSECOND, 360 * GST_MSECOND}));
  g_object_set(element_, "statistics-interval", 0, nullptr);
  for (GstClockTime t = 10; t < 15; ++t) push_at(t * 40 * GST_MSECOND);
  EXPECT_EQ(times().size(), 5u);
  g_object_set(element_, "statistics", FALSE, nullptr);
  for (GstClockTime t = 15; t < 20; ++t) push_at(t * 40 * GST_MSECOND);
  EXPECT_EQ(times().size(), 0u);
}

// The figures are the library's own for that frame.
TEST_F(Messages, HoldTheLibrarysFigures) {
  open("statistics=true quality=2", "BGR");
  push_at(0);
  GstMessage* message = gst_bus_pop_filtered(bus_, GST_MESSAGE_ELEMENT);
  ASSERT_NE(message, nullptr);
  const GstStructure* s = gst_message_get_structure(message);
  ppl_context* c = ppl_init();
  ppl_set_quality(c, 2);
  ppl_set_v_mirror(c, 1);
  alignas(64) static uint8_t source[width * height], frame[3 * width * height];
  const Bytes raw = mosaic();
  std::copy(raw.begin(), raw.end(), source);
  ppl_process_blrtorgb24(c, source, frame, width, height, width);
  const auto same = [&](const char* name, const uint32_t* numbers, guint count) {
    const GValue* array = gst_structure_get_value(s, name);
    ASSERT_NE(array, nullptr) << name;
    ASSERT_EQ(gst_value_array_get_size(array), count) << name;
    for (guint i = 0; i < count; ++i)
      EXPECT_EQ(g_value_get_uint(gst_value_array_get_value(array, i)), numbers[i]) << name << i;
  };
  same("means", ppl_rgb_means_whole_frame(c), 3);
  same("windows", ppl_rgb_means_sub_windows(c), 144);
  same("qae-means", ppl_qAE_rgb_means_whole_frame(c), 3);
  guint cells = 0;
  ASSERT_TRUE(gst_structure_get_uint(s, "qae-cells", &cells));
  EXPECT_EQ(cells, ppl_n_qAE_2x2_whole_frame(c));
  EXPECT_GT(cells, 0u);
  ppl_free(c);
  gst_message_unref(message);
}

}  // namespace
