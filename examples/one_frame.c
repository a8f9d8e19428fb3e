/* One raw frame in, one picture out.
 *
 * Draws the mosaic of a scene whose left half is orange and whose right half is blue, reconstructs it in the default
 * quality, and says what came out. Exits with 1 if the picture isn't that scene. */
#include <ppl.h>
#include <stdio.h>
#include <stdlib.h>

enum { width = 640, height = 480, pixels = width * height };

/* Even rows hold B, Gb, B, Gb, ...; odd rows hold Gr, R, Gr, R, ... */
static uint8_t sample(int row, int column) {
  const int orange = column < width / 2;
  if (row % 2 == 0 && column % 2 == 0) return orange ? 40 : 180; /* blue */
  if (row % 2 == 1 && column % 2 == 1) return orange ? 200 : 50; /* red */
  return orange ? 110 : 90;                                      /* green */
}

static int mean(const uint8_t* plane, int pitch, int left, int right, int rows) {
  long sum = 0;
  for (int r = 0; r < rows; ++r)
    for (int c = left; c < right; ++c) sum += plane[r * pitch + c];
  return (int)(sum / ((long)rows * (right - left)));
}

int main(void) {
  /* Frames are the caller's, on multiples of 16. The source is overwritten on the way. */
  uint8_t* mosaic = aligned_alloc(64, pixels);
  uint8_t* picture = aligned_alloc(64, pixels * 3 / 2);
  ppl_context* context = ppl_init();
  if (!mosaic || !picture || !context) {
    fprintf(stderr, "no memory, or all eight contexts are taken\n");
    return 1;
  }
  for (int r = 0; r < height; ++r)
    for (int c = 0; c < width; ++c) mosaic[r * width + c] = sample(r, c);

  if (!BaylorToI420MMX(context, mosaic, picture, width, height)) {
    fprintf(stderr, "the frame was refused\n");
    return 1;
  }

  const uint8_t *u = picture + pixels, *v = u + pixels / 4;
  const int half = width / 2;
  const int left_u = mean(u, half, 0, half / 2, height / 2),
            right_u = mean(u, half, half / 2, half, height / 2);
  const int left_v = mean(v, half, 0, half / 2, height / 2),
            right_v = mean(v, half, half / 2, half, height / 2);
  printf("left half:  Y %3d U %3d V %3d\n", mean(picture, width, 0, half, height), left_u, left_v);
  printf("right half: Y %3d U %3d V %3d\n", mean(picture, width, half, width, height), right_u, right_v);

  /* Means come in steps of 1/256 of a sample. */
  const uint32_t* means = ppl_rgb_means_whole_frame(context);
  printf("sensor means: R %.1f G %.1f B %.1f\n", means[0] / 256.0, means[1] / 256.0, means[2] / 256.0);

  ppl_free(context);
  free(picture);
  free(mosaic);
  if (left_v <= 140 || left_u >= 116 || right_v >= 116 || right_u <= 140) {
    fprintf(stderr, "the left half should be orange (V above U) and the right half blue (U above V)\n");
    return 1;
  }
  return 0;
}
