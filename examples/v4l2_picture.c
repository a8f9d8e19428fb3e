/* From a Linux camera to a picture: takes raw Bayer frames of a V4L2 device, finds the white balance, and writes the
 * last frame as a PPM file.
 *
 *     v4l2_picture DEVICE PICTURE.ppm [BLACK_LEVEL]
 *
 * Needs no library but ppl: the device is spoken to by ioctl alone. Exits with 0, with 1 and one line if the device
 * can't do it, with 2 if the command line asks for what can't be. */
#define _POSIX_C_SOURCE 200809L
#include <errno.h>
#include <fcntl.h>
#include <linux/videodev2.h>
#include <poll.h>
#include <ppl.h>
#include <ppl_auto.h>
#include <ppl_prepare.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

enum { buffers = 4, frames = 12, patience_ms = 3000 };

/* What the device may deliver, by our wish: 8 bits first. */
static const struct {
  uint32_t fourcc;
  int pattern, layout;
  uint32_t bits;
} formats[] = {
    {V4L2_PIX_FMT_SBGGR8, PPL_BGGR, PPL_BYTES, 8},
    {V4L2_PIX_FMT_SGBRG8, PPL_GBRG, PPL_BYTES, 8},
    {V4L2_PIX_FMT_SGRBG8, PPL_GRBG, PPL_BYTES, 8},
    {V4L2_PIX_FMT_SRGGB8, PPL_RGGB, PPL_BYTES, 8},
    {V4L2_PIX_FMT_SBGGR10, PPL_BGGR, PPL_WORDS_LITTLE, 10},
    {V4L2_PIX_FMT_SGBRG10, PPL_GBRG, PPL_WORDS_LITTLE, 10},
    {V4L2_PIX_FMT_SGRBG10, PPL_GRBG, PPL_WORDS_LITTLE, 10},
    {V4L2_PIX_FMT_SRGGB10, PPL_RGGB, PPL_WORDS_LITTLE, 10},
    {V4L2_PIX_FMT_SBGGR12, PPL_BGGR, PPL_WORDS_LITTLE, 12},
    {V4L2_PIX_FMT_SGBRG12, PPL_GBRG, PPL_WORDS_LITTLE, 12},
    {V4L2_PIX_FMT_SGRBG12, PPL_GRBG, PPL_WORDS_LITTLE, 12},
    {V4L2_PIX_FMT_SRGGB12, PPL_RGGB, PPL_WORDS_LITTLE, 12},
    {V4L2_PIX_FMT_SBGGR10P, PPL_BGGR, PPL_PACKED_10, 10},
    {V4L2_PIX_FMT_SGBRG10P, PPL_GBRG, PPL_PACKED_10, 10},
    {V4L2_PIX_FMT_SGRBG10P, PPL_GRBG, PPL_PACKED_10, 10},
    {V4L2_PIX_FMT_SRGGB10P, PPL_RGGB, PPL_PACKED_10, 10},
};
enum { format_count = sizeof formats / sizeof formats[0] };

static const char* device;

static _Noreturn void fail(const char* what) {
  fprintf(stderr, "v4l2_picture: %s: %s\n", device, what);
  exit(1);
}

static int ask(int camera, unsigned long request, void* argument) {
  int result;
  do {
    result = ioctl(camera, request, argument);
  } while (result < 0 && errno == EINTR);
  return result;
}

/* Which of our formats the device has: the first of the list. */
static int choose_format(int camera) {
  int best = format_count;
  struct v4l2_fmtdesc offered = {.type = V4L2_BUF_TYPE_VIDEO_CAPTURE};
  for (; ask(camera, VIDIOC_ENUM_FMT, &offered) == 0; ++offered.index)
    for (int i = 0; i < best; ++i)
      if (formats[i].fourcc == offered.pixelformat) best = i;
  if (best == format_count)
    fail("no raw Bayer format of 8, 10 or 12 bits; v4l2-ctl --list-formats tells what it has");
  return best;
}

static void write_ppm(const char* path, const uint8_t* bgr, uint32_t width, uint32_t height) {
  FILE* file = fopen(path, "wb");
  int fine = file != NULL && fprintf(file, "P6\n%u %u\n255\n", width, height) > 0;
  for (uint32_t y = height; fine && y-- > 0;) /* RGB24 is stored bottom row first, blue first */
    for (uint32_t x = 0; fine && x < width; ++x) {
      const uint8_t *pixel = bgr + 3 * ((size_t)y * width + x), rgb[3] = {pixel[2], pixel[1], pixel[0]};
      fine = fwrite(rgb, 1, 3, file) == 3;
    }
  if (file != NULL && fclose(file) != 0) fine = 0;
  if (!fine) {
    fprintf(stderr, "v4l2_picture: %s can't be written: %s\n", path, strerror(errno));
    exit(1);
  }
}

int main(int count, char** words) {
  char* end = NULL;
  const unsigned long black = count == 4 ? strtoul(words[3], &end, 10) : 0;
  if (count < 3 || count > 4 || (end != NULL && (*end != 0 || end == words[3])) || black > 255) {
    fprintf(stderr, "usage: v4l2_picture DEVICE PICTURE.ppm [BLACK_LEVEL, 0 to 255 in steps of 8 bits]\n");
    return 2;
  }
  device = words[1];

  const int camera = open(device, O_RDWR | O_NONBLOCK);
  if (camera < 0) fail(strerror(errno));
  struct v4l2_capability capability;
  memset(&capability, 0, sizeof capability);
  if (ask(camera, VIDIOC_QUERYCAP, &capability) < 0) fail("is not a video device");
  if (!(capability.capabilities & V4L2_CAP_VIDEO_CAPTURE) || !(capability.capabilities & V4L2_CAP_STREAMING))
    fail("does not stream single-plane video");

  /* The size stays the device's own; only the pixel format is asked for. The driver may answer with another one. */
  const int chosen = choose_format(camera);
  struct v4l2_format format = {.type = V4L2_BUF_TYPE_VIDEO_CAPTURE};
  if (ask(camera, VIDIOC_G_FMT, &format) < 0) fail("does not tell its format");
  format.fmt.pix.pixelformat = formats[chosen].fourcc;
  format.fmt.pix.field = V4L2_FIELD_NONE;
  if (ask(camera, VIDIOC_S_FMT, &format) < 0) fail(strerror(errno));
  if (format.fmt.pix.pixelformat != formats[chosen].fourcc) fail("does not keep the format that it offered");

  const struct ppl_sensor_frame sensor = {format.fmt.pix.width,        format.fmt.pix.height,
                                          format.fmt.pix.bytesperline, formats[chosen].pattern,
                                          formats[chosen].layout,      formats[chosen].bits};
  const int reason = ppl_sensor_frame_reason(&sensor);
  if (reason != PPL_PREPARE_FINE) fail(ppl_prepare_sentence(reason));

  /* Memory that the driver fills and this program sees. */
  struct v4l2_requestbuffers request = {.count = buffers, .type = format.type, .memory = V4L2_MEMORY_MMAP};
  if (ask(camera, VIDIOC_REQBUFS, &request) < 0 || request.count == 0) fail("gives no buffers to map");
  const uint8_t* mapped[buffers];
  if (request.count > buffers) request.count = buffers;
  for (uint32_t i = 0; i < request.count; ++i) {
    struct v4l2_buffer buffer = {.type = format.type, .memory = V4L2_MEMORY_MMAP, .index = i};
    if (ask(camera, VIDIOC_QUERYBUF, &buffer) < 0) fail(strerror(errno));
    if (buffer.length < ppl_sensor_frame_bytes(&sensor)) fail("has buffers that are smaller than its frames");
    mapped[i] = mmap(NULL, buffer.length, PROT_READ, MAP_SHARED, camera, (off_t)buffer.m.offset);
    if (mapped[i] == MAP_FAILED || ask(camera, VIDIOC_QBUF, &buffer) < 0) fail(strerror(errno));
  }

  /* The library's side: whole blocks of 32 columns, two rows, frames at multiples of 64 bytes. Larger frames than this
   * would go through it in parts: ppl_plan_parts. */
  const uint32_t width = (sensor.width < 2016 ? sensor.width : 2016) / 32 * 32;
  const uint32_t height = (sensor.height < 2048 ? sensor.height : 2048) / 2 * 2;
  if (width == 0) fail("has frames of less than 32 columns");
  uint8_t *mosaic = aligned_alloc(64, (size_t)width * height),
          *picture = aligned_alloc(64, (size_t)width * height * 3);
  ppl_auto_sample* sample = malloc(sizeof *sample);
  ppl_context* context = ppl_init();
  if (!mosaic || !picture || !sample || !context) fail("no memory, or all eight contexts are taken");
  const uint32_t level = (uint32_t)black;
  ppl_set_optical_black_b_gb_gr_r(context, level, level, level, level);
  ppl_enable_GbGr_correction(context);
  ppl_auto_curve curve;
  ppl_auto_daylight_curve(&curve, 397, 256,
                          346); /* measure these two of your sensor: a grey card in daylight */

  int on = V4L2_BUF_TYPE_VIDEO_CAPTURE;
  if (ask(camera, VIDIOC_STREAMON, &on) < 0) fail(strerror(errno));
  int whole = 0;
  for (int frame = 0; frame < frames || !whole;
       ++frame) { /* the first frames of a stream are often not right yet */
    if (frame == 10 * frames) fail("delivers no whole frame");
    struct pollfd ready = {.fd = camera, .events = POLLIN};
    if (poll(&ready, 1, patience_ms) == 0) fail("delivers no frame");
    struct v4l2_buffer buffer = {.type = format.type, .memory = V4L2_MEMORY_MMAP};
    if (ask(camera, VIDIOC_DQBUF, &buffer) < 0) {
      if (errno == EAGAIN) continue;
      fail(strerror(errno));
    }
    if (buffer.index >= request.count) fail("hands out a buffer that it does not have");
    whole = !(buffer.flags & V4L2_BUF_FLAG_ERROR) && buffer.bytesused >= ppl_sensor_frame_bytes(&sensor);
    /* Copied, since the library works in the frame's memory, and at once given back to the driver. */
    if (whole)
      ppl_prepare_region(&sensor, mapped[buffer.index], PPL_TO_8_ROUND, NULL, 0, 0, width, height, mosaic,
                         width);
    if (ask(camera, VIDIOC_QBUF, &buffer) < 0) fail(strerror(errno));
    if (!whole) continue;

    ppl_auto_balance balance;
    ppl_auto_take_frame(sample, mosaic, width, height, width, level, level, level, level);
    if (ppl_auto_white(&curve, sample, &balance))
      ppl_set_rgb_gain(context, balance.gain[0], balance.gain[1], balance.gain[2]);
    if (!BaylorToRGB24MMX(context, mosaic, picture, width, height)) fail("the frame was refused");
  }
  ask(camera, VIDIOC_STREAMOFF, &on);

  write_ppm(words[2], picture, width, height);
  uint32_t r, g, b;
  r = ppl_rgb_means_whole_frame(context)[0], g = ppl_rgb_means_whole_frame(context)[1];
  b = ppl_rgb_means_whole_frame(context)[2];
  printf("%s: %u x %u, means R %u G %u B %u\n", words[2], width, height, r / 256, g / 256, b / 256);
  ppl_free(context);
  close(camera);
  free(sample);
  free(picture);
  free(mosaic);
  return 0;
}
