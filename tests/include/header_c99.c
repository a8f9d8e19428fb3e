/* The header as C99, pedantic, and its version as the preprocessor sees it. */
#include <ppl.h>

#if PPL_VERSION < 10000
#error "the version is a number that the preprocessor compares"
#endif

unsigned header_version(void);
unsigned header_version(void) {
  return PPL_VERSION;
}
