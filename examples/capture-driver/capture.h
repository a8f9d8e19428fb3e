/* What a program and the capture driver say to one another. */
#ifndef CAPTURE_H
#define CAPTURE_H

#include <stdint.h>

#define CAPTURE_DEVICE_NAME L"\\Device\\PplCapture"
#define CAPTURE_LINK_NAME L"\\DosDevices\\PplCapture"
#define CAPTURE_PATH "\\\\.\\PplCapture"

/* Each opened handle is one stream, with its own format and its own controls. */

/* In: struct capture_format. Must come before the first frame. */
#define CAPTURE_SET_FORMAT CTL_CODE(FILE_DEVICE_UNKNOWN, 0x800, METHOD_BUFFERED, FILE_WRITE_ACCESS)
/* In: one raw frame, stride x height bytes. Out: one picture. */
#define CAPTURE_CONVERT \
  CTL_CODE(FILE_DEVICE_UNKNOWN, 0x801, METHOD_BUFFERED, FILE_READ_ACCESS | FILE_WRITE_ACCESS)
/* Out: struct capture_statistics, of the last frame. */
#define CAPTURE_GET_STATISTICS CTL_CODE(FILE_DEVICE_UNKNOWN, 0x802, METHOD_BUFFERED, FILE_READ_ACCESS)
/* Out: the picture that the driver made of its test frame when it was loaded. */
#define CAPTURE_GET_TEST_PICTURE CTL_CODE(FILE_DEVICE_UNKNOWN, 0x803, METHOD_BUFFERED, FILE_READ_ACCESS)

enum capture_picture {
  CAPTURE_I420,
  CAPTURE_YUYV,
  CAPTURE_UYVY,
  CAPTURE_RGB24,
  CAPTURE_RGB32,
  CAPTURE_PICTURES
};

struct capture_format {
  uint32_t width, height, stride; /* of the raw frame */
  uint32_t picture;               /* enum capture_picture */
  int32_t decimation;             /* 0: same size, 1: half, -1: double */
  uint32_t quality;               /* 0 to 15; RGB32 needs another one than 15 */
  uint32_t h_mirror, v_mirror;
};

struct capture_statistics {
  uint32_t frames;
  uint32_t mean_r, mean_g, mean_b; /* of the whole frame, 1/256 of a sample step */
};

/* The test frame: a mosaic with slopes in both directions. */
#define CAPTURE_TEST_WIDTH 128
#define CAPTURE_TEST_HEIGHT 96
#define CAPTURE_TEST_PICTURE_BYTES (CAPTURE_TEST_WIDTH * CAPTURE_TEST_HEIGHT * 3 / 2)

static inline uint8_t capture_test_sample(uint32_t x, uint32_t y) {
  return (uint8_t)(20 + x + y / 2 + 30 * ((x ^ y) & 1));
}

/* Bytes of a picture of width x height. */
static inline uint32_t capture_picture_bytes(uint32_t picture, uint32_t width, uint32_t height) {
  const uint32_t pixels = width * height;
  switch (picture) {
    case CAPTURE_I420:
      return pixels + 2 * (pixels / 4);
    case CAPTURE_RGB24:
      return 3 * pixels;
    case CAPTURE_RGB32:
      return 4 * pixels;
    default:
      return 2 * pixels;
  }
}

#endif
