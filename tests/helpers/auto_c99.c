/* Exposure, white balance and lens shading as a C program sees them. */
#include "helpers/ppl_auto.h"

int auto_in_c99(void);

int auto_in_c99(void) {
  static ppl_auto_sample sample;
  static uint8_t raw[64 * 64];
  uint32_t scratch[768];
  ppl_auto_curve curve;
  ppl_auto_balance balance;
  ppl_auto_loop loop;
  ppl_auto_lens lens;
  uint32_t i;
  for (i = 0; i < 64 * 64; ++i) raw[i] = 100;
  ppl_auto_daylight_curve(&curve, 397, 256, 346);
  ppl_auto_take_frame(&sample, raw, 64, 64, 64, 0, 0, 0, 0);
  if (!ppl_auto_white(&curve, &sample, &balance)) return 1;
  if (!ppl_auto_grey(raw, 64, 0, 0, 64, 64, 0, 0, 0, 0, &balance)) return 2;
  if (balance.gain[0] != 256 || balance.gain[1] != 256 || balance.gain[2] != 256) return 3;
  ppl_auto_start(&loop, 1, 1000, 256, 1024);
  if (!(ppl_auto_step(&loop, &curve, &sample) & PPL_AUTO_EXPOSURE_CHANGED)) return 4;
  if (ppl_auto_fit_lens(raw, 64, 64, 64, 0, 0, 0, 0, scratch, &lens)) return 5;
  return 0;
}
