// What the element takes and makes: formats, sizes, caps.
#pragma once

#include <gst/gst.h>
#include <gst/video/video.h>
#include <ppl.h>
#include <ppl_prepare.h>
#include <ppl_qualities.h>

#include <string>

namespace element {

// A quality, and a frame of the library's behind one of GStreamer's formats.
struct Output {
  GstVideoFormat format;
  const char* name;
  const char* colorimetry;  // null: left out
};
constexpr Output outputs[] = {
    {GST_VIDEO_FORMAT_I420, "I420", "1:4:7:1"}, {GST_VIDEO_FORMAT_YUY2, "YUY2", "1:4:7:1"},
    {GST_VIDEO_FORMAT_UYVY, "UYVY", "1:4:7:1"}, {GST_VIDEO_FORMAT_NV12, "NV12", "1:4:7:1"},
    {GST_VIDEO_FORMAT_BGR, "BGR", nullptr},     {GST_VIDEO_FORMAT_BGRx, "BGRx", nullptr},
    {GST_VIDEO_FORMAT_RGBx, "RGBx", nullptr}};

// The largest frame that is made in one call, and the largest at all, in overlapping parts. Of the raw qualities there
// are no parts.
enum { whole_width = 2016, whole_height = 2048, most_width = 8192, most_height = 8192 };

bool is_raw(int quality);
// The library's frame that the format is made from; false if the quality makes none of those that would do.
bool frame_behind(int quality, GstVideoFormat, ppl_format*);
// The formats that a quality makes, with commas between them; empty if it makes no picture.
std::string formats_of(int quality);

// "bggr" and so on with or without bits and byte order. False if there is no such format.
bool parse_bayer_format(const char* name, ppl_sensor_frame*);

GstCaps* all_sink_caps();
GstCaps* all_source_caps();
// What the quality makes; for one that makes no picture all there is, since the frame then tells the reason.
GstCaps* source_caps(int quality);
GstCaps* sink_caps(int quality);
// Caps on the other side: the same sizes and rate as far as `offered` has them.
GstCaps* same_sizes(const GstCaps* given, const GstCaps* offered);

// Sensor caps to a frame; empty, or what is wrong with them and what would be right.
std::string parse_sink_caps(const GstCaps*, int quality, ppl_sensor_frame*);
std::string no_picture(int quality);

}  // namespace element
