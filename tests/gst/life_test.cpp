// The element's life: flush, seek, other caps, no memory, no slot, an end at any moment.
#include <chrono>
#include <cstdlib>
#include <new>
#include <random>
#include <thread>

#include "element.h"
#include "scarce_memory.h"

namespace {

// Memory of its own that the element still gets; there is no end of it below 0.
int allocations_left = -1;
bool allocation_granted() {
  if (allocations_left == 0) return false;
  if (allocations_left > 0) --allocations_left;
  return true;
}

}  // namespace

// What the element asks for by these fails when the test says so. (Others than the element ask for none.)
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return allocation_granted() ? std::malloc(bytes) : nullptr;
}
void* operator new(std::size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  const auto to = static_cast<std::size_t>(alignment);
  return allocation_granted() ? std::aligned_alloc(to, (bytes + to - 1) / to * to) : nullptr;
}

namespace {

using namespace gst_test;

// Memory that nobody gets at.
struct Closed {
  GstAllocator parent;
};
struct ClosedClass {
  GstAllocatorClass parent;
};
G_DEFINE_TYPE(Closed, closed, GST_TYPE_ALLOCATOR)

GstMemory* closed_alloc(GstAllocator* self, gsize size, GstAllocationParams*) {
  GstMemory* memory = g_new0(GstMemory, 1);
  gst_memory_init(memory, static_cast<GstMemoryFlags>(0), self, nullptr, size, 0, 0, size);
  return memory;
}
void closed_free(GstAllocator*, GstMemory* memory) {
  g_free(memory);
}
void closed_init(Closed* self) {
  GstAllocator* allocator = GST_ALLOCATOR(self);
  allocator->mem_type = "closed";
  allocator->mem_map = [](GstMemory*, gsize, GstMapFlags) -> gpointer { return nullptr; };
  allocator->mem_unmap = [](GstMemory*) {};
  GST_OBJECT_FLAG_SET(self, GST_ALLOCATOR_FLAG_CUSTOM_ALLOC);
}
void closed_class_init(ClosedClass* type) {
  GST_ALLOCATOR_CLASS(type)->alloc = closed_alloc;
  GST_ALLOCATOR_CLASS(type)->free = closed_free;
}

class Life : public Element {
 protected:
  void fresh_segment() {
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    EXPECT_TRUE(gst_harness_push_event(harness_, gst_event_new_segment(&segment)));
  }
};

TEST_F(Life, FlushesAndGoesOn) {
  const Bytes picture = convert("", "I420");
  open("statistics=true statistics-interval=0 auto-white-balance=true auto-white-balance=false", "I420");
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(push(mosaic()), GST_FLOW_OK);
    EXPECT_EQ(pull(), picture);
    EXPECT_TRUE(gst_harness_push_event(harness_, gst_event_new_flush_start()));
    EXPECT_EQ(push(mosaic()), GST_FLOW_FLUSHING);
    EXPECT_TRUE(gst_harness_push_event(harness_, gst_event_new_flush_stop(TRUE)));
    fresh_segment();
  }
  EXPECT_EQ(push(mosaic()), GST_FLOW_OK);
  EXPECT_EQ(pull(), picture);
  EXPECT_EQ(error(), "");
}

TEST_F(Life, OtherCapsOnTheWay) {
  struct {
    const char* caps;
    size_t samples;
  } const shapes[] = {{"video/x-bayer,format=bggr,width=160,height=32,framerate=25/1", 160 * 32},
                      {"video/x-bayer,format=rggb12le,width=320,height=64,framerate=25/1", 2 * 320 * 64},
                      {"video/x-bayer,format=grbg,width=64,height=2,framerate=5/1", 64 * 2},
                      {"video/x-bayer,format=gbrg16be,width=2080,height=16,framerate=5/1", 2 * 2080 * 16}};
  open("lens=true lens-f1=500", "{I420,NV12,BGR}");
  std::vector<Bytes> first;
  for (int round = 0; round < 3; ++round)
    for (const auto& [caps, samples] : shapes) {
      gst_harness_set_src_caps_str(harness_, caps);
      Bytes raw(samples);
      for (size_t i = 0; i < samples; ++i) raw[i] = static_cast<uint8_t>(i * 37 % 251);
      ASSERT_EQ(push(raw), GST_FLOW_OK) << caps << error();
      const Bytes picture = pull();
      ASSERT_FALSE(picture.empty());
      if (!round)
        first.push_back(picture);
      else
        EXPECT_EQ(
            picture,
            first[static_cast<size_t>(&samples - &shapes[0].samples) / (sizeof shapes[0] / sizeof(size_t))])
            << caps;
    }
  // What follows changes its mind.
  gst_harness_set_src_caps_str(harness_, shapes[0].caps);
  for (const char* format : {"BGR", "YUY2", "NV12", "I420"}) {
    gst_harness_set_sink_caps_str(harness_, (std::string("video/x-raw,format=") + format).c_str());
    ASSERT_EQ(push(mosaic()), GST_FLOW_OK) << format << error();
    const size_t pixels = width * height;
    EXPECT_EQ(pull().size(), *format == 'B'   ? 3 * pixels
                             : *format == 'Y' ? 2 * pixels
                                              : pixels * 3 / 2)
        << format;
  }
}

// A quality that lacks the format in use: another format is agreed on where there is one, with no frame lost between.
TEST_F(Life, AQualityThatNeedsAnotherFormat) {
  open("quality=15", "{YUY2,I420}");
  for (int i = 0; i < 10; ++i) {
    g_object_set(element_, "quality", i & 1 ? 13 : 15, nullptr);
    ASSERT_EQ(push(mosaic()), GST_FLOW_OK) << error();
    EXPECT_FALSE(pull().empty());
  }
  EXPECT_EQ(error(), "");
}

TEST_F(Life, NoMemoryForThePicture) {
  for (int enough : {0, 1, 2}) {
    open("", "I420");
    GstAllocator* scarce = scarce_memory(enough);
    gst_harness_set_propose_allocator(harness_, GST_ALLOCATOR(gst_object_ref(scarce)), nullptr);
    // The element asks again for what it is offered.
    gst_harness_set_src_caps_str(harness_, "video/x-bayer,format=bggr,width=160,height=32,framerate=30/1");
    std::vector<GstBuffer*> held;
    GstFlowReturn result = GST_FLOW_OK;
    for (int i = 0; i < 6 && result == GST_FLOW_OK; ++i) {
      result = push(mosaic());
      if (result == GST_FLOW_OK) held.push_back(gst_harness_pull(harness_));
    }
    EXPECT_EQ(result, GST_FLOW_ERROR);
    EXPECT_EQ(held.size(), static_cast<size_t>(enough));
    EXPECT_NE(error().find("no buffer for the picture"), std::string::npos);
    for (GstBuffer* buffer : held) gst_buffer_unref(buffer);
    close();
    gst_object_unref(scarce);
  }
}

// Each of the element's own pieces of memory in turn is not to be had: that frame is an error, the next one is made.
TEST_F(Life, NoMemoryOfItsOwn) {
  allocations_left = 0;
  void* const refused = ::operator new(1, std::nothrow);
  allocations_left = -1;
  ::operator delete(refused);
  if (refused) GTEST_SKIP() << "memory is handed out by valgrind: gst_valgrind_no_memory";
  struct {
    const char *controls, *caps, *format;
    size_t samples;
  } const cases[] = {
      {"lens=true lens-f1=500 auto-white-balance=true", "bggr10le,width=160,height=32", "NV12", 2 * 160 * 32},
      {"quality=2", "rggb,width=160,height=32", "RGBx", 160 * 32},
      {"lens=true", "gbrg,width=2080,height=16", "BGR", 2080 * 16},
  };
  for (const auto& [controls, caps, format, samples] : cases) {
    const std::string all = std::string("video/x-bayer,framerate=5/1,format=") + caps;
    Bytes raw(samples);
    for (size_t i = 0; i < samples; ++i)
      raw[i] = static_cast<uint8_t>(i % 2 && samples > 160 * 33 ? 1 : i * 37 % 251);
    open(controls, format, all);
    ASSERT_EQ(push(raw), GST_FLOW_OK) << error();
    const Bytes picture = pull();
    int failed = 0;
    for (;; ++failed) {
      open(controls, format, all);
      allocations_left = failed;
      const GstFlowReturn result = push(raw);
      const bool enough = allocations_left > 0;
      allocations_left = -1;
      if (enough) {
        EXPECT_EQ(result, GST_FLOW_OK);
        break;
      }
      if (result == GST_FLOW_OK) continue;  // the last piece of all
      EXPECT_EQ(result, GST_FLOW_ERROR) << caps << failed;
      EXPECT_NE(error().find("no memory for a frame"), std::string::npos) << caps << failed;
      EXPECT_TRUE(pull().empty());
      ASSERT_EQ(push(raw), GST_FLOW_OK) << caps << failed;
      EXPECT_EQ(pull(), picture) << caps << failed;
    }
    EXPECT_GT(failed, 1) << caps;
    EXPECT_EQ(error(), "");
  }
}

TEST_F(Life, MemoryThatCannotBeMapped) {
  auto* closed = static_cast<GstAllocator*>(g_object_new(closed_get_type(), nullptr));
  gst_object_ref_sink(closed);
  open("", "I420");
  GstBuffer* frame = gst_buffer_new();
  gst_buffer_append_memory(frame, gst_allocator_alloc(closed, width * height, nullptr));
  EXPECT_EQ(gst_harness_push(harness_, frame), GST_FLOW_ERROR);
  EXPECT_NE(error().find("can't be read"), std::string::npos);

  open("", "I420");
  gst_harness_set_propose_allocator(harness_, GST_ALLOCATOR(gst_object_ref(closed)), nullptr);
  gst_harness_set_src_caps_str(harness_, "video/x-bayer,format=bggr,width=160,height=32,framerate=30/1");
  EXPECT_EQ(push(mosaic()), GST_FLOW_ERROR);
  EXPECT_NE(error().find("can't be written"), std::string::npos);
  EXPECT_TRUE(pull().empty());
  close();
  gst_object_unref(closed);
}

TEST_F(Life, EightSlotsAndNoMore) {
  std::vector<GstElement*> all;
  for (int i = 0; i < 8; ++i) {
    GstElement* one = GST_ELEMENT(gst_object_ref_sink(gst_element_factory_make("pplbayer", nullptr)));
    EXPECT_EQ(gst_element_set_state(one, GST_STATE_PAUSED), GST_STATE_CHANGE_SUCCESS);
    all.push_back(one);
  }
  GstElement* ninth = GST_ELEMENT(gst_object_ref_sink(gst_element_factory_make("pplbayer", nullptr)));
  gst_element_set_bus(ninth, bus_);
  EXPECT_EQ(gst_element_set_state(ninth, GST_STATE_PAUSED), GST_STATE_CHANGE_FAILURE);
  EXPECT_NE(error().find("all eight contexts"), std::string::npos);
  gst_element_set_state(all.back(), GST_STATE_NULL);
  gst_element_set_state(ninth, GST_STATE_NULL);
  EXPECT_EQ(gst_element_set_state(ninth, GST_STATE_PAUSED), GST_STATE_CHANGE_SUCCESS);
  all.push_back(ninth);
  for (GstElement* one : all) {
    gst_element_set_state(one, GST_STATE_NULL);
    gst_object_unref(one);
  }
}

// Pipelines ended after a moment of any length, after a seek or two, with properties changing meanwhile: each ends, and
// gives its slot back (with one kept, the ninth of them would not start).
TEST_F(Life, EndedAtAnyMoment) {
  std::mt19937 random(5);
  for (int round = 0; round < 40; ++round) {
    const std::string line =
        "filesrc location=/dev/zero blocksize=5120 num-buffers=100000 ! "
        "video/x-bayer,format=rggb,width=160,height=32,framerate=25/1 ! "
        "pplbayer name=element auto-white-balance=true statistics=true statistics-interval=0 lens=true ! " +
        std::string(round % 2 ? "queue max-size-buffers=3 ! " : "") +
        "fakesink sync=" + (round % 3 ? "false" : "true");
    GError* problem = nullptr;
    GstElement* pipeline = gst_parse_launch(line.c_str(), &problem);
    ASSERT_EQ(problem, nullptr) << problem->message;
    GstElement* element = gst_bin_get_by_name(GST_BIN(pipeline), "element");
    gst_element_set_state(pipeline, round % 5 ? GST_STATE_PLAYING : GST_STATE_PAUSED);
    for (int step = 0; step < 4; ++step) {
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 6000));
      switch (random() % 4) {
        case 0:
          gst_element_seek_simple(pipeline, GST_FORMAT_BYTES, GST_SEEK_FLAG_FLUSH, 0);
          break;
        case 1:
          g_object_set(element, "quality", random() % 2 ? 0 : 10, nullptr);
          break;
        case 2:
          g_object_set(element, "h-mirror", random() % 2, "lens-f1", static_cast<int>(random() % 900),
                       nullptr);
          break;
        default:
          gst_element_set_state(pipeline, GST_STATE_PAUSED);
      }
    }
    EXPECT_NE(gst_element_set_state(pipeline, GST_STATE_NULL), GST_STATE_CHANGE_FAILURE);
    GstBus* bus = gst_element_get_bus(pipeline);
    EXPECT_EQ(error(bus), "") << round;
    gst_object_unref(bus);
    gst_object_unref(element);
    // A thread of GStreamer's own may still be letting go of it.
    for (int wait = 0; wait < 12000 && GST_OBJECT_REFCOUNT_VALUE(pipeline) != 1; ++wait)
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_EQ(GST_OBJECT_REFCOUNT_VALUE(pipeline), 1);
    gst_object_unref(pipeline);
  }
}

}  // namespace
