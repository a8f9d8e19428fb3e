/* The header in strict C99. */
#include "helpers/ppl_prepare.h"

int prepare_in_c99(void);
int prepare_in_c99(void) {
  const struct ppl_sensor_frame f = {8, 4, 0, PPL_RGGB, PPL_WORDS_BIG, 10};
  return (int)ppl_sensor_frame_bytes(&f);
}
