// pplbayer: video/x-bayer to finished video/x-raw.
//
//   gst-launch-1.0 v4l2src ! video/x-bayer,format=rggb,width=640,height=480 ! pplbayer black-level=12
//     auto-white-balance=true ! videoconvert ! autovideosink
//
// All four phases, 8 bits or 10 to 16 in words of either byte order; widths that are multiples of 32, even heights, up
// to 8192 x 8192 (beyond 2016 x 2048 in overlapping parts). A buffer holds one frame, rows back to back.
//
// The YUV that leaves the element is full-range BT.601, as its colorimetry says: the library's own chroma, the plain
// colour differences, is brought to that scale by way of the sensor matrix. RGB leaves top row first.
//
// THREADS. Properties may be set at any time, from any thread: they are kept under the lock, and the streaming thread
// takes them over before a frame. So no setter of the library runs during one, and nobody waits for a frame to end.
//
// COPIES. The library writes into its source. A frame that nobody else holds, of 8 bits, phase BGGR and at a multiple
// of 16 bytes, is given to it as it is; any other is brought to 8 bits, the right phase and aligned rows in one pass.
// The picture goes straight to the buffer that leaves. Upstream and downstream are asked for aligned buffers.
#include <gst/base/gstbasetransform.h>
#include <gst/gst.h>
#include <gst/video/video.h>

#include <atomic>
#include <mutex>
#include <string>

#include "formats.h"
#include "frame_maker.h"
#include "settings.h"

#define PPL_TYPE_BAYER (ppl_bayer_get_type())
G_DECLARE_FINAL_TYPE(PplBayer, ppl_bayer, PPL, BAYER, GstBaseTransform)

GST_DEBUG_CATEGORY_STATIC(ppl_bayer_debug);
#define GST_CAT_DEFAULT ppl_bayer_debug

namespace {

using element::FrameMaker;
using element::Property;
using element::Settings;

struct State {
  std::mutex lock;  // over these four
  Settings settings = element::standard_settings();
  bool changed = true;
  int32_t gains[3] = {256, 256, 256};
  bool running = false;

  // The streaming thread's own.
  FrameMaker maker;
  Settings current = element::standard_settings();
  gsize picture_bytes = 0;
  GstClockTime last_message = GST_CLOCK_TIME_NONE;
  guint64 frames = 0, copied = 0;
};

}  // namespace

struct _PplBayer {
  GstBaseTransform parent;
  State* state;
};

G_DEFINE_TYPE(PplBayer, ppl_bayer, GST_TYPE_BASE_TRANSFORM)

namespace {

constexpr size_t buffer_alignment = 64;

State& state_of(gpointer self) {
  return *PPL_BAYER(self)->state;
}

guint gains_id() {
  return static_cast<guint>(element::properties().size()) + 1;
}

void set_property(GObject* object, guint id, const GValue* value, GParamSpec*) {
  State& s = state_of(object);
  const Property& property = element::properties()[id - 1];
  std::string wrong;
  {
    const std::lock_guard guard(s.lock);
    wrong = element::set_property(s.settings, property, value);
    s.changed = true;
  }
  if (!wrong.empty())
    g_warning("%s: %s; it stays as it was", GST_OBJECT_NAME(object), wrong.c_str());
  else if (property.name == "quality")
    gst_base_transform_reconfigure_src(GST_BASE_TRANSFORM(object));
}

void get_property(GObject* object, guint id, GValue* value, GParamSpec*) {
  State& s = state_of(object);
  const std::lock_guard guard(s.lock);
  if (id == gains_id())
    element::set_array(value, s.gains, 3);
  else
    element::get_property(s.settings, element::properties()[id - 1], value);
}

void finalize(GObject* object) {
  delete PPL_BAYER(object)->state;
  G_OBJECT_CLASS(ppl_bayer_parent_class)->finalize(object);
}

int quality_of(State& s) {
  const std::lock_guard guard(s.lock);
  return s.settings.quality;
}

void set_running(State& s, bool running) {
  const std::lock_guard guard(s.lock);
  s.running = running;
}

gboolean start(GstBaseTransform* base) {
  State& s = state_of(base);
  const int quality = quality_of(s);
  if (element::formats_of(quality).empty()) {
    GST_ELEMENT_ERROR(base, LIBRARY, SETTINGS, ("%s", element::no_picture(quality).c_str()), (nullptr));
    return FALSE;
  }
  if (!s.maker.open()) {
    GST_ELEMENT_ERROR(base, RESOURCE, TOO_LAZY,
                      ("all eight contexts of the library are in use; stop another pplbayer first"),
                      (nullptr));
    return FALSE;
  }
  s.last_message = GST_CLOCK_TIME_NONE;
  s.frames = s.copied = 0;
  const std::lock_guard guard(s.lock);
  s.changed = s.running = true;
  return TRUE;
}

gboolean stop(GstBaseTransform* base) {
  State& s = state_of(base);
  set_running(s, false);
  GST_INFO_OBJECT(base, "%" G_GUINT64_FORMAT " frames, %" G_GUINT64_FORMAT " of them copied", s.frames,
                  s.copied);
  s.maker.close();
  return TRUE;
}

GstCaps* filtered(GstCaps* caps, GstCaps* filter) {
  if (!filter) return caps;
  GstCaps* common = gst_caps_intersect_full(filter, caps, GST_CAPS_INTERSECT_FIRST);
  gst_caps_unref(caps);
  return common;
}

// The same size and rate on the other side.
GstCaps* transform_caps(GstBaseTransform* base, GstPadDirection from, GstCaps* caps, GstCaps* filter) {
  const int quality = quality_of(state_of(base));
  GstCaps* offered = from == GST_PAD_SINK ? element::source_caps(quality) : element::sink_caps(quality);
  GstCaps* result = element::same_sizes(caps, offered);
  gst_caps_unref(offered);
  return filtered(result, filter);
}

// Before the element runs every pipeline can be put together. Once it runs it offers what will work; a source that has
// nothing of that is let speak, and what it sends is refused with the reason, which an empty offer would not tell.
gboolean query(GstBaseTransform* base, GstPadDirection direction, GstQuery* query) {
  State& s = state_of(base);
  const GstQueryType type = GST_QUERY_TYPE(query);
  if (type == GST_QUERY_CAPS) {
    bool running;
    {
      const std::lock_guard guard(s.lock);
      running = s.running;
    }
    if (!running) {
      GstCaps* filter = nullptr;
      gst_query_parse_caps(query, &filter);
      GstCaps* caps = filtered(direction == GST_PAD_SINK ? gst_caps_new_empty_simple("video/x-bayer")
                                                         : gst_caps_new_empty_simple("video/x-raw"),
                               filter);
      gst_query_set_caps_result(query, caps);
      gst_caps_unref(caps);
      return TRUE;
    }
  } else if (type == GST_QUERY_ACCEPT_CAPS && direction == GST_PAD_SINK) {
    GstCaps* caps = nullptr;
    gst_query_parse_accept_caps(query, &caps);
    gst_query_set_accept_caps_result(
        query, gst_structure_has_name(gst_caps_get_structure(caps, 0), "video/x-bayer"));
    return TRUE;
  }
  const gboolean done = GST_BASE_TRANSFORM_CLASS(ppl_bayer_parent_class)->query(base, direction, query);
  if (done && type == GST_QUERY_CAPS && direction == GST_PAD_SINK) {
    GstCaps *filter = nullptr, *offered = nullptr;
    gst_query_parse_caps(query, &filter);
    gst_query_parse_caps_result(query, &offered);
    if (filter && offered && gst_caps_is_empty(offered)) {
      GstCaps* anything = filtered(gst_caps_new_empty_simple("video/x-bayer"), filter);
      gst_query_set_caps_result(query, anything);
      gst_caps_unref(anything);
    }
  }
  return done;
}

gboolean get_unit_size(GstBaseTransform*, GstCaps* caps, gsize* size) {
  const GstStructure* structure = gst_caps_get_structure(caps, 0);
  if (gst_structure_has_name(structure, "video/x-bayer")) {
    ppl_sensor_frame frame;
    if (!element::parse_sink_caps(caps, PPL_QUALITY_DEFAULT, &frame).empty()) return FALSE;
    *size = static_cast<gsize>(ppl_sensor_frame_bytes(&frame));
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

// Where nothing can be agreed on the reason is told.
gboolean sink_event(GstBaseTransform* base, GstEvent* event) {
  State& s = state_of(base);
  const int quality = quality_of(s);
  const GstEventType type = GST_EVENT_TYPE(event);
  if (type == GST_EVENT_CAPS) {
    GstCaps* caps = nullptr;
    ppl_sensor_frame frame;
    gst_event_parse_caps(event, &caps);
    if (const std::string wrong = element::parse_sink_caps(caps, quality, &frame); !wrong.empty()) {
      GST_ELEMENT_ERROR(base, CORE, NEGOTIATION, ("%s", wrong.c_str()), ("caps %" GST_PTR_FORMAT, caps));
      gst_event_unref(event);
      return FALSE;
    }
  } else if (type == GST_EVENT_FLUSH_STOP || type == GST_EVENT_SEGMENT) {
    s.last_message = GST_CLOCK_TIME_NONE;
  }
  const gboolean done = GST_BASE_TRANSFORM_CLASS(ppl_bayer_parent_class)->sink_event(base, event);
  if (type == GST_EVENT_CAPS && !done && !GST_PAD_IS_FLUSHING(GST_BASE_TRANSFORM_SRC_PAD(base))) {
    GstCaps* taken = gst_pad_peer_query_caps(GST_BASE_TRANSFORM_SRC_PAD(base), nullptr);
    GST_ELEMENT_ERROR(base, CORE, NEGOTIATION,
                      ("nothing that quality %d makes is taken by what follows: it makes %s", quality,
                       element::formats_of(quality).c_str()),
                      ("what follows takes %" GST_PTR_FORMAT, taken));
    gst_caps_unref(taken);
  }
  return done;
}

gboolean set_caps(GstBaseTransform* base, GstCaps* in, GstCaps* out) {
  State& s = state_of(base);
  ppl_sensor_frame frame;
  GstVideoInfo info;
  if (!element::parse_sink_caps(in, quality_of(s), &frame).empty() || !gst_video_info_from_caps(&info, out))
    return FALSE;
  s.picture_bytes = GST_VIDEO_INFO_SIZE(&info);
  s.maker.set_frame(frame, GST_VIDEO_INFO_FORMAT(&info));
  return TRUE;
}

// Aligned buffers, from upstream and from downstream.
gboolean propose_allocation(GstBaseTransform* base, GstQuery* decided, GstQuery* query) {
  if (!GST_BASE_TRANSFORM_CLASS(ppl_bayer_parent_class)->propose_allocation(base, decided, query))
    return FALSE;
  if (!decided) return TRUE;
  GstAllocationParams wanted;
  gst_allocation_params_init(&wanted);
  wanted.align = buffer_alignment - 1;
  gst_query_add_allocation_param(query, nullptr, &wanted);
  return TRUE;
}

gboolean decide_allocation(GstBaseTransform* base, GstQuery* query) {
  GstAllocator* allocator = nullptr;
  GstAllocationParams wanted;
  gst_allocation_params_init(&wanted);
  const bool given = gst_query_get_n_allocation_params(query) > 0;
  if (given) gst_query_parse_nth_allocation_param(query, 0, &allocator, &wanted);
  wanted.align |= buffer_alignment - 1;
  if (given)
    gst_query_set_nth_allocation_param(query, 0, allocator, &wanted);
  else
    gst_query_add_allocation_param(query, nullptr, &wanted);
  if (allocator) gst_object_unref(allocator);
  return GST_BASE_TRANSFORM_CLASS(ppl_bayer_parent_class)->decide_allocation(base, query);
}

GstFlowReturn prepare_output_buffer(GstBaseTransform* base, GstBuffer* in, GstBuffer** out) {
  const GstFlowReturn result =
      GST_BASE_TRANSFORM_CLASS(ppl_bayer_parent_class)->prepare_output_buffer(base, in, out);
  if (result == GST_FLOW_ERROR)
    GST_ELEMENT_ERROR(base, RESOURCE, NO_SPACE_LEFT, ("there is no buffer for the picture"), (nullptr));
  return result;
}

void add_array(GstStructure* to, const char* name, const uint32_t* numbers, size_t count) {
  GValue array = G_VALUE_INIT;
  g_value_init(&array, GST_TYPE_ARRAY);
  for (size_t i = 0; i < count; ++i) {
    GValue one = G_VALUE_INIT;
    g_value_init(&one, G_TYPE_UINT);
    g_value_set_uint(&one, numbers[i]);
    gst_value_array_append_and_take_value(&array, &one);
  }
  gst_structure_take_value(to, name, &array);
}

// A buffer's time in the running or the stream; none where the stream is not one of times, as of raw files.
GstClockTime running_time(GstBaseTransform* base, GstBuffer* buffer) {
  if (base->segment.format != GST_FORMAT_TIME) return GST_CLOCK_TIME_NONE;
  return gst_segment_to_running_time(&base->segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
}
GstClockTime stream_time(GstBaseTransform* base, GstBuffer* buffer) {
  if (base->segment.format != GST_FORMAT_TIME) return GST_CLOCK_TIME_NONE;
  return gst_segment_to_stream_time(&base->segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
}

// Times as other elements that measure give them; what the library's header says of each figure holds.
void post_statistics(GstBaseTransform* base, State& s, GstBuffer* buffer) {
  const element::FrameStatistics given = s.maker.statistics();
  const element::Light& light = s.maker.light();
  GstStructure* m = gst_structure_new(
      "ppl-statistics", "timestamp", G_TYPE_UINT64, GST_BUFFER_PTS(buffer), "stream-time", G_TYPE_UINT64,
      stream_time(base, buffer), "running-time", G_TYPE_UINT64, running_time(base, buffer), "duration",
      G_TYPE_UINT64, GST_BUFFER_DURATION(buffer), "frame", G_TYPE_UINT64, s.frames, "quality", G_TYPE_INT,
      s.maker.quality(), "qae-cells", G_TYPE_UINT, given.exposed_cells, "qual-cells", G_TYPE_UINT,
      given.qualified_cells, nullptr);
  add_array(m, "means", given.whole, 3);
  add_array(m, "qae-means", given.exposed, 3);
  add_array(m, "qual-means", given.qualified, 3);
  add_array(m, "gains", light.gains.data(), 3);
  if (s.current.auto_white_balance || s.current.auto_exposure)
    gst_structure_set(m, "raw-level", G_TYPE_UINT, light.level, "raw-clipped", G_TYPE_UINT, light.clipped,
                      "light-found", G_TYPE_BOOLEAN, light.found, nullptr);
  if (given.single) {
    add_array(m, "windows", given.windows, 3 * 48);
    add_array(m, "red-histogram", given.histograms[0], 256);
    add_array(m, "green-histogram", given.histograms[1], 256);
    add_array(m, "blue-histogram", given.histograms[2], 256);
  }
  gst_element_post_message(GST_ELEMENT(base), gst_message_new_element(GST_OBJECT(base), m));
}

// By the frames' own time, by the clock on the wall where they have none.
bool message_due(State& s, GstBaseTransform* base, GstBuffer* buffer) {
  if (!s.current.statistics) return false;
  GstClockTime now = running_time(base, buffer);
  if (!GST_CLOCK_TIME_IS_VALID(now)) now = static_cast<GstClockTime>(g_get_monotonic_time()) * GST_USECOND;
  const GstClockTime interval = static_cast<GstClockTime>(s.current.statistics_interval) * GST_MSECOND;
  if (GST_CLOCK_TIME_IS_VALID(s.last_message) && now >= s.last_message && now - s.last_message < interval)
    return false;
  s.last_message = now;
  return true;
}

void before_transform(GstBaseTransform* base, GstBuffer* buffer) {
  const GstClockTime at = stream_time(base, buffer);
  if (GST_CLOCK_TIME_IS_VALID(at)) gst_object_sync_values(GST_OBJECT(base), at);
}

// A frame that nobody else holds may be overwritten.
bool is_ours(GstBuffer* buffer) {
  return gst_buffer_is_writable(buffer) && gst_buffer_n_memory(buffer) == 1 &&
         gst_buffer_is_all_memory_writable(buffer);
}

GstFlowReturn transform(GstBaseTransform* base, GstBuffer* in, GstBuffer* out) {
  State& s = state_of(base);
  bool changed;
  {
    const std::lock_guard guard(s.lock);
    changed = s.changed;
    if (changed) s.current = s.settings;
    s.changed = false;
  }
  const ppl_sensor_frame& frame = s.maker.frame();
  const gsize held = gst_buffer_get_size(in), wanted = static_cast<gsize>(ppl_sensor_frame_bytes(&frame));
  if (held != wanted) {
    GST_ELEMENT_ERROR(base, STREAM, WRONG_TYPE,
                      ("a buffer holds %" G_GSIZE_FORMAT " bytes, a frame of %u x %u has %" G_GSIZE_FORMAT,
                       held, frame.width, frame.height, wanted),
                      (nullptr));
    return GST_FLOW_ERROR;
  }
  bool ours = is_ours(in);
  GstMapInfo raw, picture;
  if (!(ours && gst_buffer_map(in, &raw, GST_MAP_READWRITE))) {
    ours = false;
    if (!gst_buffer_map(in, &raw, GST_MAP_READ)) {
      GST_ELEMENT_ERROR(base, RESOURCE, READ, ("the buffer with the frame can't be read"), (nullptr));
      return GST_FLOW_ERROR;
    }
  }
  if (!gst_buffer_map(out, &picture, GST_MAP_WRITE)) {
    gst_buffer_unmap(in, &raw);
    GST_ELEMENT_ERROR(base, RESOURCE, WRITE, ("the buffer for the picture can't be written"), (nullptr));
    return GST_FLOW_ERROR;
  }
  const bool statistics = message_due(s, base, in);
  const std::string wrong =
      s.maker.make(s.current, changed, statistics, raw.data, ours, picture.data, picture.size);
  ++s.frames;
  if (!(ours && s.maker.in_place(raw.data))) ++s.copied;
  gst_buffer_unmap(out, &picture);
  gst_buffer_unmap(in, &raw);
  if (!wrong.empty()) {
    GST_ELEMENT_ERROR(base, LIBRARY, SETTINGS, ("%s", wrong.c_str()), (nullptr));
    return GST_FLOW_ERROR;
  }
  {
    const std::lock_guard guard(s.lock);
    for (size_t i = 0; i < 3; ++i) s.gains[i] = static_cast<int32_t>(s.maker.light().gains[i]);
  }
  if (statistics) post_statistics(base, s, in);
  return GST_FLOW_OK;
}

gboolean plugin_init(GstPlugin* plugin) {
  return gst_element_register(plugin, "pplbayer", GST_RANK_NONE, PPL_TYPE_BAYER);
}

void add_template(GstElementClass* type, const char* name, GstPadDirection direction, GstCaps* caps) {
  gst_element_class_add_pad_template(type, gst_pad_template_new(name, direction, GST_PAD_ALWAYS, caps));
  gst_caps_unref(caps);
}

}  // namespace

static void ppl_bayer_init(PplBayer* self) {
  self->state = new State;
}

static void ppl_bayer_class_init(PplBayerClass* type) {
  GST_DEBUG_CATEGORY_INIT(ppl_bayer_debug, "pplbayer", 0, "Bayer reconstruction");
  GObjectClass* object = G_OBJECT_CLASS(type);
  object->set_property = set_property;
  object->get_property = get_property;
  object->finalize = finalize;
  element::install_properties(object);
  g_object_class_install_property(
      object, gains_id(),
      gst_param_spec_array(
          "gains", "gains", "R,G,B: the gains of the last frame, set or found",
          g_param_spec_int("number", "number", "number", 0, 2047, 256,
                           static_cast<GParamFlags>(G_PARAM_READABLE | G_PARAM_STATIC_STRINGS)),
          static_cast<GParamFlags>(G_PARAM_READABLE | G_PARAM_STATIC_STRINGS)));
  GstElementClass* element = GST_ELEMENT_CLASS(type);
  gst_element_class_set_static_metadata(element, "Bayer reconstruction", "Filter/Converter/Video",
                                        "Turns raw Bayer frames into finished ones", "ppl");
  add_template(element, "sink", GST_PAD_SINK, element::all_sink_caps());
  add_template(element, "src", GST_PAD_SRC, element::all_source_caps());
  GstBaseTransformClass* base = GST_BASE_TRANSFORM_CLASS(type);
  base->start = start;
  base->stop = stop;
  base->query = query;
  base->transform_caps = transform_caps;
  base->get_unit_size = get_unit_size;
  base->transform_size = transform_size;
  base->sink_event = sink_event;
  base->set_caps = set_caps;
  base->propose_allocation = propose_allocation;
  base->decide_allocation = decide_allocation;
  base->prepare_output_buffer = prepare_output_buffer;
  base->before_transform = before_transform;
  base->transform = transform;
}

#define PACKAGE "ppl"
GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, ppl, "Bayer reconstruction", plugin_init,
                  PPL_ELEMENT_VERSION, PPL_ELEMENT_LICENSE, "ppl", "ppl")
