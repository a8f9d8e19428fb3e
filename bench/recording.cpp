// The library alone on a recording, for comparison with the command line tool:
//
//   recording FILE WIDTH HEIGHT
//
// Reads 8-bit Bayer frames and converts each to I420 at the default settings. Nothing is written.
#include <ppl.h>

#include <fcntl.h>
#include <unistd.h>
#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
  if (argc != 4) {
    fprintf(stderr, "recording FILE WIDTH HEIGHT\n");
    return 2;
  }
  const auto width = static_cast<uint32_t>(atoi(argv[2])), height = static_cast<uint32_t>(atoi(argv[3]));
  const size_t size = size_t{width} * height;
  const int file = open(argv[1], O_RDONLY);
  auto* const source = static_cast<uint8_t*>(aligned_alloc(64, (size + 63) / 64 * 64));
  auto* const picture = static_cast<uint8_t*>(aligned_alloc(64, (size * 3 / 2 + 63) / 64 * 64));
  ppl_context* const context = ppl_init();
  unsigned frames = 0;
  while (read(file, source, size) == static_cast<ssize_t>(size))
    frames += ppl_process_blrtoi420(context, source, picture, width, height, width);
  printf("%u\n", frames);
}
