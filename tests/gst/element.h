// One element in a harness: frames pushed by hand, pictures pulled, complaints read.
#pragma once

#include <gst/check/gstharness.h>
#include <gst/gst.h>
#include <gtest/gtest.h>
#include <ppl.h>

#include <algorithm>
#include <string>
#include <vector>

namespace gst_test {

constexpr uint32_t width = 160, height = 32;
using Bytes = std::vector<uint8_t>;

// Coloured areas, flat to the right, where the last tile is, and with a fine pattern to the left.
inline Bytes mosaic(size_t frames = 1) {
  Bytes samples;
  for (size_t f = 0; f < frames; ++f)
    for (uint32_t y = 0; y < height; ++y)
      for (uint32_t x = 0; x < width; ++x) {
        const uint32_t colour = (y & 1) + (x & 1) == 1 ? 90 : y & 1 ? 160 : 60;
        samples.push_back(static_cast<uint8_t>(colour + (x < 80 ? (x * 7 + y * 13) % 60 : 0)));
      }
  return samples;
}

// The library's own frame, by the settings the element stands at (the sensor matrix excepted).
inline Bytes library(uint32_t quality, decltype(ppl_process_blrtorgb24)* call, size_t bytes) {
  ppl_context* c = ppl_init();
  ppl_set_quality(c, quality);
  alignas(64) static uint8_t source[width * height], frame[4 * width * height];
  const Bytes raw = mosaic();
  std::copy(raw.begin(), raw.end(), source);
  call(c, source, frame, width, height, width);
  ppl_free(c);
  return Bytes(frame, frame + bytes);
}

class Element : public testing::Test {
 protected:
  Element() : bus_(gst_bus_new()) {}
  ~Element() override {
    close();
    gst_bus_set_flushing(bus_, TRUE);  // messages hold their element
    gst_object_unref(bus_);
  }
  void open(const std::string& controls, const std::string& format,
            const std::string& caps = "video/x-bayer,format=bggr,width=160,height=32,framerate=25/1") {
    close();
    harness_ = gst_harness_new_parse(("pplbayer name=element " + controls).c_str());
    element_ = gst_harness_find_element(harness_, "pplbayer");
    gst_element_set_bus(element_, bus_);
    gst_harness_set_sink_caps_str(harness_, ("video/x-raw,format=" + format).c_str());
    gst_harness_set_src_caps_str(harness_, caps.c_str());
  }
  void close() {
    if (harness_) gst_object_unref(element_), gst_harness_teardown(harness_);
    harness_ = nullptr;
  }
  GstFlowReturn push(const Bytes& samples) {
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, samples.size(), nullptr);
    gst_buffer_fill(buffer, 0, samples.data(), samples.size());
    return gst_harness_push(harness_, buffer);
  }
  Bytes pull() {
    GstBuffer* buffer = gst_harness_try_pull(harness_);
    if (!buffer) return {};
    Bytes frame(gst_buffer_get_size(buffer));
    gst_buffer_extract(buffer, 0, frame.data(), frame.size());
    gst_buffer_unref(buffer);
    return frame;
  }
  Bytes convert(const std::string& controls, const std::string& format) {
    open(controls, format);
    EXPECT_EQ(push(mosaic()), GST_FLOW_OK);
    return pull();
  }
  // The element's first complaint; empty if there is none.
  std::string error() const { return error(bus_); }
  static std::string error(GstBus* bus) {
    std::string text;
    while (GstMessage* message = gst_bus_pop(bus)) {
      if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
        GError* what = nullptr;
        gst_message_parse_error(message, &what, nullptr);
        if (text.empty()) text = what->message;
        g_error_free(what);
      }
      gst_message_unref(message);
    }
    return text;
  }

  GstHarness* harness_ = nullptr;
  GstElement* element_ = nullptr;
  GstBus* bus_;
};

}  // namespace gst_test
