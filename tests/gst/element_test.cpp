// The element by itself, frame by frame: what it offers, what it refuses and why, what its slot keeps.
#include "element.h"

#include <unistd.h>

#include "support/qualities.h"

namespace {

using namespace gst_test;

TEST_F(Element, RefusesQualitiesThatMakeNoPicture) {
  for (const uint32_t counted : support::kCounted) {
    const std::string quality = std::to_string(counted);
    const std::string line =
        "filesrc location=/dev/zero blocksize=5120 num-buffers=1 ! "
        "video/x-bayer,format=bggr,width=160,height=32,framerate=25/1 ! pplbayer quality=" +
        quality + " ! fakesink";
    GstElement* pipeline = gst_parse_launch(line.c_str(), nullptr);
    EXPECT_EQ(gst_element_set_state(pipeline, GST_STATE_PLAYING), GST_STATE_CHANGE_FAILURE);
    GstBus* bus = gst_element_get_bus(pipeline);
    const std::string why = error(bus);
    EXPECT_NE(why.find("quality " + quality + " makes no picture"), std::string::npos) << why;
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(bus);
    gst_object_unref(pipeline);
  }
  // The same while it runs.
  EXPECT_FALSE(convert("", "I420").empty());
  const uint32_t counted = *support::kCounted.begin();
  g_object_set(element_, "quality", static_cast<int>(counted), nullptr);
  EXPECT_NE(push(mosaic()), GST_FLOW_OK);
  EXPECT_NE(error().find("quality " + std::to_string(counted) + " makes no picture"), std::string::npos);
}

TEST_F(Element, RefusesAFormatThatTheQualityLacks) {
  for (const char* format : {"YUY2", "UYVY"}) {
    open("quality=13", format);
    EXPECT_NE(push(mosaic()), GST_FLOW_OK);
    const std::string why = error();
    EXPECT_NE(why.find("quality 13"), std::string::npos) << why;
    EXPECT_NE(why.find("it makes I420, NV12, BGR, BGRx, RGBx"), std::string::npos) << why;
  }
  const Bytes grey = library(13, ppl_process_blrtoi420, width * height * 3 / 2);
  EXPECT_EQ(convert("quality=13", "I420"), grey);
  // What follows takes several: the one that can be made is taken.
  EXPECT_EQ(convert("quality=13", "{ YUY2, UYVY, I420 }"), grey);
  EXPECT_EQ(error(), "");
}

// The raw qualities make a picture although their calls answer false.
TEST_F(Element, TheRawMosaic) {
  const Bytes raw = mosaic();
  for (const char* quality : {"quality=4", "quality=9"}) {
    const Bytes i420 = convert(quality, "I420"), bgr = convert(quality, "BGR"),
                yuy2 = convert(quality, "YUY2");
    ASSERT_EQ(i420.size(), raw.size() * 3 / 2) << error();
    ASSERT_EQ(bgr.size(), raw.size() * 3);
    ASSERT_EQ(yuy2.size(), raw.size() * 2);
    EXPECT_TRUE(std::equal(raw.begin(), raw.end(), i420.begin()));
    for (size_t i = 0; i < raw.size(); ++i) {
      ASSERT_EQ(yuy2[2 * i], raw[i]);
      for (size_t c = 0; c < 3; ++c) ASSERT_EQ(bgr[3 * i + c], raw[i]) << i;
    }
    open(quality + std::string(" h-mirror=true"), "I420");
    EXPECT_NE(push(raw), GST_FLOW_OK);
    EXPECT_NE(error().find("no mirrors"), std::string::npos);
  }
}

TEST_F(Element, ABufferIsOneFrame) {
  for (const size_t bytes :
       {size_t{2 * width * height}, size_t{width * height + 1}, size_t{width * height - 1}, size_t{1}}) {
    open("", "I420");
    Bytes samples = mosaic(2);
    samples.resize(bytes);
    EXPECT_NE(push(samples), GST_FLOW_OK) << bytes;
    EXPECT_TRUE(pull().empty());
    const std::string why = error();
    EXPECT_NE(why.find(std::to_string(bytes) + " bytes"), std::string::npos) << why;
    EXPECT_NE(why.find("5120"), std::string::npos) << why;
  }
}

// Qualities 10 and 11 leave flat colours behind: no later picture of 0 or 1 shows them, in a running element or in one
// that gets the slot of another.
TEST_F(Element, FlatColoursDoNotReachLaterPictures) {
  for (const char* flat : {"10", "11"})
    for (const int quality : {0, 1}) {
      const Bytes clean = library(static_cast<uint32_t>(quality), ppl_process_blrtorgb24, 3 * width * height);
      const Bytes before = convert("quality=" + std::to_string(quality), "BGR");
      ASSERT_EQ(before.size(), clean.size());
      for (size_t y = 0; y < height; ++y)
        ASSERT_TRUE(std::equal(clean.begin() + static_cast<long>(3 * width * y),
                               clean.begin() + static_cast<long>(3 * width * (y + 1)),
                               before.begin() + static_cast<long>(3 * width * (height - 1 - y))));
      EXPECT_NE(convert(std::string("quality=") + flat, "BGR"), before);
      g_object_set(element_, "quality", quality, nullptr);
      EXPECT_EQ(push(mosaic()), GST_FLOW_OK);
      EXPECT_EQ(pull(), before) << flat << " before " << quality;
      convert(std::string("quality=") + flat, "BGR");
      EXPECT_EQ(convert("quality=" + std::to_string(quality), "BGR"), before)
          << flat << " in the slot before";
    }
}

}  // namespace

int main(int count, char** words) {
  testing::InitGoogleTest(&count, words);
  gchar* registry = g_strdup_printf("%s/ppl-registry-%d", g_get_tmp_dir(), static_cast<int>(getpid()));
  g_setenv("GST_REGISTRY", registry, TRUE);
  g_setenv("GST_PLUGIN_PATH", PLUGINS, TRUE);
  gst_init(&count, &words);
  const int status = RUN_ALL_TESTS();
  unlink(registry);
  g_free(registry);
  return status;
}
