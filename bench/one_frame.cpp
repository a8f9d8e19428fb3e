// A few frame calls and nothing else, for a profiler or an instruction counter:
//
//   one_frame LEVEL QUALITY FORMAT DECIMATION FRAMES [no_lens]
//
// LEVEL from 0, the narrowest; FORMAT i420 yuyv uyvy rgb24 rgb32.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "jobs.h"

int main(int argc, char** argv) {
  if (argc != 6 && !(argc == 7 && strcmp(argv[6], "no_lens") == 0)) {
    fprintf(stderr, "one_frame LEVEL QUALITY FORMAT DECIMATION FRAMES [no_lens]\n");
    return 2;
  }
  bench::frame_task task = {.quality = atoi(argv[2]),
                            .decimation = atoi(argv[4]),
                            .level_number = atoi(argv[1]),
                            .lens = argc == 6};
  for (uint32_t f = 0; f < PPL_FORMATS; ++f)
    if (strcmp(argv[3], ppl_format_name(f)) == 0) task.to = ppl_format(f);
  if (task.level_number >= ppl_test_levels()) {
    fprintf(stderr, "this processor has %d levels\n", ppl_test_levels());
    return 1;
  }
  bench::frame_runner frame(task);
  for (int n = 0; n < atoi(argv[5]); ++n) {
    frame.refresh();
    frame.call();
  }
}
