/* The helper as C99, pedantic. */
#include "helpers/ppl_check.h"

int whole_in_c(uint32_t format, uint32_t quality, uint32_t width, uint32_t height);
int whole_in_c(uint32_t format, uint32_t quality, uint32_t width, uint32_t height) {
  struct ppl_plan plan = ppl_plan_frame(PPL_CALL_SAME, format, quality, width, height), better;
  if (ppl_check(&plan).whole) return 1;
  return ppl_nearest(&plan, &better) ? 0 : -1;
}
