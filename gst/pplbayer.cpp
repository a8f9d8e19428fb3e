// pplbayer: video/x-bayer,format=bggr to video/x-raw I420, YUY2, UYVY or BGR.
//
//   gst-launch-1.0 v4l2src ! video/x-bayer,format=bggr,width=640,height=480 ! pplbayer black-level=12 red-gain=397
//     blue-gain=346 ! videoconvert ! autovideosink
//
// The YUV that leaves the element is full-range BT.601, as its colorimetry says: the library's own chroma, the plain
// colour differences, is brought to that scale by way of the sensor matrix. BGR leaves top row first.
//
// Widths are multiples of 32, heights even; up to 2016 x 2048. A buffer holds one frame, rows back to back.
#include <gst/base/gstbasetransform.h>
#include <gst/gst.h>
#include <gst/video/video.h>
#include <ppl.h>
#include <ppl_qualities.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <mutex>
#include <new>
#include <string>
#include <tuple>

#include "flat_colours.h"

#define PPL_TYPE_BAYER (ppl_bayer_get_type())
G_DECLARE_FINAL_TYPE(PplBayer, ppl_bayer, PPL, BAYER, GstBaseTransform)

namespace {

using Call = uint8_t (*)(ppl_context*, uint8_t*, uint8_t*, uint32_t, uint32_t, uint32_t);

enum Property : guint {
  quality = 1,
  black_level,
  red_gain,
  green_gain,
  blue_gain,
  gamma_index,
  contrast,
  saturation,
  hue,
  h_mirror,
  v_mirror,
  medium_filter,
  green_balance,
  properties
};

struct Control {
  const char* name;
  const char* what;
  int low, high, standard;
};

// By property; low and high of 0 and 1 make a switch.
constexpr Control controls[properties] = {
    {},
    {"quality", "Reconstruction: 15, or 0, 1, 2, 3, 10, 11; 12, 13 grey; 4 the raw mosaic", 0, 15, 15},
    {"black-level", "Black level of all four sites, in sample steps", 0, 255, 0},
    {"red-gain", "White balance, 256 is 1.0", 0, 2047, 256},
    {"green-gain", "White balance, 256 is 1.0", 0, 2047, 256},
    {"blue-gain", "White balance, 256 is 1.0", 0, 2047, 256},
    {"gamma", "Tone curve, 0 is the exponent 0.45, higher is brighter", -32, 32, 0},
    {"contrast", "Contrast", -127, 127, 0},
    {"saturation", "Saturation, 256 is 1.0", 0, 512, 256},
    {"hue", "Hue in degrees", -180, 180, 0},
    {"h-mirror", "Exchange left and right", 0, 1, 0},
    {"v-mirror", "Exchange top and bottom", 0, 1, 0},
    {"medium-filter", "Remove hot and dead pixels (qualities 0, 1 and 2)", 0, 1, 0},
    {"green-balance", "Even out the Gb and Gr sites", 0, 1, 0},
};

bool is_switch(const Control& control) {
  return control.low == 0 && control.high == 1;
}

constexpr char sink_caps[] =
    "video/x-bayer, format=bggr, width=[32, 2016, 32], height=[2, 2048, 2], framerate=[0/1, 2147483647/1]";

// What the element makes: the library's frame and call behind each of GStreamer's formats.
struct Output {
  GstVideoFormat format;
  ppl_format frame;
  Call call;
  const char* caps;
};
#define SOURCE_SIZES ", width=[32, 2016, 32], height=[2, 2048, 2], framerate=[0/1, 2147483647/1]"
constexpr Output outputs[] = {
    {GST_VIDEO_FORMAT_I420, PPL_FORMAT_I420, ppl_process_blrtoi420,
     "video/x-raw, format=I420, colorimetry=1:4:7:1" SOURCE_SIZES},
    {GST_VIDEO_FORMAT_YUY2, PPL_FORMAT_YUYV, ppl_process_blrtoyuyv,
     "video/x-raw, format=YUY2, colorimetry=1:4:7:1" SOURCE_SIZES},
    {GST_VIDEO_FORMAT_UYVY, PPL_FORMAT_UYVY, ppl_process_blrtouyvy,
     "video/x-raw, format=UYVY, colorimetry=1:4:7:1" SOURCE_SIZES},
    {GST_VIDEO_FORMAT_BGR, PPL_FORMAT_RGB24, ppl_process_blrtorgb24, "video/x-raw, format=BGR" SOURCE_SIZES},
};

bool makes(int quality, const Output& output) {
  return ppl_quality_is_whole(static_cast<uint32_t>(quality), 0, output.frame, PPL_SIZE_SAME, 0, 0) != 0;
}

bool is_raw(int quality) {
  return ppl_quality_table[quality].road == PPL_ROAD_RAW;
}

// The formats that a quality makes, with commas between them; empty if it makes no picture.
std::string formats_of(int quality) {
  std::string list;
  for (const Output& output : outputs)
    if (makes(quality, output))
      list += (list.empty() ? "" : ", ") + std::string(gst_video_format_to_string(output.format));
  return list;
}

// The caps of all outputs of a quality. Of one that makes no picture all there are: pads link then, and the start of
// the element tells the reason.
GstCaps* source_caps(int wanted) {
  GstCaps* all = gst_caps_new_empty();
  const bool any = formats_of(wanted).empty();
  for (const Output& output : outputs)
    if (any || makes(wanted, output)) gst_caps_append(all, gst_caps_from_string(output.caps));
  return all;
}

std::mutex pool;  // ppl_init must not run twice at a time

// A block that starts at a multiple of 64.
class Block {
 public:
  ~Block() { resize(0); }
  uint8_t* data() const { return data_; }
  void resize(size_t size) {
    if (data_) ::operator delete (data_, std::align_val_t{64});
    data_ = size ? static_cast<uint8_t*>(::operator new (size, std::align_val_t{64})) : nullptr;
  }

 private:
  uint8_t* data_ = nullptr;
};

// The default sensor matrix with the colour differences behind it brought to the scale of BT.601: with T the rows
// Y, B - Y, R - Y and D the factors 1, 0.5 / 0.886, 0.5 / 0.701, the matrix is T^-1 D T S.
void standard_chroma_matrix(const int32_t* sensor, int32_t* out) {
  const double y[3] = {0.299, 0.587, 0.114};
  for (int column = 0; column < 3; ++column) {
    const double r = sensor[column], g = sensor[3 + column], b = sensor[6 + column];
    const double luma = y[0] * r + y[1] * g + y[2] * b;
    const double u = (b - luma) * 0.5 / 0.886, v = (r - luma) * 0.5 / 0.701;
    out[column] = static_cast<int32_t>(std::lround(luma + v));
    out[3 + column] = static_cast<int32_t>(std::lround(luma - (y[2] * u + y[0] * v) / y[1]));
    out[6 + column] = static_cast<int32_t>(std::lround(luma + u));
  }
}

struct State {
  ppl_context* context = nullptr;
  int values[properties] = {};
  bool changed = true;
  int applied_quality = -1;
  GstVideoInfo info = {};
  const Output* output = nullptr;
  Block source, frame;
  std::mutex lock;
};

}  // namespace

struct _PplBayer {
  GstBaseTransform parent;
  State* state;
};

G_DEFINE_TYPE(PplBayer, ppl_bayer, GST_TYPE_BASE_TRANSFORM)

namespace {

void apply_controls(State& s) {
  ppl_context* c = s.context;
  const int* v = s.values;
  const bool rgb = s.output->frame == PPL_FORMAT_RGB24;
  const auto u = [v](Property p) { return static_cast<uint32_t>(v[p]); };
  if (s.applied_quality == 10 || s.applied_quality == 11) forget_flat_colours(c);
  s.applied_quality = v[quality];
  ppl_set_quality(c, u(quality));
  ppl_set_optical_black_b_gb_gr_r(c, u(black_level), u(black_level), u(black_level), u(black_level));
  ppl_set_rgb_gain(c, u(red_gain), u(green_gain), u(blue_gain));
  ppl_set_gamma(c, v[gamma_index]);
  ppl_set_contrast_c(c, v[contrast], nullptr, nullptr);
  ppl_set_sat_hue(c, u(saturation), v[hue]);
  ppl_set_h_mirror(c, v[h_mirror] != 0);
  // The library's RGB stands bottom row first; the mirror turns it.
  ppl_set_v_mirror(c, (v[v_mirror] != 0) != rgb);
  v[medium_filter] ? ppl_enable_medium_filter(c) : ppl_disable_medium_filter(c);
  v[green_balance] ? ppl_enable_GbGr_correction(c) : ppl_disable_GbGr_correction(c);
  ppl_reset_sensor_matrix(c);
  if (!rgb) {
    int32_t sensor[9], standard[9];
    ppl_sensor_matrix(c, sensor);
    standard_chroma_matrix(sensor, standard);
    ppl_copy_sensor_matrix(c, standard);
  }
  s.changed = false;
}

void set_property(GObject* object, guint id, const GValue* value, GParamSpec*) {
  State& s = *PPL_BAYER(object)->state;
  const std::lock_guard guard(s.lock);
  s.values[id] = is_switch(controls[id]) ? g_value_get_boolean(value) : g_value_get_int(value);
  s.changed = true;
  if (id == quality) gst_base_transform_reconfigure_src(GST_BASE_TRANSFORM(object));
}

void get_property(GObject* object, guint id, GValue* value, GParamSpec*) {
  State& s = *PPL_BAYER(object)->state;
  const std::lock_guard guard(s.lock);
  if (is_switch(controls[id]))
    g_value_set_boolean(value, s.values[id]);
  else
    g_value_set_int(value, s.values[id]);
}

void finalize(GObject* object) {
  delete PPL_BAYER(object)->state;
  G_OBJECT_CLASS(ppl_bayer_parent_class)->finalize(object);
}

int quality_of(State& s) {
  const std::lock_guard guard(s.lock);
  return s.values[quality];
}

gboolean start(GstBaseTransform* base) {
  State& s = *PPL_BAYER(base)->state;
  const int wanted = quality_of(s);
  if (formats_of(wanted).empty()) {
    GST_ELEMENT_ERROR(base, LIBRARY, SETTINGS,
                      ("quality %d makes no picture; use 0 to 4, 9 to 13 or 15", wanted), (nullptr));
    return FALSE;
  }
  const std::lock_guard guard(pool);
  s.context = ppl_init();
  s.changed = true;
  s.applied_quality = -1;
  if (!s.context) {
    GST_ELEMENT_ERROR(base, RESOURCE, TOO_LAZY, ("all eight contexts of the library are in use"), (nullptr));
    return FALSE;
  }
  forget_flat_colours(s.context);  // of the context's last owner
  return TRUE;
}

gboolean stop(GstBaseTransform* base) {
  const std::lock_guard guard(pool);
  ppl_free(PPL_BAYER(base)->state->context);
  PPL_BAYER(base)->state->context = nullptr;
  return TRUE;
}

// The same size and rate on the other side.
GstCaps* transform_caps(GstBaseTransform* base, GstPadDirection from, GstCaps* caps, GstCaps* filter) {
  GstCaps* all = from == GST_PAD_SINK ? source_caps(quality_of(*PPL_BAYER(base)->state))
                                      : gst_caps_from_string(sink_caps);
  GstCaps* result = gst_caps_new_empty();
  for (guint i = 0; i < gst_caps_get_size(caps); ++i)
    for (guint j = 0; j < gst_caps_get_size(all); ++j) {
      const GstStructure* given = gst_caps_get_structure(caps, i);
      GstStructure* other = gst_structure_copy(gst_caps_get_structure(all, j));
      for (const char* field : {"width", "height", "framerate"})
        if (const GValue* value = gst_structure_get_value(given, field))
          gst_structure_set_value(other, field, value);
      result = gst_caps_merge_structure(result, other);
    }
  gst_caps_unref(all);
  if (!filter) return result;
  GstCaps* filtered = gst_caps_intersect_full(filter, result, GST_CAPS_INTERSECT_FIRST);
  gst_caps_unref(result);
  return filtered;
}

gboolean get_unit_size(GstBaseTransform*, GstCaps* caps, gsize* size) {
  const GstStructure* structure = gst_caps_get_structure(caps, 0);
  int width = 0, height = 0;
  if (gst_structure_has_name(structure, "video/x-bayer")) {
    if (!gst_structure_get_int(structure, "width", &width) ||
        !gst_structure_get_int(structure, "height", &height))
      return FALSE;
    *size = static_cast<gsize>(width) * static_cast<gsize>(height);
    return TRUE;
  }
  GstVideoInfo info;
  if (!gst_video_info_from_caps(&info, caps)) return FALSE;
  *size = GST_VIDEO_INFO_SIZE(&info);
  return TRUE;
}

// One frame of one side is one frame of the other; transform() looks whether it is one.
gboolean transform_size(GstBaseTransform* base, GstPadDirection, GstCaps*, gsize, GstCaps* other,
                        gsize* size) {
  return get_unit_size(base, other, size);
}

// Where nothing can be agreed on the reason is told: a quality that does not make what follows takes.
gboolean sink_event(GstBaseTransform* base, GstEvent* event) {
  const bool caps = GST_EVENT_TYPE(event) == GST_EVENT_CAPS;
  const gboolean done = GST_BASE_TRANSFORM_CLASS(ppl_bayer_parent_class)->sink_event(base, event);
  if (caps && !done) {
    const int wanted = quality_of(*PPL_BAYER(base)->state);
    GstCaps* taken = gst_pad_peer_query_caps(GST_BASE_TRANSFORM_SRC_PAD(base), nullptr);
    gchar* listed = gst_caps_to_string(taken);
    GST_ELEMENT_ERROR(base, CORE, NEGOTIATION,
                      ("nothing that quality %d makes is taken by what follows: it makes %s", wanted,
                       formats_of(wanted).c_str()),
                      ("what follows takes %s", listed));
    g_free(listed);
    gst_caps_unref(taken);
  }
  return done;
}

gboolean set_caps(GstBaseTransform* base, GstCaps*, GstCaps* out) {
  State& s = *PPL_BAYER(base)->state;
  const std::lock_guard guard(s.lock);
  if (!gst_video_info_from_caps(&s.info, out)) return FALSE;
  const auto found = std::find_if(std::begin(outputs), std::end(outputs), [&](const Output& output) {
    return output.format == GST_VIDEO_INFO_FORMAT(&s.info);
  });
  if (found == std::end(outputs)) return FALSE;
  s.output = found;
  const gsize pixels = static_cast<gsize>(s.info.width) * static_cast<gsize>(s.info.height);
  s.source.resize(pixels);
  s.frame.resize(GST_VIDEO_INFO_SIZE(&s.info));
  s.changed = true;
  return TRUE;
}

// Why no frame can be made at the controls in force; empty if one can.
std::string refusal(const State& s) {
  const int q = s.values[quality];
  const std::string made = formats_of(q), number = std::to_string(q);
  if (made.empty()) return "quality " + number + " makes no picture; use 0 to 4, 9 to 13 or 15";
  if (!makes(q, *s.output))
    return "quality " + number + " makes no " + gst_video_format_to_string(s.output->format) + ", but " +
           made;
  if (is_raw(q) && (s.values[h_mirror] || s.values[v_mirror]))
    return "quality " + number + " is the mosaic as it is: it has no mirrors";
  return {};
}

// GStreamer's RGB has its top row first. The library's mirror turns it for all but the raw qualities.
void turn_rows(uint8_t* frame, gsize row, gsize rows) {
  for (gsize y = 0; y < rows / 2; ++y)
    std::swap_ranges(frame + y * row, frame + (y + 1) * row, frame + (rows - 1 - y) * row);
}

// The library writes into its source, so it gets a copy; the result goes straight out if the buffer is aligned.
GstFlowReturn transform(GstBaseTransform* base, GstBuffer* in, GstBuffer* out) {
  State& s = *PPL_BAYER(base)->state;
  const std::lock_guard guard(s.lock);
  if (const std::string why = refusal(s); !why.empty()) {
    GST_ELEMENT_ERROR(base, LIBRARY, SETTINGS, ("%s", why.c_str()), (nullptr));
    return GST_FLOW_ERROR;
  }
  if (s.changed) apply_controls(s);
  const auto width = static_cast<uint32_t>(s.info.width), height = static_cast<uint32_t>(s.info.height);
  const gsize size = GST_VIDEO_INFO_SIZE(&s.info), held = gst_buffer_get_size(in);
  if (held != gsize{width} * height) {
    GST_ELEMENT_ERROR(base, STREAM, WRONG_TYPE,
                      ("a buffer holds %" G_GSIZE_FORMAT " bytes, a frame of %u x %u has %" G_GSIZE_FORMAT,
                       held, width, height, gsize{width} * height),
                      (nullptr));
    return GST_FLOW_ERROR;
  }
  gst_buffer_extract(in, 0, s.source.data(), held);
  GstMapInfo map;
  if (!gst_buffer_map(out, &map, GST_MAP_WRITE)) return GST_FLOW_ERROR;
  const bool direct = map.size >= size && reinterpret_cast<uintptr_t>(map.data) % 16 == 0;
  uint8_t* frame = direct ? map.data : s.frame.data();
  const uint32_t before = ppl_n_frame(s.context);
  const bool done = s.output->call(s.context, s.source.data(), frame, width, height, width) ||
                    is_raw(s.values[quality]);  // they answer false although they make their picture
  const bool made = done && ppl_n_frame(s.context) != before;
  if (is_raw(s.values[quality]) && s.output->frame == PPL_FORMAT_RGB24) turn_rows(frame, 3 * width, height);
  if (!direct) memcpy(map.data, frame, std::min<gsize>(map.size, size));
  gst_buffer_unmap(out, &map);
  if (made) return GST_FLOW_OK;
  GST_ELEMENT_ERROR(base, STREAM, FORMAT, ("the library refuses a %u x %u frame", width, height), (nullptr));
  return GST_FLOW_ERROR;
}

gboolean plugin_init(GstPlugin* plugin) {
  return gst_element_register(plugin, "pplbayer", GST_RANK_NONE, PPL_TYPE_BAYER);
}

}  // namespace

static void ppl_bayer_init(PplBayer* self) {
  self->state = new State;
  for (guint id = 1; id < properties; ++id) self->state->values[id] = controls[id].standard;
}

static void ppl_bayer_class_init(PplBayerClass* type) {
  GObjectClass* object = G_OBJECT_CLASS(type);
  object->set_property = set_property;
  object->get_property = get_property;
  object->finalize = finalize;
  const auto flags =
      static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_CONTROLLABLE);
  for (guint id = 1; id < properties; ++id) {
    const Control& c = controls[id];
    g_object_class_install_property(
        object, id,
        is_switch(c) ? g_param_spec_boolean(c.name, c.name, c.what, c.standard, flags)
                     : g_param_spec_int(c.name, c.name, c.what, c.low, c.high, c.standard, flags));
  }
  GstElementClass* element = GST_ELEMENT_CLASS(type);
  gst_element_class_set_static_metadata(element, "Bayer reconstruction", "Filter/Converter/Video",
                                        "Turns raw Bayer frames into finished ones", "ppl");
  for (const auto& [name, direction, allowed] :
       {std::tuple{"sink", GST_PAD_SINK, gst_caps_from_string(sink_caps)},
        std::tuple{"src", GST_PAD_SRC, source_caps(0)}}) {
    gst_element_class_add_pad_template(element,
                                       gst_pad_template_new(name, direction, GST_PAD_ALWAYS, allowed));
    gst_caps_unref(allowed);
  }
  GstBaseTransformClass* base = GST_BASE_TRANSFORM_CLASS(type);
  base->start = start;
  base->stop = stop;
  base->transform_caps = transform_caps;
  base->get_unit_size = get_unit_size;
  base->transform_size = transform_size;
  base->sink_event = sink_event;
  base->set_caps = set_caps;
  base->transform = transform;
}

#define PACKAGE "ppl"
GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, ppl, "Bayer reconstruction", plugin_init,
                  PPL_ELEMENT_VERSION, "unknown", "ppl", "ppl")
