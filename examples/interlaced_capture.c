/* A capture loop for interlaced video that keeps the earlier field.
 *
 * A decoder delivers fields in turn: even rows, odd rows, even rows, ... Each frame is made of an even field, whose
 * rows stand as they are, and the odd field behind it. Where chroma of the odd field moved against the odd field of
 * the frame before, the library replaces it by a mean of the even rows around it. So a loop has to keep one field
 * back; it does so by turning three buffers around, never by copying.
 *
 *   interlaced_capture [file.y4m]
 *
 * The decoder here is a drawing: a red block that walks over grey stripes. The frames go to the file, if one is named.
 * Exits with 1 if a frame but the first shows a comb in its colours. */
#include <ppl.h>
#include <stdio.h>
#include <stdlib.h>

enum { width = 640, height = 480, pixels = width * height, frames = 24, block = 96, speed = 8 };

static int block_at(int field) {
  return 40 + speed * field;
}

/* Field number n in YUYV: its even rows if n is even, else its odd ones. */
static void capture(int n, uint8_t* field) {
  for (int r = n % 2; r < height; r += 2)
    for (int x = 0; x < width; x += 2, field += 4) {
      const int inside = x >= block_at(n) && x < block_at(n) + block && r >= 160 && r < 320;
      field[0] = field[2] = (uint8_t)(inside ? 81 : 60 + x / 40 * 8);
      field[1] = inside ? 90 : 128;
      field[3] = inside ? 240 : 128;
    }
}

static int write_frame(FILE* file, const uint8_t* i420) {
  return !file || (fputs("FRAME\n", file) >= 0 && fwrite(i420, 1, pixels * 3 / 2, file) == pixels * 3 / 2);
}

/* V samples of one frame that disagree with the even field: what a comb in chroma looks like. */
static int combed(const uint8_t* i420, int frame) {
  const int first = block_at(2 * frame) / 2, last = first + block / 2;
  int wrong = 0;
  for (int r = 80; r < 159; ++r)
    for (int x = 0; x < width / 2; ++x) {
      const uint8_t v = i420[pixels * 5 / 4 + r * (width / 2) + x];
      wrong += v != (x >= first && x < last ? 240 : 128);
    }
  return wrong;
}

int main(int argc, char** argv) {
  const size_t field_bytes = 2 * width * (height / 2);
  uint8_t* kept = aligned_alloc(64, field_bytes);
  uint8_t* later = aligned_alloc(64, field_bytes);
  uint8_t* earlier = aligned_alloc(64, field_bytes);
  uint8_t* picture = aligned_alloc(64, pixels * 3 / 2);
  ppl_context* context = ppl_init();
  if (!kept || !later || !earlier || !picture || !context) {
    fprintf(stderr, "no memory, or all eight contexts are taken\n");
    return 1;
  }
  FILE* file = NULL;
  if (argc > 1) {
    file = fopen(argv[1], "wb");
    if (!file) {
      perror(argv[1]);
      return 1;
    }
    fprintf(file, "YUV4MPEG2 W%d H%d F30000:1001 Ip A1:1 C420mpeg2\n", width, height);
  }

  ppl_set_intl_3T_threshold(context, 50);
  int failures = 0;
  for (int frame = 0; frame < frames; ++frame) {
    capture(2 * frame, kept);
    capture(2 * frame + 1, later);
    /* The first frame has no earlier field: its own odd field in that place finds no motion. */
    const uint8_t* compared = frame ? earlier : later;
    if (!IntlYUYVToI420MMX(context, compared, kept, later, picture, width, height, width, height)) {
      fprintf(stderr, "frame %d was refused\n", frame);
      return 1;
    }
    if (frame && combed(picture, frame)) ++failures;
    if (!write_frame(file, picture)) {
      perror(argv[1]);
      return 1;
    }
    /* This frame's odd field is the next frame's earlier one; its buffer comes free for the next odd field. */
    uint8_t* free_again = earlier;
    earlier = later;
    later = free_again;
  }
  printf("%u frames, %d of them with combed colour\n", (unsigned)ppl_n_frame(context), failures);
  failures += ppl_n_frame(context) < frames;
  if (file && fclose(file) != 0) {
    perror(argv[1]);
    failures = 1;
  }
  ppl_free(context);
  free(picture);
  free(earlier);
  free(later);
  free(kept);
  return failures ? 1 : 0;
}
