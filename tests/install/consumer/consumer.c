/* A program outside the project that uses the library as it was installed. */
#include <ppl.h>
#include <ppl_qualities.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

int main(void) {
  enum { n = 320 * 240 };
  uint8_t *frame = aligned_alloc(64, 2 * n), *picture = aligned_alloc(64, 3 * n);
  ppl_context* context = ppl_init();
  if (!frame || !picture || !context) return 1;
  memset(frame, 128, 2 * n);
  memset(picture, 1, 3 * n);
  if (!YUYVToRGB24MMX(context, frame, picture, 320, 240, 320, 240)) return 2;
  /* (128 - 16) * 74 / 64 */
  for (int k = 0; k < 3 * n; ++k)
    if (picture[k] != 129) return 3;
  if (ppl_n_frame(context) != 1 || !ppl_free(context)) return 4;
  if (!ppl_quality_runs(15, PPL_FORMAT_I420, PPL_SIZE_SAME)) return 5;
  puts("consumer: ok");
  free(frame);
  free(picture);
  return 0;
}
