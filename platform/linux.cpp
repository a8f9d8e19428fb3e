// The Linux library takes the widest level that the processor runs.
#include "platform/linux_levels.h"

const ppl::kernels* ppl::choose_kernels() {
  return &kLevels[supported_levels() - 1].tables;
}
