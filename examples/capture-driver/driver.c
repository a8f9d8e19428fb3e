/* A capture driver that takes its pictures from ppl.sys.
 *
 * It has no camera: a program hands it raw frames through DeviceIoControl, where a real driver has the transfers of
 * its USB pipe. Everything around that is what a real one needs: how a stream gets an instance of the library and
 * gives it back, what memory frames live in, who may call what when.
 *
 * What the library asks of its callers, and where this driver sees to it:
 *   - ppl_init is called by one thread at a time ............ instances_lock
 *   - an instance serves one thread at a time ............... stream->lock
 *   - frame buffers are resident and aligned to 16 bytes .... allocate_frame
 *   - the raw frame is overwritten during the call .......... stream->raw is the stream's own copy
 *   - frames take milliseconds .............................. they are made at PASSIVE_LEVEL, in the caller's thread
 * A FAST_MUTEX raises to APC_LEVEL, which is harmless: the library neither waits nor touches paged memory.
 */
#include <ntddk.h>

#include "capture.h"
#include "ppl.h"

#define CAPTURE_TAG 'palC'
#define LARGEST_SIDE 2048 /* the library takes frames up to 2036 x 2048 */

struct stream {
  FAST_MUTEX lock;
  ppl_context* instance;
  struct capture_format format;
  uint8_t* raw;
  uint32_t raw_bytes;
  uint8_t* picture;
  uint32_t picture_bytes;
};

static PDEVICE_OBJECT device;
static FAST_MUTEX instances_lock;
static uint8_t test_picture[CAPTURE_TEST_PICTURE_BYTES];

DRIVER_INITIALIZE DriverEntry;
static DRIVER_UNLOAD capture_unload;
static DRIVER_DISPATCH capture_create, capture_close, capture_control;

/* ---- Instances: the library has eight, for all drivers that use it. */

static ppl_context* open_instance(void) {
  ppl_context* instance;
  ExAcquireFastMutex(&instances_lock);
  instance = ppl_init();
  ExReleaseFastMutex(&instances_lock);
  return instance;
}

static void close_instance(ppl_context* instance) {
  ExAcquireFastMutex(&instances_lock);
  ppl_free(instance);
  ExReleaseFastMutex(&instances_lock);
}

/* ---- Frames: non-paged pool is resident, and aligned to 16 bytes on x64. */

static uint8_t* allocate_frame(uint32_t bytes) {
  return ExAllocatePoolWithTag(NonPagedPoolNx, bytes, CAPTURE_TAG);
}

static void free_frame(uint8_t* frame) {
  if (frame != NULL) {
    ExFreePoolWithTag(frame, CAPTURE_TAG);
  }
}

static BOOLEAN make_picture(ppl_context* instance, const struct capture_format* f, uint8_t* raw,
                            uint8_t* picture) {
  switch (f->picture) {
    case CAPTURE_I420:
      return ppl_process_blrtoi420(instance, raw, picture, f->width, f->height, f->stride) != 0;
    case CAPTURE_YUYV:
      return ppl_process_blrtoyuyv(instance, raw, picture, f->width, f->height, f->stride) != 0;
    case CAPTURE_UYVY:
      return ppl_process_blrtouyvy(instance, raw, picture, f->width, f->height, f->stride) != 0;
    case CAPTURE_RGB24:
      return ppl_process_blrtorgb24(instance, raw, picture, f->width, f->height, f->stride) != 0;
    default:
      return ppl_process_blrtorgb32(instance, raw, picture, f->width, f->height, f->stride) != 0;
  }
}

/* One frame when the driver is loaded: whether the library works is known before the first stream is opened. */
static NTSTATUS make_test_picture(void) {
  const struct capture_format format = {
      CAPTURE_TEST_WIDTH, CAPTURE_TEST_HEIGHT, CAPTURE_TEST_WIDTH, CAPTURE_I420, 0, 15, 0, 0};
  NTSTATUS status = STATUS_INSUFFICIENT_RESOURCES;
  uint8_t* raw = allocate_frame(CAPTURE_TEST_WIDTH * CAPTURE_TEST_HEIGHT);
  uint8_t* picture = allocate_frame(CAPTURE_TEST_PICTURE_BYTES);
  ppl_context* instance = open_instance();
  uint32_t x, y;
  if (raw != NULL && picture != NULL && instance != NULL) {
    for (y = 0; y < CAPTURE_TEST_HEIGHT; ++y) {
      for (x = 0; x < CAPTURE_TEST_WIDTH; ++x) {
        raw[y * CAPTURE_TEST_WIDTH + x] = capture_test_sample(x, y);
      }
    }
    RtlZeroMemory(picture, CAPTURE_TEST_PICTURE_BYTES);
    status = make_picture(instance, &format, raw, picture) ? STATUS_SUCCESS : STATUS_UNSUCCESSFUL;
    RtlCopyMemory(test_picture, picture, CAPTURE_TEST_PICTURE_BYTES);
  }
  if (instance != NULL) {
    close_instance(instance);
  }
  free_frame(picture);
  free_frame(raw);
  return status;
}

/* ---- A stream: from the opening of a handle to its close. */

static struct stream* stream_of(PIO_STACK_LOCATION location) {
  return location->FileObject->FsContext;
}

static NTSTATUS set_format(struct stream* s, const struct capture_format* f) {
  uint32_t width, height, picture_bytes;
  uint8_t *raw, *picture;
  if (f->picture >= CAPTURE_PICTURES || f->width == 0 || f->width > LARGEST_SIDE || f->height == 0 ||
      f->height > LARGEST_SIDE || f->stride < f->width || f->stride > LARGEST_SIDE || f->decimation < -1 ||
      f->decimation > 1) {
    return STATUS_INVALID_PARAMETER;
  }
  width = f->decimation < 0 ? f->width << 1 : f->width >> f->decimation;
  height = f->decimation < 0 ? f->height << 1 : f->height >> f->decimation;
  picture_bytes = capture_picture_bytes(f->picture, width, height);

  /* The library keeps some of what it refuses, so a stream whose format is refused has none until the next one. */
  free_frame(s->raw);
  free_frame(s->picture);
  s->raw = NULL;
  s->picture = NULL;

  /* It refuses silently: every answer counts. It has the last word on sizes. */
  if (!ppl_new_frame_size(s->instance, f->width, f->height, f->stride) ||
      !ppl_set_decimation(s->instance, f->decimation, 0, 0) || !ppl_set_quality(s->instance, f->quality)) {
    return STATUS_INVALID_PARAMETER;
  }
  ppl_set_h_mirror(s->instance, f->h_mirror != 0);
  ppl_set_v_mirror(s->instance, f->v_mirror != 0);

  raw = allocate_frame(f->stride * f->height);
  picture = allocate_frame(picture_bytes);
  if (raw == NULL || picture == NULL) {
    free_frame(raw);
    free_frame(picture);
    return STATUS_INSUFFICIENT_RESOURCES;
  }
  RtlZeroMemory(picture, picture_bytes); /* some pictures leave bytes alone: never show old pool memory */
  s->raw = raw;
  s->raw_bytes = f->stride * f->height;
  s->picture = picture;
  s->picture_bytes = picture_bytes;
  s->format = *f;
  return STATUS_SUCCESS;
}

static NTSTATUS convert(struct stream* s, void* buffer, ULONG in, ULONG out, ULONG_PTR* given) {
  if (s->raw == NULL) {
    return STATUS_INVALID_DEVICE_STATE;
  }
  if (in != s->raw_bytes) {
    return STATUS_INVALID_PARAMETER;
  }
  if (out < s->picture_bytes) {
    return STATUS_BUFFER_TOO_SMALL;
  }
  RtlCopyMemory(s->raw, buffer, in);
  /* Of the raw qualities, 4 and 9, false does not mean that there is no picture. */
  if (!make_picture(s->instance, &s->format, s->raw, s->picture) && s->format.quality != 4 &&
      s->format.quality != 9) {
    return STATUS_UNSUCCESSFUL;
  }
  RtlCopyMemory(buffer, s->picture, s->picture_bytes);
  *given = s->picture_bytes;
  return STATUS_SUCCESS;
}

static NTSTATUS complete(PIRP irp, NTSTATUS status, ULONG_PTR given) {
  irp->IoStatus.Status = status;
  irp->IoStatus.Information = given;
  IoCompleteRequest(irp, IO_NO_INCREMENT);
  return status;
}

static NTSTATUS NTAPI capture_create(PDEVICE_OBJECT object, PIRP irp) {
  struct stream* s = ExAllocatePoolWithTag(NonPagedPoolNx, sizeof *s, CAPTURE_TAG);
  (void)object;
  if (s == NULL) {
    return complete(irp, STATUS_INSUFFICIENT_RESOURCES, 0);
  }
  RtlZeroMemory(s, sizeof *s);
  ExInitializeFastMutex(&s->lock);
  s->instance = open_instance();
  if (s->instance == NULL) { /* all eight are taken */
    ExFreePoolWithTag(s, CAPTURE_TAG);
    return complete(irp, STATUS_INSUFFICIENT_RESOURCES, 0);
  }
  IoGetCurrentIrpStackLocation(irp)->FileObject->FsContext = s;
  return complete(irp, STATUS_SUCCESS, 0);
}

static NTSTATUS NTAPI capture_close(PDEVICE_OBJECT object, PIRP irp) {
  struct stream* s = stream_of(IoGetCurrentIrpStackLocation(irp));
  (void)object;
  close_instance(s->instance);
  free_frame(s->raw);
  free_frame(s->picture);
  ExFreePoolWithTag(s, CAPTURE_TAG);
  return complete(irp, STATUS_SUCCESS, 0);
}

static NTSTATUS NTAPI capture_control(PDEVICE_OBJECT object, PIRP irp) {
  PIO_STACK_LOCATION location = IoGetCurrentIrpStackLocation(irp);
  struct stream* s = stream_of(location);
  void* buffer = irp->AssociatedIrp.SystemBuffer;
  const ULONG in = location->Parameters.DeviceIoControl.InputBufferLength;
  const ULONG out = location->Parameters.DeviceIoControl.OutputBufferLength;
  NTSTATUS status = STATUS_INVALID_DEVICE_REQUEST;
  ULONG_PTR given = 0;
  (void)object;

  ExAcquireFastMutex(&s->lock);
  switch (location->Parameters.DeviceIoControl.IoControlCode) {
    case CAPTURE_SET_FORMAT:
      status = in == sizeof(struct capture_format) ? set_format(s, buffer) : STATUS_INVALID_PARAMETER;
      break;
    case CAPTURE_CONVERT:
      status = convert(s, buffer, in, out, &given);
      break;
    case CAPTURE_GET_STATISTICS:
      status = STATUS_BUFFER_TOO_SMALL;
      if (out >= sizeof(struct capture_statistics)) {
        struct capture_statistics* to = buffer;
        const uint32_t* means = ppl_rgb_means_whole_frame(s->instance);
        to->frames = ppl_n_frame(s->instance);
        to->mean_r = means[0];
        to->mean_g = means[1];
        to->mean_b = means[2];
        given = sizeof *to;
        status = STATUS_SUCCESS;
      }
      break;
    case CAPTURE_GET_TEST_PICTURE:
      status = STATUS_BUFFER_TOO_SMALL;
      if (out >= sizeof test_picture) {
        RtlCopyMemory(buffer, test_picture, sizeof test_picture);
        given = sizeof test_picture;
        status = STATUS_SUCCESS;
      }
      break;
  }
  ExReleaseFastMutex(&s->lock);
  return complete(irp, status, given);
}

/* ---- The driver */

static void NTAPI capture_unload(PDRIVER_OBJECT driver) {
  UNICODE_STRING link;
  (void)driver;
  RtlInitUnicodeString(&link, CAPTURE_LINK_NAME);
  IoDeleteSymbolicLink(&link);
  IoDeleteDevice(device);
}

NTSTATUS NTAPI DriverEntry(PDRIVER_OBJECT driver, PUNICODE_STRING registry_path) {
  UNICODE_STRING name, link;
  NTSTATUS status;
  (void)registry_path;

  ExInitializeFastMutex(&instances_lock);
  status = make_test_picture();
  DbgPrint("capture: test frame: %08lx\n", status);
  if (!NT_SUCCESS(status)) {
    return status;
  }

  RtlInitUnicodeString(&name, CAPTURE_DEVICE_NAME);
  RtlInitUnicodeString(&link, CAPTURE_LINK_NAME);
  status = IoCreateDevice(driver, 0, &name, FILE_DEVICE_UNKNOWN, FILE_DEVICE_SECURE_OPEN, FALSE, &device);
  if (!NT_SUCCESS(status)) {
    return status;
  }
  status = IoCreateSymbolicLink(&link, &name);
  if (!NT_SUCCESS(status)) {
    IoDeleteDevice(device);
    return status;
  }
  driver->MajorFunction[IRP_MJ_CREATE] = capture_create;
  driver->MajorFunction[IRP_MJ_CLOSE] = capture_close;
  driver->MajorFunction[IRP_MJ_DEVICE_CONTROL] = capture_control;
  driver->DriverUnload = capture_unload;
  return STATUS_SUCCESS;
}
