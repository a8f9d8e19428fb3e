// GStreamer memory that is there for so many buffers, each of which ends with its last byte.
#pragma once

#include <gst/gst.h>
#include <stdlib.h>

struct Scarce {
  GstAllocator parent;
  guint left;
};
struct ScarceClass {
  GstAllocatorClass parent;
};
G_DEFINE_TYPE(Scarce, scarce, GST_TYPE_ALLOCATOR)

static GstMemory* scarce_alloc(GstAllocator* self, gsize size, GstAllocationParams* params) {
  auto* scarce = reinterpret_cast<Scarce*>(self);
  if (scarce->left == 0) return nullptr;
  --scarce->left;
  void* block = nullptr;
  const size_t alignment = params->align + 1 < sizeof(void*) ? sizeof(void*) : params->align + 1;
  if (posix_memalign(&block, alignment, size) != 0) abort();
  return gst_memory_new_wrapped(static_cast<GstMemoryFlags>(0), block, size, 0, size, block, free);
}
static void scarce_init(Scarce* self) {
  self->left = 0;
}
static void scarce_class_init(ScarceClass* type) {
  GST_ALLOCATOR_CLASS(type)->alloc = scarce_alloc;
}

// Owned by the caller.
static inline GstAllocator* scarce_memory(guint buffers) {
  auto* memory = static_cast<GstAllocator*>(gst_object_ref_sink(g_object_new(scarce_get_type(), nullptr)));
  reinterpret_cast<Scarce*>(memory)->left = buffers;
  return memory;
}
