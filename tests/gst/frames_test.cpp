// Frames through the element: phases, bits, formats, sizes, and which of them are copied.
#include <cstring>

#include "element.h"
#include "support/qualities.h"

namespace {

using namespace gst_test;

constexpr const char* patterns[] = {"bggr", "gbrg", "grbg", "rggb"};

// The picture of a sensor whose first B site lies at column dx and row dy, the last one or two mirrored.
uint32_t at(const std::vector<uint32_t>& sensor, uint32_t x, uint32_t y) {
  const uint32_t column = x < width ? x : 2 * (width - 1) - x, row = y < height ? y : 2 * (height - 1) - y;
  return sensor[row * width + column];
}

Bytes words(const std::vector<uint32_t>& sensor, bool big) {
  Bytes bytes;
  for (const uint32_t s : sensor) {
    bytes.push_back(static_cast<uint8_t>(big ? s >> 8 : s));
    bytes.push_back(static_cast<uint8_t>(big ? s : s >> 8));
  }
  return bytes;
}

std::string sensor_caps(const std::string& format) {
  return "video/x-bayer,format=" + format + ",width=160,height=32,framerate=25/1";
}

class Frames : public Element {
 protected:
  Bytes through(const std::string& controls, const std::string& format, const std::string& caps,
                const Bytes& raw) {
    open(controls, format, caps);
    EXPECT_EQ(push(raw), GST_FLOW_OK) << error();
    return pull();
  }
};

// Every phase and every depth: the picture is that of the same samples, shifted and brought to 8 bits by hand.
TEST_F(Frames, PhasesAndBits) {
  for (uint32_t bits : {8u, 10u, 12u, 14u, 16u})
    for (uint32_t p = 0; p < 4; ++p)
      for (const bool big : {false, true}) {
        if (bits == 8 && big) continue;
        std::vector<uint32_t> sensor(width * height);
        for (size_t i = 0; i < sensor.size(); ++i)
          sensor[i] = (static_cast<uint32_t>(i) * 2654435761u >> 7) & ((1u << bits) - 1);
        const uint32_t dx = p & 1, dy = p >> 1, low = bits - 8;
        Bytes rounded, cut, raw;
        for (uint32_t y = 0; y < height; ++y)
          for (uint32_t x = 0; x < width; ++x) {
            const uint32_t s = at(sensor, x + dx, y + dy);
            rounded.push_back(static_cast<uint8_t>(std::min(255u, low ? (s + (1u << (low - 1))) >> low : s)));
            cut.push_back(static_cast<uint8_t>(s >> low));
          }
        if (bits == 8)
          raw = Bytes(sensor.begin(), sensor.end());
        else
          raw = words(sensor, big);
        const std::string format =
            bits == 8 ? patterns[p] : patterns[p] + std::to_string(bits) + (big ? "be" : "le");
        const Bytes picture = through("", "BGR", sensor_caps(format), raw);
        ASSERT_EQ(picture.size(), 3 * width * height) << format << error();
        EXPECT_EQ(picture, through("", "BGR", sensor_caps("bggr"), rounded)) << format;
        EXPECT_EQ(through("round=false", "BGR", sensor_caps(format), raw),
                  through("", "BGR", sensor_caps("bggr"), cut))
            << format;
      }
}

// NV12 is I420 with its chroma in pairs; BGRx and RGBx are BGR with a byte more. Also where a buffer is no multiple of
// 16: the picture does not depend on where it lies.
TEST_F(Frames, FormatsOfTheSamePicture) {
  for (const char* quality :
       {"quality=15", "quality=2", "quality=0", "quality=12", "quality=13", "quality=3"}) {
    const Bytes i420 = convert(quality, "I420"), nv12 = convert(quality, "NV12"),
                bgr = convert(quality, "BGR"), bgrx = convert(quality, "BGRx"),
                rgbx = convert(quality, "RGBx");
    constexpr size_t n = width * height;
    ASSERT_EQ(i420.size(), n * 3 / 2);
    ASSERT_EQ(nv12.size(), n * 3 / 2);
    ASSERT_EQ(bgr.size(), 3 * n);
    ASSERT_EQ(bgrx.size(), 4 * n) << quality << error();
    ASSERT_EQ(rgbx.size(), 4 * n) << quality << error();
    for (size_t i = 0; i < n; ++i) {
      ASSERT_EQ(nv12[i], i420[i]);
      for (size_t c = 0; c < 3; ++c) {
        ASSERT_EQ(bgrx[4 * i + c], bgr[3 * i + c]) << quality << " " << i;
        ASSERT_EQ(rgbx[4 * i + c], bgr[3 * i + 2 - c]) << quality << " " << i;
      }
    }
    for (size_t i = 0; i < n / 4; ++i) {
      ASSERT_EQ(nv12[n + 2 * i], i420[n + i]);
      ASSERT_EQ(nv12[n + 2 * i + 1], i420[n + n / 4 + i]);
    }
  }
}

// A frame that somebody else holds, or that lies in memory that must not be written, stays as it is; one that is the
// element's alone is worked on where it lies. The picture is the same, wherever the frame lies.
TEST_F(Frames, OnlyOwnFramesAreOverwritten) {
  const Bytes raw = mosaic(), picture = convert("", "I420");
  for (const size_t off : {0, 16, 8, 1}) {
    for (const bool held : {false, true})
      for (const bool read_only : {false, true}) {
        open("", "I420");
        alignas(64) static uint8_t memory[width * height + 64];
        memcpy(memory + off, raw.data(), raw.size());
        GstBuffer* buffer =
            gst_buffer_new_wrapped_full(read_only ? GST_MEMORY_FLAG_READONLY : static_cast<GstMemoryFlags>(0),
                                        memory, sizeof memory, off, raw.size(), nullptr, nullptr);
        if (held) gst_buffer_ref(buffer);
        ASSERT_EQ(gst_harness_push(harness_, buffer), GST_FLOW_OK);
        EXPECT_EQ(pull(), picture) << off << held << read_only;
        const bool same = memcmp(memory + off, raw.data(), raw.size()) == 0;
        EXPECT_EQ(same, held || read_only || off % 16 != 0) << off << held << read_only;
        if (held) gst_buffer_unref(buffer);
      }
  }
}

// Upstream is told the alignment at which no copy is needed.
TEST_F(Frames, AlignedBuffersAreProposed) {
  open("", "I420");
  GstCaps* caps = gst_caps_from_string(sensor_caps("bggr").c_str());
  GstQuery* query = gst_query_new_allocation(caps, FALSE);
  ASSERT_TRUE(gst_pad_peer_query(harness_->srcpad, query));
  ASSERT_GT(gst_query_get_n_allocation_params(query), 0u);
  GstAllocationParams params;
  gst_query_parse_nth_allocation_param(query, 0, nullptr, &params);
  EXPECT_EQ(params.align & 15, 15u);
  gst_query_unref(query);
  gst_caps_unref(caps);
  // And what leaves lies there.
  EXPECT_EQ(push(mosaic()), GST_FLOW_OK);
  GstBuffer* buffer = gst_harness_pull(harness_);
  GstMapInfo map;
  gst_buffer_map(buffer, &map, GST_MAP_READ);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(map.data) % 16, 0u);
  gst_buffer_unmap(buffer, &map);
  gst_buffer_unref(buffer);
}

// Beyond 2016 columns a frame is made in parts that overlap. Its left and right 1,024 columns are those of frames that
// hold nothing else, but for what lies next to their cut; lens correction about the one centre included.
TEST_F(Frames, LargeFramesAreMadeInParts) {
  constexpr uint32_t w = 2592, h = 64, part = 1024 + 64;
  const auto sample_at = [](uint32_t x, uint32_t y) {
    return static_cast<uint8_t>(40 + (x * 7 + y * 13) % 60 + ((x & 1) && (y & 1) ? 50 : 0) +
                                (x / 9 + y / 5) % 3 * 20);
  };
  const auto frame = [&](uint32_t from, uint32_t columns) {
    Bytes raw;
    for (uint32_t y = 0; y < h; ++y)
      for (uint32_t x = 0; x < columns; ++x) raw.push_back(sample_at(from + x, y));
    return raw;
  };
  const auto caps = [](uint32_t columns) {
    return "video/x-bayer,format=bggr,height=64,width=" + std::to_string(columns);
  };
  const std::string lens = "lens=true lens-f1=60 lens-shift1=24 lens-f2=0 lens-origin=<";
  for (const char* quality : {"quality=15 ", "quality=2 h-mirror=true "})
    for (const char* format : {"BGR", "NV12", "YUY2", "RGBx"}) {
      const std::string controls = quality + std::string("green-balance=true ") + lens;
      const bool mirrored = strstr(quality, "mirror") != nullptr;
      const Bytes whole = through(controls + "500,20>", format, caps(w), frame(0, w));
      const Bytes left = through(controls + "500,20>", format, caps(part), frame(0, part));
      const size_t pixel = *format == 'N' ? 1 : *format == 'Y' ? 2 : *format == 'B' ? 3 : 4;
      ASSERT_EQ(whole.size() * part, left.size() * w) << error();
      for (size_t y = 0; y < h; ++y) {
        const uint8_t* in_whole = &whole[pixel * (w * y + (mirrored ? w - 1024 : 0))];
        const uint8_t* in_left = &left[pixel * (part * y + (mirrored ? part - 1024 : 0))];
        ASSERT_EQ(memcmp(in_whole, in_left, pixel * 1024), 0) << format << quality << y;
      }
      // The right end; the centre lies outside of what is compared with, where it cannot be asked for: without lens.
      const std::string plain = quality + std::string("green-balance=true");
      const Bytes all = through(plain, format, caps(w), frame(0, w));
      const Bytes right = through(plain, format, caps(part), frame(w - part, part));
      for (size_t y = 0; y < h; ++y) {
        const uint8_t* in_all = &all[pixel * (w * y + (mirrored ? 0 : w - 1024))];
        const uint8_t* in_right = &right[pixel * (part * y + (mirrored ? 0 : part - 1024))];
        ASSERT_EQ(memcmp(in_all, in_right, pixel * 1024), 0) << format << quality << y;
      }
    }
}

TEST_F(Frames, CapsThatCannotBeAreRefusedWithTheReason) {
  const std::pair<const char*, const char*> bad[] = {
      {"video/x-bayer,format=bggr,width=650,height=480", "640 x 480 would do"},
      {"video/x-bayer,format=bggr,width=640,height=481", "640 x 482 would do"},
      {"video/x-bayer,format=bggr,width=16384,height=480", "8192 x 480 would do"},
      {"video/x-bayer,format=bggr,width=2147483647,height=2147483646", "8192 x 8192 would do"},
      {"video/x-bayer,format=bggr,width=0,height=0", "32 x 2 would do"},
      {"video/x-bayer,format=bggr,width=-32,height=32", "32 x 32 would do"},
      {"video/x-bayer,format=bggr11le,width=640,height=480", "such as bggr10le"},
      {"video/x-bayer,format=bggr10,width=640,height=480", "such as bggr10le"},
      {"video/x-bayer,width=640,height=480", "such as bggr10le"},
      {"video/x-bayer,format=bggr", "no width and height"},
  };
  for (const auto& [caps, why] : bad) {
    open("", "I420");
    GstCaps* wrong = gst_caps_from_string(caps);
    gst_pad_push_event(harness_->srcpad, gst_event_new_caps(wrong));
    gst_caps_unref(wrong);
    const std::string said = error();
    EXPECT_NE(said.find(why), std::string::npos) << caps << ": " << said;
    EXPECT_EQ(push(mosaic()), GST_FLOW_NOT_NEGOTIATED) << caps;
    EXPECT_TRUE(pull().empty());
    error();
  }
}

// What is offered will work: every format and a few sizes of the offer make a picture, and the raw qualities do not
// offer what is made in parts.
TEST_F(Frames, WhatIsOfferedWorks) {
  for (const uint32_t quality : support::kPictured) {
    const std::string control = "quality=" + std::to_string(quality);
    open(control, "{I420,YUY2,UYVY,NV12,BGR,BGRx,RGBx}");
    GstPad* pad = gst_element_get_static_pad(element_, "src");
    GstCaps* offered = gst_pad_query_caps(pad, nullptr);
    gst_object_unref(pad);
    std::vector<std::string> names;
    for (guint i = 0; i < gst_caps_get_size(offered); ++i)
      names.push_back(gst_structure_get_string(gst_caps_get_structure(offered, i), "format"));
    gst_caps_unref(offered);
    EXPECT_GE(names.size(), 5u) << quality;
    for (const std::string& name : names)
      EXPECT_FALSE(convert(control, name).empty()) << quality << name << error();
    GstCaps* taken = gst_pad_peer_query_caps(harness_->srcpad, nullptr);
    GstCaps* large = gst_caps_from_string("video/x-bayer,format=rggb12le,width=2592,height=1944");
    GstPad* sink = gst_element_get_static_pad(element_, "sink");
    GstCaps* any = gst_pad_query_caps(sink, nullptr);
    EXPECT_EQ(gst_caps_can_intersect(any, large), ppl_quality_table[quality].road != PPL_ROAD_RAW) << quality;
    gst_object_unref(sink);
    for (GstCaps* caps : {taken, large, any}) gst_caps_unref(caps);
  }
}

}  // namespace
