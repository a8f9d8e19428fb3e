/* The table of qualities as a C program sees it. */
#include "helpers/ppl_qualities.h"

int qualities_in_c99(void);

int qualities_in_c99(void) {
  for (uint32_t q = 0; q < PPL_QUALITIES; ++q)
    if (ppl_quality_table[q].quality != q || ppl_quality_name(q)[0] == '\0') return 1;
  if (!ppl_quality_runs(15, PPL_FORMAT_I420, PPL_SIZE_SAME)) return 2;
  if (ppl_quality_runs(15, PPL_FORMAT_RGB32, PPL_SIZE_SAME)) return 3;
  if (!ppl_quality_is_whole(0, 1, PPL_FORMAT_RGB24, PPL_SIZE_DOUBLE, 1, 1)) return 4;
  if (ppl_quality_is_whole(0, 1, PPL_FORMAT_RGB24, PPL_SIZE_DOUBLE, 0, 1)) return 5;
  return 0;
}
