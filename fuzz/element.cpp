// The stream element between two pads: caps, properties, buffers and events of any kind in any order.
#include <gst/base/gstbasetransform.h>
#include <gst/gst.h>
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>

#include <string>
#include <vector>

#include "fuzz/input.h"
#include "tests/gst/scarce_memory.h"
#include "tests/support/level.h"

GType ppl_bayer_get_type(void);

namespace {

using namespace fuzz;

void require(bool holds) {
  if (!holds) abort();
}

constexpr const char* kMadeFormats[] = {"I420", "NV12", "YUY2", "UYVY", "BGR", "BGRx", "RGBx"};

// What follows the element.
struct Behind {
  GstCaps* taken;
  GstAllocator* memory;  // offered, if there is one
  guint64 pictures;
  GstFlowReturn answer;
};
Behind* behind_of(GstPad* pad) {
  return static_cast<Behind*>(gst_pad_get_element_private(pad));
}

GstFlowReturn take_picture(GstPad* pad, GstObject*, GstBuffer* buffer) {
  GstMapInfo map;
  require(gst_buffer_map(buffer, &map, GST_MAP_READ));
  // Every byte is the library's: the sum reads them all.
  volatile uint8_t sum = 0;
  for (gsize i = 0; i < map.size; i += 61) sum = static_cast<uint8_t>(sum + map.data[i]);
  if (map.size > 0) sum = static_cast<uint8_t>(sum + map.data[map.size - 1]);
  gst_buffer_unmap(buffer, &map);
  gst_buffer_unref(buffer);
  ++behind_of(pad)->pictures;
  return behind_of(pad)->answer;
}
gboolean take_event(GstPad*, GstObject*, GstEvent* event) {
  gst_event_unref(event);
  return TRUE;
}
gboolean answer_query(GstPad* pad, GstObject* parent, GstQuery* query) {
  const Behind& behind = *behind_of(pad);
  if (GST_QUERY_TYPE(query) == GST_QUERY_CAPS) {
    GstCaps* filter = nullptr;
    gst_query_parse_caps(query, &filter);
    GstCaps* result = filter ? gst_caps_intersect(behind.taken, filter) : gst_caps_ref(behind.taken);
    gst_query_set_caps_result(query, result);
    gst_caps_unref(result);
    return TRUE;
  }
  if (GST_QUERY_TYPE(query) == GST_QUERY_ALLOCATION) {
    if (!behind.memory) return FALSE;
    gst_query_add_allocation_param(query, behind.memory, nullptr);
    return TRUE;
  }
  return gst_pad_query_default(pad, parent, query);
}

class stage {
 public:
  explicit stage(input& in) : in_(in) {
    element_ = GST_ELEMENT(gst_object_ref_sink(g_object_new(ppl_bayer_get_type(), nullptr)));
    bus_ = gst_bus_new();
    gst_element_set_bus(element_, bus_);
    front_ = gst_pad_new("front", GST_PAD_SRC);
    back_ = gst_pad_new("back", GST_PAD_SINK);
    behind_.taken = gst_caps_new_any();
    if (in.ConsumeBool()) behind_.memory = scarce_memory(in.ConsumeIntegralInRange<guint>(0, 200));
    gst_pad_set_element_private(back_, &behind_);
    gst_pad_set_chain_function(back_, take_picture);
    gst_pad_set_event_function(back_, take_event);
    gst_pad_set_query_function(back_, answer_query);
    link(front_, "sink", true);
    link(back_, "src", false);
    gst_pad_set_active(front_, TRUE);
    gst_pad_set_active(back_, TRUE);
  }
  stage(const stage&) = delete;
  stage& operator=(const stage&) = delete;
  ~stage() {
    gst_element_set_state(element_, GST_STATE_NULL);
    gst_pad_set_active(front_, FALSE);
    gst_pad_set_active(back_, FALSE);
    gst_bus_set_flushing(bus_, TRUE);
    gst_object_unref(bus_);
    require(GST_OBJECT_REFCOUNT_VALUE(element_) == 1);
    gst_object_unref(element_);
    gst_object_unref(front_);
    gst_object_unref(back_);
    gst_caps_unref(behind_.taken);
    if (behind_.memory) gst_object_unref(behind_.memory);
  }

  void run() {
    gst_element_set_state(element_, GST_STATE_PLAYING);
    push(gst_event_new_stream_start("fuzz"));
    if (in_.ConsumeIntegralInRange(0, 7) != 0) push_caps();
    if (in_.ConsumeIntegralInRange(0, 7) != 0) push_segment();
    while (in_.remaining_bytes() > 0) {
      step();
      drain();
    }
  }

 private:
  void link(GstPad* pad, const char* name, bool before) {
    GstPad* own = gst_element_get_static_pad(element_, name);
    require(GST_PAD_LINK_SUCCESSFUL(before ? gst_pad_link(pad, own) : gst_pad_link(own, pad)));
    gst_object_unref(own);
  }
  void push(GstEvent* event) { gst_pad_push_event(front_, event); }
  void drain() {
    while (GstMessage* message = gst_bus_pop(bus_)) gst_message_unref(message);
  }

  void step() {
    switch (in_.ConsumeIntegralInRange(0, 15)) {
      case 0:
        push_caps();
        break;
      case 1:
        push_segment();
        break;
      case 2:
        push(gst_event_new_flush_start());
        if (in_.ConsumeBool()) push_buffer();
        push(gst_event_new_flush_stop(in_.ConsumeBool()));
        if (in_.ConsumeBool()) push_segment();
        break;
      case 3:
        other_event();
        break;
      case 4:
        change_state();
        break;
      case 5:
        change_taken();
        break;
      case 6:
        ask();
        break;
      case 7:
      case 8:
      case 9:
        set_property();
        break;
      default:
        push_buffer();
    }
  }

  int side(int most) {
    return in_.ConsumeIntegralInRange(0, 9) == 0 ? number<int32_t>(in_)
                                                 : 32 * in_.ConsumeIntegralInRange(1, most / 32);
  }

  // Mostly caps as the element takes them, with one field or another of the wrong kind.
  GstStructure* structure(const char* name, const char* format) {
    GstStructure* s = gst_structure_new_empty(name);
    gst_structure_set(s, "format", G_TYPE_STRING, format, nullptr);
    int width = side(192),
        height = in_.ConsumeIntegralInRange(0, 9) == 0 ? side(96) : 2 * in_.ConsumeIntegralInRange(1, 40);
    // Pictures that the element makes and a run can't afford.
    if (width > 0 && height > 0 && int64_t{width} * height > 1 << 17) height = 2;
    gst_structure_set(s, "width", G_TYPE_INT, width, "height", G_TYPE_INT, height, nullptr);
    if (in_.ConsumeBool())
      gst_structure_set(s, "framerate", GST_TYPE_FRACTION, in_.ConsumeIntegralInRange(0, 200),
                        in_.ConsumeIntegralInRange(1, 1001), nullptr);
    const char* const names[] = {"width", "height", "format", "framerate", "colorimetry"};
    switch (in_.ConsumeIntegralInRange(0, 15)) {
      case 0:
        gst_structure_remove_field(s, in_.PickValueInArray(names));
        break;
      case 1:
        gst_structure_set(s, in_.PickValueInArray(names), G_TYPE_STRING, any_text().c_str(), nullptr);
        break;
      case 2:
        gst_structure_set(s, in_.PickValueInArray(names), G_TYPE_INT, number<int32_t>(in_), nullptr);
        break;
      default:
        break;
    }
    return s;
  }

  std::string any_text() {
    std::string text = in_.ConsumeRandomLengthString(24);
    for (char& c : text) c = static_cast<char>(32 + (static_cast<unsigned char>(c) % 95));
    return text;
  }

  void push_caps() {
    constexpr const char* kPatterns[] = {"bggr", "gbrg", "grbg", "rggb"};
    constexpr const char* kDepths[] = {"", "", "", "10le", "12le", "14le", "16le", "10be", "16be", "8"};
    const std::string format = std::string(in_.PickValueInArray(kPatterns)) + in_.PickValueInArray(kDepths);
    const char* const name = in_.ConsumeIntegralInRange(0, 15) == 0 ? "video/x-raw" : "video/x-bayer";
    GstCaps* caps = gst_caps_new_full(structure(name, format.c_str()), nullptr);
    const GstStructure* s = gst_caps_get_structure(caps, 0);
    int width = 0, height = 0;
    const gchar* taken = gst_structure_get_string(s, "format");
    if (gst_structure_get_int(s, "width", &width) && gst_structure_get_int(s, "height", &height) && taken)
      frame_bytes_ = static_cast<size_t>(width > 0 && height > 0 ? int64_t{width} * height % (1 << 20) : 0) *
                     (std::string(taken).size() > 4 ? 2 : 1);
    if (gst_caps_is_fixed(caps)) push(gst_event_new_caps(caps));
    gst_caps_unref(caps);
  }

  void push_segment() {
    constexpr GstFormat kFormats[] = {GST_FORMAT_TIME, GST_FORMAT_TIME, GST_FORMAT_BYTES, GST_FORMAT_DEFAULT};
    GstSegment segment;
    gst_segment_init(&segment, in_.PickValueInArray(kFormats));
    if (in_.ConsumeBool()) segment.rate = in_.ConsumeBool() ? 2.0 : -1.0;
    if (in_.ConsumeBool()) segment.start = in_.ConsumeIntegralInRange<guint64>(0, 5 * GST_SECOND);
    if (in_.ConsumeBool())
      segment.stop = segment.start + in_.ConsumeIntegralInRange<guint64>(0, 5 * GST_SECOND);
    push(gst_event_new_segment(&segment));
  }

  void other_event() {
    switch (in_.ConsumeIntegralInRange(0, 5)) {
      case 0:
        push(gst_event_new_eos());
        break;
      case 1:
        push(gst_event_new_gap(in_.ConsumeIntegralInRange<guint64>(0, GST_SECOND), GST_SECOND));
        break;
      case 2:
        push(gst_event_new_stream_start("again"));
        break;
      case 3:
        push(gst_event_new_tag(gst_tag_list_new(GST_TAG_TITLE, "a title", nullptr)));
        break;
      case 4:
        gst_pad_push_event(
            back_,
            gst_event_new_seek(1, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, GST_SEEK_TYPE_SET,
                               in_.ConsumeIntegralInRange<gint64>(0, GST_SECOND), GST_SEEK_TYPE_NONE, 0));
        break;
      default:
        gst_pad_push_event(back_,
                           gst_event_new_qos(GST_QOS_TYPE_UNDERFLOW, in_.ConsumeIntegralInRange(0, 4), 1000,
                                             in_.ConsumeIntegralInRange<guint64>(0, GST_SECOND)));
    }
  }

  void change_state() {
    constexpr GstState kStates[] = {GST_STATE_NULL, GST_STATE_READY, GST_STATE_PAUSED, GST_STATE_PLAYING};
    gst_element_set_state(element_, in_.PickValueInArray(kStates));
    if (in_.ConsumeIntegralInRange(0, 3) != 0) {
      gst_element_set_state(element_, GST_STATE_PLAYING);
      push(gst_event_new_stream_start("anew"));
      push_caps();
      push_segment();
    }
  }

  // What follows changes its mind.
  void change_taken() {
    GstCaps* caps = gst_caps_new_empty();
    for (int n = in_.ConsumeIntegralInRange(0, 3); n > 0; --n) {
      GstStructure* s = gst_structure_new("video/x-raw", "format", G_TYPE_STRING,
                                          in_.PickValueInArray(kMadeFormats), nullptr);
      if (in_.ConsumeIntegralInRange(0, 7) == 0)
        gst_structure_set(s, "width", G_TYPE_INT, side(192), nullptr);
      gst_caps_append_structure(caps, s);
    }
    if (in_.ConsumeIntegralInRange(0, 3) == 0) {
      gst_caps_unref(caps);
      caps = gst_caps_new_any();
    }
    gst_caps_replace(&behind_.taken, caps);
    gst_caps_unref(caps);
    constexpr GstFlowReturn kAnswers[] = {GST_FLOW_OK, GST_FLOW_OK, GST_FLOW_OK, GST_FLOW_EOS,
                                          GST_FLOW_ERROR};
    behind_.answer = in_.PickValueInArray(kAnswers);
    gst_pad_push_event(back_, gst_event_new_reconfigure());
  }

  void ask() {
    GstPad* const own = gst_element_get_static_pad(element_, in_.ConsumeBool() ? "sink" : "src");
    GstCaps* const filter =
        in_.ConsumeBool()
            ? gst_caps_new_full(structure("video/x-raw", in_.PickValueInArray(kMadeFormats)), nullptr)
            : nullptr;
    switch (in_.ConsumeIntegralInRange(0, 2)) {
      case 0:
        gst_caps_unref(gst_pad_query_caps(own, filter));
        break;
      case 1:
        if (filter && gst_caps_is_fixed(filter)) gst_pad_query_accept_caps(own, filter);
        break;
      default: {
        GstQuery* query = gst_query_new_allocation(filter, TRUE);
        gst_pad_query(own, query);
        gst_query_unref(query);
      }
    }
    if (filter) gst_caps_unref(filter);
    gst_object_unref(own);
  }

  // All of an array are of one kind: GStreamer refuses one of another, and loses it.
  void append_any(GValue* array, int kind) {
    GValue one = G_VALUE_INIT;
    switch (kind) {
      case 0:
        g_value_init(&one, G_TYPE_STRING);
        g_value_set_string(&one, any_text().c_str());
        break;
      case 1:
        g_value_init(&one, G_TYPE_DOUBLE);
        g_value_set_double(&one, number<int32_t>(in_) / 7.0);
        break;
      case 2:
        g_value_init(&one, G_TYPE_INT64);
        g_value_set_int64(&one, in_.ConsumeIntegral<gint64>());
        break;
      default:
        g_value_init(&one, G_TYPE_INT);
        g_value_set_int(&one, number<int32_t>(in_));
    }
    gst_value_array_append_and_take_value(array, &one);
  }

  void set_property() {
    guint count = 0;
    GParamSpec** all = g_object_class_list_properties(G_OBJECT_GET_CLASS(element_), &count);
    const GParamSpec* one = all[in_.ConsumeIntegralInRange<guint>(0, count - 1)];
    const std::string name = one->name;
    const GType type = one->value_type;
    const bool writable = (one->flags & G_PARAM_WRITABLE) != 0;
    g_free(all);
    if (name == "quality" || in_.ConsumeIntegralInRange(0, 5) == 0) {
      g_object_set(element_, "quality", in_.ConsumeIntegralInRange(0, 15), nullptr);
      return;
    }
    if (writable && name != "parent" && name != "name") {
      GValue given = G_VALUE_INIT;
      g_value_init(&given, type);
      if (type == GST_TYPE_ARRAY) {
        const int kind = in_.ConsumeIntegralInRange(0, 15);
        for (int n = in_.ConsumeIntegralInRange(0, 10); n > 0; --n) append_any(&given, kind);
        g_object_set_property(G_OBJECT(element_), name.c_str(), &given);
      } else {
        const std::string text =
            in_.ConsumeIntegralInRange(0, 7) == 0 ? any_text() : std::to_string(number<int32_t>(in_));
        if (gst_value_deserialize(&given, text.c_str()))
          g_object_set_property(G_OBJECT(element_), name.c_str(), &given);
      }
      g_value_unset(&given);
    }
    GValue held = G_VALUE_INIT;
    g_object_get_property(G_OBJECT(element_), name.c_str(), &held);
    g_free(g_strdup_value_contents(&held));
    g_value_unset(&held);
  }

  GstMemory* memory(size_t bytes) {
    const bool read_only = in_.ConsumeIntegralInRange(0, 3) == 0;
    auto* block = new exact(bytes, in_.ConsumeIntegralInRange<size_t>(0, 3) == 0 ? 1 : 0,
                            in_.ConsumeIntegral<uint8_t>());
    return gst_memory_new_wrapped(read_only ? GST_MEMORY_FLAG_READONLY : static_cast<GstMemoryFlags>(0),
                                  block->at(), bytes, 0, bytes, block,
                                  [](gpointer p) { delete static_cast<exact*>(p); });
  }

  void push_buffer() {
    size_t bytes = frame_bytes_;
    switch (in_.ConsumeIntegralInRange(0, 11)) {
      case 0:
        bytes = in_.ConsumeIntegralInRange<size_t>(0, 70000);
        break;
      case 1:
        bytes += in_.ConsumeIntegralInRange<size_t>(0, 2) - 1;
        break;
      default:
        break;
    }
    if (bytes > size_t{1} << 21) bytes = 0;
    GstBuffer* buffer = gst_buffer_new();
    const size_t first =
        in_.ConsumeIntegralInRange(0, 7) == 0 ? in_.ConsumeIntegralInRange<size_t>(0, bytes) : bytes;
    gst_buffer_append_memory(buffer, memory(first));
    if (first < bytes) gst_buffer_append_memory(buffer, memory(bytes - first));
    if (in_.ConsumeBool()) GST_BUFFER_PTS(buffer) = in_.ConsumeIntegralInRange<guint64>(0, 5 * GST_SECOND);
    if (in_.ConsumeIntegralInRange(0, 7) == 0)
      GST_BUFFER_FLAG_SET(buffer, in_.ConsumeIntegral<uint16_t>() << 4);
    GstBuffer* const held = in_.ConsumeIntegralInRange(0, 3) == 0 ? gst_buffer_ref(buffer) : nullptr;
    gst_pad_push(front_, buffer);
    if (held) gst_buffer_unref(held);
  }

  input& in_;
  GstElement* element_;
  GstBus* bus_;
  GstPad *front_, *back_;
  Behind behind_{nullptr, nullptr, 0, GST_FLOW_OK};
  size_t frame_bytes_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  // No plug-in but the element itself, and nothing said about what is refused.
  setenv("GST_REGISTRY_DISABLE", "yes", 1);
  setenv("G_DEBUG", "", 1);
  gst_init(nullptr, nullptr);
  g_log_set_default_handler([](const gchar*, GLogLevelFlags, const gchar*, gpointer) {}, nullptr);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  input in(data, size);
  ppl_test_force_level(in.ConsumeIntegralInRange(0, ppl_test_levels() - 1));
  stage(in).run();
  return 0;
}
