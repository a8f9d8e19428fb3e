// level_name LEVEL: whether this is the level that the library takes on this processor, as it ships. Then a frame of
// every quality in every format, and a scaled one, so that code of that level runs.
#include <stdio.h>
#include <string.h>

#include "ppl.h"
#include "record/context.h"
#include "record/levels.h"
#include "support/bayer_exports.h"

namespace {
alignas(64) uint8_t source[128 * 32], picture[256 * 64 * 4], scratch[256 * 64 * 4];
}

int main(int argc, char** argv) {
  ppl_context* const c = ppl_init();
  if (c == nullptr || argc != 2) return 2;
  for (uint32_t quality = 0; quality < PPL_QUALITIES; ++quality) {
    ppl_set_quality(c, quality);
    for (auto* const frame : support::kFrameCalls) {
      for (size_t i = 0; i < sizeof source; ++i) source[i] = static_cast<uint8_t>(i * 7 + i / 128 * 31);
      frame(c, source, picture, 128, 32, 128);
    }
    BaylorToI420MMX_scaling_stride(c, source, 128, 32, 128, picture, 192, 48, scratch);
  }
  printf("%s\n", c->kernels->name);
  return strcmp(c->kernels->name, argv[1]) == 0 ? 0 : 1;
}
