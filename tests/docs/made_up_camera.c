/* A camera that is not there: loaded before the C library, it answers for /dev/made-up-camera with the raw frame of a
 * file (MADE_UP_FRAME, 640 x 480). Its rows are 704 bytes apart, and its first frame is a damaged one. With
 * MADE_UP_FORMAT set it offers that pixel format alone, four letters. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <linux/videodev2.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

enum { width = 640, height = 480, stride = 704, bytes = stride * height, most = 8 };
static int camera = -1, streaming;
static uint8_t* memory;
static uint32_t buffers, first, queued, queue[most], delivered;

int open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const int mode = va_arg(rest, int);
  va_end(rest);
  if (strcmp(path, "/dev/made-up-camera") != 0)
    return ((int (*)(const char*, int, ...))dlsym(RTLD_NEXT, "open"))(path, flags, mode);
  return camera = memfd_create("camera", 0); /* such a file is always ready for poll */
}

void* mmap(void* at, size_t length, int protection, int flags, int file, off_t offset) {
  if (file < 0 || file != camera)
    return ((void* (*)(void*, size_t, int, int, int, off_t))dlsym(RTLD_NEXT, "mmap"))(at, length, protection,
                                                                                      flags, file, offset);
  return memory + offset;
}

static uint32_t fourcc(void) {
  const char* name = getenv("MADE_UP_FORMAT");
  return name ? v4l2_fourcc(name[0], name[1], name[2], name[3]) : V4L2_PIX_FMT_SBGGR8;
}

static int refuse(int reason) {
  errno = reason;
  return -1;
}

static int request_buffers(struct v4l2_requestbuffers* request) {
  FILE* file = fopen(getenv("MADE_UP_FRAME"), "rb");
  buffers = request->count < most ? request->count : most;
  memory = calloc(buffers, bytes);
  if (!file || !memory) abort();
  for (int row = 0; row < height; ++row)
    if (fread(memory + row * stride, 1, width, file) != width) abort();
  fclose(file);
  for (uint32_t i = 1; i < buffers; ++i) memcpy(memory + i * bytes, memory, bytes);
  request->count = buffers;
  return 0;
}

int ioctl(int file, unsigned long request, ...) {
  va_list rest;
  va_start(rest, request);
  void* argument = va_arg(rest, void*);
  va_end(rest);
  if (file < 0 || file != camera)
    return ((int (*)(int, unsigned long, ...))dlsym(RTLD_NEXT, "ioctl"))(file, request, argument);
  struct v4l2_buffer* buffer = argument;
  switch (request) {
    case VIDIOC_QUERYCAP:
      ((struct v4l2_capability*)argument)->capabilities = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
      return 0;
    case VIDIOC_ENUM_FMT:
      if (((struct v4l2_fmtdesc*)argument)->index > 0) return refuse(EINVAL);
      ((struct v4l2_fmtdesc*)argument)->pixelformat = fourcc();
      return 0;
    case VIDIOC_G_FMT:
    case VIDIOC_S_FMT: {
      struct v4l2_pix_format* pix = &((struct v4l2_format*)argument)->fmt.pix;
      pix->width = width, pix->height = height, pix->bytesperline = stride, pix->sizeimage = bytes;
      pix->pixelformat = fourcc();
      return 0;
    }
    case VIDIOC_REQBUFS:
      return request_buffers(argument);
    case VIDIOC_QUERYBUF:
      buffer->length = bytes, buffer->m.offset = buffer->index * bytes;
      return buffer->index < buffers ? 0 : refuse(EINVAL);
    case VIDIOC_QBUF:
      if (buffer->index >= buffers || queued == most) return refuse(EINVAL);
      queue[(first + queued++) % most] = buffer->index;
      return 0;
    case VIDIOC_DQBUF:
      if (!streaming || queued == 0) return refuse(EAGAIN);
      buffer->index = queue[first], first = (first + 1) % most, --queued;
      buffer->flags = delivered++ == 0 ? V4L2_BUF_FLAG_ERROR : 0;
      buffer->bytesused = bytes;
      return 0;
    case VIDIOC_STREAMON:
    case VIDIOC_STREAMOFF:
      streaming = request == VIDIOC_STREAMON;
      return 0;
    default:
      return refuse(ENOTTY);
  }
}
