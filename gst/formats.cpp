#include "formats.h"

#include <algorithm>
#include <cstring>

#include "quality_list.h"

namespace element {
namespace {

constexpr const char* patterns[] = {"bggr", "gbrg", "grbg", "rggb"};  // by ppl_pattern
constexpr const char* depths[] = {"", "10le", "12le", "14le", "16le", "10be", "12be", "14be", "16be"};

void add_sizes(GstStructure* s, int width, int height) {
  GValue range = G_VALUE_INIT;
  g_value_init(&range, GST_TYPE_INT_RANGE);
  gst_value_set_int_range_step(&range, 32, width, 32);
  gst_structure_set_value(s, "width", &range);
  gst_value_set_int_range_step(&range, 2, height, 2);
  gst_structure_set_value(s, "height", &range);
  g_value_unset(&range);
}

void add_sizes_of(GstStructure* s, int quality) {
  if (is_raw(quality))
    add_sizes(s, whole_width, whole_height);
  else
    add_sizes(s, most_width, most_height);
}

GstStructure* source_structure(const Output& output) {
  GstStructure* s = gst_structure_new("video/x-raw", "format", G_TYPE_STRING, output.name, nullptr);
  if (output.colorimetry) gst_structure_set(s, "colorimetry", G_TYPE_STRING, output.colorimetry, nullptr);
  return s;
}

GstStructure* sink_structure() {
  GstStructure* s = gst_structure_new_empty("video/x-bayer");
  GValue list = G_VALUE_INIT;
  g_value_init(&list, GST_TYPE_LIST);
  for (const char* depth : depths)
    for (const char* pattern : patterns) {
      GValue name = G_VALUE_INIT;
      g_value_init(&name, G_TYPE_STRING);
      g_value_set_string(&name, (std::string(pattern) + depth).c_str());
      gst_value_list_append_and_take_value(&list, &name);
    }
  gst_structure_take_value(s, "format", &list);
  return s;
}

bool makes(int quality, ppl_format format) {
  return ppl_quality_is_whole(static_cast<uint32_t>(quality), 0, format, PPL_SIZE_SAME, 0, 0) != 0;
}

std::string size_text(int width, int height) {
  return std::to_string(width) + " x " + std::to_string(height);
}

int nearest(int n, int step, int most) {
  return std::clamp((std::min(n, most) + step / 2) / step * step, step, most);  // any number may be asked for
}

}  // namespace

bool is_raw(int quality) {
  return ppl_quality_table[quality].road == PPL_ROAD_RAW;
}

bool frame_behind(int quality, GstVideoFormat format, ppl_format* frame) {
  const auto take = [&](ppl_format wanted) {
    *frame = wanted;
    return makes(quality, wanted);
  };
  switch (format) {
    case GST_VIDEO_FORMAT_I420:
    case GST_VIDEO_FORMAT_NV12:
      return take(PPL_FORMAT_I420);
    case GST_VIDEO_FORMAT_YUY2:
      return take(PPL_FORMAT_YUYV);
    case GST_VIDEO_FORMAT_UYVY:
      return take(PPL_FORMAT_UYVY);
    case GST_VIDEO_FORMAT_BGR:
    case GST_VIDEO_FORMAT_RGBx:
      return take(PPL_FORMAT_RGB24);
    case GST_VIDEO_FORMAT_BGRx:
      return take(PPL_FORMAT_RGB32) || take(PPL_FORMAT_RGB24);
    default:
      return false;
  }
}

std::string formats_of(int quality) {
  std::string list;
  ppl_format frame;
  for (const Output& output : outputs)
    if (frame_behind(quality, output.format, &frame))
      list += (list.empty() ? "" : ", ") + std::string(output.name);
  return list;
}

bool parse_bayer_format(const char* name, ppl_sensor_frame* frame) {
  if (!name || strlen(name) < 4) return false;
  const auto* pattern = std::find_if(std::begin(patterns), std::end(patterns),
                                     [&](const char* p) { return strncmp(p, name, 4) == 0; });
  const auto* depth = std::find_if(std::begin(depths), std::end(depths),
                                   [&](const char* d) { return strcmp(d, name + 4) == 0; });
  if (pattern == std::end(patterns) || depth == std::end(depths)) return false;
  frame->pattern = static_cast<int>(pattern - std::begin(patterns));
  if (!**depth) {
    frame->layout = PPL_BYTES;
    frame->bits = 8;
  } else {
    frame->layout = (*depth)[2] == 'b' ? PPL_WORDS_BIG : PPL_WORDS_LITTLE;
    frame->bits = static_cast<uint32_t>(10 * ((*depth)[0] - '0') + (*depth)[1] - '0');
  }
  return true;
}

GstCaps* all_sink_caps() {
  GstStructure* s = sink_structure();
  add_sizes(s, most_width, most_height);
  return gst_caps_new_full(s, nullptr);
}

GstCaps* all_source_caps() {
  GstCaps* all = gst_caps_new_empty();
  for (const Output& output : outputs) {
    GstStructure* s = source_structure(output);
    add_sizes(s, most_width, most_height);
    gst_caps_append_structure(all, s);
  }
  return all;
}

GstCaps* source_caps(int quality) {
  GstCaps* all = gst_caps_new_empty();
  const bool any = formats_of(quality).empty();
  ppl_format frame;
  for (const Output& output : outputs)
    if (any || frame_behind(quality, output.format, &frame)) {
      GstStructure* s = source_structure(output);
      add_sizes_of(s, quality);
      gst_caps_append_structure(all, s);
    }
  return all;
}

GstCaps* sink_caps(int quality) {
  GstStructure* s = sink_structure();
  add_sizes_of(s, quality);
  return gst_caps_new_full(s, nullptr);
}

GstCaps* same_sizes(const GstCaps* given, const GstCaps* offered) {
  GstCaps* result = gst_caps_new_empty();
  for (guint i = 0; i < gst_caps_get_size(given); ++i)
    for (guint j = 0; j < gst_caps_get_size(offered); ++j) {
      const GstStructure* from = gst_caps_get_structure(given, i);
      GstStructure* other = gst_structure_copy(gst_caps_get_structure(offered, j));
      bool common = true;
      for (const char* field : {"width", "height", "framerate"})
        if (const GValue* value = gst_structure_get_value(from, field)) {
          const GValue* ours = gst_structure_get_value(other, field);
          GValue both = G_VALUE_INIT;
          if (!ours)
            gst_structure_set_value(other, field, value);
          else if ((common = common && gst_value_intersect(&both, value, ours)))
            gst_structure_take_value(other, field, &both);
        }
      if (common)
        result = gst_caps_merge_structure(result, other);
      else
        gst_structure_free(other);
    }
  return result;
}

std::string no_picture(int quality) {
  return "quality " + std::to_string(quality) + " makes no picture; use " +
         tool::quality_list([](const ppl_quality_row& q) { return q.road != PPL_ROAD_COUNTED; });
}

std::string parse_sink_caps(const GstCaps* caps, int quality, ppl_sensor_frame* frame) {
  const GstStructure* s = gst_caps_get_structure(caps, 0);
  const char* format = gst_structure_get_string(s, "format");
  int width = 0, height = 0;
  *frame = {};
  if (!gst_structure_has_name(s, "video/x-bayer"))
    return std::string("frames are video/x-bayer, not ") + gst_structure_get_name(s);
  if (!parse_bayer_format(format, frame))
    return std::string("there is no Bayer format ") + (format ? format : "without a name") +
           "; take bggr, gbrg, grbg or rggb, or one of them with bits and byte order, such as bggr10le";
  if (!gst_structure_get_int(s, "width", &width) || !gst_structure_get_int(s, "height", &height))
    return "the caps of the frames name no width and height";
  const bool raw = is_raw(quality);
  const int widest = raw ? whole_width : most_width, highest = raw ? whole_height : most_height;
  if (width < 32 || width > widest || width % 32 || height < 2 || height > highest || height % 2)
    return "a frame of " + size_text(width, height) + " is not made" +
           (raw ? " by quality " + std::to_string(quality) : "") + ": widths are multiples of 32 up to " +
           std::to_string(widest) + ", heights even and up to " + std::to_string(highest) + "; " +
           size_text(nearest(width, 32, widest), nearest(height, 2, highest)) + " would do";
  frame->width = static_cast<uint32_t>(width);
  frame->height = static_cast<uint32_t>(height);
  return {};
}

}  // namespace element
