// Two fields to a frame, beside GStreamer's deinterlace element.
//
// The element runs alone, with a pad of this program on either side and no thread: a push of one interlaced frame
// comes back when the element has handed on one whole frame, which is dropped. YUYV in and out, so nothing is
// converted. One frame comes out for each that goes in (fields=top), as with ours; frames come out of the element's
// own pool, four in turn. Timed are the push and the shallow copy of a frame's descriptor that carries its time
// stamp, together less than two microseconds besides the work. The element's loops are compiled at run time by a
// library that is not held to a vector width: its figures at 16, 32 and 64 bytes are of the same code.
#include <gst/gst.h>

#include <cstdlib>
#include <cstring>
#include <memory>

#include "peers.h"

namespace peers {
namespace {

// Shown in turn: the later field moves by two pixels from one to the next.
constexpr int kFrames = 2;

GstFlowReturn drop(GstPad* pad, GstObject*, GstBuffer* frame) {
  ++*static_cast<int*>(gst_pad_get_element_private(pad));
  gst_buffer_unref(frame);
  return GST_FLOW_OK;
}

class deinterlacer {
 public:
  // Null where the element is not installed.
  static std::shared_ptr<deinterlacer> make(bench::size s, const char* method) {
    gst_init(nullptr, nullptr);
    GstElement* const element = gst_element_factory_make("deinterlace", nullptr);
    return element == nullptr ? nullptr : std::shared_ptr<deinterlacer>(new deinterlacer(element, s, method));
  }
  ~deinterlacer() {
    gst_element_set_state(element_, GST_STATE_NULL);
    for (GstPad* pad : {push_, end_}) {
      gst_pad_set_active(pad, FALSE);
      gst_object_unref(pad);
    }
    for (GstBuffer* frame : frames_) gst_buffer_unref(frame);
    gst_object_unref(element_);
  }
  deinterlacer(const deinterlacer&) = delete;
  deinterlacer& operator=(const deinterlacer&) = delete;

  void run() {
    GstBuffer* const frame = gst_buffer_copy(frames_[pushed_ % kFrames]);
    GST_BUFFER_DURATION(frame) = 40 * GST_MSECOND;
    GST_BUFFER_PTS(frame) = GST_BUFFER_DURATION(frame) * GstClockTime(pushed_++);
    if (gst_pad_push(push_, frame) != GST_FLOW_OK) abort();
  }

 private:
  deinterlacer(GstElement* element, bench::size s, const char* method) : element_(element) {
    gst_object_ref_sink(element_);
    gst_util_set_object_arg(G_OBJECT(element_), "mode", "interlaced");
    gst_util_set_object_arg(G_OBJECT(element_), "method", method);
    gst_util_set_object_arg(G_OBJECT(element_), "fields", "top");
    push_ = gst_pad_new("push", GST_PAD_SRC);
    end_ = gst_pad_new("end", GST_PAD_SINK);
    gst_pad_set_element_private(end_, &out_);
    gst_pad_set_chain_function(end_, drop);
    link(push_, gst_element_get_static_pad(element_, "sink"), true);
    link(end_, gst_element_get_static_pad(element_, "src"), false);
    gst_pad_set_active(push_, TRUE);
    gst_pad_set_active(end_, TRUE);
    gst_element_set_state(element_, GST_STATE_PLAYING);

    GstCaps* const caps = gst_caps_new_simple(
        "video/x-raw", "format", G_TYPE_STRING, "YUY2", "width", G_TYPE_INT, s.width, "height", G_TYPE_INT,
        s.height, "framerate", GST_TYPE_FRACTION, 25, 1, "interlace-mode", G_TYPE_STRING, "interleaved",
        "field-order", G_TYPE_STRING, "top-field-first", nullptr);
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    gst_pad_push_event(push_, gst_event_new_stream_start("frames"));
    gst_pad_push_event(push_, gst_event_new_caps(caps));
    gst_pad_push_event(push_, gst_event_new_segment(&segment));
    gst_caps_unref(caps);

    for (int i = 0; i < kFrames; ++i) {
      const bench::buffer picture = bench::packed_frame(s.width, s.height, 2 * i);
      const size_t bytes = 2 * size_t(s.width) * size_t(s.height);
      frames_[i] = gst_buffer_new_allocate(nullptr, bytes, nullptr);
      gst_buffer_fill(frames_[i], 0, picture.data(), bytes);
    }
    // It holds back the first frames, as many as its method looks back and ahead; then each push gives one.
    for (int i = 0; i < 10; ++i) run();
    const int before = out_;
    for (int i = 0; i < 10; ++i) run();
    if (out_ != before + 10) abort();
  }

  static void link(GstPad* ours, GstPad* theirs, bool into) {
    if (gst_pad_link(into ? ours : theirs, into ? theirs : ours) != GST_PAD_LINK_OK) abort();
    gst_object_unref(theirs);
  }

  GstElement* element_;
  GstPad *push_ = nullptr, *end_ = nullptr;
  GstBuffer* frames_[kFrames] = {};
  int pushed_ = 0, out_ = 0;
};

struct fields {
  uint32_t w, h;
  bench::buffer earlier, kept, later, out;
  ppl_context* context;

  fields(bench::size s, int level_number)
      : w(uint32_t(s.width)),
        h(uint32_t(s.height)),
        earlier(bench::packed_frame(s.width, s.height / 2, 2)),
        kept(bench::packed_frame(s.width, s.height / 2)),
        later(bench::packed_frame(s.width, s.height / 2, 1)),
        out(2 * size_t(s.width) * size_t(s.height)) {
    ppl_test_force_level(level_number);
    context = ppl_init();
    if (context == nullptr) abort();
    ppl_new_frame_sizes(context, w, h, w, h, 0);
  }
  ~fields() { ppl_free(context); }
};

}  // namespace

std::vector<job> field_jobs(bench::size s, int level_number) {
  std::vector<job> jobs;
  const auto f = std::make_shared<fields>(s, level_number);
  const auto add = [&](const char* name, decltype(&ppl_process_intlyuyvtoyuyv) call, const char* method,
                       const char* by) {
    const auto theirs = deinterlacer::make(s, method);
    if (theirs == nullptr) return;
    jobs.push_back({name,
                    double(s.width) * s.height,
                    [] {},
                    [f, call] {
                      call(f->context, f->earlier.data(), f->kept.data(), f->later.data(), f->out.data(),
                           f->w, f->h, f->w, f->h);
                    },
                    {{by, [theirs] { theirs->run(); }}}});
  };
  add("interlaced, motion test, to YUYV", ppl_process_intlyuyvtoyuyv, "greedyl", "GStreamer, greedyl");
  add("interlaced, woven, to YUYV", IntlYUYVToYUYVMMX_no_motion, "weave", "GStreamer, weave");
  return jobs;
}

}  // namespace peers
